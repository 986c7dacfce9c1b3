/* [extra] */
#include <tessaro/ClientAdapterExtra.h>

#include <stdio.h>

/* One line about a stream, for a log. */
void PrintStatistics(int nMediaID)
{
    tagRTSPPackageInfo tInfo = {0};
    const int nResult = TessaroExtra_GetStreamStatistics(nMediaID, &tInfo);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "stream %d: %s (%d)\n", nMediaID, TessaroExtra_ResultText(nResult), nResult);
        return;
    }
    printf("stream %d: %llu frames, %llu packets lost, %lu reconnects (library %s)\n", nMediaID,
           (unsigned long long)tInfo.ullFrames, (unsigned long long)tInfo.ullLost, (unsigned long)tInfo.dwReconnects,
           TessaroExtra_Version());
}

/* What a protocol's plug-in lacks. */
void PrintMissing(eProtocolType eType)
{
    tagEntryPoint tEntry = {.dwSize = sizeof tEntry};
    unsigned int i;
    for (i = 0; TessaroExtra_GetEntryPoint(eType, i, &tEntry) == eResultOk; ++i)
    {
        if (tEntry.dwState == eEntryPointMissing)
        {
            printf("%s is missing: ClientAdapter calls of %s answer 1\n", tEntry.szSymbol, tEntry.szOperation);
        }
    }
}
/* [extra] */
