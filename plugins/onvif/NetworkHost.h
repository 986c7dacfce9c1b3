#pragma once

#include "onvif/Xml.h"

#include <string>

namespace onvifclient
{
/// The name or address that an element of the type NetworkHost or IPAddress holds; empty: none.
std::string HostOf(pugi::xml_node tHost);
/// Such an element. bName: a host name may stand there too; else nothing but an address.
/// Empty: strHost is no address.
std::string HostXml(std::string_view strElement, std::string const& strHost, bool bName);
/// 4 or 6; 0: it is no address.
int AddressKind(std::string const& strHost);
} // namespace onvifclient
