// What no application sees: built from the library's objects, not against its exports.

#include "adapter/LookUp.h"
#include "adapter/Registrations.h"
#include "bindings/CProtocolOnvif.h"
#include "bindings/CProtocolPrivate.h"
#include "bindings/CProtocolRTSP.h"
#include "bindings/CProtocolVTQ.h"
#include "system/OutputMessage.h"
#include "tests/core/Support.h"

using Adapter_System::CModule;

namespace
{
TEST(OutputMessage, CutsAndDoesNotInterpretTwice)
{
    CCapture tCapture;
    for (const std::size_t nLength : {10U, 1023U, 1024U, 5000U})
    {
        EXPECT_EQ(CAdapter_OutputMessage::OutputMessage("%s", std::string(nLength, 'x').c_str()), 0);
        EXPECT_EQ(tCapture.Text(), std::string(std::min<std::size_t>(nLength, 1023), 'x'));
    }
    CAdapter_OutputMessage::ControlMessage("%s", "100%d%n");
    EXPECT_EQ(tCapture.Text(), "100%d%n");
    char szText[] = "x";
    EXPECT_EQ(CAdapter_OutputMessage::CommandRPCMessage("%d", 5) + CAdapter_OutputMessage::CommandRPCOutput(szText) +
                  CAdapter_OutputMessage::CommandRPCOutput(szText, 1),
              0);
    EXPECT_EQ(tCapture.Text(), "");
}

TEST(Module, LifeOfOne)
{
    CCapture tCapture;
    CModule tModule;
    void* pAddress = &tModule;
    EXPECT_EQ(tModule.Open(nullptr), 1);
    EXPECT_EQ(tModule.Export("x", pAddress), 1);
    EXPECT_EQ(pAddress, &tModule);
    EXPECT_EQ(tModule.Close(), 0);
    EXPECT_EQ(tModule.Open(g_atProtocols[0].Path().c_str()), 0);
    EXPECT_EQ(tModule.Export(nullptr, pAddress), 1);
    EXPECT_EQ(tModule.Export("VornClient_Nothing", pAddress), 1);
    EXPECT_EQ(pAddress, nullptr);
    EXPECT_EQ(tCapture.Text(), Line("Module", "Open", 50) + Line("Module", "Export", 70) +
                                   Line("Module", "Export", 70) + Line("Module", "Export", 80, "VornClient_Nothing"));
    {
        CModule tCopy(tModule);
        EXPECT_EQ(tCopy.Export("VornClient_Start", pAddress), 1) << "a copy shares nothing";
        tCopy = tModule;
    }
    EXPECT_EQ(tModule.Export("VornClient_Start", pAddress), 0);
    EXPECT_NE(pAddress, nullptr);
    EXPECT_EQ(tModule.Close() + tModule.Close(), 0);
}

template <class Binding>
void NullPath(char const* szSource, int nLine)
{
    CCapture tCapture;
    Binding tBinding;
    EXPECT_EQ(tBinding.Intialize(nullptr), 4);
    EXPECT_EQ(tCapture.Text(), Line(szSource, "Intialize", nLine));
    EXPECT_EQ(tBinding.Start(), 1);
    EXPECT_EQ(tBinding.Destroy(), 0);
}

TEST(Binding, NullPath)
{
    using namespace Adapter_ProtocolSet;
    NullPath<CProtocolSetPrivate>("CProtocolPrivate", 23);
    NullPath<CProtocolSetOnvif>("CProtocolOnvif", 23);
    NullPath<CProtocolSetRTSP>("CProtocolRTSP", 28);
    NullPath<CProtocolSetVTQ>("CProtocolVTQ", 23);
}

// Between the beginning and the end of an allocation nobody finds the half of it.
TEST_F(CSession, LookUpsNeverMixTwoConnections)
{
    using namespace Adapter_ApplicationLayer;
    tagTarget tTarget;
    tagResource tRecord;
    const auto fnCheck = [](CSequence& tSequence, auto fnFound)
    {
        tSequence.BeginWrite();
        EXPECT_EQ(fnFound(), 0);
        tSequence.EndWrite();
        EXPECT_EQ(fnFound(), 3);
        EXPECT_FALSE(tSequence.TryRead([&] { tSequence.BeginWrite(), tSequence.EndWrite(); })) << "a whole one between";
    };
    fnCheck(g_atUserLookUp[m_nLogin].tSequence,
            [&]
            {
                return FindUser(m_nLogin, tTarget) + (g_cClient.GetUserType(m_nLogin, tRecord) == 0) +
                       (ClientAdapter_ForceIFrame(m_nLogin, m_nMedia) != 3);
            });
    fnCheck(g_atMediaLookUp[m_nMedia].tSequence,
            [&]
            {
                return FindMedia(m_nMedia, tTarget) + (g_cClient.GetMediaType(m_nMedia, tRecord) == 0) +
                       (ClientAdapter_StreamMediaControl(m_nMedia, eTaskPlay) != -1);
            });
}

unsigned long g_dwHeard; // by the application, as user data
int Heard(void*, tagStreamMediaFrame const*, unsigned long dwUser)
{
    g_dwHeard = dwUser;
    return 0;
}

// A thread of high priority may deliver at any point of a registration, which goes on only after it.
TEST_F(CSession, AFrameDoesNotWaitForARegistration)
{
    using namespace Adapter_ApplicationLayer;
    ClientAdapter_StreamMediaRawCB(m_nMedia, &Heard, 10);
    const auto pfnRaw = Trampoline<StreamMediaCallback>();
    ClientAdapter_StreamMediaCB(m_nMedia, &Heard, 1);
    const auto pfnMedia = Trampoline<StreamMediaCallback>();
    const auto fnDelivered = [&](StreamMediaCallback pfnTrampoline)
    {
        EXPECT_EQ(pfnTrampoline(nullptr, nullptr, static_cast<unsigned long>(m_nMedia)), 0);
        return std::exchange(g_dwHeard, 0);
    };
    CSetCallBack& tRecord = g_SetCallBack[m_nMedia];
    g_tRegistrations.BeginChange<StreamMediaKind>(tRecord);
    tRecord.cbStreamMedia = nullptr;
    tRecord.m_dwStreamMedia = 2;
    EXPECT_EQ(fnDelivered(pfnMedia), 1U) << "the one before";
    EXPECT_EQ(fnDelivered(pfnRaw), 10U);
    tRecord.cbStreamMedia = &Heard;
    g_tRegistrations.EndChange();
    EXPECT_EQ(fnDelivered(pfnMedia), 2U);
    tRecord.m_dwStreamMedia = 3;
    EXPECT_EQ(fnDelivered(pfnMedia), 3U) << "the record is what counts";
}
} // namespace
