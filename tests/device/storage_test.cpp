// Alarms, snapshots, recordings, queries and transfers.

#include "tests/device/Device.h"

#include <algorithm>
#include <fstream>

TEST_P(CDeviceTest, Alarms)
{
    unsigned long adwState[4] = {};
    unsigned long dwCount = 1;
    EXPECT_EQ(Fault(eFaultMotion, 2), 0);
    WORKS(SubscribeEvent, m_nLogin, TESSARO_EVENT(eEventMotion) | TESSARO_EVENT(eEventAlarmInput), OnEvent,
          User(m_tEvents));
    EXPECT_EQ(m_tEvents.Await(Is(eEventMotion, 2, 1)).nLogin, m_nLogin); // what is on already comes first
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(m_tEvents));
    // Outputs: on, off, and on for a while.
    WORKS(AlarmoutControl, m_nLogin, 1, 1);
    m_tEvents.Await(Is(eEventAlarmOutput, 1, 1));
    WORKS(AlarmoutStateGet, m_nLogin, &dwCount, adwState);
    EXPECT_EQ(dwCount, 4);
    WORKS(AlarmoutStateGet, m_nLogin, &dwCount, adwState);
    EXPECT_EQ(adwState[1], 1);
    WORKS(AlarmoutControl, m_nLogin, 1, 0);
    m_tEvents.Await(Is(eEventAlarmOutput, 1, 0));
    WORKS(AlarmoutControl, m_nLogin, 2, 50);
    m_tEvents.Await(Is(eEventAlarmOutput, 2, 1));
    m_tEvents.Await(Is(eEventAlarmOutput, 2, 0));
    ANSWERS(eResultNoChannel, AlarmoutControl, m_nLogin, 4, 1);
    // An input, with what it switches; clearing ends that.
    auto tInput = Read<tagConfigAlarmInput>(eConfigAlarmInput, 3);
    tInput.tAction.dwOutputs = 1;
    EXPECT_EQ(Write(eConfigAlarmInput, tInput, 3), 0);
    tInput.dwHoldMs = 60000; // one that doesn't last long enough
    EXPECT_EQ(Write(eConfigAlarmInput, tInput, 2), 0);
    EXPECT_EQ(Fault(eFaultAlarmInput, 2), 0);
    EXPECT_EQ(Fault(eFaultAlarmInput, 3), 0);
    m_tEvents.Await([&](tagEvent const& t) { return Is(eEventAlarmOutput, 0, 1)(t); });
    WORKS(AlarminStateGet, m_nLogin, &dwCount, adwState);
    EXPECT_TRUE(adwState[3] == 1 && adwState[2] == 0);
    WORKS(AlarmClear, m_nLogin, eEventAlarmInput, TESSARO_ALL);
    m_tEvents.Await(Is(eEventAlarmOutput, 0, 0));
    // Some events end, the others stay.
    WORKS(UnSubscribeEvent, m_nLogin, TESSARO_EVENT(eEventTamper));
    EXPECT_EQ(Fault(eFaultTamper, 1), 0);
    EXPECT_EQ(Fault(eFaultVideoLoss, 1), 0);
    EXPECT_NE(
        m_tEvents.Await([](tagEvent const& t) { return Is(eEventTamper)(t) || Is(eEventVideoLoss, 1, 1)(t); }).dwEvent,
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
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(m_tEvents));
    WORKS(RecordControl, m_nLogin, 1, 1);
    m_tEvents.Await(Is(eEventRecording, 1, eHistoryManual));
    auto tFactor = Sized<tagHistoryStreamQueryFactor>();
    tFactor.dwChannel = 1;
    tFactor.dwType = eHistoryManual;
    const auto atManual = Recordings(tFactor);
    ASSERT_EQ(atManual.size(), 1);
    EXPECT_EQ(atManual[0].bRecording, 1);
    WORKS(RecordControl, m_nLogin, 1, 0);
    m_tEvents.Await(Is(eEventRecording, 1, 0));
    std::string strFile = atManual[0].szFile;
    WORKS(FileLock, m_nLogin, strFile.data(), eFileLock);
    tFactor.dwType = eHistoryAny;
    tFactor.bLockedOnly = 1;
    ASSERT_EQ(Recordings(tFactor).size(), 1);
    EXPECT_EQ(Recordings(tFactor)[0].szFile, strFile);
    WORKS(FileLock, m_nLogin, strFile.data(), eFileUnlock);
    EXPECT_EQ(Recordings(tFactor).size(), 0);
    ANSWERS(eResultNotFound, FileLock, m_nLogin, std::string("no file").data(), eFileLock);
    EXPECT_EQ(Fault(eFaultDiskError, 1), 0);
    m_tEvents.Await(Is(eEventDiskError, 1, 1));
    EXPECT_EQ(Read<tagConfigStorage>(eConfigStorage).atDisks[1].dwState, eDiskFaulty);
    EXPECT_EQ(Fault(eFaultDiskFull, TESSARO_ALL), 0);
    m_tEvents.Await(Is(eEventDiskFull, 0, 1));
    ANSWERS(eResultDeviceFull, RecordControl, m_nLogin, 1, 1);
}

