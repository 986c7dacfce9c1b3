// Every function of the C API on the simulated device, each with what it does as an application sees it.

#include "tests/device/Device.h"

#include <algorithm>
#include <cmath>
#include <future>

INSTANTIATE_TEST_SUITE_P(All, CDeviceTest, testing::Values(eProtocolVTQ, eProtocolPrivate),
                         [](auto const& tInfo) { return tInfo.param == eProtocolVTQ ? "VTQ" : "Private"; });

namespace
{
constexpr int64_t g_llSecond = 1000000;

// Until fnHolds does.
template <class Holds>
bool Comes(Holds fnHolds)
{
    for (const auto tUntil = std::chrono::steady_clock::now() + g_tPatience; !fnHolds();)
    {
        if (std::chrono::steady_clock::now() > tUntil)
        {
            return false;
        }
        std::this_thread::sleep_for(5ms);
    }
    return true;
}
auto Is(eDeviceEvent eEvent, unsigned long dwWhere, unsigned long dwState)
{
    return [=](tagEvent const& t)
    { return t.dwEvent == static_cast<unsigned long>(eEvent) && t.dwWhere == dwWhere && t.dwState == dwState; };
}
auto Is(eDeviceEvent eEvent)
{
    return [=](tagEvent const& t) { return t.dwEvent == static_cast<unsigned long>(eEvent); };
}
bool IsVideo(tagSeen const& t)
{
    return t.IsVideo();
}
bool IsKey(tagSeen const& t)
{
    return t.IsKey();
}
bool IsEnd(tagSeen const& t)
{
    return t.IsEnd();
}
CInbox<std::string> g_tFound;
CInbox<std::string> g_tRegistered;
CInbox<std::string> g_tLines;
} // namespace

// --- logins ----------------------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Logins)
{
    int nViewer = -1;
    int nLevel = -1;
    int nStatus = -1;
    unsigned char abyMac[6] = {};
    EXPECT_EQ(Login(nViewer, "admin", "wrong"), eResultWrongLogin);
    EXPECT_EQ(Login(nViewer, "nobody"), eResultWrongLogin);
    EXPECT_EQ(Fault(eFaultLockOut, 0, 0, 2), 0);
    EXPECT_EQ(Login(nViewer, "viewer", "wrong"), eResultWrongLogin);
    EXPECT_EQ(Login(nViewer, "viewer", "wrong"), eResultWrongLogin);
    EXPECT_EQ(Login(nViewer, "viewer", "viewer"), eResultLocked);
    EXPECT_EQ(Fault(eFaultNone), 0);
    EXPECT_EQ(Login(nViewer, "viewer", "viewer"), 0);
    ANSWERS(eResultWrongLogin, RecordControl, nViewer, 0, 1);
    WORKS(GetLoginLevel, nViewer, &nLevel);
    WORKS(GetLoginMac, m_nLogin, abyMac, 6);
    WORKS(GetLoginStatus, m_nLogin, &nStatus);
    if (IsVTQ()) // the private protocol isn't asked
    {
        char szMac[18];
        std::snprintf(szMac, sizeof szMac, "%02x:%02x:%02x:%02x:%02x:%02x", abyMac[0], abyMac[1], abyMac[2], abyMac[3],
                      abyMac[4], abyMac[5]);
        EXPECT_STREQ(szMac, Read<tagConfigNetwork>(eConfigNetwork, eInterfaceOfLogin).szMac);
        EXPECT_EQ(nLevel, eUserViewer);
        EXPECT_EQ(nStatus, eLoginAlive);
        const auto fnStatus = [&] { return API(GetLoginStatus)(nViewer, &nStatus) ? -1 : nStatus; };
        static CInbox<unsigned long> s_tForcedOff;
        API(DeleteUserForceCB)([](void*, unsigned long dwUser) { return s_tForcedOff.Put(dwUser), 0; }, 7);
        EXPECT_EQ(Fault(eFaultDrop), 0);
        EXPECT_TRUE(Comes([&] { return fnStatus() == eLoginLost; }));
        EXPECT_EQ(Fault(eFaultNone), 0);
        EXPECT_TRUE(Comes([&] { return fnStatus() == eLoginAlive; }));
        EXPECT_EQ(Fault(eFaultForceOff), 0); // of every user
        EXPECT_EQ(s_tForcedOff.Next(), 7);
        EXPECT_TRUE(Comes([&] { return fnStatus() == eLoginEnded; }));
    }
    WORKS(UserLogout, nViewer);
    ANSWERS(eResultUnknownLogin, GetLoginStatus, nViewer, &nStatus);
    const std::string strAddress = std::exchange(m_strAddress, "nobody.invalid");
    EXPECT_EQ(Login(nViewer), eResultUnreachable);
    m_strAddress = strAddress;
    Stop();
    EXPECT_EQ(Login(nViewer), eResultNoProtocol);
    Start();
}

TEST_P(CDeviceTest, FaultsOfCalls)
{
    auto tPicture = Sized<tagCameraPicture>();
    const auto fnAsk = [&] { return API(GetIpcPara)(m_nLogin, 0, eCameraPicture, &tPicture, sizeof tPicture); };
    EXPECT_EQ(Fault(eFaultBusy), 0);
    EXPECT_EQ(fnAsk(), eResultBusy);
    EXPECT_EQ(Fault(eFaultNone), 0);
    EXPECT_EQ(Fault(eFaultSlow, 0, 0, 0, 50), 0);
    const auto tBegin = std::chrono::steady_clock::now();
    EXPECT_EQ(fnAsk(), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - tBegin, 50ms);
    EXPECT_EQ(Fault(eFaultNone), 0);
    // A call that nobody answers ends with its login.
    EXPECT_EQ(Fault(eFaultHang, 0, 0, 1), 0);
    auto tCall = std::async(std::launch::async, fnAsk);
    EXPECT_EQ(tCall.wait_for(50ms), std::future_status::timeout);
    EXPECT_EQ(Fault(eFaultForceOff), 0);
    EXPECT_NE(tCall.get(), 0);
}

