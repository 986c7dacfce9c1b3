/* [queries] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

/* Reads all recordings that a query finds. The records are incomplete types here: the question and the room for one
   answer come from code that has the device plug-in's own header, which also looks at each answer in pfnFound and tells
   which result, nEnd, means that there are no more. */
int ListRecordings(int nLoginID, tagHistoryStreamQueryFactor* ptQuestion, tagHistoryStreamQueryResult* ptAnswer,
                   void (*pfnFound)(tagHistoryStreamQueryResult const* ptAnswer), int nEnd)
{
    int nQueryID = -1;
    int nResult = ClientAdapter_HistoryStreamQueryConnect(&nQueryID, nLoginID, ptQuestion);
    while (nResult == eResultOk)
    {
        nResult = ClientAdapter_HistoryStreamQueryNext(nQueryID, ptAnswer);
        if (nResult == eResultOk)
        {
            pfnFound(ptAnswer);
        }
    }
    if (nQueryID != -1) /* also a query that failed has taken an ID */
    {
        ClientAdapter_HistoryStreamQueryDisconnect(nQueryID);
    }
    if (nResult != nEnd)
    {
        fprintf(stderr, "the query ended early: %d\n", nResult);
        return nResult;
    }
    return eResultOk;
}
/* [queries] */
