// What lies over a picture: texts, and privacy masks.

#include "plugins/onvif/Configuration.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Edit.h"
#include "plugins/onvif/MediaCalls.h"
#include "plugins/onvif/Profiles.h"

#include "plugins/common/Text.h"

#include <algorithm>
#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr uint32_t g_dwWhole = 10000;
constexpr uint32_t g_dwWhite = 0xFFFFFF;
constexpr uint32_t g_dwUsualHeight = 400;
constexpr uint32_t g_dwUsualDots = 1080; // of a picture whose height isn't told
constexpr std::string_view g_strRgb = "http://www.onvif.org/ver10/colorspace/RGB";

// --- places and colours ----------------------------------------------------------------------------------------------

// ONVIF's pictures reach from -1 to 1, with 1 at the right and at the top.
uint32_t FromLeft(double dX)
{
    return static_cast<uint32_t>(tagSpan{-1, 1}.Share(dX, g_dwWhole));
}
uint32_t FromTop(double dY)
{
    return g_dwWhole - FromLeft(dY);
}
std::string ToX(uint32_t dwLeft)
{
    return NumberText(tagSpan{-1, 1}.At(dwLeft, g_dwWhole));
}
std::string ToY(uint32_t dwTop)
{
    return NumberText(tagSpan{1, -1}.At(dwTop, g_dwWhole));
}

uint32_t Byte(double d)
{
    return static_cast<uint32_t>(std::lround(std::clamp(d, 0.0, 255.0)));
}

// 0xRRGGBB of a colour in RGB or YCbCr, which is meant where nothing is said.
uint32_t ColourOf(pugi::xml_node tColour)
{
    if (!tColour)
    {
        return g_dwWhite;
    }
    const double x = AttributeNumber(tColour, "X");
    const double y = AttributeNumber(tColour, "Y") - 128;
    const double z = AttributeNumber(tColour, "Z") - 128;
    return Attribute(tColour, "Colorspace") == g_strRgb
               ? Byte(x) << 16 | Byte(y + 128) << 8 | Byte(z + 128)
               : Byte(x + 1.402 * z) << 16 | Byte(x - 0.344 * y - 0.714 * z) << 8 | Byte(x + 1.772 * y);
}

void SetColour(CEdit& tEdit, std::string const& strPath, uint32_t dwColour)
{
    const double dRed = dwColour >> 16 & 255;
    const double dGreen = dwColour >> 8 & 255;
    const double dBlue = dwColour & 255;
    const double dLight = 0.299 * dRed + 0.587 * dGreen + 0.114 * dBlue;
    tEdit.SetAttribute(strPath, "X", std::to_string(Byte(dLight)));
    tEdit.SetAttribute(strPath, "Y", std::to_string(Byte((dBlue - dLight) * 0.564 + 128)));
    tEdit.SetAttribute(strPath, "Z", std::to_string(Byte((dRed - dLight) * 0.713 + 128)));
    tEdit.SetAttribute(strPath, "Colorspace", "http://www.onvif.org/ver10/colorspace/YCbCr");
}

// --- lists of what belongs to a video source's configuration ---------------------------------------------------------

// OSDs and masks are asked for, made, changed and removed in the same way.
struct tagKind
{
    char const* szGetAll;
    char const* szElement; // in the answer, without an s
    char const* szCreate;
    char const* szSet;
    char const* szDelete;
    char const* szToken; // what the removal names it by
};
constexpr tagKind g_tTexts = {"GetOSDs", "OSD", "CreateOSD", "SetOSD", "DeleteOSD", "OSDToken"};
constexpr tagKind g_tMasks = {"GetMasks", "Mask", "CreateMask", "SetMask", "DeleteMask", "Token"};

// Where they lie.
struct tagPicture
{
    std::shared_ptr<tagChannel const> pChannel;
    bool bMedia2 = false;
    std::string const& Source() const { return pChannel->atProfiles[0].strSourceConfig; }
    uint32_t Dots() const { return pChannel->dwHeight ? pChannel->dwHeight : g_dwUsualDots; }
};

CAnswer AskAll(CLogin const& tLogin, tagPicture const& tPicture, tagKind const& tKind)
{
    return tLogin.Call({MediaService(tPicture.bMedia2), tKind.szGetAll,
                        CXmlWriter().Add(MediaName(tPicture.bMedia2, "ConfigurationToken"), tPicture.Source()).Take()});
}

