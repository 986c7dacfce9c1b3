// probe: what is on the network, one row for each device, whatever protocols it speaks.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Session.h"

#include <RecordTables.h>
#include <cstring>
#include <memory>
#include <mutex>

namespace tessaro
{
namespace
{
struct tagProbeOptions
{
    unsigned int dwSeconds = 3;
    std::string strInterface;
    std::string strAddress;
};

std::mutex g_tMutex;
json g_tFound = json::array(); // the callback has no user data

// What names a device for every protocol: its serial number with its model, else its hardware address, else where it
// is.
std::string Identity(json const& t)
{
    const auto Value = [&](char const* szKey) { return t[szKey].get<std::string>(); };
    return !Value("serial_number").empty() ? Value("model") + "/" + Value("serial_number")
           : !Value("mac").empty()         ? Value("mac")
                                           : Value("address");
}

void OnFound(tagDeviceProbeConfig* ptConfig)
{
    tagDeviceProbeConfig tConfig{};
    std::memcpy(&tConfig, ptConfig, std::min<std::size_t>(ptConfig->dwSize, sizeof tConfig));
    json tDevice = ToJson(tConfig);
    const std::string strProtocol = tDevice["protocol"].get<std::string>();
    const std::string strIdentity = Identity(tDevice);
    tDevice["protocols"] = json::array({strProtocol});
    tDevice["log_in"] = json::array({fmt::format("{}://{}{}", strProtocol, Text(tConfig.szAddress),
                                                 tConfig.dwPort ? fmt::format(":{}", tConfig.dwPort) : "")});
    tDevice.erase("protocol");
    const std::lock_guard tLock(g_tMutex);
    for (json& tKnown : g_tFound)
    {
        if (Identity(tKnown) != strIdentity)
        {
            continue;
        }
        for (char const* const szKey : {"protocols", "log_in"})
        {
            if (std::ranges::find(tKnown[szKey], tDevice[szKey][0]) == tKnown[szKey].end())
            {
                tKnown[szKey].push_back(tDevice[szKey][0]);
            }
        }
        for (auto const& [strKey, tValue] : tDevice.items())
        {
            if (tKnown[strKey].is_string() && tKnown[strKey].get_ref<std::string const&>().empty())
            {
                tKnown[strKey] = tValue; // what one protocol doesn't know the other may
            }
        }
        tKnown["flags"] = tDevice["flags"];
        return;
    }
    g_tFound.push_back(tDevice);
    CInterrupt::Instance().Wake();
}

int Run(tagContext& tContext, tagProbeOptions const& tOptions)
{
    CService tService;
    auto tPara = Sized<tagDeviceProbeParameter>();
    tPara.dwSeconds = tOptions.dwSeconds;
    tOptions.strInterface.copy(tPara.szInterface, sizeof tPara.szInterface - 1);
    tOptions.strAddress.copy(tPara.szAddress, sizeof tPara.szAddress - 1);
    Check(ClientAdapter_DeviceProbeStart(&tPara, &OnFound), "looking for devices");
    const long long llEnd = NowMs() + tOptions.dwSeconds * 1000LL;
    for (long long llLeft = 0; (llLeft = llEnd - NowMs()) > 0;)
    {
        {
            const std::lock_guard tLock(g_tMutex);
            tContext.tOut.Status(
                fmt::format("looking for {} s more, {} devices yet", (llLeft + 999) / 1000, g_tFound.size()));
        }
        if (!CInterrupt::Instance().Wait(static_cast<int>(std::min(llLeft, 1000LL))))
        {
            break;
        }
    }
    ClientAdapter_DeviceProbeStop();
    const std::lock_guard tLock(g_tMutex);
    std::sort(g_tFound.begin(), g_tFound.end(),
              [](json const& tOne, json const& tOther)
              { return tOne["address"].get<std::string>() < tOther["address"].get<std::string>(); });
    tContext.tOut.Status(fmt::format("{} device{}", g_tFound.size(), g_tFound.size() == 1 ? "" : "s"), true);
    tContext.tOut.EndStatus();
    if (!g_tFound.empty())
    {
        tContext.tOut.Table({{"ADDRESS", "address"},
                             {"PROTOCOLS", "protocols"},
                             {"NAME", "name"},
                             {"MODEL", "model"},
                             {"SERIAL NUMBER", "serial_number"},
                             {"CHANNELS", "channels"},
                             {"FIRMWARE", "firmware"},
                             {"MAC", "mac"},
                             {"STATE", "flags"}},
                            g_tFound);
    }
    tContext.tOut.Result({{"devices", g_tFound}});
    return eExitDone;
}
} // namespace

void DeclareProbe(CLine& tLine)
{
    auto pt = std::make_shared<tagProbeOptions>();
    tLine.Option("--seconds", pt->dwSeconds, "look for so long").Between(1, 3600).Value("N");
    tLine.Option("--interface", pt->strInterface, "look on this network interface alone").Value("NAME");
    tLine.Option("--address", pt->strAddress, "ask this device alone, by its host name or address").Value("HOST");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
