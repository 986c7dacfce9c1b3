#include "plugins/rtsp/Stream.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tConnectTime = 10s;    // for all of connecting
constexpr auto g_tStallTime = 5s;       // of silence, until it is told
constexpr auto g_tSilenceTime = 15s;    // of silence, until the connection is given up
constexpr auto g_tTeardownTime = 800ms; // for the last request
constexpr auto g_tSettledTime = 10s;    // live for so long, a stream starts over with the shortest pause
constexpr std::chrono::seconds g_atPauses[] = {1s, 2s, 4s, 8s, 16s, 30s};
constexpr std::chrono::seconds g_atBadLoginPauses[] = {10s, 30s, 60s}; // devices lock accounts after a few wrong logins

// The stream whose thread this is.
thread_local CStream* g_pOwn = nullptr;

// Which stream's thread waits for which other stream's callback to return. Streams that close each other from their
// callbacks would wait for ever; the one that would close the circle doesn't wait.
std::mutex g_tWaitsMutex;
std::vector<std::pair<CStream*, CStream*>> g_atWaits;

bool StartsCircle(CStream const* pWaiter, CStream const* pTarget)
{
    while (pTarget != pWaiter)
    {
        const auto itNext =
            std::find_if(g_atWaits.begin(), g_atWaits.end(), [&](auto const& tWait) { return tWait.first == pTarget; });
        if (itNext == g_atWaits.end())
        {
            return false;
        }
        pTarget = itNext->second;
    }
    return true;
}

unsigned long Milliseconds(Clock::duration tTime)
{
    return static_cast<unsigned long>(std::chrono::duration_cast<std::chrono::milliseconds>(tTime).count());
}

std::int64_t NowUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count();
}

// What libavformat makes of an RTSP status, for the case that its log didn't tell the number.
int StatusOf(int nError)
{
    switch (nError)
    {
    case AVERROR_HTTP_BAD_REQUEST:
        return 400;
    case AVERROR_HTTP_UNAUTHORIZED:
        return 401;
    case AVERROR_HTTP_FORBIDDEN:
        return 403;
    case AVERROR_HTTP_NOT_FOUND:
        return 404;
    case AVERROR_HTTP_OTHER_4XX:
        return 499;
    case AVERROR_HTTP_SERVER_ERROR:
        return 500;
    default:
        return 0;
    }
}

int ErrnoOf(int nError)
{
    switch (nError)
    {
    case AVERROR_EOF:
        return 0;
    case AVERROR_EXIT: // the watchdog gave up
        return ETIMEDOUT;
    default:
        return AVUNERROR(nError) > 0 && AVUNERROR(nError) < 4096 ? AVUNERROR(nError) : EPROTO;
    }
}
} // namespace

CStream::CStream(void* hStream, tagAddress tAddress) : m_hStream(hStream), m_tAddress(std::move(tAddress))
{
    m_adwState[0] = eEventConnecting;
    m_tInfo.dwState = eConnectionConnecting;
    m_tThread = std::thread([this] { Run(); });
}

CStream::~CStream()
{
    m_tThread.join();
}

// --- for any thread --------------------------------------------------------------------------------------------------

void CStream::SetFrameCallback(StreamMediaCallback pfnFrame, unsigned long dwUser)
{
    const std::lock_guard tLock(m_tMutex);
    m_bNewFrameCallback |= !m_tFrameCallback.pfn;
    m_tFrameCallback = {pfnFrame, dwUser};
}

void CStream::SetListener(eListener eWhich, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    const std::lock_guard tLock(m_tMutex);
    const auto iWhich = static_cast<std::size_t>(eWhich);
    m_atListeners[iWhich] = {pfnEvent, dwUser};
    m_abNewListener[iWhich] = pfnEvent != nullptr;
    m_tChanged.notify_all();
}

void CStream::SetPaused(bool bPaused)
{
    const std::lock_guard tLock(m_tMutex);
    m_bPauseWanted = bPaused;
    m_tChanged.notify_all();
}

tagRTSPPackageInfo CStream::Info() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_tInfo;
}

void CStream::RequestEnd()
{
    const std::lock_guard tLock(m_tMutex);
    m_bEndRequested = true;
    m_tChanged.notify_all();
}

bool CStream::IsEndRequested() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_bEndRequested;
}

void CStream::MuteNow()
{
    const std::lock_guard tLock(m_tMutex);
    m_bMuted = true;
}

