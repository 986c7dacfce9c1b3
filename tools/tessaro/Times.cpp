#include "tools/tessaro/Times.h"

#include "tools/tessaro/records/Records.h"

#include <RecordTables.h>

namespace tessaro
{
void AddTimeOptions(CLine& tLine, std::string& strFrom, std::string& strTo)
{
    const auto Check = [](std::string const& strText)
    { return ParseTime(strText) ? "" : "\"" + strText + "\" is no time: 2024-05-31T08:00"; };
    tLine.Option("--from", strFrom, "from this time (UTC) on").Checked("TIME", Check);
    tLine.Option("--to", strTo, "up to this time (UTC)").Checked("TIME", Check);
}

void AddSpanOptions(CLine& tLine, tagSpan& tSpan)
{
    tLine.Option("--channel", tSpan.dwChannel, "the device's channel, from 0").Value("N");
    tLine.Flag("--sub", tSpan.bSub, "the sub stream");
    AddTimeOptions(tLine, tSpan.strFrom, tSpan.strTo);
    tLine.Option("--type", tSpan.astrTypes, "why it was recorded: " + NamesOf<eHistoryStreamType>().List())
        .List()
        .OneOf({"any", "continuous", "motion", "alarm", "manual"})
        .Value("KIND,...");
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
