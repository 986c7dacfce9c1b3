// A hundred devices that restart at random, with all the streams that the library can hold.

#include "tests/device/Device.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

namespace
{
using CClock = std::chrono::steady_clock;
constexpr int64_t g_llHour = 3600 * g_llSecond;

struct tagStream
{
    int nMedia = -1;
    unsigned nDevice = 0;
    bool bMain = false;
    std::atomic<unsigned> dwFrames{0};
    std::atomic<unsigned> dwWrong{0};
    std::atomic<unsigned> dwReturns{0};
};

// A device's clock is as many hours ahead as its number is.
int Count(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    auto& tStream = Target<tagStream>(dwUser);
    const int64_t llAhead = ptFrame->llWallClockUs - int64_t{time(nullptr)} * g_llSecond;
    const bool bMine = IdOf(hStream) == tStream.nMedia && (llAhead + g_llHour / 2) / g_llHour == tStream.nDevice &&
                       (ptFrame->dwMediaType != eMediaVideo || (ptFrame->dwWidth == 1280) == tStream.bMain);
    ++(bMine ? tStream.dwFrames : tStream.dwWrong);
    tStream.dwReturns += (ptFrame->dwFlags & eFrameDiscontinuity) != 0;
    return 0;
}

std::ptrdiff_t Entries(char const* szFolder)
{
    return std::distance(std::filesystem::directory_iterator(szFolder), {});
}
long ResidentPages()
{
    long nPages = 0;
    std::ifstream("/proc/self/statm") >> nPages >> nPages;
    return nPages;
}

class CFleetTest : public CDeviceTest
{
protected:
    void GoTo(unsigned nDevice) { m_strAddress = "fleet-" + std::to_string(nDevice); }
    // Each device with a login and ten streams.
    void Connect()
    {
        m_atStreams = std::deque<tagStream>(TESSARO_DEVICES * 10);
        for (unsigned i = 0; i < m_atStreams.size(); ++i)
        {
            tagStream& tStream = m_atStreams[i];
            tStream.nDevice = i / 10;
            tStream.bMain = i % 2 != 0;
            GoTo(tStream.nDevice);
            EXPECT_EQ(i % 10 == 0 ? Login(m_anLogins.emplace_back()) : 0, 0);
            m_nLogin = m_anLogins.back();
            EXPECT_EQ(Open(tStream.nMedia, i % 4, tStream.bMain ? eStreamMain : eStreamSub), 0);
            EXPECT_EQ(ClientAdapter_StreamMediaCB(tStream.nMedia, Count, User(tStream)), 0);
        }
    }
    void Disconnect()
    {
        unsigned dwWrong = 0;
        for (tagStream const& tStream : m_atStreams)
        {
            EXPECT_EQ(ClientAdapter_RealStreamDisconnect(tStream.nMedia), 0);
            dwWrong += tStream.dwWrong;
        }
        for (const int nLogin : std::exchange(m_anLogins, {}))
        {
            EXPECT_EQ(ClientAdapter_UserLogout(nLogin), 0);
        }
        EXPECT_EQ(dwWrong, 0) << "frames of another stream";
    }
    // Each of them brings more frames.
    void AwaitAll()
    {
        std::vector<unsigned> adwBefore;
        for (tagStream const& tStream : m_atStreams)
        {
            adwBefore.push_back(tStream.dwFrames);
        }
        for (unsigned i = 0; i < m_atStreams.size(); ++i)
        {
            ASSERT_TRUE(Comes([&] { return m_atStreams[i].dwFrames >= adwBefore[i] + 5; }))
                << "stream " << i % 10 << " of device " << i / 10 << " has not come back";
        }
    }

    std::vector<int> m_anLogins;
    std::deque<tagStream> m_atStreams;
};
INSTANTIATE_TEST_SUITE_P(All, CFleetTest, testing::Values(eProtocolVTQ));
} // namespace

TEST_P(CFleetTest, StreamsOutliveRestarts)
{
    std::minstd_rand tRandom(7);
    API(UserLogout)(m_nLogin);
    for (unsigned i = 0; i < TESSARO_DEVICES; ++i)
    {
        GoTo(i);
        EXPECT_EQ(Fault(eFaultClockJump, 0, 0, 0, 0, i * g_llHour), 0);
    }
    Connect(); // what is made once is there then
    AwaitAll();
    Disconnect();
    const auto nThreads = Entries("/proc/self/task");
    const auto nFiles = Entries("/proc/self/fd");
    const auto nPages = ResidentPages();
    char const* const szSeconds = std::getenv("TESSARO_SECONDS");
    unsigned dwRestarts = 0;
    Connect();
    for (const auto tEnd = CClock::now() + std::chrono::seconds(szSeconds ? std::atoi(szSeconds) : TESSARO_SECONDS);
         CClock::now() < tEnd; ++dwRestarts)
    {
        GoTo(static_cast<unsigned>(tRandom() % TESSARO_DEVICES));
        EXPECT_EQ(Fault(eFaultRestart, 0, static_cast<uint32_t>(100 + tRandom() % 900)), 0);
        std::this_thread::sleep_for(30ms);
    }
    AwaitAll();
    unsigned dwReturns = 0;
    for (tagStream const& tStream : m_atStreams)
    {
        dwReturns += tStream.dwReturns;
    }
    EXPECT_GT(dwReturns, TESSARO_DEVICES * 10);
    std::printf("tried: %u restarts of %u devices, after which %u streams came back\n", dwRestarts, TESSARO_DEVICES,
                dwReturns);
    Disconnect();
    // A thread that helped out ends a moment later.
    EXPECT_TRUE(Comes([&] { return Entries("/proc/self/task") <= nThreads; }));
    EXPECT_EQ(Entries("/proc/self/fd"), nFiles);
    if (TESSARO_MEASURES_MEMORY)
    {
        EXPECT_LT(ResidentPages(), nPages + (8 << 20) / sysconf(_SC_PAGESIZE));
    }
}
