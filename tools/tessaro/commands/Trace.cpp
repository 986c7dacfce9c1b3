// trace: what a program and its plug-ins say to each other, and the same calls made again.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Password.h"
#include "tools/tessaro/Plugins.h"
#include "tools/tessaro/replay/Replay.h"

#include <RecordTables.h>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace tessaro
{
namespace
{
struct tagTraceOptions
{
    std::string strFile;
    bool bReplay = false;
    bool bFast = false;
    std::vector<std::string> astrProgram;
};

constexpr char g_szTracer[] = "libtessaro-trace.so";

struct tagStandIn
{
    eProtocolType eProtocol;
    char const* szVariable;
};
constexpr tagStandIn g_atStandIns[] = {
    {eProtocolOnvif, "TESSARO_TRACE_ONVIF"},
    {eProtocolRTSP, "TESSARO_TRACE_RTSP"},
    {eProtocolVTQ, "TESSARO_TRACE_VTQ"},
    {eProtocolPrivate, "TESSARO_TRACE_PRIVATE"},
};

std::string FindTracer()
{
    std::vector<std::string> astrFolders = SearchFolders();
    astrFolders.push_back(std::filesystem::path(LibraryFile()).parent_path().string());
    for (std::string const& strFolder : astrFolders)
    {
        const std::filesystem::path tFile = std::filesystem::path(strFolder) / g_szTracer;
        std::error_code tError;
        if (std::filesystem::exists(tFile, tError))
        {
            return std::filesystem::absolute(tFile).string();
        }
    }
    throw CFailure(eExitNoPlugin, std::string(g_szTracer) + " isn't there", "install it beside the plug-ins");
}

// A folder whose plug-ins are all the tracing one, gone at the end.
class CStandIns
{
public:
    CStandIns()
    {
        char szFolder[] = "/tmp/tessaro-trace-XXXXXX";
        if (!mkdtemp(szFolder))
        {
            throw CFailure(eExitFailed, "no folder can be made in /tmp");
        }
        m_tFolder = szFolder;
    }
    ~CStandIns()
    {
        std::error_code tError;
        std::filesystem::remove_all(m_tFolder, tError);
    }
    CStandIns(CStandIns const&) = delete;
    CStandIns& operator=(CStandIns const&) = delete;

    std::string Add(std::string const& strName, std::string const& strTracer) const
    {
        std::filesystem::create_symlink(strTracer, m_tFolder / strName);
        return (m_tFolder / strName).string();
    }
    std::string Folder() const { return m_tFolder.string(); }

private:
    std::filesystem::path m_tFolder;
};

int RunProgram(std::vector<std::string> const& astrProgram)
{
    const pid_t nChild = fork();
    if (nChild == 0)
    {
        std::vector<char*> apsz;
        for (std::string const& str : astrProgram)
        {
            apsz.push_back(const_cast<char*>(str.c_str()));
        }
        apsz.push_back(nullptr);
        dup2(STDERR_FILENO, STDOUT_FILENO); // ours goes nowhere: standard output is the summary's
        execvp(apsz[0], apsz.data());
        fmt::print(stderr, "tessaro: {} can't be run: {}\n", astrProgram[0], strerror(errno));
        _exit(127);
    }
    int nStatus = 0;
    while (waitpid(nChild, &nStatus, 0) < 0 && errno == EINTR)
    {
        // Ctrl-C is the program's too; it ends, and so do we
    }
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 128 + WTERMSIG(nStatus);
}

// Each line of a trace. Throws CFailure for a file that is none.
template <class F>
void ForEachLine(std::string const& strFile, F fnLine)
{
    std::ifstream tFile(strFile);
    if (!tFile)
    {
        throw CFailure(eExitUsage, strFile + " can't be read");
    }
    std::size_t nLine = 0;
    for (std::string strLine; std::getline(tFile, strLine);)
    {
        ++nLine;
        const json t = json::parse(strLine, nullptr, false);
        if (!t.is_object() || !t.contains("t") || !(t.contains("call") || t.contains("callback")))
        {
            throw CFailure(eExitFailed, fmt::format("line {} of {} is none of a trace", nLine, strFile));
        }
        fnLine(t, nLine);
    }
}

// What was called how often, how long it took, how often it failed.
json Summary(std::string const& strFile)
{
    json tRows = json::array();
    std::map<std::string, std::size_t> tRowOf;
    ForEachLine(strFile,
                [&](json const& t, std::size_t)
                {
                    const bool bCall = t.contains("call");
                    const std::string strName =
                        t[bCall ? "call" : "callback"].get<std::string>() + (bCall ? "" : " (callback)");
                    const auto [it, bNew] = tRowOf.try_emplace(strName, tRows.size());
                    if (bNew)
                    {
                        tRows.push_back({{"call", strName}, {"count", 0}, {"failed", 0}, {"ms", 0.0}});
                    }
                    json& tRow = tRows[it->second];
                    tRow["count"] = tRow["count"].get<int>() + 1;
                    tRow["failed"] = tRow["failed"].get<int>() + (bCall && t["result"] != 0);
                    tRow["ms"] = tRow["ms"].get<double>() + (bCall ? t["us"].get<double>() / 1000 : 0);
                });
    return tRows;
}

int Record(tagContext& tContext, tagTraceOptions const& tOptions)
{
    if (tOptions.astrProgram.empty())
    {
        throw CFailure(eExitUsage, "a program to run is missing: tessaro trace FILE -- PROGRAM ARGUMENTS");
    }
    const std::string strTracer = FindTracer();
    const CStandIns tStandIns;
    for (tagStandIn const& t : g_atStandIns)
    {
        const bool bPrivate = t.eProtocol == eProtocolPrivate && getenv("TESSARO_PRIVATE_PLUGIN");
        const tagTrial tTrial =
            TryPlugin(t.eProtocol, bPrivate ? getenv("TESSARO_PRIVATE_PLUGIN") : PluginName(t.eProtocol));
        if (tTrial.bOpened)
        {
            setenv(t.szVariable, std::filesystem::absolute(tTrial.strFile).c_str(), 1);
            const std::string strLink = tStandIns.Add(PluginName(t.eProtocol), strTracer);
            if (bPrivate)
            {
                setenv("TESSARO_PRIVATE_PLUGIN", strLink.c_str(), 1);
            }
        }
    }
    char const* const szFolders = getenv("LD_LIBRARY_PATH");
    setenv("LD_LIBRARY_PATH", (tStandIns.Folder() + (szFolders ? std::string(":") + szFolders : "")).c_str(), 1);
    setenv("TESSARO_TRACE_FILE", std::filesystem::absolute(tOptions.strFile).c_str(), 1);
    std::error_code tError;
    std::filesystem::remove(tOptions.strFile, tError);
    std::vector<std::string> astrProgram;
    std::ranges::transform(tOptions.astrProgram, std::back_inserter(astrProgram), &Typed);
    const int nExit = RunProgram(astrProgram);
    if (!std::filesystem::exists(tOptions.strFile, tError))
    {
        throw CFailure(eExitFailed,
                       fmt::format("{} called no plug-in; it ended with {}", tOptions.astrProgram[0], nExit));
    }
    const json tRows = Summary(tOptions.strFile);
    tContext.tOut.Table({{"CALL", "call"}, {"COUNT", "count"}, {"FAILED", "failed"}, {"MS", "ms"}}, tRows);
    tContext.tOut.Result({{"file", tOptions.strFile}, {"program_exit_code", nExit}, {"calls", tRows}});
    return nExit == 0 ? eExitDone : eExitFailed;
}

int Replay(tagContext& tContext, tagTraceOptions const& tOptions)
{
    const std::string strPassword = getenv("TESSARO_PASSWORD") || !tContext.strPasswordFile.empty()
                                        ? AskPassword(tContext.strPasswordFile, "")
                                        : "";
    std::map<std::string, std::unique_ptr<CReplay>> tPlugins; // by the beginning of their names
    static constexpr std::pair<char const*, eProtocolType> s_atPrefixes[] = {
        {"OnvifClient", eProtocolOnvif}, {"RTSPClient", eProtocolRTSP},    {"RTSP", eProtocolRTSP},
        {"VTQClient", eProtocolVTQ},     {"VornClient", eProtocolPrivate},
    };
    std::size_t nCalls = 0;
    json tDifferent = json::array();
    const long long llBegin = NowMs();
    ForEachLine(
        tOptions.strFile,
        [&](json const& t, std::size_t nLine)
        {
            // What one plug-in asked of another it asks for again by itself.
            if (!t.contains("call") || t.contains("inside") || CInterrupt::Instance().Asked())
            {
                return;
            }
            const std::string strPrefix =
                t["call"].get<std::string>().substr(0, t["call"].get<std::string>().find('_'));
            auto& pPlugin = tPlugins[strPrefix];
            if (!pPlugin)
            {
                const auto* const pt =
                    std::ranges::find_if(s_atPrefixes, [&](auto const& r) { return strPrefix == r.first; });
                if (pt == std::end(s_atPrefixes))
                {
                    return;
                }
                pPlugin = std::make_unique<CReplay>(
                    tContext.strPlugin.empty() ? PluginName(pt->second) : tContext.strPlugin, strPassword);
            }
            const long long llWait = llBegin + static_cast<long long>(t["t"].get<double>() * 1000) - NowMs();
            if (!tOptions.bFast && llWait > 0)
            {
                CInterrupt::Instance().Wait(static_cast<int>(llWait));
            }
            const int nResult = pPlugin->Call(t);
            ++nCalls;
            if (nResult != t["result"].get<int>())
            {
                tDifferent.push_back({{"line", nLine}, {"call", t["call"]}, {"then", t["result"]}, {"now", nResult}});
            }
        });
    if (!tDifferent.empty())
    {
        tContext.tOut.Table({{"LINE", "line"}, {"CALL", "call"}, {"THEN", "then"}, {"NOW", "now"}}, tDifferent);
    }
    tContext.tOut.Say("{} calls, {} with another result, {} callbacks", nCalls, tDifferent.size(),
                      CReplay::Callbacks());
    tContext.tOut.Result({{"calls", nCalls}, {"different", tDifferent}, {"callbacks", CReplay::Callbacks()}});
    return tDifferent.empty() ? eExitDone : eExitFailed;
}
} // namespace

void DeclareTrace(CLine& tLine)
{
    auto pt = std::make_shared<tagTraceOptions>();
    tLine.Option("file", pt->strFile, "the trace: a line of JSON for each call and callback; passwords show as ***")
        .Needed();
    tLine.Option("program", pt->astrProgram, "after --: the program to run, and its arguments");
    tLine.Flag("--replay", pt->bReplay, "make the calls of the trace again, and show which results differ");
    tLine.Flag("--fast", pt->bFast, "replay without the pauses between calls");
    tLine.Does([pt](tagContext& t) { return pt->bReplay ? Replay(t, *pt) : Record(t, *pt); });
}
} // namespace tessaro
