/* [queries] */
#include <tessaro/ClientAdapter.h>

#include <inttypes.h>
#include <stdio.h>

/* Lists what a channel recorded. */
int ListRecordings(int nLoginID, uint32_t dwChannel)
{
    tagHistoryStreamQueryFactor tQuestion = {.dwSize = sizeof tQuestion, .dwChannel = dwChannel};
    tagHistoryStreamQueryResult tAnswer = {.dwSize = sizeof tAnswer};
    int nQueryID = -1;
    int nResult = ClientAdapter_HistoryStreamQueryConnect(&nQueryID, nLoginID, &tQuestion);
    while (nResult == eResultOk)
    {
        nResult = ClientAdapter_HistoryStreamQueryNext(nQueryID, &tAnswer);
        if (nResult == eResultOk)
        {
            printf("%s: %" PRId64 " s\n", tAnswer.szFile, (tAnswer.llEndUs - tAnswer.llStartUs) / 1000000);
        }
    }
    if (nQueryID != -1) /* also a query that failed has taken an ID */
    {
        ClientAdapter_HistoryStreamQueryDisconnect(nQueryID);
    }
    if (nResult != eResultNoMoreEntries)
    {
        fprintf(stderr, "the query ended early: %d\n", nResult);
        return nResult;
    }
    return eResultOk;
}
/* [queries] */
