#include "tools/onvif_device/Masks.h"

#include "tools/onvif_device/Overlay.h"

namespace onvif_device
{
namespace
{
// A mask of a channel: Mask_1_0. One without a width has been deleted.
struct tagMaskKey
{
    uint32_t dwChannel = 0;
    uint32_t dwMask = 0;
};

tagMaskKey MaskAt(CCall& tCall, std::string const& strToken)
{
    tagMaskKey t;
    const bool bIs = ParseToken(strToken, "Mask", {&t.dwChannel, &t.dwMask}) && t.dwChannel < tCall.Device().Channels();
    const auto tPrivacy = bIs ? tCall.Get<tagConfigPrivacy>(t.dwChannel) : tagConfigPrivacy{};
    if (!bIs || t.dwMask >= tPrivacy.dwCount || tPrivacy.atMasks[t.dwMask].dwWidth == 0)
    {
        FailValue("ter:NoConfig", "there is no mask " + strToken);
    }
    return t;
}

void WriteMask(CCall& tCall, tagMaskKey const& tKey, tagPrivacyMask const& t)
{
    CXml& tXml = tCall.Xml();
    tXml.In("tr2:Masks", {{"token", Token("Mask", {tKey.dwChannel, tKey.dwMask})}},
            [&]
            {
                tXml.Put("tr2:ConfigurationToken", Token("VideoSourceConfig", {tKey.dwChannel}));
                tXml.In("tr2:Polygon",
                        [&]
                        {
                            for (const unsigned n : {0U, 1U, 3U, 2U}) // around
                            {
                                tXml.Empty("tt:Point", {{"x", CXml::Number(ToX(t.dwLeft + (n & 1 ? t.dwWidth : 0)))},
                                                        {"y", CXml::Number(ToY(t.dwTop + (n & 2 ? t.dwHeight : 0)))}});
                            }
                        });
                tXml.Put("tr2:Type", "Color").Empty("tr2:Color", ColourAttributes(t.dwColour));
                tXml.Put("tr2:Enabled", t.bEnabled != 0);
            });
}

// The device's masks are upright rectangles: the one around the polygon.
void ReadMask(CCall& tCall, tagPrivacyMask& t)
{
    double fLeft = 1;
    double fRight = -1;
    double fTop = -1;
    double fBottom = 1;
    for (const pugi::xml_node tPoint : tCall.At({"Mask", "Polygon"}).children())
    {
        double fX = 0;
        double fY = 0;
        if (tPoint.type() != pugi::node_element)
        {
            continue;
        }
        ReadPoint(tPoint, fX, fY);
        fLeft = std::min(fLeft, fX);
        fRight = std::max(fRight, fX);
        fTop = std::max(fTop, fY);
        fBottom = std::min(fBottom, fY);
    }
    t.dwLeft = FromX(fLeft);
    t.dwTop = FromY(fTop);
    if (FromX(fRight) <= t.dwLeft || FromY(fBottom) <= t.dwTop || tCall.Text({"Mask", "Type"}) != "Color")
    {
        FailValue("ter:InvalidPolygon", "the mask covers nothing");
    }
    t.dwWidth = FromX(fRight) - t.dwLeft;
    t.dwHeight = FromY(fBottom) - t.dwTop;
    t.dwColour = ReadColour(tCall.At({"Mask", "Color"}), t.dwColour);
    t.bEnabled = tCall.Flag({"Mask", "Enabled"}) ? 1 : 0;
}
} // namespace

void GetMasks(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const std::string strToken = tCall.Text({"Token"});
    const uint32_t dwOnly = tCall.Has({"ConfigurationToken"}) ? tCall.Index({"ConfigurationToken"}, "VideoSourceConfig",
                                                                            tCall.Device().Channels(), "ter:NoConfig")
                                                              : UINT32_MAX;
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        const auto tPrivacy = tCall.Get<tagConfigPrivacy>(i);
        for (uint32_t k = 0; k < tPrivacy.dwCount && (dwOnly == UINT32_MAX || dwOnly == i); ++k)
        {
            if (tPrivacy.atMasks[k].dwWidth != 0 && (strToken.empty() || strToken == Token("Mask", {i, k})))
            {
                WriteMask(tCall, {i, k}, tPrivacy.atMasks[k]);
            }
        }
    }
}

void GetMaskOptions(CCall& tCall)
{
    tCall.Xml().In("tr2:Options", {{"RectangleOnly", "true"}, {"SingleColorOnly", "false"}},
                   [&]
                   {
                       tCall.Xml().Put("tr2:MaxMasks", 8).Put("tr2:MaxPoints", 4).Put("tr2:Types", "Color");
                       tCall.Xml().In("tr2:Color", [] {});
                   });
}

void SetMask(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagMaskKey tKey = MaskAt(tCall, tCall.At({"Mask"}).attribute("token").value());
    auto tPrivacy = tCall.Get<tagConfigPrivacy>(tKey.dwChannel);
    ReadMask(tCall, tPrivacy.atMasks[tKey.dwMask]);
    tCall.Set(eConfigPrivacy, tPrivacy, tKey.dwChannel);
}

void CreateMask(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel =
        tCall.Index({"Mask", "ConfigurationToken"}, "VideoSourceConfig", tCall.Device().Channels(), "ter:NoConfig");
    auto tPrivacy = tCall.Get<tagConfigPrivacy>(dwChannel);
    uint32_t dwMask = 0;
    while (dwMask < tPrivacy.dwCount && tPrivacy.atMasks[dwMask].dwWidth != 0)
    {
        ++dwMask;
    }
    if (dwMask == std::size(tPrivacy.atMasks))
    {
        FailAction("ter:MaxMasks", "there are as many masks as there can be");
    }
    tPrivacy.dwCount = std::max(tPrivacy.dwCount, dwMask + 1);
    ReadMask(tCall, tPrivacy.atMasks[dwMask]);
    tCall.Set(eConfigPrivacy, tPrivacy, dwChannel);
    tCall.Xml().Put("tr2:Token", Token("Mask", {dwChannel, dwMask}));
}

void DeleteMask(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagMaskKey tKey = MaskAt(tCall, tCall.Text({"Token"}));
    auto tPrivacy = tCall.Get<tagConfigPrivacy>(tKey.dwChannel);
    tPrivacy.atMasks[tKey.dwMask] = {};
    tCall.Set(eConfigPrivacy, tPrivacy, tKey.dwChannel);
}
} // namespace onvif_device