// --- live streams ----------------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Live)
{
    Frames tFrames;
    Frames tRaw;
    int nMedia = -1;
    EXPECT_EQ(Open(nMedia, 4), eResultNoChannel);
    EXPECT_EQ(Open(nMedia, 0), 0);
    WORKS(StreamMediaRawCB, nMedia, OnFrame, User(tRaw));
    WORKS(StreamMediaCB, nMedia, OnFrame, User(tFrames));
    const tagSeen tFirst = tFrames.Await(IsVideo);
    EXPECT_TRUE(tFirst.IsKey() && tFirst.nMedia == nMedia && tFirst.dwCodec == eCodecH264 && tFirst.dwWidth == 1280);
    EXPECT_EQ(tFirst.strData.substr(0, 4), std::string("\0\0\0\1", 4));
    EXPECT_NEAR(static_cast<double>(tFirst.llWallClockUs) / 1e6, static_cast<double>(time(nullptr)), 60);
    EXPECT_EQ(tFrames.Await([](tagSeen const& t) { return t.dwMediaType == eMediaAudio; }).dwSampleRate, 8000);
    EXPECT_EQ(tRaw.Next().nMedia, nMedia);
    // Twenty-five a second, and a key frame long before its time.
    const auto dwInterval = Read<tagConfigVideoEncoder>(eConfigVideoEncoder, 0, eStreamMain).dwKeyFrameInterval;
    const tagSeen tKey = tFrames.Await(IsKey);
    const tagSeen tNext = tFrames.Await(IsVideo);
    EXPECT_EQ(tNext.dwSequence, tKey.dwSequence + 1);
    EXPECT_NEAR(static_cast<double>(tNext.llPresentationTimeUs - tKey.llPresentationTimeUs), 40000, 100);
    WORKS(ForceIFrame, m_nLogin, nMedia);
    EXPECT_LT(tFrames.Await(IsKey).dwSequence, tKey.dwSequence + dwInterval);
    // Paused, and on again.
    WORKS(StreamMediaControl, nMedia, eTaskPause);
    std::this_thread::sleep_for(100ms);
    tFrames.Drain();
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(tFrames.Drain(), 0);
    WORKS(StreamMediaControl, nMedia, eTaskPlay);
    EXPECT_TRUE(tFrames.Await(IsVideo).IsKey());
    tagRTSPPackageInfo tInfo{};
    WORKS(GetPackageInfo, nMedia, &tInfo, sizeof tInfo);
    EXPECT_EQ(tInfo.ullFrames > 0 && tInfo.ullBytes > tInfo.ullFrames && tInfo.dwState == eConnectionLive, IsVTQ());
    // One connection for several streams.
    auto tLink = Sized<tagMediaLinkIDQueryResult>();
    WORKS(QueryStreamMediaLinkID, m_nLogin, eMediaFunctionLive, &tLink);
    ANSWERS(eResultBadArgument, SetStreamMediaLinkID, nMedia, tLink.dwLink + 999);
    WORKS(SetStreamMediaLinkID, nMedia, tLink.dwLink);
    WORKS(QueryStreamMediaLinkID, m_nLogin, eMediaFunctionLive, &tLink);
    EXPECT_EQ(tLink.dwStreams, 1);
    // Another size shows in the stream.
    auto tVideo = Read<tagConfigVideoEncoder>(eConfigVideoEncoder, 0, eStreamMain);
    tVideo.dwWidth = 640;
    tVideo.dwHeight = 360;
    EXPECT_EQ(Write(eConfigVideoEncoder, tVideo, 0, eStreamMain), 0);
    EXPECT_TRUE(tFrames.Await([](tagSeen const& t) { return t.IsVideo() && t.dwWidth == 640; }).IsKey());
    WORKS(RealStreamDisconnect, nMedia);
    tFrames.Drain();
    ANSWERS(eResultUnknownMedia, StreamMediaControl, nMedia, eTaskPlay);
    EXPECT_EQ(tFrames.Drain(), 0);
    EXPECT_EQ(Open(nMedia, 3), 0);
    WORKS(StreamMediaCB, nMedia, OnFrame, User(tFrames));
    EXPECT_EQ(tFrames.Await(IsVideo).dwCodec, eCodecH265);
    API(RealStreamDisconnect)(nMedia);
}

TEST_P(CDeviceTest, FaultsOfStreams)
{
    Frames tFrames;
    Events tEvents;
    int nMedia = -1;
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(tEvents));
    EXPECT_EQ(Open(nMedia, 1, eStreamSub), 0);
    WORKS(StreamMediaCB, nMedia, OnFrame, User(tFrames));
    EXPECT_EQ(Fault(eFaultDamage, 1, 0, 0, 500), 0);
    tFrames.Await([](tagSeen const& t) { return (t.dwFlags & eFrameDamaged) != 0; });
    EXPECT_EQ(Fault(eFaultLose, 1, 0, 0, 500), 0);
    tFrames.Await([](tagSeen const& t) { return t.dwLostBefore > 0; });
    EXPECT_EQ(Fault(eFaultNone), 0);
    EXPECT_EQ(Fault(eFaultStall, 1), 0);
    std::this_thread::sleep_for(200ms);
    tFrames.Drain();
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(tFrames.Drain(), 0);
    EXPECT_EQ(Fault(eFaultNone), 0);
    tFrames.Await(IsVideo);
    EXPECT_EQ(Fault(eFaultRestart, 0, 300), 0);
    tEvents.Await(Is(eEventLoginLost));
    tEvents.Await(Is(eEventLoginRestored));
    tEvents.Await(Is(eEventDeviceRestarted, eRestartFault, 0));
    EXPECT_TRUE(tFrames.Await([](tagSeen const& t) { return (t.dwFlags & eFrameDiscontinuity) != 0; }).IsKey());
    API(RealStreamDisconnect)(nMedia);
}

// --- the plug-in itself ----------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Plugin)
{
    // Four names of one function.
    auto tFault = Sized<tagDeviceFault>();
    tFault.dwFault = eFaultAlarmInput;
    m_strAddress.copy(tFault.szAddress, sizeof tFault.szAddress);
    const auto fnRaise = [&](auto pfnSet)
    {
        EXPECT_EQ(pfnSet(eMiscFault, &tFault, sizeof tFault, GetParam()), 0);
        ++tFault.dwChannel;
    };
    fnRaise(API(RTSPSetIsProductTest));
    fnRaise(API(VTQDealRepairIpcMsg));
    fnRaise(API(_VoiceStreamMedia));
    fnRaise(API(_VoiceStreamIf));
    unsigned long adwInputs[4] = {};
    unsigned long dwCount = 4;
    WORKS(AlarminStateGet, m_nLogin, &dwCount, adwInputs);
    EXPECT_EQ(adwInputs[0] + adwInputs[1] + adwInputs[2] + adwInputs[3], 4);
    ANSWERS(eResultNotSupported, RTSPSetIsProductTest, 1, nullptr, 0, GetParam());
    if (IsVTQ())
    {
        int nOther = -1;
        API(SetCallbackFunc)
        (eCallbackLog, reinterpret_cast<void*>(+[](unsigned long, char const* szText) { g_tLines.Put(szText); }));
        EXPECT_EQ(Login(nOther), 0);
        EXPECT_NE(g_tLines.Next().find(m_strAddress), std::string::npos);
        API(UserLogout)(nOther);
        API(SetCallbackFunc)(eCallbackLog, nullptr);
    }
}

// --- configuration and control ---------------------------------------------------------------------------------------

