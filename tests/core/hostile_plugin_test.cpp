// Plug-ins that don't keep to their side: handles and results of any value, callbacks at any time, with any ID.

#include "tests/core/Support.h"

#include <atomic>
#include <climits>
#include <functional>
#include <thread>

namespace
{
constexpr std::uintptr_t g_auHandles[] = {0,          1, 3, 999, 1000, 0x80000000, UINTPTR_MAX / 2, UINTPTR_MAX / 2 + 1,
                                          UINTPTR_MAX};
constexpr int g_anResults[] = {0, 1, 3, -1, INT_MIN, INT_MAX};

std::atomic<int> g_nDelivered;
template <class... A>
int Delivered(A...)
{
    ++g_nDelivered;
    return INT_MIN; // nobody looks at it
}
template <class... A>
auto DeliveredAs(int (*)(A...))
{
    return &Delivered<A...>;
}

// A way to open something, with what is then done with it.
struct tagOpening
{
    char const* szOpen; // entry points
    char const* szUse;
    char const* szClose;
    std::function<int(int*)> fnOpen;
    int (*fnUse)(int);
    int (*fnClose)(int);
    bool bOpensWhenFailed;
    bool bClosesWhenFailed;
    int nUnknown; // the result of an ID that isn't one
};

class HostilePlugin : public CSession
{
protected:
    // The plug-in hands out uHandle and answers nResult.
    static void Give(std::string const& strEntry, std::uintptr_t uHandle, int nResult)
    {
        Journal().Answer(strEntry,
                         [=](tagCalled const& tCall)
                         {
                             *reinterpret_cast<std::uintptr_t*>(tCall.auArguments.at(0)) = uHandle;
                             return nResult;
                         });
    }

    static std::uintptr_t HandleOf(char const* szEntry)
    {
        const auto atCalls = Journal().Take();
        EXPECT_EQ(atCalls.size(), 1U) << szEntry;
        EXPECT_EQ(atCalls.at(0).strEntry, szEntry);
        return atCalls.at(0).auArguments.at(0);
    }

