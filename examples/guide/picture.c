/* A first picture: a line for each of the first 25 frames of video of an RTSP stream.

     guide_picture rtsp://host:port/path [USER]      the password in TESSARO_PASSWORD */

/* [callback] */
#include <tessaro/ClientAdapter.h>
#include <tessaro/ClientAdapterExtra.h>

#include <semaphore.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

/* On a thread of the plug-in: be quick. ptFrame and its data are the plug-in's again when we return. */
static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    (void)hStream; /* our media ID */
    if (ptFrame->dwMediaType == eMediaVideo)
    {
        printf("%s %ux%u, %u bytes%s\n", ptFrame->szCodecName, (unsigned)ptFrame->dwWidth, (unsigned)ptFrame->dwHeight,
               (unsigned)ptFrame->dwLength, ptFrame->dwFlags & eFrameKey ? ", a key frame" : "");
        sem_post((sem_t*)dwUser); /* what we gave to ClientAdapter_StreamMediaCB */
    }
    return 0;
}
/* [callback] */

/* [login] */
/* The login ID, or -1. */
static int LogIn(char const* szUrl, char const* szUser)
{
    tagUserLoginPara tLogin = {.dwPort = 0}; /* all the rest is 0 */
    char const* const szPassword = getenv("TESSARO_PASSWORD");
    int nLogin = -1, nResult;
    snprintf(tLogin.szAddress, sizeof tLogin.szAddress, "%s", szUrl);
    snprintf(tLogin.szUserName, sizeof tLogin.szUserName, "%s", szUser);
    snprintf(tLogin.szPassword, sizeof tLogin.szPassword, "%s", szPassword ? szPassword : "");
    nResult = ClientAdapter_UserLogin(&nLogin, eProtocolRTSP, &tLogin);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "logging in: %s\n", TessaroExtra_ResultText(nResult));
        return -1;
    }
    return nLogin;
}
/* [login] */

/* [stream] */
static int Watch(int nLogin)
{
    tagRealStreamPara tStream = {.dwChannel = 0, .dwStreamKind = eStreamMain};
    struct timespec tUntil;
    sem_t tFrames;
    int nStream = -1, nCame = 0;
    if (ClientAdapter_RealStreamConnect(&nStream, nLogin, &tStream) != eResultOk)
    {
        return 0;
    }
    sem_init(&tFrames, 0, 0);
    ClientAdapter_StreamMediaCB(nStream, OnFrame, (unsigned long)&tFrames);
    clock_gettime(CLOCK_REALTIME, &tUntil);
    tUntil.tv_sec += 30;
    while (nCame < 25 && sem_timedwait(&tFrames, &tUntil) == 0)
    {
        ++nCame;
    }
    ClientAdapter_RealStreamDisconnect(nStream); /* no callback runs any more: tFrames may go */
    sem_destroy(&tFrames);
    return nCame == 25;
}

int main(int nArguments, char** aszArguments)
{
    int nLogin, bCame = 0;
    ClientAdapter_Start(16); /* loads the plug-ins; at most 16 RTSP streams */
    nLogin = nArguments > 1 ? LogIn(aszArguments[1], nArguments > 2 ? aszArguments[2] : "") : -1;
    if (nLogin != -1)
    {
        bCame = Watch(nLogin);
        ClientAdapter_UserLogout(nLogin);
    }
    ClientAdapter_Stop();
    puts(bCame ? "25 pictures came." : "No picture came.");
    return bCame ? EXIT_SUCCESS : EXIT_FAILURE;
}
/* [stream] */
