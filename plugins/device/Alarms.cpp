#include "plugins/device/Alarms.h"

#include "plugins/device/Device.h"

#include <algorithm>

namespace device
{
namespace
{
int States(uint32_t dwContacts, uint32_t& dwCount, unsigned long* pdwState,
           std::function<bool(uint32_t)> const& fnActive)
{
    if (!pdwState && dwCount != 0)
    {
        return eResultBadArgument;
    }
    for (uint32_t i = 0; i < std::min(dwCount, dwContacts); ++i)
    {
        pdwState[i] = fnActive(i) ? 1 : 0;
    }
    dwCount = dwContacts;
    return eResultOk;
}

// Whether any cell of the picture is watched.
bool Watches(tagConfigMotion const& tMotion)
{
    return std::any_of(tMotion.abyCells, tMotion.abyCells + (tMotion.dwColumns * tMotion.dwRows + 7) / 8,
                       [](unsigned char by) { return by != 0; });
}
} // namespace

CAlarms::CAlarms(CDevice& tDevice) : CPart(tDevice), m_allOutputEndUs(tDevice.Blueprint().dwOutputs, g_llNever) {}

bool CAlarms::IsOn(eDeviceEvent eEvent, uint32_t dwWhere) const
{
    return m_tStates.contains({eEvent, dwWhere});
}

void CAlarms::ForEach(std::function<void(eDeviceEvent, uint32_t, uint32_t)> const& fnState) const
{
    for (auto const& [tKey, dwState] : m_tStates)
    {
        fnState(tKey.first, tKey.second, dwState);
    }
}

void CAlarms::Set(eDeviceEvent eEvent, uint32_t dwWhere, uint32_t dwState, tagCaller const* ptCaller)
{
    CConfiguration const& tConfiguration = m_tDevice.Part<CConfiguration>();
    const bool bOff = dwState == 0;
    tagConfigAction tAction{};
    if (eEvent == eEventMotion)
    {
        const auto tMotion = tConfiguration.Get<tagConfigMotion>(dwWhere);
        tAction = tMotion.tAction;
        dwState = tMotion.bEnabled && Watches(tMotion) ? dwState : 0;
    }
    if (eEvent == eEventAlarmInput)
    {
        const auto tInput = tConfiguration.Get<tagConfigAlarmInput>(dwWhere);
        tAction = tInput.tAction;
        dwState = tInput.bEnabled ? dwState : 0;
    }
    const auto it = m_tStates.find({eEvent, dwWhere});
    if ((it == m_tStates.end() ? 0 : it->second) == dwState)
    {
        return;
    }
    if (dwState)
    {
        m_tStates[{eEvent, dwWhere}] = dwState;
    }
    else
    {
        m_tStates.erase(it);
    }
    m_tDevice.Touch();
    m_tDevice.Raise(eEvent, dwWhere, dwState, ptCaller);
    if (eEvent == eEventMotion || eEvent == eEventAlarmInput)
    {
        m_tDevice.Part<CStorage>().CheckSchedules();
        Act(tAction, !bOff, eEvent);
    }
}

int64_t CAlarms::HoldUs(eDeviceEvent eEvent, uint32_t dwWhere, bool bOn) const
{
    CConfiguration const& tConfiguration = m_tDevice.Part<CConfiguration>();
    if (eEvent == eEventMotion && !bOn)
    {
        return int64_t{tConfiguration.Get<tagConfigMotion>(dwWhere).dwHoldSeconds} * 1000000;
    }
    return eEvent == eEventAlarmInput ? int64_t{tConfiguration.Get<tagConfigAlarmInput>(dwWhere).dwHoldMs} * 1000 : 0;
}

void CAlarms::Sense(eDeviceEvent eEvent, uint32_t dwWhere, bool bOn)
{
    const int64_t llHoldUs = HoldUs(eEvent, dwWhere, bOn);
    m_tSensed.erase({eEvent, dwWhere});
    if (llHoldUs == 0)
    {
        Set(eEvent, dwWhere, bOn ? 1 : 0);
    }
    else if (IsOn(eEvent, dwWhere) != bOn)
    {
        m_tSensed[{eEvent, dwWhere}] = {bOn, m_tDevice.SteadyNow() + llHoldUs};
    }
}

// What else is to be done when an alarm begins, and when it ends.
void CAlarms::Act(tagConfigAction const& tAction, bool bOn, eDeviceEvent eEvent)
{
    for (uint32_t i = 0; i < m_tDevice.Channels(); ++i)
    {
        if (tAction.ullRecord >> i & 1)
        {
            m_tDevice.Part<CStorage>().Record(i, eEvent == eEventMotion ? eHistoryMotion : eHistoryAlarm, bOn);
        }
    }
    for (uint32_t i = 0; i < m_tDevice.Blueprint().dwOutputs; ++i)
    {
        if (tAction.dwOutputs >> i & 1)
        {
            Switch(i, bOn, 0, nullptr);
        }
    }
    if (bOn && tAction.bBeep)
    {
        m_tDevice.Part<CPanel>().Beep(1000);
    }
    if (bOn && tAction.dwPreset != 0)
    {
        m_tDevice.Part<CPTZ>().GoTo(tAction.dwPresetChannel, tAction.dwPreset);
    }
}

int CAlarms::Clear(tagCaller const& tCaller, uint32_t dwType, uint32_t dwChannel)
{
    constexpr eDeviceEvent aeClears[] = {eEventMotion, eEventAlarmInput, eEventTamper, eEventVideoLoss};
    const bool bKnown =
        std::ranges::any_of(aeClears, [&](eDeviceEvent e) { return static_cast<uint32_t>(e) == dwType; });
    if (dwType != 0 && !bKnown)
    {
        return dwType >= eEventMotion && dwType <= eEventOther ? int{eResultNotSupported} : int{eResultBadArgument};
    }
    const uint32_t dwPlaces = dwType == eEventAlarmInput ? m_tDevice.Blueprint().dwInputs : m_tDevice.Channels();
    if (dwChannel != TESSARO_ALL && dwChannel >= std::max(dwPlaces, dwType == 0 ? m_tDevice.Blueprint().dwInputs : 0))
    {
        return eResultNoChannel;
    }
    const auto tStates = m_tStates;
    for (auto const& [tKey, dwState] : tStates)
    {
        const bool bAsked = dwType == 0 ? std::ranges::find(aeClears, tKey.first) != std::end(aeClears)
                                        : static_cast<uint32_t>(tKey.first) == dwType;
        if (bAsked && (dwChannel == TESSARO_ALL || dwChannel == tKey.second))
        {
            m_tSensed.erase(tKey);
            Set(tKey.first, tKey.second, 0, &tCaller);
        }
    }
    return eResultOk;
}

int CAlarms::SetOutput(tagCaller const& tCaller, uint32_t dwOutput, uint32_t dwOn)
{
    if (dwOutput >= m_tDevice.Blueprint().dwOutputs)
    {
        return eResultNoChannel;
    }
    Switch(dwOutput, dwOn != 0, dwOn > 1 ? dwOn : 0, &tCaller);
    return eResultOk;
}

void CAlarms::Switch(uint32_t dwOutput, bool bOn, uint32_t dwMilliseconds, tagCaller const* ptCaller)
{
    const uint32_t dwPulseMs = m_tDevice.Part<CConfiguration>().Get<tagConfigAlarmOutput>(dwOutput).dwPulseMs;
    const uint32_t dwForMs = dwMilliseconds ? dwMilliseconds : dwPulseMs;
    m_allOutputEndUs[dwOutput] = bOn && dwForMs ? m_tDevice.SteadyNow() + int64_t{dwForMs} * 1000 : g_llNever;
    Set(eEventAlarmOutput, dwOutput, bOn ? 1 : 0, ptCaller);
}

int CAlarms::InputStates(uint32_t& dwCount, unsigned long* pdwState) const
{
    return States(m_tDevice.Blueprint().dwInputs, dwCount, pdwState,
                  [&](uint32_t i) { return IsOn(eEventAlarmInput, i); });
}

int CAlarms::OutputStates(uint32_t& dwCount, unsigned long* pdwState) const
{
    return States(m_tDevice.Blueprint().dwOutputs, dwCount, pdwState,
                  [&](uint32_t i) { return IsOn(eEventAlarmOutput, i); });
}

void CAlarms::Advance()
{
    for (auto it = m_tSensed.begin(); it != m_tSensed.end();)
    {
        const auto [tKey, tSensed] = *it;
        const bool bCounts = tSensed.llCountsUs <= m_tDevice.SteadyNow();
        it = bCounts ? m_tSensed.erase(it) : std::next(it);
        if (bCounts)
        {
            Set(tKey.first, tKey.second, tSensed.bOn ? 1 : 0);
        }
    }
    for (uint32_t i = 0; i < m_allOutputEndUs.size(); ++i)
    {
        if (m_allOutputEndUs[i] <= m_tDevice.SteadyNow())
        {
            Switch(i, false, 0, nullptr);
        }
    }
}

int64_t CAlarms::NextDue() const
{
    int64_t llDueUs = g_llNever;
    for (const int64_t llEndUs : m_allOutputEndUs)
    {
        llDueUs = std::min(llDueUs, llEndUs);
    }
    for (auto const& [tKey, tSensed] : m_tSensed)
    {
        llDueUs = std::min(llDueUs, tSensed.llCountsUs);
    }
    return llDueUs;
}

void CAlarms::Halt()
{
    for (uint32_t i = 0; i < m_tDevice.Blueprint().dwOutputs; ++i)
    {
        Switch(i, false, 0, nullptr);
    }
}
} // namespace device
