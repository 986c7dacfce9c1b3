#include "tools/onvif_device/Overlay.h"
#include "tools/onvif_device/Osd.h"

#include <algorithm>
#include <cmath>

namespace onvif_device
{
namespace
{
using device::Text;

constexpr double g_fWhole = 10000;
constexpr char const* g_szRgb = "http://www.onvif.org/ver10/colorspace/RGB";

double Attribute(pugi::xml_node tNode, char const* szName)
{
    double fValue = 0;
    if (!ParseNumber(tNode.attribute(szName).value(), fValue))
    {
        FailValue("ter:InvalidArgVal", std::string(szName) + " is no number");
    }
    return fValue;
}
} // namespace

double ToX(uint32_t dwLeft)
{
    return dwLeft / g_fWhole * 2 - 1;
}

double ToY(uint32_t dwTop)
{
    return 1 - dwTop / g_fWhole * 2;
}

uint32_t FromX(double fX)
{
    return static_cast<uint32_t>(std::lround((std::clamp(fX, -1.0, 1.0) + 1) / 2 * g_fWhole));
}

uint32_t FromY(double fY)
{
    return static_cast<uint32_t>(std::lround((1 - std::clamp(fY, -1.0, 1.0)) / 2 * g_fWhole));
}

void ReadPoint(pugi::xml_node tPoint, double& fX, double& fY)
{
    fX = Attribute(tPoint, "x");
    fY = Attribute(tPoint, "y");
}

CXml::Attributes ColourAttributes(uint32_t dwColour)
{
    return {{"X", std::to_string(dwColour >> 16 & 255)},
            {"Y", std::to_string(dwColour >> 8 & 255)},
            {"Z", std::to_string(dwColour & 255)},
            {"Colorspace", g_szRgb}};
}

// RGB where it says so, else YCbCr.
uint32_t ReadColour(pugi::xml_node tColour, uint32_t dwElse)
{
    if (!tColour)
    {
        return dwElse;
    }
    const double afParts[] = {Attribute(tColour, "X"), Attribute(tColour, "Y"), Attribute(tColour, "Z")};
    if (std::ranges::any_of(afParts, [](double f) { return f < 0 || f > 255; }))
    {
        FailValue("ter:InvalidArgVal", "a colour is out of its range");
    }
    const auto [fX, fY, fZ] = afParts;
    const bool bRgb = tColour.attribute("Colorspace").value() == std::string_view(g_szRgb);
    const double afRgb[] = {bRgb ? fX : fX + 1.402 * (fZ - 128),
                            bRgb ? fY : fX - 0.344 * (fY - 128) - 0.714 * (fZ - 128),
                            bRgb ? fZ : fX + 1.772 * (fY - 128)};
    uint32_t dwColour = 0;
    for (const double fPart : afRgb)
    {
        dwColour = dwColour << 8 | static_cast<uint32_t>(std::lround(std::clamp(fPart, 0.0, 255.0)));
    }
    return dwColour;
}

// --- texts -----------------------------------------------------------------------------------------------------------

namespace
{
// A text of a channel that is shown: OSD_1_0. Those that aren't shown don't exist.
struct tagTextKey
{
    uint32_t dwChannel = 0;
    uint32_t dwText = 0;
};

tagTextKey TextAt(CCall& tCall, std::string const& strToken)
{
    tagTextKey t;
    const bool bIs = ParseToken(strToken, "OSD", {&t.dwChannel, &t.dwText}) && t.dwChannel < tCall.Device().Channels();
    const auto tOverlay = bIs ? tCall.Get<tagConfigOverlay>(t.dwChannel) : tagConfigOverlay{};
    if (!bIs || t.dwText >= tOverlay.dwCount || tOverlay.atTexts[t.dwText].bEnabled == 0)
    {
        FailValue("ter:NoConfig", "there is no text " + strToken);
    }
    return t;
}

void WriteText(CCall& tCall, char const* szElement, tagTextKey const& tKey, tagOverlayText const& t)
{
    CXml& tXml = tCall.Xml();
    tXml.In(tCall.Name(szElement), {{"token", Token("OSD", {tKey.dwChannel, tKey.dwText})}},
            [&]
            {
                tXml.Put("tt:VideoSourceConfigurationToken", Token("VideoSourceConfig", {tKey.dwChannel}));
                tXml.Put("tt:Type", "Text");
                tXml.In(
                    "tt:Position",
                    [&]
                    {
                        tXml.Put("tt:Type", "Custom");
                        tXml.Empty("tt:Pos", {{"x", CXml::Number(ToX(t.dwLeft))}, {"y", CXml::Number(ToY(t.dwTop))}});
                    });
                tXml.In("tt:TextString",
                        [&]
                        {
                            tXml.Put("tt:Type", t.dwKind == eOverlayTime ? "DateAndTime" : "Plain");
                            if (t.dwKind == eOverlayTime)
                            {
                                tXml.Put("tt:DateFormat", "yyyy-MM-dd").Put("tt:TimeFormat", "HH:mm:ss");
                            }
                            tXml.Put("tt:FontSize", t.dwHeight ? t.dwHeight / 100 : 4);
                            tXml.In("tt:FontColor", [&] { tXml.Empty("tt:Color", ColourAttributes(t.dwColour)); });
                            if (t.dwKind != eOverlayTime)
                            {
                                tXml.Put("tt:PlainText", Text(t.szText));
                            }
                        });
            });
}

// Lays what a request says over a text.
void ReadText(CCall& tCall, tagOverlayText& t)
{
    const CCall::Path astrPosition = {"OSD", "Position", "Type"};
    constexpr std::string_view astrCorners[] = {"UpperLeft", "UpperRight", "LowerLeft", "LowerRight"};
    const uint32_t dwPosition =
        tCall.Word(astrPosition, {astrCorners[0], astrCorners[1], astrCorners[2], astrCorners[3], "Custom"});
    if (tCall.Text({"OSD", "Type"}) != "Text" || !tCall.Has({"OSD", "TextString"}))
    {
        FailValue("ter:OSDTypeNotSupported", "there are texts alone");
    }
    if (dwPosition == 4)
    {
        double fX = 0;
        double fY = 0;
        ReadPoint(tCall.At({"OSD", "Position", "Pos"}), fX, fY);
        t.dwLeft = FromX(fX);
        t.dwTop = FromY(fY);
    }
    else
    {
        t.dwLeft = dwPosition % 2 == 0 ? 200 : 7000;
        t.dwTop = dwPosition < 2 ? 200 : 9200;
    }
    const uint32_t dwKind = tCall.Word({"OSD", "TextString", "Type"}, {"Plain", "Date", "Time", "DateAndTime"});
    t.dwKind = dwKind != 0 ? eOverlayTime : t.dwKind == eOverlayName ? eOverlayName : eOverlayText;
    t.dwColour = ReadColour(tCall.At({"OSD", "TextString", "FontColor", "Color"}), t.dwColour);
    t.dwHeight =
        static_cast<uint32_t>(tCall.Integer({"OSD", "TextString", "FontSize"}, 1, 100, t.dwHeight / 100)) * 100;
    device::CopyText(t.szText, tCall.Text({"OSD", "TextString", "PlainText"}));
}
} // namespace

void GetOSDs(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwOnly = tCall.Has({"ConfigurationToken"}) ? tCall.Index({"ConfigurationToken"}, "VideoSourceConfig",
                                                                            tCall.Device().Channels(), "ter:NoConfig")
                                                              : UINT32_MAX;
    if (tCall.Has({"OSDToken"}))
    {
        const tagTextKey tKey = TextAt(tCall, tCall.Text({"OSDToken"}));
        WriteText(tCall, "OSDs", tKey, tCall.Get<tagConfigOverlay>(tKey.dwChannel).atTexts[tKey.dwText]);
        return;
    }
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        const auto tOverlay = tCall.Get<tagConfigOverlay>(i);
        for (uint32_t k = 0; k < tOverlay.dwCount && (dwOnly == UINT32_MAX || dwOnly == i); ++k)
        {
            if (tOverlay.atTexts[k].bEnabled)
            {
                WriteText(tCall, "OSDs", {i, k}, tOverlay.atTexts[k]);
            }
        }
    }
}

