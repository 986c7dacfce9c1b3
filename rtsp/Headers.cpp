#include "rtsp/Headers.h"

#include "rtsp/Text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <limits>

namespace rtsp
{
namespace
{
constexpr std::int64_t g_llSecond = 1000000;                                       // microseconds
constexpr std::int64_t g_llLastSecond = std::numeric_limits<std::uint32_t>::max(); // of normal play time

// "5000-5001", or the first of both.
std::optional<tagPair> ParsePair(std::string_view strText, unsigned nMost)
{
    const auto wRtp = Number<std::uint16_t>(Trim(CutFirst(strText, '-')));
    const auto wRtcp = strText.empty() ? wRtp : Number<std::uint16_t>(Trim(strText));
    if (!wRtp || !wRtcp || *wRtp > nMost || *wRtcp > nMost)
    {
        return std::nullopt;
    }
    tagPair tPair{*wRtp, *wRtcp};
    if (strText.empty())
    {
        tPair.wRtcp = static_cast<std::uint16_t>(std::min<unsigned>(*wRtp + 1u, nMost));
    }
    return tPair;
}

// A fraction of a second, without its point: "5" is 500 ms.
std::optional<std::int64_t> ParseFraction(std::string_view strDigits)
{
    std::int64_t llUs = 0;
    std::int64_t llUnit = g_llSecond;
    for (const char c : strDigits)
    {
        if (!IsDigit(c))
        {
            return std::nullopt;
        }
        llUnit /= 10;
        llUs += llUnit * (c - '0');
    }
    return llUs;
}

// "12.5", "1:02:03.5".
std::optional<std::int64_t> ParseNpt(std::string_view strText)
{
    std::string_view strWhole = CutFirst(strText, '.');
    const auto llFraction = ParseFraction(strText);
    std::int64_t llSeconds = 0;
    int nParts = 0;
    do
    {
        const auto dwPart = Number<std::uint32_t>(CutFirst(strWhole, ':'));
        if (!dwPart || ++nParts > 3)
        {
            return std::nullopt;
        }
        llSeconds = llSeconds * 60 + *dwPart;
    } while (!strWhole.empty());
    if (!llFraction || llSeconds > g_llLastSecond)
    {
        return std::nullopt;
    }
    return llSeconds * g_llSecond + *llFraction;
}

// "20240229T120000.5Z".
std::optional<std::int64_t> ParseClock(std::string_view strText)
{
    using namespace std::chrono;
    if (strText.ends_with('Z') || strText.ends_with('z'))
    {
        strText.remove_suffix(1);
    }
    const std::string_view strWhole = CutFirst(strText, '.');
    const auto llFraction = ParseFraction(strText);
    if (strWhole.size() != 15 || LowerCase(strWhole[8]) != 't' || !llFraction)
    {
        return std::nullopt;
    }
    const auto nYear = Number<std::uint16_t>(strWhole.substr(0, 4));
    const auto nMonth = Number<std::uint16_t>(strWhole.substr(4, 2));
    const auto nDay = Number<std::uint16_t>(strWhole.substr(6, 2));
    const auto nHour = Number<std::uint16_t>(strWhole.substr(9, 2));
    const auto nMinute = Number<std::uint16_t>(strWhole.substr(11, 2));
    const auto nSecond = Number<std::uint16_t>(strWhole.substr(13, 2));
    if (!nYear || !nMonth || !nDay || !nHour || !nMinute || !nSecond || *nHour > 23 || *nMinute > 59 || *nSecond > 60)
    {
        return std::nullopt;
    }
    const year_month_day tDate{year(*nYear), month(*nMonth), day(*nDay)};
    if (!tDate.ok())
    {
        return std::nullopt;
    }
    const auto tTime = sys_days(tDate) + hours(*nHour) + minutes(*nMinute) + seconds(std::min<int>(*nSecond, 59));
    return tTime.time_since_epoch().count() * g_llSecond + *llFraction;
}

std::string NptText(std::int64_t llUs)
{
    char szText[32];
    std::snprintf(szText, sizeof szText, "%lld.%03d", static_cast<long long>(llUs / g_llSecond),
                  static_cast<int>(llUs % g_llSecond / 1000));
    return szText;
}

std::string ClockText(std::int64_t llUs)
{
    using namespace std::chrono;
    const sys_time<milliseconds> tTime(floor<milliseconds>(microseconds(llUs)));
    const auto tDay = floor<days>(tTime);
    const year_month_day tDate(tDay);
    const hh_mm_ss tOfDay(tTime - tDay);
    char szText[64];
    std::snprintf(szText, sizeof szText, "%04d%02u%02uT%02d%02d%02d.%03dZ", static_cast<int>(tDate.year()),
                  static_cast<unsigned>(tDate.month()), static_cast<unsigned>(tDate.day()),
                  static_cast<int>(tOfDay.hours().count()), static_cast<int>(tOfDay.minutes().count()),
                  static_cast<int>(tOfDay.seconds().count()), static_cast<int>(tOfDay.subseconds().count()));
    return szText;
}
} // namespace

std::optional<tagTransport> ParseTransport(std::string_view strValue)
{
    strValue = Trim(CutFirst(strValue, ','));
    const std::string strProtocol = Upper(Trim(CutFirst(strValue, ';')));
    if (!strProtocol.starts_with("RTP/"))
    {
        return std::nullopt;
    }
    tagTransport tTransport;
    tTransport.bTcp = strProtocol.ends_with("/TCP");
    while (!strValue.empty())
    {
        const tagParameter tPart = SplitParameter(CutFirst(strValue, ';'));
        const std::string strName = Lower(tPart.strName);
        if (strName == "multicast")
        {
            tTransport.bMulticast = true;
        }
        else if (strName == "interleaved")
        {
            tTransport.tChannels = ParsePair(tPart.strValue, 255);
            tTransport.bTcp |= tTransport.tChannels.has_value();
        }
        else if (strName == "server_port")
        {
            tTransport.tServerPorts = ParsePair(tPart.strValue, 65535);
        }
        else if (strName == "client_port")
        {
            tTransport.tClientPorts = ParsePair(tPart.strValue, 65535);
        }
        else if (strName == "port")
        {
            tTransport.tGroupPorts = ParsePair(tPart.strValue, 65535);
        }
        else if (strName == "source")
        {
            tTransport.strSource = tPart.strValue;
        }
        else if (strName == "destination")
        {
            tTransport.strDestination = tPart.strValue;
        }
        else if (strName == "ttl")
        {
            tTransport.nTimeToLive = Number<std::uint8_t>(tPart.strValue).value_or(0);
        }
        else if (strName == "ssrc")
        {
            tTransport.dwSource = Number<std::uint32_t>(tPart.strValue, 16);
        }
    }
    return tTransport;
}

tagSession ParseSession(std::string_view strValue)
{
    tagSession tSession;
    tSession.strId = Trim(CutFirst(strValue, ';'));
    while (!strValue.empty())
    {
        const tagParameter tPart = SplitParameter(CutFirst(strValue, ';'));
        const auto nSeconds =
            Number<std::uint16_t>(tPart.strValue.substr(0, tPart.strValue.find_first_not_of("0123456789")));
        if (EqualsInAnyCase(tPart.strName, "timeout") && nSeconds && *nSeconds > 0)
        {
            tSession.nTimeOut = *nSeconds;
        }
    }
    return tSession;
}

std::vector<tagRtpInfo> ParseRtpInfo(std::string_view strValue)
{
    std::vector<tagRtpInfo> atTracks;
    std::string_view strRest = Trim(strValue);
    while (!strRest.empty())
    {
        // A track goes up to the comma after which the next one begins.
        std::size_t nEnd = strRest.find(',');
        while (nEnd != std::string_view::npos && !BeginsInAnyCase(Trim(strRest.substr(nEnd + 1)), "url"))
        {
            nEnd = strRest.find(',', nEnd + 1);
        }
        nEnd = std::min(nEnd, strRest.size());
        std::string_view strTrack = strRest.substr(0, nEnd);
        strRest.remove_prefix(std::min(nEnd + 1, strRest.size()));
        // What isn't a known parameter belongs to the URL in front of it.
        tagRtpInfo tTrack;
        for (bool bKnown = true; bKnown;)
        {
            const std::size_t nPart = strTrack.rfind(';');
            if (nPart == std::string_view::npos)
            {
                break;
            }
            const tagParameter tPart = SplitParameter(strTrack.substr(nPart + 1));
            bKnown = true;
            if (EqualsInAnyCase(tPart.strName, "seq"))
            {
                tTrack.wSequence = Number<std::uint16_t>(tPart.strValue);
            }
            else if (EqualsInAnyCase(tPart.strName, "rtptime"))
            {
                tTrack.dwStamp = Number<std::uint32_t>(tPart.strValue);
            }
            else
            {
                bKnown = tPart.strName.empty() || EqualsInAnyCase(tPart.strName, "ssrc");
            }
            strTrack = bKnown ? strTrack.substr(0, nPart) : strTrack;
        }
        const tagParameter tUrl = SplitParameter(strTrack);
        if (EqualsInAnyCase(tUrl.strName, "url") && !tUrl.strValue.empty())
        {
            tTrack.strUrl = tUrl.strValue;
            atTracks.push_back(std::move(tTrack));
        }
    }
    return atTracks;
}

std::optional<tagRange> ParseRange(std::string_view strValue)
{
    strValue = Trim(CutFirst(strValue, ';'));
    const tagParameter tPart = SplitParameter(strValue);
    tagRange tRange;
    tRange.bClock = EqualsInAnyCase(tPart.strName, "clock");
    if (!tRange.bClock && !EqualsInAnyCase(tPart.strName, "npt"))
    {
        return std::nullopt;
    }
    std::string_view strEnd = tPart.strValue;
    const std::string_view strBegin = Trim(CutFirst(strEnd, '-'));
    strEnd = Trim(strEnd);
    const auto Parse = tRange.bClock ? &ParseClock : &ParseNpt;
    tRange.bNow = !tRange.bClock && EqualsInAnyCase(strBegin, "now");
    if (!tRange.bNow && !strBegin.empty())
    {
        tRange.llBeginUs = Parse(strBegin);
    }
    if (!strEnd.empty())
    {
        tRange.llEndUs = Parse(strEnd);
    }
    const bool bBegin = tRange.bNow || tRange.llBeginUs;
    if ((!bBegin && !strBegin.empty()) || (!tRange.llEndUs && !strEnd.empty()) || (!bBegin && !tRange.llEndUs))
    {
        return std::nullopt;
    }
    return tRange;
}

std::string RangeText(tagRange const& tRange)
{
    const auto Text = tRange.bClock ? &ClockText : &NptText;
    std::string strText = tRange.bClock ? "clock=" : "npt=";
    if (tRange.bNow)
    {
        strText += "now";
    }
    else if (tRange.llBeginUs)
    {
        strText += Text(*tRange.llBeginUs);
    }
    strText += '-';
    return tRange.llEndUs ? strText + Text(*tRange.llEndUs) : strText;
}

bool HasWord(std::string_view strList, std::string_view strWord)
{
    while (!strList.empty())
    {
        if (EqualsInAnyCase(Trim(CutFirst(strList, ',')), strWord))
        {
            return true;
        }
    }
    return false;
}
} // namespace rtsp
