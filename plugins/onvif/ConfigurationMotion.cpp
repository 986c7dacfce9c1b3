// Motion detection by cells: the analytics service's CellMotionEngine, and the rule CellMotionDetector.

#include "plugins/onvif/Configuration.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/MotionCells.h"
#include "plugins/onvif/Profiles.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <map>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr uint32_t g_dwMostCells = 64; // in a row, and rows
constexpr std::string_view g_strEngine = "CellMotionEngine";
constexpr std::string_view g_strDetector = "CellMotionDetector";

using Changes = std::map<std::string, std::string>; // of items, by their names

// A channel's detector: the device's answers, and what of them it is.
struct tagMotion
{
    std::string strToken; // of the configuration
    CAnswer tModules;
    CAnswer tRules;
    pugi::xml_node tEngine;
    pugi::xml_node tRule; // null: it is off
};

pugi::xml_node OfType(CAnswer const& tAnswer, char const* szElement, std::string_view strType)
{
    const auto atAll = Children(tAnswer.Body(), szElement);
    const auto it = std::ranges::find_if(atAll, [&](pugi::xml_node t)
                                         { return WithoutPrefix(onvif::Attribute(t, "Type")) == strType; });
    return it == atAll.end() ? pugi::xml_node() : *it;
}

pugi::xml_node Item(pugi::xml_node tOf, char const* szElement, std::string_view strName)
{
    for (pugi::xml_node tItem : Children(Child(tOf, "Parameters"), szElement))
    {
        if (onvif::Attribute(tItem, "Name") == strName)
        {
            return tItem;
        }
    }
    return {};
}

double ItemNumber(pugi::xml_node tOf, std::string_view strName)
{
    return AttributeNumber(Item(tOf, "SimpleItem", strName), "Value");
}

std::string Token(tagMotion const& t)
{
    return CXmlWriter().Add("tan:ConfigurationToken", t.strToken).Take();
}

int Ask(CLogin& tLogin, uint32_t dwChannel, tagMotion& t)
{
    std::shared_ptr<tagChannel const> pChannel;
    bool bMedia2 = false;
    if (const int nResult = FindChannel(tLogin, dwChannel, pChannel, bMedia2))
    {
        return nResult;
    }
    for (tagProfile const& tProfile : pChannel->atProfiles)
    {
        t.strToken = t.strToken.empty() ? tProfile.strAnalytics : t.strToken;
    }
    if (t.strToken.empty() || !tLogin.Client().Has(eService::Analytics))
    {
        return eResultNotSupported;
    }
    t.tModules = tLogin.Call({eService::Analytics, "GetAnalyticsModules", Token(t)});
    t.tRules = t.tModules ? tLogin.Call({eService::Analytics, "GetRules", Token(t)}) : t.tModules;
    t.tEngine = OfType(t.tModules, "AnalyticsModule", g_strEngine);
    t.tRule = OfType(t.tRules, "Rule", g_strDetector);
    return !t.tRules ? t.tRules.Result() : t.tEngine ? int{eResultOk} : int{eResultNotSupported};
}

uint32_t Watched(tagConfigMotion const& t)
{
    int nBits = 0;
    for (const unsigned char by : t.abyCells)
    {
        nBits += std::popcount(by);
    }
    return static_cast<uint32_t>(nBits);
}

uint32_t Rounded(double d, double dMost)
{
    return static_cast<uint32_t>(std::lround(std::clamp(d, 0.0, dMost)));
}

// A module or a rule with some of its items changed or new; the others stay as the device has them. tOld may be null.
std::string WithChanges(char const* szElement, std::string_view strName, std::string_view strType, pugi::xml_node tOld,
                        Changes tChanges)
{
    CXmlWriter t;
    t.Open(szElement).Attribute("Name", strName).Attribute("Type", "tt:" + std::string(strType)).Open("tt:Parameters");
    const auto fnAdd = [&](std::string_view strItem, std::string_view strValue)
    { t.Open("tt:SimpleItem").Attribute("Name", strItem).Attribute("Value", strValue).Close(); };
    const pugi::xml_node tParameters = Child(tOld, "Parameters");
    for (pugi::xml_node tItem : Children(tParameters, "SimpleItem"))
    {
        const std::string strItem(onvif::Attribute(tItem, "Name"));
        const auto it = tChanges.find(strItem);
        fnAdd(strItem, it == tChanges.end() ? onvif::Attribute(tItem, "Value") : std::string_view(it->second));
        tChanges.erase(strItem);
    }
    for (auto const& [strItem, strValue] : tChanges)
    {
        fnAdd(strItem, strValue);
    }
    for (pugi::xml_node tItem : Children(tParameters, "ElementItem"))
    {
        t.Raw(Serialized(tItem));
    }
    return t.Take();
}

