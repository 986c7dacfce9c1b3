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

std::string ManualOptions(tagLineText const& tLine)
{
    std::string strText;
    for (tagOptionText const& t : tLine.atOptions)
    {
        strText += fmt::format(".TP\n.B {}\n{}\n", Escaped(t.strName), Escaped(t.strHelp));
    }
    return strText;
}

// The commands of a command line, and theirs.
std::string ManualCommands(tagLineText const& tLine, std::string const& strBefore)
{
    std::string strText;
    for (tagLineText const& t : tLine.atCommands)
    {
        const std::string strName = strBefore + t.strName;
        strText += fmt::format(".SS {}\n{}\n{}{}", Escaped(strName), Escaped(t.strHelp), ManualOptions(t),
                               ManualCommands(t, strName + " "));
    }
    return strText;
}

std::string OptionWords(tagLineText const& tLine)
{
    std::string strWords;
    for (tagOptionText const& t : tLine.atOptions)
    {
        for (std::string const& strWord : t.astrWords)
        {
            strWords += " " + strWord;
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

std::string ManualPage(tagLineText const& tAll)
{
    std::string strText =
        fmt::format(".TH TESSARO 1 \"\" \"{}\" \"User Commands\"\n.SH NAME\n"
                    "tessaro \\- cameras, recorders and video decoders from the command line\n"
                    ".SH SYNOPSIS\n.B tessaro\n[OPTIONS] COMMAND ...\n.SH DESCRIPTION\n{}\n"
                    ".SH OPTIONS\n{}.SH COMMANDS\n{}.SH EXIT STATUS\n",
                    TessaroExtra_Version(), Escaped(tAll.strHelp), ManualOptions(tAll), ManualCommands(tAll, ""));
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

std::string BashCompletion(tagLineText const& tAll)
{
    std::string strCases;
    std::string strCommands;
    for (tagLineText const& t : tAll.atCommands)
    {
        std::string strInner;
        for (tagLineText const& tInner : t.atCommands)
        {
            strInner += " " + tInner.strName + OptionWords(tInner);
        }
        strCommands += " " + t.strName;
        strCases += fmt::format("        {}) words+=\"{}{}\" ;;\n", t.strName, OptionWords(t), strInner);
    }
    return fmt::format(
        "_tessaro()\n{{\n    local words=\"{}\" word command=\n"
        "    for word in \"${{COMP_WORDS[@]:1:COMP_CWORD-1}}\"; do\n"
        "        case \"$word\" in -*) ;; *) command=$word; break ;; esac\n    done\n"
        "    case \"$command\" in\n        '') words+=\"{}\" ;;\n{}    esac\n"
        "    COMPREPLY=($(compgen -W \"$words\" -- \"${{COMP_WORDS[COMP_CWORD]}}\"))\n"
        "    [ ${{#COMPREPLY[@]}} -gt 0 ] || COMPREPLY=($(compgen -f -- \"${{COMP_WORDS[COMP_CWORD]}}\"))\n"
        "}}\ncomplete -o filenames -F _tessaro tessaro",
        OptionWords(tAll), strCommands, strCases);
}
} // namespace tessaro
