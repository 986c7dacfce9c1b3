// Every operation through every binding: arguments in order, results unchanged, absent entry points.

#include "tests/core/Support.h"

#include <cerrno>
#include <cstring>
#include <set>

namespace
{
using Names = std::set<std::string>;

// What serves an operation where it isn't prefix + operation.
const std::map<std::string, std::string> g_tOtherNames{
    {"VTQClient_GetPackInfo", "VTQClient_Getpackageinfo"},   {"RTSPClient_StreamMediaCB", "RTSPClient_StreamCB"},
    {"RTSPClient_StreamMediaControl", "RTSPClient_Control"}, {"RTSPClient_RealStreamDisconnect", "RTSPClient_Destroy"},
    {"RTSPClient_GetAttribute", "RTSP_GetAttribute"},        {"RTSPClient_ForceIFrame", "RTSP_ForceIFrame"}};
// More than forwarding: these have tests of their own.
const Names g_tRtspOwn{"UserLogin", "UserLogout", "RealStreamConnect", "SubscribeEvent"};
const Names g_tConverted{"VornClient_SetConfigV2", "VornClient_GetConfigV2"};

class Forward : public testing::TestWithParam<tagProtocol>
{
protected:
    Forward() : m_astrLookUp(GetParam().LookUp()), m_tLookUp(m_astrLookUp.begin(), m_astrLookUp.end())
    {
        Journal().Reset();
    }
    ~Forward() override { m_tSet.RemoveAllProtocol(); }

    // What the operation does on a plug-in that lacks tMissing.
    template <class... A>
    void Check(std::string const& strName, int (CClientProtocolSet::*pfnOperation)(A...), Names const& tMissing)
    {
        std::string strEntry = GetParam().szPrefix + strName;
        const auto itOther = g_tOtherNames.find(strEntry);
        strEntry = itOther != g_tOtherNames.end() ? itOther->second : strEntry;
        const bool bAsked = m_tLookUp.contains(strEntry);
        const bool bPresent = bAsked && !tMissing.contains(strEntry);
        const bool bConverts = g_tConverted.contains(strEntry) && !bPresent &&
                               !tMissing.contains(strEntry.substr(0, strEntry.size() - strlen("V2")));
        if (bConverts || (GetParam().eType == eProtocolRTSP && g_tRtspOwn.contains(strName)))
        {
            return;
        }
        const int nPlugin = 1000 + static_cast<int>(strName.size());
        Journal().Answer(strEntry, nPlugin);
        std::vector<std::uintptr_t> auArguments;
        const int nResult =
            CallWithArguments<A...>([&](auto... tArguments) { return (m_tSet.*pfnOperation)(tArguments...); },
                                    {{sizeof...(A) - 1, GetParam().eType}}, auArguments);
        const std::vector<tagCalled> atCalls = Journal().Take();
        EXPECT_EQ(nResult, !bAsked ? 0 : bPresent ? nPlugin : 1) << strName;
        ASSERT_EQ(atCalls.size(), bPresent ? 1U : 0U) << strName;
        if (bPresent)
        {
            EXPECT_EQ(atCalls[0].strEntry, strEntry);
            auArguments.pop_back(); // the protocol
            if (strEntry == "RTSPClient_Control")
            {
                auArguments[1] = 3; // the greatest that is passed on
            }
            EXPECT_EQ(atCalls[0].auArguments, auArguments) << strName;
        }
        ++m_nChecked;
    }

    void CheckAll(Strings const& astrMissing)
    {
        const Names tMissing(astrMissing.begin(), astrMissing.end());
        m_nChecked = 0;
        Journal().WriteHandles(false);
#define OPERATION(line, name, ...) Check(#name, &CClientProtocolSet::name, tMissing);
#define UNROUTED_OPERATION(...)
#include "protocol/operations.def"
        EXPECT_GE(m_nChecked, 129);
        EXPECT_EQ(m_tSet.RemoveProtocol(GetParam().eType), 0);
    }

    // Loads a plug-in without astrMissing: a line for each in the order of look-up, and everything else works.
    void CheckWithout(Strings const& astrMissing)
    {
        const CReducedPlugin tReduced(GetParam(), astrMissing);
        m_tCapture.Text();
        ASSERT_EQ(m_tSet.InsertProtocol(GetParam().eType, GetParam().Path().c_str()), 0);
        std::string strExpected = GetParam().InsertText();
        for (std::string const& strName : astrMissing)
        {
            strExpected += Line("Module", "Export", 80, strName);
        }
        EXPECT_EQ(m_tCapture.Text(), strExpected);
        CheckAll(astrMissing);
    }

    CCapture m_tCapture;
    CClientProtocolSet m_tSet;
    const Strings m_astrLookUp;
    const Names m_tLookUp;
    int m_nChecked = 0;
};

TEST_P(Forward, AMissingPluginAnswersOne)
{
    errno = EPERM; // an older error isn't this one's
    ASSERT_EQ(m_tSet.InsertProtocol(GetParam().eType, "/nowhere/libnothing.so"), 0);
    const std::string strText = m_tCapture.Text();
    EXPECT_TRUE(strText.starts_with(GetParam().CreateText() + "[Tessaro] Module.cpp Open 60 Failed syserr:"))
        << strText;
    EXPECT_EQ(strText.find(std::strerror(EPERM)), std::string::npos);
    EXPECT_EQ(strText.ends_with("\nopen vtq client fail \n"), GetParam().eType == eProtocolVTQ);
    CheckAll(m_astrLookUp);
}

TEST_P(Forward, EachEntryPointMayBeMissing)
{
    CheckWithout({});
    CheckWithout(m_astrLookUp);
    for (std::string const& strName : m_astrLookUp)
    {
        CheckWithout({strName});
    }
    std::fprintf(stderr, "tried: %s: each of %zu entry points missing alone, and all of them\n", GetParam().szName,
                 m_astrLookUp.size());
}

INSTANTIATE_TEST_SUITE_P(Bindings, Forward, testing::ValuesIn(g_atProtocols),
                         [](auto const& tInfo) { return std::string(tInfo.param.szName); });

// The login queries of ONVIF and VTQ refuse a null output themselves; a length of 0 is the plug-in's to judge.
TEST(LoginQueries, NullOutputsAreRefused)
{
    CCapture tCapture;
    for (tagProtocol const& tProtocol : {g_atProtocols[1], g_atProtocols[3]})
    {
        Journal().Reset();
        CClientProtocolSet tSet;
        unsigned char abyMac[6];
        tSet.InsertProtocol(tProtocol.eType, tProtocol.Path().c_str());
        EXPECT_EQ(tSet.GetLoginLevel(nullptr, nullptr, tProtocol.eType), 1);
        EXPECT_EQ(tSet.GetLoginMac(nullptr, nullptr, 6, tProtocol.eType), 1);
        EXPECT_EQ(tSet.GetPackInfo(nullptr, nullptr, 6, tProtocol.eType), tProtocol.eType == eProtocolVTQ ? 1 : 0);
        EXPECT_TRUE(Journal().Take().empty());
        EXPECT_EQ(tSet.GetLoginMac(nullptr, abyMac, 0, tProtocol.eType), 0);
        EXPECT_EQ(tSet.GetLoginStatus(nullptr, nullptr, tProtocol.eType), 0);
        EXPECT_EQ(Journal().Take().size(), tProtocol.eType == eProtocolVTQ ? 2U : 1U);
        tSet.RemoveAllProtocol();
    }
}
} // namespace
