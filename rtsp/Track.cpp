#include "rtsp/Track.h"
#include "rtsp/Buffers.h"
#include "rtsp/DeviceClock.h"
#include "rtsp/Reception.h"
#include "rtsp/Reorderer.h"
#include "rtsp/payload/Payload.h"

#include <algorithm>
#include <random>
#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

// How long a frame that may be complete is held while its device's markers aren't known: longer than the packets of a
// picture lie apart.
constexpr auto g_tMarkerWait = 10ms;

// RTCP that came where RTP belongs (RFC 5761, 4).
bool IsRtcp(Bytes abyPacket)
{
    return abyPacket.size() >= 4 && abyPacket[1] >= 192 && abyPacket[1] <= 223;
}

std::string Name(tagMediaDescription const& tDescription, tagFormat const& tFormat, unsigned nSameBefore)
{
    std::string strName = tDescription.strMedia + "/" + tFormat.tFrame.szCodecName;
    if (nSameBefore > 0)
    {
        strName += "/" + std::to_string(nSameBefore + 1);
    }
    return strName;
}
} // namespace

class CTrack::CImpl final : private IPacketSink, private IUnitSink, private IRtcpSink
{
public:
    CImpl(CTrack& tTrack, tagMediaDescription const& tDescription, std::chrono::milliseconds tWait,
          unsigned nSameBefore)
        : m_tTrack(tTrack), m_pPayload(MakePayload(tDescription)),
          m_strIdentity(Name(tDescription, m_pPayload->Format(), nSameBefore)),
          m_nPayloadType(tDescription.nPayloadType), m_tReorderer(tWait), m_tReception(tDescription.dwClockRate),
          m_tDeviceClock(tDescription.dwClockRate)
    {
    }

    void TakeRtp(Bytes abyPacket, Clock::time_point tNow, IFrameSink& tSink)
    {
        if (IsRtcp(abyPacket))
        {
            TakeRtcp(abyPacket, tNow);
            return;
        }
        const auto tPacket = ParseRtp(abyPacket);
        if (!tPacket)
        {
            return;
        }
        m_ptSink = &tSink;
        ++m_ullPackets;
        if (!m_bAnySource || tPacket->dwSource != m_dwSource)
        {
            BeginSource(tPacket->dwSource);
        }
        m_tReception.OnPacket(*tPacket, tNow);
        m_tHeldUntil.reset(); // what is held waits anew with each packet
        m_tReorderer.Take(*tPacket, abyPacket, tNow, *this);
        UpdateHeld(tNow);
    }

    void TakeRtcp(Bytes abyPacket, Clock::time_point tNow)
    {
        m_tNow = tNow;
        ParseRtcp(abyPacket, *this);
    }

    std::optional<Clock::time_point> Deadline() const
    {
        const auto tGap = m_tReorderer.Deadline();
        return tGap && m_tHeldUntil ? std::min(*tGap, *m_tHeldUntil) : tGap ? tGap : m_tHeldUntil;
    }

    void OnDeadline(Clock::time_point tNow, IFrameSink& tSink)
    {
        m_ptSink = &tSink;
        m_tReorderer.OnDeadline(tNow, *this);
        if (m_tHeldUntil && *m_tHeldUntil <= tNow)
        {
            m_tHeldUntil.reset();
            if (m_pPayload->IsWaiting())
            {
                m_pPayload->Flush(*this);
            }
        }
        UpdateHeld(tNow);
    }

    void Finish(Clock::time_point tNow, IFrameSink& tSink)
    {
        m_ptSink = &tSink;
        m_tNow = tNow;
        m_tReorderer.Restart(*this);
        if (m_bEnded || m_pPayload->IsWaiting())
        {
            m_pPayload->Flush(*this);
        }
        m_tHeldUntil.reset();
    }

    void Reset()
    {
        m_tReorderer.Forget();
        m_pPayload->Reset();
        m_tDeviceClock.Restart();
        m_tHeldUntil.reset();
        m_bAnySource = false;
        m_bEnded = false;
    }

    std::string Report(Clock::time_point tNow)
    {
        auto tReport = m_tReception.Report(tNow);
        if (!tReport)
        {
            return {};
        }
        if (m_dwOwnSource == 0)
        {
            m_dwOwnSource = std::random_device()() | 1;
        }
        tReport->dwOwnSource = m_dwOwnSource;
        return MakeReceiverReport(*tReport);
    }

    bool HasEnded() const { return m_bEnded; }
    eMediaType Type() const { return static_cast<eMediaType>(m_pPayload->Format().tFrame.dwMediaType); }
    std::string const& Identity() const { return m_strIdentity; }
    std::uint64_t Packets() const { return m_ullPackets; }
    std::uint64_t Lost() const { return m_tReorderer.Lost(); }

private:
    // Nothing of another source goes on with what came from this one.
    void BeginSource(std::uint32_t dwSource)
    {
        if (m_bAnySource)
        {
            m_tReorderer.Restart(*this);
            m_pPayload->Flush(*this);
            m_pPayload->Reset();
            m_tDeviceClock.Restart();
        }
        m_bAnySource = true;
        m_dwSource = dwSource;
        m_bEnded = false;
    }

