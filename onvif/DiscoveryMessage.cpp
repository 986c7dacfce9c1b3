#include "onvif/DiscoveryMessage.h"

#include "onvif/Xml.h"
#include "rtsp/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <openssl/rand.h>

namespace onvif
{
namespace
{
constexpr std::size_t g_nMostMatches = 64; // of one message
constexpr std::string_view g_strScope = "onvif://www.onvif.org/";

std::vector<std::string_view> Words(std::string_view strText)
{
    std::vector<std::string_view> astrWords;
    while (true)
    {
        strText.remove_prefix(std::min(strText.find_first_not_of(" \t\r\n"), strText.size()));
        if (strText.empty())
        {
            return astrWords;
        }
        astrWords.push_back(strText.substr(0, strText.find_first_of(" \t\r\n")));
        strText.remove_prefix(astrWords.back().size());
    }
}

std::string Decoded(std::string_view strText)
{
    std::string strPlain;
    for (std::size_t i = 0; i < strText.size(); ++i)
    {
        const auto nByte = strText[i] == '%' && i + 2 < strText.size()
                               ? rtsp::Number<unsigned>(strText.substr(i + 1, 2), 16)
                               : std::nullopt;
        strPlain += nByte ? static_cast<char>(*nByte) : strText[i];
        i += nByte ? 2 : 0;
    }
    std::erase_if(strPlain, [](char c) { return rtsp::IsControl(c); });
    return strPlain;
}

std::optional<tagAnnouncement> ParseOne(pugi::xml_node tMatch)
{
    tagAnnouncement t;
    t.strEndpoint = rtsp::Lower(Text(tMatch, "EndpointReference/Address"));
    t.strVersion = Text(tMatch, "MetadataVersion");
    t.bBye = LocalName(tMatch) == "Bye";
    bool bOnvif = Text(tMatch, "Types").find("NetworkVideo") != std::string_view::npos;
    for (const std::string_view strScope : Words(Text(tMatch, "Scopes")))
    {
        bOnvif = bOnvif || rtsp::BeginsInAnyCase(strScope, g_strScope);
        TakeScope(t, strScope);
    }
    for (const std::string_view strAddress : Words(Text(tMatch, "XAddrs")))
    {
        t.astrAddresses.emplace_back(strAddress);
    }
    if (t.strEndpoint.empty() && !t.astrAddresses.empty())
    {
        t.strEndpoint = t.astrAddresses.front();
    }
    return !t.strEndpoint.empty() && (bOnvif || t.bBye) ? std::optional(std::move(t)) : std::nullopt;
}

bool IsIPv6(std::string_view strHost)
{
    return strHost.find(':') != std::string_view::npos;
}

std::string WithoutZone(std::string const& strHost)
{
    return strHost.substr(0, strHost.find('%'));
}
} // namespace

void TakeScope(tagAnnouncement& tAnnouncement, std::string_view strScope)
{
    if (!rtsp::BeginsInAnyCase(strScope, g_strScope))
    {
        return;
    }
    strScope.remove_prefix(g_strScope.size());
    const std::string_view strKind = rtsp::CutFirst(strScope, '/');
    const std::pair<std::string_view, std::string*> atKinds[] = {
        {"name", &tAnnouncement.strName},         {"hardware", &tAnnouncement.strHardware},
        {"location", &tAnnouncement.strLocation}, {"manufacturer", &tAnnouncement.strManufacturer},
        {"mac", &tAnnouncement.strMac},
    };
    for (auto const& [strName, pstrValue] : atKinds)
    {
        if (rtsp::EqualsInAnyCase(strKind, strName) && pstrValue->empty())
        {
            *pstrValue = Decoded(strScope);
        }
    }
}

std::vector<tagAnnouncement> ParseAnnouncements(std::string_view strMessage)
{
    std::vector<tagAnnouncement> atAnnouncements;
    const auto pDocument = ParseXml(std::string(strMessage));
    if (!pDocument)
    {
        return atAnnouncements;
    }
    const pugi::xml_node tBody = Find(*pDocument, "Envelope/Body");
    for (char const* const szPath : {"ProbeMatches/ProbeMatch", "ResolveMatches/ResolveMatch", "Hello", "Bye"})
    {
        std::string_view strName = szPath;
        const std::size_t nSlash = strName.find('/');
        const pugi::xml_node tParent =
            nSlash == std::string_view::npos ? tBody : Child(tBody, strName.substr(0, nSlash));
        for (pugi::xml_node const& tMatch : Children(tParent, strName.substr(nSlash + 1)))
        {
            if (auto tAnnouncement = ParseOne(tMatch); tAnnouncement && atAnnouncements.size() < g_nMostMatches)
            {
                atAnnouncements.push_back(*std::move(tAnnouncement));
            }
        }
    }
    return atAnnouncements;
}

std::string ProbeMessage(std::string_view strType, std::string_view strId)
{
    constexpr std::string_view strAddressing = "http://schemas.xmlsoap.org/ws/2004/08/addressing";
    constexpr std::string_view strDiscovery = "http://schemas.xmlsoap.org/ws/2005/04/discovery";
    CXmlWriter tXml;
    tXml.Raw(R"(<?xml version="1.0" encoding="UTF-8"?>)").Open("s:Envelope");
    tXml.Attribute("xmlns:s", "http://www.w3.org/2003/05/soap-envelope").Attribute("xmlns:a", strAddressing);
    tXml.Attribute("xmlns:d", strDiscovery).Attribute("xmlns:dn", "http://www.onvif.org/ver10/network/wsdl");
    tXml.Attribute("xmlns:tds", "http://www.onvif.org/ver10/device/wsdl").Open("s:Header");
    tXml.Open("a:Action").Attribute("s:mustUnderstand", "1").Text(strDiscovery).Text("/Probe").Close();
    tXml.Add("a:MessageID", strId).Open("a:ReplyTo");
    tXml.Open("a:Address").Text(strAddressing).Text("/role/anonymous").Close().Close();
    tXml.Open("a:To").Attribute("s:mustUnderstand", "1").Text("urn:schemas-xmlsoap-org:ws:2005:04:discovery").Close();
    tXml.Close().Open("s:Body").Open("d:Probe").Add("d:Types", strType);
    return tXml.Take();
}

std::string NewId()
{
    std::array<unsigned char, 16> aby{};
    RAND_bytes(aby.data(), static_cast<int>(aby.size()));
    aby[6] = static_cast<unsigned char>((aby[6] & 0x0F) | 0x40);
    aby[8] = static_cast<unsigned char>((aby[8] & 0x3F) | 0x80);
    std::string strId = "urn:uuid:";
    for (std::size_t i = 0; i < aby.size(); ++i)
    {
        char szByte[4];
        std::snprintf(szByte, sizeof szByte, "%s%02x", i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "", aby[i]);
        strId += szByte;
    }
    return strId;
}

std::optional<tagAddress> Choose(tagAnnouncement const& tAnnouncement, std::string const& strSender)
{
    std::optional<tagAddress> tChosen;
    for (std::string const& strAddress : tAnnouncement.astrAddresses)
    {
        std::optional<tagAddress> tAddress = ParseAddress(strAddress);
        if (!tAddress)
        {
            continue;
        }
        const bool bSame = WithoutZone(tAddress->strHost) == WithoutZone(strSender);
        if (bSame || !tChosen ||
            (IsIPv6(tChosen->strHost) != IsIPv6(strSender) && IsIPv6(tAddress->strHost) == IsIPv6(strSender)))
        {
            tChosen = std::move(tAddress);
        }
        if (bSame)
        {
            break;
        }
    }
    if (tChosen)
    {
        tChosen->strHost = strSender;
    }
    return tChosen;
}
} // namespace onvif
