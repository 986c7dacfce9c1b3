// Streams, pictures, settings, movement.

#include "tests/onvif/Onvif.h"

TEST_F(COnvifTest, LiveStreams)
{
    Device({"--clock", "86400"});
    int anStreams[2] = {-1, -1};
    ASSERT_TRUE(Open(anStreams[0], 3) == 0 && Open(anStreams[1], 1, eStreamSub) == 0);
    Frames tSub;
    WORKS(StreamMediaCB, anStreams[0], OnFrame, User(m_tFrames));
    WORKS(StreamMediaCB, anStreams[1], OnFrame, User(tSub));
    WORKS(
        StreamMediaRawCB, anStreams[1], [](void*, tagStreamMediaFrame const*, unsigned long) { return 0; }, 0);
    const tagSeen tMain = m_tFrames.Await(&tagSeen::IsKey);
    EXPECT_TRUE(tMain.nMedia == anStreams[0] && tMain.dwCodec == eCodecH265 && tMain.dwWidth == 1280);
    const tagSeen tSmall = tSub.Await(&tagSeen::IsKey);
    EXPECT_TRUE(tSmall.nMedia == anStreams[1] && tSmall.dwCodec == eCodecH264 && tSmall.dwWidth == 640);
    EXPECT_EQ(tSub.Await([](tagSeen const& t) { return !t.IsVideo(); }).dwCodec, eCodecG711A);
    // The device's clock, a day ahead.
    const auto tTimed = tSub.Await([](tagSeen const& t) { return t.llWallClockUs != 0; });
    EXPECT_NEAR(static_cast<double>(tTimed.llWallClockUs) / 1e6, static_cast<double>(time(nullptr)) + 86400, 60);
    // A key frame every 1000 frames: one comes all the same.
    auto tEncoder = Read<tagConfigVideoEncoder>(eConfigVideoEncoder, 1, eStreamSub);
    tEncoder.dwKeyFrameInterval = 250;
    EXPECT_EQ(Write(eConfigVideoEncoder, tEncoder, 1, eStreamSub), 0);
    EXPECT_EQ(Read<tagConfigVideoEncoder>(eConfigVideoEncoder, 1, eStreamSub).dwKeyFrameInterval, 250);
    WORKS(ForceIFrame, m_nLogin, anStreams[1]);
    tSub.Await(&tagSeen::IsKey);
    // Pause and play.
    WORKS(StreamMediaControl, anStreams[1], eTaskPause);
    std::this_thread::sleep_for(1s);
    tSub.Drain();
    std::this_thread::sleep_for(1s);
    EXPECT_EQ(tSub.Drain(), 0);
    WORKS(StreamMediaControl, anStreams[1], eTaskPlay);
    EXPECT_TRUE(tSub.Await(&tagSeen::IsVideo).IsKey());
    int nNone = -1;
    EXPECT_EQ(Open(nNone, 9), eResultNoChannel);
    tagRTSPPackageInfo tInfo{};
    WORKS(GetPackageInfo, anStreams[0], &tInfo, sizeof tInfo);
    WORKS(SetStreamMediaLinkID, anStreams[0], 0);
    WORKS(RealStreamDisconnect, anStreams[0]);
    WORKS(RealStreamDisconnect, anStreams[1]);
    ANSWERS(eResultUnknownMedia, RealStreamDisconnect, anStreams[1]);
}

TEST_F(COnvifTest, Cameras)
{
    Device();
    TryCameraParameters(m_nLogin);
    WORKS(SetChromaDefault, m_nLogin, 1, eDefaultPicture);
    auto tPicture = Sized<tagCameraPicture>();
    WORKS(GetIpcPara, m_nLogin, 1, eCameraPicture, &tPicture, sizeof tPicture);
    EXPECT_EQ(tPicture.dwBrightness, 50);
}

