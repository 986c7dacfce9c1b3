/* [service] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* An application's frame: everything else happens inside. */
int RunService(unsigned int dwStreams, int (*pfnApplication)(void))
{
    int nResult;
    ClientAdapter_Start(dwStreams); /* always 0: what a missing plug-in can't do answers 1 later */

    nResult = pfnApplication(); /* logs in, opens, closes, logs out */
    if (nResult != eResultOk)
    {
        fprintf(stderr, "the application ended with %d\n", nResult);
    }

    ClientAdapter_Stop(); /* no other call may be under way, on any thread */
    return nResult;
}
/* [service] */
