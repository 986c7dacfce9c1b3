// A hundred devices that restart at random, with all the streams that the library can hold.

#include "adapter/ClientAdapter.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{
using namespace std::chrono_literals;
using CClock = std::chrono::steady_clock;
constexpr int g_nStreams = 10; // of each device
constexpr int64_t g_llHour = 3600000000;

struct tagStream
{
    int nMedia = -1;
    int nDevice = 0;
    std::atomic<unsigned> dwFrames{0};
    std::atomic<unsigned> dwWrong{0};
};

// A device's clock is as many hours ahead as its number is.
int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    auto& tStream = *reinterpret_cast<tagStream*>(dwUser);
    const int64_t llAhead = ptFrame->llWallClockUs - int64_t{time(nullptr)} * 1000000;
    const bool bMine =
        reinterpret_cast<intptr_t>(hStream) == tStream.nMedia && (llAhead + g_llHour / 2) / g_llHour == tStream.nDevice;
    ++(bMine ? tStream.dwFrames : tStream.dwWrong);
    return 0;
}

void Fault(int nDevice, eFaultKind eKind, uint32_t dwMilliseconds, int64_t llOffsetUs = 0)
{
    tagDeviceFault tFault{};
    tFault.dwSize = sizeof tFault;
    tFault.dwFault = static_cast<uint32_t>(eKind);
    tFault.dwMilliseconds = dwMilliseconds;
    tFault.llOffsetUs = llOffsetUs;
    std::snprintf(tFault.szAddress, sizeof tFault.szAddress, "fleet-%d", nDevice);
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

// All devices' streams, for a while during which devices restart.
void Run(int nDevices, std::chrono::milliseconds tFor)
{
    std::vector<int> anLogins(static_cast<std::size_t>(nDevices), -1);
    std::vector<tagStream> atStreams(anLogins.size() * g_nStreams);
    for (int i = 0; i < nDevices; ++i)
    {
        tagUserLoginPara tLogin{};
        std::snprintf(tLogin.szAddress, sizeof tLogin.szAddress, "fleet-%d", i);
        strcpy(tLogin.szUserName, "admin");
        strcpy(tLogin.szPassword, "admin");
        int& nLogin = anLogins[static_cast<std::size_t>(i)];
        ASSERT_EQ(ClientAdapter_UserLogin(&nLogin, eProtocolVTQ, &tLogin), 0);
        for (int j = 0; j < g_nStreams; ++j)
        {
            tagStream& tStream = atStreams[static_cast<std::size_t>(i * g_nStreams + j)];
            tagRealStreamPara tPara{static_cast<uint32_t>(j) % 4, 0, j % 2 ? eStreamMain : eStreamSub, {}};
            tStream.nDevice = i;
            ASSERT_EQ(ClientAdapter_RealStreamConnect(&tStream.nMedia, nLogin, &tPara), 0);
            ASSERT_EQ(ClientAdapter_StreamMediaCB(tStream.nMedia, OnFrame, reinterpret_cast<unsigned long>(&tStream)),
                      0);
        }
    }
    std::minstd_rand tRandom(nDevices);
    for (const auto tEnd = CClock::now() + tFor; CClock::now() < tEnd; std::this_thread::sleep_for(20ms))
    {
        Fault(static_cast<int>(tRandom() % static_cast<unsigned>(nDevices)), eFaultRestart, 100 + tRandom() % 900);
    }
    // Every stream comes back.
    std::vector<unsigned> adwBefore(atStreams.begin(), atStreams.end());
}
} // namespace
