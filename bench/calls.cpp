// What the library adds to a call and to a frame, against calling the plug-in (and being called by it) directly, in one
// run. `bench_calls count NAME N` makes N calls and nothing else, for an instruction counter.

#include "adapter/ClientAdapter.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <numeric>
#include <random>
#include <vector>

namespace
{
using ControlEntry = int (*)(void*, eTaskControl);
using RegisterEntry = int (*)(void*, StreamMediaCallback, unsigned long);
using DeliverEntry = void (*)(unsigned long);

constexpr int g_nStreams = 997;

// The plug-in, the library started on it, and as many streams as the tables hold.
struct tagHouse
{
    ControlEntry pfnControl;
    RegisterEntry pfnRegister;
    DeliverEntry pfnDeliver;
    int nLogin = -1;
    std::vector<int> anMedia = std::vector<int>(g_nStreams, -1);
    std::vector<int> anShuffled;
    tagUserLoginPara tLogin{};
    tagRealStreamPara tStream{};

    tagHouse()
    {
        void* const hPlugin = dlopen("libVTQ.so", RTLD_LAZY);
        if (!hPlugin)
        {
            std::fprintf(stderr, "libVTQ.so is not on the loader's path\n");
            std::exit(EXIT_FAILURE);
        }
        pfnControl = reinterpret_cast<ControlEntry>(dlsym(hPlugin, "VTQClient_StreamMediaControl"));
        pfnRegister = reinterpret_cast<RegisterEntry>(dlsym(hPlugin, "VTQClient_StreamMediaCB"));
        pfnDeliver = reinterpret_cast<DeliverEntry>(dlsym(hPlugin, "Bench_Deliver"));
        ClientAdapter_Start(1);
        ClientAdapter_UserLogin(&nLogin, eProtocolVTQ, &tLogin);
        for (int& nMedia : anMedia)
        {
            ClientAdapter_RealStreamConnect(&nMedia, nLogin, &tStream);
        }
        anShuffled = anMedia;
        std::shuffle(anShuffled.begin(), anShuffled.end(), std::mt19937(1));
    }
};

tagHouse& House()
{
    static tagHouse g_tHouse;
    return g_tHouse;
}

int OnFrame(void*, tagStreamMediaFrame const*, unsigned long)
{
    return 0;
}

void Direct(unsigned long nCalls)
{
    tagHouse& tHouse = House();
    for (; nCalls; --nCalls)
    {
        benchmark::DoNotOptimize(tHouse.pfnControl(&tHouse, eTaskPlay));
    }
}

void Forwarded(unsigned long nCalls)
{
    const int nMedia = House().anMedia[7];
    for (; nCalls; --nCalls)
    {
        benchmark::DoNotOptimize(ClientAdapter_StreamMediaControl(nMedia, eTaskPlay));
    }
}

void ForwardedAmongMany(unsigned long nCalls)
{
    std::vector<int> const& anMedia = House().anShuffled;
    for (std::size_t i = 0; nCalls; --nCalls, i = i + 1 == anMedia.size() ? 0 : i + 1)
    {
        benchmark::DoNotOptimize(ClientAdapter_StreamMediaControl(anMedia[i], eTaskPlay));
    }
}

void Refused(unsigned long nCalls)
{
    for (; nCalls; --nCalls)
    {
        benchmark::DoNotOptimize(ClientAdapter_StreamMediaControl(-1, eTaskPlay));
    }
}

void OpenAndClose(unsigned long nCalls)
{
    tagHouse& tHouse = House();
    for (; nCalls; --nCalls)
    {
        int nMedia = -1;
        ClientAdapter_RealStreamConnect(&nMedia, tHouse.nLogin, &tHouse.tStream);
        ClientAdapter_RealStreamDisconnect(nMedia);
    }
}

void CalledBack(unsigned long nCalls)
{
    House().pfnRegister(nullptr, &OnFrame, 1);
    House().pfnDeliver(nCalls);
}

void Relayed(unsigned long nCalls)
{
    ClientAdapter_StreamMediaCB(House().anMedia[7], &OnFrame, 1);
    House().pfnDeliver(nCalls);
}

constexpr struct
{
    char const* szName;
    void (*pfn)(unsigned long);
} g_atContestants[] = {
    {"direct", &Direct},   {"forwarded", &Forwarded},         {"forwarded_among_many", &ForwardedAmongMany},
    {"refused", &Refused}, {"open_and_close", &OpenAndClose}, {"called_back", &CalledBack},
    {"relayed", &Relayed},
};
} // namespace

int main(int nArguments, char** aszArguments)
{
    if (nArguments == 4 && std::strcmp(aszArguments[1], "count") == 0)
    {
        House();
        for (auto const& tContestant : g_atContestants)
        {
            if (std::strcmp(tContestant.szName, aszArguments[2]) == 0)
            {
                tContestant.pfn(std::strtoul(aszArguments[3], nullptr, 10));
                return EXIT_SUCCESS;
            }
        }
        return EXIT_FAILURE;
    }
    benchmark::Initialize(&nArguments, aszArguments);
    for (auto const& tContestant : g_atContestants)
    {
        benchmark::RegisterBenchmark(tContestant.szName,
                                     [pfn = tContestant.pfn](benchmark::State& tState)
                                     {
                                         constexpr unsigned long nBatch = 1000;
                                         for ([[maybe_unused]] auto tStep : tState)
                                         {
                                             pfn(nBatch);
                                         }
                                         tState.SetItemsProcessed(tState.iterations() * static_cast<long>(nBatch));
                                     });
    }
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
