// The device service: its place in the network.

#include "tools/onvif_device/Call.h"

#include <arpa/inet.h>

namespace onvif_device
{
namespace
{
using device::Text;

constexpr char const* g_szInterface = "eth0";

bool IsIPv6(std::string const& strAddress)
{
    return strAddress.find(':') != std::string::npos;
}

bool IsAddress(std::string const& strAddress)
{
    in6_addr tAddress{};
    return inet_pton(IsIPv6(strAddress) ? AF_INET6 : AF_INET, strAddress.c_str(), &tAddress) == 1;
}

void WriteAddress(CXml& tXml, char const* szElement, std::string const& strAddress)
{
    tXml.In(szElement,
            [&]
            {
                char const* const szType = IsAddress(strAddress) ? (IsIPv6(strAddress) ? "IPv6" : "IPv4") : "DNS";
                tXml.Put("tt:Type", szType);
                tXml.Put(std::string("tt:") + szType + (IsAddress(strAddress) ? "Address" : "name"), strAddress);
            });
}

// The nth of the request's elements of a name: an address or a name in the network; empty: there is none.
std::string AddressAt(CCall& tCall, std::string_view strName, int nWhich)
{
    for (const pugi::xml_node t : tCall.Request().children())
    {
        if (LocalName(t) == strName && nWhich-- == 0)
        {
            const std::string strType = ChildText(t, "Type");
            const std::string strAddress = ChildText(t, strType == "DNS" ? "DNSname" : strType + "Address");
            if ((strType != "DNS" && !IsAddress(strAddress)) || strAddress.empty())
            {
                FailValue(strType == "IPv6" ? "ter:InvalidIPv6Address" : "ter:InvalidIPv4Address",
                          strAddress + " is no address");
            }
            return strAddress;
        }
    }
    return {};
}

// --- names -----------------------------------------------------------------------------------------------------------

void GetHostname(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    tCall.Xml().In("tds:HostnameInformation",
                   [&]
                   {
                       const auto tNetwork = tCall.Get<tagConfigNetwork>();
                       tCall.Xml().Put("tt:FromDHCP", tNetwork.bDhcp != 0).Put("tt:Name", Text(tNetwork.szHostName));
                   });
}

void SetHostname(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    auto tNetwork = tCall.Get<tagConfigNetwork>();
    const std::string strName = tCall.Text({"Name"});
    if (strName.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-.") !=
        std::string::npos)
    {
        FailValue("ter:InvalidHostname", strName + " is no name of a host");
    }
    device::CopyText(tNetwork.szHostName, strName);
    tCall.Set(eConfigNetwork, tNetwork);
}

void GetDNS(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const auto tNetwork = tCall.Get<tagConfigNetwork>();
    tCall.Xml().In("tds:DNSInformation",
                   [&]
                   {
                       tCall.Xml().Put("tt:FromDHCP", tNetwork.bDhcp != 0);
                       for (std::string const& str : {Text(tNetwork.szNameServer1), Text(tNetwork.szNameServer2)})
                       {
                           if (!str.empty())
                           {
                               WriteAddress(tCall.Xml(), tNetwork.bDhcp ? "tt:DNSFromDHCP" : "tt:DNSManual", str);
                           }
                       }
                   });
}

void SetDNS(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    auto tNetwork = tCall.Get<tagConfigNetwork>();
    device::CopyText(tNetwork.szNameServer1, AddressAt(tCall, "DNSManual", 0));
    device::CopyText(tNetwork.szNameServer2, AddressAt(tCall, "DNSManual", 1));
    tCall.Set(eConfigNetwork, tNetwork);
}

void GetNTP(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const auto tClock = tCall.Get<tagConfigClock>();
    tCall.Xml().In("tds:NTPInformation",
                   [&]
                   {
                       tCall.Xml().Put("tt:FromDHCP", false);
                       for (std::string const& str : {Text(tClock.szNtpServer1), Text(tClock.szNtpServer2)})
                       {
                           if (!str.empty())
                           {
                               WriteAddress(tCall.Xml(), "tt:NTPManual", str);
                           }
                       }
                   });
}

void SetNTP(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    auto tClock = tCall.Get<tagConfigClock>();
    if (tCall.Flag({"FromDHCP"}))
    {
        FailValue("ter:InvalidArgVal", "this device's DHCP names no NTP servers");
    }
    device::CopyText(tClock.szNtpServer1, AddressAt(tCall, "NTPManual", 0));
    device::CopyText(tClock.szNtpServer2, AddressAt(tCall, "NTPManual", 1));
    tClock.llTimeUs = 0;
    tCall.Set(eConfigClock, tClock);
}

// --- addresses -------------------------------------------------------------------------------------------------------

void GetNetworkInterfaces(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const auto t = tCall.Get<tagConfigNetwork>();
    CXml& tXml = tCall.Xml();
    tXml.In("tds:NetworkInterfaces", {{"token", g_szInterface}},
            [&]
            {
                tXml.Put("tt:Enabled", t.bEnabled != 0);
                tXml.In("tt:Info",
                        [&]
                        {
                            tXml.Put("tt:Name", Text(t.szInterface)).Put("tt:HwAddress", Text(t.szMac));
                            tXml.Put("tt:MTU", t.dwMtu);
                        });
                if (!tCall.Quirks().bSparse)
                {
                    const auto fnLink = [&]
                    { tXml.Put("tt:AutoNegotiation", true).Put("tt:Speed", t.dwSpeed).Put("tt:Duplex", "Full"); };
                    tXml.In("tt:Link",
                            [&]
                            {
                                tXml.In("tt:AdminSettings", fnLink).In("tt:OperSettings", fnLink);
                                tXml.Put("tt:InterfaceType", 6);
                            });
                }
                tXml.In("tt:IPv4",
                        [&]
                        {
                            tXml.Put("tt:Enabled", true);
                            tXml.In("tt:Config",
                                    [&]
                                    {
                                        tXml.In(t.bDhcp ? "tt:FromDHCP" : "tt:Manual",
                                                [&]
                                                {
                                                    tXml.Put("tt:Address", Text(t.szAddress));
                                                    tXml.Put("tt:PrefixLength", t.dwPrefixLength);
                                                });
                                        tXml.Put("tt:DHCP", t.bDhcp != 0);
                                    });
                        });
            });
}

void SetNetworkInterfaces(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    auto t = tCall.Get<tagConfigNetwork>();
    if (tCall.Text({"InterfaceToken"}) != g_szInterface)
    {
        FailValue("ter:InvalidNetworkInterface", "there is no such interface");
    }
    t.bEnabled = tCall.Flag({"NetworkInterface", "Enabled"}, t.bEnabled != 0) ? 1 : 0;
    t.dwMtu = static_cast<uint32_t>(tCall.Integer({"NetworkInterface", "MTU"}, 576, 9000, t.dwMtu));
    t.bDhcp = tCall.Flag({"NetworkInterface", "IPv4", "DHCP"}, t.bDhcp != 0) ? 1 : 0;
    if (tCall.Has({"NetworkInterface", "IPv4", "Manual"}))
    {
        const std::string strAddress = tCall.Text({"NetworkInterface", "IPv4", "Manual", "Address"});
        if (!IsAddress(strAddress) || IsIPv6(strAddress))
        {
            FailValue("ter:InvalidIPv4Address", strAddress + " is no address");
        }
        device::CopyText(t.szAddress, strAddress);
        t.dwPrefixLength =
            static_cast<uint32_t>(tCall.Integer({"NetworkInterface", "IPv4", "Manual", "PrefixLength"}, 0, 32));
    }
    tCall.Set(eConfigNetwork, t);
    tCall.Xml().Put("tds:RebootNeeded", false);
}

void GetNetworkDefaultGateway(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const std::string strGateway = Text(tCall.Get<tagConfigNetwork>().szGateway);
    tCall.Xml().In("tds:NetworkGateway",
                   [&]
                   {
                       if (!strGateway.empty())
                       {
                           tCall.Xml().Put(IsIPv6(strGateway) ? "tt:IPv6Address" : "tt:IPv4Address", strGateway);
                       }
                   });
}

void SetNetworkDefaultGateway(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    auto t = tCall.Get<tagConfigNetwork>();
    const std::string strGateway = tCall.Text({tCall.Has({"IPv4Address"}) ? "IPv4Address" : "IPv6Address"});
    if (!strGateway.empty() && !IsAddress(strGateway))
    {
        FailValue("ter:InvalidGatewayAddress", strGateway + " is no address");
    }
    device::CopyText(t.szGateway, strGateway);
    tCall.Set(eConfigNetwork, t);
}

// --- protocols -------------------------------------------------------------------------------------------------------

struct tagProtocol
{
    char const* szName;
    uint32_t tagConfigNetwork::*pdwPort;
    uint32_t dwUsual;
};
constexpr tagProtocol g_atProtocols[] = {{"HTTP", &tagConfigNetwork::dwHttpPort, 80},
                                         {"HTTPS", &tagConfigNetwork::dwHttpsPort, 443},
                                         {"RTSP", &tagConfigNetwork::dwRtspPort, 554}};

void GetNetworkProtocols(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const auto tNetwork = tCall.Get<tagConfigNetwork>();
    for (tagProtocol const& t : g_atProtocols)
    {
        const uint32_t dwPort = tNetwork.*t.pdwPort;
        tCall.Xml().In("tds:NetworkProtocols",
                       [&]
                       {
                           tCall.Xml().Put("tt:Name", t.szName).Put("tt:Enabled", dwPort != 0);
                           tCall.Xml().Put("tt:Port", dwPort ? dwPort : t.dwUsual);
                       });
    }
}

// What is kept; this program's own ports stay.
void SetNetworkProtocols(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    auto tNetwork = tCall.Get<tagConfigNetwork>();
    for (const pugi::xml_node tNode : tCall.Request().children())
    {
        const std::string strName = ChildText(tNode, "Name");
        auto const* const pt =
            std::ranges::find(g_atProtocols, strName, [](tagProtocol const& t) { return std::string(t.szName); });
        bool bEnabled = false;
        int64_t llPort = 0;
        if (tNode.type() != pugi::node_element)
        {
            continue;
        }
        if (pt == std::end(g_atProtocols))
        {
            FailValue("ter:ServiceNotSupported", "there is no protocol " + strName);
        }
        if (!ParseBoolean(ChildText(tNode, "Enabled"), bEnabled))
        {
            FailValue("ter:InvalidArgVal", "Enabled is no boolean");
        }
        llPort = pt->dwUsual;
        if (Child(tNode, "Port") && (!ParseNumber(ChildText(tNode, "Port"), llPort) || llPort < 1 || llPort > 65535))
        {
            FailValue("ter:InvalidArgVal", "there is no such port");
        }
        tNetwork.*pt->pdwPort = bEnabled ? static_cast<uint32_t>(llPort) : 0;
    }
    tCall.Set(eConfigNetwork, tNetwork);
}

void GetDiscoveryMode(CCall& tCall)
{
    tCall.Xml().Put("tds:DiscoveryMode", "Discoverable");
}

#define ONVIF_HOST "{Type IPv4Address? IPv6Address? DNSname? ...}"
constexpr tagAction g_atActions[] = {
    {"GetHostname", 0, "", GetHostname},
    {"SetHostname", eUserAdministrator, "Name", SetHostname},
    {"GetDNS", eUserViewer, "", GetDNS},
    {"SetDNS", eUserAdministrator, "FromDHCP SearchDomain* DNSManual{Type IPv4Address? IPv6Address?}*", SetDNS},
    {"GetNTP", eUserViewer, "", GetNTP},
    {"SetNTP", eUserAdministrator, "FromDHCP NTPManual" ONVIF_HOST "*", SetNTP},
    {"GetNetworkInterfaces", eUserViewer, "", GetNetworkInterfaces},
    {"SetNetworkInterfaces", eUserAdministrator,
     "InterfaceToken NetworkInterface{Enabled? Link{AutoNegotiation Speed Duplex}? MTU? "
     "IPv4{Enabled? Manual{Address PrefixLength}* DHCP?}? IPv6{...}? ...}",
     SetNetworkInterfaces},
    {"GetNetworkDefaultGateway", eUserViewer, "", GetNetworkDefaultGateway},
    {"SetNetworkDefaultGateway", eUserAdministrator, "IPv4Address* IPv6Address*", SetNetworkDefaultGateway},
    {"GetNetworkProtocols", eUserViewer, "", GetNetworkProtocols},
    {"SetNetworkProtocols", eUserAdministrator, "NetworkProtocols{Name Enabled Port* ...}+", SetNetworkProtocols},
    {"GetDiscoveryMode", eUserViewer, "", GetDiscoveryMode},
};
} // namespace

std::span<tagAction const> DeviceNetworkActions()
{
    return g_atActions;
}
} // namespace onvif_device
