/* Opens a live stream and receives it for a few seconds, through the C API alone; --help tells how it is used.

   The password is taken from the environment (TESSARO_PASSWORD) or asked for on the terminal; it is never an argument
   and never part of the address. */

#define _POSIX_C_SOURCE 200809L

#include <tessaro/ClientAdapter.h>

#include <errno.h>
#include <fcntl.h>
#include <inttypes.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

static char const g_szHelp[] =
    "usage: live_view rtsp://host[:port]/path [options]\n"
    "\n"
    "  --user U             user name; the password comes from TESSARO_PASSWORD or is asked for\n"
    "  --seconds N          receive for so long after the first frame (5)\n"
    "  --transport T        tcp (the default), udp, multicast, or automatic: udp, and tcp if nothing comes\n"
    "  --check-certificate  at rtsps://: refuse a device whose certificate this system doesn't trust\n"
    "  --out DIR            write the video there: live.h264, live.h265 or live.mjpeg\n"
    "  --help               this text\n"
    "\n"
    "Ctrl-C ends it earlier, with the table of what came so far.\n"
    "\n"
    "Exit code: 0 frames came, and none was missing\n"
    "           1 no frame came, or the file could not be written; the last line says why\n"
    "           2 the command line is wrong; nothing was tried\n"
    "           3 frames came, but some were missing or the connection broke\n";

enum
{
    eExitFine = 0,
    eExitFailed = 1,
    eExitUsage = 2,
    eExitGaps = 3,
    ePatience = 15, /* seconds, for the first frame */
};

/* What the command line asked for. */
typedef struct tagOptions
{
    char const* szAddress;
    char const* szUser;
    char const* szOut;
    double dSeconds;
    uint32_t dwTransport;
    uint32_t dwCertificate;
} tagOptions;

/* What came of one kind of media. */
typedef struct tagTrack
{
    char szCodec[16];
    unsigned long nFrames;
    uint64_t ullBytes;
    int64_t llFirstUs, llLastUs; /* presentation times */
} tagTrack;

/* What came in. Written by the plug-in's threads, read by ours. */
typedef struct tagReceived
{
    pthread_mutex_t tMutex;
    char const* szOut;
    FILE* pFile;
    char szPath[4096];
    int nFileError; /* errno of what went wrong with the file, or 0 */
    tagTrack tVideo, tAudio;
    uint32_t dwWidth, dwHeight, dwSampleRate, dwChannels;
    unsigned long nKeyFrames, nMissing, nReconnects;
    uint32_t dwSequence;
    int bByteStream;        /* the video can be written as it comes */
    double dOpened, dFirst; /* seconds on our clock */
    unsigned long dwEvent, dwDetail;
} tagReceived;

static int g_anWake[2]; /* a pipe: something happened that the main thread waits for */
static volatile sig_atomic_t g_bStopped;

static void Wake(void)
{
    const int nError = errno; /* a signal handler must leave it as it was */
    (void)!write(g_anWake[1], "", 1);
    errno = nError;
}

static void OnSignal(int nSignal)
{
    (void)nSignal;
    g_bStopped = 1;
    Wake();
}

static double Now(void)
{
    struct timespec tNow;
    clock_gettime(CLOCK_MONOTONIC, &tNow);
    return (double)tNow.tv_sec + (double)tNow.tv_nsec / 1e9;
}

/* --- callbacks --------------------------------------------------------------------------------------------------- */

/* Byte streams can be written as they come; other codecs would need a container. */
static void WriteFrame(tagReceived* ptReceived, tagStreamMediaFrame const* ptFrame)
{
    char const* const szKind = ptFrame->dwCodec == eCodecH264    ? "h264"
                               : ptFrame->dwCodec == eCodecH265  ? "h265"
                               : ptFrame->dwCodec == eCodecMJPEG ? "mjpeg"
                                                                 : NULL;
    ptReceived->bByteStream = szKind != NULL;
    if (!szKind || !ptReceived->szOut || ptReceived->nFileError)
    {
        return;
    }
    if (!ptReceived->pFile)
    {
        snprintf(ptReceived->szPath, sizeof ptReceived->szPath, "%s/live.%s", ptReceived->szOut, szKind);
        ptReceived->pFile = fopen(ptReceived->szPath, "wb");
    }
    if (!ptReceived->pFile || fwrite(ptFrame->pData, 1, ptFrame->dwLength, ptReceived->pFile) != ptFrame->dwLength)
    {
        ptReceived->nFileError = errno;
    }
}

