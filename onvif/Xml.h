#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

/// Reading what devices send: by local name, since prefixes are anything; parts may be missing, empty, or in another
/// order. A null node is a part that isn't there, and everything may be asked of it.
namespace onvif
{
/// A document, or nothing: it isn't well-formed, or is nested deeper than anything of ours. DOCTYPE and entities but
/// the five of XML itself are not looked at.
std::shared_ptr<pugi::xml_document const> ParseXml(std::string strText);

/// The name behind its prefix.
std::string_view LocalName(pugi::xml_node tNode);
/// The same of a name: "WrongLogin" of "ter:WrongLogin".
std::string_view WithoutPrefix(std::string_view strName);
/// The first child with this local name.
pugi::xml_node Child(pugi::xml_node tNode, std::string_view strName);
/// Down a path of local names: "Configuration/Bounds/x".
pugi::xml_node Find(pugi::xml_node tNode, std::string_view strPath);
/// All children with this local name.
std::vector<pugi::xml_node> Children(pugi::xml_node tNode, std::string_view strName);
/// An attribute's value by its local name; empty: there is none.
std::string_view Attribute(pugi::xml_node tNode, std::string_view strName);

/// The text of what strPath leads to (of tNode itself where it is empty), without blanks around it. Valid as long as
/// the document.
std::string_view Text(pugi::xml_node tNode, std::string_view strPath = {});
/// Nothing: it isn't there, or is no such thing.
std::optional<double> Number(pugi::xml_node tNode, std::string_view strPath = {});
std::optional<std::int64_t> Integer(pugi::xml_node tNode, std::string_view strPath = {});
std::optional<bool> Truth(pugi::xml_node tNode, std::string_view strPath = {});
/// xs:dateTime in microseconds since 1970. One without a zone is UTC.
std::optional<std::int64_t> Time(pugi::xml_node tNode, std::string_view strPath = {});
std::optional<std::int64_t> ParseTime(std::string_view strText);
/// xs:duration in milliseconds; years and months, which have no length, are nothing.
std::optional<std::int64_t> ParseDuration(std::string_view strText);

/// 2026-05-31T08:00:00Z, with a fraction where there is one.
std::string TimeText(std::int64_t llTimeUs);
/// PT10S, PT1.5S.
std::string DurationText(std::int64_t llMilliseconds);
/// A number as XML has it, whatever the locale.
std::string NumberText(double dNumber);
/// With & < > and quotes as entities; characters that no XML may hold are left out.
std::string Escaped(std::string_view strText);

/// Builds XML, element by element:
///
///     CXmlWriter().Open("tt:PTZ").Attribute("space", strUri).Add("tt:x", 0.5).Close().Take()
class CXmlWriter
{
public:
    CXmlWriter& Open(std::string_view strName);
    /// Of the element that was just opened.
    CXmlWriter& Attribute(std::string_view strName, std::string_view strValue);
    CXmlWriter& Close();
    /// An element with text alone.
    CXmlWriter& Add(std::string_view strName, std::string_view strText);
    CXmlWriter& Add(std::string_view strName, char const* szText) { return Add(strName, std::string_view(szText)); }
    CXmlWriter& Add(std::string_view strName, bool bValue) { return Add(strName, bValue ? "true" : "false"); }
    CXmlWriter& Add(std::string_view strName, double dValue) { return Add(strName, NumberText(dValue)); }
    template <std::integral T>
    CXmlWriter& Add(std::string_view strName, T nValue)
    {
        return Add(strName, std::to_string(nValue));
    }
    /// Text inside what is open.
    CXmlWriter& Text(std::string_view strText);
    /// XML as it is: a part of what a device sent, with SerializedChild.
    CXmlWriter& Raw(std::string_view strXml);
    /// All that was built; what is open is closed.
    std::string Take();

private:
    void EndTag();

    std::string m_strXml;
    std::vector<std::string> m_astrOpen;
    bool m_bInTag = false; ///< the last opening tag still takes attributes
};

/// A copy of tNode as text that stands by itself: with the declarations of prefixes that it uses from its ancestors. To
/// send a device's own part back, changed or not.
std::string Serialized(pugi::xml_node tNode);
/// The same, of its content.
std::string SerializedChildren(pugi::xml_node tNode);
} // namespace onvif