int WriteRule(CLogin const& tLogin, tagMotion const& t, tagConfigMotion const& tBefore, tagConfigMotion tAfter)
{
    const std::string strName(t.tRule ? onvif::Attribute(t.tRule, "Name") : std::string_view("Motion"));
    if (tAfter.bEnabled == 0)
    {
        return t.tRule ? tLogin
                             .Call({eService::Analytics, "DeleteRules",
                                    CXmlWriter().Raw(Token(t)).Add("tan:RuleName", strName).Take()})
                             .Result()
                       : int{eResultOk};
    }
    const std::size_t nCells = std::size_t{tAfter.dwColumns} * tAfter.dwRows;
    Changes tChanges;
    if (!t.tRule && Watched(tAfter) == 0)
    {
        std::fill_n(tAfter.abyCells, (nCells + 7) / 8, static_cast<unsigned char>(0xFF)); // which were, nobody knows
    }
    if (!t.tRule || std::memcmp(tAfter.abyCells, tBefore.abyCells, sizeof tAfter.abyCells) != 0)
    {
        tChanges["ActiveCells"] = CellsText(tAfter.abyCells, nCells);
    }
    if (!tChanges.empty() || tAfter.dwThreshold != tBefore.dwThreshold)
    {
        const double dLeast = tAfter.dwThreshold * std::min<double>(Watched(tAfter), static_cast<double>(nCells)) / 100;
        tChanges["MinCount"] = std::to_string(std::max(1L, std::lround(dLeast)));
    }
    if (!t.tRule || tAfter.dwHoldSeconds != tBefore.dwHoldSeconds)
    {
        tChanges["AlarmOffDelay"] = std::to_string(uint64_t{tAfter.dwHoldSeconds} * 1000);
    }
    if (!t.tRule)
    {
        tChanges["AlarmOnDelay"] = "0";
    }
    if (tChanges.empty())
    {
        return eResultOk;
    }
    const std::string strBody = Token(t) + WithChanges("tan:Rule", strName, g_strDetector, t.tRule, tChanges);
    return tLogin.Call({eService::Analytics, t.tRule ? "ModifyRules" : "CreateRules", strBody}).Result();
}
} // namespace

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigMotion& t)
{
    tagMotion tMotion;
    if (const int nResult = Ask(tLogin, tWhich.dwIndex, tMotion))
    {
        return nResult;
    }
    const pugi::xml_node tLayout = Child(Item(tMotion.tEngine, "ElementItem", "Layout"), "CellLayout");
    t.dwColumns = ParseWord(onvif::Attribute(tLayout, "Columns"));
    t.dwRows = ParseWord(onvif::Attribute(tLayout, "Rows"));
    if (t.dwColumns == 0 || t.dwRows == 0 || t.dwColumns > g_dwMostCells || t.dwRows > g_dwMostCells)
    {
        return eResultNotSupported;
    }
    t.bEnabled = tMotion.tRule ? 1 : 0;
    t.dwSensitivity = Rounded(ItemNumber(tMotion.tEngine, "Sensitivity"), 100);
    t.dwHoldSeconds = Rounded(ItemNumber(tMotion.tRule, "AlarmOffDelay") / 1000, 3600);
    const std::span abyCells(t.abyCells, (std::size_t{t.dwColumns} * t.dwRows + 7) / 8);
    if (!TakeCells(onvif::Attribute(Item(tMotion.tRule, "SimpleItem", "ActiveCells"), "Value"), abyCells))
    {
        return eResultRefused;
    }
    t.dwThreshold = Rounded(ItemNumber(tMotion.tRule, "MinCount") * 100 / std::max(Watched(t), 1U), 100);
    return eResultOk;
}

int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigMotion const& tBefore, tagConfigMotion const& tAfter)
{
    if (std::memcmp(&tAfter.tAction, &tBefore.tAction, sizeof tAfter.tAction) != 0)
    {
        return eResultNotSupported; // ONVIF's devices have rules of their own for that
    }
    if (tAfter.bEnabled > 1 || tAfter.dwSensitivity > 100 || tAfter.dwThreshold > 100 || tAfter.dwHoldSeconds > 3600 ||
        tAfter.dwColumns != tBefore.dwColumns || tAfter.dwRows != tBefore.dwRows)
    {
        return eResultBadArgument;
    }
    tagMotion tMotion;
    int nResult = Ask(tLogin, tWhich.dwIndex, tMotion);
    if (nResult == eResultOk && tAfter.dwSensitivity != tBefore.dwSensitivity)
    {
        const std::string strModule =
            WithChanges("tan:AnalyticsModule", onvif::Attribute(tMotion.tEngine, "Name"), g_strEngine, tMotion.tEngine,
                        {{"Sensitivity", std::to_string(tAfter.dwSensitivity)}});
        nResult = tLogin.Call({eService::Analytics, "ModifyAnalyticsModules", Token(tMotion) + strModule}).Result();
    }
    return nResult ? nResult : WriteRule(tLogin, tMotion, tBefore, tAfter);
}
} // namespace onvifclient
