#include "tools/tessaro/Manual.h"

#include "adapter/ClientAdapterExtra.h"
#include "tools/tessaro/Failure.h"

#include <fmt/format.h>

namespace tessaro
{
namespace
{
struct tagVariable
{
    char const* szName;
    char const* szMeaning;
};
constexpr tagVariable g_atVariables[] = {
    {"TESSARO_PASSWORD", "the password of the user in the address"},
    {"TESSARO_PRIVATE_PLUGIN", "the plug-in of the private protocol; libvornclient.so if it isn't set"},
    {"LD_LIBRARY_PATH", "folders where plug-ins are looked for, beside the system's"},
};

std::string Escaped(std::string const& strText)
{
    std::string strEscaped;
    for (const char ch : strText)
    {
        strEscaped += ch == '\\' ? "\\\\" : ch == '-' ? "\\-" : std::string(1, ch);
    }
    return !strEscaped.empty() && (strEscaped[0] == '.' || strEscaped[0] == '\'') ? "\\&" + strEscaped : strEscaped;
}

std::string OptionNames(CLI::Option const& tOption)
{
    const std::string strType = tOption.get_positional() ? "" : tOption.get_type_name();
    return tOption.get_name(tOption.get_positional(), !tOption.get_positional()) +
           (strType.empty() || tOption.get_items_expected_max() == 0 ? "" : " " + strType);
}

std::string ManualOptions(CLI::App const& tApp)
{
    std::string strText;
    for (CLI::Option const* const pOption : tApp.get_options())
    {
        strText += fmt::format(".TP\n.B {}\n{}\n", Escaped(OptionNames(*pOption)), Escaped(pOption->get_description()));
    }
    return strText;
}

// The commands of a command line, and theirs.
std::string ManualCommands(CLI::App const& tApp, std::string const& strBefore)
{
    std::string strText;
    for (CLI::App const* const pLine : tApp.get_subcommands(nullptr))
    {
        const std::string strName = strBefore + pLine->get_name();
        strText += fmt::format(".SS {}\n{}\n{}{}", Escaped(strName), Escaped(pLine->get_description()),
                               ManualOptions(*pLine), ManualCommands(*pLine, strName + " "));
    }
    return strText;
}

std::string OptionWords(CLI::App const& tApp)
{
    std::string strWords;
    for (CLI::Option const* const pOption : tApp.get_options())
    {
        for (std::string const& strName : pOption->get_lnames())
        {
            strWords += " --" + strName;
        }
    }
    return strWords;
}
} // namespace

std::string ManualEnd()
{
    std::string strText = "Exit code:\n";
    for (tagExitText const& t : ExitTexts())
    {
        strText += fmt::format("  {}  {}\n", static_cast<int>(t.eCode), t.szMeaning);
    }
    strText += "\nEnvironment:\n";
    for (tagVariable const& t : g_atVariables)
    {
        strText += fmt::format("  {:<24}{}\n", t.szName, t.szMeaning);
    }
    return strText + "\nA password is never part of a command line. Times are UTC: 2024-05-31, 2024-05-31T08:00,\n"
                     "2024-05-31T08:00:00. Channels, inputs, outputs and windows count from 0. tessaro COMMAND --help\n"
                     "tells about a command.";
}

std::string ManualPage(CLI::App const& tApp)
{
    std::string strText = fmt::format(".TH TESSARO 1 \"\" \"{}\" \"User Commands\"\n.SH NAME\n"
                                      "tessaro \\- cameras, recorders and video decoders from the command line\n"
                                      ".SH SYNOPSIS\n.B tessaro\n[OPTIONS] COMMAND ...\n.SH DESCRIPTION\n{}\n"
                                      ".SH OPTIONS\n{}.SH COMMANDS\n{}.SH EXIT STATUS\n",
                                      TessaroExtra_Version(), Escaped(tApp.get_description()), ManualOptions(tApp),
                                      ManualCommands(tApp, ""));
    for (tagExitText const& t : ExitTexts())
    {
        strText += fmt::format(".TP\n.B {}\n{}\n", static_cast<int>(t.eCode), Escaped(t.szMeaning));
    }
    strText += ".SH ENVIRONMENT\n";
    for (tagVariable const& t : g_atVariables)
    {
        strText += fmt::format(".TP\n.B {}\n{}\n", t.szName, Escaped(t.szMeaning));
    }
    return strText;
}

std::string BashCompletion(CLI::App const& tApp)
{
    std::string strCases;
    std::string strCommands;
    for (CLI::App const* const pLine : tApp.get_subcommands(nullptr))
    {
        std::string strInner;
        for (CLI::App const* const pInner : pLine->get_subcommands(nullptr))
        {
            strInner += " " + pInner->get_name() + OptionWords(*pInner);
        }
        strCommands += " " + pLine->get_name();
        strCases += fmt::format("        {}) words+=\"{}{}\" ;;\n", pLine->get_name(), OptionWords(*pLine), strInner);
    }
    return fmt::format(
        "_tessaro()\n{{\n    local words=\"{}\" word command=\n"
        "    for word in \"${{COMP_WORDS[@]:1:COMP_CWORD-1}}\"; do\n"
        "        case \"$word\" in -*) ;; *) command=$word; break ;; esac\n    done\n"
        "    case \"$command\" in\n        '') words+=\"{}\" ;;\n{}    esac\n"
        "    COMPREPLY=($(compgen -W \"$words\" -- \"${{COMP_WORDS[COMP_CWORD]}}\"))\n"
        "    [ ${{#COMPREPLY[@]}} -gt 0 ] || COMPREPLY=($(compgen -f -- \"${{COMP_WORDS[COMP_CWORD]}}\"))\n"
        "}}\ncomplete -o filenames -F _tessaro tessaro",
        OptionWords(tApp), strCommands, strCases);
}
} // namespace tessaro
