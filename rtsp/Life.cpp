#include "rtsp/Life.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tConnectTime = 10s; // for all of connecting
constexpr unsigned g_nMostRedirects = 5;
constexpr auto g_tStallTime = 5s;       // of silence, until it is told
constexpr auto g_tSilenceTime = 15s;    // of silence, until the connection is given up
constexpr auto g_tTryUdpTime = 3s;      // of silence, until eRtspAutomatic gives UDP up
constexpr auto g_tTeardownTime = 800ms; // for the last answer
constexpr auto g_tReportTime = 5s;      // between receiver reports
constexpr auto g_tSettledTime = 10s;    // live for so long, a stream starts over with the shortest pause
constexpr std::size_t g_nMostTracks = 16;
constexpr std::chrono::seconds g_atPauses[] = {1s, 2s, 4s, 8s, 16s, 30s};
constexpr std::chrono::seconds g_atBadLoginPauses[] = {10s, 30s, 60s}; // devices lock accounts after a few wrong logins

unsigned long Milliseconds(Clock::duration tTime)
{
    return static_cast<unsigned long>(std::chrono::duration_cast<std::chrono::milliseconds>(tTime).count());
}

// Half of what the server allows.
Clock::duration SignOfLifeTime(unsigned nTimeOut)
{
    const auto tHalf = std::chrono::milliseconds(500) * std::min(nTimeOut, 240U);
    return nTimeOut == 0 ? Clock::duration(30s) : Clock::duration(tHalf);
}

bool IsAddress(std::string_view strText)
{
    return ParseUrl(strText).has_value();
}

std::string BaseOf(tagMessage const& tAnswer, std::string const& strUrl)
{
    const std::string_view strBase = tAnswer.Header("Content-Base");
    const std::string_view strLocation = tAnswer.Header("Content-Location");
    return std::string(IsAddress(strBase) ? strBase : IsAddress(strLocation) ? strLocation : std::string_view(strUrl));
}

std::string Number(double dValue)
{
    char szText[32];
    std::snprintf(szText, sizeof szText, "%.3f", dValue);
    return szText;
}
} // namespace

// --- all lives -------------------------------------------------------------------------------------------------------

void CEngineCore::Add(CLife& tLife)
{
    const std::lock_guard tLock(m_tMutex);
    m_apLives.insert(&tLife);
}

void CEngineCore::Remove(CLife& tLife)
{
    const std::lock_guard tLock(m_tMutex);
    m_apLives.erase(&tLife);
    m_tChanged.notify_all();
}

void CEngineCore::AwaitEnds(Clock::time_point tUntil)
{
    std::vector<std::shared_ptr<ILoopClient>> apLeft;
    {
        std::unique_lock tLock(m_tMutex);
        m_tChanged.wait_until(tLock, tUntil, [this] { return m_apLives.empty(); });
        for (CLife* const pLife : m_apLives)
        {
            apLeft.push_back(pLife->weak_from_this().lock());
        }
    }
    for (auto const& pLeft : apLeft)
    {
        if (pLeft)
        {
            static_cast<CLife&>(*pLeft).Abandon();
        }
    }
}

// --- for any thread --------------------------------------------------------------------------------------------------

CLife::CLife(std::shared_ptr<CEngineCore> pCore, void* hStream, tagStreamOptions tOptions)
    : m_pCore(std::move(pCore)), m_tOptions(std::move(tOptions)), m_tWaker(m_pCore->tLoop),
      m_tStrand(m_pCore->tLoop, *this), m_tDelivery(hStream, m_pCore->tLoop, *this),
      m_tAuthenticator(m_tOptions.strUser, m_tOptions.strPassword),
      m_tControl(m_pCore->tLoop, m_pCore->tResolver, m_tStrand, *this, *this),
      m_tMedia(m_pCore->tLoop, *this, m_tControl, m_tDelivery),
      m_eTransport(m_tOptions.tUrl.bTls                      ? eRtspTcp
                   : m_tOptions.eTransport == eRtspAutomatic ? eRtspUdp
                                                             : m_tOptions.eTransport),
      m_tPlayback(m_tOptions.tPlayback.value_or(tagPlayback{})), m_tLife(Live())
{
    m_pCore->Add(*this);
}

