// Every operation through every binding: arguments in order, results unchanged, absent entry points.

#include "tests/core/Support.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <set>

namespace
{
using Names = std::set<std::string>;

// Operations of a binding that are more than forwarding; they have tests of their own.
bool IsIrregular(tagProtocol const& tProtocol, std::string const& strName, Names const& tMissing)
{
    static const Names tRtsp{"UserLogin", "UserLogout", "RealStreamConnect", "SubscribeEvent"};
    static const Names tConverted{"SetConfigV2", "GetConfigV2"};
    const std::string strOther = tProtocol.szPrefix + strName.substr(0, strName.size() - 2);
    return (tProtocol.eType == eProtocolRTSP && tRtsp.contains(strName)) ||
           (tProtocol.eType == eProtocolPrivate && tConverted.contains(strName) && !tMissing.contains(strOther));
}

// The entry point that serves an operation; empty when the binding has none and answers 0 by itself.
std::string EntryOf(tagProtocol const& tProtocol, std::string const& strName)
{
    static const std::map<std::string, std::string> tRtsp{{"StreamMediaCB", "RTSPClient_StreamCB"},
                                                          {"StreamMediaControl", "RTSPClient_Control"},
                                                          {"RealStreamDisconnect", "RTSPClient_Destroy"},
                                                          {"GetAttribute", "RTSP_GetAttribute"},
                                                          {"ForceIFrame", "RTSP_ForceIFrame"}};
    std::string strEntry = tProtocol.szPrefix + strName;
    if (tProtocol.eType == eProtocolVTQ && strName == "GetPackInfo")
    {
        strEntry = "VTQClient_Getpackageinfo";
    }
    if (const auto itOther = tRtsp.find(strName); tProtocol.eType == eProtocolRTSP && itOther != tRtsp.end())
    {
        strEntry = itOther->second;
    }
    static std::map<eProtocolType, Names> tLookUps;
    Names& tLookUp = tLookUps[tProtocol.eType];
    if (tLookUp.empty())
    {
        const Strings astrLookUp = Golden(tProtocol.szLookUp);
        tLookUp.insert(astrLookUp.begin(), astrLookUp.end());
    }
    return tLookUp.contains(strEntry) ? strEntry : "";
}

class Forward : public testing::TestWithParam<tagProtocol>
{
protected:
    Forward() { Journal().Reset(); }
    ~Forward() override { m_tSet.RemoveAllProtocol(); }

    // What the operation does on a plug-in that lacks tMissing.
    template <class... A>
    void Check(std::string const& strName, int (CClientProtocolSet::*pfnOperation)(A...), Names const& tMissing)
    {
        const std::string strEntry = EntryOf(GetParam(), strName);
        const bool bPresent = !tMissing.contains(strEntry);
        if (IsIrregular(GetParam(), strName, tMissing) && !(bPresent && GetParam().eType == eProtocolPrivate))
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
        EXPECT_EQ(nResult, strEntry.empty() ? 0 : bPresent ? nPlugin : 1) << strName;
        ASSERT_EQ(atCalls.size(), !strEntry.empty() && bPresent ? 1U : 0U) << strName;
        if (!atCalls.empty())
        {
            EXPECT_EQ(atCalls[0].strEntry, strEntry);
            auArguments.pop_back(); // the protocol
            if (GetParam().eType == eProtocolRTSP && strName == "StreamMediaControl")
            {
                auArguments[1] = 3;
            }
            EXPECT_EQ(atCalls[0].auArguments, auArguments) << strName;
        }
        ++m_nChecked;
    }

    void CheckAll(Names const& tMissing = {})
    {
        m_nChecked = 0;
        Journal().WriteHandles(false);
#define OPERATION(line, name, ...) Check(#name, &CClientProtocolSet::name, tMissing);
#define UNROUTED_OPERATION(...)
#include "protocol/operations.def"
        EXPECT_GE(m_nChecked, 129);
    }

    // Loads a plug-in without astrMissing: a line for each in the order of look-up, and everything else works.
    void CheckWithout(Strings const& astrMissing)
    {
        const CReducedPlugin tReduced(GetParam(), astrMissing);
        m_tCapture.Text();
        ASSERT_EQ(m_tSet.InsertProtocol(GetParam().eType, tReduced.Path()), 0);
        std::string strExpected;
        if (GetParam().nOpenedLine)
        {
            const std::string strClass = "CProtocolSet" + std::string(GetParam().szSource + strlen("CProtocol"));
            strExpected = Line(GetParam().szSource, "Intialize", GetParam().nOpenedLine, strClass + " OPEN");
        }
        for (std::string const& strName : astrMissing)
        {
            strExpected += Line("Module", "Export", 80, strName);
        }
        const std::string strText = m_tCapture.Text();
        EXPECT_EQ(strText.substr(strText.find("\n.\n") + 3), strExpected);
        CheckAll(Names(astrMissing.begin(), astrMissing.end()));
        EXPECT_EQ(m_tSet.RemoveProtocol(GetParam().eType), 0);
    }

    CCapture m_tCapture;
    CClientProtocolSet m_tSet;
    int m_nChecked = 0;
};

TEST_P(Forward, ArgumentsArriveInOrderAndTheResultComesBack)
{
    ASSERT_EQ(m_tSet.InsertProtocol(GetParam().eType, GetParam().Path().c_str()), 0);
    CheckAll();
}

TEST_P(Forward, AMissingPluginAnswersOne)
{
    const Strings astrLookUp = Golden(GetParam().szLookUp);
    ASSERT_EQ(m_tSet.InsertProtocol(GetParam().eType, "/nowhere/libnothing.so"), 0);
    CheckAll(Names(astrLookUp.begin(), astrLookUp.end()));
}

TEST_P(Forward, EachEntryPointMayBeMissing)
{
    const Strings astrLookUp = Golden(GetParam().szLookUp);
    CheckWithout(astrLookUp);
    for (std::string const& strName : astrLookUp)
    {
        CheckWithout({strName});
    }
    constexpr int nSubsets = 75;
    std::mt19937 tRandom(20); // the same subsets each time
    for (int i = 0; i < nSubsets; ++i)
    {
        Strings astrMissing;
        std::bernoulli_distribution tIsMissing((i + 0.5) / nSubsets);
        std::copy_if(astrLookUp.begin(), astrLookUp.end(), std::back_inserter(astrMissing),
                     [&](auto const&) { return tIsMissing(tRandom); });
        CheckWithout(astrMissing);
    }
    std::fprintf(stderr, "tried: %s: each of %zu entry points missing alone, all of them, and %d random subsets\n",
                 GetParam().szPrefix, astrLookUp.size(), nSubsets);
}

INSTANTIATE_TEST_SUITE_P(Bindings, Forward, testing::ValuesIn(g_atProtocols), NameOf);

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
