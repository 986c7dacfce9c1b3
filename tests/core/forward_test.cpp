// Every operation through every binding: arguments in order, results unchanged, absent entry points.

#include "tests/core/Support.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace
{
// Operations of a binding that are more than forwarding; they have tests of their own.
bool IsIrregular(tagProtocol const& tProtocol, std::string const& strName)
{
    static const Strings astrRtsp{"UserLogin", "UserLogout", "RealStreamConnect", "SubscribeEvent"};
    return tProtocol.eType == eProtocolRTSP && std::find(astrRtsp.begin(), astrRtsp.end(), strName) != astrRtsp.end();
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
    const Strings astrLookUp = Golden(tProtocol.szLookUp);
    return std::find(astrLookUp.begin(), astrLookUp.end(), strEntry) == astrLookUp.end() ? "" : strEntry;
}

class Forward : public testing::TestWithParam<tagProtocol>
{
protected:
    Forward() { Journal().Reset(); }
    ~Forward() override { m_tSet.RemoveAllProtocol(); }

    // What the operation does when the plug-in lacks its entry point (bPresent: when it has it).
    template <class... A>
    void Check(std::string const& strName, int (CClientProtocolSet::*pfnOperation)(A...), bool bPresent)
    {
        if (IsIrregular(GetParam(), strName))
        {
            return;
        }
        const std::string strEntry = EntryOf(GetParam(), strName);
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

    void CheckAll(bool bPresent)
    {
        Journal().WriteHandles(false);
#define OPERATION(line, name, ...) Check(#name, &CClientProtocolSet::name, bPresent);
#define UNROUTED_OPERATION(...)
#include "protocol/operations.def"
        EXPECT_GE(m_nChecked, 129);
    }

    CCapture m_tCapture;
    CClientProtocolSet m_tSet;
    int m_nChecked = 0;
};

TEST_P(Forward, ArgumentsArriveInOrderAndTheResultComesBack)
{
    ASSERT_EQ(m_tSet.InsertProtocol(GetParam().eType, GetParam().Path().c_str()), 0);
    CheckAll(true);
}

TEST_P(Forward, AMissingEntryPointAnswersOne)
{
    const CReducedPlugin tNone(GetParam(), Golden(GetParam().szLookUp));
    ASSERT_EQ(m_tSet.InsertProtocol(GetParam().eType, tNone.Path()), 0);
    CheckAll(false);
}

TEST_P(Forward, AMissingPluginAnswersOne)
{
    ASSERT_EQ(m_tSet.InsertProtocol(GetParam().eType, "/nowhere/libnothing.so"), 0);
    CheckAll(false);
}

// One line for each name that the plug-in lacks, in the order of look-up, after the line that it was opened.
TEST_P(Forward, LookUpOrder)
{
    const Strings astrLookUp = Golden(GetParam().szLookUp);
    const CReducedPlugin tNone(GetParam(), astrLookUp);
    m_tCapture.Text();
    m_tSet.InsertProtocol(GetParam().eType, tNone.Path());
    std::string strExpected;
    if (GetParam().nOpenedLine)
    {
        const std::string strClass = "CProtocolSet" + std::string(GetParam().szSource + strlen("CProtocol"));
        strExpected = Line(GetParam().szSource, "Intialize", GetParam().nOpenedLine, strClass + " OPEN");
    }
    for (std::string const& strName : astrLookUp)
    {
        strExpected += Line("Module", "Export", 80, strName);
    }
    const std::string strText = m_tCapture.Text();
    EXPECT_EQ(strText.substr(strText.find("\n.\n") + 3), strExpected);
}

TEST_P(Forward, OneMissingEntryPointLeavesTheOthersAlone)
{
    const std::string strMissing =
        std::string(GetParam().eType == eProtocolRTSP ? "RTSP_" : GetParam().szPrefix) + "ForceIFrame";
    const CReducedPlugin tReduced(GetParam(), {strMissing});
    m_tCapture.Text();
    m_tSet.InsertProtocol(GetParam().eType, tReduced.Path());
    const std::string strText = m_tCapture.Text();
    EXPECT_EQ(strText.find("Export 80"), strText.rfind("Export 80"));
    EXPECT_NE(strText.find(Line("Module", "Export", 80, strMissing)), std::string::npos);
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(m_tSet.ForceIFrame(nullptr, 1, GetParam().eType), 1);
        EXPECT_EQ(m_tCapture.Text(), GetParam().eType == eProtocolVTQ ? "[ForceIFrame:456] ForceIFrame \n" : "");
    }
    EXPECT_EQ(m_tSet.Start(GetParam().eType), 0);
    EXPECT_EQ(Journal().Take().at(0).strEntry, std::string(GetParam().szPrefix) + "Start");
}

TEST_P(Forward, APluginThatCannotBeOpened)
{
    m_tCapture.Text();
    errno = EPERM;
    m_tSet.InsertProtocol(GetParam().eType, "/nowhere/libnothing.so");
    std::string strText = m_tCapture.Text();
    strText.erase(0, strText.find("\n.\n") + 3);
    const std::string strLine = strText.substr(0, strText.find('\n') + 1);
    EXPECT_TRUE(strLine.starts_with("[Tessaro] Module.cpp Open 60 Failed syserr:")) << strLine;
    EXPECT_EQ(strLine.find(strerror(EPERM)), std::string::npos) << "an older error isn't this one's: " << strLine;
    EXPECT_EQ(strText.substr(strLine.size()), GetParam().eType == eProtocolVTQ ? "open vtq client fail \n" : "");
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