namespace
{
// A block, one word of it, and what that word may not be.
struct tagBlockRow
{
    eConfigType eType;
    std::size_t nLength;
    std::size_t nPlace;
    uint32_t dwGood;
    uint32_t dwBad;
    uint32_t dwIndex = 0;
};
#define BLOCK(type, record, word, ...)                                                                                 \
    {                                                                                                                  \
        type, sizeof(record), offsetof(record, word), __VA_ARGS__                                                      \
    }
constexpr tagBlockRow g_atBlocks[] = {
    BLOCK(eConfigNetwork, tagConfigNetwork, dwMtu, 1400, 1, eInterfaceOfLogin),
    BLOCK(eConfigClock, tagConfigClock, dwMode, eClockNtp, 2),
    BLOCK(eConfigUsers, tagConfigUsers, atUsers[1].dwLevel, eUserOperator, 9),
    BLOCK(eConfigVideoEncoder, tagConfigVideoEncoder, dwKeyFrameInterval, 30, 0, 3),
    BLOCK(eConfigAudioEncoder, tagConfigAudioEncoder, dwVolume, 70, 101, 1),
    BLOCK(eConfigPicture, tagCameraPicture, dwContrast, 60, 101, 2),
    BLOCK(eConfigOverlay, tagConfigOverlay, dwCount, 1, 9),
    BLOCK(eConfigMotion, tagConfigMotion, dwSensitivity, 60, 101),
    BLOCK(eConfigPrivacy, tagConfigPrivacy, dwCount, 1, 9),
    BLOCK(eConfigSchedule, tagConfigSchedule, dwKeepDays, 7, 0xFFFFFFFF, 1),
    BLOCK(eConfigAlarmInput, tagConfigAlarmInput, dwIdle, eContactClosed, 2, 1),
    BLOCK(eConfigAlarmOutput, tagConfigAlarmOutput, dwPulseMs, 500, 0xFFFFFFFF, 1),
};

template <class Block>
int Pass(Block& tBlock, tagBlockRow const& tRow, int (*pfnPass)(int, Block*), int nLogin)
{
    tBlock.type = static_cast<uint32_t>(tRow.eType);
    tBlock.index = tRow.dwIndex;
    tBlock.extra[1] = eStreamMain;
    return pfnPass(nLogin, &tBlock);
}
} // namespace

TEST_P(CDeviceTest, Blocks)
{
    Events tEvents;
    const auto ptFirst = std::make_unique<tagConfigInformation>();
    const auto ptSecond = std::make_unique<tagConfigInformationV2>();
    WORKS(SubscribeEvent, m_nLogin, TESSARO_EVENT(eEventConfigChanged), OnEvent, User(tEvents));
    for (tagBlockRow const& tRow : g_atBlocks)
    {
        SCOPED_TRACE(tRow.eType);
        const auto fnWord = [&](auto& tBlock) -> uint32_t&
        { return *reinterpret_cast<uint32_t*>(tBlock.data + tRow.nPlace); };
        EXPECT_EQ(Pass(*ptFirst, tRow, API(GetConfig), m_nLogin), 0);
        EXPECT_EQ(ptFirst->extra[0], tRow.nLength);
        EXPECT_NE(fnWord(*ptFirst), tRow.dwGood);
        fnWord(*ptFirst) = tRow.dwGood;
        EXPECT_EQ(Pass(*ptFirst, tRow, API(SetConfig), m_nLogin), 0);
        tEvents.Await(Is(eEventConfigChanged, static_cast<unsigned long>(tRow.eType), ptFirst->index));
        EXPECT_EQ(Pass(*ptSecond, tRow, API(GetConfigV2), m_nLogin), 0);
        EXPECT_EQ(fnWord(*ptSecond), tRow.dwGood);
        fnWord(*ptSecond) = tRow.dwBad;
        EXPECT_EQ(Pass(*ptSecond, tRow, API(SetConfigV2), m_nLogin), eResultBadArgument);
        EXPECT_EQ(Pass(*ptFirst, tRow, API(GetConfig), m_nLogin), 0);
        EXPECT_EQ(fnWord(*ptFirst), tRow.dwGood);
    }
    // The second layout writes too; the first is read again; and by serial number, without a login.
    auto tIdentity = Read<tagConfigIdentity>(eConfigIdentity);
    const auto fnRename = [&](char const* szName)
    {
        strcpy(tIdentity.szName, szName);
        ptSecond->type = eConfigIdentity;
        ptSecond->index = ptSecond->extra[0] = ptSecond->extra[1] = 0;
        std::memcpy(ptSecond->data, &tIdentity, sizeof tIdentity);
    };
    fnRename("Gate");
    WORKS(SetConfigV2, m_nLogin, ptSecond.get());
    EXPECT_STREQ(Read<tagConfigIdentity>(eConfigIdentity).szName, "Gate");
    fnRename("Door");
    ANSWERS(IsVTQ() ? 0 : 0, SetConfigBySn, tIdentity.szSerialNumber, GetParam(), ptSecond.get());
    EXPECT_STREQ(Read<tagConfigIdentity>(eConfigIdentity).szName, IsVTQ() ? "Door" : "Gate");
    EXPECT_EQ(Read<tagConfigStorage>(eConfigStorage).dwCount, tIdentity.dwDisks);
    // An attribute is the RTSP plug-in's.
    unsigned long dwMost = 0;
    WORKS(GetAttribute, eAttributeMaxChannel, &dwMost);
    EXPECT_EQ(dwMost, 16);
    WORKS(SetAttribute, eAttributeMaxChannel, 3);
    WORKS(GetAttribute, eAttributeMaxChannel, &dwMost);
    EXPECT_EQ(dwMost, 16);
    ptSecond->type = 77;
    ANSWERS(eResultNotFound, GetConfigV2, m_nLogin, ptSecond.get());
}

TEST_P(CDeviceTest, Cameras)
{
    // Each record as it is, with one word changed, with nonsense.
    const auto fnTry = [&](eCameraParameter eWhich, auto tRecord, auto pWord, uint32_t dwGood, uint32_t dwBad)
    {
        tRecord.dwSize = sizeof tRecord;
        const auto fnPass = [&](auto pfnPass) { return pfnPass(m_nLogin, 1, eWhich, &tRecord, sizeof tRecord); };
        EXPECT_EQ(fnPass(API(GetIpcPara)), 0);
        EXPECT_NE(tRecord.*pWord, dwGood);
        tRecord.*pWord = dwGood;
        EXPECT_EQ(fnPass(API(SetIpcPara)), 0);
        tRecord.*pWord = dwBad;
        EXPECT_EQ(fnPass(API(SetIpcPara)), eResultBadArgument);
        EXPECT_EQ(fnPass(API(GetIpcPara)), 0);
        EXPECT_EQ(tRecord.*pWord, dwGood);
    };
    fnTry(eCameraPicture, tagCameraPicture{}, &tagCameraPicture::dwBrightness, 30, 101);
    fnTry(eCameraDayNight, tagCameraDayNight{}, &tagCameraDayNight::dwMode, eDayNightNight, 4);
    fnTry(eCameraExposure, tagCameraExposure{}, &tagCameraExposure::dwMode, eModeManual, 2);
    fnTry(eCameraFocus, tagCameraFocus{}, &tagCameraFocus::dwMode, eModeManual, 2);
    auto tPicture = Sized<tagCameraPicture>();
    WORKS(SetChromaDefault, m_nLogin, 1, eDefaultPicture);
    WORKS(GetIpcPara, m_nLogin, 1, eCameraPicture, &tPicture, sizeof tPicture);
    EXPECT_EQ(tPicture.dwBrightness, 50);
    ANSWERS(eResultBadArgument, SetIpcPara, m_nLogin, 1, eCameraPicture, &tPicture, 8);
    ANSWERS(eResultNoChannel, GetIpcPara, m_nLogin, 4, eCameraPicture, &tPicture, sizeof tPicture);
}

