#include "plugins/onvif/Convert.h"

#include "protocol/interface/Frames.h"
#include "protocol/interface/Results.h"

#include <charconv>

namespace onvifclient
{
namespace
{
using namespace onvif;

struct tagCodecName
{
    std::string_view strName;
    uint32_t dwCodec;
};
// The names of the first media service, and the media subtypes of the second.
constexpr tagCodecName g_atCodecs[] = {
    {"H264", eCodecH264},     {"H265", eCodecH265},  {"JPEG", eCodecMJPEG},    {"MPEG4", eCodecMPEG4},
    {"MP4V-ES", eCodecMPEG4}, {"G711", eCodecG711U}, {"PCMU", eCodecG711U},    {"PCMA", eCodecG711A},
    {"G726", eCodecG726},     {"AAC", eCodecAAC},    {"MP4A-LATM", eCodecAAC}, {"MPEG4-GENERIC", eCodecAAC},
    {"OPUS", eCodecOpus},
};

bool IsSame(std::string_view strOne, std::string_view strOther)
{
    return std::ranges::equal(strOne, strOther,
                              [](char a, char b) { return a == b || (a >= 'a' && a <= 'z' && a - 32 == b); });
}
} // namespace

uint32_t ParseWord(std::string_view strText)
{
    uint32_t dw = 0;
    const auto [pEnd, eError] = std::from_chars(strText.data(), strText.data() + strText.size(), dw);
    return eError == std::errc{} ? dw : 0;
}

uint32_t Word(pugi::xml_node tNode, std::string_view strPath)
{
    const double d = Number(tNode, strPath).value_or(0);
    return d > 0 && d < 4294967295.0 ? static_cast<uint32_t>(std::llround(d)) : 0;
}

std::optional<double> ParseNumber(std::string_view strText)
{
    double d = 0;
    const auto [pEnd, eError] = std::from_chars(strText.data(), strText.data() + strText.size(), d);
    return eError == std::errc{} && std::isfinite(d) ? std::optional(d) : std::nullopt;
}

double AttributeNumber(pugi::xml_node tNode, std::string_view strName)
{
    return ParseNumber(Attribute(tNode, strName)).value_or(0);
}

uint32_t CodecOf(std::string_view strEncoding)
{
    auto const* const pt =
        std::ranges::find_if(g_atCodecs, [&](tagCodecName const& t) { return IsSame(strEncoding, t.strName); });
    return pt == std::end(g_atCodecs) ? static_cast<uint32_t>(eCodecOther) : pt->dwCodec;
}

std::optional<tagSpan> SpanOf(pugi::xml_node tNode, std::string_view strPath)
{
    const pugi::xml_node tRange = Find(tNode, strPath);
    const auto dLeast = Number(tRange, "Min");
    const auto dMost = Number(tRange, "Max");
    return dLeast && dMost && *dLeast <= *dMost ? std::optional(tagSpan{*dLeast, *dMost}) : std::nullopt;
}

bool IsSilent(CAnswer const& tAnswer)
{
    return !tAnswer.Answered() && tAnswer.Result() != eResultNotSupported;
}

bool Offers(pugi::xml_node tNode, std::string_view strName, std::string_view strText)
{
    return std::ranges::any_of(Children(tNode, strName), [&](pugi::xml_node t) { return Text(t) == strText; });
}
} // namespace onvifclient
