#include "tools/onvif_device/Names.h"

#include <algorithm>
#include <cstring>

namespace onvif_device
{
char const* UriOf(std::string_view strPrefix)
{
    auto const* const it = std::ranges::find(g_atNamespaces, strPrefix,
                                             [](tagNamespace const& t) { return std::string_view(t.szPrefix); });
    return it == std::end(g_atNamespaces) ? nullptr : it->szUri;
}

std::string_view LocalName(std::string_view strName)
{
    const auto nColon = strName.find(':');
    return nColon == std::string_view::npos ? strName : strName.substr(nColon + 1);
}

std::string_view LocalName(pugi::xml_node tNode)
{
    return LocalName(std::string_view(tNode.name()));
}

std::string ResolvePrefix(pugi::xml_node tNode, std::string_view strPrefix)
{
    const std::string strDeclaration = strPrefix.empty() ? "xmlns" : "xmlns:" + std::string(strPrefix);
    for (; tNode; tNode = tNode.parent())
    {
        if (const pugi::xml_attribute tDeclaration = tNode.attribute(strDeclaration.c_str()))
        {
            return tDeclaration.value();
        }
    }
    return {};
}

std::string NamespaceOf(pugi::xml_node tNode)
{
    const std::string_view strName = tNode.name();
    const auto nColon = strName.find(':');
    return ResolvePrefix(tNode, nColon == std::string_view::npos ? "" : strName.substr(0, nColon));
}

pugi::xml_node Child(pugi::xml_node tParent, std::string_view strName)
{
    return tParent.find_child([&](pugi::xml_node t)
                              { return t.type() == pugi::node_element && LocalName(t) == strName; });
}

pugi::xml_node Child(pugi::xml_node tParent, std::initializer_list<std::string_view> astrPath)
{
    for (const std::string_view strName : astrPath)
    {
        tParent = Child(tParent, strName);
    }
    return tParent;
}

std::string TextOf(pugi::xml_node tNode)
{
    constexpr char const* szSpace = " \t\r\n";
    const std::string_view strText = tNode.text().get();
    const auto nBegin = strText.find_first_not_of(szSpace);
    return nBegin == std::string_view::npos
               ? std::string()
               : std::string(strText.substr(nBegin, strText.find_last_not_of(szSpace) + 1 - nBegin));
}

std::string ChildText(pugi::xml_node tParent, std::string_view strName)
{
    return TextOf(Child(tParent, strName));
}
} // namespace onvif_device
