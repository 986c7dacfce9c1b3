// The exported functions, through the ONVIF, RTSP and VTQ recorders under the names that the library looks for.

#include "adapter/ClientAdapterExtra.h"
#include "adapter/ClientService.h"
#include "tests/core/Support.h"

#include <algorithm>
#include <functional>
#include <set>

namespace
{
struct tagExport
{
    std::string strFunction;
    std::string strShape;
    int nLine;
    std::string strOperation;
};

/// An exported function without its type: one instantiation of the checks serves them all.
struct tagCallable
{
    std::function<int(Overrides const&, std::vector<std::uintptr_t>&)> fnCall;
    std::size_t nArguments;
};
template <class... A>
tagCallable Callable(int (*pfnFunction)(A...))
{
    return {[pfnFunction](Overrides const& tOverrides, std::vector<std::uintptr_t>& auArguments)
            { return CallWithArguments<A...>(pfnFunction, tOverrides, auArguments); },
            sizeof...(A)};
}

/// Every function by its shape: unknown IDs, what reaches the plug-in, what comes back.
class Shape : public CSession
{
protected:
    int Call(tagCallable const& tFunction, Overrides const& tOverrides)
    {
        const int nResult = tFunction.fnCall(tOverrides, m_auArguments);
        m_atCalls = Journal().Take();
        return nResult;
    }

    void Check(tagExport const& tRow, tagCallable const& tFunction)
    {
        SCOPED_TRACE(tRow.strFunction);
        Journal().Reset();
        m_tCapture.Text();
        const std::string strShape = "," + tRow.strShape + ",";
        const auto fnIs = [&](std::string const& strShapes) { return strShapes.find(strShape) != std::string::npos; };
        fnIs(",login,ask,status,subscribe,")      ? OnID(tRow, tFunction, true)
        : fnIs(",media,close,register,")          ? OnID(tRow, tFunction, false)
        : fnIs(",open-login,")                    ? Opens(tRow, tFunction, true, false)
        : fnIs(",open,")                          ? Opens(tRow, tFunction, true, true)
        : fnIs(",open-media,")                    ? Opens(tRow, tFunction, false, true)
        : fnIs(",two-media,")                     ? TwoMedia(tRow, tFunction)
        : fnIs(",named,")                         ? Named(tRow, tFunction)
        : tRow.strShape.starts_with("broadcast-") ? Broadcast(tRow, tFunction, tRow.strShape.substr(10))
                                                  : [&] { ADD_FAILURE() << "no such shape: " << tRow.strShape; }();
    }

    static std::string Entry(tagExport const& tRow)
    {
        return "VTQClient_" + (tRow.strOperation == "GetPackInfo" ? "Getpackageinfo" : tRow.strOperation);
    }

    void OnID(tagExport const& tRow, tagCallable const& tFunction, bool bLogin)
    {
        std::string const& strShape = tRow.strShape;
        Overrides tOverrides;
        if (strShape == "status") // the one that writes by itself
        {
            tOverrides[1] = reinterpret_cast<std::uintptr_t>(&m_nStatus);
        }
        const std::string strAlways = // the one that says something on every call
            tRow.strOperation == "GetConfig"
                ? Line("ClientAdapter", tRow.strFunction, 418, std::string(37, '*') + tRow.strFunction)
                : "";
        const std::string strFailed = bLogin ? Line("ClientAdapter", tRow.strFunction, tRow.nLine) : "";
        for (const int nUnknown : {-1, 999, 1000, 0x7fffffff})
        {
            tOverrides[0] = static_cast<std::uintptr_t>(nUnknown);
            EXPECT_EQ(Call(tFunction, tOverrides), bLogin ? 3 : -1);
            EXPECT_EQ(m_tCapture.Text(), strAlways + strFailed);
            EXPECT_TRUE(m_atCalls.empty());
        }
        for (const int nAnswer : {0, 7, -5, 2})
        {
            Journal().Answer(Entry(tRow), nAnswer);
            const bool bMapped = strShape == "ask" || strShape == "status";
            tOverrides[0] = static_cast<std::uintptr_t>(bLogin ? m_nLogin : m_nMedia);
            EXPECT_EQ(Call(tFunction, tOverrides), !bMapped ? nAnswer : nAnswer < 0 ? 3 : 0);
            ASSERT_EQ(m_atCalls.size(), 1U);
            EXPECT_EQ(m_atCalls[0].strEntry, Entry(tRow));
            m_auArguments[0] = bLogin ? m_uLogin : m_uMedia;
            if (strShape == "register" || strShape == "subscribe") // a trampoline, and our ID as user data
            {
                const std::size_t iCallback = m_auArguments.size() - 2;
                EXPECT_NE(m_atCalls[0].auArguments[iCallback], m_auArguments[iCallback]);
                m_auArguments[iCallback] = m_atCalls[0].auArguments[iCallback];
                m_auArguments.back() = tOverrides[0];
            }
            EXPECT_EQ(m_atCalls[0].auArguments, m_auArguments);
            const bool bLogout = tRow.strOperation == "UserLogout" && nAnswer == 0; // frees on 0 only
            if (strShape == "close" || bLogout)                                     // frees whatever came back
            {
                EXPECT_EQ(Call(tFunction, tOverrides), bLogin ? 3 : -1);
                bLogout ? Login() : Open();
            }
            m_tCapture.Text();
        }
    }

