// What threads may do at once. What is checked holds however the threads are scheduled, and on one core; the thread
// sanitizer sees the rest.

#include "tests/core/Support.h"

#include <atomic>
#include <charconv>
#include <thread>

namespace
{
// Between threads only relaxed words, so that nothing but the library puts them in order.
constexpr auto g_eRelaxed = std::memory_order_relaxed;
std::atomic<std::uintptr_t> g_uHandles = 1;
thread_local std::uintptr_t g_uHandle; // that the plug-in gave to this thread, or was called with
thread_local int g_nAddress;           // that it was to connect to
thread_local void* g_pfnCallback;      // that it was given

int Plugin(tagCalled const& tCall, void** ppHandle)
{
    auto const& auArguments = tCall.auArguments;
    if (ppHandle)
    {
        *ppHandle = reinterpret_cast<void*>(g_uHandle = g_uHandles.fetch_add(1, g_eRelaxed));
    }
    else if (!auArguments.empty())
    {
        g_uHandle = auArguments[0];
    }
    if (tCall.strEntry == "RTSPClient_Create")
    {
        char const* const szUrl = reinterpret_cast<tagRTSPClientPara*>(auArguments[1])->szUrl;
        std::from_chars(szUrl, szUrl + strlen(szUrl), g_nAddress);
    }
    if (tCall.strEntry.ends_with("StreamMediaCB") || tCall.strEntry.ends_with("_SubscribeEvent"))
    {
        g_pfnCallback = reinterpret_cast<void*>(auArguments.end()[-2]);
    }
    return 0;
}

class Races : public testing::Test
{
protected:
    Races()
    {
        Journal().Observe(&Plugin);
        ClientAdapter_Start(16);
        std::tie(m_nLogin, m_uLogin) = Login(eProtocolVTQ);
        std::tie(m_nStream, m_uStream) = Connect(m_nLogin);
    }
    ~Races() override
    {
        ClientAdapter_RealStreamDisconnect(m_nStream);
        ClientAdapter_UserLogout(m_nLogin);
        ClientAdapter_Stop();
        Journal().Observe(nullptr);
    }

    // fnRun gets the number of its thread and of its round.
    template <class F>
    void InThreads(int nRounds, F fnRun)
    {
        std::vector<std::thread> atThreads;
        for (int nThread = 0; nThread < 3; ++nThread)
        {
            atThreads.emplace_back(
                [&, nThread]
                {
                    for (int i = 0; i < nRounds; ++i)
                    {
                        fnRun(nThread, i);
                    }
                });
        }
        for (std::thread& tThread : atThreads)
        {
            tThread.join();
        }
    }

    // A call with an ID that reaches the plug-in's own handle of it.
    template <class... A>
    void Use(std::uintptr_t uHandle, int (*pfnCall)(A...), A... tArguments)
    {
        g_uHandle = 0;
        EXPECT_EQ(pfnCall(tArguments...), 0);
        EXPECT_EQ(g_uHandle, uHandle);
    }

    std::pair<int, std::uintptr_t> Login(eProtocolType eType, int nAddress = 0)
    {
        int nID = -1;
        tagUserLoginPara tPara{};
        std::to_chars(tPara.szAddress, std::end(tPara.szAddress), nAddress);
        EXPECT_EQ(ClientAdapter_UserLogin(&nID, eType, &tPara), 0);
        return {nID, g_uHandle};
    }
    std::pair<int, std::uintptr_t> Connect(int nLogin)
    {
        int nID = -1;
        tagRealStreamPara tPara{};
        tPara.dwStreamKind = eStreamMain;
        EXPECT_EQ(ClientAdapter_RealStreamConnect(&nID, nLogin, &tPara), 0);
        return {nID, g_uHandle};
    }

    CCapture m_tCapture;
    int m_nLogin = -1; // what the threads share
    int m_nStream = -1;
    std::uintptr_t m_uLogin = 0;
    std::uintptr_t m_uStream = 0;
};

TEST_F(Races, OpenUseAndClose)
{
    InThreads(500,
              [&](int nThread, int i)
              {
                  const eProtocolType eType = g_atProtocols[1 + i % 3].eType;
                  const int nAddress = 1000 * nThread + i;
                  const auto [nLogin, uLogin] = Login(eType, nAddress);
                  const auto [nStream, uStream] = Connect(nLogin);
                  EXPECT_TRUE(eType != eProtocolRTSP || g_nAddress == nAddress);
                  Use(uStream, &ClientAdapter_StreamMediaControl, nStream, eTaskPlay);
                  Use(m_uStream, &ClientAdapter_StreamMediaControl, m_nStream, eTaskPlay);
                  Use(m_uLogin, &ClientAdapter_UnSubscribeEvent, m_nLogin, 1UL);
                  Use(uStream, &ClientAdapter_RealStreamDisconnect, nStream);
                  Use(eType == eProtocolRTSP ? 0 : uLogin, &ClientAdapter_UserLogout, nLogin);
              });
}

// One thread registers one function and another, each with its own user data, while the others are called back.
std::atomic<int> g_nMixed;
template <unsigned long dwOwn, class... A>
int Heard(void*, A... tArguments)
{
    g_nMixed.fetch_add(std::get<sizeof...(A) - 1>(std::tuple{tArguments...}) != dwOwn, g_eRelaxed);
    return 0;
}

TEST_F(Races, RegisterWhileFramesArrive)
{
    constexpr StreamMediaCallback apfnHeard[] = {&Heard<0>, &Heard<1>};
    ClientAdapter_StreamMediaCB(m_nStream, apfnHeard[0], 0);
    const auto pfnFrame = reinterpret_cast<StreamMediaCallback>(g_pfnCallback);
    InThreads(5000,
              [&](int nThread, int i)
              {
                  nThread == 0 ? Use(m_uStream, &ClientAdapter_StreamMediaCB, m_nStream, apfnHeard[i % 2],
                                     static_cast<unsigned long>(i % 2))
                               : (void)pfnFrame(nullptr, nullptr, static_cast<unsigned long>(m_nStream));
              });
    EXPECT_EQ(g_nMixed, 0);
}

// Logins subscribe for the first time, which makes their records, while events of all of them arrive.
TEST_F(Races, SubscribeWhileEventsArrive)
{
    g_SetUserCallBack.clear();
    std::vector<std::pair<int, std::uintptr_t>> atLogins;
    for (int i = 0; i < 100; ++i)
    {
        atLogins.push_back(Login(eProtocolVTQ));
    }
    constexpr DeviceEventCallback apfnHeard[] = {&Heard<0>, &Heard<1>};
    ClientAdapter_SubscribeEvent(atLogins[0].first, 1, apfnHeard[0], 0);
    const auto pfnEvent = reinterpret_cast<DeviceEventCallback>(g_pfnCallback);
    InThreads(1000,
              [&](int nThread, int i)
              {
                  const auto [nLogin, uLogin] = atLogins[static_cast<std::size_t>(i) % atLogins.size()];
                  nThread == 0 ? Use(uLogin, &ClientAdapter_SubscribeEvent, nLogin, 1UL, apfnHeard[i % 2],
                                     static_cast<unsigned long>(i % 2))
                               : (void)pfnEvent(nullptr, 1, 2, 3, 4, static_cast<unsigned long>(nLogin));
              });
    EXPECT_EQ(g_nMixed, 0);
    EXPECT_EQ(g_SetUserCallBack.size(), atLogins.size());
    for (auto const& tLogin : atLogins)
    {
        EXPECT_EQ(ClientAdapter_UserLogout(tLogin.first), 0);
    }
}
} // namespace
