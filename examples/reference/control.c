/* [control] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Changes one value of a camera's picture: reads the record, changes it, writes it back. */
int SetBrightness(int nLoginID, int nChannel, uint32_t dwPercent)
{
    tagCameraPicture tPicture = {.dwSize = sizeof tPicture};
    int nResult = ClientAdapter_GetIpcPara(nLoginID, nChannel, eCameraPicture, &tPicture, sizeof tPicture);
    if (nResult == eResultOk && tPicture.dwBrightness != dwPercent)
    {
        tPicture.dwBrightness = dwPercent;
        nResult = ClientAdapter_SetIpcPara(nLoginID, nChannel, eCameraPicture, &tPicture, sizeof tPicture);
    }
    if (nResult != eResultOk)
    {
        fprintf(stderr, "brightness: %s (%d)\n", nResult == eResultUnknownLogin ? "not logged in" : "refused", nResult);
    }
    return nResult;
}

/* Restarts a device. Logins and streams come back by themselves, so nothing has to be closed. */
int Restart(int nLoginID)
{
    return ClientAdapter_DeviceControl(nLoginID, eDeviceRestart);
}
/* [control] */