void CStream::Mute()
{
    MuteNow();
    if (g_pOwn)
    {
        const std::lock_guard tLock(g_tWaitsMutex);
        if (StartsCircle(g_pOwn, this))
        {
            return;
        }
        g_atWaits.emplace_back(g_pOwn, this);
    }
    {
        std::unique_lock tLock(m_tMutex);
        m_tChanged.wait(tLock, [this] { return !m_bInCallback; });
    }
    if (g_pOwn)
    {
        const std::lock_guard tLock(g_tWaitsMutex);
        std::erase(g_atWaits, std::pair{g_pOwn, this});
    }
}

bool CStream::WaitForEnd(Clock::time_point tUntil)
{
    if (g_pOwn == this)
    {
        return false;
    }
    std::unique_lock tLock(m_tMutex);
    // A callback that couldn't be waited for may be waiting for the caller.
    return m_tChanged.wait_until(tLock, tUntil, [this] { return m_bEnded || m_bInCallback; }) && m_bEnded;
}

// --- the thread ------------------------------------------------------------------------------------------------------

void CStream::Run()
{
    g_pOwn = this;
    const CStackLogScope tScope(*this);
    for (;;)
    {
        const eOutcome eWhy = RunSessionGuarded();
        if (eWhy == eOutcome::Ended)
        {
            break;
        }
        const Clock::duration tPause = NextPause(eWhy);
        if (eWhy == eOutcome::Refused)
        {
            SetState(eConnectionRefused, static_cast<unsigned long>(m_nStatus), Milliseconds(tPause));
        }
        else
        {
            SetState(eConnectionLost, static_cast<unsigned long>(m_nError), Milliseconds(tPause));
        }
        WaitBeforeNextTry(tPause);
    }
    const std::lock_guard tLock(m_tMutex);
    m_bEnded = true;
    m_tChanged.notify_all();
}

// A session that runs out of memory is lost like any other.
CStream::eOutcome CStream::RunSessionGuarded()
try
{
    return RunSession();
}
catch (...)
{
    m_ePhase = ePhase::Waiting;
    m_nError = ENOMEM;
    return IsEndRequested() ? eOutcome::Ended : eOutcome::Lost;
}

CStream::eOutcome CStream::RunSession()
{
    m_nStatus = 0;
    m_nMissed = 0;
    m_apTracks.clear();
    m_bGateOpen = false;
    m_ePhase = ePhase::Connecting;
    m_tDeadline = Clock::now() + g_tConnectTime;
    SetState(eConnectionConnecting);
    eOutcome eWhy;
    {
        CConnection tConnection(*this);
        const int nResult = tConnection.Open(m_tAddress);
        eWhy = nResult < 0 ? Failed(nResult) : Receive(tConnection);
        m_ePhase = ePhase::Closing;
        m_tDeadline = Clock::now() + g_tTeardownTime;
    }
    m_ePhase = ePhase::Waiting;
    return IsEndRequested() ? eOutcome::Ended : eWhy;
}

CStream::eOutcome CStream::Failed(int nError)
{
    if (m_nStatus == 0)
    {
        m_nStatus = StatusOf(nError);
    }
    m_nError = ErrnoOf(nError);
    const bool bRefused = m_ePhase == ePhase::Connecting && m_nStatus != 0 && nError != AVERROR_EXIT;
    const std::lock_guard tLock(m_tMutex);
    if (bRefused)
    {
        m_tInfo.dwLastStatus = static_cast<std::uint32_t>(m_nStatus);
    }
    return bRefused ? eOutcome::Refused : eOutcome::Lost;
}

CStream::eOutcome CStream::Receive(CConnection& tConnection)
{
    m_bHasVideo = false;
    for (unsigned iTrack = 0; iTrack < tConnection.Tracks(); ++iTrack)
    {
        m_apTracks.push_back(std::make_unique<CTrack>(tConnection.Track(iTrack)));
        m_bHasVideo |= m_apTracks.back()->Type() == eMediaVideo;
    }
    m_adwSequence.resize(std::max(m_adwSequence.size(), m_apTracks.size()));
    m_tTimeline.Restart();
    m_ePhase = ePhase::Receiving;
    m_tLastPacket = Clock::now();
    m_tLiveSince = {};

    const std::unique_ptr<AVPacket, void (*)(AVPacket*)> ptPacket(av_packet_alloc(),
                                                                  [](AVPacket* pt) { av_packet_free(&pt); });
    if (!ptPacket)
    {
        return Failed(AVERROR(ENOMEM));
    }
    while (!IsEndRequested())
    {
        if (!StayPaused(tConnection))
        {
            return Failed(AVERROR(EPIPE));
        }
        const int nResult = tConnection.Read(*ptPacket);
        if (nResult == AVERROR(EAGAIN))
        {
            continue;
        }
        if (nResult < 0)
        {
            return Failed(nResult);
        }
        m_tLastPacket = Clock::now();
        if (ptPacket->stream_index < static_cast<int>(m_apTracks.size()))
        {
            OnPacket(*ptPacket);
        }
        av_packet_unref(ptPacket.get());
    }
    return eOutcome::Ended;
}