    // bAlsoFailed: a failing open takes an ID too.
    void Opens(tagExport const& tRow, tagCallable const& tFunction, bool bUnderLogin, bool bAlsoFailed)
    {
        int nNew = 55;
        const auto uNew = reinterpret_cast<std::uintptr_t>(&nNew);
        EXPECT_EQ(Call(tFunction, {{0, uNew}, {1, 999}}), bUnderLogin ? 3 : -1);
        EXPECT_EQ(m_tCapture.Text(), bUnderLogin ? Line("ClientAdapter", tRow.strFunction, tRow.nLine) : "");
        EXPECT_EQ(nNew, 55);
        const Overrides tKnown{{0, uNew}, {1, static_cast<std::uintptr_t>(bUnderLogin ? m_nLogin : m_nMedia)}};
        for (const int nAnswer : {19, 0})
        {
            const bool bTakes = nAnswer == 0 || bAlsoFailed;
            Journal().Answer(Entry(tRow), nAnswer);
            EXPECT_EQ(Call(tFunction, tKnown), nAnswer);
            m_auArguments[0] = m_atCalls.at(0).auArguments[0]; // a handle variable of the library's own
            m_auArguments[1] = bUnderLogin ? m_uLogin : m_uMedia;
            EXPECT_NE(m_auArguments[0], uNew);
            EXPECT_EQ(m_atCalls[0].auArguments, m_auArguments);
            tagResource tNew{};
            EXPECT_EQ(g_cClient.GetMediaType(nNew, tNew), bTakes ? 0 : 1);
            EXPECT_EQ(tNew.hHandle, reinterpret_cast<void*>(bTakes ? Journal().LastHandle() : 0));
            EXPECT_EQ(tNew.eType, bTakes ? eProtocolVTQ : eProtocolPrivate);
            ClientAdapter_RealStreamDisconnect(nNew);
            Journal().Take();
        }
        std::vector<int> anAll; // a full table is no error, but gives no ID
        for (int nID = -1; g_cClient.SetMeidaType(nID, nullptr, eProtocolVTQ), nID != -1; nID = -1)
        {
            anAll.push_back(nID);
        }
        EXPECT_EQ(Call(tFunction, tKnown), 0);
        EXPECT_EQ(nNew, -1);
        for (const int nID : anAll)
        {
            g_cClient.DeleteMediaType(nID);
        }
        ++m_nFullTables;
    }

    void TwoMedia(tagExport const& tRow, tagCallable const& tFunction)
    {
        const auto uKnown = static_cast<std::uintptr_t>(m_nMedia);
        EXPECT_EQ(Call(tFunction, {{0, uKnown}, {1, 999}}), -1);
        EXPECT_EQ(Call(tFunction, {{0, 999}, {1, uKnown}}), -1);
        EXPECT_EQ(m_tCapture.Text(), "");
        Journal().Answer(Entry(tRow), 19);
        EXPECT_EQ(Call(tFunction, {{0, uKnown}, {1, uKnown}}), 19);
        EXPECT_EQ(m_atCalls.at(0).auArguments, (std::vector<std::uintptr_t>{m_uMedia, m_uMedia}));
    }

