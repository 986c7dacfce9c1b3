/* A camera that somebody has just connected: finds it, logs in, looks at it, moves it, waits for something to move
   before it, and plays a minute of what it has recorded.

     camera [USER]      ONVIF; the password is taken from the environment (TESSARO_PASSWORD)

   Leaves camera.264 (or .265): what came of its stream until the tour was over with it. */

#include "Tour.h"

static tagCounter g_tFound = COUNTER;
static tagCounter g_tFrames = COUNTER;
static tagCounter g_tMotions = COUNTER;
static tagCounter g_tPlayed = COUNTER;
static tagCounter g_tEnd = COUNTER;
static tagDeviceProbeConfig g_tDevice; /* written before g_tFound counts it */
static FILE* g_pFile;

static void OnDevice(tagDeviceProbeConfig* ptDevice)
{
    if (ptDevice->dwProtocol == eProtocolOnvif && (ptDevice->dwFlags & eProbeGone) == 0 && Counted(&g_tFound) == 0)
    {
        g_tDevice = *ptDevice;
        Count(&g_tFound);
    }
}

static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    (void)hStream;
    (void)dwUser;
    if (ptFrame->dwMediaType == eMediaVideo)
    {
        fwrite(ptFrame->pData, 1, ptFrame->dwLength, g_pFile);
        Count(&g_tFrames);
    }
    return 0;
}

static int OnRecorded(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    (void)hStream;
    (void)dwUser;
    if (ptFrame->dwFlags & eFrameEnd)
    {
        Count(&g_tEnd);
    }
    else if (ptFrame->dwMediaType == eMediaVideo)
    {
        Count(&g_tPlayed);
    }
    return 0;
}

static int OnEvent(void* hLogin, unsigned long dwEvent, unsigned long dwChannel, unsigned long dwState,
                   unsigned long dwTime, unsigned long dwUser)
{
    (void)hLogin;
    (void)dwChannel;
    (void)dwTime;
    (void)dwUser;
    if (dwEvent == eEventMotion && dwState == 1)
    {
        Count(&g_tMotions);
    }
    return 0;
}

static int Find(void)
{
    tagDeviceProbeParameter tWhere = {.dwSize = sizeof tWhere, .dwSeconds = 10};
    ClientAdapter_DeviceProbeStart(&tWhere, OnDevice);
    const int bFound = Await(&g_tFound, 1, 30, "a device");
    ClientAdapter_DeviceProbeStop();
    if (bFound)
    {
        printf("Found %s (%s) at %s, port %" PRIu32 ".\n", g_tDevice.szName, g_tDevice.szModel, g_tDevice.szAddress,
               g_tDevice.dwPort);
    }
    return bFound;
}

/* The login ID, or -1. How the device's clock stands doesn't matter: it is asked first. */
static int LogIn(char const* szUser)
{
    static tagConfigInformation tBlock = {.type = eConfigClock};
    tagUserLoginPara tLogin = {.dwPort = g_tDevice.dwPort};
    char const* const szPassword = getenv("TESSARO_PASSWORD");
    tagConfigClock tClock;
    int nLogin = -1;
    snprintf(tLogin.szAddress, sizeof tLogin.szAddress, "%s", g_tDevice.szAddress);
    snprintf(tLogin.szUserName, sizeof tLogin.szUserName, "%s", szUser);
    snprintf(tLogin.szPassword, sizeof tLogin.szPassword, "%s", szPassword ? szPassword : "");
    if (!Worked(ClientAdapter_UserLogin(&nLogin, eProtocolOnvif, &tLogin), "logging in") ||
        !Worked(ClientAdapter_GetConfig(nLogin, &tBlock), "reading the clock"))
    {
        return nLogin;
    }
    memcpy(&tClock, tBlock.data, sizeof tClock);
    printf("Logged in as %s; its clock is %ld s ahead of ours.\n", szUser,
           (long)(tClock.llTimeUs / 1000000 - (int64_t)time(NULL)));
    return nLogin;
}