// Pauses when asked to, and waits until playing is asked for. False: the device no longer knows the session (it may
// forget one that says nothing for long), or refuses; the stream then connects anew.
bool CStream::StayPaused(CConnection& tConnection)
{
    std::unique_lock tLock(m_tMutex);
    if (!m_bPauseWanted)
    {
        return true;
    }
    tLock.unlock();
    m_ePhase = ePhase::Connecting;
    m_tDeadline = Clock::now() + g_tConnectTime;
    if (tConnection.Pause() < 0)
    {
        return false;
    }
    SetState(eConnectionPaused);
    for (;;)
    {
        TellNewListeners();
        tLock.lock();
        m_tChanged.wait(tLock, [this]
                        { return !m_bPauseWanted || m_bEndRequested || m_abNewListener[0] || m_abNewListener[1]; });
        const bool bStay = m_bPauseWanted && !m_bEndRequested;
        const bool bEnd = m_bEndRequested;
        tLock.unlock();
        if (bEnd)
        {
            return true;
        }
        if (!bStay)
        {
            break;
        }
    }
    m_tDeadline = Clock::now() + g_tConnectTime;
    const bool bPlaying = tConnection.Play() >= 0;
    m_ePhase = ePhase::Receiving;
    m_tLastPacket = Clock::now();
    m_tTimeline.Restart();
    m_bGateOpen = false;
    return bPlaying;
}

Clock::duration CStream::NextPause(eOutcome eWhy)
{
    if (m_tLiveSince != Clock::time_point{} && Clock::now() - m_tLiveSince > g_tSettledTime)
    {
        m_nFailures = 0;
    }
    const unsigned nFailure = m_nFailures++;
    const bool bBadLogin = eWhy == eOutcome::Refused && (m_nStatus == 401 || m_nStatus == 403);
    return bBadLogin ? g_atBadLoginPauses[std::min<std::size_t>(nFailure, std::size(g_atBadLoginPauses) - 1)]
                     : g_atPauses[std::min<std::size_t>(nFailure, std::size(g_atPauses) - 1)];
}

void CStream::WaitBeforeNextTry(Clock::duration tPause)
{
    const Clock::time_point tUntil = Clock::now() + tPause;
    std::unique_lock tLock(m_tMutex);
    while (!m_bEndRequested && Clock::now() < tUntil)
    {
        tLock.unlock();
        TellNewListeners();
        tLock.lock();
        m_tChanged.wait_until(tLock, tUntil,
                              [this] { return m_bEndRequested || m_abNewListener[0] || m_abNewListener[1]; });
    }
}

// libavformat asks here while it waits, which is also the time to tell that nothing comes.
bool CStream::GiveUp()
{
    const Clock::time_point tNow = Clock::now();
    if (m_ePhase == ePhase::Closing)
    {
        return tNow > m_tDeadline;
    }
    TellNewListeners();
    if (IsEndRequested())
    {
        return true;
    }
    if (m_ePhase == ePhase::Connecting)
    {
        return tNow > m_tDeadline;
    }
    const Clock::duration tSilence = tNow - m_tLastPacket;
    if (tSilence > g_tStallTime && m_adwState[0] != eEventStalled)
    {
        SetState(eConnectionStalled, Milliseconds(tSilence));
    }
    return tSilence > g_tSilenceTime;
}

void CStream::OnMissed(unsigned nPackets)
{
    m_nMissed += nPackets;
    const std::lock_guard tLock(m_tMutex);
    m_tInfo.ullLost += nPackets;
}

// --- frames ----------------------------------------------------------------------------------------------------------

void CStream::OnPacket(AVPacket const& tPacket)
{
    if (m_adwState[0] != eEventLive)
    {
        if (m_tLiveSince == Clock::time_point{})
        {
            m_tLiveSince = m_tLastPacket;
            const std::lock_guard tLock(m_tMutex);
            m_tInfo.dwReconnects += m_bWasConnected;
            m_bWasConnected = true;
        }
        SetState(eConnectionLive);
    }
    TellNewListeners();
    const auto iTrack = static_cast<unsigned>(tPacket.stream_index);
    tagTrackFrame tFrame;
    if (m_apTracks[iTrack]->Take(tPacket, std::exchange(m_nMissed, 0U), tFrame))
    {
        OnFrame(iTrack, tFrame);
    }
}

