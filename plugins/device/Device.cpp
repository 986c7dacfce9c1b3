#include "plugins/device/Device.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace device
{
namespace
{
std::atomic<bool> g_bEndCalls{false};

// A device that was asked to start again is down for so long.
constexpr int64_t g_llRestartUs = 2000000;

// What the log says of an event; its third word chooses the text.
struct tagLogText
{
    eDeviceEvent eEvent;
    eLogType eType;
    char const* szOff;
    char const* szOn;
};
constexpr tagLogText g_atLogTexts[] = {
    {eEventMotion, eLogAlarm, "motion ended", "motion"},
    {eEventAlarmInput, eLogAlarm, "input idle", "input active"},
    {eEventAlarmOutput, eLogAlarm, "output off", "output on"},
    {eEventVideoLoss, eLogAlarm, "video back", "video lost"},
    {eEventTamper, eLogAlarm, "tamper ended", "tamper"},
    {eEventDiskFull, eLogSystem, "disk has room again", "disk full"},
    {eEventDiskError, eLogSystem, "disk works again", "disk error"},
    {eEventRecording, eLogRecording, "recording ended", "recording began"},
    {eEventUserLogin, eLogAccess, "logged out", "logged in"},
    {eEventConfigChanged, eLogConfiguration, "configuration changed", "configuration changed"},
    {eEventClockChanged, eLogSystem, "clock set", "clock set"},
};
} // namespace

CDevice::CDevice(tagDeviceBlueprint tBlueprint)
    : m_tBlueprint(std::move(tBlueprint)), m_tStore(m_tBlueprint.strStatePath)
{
    const CLock tLock(*this);
    m_tLog.Add(eLogSystem, "started");
    for (tagDeviceFault const& tFault : m_tBlueprint.atFaults)
    {
        m_tFaults.Set(tFault);
    }
}

CDevice::~CDevice()
{
    m_tStore.Save();
}

// --- time ------------------------------------------------------------------------------------------------------------

CDevice::CLock::CLock(CDevice& tDevice) : m_tDevice(tDevice), m_tLock(tDevice.m_tMutex)
{
    m_tDevice.Advance();
}

CDevice::CLock::~CLock()
{
    m_tDevice.Schedule();
}

void CDevice::Advance()
{
    m_llSteadyUs = SteadyUs();
    m_tFaults.Advance();
    if (!m_bUp && m_llSteadyUs >= m_llUpUs)
    {
        Up();
    }
    m_tPTZ.Advance();
    m_tAlarms.Advance();
    m_tWall.Advance();
    if (m_bUp)
    {
        m_tStorage.Advance();
    }
    if (m_llSteadyUs >= m_llSaveUs)
    {
        m_tStore.Save();
        m_llSaveUs = g_llNever;
    }
}

int64_t CDevice::NextDue()
{
    if (m_tStore.Changed() && m_llSaveUs == g_llNever && !m_tBlueprint.strStatePath.empty())
    {
        m_llSaveUs = m_llSteadyUs + 200000;
    }
    return std::min({m_bUp ? g_llNever : m_llUpUs, m_tFaults.NextDue(), m_tPTZ.NextDue(), m_tAlarms.NextDue(),
                     m_tWall.NextDue(), m_bUp ? m_tStorage.NextDue() : g_llNever, m_llSaveUs});
}

// One task of the worker's is enough: the earliest.
void CDevice::Schedule()
{
    const int64_t llDueUs = NextDue();
    if (llDueUs < m_llTickUs && !weak_from_this().expired())
    {
        m_llTickUs = llDueUs;
        TimeWorker().At(llDueUs,
                        [pWeak = weak_from_this()]
                        {
                            if (const auto pDevice = pWeak.lock())
                            {
                                pDevice->Tick();
                            }
                        });
    }
}

void CDevice::Tick()
{
    std::vector<CWall::tagLookUp> atWanted;
    {
        const CLock tLock(*this);
        m_llTickUs = g_llNever;
        atWanted = m_tWall.WantedSources();
    }
    for (CWall::tagLookUp& tLookUp : atWanted)
    {
        CWall::LookUp(tLookUp);
        const CLock tLock(*this);
        m_tWall.Found(tLookUp);
    }
}

// --- calls -----------------------------------------------------------------------------------------------------------

void CDevice::EndCalls(bool bEnd)
{
    g_bEndCalls = bEnd;
}

void CDevice::Interrupt()
{
    const std::lock_guard tLock(m_tMutex);
    m_tInterrupted.notify_all();
}

// Whether a call of this session's can be answered at all.
int CDevice::Present(CSession const* pSession) const
{
    if (g_bEndCalls)
    {
        return eResultNotStarted;
    }
    if (pSession && (pSession->Ended() || pSession->Closed() || !m_bUp))
    {
        return eResultConnectionLost;
    }
    return m_bUp ? int{eResultOk} : int{eResultUnreachable};
}

int CDevice::Wait(std::unique_lock<std::mutex>& tLock, CSession const* pSession, int64_t llUntilUs)
{
    int nResult = eResultOk;
    while (nResult == eResultOk && m_llSteadyUs < llUntilUs)
    {
        m_tInterrupted.wait_for(tLock, std::chrono::microseconds(llUntilUs - m_llSteadyUs));
        Advance();
        nResult = Present(pSession);
    }
    return nResult == eResultUnreachable ? int{eResultConnectionLost} : nResult;
}

int CDevice::Admit(CSession const* pSession, uint32_t dwTimeoutMs)
{
    std::unique_lock tLock(m_tMutex);
    Advance();
    // A stream goes on after its login was closed, and so do its calls.
    if (const int nResult = Present(pSession && pSession->Closed() ? nullptr : pSession))
    {
        return nResult;
    }
    if (m_tFaults.On(eFaultBusy))
    {
        return eResultBusy;
    }
    const int64_t llLimitUs = m_llSteadyUs + int64_t{dwTimeoutMs} * 1000;
    const bool bClosed = pSession && pSession->Closed();
    int64_t llAnswerUs = m_llSteadyUs;
    if (tagDeviceFault const* const ptSlow = m_tFaults.On(eFaultSlow))
    {
        llAnswerUs += int64_t{ptSlow->dwValue} * 1000;
    }
    const bool bHang = m_tFaults.TakeHang();
    if (bHang || llAnswerUs > m_llSteadyUs)
    {
        const int nResult =
            Wait(tLock, bClosed ? nullptr : pSession, bHang ? llLimitUs : std::min(llAnswerUs, llLimitUs));
        Schedule();
        return nResult != eResultOk ? nResult : bHang || llAnswerUs >= llLimitUs ? int{eResultTimeOut} : int{eResultOk};
    }
    Schedule();
    return eResultOk;
}

// --- logins ----------------------------------------------------------------------------------------------------------

int CDevice::Login(std::shared_ptr<CSession> const& pSession, std::string const& strPassword)
{
    const CLock tLock(*this);
    tagCaller const& tCaller = pSession->Caller();
    uint32_t dwLevel = 0;
    if (const int nResult = m_tUsers.Check(tCaller.strUser, strPassword, dwLevel))
    {
        Raise(eEventUserLogin, m_tUsers.Level(tCaller.strUser), 2, &tCaller);
        return nResult;
    }
    pSession->SetLevel(dwLevel);
    Raise(eEventUserLogin, dwLevel, 1, &tCaller);
    std::erase_if(m_apSessions, [](auto const& pWeak) { return pWeak.expired(); });
    m_apSessions.push_back(pSession);
    return eResultOk;
}

void CDevice::Logout(CSession& tSession)
{
    tSession.Close();
    const CLock tLock(*this);
    m_tInterrupted.notify_all();
    const auto nErased = std::erase_if(m_apSessions, [&](auto const& pWeak)
                                       { return pWeak.expired() || pWeak.lock().get() == &tSession; });
    if (nErased != 0 && m_bUp && !tSession.Ended())
    {
        Raise(eEventUserLogin, tSession.Level(), 0, &tSession.Caller());
    }
}

void CDevice::Listen(std::shared_ptr<CSession> const& pListener)
{
    const CLock tLock(*this);
    std::erase_if(m_apListeners, [](auto const& pWeak) { return pWeak.expired(); });
    m_apListeners.push_back(pListener);
}

void CDevice::EndSessions(std::string const& strUser)
{
    const uint32_t dwTime = Event(eEventLoginLost, 0, 0).dwTime;
    for (auto const& pWeak : m_apSessions)
    {
        const auto pSession = pWeak.lock();
        if (!pSession || pSession->Ended() || (!strUser.empty() && pSession->Caller().strUser != strUser))
        {
            continue;
        }
        pSession->End();
        DeliveryWorker().Post(
            [pSession, dwTime]
            {
                pSession->OnEvent({eEventLoginLost, eResultRefused, 0, dwTime, nullptr});
                pSession->OnForcedOff();
            });
    }
    for (auto const& pWeak : m_apListeners)
    {
        if (const auto pListener = pWeak.lock())
        {
            DeliveryWorker().Post([pListener] { pListener->OnForcedOff(); });
        }
    }
    m_tInterrupted.notify_all();
}

void CDevice::RefreshLevels()
{
    for (auto const& pWeak : m_apSessions)
    {
        const auto pSession = pWeak.lock();
        if (!pSession || pSession->Ended())
        {
            continue;
        }
        const uint32_t dwLevel = m_tUsers.Level(pSession->Caller().strUser);
        if (dwLevel != 0)
        {
            pSession->SetLevel(dwLevel);
        }
        else
        {
            EndSessions(pSession->Caller().strUser);
        }
    }
}

// --- events ----------------------------------------------------------------------------------------------------------

tagDeviceEvent CDevice::Event(eDeviceEvent eEvent, uint32_t dwWord2, uint32_t dwWord3) const
{
    return {eEvent, dwWord2, dwWord3, static_cast<uint32_t>(m_tClock.NowUs() / 1000000), nullptr};
}

void CDevice::Tell(std::function<void(CSession&)> fnTell)
{
    DeliveryWorker().Post(
        [apSessions = m_apSessions, apListeners = m_apListeners, fnTell = std::move(fnTell)]
        {
            for (auto const& pWeak : apListeners)
            {
                if (const auto pListener = pWeak.lock())
                {
                    fnTell(*pListener);
                }
            }
            for (auto const& pWeak : apSessions)
            {
                const auto pSession = pWeak.lock();
                if (pSession && !pSession->Ended())
                {
                    fnTell(*pSession);
                }
            }
        });
}

void CDevice::Raise(eDeviceEvent eEvent, uint32_t dwWord2, uint32_t dwWord3, tagCaller const* ptCaller)
{
    if (tagLogText const* const pt = std::ranges::find(g_atLogTexts, eEvent, &tagLogText::eEvent);
        pt != std::end(g_atLogTexts))
    {
        const bool bRefused = eEvent == eEventUserLogin && dwWord3 == 2;
        m_tLog.Add(pt->eType, bRefused ? "login refused" : dwWord3 ? pt->szOn : pt->szOff, ptCaller, eEvent, dwWord2);
    }
    if (m_bUp)
    {
        Tell([tEvent = Event(eEvent, dwWord2, dwWord3)](CSession& tSession) { tSession.OnEvent(tEvent); });
    }
}

void CDevice::RaiseDetail(uint32_t dwChannel, std::string const& strTopic, std::string const& strSource,
                          std::string const& strData, uint32_t dwState)
{
    const auto pDetail = std::make_shared<tagEventDetail>();
    pDetail->dwSize = sizeof(tagEventDetail);
    pDetail->dwState = dwState;
    pDetail->llTimeUs = m_tClock.NowUs();
    strTopic.copy(pDetail->szTopic, sizeof pDetail->szTopic - 1);
    strSource.copy(pDetail->szSource, sizeof pDetail->szSource - 1);
    strData.copy(pDetail->szData, sizeof pDetail->szData - 1);
    tagDeviceEvent tEvent = Event(eEventOther, dwChannel, 0);
    tEvent.pDetail = pDetail;
    Tell([tEvent](CSession& tSession) { tSession.OnEvent(tEvent); });
}

void CDevice::ReportStates(CSession& tSession)
{
    const CLock tLock(*this);
    std::vector<tagDeviceEvent> atEvents;
    const auto fnAdd = [&](eDeviceEvent eEvent, uint32_t dwWhere, uint32_t dwState)
    { atEvents.push_back(Event(eEvent, dwWhere, dwState)); };
    m_tAlarms.ForEach(fnAdd);
    for (tagWindowView const& tWindow : m_tWall.View().atWindows)
    {
        if (tWindow.tStatus.dwState != eWindowEmpty)
        {
            fnAdd(eEventWindow, tWindow.tPlace.dwChannel, tWindow.tStatus.dwState);
        }
    }
    const auto it =
        std::ranges::find_if(m_apSessions, [&](auto const& pWeak) { return pWeak.lock().get() == &tSession; });
    if (it != m_apSessions.end())
    {
        DeliveryWorker().Post(
            [pSession = it->lock(), atEvents]
            {
                for (tagDeviceEvent const& tEvent : atEvents)
                {
                    pSession->OnEvent(tEvent);
                }
            });
    }
}

// --- up and down -----------------------------------------------------------------------------------------------------

bool CDevice::IsUp()
{
    const CLock tLock(*this);
    return m_bUp;
}

void CDevice::Down(int64_t llDownUs)
{
    m_llUpUs = llDownUs == 0 ? g_llNever : m_llSteadyUs + llDownUs;
    if (!m_bUp)
    {
        return;
    }
    m_bUp = false;
    m_llDownUs = m_llSteadyUs;
    Touch();
    m_tInterrupted.notify_all();
    const auto tLost = Event(eEventLoginLost, eResultConnectionLost,
                             m_tBlueprint.bLoginsEnd ? 0 : static_cast<uint32_t>(llDownUs / 1000));
    Tell(
        [tLost, bEnd = m_tBlueprint.bLoginsEnd](CSession& tSession)
        {
            tSession.OnEvent(tLost);
            if (bEnd)
            {
                tSession.End();
            }
        });
}

void CDevice::Up()
{
    m_bUp = true;
    m_llUpUs = g_llNever;
    Touch();
    const auto tBack = Event(eEventLoginRestored, static_cast<uint32_t>((m_llSteadyUs - m_llDownUs) / 1000), 0);
    Tell([tBack](CSession& tSession) { tSession.OnEvent(tBack); });
    if (m_eReason != eRestartUnknown)
    {
        m_tLog.Add(eLogSystem, "started", nullptr, eEventDeviceRestarted);
        Raise(eEventDeviceRestarted, static_cast<uint32_t>(m_eReason));
        m_eReason = eRestartUnknown;
    }
}

void CDevice::Restart(eRestartReason eReason, int64_t llDownUs)
{
    m_tLog.Add(eLogSystem, "stopped");
    ++m_dwRun;
    m_eReason = eReason;
    Down(llDownUs);
    m_tPTZ.Halt();
    m_tAlarms.Halt();
    m_tStorage.Halt();
    m_tWall.Halt();
}

void CDevice::Drop(int64_t llDownUs)
{
    Down(llDownUs);
}

void CDevice::Connect()
{
    if (!m_bUp)
    {
        Up();
    }
}

int CDevice::Control(tagCaller const& tCaller, eRemoteDeviceControl eControl)
{
    switch (eControl)
    {
    case eDeviceRestart:
        Restart(eRestartAsked, g_llRestartUs);
        return eResultOk;
    case eDeviceShutDown:
        Restart(eRestartPower, 0);
        return eResultOk;
    case eDeviceFactoryDefault:
    case eDeviceFactoryReset:
        m_tConfiguration.Reset(eControl == eDeviceFactoryReset);
        Restart(eRestartAsked, g_llRestartUs);
        return eResultOk;
    case eDeviceClearLog:
        m_tLog.Clear();
        m_tLog.Add(eLogSystem, "log cleared", &tCaller);
        return eResultOk;
    }
    return eResultBadArgument;
}

// --- what it is ------------------------------------------------------------------------------------------------------

std::string CDevice::Firmware() const
{
    const auto it = m_tStore.All().find("firmware");
    return it == m_tStore.All().end() ? m_tBlueprint.strFirmware : std::string(it->second.begin(), it->second.end());
}

void CDevice::SetFirmware(std::string const& strVersion)
{
    m_tStore.Put("firmware", CStore::Bytes(strVersion.begin(), strVersion.end()));
}

int CDevice::SDKVersion(eNetworkSDKVersion& eVersion) const
{
    eVersion = eSDKVersion2;
    return eResultOk;
}
} // namespace device