    void UpdateHeld(Clock::time_point tNow)
    {
        if (!m_pPayload->IsWaiting())
        {
            m_tHeldUntil.reset();
        }
        else if (!m_tHeldUntil)
        {
            m_tHeldUntil = tNow + g_tMarkerWait;
        }
    }

    void OnPacket(tagRtpPacket const& tPacket, unsigned nLostBefore, bool bRestarted) override
    {
        if (bRestarted)
        {
            m_pPayload->Flush(*this);
            m_pPayload->Reset();
        }
        // Other payload types share the sequence numbers.
        m_nLostBefore += nLostBefore;
        if (tPacket.byPayloadType == m_nPayloadType)
        {
            m_pPayload->Take(tPacket, std::exchange(m_nLostBefore, 0U), *this);
        }
    }

    void OnUnit(tagUnit& tUnit) override
    {
        tagFormat const& tFormat = m_pPayload->Format();
        tagTrackFrame tFrame;
        tFrame.tFrame = tFormat.tFrame;
        tFrame.pabyConfig = tFormat.pabyConfig;
        tFrame.abyData = std::move(tUnit.abyData);
        tFrame.tFrame.pData = tFrame.abyData.data();
        tFrame.tFrame.dwLength = static_cast<std::uint32_t>(tFrame.abyData.size());
        tFrame.tFrame.dwFlags =
            (tUnit.bKey ? unsigned{eFrameKey} : 0U) | (tUnit.bDamaged ? unsigned{eFrameDamaged} : 0U);
        tFrame.tFrame.dwLostBefore = tUnit.nLostBefore;
        tFrame.llStampUs = m_tDeviceClock.Unwrap(tUnit.dwStamp);
        tFrame.llRecordedUs = tUnit.llRecordedUs;
        tFrame.tFrame.llWallClockUs = tUnit.llRecordedUs.value_or(m_tDeviceClock.WallClockUs());
        tFrame.bReplayGap = tUnit.bReplayGap;
        tFrame.bReplayEnd = tUnit.bReplayEnd;
        tFrame.bRecordingEnds = tUnit.bRecordingEnds;
        m_ptSink->OnFrame(m_tTrack, tFrame);
        GiveBuffer(std::move(tFrame.abyData));
    }

    void OnSenderReport(std::uint32_t, std::uint64_t ullNtp, std::uint32_t dwStamp) override
    {
        m_tReception.OnSenderReport(ullNtp, m_tNow);
        m_tDeviceClock.OnReport(ullNtp == 0 ? 0 : NtpToUs(ullNtp), dwStamp);
    }

    void OnBye(std::uint32_t dwSource) override { m_bEnded |= !m_bAnySource || dwSource == m_dwSource; }

    CTrack& m_tTrack;
    std::unique_ptr<CPayload> m_pPayload;
    std::string m_strIdentity;
    int m_nPayloadType;
    IFrameSink* m_ptSink = nullptr; ///< of the call that is running
    Clock::time_point m_tNow;       ///< the same
    CReorderer m_tReorderer;
    CReception m_tReception;
    CDeviceClock m_tDeviceClock;
    unsigned m_nLostBefore = 0; ///< packets lost before the next of our payload type
    std::optional<Clock::time_point> m_tHeldUntil;
    std::uint32_t m_dwOwnSource = 0;
    std::uint32_t m_dwSource = 0;
    bool m_bAnySource = false;
    bool m_bEnded = false;
    std::uint64_t m_ullPackets = 0;
};

CTrack::CTrack(tagMediaDescription const& tDescription, std::chrono::milliseconds tWait, unsigned nSameBefore)
    : m_pImpl(std::make_unique<CImpl>(*this, tDescription, tWait, nSameBefore))
{
}
CTrack::~CTrack() = default;

void CTrack::TakeRtp(Bytes abyPacket, Clock::time_point tNow, IFrameSink& tSink)
{
    m_pImpl->TakeRtp(abyPacket, tNow, tSink);
}
void CTrack::TakeRtcp(Bytes abyPacket, Clock::time_point tNow)
{
    m_pImpl->TakeRtcp(abyPacket, tNow);
}
std::optional<Clock::time_point> CTrack::Deadline() const
{
    return m_pImpl->Deadline();
}
void CTrack::OnDeadline(Clock::time_point tNow, IFrameSink& tSink)
{
    m_pImpl->OnDeadline(tNow, tSink);
}
void CTrack::Finish(Clock::time_point tNow, IFrameSink& tSink)
{
    m_pImpl->Finish(tNow, tSink);
}
void CTrack::Reset()
{
    m_pImpl->Reset();
}
std::string CTrack::Report(Clock::time_point tNow)
{
    return m_pImpl->Report(tNow);
}
bool CTrack::HasEnded() const
{
    return m_pImpl->HasEnded();
}
eMediaType CTrack::Type() const
{
    return m_pImpl->Type();
}
std::string const& CTrack::Identity() const
{
    return m_pImpl->Identity();
}
std::uint64_t CTrack::Packets() const
{
    return m_pImpl->Packets();
}
std::uint64_t CTrack::Lost() const
{
    return m_pImpl->Lost();
}
} // namespace rtsp
