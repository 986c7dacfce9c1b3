// The trampolines: what reaches the application, when, and what happens when nobody is registered.

#include "tests/core/Support.h"

#include <climits>
#include <functional>

namespace
{
std::vector<std::uintptr_t> g_auHeard; // what the application's callback was called with

// A callback of any kind: records pass by value are told by a field of theirs.
std::uintptr_t Number(tagFileUploadState tState)
{
    return static_cast<std::uintptr_t>(tState.ullSent);
}
std::uintptr_t Number(tagBuffer tBuffer)
{
    return tBuffer.dwLength;
}
template <class T>
std::uintptr_t Number(T tArgument)
{
    return (std::uintptr_t)tArgument;
}
template <class... A>
int Heard(A... tArguments)
{
    g_auHeard = {Number(tArguments)...};
    return INT_MIN; // nobody looks at it
}
template <class... A>
auto HeardAs(int (*)(A...))
{
    return &Heard<A...>;
}

class Callbacks : public CSession
{
protected:
    // Registers; what comes back checks what the trampoline does then, and when nobody is registered any more.
    template <class Function, class... A>
    std::function<void()> Register(char const* szTrampoline, int nLine,
                                   int (*pfnRegister)(int, Function, unsigned long), A... tArguments)
    {
        const auto dwUser = static_cast<unsigned long>(nLine);
        EXPECT_EQ(pfnRegister(m_nMedia, HeardAs(Function{}), dwUser), 0);
        return [=, this, pfnTrampoline = Trampoline<Function>()]
        {
            SCOPED_TRACE(szTrampoline);
            const auto nID = static_cast<unsigned long>(m_nMedia);
            CJournal::Deliver([&] { EXPECT_EQ(pfnTrampoline(&g_auHeard, tArguments..., nID), 0); });
            EXPECT_EQ(g_auHeard, (std::vector<std::uintptr_t>{nID, Number(tArguments)..., dwUser}));
            EXPECT_EQ(m_tCapture.Text(), "");
            EXPECT_EQ(pfnRegister(m_nMedia, nullptr, 78), 0);
            for (const unsigned long dwNobody :
                 {nID, 1000UL, 4294967295UL, ULONG_MAX - UINT_MAX + nID, (nID + 500) % 1000})
            {
                EXPECT_EQ(pfnTrampoline(nullptr, tArguments..., dwNobody), 1);
                EXPECT_EQ(m_tCapture.Text(), Line("ClientAdapter", szTrampoline, nLine));
            }
        };
    }
};

TEST_F(Callbacks, MediaTrampolines)
{
    const tagStreamMediaFrame tFrame{};
    const tagStreamVoiceFrame tVoice{};
    tagBuffer tBuffer{nullptr, 1234};
    const std::function<void()> afnChecks[] = {
        Register("SetStreamMediaCB", 3573, &ClientAdapter_StreamMediaCB, &tFrame),
        Register("SetStreamMediaRawCB", 3590, &ClientAdapter_StreamMediaRawCB, &tFrame),
        Register("SetStreamVoiceCB", 3600, &ClientAdapter_VoiceStreamCB, static_cast<eVoiceStreamSource>(3), &tVoice),
        Register("SetTransparentChannelCB", 3610, &ClientAdapter_TransparentChannelCB, &tBuffer),
        Register("SetFileUploadCB", 3620, &ClientAdapter_FileUploadCB, tagFileUploadState{1, 2, 333, 4}),
        Register("SetFileDownloadCB", 3630, &ClientAdapter_FileDownloadCB, tBuffer)};
    for (auto const& fnCheck : afnChecks) // each kind beside all others
    {
        fnCheck();
    }
    Register("SetStreamMediaCB", 3573, &ClientAdapter_HistoryStreamCB, &tFrame)();
}

TEST_F(Callbacks, RefusedRegistrationsAreKept)
{
    Journal().Answer("VTQClient_StreamMediaCB", 6);
    EXPECT_EQ(ClientAdapter_StreamMediaCB(m_nMedia, HeardAs(StreamMediaCallback{}), 7), 6);
    EXPECT_EQ(g_SetCallBack[m_nMedia].m_dwStreamMedia, 7U);
    EXPECT_EQ(g_SetCallBack[m_nMedia].m_hStreamMedia, m_nMedia);
    EXPECT_EQ(ClientAdapter_StreamMediaCB(999, nullptr, 4), -1);
    EXPECT_FALSE(g_SetCallBack[999].m_bUsed);
}

TEST_F(Callbacks, Events)
{
    EXPECT_EQ(ClientAdapter_SubscribeEvent(m_nLogin, 5, nullptr, 1), 0);
    const auto pfnTrampoline = Trampoline<DeviceEventCallback>();
    ClientAdapter_SubscribeEvent(m_nLogin, 5, HeardAs(DeviceEventCallback{}), 8);
    EXPECT_EQ(ClientAdapter_UnSubscribeEvent(m_nLogin, 5), 0);
    const auto nID = static_cast<unsigned long>(m_nLogin);
    CJournal::Deliver([&] { EXPECT_EQ(pfnTrampoline(nullptr, 11, 12, 13, 14, nID), 0); });
    EXPECT_EQ(g_auHeard, (std::vector<std::uintptr_t>{nID, 11, 12, 13, 14, 8}));

    ClientAdapter_SubscribeEvent(m_nLogin, 5, nullptr, 9);
    m_tCapture.Text();
    const auto fnRefused = [&](unsigned long dwUser, char const* szTests, unsigned long dwFound)
    {
        EXPECT_EQ(pfnTrampoline(nullptr, 1, 2, 3, 4, dwUser), 1);
        EXPECT_EQ(m_tCapture.Text(), Line("ClientAdapter", "SetUserEventCB", 3556) + szTests + " dwUserData " +
                                         std::to_string(dwUser) + ", cbUserEvent 0x(nil), m_hUserEvent " +
                                         std::to_string(dwFound) + " fail\n");
    };
    fnRefused(nID, "0-0-1", nID);
    fnRefused(1000, "0-1-1", 0);
    fnRefused(1001, "1-1-1", 0);
    fnRefused(4294967295, "1-1-1", 0);
    if (const unsigned long dwHigh = ULONG_MAX - UINT_MAX; dwHigh != 0)
    {
        fnRefused(dwHigh + nID, "1-1-1", 0);
    }
}

TEST_F(Callbacks, ProbeStartPrintsItsThreeLines)
{
    ClientAdapter_Stop();
    m_tCapture.Text();
    const std::string strFailed = Line("CProtocolSet", "DeviceProbeStart", 888);
    EXPECT_EQ(ClientAdapter_DeviceProbeStart(nullptr, nullptr), 0);
    EXPECT_EQ(m_tCapture.Text(), "[ClientAdapter.cpp][2377]\n" + strFailed + "[ClientAdapter.cpp][2379]\n" + strFailed +
                                     "[ClientAdapter.cpp][2381]\n");
}

// Everything but start and stop may be called from inside every callback, closing the very stream included.
int g_nOpenedInside = -1;
int OnFrame(void* hStream, tagStreamMediaFrame const*, unsigned long dwLogin)
{
    const int nOld = static_cast<int>(reinterpret_cast<std::intptr_t>(hStream));
    tagRealStreamPara tStream{};
    EXPECT_EQ(ClientAdapter_StreamMediaCB(nOld, nullptr, 0) + ClientAdapter_RealStreamDisconnect(nOld), 0);
    EXPECT_EQ(ClientAdapter_RealStreamConnect(&g_nOpenedInside, static_cast<int>(dwLogin), &tStream), 0);
    EXPECT_EQ(ClientAdapter_StreamMediaCB(g_nOpenedInside, &OnFrame, dwLogin), 0);
    return 0;
}
int OnEvent(void* hLogin, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long dwUser)
{
    const int nLogin = static_cast<int>(reinterpret_cast<std::intptr_t>(hLogin));
    EXPECT_EQ(ClientAdapter_SubscribeEvent(nLogin, 1, &OnEvent, dwUser + 1), 0);
    return 0;
}

TEST_F(Callbacks, EverythingMayBeCalledFromInside)
{
    const auto dwLogin = static_cast<unsigned long>(m_nLogin);
    ClientAdapter_StreamMediaCB(m_nMedia, &OnFrame, dwLogin);
    const auto pfnFrame = Trampoline<StreamMediaCallback>();
    ClientAdapter_SubscribeEvent(m_nLogin, 1, &OnEvent, 1);
    const auto pfnEvent = Trampoline<DeviceEventCallback>();
    CJournal::Deliver([&] { EXPECT_EQ(pfnFrame(nullptr, nullptr, static_cast<unsigned long>(m_nMedia)), 0); });
    CJournal::Deliver([&] { EXPECT_EQ(pfnEvent(nullptr, 0, 0, 0, 0, dwLogin), 0); });
    EXPECT_EQ(g_SetUserCallBack.at(m_nLogin).m_dwUserEvent, 2U);
    EXPECT_NE(std::exchange(m_nMedia, g_nOpenedInside), g_nOpenedInside);
}

// Records outlive their connections, and plug-ins call when they like: inside a closing, on a thread of their own;
// after it; during and after a stop. Inside its closing, the application may also close once more.
TEST_F(Callbacks, DuringAndAfterClosingAndStopping)
{
    ClientAdapter_StreamMediaCB(m_nMedia, HeardAs(StreamMediaCallback{}), 7);
    const auto pfnFrame = Trampoline<StreamMediaCallback>();
    ClientAdapter_SubscribeEvent(m_nLogin, 1, HeardAs(DeviceEventCallback{}), 7);
    const auto pfnEvent = Trampoline<DeviceEventCallback>();
    int nDelivered = 0;
    const auto fnDeliver = [&]
    {
        CJournal::Deliver([&] { EXPECT_EQ(pfnFrame(nullptr, nullptr, static_cast<unsigned long>(m_nMedia)), 0); });
        CJournal::Deliver([&] { EXPECT_EQ(pfnEvent(nullptr, 0, 0, 0, 0, static_cast<unsigned long>(m_nLogin)), 0); });
        return nDelivered++;
    };
    const auto fnCloses = [&](char const* szEntry, int (*pfnClose)(int), int nID, int nUnknown)
    {
        int nCalls = 0;
        Journal().Answer(szEntry, [&](tagCalled const&) { return fnDeliver(), ++nCalls == 1 ? pfnClose(nID) : 0; });
        EXPECT_EQ(pfnClose(nID), 0);
        EXPECT_EQ(nCalls, 2);
        EXPECT_EQ(pfnClose(nID), nUnknown);
        fnDeliver();
    };
    fnCloses("VTQClient_RealStreamDisconnect", &ClientAdapter_RealStreamDisconnect, m_nMedia, -1);
    fnCloses("VTQClient_UserLogout", &ClientAdapter_UserLogout, m_nLogin, 3);
    Journal().Answer("VTQClient_Stop", [&](tagCalled const&) { return fnDeliver(); });
    ClientAdapter_Stop();
    fnDeliver();
    EXPECT_EQ(nDelivered, 8);
    ClientAdapter_Start(16); // for the session's end
}
} // namespace
