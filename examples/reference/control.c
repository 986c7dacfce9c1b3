/* [control] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

/* Writes a camera parameter, unless it is set that way already. dwParameter and its record are the device protocol's;
   this one is a number. */
int SetNumber(int nLoginID, int nChannel, unsigned long dwParameter, uint32_t dwWanted)
{
    uint32_t dwValue = 0;
    int nResult = ClientAdapter_GetIpcPara(nLoginID, nChannel, dwParameter, &dwValue, sizeof dwValue);
    if (nResult == eResultOk && dwValue != dwWanted)
    {
        nResult = ClientAdapter_SetIpcPara(nLoginID, nChannel, dwParameter, &dwWanted, sizeof dwWanted);
    }
    if (nResult != eResultOk)
    {
        fprintf(stderr, "parameter %lu: %s (%d)\n", dwParameter,
                nResult == eResultUnknownLogin ? "not logged in" : "refused", nResult);
    }
    return nResult;
}

/* eRestart: the device protocol's code for a restart. Close the login's streams before. */
int Restart(int nLoginID, eRemoteDeviceControl eRestart)
{
    const int nResult = ClientAdapter_DeviceControl(nLoginID, eRestart);
    if (nResult == eResultOk && ClientAdapter_UserLogout(nLoginID) != eResultOk)
    {
        fputs("the device is gone already; the login ID stays taken until a logout succeeds\n", stderr);
    }
    return nResult;
}
/* [control] */