    void Named(tagExport const& tRow, tagCallable const& tFunction)
    {
        EXPECT_EQ(Call(tFunction, {{tFunction.nArguments - 1, 7}}), 4);
        Journal().Answer(Entry(tRow), -9);
        EXPECT_EQ(Call(tFunction, {{tFunction.nArguments - 1, eProtocolVTQ}}), -9);
        m_auArguments.pop_back();
        m_auArguments.insert(m_auArguments.begin(), 0);
        EXPECT_EQ(m_atCalls.at(0).auArguments, m_auArguments);
    }

    // Asked are the protocols in their order; heard, those whose plug-ins are asked for the operation at all.
    void Broadcast(tagExport const& tRow, tagCallable const& tFunction, std::string const& strTypes)
    {
        Strings astrExpected;
        int nAnswer = 0;
        for (const char c : strTypes)
        {
            tagProtocol const& tProtocol = g_atProtocols[c - '0'];
            const std::string strOwn = tProtocol.szPrefix + tRow.strOperation;
            for (std::string const& strEntry : tProtocol.LookUp())
            {
                if (strEntry == strOwn || (strEntry == "RTSP_" + tRow.strOperation))
                {
                    astrExpected.push_back(strEntry);
                    Journal().Answer(strEntry, nAnswer = 5);
                }
            }
        }
        EXPECT_EQ(Call(tFunction, {}), strTypes == "2" ? nAnswer : 0) << "only one protocol's answer comes back";
        Strings astrCalled;
        for (tagCalled const& tCall : m_atCalls)
        {
            astrCalled.push_back(tCall.strEntry);
            EXPECT_EQ(tCall.auArguments, m_auArguments);
        }
        EXPECT_EQ(astrCalled, astrExpected);
    }