CLife::~CLife()
{
    m_pCore->Remove(*this);
}

void CLife::Begin()
{
    m_tWaker.Raise(*this);
}

void CLife::SetPaused(bool bPaused)
{
    m_bPauseWanted = bPaused;
    m_tWaker.Raise(*this);
}

void CLife::Play(tagPlayback const& tPlayback)
{
    {
        const std::lock_guard tLock(m_tPlaybackMutex);
        m_tPlayback = tPlayback;
    }
    m_bPlayAnew = true;
    m_tWaker.Raise(*this);
}

std::optional<tagAudioFormat> CLife::BackFormat()
{
    std::optional<tagAudioFormat> tFormat;
    m_tStrand.Visit([&] { tFormat = m_tMedia.BackFormat(); });
    return tFormat;
}

bool CLife::SendAudio(Bytes abyFrame, std::uint32_t nSamples, bool bFirst)
{
    bool bSent = false;
    m_tStrand.Visit(
        [&]
        {
            if (m_tMedia.BackFormat() && m_tControl.IsOpen())
            {
                m_tMedia.SendAudio(abyFrame, nSamples, bFirst);
                bSent = m_tControl.IsOpen();
            }
        });
    if (!bSent)
    {
        m_tWaker.Raise(*this); // the connection may have broken just now
    }
    return bSent;
}

void CLife::RequestEnd()
{
    m_bEndRequested = true;
    m_tWaker.Raise(*this);
}

void CLife::Abandon()
{
    m_tStrand.Enter(
        [this]
        {
            m_tStrand.Forget();
            m_tControl.Close();
            m_tMedia.Clear();
            m_pCore->Remove(*this);
        });
}

// --- handlers --------------------------------------------------------------------------------------------------------

// Inside the strand, and what came of it outside. What runs out of memory is a connection that failed.
template <class F>
void CLife::Handle(F fn)
{
    m_tStrand.Enter(
        [&]
        {
            try
            {
                m_tNow = Clock::now();
                const std::uint64_t ullPackets = m_tMedia.Packets();
                fn();
                if (m_tMedia.Packets() != ullPackets && m_eState != eConnectionLive)
                {
                    OnLive(m_tNow);
                }
                m_tStrand.WakeAt(m_tMedia.Deadline());
                if (m_tMedia.HaveEnded())
                {
                    m_tStrand.Notify();
                }
                if (m_tControl.WantsReadOn())
                {
                    m_tWaker.Raise(*this);
                }
            }
            catch (...)
            {
                m_tControl.Fail(ENOMEM);
            }
        });
    m_tDelivery.Run();
}

void CLife::OnReadable(std::uint32_t dwTag)
{
    Handle(
        [&]
        {
            if (!m_tControl.OnReadable(dwTag))
            {
                m_tMedia.OnReadable(dwTag, m_tNow);
            }
        });
}

void CLife::OnWritable(std::uint32_t dwTag)
{
    Handle([&] { m_tControl.OnWritable(dwTag); });
}

void CLife::OnWake()
{
    Handle(
        [&]
        {
            m_tControl.ReadOn();
            m_tMedia.OnDeadline(m_tNow);
            m_tStrand.OnWake();
            if (!std::exchange(m_bBegun, true))
            {
                m_tLife.Begin();
            }
        });
}

void CLife::OnInterleaved(unsigned nChannel, Bytes abyPacket)
{
    m_tMedia.OnInterleaved(nChannel, abyPacket, m_tNow);
}

void CLife::OnLive(Clock::time_point tNow)
{
    if (m_tLiveSince == Clock::time_point{})
    {
        m_tLiveSince = tNow;
        m_nReconnects += m_bWasConnected;
        m_bWasConnected = true;
        m_tDelivery.EditInfo([this](tagRTSPPackageInfo& tInfo) { tInfo.dwReconnects = m_nReconnects; });
    }
    SetState(eConnectionLive);
}

void CLife::SetState(eConnectionState eState, unsigned long dwDetail, unsigned long dwPauseMs)
{
    m_eState = eState;
    m_tDelivery.SetState({static_cast<unsigned long>(eState), dwDetail, dwPauseMs, m_nReconnects});
}

