/* Opens a live stream and receives it for a few seconds, through the C API alone:

     live_view rtsp://host:port/path [--user U] [--seconds N] [--transport tcp|udp|multicast] [--out DIR]

   The password is taken from the environment (TESSARO_PASSWORD) or asked for; it is never part of the address. Prints a
   table and, with --out, leaves the video as DIR/live.h264 or DIR/live.h265. Ends with 0 when frames came and none was
   missing. */

#define _POSIX_C_SOURCE 200809L

#include "adapter/ClientAdapter.h"

#include <inttypes.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

/* What the command line asked for. */
typedef struct tagOptions
{
    char const* szAddress;
    char const* szUser;
    char const* szOut;
    double dSeconds;
    uint32_t dwTransport;
} tagOptions;

/* What came in. Written by the plug-in's thread, read by ours. */
typedef struct tagReceived
{
    pthread_mutex_t tMutex;
    pthread_cond_t tChanged;
    char const* szOut;
    FILE* pFile;
    char szCodec[16];
    uint32_t dwWidth, dwHeight;
    unsigned long nFrames, nKeyFrames, nMissing, nAudio;
    uint64_t ullBytes;
    int64_t llFirstUs, llLastUs; /* presentation times */
    uint32_t dwSequence;
    double dOpened, dFirst; /* seconds on our clock */
    unsigned long dwEvent, dwDetail;
} tagReceived;

static double Now(void)
{
    struct timespec tNow;
    clock_gettime(CLOCK_MONOTONIC, &tNow);
    return (double)tNow.tv_sec + (double)tNow.tv_nsec / 1e9;
}

/* Byte streams can be written as they come; other codecs would need a container. */
static void WriteFrame(tagReceived* ptReceived, tagStreamMediaFrame const* ptFrame)
{
    const int bByteStream = ptFrame->dwCodec == eCodecH264 || ptFrame->dwCodec == eCodecH265;
    if (!ptReceived->pFile && ptReceived->szOut && bByteStream)
    {
        char szPath[4096];
        snprintf(szPath, sizeof szPath, "%s/live.%s", ptReceived->szOut,
                 ptFrame->dwCodec == eCodecH265 ? "h265" : "h264");
        ptReceived->pFile = fopen(szPath, "wb");
    }
    if (ptReceived->pFile)
    {
        fwrite(ptFrame->pData, 1, ptFrame->dwLength, ptReceived->pFile);
    }
}

/* Every frame of the stream. dwUser is ours: the record to fill. */
static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    tagReceived* const ptReceived = (tagReceived*)dwUser;
    (void)hStream; /* our media ID; there is only one */
    pthread_mutex_lock(&ptReceived->tMutex);
    if (ptFrame->dwMediaType != eMediaVideo)
    {
        ++ptReceived->nAudio;
    }
    else
    {
        if (ptReceived->nFrames == 0)
        {
            ptReceived->dFirst = Now();
            ptReceived->llFirstUs = ptFrame->llPresentationTimeUs;
            memcpy(ptReceived->szCodec, ptFrame->szCodecName, sizeof ptReceived->szCodec);
        }
        else
        {
            ptReceived->nMissing += ptFrame->dwSequence - ptReceived->dwSequence - 1 + ptFrame->dwLostBefore;
        }
        ptReceived->dwSequence = ptFrame->dwSequence;
        ptReceived->llLastUs = ptFrame->llPresentationTimeUs;
        ptReceived->dwWidth = ptFrame->dwWidth;
        ptReceived->dwHeight = ptFrame->dwHeight;
        ++ptReceived->nFrames;
        ptReceived->nKeyFrames += (ptFrame->dwFlags & eFrameKey) != 0;
        ptReceived->ullBytes += ptFrame->dwLength;
        WriteFrame(ptReceived, ptFrame);
    }
    pthread_cond_signal(&ptReceived->tChanged);
    pthread_mutex_unlock(&ptReceived->tMutex);
    return 0;
}

