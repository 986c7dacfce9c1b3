/* [ptz] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Turns a camera to the left at half speed for a moment. It stops by itself, also when nothing more of us arrives. */
int Nudge(int nLoginID, unsigned long dwChannel, unsigned long dwMilliseconds)
{
    const int nResult =
        ClientAdapter_PTZControl(nLoginID, dwChannel, ePTZMove, TESSARO_SIGNED(-5000), 0, 0, dwMilliseconds);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "the camera doesn't obey: %d\n", nResult);
    }
    return nResult;
}

/* How many mebibytes all channels recorded between two times. */
int RecordedSize(int nLoginID, char const* szBegin, char const* szEnd, unsigned long* pdwMebibytes)
{
    *pdwMebibytes = 0;
    return ClientAdapter_GetDataSize(nLoginID, TESSARO_ALL, eDiskGroupAll, eHistoryAny, szBegin, szEnd, 0,
                                     pdwMebibytes);
}
/* [ptz] */
