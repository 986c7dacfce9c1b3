// Decoders.

#include "tests/device/Device.h"

#include <algorithm>

namespace
{
tagDecoderSource Channel(uint32_t dwChannel)
{
    tagDecoderSource tSource{};
    tSource.dwKind = eDecoderSourceChannel;
    tSource.dwChannel = dwChannel;
    return tSource;
}
} // namespace

TEST_P(CDeviceTest, Wall)
{
    // A layout of one's own, of two screens.
    tagListed<tagDecoderDeviceConfig, tagDecoderWindow> tWall;
    WORKS(DecoderGetConfig, m_nLogin, &tWall);
    EXPECT_EQ(tWall.dwScreens, 4);
    tWall.dwRows = tWall.dwCount = 1;
    tWall.dwColumns = 2;
    tWall.at[0] = {7, 1000, 1000, 3000, 5000, 0, 0, 0};
    strcpy(tWall.szName, "One");
    WORKS(DecoderSetConfig, m_nLogin, &tWall);
    WORKS(DecoderGetConfig, m_nLogin, &tWall);
    EXPECT_TRUE(tWall.dwCount == 1 && tWall.at[0].dwChannel == 7 && std::string(tWall.szName) == "One");
    // Four windows on the second screen, three of them bound to channels, and then the last one too.
    unsigned long adwChannels[] = {0, 1, 2, TESSARO_ALL};
    const uint32_t dwFirst = eWindowsOfScreen;
    auto tWindow = Sized<tagDecoderChannelConfig>();
    WORKS(SetScreenSplitMode, m_nLogin, 1, eSplit4, adwChannels);
    ANSWERS(eResultBadArgument, SetScreenSplitMode, m_nLogin, 1, 5, adwChannels);
    WORKS(DecoderGetConfig, m_nLogin, &tWall);
    EXPECT_EQ(std::ranges::count_if(tWall.at, [&](auto const& t) { return t.dwChannel - dwFirst < 4 && t.dwWidth; }),
              4);
    WORKS(DecoderGetChannelConfig, m_nLogin, dwFirst + 2, &tWindow);
    EXPECT_TRUE(tWindow.tSource.dwKind == eDecoderSourceChannel && tWindow.tSource.dwChannel == 2);
    tWindow.tSource = Channel(3);
    tWindow.dwBorder = 2;
    WORKS(DecoderSetChannelConfig, m_nLogin, dwFirst + 3, &tWindow);
    WORKS(DecoderGetChannelConfig, m_nLogin, dwFirst + 3, &tWindow);
    EXPECT_TRUE(tWindow.tSource.dwChannel == 3 && tWindow.dwBorder == 2);
    ANSWERS(eResultNoChannel, DecoderGetChannelConfig, m_nLogin, 1000, &tWindow);
    // Screens: signal, colours, clock.
    auto tSignal = Sized<tagDecoderVideoStandardConfig>();
    tSignal.dwStandard = eStandardPal;
    WORKS(DecoderSetVideoStandard, m_nLogin, 0, &tSignal);
    WORKS(DecoderGetVideoStandard, m_nLogin, 0, &tSignal);
    EXPECT_TRUE(tSignal.dwWidth == 720 && tSignal.dwHeight == 576);
    auto tScreen = Sized<tagDecoderDisplayConfig>();
    WORKS(DecoderGetDisplayConfig, m_nLogin, 0, &tScreen);
    EXPECT_TRUE(tScreen.bOn == 1 && tScreen.dwBrightness == 50);
    tScreen.dwBackground = 0x0000FF;
    tScreen.bShowClock = 1;
    WORKS(DecoderSetDisplayConfig, m_nLogin, 0, &tScreen);
    WORKS(DecoderGetDisplayConfig, m_nLogin, 0, &tScreen);
    EXPECT_EQ(tScreen.dwBackground, 0xFF);
    auto tClock = Sized<tagTimeInfo>();
    WORKS(DecoderChannelGetOSDTime, m_nLogin, 7, &tClock, eOsdClock);
    EXPECT_NEAR(static_cast<double>(tClock.llTimeUs) / 1e6, static_cast<double>(time(nullptr)), 60);
}

