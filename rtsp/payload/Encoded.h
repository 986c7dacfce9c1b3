#pragma once

#include <string_view>
#include <vector>

namespace rtsp
{
/// Bytes as descriptions carry them. What is no such character is passed over; what comes behind the end is, too.
std::vector<unsigned char> FromBase64(std::string_view strText);
std::vector<unsigned char> FromHex(std::string_view strText);
} // namespace rtsp
