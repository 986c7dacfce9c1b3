#include "rtsp/Media.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <sys/socket.h>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tReorderTime = 100ms;   // that a missing packet is waited for
constexpr auto g_tTcpReorderTime = 20ms; // the same in a connection: some devices put out of order what they send
constexpr int g_nMostReads = 8;          // in a row, of 16 datagrams

std::int64_t Us(Clock::time_point tTime)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(tTime.time_since_epoch()).count();
}

unsigned long Milliseconds(std::int64_t llUs)
{
    const std::uint64_t ullMs = static_cast<std::uint64_t>(llUs < 0 ? -llUs : llUs) / 1000;
    return static_cast<unsigned long>(std::min<std::uint64_t>(ullMs, std::numeric_limits<std::uint32_t>::max()));
}

std::string PortPair(char const* szName, unsigned nFirst)
{
    return szName + std::to_string(nFirst) + '-' + std::to_string(nFirst + 1);
}
} // namespace

CMedia::~CMedia() = default;

// --- a session begins ------------------------------------------------------------------------------------------------

void CMedia::Clear()
{
    m_atTracks.clear();
    m_ullPackets = 0;
    m_bTaking = false;
}

std::size_t CMedia::Add(tagMediaDescription const& tDescription, eRtspTransport eTransport)
{
    tagTrack tTrack;
    tTrack.eTransport = eTransport;
    unsigned nSame = 0;
    const std::chrono::milliseconds tWait = eTransport == eRtspTcp ? g_tTcpReorderTime : g_tReorderTime;
    do
    {
        tTrack.pTrack = std::make_unique<CTrack>(tDescription, tWait, nSame++);
    } while (std::any_of(m_atTracks.begin(), m_atTracks.end(),
                         [&](tagTrack const& tOther)
                         { return tOther.pTrack->Identity() == tTrack.pTrack->Identity(); }));
    tTrack.iIdentity = IdentityOf(*tTrack.pTrack);
    m_atTracks.push_back(std::move(tTrack));
    return m_atTracks.size() - 1;
}

std::size_t CMedia::IdentityOf(CTrack const& tTrack)
{
    const auto itFound =
        std::find_if(m_atIdentities.begin(), m_atIdentities.end(),
                     [&](tagIdentity const& tIdentity) { return tIdentity.strName == tTrack.Identity(); });
    if (itFound != m_atIdentities.end())
    {
        return static_cast<std::size_t>(itFound - m_atIdentities.begin());
    }
    m_atIdentities.push_back({tTrack.Identity(), 0, {}});
    return m_atIdentities.size() - 1;
}

int CMedia::MakeTransport(std::size_t iTrack, std::string& strTransport)
{
    tagTrack& tTrack = m_atTracks[iTrack];
    switch (tTrack.eTransport)
    {
    case eRtspUdp:
        if (const int nError = OpenUdpPair(m_tControl.Local(), tTrack.tPorts); nError != 0)
        {
            return nError;
        }
        strTransport = PortPair("RTP/AVP;unicast;client_port=", tTrack.tPorts.wPort);
        return 0;
    case eRtspMulticast:
        strTransport = "RTP/AVP;multicast";
        return 0;
    default:
        tTrack.tChannels = {static_cast<std::uint16_t>(2 * iTrack), static_cast<std::uint16_t>(2 * iTrack + 1)};
        strTransport = PortPair("RTP/AVP/TCP;unicast;interleaved=", tTrack.tChannels.wRtp);
        return 0;
    }
}

int CMedia::TakeTransport(std::size_t iTrack, tagTransport const& tTransport, tagMediaDescription const& tDescription)
{
    tagTrack& tTrack = m_atTracks[iTrack];
    if (tTransport.bTcp != (tTrack.eTransport == eRtspTcp) ||
        tTransport.bMulticast != (tTrack.eTransport == eRtspMulticast))
    {
        return EPROTO;
    }
    if (tTrack.eTransport == eRtspTcp)
    {
        tTrack.tChannels = tTransport.tChannels.value_or(tTrack.tChannels);
        return 0;
    }
    tTrack.tSource = tTransport.strSource.empty() ? tagEndpoint{} : ParseEndpoint(tTransport.strSource, 0);
    if (tTrack.eTransport == eRtspMulticast)
    {
        return ListenToGroup(tTrack, tTransport, tDescription);
    }
    if (tTrack.tSource.nLength == 0)
    {
        tTrack.tSource = m_tControl.Peer();
    }
    if (tTransport.tServerPorts)
    {
        tTrack.tReportsTo = tTrack.tSource;
        tTrack.tReportsTo.SetPort(tTransport.tServerPorts->wRtcp);
    }
    Watch(tTrack);
    return 0;
}

