#include "tools/onvif_device/Values.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace onvif_device
{
namespace
{
constexpr int64_t g_llSecond = 1000000;

// Takes a number of so many digits from the front; 0 digits: as many as there are.
bool TakeNumber(std::string_view& strText, std::size_t nDigits, int64_t& llValue)
{
    const std::string_view strPart = nDigits ? strText.substr(0, nDigits) : strText;
    const auto tEnd = std::from_chars(strPart.data(), strPart.data() + strPart.size(), llValue);
    const auto nTaken = static_cast<std::size_t>(tEnd.ptr - strPart.data());
    if (tEnd.ec != std::errc() || llValue < 0 || (nDigits != 0 && nTaken != nDigits))
    {
        return false;
    }
    strText.remove_prefix(nTaken);
    return true;
}

bool Take(std::string_view& strText, char c)
{
    const bool bThere = strText.starts_with(c);
    strText.remove_prefix(bThere ? 1 : 0);
    return bThere;
}

// A fraction of a second, when there is one.
bool TakeFraction(std::string_view& strText, int64_t& llUs)
{
    llUs = 0;
    if (!Take(strText, '.'))
    {
        return true;
    }
    const auto nDigits = std::min(strText.find_first_not_of("0123456789"), strText.size());
    int64_t llUnit = g_llSecond / 10;
    for (std::size_t i = 0; i < nDigits; ++i, llUnit /= 10)
    {
        llUs += (strText[i] - '0') * llUnit;
    }
    strText.remove_prefix(nDigits);
    return nDigits != 0;
}

bool TakeZone(std::string_view& strText, int64_t& llAheadUs)
{
    llAheadUs = 0;
    if (strText.empty() || Take(strText, 'Z'))
    {
        return true;
    }
    const bool bBehind = strText.starts_with('-');
    int64_t llHours = 0;
    int64_t llMinutes = 0;
    if ((!Take(strText, '+') && !Take(strText, '-')) || !TakeNumber(strText, 2, llHours) || !Take(strText, ':') ||
        !TakeNumber(strText, 2, llMinutes))
    {
        return false;
    }
    llAheadUs = (bBehind ? -1 : 1) * (llHours * 60 + llMinutes) * 60 * g_llSecond;
    return true;
}
} // namespace

std::string DateTime(int64_t llTimeUs)
{
    using namespace std::chrono;
    const sys_time<microseconds> tTime{microseconds(llTimeUs)};
    const auto tDay = floor<days>(tTime);
    const year_month_day tDate(tDay);
    const hh_mm_ss tClock(floor<milliseconds>(tTime - tDay));
    char szText[40];
    std::snprintf(szText, sizeof szText, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(tDate.year()),
                  static_cast<unsigned>(tDate.month()), static_cast<unsigned>(tDate.day()),
                  static_cast<int>(tClock.hours().count()), static_cast<int>(tClock.minutes().count()),
                  static_cast<int>(tClock.seconds().count()), static_cast<int>(tClock.subseconds().count()));
    return szText;
}

bool ParseDateTime(std::string_view strText, int64_t& llTimeUs)
{
    using namespace std::chrono;
    int64_t llYear = 0;
    int64_t llMonth = 0;
    int64_t llDay = 0;
    int64_t llHour = 0;
    int64_t llMinute = 0;
    int64_t llSeconds = 0;
    int64_t llFractionUs = 0;
    int64_t llAheadUs = 0;
    if (!TakeNumber(strText, 4, llYear) || !Take(strText, '-') || !TakeNumber(strText, 2, llMonth) ||
        !Take(strText, '-') || !TakeNumber(strText, 2, llDay) || !Take(strText, 'T') ||
        !TakeNumber(strText, 2, llHour) || !Take(strText, ':') || !TakeNumber(strText, 2, llMinute) ||
        !Take(strText, ':') || !TakeNumber(strText, 2, llSeconds) || !TakeFraction(strText, llFractionUs) ||
        !TakeZone(strText, llAheadUs) || !strText.empty())
    {
        return false;
    }
    const year_month_day tDate{year(static_cast<int>(llYear)), month(static_cast<unsigned>(llMonth)),
                               day(static_cast<unsigned>(llDay))};
    if (!tDate.ok() || llHour > 24 || llMinute > 59 || llSeconds > 60)
    {
        return false;
    }
    const int64_t llDays = sys_days(tDate).time_since_epoch().count();
    llTimeUs =
        ((llDays * 24 + llHour) * 60 + llMinute) * 60 * g_llSecond + llSeconds * g_llSecond + llFractionUs - llAheadUs;
    return true;
}

std::string Duration(int64_t llUs)
{
    char szText[40];
    std::snprintf(szText, sizeof szText, "%sPT%lld.%03dS", llUs < 0 ? "-" : "",
                  static_cast<long long>(std::abs(llUs) / g_llSecond),
                  static_cast<int>(std::abs(llUs) % g_llSecond / 1000));
    return szText;
}

bool ParseDuration(std::string_view strText, int64_t& llUs)
{
    struct tagUnit
    {
        char cName;
        bool bTime;
        int64_t llSeconds;
    };
    constexpr tagUnit atUnits[] = {{'Y', false, 31536000}, {'M', false, 2592000}, {'D', false, 86400},
                                   {'H', true, 3600},      {'M', true, 60},       {'S', true, 1}};
    const bool bNegative = Take(strText, '-');
    if (!Take(strText, 'P') || strText.empty())
    {
        return false;
    }
    llUs = 0;
    bool bTime = false;
    std::size_t nUnit = 0;
    while (!strText.empty())
    {
        if (!bTime && Take(strText, 'T'))
        {
            bTime = true;
            if (strText.empty())
            {
                return false;
            }
        }
        int64_t llValue = 0;
        int64_t llFractionUs = 0;
        if (!TakeNumber(strText, 0, llValue) || llValue > 1000000000 || !TakeFraction(strText, llFractionUs) ||
            strText.empty())
        {
            return false;
        }
        while (nUnit < std::size(atUnits) && (atUnits[nUnit].cName != strText.front() || atUnits[nUnit].bTime != bTime))
        {
            ++nUnit;
        }
        if (nUnit == std::size(atUnits) || (llFractionUs != 0 && strText.front() != 'S'))
        {
            return false;
        }
        llUs += llValue * atUnits[nUnit].llSeconds * g_llSecond + llFractionUs;
        strText.remove_prefix(1);
    }
    llUs = bNegative ? -llUs : llUs;
    return true;
}

bool ParseTimeOrDuration(std::string_view strText, int64_t llFromUs, int64_t& llTimeUs)
{
    int64_t llUs = 0;
    if (ParseDuration(strText, llUs))
    {
        llTimeUs = llFromUs + llUs;
        return true;
    }
    return ParseDateTime(strText, llTimeUs);
}

bool ParseNumber(std::string_view strText, double& fValue)
{
    strText.remove_prefix(strText.starts_with('+') ? 1 : 0);
    const auto tEnd = std::from_chars(strText.data(), strText.data() + strText.size(), fValue);
    return tEnd.ec == std::errc() && tEnd.ptr == strText.data() + strText.size() && std::isfinite(fValue);
}

bool ParseNumber(std::string_view strText, int64_t& llValue)
{
    const auto tEnd = std::from_chars(strText.data(), strText.data() + strText.size(), llValue);
    return tEnd.ec == std::errc() && tEnd.ptr == strText.data() + strText.size();
}

bool ParseBoolean(std::string_view strText, bool& bValue)
{
    bValue = strText == "true" || strText == "1";
    return bValue || strText == "false" || strText == "0";
}

std::string Token(std::string_view strKind, std::initializer_list<uint32_t> adwNumbers)
{
    std::string strToken(strKind);
    for (const uint32_t dw : adwNumbers)
    {
        strToken += '_' + std::to_string(dw);
    }
    return strToken;
}

bool ParseToken(std::string_view strToken, std::string_view strKind, std::initializer_list<uint32_t*> apdwNumbers)
{
    if (!strToken.starts_with(strKind))
    {
        return false;
    }
    strToken.remove_prefix(strKind.size());
    for (uint32_t* const pdw : apdwNumbers)
    {
        int64_t llValue = 0;
        if (!Take(strToken, '_') || !TakeNumber(strToken, 0, llValue) || llValue > UINT32_MAX)
        {
            return false;
        }
        *pdw = static_cast<uint32_t>(llValue);
    }
    return strToken.empty();
}

std::vector<std::string> Words(std::string_view strText)
{
    std::istringstream tWords{std::string(strText)};
    std::vector<std::string> astrWords;
    for (std::string strWord; tWords >> strWord;)
    {
        astrWords.push_back(strWord);
    }
    return astrWords;
}
} // namespace onvif_device