/* Every change in the life of the connection. */
static int OnEvent(void* hLogin, unsigned long dwEvent, unsigned long dwDetail, unsigned long dwPauseMs,
                   unsigned long dwReconnects, unsigned long dwUser)
{
    tagReceived* const ptReceived = (tagReceived*)dwUser;
    (void)hLogin;
    (void)dwPauseMs;
    (void)dwReconnects;
    pthread_mutex_lock(&ptReceived->tMutex);
    ptReceived->dwEvent = dwEvent;
    ptReceived->dwDetail = dwDetail;
    pthread_cond_signal(&ptReceived->tChanged);
    pthread_mutex_unlock(&ptReceived->tMutex);
    return 0;
}

/* Waits until the stream ran for dSeconds, or 15 s for its first frame; a refusal ends it at once. */
static void Receive(tagReceived* ptReceived, double dSeconds)
{
    pthread_mutex_lock(&ptReceived->tMutex);
    for (;;)
    {
        const double dEnd = ptReceived->nFrames ? ptReceived->dFirst + dSeconds : ptReceived->dOpened + 15;
        const double dLeft = dEnd - Now();
        struct timespec tUntil;
        if (dLeft <= 0 || ptReceived->dwEvent == eEventRefused)
        {
            break;
        }
        clock_gettime(CLOCK_REALTIME, &tUntil);
        tUntil.tv_sec += (time_t)dLeft;
        tUntil.tv_nsec += (long)((dLeft - (double)(time_t)dLeft) * 1e9);
        tUntil.tv_sec += tUntil.tv_nsec / 1000000000;
        tUntil.tv_nsec %= 1000000000;
        pthread_cond_timedwait(&ptReceived->tChanged, &ptReceived->tMutex, &tUntil);
    }
    pthread_mutex_unlock(&ptReceived->tMutex);
}

static int Report(tagReceived const* ptReceived)
{
    const double dSeconds = (double)(ptReceived->llLastUs - ptReceived->llFirstUs) / 1e6;
    const unsigned long nIntervals = ptReceived->nFrames > 1 ? ptReceived->nFrames - 1 : 0;
    fflush(stdout); /* what went wrong is told last */
    if (ptReceived->nFrames == 0)
    {
        fprintf(stderr, "no frame came: %s (%lu)\n",
                ptReceived->dwEvent == eEventRefused ? "the device refused, with RTSP status"
                                                     : "the connection was lost or never made",
                ptReceived->dwDetail);
        return EXIT_FAILURE;
    }
    printf("codec                %s %" PRIu32 "x%" PRIu32 "\n", ptReceived->szCodec, ptReceived->dwWidth,
           ptReceived->dwHeight);
    printf("frames               %lu\n", ptReceived->nFrames);
    printf("key frames           %lu\n", ptReceived->nKeyFrames);
    printf("lost                 %lu\n", ptReceived->nMissing);
    printf("audio frames         %lu\n", ptReceived->nAudio);
    printf("bit rate             %.0f kbit/s\n", dSeconds > 0 ? (double)ptReceived->ullBytes * 8e-3 / dSeconds : 0.0);
    printf("frame rate           %.2f /s\n", dSeconds > 0 ? (double)nIntervals / dSeconds : 0.0);
    printf("time to first frame  %.0f ms\n", (ptReceived->dFirst - ptReceived->dOpened) * 1e3);
    fflush(stdout);
    if (ptReceived->nMissing)
    {
        fprintf(stderr, "%lu frames or packets went missing\n", ptReceived->nMissing);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

/* From the environment, or asked for on the terminal without showing it. */
static int GetPassword(char* szPassword, size_t nSize)
{
    char const* const szGiven = getenv("TESSARO_PASSWORD");
    struct termios tShown, tHidden;
    if (szGiven)
    {
        snprintf(szPassword, nSize, "%s", szGiven);
        return strlen(szGiven) < nSize;
    }
    if (tcgetattr(STDIN_FILENO, &tShown) != 0)
    {
        return 0;
    }
    tHidden = tShown;
    tHidden.c_lflag &= ~(tcflag_t)ECHO;
    fputs("Password: ", stderr);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &tHidden);
    const int bRead = fgets(szPassword, (int)nSize, stdin) != NULL;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &tShown);
    fputc('\n', stderr);
    szPassword[strcspn(szPassword, "\n")] = '\0';
    return bRead;
}

