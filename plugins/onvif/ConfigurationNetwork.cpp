// Network interfaces, and what the device tells and keeps beside them: gateway, name servers, ports, host name.

#include "plugins/onvif/Configuration.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/NetworkHost.h"

#include "plugins/common/Text.h"

#include <algorithm>
#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;

struct tagPort
{
    std::string_view strName;
    uint32_t tagConfigNetwork::*pPort;
};
constexpr tagPort g_atPorts[] = {{"HTTP", &tagConfigNetwork::dwHttpPort},
                                 {"HTTPS", &tagConfigNetwork::dwHttpsPort},
                                 {"RTSP", &tagConfigNetwork::dwRtspPort}};

// Address and length of one family; null: the interface has none of it.
pugi::xml_node AddressNode(pugi::xml_node tInterface, char const* szFamily)
{
    const pugi::xml_node tConfig = Find(Child(tInterface, szFamily), "Config");
    for (char const* const szKind : {"Manual", "FromDHCP", "LinkLocal"})
    {
        if (const pugi::xml_node t = Child(tConfig, szKind); !onvif::Text(t, "Address").empty())
        {
            return t;
        }
    }
    return {};
}

pugi::xml_node AddressNode(pugi::xml_node tInterface)
{
    const pugi::xml_node t = AddressNode(tInterface, "IPv4");
    return t ? t : AddressNode(tInterface, "IPv6");
}

// The interface of this number, or the one that the login came in through.
pugi::xml_node FindInterface(CLogin const& tLogin, CAnswer const& tAnswer, uint32_t dwIndex)
{
    const auto atAll = Children(tAnswer.Body(), "NetworkInterfaces");
    if (dwIndex != eInterfaceOfLogin)
    {
        return dwIndex < atAll.size() ? atAll[dwIndex] : pugi::xml_node();
    }
    const auto fnIsOurs = [&](pugi::xml_node t)
    {
        const pugi::xml_node tFour = AddressNode(t, "IPv4");
        const pugi::xml_node tSix = AddressNode(t, "IPv6");
        std::string const& strHost = tLogin.Client().Address().strHost;
        return (tFour && onvif::Text(tFour, "Address") == strHost) || (tSix && onvif::Text(tSix, "Address") == strHost);
    };
    // A device behind a router doesn't know the address that it was reached by.
    const auto it = std::ranges::find_if(atAll, fnIsOurs);
    return it != atAll.end() ? *it : atAll.empty() ? pugi::xml_node() : atAll[0];
}

void TakeInterface(pugi::xml_node tInterface, tagConfigNetwork& t)
{
    t.bEnabled = Truth(tInterface, "Enabled").value_or(true) ? 1 : 0;
    const bool bSix = !AddressNode(tInterface, "IPv4") && AddressNode(tInterface, "IPv6");
    const std::string_view strDhcp = onvif::Text(tInterface, bSix ? "IPv6/Config/DHCP" : "IPv4/Config/DHCP");
    t.bDhcp = bSix ? !strDhcp.empty() && strDhcp != "Off" : strDhcp == "true" || strDhcp == "1";
    t.dwMtu = Word(tInterface, "Info/MTU");
    t.dwSpeed = Word(tInterface, "Link/OperSettings/Speed");
    const pugi::xml_node tAddress = AddressNode(tInterface);
    t.dwPrefixLength = Word(tAddress, "PrefixLength");
    plugin::CopyText(t.szAddress, onvif::Text(tAddress, "Address"));
    plugin::CopyText(t.szInterface, onvif::Text(tInterface, "Info/Name"));
    std::string strMac(onvif::Text(tInterface, "Info/HwAddress"));
    std::ranges::replace(strMac, '-', ':');
    plugin::CopyText(t.szMac, strMac);
}

void TakePorts(CAnswer const& tAnswer, tagConfigNetwork& t)
{
    for (pugi::xml_node tProtocol : Children(tAnswer.Body(), "NetworkProtocols"))
    {
        auto const* const ptPort = std::ranges::find(g_atPorts, onvif::Text(tProtocol, "Name"), &tagPort::strName);
        if (ptPort != std::end(g_atPorts) && Truth(tProtocol, "Enabled").value_or(false))
        {
            t.*ptPort->pPort = Word(tProtocol, "Port");
        }
    }
}