TEST_F(COnvifTest, Settings)
{
    Device();
    // Each block as it is; what can be written, changed by one word.
    const auto fnChange = [&](eConfigType eType, auto tRecord, auto pWord, uint32_t dwNew)
    {
        SCOPED_TRACE(eType);
        EXPECT_EQ(TryRead(eType, tRecord), 0);
        EXPECT_NE(tRecord.*pWord, dwNew);
        tRecord.*pWord = dwNew;
        EXPECT_EQ(Write(eType, tRecord), 0);
        tRecord = {};
        EXPECT_EQ(TryRead(eType, tRecord), 0);
        EXPECT_EQ(tRecord.*pWord, dwNew);
    };
    fnChange(eConfigVideoEncoder, tagConfigVideoEncoder{}, &tagConfigVideoEncoder::dwBitRate, 1024);
    fnChange(eConfigClock, tagConfigClock{}, &tagConfigClock::dwMode, eClockNtp);
    fnChange(eConfigAlarmOutput, tagConfigAlarmOutput{}, &tagConfigAlarmOutput::dwPulseMs, 2000);
    fnChange(eConfigSchedule, tagConfigSchedule{}, &tagConfigSchedule::dwKeepDays, 30);
    fnChange(eConfigSchedule, tagConfigSchedule{}, &tagConfigSchedule::bEnabled, 1);
    fnChange(eConfigMotion, tagConfigMotion{}, &tagConfigMotion::dwSensitivity, 70);
    fnChange(eConfigMotion, tagConfigMotion{}, &tagConfigMotion::dwHoldSeconds, 9);
    fnChange(eConfigMotion, tagConfigMotion{}, &tagConfigMotion::dwThreshold, 25);
    auto tSchedule = Read<tagConfigSchedule>(eConfigSchedule);
    tSchedule.dwBeforeSeconds = 5; // a job knows nothing of it
    EXPECT_EQ(Write(eConfigSchedule, tSchedule), eResultNotSupported);
    auto tMotion = Read<tagConfigMotion>(eConfigMotion);
    ASSERT_TRUE(tMotion.dwColumns == 22 && tMotion.dwRows == 18 && tMotion.abyCells[0] == 0xFF);
    std::memset(tMotion.abyCells, 0, sizeof tMotion.abyCells);
    tMotion.abyCells[0] = 0x05; // the first and the third
    tMotion.abyCells[49] = 0x08;
    EXPECT_EQ(Write(eConfigMotion, tMotion), 0);
    EXPECT_EQ(std::memcmp(Read<tagConfigMotion>(eConfigMotion).abyCells, tMotion.abyCells, sizeof tMotion.abyCells), 0);
    fnChange(eConfigMotion, tagConfigMotion{}, &tagConfigMotion::bEnabled, 0);
    fnChange(eConfigMotion, tagConfigMotion{}, &tagConfigMotion::bEnabled, 1);
    EXPECT_EQ(Read<tagConfigMotion>(eConfigMotion).abyCells[7], 0xFF); // which it had watched nobody kept
    auto tIdentity = Read<tagConfigIdentity>(eConfigIdentity);
    strcpy(tIdentity.szName, "Gate");
    EXPECT_EQ(Write(eConfigIdentity, tIdentity), 0);
    EXPECT_STREQ(Read<tagConfigIdentity>(eConfigIdentity).szName, "Gate");
    // A new user, who can log in; in the second layout, too.
    auto tUsers = Read<tagConfigUsers>(eConfigUsers);
    ASSERT_EQ(tUsers.dwCount, 2);
    strcpy(tUsers.atUsers[2].szUserName, "guard");
    strcpy(tUsers.atUsers[2].szPassword, "secret");
    tUsers.atUsers[2].dwLevel = eUserOperator;
    tUsers.dwCount = 3;
    const auto ptBlock = std::make_unique<tagConfigInformationV2>();
    ptBlock->type = eConfigUsers;
    std::memcpy(ptBlock->data, &tUsers, sizeof tUsers);
    WORKS(SetConfigV2, m_nLogin, ptBlock.get());
    WORKS(GetConfigV2, m_nLogin, ptBlock.get());
    int nGuard = -1;
    EXPECT_EQ(Login(nGuard, m_pTool->Port(), "guard", "secret"), 0);
    int nLevel = -1;
    WORKS(GetLoginLevel, nGuard, &nLevel);
    EXPECT_EQ(nLevel, eUserOperator);
    WORKS(UserLogout, nGuard);
    EXPECT_NE(Read<tagConfigNetwork>(eConfigNetwork).szMac[0], '\0');
    auto tOverlay = Read<tagConfigOverlay>(eConfigOverlay);
    tOverlay.dwCount = 1;
    tOverlay.atTexts[0] = {1, eOverlayText, 500, 500, 0, 0xFFFFFF, "Yard"};
    EXPECT_EQ(Write(eConfigOverlay, tOverlay), 0);
    EXPECT_STREQ(Read<tagConfigOverlay>(eConfigOverlay).atTexts[0].szText, "Yard");
    ptBlock->type = eConfigIdentity;
    ptBlock->extra[0] = 0;
    strcpy(tIdentity.szName, "Door");
    std::memcpy(ptBlock->data, &tIdentity, sizeof tIdentity);
    WORKS(SetConfigBySn, tIdentity.szSerialNumber, eProtocolOnvif, ptBlock.get());
    EXPECT_STREQ(Read<tagConfigIdentity>(eConfigIdentity).szName, "Door");
    ptBlock->type = 77;
    ANSWERS(eResultNotFound, GetConfigV2, m_nLogin, ptBlock.get());
}

