#pragma once

#include <cstdint>
#include <optional>

namespace rtsp
{
/// The clock behind a track's RTP time stamps: unwraps them, converts them to microseconds, and knows from sender
/// reports which time of day they are.
class CDeviceClock
{
public:
    /// dwRate: time stamps a second; 0 counts as 90000.
    explicit CDeviceClock(std::uint32_t dwRate) : m_llRate(dwRate ? dwRate : 90000) {}

    /// The time stamp of the next frame in microseconds, unwrapped: each counts from the one before, on the shorter way
    /// round. Conversion is from the unwrapped value, so rounding doesn't add up. Between -2^60 and 2^60.
    std::int64_t Unwrap(std::uint32_t dwStamp);
    /// A sender report: NTP time (microseconds since 1970) and time stamp of the same moment. A time that isn't after
    /// 1970 is that of a device that doesn't know the time.
    void OnReport(std::int64_t llNtpUs, std::uint32_t dwStamp);
    /// The time of day at the time stamp that was unwrapped last; 0: not known.
    std::int64_t WallClockUs() const;
    /// The source, or its time stamps, begin anew; reports so far say nothing about them.
    void Restart();

private:
    std::int64_t ToUs(std::int64_t llStamps) const;

    std::int64_t m_llRate;
    std::optional<std::int64_t> m_llStamp; ///< unwrapped, of the last frame
    std::int64_t m_llReportUs = 0;         ///< 0: no report
    std::int64_t m_llReportStamp = 0;      ///< on the scale of m_llStamp; before the first frame, as it came
};
} // namespace rtsp
