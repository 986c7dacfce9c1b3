// What needs no login: devices that are found, and what a device tells anybody.

#include "plugins/onvif/Nearby.h"

#include "onvif/Xml.h"
#include "plugins/common/Text.h"
#include "plugins/onvif/Delivery.h"
#include "plugins/onvif/Identity.h"
#include "plugins/onvif/Operations.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
using Adapter_ProtocolSet::ReadRecord;
using plugin::CopyText;
using std::chrono::milliseconds;

std::mutex g_tMutex;
std::shared_ptr<CDelivery> g_pDelivery; // of the probe that runs

tagDeviceProbeConfig RecordOf(onvif::tagFound const& tFound)
{
    onvif::tagAnnouncement const& tSaid = tFound.tSaid;
    tagDeviceProbeConfig t{};
    t.dwSize = sizeof t;
    t.dwProtocol = eProtocolOnvif;
    t.dwPort = tFound.tAddress.wPort;
    t.dwFlags = tFound.bGone ? eProbeGone : 0;
    CopyText(t.szAddress, tFound.tAddress.strHost);
    CopyText(t.szMac, tSaid.strMac);
    CopyText(t.szName, tSaid.strName);
    CopyText(t.szManufacturer, tSaid.strManufacturer);
    CopyText(t.szModel, tSaid.strHardware);
    CopyText(t.szSerialNumber, tSaid.strEndpoint);
    CopyText(t.szLocation, tSaid.strLocation);
    CopyText(t.szService, tFound.tAddress.Text());
    return t;
}

void OnFound(onvif::tagFound const& tFound)
{
    const std::lock_guard tLock(g_tMutex);
    if (g_pDelivery)
    {
        g_pDelivery->Add(
            [tRecord = RecordOf(tFound)]
            {
                tagDeviceProbeConfig t = tRecord;
                Face().tProbe.Call(&t);
            });
    }
}

void SetDelivery(std::shared_ptr<CDelivery> pDelivery)
{
    const std::lock_guard tLock(g_tMutex);
    g_pDelivery.swap(pDelivery);
    if (pDelivery)
    {
        pDelivery->Close();
    }
}

// Where to look; null: everywhere.
int ReadWhere(tagDeviceProbeParameter const* ptPara, onvif::tagWhere& tWhere)
{
    tagDeviceProbeParameter t{};
    constexpr uint32_t dwBoth = eProbeIPv4Only | eProbeIPv6Only;
    if ((ptPara && ReadRecord(t, ptPara) != eResultOk) || (t.dwFlags & dwBoth) == dwBoth || t.dwPort > 65535)
    {
        return eResultBadArgument;
    }
    tWhere.strInterface = plugin::Text(t.szInterface);
    tWhere.strAddress = plugin::Text(t.szAddress);
    tWhere.wPort = static_cast<std::uint16_t>(t.dwPort);
    tWhere.bIPv4 = !(t.dwFlags & eProbeIPv6Only);
    tWhere.bIPv6 = !(t.dwFlags & eProbeIPv4Only);
    tWhere.tFor = std::chrono::seconds(t.dwSeconds ? std::min(t.dwSeconds, 86400U) : 5);
    return eResultOk;
}

// fnAnswer with a device that is asked by its address, for anybody or for a user.
template <class F>
int AskAddress(char const* szAddress, unsigned long dwPort, unsigned long dwTimeoutMs, onvif::tagClientOptions tOptions,
               F fnAnswer)
{
    if (!szAddress || !*szAddress)
    {
        return eResultBadArgument;
    }
    const auto tAddress = onvif::ParseDevice(szAddress, static_cast<std::uint32_t>(std::min(dwPort, 65536UL)));
    if (!tAddress)
    {
        return eResultBadAddress;
    }
    tOptions.tAddress = *tAddress;
    tOptions.bCheckCertificate = Face().bCheckCertificates;
    tOptions.tLimit = milliseconds(dwTimeoutMs ? std::min(dwTimeoutMs, 86400000UL) : 5000);
    tOptions.tLoginLimit = tOptions.tLimit;
    return fnAnswer(*std::make_shared<onvif::CClient>(Http(), std::move(tOptions)));
}

eNetworkSDKVersion VersionOf(onvif::CClient const& tClient)
{
    return tClient.Has(onvif::eService::Media2)  ? eSDKVersion2
           : tClient.Has(onvif::eService::Media) ? eSDKVersion1
                                                 : eSDKVersionUnknown;
}

uint32_t RtspPortOf(onvif::CClient& tClient)
{
    const onvif::CAnswer tAnswer = tClient.Call({.szName = "GetNetworkProtocols"});
    for (pugi::xml_node const& tProtocol : onvif::Children(tAnswer.Body(), "NetworkProtocols"))
    {
        if (onvif::Text(tProtocol, "Name") == "RTSP" && onvif::Truth(tProtocol, "Enabled").value_or(true))
        {
            return static_cast<uint32_t>(std::clamp<int64_t>(onvif::Integer(tProtocol, "Port").value_or(0), 0, 65535));
        }
    }
    return 0;
}

