#include "tools/tessaro/Search.h"

#include "tools/tessaro/Failure.h"

namespace tessaro
{
std::vector<tagHistoryStreamMultiTypeQueryResult> FindRecordings(CSession const& tSession, tagSpan const& tSpan,
                                                                 std::string const& strFile)
{
    auto tFactor = Sized<tagHistoryStreamMultiTypeQueryFactor>();
    tFactor.dwTypes = tSpan.Types();
    tFactor.ullChannels = strFile.empty() ? std::uint64_t{1} << (tSpan.dwChannel & 63) : 0;
    tFactor.dwStreamKind = tSpan.Kind();
    tFactor.llStartUs = tSpan.FromUs();
    tFactor.llEndUs = tSpan.ToUs();
    CMedia tQuery(&ClientAdapter_HistoryStreamQueryDisconnect);
    Check(ClientAdapter_HistoryStreamMultiTypeQueryConnect(tQuery.Target(), tSession.Login(), &tFactor),
          "searching for recordings");
    std::vector<tagHistoryStreamMultiTypeQueryResult> atFound;
    auto t = Sized<tagHistoryStreamMultiTypeQueryResult>();
    int nResult = eResultOk;
    while ((nResult = ClientAdapter_HistoryStreamMultiTypeQueryNext(tQuery.Id(), &t)) == eResultOk)
    {
        if (strFile.empty() || strFile == Text(t.szFile))
        {
            atFound.push_back(t);
        }
    }
    if (nResult != eResultNoMoreEntries)
    {
        throw CFailure(nResult, "reading the recordings found");
    }
    return atFound;
}
} // namespace tessaro
