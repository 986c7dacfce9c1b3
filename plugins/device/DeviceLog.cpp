#include "plugins/device/DeviceLog.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

namespace device
{
void CDeviceLog::Add(eLogType eType, std::string const& strText, tagCaller const* ptCaller, uint32_t dwEvent,
                     uint32_t dwChannel)
{
    tagLogQueryResult tEntry{};
    tEntry.dwSize = sizeof tEntry;
    tEntry.dwType = static_cast<uint32_t>(eType);
    tEntry.llTimeUs = m_tDevice.Clock().NowUs();
    tEntry.dwEvent = dwEvent;
    tEntry.dwChannel = dwChannel;
    CopyText(tEntry.szUserName, ptCaller ? ptCaller->strUser : "");
    CopyText(tEntry.szAddress, ptCaller ? "127.0.0.1" : "");
    CopyText(tEntry.szText, strText);
    m_atEntries.push_back(tEntry);
    if (m_atEntries.size() > 10000)
    {
        m_atEntries.pop_front();
    }
}

int CDeviceLog::Query(tagLogQueryFactor const& tFactor, std::vector<tagLogQueryResult>& atFound) const
{
    const std::string strUser = device::Text(tFactor.szUserName);
    const std::string strText = LowerCase(device::Text(tFactor.szText));
    for (tagLogQueryResult const& tEntry : m_atEntries)
    {
        if ((tFactor.dwTypes == 0 || (tFactor.dwTypes & tEntry.dwType) != 0) &&
            (tFactor.llStartUs == 0 || tEntry.llTimeUs >= tFactor.llStartUs) &&
            (tFactor.llEndUs == 0 || tEntry.llTimeUs < tFactor.llEndUs) &&
            (strUser.empty() || strUser == tEntry.szUserName) &&
            LowerCase(tEntry.szText).find(strText) != std::string::npos)
        {
            atFound.push_back(tEntry);
        }
    }
    // A clock that was set back leaves entries out of order.
    std::ranges::stable_sort(atFound, {}, &tagLogQueryResult::llTimeUs);
    return eResultOk;
}

std::string CDeviceLog::Text() const
{
    std::string strAll;
    for (tagLogQueryResult const& tEntry : m_atEntries)
    {
        strAll += UtcText(tEntry.llTimeUs) + ' ' + tEntry.szText;
        strAll += tEntry.szUserName[0] ? std::string(" by ") + tEntry.szUserName + '\n' : std::string("\n");
    }
    return strAll;
}
} // namespace device