void GetOSD(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagTextKey tKey = TextAt(tCall, tCall.Text({"OSDToken"}));
    WriteText(tCall, "OSD", tKey, tCall.Get<tagConfigOverlay>(tKey.dwChannel).atTexts[tKey.dwText]);
}

void GetOSDOptions(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    tXml.In(tCall.Name("OSDOptions"),
            [&]
            {
                tXml.Empty("tt:MaximumNumberOfOSDs", {{"Total", "8"}, {"PlainText", "8"}, {"DateAndTime", "8"}});
                tXml.Put("tt:Type", "Text");
                tXml.Each("tt:PositionOption", {"UpperLeft", "UpperRight", "LowerLeft", "LowerRight", "Custom"});
                tXml.In(
                    "tt:TextOption",
                    [&]
                    {
                        tXml.Put("tt:Type", "Plain").Put("tt:Type", "DateAndTime").Range("tt:FontSizeRange", 1, 100);
                        tXml.Put("tt:DateFormat", "yyyy-MM-dd").Put("tt:TimeFormat", "HH:mm:ss");
                    });
            });
}

void SetOSD(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagTextKey tKey = TextAt(tCall, tCall.At({"OSD"}).attribute("token").value());
    auto tOverlay = tCall.Get<tagConfigOverlay>(tKey.dwChannel);
    ReadText(tCall, tOverlay.atTexts[tKey.dwText]);
    tCall.Set(eConfigOverlay, tOverlay, tKey.dwChannel);
}

void CreateOSD(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = tCall.Index({"OSD", "VideoSourceConfigurationToken"}, "VideoSourceConfig",
                                           tCall.Device().Channels(), "ter:NoConfig");
    auto tOverlay = tCall.Get<tagConfigOverlay>(dwChannel);
    uint32_t dwText = 0;
    while (dwText < tOverlay.dwCount && tOverlay.atTexts[dwText].bEnabled)
    {
        ++dwText;
    }
    if (dwText == std::size(tOverlay.atTexts))
    {
        FailAction("ter:MaxOSDs", "there are as many texts as there can be");
    }
    tOverlay.dwCount = std::max(tOverlay.dwCount, dwText + 1);
    tOverlay.atTexts[dwText] = {};
    tOverlay.atTexts[dwText].bEnabled = 1;
    tOverlay.atTexts[dwText].dwColour = 0xFFFFFF;
    ReadText(tCall, tOverlay.atTexts[dwText]);
    tCall.Set(eConfigOverlay, tOverlay, dwChannel);
    tCall.Xml().Put(tCall.Name("OSDToken"), Token("OSD", {dwChannel, dwText}));
}

void DeleteOSD(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagTextKey tKey = TextAt(tCall, tCall.Text({"OSDToken"}));
    auto tOverlay = tCall.Get<tagConfigOverlay>(tKey.dwChannel);
    tOverlay.atTexts[tKey.dwText].bEnabled = 0;
    tCall.Set(eConfigOverlay, tOverlay, tKey.dwChannel);
}
} // namespace onvif_device