TEST_P(CDeviceTest, Windows)
{
    tagListed<tagDecoderChannelStatus, tagDecoderWindowStatus> tStatus;
    const auto fnShows = [&](uint32_t dwShows, auto... tMore)
    {
        return Comes(
            [&]
            {
                WORKS(DecoderChannelGetStatus, m_nLogin, &tStatus);
                return tStatus.at[0].dwShows == dwShows && (true && ... && tMore(tStatus.at[0]));
            });
    };
    const auto fnOf = [](uint32_t dwChannel)
    { return [=](tagDecoderWindowStatus const& t) { return t.dwSourceChannel == dwChannel; }; };
    unsigned long dwBound = 0;
    WORKS(SubscribeEvent, m_nLogin, TESSARO_EVENT(eEventWindow), OnEvent, User(m_tEvents));
    WORKS(SetScreenSplitMode, m_nLogin, 0, eSplit1, &dwBound);
    m_tEvents.Await(Is(eEventWindow, 0, eWindowShowing));
    EXPECT_TRUE(fnShows(4, fnOf(0)));
    auto tInfo = Sized<tagDecoderChannelInformation>();
    WORKS(DecoderGetChannelInformation, m_nLogin, 0, &tInfo);
    EXPECT_TRUE((tInfo.dwAbilities & eDecoderCanLoop) != 0 && (tInfo.dwCodecs & 1 << eCodecH264) != 0);
    // A tour, above what it is bound to.
    tagListed<tagDecoderChannelLoopConfig, tagDecoderLoopEntry> tLoop;
    tagListed<tagDecoderLoopStatus, tagDecoderLoopState> tLoops;
    eDecoderChannelStatus eStatus = eDecoderLoopOff;
    ANSWERS(eResultNotFound, DecoderChannelSetLoopEnable, m_nLogin, 0, eDecoderLoopOn);
    tLoop.dwCount = 2;
    tLoop.at[0] = {1, 0, Channel(1)};
    tLoop.at[1] = {1, 0, Channel(2)};
    WORKS(DecoderSetChannelLoopConfig, m_nLogin, 0, &tLoop);
    std::memset(tLoop.at, 0, sizeof tLoop.at);
    WORKS(DecoderGetChannelLoopConfig, m_nLogin, 0, &tLoop);
    EXPECT_TRUE(tLoop.dwCount == 2 && tLoop.at[1].tSource.dwChannel == 2);
    WORKS(DecoderChannelSetLoopEnable, m_nLogin, 0, eDecoderLoopOn);
    WORKS(DecoderChannelGetLoopEnable, m_nLogin, 0, &eStatus);
    EXPECT_EQ(eStatus, eDecoderLoopOn);
    WORKS(DecoderGetLoopEnable, m_nLogin, &tLoops);
    EXPECT_TRUE(tLoops.dwCount == 1 && tLoops.at[0].dwStatus == eDecoderLoopOn);
    EXPECT_TRUE(fnShows(3, fnOf(1)) && fnShows(3, fnOf(2)) && fnShows(3, fnOf(1)));
    // What is connected for now, above the tour; a recording, above all.
    auto tNow = Sized<tagDecoderDynamicInformation>();
    tNow.tSource = Channel(3);
    WORKS(DecoderDynamicConnect, m_nLogin, 0, &tNow);
    EXPECT_TRUE(fnShows(2, fnOf(3)));
    auto tPlay = Sized<tagDecoderSetPlayStatusParameter>();
    auto tPlayed = Sized<tagDecoderGetPlayStatusParameter>();
    const auto tFound = Recordings().front();
    tPlay.dwAction = eDecoderPlayOpen;
    tPlay.llStartUs = tFound.llStartUs;
    tPlay.llEndUs = tFound.llEndUs;
    tPlay.tSource = Channel(0);
    WORKS(DecoderChannelSetPlayStatus, m_nLogin, 0, &tPlay);
    EXPECT_TRUE(fnShows(1));
    tPlay.dwAction = eDecoderPlayPause;
    WORKS(DecoderChannelSetPlayStatus, m_nLogin, 0, &tPlay);
    WORKS(DecoderChannelGetPlayStatus, m_nLogin, &tPlayed);
    EXPECT_TRUE(tPlayed.dwState == eWindowPaused && tPlayed.llEndUs == tFound.llEndUs);
    auto tFrameTime = Sized<tagTimeInfo>();
    WORKS(DecoderChannelGetOSDTime, m_nLogin, 0, &tFrameTime, eOsdFrameTime);
    EXPECT_TRUE(tFrameTime.llTimeUs >= tFound.llStartUs && tFrameTime.llTimeUs <= tFound.llEndUs);
    tPlay.dwAction = eDecoderPlayClose;
    WORKS(DecoderChannelSetPlayStatus, m_nLogin, 0, &tPlay);
    EXPECT_TRUE(fnShows(2));
    WORKS(DecoderDynamicDisconnect, m_nLogin, 0, eDecoderBlank);
    EXPECT_TRUE(fnShows(5));
    WORKS(DecoderChannelSetLoopEnable, m_nLogin, 0, eDecoderLoopOff);
}