    // What the plug-in calls back, one for each kind: each takes the user data it comes with, and tells the result.
    using Trampolines = std::vector<std::function<int(unsigned long)>>;
    template <class Function, class... A>
    auto Registered(int (*pfnRegister)(int, Function, unsigned long), A... tArguments)
    {
        EXPECT_EQ(pfnRegister(m_nMedia, DeliveredAs(Function{}), 7), 0);
        return [pfn = Trampoline<Function>(), tArguments...](unsigned long dwUser)
        { return pfn(nullptr, tArguments..., dwUser); };
    }
    Trampolines RegisterAll()
    {
        return {Registered(&ClientAdapter_StreamMediaCB, nullptr),
                Registered(&ClientAdapter_StreamMediaRawCB, nullptr),
                Registered(&ClientAdapter_HistoryStreamCB, nullptr),
                Registered(&ClientAdapter_VoiceStreamCB, static_cast<eVoiceStreamSource>(INT_MAX), nullptr),
                Registered(&ClientAdapter_TransparentChannelCB, nullptr),
                Registered(&ClientAdapter_FileUploadCB, tagFileUploadState{}),
                Registered(&ClientAdapter_FileDownloadCB, tagBuffer{})};
    }
    std::function<int(unsigned long)> Subscribe()
    {
        EXPECT_EQ(ClientAdapter_SubscribeEvent(m_nLogin, 1, DeliveredAs(DeviceEventCallback{}), 7), 0);
        return [pfn = Trampoline<DeviceEventCallback>()](unsigned long dwUser)
        { return pfn(nullptr, ULONG_MAX, ULONG_MAX, ULONG_MAX, ULONG_MAX, dwUser); };
    }
};

TEST_F(HostilePlugin, AnyHandleGoesBackAsItCameAndAnyResultComesBack)
{
    const auto fnControl = [](int nID) { return ClientAdapter_StreamMediaControl(nID, eTaskPlay); };
    const tagOpening atOpenings[] = {
        {"VTQClient_UserLogin", "VTQClient_UnSubscribeEvent", "VTQClient_UserLogout",
         [&](int* pnID) { return ClientAdapter_UserLogin(pnID, eProtocolVTQ, &m_tLogin); },
         [](int nID) { return ClientAdapter_UnSubscribeEvent(nID, 5); }, &ClientAdapter_UserLogout, false, false, 3},
        {"VTQClient_RealStreamConnect", "VTQClient_StreamMediaControl", "VTQClient_RealStreamDisconnect",
         [&](int* pnID) { return ClientAdapter_RealStreamConnect(pnID, m_nLogin, &m_tStream); }, fnControl,
         &ClientAdapter_RealStreamDisconnect, false, true, -1},
        {"VTQClient_HistoryStreamCreate", "VTQClient_StreamMediaControl", "VTQClient_HistoryStreamDestroy",
         [&](int* pnID) { return ClientAdapter_HistoryStreamCreate(pnID, m_nLogin, nullptr, 1); }, fnControl,
         &ClientAdapter_HistoryStreamDestroy, true, true, -1},
        {"VTQClient_VoiceStreamConnect", "VTQClient_StreamMediaControl", "VTQClient_VoiceStreamDisconnect",
         [&](int* pnID) { return ClientAdapter_VoiceStreamConnect(pnID, m_nMedia, nullptr); }, fnControl,
         &ClientAdapter_VoiceStreamDisconnect, true, true, -1},
    };
    int nTried = 0;
    for (tagOpening const& tOpening : atOpenings)
    {
        SCOPED_TRACE(tOpening.szOpen);
        for (const std::uintptr_t uHandle : g_auHandles)
        {
            for (const int nResult : g_anResults)
            {
                ++nTried;
                Give(tOpening.szOpen, uHandle, nResult);
                int nID = -1;
                ASSERT_EQ(tOpening.fnOpen(&nID), nResult);
                Journal().Take();
                if (nResult != 0 && !tOpening.bOpensWhenFailed)
                {
                    EXPECT_EQ(nID, -1);
                    continue;
                }
                ASSERT_GE(nID, 0);
                Journal().Answer(tOpening.szUse, nResult);
                EXPECT_EQ(tOpening.fnUse(nID), nResult);
                EXPECT_EQ(HandleOf(tOpening.szUse), uHandle);
                Journal().Answer(tOpening.szClose, -1);
                EXPECT_EQ(tOpening.fnClose(nID), -1);
                EXPECT_EQ(HandleOf(tOpening.szClose), uHandle);
                if (!tOpening.bClosesWhenFailed)
                {
                    Journal().Answer(tOpening.szClose, 0);
                    EXPECT_EQ(tOpening.fnClose(nID), 0);
                    EXPECT_EQ(HandleOf(tOpening.szClose), uHandle);
                }
                EXPECT_EQ(tOpening.fnUse(nID), tOpening.nUnknown);
                EXPECT_TRUE(Journal().Take().empty());
            }
        }
    }
    std::fprintf(stderr, "tried: %d handles and results of openings\n", nTried);
}

TEST_F(HostilePlugin, OneHandleForSeveral)
{
    struct
    {
        eProtocolType eType;
        char const* szPrefix;
        int anLogin[2] = {-1, -1};
        int nStream = -1;
    } atDevices[] = {{eProtocolVTQ, "VTQClient_"}, {eProtocolOnvif, "OnvifClient_"}};
    for (auto& tDevice : atDevices)
    {
        Give(std::string(tDevice.szPrefix) + "UserLogin", 0x77, 0);
        Give(std::string(tDevice.szPrefix) + "RealStreamConnect", 0x77, 0);
        for (int& nLogin : tDevice.anLogin)
        {
            EXPECT_EQ(ClientAdapter_UserLogin(&nLogin, tDevice.eType, &m_tLogin), 0);
        }
        EXPECT_EQ(ClientAdapter_RealStreamConnect(&tDevice.nStream, tDevice.anLogin[1], &m_tStream), 0);
        EXPECT_NE(tDevice.anLogin[0], tDevice.anLogin[1]);
        EXPECT_EQ(ClientAdapter_UserLogout(tDevice.anLogin[0]), 0);
    }
    for (auto& tDevice : atDevices)
    {
        Journal().Take();
        EXPECT_EQ(ClientAdapter_UnSubscribeEvent(tDevice.anLogin[1], 1), 0);
        EXPECT_EQ(HandleOf((std::string(tDevice.szPrefix) + "UnSubscribeEvent").c_str()), 0x77U);
        EXPECT_EQ(ClientAdapter_RealStreamDisconnect(tDevice.nStream), 0);
        EXPECT_EQ(HandleOf((std::string(tDevice.szPrefix) + "RealStreamDisconnect").c_str()), 0x77U);
        EXPECT_EQ(ClientAdapter_UserLogout(tDevice.anLogin[1]), 0);
    }
}

// The binding's login handles are numbers of slots; the plug-in's stream handles may look the same.
TEST_F(HostilePlugin, RtspStreamHandlesThatLookLikeLogins)
{
    int nLogin = -1;
    ASSERT_EQ(ClientAdapter_UserLogin(&nLogin, eProtocolRTSP, &m_tLogin), 0);
    m_tStream.dwStreamKind = eStreamMain;
    for (const std::uintptr_t uHandle : g_auHandles)
    {
        Give("RTSPClient_Create", uHandle, 0);
        int nStream = -1;
        ASSERT_EQ(ClientAdapter_RealStreamConnect(&nStream, nLogin, &m_tStream), 0);
        Journal().Take();
        EXPECT_EQ(ClientAdapter_StreamMediaControl(nStream, eTaskPlay), 0);
        EXPECT_EQ(HandleOf("RTSPClient_Control"), uHandle);
        EXPECT_EQ(ClientAdapter_RealStreamDisconnect(nStream), 0);
        EXPECT_EQ(HandleOf("RTSPClient_Destroy"), uHandle);
    }
    EXPECT_EQ(ClientAdapter_UserLogout(nLogin), 0);
    EXPECT_EQ(ClientAdapter_RealStreamConnect(&nLogin, nLogin, &m_tStream), 3);
}

// Inside its own closing, the plug-in has the application close once more.
TEST_F(HostilePlugin, ClosedAgainFromInsideItsClosing)
{
    int nCalls = 0;
    Journal().Answer("VTQClient_RealStreamDisconnect", [&](tagCalled const&)
                     { return ++nCalls == 1 ? ClientAdapter_RealStreamDisconnect(m_nMedia) : 0; });
    EXPECT_EQ(ClientAdapter_RealStreamDisconnect(m_nMedia), 0);
    EXPECT_EQ(nCalls, 2);
    EXPECT_EQ(ClientAdapter_RealStreamDisconnect(m_nMedia), -1);
    nCalls = 0;
    Journal().Answer("VTQClient_UserLogout",
                     [&](tagCalled const&) { return ++nCalls == 1 ? ClientAdapter_UserLogout(m_nLogin) : 0; });
    EXPECT_EQ(ClientAdapter_UserLogout(m_nLogin), 0);
    EXPECT_EQ(nCalls, 2);
    EXPECT_EQ(ClientAdapter_UserLogout(m_nLogin), 3);
}

// Many threads at once, with user data that is no ID.
TEST_F(HostilePlugin, CallbacksWithUserDataThatIsNoID)
{
    Trampolines afnTrampolines = RegisterAll();
    afnTrampolines.push_back(Subscribe());
    const auto dwMedia = static_cast<unsigned long>(m_nMedia);
    const auto dwLogin = static_cast<unsigned long>(m_nLogin);
    std::vector<unsigned long> adwNoIDs{1000, 1001, INT_MAX, INT_MAX + 1UL, UINT_MAX, ULONG_MAX};
    for (unsigned nBit = 10; nBit < CHAR_BIT * sizeof(unsigned long); ++nBit)
    {
        adwNoIDs.push_back((1UL << nBit) + dwMedia);
        adwNoIDs.push_back((1UL << nBit) + dwLogin);
    }
    g_nDelivered = 0;
    std::atomic<int> nRefused = 0;
    std::vector<std::thread> atThreads;
    for (int i = 0; i < 4; ++i)
    {
        atThreads.emplace_back(
            [&]
            {
                for (auto const& fnTrampoline : afnTrampolines)
                {
                    for (const unsigned long dwNoID : adwNoIDs)
                    {
                        nRefused += fnTrampoline(dwNoID) == 1;
                    }
                }
            });
    }
    for (std::thread& tThread : atThreads)
    {
        tThread.join();
    }
    EXPECT_EQ(nRefused, static_cast<int>(4 * afnTrampolines.size() * adwNoIDs.size()));
    EXPECT_EQ(g_nDelivered, 0);
    std::fprintf(stderr, "tried: %d callbacks without an ID, all refused\n", nRefused.load());
}

// Records outlive their connections: what was registered is what is called, until something else is.
TEST_F(HostilePlugin, CallbacksAfterClosingAndStopping)
{
    Trampolines const afnTrampolines = RegisterAll();
    const auto fnEvent = Subscribe();
    const int nMedia = std::exchange(m_nMedia, -1);
    const int nLogin = std::exchange(m_nLogin, -1);
    const auto fnAllDeliver = [&]
    {
        g_nDelivered = 0;
        for (auto const& fnTrampoline : afnTrampolines)
        {
            CJournal::Deliver([&] { EXPECT_EQ(fnTrampoline(static_cast<unsigned long>(nMedia)), 0); });
        }
        CJournal::Deliver([&] { EXPECT_EQ(fnEvent(static_cast<unsigned long>(nLogin)), 0); });
        EXPECT_EQ(g_nDelivered, static_cast<int>(afnTrampolines.size() + 1));
        return 0;
    };
    // From inside the closings too, on another thread.
    Journal().Answer("VTQClient_RealStreamDisconnect", [&](tagCalled const&) { return fnAllDeliver(); });
    Journal().Answer("VTQClient_UserLogout", [&](tagCalled const&) { return fnAllDeliver(); });
    Journal().Answer("VTQClient_Stop", [&](tagCalled const&) { return fnAllDeliver(); });
    EXPECT_EQ(ClientAdapter_RealStreamDisconnect(nMedia), 0);
    fnAllDeliver();
    EXPECT_EQ(ClientAdapter_UserLogout(nLogin), 0);
    fnAllDeliver();
    ClientAdapter_Stop();
    fnAllDeliver();
    Journal().Reset();
    ClientAdapter_Start(16); // for the session's end
}

// Threads that deliver before, during and after a stop, and call back in once it is done.
TEST_F(HostilePlugin, CallbacksFromSeveralThreadsDuringAStop)
{
    constexpr int nRounds = 40;
    int nDelivered = 0;
    for (int nRound = 0; nRound < nRounds; ++nRound)
    {
        Trampolines const afnTrampolines = RegisterAll();
        const auto fnEvent = Subscribe();
        std::atomic<bool> bStopped = false;
        std::atomic<int> nLate = 0;
        std::atomic<int> nWrong = 0;
        g_nDelivered = 0;
        const auto fnDeliver = [&]
        {
            while (nLate < 100)
            {
                for (auto const& fnTrampoline : afnTrampolines)
                {
                    nWrong += fnTrampoline(static_cast<unsigned long>(m_nMedia)) != 0;
                }
                nWrong += fnEvent(static_cast<unsigned long>(m_nLogin)) != 0;
                if (bStopped)
                {
                    nWrong += ClientAdapter_StreamMediaControl(m_nMedia, eTaskPlay) != 4; // no protocol
                    ++nLate;
                }
            }
        };
        std::vector<std::thread> atThreads;
        for (int i = 0; i < 4; ++i)
        {
            atThreads.emplace_back(fnDeliver);
        }
        while (g_nDelivered < 100 && nWrong == 0)
        {
            std::this_thread::yield();
        }
        ClientAdapter_Stop();
        bStopped = true;
        for (std::thread& tThread : atThreads)
        {
            tThread.join();
        }
        ASSERT_EQ(nWrong, 0);
        nDelivered += g_nDelivered;
        ClientAdapter_Start(16);
        m_tCapture.Text();
    }
    std::fprintf(stderr, "tried: %d stops under %d callbacks of four threads\n", nRounds, nDelivered);
}

// A plug-in that calls in as its own last act finds its protocol gone, not the binding that is being destroyed.
TEST_F(HostilePlugin, CallsFromItsOwnEnd)
{
    const std::string strPath = std::string(TESSARO_BROKEN) + "/libbroken_calls.so";
    ASSERT_EQ(g_cProtocolSet.InsertProtocol(eProtocolPrivate, strPath.c_str()), 0);
    m_tCapture.Text();
    EXPECT_EQ(g_cProtocolSet.RemoveProtocol(eProtocolPrivate), 0);
    EXPECT_EQ(m_tCapture.Text(), Line("CProtocolSet", "SetMiscPara", 310));
}
} // namespace
