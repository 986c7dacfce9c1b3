/* [decoders] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

/* Stops a channel's tour of sources and shows one source in its place. The records are incomplete types here: ptSource
   comes from code that has the device plug-in's own header, as the values of eOff do. */
int ShowSource(int nLoginID, unsigned long dwChannel, tagDecoderDynamicInformation* ptSource,
               eDecoderChannelStatus eOff)
{
    eDecoderChannelStatus eTour = eOff;
    int nResult = ClientAdapter_DecoderChannelGetLoopEnable(nLoginID, dwChannel, &eTour);
    if (nResult == eResultOk && eTour != eOff)
    {
        nResult = ClientAdapter_DecoderChannelSetLoopEnable(nLoginID, dwChannel, eOff);
    }
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_DecoderDynamicConnect(nLoginID, dwChannel, ptSource);
    }
    if (nResult != eResultOk)
    {
        fprintf(stderr, "channel %lu shows what it did before: %d\n", dwChannel, nResult);
    }
    return nResult;
}

/* Takes the source off again and lets the tour go on. */
int HideSource(int nLoginID, unsigned long dwChannel, eDecoderChannelStatus eOn)
{
    const int nResult = ClientAdapter_DecoderDynamicDisconnect(nLoginID, dwChannel, 0);
    return nResult != eResultOk ? nResult : ClientAdapter_DecoderChannelSetLoopEnable(nLoginID, dwChannel, eOn);
}
/* [decoders] */
