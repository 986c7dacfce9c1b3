// What a device has recorded, talk, and walls.

#include "tests/onvif/Onvif.h"

#include <algorithm>

namespace
{
class COnvifRecordings : public COnvifTest
{
protected:
    auto Recordings(uint32_t dwType = 0)
    {
        auto tFactor = Sized<tagHistoryStreamQueryFactor>();
        tFactor.dwType = dwType;
        std::vector<tagHistoryStreamQueryResult> atFound;
        auto tResult = Sized<tagHistoryStreamQueryResult>();
        int nQuery = -1;
        WORKS(HistoryStreamQueryConnect, &nQuery, m_nLogin, &tFactor);
        while (API(HistoryStreamQueryNext)(nQuery, &tResult) == 0)
        {
            atFound.push_back(tResult);
        }
        ANSWERS(eResultNoMoreEntries, HistoryStreamQueryNext, nQuery, &tResult);
        WORKS(HistoryStreamQueryDisconnect, nQuery);
        return atFound;
    }
    int Play(Frames& tFrames, int64_t llStartUs, int64_t llEndUs, unsigned long dwFlags = 0)
    {
        auto tPara = Sized<tagHistoryStreamPara>();
        tPara.llStartUs = llStartUs;
        tPara.llEndUs = llEndUs;
        int nPlayback = -1;
        WORKS(HistoryStreamCreate, &nPlayback, m_nLogin, &tPara, dwFlags);
        WORKS(HistoryStreamCB, nPlayback, OnFrame, User(tFrames));
        return nPlayback;
    }
};
} // namespace

TEST_F(COnvifRecordings, ArePlayed)
{
    Device();
    const auto atAll = Recordings();
    ASSERT_GE(atAll.size(), 2);
    EXPECT_TRUE(std::ranges::is_sorted(atAll, {}, &tagHistoryStreamQueryResult::llStartUs));
    const int64_t llFromUs = atAll[0].llStartUs + 58 * g_llSecond;
    // Over the gap to the next recording, to the end of what was asked.
    const int nPlayback = Play(m_tFrames, atAll[0].llStartUs, atAll[1].llStartUs + 2 * g_llSecond, eHistoryPaused);
    auto tTime = Sized<tagTimeInfo>();
    tTime.llTimeUs = llFromUs;
    WORKS(HistoryStreamPosition, nPlayback, eOperationSet, &tTime);
    WORKS(StreamMediaControl, nPlayback, eTaskPlay);
    tagSeen tSeen = m_tFrames.Await(&tagSeen::IsVideo);
    EXPECT_TRUE(tSeen.IsKey() && tSeen.llWallClockUs == llFromUs);
    tSeen = m_tFrames.Await([&](tagSeen const& t) { return t.IsVideo() && t.llWallClockUs >= atAll[1].llStartUs; });
    EXPECT_NE(tSeen.dwFlags & eFrameDiscontinuity, 0);
    EXPECT_EQ(m_tFrames.Await(&tagSeen::IsEnd).dwLength, 0);
    // Back to a position; its steps; four times as fast, and backwards.
    tTime.llTimeUs = atAll[0].llStartUs + 10 * g_llSecond;
    WORKS(HistoryStreamPosition, nPlayback, eOperationSet, &tTime);
    EXPECT_EQ(m_tFrames.Await(&tagSeen::IsVideo).llWallClockUs, tTime.llTimeUs);
    WORKS(StreamMediaControl, nPlayback, eTaskPause);
    WORKS(HistoryStreamSetSpeed, nPlayback, eSpeedNormal * 4);
    WORKS(StreamMediaControl, nPlayback, eTaskPlay);
    m_tFrames.Await([&](tagSeen const& t) { return t.llWallClockUs > tTime.llTimeUs + 8 * g_llSecond; });
    WORKS(HistoryStreamSetSpeed, nPlayback, eSpeedReverse + eSpeedNormal);
    int64_t llBeforeUs = m_tFrames.Await(&tagSeen::IsKey).llWallClockUs;
    EXPECT_EQ(m_tFrames.Await([&](tagSeen const& t) { return t.IsKey() && t.llWallClockUs < llBeforeUs; }).dwMediaType,
              eMediaVideo);
    WORKS(HistoryStreamPosition, nPlayback, eOperationGet, &tTime);
    EXPECT_GT(tTime.llTimeUs, atAll[0].llStartUs);
    WORKS(HistoryStreamDestroy, nPlayback);
}

