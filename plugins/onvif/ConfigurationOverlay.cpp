// What lies over a picture: texts, and privacy masks.

#include "plugins/onvif/Configuration.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Edit.h"
#include "plugins/onvif/MediaCalls.h"
#include "plugins/onvif/Profiles.h"

#include "plugins/common/Text.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr uint32_t g_dwWhite = 0xFFFFFF;
constexpr uint32_t g_dwUsualHeight = 400;
constexpr uint32_t g_dwUsualDots = 1080; // of a picture whose height isn't told
constexpr std::string_view g_strRgb = "http://www.onvif.org/ver10/colorspace/RGB";
constexpr std::string_view g_strYCbCr = "http://www.onvif.org/ver10/colorspace/YCbCr";

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

// X, Y and Z of a colour in one of the two.
std::array<uint32_t, 3> PartsOf(uint32_t dwColour, bool bRgb)
{
    const double dRed = dwColour >> 16 & 255;
    const double dGreen = dwColour >> 8 & 255;
    const double dBlue = dwColour & 255;
    const double dLight = 0.299 * dRed + 0.587 * dGreen + 0.114 * dBlue;
    return bRgb ? std::array{Byte(dRed), Byte(dGreen), Byte(dBlue)}
                : std::array{Byte(dLight), Byte((dBlue - dLight) * 0.564 + 128), Byte((dRed - dLight) * 0.713 + 128)};
}

