#include "plugins/device/Text.h"

#include <algorithm>
#include <ctime>

namespace device
{
namespace
{
std::string Format(int64_t llTimeUs, char const* szFormat)
{
    const auto nSeconds = static_cast<std::time_t>(llTimeUs / 1000000);
    std::tm tParts{};
    gmtime_r(&nSeconds, &tParts);
    char szText[40];
    return std::string(szText, std::strftime(szText, sizeof szText, szFormat, &tParts));
}
} // namespace

std::string LowerCase(std::string_view strText)
{
    std::string strLower(strText);
    std::ranges::transform(strLower, strLower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return strLower;
}

SharedBytes ToBytes(std::string_view strText)
{
    return std::make_shared<std::vector<unsigned char> const>(strText.begin(), strText.end());
}

std::string UtcText(int64_t llTimeUs)
{
    return Format(llTimeUs, "%Y-%m-%dT%H:%M:%SZ");
}

std::string CompactUtc(int64_t llTimeUs)
{
    return Format(llTimeUs, "%Y%m%dT%H%M%SZ");
}

bool ParseUtc(std::string_view strText, int64_t& llTimeUs)
{
    const std::string strWhole(strText);
    std::tm tParts{};
    char const* const pEnd = strptime(strWhole.c_str(), "%Y-%m-%dT%H:%M:%S", &tParts);
    if (!pEnd || std::strcmp(pEnd, "Z") != 0)
    {
        return false;
    }
    llTimeUs = static_cast<int64_t>(timegm(&tParts)) * 1000000;
    return true;
}
} // namespace device
