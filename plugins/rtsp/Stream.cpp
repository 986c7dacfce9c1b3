#include "plugins/rtsp/Stream.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tConnectTime = 10s;     // for all of connecting
constexpr unsigned g_nMostRedirects = 5; // libavformat would go round in circles for all of the time
constexpr auto g_tStallTime = 5s;        // of silence, until it is told
constexpr auto g_tSilenceTime = 15s;     // of silence, until the connection is given up
constexpr auto g_tTeardownTime = 800ms;  // for the last request
constexpr auto g_tSettledTime = 10s;     // live for so long, a stream starts over with the shortest pause
constexpr std::chrono::seconds g_atPauses[] = {1s, 2s, 4s, 8s, 16s, 30s};
constexpr std::chrono::seconds g_atBadLoginPauses[] = {10s, 30s, 60s}; // devices lock accounts after a few wrong logins

// The stream whose thread this is.
thread_local CStream* g_pOwn = nullptr;

// Which stream's thread waits for which other stream's callback to return. Streams that close each other from their
// callbacks would wait for ever; the one that would close the circle doesn't wait.
std::mutex g_tWaitsMutex;
auto& g_atWaits = *new std::vector<std::pair<CStream*, CStream*>>; // never destroyed: streams may outlive statics

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
    case AVERROR(EPERM): // libavformat's -1, of an answer that it can't make sense of
        return EPROTO;
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
    {
        const std::lock_guard tLock(m_tMutex);
        m_bNewFrameCallback |= !m_tFrameCallback.pfn;
        m_tFrameCallback = {pfnFrame, dwUser};
    }
    WaitForCallback(&m_tFrameCallback);
}

void CStream::SetListener(eListener eWhich, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    const auto iWhich = static_cast<std::size_t>(eWhich);
    {
        const std::lock_guard tLock(m_tMutex);
        m_atListeners[iWhich] = {pfnEvent, dwUser};
        m_abNewListener[iWhich] = pfnEvent != nullptr;
        m_tChanged.notify_all();
    }
    WaitForCallback(&m_atListeners[iWhich]);
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
    WaitForCallback(nullptr);
}

