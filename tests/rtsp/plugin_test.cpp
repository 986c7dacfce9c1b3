// The RTSP plug-in by its own entry points: calls, registrations, callbacks, closing.

#include "tests/rtsp/Stream.h"

#include <latch>
#include <pthread.h>
#include <stdexcept>

namespace
{
constexpr char g_szBrisk[] = "/0/0?fps=25"; // the good case

class RtspPlugin : public CPluginTest
{
protected:
    CScripted m_tServer;
};

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
        EXPECT_EQ(RTSPClient_SetRtspEvenCb(hBad, nullptr, 0), eResultBadHandle);
        EXPECT_EQ(RTSPClient_Control(hBad, eTaskPlay), eResultBadHandle);
        EXPECT_EQ(RTSPClient_GetPackageInfo(hBad, &tInfo, sizeof tInfo, 0), eResultBadHandle);
    }
    RTSPClient_Stop();
    EXPECT_EQ(TryCreate(&hStream, strNobody), eResultNotStarted);
}

// --- the two registrations for events, and the one for frames --------------------------------------------------------

TEST_F(RtspPlugin, ReconnectsAreToldToBothListenersLateOnesToo)
{
    CStream tStream(m_tServer.Url(g_szBrisk));
    CReceiver tLate;
    for (unsigned long dwReconnects = 0; dwReconnects < 2;)
    {
        const std::int64_t llBefore = tStream.Frames(30).back().tFrame.llPresentationTimeUs;
        m_tServer.Reboot();
        const auto adwLost = tStream.Event(eEventLost);
        EXPECT_EQ(adwLost[3], dwReconnects);
        EXPECT_GE(adwLost[2], 1000U);
        tStream.Clear();
        tLate.Clear();
        tStream.Event(eEventConnecting);
        EXPECT_EQ(tStream.Event(eEventLive)[3], ++dwReconnects);
        EXPECT_GT(tStream.FirstFrame().tFrame.llPresentationTimeUs, llBefore);
        EXPECT_EQ(RTSPClient_SetRtspEvenCb(tStream.Handle(), &CReceiver::OnEvent, tLate.User()), 0);
        EXPECT_EQ(tLate.Event(eEventLive)[3], dwReconnects);
    }
    const tagRTSPPackageInfo tInfo = tStream.Info();
    EXPECT_EQ(tInfo.dwReconnects, 2U);
    EXPECT_EQ(tInfo.dwState, static_cast<std::uint32_t>(eConnectionLive));
    EXPECT_GE(tInfo.ullPackets, tInfo.ullFrames);
    EXPECT_GE(tInfo.ullFrames, 60U);
    EXPECT_GE(tInfo.ullBytes, tInfo.ullFrames * 40);
}

TEST_F(RtspPlugin, PlayInAPauseBetweenTwoTriesEndsBeingPaused)
{
    CStream tStream("rtsp://127.0.0.1:1/x");
    EXPECT_EQ(tStream.Event(eEventLost)[1], static_cast<unsigned long>(ECONNREFUSED));
    EXPECT_EQ(RTSPClient_Control(tStream.Handle(), eTaskPause), 0);
    tStream.Event(eEventPaused);
    tStream.Clear();
    EXPECT_EQ(RTSPClient_Control(tStream.Handle(), eTaskPlay), 0);
    tStream.Await([](auto const&, auto const& atEvents) { return !atEvents.empty(); }, Clock::now() + 10s);
    EXPECT_NE(tStream.Info().dwState, static_cast<std::uint32_t>(eConnectionPaused));
}

TEST_F(RtspPlugin, CallbacksAreReplacedOnARunningStream)
{
    CStream tStream(m_tServer.Url(g_szBrisk));
    CReceiver tSecond;
    tStream.Frames(10);
    RTSPClient_StreamCB(tStream.Handle(), &CReceiver::OnFrame, tSecond.User());
    const std::uint32_t dwNext = tSecond.Frame([](tagGot const&) { return true; }).tFrame.dwSequence;
    EXPECT_EQ(tStream.Frames(10).back().tFrame.dwSequence + 1, dwNext);
    RTSPClient_StreamCB(tStream.Handle(), nullptr, 0);
    CReceiver tThird; // begins with a key frame, wherever the stream is
    RTSPClient_StreamCB(tStream.Handle(), &CReceiver::OnFrame, tThird.User());
    EXPECT_TRUE(tThird.FirstFrame().Is(eFrameKey));
    EXPECT_EQ(tStream.Close(), 0);
}

// --- what a callback does --------------------------------------------------------------------------------------------

// The first frame's callback does something; all frames go to the receiver.
struct tagInside
{
    explicit tagInside(std::function<int()> fn) : fnDo(std::move(fn)) {}

    std::function<int()> fnDo;
    std::atomic<int> nCalls = 0;
    std::promise<int> tDone{};
    CReceiver tReceiver{};

