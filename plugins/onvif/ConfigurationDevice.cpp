// Who a device is, its clock, and where it stores.

#include "plugins/onvif/Configuration.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/NetworkHost.h"
#include "plugins/onvif/Profiles.h"

#include "plugins/common/Text.h"

#include <chrono>
#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr uint32_t g_dwNtpPort = 123;

// --- scopes ----------------------------------------------------------------------------------------------------------

constexpr std::string_view g_strName = "onvif://www.onvif.org/name/";
constexpr std::string_view g_strLocation = "onvif://www.onvif.org/location/";

int HexDigit(char c)
{
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

std::string Decoded(std::string_view strText)
{
    std::string strPlain;
    for (std::size_t i = 0; i < strText.size(); ++i)
    {
        const bool bCoded = strText[i] == '%' && i + 2 < strText.size() && HexDigit(strText[i + 1]) >= 0 &&
                            HexDigit(strText[i + 2]) >= 0;
        strPlain += bCoded ? static_cast<char>(HexDigit(strText[i + 1]) * 16 + HexDigit(strText[i + 2])) : strText[i];
        i += bCoded ? 2 : 0;
    }
    return strPlain;
}

std::string Encoded(std::string_view strText)
{
    std::string strCoded;
    for (const char c : strText)
    {
        const bool bPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
                            c == '_' || c == '.' || c == '/';
        char szCoded[4] = {c};
        if (!bPlain)
        {
            std::snprintf(szCoded, sizeof szCoded, "%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
        }
        strCoded += szCoded;
    }
    return strCoded;
}

// All that is told of one kind; a place often comes in several parts.
std::string ScopeText(CAnswer const& tScopes, std::string_view strKind)
{
    std::string strAll;
    for (pugi::xml_node tScope : Children(tScopes.Body(), "Scopes"))
    {
        const std::string_view strItem = onvif::Text(tScope, "ScopeItem");
        if (strItem.starts_with(strKind))
        {
            strAll += (strAll.empty() ? "" : ", ") + Decoded(strItem.substr(strKind.size()));
        }
    }
    return strAll;
}

// --- counts ----------------------------------------------------------------------------------------------------------

// What the device has of everything. What it doesn't tell is 0.
int Count(CLogin& tLogin, tagConfigIdentity& t)
{
    std::shared_ptr<CProfiles::Channels const> pChannels;
    const int nResult = tLogin.Part<CProfiles>().All(pChannels);
    if (nResult != eResultOk && nResult != eResultNotSupported)
    {
        return nResult;
    }
    t.dwChannels = pChannels ? static_cast<uint32_t>(pChannels->size()) : 0;
    if (tLogin.Client().Has(eService::DeviceIO))
    {
        const CAnswer tAnswer = tLogin.Call({eService::DeviceIO, "GetServiceCapabilities"});
        const pugi::xml_node tCounts = Child(tAnswer.Body(), "Capabilities");
        const auto fnCount = [&](char const* szName) { return ParseWord(Attribute(tCounts, szName)); };
        t.dwAlarmInputs = fnCount("DigitalInputs");
        t.dwAlarmOutputs = fnCount("RelayOutputs");
        t.dwAudioInputs = fnCount("AudioSources");
        t.dwAudioOutputs = fnCount("AudioOutputs");
        t.dwSerialPorts = fnCount("SerialPorts");
        t.dwScreens = fnCount("VideoOutputs");
    }
    else
    {
        const CAnswer tAnswer =
            tLogin.Call({eService::Device, "GetCapabilities", CXmlWriter().Add("tds:Category", "Device").Take()});
        const pugi::xml_node tCounts = Find(tAnswer.Body(), "Capabilities/Device/IO");
        t.dwAlarmInputs = Word(tCounts, "InputConnectors");
        t.dwAlarmOutputs = Word(tCounts, "RelayOutputs");
    }
    const CAnswer tInterfaces = tLogin.Call({eService::Device, "GetNetworkInterfaces"});
    t.dwInterfaces = static_cast<uint32_t>(Children(tInterfaces.Body(), "NetworkInterfaces").size());
    const CAnswer tStores = tLogin.Call({eService::Device, "GetStorageConfigurations"});
    t.dwDisks = static_cast<uint32_t>(Children(tStores.Body(), "StorageConfigurations").size());
    return IsSilent(tInterfaces) ? tInterfaces.Result() : int{eResultOk};
}

int CheckIndex(tagWhich const& tWhich)
{
    return tWhich.dwIndex == 0 ? int{eResultOk} : int{eResultNoChannel};
}
} // namespace

// --- identity --------------------------------------------------------------------------------------------------------

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigIdentity& t)
{
    int nResult = CheckIndex(tWhich);
    nResult = nResult ? nResult : Count(tLogin, t);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    const CAnswer tInformation = tLogin.Call({eService::Device, "GetDeviceInformation"});
    const CAnswer tScopes = tLogin.Call({eService::Device, "GetScopes"});
    if (!tInformation || !tScopes)
    {
        return tInformation ? tScopes.Result() : tInformation.Result();
    }
    plugin::CopyText(t.szName, ScopeText(tScopes, g_strName));
    plugin::CopyText(t.szLocation, ScopeText(tScopes, g_strLocation));
    plugin::CopyText(t.szManufacturer, onvif::Text(tInformation.Body(), "Manufacturer"));
    plugin::CopyText(t.szModel, onvif::Text(tInformation.Body(), "Model"));
    plugin::CopyText(t.szSerialNumber, onvif::Text(tInformation.Body(), "SerialNumber"));
    plugin::CopyText(t.szFirmware, onvif::Text(tInformation.Body(), "FirmwareVersion"));
    plugin::CopyText(t.szHardware, onvif::Text(tInformation.Body(), "HardwareId"));
    return eResultOk;
}

