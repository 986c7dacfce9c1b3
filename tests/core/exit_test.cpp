// A process may end in any way while a plug-in delivers and its callbacks call back in: many times over, without a
// crash and without a hang.

#include "adapter/ClientAdapter.h"
#include "tests/recorder/Journal.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{
// The library as a program sees it that loads it at run time, so that it can also be unloaded.
void* g_hLibrary;
#define LIBRARY(function) (reinterpret_cast<decltype(&function)>(dlsym(g_hLibrary, #function)))

decltype(&ClientAdapter_StreamMediaControl) g_pfnControl;
decltype(&ClientAdapter_SubscribeEvent) g_pfnSubscribe;
std::atomic<int> g_nDelivered;
std::atomic<bool> g_bStopped;
std::thread g_tDelivering;

int OnFrame(void*, tagStreamMediaFrame const*, unsigned long dwMedia)
{
    ++g_nDelivered;
    return g_pfnControl(static_cast<int>(dwMedia), eTaskPlay);
}

int OnEvent(void*, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long dwLogin)
{
    ++g_nDelivered;
    return g_pfnSubscribe(static_cast<int>(dwLogin), 1, &OnEvent, dwLogin);
}

void RunAStream()
{
    g_hLibrary = dlopen(TESSARO_LIBRARY, RTLD_NOW);
    g_pfnControl = LIBRARY(ClientAdapter_StreamMediaControl);
    g_pfnSubscribe = LIBRARY(ClientAdapter_SubscribeEvent);
    int nLogin = -1;
    int nMedia = -1;
    tagUserLoginPara tLogin{};
    tagRealStreamPara tStream{};
    LIBRARY(ClientAdapter_Start)(1);
    LIBRARY(ClientAdapter_UserLogin)(&nLogin, eProtocolVTQ, &tLogin);
    LIBRARY(ClientAdapter_RealStreamConnect)(&nMedia, nLogin, &tStream);
    const auto dwMedia = static_cast<unsigned long>(nMedia);
    const auto dwLogin = static_cast<unsigned long>(nLogin);
    LIBRARY(ClientAdapter_StreamMediaCB)(nMedia, &OnFrame, dwMedia);
    g_pfnSubscribe(nLogin, 1, &OnEvent, dwLogin);
    const auto atCalls = CJournal::Instance().Take(); // the last two: what the plug-in was given to call
    const auto pfnFrame = reinterpret_cast<StreamMediaCallback>(atCalls.end()[-2].auArguments.at(1));
    const auto pfnEvent = reinterpret_cast<DeviceEventCallback>(atCalls.end()[-1].auArguments.at(2));
    CJournal::Instance().Answer("VTQClient_Stop", // no callback runs afterwards
                                [](tagCalled const&)
                                {
                                    g_bStopped = true;
                                    g_tDelivering.join();
                                    return 0;
                                });
    g_tDelivering = std::thread(
        [=]
        {
            while (!g_bStopped)
            {
                pfnFrame(nullptr, nullptr, dwMedia);
                pfnEvent(nullptr, 0, 0, 0, 0, dwLogin);
                CJournal::Instance().Take();
            }
        });
    while (g_nDelivered < 100)
    {
        std::this_thread::yield();
    }
}

struct tagWay
{
    char const* szName;
    int nSignal; ///< that the process ends with; 0: it ends by itself, with 0
    void (*fnEnd)();
};
const tagWay g_atWays[] = {
    {"return", 0, [] {}},
    {"exit", 0, [] { std::exit(0); }},
    {"quick_exit", 0, [] { std::quick_exit(0); }},
    {"_exit", 0, [] { _exit(0); }},
    {"SIGTERM", SIGTERM, [] { raise(SIGTERM); }},
    {"SIGKILL", SIGKILL, [] { raise(SIGKILL); }},
    {"dlclose", 0, [] { dlclose(g_hLibrary); }},
};

int Child(tagWay const& tWay, bool bStop)
{
    alarm(30); // a hang ends with SIGALRM
    if (!std::freopen("/dev/null", "w", stdout))
    {
        return 2;
    }
    RunAStream();
    if (bStop)
    {
        LIBRARY(ClientAdapter_Stop)();
    }
    else
    {
        g_tDelivering.detach();
    }
    tWay.fnEnd();
    return 0; // the static objects are destroyed under the running thread
}
} // namespace

int main()
{
#if defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__
    constexpr int nRepetitions = 8; // their processes end slowly
#else
    constexpr int nRepetitions = 15;
#endif
    int nRuns = 0;
    for (tagWay const& tWay : g_atWays)
    {
        for (const bool bStop : {false, true})
        {
            for (int i = 0; i < nRepetitions; ++i, ++nRuns)
            {
                std::fflush(nullptr);
                const pid_t nChild = fork();
                if (nChild == 0)
                {
                    return Child(tWay, bStop);
                }
                int nStatus = -1;
                const bool bWaited = waitpid(nChild, &nStatus, 0) == nChild;
                if (!bWaited ||
                    (tWay.nSignal == 0 ? nStatus != 0 : !WIFSIGNALED(nStatus) || WTERMSIG(nStatus) != tWay.nSignal))
                {
                    std::printf("%s %s a stop: run %d ended with status %#x\n", tWay.szName,
                                bStop ? "after" : "without", i, static_cast<unsigned>(nStatus));
                    return EXIT_FAILURE;
                }
            }
        }
    }
    std::printf("ways to end: %d runs\n", nRuns);
    return EXIT_SUCCESS;
}