// --- the life --------------------------------------------------------------------------------------------------------

CTask<> CLife::Live()
{
    while (!m_bEndRequested)
    {
        bool bFailed = false;
        try
        {
            co_await LiveOn();
        }
        catch (...)
        {
            bFailed = true;
        }
        if (bFailed) // not even memory to wait with
        {
            m_tWaker.Raise(*this);
            co_await m_tStrand.Next(Clock::time_point::max());
        }
    }
    try
    {
        co_await Disconnect();
    }
    catch (...)
    {
    }
    m_tControl.Close();
    m_tMedia.Clear();
    m_tStrand.CancelAlarm();
    m_pCore->Remove(*this);
}

// One step.
CTask<> CLife::LiveOn()
{
    if (m_bPauseWanted)
    {
        if (m_eState != eConnectionPaused)
        {
            SetState(eConnectionPaused);
        }
        co_await m_tStrand.Next(Clock::time_point::max());
    }
    else if (m_bFinished && !m_bPlayAnew)
    {
        co_await m_tStrand.Next(Clock::time_point::max());
    }
    else if (const Clock::time_point tNow = Clock::now(); tNow < m_tNextTry)
    {
        // A pause isn't shortened by pausing and playing, or that could lock a device's account.
        if (m_eState == eConnectionPaused)
        {
            SetState(m_eWaiting, static_cast<unsigned long>(m_eWaiting == eConnectionRefused ? m_nStatus : m_nError),
                     Milliseconds(m_tNextTry - tNow));
        }
        co_await m_tStrand.Next(m_tNextTry);
    }
    else
    {
        co_await Try();
    }
}

CTask<> CLife::Try()
{
    eOutcome eWhy = eOutcome::Lost;
    try
    {
        eWhy = co_await Session();
    }
    catch (...)
    {
        m_nError = ENOMEM;
    }
    m_tMedia.Hold(Clock::now());
    const bool bPaused = m_bPauseWanted && eWhy != eOutcome::Refused;
    if (!m_bEndRequested && !bPaused && eWhy != eOutcome::Paused)
    {
        const Clock::duration tPause = NextPause(eWhy);
        m_bFinished = m_tOptions.tPlayback.has_value();
        m_tNextTry = m_bFinished ? Clock::time_point{} : Clock::now() + tPause;
        const bool bRefused = eWhy == eOutcome::Refused;
        m_eWaiting = bRefused ? eConnectionRefused : eConnectionLost;
        SetState(m_eWaiting, static_cast<unsigned long>(bRefused ? m_nStatus : m_nError),
                 m_bFinished ? 0 : Milliseconds(tPause));
    }
    co_await Disconnect();
}

Clock::duration CLife::NextPause(eOutcome eWhy)
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

CTask<CLife::eOutcome> CLife::Session()
{
    m_nStatus = m_nError = 0;
    m_tLiveSince = {};
    SetState(eConnectionConnecting);
    for (;;)
    {
        m_tDeadline = Clock::now() + g_tConnectTime;
        eOutcome eWhy = co_await SetUp();
        if (eWhy == eOutcome::Done)
        {
            eWhy = co_await Receive();
        }
        const bool bRefused = eWhy == eOutcome::Refused && m_bTransportRefused && m_eTransport == eRtspUdp &&
                              m_tOptions.eTransport == eRtspAutomatic;
        if (eWhy != eOutcome::NoUdpCame && !bRefused)
        {
            co_return eWhy;
        }
        co_await Disconnect();
        m_eTransport = eRtspTcp; // for good
        m_tDelivery.PutEvent({eEventTransport, eRtspTcp, eRtspUdp, m_nReconnects});
    }
}

CLife::eOutcome CLife::Failed(int nError)
{
    m_nError = nError;
    return nError == ECANCELED ? eOutcome::Ended : eOutcome::Lost;
}

// --- setting up ------------------------------------------------------------------------------------------------------