// Waits for the end of the run that is going on, of this registration's function or (null) of any.
void CStream::WaitForCallback(void const* pCallback)
{
    std::unique_lock tLock(m_tMutex);
    const std::uint64_t ullCalls = m_ullCalls;
    const auto fnOver = [&] { return !m_pRunning || (pCallback && m_pRunning != pCallback) || m_ullCalls != ullCalls; };
    if (fnOver())
    {
        return;
    }
    if (g_pOwn)
    {
        tLock.unlock();
        {
            const std::lock_guard tWaitsLock(g_tWaitsMutex);
            if (StartsCircle(g_pOwn, this))
            {
                return;
            }
            g_atWaits.emplace_back(g_pOwn, this);
        }
        tLock.lock();
    }
    m_tChanged.wait(tLock, fnOver);
    tLock.unlock();
    if (g_pOwn)
    {
        const std::lock_guard tWaitsLock(g_tWaitsMutex);
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
    return m_tChanged.wait_until(tLock, tUntil, [this] { return m_bEnded || m_pRunning; }) && m_bEnded;
}

// --- the thread ------------------------------------------------------------------------------------------------------

void CStream::Run()
{
    g_pOwn = this;
    const CStackLogScope tScope(*this);
    while (!IsEndRequested())
    {
        if (IsPauseWanted())
        {
            SetState(eConnectionPaused);
            WaitForPlay();
        }
        else if (WaitForNextTry())
        {
            Try();
        }
    }
    const std::lock_guard tLock(m_tMutex);
    m_bEnded = true;
    m_tChanged.notify_all();
}

void CStream::Try()
{
    const eOutcome eWhy = RunSessionGuarded();
    if (eWhy == eOutcome::Ended || eWhy == eOutcome::Paused)
    {
        return;
    }
    const Clock::duration tPause = NextPause(eWhy);
    m_tNextTry = Clock::now() + tPause;
    const bool bRefused = eWhy == eOutcome::Refused;
    SetState(bRefused ? eConnectionRefused : eConnectionLost,
             static_cast<unsigned long>(bRefused ? m_nStatus : m_nError), Milliseconds(tPause));
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
    m_nRedirects = 0;
    m_tLiveSince = {};
    m_apTracks.clear();
    m_bGateOpen = false;
    m_ePhase = ePhase::Connecting;
    m_tDeadline = Clock::now() + g_tConnectTime;
    SetState(eConnectionConnecting);
    eOutcome eWhy;
    {
        CConnection tConnection(*this);
        int nResult = tConnection.Open(m_tAddress);
        if (nResult >= 0 && Clock::now() > m_tDeadline) // libavformat takes half an answer to the last request for one
        {
            nResult = AVERROR_EXIT;
        }
        eWhy = nResult < 0 ? Failed(nResult) : Receive(tConnection);
        m_ePhase = ePhase::Closing;
        m_tDeadline = Clock::now() + g_tTeardownTime;
    }
    m_ePhase = ePhase::Waiting;
    if (IsEndRequested())
    {
        return eOutcome::Ended;
    }
    return eWhy == eOutcome::Lost && IsPauseWanted() ? eOutcome::Paused : eWhy;
}

CStream::eOutcome CStream::Failed(int nError)
{
    if (m_nStatus == 0)
    {
        m_nStatus = StatusOf(nError);
    }
    // libavformat doesn't say of each step that the watchdog gave up.
    const Clock::time_point tNow = Clock::now();
    const bool bLate = m_ePhase == ePhase::Connecting ? tNow > m_tDeadline : tNow - m_tLastPacket > g_tSilenceTime;
    m_nError = m_nRedirects > g_nMostRedirects ? ELOOP : bLate ? ETIMEDOUT : ErrnoOf(nError);
    const bool bRefused = m_ePhase == ePhase::Connecting && m_nStatus != 0 && nError != AVERROR_EXIT && !bLate;
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
    m_abHeldBreak.resize(m_adwSequence.size());
    m_atWallClocks.resize(m_adwSequence.size());
    m_tTimeline.Restart();
    m_ePhase = ePhase::Receiving;
    m_tLastPacket = Clock::now();

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
            m_nError = EPIPE;
            return eOutcome::Lost;
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
// forget one that says nothing for long), or has no word for pausing. The session is then closed, and begun anew for
// playing.
bool CStream::StayPaused(CConnection& tConnection)
{
    if (!IsPauseWanted())
    {
        return true;
    }
    m_ePhase = ePhase::Connecting;
    m_tDeadline = Clock::now() + g_tConnectTime;
    if (tConnection.Pause() < 0)
    {
        return false;
    }
    SetState(eConnectionPaused);
    WaitForPlay();
    if (IsEndRequested())
    {
        return true;
    }
    m_tDeadline = Clock::now() + g_tConnectTime;
    const bool bPlaying = tConnection.Play() >= 0;
    m_ePhase = ePhase::Receiving;
    m_tLastPacket = Clock::now();
    m_tTimeline.Restart();
    m_bGateOpen = false;
    for (auto const& pTrack : m_apTracks)
    {
        pTrack->Reset();
    }
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

void CStream::WaitForPlay()
{
    for (std::unique_lock tLock(m_tMutex); m_bPauseWanted && !m_bEndRequested;)
    {
        tLock.unlock();
        TellNewListeners();
        tLock.lock();
        m_tChanged.wait(tLock, [this]
                        { return !m_bPauseWanted || m_bEndRequested || m_abNewListener[0] || m_abNewListener[1]; });
    }
}

// False: something else is wanted. Pausing and playing don't shorten the wait, or they could lock a device's account.
bool CStream::WaitForNextTry()
{
    std::unique_lock tLock(m_tMutex);
    while (!m_bEndRequested && !m_bPauseWanted && Clock::now() < m_tNextTry)
    {
        tLock.unlock();
        TellNewListeners();
        tLock.lock();
        m_tChanged.wait_until(
            tLock, m_tNextTry,
            [this] { return m_bPauseWanted || m_bEndRequested || m_abNewListener[0] || m_abNewListener[1]; });
    }
    return !m_bEndRequested && !m_bPauseWanted;
}

bool CStream::IsPauseWanted() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_bPauseWanted;
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
        return tNow > m_tDeadline || m_nRedirects > g_nMostRedirects;
    }
    const Clock::duration tSilence = tNow - m_tLastPacket;
    if (tSilence > g_tStallTime && m_adwState[0] != eEventStalled)
    {
        SetState(eConnectionStalled, Milliseconds(tSilence));
    }
    return tSilence > g_tSilenceTime || (tSilence > g_tStallTime && IsPauseWanted());
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
    // Told with the next frame that goes out.
    m_abHeldBreak[iTrack] = m_abHeldBreak[iTrack] || tMapped.bDiscontinuity;
    m_dwHeldLost += tFrame.dwLostBefore;
    tFrame.dwFlags |= m_abHeldBreak[iTrack] ? unsigned{eFrameDiscontinuity} : 0U;
    tFrame.dwLostBefore = m_dwHeldLost;
    tFrame.dwSequence = m_adwSequence[iTrack]++;
    const CWallClock::tagChecked tWall = m_atWallClocks[iTrack].Check(tFrame.llWallClockUs, tTrackFrame.llStampUs,
                                                                      tMapped.llTimeUs, tMapped.llJumpUs.has_value());
    tFrame.llWallClockUs = tWall.llWallUs;
    if (const auto llJumpUs = tMapped.llJumpUs ? tMapped.llJumpUs : tWall.llJumpUs)
    {
        Tell({eEventClockJump, static_cast<unsigned long>(std::abs(*llJumpUs) / 1000), *llJumpUs < 0,
              tFrame.dwMediaType});
    }
    tagCallback<StreamMediaCallback> tCallback;
    {
        const std::lock_guard tLock(m_tMutex);
        ++m_tInfo.ullPackets;
        if (std::exchange(m_bNewFrameCallback, false))
        {
            m_bGateOpen = false;
        }
        if (!m_tFrameCallback.pfn || !PassesGate(tFrame))
        {
            return;
        }
        ++m_tInfo.ullFrames;
        m_tInfo.ullBytes += tFrame.dwLength;
        tCallback = BeginCall(m_tFrameCallback);
    }
    m_abHeldBreak[iTrack] = false;
    m_dwHeldLost = 0;
    Call(tCallback, &tFrame);
}

// Closed until a video frame comes that decoding can start with. Of other codecs than H.264 and H.265 it isn't known
// which frames those are.
bool CStream::PassesGate(tagStreamMediaFrame const& tFrame)
{
    const bool bWholeKey = (tFrame.dwFlags & (eFrameKey | eFrameDamaged)) == eFrameKey;
    const bool bOpens =
        !m_bHasVideo || (tFrame.dwMediaType == eMediaVideo && (bWholeKey || tFrame.dwCodec == eCodecOther));
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
            tCallback = BeginCall(tListener);
        }
        Call(tCallback, adwWords[0], adwWords[1], adwWords[2], adwWords[3]);
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
            tCallback = BeginCall(m_atListeners[i]);
        }
        Call(tCallback, m_adwState[0], m_adwState[1], m_adwState[2], m_adwState[3]);
    }
}

// Under the mutex: a registration is read and marked as running in one step, so that who replaces it can wait for its
// end. No function: none may be called.
template <class Callback>
Callback CStream::BeginCall(Callback const& tCallback)
{
    if (m_bMuted || !tCallback.pfn)
    {
        return {};
    }
    m_pRunning = &tCallback;
    return tCallback;
}

template <class Callback, class... A>
void CStream::Call(Callback const& tCallback, A... tArguments)
{
    if (!tCallback.pfn)
    {
        return;
    }
    {
        const CStackLogBreak tBreak;
        tCallback.pfn(m_hStream, tArguments..., tCallback.dwUser);
    }
    const std::lock_guard tLock(m_tMutex);
    m_pRunning = nullptr;
    ++m_ullCalls;
    m_tChanged.notify_all();
}
} // namespace rtsp
