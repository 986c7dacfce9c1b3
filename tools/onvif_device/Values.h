#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace onvif_device
{
/// @name Times of XML Schema. Microseconds; times since 1970 UTC.
/// @{

/// 2024-05-31T08:00:00.250Z
std::string DateTime(int64_t llTimeUs);
/// False: it is none. One without a zone counts as UTC.
bool ParseDateTime(std::string_view strText, int64_t& llTimeUs);
/// PT5.250S
std::string Duration(int64_t llUs);
/// PT1M, P1DT2H, -PT0.5S. False: it is none.
bool ParseDuration(std::string_view strText, int64_t& llUs);
/// A time, or a duration from llFromUs on.
bool ParseTimeOrDuration(std::string_view strText, int64_t llFromUs, int64_t& llTimeUs);
/// @}

bool ParseNumber(std::string_view strText, double& fValue);
bool ParseNumber(std::string_view strText, int64_t& llValue);
bool ParseBoolean(std::string_view strText, bool& bValue);

/// "Profile_" and the numbers with "_" between.
std::string Token(std::string_view strKind, std::initializer_list<uint32_t> adwNumbers);
/// The numbers of a token of this kind. False: it is none of it, or of so many numbers.
bool ParseToken(std::string_view strToken, std::string_view strKind, std::initializer_list<uint32_t*> apdwNumbers);

std::vector<std::string> Words(std::string_view strText);
} // namespace onvif_device