CTask<CLife::eOutcome> CLife::SetUp()
{
    tagUrl tUrl = m_tOptions.tUrl;
    for (unsigned nRedirects = 0;; ++nRedirects)
    {
        const eOutcome eWhy = co_await SetUpAt(tUrl);
        if (eWhy != eOutcome::Moved)
        {
            co_return eWhy;
        }
        const std::optional<tagUrl> tNext = ParseUrl(m_strMovedTo);
        if (nRedirects == g_nMostRedirects || !tNext)
        {
            co_return Failed(tNext ? ELOOP : EPROTO);
        }
        tUrl = *tNext;
        co_await Disconnect();
    }
}

CTask<CLife::eOutcome> CLife::SetUpAt(tagUrl tUrl)
{
    // Credentials are for one server, and don't go unencrypted where encryption was asked for.
    tagUrl const& tOwn = m_tOptions.tUrl;
    const bool bOwn = tUrl.strHost == tOwn.strHost && tUrl.wPort == tOwn.wPort && (tUrl.bTls || !tOwn.bTls);
    m_tMedia.Clear();
    m_bTransportRefused = false;
    CControl::tagPeer tPeer{tUrl, m_tOptions.eCertificate == eRtspCertificateTrusted,
                            bOwn ? &m_tAuthenticator : nullptr};
    if (const int nError = co_await m_tControl.Connect(std::move(tPeer), m_tDeadline); nError != 0)
    {
        co_return Failed(nError);
    }
    const std::string strUrl = tUrl.Text();
    tagMessage tAnswer;
    tagMessage tRequest;
    tRequest.strMethod = "OPTIONS";
    tRequest.strUri = strUrl;
    if (const eOutcome eWhy = co_await Request(tRequest, tAnswer); eWhy != eOutcome::Done)
    {
        co_return eWhy;
    }
    const std::string_view strPublic = tAnswer.Header("Public");
    m_bKnowsGetParameter = HasWord(strPublic, "GET_PARAMETER");
    m_bCanPause = strPublic.empty() || HasWord(strPublic, "PAUSE");
    tRequest.strMethod = "DESCRIBE";
    tRequest.atHeaders.push_back({"Accept", "application/sdp"});
    if (m_tOptions.bBackChannel)
    {
        AddRequire(tRequest);
    }
    if (const eOutcome eWhy = co_await Request(tRequest, tAnswer); eWhy != eOutcome::Done)
    {
        co_return eWhy;
    }
    std::optional<tagDescription> tDescription = ParseDescription(tAnswer.strBody);
    if (!tDescription)
    {
        co_return Failed(EPROTO);
    }
    std::string strBase = BaseOf(tAnswer, strUrl);
    tAnswer = {};
    co_return co_await SetUpTracks(*std::move(tDescription), std::move(strBase));
}

// What isn't video may be refused.
CTask<CLife::eOutcome> CLife::SetUpTracks(tagDescription tDescription, std::string strBase)
{
    std::vector<std::string> astrTracks;
    eOutcome eRefused = eOutcome::Done;
    // By the rules a description tells which way media goes as its server sees it; ONVIF's back channel is told as the
    // client sees it. Which of the two a device means, its video tells.
    const bool bServersView = std::any_of(
        tDescription.atMedia.begin(), tDescription.atMedia.end(),
        [](auto const& tMedia) { return tMedia.strMedia == "video" && tMedia.eWay == eDirection::SendOnly; });
    const eDirection eBack = bServersView ? eDirection::ReceiveOnly : eDirection::SendOnly;
    for (tagMediaDescription const& tMedia : tDescription.atMedia)
    {
        const bool bBack = m_tOptions.bBackChannel && tMedia.strMedia == "audio" && tMedia.eWay == eBack;
        const std::optional<tagAudioFormat> tFormat = bBack ? CBackChannel::FormatOf(tMedia) : std::nullopt;
        if (tMedia.nPayloadType < 0 || tMedia.eWay == eDirection::Inactive || astrTracks.size() == g_nMostTracks ||
            (bBack && !tFormat))
        {
            continue;
        }
        std::string strUri = ResolveControl(strBase, tMedia.strControl);
        CChannel& tChannel =
            bBack ? m_tMedia.AddBackChannel(tMedia, *tFormat, m_eTransport) : m_tMedia.Add(tMedia, m_eTransport);
        const eOutcome eWhy = co_await SetUpTrack(tChannel, tMedia, strUri, astrTracks.size());
        if (eWhy == eOutcome::Done)
        {
            astrTracks.push_back(std::move(strUri));
            continue;
        }
        if (eWhy != eOutcome::Refused || tMedia.strMedia == "video" || m_nStatus == 401 || m_nStatus == 403)
        {
            co_return eWhy;
        }
        m_tMedia.DropLast();
        eRefused = eWhy;
    }
    if (m_tMedia.Count() == 0)
    {
        co_return eRefused == eOutcome::Refused ? eRefused : Failed(EPROTO);
    }
    m_strUri = ResolveControl(strBase, tDescription.strControl);
    co_return co_await PlayAll(astrTracks);
}

