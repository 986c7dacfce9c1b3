// Many streams at once, and servers that die and come back under them.

#include "tests/rtsp/Stream.h"

#include <deque>
#include <malloc.h>

namespace
{
using Fleet = CPluginTest;

// Of each stream: frames that came, and what was wrong with one.
struct tagCount
{
    std::atomic<std::uint32_t> dwFrames = 0;
    std::atomic<int> nWrong = 0;
};

int OnFrame(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    auto& tCount = *reinterpret_cast<tagCount*>(dwUser);
    tCount.nWrong += ptFrame->dwSequence != tCount.dwFrames || ptFrame->dwLostBefore > 0;
    ++tCount.dwFrames;
    return 0;
}

TEST_F(Fleet, AThousandStreamsLoseNothingAndCloseQuickly)
{
    constexpr std::size_t nStreams = 1000;
    rlimit tFiles{};
    getrlimit(RLIMIT_NOFILE, &tFiles);
    tFiles.rlim_cur = tFiles.rlim_max;
    setrlimit(RLIMIT_NOFILE, &tFiles);
    CScripted tServer;
    const auto nFiles = CountSelf("fd");
    std::deque<tagCount> atCounts(nStreams);
    std::vector<void*> ahStreams(nStreams);
    for (std::size_t i = 0; i < nStreams; ++i)
    {
        ASSERT_EQ(TryCreate(&ahStreams[i], tServer.Url("/0/0?fps=2")), 0);
        EXPECT_EQ(RTSPClient_StreamCB(ahStreams[i], &OnFrame, reinterpret_cast<unsigned long>(&atCounts[i])), 0);
    }
    std::uint64_t ullFrames = 0;
    for (tagCount const& tCount : atCounts)
    {
        EXPECT_TRUE(Becomes([&] { return tCount.dwFrames >= 10; })) << tCount.dwFrames;
        EXPECT_EQ(tCount.nWrong, 0);
        ullFrames += tCount.dwFrames;
    }
    std::printf("tried: %zu streams at once, %llu frames\n", nStreams, static_cast<unsigned long long>(ullFrames));
    EXPECT_LT(CountSelf("task"), 100);
    const auto tBefore = Clock::now();
    for (std::size_t i = 0; i < nStreams / 2; ++i)
    {
        EXPECT_EQ(RTSPClient_Destroy(ahStreams[i]), 0);
    }
    EXPECT_LT(Clock::now() - tBefore, g_tClosing);
    EXPECT_EQ(RTSPClient_Stop(), 0); // the others
    EXPECT_LT(Clock::now() - tBefore, 2 * g_tClosing);
    tServer.Await("end 0", nStreams);
    tServer.AwaitNoPeers();
    EXPECT_TRUE(Becomes([&] { return CountSelf("fd") == nFiles; }));
}

// What a reboot could leave behind: open files, threads, bytes.
std::array<std::ptrdiff_t, 3> Left()
{
    return {CountSelf("fd"), CountSelf("task"), static_cast<std::ptrdiff_t>(mallinfo2().uordblks)};
}

TEST_F(Fleet, ServersThatComeAndGoLeaveNothingBehind)
{
    constexpr std::size_t nServers = 5;
    CScripted tServers(nServers);
    std::array<std::ptrdiff_t, 3> anBefore{};
    const auto fnReboots = [&](int nReboots)
    {
        std::deque<CStream> atStreams;
        for (int i = 0; i < nReboots; ++i)
        {
            const auto iServer = static_cast<std::size_t>(i) % nServers;
            CStream& tNewest =
                atStreams.emplace_back(tServers.Url(i % 3 ? "/0/0" : "/0/0?fps=25", iServer),
                                       tagOpen{.dwTransport = static_cast<std::uint32_t>(i % 4 ? eRtspTcp : eRtspUdp)});
            tNewest.FirstFrame();
            tServers.Reboot(iServer);
            tNewest.Event(eEventLost); // the others are connecting, streaming or waiting
            if (atStreams.size() > 20)
            {
                atStreams.pop_front();
            }
        }
        for (CStream& tStream : atStreams)
        {
            tStream.Await([](auto const&, auto const& atEvents) { return atEvents.back()[0] == eEventLive; });
        }
        atStreams.clear();
        tServers.AwaitNoPeers();
    };
    fnReboots(20); // what is made once is made
    anBefore = Left();
    fnReboots(TESSARO_REBOOTS);
    std::printf("tried: reboots, %d\n", TESSARO_REBOOTS);
    EXPECT_TRUE(Becomes([&] { return CountSelf("task") <= anBefore[1] && CountSelf("fd") == anBefore[0]; }));
    EXPECT_LE(Left()[2], anBefore[2] + 256 * 1024) << "bytes";
}
} // namespace
