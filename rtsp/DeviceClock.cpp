#include "rtsp/DeviceClock.h"

#include <algorithm>

namespace rtsp
{
namespace
{
// Beyond is what a device makes up. Up to here, sums of a few time stamps fit too.
constexpr std::int64_t g_llLastUs = std::int64_t{1} << 60;
constexpr std::int64_t g_llSecondUs = 1'000'000;

std::int64_t Nearest(std::int64_t llTo, std::uint32_t dwStamp)
{
    return llTo + static_cast<std::int32_t>(dwStamp - static_cast<std::uint32_t>(llTo));
}
} // namespace

std::int64_t CDeviceClock::ToUs(std::int64_t llStamps) const
{
    std::int64_t llSeconds = llStamps / m_llRate;
    std::int64_t llRest = llStamps % m_llRate;
    if (llRest < 0) // rounded down, so that all steps of one size come out alike
    {
        llRest += m_llRate;
        --llSeconds;
    }
    llSeconds = std::clamp(llSeconds, -g_llLastUs / g_llSecondUs, g_llLastUs / g_llSecondUs - 1);
    return llSeconds * g_llSecondUs + llRest * g_llSecondUs / m_llRate;
}

std::int64_t CDeviceClock::Unwrap(std::uint32_t dwStamp)
{
    if (m_llStamp)
    {
        m_llStamp = Nearest(*m_llStamp, dwStamp);
    }
    else
    {
        m_llStamp = dwStamp;
        m_llReportStamp = Nearest(dwStamp, static_cast<std::uint32_t>(m_llReportStamp));
    }
    return ToUs(*m_llStamp);
}

void CDeviceClock::OnReport(std::int64_t llNtpUs, std::uint32_t dwStamp)
{
    m_llReportUs = std::max<std::int64_t>(llNtpUs, 0);
    m_llReportStamp = m_llStamp ? Nearest(*m_llStamp, dwStamp) : std::int64_t{dwStamp};
}

std::int64_t CDeviceClock::WallClockUs() const
{
    if (m_llReportUs == 0 || !m_llStamp)
    {
        return 0;
    }
    return std::max<std::int64_t>(m_llReportUs + ToUs(*m_llStamp - m_llReportStamp), 0);
}

void CDeviceClock::Restart()
{
    m_llStamp.reset();
    m_llReportUs = 0;
}
} // namespace rtsp
