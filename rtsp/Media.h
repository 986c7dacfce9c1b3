#pragma once

#include "rtsp/Control.h"
#include "rtsp/Delivery.h"
#include "rtsp/Headers.h"
#include "rtsp/Socket.h"
#include "rtsp/Timeline.h"
#include "rtsp/Track.h"

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
    /// A track that is being set up. Its number; it has no way to come yet.
    std::size_t Add(tagMediaDescription const& tDescription, eRtspTransport eTransport);
    /// What to ask the server for. 0, or an errno: no ports are left.
    int MakeTransport(std::size_t iTrack, std::string& strTransport);
    /// What the server answered. 0, or an errno; EPROTO: it isn't what was asked for.
    int TakeTransport(std::size_t iTrack, tagTransport const& tTransport, tagMediaDescription const& tDescription);
    /// The server didn't want the last one that was added.
    void DropLast() { m_atTracks.pop_back(); }
    std::size_t Count() const { return m_atTracks.size(); }

    /// From here on packets are taken; what comes has nothing to do with what came before.
    void Begin(CTimeline::ePace ePace);
    /// No packet is taken any more.
    void Hold() { m_bTaking = false; }

    // --- packets ---

    void OnInterleaved(unsigned nChannel, Bytes abyPacket, Clock::time_point tNow);
    /// False: the tag is another's.
    bool OnReadable(std::uint32_t dwTag, Clock::time_point tNow);
    /// When OnDeadline is due; max: not at all.
    Clock::time_point Deadline() const;
    void OnDeadline(Clock::time_point tNow);
    void SendReports(Clock::time_point tNow);

    /// RTP packets that came in this session.
    std::uint64_t Packets() const { return m_ullPackets; }
    Clock::time_point LastPacket() const { return m_tLastPacket; }
    bool HaveEnded() const; ///< every track said good-bye

private:
    struct tagTrack
    {
        std::unique_ptr<CTrack> pTrack;
        std::size_t iIdentity = 0;
        eRtspTransport eTransport = eRtspTcp;
        tagPair tChannels; ///< in the RTSP connection
        tagUdpPair tPorts; ///< until the server has answered
        std::unique_ptr<CDescriptor> pRtp;
        std::unique_ptr<CDescriptor> pRtcp;
        tagEndpoint tSource;    ///< who may send
        tagEndpoint tReportsTo; ///< nLength 0: nobody
    };
    // What a track is beyond sessions.
    struct tagIdentity
    {
        std::string strName;
        std::uint32_t dwSequence = 0;
        CWallClock tWallClock;
    };

    void Take(tagTrack& tTrack, bool bRtcp, Bytes abyPacket, Clock::time_point tNow);
    void Receive(tagTrack& tTrack, CDescriptor& tDescriptor, Clock::time_point tNow);
    int ListenToGroup(tagTrack& tTrack, tagTransport const& tTransport, tagMediaDescription const& tDescription);
    void Watch(tagTrack& tTrack);
    std::size_t IdentityOf(CTrack const& tTrack);
    void OnFrame(CTrack& tTrack, tagTrackFrame& tFrame) override;

    CLoop& m_tLoop;
    ILoopClient& m_tClient;
    CControl& m_tControl;
    CDelivery& m_tDelivery;
    std::vector<tagTrack> m_atTracks;
    std::vector<tagIdentity> m_atIdentities;
    CTimeline m_tTimeline;
    std::uint64_t m_ullPackets = 0;
    Clock::time_point m_tLastPacket;
    Clock::time_point m_tNow; ///< when what is being taken came
    bool m_bTaking = false;
};
} // namespace rtsp
