/* [ptz] */
#define _POSIX_C_SOURCE 200809L

#include "adapter/ClientAdapter.h"

#include <stdio.h>
#include <time.h>

/* Moves a camera for a moment. The commands and the speed's scale are the device protocol's. */
int Nudge(int nLoginID, unsigned long dwChannel, ePTZControlCmdCode eMove, ePTZControlCmdCode eHalt,
          unsigned long dwSpeed, long nMilliseconds)
{
    const struct timespec tMoment = {.tv_sec = nMilliseconds / 1000, .tv_nsec = nMilliseconds % 1000 * 1000000};
    int nResult = ClientAdapter_PTZControl(nLoginID, dwChannel, eMove, dwSpeed, 0, 0, 0);
    if (nResult == eResultOk)
    {
        nanosleep(&tMoment, NULL);
        nResult = ClientAdapter_PTZControl(nLoginID, dwChannel, eHalt, 0, 0, 0, 0); /* or it goes on moving */
    }
    if (nResult != eResultOk)
    {
        fprintf(stderr, "the camera doesn't obey: %d\n", nResult);
    }
    return nResult;
}

/* How much the recordings between two times take, in the device's own unit and ways to write a time. */
int RecordedSize(int nLoginID, unsigned long dwChannel, eDiskGroupType eGroup, eHistoryStreamType eType,
                 char const* szBegin, char const* szEnd, unsigned long* pdwSize)
{
    *pdwSize = 0;
    return ClientAdapter_GetDataSize(nLoginID, dwChannel, eGroup, eType, szBegin, szEnd, 0, pdwSize);
}
/* [ptz] */
