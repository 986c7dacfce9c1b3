#include "rtsp/Media.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tReorderTime = 100ms;   // that a missing packet is waited for
constexpr auto g_tTcpReorderTime = 20ms; // the same in a connection: some devices put out of order what they send

std::int64_t Us(Clock::time_point tTime)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(tTime.time_since_epoch()).count();
}

// As it fits a word of 32 bits.
unsigned long Milliseconds(std::int64_t llUs)
{
    const std::uint64_t ullMs = static_cast<std::uint64_t>(llUs < 0 ? -llUs : llUs) / 1000;
    return static_cast<unsigned long>(std::min<std::uint64_t>(ullMs, std::numeric_limits<std::uint32_t>::max()));
}

Bytes AsBytes(std::string const& strBytes)
{
    return {reinterpret_cast<unsigned char const*>(strBytes.data()), strBytes.size()};
}
} // namespace

CMedia::~CMedia() = default;

// --- a session begins ------------------------------------------------------------------------------------------------

void CMedia::Clear()
{
    m_atTracks.clear();
    m_pBack.reset();
    m_ullPackets = 0;
    m_bTaking = false;
}

CChannel& CMedia::Add(tagMediaDescription const& tDescription, eRtspTransport eTransport)
{
    const bool bUdp = eTransport == eRtspUdp || eTransport == eRtspMulticast;
    tagTrack& tTrack = m_atTracks.emplace_back(m_tLoop, m_tClient, m_tControl, eTransport);
    m_bLastIsBack = false;
    try
    {
        unsigned nSame = 0;
        do
        {
            tTrack.tTrack.emplace(tDescription, bUdp ? g_tReorderTime : g_tTcpReorderTime, nSame++);
        } while (IsKnown(tTrack.tTrack->Identity()));
        tTrack.iIdentity = IdentityOf(*tTrack.tTrack);
    }
    catch (...)
    {
        m_atTracks.pop_back();
        throw;
    }
    return tTrack.tChannel;
}

// To a track before the last one.
bool CMedia::IsKnown(std::string const& strIdentity) const
{
    return std::any_of(m_atTracks.begin(), m_atTracks.end() - 1,
                       [&](tagTrack const& t) { return t.tTrack->Identity() == strIdentity; });
}

CChannel& CMedia::AddBackChannel(tagMediaDescription const& tDescription, tagAudioFormat const& tFormat,
                                 eRtspTransport eTransport)
{
    m_pBack.reset(new tagBack{CBackChannel(tDescription, tFormat), {m_tLoop, m_tClient, m_tControl, eTransport}});
    m_bLastIsBack = true;
    return m_pBack->tChannel;
}