TEST_P(CDeviceTest, WallPicture)
{
    // The wall as a picture: each of these changes it.
    std::vector<unsigned char> abyPicture(8 << 20);
    std::string strBefore;
    const auto fnPicture = [&]
    {
        auto tInfo = Sized<tagImageFileInfo>();
        tInfo.dwWidth = 64;
        tInfo.dwCapacity = static_cast<uint32_t>(abyPicture.size());
        tInfo.pbyData = abyPicture.data();
        WORKS(ImageCapture, m_nLogin, eCaptureScreen, eImagePng, &tInfo);
        return std::string(reinterpret_cast<char*>(abyPicture.data()), tInfo.dwLength);
    };
    const auto fnChanged = [&] { return fnPicture() != std::exchange(strBefore, fnPicture()); };
    auto tLogo = Sized<tagUploadLogoParameter>();
    auto tDisplay = Sized<tagDecoderDisplayStatus>();
    unsigned long adwBound[] = {TESSARO_ALL, TESSARO_ALL, TESSARO_ALL, TESSARO_ALL};
    WORKS(SetScreenSplitMode, m_nLogin, 0, eSplit4, adwBound);
    fnChanged();
    EXPECT_FALSE(fnChanged()); // nothing moves
    // A window's name beside a white picture, which would hide it.
    auto tNamed = Sized<tagDecoderChannelConfig>();
    auto tMasks = Sized<tagConfigPrivacy>();
    tMasks.dwCount = 1;
    tMasks.atMasks[0] = {1, 0, 0, 10000, 10000, 0xFFFFFF};
    EXPECT_EQ(Write(eConfigPrivacy, tMasks), 0);
    tNamed.tSource = Channel(0);
    tNamed.bShowName = 1;
    WORKS(SubscribeEvent, m_nLogin, TESSARO_EVENT(eEventWindow), OnEvent, User(m_tEvents));
    WORKS(DecoderSetChannelConfig, m_nLogin, 2, &tNamed);
    m_tEvents.Await(Is(eEventWindow, 2, eWindowShowing));
    fnChanged();
    strcpy(tNamed.szName, "Gate");
    WORKS(DecoderSetChannelConfig, m_nLogin, 2, &tNamed);
    EXPECT_TRUE(fnChanged());
    EXPECT_FALSE(fnChanged());
    // A logo: uploaded, shown, hidden.
    std::vector<unsigned char> abyLogo(1 << 20);
    auto tInfo = Sized<tagImageFileInfo>();
    tInfo.dwWidth = 160;
    tInfo.dwCapacity = static_cast<uint32_t>(abyLogo.size());
    tInfo.pbyData = abyLogo.data();
    WORKS(ImageCapture, m_nLogin, 0, eImagePng, &tInfo);
    ANSWERS(eResultNotFound, DecoderChannelLogoSwitch, m_nLogin, 0, eChannelShow);
    tLogo.dwFormat = eImagePng;
    tLogo.dwWidth = 10000;
    tLogo.dwLength = tInfo.dwLength;
    tLogo.pbyData = abyLogo.data();
    WORKS(UploadLogo, m_nLogin, 0, &tLogo);
    EXPECT_FALSE(fnChanged());
    WORKS(DecoderChannelLogoSwitch, m_nLogin, 0, eChannelShow);
    EXPECT_TRUE(fnChanged());
    tDisplay.dwAction = eDisplayFillScreen;
    WORKS(DecoderChannelDisplayControl, m_nLogin, 0, &tDisplay);
    EXPECT_TRUE(fnChanged());
    tDisplay.dwAction = eDisplayRestore;
    WORKS(DecoderChannelDisplayControl, m_nLogin, 0, &tDisplay);
    EXPECT_TRUE(fnChanged());
    // Frames that the application sends.
    Frames tFrames;
    int nStream = -1;
    int nTransfer = -1;
    auto tPara = Sized<tagStreamTransferPara>();
    auto tFrame = Sized<tagStreamTransferFrame>();
    auto tWindow = Sized<tagDecoderChannelConfig>();
    tPara.dwVideoCodec = tFrame.dwCodec = eCodecH264;
    EXPECT_NE(API(StreamTransferConnect)(&nTransfer, m_nLogin, 1, &tPara), 0); // isn't bound to it
    API(StreamTransferDisconnect)(nTransfer);
    tWindow.tSource.dwKind = eDecoderSourceTransfer;
    WORKS(DecoderSetChannelConfig, m_nLogin, 1, &tWindow);
    WORKS(StreamTransferConnect, &nTransfer, m_nLogin, 1, &tPara);
    EXPECT_EQ(Open(nStream, 0, eStreamSub), 0);
    WORKS(StreamMediaCB, nStream, OnFrame, User(tFrames));
    const tagSeen tKey = tFrames.Await(&tagSeen::IsKey);
    API(RealStreamDisconnect)(nStream);
    tFrame.dwFlags = eFrameKey;
    tFrame.dwLength = tKey.dwLength;
    tFrame.pbyData = reinterpret_cast<unsigned char const*>(tKey.strData.data());
    fnChanged();
    WORKS(StreamTransferSend, nTransfer, &tFrame);
    EXPECT_TRUE(Comes(fnChanged));
    WORKS(StreamTransferDisconnect, nTransfer);
    ANSWERS(eResultUnknownMedia, StreamTransferSend, nTransfer, &tFrame);
}