namespace
{
// How far two playbacks are apart at each picture of either, and what each has for its callback.
struct tagInStep
{
    struct tagOne
    {
        tagInStep* ptBoth;
        int64_t llAtUs;
    };
    std::mutex tMutex;
    tagOne atOnes[2] = {{this, 0}, {this, 0}};
    std::vector<int64_t> allApartUs;

    std::size_t Count()
    {
        const std::lock_guard tLock(tMutex);
        return allApartUs.size();
    }
    void Forget()
    {
        const std::lock_guard tLock(tMutex);
        allApartUs.clear();
    }
    // Of the smaller of two in a row, since one of them always has its picture first.
    int64_t Median()
    {
        const std::lock_guard tLock(tMutex);
        std::vector<int64_t> allUs;
        for (std::size_t i = 1; i < allApartUs.size(); ++i)
        {
            allUs.push_back(std::min(allApartUs[i - 1], allApartUs[i]));
        }
        std::ranges::sort(allUs);
        return allUs.at(allUs.size() / 2);
    }
};

int OnInStep(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    auto& t = Target<tagInStep::tagOne>(dwUser);
    tagInStep& tBoth = *t.ptBoth;
    const std::lock_guard tLock(tBoth.tMutex);
    if (ptFrame->dwMediaType == eMediaVideo && ptFrame->dwLength != 0)
    {
        t.llAtUs = ptFrame->llWallClockUs;
        tBoth.allApartUs.push_back(std::abs(tBoth.atOnes[0].llAtUs - tBoth.atOnes[1].llAtUs));
    }
    return 0;
}
} // namespace

TEST_F(COnvifRecordings, PlayInStep)
{
    Device();
    const auto atAll = Recordings();
    ASSERT_FALSE(atAll.empty());
    const int nFirst = Play(m_tFrames, atAll[0].llStartUs, atAll[0].llEndUs);
    m_tFrames.Await(&tagSeen::IsVideo);
    auto tPara = Sized<tagHistoryStreamMultiTypePara>();
    tPara.dwChannel = 1;
    tPara.llStartUs = atAll[0].llStartUs;
    int nSecond = -1;
    tagInStep tBoth;
    WORKS(HistoryStreamMultiTypeCreate, &nSecond, m_nLogin, &tPara, 0);
    WORKS(HistoryStreamSync, nSecond, nFirst);
    WORKS(HistoryStreamCB, nFirst, OnInStep, User(tBoth.atOnes[0]));
    WORKS(HistoryStreamCB, nSecond, OnInStep, User(tBoth.atOnes[1]));
    // From where the first one is; then at another speed, from somewhere between two key frames.
    for (const uint32_t dwTimes : {1U, 2U})
    {
        auto tTime = Sized<tagTimeInfo>();
        tTime.llTimeUs = atAll[0].llStartUs + 20500000;
        if (dwTimes != 1)
        {
            WORKS(HistoryStreamSetSpeed, nFirst, dwTimes * eSpeedNormal);
            WORKS(HistoryStreamPosition, nFirst, eOperationSet, &tTime);
        }
        tBoth.Forget();
        EXPECT_TRUE(Comes([&] { return tBoth.Count() > 20; })); // until both have begun
        tBoth.Forget();
        EXPECT_TRUE(Comes([&] { return tBoth.Count() > 100; }));
        EXPECT_LT(tBoth.Median(), 40000) << "at " << dwTimes << " times the speed";
    }
    WORKS(HistoryStreamUnSync, nSecond, nFirst);
    WORKS(HistoryStreamDestroy, nSecond);
    WORKS(HistoryStreamDestroy, nFirst);
}

