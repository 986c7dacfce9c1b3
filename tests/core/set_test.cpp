// The protocol set: what it refuses, what it creates, what it says.

#include "tests/core/Support.h"

#include <climits>
#include <csignal>
#include <cstring>
#include <memory>

namespace
{
/// The slot in the virtual table that a member function is called through.
template <class Member>
std::size_t Slot(Member pfnMember)
{
    std::uintptr_t uWord = 0;
    std::memcpy(&uWord, &pfnMember, sizeof uWord);
    return uWord / sizeof(void*); // its lowest bit may mark it as virtual
}

class Set : public testing::Test
{
protected:
    Set() { Journal().Reset(); }
    ~Set() override { m_tSet.RemoveAllProtocol(); }

    int Insert(tagProtocol const& tProtocol)
    {
        return m_tSet.InsertProtocol(tProtocol.eType, tProtocol.Path().c_str());
    }

    template <class... A>
    void Refused(std::string const& strName, int nLine, int (CClientProtocolSet::*pfnOperation)(A...))
    {
        for (const int nType : {0, 1, 2, 3, 4, -1, INT_MAX, INT_MIN})
        {
            std::vector<std::uintptr_t> auArguments;
            const int nResult =
                CallWithArguments<A...>([&](auto... tArguments) { return (m_tSet.*pfnOperation)(tArguments...); },
                                        {{sizeof...(A) - 1, static_cast<std::uintptr_t>(nType)}}, auArguments);
            EXPECT_EQ(nResult, 4) << strName;
            EXPECT_EQ(m_tCapture.Text(), Line("CProtocolSet", strName, nLine));
        }
    }