CTask<CLife::eOutcome> CLife::SetUpTrack(CChannel& tChannel, tagMediaDescription const& tDescription,
                                         std::string strUri, std::size_t iTrack)
{
    tagMessage tRequest;
    tRequest.strMethod = "SETUP";
    tRequest.strUri = std::move(strUri);
    std::string strTransport;
    if (const int nError = tChannel.MakeRequest(iTrack, strTransport); nError != 0)
    {
        co_return Failed(nError);
    }
    tRequest.atHeaders.push_back({"Transport", strTransport});
    AddRequire(tRequest);
    tagMessage tAnswer;
    if (const eOutcome eWhy = co_await Request(std::move(tRequest), tAnswer); eWhy != eOutcome::Done)
    {
        m_bTransportRefused = eWhy == eOutcome::Refused && m_nStatus != 401 && m_nStatus != 403 && m_nStatus != 404;
        co_return eWhy;
    }
    if (const tagSession tSession = ParseSession(tAnswer.Header("Session")); !tSession.strId.empty())
    {
        m_tControl.SetSession(tSession.strId);
        m_tSignOfLifeTime = SignOfLifeTime(tSession.nTimeOut);
    }
    else if (m_tControl.Session().empty())
    {
        m_tSignOfLifeTime = SignOfLifeTime(0);
    }
    const std::optional<tagTransport> tTransport = ParseTransport(tAnswer.Header("Transport"));
    const int nError = tTransport ? tChannel.TakeAnswer(*tTransport, tDescription) : EPROTO;
    co_return nError == 0 ? eOutcome::Done : Failed(nError);
}

// A server that doesn't know the word refuses.
void CLife::AddRequire(tagMessage& tRequest) const
{
    if (m_tOptions.bBackChannel)
    {
        tRequest.atHeaders.push_back({"Require", "www.onvif.org/ver20/backchannel"});
    }
    if (m_tOptions.tPlayback)
    {
        tRequest.atHeaders.push_back({"Require", "onvif-replay"});
    }
}

// One PLAY for all tracks, or where a server doesn't want that, one for each.
CTask<CLife::eOutcome> CLife::PlayAll(std::vector<std::string> const& astrTracks)
{
    m_tMedia.Begin(m_tOptions.tPlayback ? CTimeline::ePace::Played : CTimeline::ePace::Live);
    tagMessage tAnswer;
    eOutcome eWhy = co_await Request(PlayRequest(m_strUri, false), tAnswer);
    if (eWhy == eOutcome::Refused && m_nStatus == 459)
    {
        for (std::string const& strTrack : astrTracks)
        {
            eWhy = co_await Request(PlayRequest(strTrack, false), tAnswer);
            if (eWhy != eOutcome::Done)
            {
                break;
            }
        }
        m_bCanPause = false;
    }
    co_return eWhy;
}

tagMessage CLife::PlayRequest(std::string strUri, bool bResumes)
{
    tagMessage tRequest;
    tRequest.strMethod = "PLAY";
    tRequest.strUri = std::move(strUri);
    if (!m_tOptions.tPlayback)
    {
        if (!bResumes)
        {
            tRequest.atHeaders.push_back({"Range", "npt=0.000-"});
        }
        return tRequest;
    }
    const bool bAnew = m_bPlayAnew.exchange(false);
    const std::lock_guard tLock(m_tPlaybackMutex);
    AddRequire(tRequest);
    tRequest.atHeaders.push_back({"Scale", Number(m_tPlayback.dScale)});
    if ((!bResumes || bAnew) && m_tPlayback.tRange)
    {
        tRequest.atHeaders.push_back({"Range", RangeText(*m_tPlayback.tRange)});
    }
    if (bAnew)
    {
        tRequest.atHeaders.push_back({"Immediate", "yes"});
    }
    if (m_tPlayback.bAsFastAsPossible)
    {
        tRequest.atHeaders.push_back({"Rate-Control", "no"});
    }
    return tRequest;
}

