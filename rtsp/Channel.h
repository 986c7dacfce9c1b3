#pragma once

#include "protocol/PluginInterface.h"
#include "rtsp/Control.h"
#include "rtsp/Description.h"
#include "rtsp/Headers.h"
#include "rtsp/Socket.h"

#include <cstdint>
#include <memory>
#include <string>

namespace rtsp
{
/// How the packets of one track travel: in the RTSP connection, over UDP, or to a multicast group.
class CChannel
{
public:
    CChannel(CLoop& tLoop, ILoopClient& tClient, CControl& tControl, eRtspTransport eTransport)
        : m_tLoop(tLoop), m_tClient(tClient), m_tControl(tControl), m_eTransport(eTransport)
    {
    }
    CChannel(CChannel const&) = delete;
    CChannel& operator=(CChannel const&) = delete;

    /// What to ask the server for; iTrack: of the session, from 0. 0, or an errno: no ports are left.
    int MakeRequest(std::size_t iTrack, std::string& strTransport);
    /// What the server answered; from here on packets come. 0, or an errno; EPROTO: it isn't what was asked for.
    int TakeAnswer(tagTransport const& tTransport, tagMediaDescription const& tDescription);

    enum class eKind
    {
        None, ///< another track's
        Rtp,
        Rtcp,
    };
    eKind OfInterleaved(unsigned nChannel) const;
    eKind OfTag(std::uint32_t dwTag) const;

    /// Receives what is there: fnTake(Bytes) for each packet of whom it is expected from.
    template <class F>
    void Receive(eKind eWhat, F const& fnTake)
    {
        CDescriptor& tDescriptor = eWhat == eKind::Rtp ? *m_pRtp : *m_pRtcp;
        for (int i = 0; i < nMostReads; ++i)
        {
            const std::span<tagDatagram const> atDatagrams = ReceiveDatagrams(tDescriptor.File());
            for (tagDatagram const& tDatagram : atDatagrams)
            {
                if (m_tSource.nLength == 0 || m_tSource.IsSameHost(tDatagram.tFrom))
                {
                    fnTake(tDatagram.abyData);
                }
            }
            if (atDatagrams.size() < g_nMostDatagrams)
            {
                break;
            }
        }
        tDescriptor.AwaitReadable(m_tClient);
    }

    /// Where the server takes packets.
    void SendRtp(Bytes abyPacket) { Send(abyPacket, m_tChannels.wRtp, m_pRtp.get(), m_tMediaTo); }
    void SendRtcp(Bytes abyPacket) { Send(abyPacket, m_tChannels.wRtcp, m_pRtcp.get(), m_tReportsTo); }

private:
    static constexpr int nMostReads = 8; ///< in a row, so that a flood doesn't hold up what else the stream does

    int ListenToGroup(tagTransport const& tTransport, tagMediaDescription const& tDescription);
    void Watch();
    void Send(Bytes abyPacket, std::uint16_t wChannel, CDescriptor const* pSocket, tagEndpoint const& tTo);

    CLoop& m_tLoop;
    ILoopClient& m_tClient;
    CControl& m_tControl;
    const eRtspTransport m_eTransport;
    tagPair m_tChannels; ///< in the RTSP connection
    tagUdpPair m_tPorts; ///< until the server has answered
    std::unique_ptr<CDescriptor> m_pRtp;
    std::unique_ptr<CDescriptor> m_pRtcp;
    tagEndpoint m_tSource;    ///< who may send; nLength 0: anybody
    tagEndpoint m_tMediaTo;   ///< nLength 0: nobody
    tagEndpoint m_tReportsTo; ///< nLength 0: nobody
};
} // namespace rtsp