TEST_F(COnvifTest, Movement)
{
    Device({"--set", "ignore_timeout"}); // the device's own, so the plug-in ends movements
    const auto fnDo = [&](ePTZControlCmdCode eCommand, long l1 = 0, long l2 = 0, long l3 = 0, long l4 = 0)
    {
        return API(PTZControl)(m_nLogin, 0, eCommand, TESSARO_SIGNED(l1), TESSARO_SIGNED(l2), TESSARO_SIGNED(l3),
                               TESSARO_SIGNED(l4));
    };
    auto tAt = Sized<tagPTZPosition>();
    const auto fnArrive = [&]
    {
        EXPECT_TRUE(Comes(
            [&]
            {
                WORKS(GetIpcPara, m_nLogin, 0, eCameraPosition, &tAt, sizeof tAt);
                return tAt.bMoving == 0;
            }));
        return tAt;
    };
    auto tCan = Sized<tagPTZAbility>();
    WORKS(GetIpcPara, m_nLogin, 0, eCameraPTZAbility, &tCan, sizeof tCan);
    EXPECT_EQ(tCan.dwMoveAxes & tCan.dwPositionAxes & 7, 7);
    const int nBefore = fnArrive().nPan;
    EXPECT_EQ(fnDo(ePTZMove, -10000, 0, 0, 300), 0); // nobody stops it
    EXPECT_LT(fnArrive().nPan, nBefore);
    EXPECT_EQ(fnDo(ePTZMove, 10000, 0, 0, 60000), 0);
    EXPECT_EQ(fnDo(ePTZStop), 0);
    EXPECT_EQ(fnDo(ePTZAbsolute, 500, -300, 1000), 0);
    EXPECT_TRUE(fnArrive().nPan == 500 && tAt.nTilt == -300 && tAt.nZoom == 1000) << tAt.nPan << ' ' << tAt.nTilt;
    auto tExposure = Sized<tagCameraExposure>();
    for (const auto& [nSpeed, dwWanted] : {std::pair{-10000, 0U}, {5000, 5000U}, {10000, 10000U}})
    {
        EXPECT_EQ(fnDo(ePTZIris, nSpeed), 0); // for 5 s, from one end to the other
        WORKS(GetIpcPara, m_nLogin, 0, eCameraExposure, &tExposure, sizeof tExposure);
        EXPECT_TRUE(tExposure.dwMode == eModeManual && tExposure.dwIris == dwWanted) << tExposure.dwIris;
    }
    static char s_szName[] = "Gate";
    EXPECT_EQ(fnDo(ePTZPresetSet, 3, reinterpret_cast<long>(s_szName)), 0);
    EXPECT_EQ(fnDo(ePTZRelative, -200), 0);
    EXPECT_EQ(fnArrive().nPan, 300);
    EXPECT_EQ(fnDo(ePTZPresetCall, 3), 0);
    EXPECT_EQ(fnArrive().nPan, 500);
    tagListed<tagPTZPresetList, tagPTZPreset> tPresets;
    WORKS(GetIpcPara, m_nLogin, 0, eCameraPresets, &tPresets, sizeof(tagPTZPresetList));
    EXPECT_TRUE(tPresets.dwCount == 1 && std::string(tPresets.at[0].szName) == "Gate");
    EXPECT_EQ(fnDo(ePTZPresetRemove, 3), 0);
    EXPECT_EQ(fnDo(ePTZPresetCall, 3), eResultNotFound);
    ANSWERS(eResultNotSupported, PTZControl, m_nLogin, 3, ePTZMove, 0, 0, 0, 0);
}

TEST_F(COnvifTest, Contacts)
{
    CTool& tTool = Device();
    Subscribe();
    unsigned long adwState[8] = {};
    unsigned long dwCount = 8;
    WORKS(AlarmoutControl, m_nLogin, 1, 1);
    m_tEvents.Await(Is(eEventAlarmOutput, 1, 1));
    WORKS(AlarmoutStateGet, m_nLogin, &dwCount, adwState);
    EXPECT_TRUE(dwCount == 4 && adwState[1] == 1 && adwState[0] == 0);
    WORKS(AlarmoutControl, m_nLogin, 1, 0);
    m_tEvents.Await(Is(eEventAlarmOutput, 1, 0));
    ANSWERS(eResultNoChannel, AlarmoutControl, m_nLogin, 4, 1);
    tTool.Tell("fault 0 alarm_input channel=3");
    m_tEvents.Await(Is(eEventAlarmInput, 3, 1));
    dwCount = 8;
    WORKS(AlarminStateGet, m_nLogin, &dwCount, adwState);
    EXPECT_TRUE(dwCount == 4 && adwState[3] == 1);
    WORKS(UnSubscribeEvent, m_nLogin, 0);
}

TEST_F(COnvifTest, FirmwareAndLog)
{
    Device();
    eNetworkSDKVersion eVersion = eSDKVersionUnknown;
    WORKS(GetSDKVersionByHandle, m_nLogin, &eVersion);
    EXPECT_EQ(eVersion, eSDKVersion2);
    auto tQuestion = Sized<tagLogQueryFactor>();
    auto tEntry = Sized<tagLogQueryResult>();
    int nQuery = -1;
    WORKS(HistoryLogQueryConnect, &nQuery, m_nLogin, &tQuestion);
    WORKS(HistoryLogQueryNext, nQuery, &tEntry);
    EXPECT_STRNE(tEntry.szText, "");
    WORKS(HistoryLogQueryDisconnect, nQuery);
    EXPECT_EQ(SendFile(eFileFirmware, "version=2.5.1\n" + std::string(600000, 'x')), eUploadFinished);
    tagConfigIdentity tIdentity{};
    EXPECT_TRUE(Comes( // it restarts
        [&] { return TryRead(eConfigIdentity, tIdentity) == 0 && std::string(tIdentity.szFirmware) == "2.5.1"; }));
}
