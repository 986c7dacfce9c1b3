// What a start costs with three full plug-ins, against opening them and looking the same names up without us.

#include "bench/Contest.h"

#include "adapter/ClientAdapter.h"
#include "tests/recorder/Journal.h"

#include <dlfcn.h>
#include <fstream>
#include <string>
#include <vector>

namespace
{
struct tagPlugin
{
    char const* szLibrary;
    char const* szPrefix;
    char const* szNames; ///< file with the names, in look-up order
    std::vector<std::string> astrNames;
};
tagPlugin g_atPlugins[] = {
    {"libonvifclient.so", "OnvifClient_", "lookup_onvif.txt", {}},
    {"librtspclient.so", "RTSPClient_", "lookup_rtsp.txt", {}},
    {"libVTQ.so", "VTQClient_", "lookup_vtq.txt", {}},
};

void Prepare()
{
    CJournal::Instance().Observe([](tagCalled const&, void**) { return 0; });
    for (tagPlugin& tPlugin : g_atPlugins)
    {
        tPlugin.astrNames.clear();
        std::ifstream tFile(std::string(TESSARO_GOLDEN "/") + tPlugin.szNames);
        for (std::string strName; std::getline(tFile, strName);)
        {
            tPlugin.astrNames.push_back(strName);
        }
        if (tPlugin.astrNames.empty())
        {
            std::fprintf(stderr, "%s can't be read\n", tPlugin.szNames);
            std::exit(EXIT_FAILURE);
        }
    }
}

void LoadedBare(unsigned long nTimes)
{
    for (; nTimes; --nTimes)
    {
        void* ahPlugins[std::size(g_atPlugins)];
        void** phPlugin = ahPlugins;
        for (tagPlugin const& tPlugin : g_atPlugins)
        {
            void* const hPlugin = *phPlugin++ = dlopen(tPlugin.szLibrary, RTLD_LAZY);
            if (!hPlugin)
            {
                std::fprintf(stderr, "%s is not on the loader's path\n", tPlugin.szLibrary);
                std::exit(EXIT_FAILURE);
            }
            for (std::string const& strName : tPlugin.astrNames)
            {
                benchmark::DoNotOptimize(dlsym(hPlugin, strName.c_str()));
            }
            reinterpret_cast<int (*)()>(dlsym(hPlugin, (std::string(tPlugin.szPrefix) + "Start").c_str()))();
        }
        for (void* const hPlugin : ahPlugins)
        {
            dlclose(hPlugin);
        }
    }
}

void Started(unsigned long nTimes)
{
    for (; nTimes; --nTimes)
    {
        ClientAdapter_Start(16);
        ClientAdapter_Stop();
    }
}

constexpr tagContestant g_atContestants[] = {
    {"loaded_bare", &Prepare, &LoadedBare, 1, [] {}, 1},
    {"started", &Prepare, &Started, 1, [] {}, 1},
};
} // namespace

int main(int nArguments, char** aszArguments)
{
    if (!std::freopen("/dev/null", "w", stdout)) // the library's many lines; results go to --benchmark_out
    {
        return EXIT_FAILURE;
    }
    return Contest(nArguments, aszArguments, g_atContestants);
}