static void TakeVideo(tagReceived* ptReceived, tagStreamMediaFrame const* ptFrame)
{
    if (ptReceived->tVideo.nFrames > 1)
    {
        ptReceived->nMissing += ptFrame->dwSequence - ptReceived->dwSequence - 1;
    }
    ptReceived->dwSequence = ptFrame->dwSequence;
    ptReceived->dwWidth = ptFrame->dwWidth;
    ptReceived->dwHeight = ptFrame->dwHeight;
    ptReceived->nKeyFrames += (ptFrame->dwFlags & eFrameKey) != 0;
    WriteFrame(ptReceived, ptFrame);
}

/* Every frame of the stream. dwUser is ours: the record to fill. */
static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    tagReceived* const ptReceived = (tagReceived*)dwUser;
    tagTrack* const ptTrack = ptFrame->dwMediaType == eMediaVideo ? &ptReceived->tVideo : &ptReceived->tAudio;
    (void)hStream; /* our media ID; there is only one */
    if (ptFrame->dwMediaType == eMediaOther)
    {
        return 0;
    }
    pthread_mutex_lock(&ptReceived->tMutex);
    if (ptReceived->tVideo.nFrames + ptReceived->tAudio.nFrames == 0)
    {
        ptReceived->dFirst = Now();
        Wake();
    }
    else
    {
        ptReceived->nMissing += ptFrame->dwLostBefore;
    }
    if (ptTrack->nFrames++ == 0)
    {
        memcpy(ptTrack->szCodec, ptFrame->szCodecName, sizeof ptTrack->szCodec);
        ptTrack->llFirstUs = ptFrame->llPresentationTimeUs;
    }
    ptTrack->llLastUs = ptFrame->llPresentationTimeUs;
    ptTrack->ullBytes += ptFrame->dwLength;
    if (ptFrame->dwMediaType == eMediaVideo)
    {
        TakeVideo(ptReceived, ptFrame);
    }
    else
    {
        ptReceived->dwSampleRate = ptFrame->dwSampleRate;
        ptReceived->dwChannels = ptFrame->dwChannels;
    }
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
    if (dwEvent == eEventClockJump || dwEvent == eEventTransport)
    {
        return 0; /* the stream goes on */
    }
    pthread_mutex_lock(&ptReceived->tMutex);
    ptReceived->dwEvent = dwEvent;
    ptReceived->dwDetail = dwDetail;
    ptReceived->nReconnects = dwReconnects;
    pthread_mutex_unlock(&ptReceived->tMutex);
    Wake();
    return 0;
}

/* --- the stream -------------------------------------------------------------------------------------------------- */

/* Waits until the stream ran for dSeconds, or for its first frame; a failure before that ends it at once. */
static void Receive(tagReceived* ptReceived, double dSeconds)
{
    struct pollfd tWake = {.fd = g_anWake[0], .events = POLLIN};
    double dLeft;
    do
    {
        char achIgnored[64];
        (void)!read(g_anWake[0], achIgnored, sizeof achIgnored);
        pthread_mutex_lock(&ptReceived->tMutex);
        dLeft =
            ptReceived->dFirst > 0 ? ptReceived->dFirst + dSeconds - Now() : ptReceived->dOpened + ePatience - Now();
        if (ptReceived->dFirst <= 0 && (ptReceived->dwEvent == eEventRefused || ptReceived->dwEvent == eEventLost))
        {
            dLeft = 0;
        }
        pthread_mutex_unlock(&ptReceived->tMutex);
        if (dLeft > 0 && !g_bStopped)
        {
            poll(&tWake, 1, dLeft < 3600 ? (int)(dLeft * 1e3) + 1 : 3600000);
        }
    } while (dLeft > 0 && !g_bStopped);
}

/* Opens the stream, receives it and closes it. The result is that of the call that failed, or 0. */
static int Run(tagReceived* ptReceived, tagUserLoginPara const* ptLogin, tagRealStreamPara const* ptStream,
               double dSeconds)
{
    tagUserLoginPara tLogin = *ptLogin;
    tagRealStreamPara tStream = *ptStream;
    int nLogin = -1, nStream = -1, nResult;
    ClientAdapter_Start(1);
    nResult = ClientAdapter_UserLogin(&nLogin, eProtocolRTSP, &tLogin);
    if (nResult == 0)
    {
        ptReceived->dOpened = Now();
        nResult = ClientAdapter_RealStreamConnect(&nStream, nLogin, &tStream);
    }
    if (nResult == 0)
    {
        ClientAdapter_SubscribeEvent(nLogin, 0, OnEvent, (unsigned long)ptReceived);
        ClientAdapter_StreamMediaCB(nStream, OnFrame, (unsigned long)ptReceived);
        Receive(ptReceived, dSeconds);
        ClientAdapter_RealStreamDisconnect(nStream); /* says goodbye to the device; no callback runs afterwards */
    }
    if (nLogin >= 0)
    {
        ClientAdapter_UserLogout(nLogin);
    }
    ClientAdapter_Stop();
    return nResult;
}