    CCapture m_tCapture;
    CClientProtocolSet m_tSet;
};

TEST_F(Set, OperationsStandInOrderAndAreRefusedWithoutABinding)
{
    std::istringstream tRows = Golden("operations.txt");
    std::string strName;
    int nLine = 0;
    std::size_t nSlot = 0;
#define OPERATION(line, name, ...)                                                                                     \
    UNROUTED_OPERATION(name)                                                                                           \
    Refused(strName, nLine, &CClientProtocolSet::name);
#define UNROUTED_OPERATION(name, ...)                                                                                  \
    tRows >> strName >> nLine;                                                                                         \
    EXPECT_EQ(strName, #name);                                                                                         \
    EXPECT_EQ(Slot(&CClientProtocolBase::name), nSlot++);
#include "protocol/operations.def"
    EXPECT_FALSE(tRows >> strName) << strName;
}

TEST_F(Set, InsertAndRemove)
{
    for (tagProtocol const& tProtocol : g_atProtocols)
    {
        EXPECT_EQ(m_tSet.RemoveProtocol(tProtocol.eType), 4);
        EXPECT_EQ(m_tSet.InsertProtocol(tProtocol.eType, nullptr), 4);
        EXPECT_EQ(Insert(tProtocol), 0);
        EXPECT_EQ(Insert(tProtocol), 13);
        EXPECT_EQ(m_tCapture.Text(), Line("CProtocolSet", "RemoveProtocol", 76) +
                                         Line("CProtocolSet", "InsertProtocol", 30) + tProtocol.InsertText() +
                                         Line("CProtocolSet", "InsertProtocol", 35));
        EXPECT_EQ(m_tSet.Stop(tProtocol.eType), 0) << "the first binding keeps serving";
        EXPECT_EQ(m_tSet.RemoveProtocol(tProtocol.eType), 0);
        EXPECT_EQ(m_tSet.Stop(tProtocol.eType), 4);
        EXPECT_EQ(Insert(tProtocol), 0);
        m_tCapture.Text();
    }
    EXPECT_EQ(m_tSet.InsertProtocol(static_cast<eProtocolType>(4), "x"), 4);
    EXPECT_EQ(m_tSet.RemoveProtocol(static_cast<eProtocolType>(-1)), 4);
    EXPECT_EQ(m_tCapture.Text(),
              Line("CProtocolSet", "InsertProtocol", 30) + Line("CProtocolSet", "RemoveProtocol", 76));
    EXPECT_EQ(m_tSet.RemoveAllProtocol() + m_tSet.RemoveAllProtocol(), 0);
    EXPECT_EQ(m_tCapture.Text(), "");
    EXPECT_EQ(m_tSet.Start(eProtocolVTQ), 4);
}

// A plug-in that calls in as its own last act finds its protocol gone, not the binding that is being destroyed.
TEST_F(Set, RemovesAPluginThatCallsInAtItsEnd)
{
    ASSERT_EQ(g_cProtocolSet.InsertProtocol(eProtocolPrivate, TESSARO_BROKEN "/libbroken_calls.so"), 0);
    m_tCapture.Text();
    EXPECT_EQ(g_cProtocolSet.RemoveProtocol(eProtocolPrivate), 0);
    EXPECT_EQ(m_tCapture.Text(), Line("CProtocolSet", "SetMiscPara", 310));
}

// The process ends, and a line says why.
TEST_F(Set, EndsWithAPluginWhoseConstructorThrows)
{
    constexpr char szPath[] = TESSARO_BROKEN "/libbroken_throws.so";
    EXPECT_EXIT(m_tSet.InsertProtocol(eProtocolPrivate, szPath), testing::KilledBySignal(SIGABRT), "");
    EXPECT_TRUE(m_tCapture.Text().ends_with(
        Line("Module", "Open", 60, std::string("An exception ended the process while it opened ") + szPath)));
}

TEST_F(Set, StartHandsOverTheSetOnlyOnSuccess)
{
    Insert(g_atProtocols[1]);
    m_tCapture.Text();
    Journal().Answer("OnvifClient_Start", 7);
    EXPECT_EQ(m_tSet.Start(eProtocolOnvif), 7);
    EXPECT_EQ(Journal().Take().size(), 1U);
    Journal().Answer("OnvifClient_Start", 0);
    Journal().Answer("OnvifClient_SetProtocolInterface", 5);
    EXPECT_EQ(m_tSet.Start(eProtocolOnvif), 0);
    const auto atCalls = Journal().Take();
    ASSERT_EQ(atCalls.size(), 2U);
    EXPECT_EQ(atCalls[1].strEntry, "OnvifClient_SetProtocolInterface");
    auto* const pProtocols = reinterpret_cast<IProtocol*>(atCalls[1].auArguments.at(0));
    EXPECT_EQ(pProtocols, static_cast<IProtocol*>(&m_tSet));
    EXPECT_EQ(m_tCapture.Text(), "");

    // As a plug-in built apart would: by position in the interface.
    std::size_t nSlot = 0;
#define IN_ORDER(name) EXPECT_EQ(Slot(&IProtocol::name), nSlot++);
    // clang-format off
    IN_ORDER(Start) IN_ORDER(Stop) IN_ORDER(UserLogin) IN_ORDER(UserLogout) IN_ORDER(RealStreamConnect)
    IN_ORDER(RealStreamDisconnect) IN_ORDER(StreamMediaCB) IN_ORDER(StreamMediaControl) IN_ORDER(SetRtspEvenCb)
    IN_ORDER(SetProductMode) IN_ORDER(GetPackageInfo) IN_ORDER(SetMaxChannel)
        // clang-format on
        void** const ppTable = *reinterpret_cast<void***>(pProtocols);
    const auto pfnSetMaxChannel = reinterpret_cast<int (*)(IProtocol*, unsigned int, eProtocolType)>(ppTable[11]);
    EXPECT_EQ(pfnSetMaxChannel(pProtocols, 9, eProtocolOnvif), 0) << "succeeds without effect";
    EXPECT_EQ(pfnSetMaxChannel(pProtocols, 9, eProtocolRTSP), 4);
    EXPECT_TRUE(Journal().Take().empty());
}

TEST_F(Set, TwoOperationsAnnounceThemselves)
{
    Insert(g_atProtocols[3]);
    m_tCapture.Text();
    m_tSet.UserLogin(nullptr, nullptr, eProtocolVTQ);
    EXPECT_TRUE(m_tCapture.Text().starts_with("UserLogin:eProtocol:3, 0x"));
    m_tSet.SubscribeEvent(reinterpret_cast<void*>(0x10), 2, reinterpret_cast<DeviceEventCallback>(0x30), 4,
                          eProtocolVTQ);
    EXPECT_EQ(m_tCapture.Text(), "==SubscribeEvent:0x10 2, 0x30, 4\n");
}

// --- the private protocol's configuration queries --------------------------------------------------------------------

class PrivateConfig : public Set
{
protected:
    // The plug-in changes everything in the first-layout record that it gets, and keeps what it saw.
    PrivateConfig()
    {
        Journal().Answer("VornClient_GetConfig",
                         [this](tagCalled const& tCall)
                         {
                             auto* const pt = reinterpret_cast<tagConfigInformation*>(tCall.auArguments.at(1));
                             *m_ptSeen = *pt;
                             for (std::size_t i = 0; i < sizeof pt->data; ++i)
                             {
                                 pt->data[i] = static_cast<unsigned char>(i % 251 + 1);
                             }
                             std::snprintf(reinterpret_cast<char*>(pt->data + 52), 30, "%s", m_szText);
                             pt->extra[0] = pt->extra[1] = pt->type = 99;
                             return m_nAnswer;
                         });
        Journal().Answer("VornClient_SetConfig",
                         [this](tagCalled const& tCall)
                         {
                             *m_ptSeen = *reinterpret_cast<tagConfigInformation*>(tCall.auArguments.at(1));
                             return 6;
                         });
        m_ptV1->type = m_ptV2->type = 209;
        m_ptV1->index = m_ptV2->index = 0xFFFFFFFF;
        for (std::uint32_t i = 0; i < 4; ++i)
        {
            m_ptV1->extra[i] = m_ptV2->extra[i] = 10 + i;
        }
        std::memset(m_ptV2->data, 0xAA, sizeof m_ptV2->data);
    }

    template <class Record>
    void CheckSpecial(Record const& tTarget)
    {
        EXPECT_EQ(m_ptSeen->type, 101U);
        EXPECT_EQ(m_ptSeen->index, 4U);
        EXPECT_EQ(m_ptSeen->extra[0], 72U);
        EXPECT_EQ(m_ptSeen->extra[1] + m_ptSeen->extra[2] + m_ptSeen->extra[3] + m_ptSeen->data[0], 0U);
        unsigned char abyHead[27] = {1, 0, 0, 0, 0, 0, 0, 0};
        strncpy(reinterpret_cast<char*>(abyHead + 8), m_szText, 18);
        abyHead[26] = 0xAA;
        EXPECT_EQ(memcmp(tTarget.data, abyHead, sizeof abyHead), 0);
        EXPECT_EQ(tTarget.type, 209U);
        EXPECT_EQ(tTarget.extra[0], 10U);
    }

    std::unique_ptr<tagConfigInformation> m_ptSeen = std::make_unique<tagConfigInformation>();
    std::unique_ptr<tagConfigInformation> m_ptV1 = std::make_unique<tagConfigInformation>();
    std::unique_ptr<tagConfigInformationV2> m_ptV2 = std::make_unique<tagConfigInformationV2>();
    char const* m_szText = "SN1";
    int m_nAnswer = 0;
};

TEST_F(PrivateConfig, SpecialQuery)
{
    Insert(g_atProtocols[0]);
    for (char const* const szText : {"SN1", "exactly-18-letters", "more-than-eighteen-letters", ""})
    {
        std::memset(m_ptV1->data, 0xAA, sizeof m_ptV1->data);
        m_szText = szText;
        EXPECT_EQ(m_tSet.GetConfig(nullptr, m_ptV1.get(), eProtocolPrivate), 0);
        CheckSpecial(*m_ptV1);
    }
    EXPECT_EQ(m_tSet.GetConfigV2(nullptr, m_ptV2.get(), eProtocolPrivate), 0);
    EXPECT_EQ(Journal().Take().back().strEntry, "VornClient_GetConfigV2") << "forwarded: the query isn't special there";

    const tagConfigInformation tBefore = *m_ptV1;
    m_nAnswer = 7;
    EXPECT_EQ(m_tSet.GetConfig(nullptr, m_ptV1.get(), eProtocolPrivate), 7);
    EXPECT_EQ(memcmp(&tBefore, m_ptV1.get(), sizeof tBefore), 0);
    m_ptV1->index = 5;
    m_tSet.GetConfig(nullptr, m_ptV1.get(), eProtocolPrivate);
    EXPECT_EQ(m_ptSeen->type, 209U) << "any other index is forwarded as it is";
    EXPECT_EQ(Journal().Take().back().auArguments.at(1), reinterpret_cast<std::uintptr_t>(m_ptV1.get()));
}

TEST_F(PrivateConfig, SecondLayoutIsConverted)
{
    const CReducedPlugin tOld(g_atProtocols[0], {"VornClient_GetConfigV2", "VornClient_SetConfigV2"});
    Insert(g_atProtocols[0]);
    EXPECT_EQ(m_tSet.GetConfigV2(nullptr, m_ptV2.get(), eProtocolPrivate), 0);
    CheckSpecial(*m_ptV2);

    m_ptV2->type = 12;
    EXPECT_EQ(m_tSet.SetConfigV2(nullptr, m_ptV2.get(), eProtocolPrivate), 6);
    EXPECT_EQ(m_ptSeen->type, 12U);
    EXPECT_EQ(m_ptSeen->index, 0xFFFFFFFF);
    EXPECT_EQ(memcmp(m_ptSeen->extra, m_ptV2->extra, sizeof m_ptSeen->extra), 0);
    EXPECT_EQ(memcmp(m_ptSeen->data, m_ptV2->data, sizeof m_ptSeen->data), 0);

    m_nAnswer = 8;
    EXPECT_EQ(m_tSet.GetConfigV2(nullptr, m_ptV2.get(), eProtocolPrivate), 8);
    EXPECT_EQ(m_ptV2->extra[0], 10U);
    m_nAnswer = 0;
    EXPECT_EQ(m_tSet.GetConfigV2(nullptr, m_ptV2.get(), eProtocolPrivate), 0);
    EXPECT_EQ(m_ptSeen->extra[3], 13U);
    EXPECT_EQ(m_ptSeen->data[0], 0) << "the caller's data isn't sent";
    EXPECT_EQ(m_ptV2->extra[0], 99U);
    EXPECT_EQ(m_ptV2->extra[1], 11U);
    EXPECT_EQ(m_ptV2->type, 12U);
    EXPECT_EQ(m_ptV2->data[1000], 1000 % 251 + 1);
}
} // namespace