// Those of this picture that fnCounts says true of: some devices answer with those of all pictures.
template <class F>
std::vector<pugi::xml_node> Mine(CAnswer const& tAnswer, tagPicture const& tPicture, tagKind const& tKind, F fnCounts)
{
    auto atAll = Children(tAnswer.Body(), std::string(tKind.szElement) + 's');
    std::erase_if(atAll,
                  [&](pugi::xml_node t)
                  {
                      const std::string_view strOf =
                          Text(t, tKind.szElement[0] == 'O' ? "VideoSourceConfigurationToken" : "ConfigurationToken");
                      return (!strOf.empty() && strOf != tPicture.Source()) || !fnCounts(t);
                  });
    return atAll;
}

// Makes the device's list as long as atNew, and like it: changed ones in place, new ones, none beyond.
int Replace(CLogin const& tLogin, tagPicture const& tPicture, tagKind const& tKind,
            std::vector<pugi::xml_node> const& atOld, std::vector<CEdit> const& atNew)
{
    const eService eTo = MediaService(tPicture.bMedia2);
    for (std::size_t i = 0; i < atNew.size(); ++i)
    {
        const bool bOld = i < atOld.size();
        const std::string strBody = atNew[i].As(MediaName(tPicture.bMedia2, tKind.szElement));
        if (const int nResult = tLogin.Call({eTo, bOld ? tKind.szSet : tKind.szCreate, strBody}).Result())
        {
            return nResult;
        }
    }
    for (std::size_t i = atNew.size(); i < atOld.size(); ++i)
    {
        const std::string strBody =
            CXmlWriter().Add(MediaName(tPicture.bMedia2, tKind.szToken), Attribute(atOld[i], "token")).Take();
        if (const int nResult = tLogin.Call({eTo, tKind.szDelete, strBody}).Result())
        {
            return nResult;
        }
    }
    return eResultOk;
}

// --- texts -----------------------------------------------------------------------------------------------------------

bool IsText(pugi::xml_node tOsd)
{
    return Text(tOsd, "Type") == "Text";
}

// A corner, or a place of its own.
void TakePlace(pugi::xml_node tPosition, tagOverlayText& t)
{
    const std::string_view strType = Text(tPosition, "Type");
    const pugi::xml_node tPos = Child(tPosition, "Pos");
    t.dwLeft = strType.ends_with("Right")  ? 7000
               : strType.ends_with("Left") ? 200
                                           : FromLeft(AttributeNumber(tPos, "x"));
    t.dwTop = strType.starts_with("Lower")   ? 9200
              : strType.starts_with("Upper") ? 200
                                             : FromTop(AttributeNumber(tPos, "y"));
}

tagOverlayText TextOf(pugi::xml_node tOsd, uint32_t dwDots)
{
    tagOverlayText t{};
    const pugi::xml_node tString = Child(tOsd, "TextString");
    const bool bPlain = Text(tString, "Type") == "Plain";
    t.bEnabled = 1;
    t.dwKind = bPlain ? eOverlayText : eOverlayTime;
    TakePlace(Child(tOsd, "Position"), t);
    t.dwHeight =
        static_cast<uint32_t>(std::min<uint64_t>(uint64_t{Word(tString, "FontSize")} * g_dwWhole / dwDots, g_dwWhole));
    t.dwColour = ColourOf(Find(tString, "FontColor/Color"));
    plugin::CopyText(t.szText, bPlain ? Text(tString, "PlainText") : std::string_view{});
    return t;
}

bool IsValid(tagOverlayText const& t)
{
    // ONVIF's devices have formats of their own for the time.
    return t.bEnabled <= 1 && t.dwKind <= eOverlayName && t.dwLeft <= g_dwWhole && t.dwTop <= g_dwWhole &&
           t.dwHeight <= g_dwWhole && t.dwColour <= g_dwWhite && (t.dwKind != eOverlayTime || t.szText[0] == '\0');
}

bool IsSameText(tagOverlayText const& tOne, tagOverlayText const& tOther)
{
    return std::memcmp(&tOne, &tOther, offsetof(tagOverlayText, szText)) == 0 && IsSame(tOne.szText, tOther.szText);
}

