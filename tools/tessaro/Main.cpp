// tessaro: a device or a stream from the command line, whatever protocol it speaks.

#include "adapter/ClientAdapterExtra.h"
#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Manual.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace tessaro
{
namespace
{
constexpr char g_szAbout[] =
    "Talks to cameras, recorders and video decoders through the Tessaro client adapter: the same commands whatever "
    "protocol a device speaks.";

void AddGlobals(CLI::App& tApp, tagContext& tContext)
{
    tApp.add_flag("--json", tContext.bJson,
                  "write results as JSON: one document, or one a line for what comes over time");
    tApp.add_flag("--verbose", tContext.bVerbose, "show the library's diagnostic lines, on standard error");
    tApp.add_option("--password-file", tContext.strPasswordFile,
                    "take the password from this file's first line; else it is that of TESSARO_PASSWORD, or asked for")
        ->type_name("FILE");
    tApp.add_option("--plugin", tContext.strPlugin, "use this plug-in for the address's protocol")->type_name("FILE");
    tApp.add_option("--timeout", tContext.dwTimeoutMs, "the longest that a call may take, in milliseconds")
        ->type_name("MS");
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

// A negative number isn't an option: its sign becomes the one of mathematics, which a value may begin with.
std::vector<std::string> Arguments(int nArguments, char** aszArguments)
{
    std::vector<std::string> astr;
    for (int i = nArguments - 1; i > 0; --i) // CLI11 takes them from the last on
    {
        const std::string str = aszArguments[i];
        const bool bNumber = str.size() > 1 && str[0] == '-' && std::isdigit(static_cast<unsigned char>(str[1])) != 0;
        astr.push_back(bNumber ? g_szMinus + str.substr(1) : str);
    }
    return astr;
}

int Run(int nArguments, char** aszArguments)
{
    tagContext tContext;
    Action fnAction;
    CLI::App tApp(g_szAbout, "tessaro");
    tApp.footer(ManualEnd());
    tApp.require_subcommand(0, 1);
    AddGlobals(tApp, tContext);
    tApp.set_version_flag("--version", std::string("tessaro ") + TessaroExtra_Version());
    std::string strManual;
    tApp.add_option("--help-as", strManual, "print this help as a manual page or as completion for bash")
        ->type_name("man|bash")
        ->check(CLI::IsMember({"man", "bash"}));
    for (tagCommand const& tCommand : Commands())
    {
        CLI::App* const pLine = tApp.add_subcommand(tCommand.szName, tCommand.szHelp);
        pLine->fallthrough();
        const Action fnCommand = tCommand.pfnDeclare(*pLine);
        pLine->callback([&fnAction, fnCommand] { fnAction = fnCommand; });
    }
    try
    {
        tApp.parse(Arguments(nArguments, aszArguments));
    }
    catch (CLI::ParseError const& tError)
    {
        const bool bHelp = tError.get_exit_code() == 0;
        tApp.exit(tError);
        return bHelp ? eExitDone : eExitUsage;
    }
    if (!strManual.empty())
    {
        std::puts((strManual == "man" ? ManualPage(tApp) : BashCompletion(tApp)).c_str());
        return eExitDone;
    }
    if (!fnAction)
    {
        std::fputs(tApp.help().c_str(), stderr);
        return eExitUsage;
    }
    return Perform(tContext, fnAction);
}
} // namespace
} // namespace tessaro

int main(int nArguments, char** aszArguments)
{
    return tessaro::Run(nArguments, aszArguments);
}