TEST_F(COnvifRecordings, AreFetched)
{
    Device();
    const auto atAll = Recordings();
    ASSERT_FALSE(atAll.empty());
    Bytes tBlocks;
    int nDownload = -1;
    auto tPara = Sized<tagFileDownloadPara>();
    tPara.dwKind = eFileRecording;
    tPara.dwFormat = eFileFormatMp4;
    tPara.llStartUs = atAll[0].llStartUs;
    tPara.llEndUs = atAll[0].llEndUs;
    WORKS(FileDownloadConnect, &nDownload, m_nLogin, &tPara);
    WORKS(FileDownloadCB, nDownload, OnBlock, User(tBlocks));
    WORKS(FileDownloadControl, nDownload, eTransferStart);
    std::string strFile;
    tBlocks.Await([&](std::string const& strBlock) { return strFile += strBlock, strBlock.empty(); });
    WORKS(FileDownloadDisconnect, nDownload);
    EXPECT_EQ(strFile.substr(4, 4), "ftyp");
    EXPECT_GT(strFile.size(), 1000000); // a minute, and it didn't take one
    const auto nStart = static_cast<time_t>(atAll[0].llStartUs / g_llSecond);
    tm tParts{};
    gmtime_r(&nStart, &tParts);
    char szDays[32] = {};
    unsigned long dwDays = sizeof szDays;
    const auto dwMonth = static_cast<unsigned long>((tParts.tm_year + 1900) * 100 + tParts.tm_mon + 1);
    WORKS(DataExistCheck, m_nLogin, 0, 0, dwMonth, szDays, &dwDays);
    EXPECT_EQ(szDays[tParts.tm_mday - 1], '1');
}

TEST_F(COnvifRecordings, QueriesAndLogs)
{
    Device();
    auto tTypes = Sized<tagHistoryStreamMultiTypeQueryFactor>();
    tTypes.ullChannels = 3;
    auto tOfTypes = Sized<tagHistoryStreamMultiTypeQueryResult>();
    int nQuery = -1;
    uint32_t dwChannels = 0;
    WORKS(HistoryStreamMultiTypeQueryConnect, &nQuery, m_nLogin, &tTypes);
    while (API(HistoryStreamMultiTypeQueryNext)(nQuery, &tOfTypes) == 0)
    {
        dwChannels |= 1U << tOfTypes.dwChannel;
    }
    WORKS(HistoryStreamQueryDisconnect, nQuery);
    EXPECT_EQ(dwChannels, 3);
    // Why something was recorded, events tell: one in four for each.
    const std::size_t nAll = Recordings().size();
    for (const uint32_t dwType : {eHistoryMotion, eHistoryAlarm})
    {
        const auto atOfType = Recordings(dwType);
        EXPECT_NEAR(static_cast<double>(atOfType.size()), static_cast<double>(nAll) / 4, 1) << dwType;
        EXPECT_TRUE(std::ranges::all_of(atOfType, [&](auto const& t) { return t.dwType == dwType; }));
    }
    int nStream = -1;
    ASSERT_EQ(Open(nStream), 0);
    auto tFiles = Sized<tagFileQueryFactor>();
    auto tFile = Sized<tagFileQueryResult>();
    WORKS(FileQueryConnect, &nQuery, nStream, &tFiles);
    WORKS(FileQueryNext, nQuery, &tFile);
    EXPECT_EQ(tFile.dwKind, eFileRecording);
    WORKS(FileQueryDisconnect, nQuery);
    WORKS(RealStreamDisconnect, nStream);
    // A recording that somebody asks for.
    Subscribe();
    WORKS(RecordControl, m_nLogin, 1, 1);
    m_tEvents.Await([](tagEvent const& t) { return Is(eEventRecording)(t) && t.dwWhere == 1 && t.dwState != 0; });
    WORKS(RecordControl, m_nLogin, 1, 0);
    m_tEvents.Await(Is(eEventRecording, 1, 0));
}