static int Look(int nLogin)
{
    tagRealStreamPara tPara = {.dwStreamKind = eStreamMain};
    int nStream = -1;
    g_pFile = fopen("camera.264", "wb");
    const int bWorked = Expect(g_pFile != NULL, "camera.264 can be written") &&
                        Worked(ClientAdapter_RealStreamConnect(&nStream, nLogin, &tPara), "opening the stream") &&
                        Worked(ClientAdapter_StreamMediaCB(nStream, OnFrame, 0), "asking for frames") &&
                        Await(&g_tFrames, 50, 60, "50 frames");
    if (nStream != -1)
    {
        ClientAdapter_RealStreamDisconnect(nStream); /* no callback runs any more */
    }
    if (g_pFile)
    {
        fclose(g_pFile);
    }
    printf("%lu frames of its live stream are in camera.264.\n", Counted(&g_tFrames));
    return bWorked;
}

static int Where(int nLogin, tagPTZPosition* ptPosition)
{
    ptPosition->dwSize = sizeof *ptPosition;
    return Worked(ClientAdapter_GetIpcPara(nLogin, 0, eCameraPosition, ptPosition, sizeof *ptPosition), "its position");
}

static int Move(int nLogin)
{
    tagPTZPosition tBefore;
    tagPTZPosition tNow;
    if (!Where(nLogin, &tBefore) ||
        !Worked(ClientAdapter_PTZControl(nLogin, 0, ePTZMove, 5000, 0, 0, 1000), "moving it"))
    {
        return 0;
    }
    for (int i = 0; i < 300; ++i)
    {
        Sleep(100);
        if (!Where(nLogin, &tNow))
        {
            return 0;
        }
        if (tNow.nPan != tBefore.nPan && !tNow.bMoving)
        {
            printf("It turned from %" PRId32 " to %" PRId32 " ten-thousandths.\n", tBefore.nPan, tNow.nPan);
            return 1;
        }
    }
    return Expect(0, "it turns, and stops");
}

static int Hear(int nLogin)
{
    if (!Worked(ClientAdapter_SubscribeEvent(nLogin, TESSARO_EVENT(eEventMotion), OnEvent, 0), "asking for events"))
    {
        return 0;
    }
    puts("Waiting for something to move before it.");
    fflush(stdout);
    const int bCame = Await(&g_tMotions, 1, 60, "a motion event");
    ClientAdapter_UnSubscribeEvent(nLogin, 0);
    if (bCame)
    {
        puts("Something moved.");
    }
    return bCame;
}

/* The first minute that there is, eight times as fast. */
static int Play(int nLogin)
{
    tagHistoryStreamQueryFactor tQuestion = {.dwSize = sizeof tQuestion};
    tagHistoryStreamQueryResult tFound = {.dwSize = sizeof tFound};
    tagHistoryStreamPara tPara = {.dwSize = sizeof tPara};
    char szStart[32];
    int nQuery = -1;
    int nPlayback = -1;
    int bWorked =
        Worked(ClientAdapter_HistoryStreamQueryConnect(&nQuery, nLogin, &tQuestion), "asking for recordings") &&
        Worked(ClientAdapter_HistoryStreamQueryNext(nQuery, &tFound), "the first recording");
    if (nQuery != -1)
    {
        ClientAdapter_HistoryStreamQueryDisconnect(nQuery);
    }
    tPara.llStartUs = tFound.llStartUs;
    tPara.llEndUs = tFound.llStartUs + 60000000;
    bWorked = bWorked &&
              Worked(ClientAdapter_HistoryStreamCreate(&nPlayback, nLogin, &tPara, eHistoryNoAudio), "opening it") &&
              Worked(ClientAdapter_HistoryStreamSetSpeed(nPlayback, eSpeedNormal * 8), "setting its speed") &&
              Worked(ClientAdapter_HistoryStreamCB(nPlayback, OnRecorded, 0), "asking for its frames") &&
              Await(&g_tEnd, 1, 90, "its end");
    if (nPlayback != -1)
    {
        ClientAdapter_HistoryStreamDestroy(nPlayback);
    }
    if (bWorked)
    {
        printf("A minute of recording from %s: %lu frames.\n", TimeText(tFound.llStartUs, szStart),
               Counted(&g_tPlayed));
    }
    return bWorked && Expect(Counted(&g_tPlayed) > 60, "frames come");
}

int main(int nArguments, char** aszArguments)
{
    int nLogin = -1;
    ClientAdapter_Start(16);
    if (Find())
    {
        nLogin = LogIn(nArguments > 1 ? aszArguments[1] : "admin");
    }
    return EndTour(nLogin, nLogin != -1 && Look(nLogin) && Move(nLogin) && Hear(nLogin) && Play(nLogin));
}