TEST_P(CDeviceTest, OlderRecord)
{
    // An application that knows only the first 72 bytes of a network interface changes what it knows.
    auto tNetwork = Read<tagConfigNetwork>(eConfigNetwork);
    tNetwork.dwSize = 72;
    tNetwork.dwMtu = 1300;
    strcpy(tNetwork.szHostName, "beyond");
    EXPECT_EQ(Write(eConfigNetwork, tNetwork), 0);
    EXPECT_EQ(Read<tagConfigNetwork>(eConfigNetwork).dwMtu, 1300);
    EXPECT_STRNE(Read<tagConfigNetwork>(eConfigNetwork).szHostName, "beyond");
    tNetwork.dwSize = 71; // no version was so short
    EXPECT_EQ(Write(eConfigNetwork, tNetwork), eResultBadArgument);
}

TEST_P(CDeviceTest, Control)
{
    Events tEvents;
    eNetworkSDKVersion eVersion = eSDKVersionUnknown;
    const auto fnLog = [&]
    {
        return Ask<tagLogQueryResult>(m_nLogin, API(HistoryLogQueryConnect), Sized<tagLogQueryFactor>(),
                                      API(HistoryLogQueryNext), API(HistoryLogQueryDisconnect));
    };
    WORKS(GetSDKVersionByHandle, m_nLogin, &eVersion);
    EXPECT_EQ(eVersion, eSDKVersion2);
    for (int i = 0; i < 5; ++i)
    {
        WORKS(AlarmoutControl, m_nLogin, 0, i % 2);
    }
    const auto nEntries = fnLog().size();
    EXPECT_STREQ(fnLog().back().szUserName, "admin");
    WORKS(DeviceControl, m_nLogin, eDeviceClearLog);
    EXPECT_LT(fnLog().size(), nEntries);
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(tEvents));
    WORKS(DeviceControl, m_nLogin, eDeviceRestart);
    tEvents.Await(Is(eEventDeviceRestarted, eRestartAsked, 0));
    ANSWERS(eResultBadArgument, DeviceControl, m_nLogin, static_cast<eRemoteDeviceControl>(99));
}

// --- alarms, snapshots, recording ------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Alarms)
{
    Events tEvents;
    unsigned long adwState[4] = {};
    unsigned long dwCount = 1;
    EXPECT_EQ(Fault(eFaultMotion, 2), 0);
    WORKS(SubscribeEvent, m_nLogin, TESSARO_EVENT(eEventMotion) | TESSARO_EVENT(eEventAlarmInput), OnEvent,
          User(tEvents));
    EXPECT_EQ(tEvents.Await(Is(eEventMotion, 2, 1)).nLogin, m_nLogin); // what is on already comes first
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(tEvents));
    // Outputs: on, off, and on for a while.
    WORKS(AlarmoutControl, m_nLogin, 1, 1);
    tEvents.Await(Is(eEventAlarmOutput, 1, 1));
    WORKS(AlarmoutStateGet, m_nLogin, &dwCount, adwState);
    EXPECT_EQ(dwCount, 4);
    WORKS(AlarmoutStateGet, m_nLogin, &dwCount, adwState);
    EXPECT_EQ(adwState[1], 1);
    WORKS(AlarmoutControl, m_nLogin, 1, 0);
    tEvents.Await(Is(eEventAlarmOutput, 1, 0));
    WORKS(AlarmoutControl, m_nLogin, 2, 50);
    tEvents.Await(Is(eEventAlarmOutput, 2, 1));
    tEvents.Await(Is(eEventAlarmOutput, 2, 0));
    ANSWERS(eResultNoChannel, AlarmoutControl, m_nLogin, 4, 1);
    // An input, with what it switches; clearing ends that.
    auto tInput = Read<tagConfigAlarmInput>(eConfigAlarmInput, 3);
    tInput.tAction.dwOutputs = 1;
    EXPECT_EQ(Write(eConfigAlarmInput, tInput, 3), 0);
    EXPECT_EQ(Fault(eFaultAlarmInput, 3), 0);
    tEvents.Await([&](tagEvent const& t) { return Is(eEventAlarmOutput, 0, 1)(t); });
    WORKS(AlarminStateGet, m_nLogin, &dwCount, adwState);
    EXPECT_EQ(adwState[3], 1);
    WORKS(AlarmClear, m_nLogin, eEventAlarmInput, TESSARO_ALL);
    tEvents.Await(Is(eEventAlarmOutput, 0, 0));
    // Some events end, the others stay.
    WORKS(UnSubscribeEvent, m_nLogin, TESSARO_EVENT(eEventTamper));
    EXPECT_EQ(Fault(eFaultTamper, 1), 0);
    EXPECT_EQ(Fault(eFaultVideoLoss, 1), 0);
    EXPECT_NE(
        tEvents.Await([](tagEvent const& t) { return Is(eEventTamper)(t) || Is(eEventVideoLoss, 1, 1)(t); }).dwEvent,
        static_cast<unsigned long>(eEventTamper));
}

TEST_P(CDeviceTest, Snapshots)
{
    std::vector<unsigned char> abyPicture(1 << 20);
    auto tInfo = Sized<tagImageFileInfo>();
    tInfo.pbyData = abyPicture.data();
    tInfo.dwCapacity = 10;
    ANSWERS(eResultNoResources, ImageCapture, m_nLogin, 0, eImageJpeg, &tInfo);
    EXPECT_GT(tInfo.dwLength, 1000);
    tInfo.dwCapacity = static_cast<uint32_t>(abyPicture.size());
    tInfo.dwWidth = tInfo.dwHeight = 0;
    WORKS(ImageCapture, m_nLogin, 0, eImageJpeg, &tInfo);
    EXPECT_TRUE(tInfo.dwWidth == 1280 && tInfo.dwHeight == 720 && abyPicture[0] == 0xFF && abyPicture[1] == 0xD8);
    tInfo.dwWidth = 320;
    tInfo.dwHeight = 0;
    WORKS(ImageCapture, m_nLogin, 3, eImagePng, &tInfo);
    EXPECT_TRUE(tInfo.dwWidth == 320 && tInfo.dwHeight == 180 && std::memcmp(&abyPicture[1], "PNG", 3) == 0);
    ANSWERS(eResultNoChannel, ImageCapture, m_nLogin, 4, eImagePng, &tInfo);
}

