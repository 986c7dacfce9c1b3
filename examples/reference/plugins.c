/* [plugins] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Lets the simulated device at an address be down for three seconds, to see what an application makes of it. */
int RestartSimulated(eProtocolType eType, char const* szAddress)
{
    tagDeviceFault tFault = {.dwSize = sizeof tFault, .dwFault = eFaultRestart, .dwMilliseconds = 3000};
    int nResult;
    snprintf(tFault.szAddress, sizeof tFault.szAddress, "%s", szAddress);
    nResult = ClientAdapter_VTQDealRepairIpcMsg(eMiscFault, &tFault, sizeof tFault, eType);
    switch (nResult)
    {
    case eResultOk: /* also from a protocol that has no such parameters at all: RTSP */
        break;
    case eResultNoEntryPoint:
        fputs("the plug-in is missing\n", stderr);
        break;
    case eResultNoProtocol:
        fputs("the service isn't started\n", stderr);
        break;
    default:
        fprintf(stderr, "the plug-in refused, as one for real devices does: %d\n", nResult);
    }
    return nResult;
}
/* [plugins] */
