#include "plugins/onvif/EncoderLimits.h"

#include "protocol/interface/Frames.h"

#include <algorithm>
#include <limits>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr std::size_t g_nMostSizes = 256;

// "1 400" and "30 25 20" in attributes: the least and the most.
std::optional<tagSpan> SpanOfList(std::string_view strList)
{
    tagSpan t{std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest()};
    while (!strList.empty())
    {
        const std::size_t nEnd = std::min(strList.find(' '), strList.size());
        if (const auto d = ParseNumber(strList.substr(0, nEnd)))
        {
            t = {std::min(t.dLeast, *d), std::max(t.dMost, *d)};
        }
        strList.remove_prefix(std::min(nEnd + 1, strList.size()));
    }
    return t.dLeast <= t.dMost ? std::optional(t) : std::nullopt;
}

void TakeWords(std::string_view strList, std::vector<std::string>& astrWords)
{
    while (!strList.empty() && astrWords.size() < g_nMostSizes)
    {
        const std::size_t nEnd = std::min(strList.find(' '), strList.size());
        if (nEnd != 0)
        {
            astrWords.emplace_back(strList.substr(0, nEnd));
        }
        strList.remove_prefix(std::min(nEnd + 1, strList.size()));
    }
}

void TakeSizes(pugi::xml_node tOptions, tagEncoderLimits& t)
{
    for (pugi::xml_node tSize : Children(tOptions, "ResolutionsAvailable"))
    {
        if (t.atSizes.size() < g_nMostSizes)
        {
            t.atSizes.emplace_back(Word(tSize, "Width"), Word(tSize, "Height"));
        }
    }
}

// One part for each encoding, and what all share above them.
tagEncoderLimits Limits1(pugi::xml_node tOptions, uint32_t dwCodec)
{
    char const* const szCodec = dwCodec == eCodecH264    ? "H264"
                                : dwCodec == eCodecMPEG4 ? "MPEG4"
                                : dwCodec == eCodecMJPEG ? "JPEG"
                                                         : "none";
    const pugi::xml_node tThis = Child(tOptions, szCodec);
    tagEncoderLimits t;
    t.bOffered = !tThis.empty();
    t.tQuality = SpanOf(tOptions, "QualityRange");
    t.tFrameRate = SpanOf(tThis, "FrameRateRange");
    t.tKeyFrames = SpanOf(tThis, "GovLengthRange");
    t.tBitRate = SpanOf(Child(Child(tOptions, "Extension"), szCodec), "BitrateRange");
    for (pugi::xml_node tProfile : Children(tThis, "H264ProfilesSupported"))
    {
        TakeWords(Text(tProfile), t.astrProfiles);
    }
    TakeSizes(tThis, t);
    return t;
}

// A whole one for each encoding.
tagEncoderLimits Limits2(pugi::xml_node tAnswer, uint32_t dwCodec)
{
    tagEncoderLimits t;
    for (pugi::xml_node tThis : Children(tAnswer, "Options"))
    {
        if (CodecOf(Text(tThis, "Encoding")) == dwCodec)
        {
            t.bOffered = true;
            t.tQuality = SpanOf(tThis, "QualityRange");
            t.tFrameRate = SpanOfList(Attribute(tThis, "FrameRatesSupported"));
            t.tKeyFrames = SpanOfList(Attribute(tThis, "GovLengthRange"));
            t.tBitRate = SpanOf(tThis, "BitrateRange");
            t.bConstantBitRate = Attribute(tThis, "ConstantBitRateSupported") == "true";
            TakeWords(Attribute(tThis, "ProfilesSupported"), t.astrProfiles);
            TakeSizes(tThis, t);
        }
    }
    return t;
}
} // namespace

tagEncoderLimits VideoLimits(pugi::xml_node tAnswer, bool bMedia2, uint32_t dwCodec)
{
    return bMedia2 ? Limits2(tAnswer, dwCodec) : Limits1(Child(tAnswer, "Options"), dwCodec);
}

bool TakesAudio(pugi::xml_node tAnswer, bool bMedia2, uint32_t dwCodec, uint32_t dwBitRate, uint32_t dwSampleRate)
{
    // The first media service has the encodings one level deeper.
    const pugi::xml_node tOuter = Child(tAnswer, "Options");
    const auto atOptions = bMedia2 ? Children(tAnswer, "Options") : Children(tOuter, "Options");
    const auto fnTakes = [](pugi::xml_node tThis, char const* szList, uint32_t dwValue)
    {
        const auto atItems = Children(Child(tThis, szList), "Items");
        return atItems.empty() ||
               std::ranges::any_of(atItems, [&](pugi::xml_node t) { return Word(t, "") == dwValue; });
    };
    return atOptions.empty() || std::ranges::any_of(atOptions,
                                                    [&](pugi::xml_node tThis)
                                                    {
                                                        return CodecOf(Text(tThis, "Encoding")) == dwCodec &&
                                                               fnTakes(tThis, "BitrateList", dwBitRate) &&
                                                               fnTakes(tThis, "SampleRateList", dwSampleRate / 1000);
                                                    });
}
} // namespace onvifclient