CEdit TextEdit(pugi::xml_node tOld, tagPicture const& tPicture, tagOverlayText const& t)
{
    CEdit tEdit = tOld ? CEdit(tOld, "OSD") : CEdit("OSD");
    if (tOld && IsSameText(TextOf(tOld, tPicture.Dots()), t))
    {
        return tEdit;
    }
    if (!tOld)
    {
        tEdit.SetAttribute("", "token", "");
        tEdit.Set("VideoSourceConfigurationToken", tPicture.Source());
        tEdit.Set("Type", "Text");
    }
    tEdit.Set("Position/Type", "Custom");
    tEdit.SetAttribute("Position/Pos", "x", ToX(t.dwLeft));
    tEdit.SetAttribute("Position/Pos", "y", ToY(t.dwTop));
    tEdit.Set("TextString/Type", t.dwKind == eOverlayTime ? "DateAndTime" : "Plain");
    const uint32_t dwHeight = t.dwHeight ? t.dwHeight : g_dwUsualHeight;
    tEdit.Set("TextString/FontSize",
              std::to_string(std::max(uint64_t{dwHeight} * tPicture.Dots() / g_dwWhole, uint64_t{1})));
    SetColour(tEdit, "TextString/FontColor/Color", t.dwColour);
    tEdit.Remove("TextString/PlainText");
    if (t.dwKind != eOverlayTime)
    {
        tEdit.Set("TextString/PlainText", plugin::Text(t.szText));
    }
    return tEdit;
}

// --- masks -----------------------------------------------------------------------------------------------------------

// The rectangle around a polygon.
tagPrivacyMask MaskOf(pugi::xml_node tMask)
{
    tagPrivacyMask t{};
    uint32_t dwRight = 0;
    uint32_t dwBottom = 0;
    t.dwLeft = t.dwTop = g_dwWhole;
    for (pugi::xml_node tPoint : Children(Child(tMask, "Polygon"), "Point"))
    {
        const uint32_t dwX = FromLeft(AttributeNumber(tPoint, "x"));
        const uint32_t dwY = FromTop(AttributeNumber(tPoint, "y"));
        t.dwLeft = std::min(t.dwLeft, dwX);
        t.dwTop = std::min(t.dwTop, dwY);
        dwRight = std::max(dwRight, dwX);
        dwBottom = std::max(dwBottom, dwY);
    }
    t.dwWidth = dwRight > t.dwLeft ? dwRight - t.dwLeft : 0;
    t.dwHeight = dwBottom > t.dwTop ? dwBottom - t.dwTop : 0;
    t.bEnabled = Truth(tMask, "Enabled").value_or(true) ? 1 : 0;
    const pugi::xml_node tColour = Child(tMask, "Color");
    t.dwColour = tColour ? ColourOf(tColour) : 0;
    return t;
}

bool IsValid(tagPrivacyMask const& t)
{
    return t.bEnabled <= 1 && t.dwColour <= g_dwWhite && t.dwLeft <= g_dwWhole && t.dwTop <= g_dwWhole &&
           t.dwWidth <= g_dwWhole - t.dwLeft && t.dwHeight <= g_dwWhole - t.dwTop;
}

CEdit MaskEdit(pugi::xml_node tOld, tagPicture const& tPicture, tagPrivacyMask const& t)
{
    CEdit tEdit = tOld ? CEdit(tOld, "Mask") : CEdit("Mask");
    const tagPrivacyMask tBefore = tOld ? MaskOf(tOld) : tagPrivacyMask{};
    if (!tOld)
    {
        tEdit.SetAttribute("", "token", "");
        tEdit.Set("ConfigurationToken", tPicture.Source());
        tEdit.Set("Type", "Color");
    }
    if (!tOld || std::memcmp(&tBefore.dwLeft, &t.dwLeft, 4 * sizeof t.dwLeft) != 0)
    {
        CXmlWriter tPolygon;
        tPolygon.Open("tt:Polygon");
        const std::pair<uint32_t, uint32_t> atCorners[] = {{t.dwLeft, t.dwTop},
                                                           {t.dwLeft + t.dwWidth, t.dwTop},
                                                           {t.dwLeft + t.dwWidth, t.dwTop + t.dwHeight},
                                                           {t.dwLeft, t.dwTop + t.dwHeight}};
        for (auto const& [dwX, dwY] : atCorners)
        {
            tPolygon.Open("tt:Point").Attribute("x", ToX(dwX)).Attribute("y", ToY(dwY)).Close();
        }
        tEdit.Remove("Polygon");
        tEdit.Add(tPolygon.Take());
    }
    if (t.dwColour != tBefore.dwColour || !tOld)
    {
        SetColour(tEdit, "Color", t.dwColour);
    }
    tEdit.Set("Enabled", t.bEnabled ? "true" : "false");
    return tEdit;
}

