#include "tools/onvif_device/Services.h"

#include "tools/onvif_device/Names.h"

#include <algorithm>
#include <map>

namespace onvif_device
{
const tagService g_atServices[13] = {
    {eService::Device, "tds", "device", "/onvif/device_service", "/onvif/device_service", 21, 6},
    {eService::Media, "trt", "media", "/onvif/media", "/cgi-bin/onvif.cgi/Media", 21, 6},
    {eService::Media2, "tr2", "media2", "/onvif/media2", "/cgi-bin/onvif.cgi/MediaTwo", 21, 6},
    {eService::Ptz, "tptz", "ptz", "/onvif/ptz", "/cgi-bin/onvif.cgi/Move", 20, 12},
    {eService::Imaging, "timg", "imaging", "/onvif/imaging", "/cgi-bin/onvif.cgi/Picture", 19, 6},
    {eService::Events, "tev", "events", "/onvif/events", "/event", 21, 6},
    {eService::DeviceIo, "tmd", "device_io", "/onvif/device_io", "/cgi-bin/onvif.cgi/Contacts", 20, 12},
    {eService::Search, "tse", "search", "/onvif/search", "/recorder/search", 20, 6},
    {eService::Recording, "trc", "recording", "/onvif/recording", "/recorder/control", 20, 12},
    {eService::Replay, "trp", "replay", "/onvif/replay", "/recorder/play", 21, 6},
    {eService::Receiver, "trv", "receiver", "/onvif/receiver", "/decoder/receiver", 2, 1},
    {eService::Display, "tls", "display", "/onvif/display", "/decoder/display", 2, 1},
    {eService::Analytics, "tan", "analytics", "/onvif/analytics", "/cgi-bin/onvif.cgi/Analytics", 21, 6},
};

tagService const& ServiceOf(eService eWhich)
{
    return g_atServices[static_cast<std::size_t>(eWhich)];
}

char const* PathOf(tagService const& tService, tagQuirks const& tQuirks)
{
    return tQuirks.bOddPaths ? tService.szOddPath : tService.szPath;
}

tagService const* ServiceAt(std::string_view strPath, tagQuirks const& tQuirks)
{
    auto const* const it =
        std::ranges::find_if(g_atServices, [&](tagService const& t)
                             { return PathOf(t, tQuirks) == strPath && !IsWithout(tQuirks, t.szName); });
    return it == std::end(g_atServices) ? nullptr : it;
}

namespace
{
struct tagEntry
{
    eService eOf;
    tagAction const* ptAction;
};

// By namespace and name.
std::map<std::string, tagEntry, std::less<>> MakeIndex()
{
    std::map<std::string, tagEntry, std::less<>> tIndex;
    const auto fnAdd = [&](eService eOf, std::span<tagAction const> atActions)
    {
        for (tagAction const& t : atActions)
        {
            const std::string_view strName = t.szName;
            const auto nColon = strName.find(':');
            const std::string_view strPrefix =
                nColon == std::string_view::npos ? ServiceOf(eOf).szPrefix : strName.substr(0, nColon);
            tIndex[std::string(UriOf(strPrefix)) + ' ' + std::string(LocalName(strName))] = {eOf, &t};
        }
    };
    fnAdd(eService::Device, DeviceActions());
    fnAdd(eService::Device, DeviceNetworkActions());
    fnAdd(eService::Device, DeviceSystemActions());
    fnAdd(eService::Media, MediaActions());
    fnAdd(eService::Media, MediaEncoderActions());
    fnAdd(eService::Media2, Media2Actions());
    fnAdd(eService::Ptz, PtzActions());
    fnAdd(eService::Ptz, PtzNodeActions());
    fnAdd(eService::Imaging, ImagingActions());
    fnAdd(eService::Events, EventActions());
    fnAdd(eService::DeviceIo, DeviceIoActions());
    fnAdd(eService::Search, SearchActions());
    fnAdd(eService::Recording, RecordingActions());
    fnAdd(eService::Replay, ReplayActions());
    fnAdd(eService::Receiver, ReceiverActions());
    fnAdd(eService::Display, DisplayActions());
    fnAdd(eService::Analytics, AnalyticsActions());
    return tIndex;
}
} // namespace

tagAction const* FindAction(std::string_view strUri, std::string_view strName, eService& eOf)
{
    static const auto s_tIndex = MakeIndex();
    const auto it = s_tIndex.find(std::string(strUri) + ' ' + std::string(strName));
    if (it == s_tIndex.end())
    {
        return nullptr;
    }
    eOf = it->second.eOf;
    return it->second.ptAction;
}
} // namespace onvif_device