// The answer names the group, or the description does.
int CMedia::ListenToGroup(tagTrack& tTrack, tagTransport const& tTransport, tagMediaDescription const& tDescription)
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
    if (const int nError = JoinGroup(tGroup, wRtcpPort, m_tControl.Local(), tOnly, tTrack.tPorts); nError != 0)
    {
        return nError;
    }
    if (tOnly.nLength != 0)
    {
        tTrack.tSource = tOnly;
    }
    Watch(tTrack);
    return 0;
}

void CMedia::Watch(tagTrack& tTrack)
{
    tTrack.pRtp = std::make_unique<CDescriptor>(m_tLoop, tTrack.tPorts.tRtp.Release(), m_tControl.NextTag());
    tTrack.pRtcp = std::make_unique<CDescriptor>(m_tLoop, tTrack.tPorts.tRtcp.Release(), m_tControl.NextTag());
    tTrack.pRtp->AwaitReadable(m_tClient);
    tTrack.pRtcp->AwaitReadable(m_tClient);
}

void CMedia::Begin(CTimeline::ePace ePace)
{
    m_tTimeline.Restart(ePace);
    m_bTaking = true;
    bool bHasVideo = false;
    for (tagTrack const& tTrack : m_atTracks)
    {
        tTrack.pTrack->Reset();
        bHasVideo |= tTrack.pTrack->Type() == eMediaVideo;
    }
    m_tDelivery.Restart(bHasVideo);
}

bool CMedia::HaveEnded() const
{
    return !m_atTracks.empty() &&
           std::all_of(m_atTracks.begin(), m_atTracks.end(), [](tagTrack const& t) { return t.pTrack->HasEnded(); });
}

// --- packets ---------------------------------------------------------------------------------------------------------

void CMedia::OnInterleaved(unsigned nChannel, Bytes abyPacket, Clock::time_point tNow)
{
    for (tagTrack& tTrack : m_atTracks)
    {
        if (tTrack.eTransport == eRtspTcp && (nChannel == tTrack.tChannels.wRtp || nChannel == tTrack.tChannels.wRtcp))
        {
            Take(tTrack, nChannel != tTrack.tChannels.wRtp, abyPacket, tNow);
            return;
        }
    }
}

bool CMedia::OnReadable(std::uint32_t dwTag, Clock::time_point tNow)
{
    for (tagTrack& tTrack : m_atTracks)
    {
        for (CDescriptor* const pDescriptor : {tTrack.pRtp.get(), tTrack.pRtcp.get()})
        {
            if (pDescriptor && pDescriptor->Tag() == dwTag)
            {
                Receive(tTrack, *pDescriptor, tNow);
                return true;
            }
        }
    }
    return false;
}

void CMedia::Receive(tagTrack& tTrack, CDescriptor& tDescriptor, Clock::time_point tNow)
{
    const bool bRtcp = &tDescriptor == tTrack.pRtcp.get();
    for (int i = 0; i < g_nMostReads; ++i)
    {
        const std::span<tagDatagram const> atDatagrams = ReceiveDatagrams(tDescriptor.File());
        for (tagDatagram const& tDatagram : atDatagrams)
        {
            if (tTrack.tSource.nLength == 0 || tTrack.tSource.IsSameHost(tDatagram.tFrom))
            {
                Take(tTrack, bRtcp, tDatagram.abyData, tNow);
            }
        }
        if (atDatagrams.size() < g_nMostDatagrams)
        {
            break;
        }
    }
    tDescriptor.AwaitReadable(m_tClient);
}