void TakeNames(CAnswer const& tDns, CAnswer const& tHost, CAnswer const& tGateway, tagConfigNetwork& t)
{
    const pugi::xml_node tServers = Child(tDns.Body(), "DNSInformation");
    const bool bDhcp = Truth(tServers, "FromDHCP").value_or(false);
    const auto atServers = Children(tServers, bDhcp ? "DNSFromDHCP" : "DNSManual");
    plugin::CopyText(t.szNameServer1, atServers.empty() ? std::string() : HostOf(atServers[0]));
    plugin::CopyText(t.szNameServer2, atServers.size() < 2 ? std::string() : HostOf(atServers[1]));
    plugin::CopyText(t.szHostName, onvif::Text(tHost.Body(), "HostnameInformation/Name"));
    plugin::CopyText(t.szGateway, HostOf(Child(tGateway.Body(), "NetworkGateway")));
}

bool IsValid(tagConfigNetwork const& tBefore, tagConfigNetwork const& t)
{
    const auto fnIsAddress = [](auto const& szText)
    { return szText[0] == '\0' || AddressKind(plugin::Text(szText)) != 0; };
    return t.bEnabled <= 1 && t.bDhcp <= 1 && t.dwHttpPort <= 65535 && t.dwHttpsPort <= 65535 &&
           t.dwRtspPort <= 65535 && t.dwPrefixLength <= 128 && fnIsAddress(t.szAddress) && fnIsAddress(t.szGateway) &&
           fnIsAddress(t.szNameServer1) && fnIsAddress(t.szNameServer2) && (t.bDhcp != 0 || t.szAddress[0] != '\0') &&
           t.dwDevicePort == tBefore.dwDevicePort; // that is the web server's port, as it is reached from here
}

int SetNameServers(CLogin const& tLogin, tagConfigNetwork const& t)
{
    CXmlWriter tBody;
    tBody.Add("tds:FromDHCP", t.bDhcp != 0);
    for (std::string const& strServer : {plugin::Text(t.szNameServer1), plugin::Text(t.szNameServer2)})
    {
        tBody.Raw(t.bDhcp != 0 || strServer.empty() ? std::string() : HostXml("tds:DNSManual", strServer, false));
    }
    return tLogin.Call({eService::Device, "SetDNS", tBody.Take()}).Result();
}

int SetGateway(CLogin const& tLogin, tagConfigNetwork const& t)
{
    const std::string strGateway = plugin::Text(t.szGateway);
    CXmlWriter tBody;
    if (!strGateway.empty())
    {
        tBody.Add(AddressKind(strGateway) == 4 ? "tds:IPv4Address" : "tds:IPv6Address", strGateway);
    }
    return tLogin.Call({eService::Device, "SetNetworkDefaultGateway", tBody.Take()}).Result();
}

int SetPorts(CLogin const& tLogin, tagConfigNetwork const& tBefore, tagConfigNetwork const& tAfter)
{
    CXmlWriter tBody;
    for (tagPort const& tPort : g_atPorts)
    {
        const uint32_t dwPort = tAfter.*tPort.pPort;
        if (dwPort != tBefore.*tPort.pPort)
        {
            tBody.Open("tds:NetworkProtocols").Add("tt:Name", tPort.strName).Add("tt:Enabled", dwPort != 0);
            tBody.Add("tt:Port", dwPort ? dwPort : tBefore.*tPort.pPort).Close();
        }
    }
    const std::string strBody = tBody.Take();
    return strBody.empty() ? int{eResultOk} : tLogin.Call({eService::Device, "SetNetworkProtocols", strBody}).Result();
}

