/* [playback] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

/* Closes what HistoryStreamCreate took, whether it succeeded or not; -1 is nothing to close. */
void ClosePlayback(int nMediaID)
{
    if (nMediaID != -1)
    {
        ClientAdapter_HistoryStreamDestroy(nMediaID);
    }
}

/* Plays a recording from a position on. The records are incomplete types here: ptPara, which names the recording, and
   ptFrom come from code that has the device plug-in's own header, as eSet does. The new media ID, or -1. */
int Play(int nLoginID, tagHistoryStreamPara* ptPara, eOperationType eSet, tagTimeInfo* ptFrom,
         StreamMediaCallback pfnFrame, void* pUser)
{
    int nMediaID = -1;
    int nResult = ClientAdapter_HistoryStreamCreate(&nMediaID, nLoginID, ptPara, 0);
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_HistoryStreamCB(nMediaID, pfnFrame, (unsigned long)pUser);
    }
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_HistoryStreamPosition(nMediaID, eSet, ptFrom);
    }
    if (nResult != eResultOk)
    {
        fprintf(stderr, "playback: %d\n", nResult);
        ClosePlayback(nMediaID);
        return -1;
    }
    return nMediaID;
}
/* [playback] */
