// The ways in which a process ends while a plug-in delivers and its callbacks call back in: each many times over,
// without a crash or a hang. Built twice: with the library linked, and to load it from TESSARO_LOADED.

#include "adapter/ClientAdapter.h"
#include "tests/recorder/Journal.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{
constexpr int g_nEnded = 7;           // the exit code of a child that came to its end
constexpr unsigned g_dwDeadline = 20; // seconds
#ifdef TESSARO_LOADED
constexpr char const* g_szLibrary = TESSARO_LOADED;
#else
constexpr char const* g_szLibrary = nullptr; // linked
#endif

void* g_hLibrary = RTLD_DEFAULT;
std::atomic<int> g_nDelivered;
std::atomic<bool> g_bEndInside; // the next callback ends the process
std::atomic<bool> g_bEndPlugin;
int g_nLogin = -1;
int g_nMedia = -1;

// A function of the library, whichever way that came in. Looked up once: after dlclose too it is called where it was.
#define API(name)                                                                                                      \
    (*[]                                                                                                               \
     {                                                                                                                 \
         static const auto g_pfn =                                                                                     \
             reinterpret_cast<decltype(&ClientAdapter_##name)>(dlsym(g_hLibrary, "ClientAdapter_" #name));             \
         return g_pfn;                                                                                                 \
     }())

int OnFrame(void*, tagStreamMediaFrame const*, unsigned long dwMedia)
{
    ++g_nDelivered;
    if (g_bEndInside)
    {
        std::exit(g_nEnded);
    }
    int nMedia = -1;
    tagRealStreamPara tStream{};
    API(RealStreamConnect)(&nMedia, g_nLogin, &tStream);
    API(RealStreamDisconnect)(nMedia);
    return API(StreamMediaControl)(static_cast<int>(dwMedia), eTaskPlay);
}

int OnEvent(void*, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long dwLogin)
{
    ++g_nDelivered;
    int nLogin = -1;
    tagUserLoginPara tLogin{};
    API(UserLogin)(&nLogin, eProtocolRTSP, &tLogin);
    API(UserLogout)(nLogin);
    return API(SubscribeEvent)(static_cast<int>(dwLogin), 1, &OnEvent, dwLogin);
}

void AwaitDeliveries()
{
    for (const int nUntil = g_nDelivered + 100; g_nDelivered < nUntil;)
    {
        std::this_thread::yield();
    }
}

void StartDelivering()
{
    tagUserLoginPara tLogin{};
    tagRealStreamPara tStream{};
    API(Start)(1);
    API(UserLogin)(&g_nLogin, eProtocolVTQ, &tLogin);
    API(RealStreamConnect)(&g_nMedia, g_nLogin, &tStream);
    const auto dwMedia = static_cast<unsigned long>(g_nMedia);
    const auto dwLogin = static_cast<unsigned long>(g_nLogin);
    API(StreamMediaCB)(g_nMedia, &OnFrame, dwMedia);
    API(SubscribeEvent)(g_nLogin, 1, &OnEvent, dwLogin);
    const auto atCalls = CJournal::Instance().Take(); // the last two: what the plug-in was given to call
    const auto pfnFrame = reinterpret_cast<StreamMediaCallback>(atCalls.end()[-2].auArguments.at(1));
    const auto pfnEvent = reinterpret_cast<DeviceEventCallback>(atCalls.end()[-1].auArguments.at(2));
    static auto* const g_pPlugin = new std::thread( // never destroyed: it may run to the very end
        [=]
        {
            while (!g_bEndPlugin)
            {
                pfnFrame(nullptr, nullptr, dwMedia);
                pfnEvent(nullptr, 0, 0, 0, 0, dwLogin);
                CJournal::Instance().Take();
            }
        });
    CJournal::Instance().Answer("VTQClient_Stop", // ends the plug-in's thread
                                [](tagCalled const&)
                                {
                                    g_bEndPlugin = true;
                                    g_pPlugin->join();
                                    return 0;
                                });
    AwaitDeliveries();
}

void ExitInside()
{
    g_bEndInside = true;
    for (;;)
    {
        pause();
    }
}

void Unload()
{
    if (!g_hLibrary || dlclose(g_hLibrary) != 0)
    {
        _exit(EXIT_FAILURE);
    }
    if (!g_bEndPlugin)
    {
        AwaitDeliveries();
    }
}

struct tagWay
{
    char const* szName;
    void (*pfnEnd)();     // what it returns from, main returns from
    int nStatus;          // as waitid tells it: exit code or signal
    bool bAlsoStopped;    // also after ClientAdapter_Stop
    bool bLoaded = false; // only for a library that was loaded
};
constexpr tagWay g_atWays[] = {
    {"return from main", [] {}, g_nEnded, true},
    {"exit", [] { std::exit(g_nEnded); }, g_nEnded, true},
    {"exit from a callback", &ExitInside, g_nEnded, false},
    {"_exit", [] { _exit(g_nEnded); }, g_nEnded, true},
    {"quick_exit", [] { std::quick_exit(g_nEnded); }, g_nEnded, true},
    {"SIGTERM", [] { std::raise(SIGTERM); }, SIGTERM, true},
    {"abort", [] { std::abort(); }, SIGABRT, true},
    {"dlclose", &Unload, g_nEnded, true, true},
};

int Child(tagWay const& tWay, bool bStop)
{
    const rlimit tNoCore{0, 0};
    setrlimit(RLIMIT_CORE, &tNoCore);
    if (!std::freopen("/dev/null", "w", stdout))
    {
        return EXIT_FAILURE;
    }
    if (g_szLibrary && !(g_hLibrary = dlopen(g_szLibrary, RTLD_NOW)))
    {
        std::fprintf(stderr, "%s\n", dlerror());
        return EXIT_FAILURE;
    }
    StartDelivering();
    if (bStop)
    {
        API(Stop)();
    }
    tWay.pfnEnd();
    return g_nEnded; // the static objects are destroyed under the running thread
}

volatile pid_t g_nChild = 0;

void OnDeadline(int)
{
    if (g_nChild > 0)
    {
        kill(g_nChild, SIGKILL);
    }
}

// How the child ended, as waitid tells it; SIGKILL: not in time.
int AwaitEnd(pid_t nChild)
{
    siginfo_t tInfo{};
    g_nChild = nChild;
    alarm(g_dwDeadline);
    while (waitid(P_PID, static_cast<id_t>(nChild), &tInfo, WEXITED | WNOWAIT) != 0) // interrupted by the alarm
    {
    }
    alarm(0);
    g_nChild = 0; // from here on its number may be another's
    waitpid(nChild, nullptr, 0);
    return tInfo.si_status;
}
} // namespace