    static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
    {
        auto& tThis = *reinterpret_cast<tagInside*>(dwUser);
        CReceiver::OnFrame(hStream, ptFrame, tThis.tReceiver.User());
        if (tThis.nCalls++ == 0)
        {
            tThis.tDone.set_value(tThis.fnDo());
        }
        return 0;
    }
    void Listen(void* hStream)
    {
        EXPECT_EQ(RTSPClient_EventCB(hStream, &CReceiver::OnEvent, tReceiver.User()), 0);
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
    void* ahStreams[4];
    for (void*& hStream : ahStreams)
    {
        EXPECT_EQ(TryCreate(&hStream, m_tServer.Url(g_szBrisk)), 0);
    }
    tagInside tItself{[&] { return RTSPClient_Destroy(ahStreams[0]); }};
    tItself.Listen(ahStreams[0]);
    EXPECT_EQ(tItself.Result(), 0);

    std::latch tBoth{2}; // both callbacks run before either closes the other's stream
    std::atomic<int> nClosed = 0;
    const auto fnCloseOther = [&](std::size_t iOther)
    {
        tBoth.arrive_and_wait();
        const int nResult = RTSPClient_Destroy(ahStreams[iOther]);
        ++nClosed;
        return nResult == eResultStillRunning ? 0 : nResult;
    };
    tagInside tEach{[&] { return fnCloseOther(2); }};
    tagInside tOther{[&] { return fnCloseOther(1); }};
    tEach.Listen(ahStreams[1]);
    tOther.Listen(ahStreams[2]);
    EXPECT_EQ(tEach.Result() + tOther.Result(), 0);
    EXPECT_EQ(nClosed, 2);

    tagInside tAll{[] { return RTSPClient_Stop(); }};
    tAll.Listen(ahStreams[3]);
    EXPECT_EQ(tAll.Result(), 0);
    EXPECT_EQ(RTSPClient_Start() + RTSPClient_Stop(), 0);
    m_tServer.AwaitNoPeers();
    for (tagInside const* const ptInside : {&tItself, &tEach, &tOther, &tAll})
    {
        EXPECT_EQ(ptInside->nCalls, 1) << "the callback that closes its stream is the last";
    }
}

// Ten callbacks hang for longer than silence makes a stream lost; others go on beside them.
TEST_F(RtspPlugin, CallbacksThatHangHoldUpTheirOwnStreamsOnly)
{
    constexpr std::int64_t llHangUs = 17'000'000;
    std::promise<void> tRelease;
    const std::shared_future<void> tReleased = tRelease.get_future().share();
    std::vector<std::unique_ptr<tagInside>> apHanging;
    std::vector<std::unique_ptr<CStream>> apStreams;
    CStream tOther(m_tServer.Url(g_szBrisk));
    tOther.Frames(10);
    const auto nThreads = CountSelf("task");
    for (int i = 0; i < 10; ++i)
    {
        apHanging.push_back(std::make_unique<tagInside>(
            [tReleased]
            {
                tReleased.wait();
                return 0;
            }));
        // The first has more to take than any buffer should hold.
        apStreams.push_back(
            std::make_unique<CStream>(m_tServer.Url(g_szBrisk + std::string(i ? "" : "&size=60000&gop=10"))));
        apHanging.back()->Listen(apStreams.back()->Handle());
    }
    for (auto const& pHanging : apHanging)
    {
        EXPECT_TRUE(Becomes([&] { return pHanging->nCalls == 1; }));
    }
    EXPECT_EQ(apStreams.back()->Close(), eResultStillRunning);
    EXPECT_LT(apStreams.back()->Closing(), g_tClosing);
    const auto fnUntil = [](std::int64_t llTimeUs)
    {
        return [=](std::vector<tagGot> const& atFrames, auto const&)
        { return !atFrames.empty() && atFrames.back().tFrame.llPresentationTimeUs >= llTimeUs; };
    };
    tOther.Await(fnUntil(llHangUs));
    ExpectInOrder(tOther.Frames(0));
    tRelease.set_value();
    for (std::size_t i = 0; i + 1 < apStreams.size(); ++i)
    {
        CReceiver& tReceiver = apHanging[i]->tReceiver;
        tReceiver.Await(fnUntil(llHangUs));
        for (CReceiver::Words const& adwWords : tReceiver.Events())
        {
            EXPECT_TRUE(adwWords[0] == eEventConnecting || adwWords[0] == eEventLive) << adwWords[0];
        }
        EXPECT_EQ(apStreams[i]->Info().dwReconnects + apStreams[i]->Info().ullLost, 0U);
    }
    const std::vector<tagGot> atFrames = apHanging[0]->tReceiver.Frames(0);
    EXPECT_GT(atFrames.back().tFrame.dwSequence, atFrames.size())
        << "frames were dropped, and are missing in the count";
    EXPECT_EQ(apHanging.back()->nCalls, 1) << "closed while it hung: the last";
    EXPECT_TRUE(Becomes([&] { return CountSelf("task") <= nThreads; })) << "the pool shrinks again";
    for (auto const& pStream : apStreams)
    {
        EXPECT_EQ(pStream->Close(), 0); // before what their callbacks use
    }
}

TEST_F(RtspPlugin, CallbacksThatThrowOrEndTheirThreadAreSurvived)
{
    std::array<std::function<int()>, 3> const afnDo{[]() -> int { throw std::runtime_error("the application's own"); },
                                                    []() -> int { pthread_exit(nullptr); },
                                                    []
                                                    {
                                                        pthread_cancel(pthread_self());
                                                        pthread_testcancel();
                                                        return 0;
                                                    }};
    CStream tOther(m_tServer.Url(g_szBrisk));
    for (auto const& fnDo : afnDo)
    {
        tagInside tInside(fnDo);
        CStream tStream(m_tServer.Url(g_szBrisk));
        tInside.Listen(tStream.Handle());
        tInside.tReceiver.Frames(10); // the stream goes on
        tOther.Clear();
        tOther.Frames(10);
        EXPECT_EQ(tStream.Close(), 0);
        EXPECT_LT(tStream.Closing(), g_tClosing);
    }
}
} // namespace
