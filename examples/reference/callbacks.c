/* [callbacks] */
#include <tessaro/ClientAdapter.h>

#include <stdint.h>
#include <stdio.h>

/* What frames and events are written into; it must live until the stream is closed, and is whole only then. */
typedef struct tagTally
{
    unsigned long dwKeyFrames, dwLost;
    int bLive;
} tagTally;

/* On the plug-in's thread, which waits: be quick, and copy what is to be kept. */
static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    tagTally* const ptTally = (tagTally*)dwUser;
    ptTally->dwKeyFrames += (ptFrame->dwFlags & eFrameKey) != 0;
    ptTally->dwLost += ptFrame->dwLostBefore;
    (void)hStream; /* our media ID: (int)(intptr_t)hStream */
    return 0;
}

static int OnEvent(void* hLogin, unsigned long dwEvent, unsigned long dwReason, unsigned long dwRetryMs,
                   unsigned long dwReconnects, unsigned long dwUser)
{
    tagTally* const ptTally = (tagTally*)dwUser;
    ptTally->bLive = dwEvent == eEventLive;
    if (dwEvent == eEventRefused)
    {
        printf("login %d: RTSP status %lu, next try in %lu ms\n", (int)(intptr_t)hLogin, dwReason, dwRetryMs);
    }
    (void)dwReconnects;
    return 0;
}

int Follow(int nLoginID, int nMediaID, tagTally* ptTally)
{
    const int nResult = ClientAdapter_SubscribeEvent(nLoginID, 0, OnEvent, (unsigned long)ptTally);
    return nResult != eResultOk ? nResult : ClientAdapter_StreamMediaCB(nMediaID, OnFrame, (unsigned long)ptTally);
}
/* [callbacks] */
