// recordings: what a channel has recorded, and a bar for each day that shows when.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Search.h"

#include <RecordTables.h>
#include <map>
#include <memory>

namespace tessaro
{
namespace
{
constexpr std::int64_t g_llDayUs = INT64_C(86400) * 1000000;
constexpr std::size_t g_nCells = 48; // half an hour each

struct tagRecordingsOptions
{
    std::string strAddress;
    tagSpan tSpan;
    bool bList = false;
};

// The letter of a reason; a stronger one hides a weaker one in the same cell.
char Letter(std::uint32_t dwType)
{
    return dwType == eHistoryAlarm ? 'A' : dwType == eHistoryMotion ? 'M' : dwType == eHistoryManual ? 'O' : '#';
}

int Strength(char ch)
{
    return static_cast<int>(std::string_view(".#OMA").find(ch));
}

using DayBars = std::map<std::int64_t, std::string>;

void Draw(DayBars& tDays, std::int64_t llStartUs, std::int64_t llEndUs, char ch)
{
    const std::int64_t llCellUs = g_llDayUs / static_cast<std::int64_t>(g_nCells);
    for (std::int64_t ll = llStartUs / llCellUs; ll * llCellUs < llEndUs; ++ll)
    {
        const std::int64_t llDay = ll / static_cast<std::int64_t>(g_nCells);
        std::string& strBar = tDays.try_emplace(llDay, g_nCells, '.').first->second;
        char& chCell = strBar[static_cast<std::size_t>(ll % static_cast<std::int64_t>(g_nCells))];
        chCell = Strength(ch) > Strength(chCell) ? ch : chCell;
    }
}

int Run(tagContext& tContext, tagRecordingsOptions const& tOptions)
{
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("recordings");
    json tRows = json::array();
    DayBars tDays;
    std::uint64_t ullBytes = 0;
    for (tagHistoryStreamMultiTypeQueryResult const& t : FindRecordings(tSession, tOptions.tSpan))
    {
        tRows.push_back(ToJson(t));
        ullBytes += t.ullLength;
        Draw(tDays, t.llStartUs, t.llEndUs, Letter(t.dwType));
    }
    COutput& tOut = tContext.tOut;
    if (tOptions.bList)
    {
        tOut.Table({{"START", "start"},
                    {"END", "end"},
                    {"TYPE", "type"},
                    {"BYTES", "length"},
                    {"CODEC", "codec"},
                    {"LOCKED", "locked"},
                    {"RECORDING", "recording"},
                    {"FILE", "file"}},
                   tRows);
    }
    json tBars = json::object();
    if (!tDays.empty())
    {
        tOut.Say("{:<12}{:<12}{:<12}{:<12}{:<12}24", "UTC", "0", "6", "12", "18");
    }
    for (auto const& [llDay, strBar] : tDays)
    {
        const std::string strDay = TimeText(llDay * g_llDayUs).substr(0, 10);
        tBars[strDay] = strBar;
        tOut.Say("{}  {}", strDay, strBar);
    }
    tOut.Say("{} recordings, {}   # continuous  M motion  A alarm  O on request", tRows.size(),
             SizeText(static_cast<double>(ullBytes)));
    tOut.Result({{"recordings", tRows}, {"days", tBars}});
    return eExitDone;
}
} // namespace

void DeclareRecordings(CLine& tLine)
{
    auto pt = std::make_shared<tagRecordingsOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    AddSpanOptions(tLine, pt->tSpan);
    tLine.Flag("--list", pt->bList, "also each recording, with the name to play, download or protect it");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