CTask<CLife::eOutcome> CLife::Request(tagMessage tRequest, tagMessage& tAnswer)
{
    const int nError = co_await m_tControl.Ask(std::move(tRequest), tAnswer, m_tDeadline);
    if (nError != 0)
    {
        co_return Failed(nError);
    }
    const int nStatus = tAnswer.nStatus;
    if (nStatus < 300)
    {
        co_return eOutcome::Done;
    }
    if (nStatus < 400)
    {
        m_strMovedTo = tAnswer.Header("Location");
        co_return eOutcome::Moved;
    }
    if (nStatus > 999)
    {
        co_return Failed(EPROTO);
    }
    m_nStatus = nStatus;
    m_tDelivery.EditInfo([=](tagRTSPPackageInfo& tInfo) { tInfo.dwLastStatus = static_cast<std::uint32_t>(nStatus); });
    co_return eOutcome::Refused;
}

// --- receiving -------------------------------------------------------------------------------------------------------

// Packets are taken by the handlers; here is what happens beside them.
CTask<CLife::eOutcome> CLife::Receive()
{
    m_tPlayed = Clock::now();
    m_tSignOfLife = m_tPlayed + m_tSignOfLifeTime;
    m_tReports = m_tPlayed + g_tReportTime;
    while (!m_bEndRequested)
    {
        const Clock::time_point tNow = Clock::now();
        if (m_tControl.End())
        {
            co_return Failed(*m_tControl.End());
        }
        if (m_tMedia.HaveEnded() || (m_tOptions.tPlayback && m_tControl.IsEndAnnounced()))
        {
            co_return Failed(0);
        }
        const Clock::duration tSilence = tNow - std::max(m_tPlayed, m_tMedia.LastPacket());
        if (m_bPauseWanted)
        {
            const eOutcome eWhy = tSilence < g_tStallTime ? co_await StayPaused() : eOutcome::Paused;
            if (eWhy != eOutcome::Done)
            {
                co_return eWhy;
            }
            continue;
        }
        if (m_bPlayAnew)
        {
            m_tDeadline = tNow + g_tConnectTime;
            m_tMedia.Begin(CTimeline::ePace::Played);
            tagMessage tAnswer;
            if (const eOutcome eWhy = co_await Request(PlayRequest(m_strUri, false), tAnswer); eWhy != eOutcome::Done)
            {
                co_return eWhy == eOutcome::Moved ? Failed(EPROTO) : eWhy;
            }
            m_tPlayed = Clock::now();
            continue;
        }
        if (m_tOptions.eTransport == eRtspAutomatic && m_eTransport == eRtspUdp && m_tMedia.Packets() == 0 &&
            tSilence >= g_tTryUdpTime)
        {
            co_return eOutcome::NoUdpCame;
        }
        if (tSilence >= g_tSilenceTime)
        {
            co_return Failed(ETIMEDOUT);
        }
        if (tSilence >= g_tStallTime && m_eState != eConnectionStalled)
        {
            SetState(eConnectionStalled, Milliseconds(tSilence));
        }
        if (!TakeLateAnswer())
        {
            co_return Failed(EPIPE);
        }
        if (IsSignOfLifeDue(tNow))
        {
            m_tControl.Send(SignOfLife());
        }
        if (tNow >= m_tReports)
        {
            m_tMedia.SendReports(tNow);
            m_tReports = tNow + g_tReportTime;
        }
        co_await m_tStrand.Next(NextLook());
    }
    co_return eOutcome::Ended;
}

