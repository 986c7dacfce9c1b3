/* Fills a decoder wall: splits its first screen into four windows, binds two of them, lets a third show a tour of
   cameras, lays a window over the whole screen and back, and takes a picture of the wall.

     wall PROTOCOL ADDRESS [USER]

   The sources are channels of the device itself. Leaves wall.png in the present folder. What a decoder lacks (by ONVIF
   the looks of windows, tours, enlarging, the looks of screens, and pictures of the wall) is said and left out. */

#include "Tour.h"

static const unsigned long g_dwScreen = 0;

static int ShowLayout(int nLogin)
{
    tagDecoderWindow atWindows[64];
    tagDecoderDeviceConfig tWall = {
        .dwSize = sizeof tWall, .dwEntrySize = sizeof atWindows[0], .dwCapacity = 64, .ptEntries = atWindows};
    if (!Worked(ClientAdapter_DecoderGetConfig(nLogin, &tWall), "reading the wall"))
    {
        return 0;
    }
    printf("The wall has %" PRIu32 " x %" PRIu32 " screens and %" PRIu32 " windows.\n", tWall.dwColumns, tWall.dwRows,
           tWall.dwCount);
    for (uint32_t i = 0; i < tWall.dwCount && i < tWall.dwCapacity; ++i)
    {
        printf("  window %" PRIu32 ": %.1f %% wide and %.1f %% high\n", atWindows[i].dwChannel,
               atWindows[i].dwWidth / 100.0, atWindows[i].dwHeight / 100.0);
    }
    return Expect(tWall.dwCount >= 4, "the screen was split into four");
}

/* [bind] */
/* What the window shows from now on, also after a restart of the decoder. */
static int Bind(int nLogin, unsigned long dwWindow, uint32_t dwChannel, char const* szName)
{
    tagDecoderChannelConfig tWindow = {.dwSize = sizeof tWindow,
                                       .dwFit = eFitWhole,
                                       .bShowName = 1,
                                       .tSource = {.dwKind = eDecoderSourceChannel, .dwChannel = dwChannel}};
    int nResult;
    snprintf(tWindow.szName, sizeof tWindow.szName, "%s", szName);
    nResult = ClientAdapter_DecoderSetChannelConfig(nLogin, dwWindow, &tWindow);
    if (nResult == eResultNotSupported)
    {
        puts("Left out, since the device has no such thing: the looks of a window.");
        tWindow.dwFit = tWindow.bShowName = 0;
        nResult = ClientAdapter_DecoderSetChannelConfig(nLogin, dwWindow, &tWindow);
    }
    return Worked(nResult, "binding a window");
}
/* [bind] */

/* [tour] */
/* Each of the channels for two seconds, for ever; *pbThere: the device has tours. Other sources would be addresses:
   {.dwKind = eDecoderSourceAddress, .szAddress = "rtsp://192.0.2.10/live", .szUserName = "viewer"}. */
static int Loop(int nLogin, unsigned long dwWindow, int* pbThere)
{
    tagDecoderLoopEntry atTour[] = {
        {.dwDwellSeconds = 2, .tSource = {.dwKind = eDecoderSourceChannel, .dwChannel = 0}},
        {.dwDwellSeconds = 2, .tSource = {.dwKind = eDecoderSourceChannel, .dwChannel = 1}},
        {.dwDwellSeconds = 2, .tSource = {.dwKind = eDecoderSourceChannel, .dwChannel = 2}},
    };
    tagDecoderChannelLoopConfig tLoop = {
        .dwSize = sizeof tLoop, .dwEntrySize = sizeof atTour[0], .dwCount = 3, .ptEntries = atTour};
    const int nResult = ClientAdapter_DecoderSetChannelLoopConfig(nLogin, dwWindow, &tLoop);
    *pbThere = nResult != eResultNotSupported;
    return WorkedOrLacks(nResult, "writing a tour") &&
           (!*pbThere ||
            Worked(ClientAdapter_DecoderChannelSetLoopEnable(nLogin, dwWindow, eDecoderLoopOn), "starting the tour"));
}
/* [tour] */

static int EndLoop(int nLogin, unsigned long dwWindow)
{
    return Worked(ClientAdapter_DecoderChannelSetLoopEnable(nLogin, dwWindow, eDecoderLoopOff), "ending the tour");
}

/* [now] */
/* One camera for a minute, in place of whatever the window shows; then that comes back by itself. */
static int ShowForNow(int nLogin, unsigned long dwWindow, uint32_t dwChannel)
{
    tagDecoderDynamicInformation tNow = {
        .dwSize = sizeof tNow, .dwSeconds = 60, .tSource = {.dwKind = eDecoderSourceChannel, .dwChannel = dwChannel}};
    return Worked(ClientAdapter_DecoderDynamicConnect(nLogin, dwWindow, &tNow), "showing a camera for now");
}
/* [now] */

