#include "rtsp/Reception.h"
#include "rtsp/Reorderer.h"

#include <algorithm>
#include <cstdlib>

namespace rtsp
{
namespace
{
// Time in units of dwRate, which wraps as time stamps do.
std::uint32_t InUnits(std::chrono::steady_clock::duration tTime, std::uint32_t dwRate)
{
    const auto ullNs = static_cast<std::uint64_t>(std::chrono::nanoseconds(tTime).count());
    constexpr std::uint64_t ullSecond = 1'000'000'000;
    return static_cast<std::uint32_t>(ullNs / ullSecond * dwRate + ullNs % ullSecond * dwRate / ullSecond);
}
} // namespace

void CReception::Begin(std::uint16_t wSequence)
{
    m_dwFirst = m_dwHighest = wSequence;
    m_dwReceived = m_dwExpectedBefore = m_dwReceivedBefore = 0;
}

void CReception::OnPacket(tagRtpPacket const& tPacket, std::chrono::steady_clock::time_point tNow)
{
    if (!m_bAny || tPacket.dwSource != m_dwSource)
    {
        if (m_bAny)
        {
            *this = CReception(m_dwRate);
        }
        m_bAny = true;
        m_dwSource = tPacket.dwSource;
        Begin(tPacket.wSequence);
    }
    else
    {
        const int nAhead =
            static_cast<std::int16_t>(static_cast<std::uint16_t>(tPacket.wSequence - (m_dwHighest & 0xFFFF)));
        if (nAhead > CReorderer::nLargestGap || nAhead < -CReorderer::nLongestBack)
        {
            Begin(tPacket.wSequence);
        }
        m_dwHighest += nAhead > 0 && nAhead <= CReorderer::nLargestGap ? static_cast<unsigned>(nAhead) : 0U;
    }
    const std::uint32_t dwTransit = InUnits(tNow.time_since_epoch(), m_dwRate) - tPacket.dwStamp;
    if (m_dwReceived++ > 0)
    {
        const auto nChange = static_cast<std::int32_t>(dwTransit - m_dwTransit);
        const std::uint32_t dwChange =
            nChange < 0 ? 0U - static_cast<std::uint32_t>(nChange) : static_cast<std::uint32_t>(nChange);
        m_dwJitter += std::min(dwChange, 0x0FFFFFFFU) - ((m_dwJitter + 8) >> 4);
    }
    m_dwTransit = dwTransit;
}

void CReception::OnSenderReport(std::uint64_t ullNtp, std::chrono::steady_clock::time_point tNow)
{
    m_dwLastReport = static_cast<std::uint32_t>(ullNtp >> 16);
    m_tLastReport = tNow;
}

std::optional<tagReceiverReport> CReception::Report(std::chrono::steady_clock::time_point tNow)
{
    if (!m_bAny)
    {
        return std::nullopt;
    }
    const std::uint32_t dwExpected = m_dwHighest - m_dwFirst + 1;
    const std::uint32_t dwExpectedNow = dwExpected - m_dwExpectedBefore;
    const std::int64_t llLostNow = std::int64_t{dwExpectedNow} - (m_dwReceived - m_dwReceivedBefore);
    m_dwExpectedBefore = dwExpected;
    m_dwReceivedBefore = m_dwReceived;
    constexpr std::int64_t llMostLost = 0x7FFFFF; // 24 bits, signed
    tagReceiverReport tReport;
    tReport.dwSource = m_dwSource;
    tReport.byFractionLost =
        llLostNow > 0 ? static_cast<std::uint8_t>(std::min<std::int64_t>(llLostNow * 256 / dwExpectedNow, 255)) : 0;
    tReport.nLost = static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{dwExpected} - m_dwReceived, -llMostLost - 1, llMostLost));
    tReport.dwHighest = m_dwHighest;
    tReport.dwJitter = m_dwJitter >> 4;
    tReport.dwLastReport = m_dwLastReport;
    tReport.dwDelay = m_dwLastReport ? InUnits(tNow - m_tLastReport, 65536) : 0;
    return tReport;
}
} // namespace rtsp
