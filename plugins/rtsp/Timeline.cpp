#include "plugins/rtsp/Timeline.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace rtsp
{
namespace
{
// A time stamp may lag behind the one before by what a device reorders pictures, and run ahead by what a network holds
// up.
constexpr std::int64_t g_llMostBackUs = 1'000'000;
constexpr std::int64_t g_llMostAheadUs = 3'000'000;
// The tracks of a session start together, or their time stamps have nothing to do with each other.
constexpr std::int64_t g_llMostApartUs = 10'000'000;
// A wall clock that drifts or is corrected moves by less; one that is reckoned anew, by rounding only.
constexpr std::int64_t g_llLeastJumpUs = 1'000'000;
constexpr std::int64_t g_llRoundingUs = 1'000;
} // namespace

void CTimeline::Restart()
{
    m_llSessionOffsetUs.reset();
    for (tagTrack& tTrack : m_atTracks)
    {
        tTrack.bRunning = false;
    }
}

// What the time line shows now: where it was when the last frame came, and the time since.
std::int64_t CTimeline::Expected(std::int64_t llNowUs) const
{
    return m_bAny ? m_llLastTimeUs + (llNowUs - m_llLastArrivedUs) : 0;
}

CTimeline::tagMapped CTimeline::Map(unsigned iTrack, std::int64_t llStampUs, std::int64_t llNowUs)
{
    m_atTracks.resize(std::max<std::size_t>(m_atTracks.size(), iTrack + 1));
    tagTrack& tTrack = m_atTracks[iTrack];
    tagMapped tMapped;
    if (!tTrack.bRunning)
    {
        const std::int64_t llOffsetUs = Expected(llNowUs) - llStampUs;
        if (!m_llSessionOffsetUs)
        {
            m_llSessionOffsetUs = llOffsetUs;
        }
        // The tracks of a session share their zero.
        const bool bShared = std::abs(*m_llSessionOffsetUs - llOffsetUs) <= g_llMostApartUs;
        tTrack.llOffsetUs = bShared ? *m_llSessionOffsetUs : llOffsetUs;
        tMapped.bDiscontinuity = tTrack.bSeen;
        tTrack.bRunning = tTrack.bSeen = true;
    }
    else
    {
        const std::int64_t llStepUs = llStampUs - tTrack.llStampUs;
        const std::int64_t llElapsedUs = llNowUs - tTrack.llArrivedUs;
        if (llStepUs < -g_llMostBackUs || llStepUs > llElapsedUs + g_llMostAheadUs)
        {
            tTrack.llOffsetUs = tTrack.llTimeUs + llElapsedUs - llStampUs;
            tMapped.bDiscontinuity = true;
            tMapped.llJumpUs = llStepUs - llElapsedUs;
        }
    }
    tMapped.llTimeUs = llStampUs + tTrack.llOffsetUs;
    tTrack.llStampUs = llStampUs;
    tTrack.llTimeUs = tMapped.llTimeUs;
    tTrack.llArrivedUs = llNowUs;
    if (!m_bAny || tMapped.llTimeUs > m_llLastTimeUs)
    {
        m_llLastTimeUs = tMapped.llTimeUs;
        m_llLastArrivedUs = llNowUs;
    }
    m_bAny = true;
    return tMapped;
}

CWallClock::tagChecked CWallClock::Check(std::int64_t llWallUs, std::int64_t llStampUs, std::int64_t llTimeUs,
                                         bool bStampsJumped)
{
    if (llWallUs == 0)
    {
        return {};
    }
    const std::int64_t llOffsetUs = llWallUs - llStampUs;
    if (bStampsJumped)
    {
        m_llWrongOffsetUs = llOffsetUs;
    }
    if (m_llWrongOffsetUs && std::abs(llOffsetUs - *m_llWrongOffsetUs) <= g_llRoundingUs)
    {
        return {};
    }
    m_llWrongOffsetUs.reset();
    const std::int64_t llAheadUs = llWallUs - llTimeUs;
    const std::int64_t llMovedUs = llAheadUs - std::exchange(m_llAheadUs, llAheadUs).value_or(llAheadUs);
    if (std::abs(llMovedUs) < g_llLeastJumpUs)
    {
        return {llWallUs, std::nullopt};
    }
    return {llWallUs, llMovedUs};
}
} // namespace rtsp
