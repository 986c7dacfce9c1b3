// The analytics service: motion detection by cells. A channel has the engine always, and the rule while it is on.

#include "tools/onvif_device/AnalyticsService.h"

#include <cmath>
#include <openssl/evp.h>

namespace onvif_device
{
namespace
{
constexpr char const* g_szRule = "Motion";
constexpr char const* g_szModule = "Cells";
constexpr std::size_t g_nLiteral = 128; // bytes that stand behind one header as they are

uint32_t ChannelAt(CCall& tCall)
{
    return tCall.Index({"ConfigurationToken"}, "Analytics", tCall.Device().Channels(), "ter:NoConfig");
}

// --- cells -----------------------------------------------------------------------------------------------------------

bool IsWatched(tagConfigMotion const& t, uint32_t dwCell)
{
    return (t.abyCells[dwCell / 8] >> dwCell % 8 & 1) != 0;
}

uint32_t Watched(tagConfigMotion const& t)
{
    uint32_t dwCount = 0;
    for (uint32_t i = 0; i < t.dwColumns * t.dwRows; ++i)
    {
        dwCount += IsWatched(t, i) ? 1 : 0;
    }
    return dwCount;
}

// PackBits may leave all as it is.
std::string ActiveCells(tagConfigMotion const& t)
{
    std::string strBits((t.dwColumns * t.dwRows + 7) / 8, '\0');
    for (uint32_t i = 0; i < t.dwColumns * t.dwRows; ++i)
    {
        strBits[i / 8] = static_cast<char>(strBits[i / 8] | (IsWatched(t, i) ? 0x80 >> i % 8 : 0));
    }
    std::string strPacked;
    for (std::size_t n = 0; n < strBits.size(); n += g_nLiteral)
    {
        const std::string strPart = strBits.substr(n, g_nLiteral);
        strPacked += static_cast<char>(strPart.size() - 1) + strPart;
    }
    std::string strText(strPacked.size() * 2 + 8, '\0');
    strText.resize(static_cast<std::size_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(strText.data()),
                                                            reinterpret_cast<unsigned char const*>(strPacked.data()),
                                                            static_cast<int>(strPacked.size()))));
    return strText;
}

void ReadCells(tagConfigMotion& t, std::string const& strText)
{
    const std::size_t nBytes = (t.dwColumns * t.dwRows + 7) / 8;
    std::string strPacked(strText.size() + 3, '\0');
    const int nLength =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(strPacked.data()),
                        reinterpret_cast<unsigned char const*>(strText.data()), static_cast<int>(strText.size()));
    strPacked.resize(nLength < 0 ? 0 : static_cast<std::size_t>(nLength));
    std::string strBits;
    for (std::size_t n = 0; n < strPacked.size() && strBits.size() < nBytes;)
    {
        const int nHeader = static_cast<signed char>(strPacked[n++]);
        if (nHeader >= 0)
        {
            strBits += strPacked.substr(n, static_cast<std::size_t>(nHeader) + 1);
            n += static_cast<std::size_t>(nHeader) + 1;
        }
        else if (nHeader != -128 && n < strPacked.size())
        {
            strBits.append(static_cast<std::size_t>(1 - nHeader), strPacked[n++]);
        }
    }
    if (strBits.size() != nBytes)
    {
        FailValue("ter:InvalidRule", "ActiveCells has not a bit for each cell");
    }
    std::fill(std::begin(t.abyCells), std::end(t.abyCells), static_cast<unsigned char>(0));
    for (uint32_t i = 0; i < t.dwColumns * t.dwRows; ++i)
    {
        const bool bOn = (static_cast<unsigned char>(strBits[i / 8]) << i % 8 & 0x80) != 0;
        t.abyCells[i / 8] = static_cast<unsigned char>(t.abyCells[i / 8] | (bOn ? 1 << i % 8 : 0));
    }
}

// --- what there is ---------------------------------------------------------------------------------------------------

void WriteItem(CXml& tXml, char const* szName, std::string const& strValue)
{
    tXml.Empty("tt:SimpleItem", {{"Name", szName}, {"Value", strValue}});
}

void WriteModule(CCall& tCall, char const* szElement, tagConfigMotion const& t)
{
    CXml& tXml = tCall.Xml();
    const auto fnLayout = [&]
    {
        tXml.In("tt:CellLayout", {{"Columns", std::to_string(t.dwColumns)}, {"Rows", std::to_string(t.dwRows)}},
                [&]
                {
                    tXml.In("tt:Transformation",
                            [&]
                            {
                                tXml.Empty("tt:Translate", {{"x", "-1"}, {"y", "-1"}});
                                tXml.Empty("tt:Scale", {{"x", CXml::Number(2.0 / t.dwColumns)},
                                                        {"y", CXml::Number(2.0 / t.dwRows)}});
                            });
                });
    };
    tXml.In(szElement, {{"Name", g_szModule}, {"Type", tXml.Name("tt:CellMotionEngine")}},
            [&]
            {
                tXml.In("tt:Parameters",
                        [&]
                        {
                            WriteItem(tXml, "Sensitivity", std::to_string(t.dwSensitivity));
                            tXml.In("tt:ElementItem", {{"Name", "Layout"}}, fnLayout);
                        });
            });
}