static int ReadOptions(int nArguments, char** aszArguments, tagOptions* ptOptions)
{
    for (int i = 1; i < nArguments; ++i)
    {
        char const* const szName = aszArguments[i];
        char const* const szValue = i + 1 < nArguments ? aszArguments[i + 1] : NULL;
        if (szName[0] != '-' && !ptOptions->szAddress)
        {
            ptOptions->szAddress = szName;
            continue;
        }
        if (!szValue)
        {
            return 0;
        }
        ++i;
        if (strcmp(szName, "--user") == 0)
        {
            ptOptions->szUser = szValue;
        }
        else if (strcmp(szName, "--seconds") == 0)
        {
            ptOptions->dSeconds = atof(szValue);
        }
        else if (strcmp(szName, "--out") == 0)
        {
            ptOptions->szOut = szValue;
        }
        else if (strcmp(szName, "--transport") == 0)
        {
            ptOptions->dwTransport = strcmp(szValue, "udp") == 0         ? eRtspUdp
                                     : strcmp(szValue, "multicast") == 0 ? eRtspMulticast
                                                                         : eRtspTcp;
        }
        else
        {
            return 0;
        }
    }
    return ptOptions->szAddress != NULL;
}

int main(int nArguments, char** aszArguments)
{
    tagOptions tOptions = {.dSeconds = 5};
    tagReceived tReceived = {.tMutex = PTHREAD_MUTEX_INITIALIZER, .tChanged = PTHREAD_COND_INITIALIZER};
    tagUserLoginPara tLogin = {.dwRtspUrlMode = 0}; /* the address is the whole URL */
    tagRealStreamPara tStream = {.dwStreamKind = eStreamMain};
    int nLogin = -1, nStream = -1, nResult;
    if (!ReadOptions(nArguments, aszArguments, &tOptions))
    {
        fputs("usage: live_view rtsp://host:port/path [--user U] [--seconds N] [--transport tcp|udp|multicast]"
              " [--out DIR]\n",
              stderr);
        return EXIT_FAILURE;
    }
    if (tOptions.szUser && !GetPassword(tLogin.szPassword, sizeof tLogin.szPassword))
    {
        fputs("a user needs a password: at most 31 characters, in TESSARO_PASSWORD or typed in\n", stderr);
        return EXIT_FAILURE;
    }
    snprintf(tLogin.szAddress, sizeof tLogin.szAddress, "%s", tOptions.szAddress);
    snprintf(tLogin.szUserName, sizeof tLogin.szUserName, "%s", tOptions.szUser ? tOptions.szUser : "");
    tStream.dwStreamPara[0] = tOptions.dwTransport;
    tReceived.szOut = tOptions.szOut;

    ClientAdapter_Start(1);
    nResult = ClientAdapter_UserLogin(&nLogin, eProtocolRTSP, &tLogin);
    if (nResult == 0)
    {
        tReceived.dOpened = Now();
        nResult = ClientAdapter_RealStreamConnect(&nStream, nLogin, &tStream);
    }
    if (nResult == 0)
    {
        ClientAdapter_SubscribeEvent(nLogin, 0, OnEvent, (unsigned long)&tReceived);
        ClientAdapter_StreamMediaCB(nStream, OnFrame, (unsigned long)&tReceived);
        Receive(&tReceived, tOptions.dSeconds);
        ClientAdapter_RealStreamDisconnect(nStream); /* no callback runs once this has returned */
    }
    if (nLogin >= 0)
    {
        ClientAdapter_UserLogout(nLogin);
    }
    ClientAdapter_Stop();
    if (tReceived.pFile)
    {
        fclose(tReceived.pFile);
    }
    if (nResult != 0)
    {
        fprintf(stderr, "the stream could not be opened: result %d\n", nResult);
        return EXIT_FAILURE;
    }
    return Report(&tReceived);
}