TEST_P(CDeviceTest, Recording)
{
    Events tEvents;
    WORKS(SubscribeEvent, m_nLogin, TESSARO_EVENT(eEventRecording), OnEvent, User(tEvents));
    WORKS(RecordControl, m_nLogin, 1, 1);
    tEvents.Await(Is(eEventRecording, 1, eHistoryManual));
    auto tFactor = Sized<tagHistoryStreamQueryFactor>();
    tFactor.dwChannel = 1;
    tFactor.dwType = eHistoryManual;
    const auto atManual = Recordings(tFactor);
    ASSERT_EQ(atManual.size(), 1);
    EXPECT_EQ(atManual[0].bRecording, 1);
    WORKS(RecordControl, m_nLogin, 1, 0);
    tEvents.Await(Is(eEventRecording, 1, 0));
    std::string strFile = atManual[0].szFile;
    WORKS(FileLock, m_nLogin, strFile.data(), eFileLock);
    tFactor.dwType = eHistoryAny;
    tFactor.bLockedOnly = 1;
    ASSERT_EQ(Recordings(tFactor).size(), 1);
    EXPECT_EQ(Recordings(tFactor)[0].szFile, strFile);
    WORKS(FileLock, m_nLogin, strFile.data(), eFileUnlock);
    EXPECT_EQ(Recordings(tFactor).size(), 0);
    ANSWERS(eResultNotFound, FileLock, m_nLogin, std::string("no file").data(), eFileLock);
    EXPECT_EQ(Fault(eFaultDiskFull, TESSARO_ALL), 0);
    ANSWERS(eResultDeviceFull, RecordControl, m_nLogin, 1, 1);
}

// --- playback --------------------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Playback)
{
    const auto tFound = Recordings().front();
    Frames tFrames;
    Frames tOther;
    int nStream = -1;
    int nOther = -1;
    auto tPara = Sized<tagHistoryStreamPara>();
    std::memcpy(tPara.szFile, tFound.szFile, sizeof tPara.szFile);
    WORKS(HistoryStreamCreate, &nStream, m_nLogin, &tPara, eHistoryNoAudio);
    WORKS(HistoryStreamCB, nStream, OnFrame, User(tFrames));
    const tagSeen tFirst = tFrames.Next();
    EXPECT_TRUE(tFirst.IsKey() && tFirst.nMedia == nStream);
    EXPECT_LT(tFirst.llWallClockUs - tFound.llStartUs, g_llSecond);
    // Somewhere else, faster, backwards.
    auto tTime = Sized<tagTimeInfo>();
    tTime.llTimeUs = (tFound.llStartUs + tFound.llEndUs) / 2;
    WORKS(HistoryStreamPosition, nStream, eOperationSet, &tTime);
    const int64_t llMiddle = tTime.llTimeUs;
    tFrames.Await([&](tagSeen const& t) { return std::abs(t.llWallClockUs - llMiddle) < 5 * g_llSecond; });
    WORKS(HistoryStreamPosition, nStream, eOperationGet, &tTime);
    EXPECT_LT(std::abs(tTime.llTimeUs - llMiddle), 5 * g_llSecond);
    ANSWERS(eResultBadArgument, HistoryStreamSetSpeed, nStream, eSpeedNormal * 17);
    WORKS(HistoryStreamSetSpeed, nStream, eSpeedReverse + eSpeedNormal * 8);
    int64_t llLast = INT64_MAX;
    tFrames.Await(
        [&](tagSeen const& t)
        {
            return t.llWallClockUs < llMiddle - 10 * g_llSecond && t.IsKey() &&
                   t.llWallClockUs < std::exchange(llLast, t.llWallClockUs);
        });
    // The end; one step from where it is set then.
    WORKS(HistoryStreamSetSpeed, nStream, eSpeedNormal * 16);
    tTime.llTimeUs = tFound.llEndUs - 3 * g_llSecond;
    WORKS(HistoryStreamPosition, nStream, eOperationSet, &tTime);
    EXPECT_EQ(tFrames.Await(IsEnd).dwLength, 0);
    WORKS(StreamMediaControl, nStream, eTaskPause);
    tTime.llTimeUs = llMiddle;
    WORKS(HistoryStreamPosition, nStream, eOperationSet, &tTime);
    tFrames.Drain();
    WORKS(StreamMediaControl, nStream, eTaskStep);
    tFrames.Next();
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(tFrames.Drain(), 0);
    // A second one in step with the first: what either does, both do.
    auto tTypes = Sized<tagHistoryStreamMultiTypePara>();
    tTypes.dwChannel = 1;
    tTypes.dwTypes = eHistoryContinuous | eHistoryMotion | eHistoryAlarm;
    tTypes.llStartUs = tFound.llStartUs;
    WORKS(HistoryStreamMultiTypeCreate, &nOther, m_nLogin, &tTypes, eHistoryNoAudio | eHistoryPaused);
    WORKS(HistoryStreamCB, nOther, OnFrame, User(tOther));
    WORKS(HistoryStreamSync, nOther, nStream);
    WORKS(HistoryStreamSetSpeed, nStream, eSpeedNormal);
    WORKS(StreamMediaControl, nStream, eTaskPlay);
    tOther.Await([&](tagSeen const& t) { return t.llWallClockUs > llMiddle; });
    WORKS(HistoryStreamUnSync, nOther, nStream);
    WORKS(StreamMediaControl, nStream, eTaskPause);
    tOther.Drain();
    tOther.Next();
    WORKS(HistoryStreamDestroy, nOther);
    WORKS(HistoryStreamDestroy, nStream);
    ANSWERS(eResultUnknownMedia, HistoryStreamPosition, nStream, eOperationGet, &tTime);
    strcpy(tPara.szFile, "no file");
    ANSWERS(eResultNotFound, HistoryStreamCreate, &nStream, m_nLogin, &tPara, 0);
    API(HistoryStreamDestroy)(nStream);
}

// --- voice -----------------------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Voice)
{
    Bytes tHeard;
    int nStream = -1;
    int nVoice = -1;
    auto tPara = Sized<tagVoiceStreamPara>();
    EXPECT_EQ(Open(nStream, 0), 0);
    WORKS(VoiceStreamConnect, &nVoice, nStream, &tPara);
    EXPECT_TRUE(tPara.dwCodec != 0 && tPara.dwSampleRate == 8000 && tPara.dwPacketMs == 20 && tPara.dwChannels == 1);
    WORKS(VoiceStreamCB, nVoice, OnVoice, User(tHeard));
    std::string strPacket(160, '\x55');
    strPacket.replace(3, 5, "hello");
    tagBuffer tBuffer = Buffer(strPacket);
    WORKS(VoiceStreamSend, nVoice, &tBuffer);
    tHeard.Await([&](std::string const& str) { return str == strPacket; });
    int nSecond = -1;
    ANSWERS(eResultBusy, VoiceStreamConnect, &nSecond, nStream, &tPara);
    ANSWERS(eResultBadHandle, VoiceStreamDisconnect, nSecond);
    WORKS(VoiceStreamDisconnect, nVoice);
    WORKS(VoiceStreamConnect, &nVoice, nStream, &tPara);
    API(VoiceStreamDisconnect)(nVoice);
    API(RealStreamDisconnect)(nStream);
}