void WriteRule(CCall& tCall, char const* szElement, tagConfigMotion const& t)
{
    CXml& tXml = tCall.Xml();
    if (t.bEnabled == 0)
    {
        return;
    }
    tXml.In(szElement, {{"Name", g_szRule}, {"Type", tXml.Name("tt:CellMotionDetector")}},
            [&]
            {
                tXml.In("tt:Parameters",
                        [&]
                        {
                            const auto llCount = std::lround(t.dwThreshold * Watched(t) / 100.0);
                            WriteItem(tXml, "MinCount", std::to_string(std::max(llCount, 1L)));
                            WriteItem(tXml, "AlarmOnDelay", "0");
                            WriteItem(tXml, "AlarmOffDelay", std::to_string(t.dwHoldSeconds * 1000));
                            WriteItem(tXml, "ActiveCells", ActiveCells(t));
                        });
            });
}

void GetAnalyticsModules(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    WriteModule(tCall, "tan:AnalyticsModule", tCall.Get<tagConfigMotion>(ChannelAt(tCall)));
}

void GetRules(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    WriteRule(tCall, "tan:Rule", tCall.Get<tagConfigMotion>(ChannelAt(tCall)));
}

// --- changes ---------------------------------------------------------------------------------------------------------

// Calls fnItem with the items of the request's one element of this name, which must be of this type.
template <class F>
void ReadItems(CCall& tCall, std::string_view strElement, std::string_view strType, F fnItem)
{
    const pugi::xml_node tElement = tCall.At({strElement});
    if (LocalName(std::string_view(tElement.attribute("Type").value())) != strType)
    {
        FailValue("ter:InvalidRule", "there are cells alone");
    }
    for (const pugi::xml_node tItem : Child(tElement, "Parameters").children())
    {
        if (LocalName(tItem) == "SimpleItem")
        {
            fnItem(std::string_view(tItem.attribute("Name").value()), std::string(tItem.attribute("Value").value()));
        }
    }
}

uint32_t NumberIn(std::string const& strText, int64_t llMost)
{
    int64_t llValue = -1;
    if (!ParseNumber(strText, llValue) || llValue < 0 || llValue > llMost)
    {
        FailValue("ter:InvalidRule", strText + " is out of range");
    }
    return static_cast<uint32_t>(llValue);
}

void ModifyAnalyticsModules(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = ChannelAt(tCall);
    auto t = tCall.Get<tagConfigMotion>(dwChannel);
    ReadItems(tCall, "AnalyticsModule", "CellMotionEngine",
              [&](std::string_view strName, std::string const& strValue)
              { t.dwSensitivity = strName == "Sensitivity" ? NumberIn(strValue, 100) : t.dwSensitivity; });
    tCall.Set(eConfigMotion, t, dwChannel);
}

template <bool bNew>
void WriteRules(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = ChannelAt(tCall);
    auto t = tCall.Get<tagConfigMotion>(dwChannel);
    if (bNew == (t.bEnabled != 0))
    {
        FailValue(bNew ? "ter:RuleAlreadyExistent" : "ter:RuleNotExistent", "a channel has one rule at most");
    }
    uint32_t dwLeast = 1;
    ReadItems(tCall, "Rule", "CellMotionDetector",
              [&](std::string_view strName, std::string const& strValue)
              {
                  dwLeast = strName == "MinCount" ? NumberIn(strValue, 4096) : dwLeast;
                  t.dwHoldSeconds = strName == "AlarmOffDelay" ? NumberIn(strValue, 3600000) / 1000 : t.dwHoldSeconds;
                  if (strName == "ActiveCells")
                  {
                      ReadCells(t, strValue);
                  }
              });
    const double fPercent = dwLeast * 100.0 / std::max(Watched(t), 1U);
    t.dwThreshold = static_cast<uint32_t>(std::lround(std::min(fPercent, 100.0)));
    t.bEnabled = 1;
    tCall.Set(eConfigMotion, t, dwChannel);
}

void DeleteRules(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = ChannelAt(tCall);
    auto t = tCall.Get<tagConfigMotion>(dwChannel);
    if (t.bEnabled == 0 || tCall.Text({"RuleName"}) != g_szRule)
    {
        FailValue("ter:RuleNotExistent", "there is no rule " + tCall.Text({"RuleName"}));
    }
    t.bEnabled = 0;
    tCall.Set(eConfigMotion, t, dwChannel);
}

#define ONVIF_ITEMS "[Name Type]{Parameters{SimpleItem[Name Value]* ElementItem[Name]{...}* ...}}"
constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Analytics>},
    {"GetAnalyticsModules", eUserViewer, "ConfigurationToken", GetAnalyticsModules},
    {"ModifyAnalyticsModules", eUserAdministrator, "ConfigurationToken AnalyticsModule" ONVIF_ITEMS,
     ModifyAnalyticsModules},
    {"GetRules", eUserViewer, "ConfigurationToken", GetRules},
    {"ModifyRules", eUserAdministrator, "ConfigurationToken Rule" ONVIF_ITEMS, WriteRules<false>},
    {"CreateRules", eUserAdministrator, "ConfigurationToken Rule" ONVIF_ITEMS, WriteRules<true>},
    {"DeleteRules", eUserAdministrator, "ConfigurationToken RuleName", DeleteRules},
};
} // namespace

void WriteAnalyticsConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel)
{
    CXml& tXml = tCall.Xml();
    const auto t = tCall.Get<tagConfigMotion>(dwChannel);
    tXml.In(szElement, {{"token", Token("Analytics", {dwChannel})}},
            [&]
            {
                tXml.Put("tt:Name", "Analytics " + std::to_string(dwChannel)).Put("tt:UseCount", 2);
                tXml.In("tt:AnalyticsEngineConfiguration", [&] { WriteModule(tCall, "tt:AnalyticsModule", t); });
                tXml.In("tt:RuleEngineConfiguration", [&] { WriteRule(tCall, "tt:Rule", t); });
            });
}

std::span<tagAction const> AnalyticsActions()
{
    return g_atActions;
}
} // namespace onvif_device
