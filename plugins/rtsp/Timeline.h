#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace rtsp
{
/// Makes one time line out of the time stamps of a stream's sessions: it starts at 0, goes on over reconnects with the
/// time that passed, and doesn't follow a device whose time stamps jump or begin again. Microseconds throughout.
class CTimeline
{
public:
    struct tagMapped
    {
        std::int64_t llTimeUs = 0;
        bool bDiscontinuity = false;          ///< does not continue the track's time before
        std::optional<std::int64_t> llJumpUs; ///< the device's clock jumped by this much
    };

    /// A new session, or playing after a pause: time stamps have nothing to do with those before.
    void Restart();

    /// llStampUs: the device's time stamp; llNowUs: when it arrived, on a clock that doesn't jump.
    tagMapped Map(unsigned iTrack, std::int64_t llStampUs, std::int64_t llNowUs);

private:
    struct tagTrack
    {
        std::int64_t llOffsetUs = 0;
        std::int64_t llStampUs = 0;
        std::int64_t llTimeUs = 0;
        std::int64_t llArrivedUs = 0;
        bool bRunning = false; ///< has an offset in this session
        bool bSeen = false;    ///< had a frame in any session
    };

    std::int64_t Expected(std::int64_t llNowUs) const;

    std::vector<tagTrack> m_atTracks;
    std::optional<std::int64_t> m_llSessionOffsetUs;
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