// --- queries and storage ---------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Queries)
{
    const auto atAll = Recordings();
    ASSERT_EQ(atAll.size(), 144); // of one channel, as the device is from the factory
    EXPECT_TRUE(std::ranges::is_sorted(atAll, {}, &tagHistoryStreamQueryResult::llStartUs));
    auto tTypes = Sized<tagHistoryStreamMultiTypeQueryFactor>();
    tTypes.ullChannels = 3;
    const auto fnTypes = [&]
    {
        return Ask<tagHistoryStreamMultiTypeQueryResult>(m_nLogin, API(HistoryStreamMultiTypeQueryConnect), tTypes,
                                                         API(HistoryStreamMultiTypeQueryNext),
                                                         API(HistoryStreamQueryDisconnect));
    };
    EXPECT_EQ(fnTypes().size(), 288);
    tTypes.llStartUs = atAll[10].llStartUs + 1;
    tTypes.llEndUs = atAll[20].llStartUs;
    EXPECT_EQ(fnTypes().size(), 20);
    tTypes.dwTypes = eHistoryMotion;
    for (auto const& tFound : fnTypes())
    {
        EXPECT_EQ(tFound.dwType, eHistoryMotion);
    }
    auto tOf = Sized<tagTransmitHistoryStreamQueryFactor>();
    strcpy(tOf.szAddress, "another-box");
    strcpy(tOf.szUserName, "admin");
    strcpy(tOf.szPassword, "admin");
    EXPECT_EQ(Ask<tagHistoryStreamMultiTypeQueryResult>(m_nLogin, API(TransmitHistoryStreamQueryConnect), tOf,
                                                        API(TransmitHistoryStreamQueryNext),
                                                        API(TransmitHistoryStreamQueryDisconnect))
                  .size(),
              144);
    int nQuery = -1;
    strcpy(tOf.szPassword, "wrong");
    ANSWERS(eResultWrongLogin, TransmitHistoryStreamQueryConnect, &nQuery, m_nLogin, &tOf);
    API(TransmitHistoryStreamQueryDisconnect)(nQuery);
    int nStream = -1;
    auto tFiles = Sized<tagFileQueryFactor>();
    EXPECT_EQ(Open(nStream, 0), 0);
    const auto atFiles =
        Ask<tagFileQueryResult>(nStream, API(FileQueryConnect), tFiles, API(FileQueryNext), API(FileQueryDisconnect));
    const auto fnOf = [](eFileKind eKind)
    { return [=](tagFileQueryResult const& t) { return t.dwKind == static_cast<uint32_t>(eKind); }; };
    EXPECT_EQ(std::ranges::count_if(atFiles, fnOf(eFileRecording)), 144);
    EXPECT_EQ(std::ranges::count_if(atFiles, fnOf(eFileLog)), 1);
    API(RealStreamDisconnect)(nStream);
    auto tLog = Sized<tagLogQueryFactor>();
    tLog.dwTypes = eLogAccess;
    strcpy(tLog.szUserName, "admin");
    EXPECT_EQ(Ask<tagLogQueryResult>(m_nLogin, API(HistoryLogQueryConnect), tLog, API(HistoryLogQueryNext),
                                     API(HistoryLogQueryDisconnect))
                  .size(),
              1);
}

TEST_P(CDeviceTest, Storage)
{
    const auto tLast = Recordings().back();
    const time_t nLast = tLast.llStartUs / g_llSecond;
    tm tParts{};
    gmtime_r(&nLast, &tParts);
    const auto dwMonth = static_cast<unsigned long>((tParts.tm_year + 1900) * 100 + tParts.tm_mon + 1);
    char szDays[32] = {};
    unsigned long dwDays = sizeof szDays;
    WORKS(DataExistCheck, m_nLogin, 0, 0, dwMonth, szDays, &dwDays);
    EXPECT_TRUE(dwDays >= 28 && dwDays == strlen(szDays) && szDays[tParts.tm_mday - 1] == '1');
    dwDays = sizeof szDays;
    WORKS(DataExistCheck, m_nLogin, 0, 0, dwMonth - 100, szDays, &dwDays);
    EXPECT_EQ(std::string(szDays).find('1'), std::string::npos);
    uint64_t ullBytes = 0;
    for (auto const& tRecording : Recordings())
    {
        ullBytes += tRecording.ullLength;
    }
    unsigned long dwSize = 0;
    unsigned long dwSome = 0;
    WORKS(GetDataSize, m_nLogin, 0, eDiskGroupAll, eHistoryAny, nullptr, nullptr, 0, &dwSize);
    EXPECT_EQ(dwSize, (ullBytes + (1 << 20) - 1) >> 20);
    WORKS(GetMultiTypeDataSize, m_nLogin, 0, eDiskGroupAll, 0, "", "", 0, &dwSome);
    EXPECT_EQ(dwSome, dwSize);
    WORKS(GetMultiTypeDataSize, m_nLogin, 0, eDiskGroupAll, eHistoryMotion, "2020-01-01T00:00:00Z",
          "2100-01-01T00:00:00Z", 0, &dwSome);
    EXPECT_TRUE(dwSome < dwSize);
    ANSWERS(eResultBadArgument, GetDataSize, m_nLogin, 0, eDiskGroupAll, eHistoryAny, "yesterday", "", 0, &dwSize);
    WORKS(DiskGroupManage, m_nLogin, eDiskGroupAddDisk, 5, 1, eDiskGroupArchive);
    EXPECT_EQ(Read<tagConfigStorage>(eConfigStorage).atDisks[1].dwGroup, 5);
    ANSWERS(eResultNoChannel, DiskGroupManage, m_nLogin, eDiskGroupFormat, 0, 9, 0);
}

// --- transfers -------------------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, SerialPort)
{
    Bytes tAnswers;
    int nStream = -1;
    int nPort = -1;
    int nSecond = -1;
    auto tPara = Sized<tagTransparentChannelPara>();
    tPara.dwPort = 1;
    EXPECT_EQ(Open(nStream, 0), 0);
    WORKS(TransparentChannelConnect, &nPort, nStream, &tPara);
    ANSWERS(eResultBusy, TransparentChannelConnect, &nSecond, nStream, &tPara);
    API(TransparentChannelDisconnect)(nSecond);
    WORKS(TransparentChannelCB, nPort, OnBytes, User(tAnswers));
    std::string strLine = "ID?\r\n";
    tagBuffer tBuffer = Buffer(strLine);
    WORKS(TransparentChannelWrite, nPort, &tBuffer);
    EXPECT_EQ(tAnswers.Next(), "INSTRUMENT 1\r\n");
    WORKS(TransparentChannelDisconnect, nPort);
    WORKS(TransparentChannelConnect, &nPort, nStream, &tPara);
    API(TransparentChannelDisconnect)(nPort);
    API(RealStreamDisconnect)(nStream);
}

