#include "rtsp/Channel.h"

#include <cerrno>
#include <sys/socket.h>

namespace rtsp
{
namespace
{
std::string WithPair(char const* szText, unsigned nFirst)
{
    return szText + std::to_string(nFirst) + '-' + std::to_string(nFirst + 1);
}
} // namespace

int CChannel::MakeRequest(std::size_t iTrack, std::string& strTransport)
{
    switch (m_eTransport)
    {
    case eRtspUdp:
        if (const int nError = OpenUdpPair(m_tControl.Local(), m_tPorts); nError != 0)
        {
            return nError;
        }
        strTransport = WithPair("RTP/AVP;unicast;client_port=", m_tPorts.wPort);
        return 0;
    case eRtspMulticast:
        strTransport = "RTP/AVP;multicast";
        return 0;
    default:
        m_tChannels = {static_cast<std::uint16_t>(2 * iTrack), static_cast<std::uint16_t>(2 * iTrack + 1)};
        strTransport = WithPair("RTP/AVP/TCP;unicast;interleaved=", m_tChannels.wRtp);
        return 0;
    }
}

int CChannel::TakeAnswer(tagTransport const& tTransport, tagMediaDescription const& tDescription)
{
    const bool bTcp = m_eTransport != eRtspUdp && m_eTransport != eRtspMulticast;
    if (tTransport.bTcp != bTcp || tTransport.bMulticast != (m_eTransport == eRtspMulticast))
    {
        return EPROTO;
    }
    if (bTcp)
    {
        m_tChannels = tTransport.tChannels.value_or(m_tChannels);
        return 0;
    }
    m_tSource = ParseEndpoint(tTransport.strSource, 0);
    if (m_eTransport == eRtspMulticast)
    {
        return ListenToGroup(tTransport, tDescription);
    }
    if (m_tSource.nLength == 0)
    {
        m_tSource = m_tControl.Peer();
    }
    if (tTransport.tServerPorts)
    {
        m_tMediaTo = m_tReportsTo = m_tSource;
        m_tMediaTo.SetPort(tTransport.tServerPorts->wRtp);
        m_tReportsTo.SetPort(tTransport.tServerPorts->wRtcp);
    }
    Watch();
    return 0;
}

// The answer names the group, or the description does.
int CChannel::ListenToGroup(tagTransport const& tTransport, tagMediaDescription const& tDescription)
{
    const bool bAnswered = !tTransport.strDestination.empty();
    const std::uint16_t wPort = tTransport.tGroupPorts ? tTransport.tGroupPorts->wRtp : tDescription.wPort;
    const auto wRtcpPort =
        tTransport.tGroupPorts ? tTransport.tGroupPorts->wRtcp : static_cast<std::uint16_t>(wPort + 1);
    const tagEndpoint tGroup = ParseEndpoint(bAnswered ? tTransport.strDestination : tDescription.strAddress, wPort);
    const tagEndpoint tOnly = ParseEndpoint(tDescription.strSource, 0);
    if (tGroup.nLength == 0 || wPort == 0 || (tOnly.nLength != 0 && tOnly.Family() != tGroup.Family()))
    {
        return EPROTO;
    }
    if (const int nError = JoinGroup(tGroup, wRtcpPort, m_tControl.Local(), tOnly, m_tPorts); nError != 0)
    {
        return nError;
    }
    m_tSource = tOnly.nLength != 0 ? tOnly : m_tSource;
    Watch();
    return 0;
}

void CChannel::Watch()
{
    m_pRtp = std::make_unique<CDescriptor>(m_tLoop, m_tPorts.tRtp.Release(), m_tControl.NextTag());
    m_pRtcp = std::make_unique<CDescriptor>(m_tLoop, m_tPorts.tRtcp.Release(), m_tControl.NextTag());
    m_pRtp->AwaitReadable(m_tClient);
    m_pRtcp->AwaitReadable(m_tClient);
}

CChannel::eKind CChannel::OfInterleaved(unsigned nChannel) const
{
    if (m_eTransport == eRtspUdp || m_eTransport == eRtspMulticast)
    {
        return eKind::None;
    }
    return nChannel == m_tChannels.wRtp ? eKind::Rtp : nChannel == m_tChannels.wRtcp ? eKind::Rtcp : eKind::None;
}

CChannel::eKind CChannel::OfTag(std::uint32_t dwTag) const
{
    if (m_pRtp && m_pRtp->Tag() == dwTag)
    {
        return eKind::Rtp;
    }
    return m_pRtcp && m_pRtcp->Tag() == dwTag ? eKind::Rtcp : eKind::None;
}

void CChannel::Send(Bytes abyPacket, std::uint16_t wChannel, CDescriptor const* pSocket, tagEndpoint const& tTo)
{
    if (!pSocket)
    {
        m_tControl.SendInterleaved(wChannel, abyPacket);
    }
    else if (tTo.nLength != 0)
    {
        sendto(pSocket->File(), abyPacket.data(), abyPacket.size(), MSG_NOSIGNAL, tTo.Address(), tTo.nLength);
    }
}
} // namespace rtsp
