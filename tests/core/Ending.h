#pragma once

#include "adapter/ClientAdapter.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

// The ways in which a process ends while plug-ins deliver and their callbacks call back in. With the library linked, or
// loaded from TESSARO_LOADED.

inline constexpr int g_nEnded = 77;          ///< the exit code of a child that came to its end
inline constexpr unsigned g_dwDeadline = 30; ///< seconds
#ifdef TESSARO_LOADED
inline constexpr char const* g_szLibrary = TESSARO_LOADED;
#else
inline constexpr char const* g_szLibrary = nullptr; ///< linked
#endif

inline void* g_hLibrary = RTLD_DEFAULT;
inline std::atomic<int> g_nDelivered;
inline std::atomic<bool> g_bEndInside; ///< the next callback ends the process
inline bool g_bStopped;

/// A function of the library, whichever way that came in. Looked up once: after dlclose too it is called where it was.
#define API(name)                                                                                                      \
    (*[]                                                                                                               \
     {                                                                                                                 \
         static const auto g_pfn =                                                                                     \
             reinterpret_cast<decltype(&ClientAdapter_##name)>(dlsym(g_hLibrary, "ClientAdapter_" #name));             \
         return g_pfn;                                                                                                 \
     }())

/// At the beginning of every callback.
inline void Delivered()
{
    ++g_nDelivered;
    if (g_bEndInside.exchange(false)) // the others go on
    {
        std::exit(g_nEnded);
    }
}

inline void AwaitDeliveries(int nMore)
{
    for (const int nUntil = g_nDelivered + nMore; g_nDelivered < nUntil;)
    {
        std::this_thread::yield();
    }
}

inline void ExitInside()
{
    g_bEndInside = true;
    for (;;)
    {
        pause();
    }
}

inline void Unload()
{
    if (!g_hLibrary || dlclose(g_hLibrary) != 0)
    {
        _exit(EXIT_FAILURE);
    }
    if (!g_bStopped)
    {
        AwaitDeliveries(3);
    }
}

struct tagWay
{
    char const* szName;
    void (*pfnEnd)();     ///< when it returns, main returns
    int nSignal;          ///< that it ends with; 0: it exits with g_nEnded
    bool bAlsoStopped;    ///< also after ClientAdapter_Stop
    bool bLoaded = false; ///< only for a library that was loaded
};
inline constexpr tagWay g_atWays[] = {
    {"return from main", [] {}, 0, true},
    {"exit", [] { std::exit(g_nEnded); }, 0, true},
    {"exit from a callback", &ExitInside, 0, false},
    {"_exit", [] { _exit(g_nEnded); }, 0, true},
    {"quick_exit", [] { std::quick_exit(g_nEnded); }, 0, true},
    {"SIGTERM", [] { std::raise(SIGTERM); }, SIGTERM, true},
    {"abort", [] { std::abort(); }, SIGABRT, true},
    {"dlclose", &Unload, 0, true, true},
};

/// pfnStart: starts the service, and returns once its callbacks are called.
inline int Child(void (*pfnStart)(), tagWay const& tWay, bool bStop)
{
    alarm(g_dwDeadline); // what hangs ends with SIGALRM
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
    pfnStart();
    if (bStop)
    {
        API(Stop)();
        g_bStopped = true;
    }
    tWay.pfnEnd();
    return g_nEnded; // the static objects are destroyed under the running thread
}

/// Waits for the child's end; false, and a line: it wasn't the way's.
inline bool EndsAs(tagWay const& tWay, bool bStop, pid_t nChild)
{
    int nStatus = 0;
    const bool bWaited = waitpid(nChild, &nStatus, 0) == nChild;
    const bool bAs = tWay.nSignal ? WIFSIGNALED(nStatus) && WTERMSIG(nStatus) == tWay.nSignal
                                  : WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == g_nEnded;
    if (!bWaited || !bAs)
    {
        std::printf("%s%s: ended with wait status %#x\n", tWay.szName, bStop ? " after a stop" : "",
                    static_cast<unsigned>(nStatus));
    }
    return bWaited && bAs;
}

/// A program's main: every way nRuns times, nAtOnce at a time, with and without a stop before.
inline int EndInEveryWay(char const* szWhat, void (*pfnStart)(), int nRuns, int nAtOnce)
{
    int nEnded = 0;
    int nFailed = 0;
    for (tagWay const& tWay : g_atWays)
    {
        for (const bool bStop : {false, true})
        {
            if ((bStop && !tWay.bAlsoStopped) || (tWay.bLoaded && !g_szLibrary))
            {
                continue;
            }
            std::vector<pid_t> anChildren;
            for (int i = 0; i < nRuns || !anChildren.empty(); ++i)
            {
                if (i < nRuns)
                {
                    std::fflush(nullptr);
                    const pid_t nChild = fork();
                    if (nChild == 0)
                    {
                        return Child(pfnStart, tWay, bStop);
                    }
                    if (nChild < 0)
                    {
                        std::perror("fork");
                        return EXIT_FAILURE;
                    }
                    anChildren.push_back(nChild);
                    if (static_cast<int>(anChildren.size()) < nAtOnce)
                    {
                        continue;
                    }
                }
                ++nEnded;
                nFailed += !EndsAs(tWay, bStop, anChildren.front());
                anChildren.erase(anChildren.begin());
            }
        }
    }
    std::printf("tried: ways to end, %d processes, %s, library %s, %d failed\n", nEnded, szWhat,
                g_szLibrary ? "loaded" : "linked", nFailed);
    return nFailed ? EXIT_FAILURE : EXIT_SUCCESS;
}
