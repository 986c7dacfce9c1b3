/* What a program sees of an RTSP stream that is lost and comes back. Ends when that has happened.

     guide_lost rtsp://host:port/path */

#include "../tours/Tour.h"

/* What the callbacks have seen. */
typedef struct tagLife
{
    tagCounter tBack;
    int bLost;
} tagLife;

/* [events] */
/* On a thread of the plug-in, one event of a stream after the other. The words are explained at eConnectionEvent. */
static int OnEvent(void* hLogin, unsigned long dwEvent, unsigned long dwWhy, unsigned long dwPauseMs,
                   unsigned long dwReconnects, unsigned long dwUser)
{
    tagLife* const ptLife = (tagLife*)dwUser;
    (void)hLogin; /* our login ID */
    switch (dwEvent)
    {
    case eEventLive:
        printf("live, %lu times connected again\n", dwReconnects);
        if (ptLife->bLost)
        {
            Count(&ptLife->tBack);
        }
        break;
    case eEventStalled: /* show that the picture is old */
        printf("nothing has come for %lu ms\n", dwWhy);
        break;
    case eEventLost: /* nothing to do: the plug-in tries again */
        printf("lost (%s), next try in %lu ms\n", dwWhy ? strerror((int)dwWhy) : "the device ended it", dwPauseMs);
        ptLife->bLost = 1;
        break;
    case eEventRefused: /* a person must do something: 401 is the password, 404 the path */
        printf("refused with RTSP status %lu, next try in %lu ms\n", dwWhy, dwPauseMs);
        break;
    default:
        break;
    }
    fflush(stdout);
    return 0;
}
/* [events] */

/* [frames] */
static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    (void)hStream;
    (void)dwUser;
    if (ptFrame->dwFlags & eFrameDiscontinuity)
    {
        printf("a gap: frames go on at %" PRId64 " us; reset the decoder\n", ptFrame->llPresentationTimeUs);
    }
    if (ptFrame->dwLostBefore)
    {
        printf("%" PRIu32 " packets lost; parts of the picture are wrong until the next key frame\n",
               ptFrame->dwLostBefore);
    }
    return 0;
}
/* [frames] */

/* [statistics] */
static void PrintStatistics(int nStream)
{
    tagRTSPPackageInfo tInfo;
    if (TessaroExtra_GetStreamStatistics(nStream, &tInfo) == eResultOk)
    {
        printf("%" PRIu64 " frames, %" PRIu64 " packets lost, %" PRIu32 " frames dropped because we were too slow\n",
               tInfo.ullFrames, tInfo.ullLost, tInfo.dwDropped);
    }
}
/* [statistics] */

/* [open] */
static int Watch(int nLogin)
{
    tagRealStreamPara tStream = {.dwStreamKind = eStreamMain};
    tagLife tLife = {.tBack = COUNTER};
    int nStream = -1, bBack;
    if (!Worked(ClientAdapter_RealStreamConnect(&nStream, nLogin, &tStream), "opening a stream"))
    {
        return 0; /* nobody tries again here: nothing was sent yet, so it is an error of ours */
    }
    /* After the stream was opened: an RTSP login has the events of the stream that was opened last. */
    ClientAdapter_SubscribeEvent(nLogin, 0, OnEvent, (unsigned long)&tLife);
    ClientAdapter_StreamMediaCB(nStream, OnFrame, 0);
    bBack = Await(&tLife.tBack, 1, 90, "the stream's return");
    PrintStatistics(nStream);
    ClientAdapter_RealStreamDisconnect(nStream);
    return bBack;
}
/* [open] */

int main(int nArguments, char** aszArguments)
{
    tagUserLoginPara tLogin = {.dwPort = 0};
    int nLogin = -1;
    ClientAdapter_Start(16);
    snprintf(tLogin.szAddress, sizeof tLogin.szAddress, "%s", nArguments > 1 ? aszArguments[1] : "");
    return EndTour(nLogin,
                   Worked(ClientAdapter_UserLogin(&nLogin, eProtocolRTSP, &tLogin), "logging in") && Watch(nLogin));
}