void CMedia::DropLast()
{
    if (m_bLastIsBack)
    {
        m_pBack.reset();
    }
    else
    {
        m_atTracks.pop_back();
    }
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

void CMedia::Begin(CTimeline::ePace ePace)
{
    m_tTimeline.Restart(ePace);
    m_bTaking = true;
    bool bHasVideo = false;
    for (tagTrack& tTrack : m_atTracks)
    {
        tTrack.tTrack->Reset();
        tTrack.bRecordingEnds = false;
        bHasVideo |= tTrack.tTrack->Type() == eMediaVideo;
    }
    m_tDelivery.Restart(bHasVideo);
}

void CMedia::Hold(Clock::time_point tNow)
{
    if (!m_bTaking)
    {
        return;
    }
    m_bTaking = false;
    m_tNow = tNow;
    try
    {
        for (tagTrack& tTrack : m_atTracks)
        {
            Feed(*tTrack.tTrack, [&] { tTrack.tTrack->Finish(tNow, *this); });
        }
    }
    catch (...)
    {
        // Without memory the last frames go: a session must end all the same.
    }
}

bool CMedia::HaveEnded() const
{
    return !m_atTracks.empty() &&
           std::all_of(m_atTracks.begin(), m_atTracks.end(),
                       [](tagTrack const& t) { return t.bRecordingEnds || t.tTrack->HasEnded(); });
}

// --- packets ---------------------------------------------------------------------------------------------------------

void CMedia::OnInterleaved(unsigned nChannel, Bytes abyPacket, Clock::time_point tNow)
{
    for (tagTrack& tTrack : m_atTracks)
    {
        if (const CChannel::eKind eWhat = tTrack.tChannel.OfInterleaved(nChannel); eWhat != CChannel::eKind::None)
        {
            m_tNow = tNow;
            Take(tTrack, eWhat, abyPacket);
            return;
        }
    }
}

void CMedia::OnReadable(std::uint32_t dwTag, Clock::time_point tNow)
{
    m_tNow = tNow;
    for (tagTrack& tTrack : m_atTracks)
    {
        if (const CChannel::eKind eWhat = tTrack.tChannel.OfTag(dwTag); eWhat != CChannel::eKind::None)
        {
            tTrack.tChannel.Receive(eWhat, [&](Bytes abyPacket) { Take(tTrack, eWhat, abyPacket); });
            return;
        }
    }
    if (m_pBack && m_pBack->tChannel.OfTag(dwTag) != CChannel::eKind::None)
    {
        m_pBack->tChannel.Receive(m_pBack->tChannel.OfTag(dwTag), [](Bytes) {});
    }
}

void CMedia::Take(tagTrack& tTrack, CChannel::eKind eWhat, Bytes abyPacket)
{
    if (!m_bTaking)
    {
        return;
    }
    CTrack& tReceiver = *tTrack.tTrack;
    if (eWhat == CChannel::eKind::Rtcp)
    {
        tReceiver.TakeRtcp(abyPacket, m_tNow);
        return;
    }
    const std::uint64_t ullPackets = tReceiver.Packets();
    Feed(tReceiver, [&] { tReceiver.TakeRtp(abyPacket, m_tNow, *this); });
    if (tReceiver.Packets() != ullPackets)
    {
        ++m_ullPackets;
        m_tLastPacket = m_tNow;
    }
}

// What a track loses on the way is counted.
template <class F>
void CMedia::Feed(CTrack& tTrack, F fn)
{
    const std::uint64_t ullLost = tTrack.Lost();
    fn();
    if (tTrack.Lost() != ullLost)
    {
        m_tDelivery.EditInfo([&](tagRTSPPackageInfo& tInfo) { tInfo.ullLost += tTrack.Lost() - ullLost; });
    }
}

Clock::time_point CMedia::Deadline() const
{
    Clock::time_point tFirst = Clock::time_point::max();
    if (!m_bTaking)
    {
        return tFirst;
    }
    for (tagTrack const& tTrack : m_atTracks)
    {
        if (!m_bTaking)
        {
            break;
        }
        tFirst = std::min(tFirst, tTrack.tTrack->Deadline().value_or(tFirst));
    }
    return tFirst;
}

void CMedia::OnDeadline(Clock::time_point tNow)
{
    if (!m_bTaking)
    {
        return;
    }
    m_tNow = tNow;
    for (tagTrack& tTrack : m_atTracks)
    {
        if (!m_bTaking)
        {
            return;
        }
        Feed(*tTrack.tTrack, [&] { tTrack.tTrack->OnDeadline(tNow, *this); });
    }
}

void CMedia::SendReports(Clock::time_point tNow)
{
    for (tagTrack& tTrack : m_atTracks)
    {
        if (const std::string strReport = tTrack.tTrack->Report(tNow); !strReport.empty())
        {
            tTrack.tChannel.SendRtcp(AsBytes(strReport));
        }
    }
    if (m_pBack)
    {
        if (const std::string strReport = m_pBack->tPackets.MakeReport(); !strReport.empty())
        {
            m_pBack->tChannel.SendRtcp(AsBytes(strReport));
        }
    }
}

std::optional<tagAudioFormat> CMedia::BackFormat() const
{
    return m_pBack && m_bTaking ? std::optional(m_pBack->tPackets.Format()) : std::nullopt;
}

void CMedia::SendAudio(Bytes abyFrame, std::uint32_t nSamples, bool bFirst)
{
    m_pBack->tChannel.SendRtp(AsBytes(m_pBack->tPackets.MakePacket(abyFrame, nSamples, bFirst)));
}

void CMedia::OnFrame(CTrack& tTrack, tagTrackFrame& tTrackFrame)
{
    const auto itTrack = std::find_if(m_atTracks.begin(), m_atTracks.end(),
                                      [&](tagTrack const& tOther) { return &*tOther.tTrack == &tTrack; });
    tagIdentity& tIdentity = m_atIdentities[itTrack->iIdentity];
    tagStreamMediaFrame& tFrame = tTrackFrame.tFrame;
    const CTimeline::tagMapped tMapped = m_tTimeline.Map(tIdentity.strName, tTrackFrame.llStampUs, Us(m_tNow));
    tFrame.llPresentationTimeUs = tMapped.llTimeUs;
    tFrame.dwFlags |= tMapped.bDiscontinuity || tTrackFrame.bReplayGap ? unsigned{eFrameDiscontinuity} : 0U;
    tFrame.dwSequence = tIdentity.dwSequence++;
    itTrack->bRecordingEnds |= tTrackFrame.bRecordingEnds;
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
