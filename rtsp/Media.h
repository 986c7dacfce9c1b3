#pragma once

#include "rtsp/BackChannel.h"
#include "rtsp/Channel.h"
#include "rtsp/Delivery.h"
#include "rtsp/Timeline.h"
#include "rtsp/Track.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rtsp
{
/// The tracks of a stream: receives their packets and puts their frames on the stream's time line and into its
/// delivery. What belongs to the stream (time line, sequence numbers) outlives its sessions. Inside the strand.
class CMedia final : private IFrameSink
{
public:
    CMedia(CLoop& tLoop, ILoopClient& tClient, CControl& tControl, CDelivery& tDelivery)
        : m_tLoop(tLoop), m_tClient(tClient), m_tControl(tControl), m_tDelivery(tDelivery)
    {
    }
    ~CMedia();
    CMedia(CMedia const&) = delete;
    CMedia& operator=(CMedia const&) = delete;

    // --- a session begins ---

    /// Forgets the tracks of the session before.
    void Clear();
    /// A track that is being set up; its channel.
    CChannel& Add(tagMediaDescription const& tDescription, eRtspTransport eTransport);
    /// A track that is sent.
    CChannel& AddBackChannel(tagMediaDescription const& tDescription, tagAudioFormat const& tFormat,
                             eRtspTransport eTransport);
    /// The server doesn't want the one that was added last.
    void DropLast();
    /// Tracks that are received.
    std::size_t Count() const { return m_atTracks.size(); }
    /// From here on packets are taken; what comes has nothing to do with what came before.
    void Begin(CTimeline::ePace ePace);
    /// No packet is taken any more. Frames that wait for more packets go out, if they are whole.
    void Hold(Clock::time_point tNow);

    // --- packets ---

    void OnInterleaved(unsigned nChannel, Bytes abyPacket, Clock::time_point tNow);
    void OnReadable(std::uint32_t dwTag, Clock::time_point tNow);
    /// When OnDeadline is due; max: not at all.
    Clock::time_point Deadline() const;
    void OnDeadline(Clock::time_point tNow);
    void SendReports(Clock::time_point tNow);

    /// RTP packets that came in this session.
    std::uint64_t Packets() const { return m_ullPackets; }
    Clock::time_point LastPacket() const { return m_tLastPacket; }
    bool HaveEnded() const; ///< every track said good-bye, or a recording has no more

    /// What the back channel takes; nothing: there is none.
    std::optional<tagAudioFormat> BackFormat() const;
    void SendAudio(Bytes abyFrame, std::uint32_t nSamples, bool bFirst);

private:
    struct tagTrack
    {
        tagTrack(CLoop& tLoop, ILoopClient& tClient, CControl& tControl, eRtspTransport eTransport)
            : tChannel(tLoop, tClient, tControl, eTransport)
        {
        }

        CChannel tChannel;
        std::optional<CTrack> tTrack;
        std::size_t iIdentity = 0;
        bool bRecordingEnds = false; ///< its last frame came
    };
    struct tagBack
    {
        CBackChannel tPackets;
        CChannel tChannel;
    };
    /// What a track is beyond sessions.
    struct tagIdentity
    {
        std::string strName;
        std::uint32_t dwSequence = 0;
        CWallClock tWallClock;
    };

    std::size_t IdentityOf(CTrack const& tTrack);
    void Take(tagTrack& tTrack, CChannel::eKind eWhat, Bytes abyPacket);
    template <class F>
    void Feed(CTrack& tTrack, F fn);
    bool IsKnown(std::string const& strIdentity) const;
    void OnFrame(CTrack& tTrack, tagTrackFrame& tFrame) override;

    CLoop& m_tLoop;
    ILoopClient& m_tClient;
    CControl& m_tControl;
    CDelivery& m_tDelivery;
    std::deque<tagTrack> m_atTracks;
    std::unique_ptr<tagBack> m_pBack;
    std::vector<tagIdentity> m_atIdentities;
    CTimeline m_tTimeline;
    std::uint64_t m_ullPackets = 0;
    Clock::time_point m_tLastPacket;
    Clock::time_point m_tNow; ///< when what is being taken came
    bool m_bTaking = false;
    bool m_bLastIsBack = false; ///< the one that was added last
};
} // namespace rtsp
