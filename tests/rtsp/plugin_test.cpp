// The RTSP plug-in by its own entry points, against a real server.

#include "plugins/rtsp/EntryPoints.h"
#include "rtsp/Timeline.h"
#include "tests/rtsp/Support.h"

extern "C"
{
#include <libavcodec/avcodec.h>
}

namespace
{
class RtspPlugin : public testing::Test
{
protected:
    RtspPlugin() { EXPECT_EQ(RTSPClient_Start(), 0); }
    ~RtspPlugin() override { RTSPClient_Stop(); }

    static int TryCreate(void** phStream, std::string const& strUrl, char const* szUser = "",
                         char const* szPassword = "", eRtspTransport eTransport = eRtspTcp)
    {
        tagRTSPClientPara tPara{};
        strUrl.copy(tPara.szUrl, sizeof tPara.szUrl);
        strncpy(tPara.szUserName, szUser, sizeof tPara.szUserName - 1);
        strncpy(tPara.szPassword, szPassword, sizeof tPara.szPassword - 1);
        tPara.dwStreamPara[0] = static_cast<std::uint32_t>(eTransport);
        return RTSPClient_Create(phStream, &tPara, 0);
    }
    // A stream with the receiver as its listeners.
    template <class... A>
    void* Open(CReceiver& tReceiver, A... tArguments)
    {
        void* hStream = nullptr;
        EXPECT_EQ(TryCreate(&hStream, tArguments...), 0);
        EXPECT_EQ(RTSPClient_EventCB(hStream, &CReceiver::OnEvent, tReceiver.User()), 0);
        EXPECT_EQ(RTSPClient_StreamCB(hStream, &CReceiver::OnFrame, tReceiver.User()), 0);
        return hStream;
    }
    static tagRTSPPackageInfo Info(void* hStream)
    {
        tagRTSPPackageInfo tInfo{};
        EXPECT_EQ(RTSPClient_GetPackageInfo(hStream, &tInfo, sizeof tInfo, 0), 0);
        return tInfo;
    }
};

// What a decoder makes of one frame alone: the picture's size, 0x0 if it can't start there.
std::pair<int, int> Decode(AVCodecID eCodec, tagGot const& tGot)
{
    AVCodecContext* ptCodec = avcodec_alloc_context3(avcodec_find_decoder(eCodec));
    ptCodec->err_recognition = AV_EF_EXPLODE;
    AVPacket* ptPacket = av_packet_alloc();
    AVFrame* ptFrame = av_frame_alloc();
    EXPECT_EQ(avcodec_open2(ptCodec, nullptr, nullptr), 0);
    EXPECT_EQ(av_new_packet(ptPacket, static_cast<int>(tGot.abyData.size())), 0);
    std::copy(tGot.abyData.begin(), tGot.abyData.end(), ptPacket->data);
    std::pair<int, int> tSize{};
    if (avcodec_send_packet(ptCodec, ptPacket) == 0 && avcodec_send_packet(ptCodec, nullptr) == 0 &&
        avcodec_receive_frame(ptCodec, ptFrame) == 0)
    {
        tSize = {ptFrame->width, ptFrame->height};
    }
    av_frame_free(&ptFrame);
    av_packet_free(&ptPacket);
    avcodec_free_context(&ptCodec);
    return tSize;
}

TEST_F(RtspPlugin, DecodingStartsWithTheFirstFrameAndNoneIsMissing)
{
    CServer tServer;
    for (auto const& [szMount, eCodec, dwCodec] :
         {std::tuple{"/h264", AV_CODEC_ID_H264, eCodecH264}, {"/h265", AV_CODEC_ID_HEVC, eCodecH265}})
    {
        SCOPED_TRACE(szMount);
        CReceiver tReceiver;
        void* const hStream = Open(tReceiver, tServer.Url(szMount));
        ExpectInOrder(tReceiver.Frames(40));
        RTSPClient_StreamCB(hStream, nullptr, 0);
        tReceiver.Clear();
        RTSPClient_StreamCB(hStream, &CReceiver::OnFrame, tReceiver.User()); // in the middle of a group of pictures
        const std::vector<tagGot> atFrames = tReceiver.Frames(60);
        EXPECT_EQ(atFrames.at(0).tFrame.dwCodec, static_cast<std::uint32_t>(dwCodec));
        EXPECT_EQ(atFrames[0].tFrame.dwWidth, 320U);
        EXPECT_TRUE(atFrames[0].tFrame.dwFlags & eFrameKey);
        ExpectInOrder(atFrames);
        std::size_t nKeys = 0;
        for (tagGot const& tGot : atFrames)
        {
            if (tGot.tFrame.dwFlags & eFrameKey)
            {
                ++nKeys;
                EXPECT_EQ(Decode(eCodec, tGot), (std::pair{320, 240}));
            }
        }
        EXPECT_GE(nKeys, 2U);
        const tagRTSPPackageInfo tInfo = Info(hStream);
        EXPECT_EQ(tInfo.dwState, static_cast<std::uint32_t>(eConnectionLive));
        EXPECT_GE(tInfo.ullPackets, tInfo.ullFrames);
        EXPECT_GE(tInfo.ullFrames, 60U);
        EXPECT_EQ(tInfo.ullLost + tInfo.dwReconnects, 0U);
        EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
    }
}

TEST_F(RtspPlugin, CodecsAreToldAndNamed)
{
    CServer tServer;
    struct
    {
        char const* szMount;
        eMediaType eType;
        eMediaCodec eCodec;
        char const* szName;
        std::uint32_t dwRate;
    } const atCases[] = {
        {"/av", eMediaAudio, eCodecAAC, "aac", 48000},
        {"/alaw", eMediaAudio, eCodecG711A, "pcm_alaw", 8000},
        {"/mulaw", eMediaAudio, eCodecG711U, "pcm_mulaw", 8000},
        {"/mjpeg", eMediaVideo, eCodecOther, "mjpeg", 0},
    };
    for (auto const& tCase : atCases)
    {
        SCOPED_TRACE(tCase.szMount);
        CReceiver tReceiver;
        void* const hStream = Open(tReceiver, tServer.Url(tCase.szMount));
        const auto tGot = tReceiver.Frame([&](tagGot const& t)
                                          { return static_cast<eMediaType>(t.tFrame.dwMediaType) == tCase.eType; });
        EXPECT_EQ(tGot.tFrame.dwCodec, static_cast<std::uint32_t>(tCase.eCodec));
        EXPECT_STREQ(tGot.tFrame.szCodecName, tCase.szName);
        EXPECT_EQ(tGot.tFrame.dwSampleRate, tCase.dwRate);
        EXPECT_EQ(tGot.tFrame.dwConfigLength >= 2, tCase.eCodec == eCodecAAC) << "AudioSpecificConfig";
        EXPECT_GT(tGot.tFrame.dwLength, 0U);
        EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
    }
}

TEST_F(RtspPlugin, TheDevicesClockComesWithItsFrames)
{
    CServer tServer;
    CReceiver tReceiver;
    void* const hStream = Open(tReceiver, tServer.Url("/av"));
    const auto tGot = tReceiver.Frame([](tagGot const& t) { return IsVideo(t) && t.tFrame.llWallClockUs != 0; });
    const auto tNow = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_NEAR(static_cast<double>(tGot.tFrame.llWallClockUs), static_cast<double>(tNow / 1us), 5e6);
    EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
}

TEST_F(RtspPlugin, TransportsCarryTheSame)
{
    CServer tServer;
    for (const eRtspTransport eTransport : {eRtspTcp, eRtspUdp})
    {
        CReceiver tReceiver;
        void* const hStream = Open(tReceiver, tServer.Url("/h264"), "", "", eTransport);
        EXPECT_TRUE(tReceiver.Frames(30).at(0).tFrame.dwFlags & eFrameKey) << eTransport;
        EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
    }
}

TEST_F(RtspPlugin, TlsCarriesTheSame)
{
    CServer tServer({"--user", "u", "--password", "p", "--tls", TESSARO_CLIPS "/tls.pem"});
    CReceiver tReceiver;
    void* const hStream = Open(tReceiver, "rtsps" + tServer.Url("/h264").substr(4), "u", "p");
    EXPECT_TRUE(tReceiver.Frames(10).at(0).tFrame.dwFlags & eFrameKey);
    EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
}

// --- credentials and refusals ----------------------------------------------------------------------------------------

TEST_F(RtspPlugin, CredentialsOfAnyKindAppearInNoLine)
{
    char const* const szUser = "u /?#%@";
    char const* const szPassword = "p:@/?#% +&=\"\xC3\xA9";
    CServer tServer({"--user", szUser, "--password", szPassword});
    av_log_set_level(AV_LOG_TRACE);
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    CReceiver tGood;
    CReceiver tBad;
    void* const hGood = Open(tGood, tServer.Url("/h264"), szUser, szPassword);
    void* const hBad = Open(tBad, tServer.Url("/h264"), szUser, "wrong-secret");
    EXPECT_TRUE(tGood.FirstFrame().tFrame.dwFlags & eFrameKey);
    const auto adwRefused = tBad.Event(eEventRefused);
    EXPECT_EQ(adwRefused[1], 401U);
    EXPECT_GE(adwRefused[2], 10000U) << "slow enough that no device locks the account";
    EXPECT_EQ(Info(hBad).dwLastStatus, 401U);
    EXPECT_EQ(Info(hBad).dwState, static_cast<std::uint32_t>(eConnectionRefused));
    EXPECT_EQ(RTSPClient_Destroy(hGood) + RTSPClient_Destroy(hBad), 0);
    av_log_set_level(AV_LOG_INFO);
    const std::string strOutput = testing::internal::GetCapturedStderr() + testing::internal::GetCapturedStdout();
    EXPECT_EQ(strOutput.find("secret"), std::string::npos) << strOutput;
    EXPECT_EQ(strOutput.find("p%3A"), std::string::npos) << strOutput;
    EXPECT_EQ(strOutput.find(szPassword), std::string::npos) << strOutput;
}

TEST_F(RtspPlugin, RefusalsCarryTheStatus)
{
    CServer tServer;
    for (auto const& [szMount, dwLeast] : {std::pair{"/nothing", 404UL}, {"/broken", 400UL}})
    {
        CReceiver tReceiver;
        void* const hStream = Open(tReceiver, tServer.Url(szMount));
        const auto adwRefused = tReceiver.Event(eEventRefused);
        EXPECT_GE(adwRefused[1], dwLeast);
        EXPECT_LT(adwRefused[1], 600UL);
        EXPECT_EQ(adwRefused[2], 1000UL);
        EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
    }
}

TEST_F(RtspPlugin, BadCallsAreRefused)
{
    void* hStream = nullptr;
    unsigned long dwValue = 0;
    tagRTSPPackageInfo tInfo;
    const std::string strNobody = "rtsp://127.0.0.1:1/x";
    for (char const* const szUrl : {"", "http://127.0.0.1/x", "rtsp://", "rtsp:///x", "rtsp://u:p@127.0.0.1/x",
                                    "rtsp://127.0.0.1/x\r\nX-Injected: y"})
    {
        EXPECT_EQ(TryCreate(&hStream, szUrl), eResultBadAddress) << szUrl;
    }
    EXPECT_EQ(TryCreate(&hStream, strNobody, "a:b"), eResultBadAddress);
    EXPECT_EQ(TryCreate(&hStream, strNobody, std::string(31, '@').c_str(), std::string(31, '@').c_str()),
              eResultBadAddress);
    EXPECT_EQ(hStream, nullptr);
    EXPECT_EQ(RTSPClient_Create(nullptr, nullptr, 0), eResultBadArgument);
    EXPECT_EQ(RTSPClient_SetMaxChannel(2), 0);
    EXPECT_EQ(TryCreate(&hStream, strNobody) + TryCreate(&hStream, strNobody), 0);
    EXPECT_EQ(TryCreate(&hStream, strNobody), eResultTooManyStreams);
    EXPECT_EQ(RTSP_GetAttribute(eAttributeOpenStreams, &dwValue), 0);
    EXPECT_EQ(dwValue, 2U);
    EXPECT_EQ(RTSP_GetAttribute(eAttributeMaxChannel, &dwValue), 0);
    EXPECT_EQ(dwValue, 2U);
    EXPECT_EQ(RTSP_GetAttribute(static_cast<eClientSDKAttributeType>(9), &dwValue), eResultNotSupported);
    EXPECT_EQ(RTSPClient_SetMaxChannel(0), 0);
    EXPECT_EQ(RTSP_ForceIFrame(hStream, 0), eResultNotSupported);
    EXPECT_EQ(RTSPClient_Control(hStream, static_cast<eTaskControl>(3)), eResultNotSupported);
    EXPECT_EQ(RTSPClient_GetPackageInfo(hStream, &tInfo, sizeof tInfo - 1, 0), eResultBadArgument);
    EXPECT_EQ(RTSPClient_GetPackageInfo(hStream, nullptr, sizeof tInfo, 0), eResultBadArgument);
    EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
    for (void* const hBad : {hStream, static_cast<void*>(nullptr), reinterpret_cast<void*>(-1)})
    {
        EXPECT_EQ(RTSPClient_Destroy(hBad), eResultBadHandle);
        EXPECT_EQ(RTSPClient_StreamCB(hBad, nullptr, 0), eResultBadHandle);
        EXPECT_EQ(RTSPClient_EventCB(hBad, nullptr, 0), eResultBadHandle);
        EXPECT_EQ(RTSPClient_Control(hBad, eTaskPlay), eResultBadHandle);
        EXPECT_EQ(RTSPClient_GetPackageInfo(hBad, &tInfo, sizeof tInfo, 0), eResultBadHandle);
    }
    RTSPClient_Stop();
    EXPECT_EQ(TryCreate(&hStream, strNobody), eResultNotStarted);
}

// --- a life that heals -----------------------------------------------------------------------------------------------

TEST_F(RtspPlugin, ComesBackAfterTheServerAndLeavesNothingBehind)
{
    CReceiver tReceiver;
    auto pServer = std::make_unique<CServer>();
    const int nPort = pServer->Port();
    const std::string strUrl = pServer->Url("/h264");
    const auto nThreads = CountSelf("task");
    void* const hStream = Open(tReceiver, strUrl);
    CReceiver tLate;
    std::uint32_t dwReconnects = 0;
    std::ptrdiff_t nFiles = 0;
    for (int i = 0; i < 3; ++i)
    {
        tReceiver.Event(eEventLive);
        const std::int64_t llBefore = tReceiver.Frames(30).back().tFrame.llPresentationTimeUs;
        nFiles = i == 0 ? CountSelf("fd") : nFiles;
        EXPECT_EQ(CountSelf("fd"), nFiles);
        EXPECT_TRUE(ThreadsLeft(nThreads + 1));
        pServer->Signal(SIGKILL);
        const auto adwLost = tReceiver.Event(eEventLost);
        EXPECT_EQ(adwLost[3], dwReconnects);
        EXPECT_GE(adwLost[2], 1000U);
        tReceiver.Clear();
        pServer = std::make_unique<CServer>(std::vector<std::string>{}, nPort);
        tReceiver.Event(eEventConnecting);
        EXPECT_EQ(tReceiver.Event(eEventLive)[3], ++dwReconnects);
        const tagGot tFirst = tReceiver.FirstFrame();
        EXPECT_EQ(tFirst.tFrame.dwFlags, static_cast<std::uint32_t>(eFrameKey | eFrameDiscontinuity));
        EXPECT_GT(tFirst.tFrame.llPresentationTimeUs, llBefore);
        // A listener that comes late hears how things stand, on the other registration too.
        tLate.Clear();
        EXPECT_EQ(RTSPClient_SetRtspEvenCb(hStream, &CReceiver::OnEvent, tLate.User()), 0);
        EXPECT_EQ(tLate.Event(eEventLive)[3], dwReconnects);
    }
    EXPECT_EQ(Info(hStream).dwReconnects, dwReconnects);
    EXPECT_EQ(RTSPClient_Stop(), 0);
    EXPECT_TRUE(ThreadsLeft(nThreads));
}

TEST_F(RtspPlugin, AFrozenServerIsToldAndDoesNotHoldUpClosing)
{
    CServer tServer;
    CReceiver tReceiver;
    void* const hStream = Open(tReceiver, tServer.Url("/h264"));
    tReceiver.Frames(10);
    tServer.Signal(SIGSTOP);
    const auto tFrozen = Clock::now();
    const auto adwStalled = tReceiver.Event(eEventStalled);
    EXPECT_GE(adwStalled[1], 5000U);
    EXPECT_GE(Clock::now() - tFrozen, 4s);
    const auto tBefore = Clock::now();
    EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
    EXPECT_LT(Clock::now() - tBefore, 2s);
    const std::size_t nFrames = tReceiver.Count();
    tServer.Signal(SIGCONT);
    EXPECT_EQ(tReceiver.Count(), nFrames);
}

TEST_F(RtspPlugin, PausesAndPlays)
{
    CServer tServer;
    CReceiver tReceiver;
    void* const hStream = Open(tReceiver, tServer.Url("/h264"));
    tReceiver.Frames(10);
    EXPECT_EQ(RTSPClient_Control(hStream, eTaskPause), 0);
    tReceiver.Event(eEventPaused);
    EXPECT_EQ(Info(hStream).dwState, static_cast<std::uint32_t>(eConnectionPaused));
    tReceiver.Clear();
    EXPECT_EQ(RTSPClient_Control(hStream, eTaskPlay), 0);
    tReceiver.Event(eEventLive);
    EXPECT_TRUE(tReceiver.FirstFrame().tFrame.dwFlags & eFrameKey);
    EXPECT_EQ(RTSPClient_Control(hStream, eTaskPause), 0);
    tReceiver.Event(eEventPaused);
    EXPECT_EQ(RTSPClient_Destroy(hStream), 0) << "closing needs no playing";
}

// What no server does on demand: time stamps that jump, begin again, or come from another session. In milliseconds.
TEST(Timeline, GoesOnWhateverTheDevicesClockDoes)
{
    struct
    {
        unsigned iTrack;
        std::int64_t llStamp, llArrived, llTime;
        bool bDiscontinuity;
        std::int64_t llJump; // 0: none
        bool bRestart = false;
    } const atSteps[] = {
        {0, 5000, 100000, 0, false, 0},  // starts at 0
        {1, 5010, 100020, 10, false, 0}, // tracks share their zero
        {0, 5080, 100040, 80, false, 0}, // pictures in decoding order
        {0, 5040, 100080, 40, false, 0},
        {0, 8000, 100120, 3000, false, 0}, // held up by the network
        {0, 8040, 103080, 3040, false, 0},
        {0, 100000, 103120, 3080, true, 91920}, // the clock was set
        {0, 100040, 103160, 3120, false, 0},
        {0, 0, 103200, 3160, true, -100080},       // time stamps began again
        {1, 8170, 103200, 3170, false, 0},         // the other track went on
        {0, 700000, 113200, 13170, true, 0, true}, // a new session, ten seconds later
        {1, 700010, 113210, 13180, true, 0},
    };
    rtsp::CTimeline tTimeline;
    for (auto const& tStep : atSteps)
    {
        SCOPED_TRACE(tStep.llStamp);
        if (tStep.bRestart)
        {
            tTimeline.Restart();
        }
        const auto tMapped = tTimeline.Map(std::to_string(tStep.iTrack), tStep.llStamp * 1000, tStep.llArrived * 1000);
        EXPECT_EQ(tMapped.llTimeUs, tStep.llTime * 1000);
        EXPECT_EQ(tMapped.bDiscontinuity, tStep.bDiscontinuity);
        EXPECT_EQ(tMapped.llJumpUs.value_or(0), tStep.llJump * 1000);
    }
}

TEST(WallClock, IsToldWhenItIsRightAndWhenItWasSet)
{
    struct
    {
        std::int64_t llWall, llStamp, llTime;
        bool bStampsJumped;
        std::int64_t llTold, llJump;
    } const atSteps[] = {
        {0, 10, 0, false, 0, 0}, // no sender report yet
        {500010, 10, 0, false, 500010, 0},
        {500050, 50, 40, false, 500050, 0},
        {500590, 90, 80, false, 500590, 0},           // corrected by half a second
        {4100130, 130, 120, false, 4100130, 3599500}, // set by an hour
        {4100170, 170, 160, false, 4100170, 0},
        {4190000, 90000, 200, true, 0, 0}, // reckoned from a time stamp that jumped
        {4190040, 90040, 240, false, 0, 0},
        {4100290, 90080, 280, false, 4100290, 0}, // a new report
    };
    rtsp::CWallClock tClock;
    for (auto const& tStep : atSteps)
    {
        SCOPED_TRACE(tStep.llWall);
        const auto tChecked =
            tClock.Check(tStep.llWall * 1000, tStep.llStamp * 1000, tStep.llTime * 1000, tStep.bStampsJumped);
        EXPECT_EQ(tChecked.llWallUs, tStep.llTold * 1000);
        EXPECT_EQ(tChecked.llJumpUs.value_or(0), tStep.llJump * 1000);
    }
}

// --- closing from inside ---------------------------------------------------------------------------------------------

// What the first frame does, from inside its callback.
struct tagInside
{
    std::function<int()> fnDo;
    std::once_flag tOnce{};
    std::promise<int> tDone{};

