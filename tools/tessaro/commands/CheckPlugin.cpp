// check-plugin: whether a plug-in keeps the promises of the interface, for its author. One line a rule.

#include "adapter/ClientAdapterExtra.h"
#include "adapter/Globals.h"
#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Plugins.h"
#include "tools/tessaro/check/Rules.h"

#include <RecordTables.h>
#include <csignal>
#include <filesystem>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace tessaro
{
namespace
{
constexpr unsigned int g_dwRuleSeconds = 120;

struct tagCheckPluginOptions
{
    std::string strFile;
    std::string strAddress;
};

struct tagReport
{
    COutput& tOut;
    json tRules = json::array();
    int nBroken = 0;

    void Add(char const* szRule, char const* szPromise, tagVerdict const& t)
    {
        static constexpr char const* s_aszWords[] = {"ok", "BROKEN", "skipped"};
        tRules.push_back(
            {{"rule", szRule}, {"promise", szPromise}, {"verdict", s_aszWords[t.eWhat]}, {"text", t.strText}});
        tOut.Say("{:<8} {:<15} {}{}", s_aszWords[t.eWhat], szRule, szPromise,
                 t.strText.empty() ? "" : ": " + t.strText);
        nBroken += t.eWhat == tagVerdict::eBroken;
    }
};

// Loads and starts the plug-in, and RTSP's, through which others get their streams.
int StartTried(tagTried const& tTried, std::string const& strFile)
{
    if (!tTried.IsRtsp())
    {
        g_cProtocolSet.InsertProtocol(eProtocolRTSP, PluginName(eProtocolRTSP).c_str());
        g_cProtocolSet.Start(eProtocolRTSP);
    }
    g_cProtocolSet.InsertProtocol(tTried.eProtocol, strFile.c_str());
    const int nStarted = g_cProtocolSet.Start(tTried.eProtocol);
    g_cProtocolSet.SetMaxChannel(16, eProtocolRTSP);
    return nStarted;
}

// One rule in a process of its own, so that a plug-in which crashes breaks that rule alone.
tagVerdict TryRule(tagRule const& tRule, tagTried tTried, std::string const& strFile)
{
    int anPipe[2];
    if (pipe(anPipe) != 0)
    {
        throw CFailure(eExitFailed, "no pipe is left");
    }
    std::fflush(nullptr);
    const pid_t nChild = fork();
    if (nChild == 0)
    {
        alarm(g_dwRuleSeconds);
        const int nStarted = StartTried(tTried, strFile);
        const tagVerdict t = nStarted == eResultOk
                                 ? tRule.pfnTry(tTried)
                                 : tagVerdict{tagVerdict::eBroken, fmt::format("Start answers {}", nStarted)};
        g_cProtocolSet.Stop(tTried.eProtocol);
        g_cProtocolSet.Stop(eProtocolRTSP);
        const std::string strAnswer = fmt::format("{}{}", static_cast<int>(t.eWhat), t.strText);
        [[maybe_unused]] const auto nWritten = write(anPipe[1], strAnswer.data(), strAnswer.size());
        _exit(0);
    }
    close(anPipe[1]);
    std::string strAnswer;
    char ach[4096];
    for (ssize_t n = 0; (n = read(anPipe[0], ach, sizeof ach)) > 0;)
    {
        strAnswer.append(ach, static_cast<std::size_t>(n));
    }
    close(anPipe[0]);
    int nStatus = 0;
    waitpid(nChild, &nStatus, 0);
    if (!strAnswer.empty())
    {
        return {static_cast<tagVerdict::eKind>(strAnswer[0] - '0'), strAnswer.substr(1)};
    }
    return {tagVerdict::eBroken, !WIFSIGNALED(nStatus) ? "it ends the process"
                                 : WTERMSIG(nStatus) == SIGALRM
                                     ? fmt::format("it hangs: {} s", g_dwRuleSeconds)
                                     : fmt::format("it crashes: {}", strsignal(WTERMSIG(nStatus)))};
}

// Whose plug-in it is shows in the names of its entry points.
tagTrial Recognise(std::string const& strFile, eProtocolType& eProtocol)
{
    tagTrial tBest;
    for (const eProtocolType e : {eProtocolOnvif, eProtocolRTSP, eProtocolVTQ, eProtocolPrivate})
    {
        const tagTrial t = TryPlugin(e, strFile);
        if (!t.bOpened)
        {
            return t;
        }
        if (!tBest.bOpened || t.nThere > tBest.nThere)
        {
            tBest = t;
            eProtocol = e;
        }
    }
    return tBest;
}

int Run(tagContext& tContext, tagCheckPluginOptions const& tOptions)
{
    std::error_code tError;
    const std::string strFile = std::filesystem::absolute(tOptions.strFile, tError).string();
    if (!std::filesystem::exists(strFile, tError))
    {
        throw CFailure(eExitUsage, "there is no file " + tOptions.strFile);
    }
    tagReport tReport{tContext.tOut};
    tagTried tTried{};
    bool bRight = false;
    const std::string strKind = FileKind(strFile, bRight);
    tReport.Add("kind", "it is a library for this machine",
                {bRight ? tagVerdict::eKept : tagVerdict::eBroken, strKind});
    const tagTrial tTrial = Recognise(strFile, tTried.eProtocol);
    tReport.Add("loads", "it can be loaded",
                {tTrial.bOpened ? tagVerdict::eKept : tagVerdict::eBroken, tTrial.strProblem});
    if (tTrial.bOpened)
    {
        std::string strMissing = fmt::format("{}: {} there", NameOf(tTried.eProtocol), tTrial.nThere);
        for (std::string const& str : tTrial.astrMissing)
        {
            strMissing += ", " + str + " is missing";
        }
        tReport.Add("names", "it has every entry point",
                    {tTrial.astrMissing.empty() ? tagVerdict::eKept : tagVerdict::eBroken, strMissing});
    }
    if (tTrial.nThere > 0)
    {
        if (!tOptions.strAddress.empty())
        {
            const tagAddress tAddress = tagAddress::Parse(tOptions.strAddress);
            if (tAddress.eProtocol != tTried.eProtocol)
            {
                throw CFailure(eExitUsage,
                               "this is a plug-in of " + NameOf(tTried.eProtocol) + ": give an address of that");
            }
            tTried.tLogin = LoginRecord(tContext, tAddress);
        }
        for (auto const& atRules : {CallRules(), StreamRules()})
        {
            for (tagRule const& tRule : atRules)
            {
                const bool bSkip = tRule.bDevice && tOptions.strAddress.empty();
                tReport.Add(tRule.szName, tRule.szPromise,
                            bSkip ? tagVerdict{tagVerdict::eSkipped, "needs the address of a device"}
                                  : TryRule(tRule, tTried, strFile));
            }
        }
    }
    tContext.tOut.Say("{}", tReport.nBroken == 0 ? "no rule is broken" : fmt::format("{} broken", tReport.nBroken));
    tContext.tOut.Result({{"file", strFile},
                          {"protocol", NameOf(tTried.eProtocol)},
                          {"broken", tReport.nBroken},
                          {"rules", tReport.tRules}});
    return tReport.nBroken == 0 ? eExitDone : eExitFailed;
}
} // namespace

void DeclareCheckPlugin(CLine& tLine)
{
    auto pt = std::make_shared<tagCheckPluginOptions>();
    tLine.Option("file", pt->strFile, "the plug-in").Needed();
    tLine.Option("address", pt->strAddress,
                 "a device to try it on, of the plug-in's protocol; without it only what needs none is tried");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
