#pragma once

#include "protocol/PluginInterface.h"
#include "rtsp/Description.h"
#include "rtsp/Rtcp.h"
#include "rtsp/Rtp.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace rtsp
{
using Clock = std::chrono::steady_clock;

/// A frame as it left its track: everything but its place on the stream's time line. Valid until the sink returns.
struct tagTrackFrame
{
    tagStreamMediaFrame tFrame{};
    std::int64_t llStampUs = 0;               ///< the device's time stamp, unwrapped, microseconds
    std::optional<std::int64_t> llRecordedUs; ///< replayed: when it was recorded, microseconds since 1970 UTC
    bool bReplayGap = false;                  ///< replayed: a gap in the recording comes before it
    bool bReplayEnd = false;                  ///< replayed: the contiguous section ends with it
};

class CTrack;

/// Who gets a track's frames.
class IFrameSink
{
public:
    virtual void OnFrame(CTrack& tTrack, tagTrackFrame& tFrame) = 0;

protected:
    ~IFrameSink() = default;
};

/// Makes frames out of one track's RTP packets: puts them in order, counts what is lost, puts access units together,
/// and reckons the device's time from its sender reports. A frame leaves with its last packet: the one with the marker
/// bit, or, of a device that doesn't set it (learnt from its stream), when the next time stamp comes.
///
/// One thread at a time.
class CTrack
{
public:
    /// tWait: how long a missing packet is waited for; 0: packets come in order (TCP).
    CTrack(tagMediaDescription const& tDescription, std::chrono::milliseconds tWait);
    ~CTrack();
    CTrack(CTrack const&) = delete;
    CTrack& operator=(CTrack const&) = delete;

    void TakeRtp(Bytes abyPacket, Clock::time_point tNow, IFrameSink& tSink);
    void TakeRtcp(Bytes abyPacket, Clock::time_point tNow);
    /// When packets that wait for a missing one have waited long enough; nothing: none waits.
    std::optional<Clock::time_point> Deadline() const;
    void OnDeadline(Clock::time_point tNow, IFrameSink& tSink);
    /// What follows doesn't continue what came: forgets the access unit that is being put together.
    void Reset();

    /// A receiver report about what came so far; empty before the first packet.
    std::string Report(Clock::time_point tNow);
    bool HasEnded() const; ///< a BYE came

    eMediaType Type() const;
    /// What this track is, whatever its place among the others: "video/h264", and a number where there are several.
    std::string const& Identity() const;
    std::uint64_t Packets() const; ///< RTP packets that came
    std::uint64_t Lost() const;    ///< RTP packets known to be lost

private:
    class CImpl;
    std::unique_ptr<CImpl> m_pImpl;
};
} // namespace rtsp
