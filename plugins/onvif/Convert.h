#pragma once

#include "onvif/Soap.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// From a device's words to those of the interface, and back.
namespace onvifclient
{
constexpr uint32_t g_dwWhole = 10000; ///< places and shares are ten-thousandths

/// A number without sign; 0: it isn't there, or is no such number.
uint32_t Word(pugi::xml_node tNode, std::string_view strPath);
uint32_t ParseWord(std::string_view strText);
/// Nothing: it is no number.
std::optional<double> ParseNumber(std::string_view strText);
/// 0: it isn't there, or is no number.
double AttributeNumber(pugi::xml_node tNode, std::string_view strName);

/// eMediaCodec of an encoding's name, in either media service; eCodecOther: another one.
uint32_t CodecOf(std::string_view strEncoding);

/// A device's range of a value.
struct tagSpan
{
    double dLeast = 0;
    double dMost = 0;

    bool Holds(double d) const { return d >= dLeast && d <= dMost; }
    /// Where a value stands in it, in parts of nWhole: 0 at its begin.
    int64_t Share(double d, int64_t nWhole) const
    {
        const double dPart = dMost > dLeast ? (d - dLeast) / (dMost - dLeast) : 0;
        return std::llround(std::clamp(dPart, 0.0, 1.0) * static_cast<double>(nWhole));
    }
    double At(int64_t nShare, int64_t nWhole) const
    {
        return dLeast + (dMost - dLeast) * static_cast<double>(nShare) / static_cast<double>(nWhole);
    }
    uint32_t Percent(double d) const { return static_cast<uint32_t>(Share(d, 100)); }
    double AtPercent(uint32_t dwPercent) const { return At(dwPercent, 100); }
};
/// Of an element with Min and Max; nothing: it isn't there, or is no range.
std::optional<tagSpan> SpanOf(pugi::xml_node tNode, std::string_view strPath = {});

/// Whether one of the elements of this name has this text.
bool Offers(pugi::xml_node tNode, std::string_view strName, std::string_view strText);

/// Whether nobody has answered. That the device is known to have no such call counts as an answer.
bool IsSilent(onvif::CAnswer const& tAnswer);
} // namespace onvifclient
