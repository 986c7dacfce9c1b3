// Rules of streams: frames, and when callbacks end.

#include "adapter/Globals.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/check/Rules.h"
#include "tools/tessaro/records/Records.h"

#include <RecordTables.h>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace tessaro
{
namespace
{
constexpr auto g_tPatience = std::chrono::seconds(20);
constexpr auto g_tQuiet = std::chrono::milliseconds(500); // how long nothing must come after a close

// A live stream, straight at the plug-in, and what comes of it.
class CStream
{
public:
    explicit CStream(tagTried& tTried) : m_tTried(tTried)
    {
        tagUserLoginPara tLogin = tTried.tLogin;
        m_nResult = g_cProtocolSet.UserLogin(&m_hLogin, &tLogin, tTried.eProtocol);
        m_bLoggedIn = m_nResult == eResultOk;
        if (m_bLoggedIn)
        {
            m_nResult = Open();
        }
    }
    ~CStream()
    {
        Close();
        if (m_bLoggedIn)
        {
            g_cProtocolSet.UserLogout(m_hLogin, m_tTried.eProtocol);
        }
    }
    CStream(CStream const&) = delete;
    CStream& operator=(CStream const&) = delete;

    int Open()
    {
        tagRealStreamPara tPara{};
        tPara.dwStreamKind = eStreamMain;
        const int nResult = g_cProtocolSet.RealStreamConnect(&m_hStream, m_hLogin, &tPara, m_tTried.eProtocol);
        return nResult != eResultOk ? nResult : Register(&OnFrame);
    }
    int Register(StreamMediaCallback pfnFrame)
    {
        return g_cProtocolSet.StreamMediaCB(m_hStream, pfnFrame, reinterpret_cast<unsigned long>(this),
                                            m_tTried.eProtocol);
    }
    int Close()
    {
        void* const hStream = std::exchange(m_hStream, nullptr);
        return hStream ? g_cProtocolSet.RealStreamDisconnect(hStream, m_tTried.eProtocol) : 0;
    }
    bool Await(std::uint64_t ullFrames)
    {
        std::unique_lock tLock(m_tMutex);
        return m_tCame.wait_for(tLock, g_tPatience, [&] { return m_ullFrames >= ullFrames; });
    }
    std::uint64_t Frames()
    {
        const std::lock_guard tLock(m_tMutex);
        return m_ullFrames;
    }
    /// Frames that come although none should.
    std::uint64_t Late()
    {
        const auto ullBefore = Frames();
        std::this_thread::sleep_for(g_tQuiet);
        return Frames() - ullBefore;
    }
    std::string Problem()
    {
        const std::lock_guard tLock(m_tMutex);
        return m_strProblem;
    }
    int Result() const { return m_nResult; }

    enum class eInside
    {
        Nothing,
        Close,
        Ask,
    };
    std::atomic<eInside> m_eInside = eInside::Nothing;
    std::atomic<int> m_nInside = -1; ///< what a call from inside the callback answered
    std::atomic<long long> m_llInsideMs = 0;

private:
    static int OnFrame(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
    {
        reinterpret_cast<CStream*>(dwUser)->Take(*ptFrame);
        return 0;
    }

    void Look(tagStreamMediaFrame const& t)
    {
        const bool bVideo = t.dwMediaType == eMediaVideo;
        const char* const szProblem =
            t.dwMediaType > eMediaOther                                      ? "an unknown kind of media"
            : t.dwLength == 0 || !t.pData                                    ? "a frame without bytes"
            : bVideo && m_ullVideo == 0 && (t.dwFlags & eFrameKey) == 0      ? "the first video frame is no key frame"
            : bVideo && (t.dwWidth == 0 || t.dwHeight == 0)                  ? "a video frame without its size"
            : !bVideo && t.dwMediaType == eMediaAudio && t.dwSampleRate == 0 ? "an audio frame without its rate"
            : bVideo && m_ullVideo > 0 && t.llPresentationTimeUs <= m_llLastUs && (t.dwFlags & eFrameDiscontinuity) == 0
                ? "presentation times that don't rise"
            : bVideo && m_ullVideo > 0 && t.dwSequence <= m_dwSequence ? "sequence numbers that don't rise"
            : t.szCodecName[0] == '\0'                                 ? "a frame without its codec's name"
                                                                       : nullptr;
        m_strProblem = m_strProblem.empty() && szProblem ? szProblem : m_strProblem;
        m_ullVideo += bVideo;
        m_llLastUs = bVideo ? t.llPresentationTimeUs : m_llLastUs;
        m_dwSequence = bVideo ? t.dwSequence : m_dwSequence;
    }

    void Take(tagStreamMediaFrame const& t)
    {
        {
            const std::lock_guard tLock(m_tMutex);
            Look(t);
            ++m_ullFrames;
        }
        const eInside eDo = m_eInside.exchange(eInside::Nothing);
        const long long llBegin = NowMs();
        if (eDo == eInside::Close)
        {
            m_nInside = Close();
        }
        else if (eDo == eInside::Ask)
        {
            m_nInside = g_cProtocolSet.StreamMediaControl(m_hStream, eTaskPlay, m_tTried.eProtocol);
        }
        m_llInsideMs = NowMs() - llBegin;
        m_tCame.notify_all();
    }

    tagTried& m_tTried;
    void* m_hLogin = nullptr;
    bool m_bLoggedIn = false;
    void* m_hStream = nullptr;
    int m_nResult = -1;
    std::mutex m_tMutex;
    std::condition_variable m_tCame;
    std::uint64_t m_ullFrames = 0;
    std::uint64_t m_ullVideo = 0;
    std::int64_t m_llLastUs = 0;
    std::uint32_t m_dwSequence = 0;
    std::string m_strProblem;
};

tagVerdict NotOpened(CStream const& tStream)
{
    return Bad(fmt::format("opening a live stream answers {}", tStream.Result()));
}

tagVerdict Frames(tagTried& tTried)
{
    CStream tStream(tTried);
    if (tStream.Result() != eResultOk)
    {
        return NotOpened(tStream);
    }
    if (!tStream.Await(50))
    {
        return Bad(fmt::format("{} frames came in {} s", tStream.Frames(), g_tPatience.count()));
    }
    const std::string strProblem = tStream.Problem();
    return strProblem.empty() ? tagVerdict{tagVerdict::eKept, "50 frames"} : Bad(strProblem);
}

tagVerdict CloseEnds(tagTried& tTried)
{
    CStream tStream(tTried);
    if (tStream.Result() != eResultOk || !tStream.Await(5))
    {
        return NotOpened(tStream);
    }
    const int nResult = tStream.Close();
    const auto ullLate = tStream.Late();
    return ullLate == 0 && nResult == eResultOk
               ? tagVerdict{}
               : Bad(fmt::format("closing answers {}, and {} frames come afterwards", nResult, ullLate));
}

tagVerdict NullEnds(tagTried& tTried)
{
    CStream tStream(tTried);
    if (tStream.Result() != eResultOk || !tStream.Await(5))
    {
        return NotOpened(tStream);
    }
    const int nResult = tStream.Register(nullptr);
    const auto ullLate = tStream.Late();
    return ullLate == 0 && nResult == eResultOk
               ? tagVerdict{}
               : Bad(fmt::format("a null callback answers {}, and {} frames come afterwards", nResult, ullLate));
}

tagVerdict CloseInside(tagTried& tTried)
{
    CStream tStream(tTried);
    if (tStream.Result() != eResultOk || !tStream.Await(2))
    {
        return NotOpened(tStream);
    }
    tStream.m_eInside = CStream::eInside::Close;
    const auto tEnd = std::chrono::steady_clock::now() + g_tPatience;
    while (tStream.m_nInside == -1 && std::chrono::steady_clock::now() < tEnd)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (tStream.m_nInside == -1)
    {
        return Bad("closing from inside the callback doesn't return");
    }
    const auto ullLate = tStream.Late();
    const bool bFine = ullLate == 0 && (tStream.m_nInside == eResultOk || tStream.m_nInside == eResultStillRunning) &&
                       tStream.m_llInsideMs < 1500;
    return bFine ? tagVerdict{}
                 : Bad(fmt::format("it answers {} after {} ms, and {} frames come afterwards", tStream.m_nInside.load(),
                                   tStream.m_llInsideMs.load(), ullLate));
}

tagVerdict CallInside(tagTried& tTried)
{
    CStream tStream(tTried);
    if (tStream.Result() != eResultOk || !tStream.Await(2))
    {
        return NotOpened(tStream);
    }
    tStream.m_eInside = CStream::eInside::Ask;
    const auto ullBefore = tStream.Frames();
    const bool bGoesOn = tStream.Await(ullBefore + 10);
    return bGoesOn && tStream.m_nInside == eResultOk ? tagVerdict{}
                                                     : Bad(fmt::format("it answers {}{}", tStream.m_nInside.load(),
                                                                       bGoesOn ? "" : ", and no more frames come"));
}

tagVerdict ManyCloses(tagTried& tTried)
{
    constexpr int nRounds = 15;
    CStream tStream(tTried);
    if (tStream.Result() != eResultOk || !tStream.Await(1))
    {
        return NotOpened(tStream);
    }
    for (int i = 0; i < nRounds; ++i)
    {
        const int nClosed = tStream.Close();
        const int nOpened = tStream.Open();
        if (nClosed != eResultOk || nOpened != eResultOk)
        {
            return Bad(fmt::format("round {}: closing answers {}, opening {}", i + 1, nClosed, nOpened));
        }
    }
    const auto ullBefore = tStream.Frames();
    return tStream.Await(ullBefore + 1) ? tagVerdict{tagVerdict::eKept, fmt::format("{} times", nRounds)}
                                        : Bad("no frame comes any more");
}

// Stop with everything open.
tagVerdict StopEnds(tagTried& tTried)
{
    CStream tStream(tTried);
    if (tStream.Result() != eResultOk || !tStream.Await(5))
    {
        return NotOpened(tStream);
    }
    const int nStopped = g_cProtocolSet.Stop(tTried.eProtocol);
    const auto ullLate = tStream.Late();
    const int nClosed = tStream.Close();
    const int nStarted = g_cProtocolSet.Start(tTried.eProtocol);
    if (tTried.IsRtsp())
    {
        g_cProtocolSet.SetMaxChannel(16, eProtocolRTSP);
    }
    const bool bFine = nStopped == eResultOk && nStarted == eResultOk && ullLate == 0 &&
                       (nClosed == eResultNotStarted || nClosed == eResultBadHandle);
    return bFine ? tagVerdict{}
                 : Bad(fmt::format("Stop answers {}, {} frames come afterwards, closing answers {}, Start {}", nStopped,
                                   ullLate, nClosed, nStarted));
}

tagVerdict QueryEnds(tagTried& tTried)
{
    if (tTried.IsRtsp())
    {
        return {tagVerdict::eSkipped, "it has no queries"};
    }
    void* hLogin = nullptr;
    void* hQuery = nullptr;
    tagUserLoginPara tLogin = tTried.tLogin;
    g_cProtocolSet.UserLogin(&hLogin, &tLogin, tTried.eProtocol);
    auto tFactor = Sized<tagLogQueryFactor>();
    const int nOpened = g_cProtocolSet.HistoryLogQueryConnect(&hQuery, hLogin, &tFactor, tTried.eProtocol);
    tagVerdict tVerdict{tagVerdict::eSkipped, "the device has no log"};
    if (nOpened == eResultOk)
    {
        auto tResult = Sized<tagLogQueryResult>();
        int nResult = eResultOk;
        int nCount = 0;
        for (; nResult == eResultOk && nCount < 1000000; ++nCount)
        {
            nResult = g_cProtocolSet.HistoryLogQueryNext(hQuery, &tResult, tTried.eProtocol);
        }
        const int nAgain = g_cProtocolSet.HistoryLogQueryNext(hQuery, &tResult, tTried.eProtocol);
        const int nClosed = g_cProtocolSet.HistoryLogQueryDisconnect(hQuery, tTried.eProtocol);
        const int nAfter = g_cProtocolSet.HistoryLogQueryNext(hQuery, &tResult, tTried.eProtocol);
        const bool bFine = nResult == eResultNoMoreEntries && nAgain == eResultNoMoreEntries && nClosed == eResultOk &&
                           nAfter == eResultBadHandle;
        tVerdict = bFine ? tagVerdict{tagVerdict::eKept, fmt::format("{} entries", nCount - 1)}
                         : Bad(fmt::format("after the last entry {}, again {}, closing {}, after that {}", nResult,
                                           nAgain, nClosed, nAfter));
    }
    g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol);
    return tVerdict;
}

constexpr tagRule g_atStreamRules[] = {
    {"query", "after the last entry every call answers eResultNoMoreEntries, until the query is closed", true,
     &QueryEnds},
    {"frames", "frames are whole: the first video frame is a key frame, times and sequence rise", true, &Frames},
    {"close", "when closing a stream returns, none of its callbacks runs any more", true, &CloseEnds},
    {"null callback", "a null callback ends the frames", true, &NullEnds},
    {"close inside", "a stream can be closed from inside its own callback, which returns at once", true, &CloseInside},
    {"call inside", "a callback may call the plug-in", true, &CallInside},
    {"open and close", "streams can be opened and closed again and again", true, &ManyCloses},
    {"stop ends", "after Stop no callback runs, also with streams open", true, &StopEnds},
};
} // namespace

std::span<tagRule const> StreamRules()
{
    return g_atStreamRules;
}
} // namespace tessaro