/* --- what came of it --------------------------------------------------------------------------------------------- */

static void PrintRefusal(unsigned long dwStatus, int bUser)
{
    char const* const szReason =
        dwStatus == 401   ? bUser ? "wrong user name or password" : "it wants a user name and a password; give --user"
        : dwStatus == 403 ? "this user may not see the stream"
        : dwStatus == 404 ? "there is no such stream; is the path right?"
        : dwStatus == 453 ? "it has no bandwidth left for another stream"
        : dwStatus == 461 ? "it doesn't offer this transport; try another --transport"
        : dwStatus == 503 ? "it is overloaded, or serves as many streams as it can"
        : dwStatus >= 500 ? "it failed"
                          : "it doesn't accept the request";
    fprintf(stderr, "no frame came: the device refused: %s (RTSP status %lu)\n", szReason, dwStatus);
}

static void PrintLoss(unsigned long dwError)
{
    char const* const szReason = dwError == 0              ? "the device ended the stream"
                                 : dwError == ECONNREFUSED ? "the host is there, but nothing listens on this port"
                                 : dwError == ENXIO        ? "there is no host of this name"
                                 : dwError == ETIMEDOUT    ? "the device didn't answer in time"
                                 : dwError == EHOSTUNREACH || dwError == ENETUNREACH ? "no way leads to this host"
                                 : dwError == ECONNRESET                             ? "the device broke the connection"
                                 : dwError == EACCES
                                     ? "the device's certificate isn't trusted, or doesn't name this host"
                                 : dwError == EPROTO ? "the answers make no sense; does it speak RTSP there?"
                                                     : strerror((int)dwError);
    fprintf(stderr, "no frame came: %s\n", szReason);
}

static void PrintWhyNothing(tagReceived const* ptReceived, int bUser)
{
    if (ptReceived->dwEvent == eEventRefused)
    {
        PrintRefusal(ptReceived->dwDetail, bUser);
    }
    else if (ptReceived->dwEvent == eEventLost)
    {
        PrintLoss(ptReceived->dwDetail);
    }
    else if (g_bStopped)
    {
        fputs("no frame came before the program was stopped\n", stderr);
    }
    else if (ptReceived->dwEvent == eEventConnecting)
    {
        fprintf(stderr, "no frame came: the device didn't answer within %d s\n", ePatience);
    }
    else
    {
        fprintf(stderr, "no frame came: the device accepted, but nothing to show came within %d s\n", ePatience);
    }
}

/* Why there is no file, when one was asked for. */
static int ReportFile(tagReceived const* ptReceived)
{
    if (!ptReceived->szOut)
    {
        return eExitFine;
    }
    if (ptReceived->nFileError)
    {
        fprintf(stderr, "%s could not be written: %s\n", ptReceived->szPath, strerror(ptReceived->nFileError));
        return eExitFailed;
    }
    if (ptReceived->pFile)
    {
        printf("file                 %s\n", ptReceived->szPath);
    }
    else if (ptReceived->tVideo.nFrames)
    {
        printf("file                 none: %s can't be played without a container, which this program doesn't write\n",
               ptReceived->tVideo.szCodec);
    }
    else
    {
        printf("file                 none: the stream has no video, and audio isn't written\n");
    }
    return eExitFine;
}

