#include "plugins/device/Panel.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

#include "protocol/Record.h"

namespace device
{
namespace
{
constexpr uint32_t g_dwLamps = eLampPower | eLampRecord | eLampAlarm | eLampNetwork | eLampDisk | eLampFault;
constexpr uint32_t g_dwOwnLamps = eLampPower | eLampNetwork | eLampDisk; // the device steers them itself

bool IsKey(uint32_t dwKey)
{
    return (dwKey >= ePanelKeyUp && dwKey <= ePanelKeyRecord) ||
           (dwKey >= ePanelKeyDigit && dwKey <= ePanelKeyDigit + 9);
}
} // namespace

tagPanelStatusInfo CPanel::Shown() const
{
    const int64_t llNowUs = m_tDevice.SteadyNow();
    tagPanelStatusInfo t{};
    t.dwSize = sizeof t;
    t.dwLamps = g_dwLamps;
    t.dwLampsOn = (m_dwLampsOn & ~g_dwOwnLamps) | eLampPower | eLampNetwork;
    t.dwLampsOn |= m_tDevice.Part<CStorage>().IsRecording() ? eLampDisk | eLampRecord : 0;
    t.dwLampsOn |= m_llTestEndUs > llNowUs ? g_dwLamps : 0;
    t.dwLampsBlinking = m_dwLampsBlinking;
    t.dwBrightness = m_dwBrightness;
    t.bLocked = m_bLocked ? 1 : 0;
    t.bBeeping = m_llBeepEndUs > llNowUs ? 1 : 0;
    t.dwLastKey = m_dwLastKey;
    CopyText(t.szLine1,
             m_strLine1.empty() ? m_tDevice.Part<CConfiguration>().Get<tagConfigIdentity>().szName : m_strLine1);
    CopyText(t.szLine2, m_strLine2);
    return t;
}

int CPanel::Status(tagPanelStatusInfo& tStatus) const
{
    if (!m_tDevice.Blueprint().bPanel)
    {
        return eResultNotSupported;
    }
    tStatus = Shown();
    return eResultOk;
}

int CPanel::SetStatus(tagCaller const&, tagPanelStatusInfo const* ptStatus)
{
    tagPanelStatusInfo t = Shown();
    if (!m_tDevice.Blueprint().bPanel)
    {
        return eResultNotSupported;
    }
    if (Adapter_ProtocolSet::MergeRecord(t, ptStatus) != eResultOk || t.dwBrightness > 100 ||
        ((t.dwLampsOn | t.dwLampsBlinking) & ~g_dwLamps) != 0)
    {
        return eResultBadArgument;
    }
    m_dwLampsBlinking = t.dwLampsBlinking & ~g_dwOwnLamps;
    m_dwLampsOn = (t.dwLampsOn & ~g_dwOwnLamps) | m_dwLampsBlinking;
    m_dwBrightness = t.dwBrightness;
    m_strLine1 = Text(t.szLine1);
    m_strLine2 = Text(t.szLine2);
    return eResultOk;
}

int CPanel::Control(tagCaller const& tCaller, tagPanelControlParameter const& tPara)
{
    const uint32_t dwMilliseconds = tPara.dwMilliseconds ? tPara.dwMilliseconds : 500;
    if (!m_tDevice.Blueprint().bPanel)
    {
        return eResultNotSupported;
    }
    switch (tPara.dwAction)
    {
    case ePanelPress:
        if (!IsKey(tPara.dwKey))
        {
            return eResultBadArgument;
        }
        if (m_bLocked)
        {
            return eResultRefused;
        }
        m_dwLastKey = tPara.dwKey;
        m_tDevice.Raise(eEventPanelKey, tPara.dwKey, 1, &tCaller);
        return eResultOk;
    case ePanelLock:
    case ePanelUnlock:
        m_bLocked = tPara.dwAction == ePanelLock;
        return eResultOk;
    case ePanelBeep:
    case ePanelLampTest:
        if (dwMilliseconds > 60000)
        {
            return eResultBadArgument;
        }
        (tPara.dwAction == ePanelBeep ? m_llBeepEndUs : m_llTestEndUs) =
            m_tDevice.SteadyNow() + int64_t{dwMilliseconds} * 1000;
        return eResultOk;
    default:
        return eResultBadArgument;
    }
}

void CPanel::Beep(uint32_t dwMilliseconds)
{
    m_llBeepEndUs = m_tDevice.SteadyNow() + int64_t{dwMilliseconds} * 1000;
}
} // namespace device
