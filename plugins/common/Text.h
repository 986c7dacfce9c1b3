#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace plugin
{
/// Into a record's array: cut at a character where it is too long, with a terminator and zeros after it.
inline void CopyText(char* szTo, std::size_t nSize, std::string_view strFrom)
{
    std::size_t n = std::min(strFrom.size(), nSize - 1);
    while (n < strFrom.size() && n > 0 && (static_cast<unsigned char>(strFrom[n]) & 0xC0) == 0x80)
    {
        --n;
    }
    strFrom.copy(szTo, n); // also of a text that is nowhere
    std::memset(szTo + n, 0, nSize - n);
}
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
} // namespace plugin
