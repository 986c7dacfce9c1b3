// The trampolines: what reaches the application, and what happens when nobody is registered.

#include "tests/core/Support.h"


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
    return 99; // nobody looks at it
}
template <class... A>
auto HeardAs(int (*)(A...))
{
    return &Heard<A...>;
}

class Callbacks : public CSession
{
protected:
    template <class Function, class... A>
    void Check(char const* szTrampoline, int nLine, int (*pfnRegister)(int, Function, unsigned long), A... tArguments)
    {
        SCOPED_TRACE(szTrampoline);
        EXPECT_EQ(pfnRegister(m_nMedia, HeardAs(Function{}), 77), 0);
        const auto pfnTrampoline = Trampoline<Function>();
        const auto nID = static_cast<unsigned long>(m_nMedia);
        CJournal::Deliver([&] { EXPECT_EQ(pfnTrampoline(&g_auHeard, tArguments..., nID), 0); });
        EXPECT_EQ(g_auHeard, (std::vector<std::uintptr_t>{nID, Number(tArguments)..., 77UL}));

        EXPECT_EQ(m_tCapture.Text(), "");
        EXPECT_EQ(pfnRegister(m_nMedia, nullptr, 78), 0);
        for (const unsigned long dwUnusable : {nID, 1000UL, 4294967295UL, (nID + 500) % 1000})
        {
            EXPECT_EQ(pfnTrampoline(nullptr, tArguments..., dwUnusable), 1);
            EXPECT_EQ(m_tCapture.Text(), Line("ClientAdapter", szTrampoline, nLine));
        }
    }
};

TEST_F(Callbacks, MediaTrampolines)
{
    const tagStreamMediaFrame tFrame{};
    const tagStreamVoiceFrame tVoice{};
    tagBuffer tBuffer{nullptr, 1234};
    Check("SetStreamMediaCB", 3573, &ClientAdapter_StreamMediaCB, &tFrame);
    Check("SetStreamMediaCB", 3573, &ClientAdapter_HistoryStreamCB, &tFrame);
    Check("SetStreamMediaRawCB", 3590, &ClientAdapter_StreamMediaRawCB, &tFrame);
    Check("SetStreamVoiceCB", 3600, &ClientAdapter_VoiceStreamCB, static_cast<eVoiceStreamSource>(3), &tVoice);
    Check("SetTransparentChannelCB", 3610, &ClientAdapter_TransparentChannelCB, &tBuffer);
    Check("SetFileUploadCB", 3620, &ClientAdapter_FileUploadCB, tagFileUploadState{1, 2, 333, 4});
    Check("SetFileDownloadCB", 3630, &ClientAdapter_FileDownloadCB, tBuffer);
}

extern "C" int PassByValue(FileUploadCallback pfnUpload, FileDownloadCallback pfnDownload);

TEST_F(Callbacks, RecordsByValueCrossFromC)
{
    EXPECT_EQ(PassByValue(HeardAs(FileUploadCallback{}), HeardAs(FileDownloadCallback{})), 2 * 99);
    EXPECT_EQ(g_auHeard, (std::vector<std::uintptr_t>{0, 5, 7}));
}

TEST_F(Callbacks, KindsStandBesideEachOther)
{
    ClientAdapter_StreamMediaCB(m_nMedia, HeardAs(StreamMediaCallback{}), 1);
    ClientAdapter_StreamMediaRawCB(m_nMedia, nullptr, 2);
    EXPECT_EQ(g_SetCallBack[m_nMedia].m_dwStreamMedia, 1U);
    EXPECT_EQ(g_SetCallBack[m_nMedia].m_hStreamMedia, m_nMedia);
    EXPECT_EQ(g_SetCallBack[m_nMedia].m_dwStreamMediaRaw, 2U);
    Journal().Answer("VTQClient_StreamMediaCB", 6);
    EXPECT_EQ(ClientAdapter_StreamMediaCB(m_nMedia, nullptr, 3), 6) << "refused: the record keeps what was stored";
    EXPECT_EQ(g_SetCallBack[m_nMedia].m_dwStreamMedia, 3U);
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
    const std::string strLine = Line("ClientAdapter", "SetUserEventCB", 3556);
    struct
    {
        unsigned long dwUser;
        std::string strText;
    } const atCases[] = {
        {nID, "0-0-1 dwUserData " + std::to_string(nID) + ", cbUserEvent 0x(nil), m_hUserEvent " + std::to_string(nID)},
        {1000, "0-1-1 dwUserData 1000, cbUserEvent 0x(nil), m_hUserEvent 0"},
        {1001, "1-1-1 dwUserData 1001, cbUserEvent 0x(nil), m_hUserEvent 0"},
        {4294967295, "1-1-1 dwUserData 4294967295, cbUserEvent 0x(nil), m_hUserEvent 0"},
    };
    for (auto const& tCase : atCases)
    {
        EXPECT_EQ(pfnTrampoline(nullptr, 1, 2, 3, 4, tCase.dwUser), 1);
        EXPECT_EQ(m_tCapture.Text(), strLine + tCase.strText + " fail\n");
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

// Everything but start and stop may be called from inside every callback; here the stream is closed and a new one
// opened.
int g_nLoginInside = -1;
int g_nOpenedInside = -1;
int CloseAndOpen(void* hStream, tagStreamMediaFrame const*, unsigned long)
{
    const int nOld = static_cast<int>(reinterpret_cast<std::intptr_t>(hStream));
    tagRealStreamPara tStream{};
    EXPECT_EQ(ClientAdapter_StreamMediaCB(nOld, nullptr, 0), 0);
    EXPECT_EQ(ClientAdapter_RealStreamDisconnect(nOld), 0);
    EXPECT_EQ(ClientAdapter_RealStreamConnect(&g_nOpenedInside, g_nLoginInside, &tStream), 0);
    EXPECT_EQ(ClientAdapter_StreamMediaCB(g_nOpenedInside, &CloseAndOpen, 0), 0);
    return 0;
}
int ResubscribeInside(void* hLogin, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long dwUser)
{
    const int nLogin = static_cast<int>(reinterpret_cast<std::intptr_t>(hLogin));
    EXPECT_EQ(ClientAdapter_SubscribeEvent(nLogin, 1, &ResubscribeInside, dwUser + 1), 0);
    return 0;
}

TEST_F(Callbacks, EverythingMayBeCalledFromInside)
{
    g_nLoginInside = m_nLogin;
    ClientAdapter_StreamMediaCB(m_nMedia, &CloseAndOpen, 0);
    const auto pfnFrame = Trampoline<StreamMediaCallback>();
    ClientAdapter_SubscribeEvent(m_nLogin, 1, &ResubscribeInside, 1);
    const auto pfnEvent = Trampoline<DeviceEventCallback>();
    CJournal::Deliver(
        [&]
        {
            EXPECT_EQ(pfnFrame(nullptr, nullptr, static_cast<unsigned long>(m_nMedia)), 0);
            EXPECT_EQ(pfnEvent(nullptr, 0, 0, 0, 0, static_cast<unsigned long>(m_nLogin)), 0);
        });
    EXPECT_EQ(g_SetUserCallBack.at(m_nLogin).m_dwUserEvent, 2U);
    EXPECT_NE(g_nOpenedInside, m_nMedia);
    m_nMedia = g_nOpenedInside;
}
} // namespace