    static int OnFrame(void*, tagStreamMediaFrame const*, unsigned long dwUser)
    {
        auto& tThis = *reinterpret_cast<tagInside*>(dwUser);
        std::call_once(tThis.tOnce, [&] { tThis.tDone.set_value(tThis.fnDo()); });
        return 0;
    }
    void Listen(void* hStream)
    {
        EXPECT_EQ(RTSPClient_StreamCB(hStream, &OnFrame, reinterpret_cast<unsigned long>(this)), 0);
    }
    int Result()
    {
        std::future<int> tResult = tDone.get_future();
        return tResult.wait_for(g_tPatience) == std::future_status::ready ? tResult.get() : -1;
    }
};

TEST_F(RtspPlugin, StreamsCloseFromInsideTheirCallbacks)
{
    CServer tServer;
    const auto nThreads = CountSelf("task");
    void* ahStreams[4];
    for (void*& hStream : ahStreams)
    {
        EXPECT_EQ(TryCreate(&hStream, tServer.Url("/h264")), 0);
    }
    tagInside tItself{[&] { return RTSPClient_Destroy(ahStreams[0]); }};
    tItself.Listen(ahStreams[0]);
    EXPECT_EQ(tItself.Result(), 0);

    std::latch tBoth{2}; // both callbacks run before either closes the other's stream
    const auto fnCloseOther = [&](std::size_t iOther)
    {
        tBoth.arrive_and_wait();
        return RTSPClient_Destroy(ahStreams[iOther]);
    };
    tagInside tEach{[&] { return fnCloseOther(2); }};
    tagInside tOther{[&] { return fnCloseOther(1); }};
    tEach.Listen(ahStreams[1]);
    tOther.Listen(ahStreams[2]);
    EXPECT_EQ(tEach.Result() + tOther.Result(), 0);

    tagInside tAll{[] { return RTSPClient_Stop(); }};
    tAll.Listen(ahStreams[3]);
    EXPECT_EQ(tAll.Result(), 0);
    EXPECT_EQ(RTSPClient_Start() + RTSPClient_Stop(), 0);
    EXPECT_TRUE(ThreadsLeft(nThreads)) << "the thread that stopped everything ends by itself";
}

TEST_F(RtspPlugin, CallbacksAreReplacedOnARunningStream)
{
    CServer tServer;
    CReceiver tFirst;
    CReceiver tSecond;
    void* const hStream = Open(tFirst, tServer.Url("/h264"));
    tFirst.Frames(10);
    RTSPClient_StreamCB(hStream, &CReceiver::OnFrame, tSecond.User());
    const std::uint32_t dwNext = tSecond.FirstFrame().tFrame.dwSequence;
    EXPECT_EQ(tFirst.Frames(10).back().tFrame.dwSequence + 1, dwNext);
    EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
}
} // namespace
