/* [version] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Which version a device speaks, without a login; false when no plug-in could tell. The result is always 0, so an
   answer shows only in the variable: preset it to something that no device answers. */
int AskVersion(char const* szAddress, unsigned long dwPort, unsigned long dwTimeout, eNetworkSDKVersion* peVersion)
{
    const eNetworkSDKVersion eNone = -1; /* no device answers this */
    *peVersion = eNone;
    ClientAdapter_GetSDKVersion(szAddress, dwPort, dwTimeout, peVersion);
    return *peVersion != eNone;
}

/* The same with a login, which knows its protocol: this one says why not. */
int AskVersionOf(int nLoginID, eNetworkSDKVersion* peVersion)
{
    const int nResult = ClientAdapter_GetSDKVersionByHandle(nLoginID, peVersion);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "no version: %s (%d)\n", nResult == eResultUnknownLogin ? "not logged in" : "no answer",
                nResult);
    }
    return nResult;
}
/* [version] */