static int Enlarge(int nLogin, unsigned long dwWindow)
{
    tagDecoderDisplayStatus tDisplay = {.dwSize = sizeof tDisplay, .dwAction = eDisplayFillScreen};
    const int nResult = ClientAdapter_DecoderChannelDisplayControl(nLogin, dwWindow, &tDisplay);
    if (nResult != eResultOk)
    {
        return WorkedOrLacks(nResult, "enlarging a window");
    }
    tDisplay.dwAction = eDisplayRestore;
    return Worked(ClientAdapter_DecoderChannelDisplayControl(nLogin, dwWindow, &tDisplay), "restoring it");
}

static int SetScreen(int nLogin)
{
    tagDecoderDisplayConfig tScreen = {.dwSize = sizeof tScreen};
    const int nResult = ClientAdapter_DecoderGetDisplayConfig(nLogin, g_dwScreen, &tScreen);
    if (nResult != eResultOk)
    {
        return WorkedOrLacks(nResult, "the looks of a screen");
    }
    tScreen.bShowClock = 1;
    tScreen.dwBackground = 0x202040;
    return Worked(ClientAdapter_DecoderSetDisplayConfig(nLogin, g_dwScreen, &tScreen), "changing the screen");
}

/* How many windows show a live stream; what each of them does is printed if bPrint. -1: nobody could tell. */
static int CountShowing(int nLogin, int bPrint)
{
    tagDecoderWindowStatus atWindows[64];
    tagDecoderChannelStatus tStatus = {
        .dwSize = sizeof tStatus, .dwEntrySize = sizeof atWindows[0], .dwCapacity = 64, .ptEntries = atWindows};
    int nShowing = 0;
    if (!Worked(ClientAdapter_DecoderChannelGetStatus(nLogin, &tStatus), "reading the windows' states"))
    {
        return -1;
    }
    for (uint32_t i = 0; i < tStatus.dwCount && i < tStatus.dwCapacity; ++i)
    {
        nShowing += atWindows[i].dwState == eWindowShowing;
        if (bPrint && atWindows[i].dwState == eWindowShowing)
        {
            printf("  window %" PRIu32 " shows channel %" PRIu32 ": %" PRIu32 "x%" PRIu32 "\n", atWindows[i].dwChannel,
                   atWindows[i].dwSourceChannel, atWindows[i].dwWidth, atWindows[i].dwHeight);
        }
    }
    return nShowing;
}

static int AwaitShowing(int nLogin, int nWindows)
{
    int nShowing = 0;
    for (int i = 0; i < 100 && nShowing >= 0 && nShowing < nWindows; ++i)
    {
        Sleep(100);
        nShowing = CountShowing(nLogin, 0);
    }
    return Expect(CountShowing(nLogin, 1) >= nWindows, "all windows that were bound show a picture");
}

static int TakePicture(int nLogin)
{
    tagImageFileInfo tPicture = {.dwSize = sizeof tPicture, .szPath = "wall.png"};
    const int nResult = ClientAdapter_ImageCapture(nLogin, eCaptureWall, eImagePng, &tPicture);
    if (nResult != eResultOk)
    {
        return WorkedOrLacks(nResult, "a picture of the wall");
    }
    printf("wall.png: %" PRIu32 "x%" PRIu32 " pixels.\n", tPicture.dwWidth, tPicture.dwHeight);
    return 1;
}

static int FillWall(int nLogin)
{
    const unsigned long dwFirst = g_dwScreen * eWindowsOfScreen; /* the first window of our screen */
    int bTours = 0;
    return Worked(ClientAdapter_SetScreenSplitMode(nLogin, g_dwScreen, eSplit4, NULL), "splitting") &&
           ShowLayout(nLogin) && Bind(nLogin, dwFirst, 0, "Gate") && Bind(nLogin, dwFirst + 1, 1, "Door") &&
           Loop(nLogin, dwFirst + 2, &bTours) && ShowForNow(nLogin, dwFirst + 3, 2) && SetScreen(nLogin) &&
           Enlarge(nLogin, dwFirst) && AwaitShowing(nLogin, bTours ? 4 : 3) && TakePicture(nLogin) &&
           (!bTours || EndLoop(nLogin, dwFirst + 2));
}

int main(int nArguments, char** aszArguments)
{
    const int nLogin = BeginTour(nArguments, aszArguments);
    return EndTour(nLogin, nLogin != -1 && FillWall(nLogin));
}
