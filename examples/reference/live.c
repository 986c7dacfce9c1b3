/* [live] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Opens a login's stream and has its frames and events sent to the application. The new media ID, or -1. */
int OpenLive(int nLoginID, eStreamKind eKind, StreamMediaCallback pfnFrame, DeviceEventCallback pfnEvent, void* pUser)
{
    tagRealStreamPara tPara = {.dwChannel = 0, .dwStreamKind = (uint32_t)eKind, .dwStreamPara = {eRtspTcp}};
    int nMediaID = -1;
    int nResult = ClientAdapter_RealStreamConnect(&nMediaID, nLoginID, &tPara);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "the stream could not be opened: %d\n", nResult);
        return -1;
    }

    /* Events first, to miss none; for RTSP they are those of the stream just opened. */
    nResult = ClientAdapter_SubscribeEvent(nLoginID, 0, pfnEvent, (unsigned long)pUser);
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_StreamMediaCB(nMediaID, pfnFrame, (unsigned long)pUser);
    }
    if (nResult != eResultOk)
    {
        fprintf(stderr, "the stream can't be followed: %d\n", nResult);
        ClientAdapter_RealStreamDisconnect(nMediaID);
        return -1;
    }
    return nMediaID;
}

/* Pauses or plays. A stream that pauses stays open. */
int Pause(int nMediaID, int bPause)
{
    return ClientAdapter_StreamMediaControl(nMediaID, bPause ? eTaskPause : eTaskPlay);
}

/* What pUser points at may be freed afterwards: for RTSP no callback of the stream runs any more. */
void CloseLive(int nMediaID)
{
    ClientAdapter_RealStreamDisconnect(nMediaID);
}
/* [live] */
