// The RTSP plug-in in front of servers that no device should be, and of one that reboots.

#include "plugins/rtsp/EntryPoints.h"
#include "tests/rtsp/HostileCases.h"

#include <cerrno>
#include <deque>
#include <malloc.h>

namespace
{
constexpr int g_nReboots = 100;
constexpr auto g_tClosing = 5s; // 2 s and what a busy machine adds

/// What one stream told and delivered.
class CWatcher
{
public:
    ~CWatcher() { Close(); }

    void Open(std::string const& strUrl, bool bLogin = false)
    {
        tagRTSPClientPara tPara{};
        strUrl.copy(tPara.szUrl, sizeof tPara.szUrl - 1);
        std::snprintf(tPara.szUserName, sizeof tPara.szUserName, "%s", bLogin ? "viewer" : "");
        std::snprintf(tPara.szPassword, sizeof tPara.szPassword, "%s", bLogin ? "secret" : "");
        EXPECT_EQ(RTSPClient_Create(&m_hStream, &tPara, 0), 0);
        EXPECT_EQ(RTSPClient_EventCB(m_hStream, &OnEvent, reinterpret_cast<unsigned long>(this)), 0);
        EXPECT_EQ(RTSPClient_StreamCB(m_hStream, &OnFrame, reinterpret_cast<unsigned long>(this)), 0);
    }
    /// How long it took.
    Clock::duration Close()
    {
        const auto tBefore = Clock::now();
        if (void* const hStream = std::exchange(m_hStream, nullptr))
        {
            RTSPClient_Destroy(hStream);
        }
        return Clock::now() - tBefore;
    }
    void* Stream() const { return m_hStream; }

    /// Until the stream failed at least so often and a whole frame came since, and so many frames in all.
    bool Heals(std::size_t nFailures, std::size_t nFrames = 0)
    {
        return Await([&] { return m_atFailures.size() >= nFailures && m_bHealed && m_strFrames.size() >= nFrames; });
    }
    bool Hears(unsigned long dwEvent)
    {
        return Await([&] { return std::find(m_adwEvents.begin(), m_adwEvents.end(), dwEvent) != m_adwEvents.end(); });
    }
    void PauseAndPlay()
    {
        EXPECT_TRUE(Heals(0));
        EXPECT_EQ(RTSPClient_Control(m_hStream, eTaskPause), 0);
        EXPECT_TRUE(Hears(eEventPaused));
        Clear();
        EXPECT_EQ(RTSPClient_Control(m_hStream, eTaskPlay), 0);
        EXPECT_TRUE(Hears(eEventLive));
    }
    /// Forgets what came.
    void Clear()
    {
        const std::lock_guard tLock(m_tMutex);
        m_adwEvents.clear();
        m_bHealed = false;
    }

    std::vector<CReceiver::Words> Failures() { return Copy(m_atFailures); }
    std::vector<unsigned long> Events() { return Copy(m_adwEvents); }
    std::string Frames() { return Copy(m_strFrames); }
    std::int64_t LatestTimeUs() { return Copy(m_llLatestUs); }

private:
    template <class F>
    bool Await(F const& fnCame)
    {
        std::unique_lock tLock(m_tMutex);
        return m_tChanged.wait_for(tLock, g_tPatience, fnCame);
    }
    template <class T>
    T Copy(T const& tValue)
    {
        const std::lock_guard tLock(m_tMutex);
        return tValue;
    }
    static int OnFrame(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
    {
        auto& tThis = *reinterpret_cast<CWatcher*>(dwUser);
        const std::lock_guard tLock(tThis.m_tMutex);
        const bool bKey = ptFrame->dwFlags & eFrameKey;
        const bool bDamaged = ptFrame->dwFlags & eFrameDamaged;
        tThis.m_strFrames += bKey ? (bDamaged ? 'k' : 'K') : (bDamaged ? 'p' : 'P');
        tThis.m_bHealed |= !bDamaged;
        tThis.m_llLatestUs = std::max(tThis.m_llLatestUs, std::abs(ptFrame->llPresentationTimeUs));
        tThis.m_nSum += ptFrame->dwLength > 0 ? ptFrame->pData[0] + ptFrame->pData[ptFrame->dwLength - 1] : 0;
        tThis.m_tChanged.notify_all();
        return 0;
    }
    static int OnEvent(void*, unsigned long dwEvent, unsigned long dw2, unsigned long dw3, unsigned long dw4,
                       unsigned long dwUser)
    {
        auto& tThis = *reinterpret_cast<CWatcher*>(dwUser);
        const std::lock_guard tLock(tThis.m_tMutex);
        tThis.m_adwEvents.push_back(dwEvent);
        if (dwEvent == eEventRefused || dwEvent == eEventLost)
        {
            tThis.m_atFailures.push_back({dwEvent, dw2, dw3, dw4});
            tThis.m_bHealed = false;
        }
        tThis.m_tChanged.notify_all();
        return 0;
    }

    void* m_hStream = nullptr;
    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::vector<unsigned long> m_adwEvents;
    std::vector<CReceiver::Words> m_atFailures;
    std::string m_strFrames;
    std::int64_t m_llLatestUs = 0;
    int m_nSum = 0; ///< of bytes at the ends of frames: they can be read
    bool m_bHealed = false;
};

double Seconds(Clock::duration tTime)
{
    return std::chrono::duration<double>(tTime).count();
}

class HostileServer : public testing::Test
{
protected:
    HostileServer()
    {
        for (tagCase const& tCase : m_atCases)
        {
            m_atBehaviours.push_back(tCase.tDo);
        }
        EXPECT_EQ(RTSPClient_Start(), 0);
    }
    ~HostileServer() override { RTSPClient_Stop(); }
    static void TearDownTestSuite()
    {
        std::printf("tried: hostile server, %zu behaviours, %d reboots\n", MakeCases().size(), g_nReboots);
    }

