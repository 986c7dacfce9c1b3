#pragma once

#include "protocol/PluginInterface.h"
#include "rtsp/Description.h"
#include "rtsp/Rtcp.h"
#include "rtsp/Rtp.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rtsp
{
using Clock = std::chrono::steady_clock;

/// A frame as it left its track: everything but its place on the stream's time line. It can be moved and outlives its
/// track: tFrame's pointers lead into the other members, whose bytes stay where they are.
struct tagTrackFrame
{
    tagStreamMediaFrame tFrame{};
    std::vector<unsigned char> abyData; ///< tFrame.pData; back with GiveBuffer when it is no longer needed
    std::shared_ptr<std::vector<unsigned char> const> pabyConfig; ///< tFrame.pConfig; null: none
    std::int64_t llStampUs = 0;                                   ///< the device's time stamp, unwrapped, microseconds
    std::optional<std::int64_t> llRecordedUs; ///< replayed: when it was recorded, microseconds since 1970 UTC
    bool bReplayGap = false;                  ///< replayed: a gap in the recording comes before it
    bool bReplayEnd = false;                  ///< replayed: the contiguous section ends with it
    bool bRecordingEnds = false;              ///< replayed: the recording has no more
};

class CTrack;

/// Who gets a track's frames.
class IFrameSink
{
public:
    /// tFrame may be moved from, whole; what stays in it is used again.
    virtual void OnFrame(CTrack& tTrack, tagTrackFrame& tFrame) = 0;

protected:
    ~IFrameSink() = default;
};

/// Makes frames out of one track's RTP packets: puts them in order, counts what is lost, puts access units together,
/// and reckons the device's time from its sender reports. A frame leaves with its last packet: the one with the marker
/// bit, or, of a device that doesn't set it (learnt from its stream, see CMarkers), when the next time stamp comes.
///
/// One thread at a time. Whatever the sink throws passes through; the track can then only be destroyed.
class CTrack
{
public:
    /// tWait: how long a missing packet is waited for; 0: packets come in order (TCP), a gap is a loss at once.
    /// nSameBefore: how many tracks of the same media and encoding stand before it in the description.
    CTrack(tagMediaDescription const& tDescription, std::chrono::milliseconds tWait, unsigned nSameBefore = 0);
    ~CTrack();
    CTrack(CTrack const&) = delete;
    CTrack& operator=(CTrack const&) = delete;

    /// Packets of another payload type, and what is no RTP, are passed over.
    void TakeRtp(Bytes abyPacket, Clock::time_point tNow, IFrameSink& tSink);
    void TakeRtcp(Bytes abyPacket, Clock::time_point tNow);
    /// When OnDeadline is due, also without UDP: packets behind a gap have waited long enough, or a frame of a device
    /// whose markers aren't known yet. Nothing: nothing waits. May change with each TakeRtp and OnDeadline.
    std::optional<Clock::time_point> Deadline() const;
    /// Does what is due; nothing when it is called early.
    void OnDeadline(Clock::time_point tNow, IFrameSink& tSink);
    /// Nothing more comes for now: hands out what waits for more, a frame that is whole, or after a BYE may be.
    void Finish(Clock::time_point tNow, IFrameSink& tSink);
    /// What follows doesn't continue what came: forgets the access unit that is being put together, and where sequence
    /// numbers and time stamps were. What was learnt about the device, and the counts, stay.
    void Reset();

    /// A receiver report about what came so far; empty before the first packet.
    std::string Report(Clock::time_point tNow);
    bool HasEnded() const; ///< a BYE came, and no packet of another source since

    eMediaType Type() const;
    /// What this track is, whatever its place among the others: "video/h264"; the second such one "video/h264/2".
    std::string const& Identity() const;
    std::uint64_t Packets() const; ///< RTP packets that came
    std::uint64_t Lost() const;    ///< RTP packets known to be lost

private:
    class CImpl;
    std::unique_ptr<CImpl> m_pImpl;
};
} // namespace rtsp
