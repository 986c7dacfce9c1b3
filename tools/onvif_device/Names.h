#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace onvif_device
{
/// A namespace, and the prefix that stands for it in all of this program.
struct tagNamespace
{
    char const* szPrefix;
    char const* szUri;
};

inline constexpr tagNamespace g_atNamespaces[] = {
    {"s", "http://www.w3.org/2003/05/soap-envelope"},
    {"wsa", "http://www.w3.org/2005/08/addressing"},
    {"wsa04", "http://schemas.xmlsoap.org/ws/2004/08/addressing"},
    {"wsd", "http://schemas.xmlsoap.org/ws/2005/04/discovery"},
    {"dn", "http://www.onvif.org/ver10/network/wsdl"},
    {"wsse", "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd"},
    {"wsu", "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd"},
    {"wsnt", "http://docs.oasis-open.org/wsn/b-2"},
    {"wstop", "http://docs.oasis-open.org/wsn/t-1"},
    {"wsrfr", "http://docs.oasis-open.org/wsrf/r-2"},
    {"wsrfbf", "http://docs.oasis-open.org/wsrf/bf-2"},
    {"tds", "http://www.onvif.org/ver10/device/wsdl"},
    {"trt", "http://www.onvif.org/ver10/media/wsdl"},
    {"tr2", "http://www.onvif.org/ver20/media/wsdl"},
    {"tptz", "http://www.onvif.org/ver20/ptz/wsdl"},
    {"timg", "http://www.onvif.org/ver20/imaging/wsdl"},
    {"tev", "http://www.onvif.org/ver10/events/wsdl"},
    {"tmd", "http://www.onvif.org/ver10/deviceIO/wsdl"},
    {"tse", "http://www.onvif.org/ver10/search/wsdl"},
    {"trc", "http://www.onvif.org/ver10/recording/wsdl"},
    {"trp", "http://www.onvif.org/ver10/replay/wsdl"},
    {"trv", "http://www.onvif.org/ver10/receiver/wsdl"},
    {"tls", "http://www.onvif.org/ver10/display/wsdl"},
    {"tan", "http://www.onvif.org/ver20/analytics/wsdl"},
    {"tt", "http://www.onvif.org/ver10/schema"},
    {"ter", "http://www.onvif.org/ver10/error"},
    {"tns1", "http://www.onvif.org/ver10/topics"},
    {"box", "urn:tessaro:device-in-a-box"},
    {"xs", "http://www.w3.org/2001/XMLSchema"},
};

/// Null: no such prefix.
char const* UriOf(std::string_view strPrefix);

/// The part of a name after its prefix.
std::string_view LocalName(std::string_view strName);
std::string_view LocalName(pugi::xml_node tNode);
/// What a prefix stands for where this element stands; an empty prefix: the default namespace. Empty: nothing.
std::string ResolvePrefix(pugi::xml_node tNode, std::string_view strPrefix);
/// The namespace of an element.
std::string NamespaceOf(pugi::xml_node tNode);

/// The first child of this local name, whatever its prefix. Null nodes are answered with null ones.
pugi::xml_node Child(pugi::xml_node tParent, std::string_view strName);
/// One step after the other: {"Velocity", "PanTilt"}.
pugi::xml_node Child(pugi::xml_node tParent, std::initializer_list<std::string_view> astrPath);
/// A child's text without space around it; empty when it isn't there.
std::string TextOf(pugi::xml_node tNode);
std::string ChildText(pugi::xml_node tParent, std::string_view strName);
} // namespace onvif_device
