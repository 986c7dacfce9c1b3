// The live path of an application: the C API, the library, the RTSP plug-in, a real server.

#include "adapter/ClientAdapter.h"
#include "tests/rtsp/Support.h"

#include <atomic>

namespace
{
class Live : public testing::Test
{
protected:
    Live() { ClientAdapter_Start(100); }
    ~Live() override { ClientAdapter_Stop(); }

    static int Login(std::string const& strUrl, char const* szPassword = "secret")
    {
        tagUserLoginPara tLogin{};
        strUrl.copy(tLogin.szAddress, sizeof tLogin.szAddress);
        strncpy(tLogin.szUserName, "viewer", sizeof tLogin.szUserName - 1);
        strncpy(tLogin.szPassword, szPassword, sizeof tLogin.szPassword - 1);
        int nLogin = -1;
        EXPECT_EQ(ClientAdapter_UserLogin(&nLogin, eProtocolRTSP, &tLogin), 0);
        return nLogin;
    }
    static int Open(int nLogin)
    {
        tagRealStreamPara tStream{};
        tStream.dwStreamKind = eStreamMain;
        int nMedia = -1;
        EXPECT_EQ(ClientAdapter_RealStreamConnect(&nMedia, nLogin, &tStream), 0);
        return nMedia;
    }

    CServer m_tServer{{"--user", "viewer", "--password", "secret"}};
};

void* AsHandle(int nID)
{
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(nID));
}

TEST_F(Live, FramesComeInOrderUnderTheirOwnID)
{
    const int nLogin = Login(m_tServer.Url("/h264"));
    CReceiver atReceivers[2];
    int anMedia[2];
    for (std::size_t i = 0; i < 2; ++i)
    {
        anMedia[i] = Open(nLogin);
        EXPECT_EQ(ClientAdapter_SubscribeEvent(nLogin, 0, &CReceiver::OnEvent, atReceivers[i].User()), 0);
        EXPECT_EQ(ClientAdapter_StreamMediaCB(anMedia[i], &CReceiver::OnFrame, atReceivers[i].User()), 0);
    }
    atReceivers[1].Event(eEventLive);
    for (std::size_t i = 0; i < 2; ++i)
    {
        const std::vector<tagGot> atFrames = atReceivers[i].Frames(50);
        ExpectInOrder(atFrames);
        EXPECT_TRUE(std::all_of(atFrames.begin(), atFrames.end(),
                                [&](tagGot const& t) { return t.hStream == AsHandle(anMedia[i]); }));
        EXPECT_EQ(ClientAdapter_RealStreamDisconnect(anMedia[i]), 0);
        const std::size_t nFrames = atReceivers[i].Count();
        EXPECT_EQ(ClientAdapter_StreamMediaControl(anMedia[i], eTaskPlay), -1);
        EXPECT_EQ(atReceivers[i].Count(), nFrames);
    }
    EXPECT_EQ(ClientAdapter_UserLogout(nLogin), 0);
}

TEST_F(Live, RefusalsReachTheLoginsListener)
{
    for (auto const& [szMount, szPassword, dwStatus] :
         {std::tuple{"/h264", "wrong", 401UL}, {"/nothing", "secret", 404UL}})
    {
        CReceiver tReceiver;
        const int nLogin = Login(m_tServer.Url(szMount), szPassword);
        const int nMedia = Open(nLogin);
        EXPECT_EQ(ClientAdapter_SubscribeEvent(nLogin, 0, &CReceiver::OnEvent, tReceiver.User()), 0);
        EXPECT_EQ(tReceiver.Event(eEventRefused)[1], dwStatus);
        EXPECT_EQ(ClientAdapter_RealStreamDisconnect(nMedia) + ClientAdapter_UserLogout(nLogin), 0);
    }
}

// Fifty at once: each gets its own frames, and none after it was closed.
constexpr std::size_t g_nMany = 50;
std::atomic<int> g_anFrames[g_nMany];
std::atomic<bool> g_abClosed[g_nMany];
std::atomic<int> g_nWrong;

