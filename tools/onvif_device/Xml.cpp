#include "tools/onvif_device/Xml.h"

#include "tools/onvif_device/Names.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace onvif_device
{
void CXml::Escape(std::string_view strText)
{
    for (const char c : strText)
    {
        switch (c)
        {
        case '<':
            m_strText += "&lt;";
            break;
        case '>':
            m_strText += "&gt;";
            break;
        case '&':
            m_strText += "&amp;";
            break;
        case '"':
            m_strText += "&quot;";
            break;
        default:
            m_strText += c;
        }
    }
}

std::string CXml::Name(std::string_view strName) const
{
    const auto nColon = strName.find(':');
    if (!m_bOddPrefixes || nColon == std::string_view::npos)
    {
        return std::string(strName);
    }
    auto const* const it = std::ranges::find(g_atNamespaces, strName.substr(0, nColon),
                                             [](tagNamespace const& t) { return std::string_view(t.szPrefix); });
    return "ns-" + std::to_string(it - std::begin(g_atNamespaces)) + std::string(strName.substr(nColon));
}

CXml::Attributes CXml::Declarations() const
{
    // Attributes keep pointers to their names, so these must stay.
    static const auto s_astrNames = []
    {
        std::array<std::array<std::string, std::size(g_atNamespaces)>, 2> astrNames;
        for (std::size_t i = 0; i < std::size(g_atNamespaces); ++i)
        {
            astrNames[0][i] = std::string("xmlns:") + g_atNamespaces[i].szPrefix;
            astrNames[1][i] = "xmlns:ns-" + std::to_string(i);
        }
        return astrNames;
    }();
    Attributes atAttributes;
    for (std::size_t i = 0; i < std::size(g_atNamespaces); ++i)
    {
        atAttributes.emplace_back(s_astrNames[m_bOddPrefixes ? 1 : 0][i].c_str(), g_atNamespaces[i].szUri);
    }
    return atAttributes;
}

std::string CXml::Number(double fValue)
{
    char szText[32];
    const auto tEnd = std::to_chars(szText, szText + sizeof szText, fValue, std::chars_format::fixed, 4);
    return {szText, tEnd.ptr};
}

void CXml::Open(std::string_view strName, Attributes const& atAttributes)
{
    m_strText += '<';
    m_strText += Name(strName);
    for (auto const& [szName, strValue] : atAttributes)
    {
        m_strText += ' ';
        m_strText += std::string_view(szName).starts_with("xmlns") ? szName : Name(szName);
        m_strText += "=\"";
        Escape(strValue);
        m_strText += '"';
    }
}

void CXml::Begin(std::string_view strName, Attributes const& atAttributes)
{
    Open(strName, atAttributes);
    m_strText += '>';
}

void CXml::End(std::string_view strName)
{
    m_strText += "</";
    m_strText += Name(strName);
    m_strText += '>';
}

CXml& CXml::Put(std::string_view strName, std::string_view strText, Attributes const& atAttributes)
{
    Begin(strName, atAttributes);
    Escape(strText);
    End(strName);
    return *this;
}

CXml& CXml::Empty(std::string_view strName, Attributes const& atAttributes)
{
    Open(strName, atAttributes);
    m_strText += "/>";
    return *this;
}

CXml& CXml::Each(std::string_view strName, std::vector<std::string> const& astrTexts)
{
    for (std::string const& strText : astrTexts)
    {
        Put(strName, strText);
    }
    return *this;
}

CXml& CXml::Raw(std::string_view strXml)
{
    m_strText += strXml;
    return *this;
}
} // namespace onvif_device