int main()
{
    struct sigaction tAction
    {
    };
    tAction.sa_handler = &OnDeadline;
    sigaction(SIGALRM, &tAction, nullptr);
    int nRuns = 0;
    int nFailed = 0;
    for (tagWay const& tWay : g_atWays)
    {
        for (int i = 0; i < 2 * TESSARO_RUNS; ++i)
        {
            const bool bStop = i % 2;
            if ((bStop && !tWay.bAlsoStopped) || (tWay.bLoaded && !g_szLibrary))
            {
                continue;
            }
            std::fflush(nullptr);
            const pid_t nChild = fork();
            if (nChild == 0)
            {
                return Child(tWay, bStop);
            }
            if (nChild < 0)
            {
                std::perror("fork");
                return EXIT_FAILURE;
            }
            ++nRuns;
            if (const int nStatus = AwaitEnd(nChild); nStatus != tWay.nStatus)
            {
                ++nFailed;
                std::printf("%s%s: run %d ended with %d\n", tWay.szName, bStop ? " after a stop" : "", i / 2, nStatus);
            }
        }
    }
    std::printf("tried: ways to end, %d runs, library %s, %d failed\n", nRuns, g_szLibrary ? "loaded" : "linked", nFailed);
    return nFailed ? EXIT_FAILURE : EXIT_SUCCESS;
}