TEST_P(CDeviceTest, RecordedByMotion)
{
    // From five seconds before it to a second after it, and it lasts a second longer than it does.
    auto tMotion = Read<tagConfigMotion>(eConfigMotion, 2);
    auto tSchedule = Read<tagConfigSchedule>(eConfigSchedule, 1);
    tMotion.tAction.ullRecord = 1 << 1;
    tMotion.dwHoldSeconds = tSchedule.dwAfterSeconds = 1;
    tSchedule.dwStreamKind = eStreamSub;
    EXPECT_EQ(Write(eConfigMotion, tMotion, 2), 0);
    EXPECT_EQ(Write(eConfigSchedule, tSchedule, 1), 0);
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(m_tEvents));
    EXPECT_EQ(Fault(eFaultMotion, 2, 10), 0);
    m_tEvents.Await(Is(eEventRecording, 1, eHistoryMotion));
    m_tEvents.Await(Is(eEventMotion, 2, 0));
    m_tEvents.Await(Is(eEventRecording, 1, 0));
    auto tFactor = Sized<tagHistoryStreamQueryFactor>();
    tFactor.dwChannel = 1;
    tFactor.dwStreamKind = eStreamSub;
    const auto atFound = Recordings(tFactor);
    ASSERT_EQ(atFound.size(), 1);
    EXPECT_GE(atFound[0].llEndUs - atFound[0].llStartUs, 7 * g_llSecond);
}

TEST_P(CDeviceTest, RecordingsGo)
{
    // A week later: those of a channel that keeps them for a week, but for one that is protected.
    auto tSchedule = Read<tagConfigSchedule>(eConfigSchedule, 1);
    auto tFactor = Sized<tagHistoryStreamQueryFactor>();
    tSchedule.dwKeepDays = 7;
    tFactor.dwChannel = 1;
    EXPECT_EQ(Write(eConfigSchedule, tSchedule, 1), 0);
    std::string strFile = Recordings(tFactor)[5].szFile;
    WORKS(FileLock, m_nLogin, strFile.data(), eFileLock);
    EXPECT_EQ(Fault(eFaultClockJump, 0, 0, 0, 0, 8 * 86400 * g_llSecond), 0);
    ASSERT_EQ(Recordings(tFactor).size(), 1);
    EXPECT_EQ(Recordings(tFactor)[0].szFile, strFile);
    EXPECT_EQ(Recordings().size(), 144);
    // Where there is no room for all: the oldest, on a disk that a fleet file makes so small, and by a quota.
    std::string strPath = testing::TempDir() + m_strAddress + ".toml";
    const auto fnLoad = [&](char const* szMore)
    {
        std::ofstream(strPath) << "[[device]]\naddress = \"" << m_strAddress << "\"\ndisks = 1\ndisk_gib = 1\n"
                               << szMore;
        return API(RTSPSetIsProductTest)(eMiscFleet, strPath.data(), strPath.size() + 1, GetParam());
    };
    EXPECT_EQ(fnLoad("channels = 65"), eResultBadArgument);
    EXPECT_EQ(Read<tagConfigStorage>(eConfigStorage).dwCount, 2);
    EXPECT_EQ(fnLoad("channels = 4"), 0);
    API(UserLogout)(m_nLogin);
    EXPECT_EQ(Login(m_nLogin), 0);
    unsigned long dwMebibytes = 0;
    WORKS(GetDataSize, m_nLogin, TESSARO_ALL, eDiskGroupAll, eHistoryAny, "", "", 0, &dwMebibytes);
    EXPECT_TRUE(dwMebibytes > 1000 && dwMebibytes <= 1024);
    EXPECT_GT(Recordings().back().llEndUs, time(nullptr) * g_llSecond - 1200 * g_llSecond);
    WORKS(DiskGroupManage, m_nLogin, eDiskGroupQuota, 0, 0, 10);
    WORKS(GetDataSize, m_nLogin, 0, eDiskGroupAll, eHistoryAny, "", "", 0, &dwMebibytes);
    EXPECT_TRUE(dwMebibytes > 80 && dwMebibytes <= 102);
    std::string strRead(strPath.size() + 1, '\0');
    EXPECT_EQ(g_cProtocolSet.GetMiscPara(0, eMiscFleet, strRead.data(), strRead.size(), GetParam()), 0);
    EXPECT_STREQ(strRead.c_str(), strPath.c_str());
    std::remove(strPath.c_str());
}

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
    const auto nLast = static_cast<time_t>(tLast.llStartUs / g_llSecond);
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