// The scopes that can be changed are sent as a whole: those of other kinds stay.
int Write(CLogin& tLogin, tagWhich const&, tagConfigIdentity const& tBefore, tagConfigIdentity const& tAfter)
{
    const bool bName = !IsSame(tBefore.szName, tAfter.szName);
    const bool bLocation = !IsSame(tBefore.szLocation, tAfter.szLocation);
    if (!bName && !bLocation)
    {
        return eResultOk;
    }
    const CAnswer tScopes = tLogin.Call({eService::Device, "GetScopes"});
    if (!tScopes)
    {
        return tScopes.Result();
    }
    CXmlWriter tBody;
    for (pugi::xml_node tScope : Children(tScopes.Body(), "Scopes"))
    {
        const std::string_view strItem = onvif::Text(tScope, "ScopeItem");
        if (onvif::Text(tScope, "ScopeDef") == "Configurable" && !(bName && strItem.starts_with(g_strName)) &&
            !(bLocation && strItem.starts_with(g_strLocation)))
        {
            tBody.Add("tds:Scopes", strItem);
        }
    }
    const auto fnAdd = [&](bool bChanged, std::string_view strKind, std::string const& strText)
    {
        if (bChanged && !strText.empty())
        {
            tBody.Add("tds:Scopes", std::string(strKind) + Encoded(strText));
        }
    };
    fnAdd(bName, g_strName, plugin::Text(tAfter.szName));
    fnAdd(bLocation, g_strLocation, plugin::Text(tAfter.szLocation));
    return tLogin.Call({eService::Device, "SetScopes", tBody.Take()}).Result();
}

// --- clock -----------------------------------------------------------------------------------------------------------

namespace
{
// Seconds since 1970; nothing: the part isn't there, or is no time.
std::optional<int64_t> Seconds(pugi::xml_node tTime)
{
    using namespace std::chrono;
    const auto llYear = Integer(tTime, "Date/Year");
    const year_month_day tDay{year{static_cast<int>(std::clamp<int64_t>(llYear.value_or(0), 0, 9999))},
                              month{Word(tTime, "Date/Month")}, day{Word(tTime, "Date/Day")}};
    if (!llYear || !tDay.ok())
    {
        return std::nullopt;
    }
    return int64_t{duration_cast<seconds>(sys_days{tDay}.time_since_epoch()).count()} +
           std::min(Word(tTime, "Time/Hour"), 24U) * 3600 + std::min(Word(tTime, "Time/Minute"), 60U) * 60 +
           std::min(Word(tTime, "Time/Second"), 60U);
}

void AddTime(CXmlWriter& tBody, int64_t llTimeUs)
{
    using namespace std::chrono;
    const sys_seconds tNow{seconds{llTimeUs / 1000000}};
    const year_month_day tDay{floor<days>(tNow)};
    const hh_mm_ss tClock{tNow - floor<days>(tNow)};
    tBody.Open("tds:UTCDateTime").Open("tt:Time");
    tBody.Add("tt:Hour", int64_t{tClock.hours().count()}).Add("tt:Minute", int64_t{tClock.minutes().count()});
    tBody.Add("tt:Second", int64_t{tClock.seconds().count()}).Close().Open("tt:Date");
    tBody.Add("tt:Year", int{tDay.year()}).Add("tt:Month", unsigned{tDay.month()}).Add("tt:Day", unsigned{tDay.day()});
    tBody.Close().Close();
}
} // namespace

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigClock& t)
{
    if (const int nResult = CheckIndex(tWhich))
    {
        return nResult;
    }
    const CAnswer tAnswer = tLogin.Call({eService::Device, "GetSystemDateAndTime"});
    if (!tAnswer)
    {
        return tAnswer.Result();
    }
    const pugi::xml_node tNow = Child(tAnswer.Body(), "SystemDateAndTime");
    const auto llUtc = Seconds(Child(tNow, "UTCDateTime"));
    const auto llLocal = Seconds(Child(tNow, "LocalDateTime"));
    t.dwMode = onvif::Text(tNow, "DateTimeType") == "NTP" ? eClockNtp : eClockManual;
    t.llTimeUs = llUtc ? *llUtc * 1000000 : tLogin.Client().DeviceTimeUs();
    // Both are read within a second of the device's clock.
    t.nUtcOffsetMinutes =
        llUtc && llLocal ? static_cast<int32_t>((*llLocal - *llUtc + 30 * 60 * 60) / 60 - 30 * 60) : 0;
    t.dwNtpPort = g_dwNtpPort;
    plugin::CopyText(t.szTimeZone, onvif::Text(tNow, "TimeZone/TZ"));
    const CAnswer tNtp = tLogin.Call({eService::Device, "GetNTP"});
    if (IsSilent(tNtp))
    {
        return tNtp.Result();
    }
    const pugi::xml_node tServers = Child(tNtp.Body(), "NTPInformation");
    const auto atServers =
        Children(tServers, Truth(tServers, "FromDHCP").value_or(false) ? "NTPFromDHCP" : "NTPManual");
    plugin::CopyText(t.szNtpServer1, atServers.empty() ? std::string() : HostOf(atServers[0]));
    plugin::CopyText(t.szNtpServer2, atServers.size() < 2 ? std::string() : HostOf(atServers[1]));
    return eResultOk;
}

