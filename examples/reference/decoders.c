/* [decoders] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Shows a stream in a window of a decoder wall for half a minute, whatever the window shows otherwise. */
int ShowStream(int nLoginID, unsigned long dwWindow, char const* szUrl)
{
    tagDecoderDynamicInformation tNow = {
        .dwSize = sizeof tNow, .dwSeconds = 30, .tSource = {.dwKind = eDecoderSourceAddress}};
    int nResult;
    snprintf(tNow.tSource.szAddress, sizeof tNow.tSource.szAddress, "%s", szUrl);
    nResult = ClientAdapter_DecoderDynamicConnect(nLoginID, dwWindow, &tNow);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "window %lu shows what it did before: %d\n", dwWindow, nResult);
    }
    return nResult;
}

/* Takes it off again at once: the window's tour goes on, or what it is bound to shows. */
int HideStream(int nLoginID, unsigned long dwWindow)
{
    return ClientAdapter_DecoderDynamicDisconnect(nLoginID, dwWindow, eDecoderRestore);
}
/* [decoders] */
