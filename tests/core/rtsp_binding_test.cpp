// The RTSP binding: logins that are records, and streams made from them.

#include "adapter/ClientAdapter.h"
#include "tests/core/Support.h"

#include <cstring>

namespace
{
template <std::size_t n>
void Put(char (&szField)[n], std::string const& strText)
{
    memset(szField, 0, n);
    strText.copy(szField, n); // a long text fills the field without a terminator
}

class RtspBinding : public testing::Test
{
protected:
    RtspBinding()
    {
        Journal().Reset();
        Journal().Answer("RTSPClient_Create",
                         [this](tagCalled const& tCall)
                         {
                             m_tBlock = *reinterpret_cast<tagRTSPClientPara*>(tCall.auArguments.at(1));
                             return m_nAnswer;
                         });
        m_tSet.InsertProtocol(eProtocolRTSP, g_atProtocols[2].Path().c_str());
    }
    ~RtspBinding() override
    {
        Logout();
        m_tSet.RemoveAllProtocol();
    }

    void Login()
    {
        Logout();
        EXPECT_EQ(m_tSet.UserLogin(&m_hLogin, &m_tLogin, eProtocolRTSP), 0);
    }
    void Logout() { EXPECT_EQ(m_tSet.UserLogout(m_hLogin, eProtocolRTSP), 0); }
    int Connect(std::uint32_t dwKind)
    {
        m_tStream.dwStreamKind = dwKind;
        return m_tSet.RealStreamConnect(&m_hStream, m_hLogin, &m_tStream, eProtocolRTSP);
    }
    void* Newest()
    {
        Journal().Take();
        EXPECT_EQ(m_tSet.SubscribeEvent(m_hLogin, 5, nullptr, 6, eProtocolRTSP), 0);
        const auto tCall = Journal().Take().at(0);
        EXPECT_EQ(tCall.strEntry, "RTSPClient_EventCB");
        EXPECT_EQ(tCall.auArguments.size(), 3U) << "the event word is not passed on";
        return reinterpret_cast<void*>(tCall.auArguments.at(0));
    }

