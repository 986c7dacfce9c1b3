// The device service: time, services, capabilities, identity, scopes.

#include "tools/onvif_device/Call.h"
#include "tools/onvif_device/Scopes.h"

#include <chrono>

namespace onvif_device
{
namespace
{
using device::Text;

void WriteDateTime(CXml& tXml, char const* szName, int64_t llTimeUs)
{
    using namespace std::chrono;
    const sys_seconds tTime{seconds(llTimeUs / 1000000)};
    const year_month_day tDate(floor<days>(tTime));
    const hh_mm_ss tClock(tTime - floor<days>(tTime));
    tXml.In(szName,
            [&]
            {
                tXml.In("tt:Time",
                        [&]
                        {
                            tXml.Put("tt:Hour", tClock.hours().count());
                            tXml.Put("tt:Minute", tClock.minutes().count());
                            tXml.Put("tt:Second", tClock.seconds().count());
                        });
                tXml.In("tt:Date",
                        [&]
                        {
                            tXml.Put("tt:Year", static_cast<int>(tDate.year()));
                            tXml.Put("tt:Month", static_cast<unsigned>(tDate.month()));
                            tXml.Put("tt:Day", static_cast<unsigned>(tDate.day()));
                        });
            });
}

void GetSystemDateAndTime(CCall& tCall)
{
    tagConfigClock tClock{};
    {
        const auto tLock = tCall.Lock();
        tClock = tCall.Get<tagConfigClock>();
    }
    CXml& tXml = tCall.Xml();
    tXml.In("tds:SystemDateAndTime",
            [&]
            {
                tXml.Put("tt:DateTimeType", tClock.dwMode == eClockNtp ? "NTP" : "Manual");
                tXml.Put("tt:DaylightSavings", false);
                if (!tCall.Quirks().bSparse)
                {
                    tXml.In("tt:TimeZone", [&] { tXml.Put("tt:TZ", Text(tClock.szTimeZone)); });
                }
                WriteDateTime(tXml, "tt:UTCDateTime", tClock.llTimeUs);
                if (!tCall.Quirks().bSparse)
                {
                    WriteDateTime(tXml, "tt:LocalDateTime",
                                  tClock.llTimeUs + int64_t{tClock.nUtcOffsetMinutes} * 60000000);
                }
            });
}

void SetSystemDateAndTime(CCall& tCall)
{
    using namespace std::chrono;
    const auto tLock = tCall.Lock();
    auto tClock = tCall.Get<tagConfigClock>();
    tClock.dwMode = tCall.Word({"DateTimeType"}, {"Manual", "NTP"});
    tClock.llTimeUs = 0;
    if (tCall.Has({"TimeZone"}))
    {
        device::CopyText(tClock.szTimeZone, tCall.Text({"TimeZone", "TZ"}));
    }
    if (tClock.dwMode == eClockManual && tCall.Has({"UTCDateTime"}))
    {
        const auto fnPart = [&](std::string_view strOf, std::string_view strName, int64_t llMost) {
            return tCall.Integer({"UTCDateTime", strOf, strName}, 0, llMost);
        };
        const year_month_day tDate{year(static_cast<int>(fnPart("Date", "Year", 9999))),
                                   month(static_cast<unsigned>(fnPart("Date", "Month", 12))),
                                   day(static_cast<unsigned>(fnPart("Date", "Day", 31)))};
        if (!tDate.ok())
        {
            FailValue("ter:InvalidDateTime", "there is no such day");
        }
        tClock.llTimeUs = ((sys_days(tDate).time_since_epoch().count() * 24 + fnPart("Time", "Hour", 23)) * 60 +
                           fnPart("Time", "Minute", 59)) *
                              60000000 +
                          fnPart("Time", "Second", 61) * 1000000;
    }
    tCall.Set(eConfigClock, tClock);
}

// --- what there is ---------------------------------------------------------------------------------------------------

void GetServices(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    const bool bCapabilities = tCall.Flag({"IncludeCapability"});
    for (tagService const& t : g_atServices)
    {
        if (IsWithout(tCall.Quirks(), t.szName))
        {
            continue;
        }
        tXml.In("tds:Service",
                [&]
                {
                    tXml.Put("tds:Namespace", UriOf(t.szPrefix));
                    tXml.Put("tds:XAddr", tCall.ServiceAddress(t.eWhich));
                    if (bCapabilities)
                    {
                        tXml.In("tds:Capabilities", [&] { WriteCapabilities(tCall, t.eWhich); });
                    }
                    tXml.In("tds:Version", [&] { tXml.Put("tt:Major", t.nMajor).Put("tt:Minor", t.nMinor); });
                });
    }
}

// One of GetCapabilities: where a service stands, and its flags.
struct tagOldCapability
{
    eService eWhich;
    bool bExtension;        // within the element of that name
    char const* szName;     // of its element
    char const* szCategory; // that asks for it
    char const* szFlags;    // elements and their values
};
constexpr tagOldCapability g_atOldCapabilities[] = {
    {eService::Analytics, false, "Analytics", "Analytics", "RuleSupport=true AnalyticsModuleSupport=true"},
    {eService::Device, false, "Device", "Device", ""},
    {eService::Events, false, "Events", "Events",
     "WSSubscriptionPolicySupport=true WSPullPointSupport=true WSPausableSubscriptionManagerInterfaceSupport=false"},
    {eService::Imaging, false, "Imaging", "Imaging", ""},
    {eService::Media, false, "Media", "Media", ""},
    {eService::Ptz, false, "PTZ", "PTZ", ""},
    {eService::DeviceIo, true, "DeviceIO", "All",
     "VideoSources=4 VideoOutputs=4 AudioSources=1 AudioOutputs=1 RelayOutputs=4"},
    {eService::Display, true, "Display", "All", "FixedLayout=false"},
    {eService::Recording, true, "Recording", "All",
     "ReceiverSource=true MediaProfileSource=true DynamicRecordings=false DynamicTracks=false MaxStringLength=64"},
    {eService::Search, true, "Search", "All", "MetadataSearch=false"},
    {eService::Replay, true, "Replay", "All", ""},
    {eService::Receiver, true, "Receiver", "All",
     "RTP_Multicast=false RTP_TCP=true RTP_RTSP_TCP=true SupportedReceivers=64 MaximumRTSPURILength=256"},
};

void WriteDeviceCapability(CXml& tXml, device::tagDeviceBlueprint const& tBlueprint)
{
    tXml.In("tt:Network",
            [&]
            {
                tXml.Put("tt:IPFilter", false).Put("tt:ZeroConfiguration", false);
                tXml.Put("tt:IPVersion6", false).Put("tt:DynDNS", false);
            });
    tXml.In("tt:System",
            [&]
            {
                tXml.Put("tt:DiscoveryResolve", true).Put("tt:DiscoveryBye", true).Put("tt:RemoteDiscovery", false);
                tXml.Put("tt:SystemBackup", false).Put("tt:SystemLogging", true).Put("tt:FirmwareUpgrade", false);
                tXml.In("tt:SupportedVersions", [&] { tXml.Put("tt:Major", 21).Put("tt:Minor", 6); });
            });
    tXml.In("tt:IO",
            [&] { tXml.Put("tt:InputConnectors", tBlueprint.dwInputs).Put("tt:RelayOutputs", tBlueprint.dwOutputs); });
    tXml.In("tt:Security",
            [&]
            {
                tXml.Put("tt:TLS1.1", false).Put("tt:TLS1.2", true).Put("tt:OnboardKeyGeneration", false);
                tXml.Put("tt:AccessPolicyConfig", false).Put("tt:X.509Token", false).Put("tt:SAMLToken", false);
                tXml.Put("tt:KerberosToken", false).Put("tt:RELToken", false);
            });
}

void WriteOldCapability(CCall& tCall, tagOldCapability const& t)
{
    CXml& tXml = tCall.Xml();
    tXml.In(std::string("tt:") + t.szName,
            [&]
            {
                tXml.Put("tt:XAddr", tCall.ServiceAddress(t.eWhich));
                for (std::string const& strFlag : Words(t.szFlags))
                {
                    const auto nEqual = strFlag.find('=');
                    tXml.Put("tt:" + strFlag.substr(0, nEqual), strFlag.substr(nEqual + 1));
                }
                if (t.eWhich == eService::Device)
                {
                    const auto tLock = tCall.Lock();
                    WriteDeviceCapability(tXml, tCall.Device().Blueprint());
                }
                if (t.eWhich == eService::Media)
                {
                    tXml.In("tt:StreamingCapabilities",
                            [&]
                            {
                                tXml.Put("tt:RTPMulticast", false).Put("tt:RTP_TCP", true);
                                tXml.Put("tt:RTP_RTSP_TCP", true);
                            });
                }
            });
}

void GetCapabilities(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    const std::string strCategory = tCall.Has({"Category"}) ? tCall.Text({"Category"}) : "All";
    bool bAny = strCategory == "All";
    const auto fnWrite = [&](bool bExtension)
    {
        for (tagOldCapability const& t : g_atOldCapabilities)
        {
            if (t.bExtension == bExtension && (strCategory == "All" || strCategory == t.szCategory) &&
                !IsWithout(tCall.Quirks(), ServiceOf(t.eWhich).szName))
            {
                bAny = true;
                WriteOldCapability(tCall, t);
            }
        }
    };
    tXml.In("tds:Capabilities",
            [&]
            {
                fnWrite(false);
                if (strCategory == "All")
                {
                    tXml.In("tt:Extension", [&] { fnWrite(true); });
                }
            });
    if (!bAny)
    {
        FailAction("ter:NoSuchService", "there is no service of this category");
    }
}

void GetDeviceInformation(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const auto tIdentity = tCall.Get<tagConfigIdentity>();
    CXml& tXml = tCall.Xml();
    tXml.Put("tds:Manufacturer", Text(tIdentity.szManufacturer)).Put("tds:Model", Text(tIdentity.szModel));
    tXml.Put("tds:FirmwareVersion", Text(tIdentity.szFirmware));
    tXml.Put("tds:SerialNumber", Text(tIdentity.szSerialNumber)).Put("tds:HardwareId", Text(tIdentity.szHardware));
}

void GetEndpointReference(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    tCall.Xml().Put("tds:GUID", EndpointOf(tCall.Device()));
}

void GetWsdlUrl(CCall& tCall)
{
    tCall.Xml().Put("tds:WsdlUrl", tCall.Address("/wsdl/"));
}

// --- scopes ----------------------------------------------------------------------------------------------------------

void GetScopes(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (tagScope const& t : ScopesOf(tCall.Device()))
    {
        tCall.Xml().In("tds:Scopes",
                       [&]
                       {
                           tCall.Xml().Put("tt:ScopeDef", t.bFixed ? "Fixed" : "Configurable");
                           tCall.Xml().Put("tt:ScopeItem", t.strUri);
                       });
    }
}

// Name and location are what the device keeps of scopes.
void SetScopes(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    auto tIdentity = tCall.Get<tagConfigIdentity>();
    for (const pugi::xml_node tScope : tCall.Request().children())
    {
        const std::string strUri = TextOf(tScope);
        std::string strValue;
        if (ScopeValue(strUri, "name", strValue))
        {
            device::CopyText(tIdentity.szName, strValue);
        }
        else if (ScopeValue(strUri, "location", strValue))
        {
            device::CopyText(tIdentity.szLocation, strValue);
        }
        else if (!strUri.empty())
        {
            FailAction("ter:ScopeOverwrite", strUri + " can't be set");
        }
    }
    tCall.Set(eConfigIdentity, tIdentity);
}
constexpr tagAction g_atActions[] = {
    {"GetServices", 0, "IncludeCapability", GetServices},
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Device>},
    {"GetCapabilities", 0, "Category*", GetCapabilities},
    {"GetWsdlUrl", 0, "", GetWsdlUrl},
    {"GetEndpointReference", 0, "", GetEndpointReference},
    {"GetSystemDateAndTime", 0, "", GetSystemDateAndTime},
    {"SetSystemDateAndTime", eUserAdministrator,
     "DateTimeType DaylightSavings TimeZone{TZ}? UTCDateTime{Time{Hour Minute Second} Date{Year Month Day}}?",
     SetSystemDateAndTime},
    {"GetDeviceInformation", eUserViewer, "", GetDeviceInformation},
    {"GetScopes", eUserViewer, "", GetScopes},
    {"SetScopes", eUserAdministrator, "Scopes+", SetScopes},
};
} // namespace

std::span<tagAction const> DeviceActions()
{
    return g_atActions;
}
} // namespace onvif_device
