// tessaro: a device or a stream from the command line, whatever protocol it speaks.

#include "adapter/ClientAdapterExtra.h"
#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Manual.h"

#include <cstdio>

namespace tessaro
{
namespace
{
constexpr char g_szAbout[] =
    "Talks to cameras, recorders and video decoders through the Tessaro client adapter: the same commands whatever "
    "protocol a device speaks.";

void AddGlobals(CLine& tLine, tagContext& tContext)
{
    tLine.Flag("--json", tContext.bJson, "write results as JSON: one document, or one a line for what comes over time");
    tLine.Flag("--verbose", tContext.bVerbose, "show the library's diagnostic lines, on standard error");
    tLine
        .Option("--password-file", tContext.strPasswordFile,
                "take the password from this file's first line; else it is that of TESSARO_PASSWORD, or asked for")
        .Value("FILE");
    tLine.Option("--plugin", tContext.strPlugin, "use this plug-in for the address's protocol").Value("FILE");
    tLine.Option("--timeout", tContext.dwTimeoutMs, "the longest that a call may take, in milliseconds").Value("MS");
}

void Report(tagContext& tContext, CFailure const& tFailure)
{
    tContext.tOut.EndStatus();
    tContext.tOut.Result({{"error",
                           {{"exit_code", static_cast<int>(tFailure.Code())},
                            {"result", tFailure.Result()},
                            {"message", tFailure.what()},
                            {"advice", tFailure.Advice()}}}});
    fmt::print(stderr, "tessaro: {}\n", tFailure.what());
    if (!tFailure.Advice().empty())
    {
        fmt::print(stderr, "  {}\n", tFailure.Advice());
    }
}

int Perform(tagContext& tContext, Action const& fnAction)
{
    CInterrupt::Instance().Catch();
    tContext.tOut.Open(tContext.bJson, tContext.bVerbose);
    try
    {
        return fnAction(tContext);
    }
    catch (CFailure const& tFailure)
    {
        Report(tContext, tFailure);
        return tFailure.Code();
    }
    catch (std::exception const& tError)
    {
        Report(tContext, CFailure(eExitFailed, tError.what()));
        return eExitFailed;
    }
}

int Run(int nArguments, char** aszArguments)
{
    tagContext tContext;
    CCommandLine tCommandLine(g_szAbout, ManualEnd(), std::string("tessaro ") + TessaroExtra_Version());
    CLine tLine = tCommandLine.Line();
    AddGlobals(tLine, tContext);
    std::string strManual;
    tLine.Option("--help-as", strManual, "print this help as a manual page or as completion for bash")
        .Value("man|bash")
        .OneOf({"man", "bash"});
    for (tagCommand const& tCommand : Commands())
    {
        CLine tOwn = tLine.Add(tCommand.szName, tCommand.szHelp);
        tCommand.pfnDeclare(tOwn);
    }
    int nExit = eExitDone;
    if (!tCommandLine.Read(nArguments, aszArguments, nExit))
    {
        return nExit;
    }
    if (!strManual.empty())
    {
        const tagLineText tText = tCommandLine.Text();
        std::puts((strManual == "man" ? ManualPage(tText) : BashCompletion(tText)).c_str());
        return eExitDone;
    }
    if (!tCommandLine.Chosen())
    {
        std::fputs(tCommandLine.Help().c_str(), stderr);
        return eExitUsage;
    }
    return Perform(tContext, tCommandLine.Chosen());
}
} // namespace
} // namespace tessaro

int main(int nArguments, char** aszArguments)
{
    return tessaro::Run(nArguments, aszArguments);
}