// Whether a device has its colours in RGB: as the one that is there, else as its options say.
bool HasRgb(pugi::xml_node tColour, pugi::xml_node tOptions)
{
    for (pugi::xml_node tOffered : {tColour, Child(tOptions, "ColorList"), tOptions})
    {
        const std::string_view strSpace = Attribute(tOffered, "Colorspace");
        if (!strSpace.empty())
        {
            return strSpace == g_strRgb;
        }
    }
    return Text(tOptions, "ColorspaceRange/Colorspace") == g_strRgb;
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

CAnswer AskOptions(CLogin const& tLogin, tagPicture const& tPicture, char const* szName)
{
    return tLogin.Call({MediaService(tPicture.bMedia2), szName,
                        CXmlWriter().Add(MediaName(tPicture.bMedia2, "ConfigurationToken"), tPicture.Source()).Take()});
}

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
            std::vector<pugi::xml_node> const& atOld, std::vector<std::string> const& astrNew)
{
    const eService eTo = MediaService(tPicture.bMedia2);
    for (std::size_t i = 0; i < astrNew.size(); ++i)
    {
        const char* const szCall = i < atOld.size() ? tKind.szSet : tKind.szCreate;
        if (const int nResult = tLogin.Call({eTo, szCall, astrNew[i]}).Result())
        {
            return nResult;
        }
    }
    for (std::size_t i = astrNew.size(); i < atOld.size(); ++i)
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

// One text as it goes to the device. tOld: the one that is there, which may be null.
std::string TextXml(pugi::xml_node tOld, tagPicture const& tPicture, tagOverlayText const& t, bool bRgb)
{
    const std::string strName = MediaName(tPicture.bMedia2, "OSD");
    CEdit tEdit = tOld ? CEdit(tOld, "OSD") : CEdit("OSD");
    if (tOld && IsSameText(TextOf(tOld, tPicture.Dots()), t))
    {
        return tEdit.As(strName);
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
    const uint64_t ullHeight = t.dwHeight ? t.dwHeight : g_dwUsualHeight;
    tEdit.Set("TextString/FontSize", std::to_string(std::max(ullHeight * tPicture.Dots() / g_dwWhole, uint64_t{1})));
    const auto adwParts = PartsOf(t.dwColour, bRgb);
    tEdit.SetAttribute("TextString/FontColor/Color", "X", std::to_string(adwParts[0]));
    tEdit.SetAttribute("TextString/FontColor/Color", "Y", std::to_string(adwParts[1]));
    tEdit.SetAttribute("TextString/FontColor/Color", "Z", std::to_string(adwParts[2]));
    tEdit.SetAttribute("TextString/FontColor/Color", "Colorspace", bRgb ? g_strRgb : g_strYCbCr);
    tEdit.Remove("TextString/PlainText");
    if (t.dwKind != eOverlayTime)
    {
        tEdit.Set("TextString/PlainText", plugin::Text(t.szText));
    }
    return tEdit.As(strName);
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

// One mask as it goes to the device: of the second media service's own type. tOld may be null.
std::string MaskXml(pugi::xml_node tOld, tagPicture const& tPicture, tagPrivacyMask const& t, bool bRgb)
{
    const std::string_view strKind = Text(tOld, "Type");
    CXmlWriter tMask;
    tMask.Open("tr2:Mask").Attribute("token", Attribute(tOld, "token"));
    tMask.Add("tr2:ConfigurationToken", tPicture.Source()).Open("tr2:Polygon");
    const std::pair<uint32_t, uint32_t> atCorners[] = {{t.dwLeft, t.dwTop},
                                                       {t.dwLeft + t.dwWidth, t.dwTop},
                                                       {t.dwLeft + t.dwWidth, t.dwTop + t.dwHeight},
                                                       {t.dwLeft, t.dwTop + t.dwHeight}};
    for (auto const& [dwX, dwY] : atCorners)
    {
        tMask.Open("tt:Point").Attribute("x", ToX(dwX)).Attribute("y", ToY(dwY)).Close();
    }
    tMask.Close().Add("tr2:Type", strKind.empty() ? std::string_view("Color") : strKind);
    if (strKind.empty() || strKind == "Color")
    {
        const auto adwParts = PartsOf(t.dwColour, bRgb);
        tMask.Open("tr2:Color").Attribute("X", std::to_string(adwParts[0])).Attribute("Y", std::to_string(adwParts[1]));
        tMask.Attribute("Z", std::to_string(adwParts[2])).Attribute("Colorspace", bRgb ? g_strRgb : g_strYCbCr).Close();
    }
    return tMask.Add("tr2:Enabled", t.bEnabled != 0).Take();
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
    const CAnswer tOptions = AskOptions(tLogin, tPicture, "GetOSDOptions");
    const bool bRgb = HasRgb(atOld.empty() ? pugi::xml_node() : Find(atOld[0], "TextString/FontColor/Color"),
                             Find(tOptions.Body(), "OSDOptions/TextOption/FontColor/Color"));
    std::vector<std::string> astrNew;
    for (uint32_t i = 0; i < tAfter.dwCount; ++i)
    {
        if (tAfter.atTexts[i].bEnabled != 0)
        {
            const pugi::xml_node tOld = astrNew.size() < atOld.size() ? atOld[astrNew.size()] : pugi::xml_node();
            astrNew.push_back(TextXml(tOld, tPicture, tAfter.atTexts[i], bRgb));
        }
    }
    return tAnswer ? Replace(tLogin, tPicture, g_tTexts, atOld, astrNew) : tAnswer.Result();
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
    const CAnswer tOptions = AskOptions(tLogin, tPicture, "GetMaskOptions");
    const bool bRgb =
        HasRgb(atOld.empty() ? pugi::xml_node() : Child(atOld[0], "Color"), Find(tOptions.Body(), "Options/Color"));
    std::vector<std::string> astrNew;
    for (uint32_t i = 0; i < tAfter.dwCount; ++i)
    {
        const pugi::xml_node tOld = i < atOld.size() ? atOld[i] : pugi::xml_node();
        astrNew.push_back(MaskXml(tOld, tPicture, tAfter.atMasks[i], bRgb));
    }
    return tAnswer ? Replace(tLogin, tPicture, g_tMasks, atOld, astrNew) : tAnswer.Result();
}
} // namespace onvifclient