void CMedia::Take(tagTrack& tTrack, bool bRtcp, Bytes abyPacket, Clock::time_point tNow)
{
    if (!m_bTaking)
    {
        return;
    }
    m_tNow = tNow;
    CTrack& tReceiver = *tTrack.pTrack;
    if (bRtcp)
    {
        tReceiver.TakeRtcp(abyPacket, tNow);
        return;
    }
    const std::uint64_t ullPackets = tReceiver.Packets();
    const std::uint64_t ullLost = tReceiver.Lost();
    tReceiver.TakeRtp(abyPacket, tNow, *this);
    if (tReceiver.Packets() != ullPackets)
    {
        ++m_ullPackets;
        m_tLastPacket = tNow;
    }
    if (tReceiver.Lost() != ullLost)
    {
        m_tDelivery.EditInfo([&](tagRTSPPackageInfo& tInfo) { tInfo.ullLost += tReceiver.Lost() - ullLost; });
    }
}

Clock::time_point CMedia::Deadline() const
{
    Clock::time_point tFirst = Clock::time_point::max();
    for (tagTrack const& tTrack : m_atTracks)
    {
        tFirst = std::min(tFirst, tTrack.pTrack->Deadline().value_or(tFirst));
    }
    return tFirst;
}

void CMedia::OnDeadline(Clock::time_point tNow)
{
    m_tNow = tNow;
    for (tagTrack const& tTrack : m_atTracks)
    {
        const std::uint64_t ullLost = tTrack.pTrack->Lost();
        tTrack.pTrack->OnDeadline(tNow, *this);
        if (tTrack.pTrack->Lost() != ullLost)
        {
            m_tDelivery.EditInfo([&](tagRTSPPackageInfo& tInfo) { tInfo.ullLost += tTrack.pTrack->Lost() - ullLost; });
        }
    }
}

void CMedia::SendReports(Clock::time_point tNow)
{
    for (tagTrack& tTrack : m_atTracks)
    {
        const std::string strReport = tTrack.pTrack->Report(tNow);
        if (strReport.empty())
        {
            continue;
        }
        if (tTrack.eTransport == eRtspTcp)
        {
            m_tControl.SendInterleaved(tTrack.tChannels.wRtcp,
                                       {reinterpret_cast<unsigned char const*>(strReport.data()), strReport.size()});
        }
        else if (tTrack.tReportsTo.nLength != 0)
        {
            sendto(tTrack.pRtcp->File(), strReport.data(), strReport.size(), MSG_NOSIGNAL, tTrack.tReportsTo.Address(),
                   tTrack.tReportsTo.nLength);
        }
    }
}

void CMedia::OnFrame(CTrack& tTrack, tagTrackFrame& tTrackFrame)
{
    const auto itTrack = std::find_if(m_atTracks.begin(), m_atTracks.end(),
                                      [&](tagTrack const& tOther) { return tOther.pTrack.get() == &tTrack; });
    tagIdentity& tIdentity = m_atIdentities[itTrack->iIdentity];
    tagStreamMediaFrame& tFrame = tTrackFrame.tFrame;
    const CTimeline::tagMapped tMapped = m_tTimeline.Map(tIdentity.strName, tTrackFrame.llStampUs, Us(m_tNow));
    tFrame.llPresentationTimeUs = tMapped.llTimeUs;
    tFrame.dwFlags |= tMapped.bDiscontinuity || tTrackFrame.bReplayGap ? unsigned{eFrameDiscontinuity} : 0U;
    tFrame.dwSequence = tIdentity.dwSequence++;
    std::optional<std::int64_t> llJumpUs = tMapped.llJumpUs;
    if (tTrackFrame.llRecordedUs)
    {
        tFrame.llWallClockUs = *tTrackFrame.llRecordedUs;
    }
    else
    {
        const CWallClock::tagChecked tWall = tIdentity.tWallClock.Check(tFrame.llWallClockUs, tTrackFrame.llStampUs,
                                                                        tMapped.llTimeUs, llJumpUs.has_value());
        tFrame.llWallClockUs = tWall.llWallUs;
        llJumpUs = llJumpUs ? llJumpUs : tWall.llJumpUs;
    }
    if (llJumpUs)
    {
        m_tDelivery.PutEvent({eEventClockJump, Milliseconds(*llJumpUs), *llJumpUs < 0, tFrame.dwMediaType});
    }
    m_tDelivery.PutFrame(tTrackFrame, static_cast<unsigned>(itTrack->iIdentity));
}
} // namespace rtsp
