/* [plugins] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

/* Sets a number inside a plug-in; dwParameter is one that its makers tell of. Right after the start. */
int SetPluginNumber(eProtocolType eType, unsigned long dwParameter, uint32_t dwValue)
{
    const int nResult = ClientAdapter_VTQDealRepairIpcMsg(dwParameter, &dwValue, sizeof dwValue, eType);
    switch (nResult)
    {
    case eResultOk: /* also from a protocol that has no such parameters at all: RTSP */
        break;
    case eResultNoEntryPoint:
        fputs("the plug-in is missing, or too old for this\n", stderr);
        break;
    case eResultNoProtocol:
        fputs("the service isn't started\n", stderr);
        break;
    default:
        fprintf(stderr, "the plug-in refused: %d\n", nResult);
    }
    return nResult;
}
/* [plugins] */
