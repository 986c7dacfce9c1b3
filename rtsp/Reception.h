#pragma once

#include "rtsp/Rtcp.h"
#include "rtsp/Rtp.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace rtsp
{
/// What a receiver report says about one source (RFC 3550, 6.4.1 and appendix A). Takes packets as they arrive, before
/// they are put in order.
class CReception
{
public:
    explicit CReception(std::uint32_t dwRate) : m_dwRate(dwRate ? dwRate : 90000) {}

    void OnPacket(tagRtpPacket const& tPacket, std::chrono::steady_clock::time_point tNow);
    void OnSenderReport(std::uint64_t ullNtp, std::chrono::steady_clock::time_point tNow);
    /// Nothing: no packet yet. The next report's fraction counts from here.
    std::optional<tagReceiverReport> Report(std::chrono::steady_clock::time_point tNow);

private:
    void Begin(std::uint16_t wSequence);

    std::uint32_t m_dwRate;
    std::uint32_t m_dwSource = 0;
    bool m_bAny = false;
    std::uint32_t m_dwFirst = 0;
    std::uint32_t m_dwHighest = 0; ///< extended by its cycles
    std::uint32_t m_dwReceived = 0;
    std::uint32_t m_dwExpectedBefore = 0; ///< at the last report
    std::uint32_t m_dwReceivedBefore = 0;
    std::uint32_t m_dwTransit = 0;
    std::uint32_t m_dwJitter = 0;     ///< times 16
    std::uint32_t m_dwLastReport = 0; ///< middle of the last sender report's NTP time
    std::chrono::steady_clock::time_point m_tLastReport;
};
} // namespace rtsp
