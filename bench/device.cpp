// What the simulated device costs: 1,000 live streams, a login, a query of 10,000 recordings, a snapshot. Prints a
// table.

#include "adapter/ClientAdapter.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
using namespace std::chrono_literals;
using CClock = std::chrono::steady_clock;
constexpr std::size_t g_nStreams = 1000;
constexpr int g_nRate = 15; // of a sub stream
constexpr uint32_t g_dwRecordings = 10000;
constexpr int g_nRounds = 3;
std::atomic<unsigned> g_dwFrames;
std::FILE* g_pTable;

[[noreturn]] void Fail(char const* szWhat)
{
    std::fprintf(stderr, "%s\n", szWhat);
    std::_Exit(EXIT_FAILURE);
}
void Must(int nResult, char const* szWhat)
{
    if (nResult != 0)
    {
        Fail(szWhat);
    }
}

double CpuSeconds()
{
    rusage tUsage{};
    getrusage(RUSAGE_SELF, &tUsage);
    const auto fnSeconds = [](timeval const& t)
    { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6; };
    return fnSeconds(tUsage.ru_utime) + fnSeconds(tUsage.ru_stime);
}

int OnFrame(void*, tagStreamMediaFrame const*, unsigned long)
{
    ++g_dwFrames;
    return 0;
}

// CPU time of the process and frames, per second.
struct tagRate
{
    double dCpu;
    double dFrames;
};
tagRate Measure()
{
    const auto tBegin = CClock::now();
    const double dCpu = CpuSeconds();
    const unsigned dwFrames = g_dwFrames;
    std::this_thread::sleep_for(5s);
    const double dSeconds = std::chrono::duration<double>(CClock::now() - tBegin).count();
    return {(CpuSeconds() - dCpu) / dSeconds, (g_dwFrames - dwFrames) / dSeconds};
}

// The floor: a thread that wakes up for each frame of each stream, spread evenly, and makes the call.
tagRate MeasureFloor()
{
    std::atomic<bool> bStop = false;
    std::thread tThread(
        [&]
        {
            int (*volatile pfnCallback)(void*, tagStreamMediaFrame const*, unsigned long) = OnFrame;
            const tagStreamMediaFrame tFrame{};
            for (auto tNext = CClock::now(); !bStop; tNext += std::chrono::nanoseconds(1s) / (g_nStreams * g_nRate))
            {
                std::this_thread::sleep_until(tNext);
                pfnCallback(nullptr, &tFrame, 0);
            }
        });
    const tagRate tRate = Measure();
    bStop = true;
    tThread.join();
    return tRate;
}

int Login(char const* szAddress)
{
    tagUserLoginPara tPara{};
    int nLogin = -1;
    std::snprintf(tPara.szAddress, sizeof tPara.szAddress, "%s", szAddress);
    strcpy(tPara.szUserName, "admin");
    strcpy(tPara.szPassword, "admin");
    Must(ClientAdapter_UserLogin(&nLogin, eProtocolVTQ, &tPara), "no login");
    return nLogin;
}

// The least of several times, in microseconds, of one of nCalls.
template <class F>
double Least(int nCalls, F fnCall)
{
    double dLeast = 1e9;
    for (int i = 0; i < 5 * g_nRounds; ++i)
    {
        const auto tBegin = CClock::now();
        for (int j = 0; j < nCalls; ++j)
        {
            fnCall();
        }
        dLeast = std::min(dLeast, std::chrono::duration<double, std::micro>(CClock::now() - tBegin).count() / nCalls);
    }
    return dLeast;
}

void Streams(int nLogin)
{
    std::vector<int> anMedia(g_nStreams);
    tagRate tFloor{1e9, 0};
    tagRate tBest{1e9, 0};
    for (int i = 0; i < g_nRounds; ++i)
    {
        const tagRate tBare = MeasureFloor();
        for (std::size_t j = 0; j < g_nStreams; ++j)
        {
            tagRealStreamPara tPara{static_cast<uint32_t>(j % 4), 0, eStreamSub, {}};
            Must(ClientAdapter_RealStreamConnect(&anMedia[j], nLogin, &tPara), "no stream");
            Must(ClientAdapter_StreamMediaCB(anMedia[j], OnFrame, 0), "no frames");
        }
        std::this_thread::sleep_for(1s);
        const tagRate tRate = Measure();
        for (const int nMedia : anMedia)
        {
            ClientAdapter_RealStreamDisconnect(nMedia);
        }
        tFloor = tBare.dCpu < tFloor.dCpu ? tBare : tFloor;
        tBest = tRate.dCpu < tBest.dCpu ? tRate : tBest;
    }
    std::fprintf(g_pTable, "%-34s %8.1f %%  %8.2f  of one core; %.0f frames a second\n", "1,000 streams",
                 tBest.dCpu * 100, tBest.dCpu / tFloor.dCpu, tBest.dFrames);
    std::fprintf(g_pTable, "%-34s %8.1f %%  %8.2f  %.0f frames a second\n", "  floor: waking up and calling",
                 tFloor.dCpu * 100, 1.0, tFloor.dFrames);
}