    CCapture m_tCapture;
    CClientProtocolSet m_tSet;
    tagUserLoginPara m_tLogin{.szAddress = "10.0.0.5",
                              .dwPort = 8000,
                              .szUserName = "user",
                              .szPassword = "secret",
                              .dwTimeoutMs = 0,
                              .dwRtspMainPort = 554,
                              .dwRtspSubPort = 555,
                              .szRtspMainPath = "a",
                              .szRtspSubPath = "b",
                              .dwRtspUrlMode = 1,
                              .dwRtspHostSelect = 0,
                              .szRtspHost = "other.example"};
    tagRealStreamPara m_tStream{
        .dwChannel = 10, .dwReserved = 0, .dwStreamKind = eStreamMain, .dwStreamPara = {30, 31, 32, 33, 34, 35, 36}};
    void* m_hLogin = reinterpret_cast<void*>(-1);
    void* m_hStream = nullptr;
    tagRTSPClientPara m_tBlock{};
    int m_nAnswer = 0;
};

TEST_F(RtspBinding, Addresses)
{
    const std::string strLong(256, 'x');
    struct
    {
        std::uint32_t dwMode, dwSelect;
        std::int32_t nMain;
        std::string strAddress, strPath, strMain, strSub;
        std::uint32_t dwMainPort, dwSubPort;
    } const atCases[] = {
        {1, 0, 554, "10.0.0.5", "a", "rtsp://10.0.0.5:554/a", "rtsp://10.0.0.5:555/b", 554, 555},
        {1, 1, 554, "10.0.0.5", "a", "rtsp://other.example:554/a", "rtsp://other.example:555/b", 554, 555},
        {9, 2, -1, "h", "a", "rtsp://h:-1/a", "rtsp://h:555/b", 0xFFFFFFFF, 555},
        {0, 1, 554, "rtsp://x/y", "a", "rtsp://x/y", "", 8000, 0},
        {0, 0, 554, strLong, "a", strLong.substr(0, 255), "", 8000, 0},
        {1, 0, 554, strLong, "a", "rtsp://" + strLong.substr(0, 248), "rtsp://" + strLong.substr(0, 248), 554, 555},
        {1, 0, 554, "h", strLong.substr(0, 128), "rtsp://h:554/" + strLong.substr(0, 128), "rtsp://h:555/b", 554, 555},
    };
    for (auto const& tCase : atCases)
    {
        SCOPED_TRACE(tCase.strMain);
        m_tLogin.dwRtspUrlMode = tCase.dwMode;
        m_tLogin.dwRtspHostSelect = tCase.dwSelect;
        m_tLogin.dwRtspMainPort = tCase.nMain;
        Put(m_tLogin.szAddress, tCase.strAddress);
        Put(m_tLogin.szRtspMainPath, tCase.strPath);
        Login();
        for (const std::uint32_t dwKind : {1U, 2U, 3U, 4U, 5U})
        {
            EXPECT_EQ(Connect(dwKind), 0);
            EXPECT_EQ(m_tBlock.szUrl, dwKind < 4 ? tCase.strMain : tCase.strSub);
            EXPECT_EQ(m_tBlock.dwPort, dwKind < 4 ? tCase.dwMainPort : tCase.dwSubPort);
        }
    }
}

TEST_F(RtspBinding, TheBlockOfAStream)
{
    memset(m_tLogin.szPassword, 'p', sizeof m_tLogin.szPassword);
    Login();
    Journal().Take();
    EXPECT_EQ(Connect(eStreamSub), 0);
    const auto tCall = Journal().Take().at(0);
    EXPECT_EQ(tCall.strEntry, "RTSPClient_Create");
    EXPECT_EQ(tCall.auArguments.at(0), reinterpret_cast<std::uintptr_t>(&m_hStream));
    EXPECT_EQ(tCall.auArguments.at(2), 10U);
    tagRTSPClientPara tExpected{};
    Put(tExpected.szUrl, "rtsp://10.0.0.5:555/b");
    Put(tExpected.szUserName, "user");
    memset(tExpected.szPassword, 'p', 31);
    tExpected.dwPort = 555;
    tExpected.dwFlag = 1;
    memcpy(tExpected.dwStreamPara, m_tStream.dwStreamPara, sizeof tExpected.dwStreamPara);
    tExpected.dwChannel = 10;
    EXPECT_EQ(memcmp(&m_tBlock, &tExpected, sizeof tExpected), 0);
}

TEST_F(RtspBinding, EventsGoToTheNewestStream)
{
    Login();
    EXPECT_EQ(Newest(), nullptr);
    Connect(eStreamMain);
    Connect(eStreamMain);
    void* const hSecond = m_hStream;
    EXPECT_EQ(Newest(), hSecond);
    m_nAnswer = 5; // failed, but a handle was written
    EXPECT_EQ(Connect(eStreamMain), 5);
    EXPECT_EQ(Newest(), hSecond);
    m_nAnswer = 0; // succeeded, and none was
    Journal().WriteHandles(false);
    m_hStream = reinterpret_cast<void*>(0x66);
    EXPECT_EQ(Connect(eStreamMain), 0);
    EXPECT_EQ(m_hStream, reinterpret_cast<void*>(0x66));
    EXPECT_EQ(Newest(), hSecond);

    // Logged out meanwhile: the record of a free slot is left alone.
    Journal().WriteHandles(true);
    Journal().Answer("RTSPClient_Create", [this](tagCalled const&) { return Logout(), 0; });
    EXPECT_EQ(Connect(eStreamMain), 0);
    EXPECT_EQ(g_cClient.m_stUser[reinterpret_cast<std::intptr_t>(m_hLogin)].hStream, hSecond);
}

TEST_F(RtspBinding, BadLoginsNeverReachThePlugin)
{
    Login();
    for (const std::uint32_t dwKind : {0U, 6U, 0xFFFFFFFFU})
    {
        EXPECT_EQ(Connect(dwKind), 1);
    }
    int nOnvif = -1;
    g_cClient.SetUserType(nOnvif, nullptr, eProtocolOnvif);
    int nApplication = -1; // the application's ID of the same login
    g_cClient.SetUserType(nApplication, m_hLogin, eProtocolRTSP);
    void* const hGood = m_hLogin;
    m_tSet.UserLogout(hGood, eProtocolRTSP);
    EXPECT_EQ(m_tSet.UserLogout(hGood, eProtocolRTSP), 0);
    Journal().Take();
    m_tCapture.Text();
    for (const std::intptr_t nBad :
         {std::intptr_t{-1}, std::intptr_t{1000}, std::intptr_t{nOnvif}, std::intptr_t{nApplication},
          reinterpret_cast<std::intptr_t>(hGood), sizeof(void*) > 4 ? static_cast<std::intptr_t>(0x100000000ULL) : -2})
    {
        m_hLogin = reinterpret_cast<void*>(nBad);
        EXPECT_EQ(Connect(eStreamMain), 1);
        EXPECT_EQ(m_tSet.SubscribeEvent(m_hLogin, 5, nullptr, 6, eProtocolRTSP), 1);
    }
    EXPECT_TRUE(Journal().Take().empty());
    m_hLogin = reinterpret_cast<void*>(-1);
    g_cClient.DeleteUserType(nOnvif);
    g_cClient.DeleteUserType(nApplication);
}

TEST_F(RtspBinding, ControlCodesAreLimited)
{
    for (const auto& [nCode, nPassed] : {std::pair{4, 3}, {3, 3}, {2, 2}, {-1, -1}})
    {
        Journal().Take();
        EXPECT_EQ(m_tSet.StreamMediaControl(nullptr, static_cast<eTaskControl>(nCode), eProtocolRTSP), 0);
        EXPECT_EQ(static_cast<int>(Journal().Take().at(0).auArguments.at(1)), nPassed);
    }
}

TEST_F(RtspBinding, LoginNeedsNoPlugin)
{
    m_tSet.RemoveAllProtocol();
    m_tSet.InsertProtocol(eProtocolRTSP, "/nowhere/libnothing.so");
    Login();
    EXPECT_NE(m_hLogin, reinterpret_cast<void*>(-1));
    EXPECT_EQ(Connect(eStreamMain), 1);
}
} // namespace