bool IsAny(pugi::xml_node)
{
    return true;
}
} // namespace

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigOverlay& t)
{
    tagPicture tPicture;
    if (const int nResult = FindChannel(tLogin, tWhich.dwIndex, tPicture.pChannel, tPicture.bMedia2))
    {
        return nResult;
    }
    const CAnswer tAnswer = AskAll(tLogin, tPicture, g_tTexts);
    for (pugi::xml_node tOsd : Mine(tAnswer, tPicture, g_tTexts, IsText))
    {
        if (t.dwCount < std::size(t.atTexts))
        {
            t.atTexts[t.dwCount++] = TextOf(tOsd, tPicture.Dots());
        }
    }
    return tAnswer.Result();
}

// A text that isn't shown can't be kept.
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigOverlay const&, tagConfigOverlay const& tAfter)
{
    tagPicture tPicture;
    if (const int nResult = FindChannel(tLogin, tWhich.dwIndex, tPicture.pChannel, tPicture.bMedia2))
    {
        return nResult;
    }
    if (tAfter.dwCount > std::size(tAfter.atTexts) ||
        !std::all_of(tAfter.atTexts, tAfter.atTexts + tAfter.dwCount, [](auto const& t) { return IsValid(t); }))
    {
        return eResultBadArgument;
    }
    const CAnswer tAnswer = AskAll(tLogin, tPicture, g_tTexts);
    const auto atOld = Mine(tAnswer, tPicture, g_tTexts, IsText);
    std::vector<CEdit> atNew;
    for (uint32_t i = 0; i < tAfter.dwCount; ++i)
    {
        if (tAfter.atTexts[i].bEnabled != 0)
        {
            const pugi::xml_node tOld = atNew.size() < atOld.size() ? atOld[atNew.size()] : pugi::xml_node();
            atNew.push_back(TextEdit(tOld, tPicture, tAfter.atTexts[i]));
        }
    }
    return tAnswer ? Replace(tLogin, tPicture, g_tTexts, atOld, atNew) : tAnswer.Result();
}

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigPrivacy& t)
{
    tagPicture tPicture;
    if (const int nResult = FindChannel(tLogin, tWhich.dwIndex, tPicture.pChannel, tPicture.bMedia2))
    {
        return nResult;
    }
    if (!tPicture.bMedia2) // the first media service has none
    {
        return eResultNotFound;
    }
    const CAnswer tAnswer = AskAll(tLogin, tPicture, g_tMasks);
    for (pugi::xml_node tMask : Mine(tAnswer, tPicture, g_tMasks, IsAny))
    {
        if (t.dwCount < std::size(t.atMasks))
        {
            t.atMasks[t.dwCount++] = MaskOf(tMask);
        }
    }
    return tAnswer.Result();
}

int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigPrivacy const&, tagConfigPrivacy const& tAfter)
{
    tagPicture tPicture;
    if (const int nResult = FindChannel(tLogin, tWhich.dwIndex, tPicture.pChannel, tPicture.bMedia2))
    {
        return nResult;
    }
    if (tAfter.dwCount > std::size(tAfter.atMasks) ||
        !std::all_of(tAfter.atMasks, tAfter.atMasks + tAfter.dwCount, [](auto const& t) { return IsValid(t); }))
    {
        return eResultBadArgument;
    }
    const CAnswer tAnswer = AskAll(tLogin, tPicture, g_tMasks);
    const auto atOld = Mine(tAnswer, tPicture, g_tMasks, IsAny);
    std::vector<CEdit> atNew;
    for (uint32_t i = 0; i < tAfter.dwCount; ++i)
    {
        atNew.push_back(MaskEdit(i < atOld.size() ? atOld[i] : pugi::xml_node(), tPicture, tAfter.atMasks[i]));
    }
    return tAnswer ? Replace(tLogin, tPicture, g_tMasks, atOld, atNew) : tAnswer.Result();
}
} // namespace onvifclient