    std::vector<std::uintptr_t> m_auArguments;
    std::vector<tagCalled> m_atCalls;
    int m_nStatus = 0;
    int m_nFullTables = 0;
};

TEST_F(Shape, EveryExportedFunction)
{
#define EXPORTED(function)                 {#function, Callable(&function)},
#define EXPORT(shape, line, function, ...) EXPORTED(function)
    const std::map<std::string, tagCallable> tFunctions{
#include "adapter/exports.def"
        EXPORTED(ClientAdapter_GetConfig) EXPORTED(ClientAdapter_UserLogout) EXPORTED(ClientAdapter_GetLoginStatus) //
        EXPORTED(ClientAdapter_SubscribeEvent) EXPORTED(ClientAdapter_DeviceProbeStart)};
    std::istringstream tRows = Golden("exports.txt");
    std::size_t nRows = 0;
    for (tagExport tRow; tRows >> tRow.strFunction >> tRow.strShape >> tRow.nLine >> tRow.strOperation; ++nRows)
    {
        Check(tRow, tFunctions.at(tRow.strFunction));
    }
    EXPECT_EQ(nRows, tFunctions.size());
    std::fprintf(stderr, "tried: %zu functions by their shapes, a full table at %d opening ones\n", tFunctions.size(),
                 m_nFullTables);
}

// --- what fits no shape ----------------------------------------------------------------------------------------------

TEST_F(CSession, LoginsAndSerialNumbersNameTheirProtocol)
{
    int nID = 55;
    EXPECT_EQ(ClientAdapter_UserLogin(nullptr, eProtocolVTQ, &m_tLogin), -1);
    EXPECT_EQ(ClientAdapter_UserLogin(&nID, eProtocolVTQ, nullptr), -1);
    const std::string strLine = Line("ClientAdapter", "ClientAdapter_UserLogin", 126);
    EXPECT_EQ(m_tCapture.Text(), strLine + strLine);
    EXPECT_EQ(ClientAdapter_UserLogin(&nID, eProtocolPrivate, &m_tLogin), 4);
    Journal().Answer("VTQClient_UserLogin", 17);
    EXPECT_EQ(ClientAdapter_UserLogin(&nID, eProtocolVTQ, &m_tLogin), 17);
    EXPECT_EQ(nID, 55);

    EXPECT_EQ(ClientAdapter_SetConfigBySn("SN", static_cast<eProtocolType>(4), nullptr), 4);
    EXPECT_EQ(ClientAdapter_SetConfigBySn("SN", eProtocolPrivate, nullptr), 4);
    Journal().Answer("VTQClient_SetConfigBySn", 19);
    EXPECT_EQ(ClientAdapter_SetConfigBySn("SN", eProtocolVTQ, Argument<tagConfigInformationV2*>(0)), 19);
    EXPECT_NE(Journal().Take().back().auArguments.at(1), 0U);
}

// An RTSP login takes two slots, one for the binding's own record; a logout frees both.
TEST_F(CSession, RtspLoginsAndFullTables)
{
    const auto fnUsed = [] { return std::count(g_cClient.m_nUserState, std::end(g_cClient.m_nUserState), 2); };
    const auto nBefore = fnUsed();
    int nID = 0;
    EXPECT_EQ(ClientAdapter_UserLogin(&nID, eProtocolRTSP, &m_tLogin), 0);
    EXPECT_EQ(fnUsed(), nBefore + 2);
    EXPECT_EQ(ClientAdapter_UserLogout(nID), 0);
    EXPECT_EQ(fnUsed(), nBefore);

    std::vector<int> anIDs;
    while (ClientAdapter_UserLogin(&nID, eProtocolVTQ, &m_tLogin) == 0 && nID != -1)
    {
        anIDs.push_back(nID);
    }
    const int nLast = anIDs.back();
    anIDs.pop_back();
    ClientAdapter_UserLogout(nLast);
    g_cClient.m_nUserCursor = nLast; // as if the search had come to the one free slot
    EXPECT_EQ(ClientAdapter_UserLogin(&nID, eProtocolRTSP, &m_tLogin), 0);
    EXPECT_EQ(nID, -1) << "the binding's own record took the last slot";
    EXPECT_EQ(g_cProtocolSet.UserLogout(reinterpret_cast<void*>(static_cast<std::intptr_t>(nLast)), eProtocolRTSP), 0);
    std::for_each(anIDs.begin(), anIDs.end(), ClientAdapter_UserLogout);
}

TEST_F(CSession, ForceIFrameAndLoginStatus)
{
    const auto strLine = [](int nLine) { return Line("ClientAdapter", "ClientAdapter_ForceIFrame", nLine); };
    EXPECT_EQ(ClientAdapter_ForceIFrame(999, -1), 3);
    EXPECT_EQ(ClientAdapter_ForceIFrame(999, m_nMedia), 3);
    EXPECT_EQ(ClientAdapter_ForceIFrame(m_nLogin, 999), 3);
    EXPECT_EQ(m_tCapture.Text(), strLine(541) + strLine(547) + strLine(553));
    EXPECT_EQ(ClientAdapter_ForceIFrame(m_nLogin, m_nMedia), 0);
    EXPECT_EQ(Journal().Take().at(0).auArguments, (std::vector<std::uintptr_t>{m_uLogin, m_uMedia}));

    int nStatus = 55;
    Journal().Answer("VTQClient_GetLoginStatus", 2);
    EXPECT_EQ(ClientAdapter_GetLoginStatus(m_nLogin, nullptr), 4);
    EXPECT_EQ(ClientAdapter_GetLoginStatus(m_nLogin, &nStatus), 0);
    EXPECT_EQ(nStatus, 2);
    Journal().Answer("VTQClient_GetLoginStatus", -2);
    EXPECT_EQ(ClientAdapter_GetLoginStatus(m_nLogin, nullptr), 3);
    ClientAdapter_Stop();
    EXPECT_EQ(ClientAdapter_GetLoginStatus(m_nLogin, &nStatus), 0) << "no binding: the set's 4 is what comes back";
    EXPECT_EQ(nStatus, 4);
    ClientAdapter_Start(16);
    EXPECT_EQ(ClientAdapter_GetLoginStatus(m_nLogin, &nStatus), 3) << "IDs outlive a stop";
}

// --- start and stop --------------------------------------------------------------------------------------------------

TEST(Service, StartAndStopLines)
{
    CCapture tCapture;
    Journal().Reset();
    EXPECT_EQ(ClientAdapter_Stop(), 0);
    const std::string strNotStarted = Line("CProtocolSet", "Stop", 122);
    EXPECT_EQ(tCapture.Text(), strNotStarted + strNotStarted + strNotStarted);
    EXPECT_EQ(ClientAdapter_Start(77), 0);
    std::string strExpected;
    constexpr int anStart[] = {0, 62, 65, 69};
    for (tagProtocol const& tProtocol : {g_atProtocols[1], g_atProtocols[2], g_atProtocols[3]})
    {
        strExpected += Line("ClientAdapter", "ClientAdapter_Start", anStart[tProtocol.eType],
                            std::string("eProtocol") + tProtocol.szName) +
                       tProtocol.InsertText();
    }
    EXPECT_EQ(tCapture.Text(), strExpected);
    Strings astrCalled;
    std::vector<tagCalled> atCalls = Journal().Take();
    std::transform(atCalls.begin(), atCalls.end(), std::back_inserter(astrCalled), [](auto& t) { return t.strEntry; });
    EXPECT_EQ(astrCalled, (Strings{"OnvifClient_Start", "OnvifClient_SetProtocolInterface", "RTSPClient_Start",
                                   "RTSPClient_SetProtocolInterface", "VTQClient_Start",
                                   "VTQClient_SetProtocolInterface", "RTSPClient_SetMaxChannel"}));
    EXPECT_EQ(atCalls.back().auArguments.at(0), 77U);
    EXPECT_EQ(ClientAdapter_Start(78), 0);
    EXPECT_NE(tCapture.Text().find(Line("CProtocolSet", "InsertProtocol", 35)), std::string::npos);
    EXPECT_EQ(Journal().Take().size(), 7U) << "started again";
    EXPECT_EQ(ClientAdapter_Stop(), 0);
    EXPECT_EQ(Journal().Take().size(), 3U);
    EXPECT_EQ(tCapture.Text(), "");
    EXPECT_STREQ(g_cVersion, "Build 1.0.0.29024");
}

TEST(Service, Classes)
{
    CAdapta_ClientService tService;
    EXPECT_EQ(tService.Status(), 1);
    EXPECT_EQ(tService.Start(), 0);
    EXPECT_EQ(tService.Status(), 0);
    EXPECT_EQ(CAdapta_ClientService(tService).Status(), 1);
    CAdapta_ClientService tOther;
    tOther = tService;
    EXPECT_EQ(tOther.Status(), 1);
    EXPECT_EQ(tService.Stop(), 0);
    EXPECT_EQ(tService.Status(), 1);
    CAdapter_GlobalObject& tGlobal = Adapter_CommonKit::TSingletons<CAdapter_GlobalObject>::Instance();
    EXPECT_EQ(&tGlobal, &Adapter_CommonKit::TSingletons<CAdapter_GlobalObject>::Instance());
    EXPECT_NE(tGlobal.ProtocolResource(), &g_cProtocolSet);
    EXPECT_EQ(tGlobal.PlatformResource()->Start(), 0);
}

TEST_F(CSession, Extra)
{
    int nLogin = -1;
    int nMedia = -1;
    m_tStream.dwStreamKind = eStreamMain;
    EXPECT_EQ(ClientAdapter_UserLogin(&nLogin, eProtocolRTSP, &m_tLogin), 0);
    EXPECT_EQ(ClientAdapter_RealStreamConnect(&nMedia, nLogin, &m_tStream), 0);
    tagRTSPPackageInfo tInfo{};
    Journal().Answer("RTSPClient_GetPackageInfo", 209);
    EXPECT_EQ(TessaroExtra_GetStreamStatistics(nMedia, &tInfo), 209);
    EXPECT_EQ(Journal().Take().back().auArguments,
              (std::vector<std::uintptr_t>{Journal().LastHandle(), reinterpret_cast<std::uintptr_t>(&tInfo), 48, 0}));
    EXPECT_EQ(TessaroExtra_GetStreamStatistics(m_nMedia, &tInfo), 0) << "asks RTSP alone";
    EXPECT_EQ(TessaroExtra_GetStreamStatistics(-1, &tInfo), -1);
    ClientAdapter_RealStreamDisconnect(nMedia);
    ClientAdapter_UserLogout(nLogin);

    const std::string strOther = TessaroExtra_ResultText(12345);
    std::ifstream tHeader(TESSARO_GOLDEN "/../../protocol/interface/Results.h");
    std::set<std::string> astrTexts{strOther};
    std::size_t nResults = 1;
    for (std::string strLine; std::getline(tHeader, strLine);)
    {
        int nResult = 0;
        if (std::sscanf(strLine.c_str(), " eResult%*[A-Za-z] = %d,", &nResult) == 1)
        {
            astrTexts.insert(TessaroExtra_ResultText(nResult));
            ++nResults;
        }
    }
    EXPECT_EQ(nResults, 26U);
    EXPECT_EQ(astrTexts.size(), nResults) << "each has a text of its own";
    EXPECT_STREQ(TessaroExtra_ResultText(209), "the device has locked the account for a while");
    EXPECT_TRUE(std::string(TessaroExtra_Version()).ends_with(std::string(", ") + g_cVersion));
}

// The names of a protocol's entry points, asked as an application does.
Strings EntryPoints(eProtocolType eType, std::uint32_t dwState)
{
    Strings astrNames;
    tagEntryPoint tEntry{};
    tEntry.dwSize = sizeof tEntry;
    for (unsigned int i = 0; TessaroExtra_GetEntryPoint(eType, i, &tEntry) == eResultOk; ++i)
    {
        if (tEntry.dwState == dwState)
        {
            astrNames.emplace_back(tEntry.szSymbol);
        }
    }
    return astrNames;
}

TEST_F(CSession, EntryPointsAndLines)
{
    EXPECT_EQ(EntryPoints(eProtocolRTSP, eEntryPointThere).at(2), "RTSPClient_Create");
    EXPECT_EQ(EntryPoints(eProtocolOnvif, eEntryPointThere).size(), 127U);
    EXPECT_EQ(EntryPoints(eProtocolVTQ, eEntryPointThere).size(), 130U);
    tagEntryPoint tEntry{};
    tEntry.dwSize = sizeof tEntry - 1;
    EXPECT_EQ(TessaroExtra_GetEntryPoint(eProtocolVTQ, 0, &tEntry), eResultBadArgument);
    EXPECT_EQ(TessaroExtra_GetEntryPoint(eProtocolVTQ, 130, &tEntry), eResultNoMoreEntries);
    EXPECT_EQ(TessaroExtra_GetEntryPoint(static_cast<eProtocolType>(4), 0, &tEntry), eResultNoProtocol);
    g_cProtocolSet.RemoveProtocol(eProtocolOnvif);
    EXPECT_EQ(EntryPoints(eProtocolOnvif, eEntryPointUnbound).size(), 127U);

    static Strings s_astrLines;
    s_astrLines.clear();
    TessaroExtra_DiagnosticCB([](char const* szLine) { s_astrLines.emplace_back(szLine); });
    g_cProtocolSet.InsertProtocol(eProtocolOnvif, "/nowhere/libonvifclient.so");
    TessaroExtra_DiagnosticCB(nullptr);
    EXPECT_FALSE(s_astrLines.empty());
    EXPECT_EQ(s_astrLines.at(1), "[Tessaro] Module.cpp Open 60 Failed syserr:0 Success");
    const auto nLines = s_astrLines.size();
    ClientAdapter_UserLogout(-1);
    EXPECT_EQ(s_astrLines.size(), nLines);
    EXPECT_EQ(EntryPoints(eProtocolOnvif, eEntryPointMissing).size(), 127U);
}
} // namespace