void CStream::OnFrame(unsigned iTrack, tagTrackFrame& tTrackFrame)
{
    tagStreamMediaFrame& tFrame = tTrackFrame.tFrame;
    const CTimeline::tagMapped tMapped = m_tTimeline.Map(iTrack, tTrackFrame.llStampUs, NowUs());
    tFrame.llPresentationTimeUs = tMapped.llTimeUs;
    tFrame.dwFlags |= tMapped.bDiscontinuity ? unsigned{eFrameDiscontinuity} : 0U;
    tFrame.dwSequence = m_adwSequence[iTrack]++;
    if (tMapped.llJumpUs)
    {
        const bool bBackward = *tMapped.llJumpUs < 0;
        const auto ullJumpMs = static_cast<unsigned long>((bBackward ? -*tMapped.llJumpUs : *tMapped.llJumpUs) / 1000);
        Tell({eEventClockJump, ullJumpMs, bBackward, tFrame.dwMediaType});
    }
    tagCallback<StreamMediaCallback> tCallback;
    {
        const std::lock_guard tLock(m_tMutex);
        ++m_tInfo.ullPackets;
        tCallback = m_tFrameCallback;
        if (std::exchange(m_bNewFrameCallback, false))
        {
            m_bGateOpen = false;
        }
        if (!tCallback.pfn || !PassesGate(tFrame))
        {
            return;
        }
        ++m_tInfo.ullFrames;
        m_tInfo.ullBytes += tFrame.dwLength;
    }
    CallBack([&] { tCallback.pfn(m_hStream, &tFrame, tCallback.dwUser); });
}

// Closed until a video frame comes that decoding can start with. Of other codecs than H.264 and H.265 it isn't known
// which frames those are.
bool CStream::PassesGate(tagStreamMediaFrame const& tFrame)
{
    const bool bOpens = !m_bHasVideo || (tFrame.dwMediaType == eMediaVideo &&
                                         ((tFrame.dwFlags & eFrameKey) || tFrame.dwCodec == eCodecOther));
    m_bGateOpen |= bOpens;
    return m_bGateOpen;
}

// --- events ----------------------------------------------------------------------------------------------------------

// m_adwState is written by this thread alone.
void CStream::SetState(eConnectionState eState, unsigned long dwDetail, unsigned long dwPauseMs)
{
    std::array<unsigned long, 4> adwWords;
    {
        const std::lock_guard tLock(m_tMutex);
        m_tInfo.dwState = static_cast<std::uint32_t>(eState);
        m_adwState = {static_cast<unsigned long>(eState), dwDetail, dwPauseMs, m_tInfo.dwReconnects};
        m_abNewListener = {}; // they hear of it now
        adwWords = m_adwState;
    }
    Tell(adwWords);
}

void CStream::Tell(std::array<unsigned long, 4> const& adwWords)
{
    for (auto const& tListener : m_atListeners)
    {
        tagCallback<DeviceEventCallback> tCallback;
        {
            const std::lock_guard tLock(m_tMutex);
            tCallback = tListener;
        }
        if (tCallback.pfn)
        {
            CallBack(
                [&]
                { tCallback.pfn(m_hStream, adwWords[0], adwWords[1], adwWords[2], adwWords[3], tCallback.dwUser); });
        }
    }
}

void CStream::TellNewListeners()
{
    for (std::size_t i = 0; i < m_atListeners.size(); ++i)
    {
        tagCallback<DeviceEventCallback> tCallback;
        {
            const std::lock_guard tLock(m_tMutex);
            if (!std::exchange(m_abNewListener[i], false))
            {
                continue;
            }
            tCallback = m_atListeners[i];
        }
        CallBack(
            [&] {
                tCallback.pfn(m_hStream, m_adwState[0], m_adwState[1], m_adwState[2], m_adwState[3], tCallback.dwUser);
            });
    }
}

template <class F>
void CStream::CallBack(F fnCall)
{
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_bMuted)
        {
            return;
        }
        m_bInCallback = true;
    }
    fnCall();
    const std::lock_guard tLock(m_tMutex);
    m_bInCallback = false;
    m_tChanged.notify_all();
}
} // namespace rtsp
