#include "tools/tessaro/Times.h"

#include "tools/tessaro/records/Records.h"

#include <RecordTables.h>

namespace tessaro
{
void AddTimeOptions(CLI::App& tLine, std::string& strFrom, std::string& strTo)
{
    const CLI::Validator tTime(
        [](std::string& strText)
        { return ParseTime(strText) ? std::string() : "\"" + strText + "\" is no time: 2024-05-31T08:00"; },
        "TIME");
    tLine.add_option("--from", strFrom, "from this time (UTC) on")->check(tTime);
    tLine.add_option("--to", strTo, "up to this time (UTC)")->check(tTime);
}

void AddSpanOptions(CLI::App& tLine, tagSpan& tSpan)
{
    tLine.add_option("--channel", tSpan.dwChannel, "the device's channel, from 0")->type_name("N");
    tLine.add_flag("--sub", tSpan.bSub, "the sub stream");
    AddTimeOptions(tLine, tSpan.strFrom, tSpan.strTo);
    tLine.add_option("--type", tSpan.astrTypes, "why it was recorded: " + NamesOf<eHistoryStreamType>().List())
        ->delimiter(',')
        ->check(CLI::IsMember({"any", "continuous", "motion", "alarm", "manual"}))
        ->type_name("KIND,...");
}

std::int64_t TimeOf(std::string const& strText)
{
    return strText.empty() ? 0 : ParseTime(strText).value_or(0);
}

std::int64_t tagSpan::FromUs() const
{
    return TimeOf(strFrom);
}

std::int64_t tagSpan::ToUs() const
{
    return TimeOf(strTo);
}

std::uint32_t tagSpan::Types() const
{
    std::uint32_t dwTypes = 0;
    for (std::string const& strType : astrTypes)
    {
        dwTypes |= static_cast<std::uint32_t>(NamesOf<eHistoryStreamType>().Find(strType).value_or(0));
    }
    return dwTypes;
}

std::uint32_t tagSpan::Kind() const
{
    return bSub ? eStreamSub : eStreamMain;
}
} // namespace tessaro
