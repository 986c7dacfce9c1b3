// What ONVIF has no word for, what needs no login, and that no function of the C API was left out.

#include "tests/onvif/Onvif.h"

TEST_F(COnvifTest, HasNoWordFor)
{
    Device();
    int n = -1;
    unsigned long dw = 0;
    char szFile[] = "file";
    auto tLink = Sized<tagMediaLinkIDQueryResult>();
    WORKS(QueryStreamMediaLinkID, m_nLogin, eMediaFunctionLive, &tLink);
    EXPECT_EQ(tLink.dwLink, 0);
    WORKS(GetLoginStatus, m_nLogin, &n); // asks VTQ alone
    ANSWERS(eResultNotSupported, AlarmClear, m_nLogin, 0, TESSARO_ALL);
    ANSWERS(eResultNotSupported, FileLock, m_nLogin, szFile, eFileLock);
    ANSWERS(eResultNotSupported, DiskGroupManage, m_nLogin, eDiskGroupFormat, 0, 0, 0);
    ANSWERS(eResultNotSupported, GetDataSize, m_nLogin, 0, eDiskGroupAll, eHistoryAny, nullptr, nullptr, 0, &dw);
    ANSWERS(eResultNotSupported, GetMultiTypeDataSize, m_nLogin, 0, eDiskGroupAll, 0, nullptr, nullptr, 0, &dw);
    auto tStatus = Sized<tagPanelStatusInfo>();
    auto tControl = Sized<tagPanelControlParameter>();
    ANSWERS(eResultNotSupported, PanelGetStatus, m_nLogin, &tStatus);
    ANSWERS(eResultNotSupported, PanelSetStatus, m_nLogin, &tStatus);
    ANSWERS(eResultNotSupported, PanelControl, m_nLogin, &tControl);
    auto tTransfer = Sized<tagStreamTransferPara>();
    auto tFrame = Sized<tagStreamTransferFrame>();
    ANSWERS(eResultNotSupported, StreamTransferConnect, &n, m_nLogin, 0, &tTransfer);
    EXPECT_NE(API(StreamTransferSend)(n, &tFrame), 0);
    EXPECT_NE(API(StreamTransferDisconnect)(n), 0);
    auto tSerial = Sized<tagTransparentChannelPara>();
    tagBuffer tBytes{};
    int nStream = -1;
    ASSERT_EQ(Open(nStream), 0);
    EXPECT_NE(API(TransparentChannelConnect)(&n, nStream, &tSerial), 0);
    EXPECT_NE(API(TransparentChannelWrite)(n, &tBytes), 0);
    EXPECT_NE(API(TransparentChannelCB)(n, OnBytes, 0), 0);
    EXPECT_NE(API(TransparentChannelDisconnect)(n), 0);
    WORKS(RealStreamDisconnect, nStream);
    auto tOf = Sized<tagTransmitHistoryStreamQueryFactor>();
    auto tFound = Sized<tagHistoryStreamMultiTypeQueryResult>();
    ANSWERS(eResultNotSupported, TransmitHistoryStreamQueryConnect, &n, m_nLogin, &tOf);
    EXPECT_NE(API(TransmitHistoryStreamQueryNext)(n, &tFound), 0);
    EXPECT_NE(API(TransmitHistoryStreamQueryDisconnect)(n), 0);
    for (auto const pfnSet :
         {API(RTSPSetIsProductTest), API(VTQDealRepairIpcMsg), API(_VoiceStreamMedia), API(_VoiceStreamIf)})
    {
        EXPECT_EQ(pfnSet(1, nullptr, 0, eProtocolOnvif), eResultNotSupported);
    }
    // What a decoder shows beside ONVIF's layouts and panes.
    auto tLogo = Sized<tagUploadLogoParameter>();
    auto tDisplay = Sized<tagDecoderDisplayStatus>();
    auto tScreen = Sized<tagDecoderDisplayConfig>();
    auto tSignal = Sized<tagDecoderVideoStandardConfig>();
    auto tTime = Sized<tagTimeInfo>();
    auto tPlay = Sized<tagDecoderSetPlayStatusParameter>();
    auto tPlayed = Sized<tagDecoderGetPlayStatusParameter>();
    tagListed<tagDecoderChannelLoopConfig, tagDecoderLoopEntry> tLoop;
    tagListed<tagDecoderLoopStatus, tagDecoderLoopState> tLoops;
    eDecoderChannelStatus eStatus = eDecoderLoopOff;
    ANSWERS(eResultNotSupported, UploadLogo, m_nLogin, 0, &tLogo);
    ANSWERS(eResultNotSupported, DecoderChannelLogoSwitch, m_nLogin, 0, eChannelShow);
    ANSWERS(eResultNotSupported, DecoderChannelDisplayControl, m_nLogin, 0, &tDisplay);
    ANSWERS(eResultNotSupported, DecoderSetDisplayConfig, m_nLogin, 0, &tScreen);
    ANSWERS(eResultNotSupported, DecoderGetDisplayConfig, m_nLogin, 0, &tScreen);
    ANSWERS(eResultNotSupported, DecoderSetVideoStandard, m_nLogin, 0, &tSignal);
    ANSWERS(eResultNotSupported, DecoderSetChannelLoopConfig, m_nLogin, 0, &tLoop);
    ANSWERS(eResultNotSupported, DecoderGetChannelLoopConfig, m_nLogin, 0, &tLoop);
    ANSWERS(eResultNotSupported, DecoderChannelSetLoopEnable, m_nLogin, 0, eDecoderLoopOn);
    ANSWERS(eResultNotSupported, DecoderChannelGetLoopEnable, m_nLogin, 0, &eStatus);
    ANSWERS(eResultNotSupported, DecoderGetLoopEnable, m_nLogin, &tLoops);
    ANSWERS(eResultNotSupported, DecoderChannelSetPlayStatus, m_nLogin, 0, &tPlay);
    ANSWERS(eResultNotSupported, DecoderChannelGetPlayStatus, m_nLogin, &tPlayed);
    ANSWERS(eResultNotSupported, DecoderChannelGetOSDTime, m_nLogin, 0, &tTime, eOsdClock);
}