int Write(CLogin& tLogin, tagWhich const&, tagConfigClock const& tBefore, tagConfigClock const& tAfter)
{
    if (tAfter.dwMode > eClockNtp || tAfter.llTimeUs < 0 || tAfter.dwNtpSeconds != 0 ||
        (tAfter.dwNtpPort != 0 && tAfter.dwNtpPort != g_dwNtpPort)) // ONVIF knows neither of the two
    {
        return eResultBadArgument;
    }
    if (!IsSame(tBefore.szNtpServer1, tAfter.szNtpServer1) || !IsSame(tBefore.szNtpServer2, tAfter.szNtpServer2))
    {
        const std::string astrServers[] = {plugin::Text(tAfter.szNtpServer1), plugin::Text(tAfter.szNtpServer2)};
        CXmlWriter tBody;
        tBody.Add("tds:FromDHCP", astrServers[0].empty() && astrServers[1].empty());
        for (std::string const& strServer : astrServers)
        {
            tBody.Raw(strServer.empty() ? std::string() : HostXml("tds:NTPManual", strServer, true));
        }
        if (const int nResult = tLogin.Call({eService::Device, "SetNTP", tBody.Take()}).Result())
        {
            return nResult;
        }
    }
    const bool bSet = tAfter.dwMode == eClockManual && tAfter.llTimeUs != 0;
    if (!bSet && tAfter.dwMode == tBefore.dwMode && IsSame(tBefore.szTimeZone, tAfter.szTimeZone))
    {
        return eResultOk;
    }
    const std::string strZone = plugin::Text(tAfter.szTimeZone);
    CXmlWriter tBody;
    tBody.Add("tds:DateTimeType", tAfter.dwMode == eClockNtp ? "NTP" : "Manual");
    tBody.Add("tds:DaylightSavings", strZone.find(',') != std::string::npos);
    if (!strZone.empty())
    {
        tBody.Open("tds:TimeZone").Add("tt:TZ", strZone).Close();
    }
    if (tAfter.dwMode == eClockManual)
    {
        AddTime(tBody, bSet ? tAfter.llTimeUs : tLogin.Client().DeviceTimeUs());
    }
    const int nResult = tLogin.Call({eService::Device, "SetSystemDateAndTime", tBody.Take()}).Result();
    if (nResult == eResultOk)
    {
        tLogin.Client().Ping(tLogin.Client().Limit()); // logins are by this clock
    }
    return nResult;
}

// --- storage ---------------------------------------------------------------------------------------------------------

// ONVIF tells neither how large a store is nor how it is doing.
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigStorage& t)
{
    if (const int nResult = CheckIndex(tWhich))
    {
        return nResult;
    }
    const CAnswer tAnswer = tLogin.Call({eService::Device, "GetStorageConfigurations"});
    for (pugi::xml_node tStore : Children(tAnswer.Body(), "StorageConfigurations"))
    {
        if (t.dwCount == std::size(t.atDisks))
        {
            break;
        }
        tagConfigDisk& tDisk = t.atDisks[t.dwCount++];
        tDisk.dwState = eDiskOk;
        tDisk.dwGroupType = eDiskGroupMain;
        const std::string_view strPath = onvif::Text(tStore, "Data/LocalPath");
        plugin::CopyText(tDisk.szName, strPath.empty() ? Attribute(tStore, "token") : strPath);
    }
    return tAnswer.Result();
}
} // namespace onvifclient
