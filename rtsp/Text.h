#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace rtsp
{
/// Capitals of ASCII only, whatever the locale.
constexpr char LowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char UpperCase(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}
constexpr bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}
constexpr bool IsControl(char c)
{
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

std::string Lower(std::string_view strText);
std::string Upper(std::string_view strText);
bool EqualsInAnyCase(std::string_view strOne, std::string_view strOther);
bool BeginsInAnyCase(std::string_view strText, std::string_view strBeginning);

/// Without blanks, tabs and line ends around it.
std::string_view Trim(std::string_view strText);
/// Cuts off what comes before the first separator, the separator too, and returns it. Without one: everything.
std::string_view CutFirst(std::string_view& strRest, char cSeparator);
/// "name=value" in its two parts, both without blanks around them; a value in quotes loses them.
struct tagParameter
{
    std::string_view strName;
    std::string_view strValue;
};
tagParameter SplitParameter(std::string_view strText);

/// The number that the text is, without anything around it. Nothing: it is none, or doesn't fit.
template <class T>
std::optional<T> Number(std::string_view strText, int nBase = 10)
{
    T nNumber{};
    char const* const pEnd = strText.data() + strText.size();
    const auto tResult = std::from_chars(strText.data(), pEnd, nNumber, nBase);
    if (tResult.ec != std::errc() || tResult.ptr != pEnd)
    {
        return std::nullopt;
    }
    return nNumber;
}
} // namespace rtsp