TEST_F(COnvifTest, NeedsNoLogin)
{
    const CTool tTool;
    // The library asks every protocol and answers 0; what comes back in records says what ONVIF did.
    eNetworkSDKVersion eVersion = eSDKVersionUnknown;
    WORKS(GetSDKVersion, "127.0.0.1", tTool.Port(), 5000, &eVersion);
    EXPECT_EQ(eVersion, eSDKVersion2);
    WORKS(DeviceIsOnline, "127.0.0.1", tTool.Port(), 5000);
    WORKS(SetCallbackFunc, eCallbackLog, nullptr);
    WORKS(DeleteUserForceCB, nullptr, 0);
    WORKS(DeviceRegisterCB, nullptr);
    WORKS(DeviceRegisterListenStart, nullptr, 0);
    WORKS(DeviceRegisterListenStop);
    unsigned long dw = 0;
    unsigned char abyMac[6] = {};
    auto tWhere = Sized<tagDeviceProbeParameter>();
    tagDeviceProbeConfig tConfig{};
    tagDeviceProbeUserLoginPara tLogin{};
    tagDeviceProbeConfigInformation tBlock{};
    WORKS(DeviceProbeSetDeviceConfig, abyMac, 0, &tConfig);
    WORKS(DeviceProbeSetAllDeviceConfig, &tWhere, &tConfig);
    WORKS(DeviceProbeSetConfig, abyMac, 0, &tLogin, &tBlock);
    WORKS(DeviceProbeGetConfig, abyMac, 0, &tLogin, &tBlock);
    auto tFont = Sized<tagFontPara>();
    auto tHttp = Sized<tagDeviceConfigFromHttp>();
    WORKS(StringToLattice, "Tor", &tFont, abyMac, &dw, &dw, &dw);
    WORKS(GetDeviceConfigFromHttp, "127.0.0.1", &tHttp);
    WORKS(GetFileHeader, eFileFormatNative, reinterpret_cast<char*>(abyMac), &dw);
    WORKS(GetAttribute, eAttributeMaxChannel, &dw);
    WORKS(SetAttribute, eAttributeMaxChannel, 1);
}

namespace
{
testing::Environment* const g_pNoneIsLeftOut = testing::AddGlobalTestEnvironment(new CNoneIsLeftOut("Onvif*:COnvif*"));
} // namespace
