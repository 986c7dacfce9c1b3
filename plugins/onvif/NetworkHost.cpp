#include "plugins/onvif/NetworkHost.h"

#include <arpa/inet.h>

namespace onvifclient
{
std::string HostOf(pugi::xml_node tHost)
{
    for (char const* const szKind : {"IPv4Address", "IPv6Address", "DNSname"})
    {
        const std::string_view strHost = onvif::Text(tHost, szKind);
        if (!strHost.empty())
        {
            return std::string(strHost);
        }
    }
    return {};
}

int AddressKind(std::string const& strHost)
{
    unsigned char abyAddress[16];
    return inet_pton(AF_INET, strHost.c_str(), abyAddress) == 1    ? 4
           : inet_pton(AF_INET6, strHost.c_str(), abyAddress) == 1 ? 6
                                                                   : 0;
}

std::string HostXml(std::string_view strElement, std::string const& strHost, bool bName)
{
    onvif::CXmlWriter t;
    switch (AddressKind(strHost))
    {
    case 4:
        return t.Open(strElement).Add("tt:Type", "IPv4").Add("tt:IPv4Address", strHost).Take();
    case 6:
        return t.Open(strElement).Add("tt:Type", "IPv6").Add("tt:IPv6Address", strHost).Take();
    default:
        return bName ? t.Open(strElement).Add("tt:Type", "DNS").Add("tt:DNSname", strHost).Take() : std::string();
    }
}
} // namespace onvifclient