TEST_P(CDeviceTest, Files)
{
    // Firmware: progress, another version, a restart.
    CInbox<tagFileUploadState> tStates;
    int nUpload = -1;
    std::string strFirmware = "version=2.5.1\n" + std::string(600000, 'x');
    auto tUpload = Sized<tagFileUploadPara>();
    tUpload.dwKind = eFileFirmware;
    tUpload.ullLength = strFirmware.size();
    tUpload.pbyData = reinterpret_cast<unsigned char*>(strFirmware.data());
    WORKS(FileUploadConnect, &nUpload, m_nLogin, &tUpload);
    WORKS(
        FileUploadCB, nUpload,
        [](void*, tagFileUploadState tState, unsigned long dwUser)
        { return Target<CInbox<tagFileUploadState>>(dwUser).Put(tState), 0; },
        User(tStates));
    WORKS(FileUploadControl, nUpload, eTransferStart);
    EXPECT_EQ(tStates.Next().ullLength, strFirmware.size());
    EXPECT_EQ(tStates.Await([](auto const& t) { return t.dwState != eUploadRunning; }).dwState, eUploadFinished);
    WORKS(FileUploadDisconnect, nUpload);
    ANSWERS(eResultUnknownMedia, FileUploadControl, nUpload, eTransferStart);
    const auto ptBlock = std::make_unique<tagConfigInformation>();
    ptBlock->type = eConfigIdentity;
    EXPECT_TRUE(Comes([&] { return API(GetConfig)(m_nLogin, ptBlock.get()) == 0; }));
    EXPECT_STREQ(Read<tagConfigIdentity>(eConfigIdentity).szFirmware, "2.5.1");
    // A recording as a file that plays: whole, and the rest of it after a break.
    Bytes tBlocks;
    const auto fnFetch = [&](uint64_t ullOffset)
    {
        int nDownload = -1;
        auto tPara = Sized<tagFileDownloadPara>();
        tPara.dwKind = eFileRecording;
        tPara.dwFormat = eFileFormatMp4;
        tPara.ullOffset = ullOffset;
        std::memcpy(tPara.szFile, Recordings().front().szFile, sizeof tPara.szFile);
        WORKS(FileDownloadConnect, &nDownload, m_nLogin, &tPara);
        WORKS(FileDownloadCB, nDownload, OnBlock, User(tBlocks));
        WORKS(FileDownloadControl, nDownload, eTransferStart);
        std::string strFile;
        tBlocks.Await([&](std::string const& strBlock) { return strFile += strBlock, strBlock.empty(); });
        WORKS(FileDownloadDisconnect, nDownload);
        ANSWERS(eResultUnknownMedia, FileDownloadControl, nDownload, eTransferStart);
        return strFile;
    };
    const std::string strFile = fnFetch(0);
    EXPECT_EQ(strFile.substr(4, 4), "ftyp");
    EXPECT_GT(strFile.size(), 100000);
    EXPECT_TRUE(fnFetch(strFile.size() - 1000) == strFile.substr(strFile.size() - 1000));
}

// --- discovery, text, versions ---------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Discovery)
{
    if (!IsVTQ())
    {
        GTEST_SKIP() << "asks ONVIF and VTQ alone";
    }
    auto tWhere = Sized<tagDeviceProbeParameter>();
    strcpy(tWhere.szAddress, m_strAddress.c_str());
    const auto fnMe = [&](std::string const& str) { return str == m_strAddress; };
    WORKS(DeviceProbeStart, &tWhere, [](tagDeviceProbeConfig* ptFound) { g_tFound.Put(ptFound->szAddress); });
    g_tFound.Await(fnMe);
    WORKS(DeviceProbeResearch, &tWhere);
    g_tFound.Await(fnMe);
    WORKS(DeviceProbeStop);
    WORKS(DeviceProbeResearch, &tWhere);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(g_tFound.Drain(), 0);
    // Four that do nothing.
    unsigned char abyMac[6] = {};
    tagDeviceProbeConfig tConfig{};
    tagDeviceProbeUserLoginPara tLogin{};
    tagDeviceProbeConfigInformation tBlock{};
    WORKS(GetLoginMac, m_nLogin, abyMac, 6);
    strcpy(tConfig.szName, "Nothing");
    WORKS(DeviceProbeSetDeviceConfig, abyMac, 0, &tConfig);
    WORKS(DeviceProbeSetAllDeviceConfig, &tWhere, &tConfig);
    WORKS(DeviceProbeSetConfig, abyMac, 0, &tLogin, &tBlock);
    WORKS(DeviceProbeGetConfig, abyMac, 0, &tLogin, &tBlock);
    EXPECT_EQ(tBlock.dwLength, 0);
    EXPECT_STRNE(Read<tagConfigIdentity>(eConfigIdentity).szName, "Nothing");
    // A device that registers itself, while somebody listens.
    WORKS(DeviceRegisterCB, [](tagDeviceRegisterInfo* ptInfo) { return g_tRegistered.Put(ptInfo->szAddress), 0; });
    WORKS(DeviceRegisterListenStart, nullptr, 0);
    EXPECT_EQ(Fault(eFaultRegister), 0);
    g_tRegistered.Await(fnMe);
    WORKS(DeviceRegisterListenStop);
    EXPECT_EQ(Fault(eFaultRegister), 0);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(g_tRegistered.Drain(), 0);
    auto tHttp = Sized<tagDeviceConfigFromHttp>();
    WORKS(GetDeviceConfigFromHttp, m_strAddress.c_str(), &tHttp);
    EXPECT_TRUE(tHttp.dwHttpStatus == 200 && tHttp.dwChannels == 4);
    // A text as dots, in a lattice that is large enough at the second try.
    auto tFont = Sized<tagFontPara>();
    std::vector<unsigned char> abyDots(4096);
    unsigned long dwWidth = 0;
    unsigned long dwHeight = 0;
    unsigned long dwLength = 0;
    tFont.dwBitsPerDot = 8;
    tFont.dwHeight = 24;
    WORKS(StringToLattice, "Tor", &tFont, abyDots.data(), &dwWidth, &dwHeight, &dwLength);
    EXPECT_TRUE(dwHeight == 24 && dwWidth > 10 && dwLength == dwWidth * dwHeight && dwLength < abyDots.size());
    EXPECT_EQ(std::ranges::count(abyDots, 0), 4096);
    tFont.dwCapacity = 4096;
    WORKS(StringToLattice, "Tor", &tFont, abyDots.data(), &dwWidth, &dwHeight, &dwLength);
    EXPECT_GT(std::ranges::count_if(abyDots, [](unsigned char by) { return by > 128; }), 30);
    // What is asked without a login.
    eNetworkSDKVersion eVersion = eSDKVersionUnknown;
    WORKS(GetSDKVersion, "nobody.invalid", 0, 100, &eVersion);
    EXPECT_EQ(eVersion, eSDKVersionUnknown);
    WORKS(GetSDKVersion, m_strAddress.c_str(), 0, 100, &eVersion);
    EXPECT_EQ(eVersion, eSDKVersion2);
    std::string strHeader(4096, '\0');
    dwLength = strHeader.size();
    WORKS(GetFileHeader, eFileFormatNative, strHeader.data(), &dwLength);
    EXPECT_TRUE(dwLength > 0 && dwLength < strHeader.size());
    EXPECT_NE(strHeader.substr(0, 4), std::string(4, '\0'));
    EXPECT_EQ(Fault(eFaultHang, 0, 0, 1), 0);
    WORKS(DeviceIsOnline, m_strAddress.c_str(), 0, 50); // this call isn't answered, the next one is
    EXPECT_STRNE(Read<tagConfigIdentity>(eConfigIdentity).szName, "");
}