int OnManyFrame(void* hStream, tagStreamMediaFrame const*, unsigned long dwIndex)
{
    static std::atomic<void*> g_ahFirst[g_nMany];
    void* hExpected = nullptr;
    g_nWrong += !g_ahFirst[dwIndex].compare_exchange_strong(hExpected, hStream) && hExpected != hStream;
    g_nWrong += g_abClosed[dwIndex];
    ++g_anFrames[dwIndex];
    g_anFrames[dwIndex].notify_all();
    return 0;
}

TEST_F(Live, FiftyStreamsAtOnceAreClosedUnderLoad)
{
    std::vector<std::unique_ptr<CServer>> apServers; // one can't be trusted with fifty
    std::vector<int> anLogin;
    std::vector<int> anMedia;
    for (unsigned long dwIndex = 0; dwIndex < g_nMany; ++dwIndex)
    {
        if (dwIndex % 10 == 0)
        {
            apServers.push_back(std::make_unique<CServer>());
            anLogin.push_back(Login(apServers.back()->Url("/h264")));
        }
        anMedia.push_back(Open(anLogin.back()));
        EXPECT_EQ(ClientAdapter_StreamMediaCB(anMedia.back(), &OnManyFrame, dwIndex), 0);
    }
    for (auto& nFrames : g_anFrames)
    {
        for (int nSeen = nFrames; nSeen < 30; nSeen = nFrames)
        {
            nFrames.wait(nSeen);
        }
    }
    for (std::size_t i = 0; i < g_nMany; ++i)
    {
        EXPECT_EQ(ClientAdapter_RealStreamDisconnect(anMedia[i]), 0);
        g_abClosed[i] = true;
    }
    for (const int nLogin : anLogin)
    {
        EXPECT_EQ(ClientAdapter_UserLogout(nLogin), 0);
    }
    EXPECT_EQ(ClientAdapter_Stop(), 0);
    EXPECT_EQ(g_nWrong, 0);
}

// Everything from inside: look, re-register, subscribe, open another, close this one, log out.
struct tagInside
{
    int nLogin;
    std::atomic<int> nNext = -1;
};
int OnFrameInside(void* hStream, tagStreamMediaFrame const*, unsigned long dwUser)
{
    auto& tInside = *reinterpret_cast<tagInside*>(dwUser);
    const int nMedia = static_cast<int>(reinterpret_cast<std::intptr_t>(hStream));
    int nStatus = -1;
    tagRealStreamPara tStream{};
    tStream.dwStreamKind = eStreamMain;
    int nNext = -1;
    EXPECT_EQ(ClientAdapter_GetLoginStatus(tInside.nLogin, &nStatus), 0);
    EXPECT_EQ(ClientAdapter_RealStreamConnect(&nNext, tInside.nLogin, &tStream), 0);
    EXPECT_EQ(ClientAdapter_SubscribeEvent(tInside.nLogin, 0, nullptr, 0), 0);
    EXPECT_EQ(ClientAdapter_StreamMediaControl(nMedia, eTaskPlay), 0);
    EXPECT_EQ(ClientAdapter_StreamMediaCB(nMedia, nullptr, 0), 0);
    EXPECT_EQ(ClientAdapter_RealStreamDisconnect(nMedia), 0);
    EXPECT_EQ(ClientAdapter_UserLogout(tInside.nLogin), 0);
    tInside.nNext = nNext;
    tInside.nNext.notify_all();
    return 0;
}

TEST_F(Live, EverythingFromInsideACallback)
{
    tagInside tInside{Login(m_tServer.Url("/h264"))};
    ClientAdapter_StreamMediaCB(Open(tInside.nLogin), &OnFrameInside, reinterpret_cast<unsigned long>(&tInside));
    tInside.nNext.wait(-1);
    CReceiver tReceiver;
    EXPECT_EQ(ClientAdapter_StreamMediaCB(tInside.nNext, &CReceiver::OnFrame, tReceiver.User()), 0);
    EXPECT_EQ(tReceiver.FirstFrame().hStream, AsHandle(tInside.nNext));
    EXPECT_EQ(ClientAdapter_RealStreamDisconnect(tInside.nNext), 0);
}
} // namespace
