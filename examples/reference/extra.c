/* [extra] */
#include "adapter/ClientAdapterExtra.h"

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
/* [extra] */
