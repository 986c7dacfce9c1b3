#include "plugins/common/TimeZone.h"

#include <cctype>
#include <chrono>
#include <cstdio>
#include <optional>

namespace plugin
{
namespace
{
// Mm.w.d/time: the day w d of month m, at this second of its local time.
struct tagChange
{
    unsigned dwMonth = 0, dwWeek = 0, dwDay = 0;
    int nSecond = 7200;
};

struct tagZone
{
    int nStandardMinutes = 0;
    bool bSummer = false;
    int nSummerMinutes = 0;
    tagChange tBegin, tEnd;
};

class CParser
{
public:
    explicit CParser(std::string const& strText) : m_p(strText.c_str()) {}

    std::optional<tagZone> Zone()
    {
        tagZone tZone;
        int nSeconds = 0;
        if (!Name() || !Time(nSeconds))
        {
            return std::nullopt;
        }
        tZone.nStandardMinutes = -nSeconds / 60;
        if (*m_p == '\0')
        {
            return tZone;
        }
        tZone.bSummer = true;
        tZone.nSummerMinutes = tZone.nStandardMinutes + 60;
        if (!Name())
        {
            return std::nullopt;
        }
        if (*m_p != ',' && Time(nSeconds))
        {
            tZone.nSummerMinutes = -nSeconds / 60;
        }
        return Change(tZone.tBegin) && Change(tZone.tEnd) && *m_p == '\0' ? std::optional(tZone) : std::nullopt;
    }

private:
    bool Name()
    {
        const bool bQuoted = *m_p == '<';
        char const* const pBegin = m_p += bQuoted ? 1 : 0;
        while (bQuoted ? *m_p != '\0' && *m_p != '>' : std::isalpha(static_cast<unsigned char>(*m_p)) != 0)
        {
            ++m_p;
        }
        const bool bLong = m_p - pBegin >= 3;
        m_p += bQuoted && *m_p == '>' ? 1 : 0;
        return bLong;
    }
    bool Number(int& n)
    {
        char const* const pBegin = m_p;
        for (n = 0; std::isdigit(static_cast<unsigned char>(*m_p)) && m_p - pBegin < 4; ++m_p)
        {
            n = n * 10 + (*m_p - '0');
        }
        return m_p != pBegin;
    }
    // [+-]hh[:mm[:ss]]
    bool Time(int& nSeconds)
    {
        const int nSign = *m_p == '-' ? -1 : 1;
        m_p += *m_p == '-' || *m_p == '+' ? 1 : 0;
        int n = 0;
        if (!Number(n) || n > 24)
        {
            return false;
        }
        nSeconds = n * 3600;
        for (int nUnit = 60; nUnit > 0 && *m_p == ':'; nUnit /= 60)
        {
            ++m_p;
            if (!Number(n) || n > 59)
            {
                return false;
            }
            nSeconds += n * nUnit;
        }
        nSeconds *= nSign;
        return true;
    }
    bool Change(tagChange& tChange)
    {
        int nLength = 0;
        if (std::sscanf(m_p, ",M%2u.%1u.%1u%n", &tChange.dwMonth, &tChange.dwWeek, &tChange.dwDay, &nLength) != 3 ||
            tChange.dwMonth < 1 || tChange.dwMonth > 12 || tChange.dwWeek < 1 || tChange.dwWeek > 5 ||
            tChange.dwDay > 6)
        {
            return false;
        }
        m_p += nLength;
        return *m_p != '/' || (++m_p, Time(tChange.nSecond));
    }

    char const* m_p;
};

// When it comes in this year, seconds since 1970 on the clock that holds before it.
int64_t At(tagChange const& tChange, std::chrono::year tYear)
{
    using namespace std::chrono;
    const auto tMonth = tYear / month{tChange.dwMonth};
    const sys_days tDay = tChange.dwWeek == 5 ? sys_days{tMonth / weekday{tChange.dwDay}[last]}
                                              : sys_days{tMonth / weekday{tChange.dwDay}[tChange.dwWeek]};
    return duration_cast<seconds>(tDay.time_since_epoch()).count() + tChange.nSecond;
}
} // namespace

bool IsTimeZone(std::string const& strZone)
{
    return CParser(strZone).Zone().has_value();
}

int32_t UtcOffsetMinutes(std::string const& strZone, int64_t llTimeUs)
{
    using namespace std::chrono;
    const tagZone tZone = CParser(strZone).Zone().value_or(tagZone{});
    if (!tZone.bSummer)
    {
        return tZone.nStandardMinutes;
    }
    const int64_t llSeconds = llTimeUs / 1000000;
    const year tYear =
        year_month_day{floor<days>(sys_seconds{seconds{llSeconds + tZone.nStandardMinutes * 60}})}.year();
    const int64_t llBegin = At(tZone.tBegin, tYear) - tZone.nStandardMinutes * 60;
    const int64_t llEnd = At(tZone.tEnd, tYear) - tZone.nSummerMinutes * 60;
    const bool bNorth = llBegin < llEnd;
    const bool bBetween =
        bNorth ? llSeconds >= llBegin && llSeconds < llEnd : llSeconds >= llEnd && llSeconds < llBegin;
    return bBetween == bNorth ? tZone.nSummerMinutes : tZone.nStandardMinutes;
}
} // namespace plugin
