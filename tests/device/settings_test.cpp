// Configuration, cameras, control, PTZ and panels.

#include "tests/device/Device.h"

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
    const auto ptFirst = std::make_unique<tagConfigInformation>();
    const auto ptSecond = std::make_unique<tagConfigInformationV2>();
    WORKS(SubscribeEvent, m_nLogin, TESSARO_EVENT(eEventConfigChanged), OnEvent, User(m_tEvents));
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
        m_tEvents.Await(Is(eEventConfigChanged, static_cast<unsigned long>(tRow.eType), ptFirst->index));
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
    WORKS(SetConfigBySn, tIdentity.szSerialNumber, GetParam(), ptSecond.get());
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
    TryCameraParameters(m_nLogin);
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
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(m_tEvents));
    // A clock that jumps, and one that runs twice as fast as it should.
    const auto fnAhead = [&] { return Read<tagConfigClock>(eConfigClock).llTimeUs / g_llSecond - time(nullptr); };
    EXPECT_EQ(Fault(eFaultClockJump, 0, 0, 0, 0, 3600 * g_llSecond), 0);
    m_tEvents.Await(Is(eEventClockChanged, 3600000, 0));
    EXPECT_GE(fnAhead(), 3590);
    EXPECT_EQ(Fault(eFaultClockDrift, 0, 0, 0, 1000000), 0);
    EXPECT_TRUE(Comes([&] { return fnAhead() >= 3602; }));
    WORKS(DeviceControl, m_nLogin, eDeviceRestart);
    m_tEvents.Await(Is(eEventDeviceRestarted, eRestartAsked, 0));
    ANSWERS(eResultBadArgument, DeviceControl, m_nLogin, static_cast<eRemoteDeviceControl>(99));
}

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

TEST_P(CDeviceTest, Panel)
{
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
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(m_tEvents));
    EXPECT_EQ(fnDo(ePanelPress), 0);
    m_tEvents.Await(Is(eEventPanelKey, ePanelKeyMenu, 1));
    EXPECT_EQ(fnDo(ePanelLock), 0);
    EXPECT_EQ(fnDo(ePanelPress), eResultRefused);
    tStatus = Sized<tagPanelStatusInfo>();
    WORKS(PanelGetStatus, m_nLogin, &tStatus);
    EXPECT_EQ(tStatus.dwLampsOn & (eLampFault | eLampPower), eLampFault | eLampPower);
    EXPECT_TRUE(tStatus.bLocked == 1 && tStatus.dwLastKey == ePanelKeyMenu && std::string(tStatus.szLine2) == "Hello");
}