static int Report(tagReceived const* ptReceived, int bUser)
{
    tagTrack const* const ptVideo = &ptReceived->tVideo;
    tagTrack const* const ptAudio = &ptReceived->tAudio;
    tagTrack const* const ptMain = ptVideo->nFrames ? ptVideo : ptAudio;
    const double dSeconds = (double)(ptMain->llLastUs - ptMain->llFirstUs) / 1e6;
    int nExit;
    fflush(stdout); /* what went wrong is told last */
    if (ptMain->nFrames == 0)
    {
        PrintWhyNothing(ptReceived, bUser);
        return eExitFailed;
    }
    if (ptVideo->nFrames)
    {
        printf("codec                %s %" PRIu32 "x%" PRIu32 "\n", ptVideo->szCodec, ptReceived->dwWidth,
               ptReceived->dwHeight);
        printf("frames               %lu\n", ptVideo->nFrames);
        printf("key frames           %lu\n", ptReceived->nKeyFrames);
    }
    if (ptAudio->nFrames)
    {
        printf("audio                %s %" PRIu32 " Hz, %" PRIu32 " channel%s\n", ptAudio->szCodec,
               ptReceived->dwSampleRate, ptReceived->dwChannels, ptReceived->dwChannels == 1 ? "" : "s");
    }
    printf("audio frames         %lu\n", ptAudio->nFrames);
    printf("lost                 %lu\n", ptReceived->nMissing);
    printf("bit rate             %.0f kbit/s\n", dSeconds > 0 ? (double)ptMain->ullBytes * 8e-3 / dSeconds : 0.0);
    printf("frame rate           %.2f /s\n", dSeconds > 0 ? (double)(ptMain->nFrames - 1) / dSeconds : 0.0);
    printf("time to first frame  %.0f ms\n", (ptReceived->dFirst - ptReceived->dOpened) * 1e3);
    nExit = ReportFile(ptReceived);
    fflush(stdout);
    if (ptReceived->nMissing || ptReceived->nReconnects || ptReceived->dwEvent == eEventLost)
    {
        fprintf(stderr, "%lu frames or packets went missing; the connection broke %lu times\n", ptReceived->nMissing,
                ptReceived->nReconnects + (ptReceived->dwEvent == eEventLost));
        nExit = nExit == eExitFine ? eExitGaps : nExit;
    }
    return nExit;
}

/* --- the command line -------------------------------------------------------------------------------------------- */

/* Copies a text into a field of a record. False: it doesn't fit, which is told. */
static int Fill(char* szField, size_t nSize, char const* szText, char const* szWhat)
{
    if (strlen(szText) >= nSize)
    {
        fprintf(stderr, "the %s is too long: %zu bytes, and at most %zu can be passed on\n", szWhat, strlen(szText),
                nSize - 1);
        return 0;
    }
    memcpy(szField, szText, strlen(szText) + 1);
    return 1;
}

/* From the environment, or asked for on the terminal without showing it. */
static int FillPassword(tagUserLoginPara* ptLogin)
{
    char const* szPassword = getenv("TESSARO_PASSWORD");
    char szTyped[1024];
    struct termios tShown, tHidden;
    if (!szPassword && tcgetattr(STDIN_FILENO, &tShown) != 0)
    {
        fputs("a user needs a password: set TESSARO_PASSWORD, or run this on a terminal to be asked\n", stderr);
        return 0;
    }
    if (!szPassword)
    {
        tHidden = tShown;
        tHidden.c_lflag &= ~(tcflag_t)ECHO;
        fputs("Password: ", stderr);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &tHidden);
        szPassword = fgets(szTyped, sizeof szTyped, stdin);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &tShown);
        fputc('\n', stderr);
        if (!szPassword)
        {
            fputs("no password was typed in\n", stderr);
            return 0;
        }
        szTyped[strcspn(szTyped, "\n")] = '\0';
    }
    return Fill(ptLogin->szPassword, sizeof ptLogin->szPassword, szPassword, "password");
}

static int ReadTransport(char const* szValue, tagOptions* ptOptions)
{
    static char const* const aszNames[] = {"tcp", "udp", "multicast", "automatic"}; /* as eRtspTransport counts */
    for (uint32_t i = 0; i < sizeof aszNames / sizeof *aszNames; ++i)
    {
        if (strcmp(szValue, aszNames[i]) == 0)
        {
            ptOptions->dwTransport = i;
            return 1;
        }
    }
    fprintf(stderr, "--transport is tcp, udp, multicast or automatic, not \"%s\"\n", szValue);
    return 0;
}

static int ReadSeconds(char const* szValue, tagOptions* ptOptions)
{
    char* szEnd;
    ptOptions->dSeconds = strtod(szValue, &szEnd);
    if (szEnd == szValue || *szEnd || !(ptOptions->dSeconds > 0) || ptOptions->dSeconds > 1e9)
    {
        fprintf(stderr, "--seconds is a number above 0, not \"%s\"\n", szValue);
        return 0;
    }
    return 1;
}

static int ReadOut(char const* szValue, tagOptions* ptOptions)
{
    struct stat tStat;
    ptOptions->szOut = szValue;
    const int bThere = stat(szValue, &tStat) == 0;
    if (bThere && !S_ISDIR(tStat.st_mode))
    {
        fprintf(stderr, "--out: \"%s\" is no directory\n", szValue);
        return 0;
    }
    if (!bThere || access(szValue, W_OK | X_OK) != 0)
    {
        fprintf(stderr, "--out: nothing can be written to \"%s\": %s\n", szValue, strerror(errno));
        return 0;
    }
    return 1;
}