int SetInterface(CLogin const& tLogin, std::string const& strToken, tagConfigNetwork const& tBefore,
                 tagConfigNetwork const& t)
{
    const std::string strAddress = plugin::Text(t.szAddress);
    const bool bSix = AddressKind(strAddress) == 6;
    CXmlWriter tBody;
    tBody.Add("tds:InterfaceToken", strToken).Open("tds:NetworkInterface").Add("tt:Enabled", t.bEnabled != 0);
    if (t.dwMtu != tBefore.dwMtu)
    {
        tBody.Add("tt:MTU", t.dwMtu);
    }
    tBody.Open(bSix ? "tt:IPv6" : "tt:IPv4").Add("tt:Enabled", true);
    if (t.bDhcp == 0)
    {
        tBody.Open("tt:Manual").Add("tt:Address", strAddress).Add("tt:PrefixLength", t.dwPrefixLength).Close();
    }
    tBody.Add("tt:DHCP", bSix ? (t.bDhcp ? "Stateful" : "Off") : (t.bDhcp ? "true" : "false"));
    const CAnswer tAnswer = tLogin.Call({eService::Device, "SetNetworkInterfaces", tBody.Take()});
    if (tAnswer && Truth(tAnswer.Body(), "RebootNeeded").value_or(false))
    {
        return tLogin.Call({eService::Device, "SystemReboot"}).Result(); // else it wouldn't take effect
    }
    return tAnswer.Result();
}
} // namespace

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigNetwork& t)
{
    const CAnswer tAnswer = tLogin.Call({eService::Device, "GetNetworkInterfaces"});
    const pugi::xml_node tInterface = FindInterface(tLogin, tAnswer, tWhich.dwIndex);
    if (!tAnswer || !tInterface)
    {
        return tAnswer ? int{eResultNoChannel} : tAnswer.Result();
    }
    TakeInterface(tInterface, t);
    t.dwDevicePort = tLogin.Client().Address().wPort;
    // What a device doesn't tell of these stays empty.
    const CAnswer tPorts = tLogin.Call({eService::Device, "GetNetworkProtocols"});
    const CAnswer tDns = tLogin.Call({eService::Device, "GetDNS"});
    const CAnswer tHost = tLogin.Call({eService::Device, "GetHostname"});
    const CAnswer tGateway = tLogin.Call({eService::Device, "GetNetworkDefaultGateway"});
    TakePorts(tPorts, t);
    TakeNames(tDns, tHost, tGateway, t);
    return IsSilent(tGateway) ? tGateway.Result() : int{eResultOk};
}

// The interface comes last: with it the device may move to another address.
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigNetwork const& tBefore, tagConfigNetwork const& tAfter)
{
    if (!IsValid(tBefore, tAfter))
    {
        return eResultBadArgument;
    }
    int nResult = eResultOk;
    if (!IsSame(tBefore.szHostName, tAfter.szHostName))
    {
        nResult = tLogin
                      .Call({eService::Device, "SetHostname",
                             CXmlWriter().Add("tds:Name", plugin::Text(tAfter.szHostName)).Take()})
                      .Result();
    }
    const bool bDhcp = tBefore.bDhcp != tAfter.bDhcp;
    if (bDhcp || !IsSame(tBefore.szNameServer1, tAfter.szNameServer1) ||
        !IsSame(tBefore.szNameServer2, tAfter.szNameServer2))
    {
        nResult = nResult ? nResult : SetNameServers(tLogin, tAfter);
    }
    if (!IsSame(tBefore.szGateway, tAfter.szGateway) && tAfter.bDhcp == 0)
    {
        nResult = nResult ? nResult : SetGateway(tLogin, tAfter);
    }
    nResult = nResult ? nResult : SetPorts(tLogin, tBefore, tAfter);
    if (nResult != eResultOk ||
        (!bDhcp && tBefore.bEnabled == tAfter.bEnabled && tBefore.dwMtu == tAfter.dwMtu &&
         tBefore.dwPrefixLength == tAfter.dwPrefixLength && IsSame(tBefore.szAddress, tAfter.szAddress)))
    {
        return nResult;
    }
    const CAnswer tAnswer = tLogin.Call({eService::Device, "GetNetworkInterfaces"});
    const pugi::xml_node tInterface = FindInterface(tLogin, tAnswer, tWhich.dwIndex);
    return tInterface ? SetInterface(tLogin, std::string(Attribute(tInterface, "token")), tBefore, tAfter)
                      : tAnswer.Result();
}
} // namespace onvifclient
