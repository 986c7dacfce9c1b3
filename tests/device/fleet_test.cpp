// A hundred devices that restart at random, with all the streams that the library can hold.

#include "adapter/ClientAdapter.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{
using namespace std::chrono_literals;
using CClock = std::chrono::steady_clock;
constexpr int64_t g_llHour = 3600000000;

struct tagStream
{
    int nMedia = -1;
    unsigned nDevice = 0;
    std::atomic<unsigned> dwFrames{0};
    std::atomic<unsigned> dwWrong{0};
    std::atomic<unsigned> dwReturns{0};
};

// A device's clock is as many hours ahead as its number is.
int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    auto& tStream = *reinterpret_cast<tagStream*>(dwUser);
    const int64_t llAhead = ptFrame->llWallClockUs - int64_t{time(nullptr)} * 1000000;
    const bool bMine =
        reinterpret_cast<intptr_t>(hStream) == tStream.nMedia && (llAhead + g_llHour / 2) / g_llHour == tStream.nDevice;
    ++(bMine ? tStream.dwFrames : tStream.dwWrong);
    tStream.dwReturns += (ptFrame->dwFlags & eFrameDiscontinuity) != 0;
    return 0;
}

void Address(unsigned nDevice, char (&szAddress)[256])
{
    std::snprintf(szAddress, sizeof szAddress, "fleet-%u", nDevice);
}
void Fault(unsigned nDevice, eFaultKind eKind, uint32_t dwMilliseconds, int64_t llOffsetUs = 0)
{
    tagDeviceFault tFault{};
    tFault.dwSize = sizeof tFault;
    tFault.dwFault = static_cast<uint32_t>(eKind);
    tFault.dwMilliseconds = dwMilliseconds;
    tFault.llOffsetUs = llOffsetUs;
    Address(nDevice, tFault.szAddress);
    EXPECT_EQ(ClientAdapter_RTSPSetIsProductTest(eMiscFault, &tFault, sizeof tFault, eProtocolVTQ), 0);
}

std::ptrdiff_t Entries(char const* szFolder)
{
    return std::distance(std::filesystem::directory_iterator(szFolder), {});
}
long ResidentKiB()
{
    std::ifstream tFile("/proc/self/status");
    std::string strWord;
    while (tFile >> strWord && strWord != "VmRSS:")
    {
    }
    long nKiB = 0;
    tFile >> nKiB;
    return nKiB;
}

// Devices, each with a login and streams of all its channels.
class CFleetOfStreams
{
public:
    explicit CFleetOfStreams(unsigned nDevices) : m_anLogins(nDevices, -1), m_atStreams(std::size_t{nDevices} * 10)
    {
        tagUserLoginPara tLogin{};
        strcpy(tLogin.szUserName, "admin");
        strcpy(tLogin.szPassword, "admin");
        for (unsigned i = 0; i < m_atStreams.size(); ++i)
        {
            tagStream& tStream = m_atStreams[i];
            tStream.nDevice = i / 10;
            int& nLogin = m_anLogins[tStream.nDevice];
            if (i % 10 == 0)
            {
                Address(tStream.nDevice, tLogin.szAddress);
                EXPECT_EQ(ClientAdapter_UserLogin(&nLogin, eProtocolVTQ, &tLogin), 0);
            }
            tagRealStreamPara tPara{i % 4, 0, static_cast<uint32_t>(i % 2 ? eStreamMain : eStreamSub), {}};
            EXPECT_EQ(ClientAdapter_RealStreamConnect(&tStream.nMedia, nLogin, &tPara), 0);
            EXPECT_EQ(ClientAdapter_StreamMediaCB(tStream.nMedia, OnFrame, reinterpret_cast<unsigned long>(&tStream)),
                      0);
        }
    }
    ~CFleetOfStreams()
    {
        unsigned dwWrong = 0;
        for (tagStream const& tStream : m_atStreams)
        {
            EXPECT_EQ(ClientAdapter_RealStreamDisconnect(tStream.nMedia), 0);
            dwWrong += tStream.dwWrong;
        }
        for (const int nLogin : m_anLogins)
        {
            EXPECT_EQ(ClientAdapter_UserLogout(nLogin), 0);
        }
        EXPECT_EQ(dwWrong, 0) << "frames of another stream's device";
    }
    CFleetOfStreams(CFleetOfStreams const&) = delete;
    CFleetOfStreams& operator=(CFleetOfStreams const&) = delete;

    // Each of them brings more frames.
    void AwaitAll()
    {
        std::vector<unsigned> adwBefore(m_atStreams.size());
        std::ranges::transform(m_atStreams, adwBefore.begin(), [](tagStream const& t) { return t.dwFrames.load(); });
        const auto tUntil = CClock::now() + 90s;
        for (std::size_t i = 0; i < m_atStreams.size();)
        {
            if (m_atStreams[i].dwFrames >= adwBefore[i] + 5)
            {
                ++i;
            }
            else if (CClock::now() > tUntil)
            {
                FAIL() << "stream " << i % 10 << " of device " << i / 10 << " has not come back";
            }
            else
            {
                std::this_thread::sleep_for(10ms);
            }
        }
    }

    // How often streams have come back.
    unsigned Returns() const
    {
        return std::accumulate(m_atStreams.begin(), m_atStreams.end(), 0U,
                               [](unsigned n, tagStream const& t) { return n + t.dwReturns; });
    }

private:
    std::vector<int> m_anLogins;
    std::deque<tagStream> m_atStreams;
};
} // namespace

TEST(Fleet, StreamsOutliveRestarts)
{
    std::minstd_rand tRandom(7);
    ClientAdapter_Start(16);
    for (unsigned i = 0; i < TESSARO_DEVICES; ++i)
    {
        Fault(i, eFaultClockJump, 0, i * g_llHour);
    }
    {
        CFleetOfStreams(TESSARO_DEVICES).AwaitAll(); // what is made once is there then
    }
    const auto nThreads = Entries("/proc/self/task");
    const auto nFiles = Entries("/proc/self/fd");
    const auto nKiB = ResidentKiB();
    {
        CFleetOfStreams tFleet(TESSARO_DEVICES);
        for (const auto tEnd = CClock::now() + std::chrono::seconds(TESSARO_SECONDS); CClock::now() < tEnd;)
        {
            Fault(static_cast<unsigned>(tRandom() % TESSARO_DEVICES), eFaultRestart,
                  static_cast<uint32_t>(100 + tRandom() % 900));
            std::this_thread::sleep_for(30ms);
        }
        tFleet.AwaitAll();
        EXPECT_GT(tFleet.Returns(), TESSARO_DEVICES * 10);
    }
    EXPECT_EQ(Entries("/proc/self/task"), nThreads);
    EXPECT_EQ(Entries("/proc/self/fd"), nFiles);
    if (TESSARO_MEASURES_MEMORY)
    {
        EXPECT_LT(ResidentKiB(), nKiB + 8192);
    }
    ClientAdapter_Stop();
}
