/* [playback] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Closes what HistoryStreamCreate took, whether it succeeded or not; -1 is nothing to close. */
void ClosePlayback(int nMediaID)
{
    if (nMediaID != -1)
    {
        ClientAdapter_HistoryStreamDestroy(nMediaID);
    }
}

/* Plays what a channel recorded from a time on (microseconds since 1970 UTC), at double speed. The new media ID, or
   -1. */
int Play(int nLoginID, uint32_t dwChannel, int64_t llFromUs, StreamMediaCallback pfnFrame, void* pUser)
{
    tagHistoryStreamPara tPara = {.dwSize = sizeof tPara, .dwChannel = dwChannel, .llStartUs = llFromUs};
    int nMediaID = -1;
    int nResult = ClientAdapter_HistoryStreamCreate(&nMediaID, nLoginID, &tPara, 0);
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_HistoryStreamSetSpeed(nMediaID, eSpeedNormal * 2);
    }
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_HistoryStreamCB(nMediaID, pfnFrame, (unsigned long)pUser);
    }
    if (nResult != eResultOk)
    {
        fprintf(stderr, "playback: %d\n", nResult);
        ClosePlayback(nMediaID);
        return -1;
    }
    return nMediaID;
}

/* Goes to another time of what is played. */
int Seek(int nMediaID, int64_t llToUs)
{
    tagTimeInfo tTime = {.dwSize = sizeof tTime, .llTimeUs = llToUs};
    return ClientAdapter_HistoryStreamPosition(nMediaID, eOperationSet, &tTime);
}
/* [playback] */
