#pragma once

#include "plugins/device/WallView.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace device
{
/// Into a record's array: cut at a character where it is too long, with a terminator and zeros after it.
void CopyText(char* szTo, std::size_t nSize, std::string_view strFrom);
template <std::size_t nSize>
void CopyText(char (&szTo)[nSize], std::string_view strFrom)
{
    CopyText(szTo, nSize, strFrom);
}
/// A record's text, which may fill its array.
template <std::size_t nSize>
std::string Text(char const (&szFrom)[nSize])
{
    return std::string(szFrom, strnlen(szFrom, nSize));
}
std::string LowerCase(std::string_view strText);
SharedBytes ToBytes(std::string_view strText);

/// 2024-05-31T08:00:00Z, and back. False: it is no such text.
std::string UtcText(int64_t llTimeUs);
bool ParseUtc(std::string_view strText, int64_t& llTimeUs);
/// 20240531T080000Z: as a part of a file's name.
std::string CompactUtc(int64_t llTimeUs);
} // namespace device