    const std::vector<tagCase> m_atCases = MakeCases();
    std::vector<tagBehaviour> m_atBehaviours;
};

void Check(CWatcher& tWatcher, tagCase const& tCase)
{
    tagExpected const& tExpected = tCase.tExpected;
    const bool bFails = tExpected.dwEvent != eEventLive && tExpected.dwEvent != 0;
    const std::size_t nFailures = bFails ? static_cast<std::size_t>(tExpected.nSessions) : 0;
    const bool bHealed = tWatcher.Heals(nFailures, tExpected.strFrames.size());
    const std::vector<CReceiver::Words> atFailures = tWatcher.Failures();
    const std::vector<unsigned long> adwEvents = tWatcher.Events();
    std::string strTold = tCase.tDo.strName + ", told:";
    for (const unsigned long dwEvent : adwEvents)
    {
        strTold += ' ' + std::to_string(dwEvent);
    }
    for (CReceiver::Words const& adwWords : atFailures)
    {
        strTold += "; " + std::to_string(adwWords[1]) + " and a pause of " + std::to_string(adwWords[2]);
    }
    SCOPED_TRACE(strTold);
    EXPECT_TRUE(bHealed);
    for (CReceiver::Words const& adwWords : atFailures)
    {
        EXPECT_TRUE(adwWords[0] == eEventLost ? adwWords[1] < 4096 : adwWords[1] >= 400 && adwWords[1] <= 999);
    }
    if (tExpected.dwEvent != 0)
    {
        EXPECT_EQ(atFailures.size(), nFailures);
        const bool bStalls = std::find(adwEvents.begin(), adwEvents.end(), eEventStalled) != adwEvents.end();
        EXPECT_TRUE(bStalls || !tExpected.bStalls); // a busy machine stalls others too
    }
    for (std::size_t i = 0; i < std::min(nFailures, atFailures.size()); ++i)
    {
        EXPECT_EQ(atFailures[i][0], tExpected.dwEvent);
        EXPECT_TRUE(tExpected.nDetail < 0 || static_cast<long>(atFailures[i][1]) == tExpected.nDetail);
        EXPECT_TRUE(tExpected.adwPauses.empty() || atFailures[i][2] == tExpected.adwPauses.at(i));
    }
    EXPECT_EQ(tWatcher.Frames().substr(0, tExpected.strFrames.size()), tExpected.strFrames);
    EXPECT_LT(tWatcher.LatestTimeUs(), 120'000'000) << "the time line starts near 0";
    tagRTSPPackageInfo tInfo{};
    EXPECT_EQ(RTSPClient_GetPackageInfo(tWatcher.Stream(), &tInfo, sizeof tInfo, 0), 0);
    EXPECT_TRUE(tInfo.dwState == eConnectionLive || tInfo.dwState == eConnectionStalled) << tInfo.dwState;
    EXPECT_TRUE(tExpected.nLost < 0 || static_cast<long>(tInfo.ullLost) == tExpected.nLost) << tInfo.ullLost;
}

TEST_F(HostileServer, IsSurvivedAndWorksOnceItIsGood)
{
    CHostileServer tServer(m_atBehaviours);
    std::vector<CWatcher> atWatchers(m_atCases.size());
    std::vector<std::size_t> aiSlow;
    std::vector<std::size_t> aiQuick;
    for (std::size_t i = 0; i < m_atCases.size(); ++i)
    {
        tagExpected const& tExpected = m_atCases[i].tExpected;
        const bool bSlow = tExpected.dwEvent == 0 || tExpected.nDetail == ETIMEDOUT || tExpected.nDetail == 401 ||
                           !tExpected.adwPauses.empty();
        (bSlow ? aiSlow : aiQuick).push_back(i);
    }
    const auto fnOpen = [&](std::size_t i)
    { atWatchers[i].Open(tServer.Url(i, m_atCases[i].tExpected.nSessions), m_atCases[i].tExpected.bLogin); };
    const auto fnCheck = [&](std::size_t i)
    {
        if (m_atCases[i].tExpected.bPauses)
        {
            atWatchers[i].PauseAndPlay();
        }
        tServer.AwaitDone(i, m_atCases[i].tExpected.nSessions);
        Check(atWatchers[i], m_atCases[i]);
        EXPECT_LT(tServer.Done(i), 20) << m_atCases[i].tDo.strName << ": the server is hammered";
    };
    // The others meanwhile, some at a time: more would be too many for a small machine.
    std::for_each(aiSlow.begin(), aiSlow.end(), fnOpen);
    for (auto itFrom = aiQuick.begin(); itFrom != aiQuick.end();)
    {
        const auto itTo = itFrom + std::min<std::ptrdiff_t>(40, aiQuick.end() - itFrom);
        std::for_each(itFrom, itTo, fnOpen);
        std::for_each(itFrom, itTo, fnCheck);
        std::for_each(itFrom, itTo, [&](std::size_t i) { atWatchers[i].Close(); });
        itFrom = itTo;
    }
    std::for_each(aiSlow.begin(), aiSlow.end(), fnCheck);
    const auto tBefore = Clock::now();
    EXPECT_EQ(RTSPClient_Stop(), 0);
    EXPECT_LT(Clock::now() - tBefore, g_tClosing);
}

TEST_F(HostileServer, DoesNotHoldUpClosing)
{
    CHostileServer tServer(m_atBehaviours);
    std::vector<CWatcher> atWatchers(m_atCases.size());
    for (std::size_t i = 0; i < m_atCases.size(); ++i)
    {
        atWatchers[i].Open(tServer.Url(i, CHostileServer::nAlways), m_atCases[i].tExpected.bLogin);
    }
    std::vector<std::future<Clock::duration>> atClosed;
    for (std::size_t i = 0; i < m_atCases.size(); ++i)
    {
        if (m_atCases[i].tDo.tAfter == 0ms && !m_atCases[i].tExpected.bPauses)
        {
            tServer.AwaitDone(i);
            atClosed.push_back(
                std::async(std::launch::async, [&tWatcher = atWatchers[i]] { return tWatcher.Close(); }));
        }
    }
    Clock::duration tLongest{};
    for (std::future<Clock::duration>& tClosed : atClosed)
    {
        tLongest = std::max(tLongest, tClosed.get());
    }
    std::printf("tried: closing took at most %.3f s\n", Seconds(tLongest));
    EXPECT_LT(tLongest, g_tClosing);
}

// What a reboot could leave behind: open files, threads, bytes.
std::array<std::ptrdiff_t, 3> Left()
{
    return {CountSelf("fd"), CountSelf("task"), static_cast<std::ptrdiff_t>(mallinfo2().uordblks)};
}

TEST_F(HostileServer, RebootsLeaveNothingBehind)
{
    const std::vector<tagBehaviour> atGood{{"good", eStep::Stream, "", ""}};
    CHostileServer tServer(atGood);
    std::deque<CWatcher> atWatchers;
    std::array<std::ptrdiff_t, 3> anBefore{};
    for (int iReboot = -10; iReboot < g_nReboots; ++iReboot)
    {
        if (iReboot == 0) // what is made once is made
        {
            atWatchers.clear();
            tServer.AwaitNoPeers();
            anBefore = Left();
        }
        CWatcher& tNewest = atWatchers.emplace_back();
        tNewest.Open(tServer.Url(0, 0));
        EXPECT_TRUE(tNewest.Heals(0));
        tServer.Reboot();
        EXPECT_TRUE(tNewest.Hears(eEventLost)); // the others are connecting, streaming or waiting
        if (atWatchers.size() > 20)
        {
            atWatchers.pop_front();
        }
    }
    for (CWatcher& tWatcher : atWatchers)
    {
        EXPECT_TRUE(tWatcher.Heals(1));
    }
    atWatchers.clear();
    tServer.AwaitNoPeers();
    const std::array<std::ptrdiff_t, 3> anAfter = Left();
    EXPECT_EQ(anAfter[0], anBefore[0]) << "open files";
    EXPECT_EQ(anAfter[1], anBefore[1]) << "threads";
    EXPECT_LE(anAfter[2], anBefore[2] + 64 * 1024) << "bytes";
}
} // namespace