// --- pan, tilt, zoom -------------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, PTZ)
{
    const auto fnDo = [&](ePTZControlCmdCode eCommand, long l1 = 0, long l2 = 0, long l3 = 0, long l4 = 0)
    {
        return API(PTZControl)(m_nLogin, 0, eCommand, TESSARO_SIGNED(l1), TESSARO_SIGNED(l2), TESSARO_SIGNED(l3),
                               TESSARO_SIGNED(l4));
    };
    const auto fnRead = [&](eCameraParameter eWhich, auto& tRecord)
    { WORKS(GetIpcPara, m_nLogin, 0, eWhich, &tRecord, tRecord.dwSize); };
    auto tAt = Sized<tagPTZPosition>();
    const auto fnArrive = [&]
    { return Comes([&] { return fnRead(eCameraPosition, tAt), tAt.bMoving == 0; }) ? tAt : tagPTZPosition{}; };
    auto tCan = Sized<tagPTZAbility>();
    fnRead(eCameraPTZAbility, tCan);
    EXPECT_EQ(tCan.dwMoveAxes & tCan.dwPositionAxes & 7, 7);
    const int nBefore = fnArrive().nPan;
    EXPECT_EQ(fnDo(ePTZMove, -10000, 0, 0, 100), 0); // nobody stops it
    EXPECT_LT(fnArrive().nPan, nBefore);
    EXPECT_EQ(fnDo(ePTZMove, 10000, 0, 0, 60000), 0);
    EXPECT_EQ(fnDo(ePTZStop), 0);
    fnRead(eCameraPosition, tAt);
    EXPECT_EQ(tAt.bMoving, 0);
    EXPECT_EQ(fnDo(ePTZAbsolute, 500, -300, 1000), 0);
    EXPECT_TRUE(fnArrive().nPan == 500 && tAt.nTilt == -300 && tAt.nZoom == 1000);
    static char s_szName[] = "Gate";
    EXPECT_EQ(fnDo(ePTZPresetSet, 3, reinterpret_cast<long>(s_szName)), 0);
    EXPECT_EQ(fnDo(ePTZRelative, -200, 0, 20000), 0); // as far as it goes
    EXPECT_TRUE(fnArrive().nPan == 300 && tAt.nZoom == 10000);
    EXPECT_EQ(fnDo(ePTZPresetCall, 3), 0);
    EXPECT_TRUE(fnArrive().nPan == 500 && tAt.dwPreset == 3);
    tagListed<tagPTZPresetList, tagPTZPreset> tPresets;
    fnRead(eCameraPresets, tPresets);
    EXPECT_TRUE(tPresets.dwCount == 1 && std::string(tPresets.at[0].szName) == "Gate" && tPresets.at[0].nPan == 500);
    EXPECT_EQ(fnDo(ePTZTourAddPreset, 1, 3, 1), 0);
    EXPECT_EQ(fnDo(ePTZTourRun, 1), 0);
    fnRead(eCameraPosition, tAt);
    EXPECT_EQ(tAt.dwTour, 1);
    EXPECT_EQ(fnDo(ePTZTourStop, 1), 0);
    EXPECT_EQ(fnDo(ePTZPresetRemove, 3), 0);
    EXPECT_EQ(fnDo(ePTZPresetCall, 3), eResultNotFound);
    EXPECT_EQ(fnDo(ePTZAuxiliary, ePTZWiper, 1), 0);
    fnRead(eCameraPosition, tAt);
    EXPECT_EQ(tAt.dwAuxiliary, 1U << ePTZWiper);
    ANSWERS(eResultNotSupported, PTZControl, m_nLogin, 3, ePTZStop, 0, 0, 0, 0);
}

// --- panel -----------------------------------------------------------------------------------------------------------

TEST_P(CDeviceTest, Panel)
{
    Events tEvents;
    auto tStatus = Sized<tagPanelStatusInfo>();
    const auto fnDo = [&](ePanelAction eAction)
    {
        auto tPara = Sized<tagPanelControlParameter>();
        tPara.dwAction = static_cast<uint32_t>(eAction);
        tPara.dwKey = ePanelKeyMenu;
        return API(PanelControl)(m_nLogin, &tPara);
    };
    WORKS(PanelGetStatus, m_nLogin, &tStatus);
    EXPECT_NE(tStatus.dwLampsOn & eLampPower, 0);
    tStatus.dwLampsOn = eLampFault;
    strcpy(tStatus.szLine2, "Hello");
    WORKS(PanelSetStatus, m_nLogin, &tStatus);
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(tEvents));
    EXPECT_EQ(fnDo(ePanelPress), 0);
    tEvents.Await(Is(eEventPanelKey, ePanelKeyMenu, 1));
    EXPECT_EQ(fnDo(ePanelLock), 0);
    EXPECT_EQ(fnDo(ePanelPress), eResultRefused);
    tStatus = Sized<tagPanelStatusInfo>();
    WORKS(PanelGetStatus, m_nLogin, &tStatus);
    EXPECT_EQ(tStatus.dwLampsOn & (eLampFault | eLampPower), eLampFault | eLampPower);
    EXPECT_TRUE(tStatus.bLocked == 1 && tStatus.dwLastKey == ePanelKeyMenu && std::string(tStatus.szLine2) == "Hello");
}

// --- decoders --------------------------------------------------------------------------------------------------------

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
    Events tEvents;
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
    WORKS(SubscribeEvent, m_nLogin, TESSARO_EVENT(eEventWindow), OnEvent, User(tEvents));
    WORKS(SetScreenSplitMode, m_nLogin, 0, eSplit1, &dwBound);
    tEvents.Await(Is(eEventWindow, 0, eWindowShowing));
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
    const tagSeen tKey = tFrames.Await(IsKey);
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

// --- all of them -----------------------------------------------------------------------------------------------------

// Runs after those above.
TEST_P(CDeviceTest, NoneIsLeftOut)
{
    std::set<std::string> strMissing{"ClientAdapter_Start",          "ClientAdapter_Stop",
                                     "ClientAdapter_UserLogin",      "ClientAdapter_UserLogout",
                                     "ClientAdapter_GetLoginStatus", "ClientAdapter_GetConfig",
                                     "ClientAdapter_SetConfigBySn",  "ClientAdapter_ForceIFrame",
                                     "ClientAdapter_SubscribeEvent", "ClientAdapter_DeviceProbeStart"};
#define EXPORT(shape, line, function, ...) strMissing.insert(#function);
#include "adapter/exports.def"
    EXPECT_EQ(strMissing.size(), 131);
    for (std::string const& strName : g_strCalled)
    {
        strMissing.erase(strName);
    }
    EXPECT_EQ(testing::PrintToString(strMissing), "{}");
}