void Calls(int nLogin)
{
    tagCameraPicture tPicture{};
    tPicture.dwSize = sizeof tPicture;
    const double dFloor =
        Least(1000, [&] { ClientAdapter_GetIpcPara(nLogin, 0, eCameraPicture, &tPicture, sizeof tPicture); });
    // The ratio is that of one call, of so many; 0: none to compare.
    const auto fnPrint = [&](char const* szWhat, int nCalls, double dMicroseconds)
    {
        std::fprintf(g_pTable, "%-34s %8.1f us", szWhat, dMicroseconds);
        nCalls ? std::fprintf(g_pTable, " %8.1f\n", dMicroseconds / dFloor / nCalls) : std::fprintf(g_pTable, "\n");
    };
    fnPrint("a login and logout", 2, Least(200, [] { ClientAdapter_UserLogout(Login("bench")); }));
    const int nRecorder = Login("recorder");
    fnPrint("a query of 10,000 recordings", g_dwRecordings,
            Least(1,
                  [&]
                  {
                      tagHistoryStreamQueryFactor tFactor{};
                      tagHistoryStreamQueryResult tResult{};
                      uint32_t dwFound = 0;
                      int nQuery = -1;
                      tFactor.dwSize = sizeof tFactor;
                      tResult.dwSize = sizeof tResult;
                      Must(ClientAdapter_HistoryStreamQueryConnect(&nQuery, nRecorder, &tFactor), "no query");
                      while (ClientAdapter_HistoryStreamQueryNext(nQuery, &tResult) == 0)
                      {
                          ++dwFound;
                      }
                      ClientAdapter_HistoryStreamQueryDisconnect(nQuery);
                      Must(dwFound != g_dwRecordings, "recordings are missing");
                  }));
    std::vector<unsigned char> abyPicture(1 << 20);
    for (auto const& [szWhat, eFormat] :
         {std::pair{"a snapshot, JPEG, 1280x720", eImageJpeg}, std::pair{"a snapshot, PNG, 1280x720", eImagePng}})
    {
        fnPrint(szWhat, 0,
                Least(1,
                      [&, eFormat = eFormat]
                      {
                          tagImageFileInfo tInfo{};
                          tInfo.dwSize = sizeof tInfo;
                          tInfo.dwCapacity = static_cast<uint32_t>(abyPicture.size());
                          tInfo.pbyData = abyPicture.data();
                          Must(ClientAdapter_ImageCapture(nLogin, 0, eFormat, &tInfo), "no snapshot");
                      }));
    }
    std::fprintf(g_pTable, "%-34s %8.2f us %8.2f\n", "  floor: reading a camera's picture", dFloor, 1.0);
    ClientAdapter_UserLogout(nRecorder);
}
} // namespace

int main()
{
    // The library's diagnostic lines aren't part of the table.
    g_pTable = fdopen(dup(STDOUT_FILENO), "w");
    if (!g_pTable || !std::freopen("/dev/null", "w", stdout))
    {
        Fail("no output");
    }
    const std::string strFleet = std::filesystem::temp_directory_path() / ("fleet-" + std::to_string(getpid()));
    std::ofstream(strFleet) << "[[device]]\naddress = \"recorder\"\nrecordings = { count = " << g_dwRecordings
                            << ", every = 120, seconds = 60 }\n";
    ClientAdapter_Start(1);
    Must(ClientAdapter_RTSPSetIsProductTest(eMiscFleet, const_cast<char*>(strFleet.c_str()), strFleet.size() + 1,
                                            eProtocolVTQ),
         "no fleet");
    std::filesystem::remove(strFleet);
    const int nLogin = Login("bench");
    std::fprintf(g_pTable, "%-34s %11s  %8s\n", "", "", "ratio");
    Streams(nLogin);
    Calls(nLogin);
    ClientAdapter_UserLogout(nLogin);
    ClientAdapter_Stop();
    return std::fclose(g_pTable) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
