// Live streams, playback and voice.

#include "tests/device/Device.h"

TEST_P(CDeviceTest, Live)
{
    Frames tFrames;
    Frames tRaw;
    int nMedia = -1;
    EXPECT_EQ(Open(nMedia, 4), eResultNoChannel);
    EXPECT_EQ(Open(nMedia, 0), 0);
    WORKS(StreamMediaRawCB, nMedia, OnFrame, User(tRaw));
    WORKS(StreamMediaCB, nMedia, OnFrame, User(tFrames));
    const tagSeen tFirst = tFrames.Await(&tagSeen::IsVideo);
    EXPECT_TRUE(tFirst.IsKey() && tFirst.nMedia == nMedia && tFirst.dwCodec == eCodecH264 && tFirst.dwWidth == 1280);
    EXPECT_EQ(tFirst.strData.substr(0, 4), std::string("\0\0\0\1", 4));
    EXPECT_NEAR(static_cast<double>(tFirst.llWallClockUs) / 1e6, static_cast<double>(time(nullptr)), 60);
    EXPECT_EQ(tFrames.Await([](tagSeen const& t) { return t.dwMediaType == eMediaAudio; }).dwSampleRate, 8000);
    EXPECT_EQ(tRaw.Next().nMedia, nMedia);
    // Twenty-five a second, and a key frame long before its time.
    const auto dwInterval = Read<tagConfigVideoEncoder>(eConfigVideoEncoder, 0, eStreamMain).dwKeyFrameInterval;
    const tagSeen tKey = tFrames.Await(&tagSeen::IsKey);
    const tagSeen tNext = tFrames.Await(&tagSeen::IsVideo);
    EXPECT_EQ(tNext.dwSequence, tKey.dwSequence + 1);
    EXPECT_NEAR(static_cast<double>(tNext.llPresentationTimeUs - tKey.llPresentationTimeUs), 40000, 100);
    WORKS(ForceIFrame, m_nLogin, nMedia);
    EXPECT_LT(tFrames.Await(&tagSeen::IsKey).dwSequence, tKey.dwSequence + dwInterval);
    // Paused, and on again.
    WORKS(StreamMediaControl, nMedia, eTaskPause);
    std::this_thread::sleep_for(100ms);
    tFrames.Drain();
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(tFrames.Drain(), 0);
    WORKS(StreamMediaControl, nMedia, eTaskPlay);
    EXPECT_TRUE(tFrames.Await(&tagSeen::IsVideo).IsKey());
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
    EXPECT_EQ(tFrames.Await(&tagSeen::IsVideo).dwCodec, eCodecH265);
    API(RealStreamDisconnect)(nMedia);
}

TEST_P(CDeviceTest, FaultsOfStreams)
{
    Frames tFrames;
    int nMedia = -1;
    WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(m_tEvents));
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
    tFrames.Await(&tagSeen::IsVideo);
    EXPECT_EQ(Fault(eFaultRestart, 0, 300), 0);
    m_tEvents.Await(Is(eEventLoginLost));
    m_tEvents.Await(Is(eEventLoginRestored));
    m_tEvents.Await(Is(eEventDeviceRestarted, eRestartFault, 0));
    EXPECT_TRUE(tFrames.Await([](tagSeen const& t) { return (t.dwFlags & eFrameDiscontinuity) != 0; }).IsKey());
    API(RealStreamDisconnect)(nMedia);
}

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
    EXPECT_EQ(tFrames.Await(&tagSeen::IsEnd).dwLength, 0);
    WORKS(StreamMediaControl, nStream, eTaskPause);
    tTime.llTimeUs = llMiddle;
    WORKS(HistoryStreamPosition, nStream, eOperationSet, &tTime);
    tFrames.Drain();
    WORKS(StreamMediaControl, nStream, eTaskStep);
    tFrames.Next();
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(tFrames.Drain(), 0);
    // Backwards from the very beginning there is one picture, however late it is played.
    for (int i = 0; i < 20; ++i)
    {
        WORKS(HistoryStreamCreate, &nOther, m_nLogin, &tPara, eHistoryPaused);
        WORKS(HistoryStreamCB, nOther, OnFrame, User(tOther));
        WORKS(StreamMediaControl, nOther, eTaskStep);
        EXPECT_TRUE(tOther.Next().IsKey());
        WORKS(HistoryStreamSetSpeed, nOther, eSpeedReverse + eSpeedNormal * 16);
        WORKS(StreamMediaControl, nOther, eTaskPlay);
        EXPECT_TRUE(tOther.Next().IsKey());
        EXPECT_TRUE(tOther.Next().IsEnd());
        WORKS(HistoryStreamDestroy, nOther);
    }
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
