// What the library adds to a call and to a frame, against calling the plug-in (and being called by it) directly.

#include "bench/Contest.h"

#include "adapter/ClientAdapter.h"

#include <algorithm>
#include <atomic>
#include <dlfcn.h>
#include <random>
#include <thread>
#include <vector>

namespace
{
constexpr std::size_t g_nMost = 992; // connections held; the tables have room for a few more

// The plug-in, the library started on it, and connections.
class CBench
{
public:
    CBench()
    {
        m_hPlugin = dlopen("libVTQ.so", RTLD_LAZY);
        if (!m_hPlugin)
        {
            std::fprintf(stderr, "libVTQ.so is not on the loader's path\n");
            std::exit(EXIT_FAILURE);
        }
        ClientAdapter_Start(1);
        ClientAdapter_UserLogin(&nLogin, eProtocolVTQ, &m_tLogin);
    }

    // The plug-in's own function.
    template <class F>
    F* Entry(char const* szName) const
    {
        return reinterpret_cast<F*>(dlsym(m_hPlugin, szName));
    }

    // From here on so many connections are open.
    void Hold(std::size_t nConnections)
    {
        for (; anMedia.size() > nConnections; anMedia.pop_back())
        {
            ClientAdapter_RealStreamDisconnect(anMedia.back());
        }
        while (anMedia.size() < nConnections)
        {
            int nMedia = -1;
            ClientAdapter_RealStreamConnect(&nMedia, nLogin, &tStream);
            anMedia.push_back(nMedia);
        }
        anShuffled = anMedia;
        std::shuffle(anShuffled.begin(), anShuffled.end(), std::mt19937(1));
    }

    int nLogin = -1;
    tagRealStreamPara tStream{};
    std::vector<int> anMedia;
    std::vector<int> anShuffled;

private:
    void* m_hPlugin;
    tagUserLoginPara m_tLogin{};
};

CBench& Bench()
{
    static CBench g_tBench;
    return g_tBench;
}

void HoldNone()
{
    Bench().Hold(0);
}

void HoldMany()
{
    Bench().Hold(g_nMost);
}

int OnFrame(void*, tagStreamMediaFrame const*, unsigned long)
{
    return 0;
}

void Direct(unsigned long nCalls)
{
    static auto* const g_pfnControl = Bench().Entry<int(void*, eTaskControl)>("VTQClient_StreamMediaControl");
    auto* const pfnControl = g_pfnControl;
    for (; nCalls; --nCalls)
    {
        benchmark::DoNotOptimize(pfnControl(&nCalls, eTaskPlay));
    }
}

void Forwarded(unsigned long nCalls)
{
    const int nMedia = Bench().anMedia[7];
    for (; nCalls; --nCalls)
    {
        benchmark::DoNotOptimize(ClientAdapter_StreamMediaControl(nMedia, eTaskPlay));
    }
}

void ForwardedAmongMany(unsigned long nCalls)
{
    std::vector<int> const& anMedia = Bench().anShuffled;
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

void OpenedDirectly(unsigned long nCalls)
{
    static auto* const g_pfnOpen = Bench().Entry<int(void**, void*, tagRealStreamPara*)>("VTQClient_RealStreamConnect");
    static auto* const g_pfnClose = Bench().Entry<int(void*)>("VTQClient_RealStreamDisconnect");
    CBench& tBench = Bench();
    for (; nCalls; --nCalls)
    {
        void* hStream = nullptr;
        g_pfnOpen(&hStream, &tBench, &tBench.tStream);
        benchmark::DoNotOptimize(g_pfnClose(hStream));
    }
}

void OpenAndClose(unsigned long nCalls)
{
    CBench& tBench = Bench();
    for (; nCalls; --nCalls)
    {
        int nMedia = -1;
        ClientAdapter_RealStreamConnect(&nMedia, tBench.nLogin, &tBench.tStream);
        ClientAdapter_RealStreamDisconnect(nMedia);
    }
}

// Another thread that opens and closes without pause.
std::atomic<bool> g_bEnd;
std::thread g_tOpening;

void BeginOpening()
{
    HoldMany();
    g_bEnd = false;
    g_tOpening = std::thread(
        []
        {
            while (!g_bEnd)
            {
                OpenAndClose(100);
            }
        });
}

void EndOpening()
{
    g_bEnd = true;
    g_tOpening.join();
}

void RegisterDirectly()
{
    Bench().Entry<int(void*, StreamMediaCallback, unsigned long)>("VTQClient_StreamMediaCB")(nullptr, &OnFrame, 1);
}

void RegisterThroughLibrary()
{
    HoldMany();
    ClientAdapter_StreamMediaCB(Bench().anMedia[7], &OnFrame, 1);
}

void Deliver(unsigned long nFrames)
{
    static auto* const g_pfnDeliver = Bench().Entry<void(unsigned long)>("Bench_Deliver");
    g_pfnDeliver(nFrames);
}

constexpr tagContestant g_atContestants[] = {
    {"direct", &HoldMany, &Direct},
    {"forwarded", &HoldMany, &Forwarded},
    {"forwarded_among_many", &HoldMany, &ForwardedAmongMany},
    {"refused", &HoldMany, &Refused},
    {"direct_2", &HoldMany, &Direct, 2},
    {"forwarded_2", &HoldMany, &ForwardedAmongMany, 2},
    {"forwarded_beside_opening", &BeginOpening, &ForwardedAmongMany, 1, &EndOpening},
    {"called_back", &RegisterDirectly, &Deliver},
    {"relayed", &RegisterThroughLibrary, &Deliver},
    {"called_back_2", &RegisterDirectly, &Deliver, 2},
    {"relayed_2", &RegisterThroughLibrary, &Deliver, 2},
    {"opened_directly", &HoldNone, &OpenedDirectly},
    {"open_and_close_at_0", &HoldNone, &OpenAndClose},
    {"open_and_close_at_992", &HoldMany, &OpenAndClose},
};
} // namespace

int main(int nArguments, char** aszArguments)
{
    return Contest(nArguments, aszArguments, g_atContestants);
}