static int ReadUser(char const* szValue, tagOptions* ptOptions)
{
    ptOptions->szUser = szValue;
    return 1;
}

/* False: something is wrong with it, which is told. */
static int ReadOptions(int nArguments, char** aszArguments, tagOptions* ptOptions)
{
    static struct
    {
        char const* szName;
        int (*pfnRead)(char const* szValue, tagOptions* ptOptions);
    } const atKnown[] = {
        {"--user", ReadUser}, {"--seconds", ReadSeconds}, {"--transport", ReadTransport}, {"--out", ReadOut}};
    const size_t nKnown = sizeof atKnown / sizeof *atKnown;
    for (int i = 1; i < nArguments; ++i)
    {
        char const* const szName = aszArguments[i];
        size_t iKnown = 0;
        if (szName[0] != '-')
        {
            if (ptOptions->szAddress)
            {
                fprintf(stderr, "one address is enough: what is \"%s\"?\n", szName);
                return 0;
            }
            ptOptions->szAddress = szName;
            continue;
        }
        if (strcmp(szName, "--check-certificate") == 0)
        {
            ptOptions->dwCertificate = eRtspCertificateTrusted;
            continue;
        }
        while (iKnown < nKnown && strcmp(szName, atKnown[iKnown].szName) != 0)
        {
            ++iKnown;
        }
        if (iKnown == nKnown)
        {
            fprintf(stderr, "there is no option %s\n", szName);
            return 0;
        }
        if (++i == nArguments)
        {
            fprintf(stderr, "%s needs a value\n", szName);
            return 0;
        }
        if (!atKnown[iKnown].pfnRead(aszArguments[i], ptOptions))
        {
            return 0;
        }
    }
    if (!ptOptions->szAddress)
    {
        fputs("an address is missing: rtsp://host[:port]/path\n", stderr);
    }
    return ptOptions->szAddress != NULL;
}

int main(int nArguments, char** aszArguments)
{
    tagOptions tOptions = {.dSeconds = 5};
    tagReceived tReceived = {.tMutex = PTHREAD_MUTEX_INITIALIZER};
    tagUserLoginPara tLogin = {.dwRtspUrlMode = 0}; /* the address is the whole URL */
    tagRealStreamPara tStream = {.dwStreamKind = eStreamMain};
    struct sigaction tOnSignal = {.sa_handler = OnSignal, .sa_flags = (int)SA_RESETHAND}; /* the second one kills */
    int nResult;
    for (int i = 1; i < nArguments; ++i)
    {
        if (strcmp(aszArguments[i], "--help") == 0)
        {
            fputs(g_szHelp, stdout);
            return eExitFine;
        }
    }
    if (pipe(g_anWake) != 0 || fcntl(g_anWake[0], F_SETFL, O_NONBLOCK) != 0 ||
        fcntl(g_anWake[1], F_SETFL, O_NONBLOCK) != 0)
    {
        perror("live_view");
        return eExitFailed;
    }
    sigaction(SIGINT, &tOnSignal, NULL);
    sigaction(SIGTERM, &tOnSignal, NULL);
    if (!ReadOptions(nArguments, aszArguments, &tOptions) ||
        !Fill(tLogin.szAddress, sizeof tLogin.szAddress, tOptions.szAddress, "address") ||
        !Fill(tLogin.szUserName, sizeof tLogin.szUserName, tOptions.szUser ? tOptions.szUser : "", "user name") ||
        (tLogin.szUserName[0] && !FillPassword(&tLogin)))
    {
        fputs("live_view --help tells how it is used\n", stderr);
        return eExitUsage;
    }
    tStream.dwStreamPara[0] = tOptions.dwTransport;
    tStream.dwStreamPara[1] = tOptions.dwCertificate;
    tReceived.szOut = tOptions.szOut;

    nResult = Run(&tReceived, &tLogin, &tStream, tOptions.dSeconds);
    fflush(stdout);
    if (nResult == eResultBadAddress)
    {
        fputs(
            "this is no address of a stream: it begins with rtsp:// or rtsps://, names a host, and never holds a user "
            "name or a password\n",
            stderr);
        return eExitUsage;
    }
    if (nResult != 0)
    {
        fprintf(stderr, "the stream could not be opened: %s (result %d)\n",
                nResult == eResultNoEntryPoint ? "the RTSP plug-in, librtspclient.so, isn't on the loader's path"
                                               : "the library says no",
                nResult);
        return eExitFailed;
    }
    if (tReceived.pFile && fclose(tReceived.pFile) != 0)
    {
        tReceived.nFileError = errno;
    }
    return Report(&tReceived, tLogin.szUserName[0] != '\0');
}
