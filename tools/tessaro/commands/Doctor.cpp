// doctor: which plug-ins are there and why others aren't; then a device, step by step.

#include "adapter/ClientAdapterExtra.h"
#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Plugins.h"
#include "tools/tessaro/Stream.h"

#include <RecordTables.h>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace tessaro
{
namespace
{
constexpr eProtocolType g_aeProtocols[] = {eProtocolOnvif, eProtocolRTSP, eProtocolVTQ, eProtocolPrivate};
constexpr std::int64_t g_llClockOffUs = 2000000;

// --- plug-ins --------------------------------------------------------------------------------------------------------

std::string PluginAdvice(tagTrial const& tTrial, bool bRight, std::string const& strKind)
{
    if (access(tTrial.strFile.c_str(), R_OK) != 0)
    {
        return "this user may not read it: give everyone the right to";
    }
    if (!bRight)
    {
        bool bIgnored = false;
        return fmt::format("the library is {}, this file {}: install the plug-in for the library's machine",
                           FileKind(LibraryFile(), bIgnored), strKind);
    }
    if (tTrial.strProblem.find("cannot open shared object file") != std::string::npos)
    {
        return "a library that the plug-in needs is missing: install it";
    }
    if (tTrial.strProblem.find("undefined symbol") != std::string::npos)
    {
        return "the plug-in was built against another version of a library that it needs";
    }
    return "tell the plug-in's author";
}

// One file where a plug-in could be.
json TryFile(eProtocolType eProtocol, std::string const& strFile, tagTrial& tFound)
{
    json tTried = {{"file", strFile}};
    std::error_code tError;
    if (!std::filesystem::exists(strFile, tError))
    {
        tTried["problem"] = tError ? tError.message() : "there is no such file";
        return tTried;
    }
    bool bRight = false;
    const std::string strKind = FileKind(strFile, bRight);
    const tagTrial tTrial = TryPlugin(eProtocol, strFile);
    tTried["kind"] = strKind;
    if (!tTrial.bOpened)
    {
        tTried["problem"] = tTrial.strProblem;
        tTried["advice"] = PluginAdvice(tTrial, bRight, strKind);
    }
    else
    {
        tFound = tTrial;
    }
    return tTried;
}

json ExaminePlugin(eProtocolType eProtocol, std::string const& strPlugin)
{
    const std::string strName = strPlugin.empty() ? PluginName(eProtocol) : strPlugin;
    json tResult = {{"protocol", NameOf(eProtocol)}, {"name", strName}, {"state", "missing"}, {"file", nullptr}};
    json tTried = json::array();
    tagTrial tFound;
    bool bBroken = false;
    std::vector<std::string> astrFiles;
    if (strName.find('/') != std::string::npos)
    {
        astrFiles.push_back(strName);
    }
    else
    {
        for (std::string const& strFolder : SearchFolders())
        {
            astrFiles.push_back(strFolder + "/" + strName);
        }
        astrFiles.push_back(strName); // the loader's cache knows more folders
    }
    for (std::string const& strFile : astrFiles)
    {
        const bool bByCache = strFile == strName && strFile.find('/') == std::string::npos;
        if (bByCache)
        {
            const tagTrial tTrial = TryPlugin(eProtocol, strFile);
            tFound = tTrial.bOpened ? tTrial : tFound;
            break;
        }
        tTried.push_back(TryFile(eProtocol, strFile, tFound));
        bBroken = bBroken || tTried.back().contains("advice");
        if (tFound.bOpened)
        {
            break;
        }
    }
    if (tFound.bOpened)
    {
        tResult["state"] = tFound.astrMissing.empty() ? "good" : tFound.nThere == 0 ? "useless" : "incomplete";
        tResult["file"] = tFound.strFile;
        tResult["entry_points"] = {{"there", tFound.nThere}, {"missing", tFound.astrMissing}};
        if (!tFound.astrMissing.empty())
        {
            tResult["advice"] = tFound.nThere == 0
                                    ? "it has no entry point of this protocol: it is another library"
                                    : "what is missing answers 1, \"can't do this\"; a newer plug-in may have it";
        }
    }
    else
    {
        tResult["state"] = bBroken ? "broken" : "missing";
        tResult["advice"] = bBroken ? "see the file above that is there"
                                    : "install it in one of these folders, or add its folder to LD_LIBRARY_PATH";
    }
    tResult["tried"] = tTried;
    return tResult;
}

void ShowPlugin(COutput& tOut, json const& tPlugin)
{
    const bool bFound = !tPlugin["file"].is_null();
    tOut.Say("{:<8} {:<10} {}", tPlugin["protocol"].get<std::string>(), tPlugin["state"].get<std::string>(),
             bFound ? tPlugin["file"].get<std::string>() : tPlugin["name"].get<std::string>());
    for (json const& tTried : tPlugin["tried"])
    {
        if (tTried.contains("problem"))
        {
            tOut.Say("           {}: {}", tTried["file"].get<std::string>(), tTried["problem"].get<std::string>());
        }
        if (tTried.contains("advice"))
        {
            tOut.Say("           -> {}", tTried["advice"].get<std::string>());
        }
    }
    if (bFound)
    {
        json const& tMissing = tPlugin["entry_points"]["missing"];
        tOut.Say("           {} entry points, {} missing", tPlugin["entry_points"]["there"].get<int>(),
                 tMissing.size());
        for (std::size_t i = 0; i < tMissing.size() && i < 10; ++i)
        {
            tOut.Say("           {} is missing", tMissing[i].get<std::string>());
        }
        if (tMissing.size() > 10)
        {
            tOut.Say("           and {} more, with --json all of them", tMissing.size() - 10);
        }
    }
    if (tPlugin.contains("advice"))
    {
        tOut.Say("           -> {}", tPlugin["advice"].get<std::string>());
    }
}

json Environment()
{
    json tResult = json::object();
    for (char const* const szName : {"LD_LIBRARY_PATH", "TESSARO_PRIVATE_PLUGIN", "TESSARO_FLEET"})
    {
        char const* const szValue = getenv(szName);
        tResult[szName] = szValue ? json(szValue) : json(nullptr);
    }
    tResult["TESSARO_PASSWORD"] = getenv("TESSARO_PASSWORD") ? json("(set)") : json(nullptr);
    return tResult;
}

// --- a device --------------------------------------------------------------------------------------------------------

class CSteps
{
public:
    explicit CSteps(COutput& tOut) : m_tOut(tOut) {}

    void Good(std::string const& strStep, std::string const& strText, bool bGood = true,
              std::string const& strAdvice = "")
    {
        m_tOut.Say("{}  {:<12} {}", bGood ? "ok  " : "FAIL", strStep, strText);
        if (!strAdvice.empty())
        {
            m_tOut.Say("                   -> {}", strAdvice);
        }
        m_tSteps.push_back({{"step", strStep}, {"ok", bGood}, {"text", strText}, {"advice", strAdvice}});
    }
    void Bad(std::string const& strStep, CFailure const& tFailure)
    {
        Good(strStep, tFailure.what(), false, tFailure.Advice());
        m_nExit = tFailure.Code();
    }
    /// Runs a step; false: it failed.
    template <class F>
    bool Try(std::string const& strStep, F fnStep)
    {
        try
        {
            fnStep();
            return true;
        }
        catch (CFailure const& tFailure)
        {
            Bad(strStep, tFailure);
            return false;
        }
    }
    json const& All() const { return m_tSteps; }
    int Exit() const { return m_nExit; }

private:
    COutput& m_tOut;
    json m_tSteps = json::array();
    int m_nExit = eExitDone;
};

void CheckClock(CSteps& tSteps, std::int64_t llDeviceUs)
{
    const std::int64_t llOffsetUs = llDeviceUs - NowUs();
    const bool bGood = std::abs(llOffsetUs) < g_llClockOffUs;
    tSteps.Good("clock",
                fmt::format("{}, {:.1f} s {} this machine's", TimeText(llDeviceUs),
                            static_cast<double>(std::abs(llOffsetUs)) / 1e6, llOffsetUs < 0 ? "behind" : "ahead of"),
                bGood, bGood ? "" : "set the device's clock, best by NTP: tessaro config ADDRESS set clock");
}

void CheckDevice(CSteps& tSteps, CSession const& tSession)
{
    int nLevel = 0;
    ClientAdapter_GetLoginLevel(tSession.Login(), &nLevel);
    tSteps.Good("level", nLevel == 0 ? "not known" : NameOf(static_cast<eUserLevel>(nLevel)));
    tSteps.Try("clock",
               [&]
               {
                   tagConfigClock tClock{};
                   Check(tSession.Read(eConfigClock, 0, tClock), "reading the clock");
                   CheckClock(tSteps, tClock.llTimeUs);
               });
    tSteps.Try("profiles",
               [&]
               {
                   tagConfigVideoEncoder tVideo{};
                   Check(tSession.Read(eConfigVideoEncoder, 0, tVideo, eStreamMain), "reading how channel 0 is coded");
                   tSteps.Good("profiles",
                               fmt::format("{} channels; channel 0: {} {}x{} at {} frames a second",
                                           tSession.Channels(), NameOf(static_cast<eMediaCodec>(tVideo.dwCodec)),
                                           tVideo.dwWidth, tVideo.dwHeight, tVideo.dwFrameRate / 1000.0));
               });
}

void CheckPicture(CSteps& tSteps, CSession const& tSession)
{
    tSteps.Try("first frame",
               [&]
               {
                   const long long llBegin = NowMs();
                   CLiveStream tStream(tSession, {}, nullptr);
                   tStream.AwaitFirst();
                   const auto t = tStream.Count().Totals();
                   tSteps.Good("first frame", fmt::format("{} {}x{} after {} ms", t.tVideo.strCodec, t.tVideo.dwWidth,
                                                          t.tVideo.dwHeight, NowMs() - llBegin));
                   if (tSession.IsRtsp() && t.llWallClockUs != 0)
                   {
                       CheckClock(tSteps, t.llWallClockUs);
                   }
               });
}

void CheckAddress(tagContext& tContext, CSteps& tSteps, std::string const& strAddress)
{
    std::unique_ptr<CSession> pSession;
    const bool bIn = tSteps.Try("login",
                                [&]
                                {
                                    pSession = std::make_unique<CSession>(tContext, strAddress);
                                    tSteps.Good("login", pSession->IsRtsp() ? "a stream has none: see its first frame"
                                                                            : "as " + pSession->Address().strUser);
                                });
    if (!bIn)
    {
        return;
    }
    if (!pSession->IsRtsp())
    {
        CheckDevice(tSteps, *pSession);
    }
    CheckPicture(tSteps, *pSession);
}

// --- all of it -------------------------------------------------------------------------------------------------------

int Run(tagContext& tContext, std::string const& strAddress)
{
    COutput& tOut = tContext.tOut;
    const tagAddress tAddress = strAddress.empty() ? tagAddress{} : tagAddress::Parse(strAddress);
    bool bIgnored = false;
    json tResult = {
        {"library",
         {{"version", TessaroExtra_Version()}, {"file", LibraryFile()}, {"kind", FileKind(LibraryFile(), bIgnored)}}},
        {"environment", Environment()},
        {"plugins", json::array()}};
    tOut.Say("library  {} ({}), {}", TessaroExtra_Version(), tResult["library"]["kind"].get<std::string>(),
             LibraryFile());
    for (auto const& [strName, tValue] : tResult["environment"].items())
    {
        tOut.Say("         {} {}", strName, tValue.is_null() ? "isn't set" : "= " + tValue.get<std::string>());
    }
    bool bUsable = false;
    bool bBroken = false;
    bool bWanted = false; // the plug-in of the address
    for (const eProtocolType eProtocol : g_aeProtocols)
    {
        const bool bMeant = !strAddress.empty() && eProtocol == tAddress.eProtocol;
        const json tPlugin = ExaminePlugin(eProtocol, bMeant ? tContext.strPlugin : "");
        const bool bGood = tPlugin["state"] == "good" || tPlugin["state"] == "incomplete";
        bUsable = bUsable || bGood;
        bWanted = bWanted || (bMeant && bGood);
        bBroken = bBroken || tPlugin["state"] == "broken" || tPlugin["state"] == "useless";
        tResult["plugins"].push_back(tPlugin);
        ShowPlugin(tOut, tPlugin);
    }
    int nExit = !bUsable || (!strAddress.empty() && !bWanted) ? eExitNoPlugin : bBroken ? eExitFailed : eExitDone;
    if (!strAddress.empty() && bWanted && !bBroken)
    {
        tOut.Say("device   {}", strAddress);
        CSteps tSteps(tOut);
        CheckAddress(tContext, tSteps, strAddress);
        tResult["device"] = {{"address", strAddress}, {"steps", tSteps.All()}};
        nExit = tSteps.Exit();
    }
    else if (!strAddress.empty())
    {
        tOut.Say("device   not tried: first the plug-ins above");
    }
    tResult["exit_code"] = nExit;
    tOut.Result(tResult);
    return nExit;
}
} // namespace

void DeclareDoctor(CLine& tLine)
{
    auto pstrAddress = std::make_shared<std::string>();
    tLine.Option("address", *pstrAddress, g_szAddressHelp);
    tLine.Does([pstrAddress](tagContext& tContext) { return Run(tContext, *pstrAddress); });
}
} // namespace tessaro
