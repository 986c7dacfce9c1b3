#pragma once

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>

/// One way to do something, to be timed against others in the same run.
struct tagContestant
{
    char const* szName;
    void (*pfnPrepare)();          ///< not timed; once before the calls, on one thread
    void (*pfnRun)(unsigned long); ///< makes so many calls; on each thread
    int nThreads = 1;
    void (*pfnEnd)() = [] {};    ///< not timed
    unsigned long nBatch = 1000; ///< calls between two looks at the clock
};

/// A program's main: times the contestants as its arguments tell Google Benchmark; with `count NAME N` makes N calls of
/// one on a single thread and nothing else, for an instruction counter.
inline int Contest(int nArguments, char** aszArguments, std::span<tagContestant const> atContestants)
{
    if (nArguments == 4 && std::strcmp(aszArguments[1], "count") == 0)
    {
        for (tagContestant const& tContestant : atContestants)
        {
            if (std::strcmp(tContestant.szName, aszArguments[2]) == 0)
            {
                tContestant.pfnPrepare();
                tContestant.pfnRun(std::strtoul(aszArguments[3], nullptr, 10));
                tContestant.pfnEnd();
                return EXIT_SUCCESS;
            }
        }
        std::fprintf(stderr, "no contestant %s\n", aszArguments[2]);
        return EXIT_FAILURE;
    }
    benchmark::Initialize(&nArguments, aszArguments);
    for (tagContestant const& tContestant : atContestants)
    {
        benchmark::RegisterBenchmark(
            tContestant.szName,
            [&tContestant](benchmark::State& tState)
            {
                if (tState.thread_index() == 0)
                {
                    tContestant.pfnPrepare();
                }
                for ([[maybe_unused]] auto tStep : tState)
                {
                    tContestant.pfnRun(tContestant.nBatch);
                }
                if (tState.thread_index() == 0)
                {
                    tContestant.pfnEnd();
                }
                tState.counters["calls"] = {static_cast<double>(tContestant.nBatch), benchmark::Counter::kAvgThreads};
            })
            ->Threads(tContestant.nThreads);
    }
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
