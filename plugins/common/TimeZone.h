#pragma once

#include <cstdint>
#include <string>

namespace plugin
{
/// Whether a text is a time zone as POSIX writes it, with summer time by the rule of months or none:
/// "CET-1CEST,M3.5.0,M10.5.0/3", "UTC0".
bool IsTimeZone(std::string const& strZone);
/// How far local time is ahead of UTC at this time; 0 for a text that is no time zone.
int32_t UtcOffsetMinutes(std::string const& strZone, int64_t llTimeUs);
} // namespace plugin