TEST_F(COnvifRecordings, Walls)
{
    Device();
    tagListed<tagDecoderDeviceConfig, tagDecoderWindow> tWall;
    WORKS(DecoderGetConfig, m_nLogin, &tWall);
    EXPECT_EQ(tWall.dwScreens, 4);
    unsigned long adwChannels[] = {TESSARO_ALL, 2, TESSARO_ALL, 9};
    ANSWERS(eResultNoChannel, SetScreenSplitMode, m_nLogin, 1, eSplit4, adwChannels);
    adwChannels[3] = 0;
    WORKS(SetScreenSplitMode, m_nLogin, 1, eSplit4, adwChannels);
    auto tWindow = Sized<tagDecoderChannelConfig>();
    WORKS(DecoderGetChannelConfig, m_nLogin, eWindowsOfScreen + 1, &tWindow);
    EXPECT_TRUE(tWindow.tSource.dwKind == eDecoderSourceChannel && tWindow.tSource.dwChannel == 2);
    WORKS(DecoderGetConfig, m_nLogin, &tWall);
    EXPECT_EQ(std::ranges::count_if(tWall.at, [](auto const& t) { return t.dwChannel / eWindowsOfScreen == 1; }), 4);
    tWall.dwCount = 1;
    tWall.at[0] = {7, 0, 0, 1000, 5000, 0, 0, 0};
    WORKS(DecoderSetConfig, m_nLogin, &tWall);
    WORKS(DecoderGetConfig, m_nLogin, &tWall);
    EXPECT_TRUE(tWall.dwCount == 1 && tWall.at[0].dwChannel == 7);
    // A window with a source by its address; another one for now; back.
    tWindow.tSource = {};
    tWindow.tSource.dwKind = eDecoderSourceAddress;
    strcpy(tWindow.tSource.szAddress, "rtsp://192.0.2.10/live");
    WORKS(DecoderSetChannelConfig, m_nLogin, 7, &tWindow);
    tWindow.tSource = {};
    WORKS(DecoderGetChannelConfig, m_nLogin, 7, &tWindow);
    EXPECT_STREQ(tWindow.tSource.szAddress, "rtsp://192.0.2.10/live");
    auto tNow = Sized<tagDecoderDynamicInformation>();
    tNow.tSource = tWindow.tSource;
    strcpy(tNow.tSource.szAddress, "rtsp://192.0.2.11/live");
    WORKS(DecoderDynamicConnect, m_nLogin, 7, &tNow);
    tagListed<tagDecoderChannelStatus, tagDecoderWindowStatus> tStatus;
    WORKS(DecoderChannelGetStatus, m_nLogin, &tStatus);
    EXPECT_TRUE(tStatus.dwCount == 1 && tStatus.at[0].dwChannel == 7);
    WORKS(DecoderDynamicDisconnect, m_nLogin, 7, eDecoderRestore);
    WORKS(DecoderGetChannelConfig, m_nLogin, 7, &tWindow);
    EXPECT_STREQ(tWindow.tSource.szAddress, "rtsp://192.0.2.10/live");
    auto tInfo = Sized<tagDecoderChannelInformation>();
    WORKS(DecoderGetChannelInformation, m_nLogin, 7, &tInfo);
    auto tSignal = Sized<tagDecoderVideoStandardConfig>();
    WORKS(DecoderGetVideoStandard, m_nLogin, 0, &tSignal);
    EXPECT_GT(tSignal.dwWidth, 0);
}

TEST_F(COnvifRecordings, Talk)
{
    Device();
    int nStream = -1;
    int nVoice = -1;
    ASSERT_EQ(Open(nStream), 0);
    auto tPara = Sized<tagVoiceStreamPara>();
    WORKS(VoiceStreamConnect, &nVoice, nStream, &tPara);
    EXPECT_TRUE(tPara.dwCodec == eCodecG711A && tPara.dwSampleRate == 8000);
    Bytes tHeard;
    WORKS(VoiceStreamCB, nVoice, OnVoice, User(tHeard));
    // What is said comes back as an echo.
    std::string strWord(tPara.dwSampleRate / 1000 * tPara.dwPacketMs, '\x2A');
    std::atomic<bool> bHeard{false};
    std::thread tTalk(
        [&]
        {
            for (int i = 0; i < 3000 && !bHeard; ++i)
            {
                tagBuffer tBuffer = Buffer(strWord);
                EXPECT_EQ(API(VoiceStreamSend)(nVoice, &tBuffer), 0);
                std::this_thread::sleep_for(std::chrono::milliseconds(tPara.dwPacketMs));
            }
        });
    tHeard.Await([](std::string const& str) { return !str.empty() && str.find_first_not_of('\x2A') == str.npos; });
    bHeard = true;
    tTalk.join();
    WORKS(VoiceStreamDisconnect, nVoice);
    WORKS(RealStreamDisconnect, nStream);
}
