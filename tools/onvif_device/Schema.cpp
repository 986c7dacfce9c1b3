#include "tools/onvif_device/Schema.h"

#include "tools/onvif_device/Fault.h"
#include "tools/onvif_device/Names.h"

#include <string>
#include <string_view>

namespace onvif_device
{
namespace
{
constexpr char const* g_szInside = "tt"; // the namespace of what types hold

struct tagItem
{
    std::string_view strName;       // with its prefix, where one is written
    std::string_view strAttributes; // within [], empty: none
    std::string_view strInside;     // within {}
    std::string_view strChoice;     // within ()
    bool bInside = false;           // {} is there
    bool bAnything = false;         // ...
    char cCount = ' ';              // ' ', '?', '*', '+'
};

// What stands between brackets, nested ones within it.
std::string_view TakeBrackets(std::string_view& strRule, char cOpen, char cClose)
{
    if (!strRule.starts_with(cOpen))
    {
        return {};
    }
    std::size_t nEnd = 0;
    for (int nDepth = 0;; ++nEnd)
    {
        nDepth += strRule[nEnd] == cOpen ? 1 : strRule[nEnd] == cClose ? -1 : 0;
        if (nDepth == 0)
        {
            break;
        }
    }
    const std::string_view strInside = strRule.substr(1, nEnd - 1);
    strRule.remove_prefix(nEnd + 1);
    return strInside;
}

bool TakeItem(std::string_view& strRule, tagItem& tItem)
{
    strRule.remove_prefix(std::min(strRule.find_first_not_of(" |"), strRule.size()));
    if (strRule.empty())
    {
        return false;
    }
    tItem = {};
    tItem.bAnything = strRule.starts_with("...");
    tItem.strChoice = TakeBrackets(strRule, '(', ')');
    const auto nEnd = std::min(strRule.find_first_of(" |?*+[{("), strRule.size());
    tItem.strName = strRule.substr(0, nEnd);
    strRule.remove_prefix(nEnd);
    tItem.strAttributes = TakeBrackets(strRule, '[', ']');
    tItem.bInside = strRule.starts_with('{');
    tItem.strInside = TakeBrackets(strRule, '{', '}');
    if (!strRule.empty() && std::string_view("?*+").find(strRule.front()) != std::string_view::npos)
    {
        tItem.cCount = strRule.front();
        strRule.remove_prefix(1);
    }
    return true;
}

pugi::xml_node Next(pugi::xml_node tNode)
{
    while (tNode && tNode.type() != pugi::node_element)
    {
        tNode = tNode.next_sibling();
    }
    return tNode;
}

bool Is(pugi::xml_node tNode, tagItem const& tItem)
{
    return tNode && LocalName(tNode) == LocalName(tItem.strName);
}

void CheckChildren(pugi::xml_node tParent, std::string_view strRule, std::string_view strPrefix);

// One element that a rule names, whose local name is right.
void CheckOne(pugi::xml_node tNode, tagItem const& tItem, std::string_view strPrefix)
{
    const auto nColon = tItem.strName.find(':');
    const std::string_view strIn = nColon == std::string_view::npos ? strPrefix : tItem.strName.substr(0, nColon);
    if (NamespaceOf(tNode) != UriOf(strIn))
    {
        throw CFault(eBlame::Sender, "ter:Namespace", {}, std::string(tNode.name()) + " is in a wrong namespace");
    }
    std::string_view strAttributes = tItem.strAttributes;
    while (!strAttributes.empty())
    {
        const auto nEnd = std::min(strAttributes.find(' '), strAttributes.size());
        const std::string strAttribute(strAttributes.substr(0, nEnd));
        strAttributes.remove_prefix(std::min(nEnd + 1, strAttributes.size()));
        if (!tNode.attribute(strAttribute.c_str()))
        {
            throw CFault(eBlame::Sender, "ter:MissingAttr", {},
                         std::string(tNode.name()) + " lacks the attribute " + strAttribute);
        }
    }
    if (tItem.bInside)
    {
        CheckChildren(tNode, tItem.strInside, g_szInside);
    }
    else if (Next(tNode.first_child()))
    {
        throw CFault(eBlame::Sender, "ter:TagMismatch", {}, std::string(tNode.name()) + " holds an element");
    }
}

// Whether one of a choice stands here.
bool CheckChoice(pugi::xml_node tNode, std::string_view strChoice, std::string_view strPrefix)
{
    for (tagItem tItem; TakeItem(strChoice, tItem);)
    {
        if (Is(tNode, tItem))
        {
            CheckOne(tNode, tItem, strPrefix);
            return true;
        }
    }
    return false;
}

void CheckChildren(pugi::xml_node tParent, std::string_view strRule, std::string_view strPrefix)
{
    pugi::xml_node tNode = Next(tParent.first_child());
    for (tagItem tItem; TakeItem(strRule, tItem);)
    {
        if (tItem.bAnything)
        {
            return;
        }
        const auto fnTake = [&]
        {
            if (!tItem.strChoice.empty() ? !CheckChoice(tNode, tItem.strChoice, strPrefix) : !Is(tNode, tItem))
            {
                return false;
            }
            if (tItem.strChoice.empty())
            {
                CheckOne(tNode, tItem, strPrefix);
            }
            tNode = Next(tNode.next_sibling());
            return true;
        };
        const bool bThere = fnTake();
        if (!bThere && (tItem.cCount == ' ' || tItem.cCount == '+'))
        {
            const std::string strWanted(tItem.strChoice.empty() ? tItem.strName : tItem.strChoice);
            throw CFault(eBlame::Sender, tNode ? "ter:TagMismatch" : "ter:Tag", {},
                         std::string(tParent.name()) + ": " + strWanted + " is expected" +
                             (tNode ? ", not " + std::string(tNode.name()) : std::string()));
        }
        while (bThere && (tItem.cCount == '*' || tItem.cCount == '+') && fnTake())
        {
        }
    }
    if (tNode)
    {
        throw CFault(eBlame::Sender, "ter:TagMismatch", {},
                     std::string(tParent.name()) + ": " + tNode.name() + " is not expected here");
    }
}
} // namespace

void CheckElements(pugi::xml_node tElement, char const* szElements, char const* szPrefix)
{
    CheckChildren(tElement, szElements, szPrefix);
}
} // namespace onvif_device
