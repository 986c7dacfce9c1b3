#pragma once

#include "adapter/ClientAdapter.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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

inline void Stop()
{
    API(Stop)();
}

inline void Unload()
{
    if (dlclose(g_hLibrary) != 0)
    {
        std::exit(EXIT_FAILURE);
    }
}

struct tagWay
{
    char const* szName;
    void (*pfnEnd)(); ///< when it returns, main returns
    bool bLoaded;     ///< only for a library that was loaded
};
// _exit, signals and abort run no code of the library: they aren't tried.
inline constexpr tagWay g_atWays[] = {
    {"exit", [] {}, false},
    {"exit after a stop", &Stop, false},
    {"exit from a callback", &ExitInside, false},
    {"dlclose", [] { Unload(), AwaitDeliveries(3); }, true},
    {"dlclose after a stop", [] { Stop(), Unload(); }, true},
};

/// pfnStart: starts the service, and returns once its callbacks are called.
inline int Child(void (*pfnStart)(), tagWay const& tWay)
{
    alarm(g_dwDeadline); // what hangs ends with SIGALRM
    const rlimit tNoCore{0, 0};
    setrlimit(RLIMIT_CORE, &tNoCore);
    if (!std::freopen("/dev/null", "w", stdout) || (g_szLibrary && !(g_hLibrary = dlopen(g_szLibrary, RTLD_NOW))))
    {
        return EXIT_FAILURE;
    }
    pfnStart();
    tWay.pfnEnd();
    return g_nEnded; // the static objects are destroyed under the running thread
}

/// A program's main: every way nRuns times, nAtOnce at a time.
inline int EndInEveryWay(char const* szWhat, void (*pfnStart)(), int nRuns, int nAtOnce)
{
    int nEnded = 0;
    int nFailed = 0;
    int nRunning = 0;
    for (tagWay const& tWay : g_atWays)
    {
        for (int i = 0; i < nRuns && (g_szLibrary || !tWay.bLoaded); ++i)
        {
            std::fflush(nullptr);
            if (fork() == 0)
            {
                return Child(pfnStart, tWay);
            }
            for (++nRunning; nRunning >= nAtOnce || (nRunning && i == nRuns - 1); --nRunning)
            {
                int nStatus = -1;
                wait(&nStatus);
                ++nEnded;
                if (!WIFEXITED(nStatus) || WEXITSTATUS(nStatus) != g_nEnded)
                {
                    ++nFailed;
                    std::printf("%s: ended with wait status %#x\n", tWay.szName, static_cast<unsigned>(nStatus));
                }
            }
        }
    }
    std::printf("tried: ways to end, %d processes, %s, library %s, %d failed\n", nEnded, szWhat,
                g_szLibrary ? "loaded" : "linked", nFailed);
    return nFailed ? EXIT_FAILURE : EXIT_SUCCESS;
}
