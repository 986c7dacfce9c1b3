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
    if (tCall.strEntry.ends_with("_StreamMediaCB") || tCall.strEntry.ends_with("_SubscribeEvent"))
    {
        g_pfnCallback = reinterpret_cast<void*>(auArguments.end()[-2]);
    }
    return 0;
}

// A callback that has its own user data.
std::atomic<int> g_nMixed;
template <unsigned long dwOwn, class... A>
int Heard(void*, A... tArguments)
{
    g_nMixed.fetch_add(std::get<sizeof...(A) - 1>(std::tuple{tArguments...}) != dwOwn, g_eRelaxed);
    return 0;
}
constexpr StreamMediaCallback g_apfnFrame[] = {&Heard<0>, &Heard<1>};
constexpr DeviceEventCallback g_apfnEvent[] = {&Heard<0>, &Heard<1>};

// A call with an ID that reaches the plug-in's own handle of it.
template <class... A>
void Use(std::uintptr_t uHandle, int (*pfnCall)(A...), A... tArguments)
{
    g_uHandle = 0;
    EXPECT_EQ(pfnCall(tArguments...), 0);
    EXPECT_EQ(g_uHandle, uHandle);
}

struct tagOpened
{
    int nID = -1;
    std::uintptr_t uHandle = 0;
};
tagOpened Login(eProtocolType eType, int nAddress)
{
    tagOpened tLogin;
    tagUserLoginPara tPara{};
    std::to_chars(tPara.szAddress, std::end(tPara.szAddress), nAddress);
    EXPECT_EQ(ClientAdapter_UserLogin(&tLogin.nID, eType, &tPara), 0);
    tLogin.uHandle = g_uHandle;
    return tLogin;
}
tagOpened Connect(int nLogin)
{
    tagOpened tStream;
    tagRealStreamPara tPara{};
    tPara.dwStreamKind = eStreamMain;
    EXPECT_EQ(ClientAdapter_RealStreamConnect(&tStream.nID, nLogin, &tPara), 0);
    tStream.uHandle = g_uHandle;
    return tStream;
}

// Each opens connections of its own, whose first subscriptions make their records, and registers for those that all
// share, while frames and events arrive.
TEST(Races, EverythingButStartAndStop)
{
    const CCapture tCapture;
    Journal().Observe(&Plugin);
    ClientAdapter_Start(16);
    g_SetUserCallBack.clear();
    const tagOpened tShared = Login(eProtocolVTQ, 0);
    const tagOpened tSharedStream = Connect(tShared.nID);
    ClientAdapter_StreamMediaCB(tSharedStream.nID, g_apfnFrame[0], 0);
    const auto pfnFrame = reinterpret_cast<StreamMediaCallback>(g_pfnCallback);
    ClientAdapter_SubscribeEvent(tShared.nID, 1, g_apfnEvent[0], 0);
    const auto pfnEvent = reinterpret_cast<DeviceEventCallback>(g_pfnCallback);
    const auto fnRun = [&](int nThread)
    {
        for (int i = 0; i < 1000; ++i)
        {
            const eProtocolType eType = g_atProtocols[1 + i % 3].eType;
            const bool bRtsp = eType == eProtocolRTSP; // whose logins the plug-in doesn't know
            const int nAddress = 10000 * nThread + i;
            const auto dwUser = static_cast<unsigned long>(i % 2);
            const tagOpened tLogin = Login(eType, nAddress);
            const tagOpened tStream = Connect(tLogin.nID);
            EXPECT_TRUE(!bRtsp || g_nAddress == nAddress);
            Use(tSharedStream.uHandle, &ClientAdapter_StreamMediaCB, tSharedStream.nID, g_apfnFrame[i % 2], dwUser);
            EXPECT_EQ(pfnFrame(nullptr, nullptr, static_cast<unsigned long>(tSharedStream.nID)), 0);
            Use(bRtsp ? tStream.uHandle : tLogin.uHandle, &ClientAdapter_SubscribeEvent, tLogin.nID, 1UL,
                g_apfnEvent[i % 2], dwUser);
            Use(tShared.uHandle, &ClientAdapter_SubscribeEvent, tShared.nID, 1UL, g_apfnEvent[i % 2], dwUser);
            for (const int nLogin : {tShared.nID, tLogin.nID})
            {
                EXPECT_EQ(pfnEvent(nullptr, 1, 2, 3, 4, static_cast<unsigned long>(nLogin)), 0);
            }
            Use(tStream.uHandle, &ClientAdapter_RealStreamDisconnect, tStream.nID);
            Use(bRtsp ? 0 : tLogin.uHandle, &ClientAdapter_UserLogout, tLogin.nID);
        }
    };
    std::vector<std::thread> atThreads;
    for (int nThread = 0; nThread < 3; ++nThread)
    {
        atThreads.emplace_back(fnRun, nThread);
    }
    for (std::thread& tThread : atThreads)
    {
        tThread.join();
    }
    EXPECT_EQ(g_nMixed, 0);
    ClientAdapter_RealStreamDisconnect(tSharedStream.nID);
    ClientAdapter_UserLogout(tShared.nID);
    ClientAdapter_Stop();
    Journal().Observe(nullptr);
}
} // namespace