uint32_t ChannelsOf(onvif::CClient& tClient)
{
    const auto eMedia = tClient.Has(onvif::eService::Media) ? onvif::eService::Media : onvif::eService::DeviceIO;
    const onvif::CAnswer tAnswer = tClient.Call({.eTo = eMedia, .szName = "GetVideoSources"});
    return static_cast<uint32_t>(onvif::Children(tAnswer.Body(), "VideoSources").size());
}
} // namespace

onvif::CDiscovery& Nearby()
{
    static onvif::CDiscovery& s_tNearby = *new onvif::CDiscovery(Http(), &OnFound);
    return s_tNearby;
}

// --- probing ---------------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::DeviceProbeStart>, tagDeviceProbeParameter* ptPara,
          DeviceProbeCallback pfnProbe)
{
    onvif::tagWhere tWhere;
    if (!pfnProbe || ReadWhere(ptPara, tWhere) != eResultOk)
    {
        return eResultBadArgument;
    }
    Nearby().Stop();
    SetDelivery(std::make_shared<CDelivery>(Engine()));
    Face().tProbe.Set(pfnProbe);
    return Nearby().Start(tWhere) ? int{eResultOk} : int{eResultUnreachable};
}

int Serve(tagCall<&CClientProtocolBase::DeviceProbeStop>)
{
    Nearby().Stop();
    SetDelivery(nullptr);
    return Ended(Face().tProbe.Set(nullptr));
}

int Serve(tagCall<&CClientProtocolBase::DeviceProbeResearch>, tagDeviceProbeParameter* ptPara)
{
    onvif::tagWhere tWhere;
    return ReadWhere(ptPara, tWhere) != eResultOk ? int{eResultBadArgument}
           : Nearby().Again(tWhere)               ? int{eResultOk}
                                                  : int{eResultNotFound};
}

// --- one device ------------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::DeviceIsOnline>, char const* szAddress, unsigned long dwPort,
          unsigned long dwTimeout)
{
    return AskAddress(szAddress, dwPort, dwTimeout, {},
                      [](onvif::CClient& tClient) { return tClient.Ping(tClient.Limit()); });
}

// A device may want a login before it tells its services: its version then isn't known.
int Serve(tagCall<&CClientProtocolBase::GetSDKVersion>, char const* szAddress, unsigned long dwPort,
          unsigned long dwTimeout, eNetworkSDKVersion* peVersion)
{
    return !peVersion ? int{eResultBadArgument}
                      : AskAddress(szAddress, dwPort, dwTimeout, {},
                                   [&](onvif::CClient& tClient) -> int
                                   {
                                       const int nResult = tClient.Login();
                                       if (nResult != eResultOk && nResult != eResultWrongLogin)
                                       {
                                           return nResult;
                                       }
                                       *peVersion = VersionOf(tClient);
                                       return eResultOk;
                                   });
}

int Serve(tagCall<&CClientProtocolBase::GetSDKVersionByHandle>, void* hLogin, eNetworkSDKVersion* peVersion)
{
    return With<CLogin>(hLogin,
                        [&](CLogin const& tLogin) -> int
                        {
                            if (!peVersion)
                            {
                                return eResultBadArgument;
                            }
                            *peVersion = VersionOf(tLogin.Client());
                            return eResultOk;
                        });
}

int Serve(tagCall<&CClientProtocolBase::GetDeviceConfigFromHttp>, char const* szAddress,
          tagDeviceConfigFromHttp* ptConfig)
{
    tagDeviceConfigFromHttp t{};
    if (ReadRecord(t, ptConfig) != eResultOk)
    {
        return eResultBadArgument;
    }
    onvif::tagClientOptions tOptions;
    tOptions.strUser = plugin::Text(t.szUserName);
    tOptions.strPassword = plugin::Text(t.szPassword);
    return AskAddress(szAddress, t.dwPort, t.dwTimeoutMs, std::move(tOptions),
                      [&](onvif::CClient& tClient) -> int
                      {
                          int nResult = tClient.Login();
                          t.dwHttpStatus = nResult == eResultOk ? 200 : nResult == eResultWrongLogin ? 401 : 0;
                          if (nResult == eResultOk)
                          {
                              const onvif::tagDeviceInformation tInformation = tClient.Information();
                              t.dwProtocol = eProtocolOnvif;
                              t.dwDevicePort = tClient.Address().wPort;
                              t.dwRtspPort = RtspPortOf(tClient);
                              t.dwChannels = ChannelsOf(tClient);
                              CopyText(t.szName, AskIdentity(tClient).strName);
                              CopyText(t.szModel, tInformation.strModel);
                              CopyText(t.szSerialNumber, tInformation.strSerialNumber);
                              CopyText(t.szFirmware, tInformation.strFirmware);
                              int nIgnored = eResultOk;
                              CopyText(t.szMac, AskMac(tClient, nIgnored));
                          }
                          if (t.dwHttpStatus != 0)
                          {
                              std::memset(t.szPassword, 0, sizeof t.szPassword);
                              Adapter_ProtocolSet::WriteRecord(ptConfig, t);
                          }
                          return nResult;
                      });
}
} // namespace onvifclient