Clock::time_point CLife::NextLook() const
{
    const Clock::time_point tQuiet = std::max(m_tPlayed, m_tMedia.LastPacket());
    const bool bTriesUdp =
        m_tOptions.eTransport == eRtspAutomatic && m_eTransport == eRtspUdp && m_tMedia.Packets() == 0;
    const Clock::duration tPatience = bTriesUdp                        ? Clock::duration(g_tTryUdpTime)
                                      : m_eState == eConnectionStalled ? Clock::duration(g_tSilenceTime)
                                                                       : Clock::duration(g_tStallTime);
    return std::min({tQuiet + tPatience, m_tSignOfLife, m_tReports, m_tMedia.Deadline()});
}

bool CLife::IsSignOfLifeDue(Clock::time_point tNow)
{
    if (tNow < m_tSignOfLife)
    {
        return false;
    }
    m_tSignOfLife = tNow + m_tSignOfLifeTime;
    return true;
}

tagMessage CLife::SignOfLife() const
{
    tagMessage tRequest;
    tRequest.strMethod = m_bKnowsGetParameter ? "GET_PARAMETER" : "OPTIONS";
    tRequest.strUri = m_strUri;
    return tRequest;
}

// False: the server doesn't know the session any more.
bool CLife::TakeLateAnswer()
{
    const std::optional<tagMessage> tAnswer = m_tControl.LateAnswer();
    if (!tAnswer)
    {
        return true;
    }
    if (tAnswer->nStatus == 401 && m_tControl.TakeChallenges(*tAnswer))
    {
        m_tControl.Send(SignOfLife());
    }
    else if (tAnswer->nStatus == 405 || tAnswer->nStatus >= 500)
    {
        m_bKnowsGetParameter = false;
    }
    return tAnswer->nStatus != 454;
}

// Until playing is wanted again. Paused: the device has no word for it, or forgot the session meanwhile.
CTask<CLife::eOutcome> CLife::StayPaused()
{
    if (!m_bCanPause)
    {
        co_return eOutcome::Paused;
    }
    tagMessage tRequest;
    tRequest.strMethod = "PAUSE";
    tRequest.strUri = m_strUri;
    m_tDeadline = Clock::now() + g_tConnectTime;
    tagMessage tAnswer;
    eOutcome eWhy = co_await Request(std::move(tRequest), tAnswer);
    if (eWhy != eOutcome::Done)
    {
        co_return eWhy == eOutcome::Ended ? eWhy : eOutcome::Paused;
    }
    m_tMedia.Hold(Clock::now());
    SetState(eConnectionPaused);
    while (m_bPauseWanted && !m_bEndRequested)
    {
        if (m_tControl.End() || !TakeLateAnswer())
        {
            co_return eOutcome::Paused;
        }
        if (IsSignOfLifeDue(Clock::now()))
        {
            m_tControl.Send(SignOfLife());
        }
        co_await m_tStrand.Next(m_tSignOfLife);
    }
    if (m_bEndRequested)
    {
        co_return eOutcome::Ended;
    }
    m_tMedia.Begin(m_tOptions.tPlayback ? CTimeline::ePace::Played : CTimeline::ePace::Live);
    m_tDeadline = Clock::now() + g_tConnectTime;
    eWhy = co_await Request(PlayRequest(m_strUri, true), tAnswer);
    m_tPlayed = Clock::now();
    co_return eWhy == eOutcome::Done || eWhy == eOutcome::Ended ? eWhy : Failed(EPIPE);
}

// Says good-bye, if there is anybody to say it to, and waits a little for the answer: who closes at once may take the
// good-bye back.
CTask<> CLife::Disconnect()
{
    m_tMedia.Hold(Clock::now());
    if (m_tControl.IsOpen() && !m_tControl.Session().empty())
    {
        tagMessage tRequest;
        tRequest.strMethod = "TEARDOWN";
        tRequest.strUri = m_strUri;
        m_bClosing = true;
        tagMessage tAnswer;
        try
        {
            co_await m_tControl.Ask(std::move(tRequest), tAnswer, Clock::now() + g_tTeardownTime);
        }
        catch (...)
        {
        }
        m_bClosing = false;
    }
    m_tControl.Close();
    m_tMedia.Clear();
}
} // namespace rtsp
