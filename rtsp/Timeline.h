#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rtsp
{
/// Makes one time line out of the time stamps of a stream's sessions: it starts at 0, goes on over reconnects with the
/// time that passed, and doesn't follow a device whose time stamps jump or begin again. Microseconds throughout.
///
/// A jump is a time stamp that is more than a second below the highest before it, or, of a live stream, one that is
/// more than 3 s ahead of what arrives in real time. What is ahead of that counts from frame to frame, so many small
/// steps are noticed like a large one. It isn't counted when a session begins (servers send the pictures since the last
/// key frame at once), after a stall (what was held up comes at once), or where a device's clock is only fast.
class CTimeline
{
public:
    struct tagMapped
    {
        std::int64_t llTimeUs = 0;
        bool bDiscontinuity = false;          ///< does not continue the track's time before
        std::optional<std::int64_t> llJumpUs; ///< the device's clock jumped by this much
    };

    /// How a session's frames arrive.
    enum class ePace
    {
        Live,   ///< as fast as time goes
        Played, ///< at any speed: only single steps can be told from playing
    };

    /// A new session, or playing after a pause: time stamps have nothing to do with those before.
    void Restart(ePace ePlaying = ePace::Live);

    /// strTrack: what the track is (CTrack::Identity), the same in each session; llStampUs: the device's time stamp;
    /// llNowUs: when it arrived, on a clock that doesn't jump.
    tagMapped Map(std::string_view strTrack, std::int64_t llStampUs, std::int64_t llNowUs);

private:
    struct tagTrack
    {
        std::string strName;
        std::int64_t llOffsetUs = 0;
        std::int64_t llStampUs = 0;
        std::int64_t llHighestStampUs = 0; ///< since the last jump
        std::int64_t llTimeUs = 0;
        std::int64_t llArrivedUs = 0;
        std::int64_t llBeganUs = 0; ///< arrival of the session's first frame
        std::int64_t llBurstUs = 0; ///< what frames at a session's beginning may still be ahead of time
        std::int64_t llLeadUs = 0;  ///< how far the time line is before the arrival of frames that weren't held up
        bool bRunning = false;      ///< has an offset in this session
        bool bSeen = false;         ///< had a frame in any session
    };

    tagTrack& Track(std::string_view strTrack);
    std::int64_t Expected(std::int64_t llNowUs) const;
    void Begin(tagTrack& tTrack, std::int64_t llStampUs, std::int64_t llNowUs);
    std::optional<std::int64_t> Jump(tagTrack& tTrack, std::int64_t llStampUs, std::int64_t llNowUs) const;

    std::vector<tagTrack> m_atTracks;
    std::optional<std::int64_t> m_llSessionOffsetUs;
    ePace m_ePace = ePace::Live;
    std::int64_t m_llLastTimeUs = 0;
    std::int64_t m_llLastArrivedUs = 0;
    bool m_bAny = false;
};

/// Watches the wall clock that comes with one track's frames. Microseconds.
class CWallClock
{
public:
    struct tagChecked
    {
        std::int64_t llWallUs = 0;            ///< what to tell, 0: not known
        std::optional<std::int64_t> llJumpUs; ///< the clock was set by this much
    };

    /// llWallUs: what came with a frame, reckoned from its time stamp since the last sender report; 0: nothing did.
    /// bStampsJumped: since the frame before; what is reckoned is then wrong until the next report.
    tagChecked Check(std::int64_t llWallUs, std::int64_t llStampUs, std::int64_t llTimeUs, bool bStampsJumped);

private:
    std::optional<std::int64_t> m_llWrongOffsetUs; ///< between wall clock and time stamps, since a jump of these
    std::optional<std::int64_t> m_llAheadUs;       ///< of the stream's time line
};
} // namespace rtsp
