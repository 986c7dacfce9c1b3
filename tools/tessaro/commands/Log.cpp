// log: what a device has written down.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Session.h"
#include "tools/tessaro/Times.h"

#include <RecordTables.h>
#include <memory>

namespace tessaro
{
namespace
{
struct tagLogOptions
{
    std::string strAddress;
    std::string strFrom;
    std::string strTo;
    std::vector<std::string> astrTypes;
    std::string strUser;
    std::string strText;
    unsigned int dwLast = 0;
};

int Run(tagContext& tContext, tagLogOptions const& tOptions)
{
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("log");
    auto tFactor = Sized<tagLogQueryFactor>();
    for (std::string const& strType : tOptions.astrTypes)
    {
        tFactor.dwTypes |= static_cast<std::uint32_t>(*NamesOf<eLogType>().Find(strType));
    }
    tFactor.llStartUs = TimeOf(tOptions.strFrom);
    tFactor.llEndUs = TimeOf(tOptions.strTo);
    tOptions.strUser.copy(tFactor.szUserName, sizeof tFactor.szUserName - 1);
    tOptions.strText.copy(tFactor.szText, sizeof tFactor.szText - 1);
    CMedia tQuery(&ClientAdapter_HistoryLogQueryDisconnect);
    Check(ClientAdapter_HistoryLogQueryConnect(tQuery.Target(), tSession.Login(), &tFactor), "asking for the log");
    json tRows = json::array();
    auto t = Sized<tagLogQueryResult>();
    int nResult = eResultOk;
    while ((nResult = ClientAdapter_HistoryLogQueryNext(tQuery.Id(), &t)) == eResultOk)
    {
        tRows.push_back(ToJson(t));
        if (tOptions.dwLast != 0 && tRows.size() > tOptions.dwLast)
        {
            tRows.erase(tRows.begin());
        }
    }
    if (nResult != eResultNoMoreEntries)
    {
        throw CFailure(nResult, "reading the log");
    }
    tContext.tOut.Table(
        {{"TIME", "time"}, {"TYPE", "type"}, {"USER", "user_name"}, {"FROM", "address"}, {"TEXT", "text"}}, tRows);
    tContext.tOut.Result({{"entries", tRows}});
    return eExitDone;
}
} // namespace

void DeclareLog(CLine& tLine)
{
    auto pt = std::make_shared<tagLogOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    AddTimeOptions(tLine, pt->strFrom, pt->strTo);
    tLine.Option("--type", pt->astrTypes, "about: " + NamesOf<eLogType>().List())
        .List()
        .OneOf({"system", "configuration", "alarm", "recording", "access"})
        .Value("KIND,...");
    tLine.Option("--user", pt->strUser, "of this user").Value("NAME");
    tLine.Option("--text", pt->strText, "with this in it").Value("TEXT");
    tLine.Option("--last", pt->dwLast, "the last so many").Value("N");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
