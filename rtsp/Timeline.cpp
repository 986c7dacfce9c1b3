#include "rtsp/Timeline.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace rtsp
{
namespace
{
// A time stamp may lag behind the highest before it by what a device reorders pictures, and run ahead by what a network
// holds up.
constexpr std::int64_t g_llMostBackUs = 1'000'000;
constexpr std::int64_t g_llMostAheadUs = 3'000'000;
// Of a played stream, a single step may be the distance of two key frames.
constexpr std::int64_t g_llMostPlayedUs = 10'000'000;
// A device's clock may be this much faster or slower than ours, in parts of 1: a file's frame rate is often told
// wrongly.
constexpr std::int64_t g_llDrift = 20;
// When a session begins, frames may come at once, in steps as they have between frames.
constexpr std::int64_t g_llBurstTimeUs = 10'000'000;
constexpr std::int64_t g_llMostBurstUs = 60'000'000;
constexpr std::int64_t g_llBurstStepUs = 1'000'000;
// The tracks of a session start together, or their time stamps have nothing to do with each other.
constexpr std::int64_t g_llMostApartUs = 10'000'000;
// A wall clock that drifts or is corrected moves by less; one that is reckoned anew, by rounding only.
constexpr std::int64_t g_llLeastJumpUs = 1'000'000;
constexpr std::int64_t g_llRoundingUs = 1'000;
} // namespace

void CTimeline::Restart(ePace ePlaying)
{
    m_ePace = ePlaying;
    m_llSessionOffsetUs.reset();
    for (tagTrack& tTrack : m_atTracks)
    {
        tTrack.bRunning = false;
    }
}

CTimeline::tagTrack& CTimeline::Track(std::string_view strTrack)
{
    for (tagTrack& tTrack : m_atTracks)
    {
        if (tTrack.strName == strTrack)
        {
            return tTrack;
        }
    }
    return m_atTracks.emplace_back(tagTrack{.strName = std::string(strTrack)});
}

// What the time line shows now: where it was when the last frame came, and the time since.
std::int64_t CTimeline::Expected(std::int64_t llNowUs) const
{
    return m_bAny ? m_llLastTimeUs + (llNowUs - m_llLastArrivedUs) : 0;
}

void CTimeline::Begin(tagTrack& tTrack, std::int64_t llStampUs, std::int64_t llNowUs)
{
    const std::int64_t llOffsetUs = Expected(llNowUs) - llStampUs;
    if (!m_llSessionOffsetUs)
    {
        m_llSessionOffsetUs = llOffsetUs;
    }
    // The tracks of a session share their zero.
    const bool bShared = std::abs(*m_llSessionOffsetUs - llOffsetUs) <= g_llMostApartUs;
    tTrack.llOffsetUs = bShared ? *m_llSessionOffsetUs : llOffsetUs;
    tTrack.llHighestStampUs = llStampUs;
    tTrack.llBeganUs = llNowUs;
    tTrack.llBurstUs = g_llMostBurstUs;
    tTrack.llLeadUs = llStampUs + tTrack.llOffsetUs - llNowUs;
    tTrack.bRunning = tTrack.bSeen = true;
}

// How far this time stamp jumped; nothing: it goes on from those before.
std::optional<std::int64_t> CTimeline::Jump(tagTrack& tTrack, std::int64_t llStampUs, std::int64_t llNowUs) const
{
    const std::int64_t llElapsedUs = llNowUs - tTrack.llArrivedUs;
    const std::int64_t llStepUs = llStampUs - tTrack.llStampUs;
    const bool bPlayed = m_ePace == ePace::Played;
    if (llStampUs - tTrack.llHighestStampUs < -g_llMostBackUs ||
        llStepUs > llElapsedUs + (bPlayed ? g_llMostPlayedUs : g_llMostAheadUs))
    {
        return llStepUs - llElapsedUs;
    }
    const std::int64_t llLeadUs = llStampUs + tTrack.llOffsetUs - llNowUs;
    const std::int64_t llAheadUs = llLeadUs - tTrack.llLeadUs;
    if (!bPlayed && llAheadUs > g_llMostAheadUs)
    {
        return llAheadUs;
    }
    if (llAheadUs > 0 && llAheadUs <= tTrack.llBurstUs && llStepUs <= g_llBurstStepUs &&
        llNowUs - tTrack.llBeganUs < g_llBurstTimeUs)
    {
        tTrack.llBurstUs -= llAheadUs;
        tTrack.llLeadUs += llAheadUs;
    }
    else
    {
        const std::int64_t llDriftUs = llElapsedUs / g_llDrift;
        tTrack.llLeadUs += std::clamp(llAheadUs, -llDriftUs, llDriftUs);
    }
    return std::nullopt;
}

CTimeline::tagMapped CTimeline::Map(std::string_view strTrack, std::int64_t llStampUs, std::int64_t llNowUs)
{
    tagTrack& tTrack = Track(strTrack);
    tagMapped tMapped;
    if (!tTrack.bRunning)
    {
        tMapped.bDiscontinuity = tTrack.bSeen;
        Begin(tTrack, llStampUs, llNowUs);
    }
    else if ((tMapped.llJumpUs = Jump(tTrack, llStampUs, llNowUs)))
    {
        // Goes on with the time that passed, behind all that was told, and no further ahead than frames that weren't
        // held up.
        const std::int64_t llElapsedUs = llNowUs - tTrack.llArrivedUs;
        const std::int64_t llInTimeUs = tTrack.llTimeUs + llElapsedUs;
        const std::int64_t llTimeUs = m_ePace == ePace::Played
                                          ? llInTimeUs
                                          : std::max(tTrack.llHighestStampUs + tTrack.llOffsetUs,
                                                     std::min(llInTimeUs, llNowUs + tTrack.llLeadUs));
        tTrack.llOffsetUs = llTimeUs - llStampUs;
        tTrack.llHighestStampUs = llStampUs;
        tMapped.bDiscontinuity = true;
    }
    tMapped.llTimeUs = llStampUs + tTrack.llOffsetUs;
    tTrack.llStampUs = llStampUs;
    tTrack.llHighestStampUs = std::max(tTrack.llHighestStampUs, llStampUs);
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
