#include "tools/tessaro/Line.h"

#include "tools/tessaro/Failure.h"

#include <CLI/CLI.hpp>
#include <cctype>

namespace tessaro
{
namespace
{
// How a negative number begins: with the sign of mathematics, which a value may begin with, unlike an option's.
constexpr char g_szMinus[] = "\u2212";

std::string OptionName(CLI::Option const& tOption)
{
    const bool bPlace = tOption.get_positional();
    const std::string strValue = bPlace || tOption.get_items_expected_max() == 0 ? "" : tOption.get_type_name();
    return tOption.get_name(bPlace, !bPlace) + (strValue.empty() ? "" : " " + strValue);
}

tagLineText TextOf(CLI::App const& tApp)
{
    tagLineText tLine{tApp.get_name(), tApp.get_description(), {}, {}};
    for (CLI::Option const* const pOption : tApp.get_options())
    {
        tLine.atOptions.push_back({OptionName(*pOption), pOption->get_description(), {}});
        for (std::string const& strName : pOption->get_lnames())
        {
            tLine.atOptions.back().astrWords.push_back("--" + strName);
        }
    }
    for (CLI::App const* const pCommand : tApp.get_subcommands(nullptr))
    {
        tLine.atCommands.push_back(TextOf(*pCommand));
    }
    return tLine;
}
} // namespace

std::string Typed(std::string const& strWord)
{
    return strWord.starts_with(g_szMinus) ? "-" + strWord.substr(std::size(g_szMinus) - 1) : strWord;
}

// --- an option -------------------------------------------------------------------------------------------------------

COption& COption::Needed(bool bNeeded)
{
    m_tOption.required(bNeeded);
    return *this;
}

COption& COption::Value(char const* szWord)
{
    m_tOption.type_name(szWord);
    return *this;
}

COption& COption::OneOf(std::vector<std::string> const& astrWords)
{
    m_tOption.check(CLI::IsMember(astrWords));
    return *this;
}

COption& COption::Positive()
{
    m_tOption.check(CLI::PositiveNumber);
    return *this;
}

COption& COption::Between(unsigned int dwLeast, unsigned int dwMost)
{
    m_tOption.check(CLI::Range(dwLeast, dwMost));
    return *this;
}

COption& COption::List()
{
    m_tOption.delimiter(',');
    return *this;
}

COption& COption::NotWith(COption const& tOther)
{
    m_tOption.excludes(&tOther.m_tOption);
    return *this;
}

COption& COption::Checked(char const* szWord, std::function<std::string(std::string const&)> fnCheck)
{
    m_tOption.check(CLI::Validator([fnCheck](std::string& strWord) { return fnCheck(strWord); }, szWord));
    return *this;
}

// --- a line ----------------------------------------------------------------------------------------------------------

template <class T>
COption CLine::Option(std::string const& strName, T& tTarget, std::string const& strHelp)
{
    return COption(*m_tApp.add_option(strName, tTarget, strHelp));
}
template COption CLine::Option(std::string const&, unsigned int&, std::string const&);
template COption CLine::Option(std::string const&, unsigned long&, std::string const&);
template COption CLine::Option(std::string const&, double&, std::string const&);
template COption CLine::Option(std::string const&, std::string&, std::string const&);
template COption CLine::Option(std::string const&, std::vector<std::string>&, std::string const&);
template COption CLine::Option(std::string const&, std::vector<unsigned long>&, std::string const&);

void CLine::Flag(char const* szName, bool& bTarget, std::string const& strHelp)
{
    m_tApp.add_flag(szName, bTarget, strHelp);
}

CLine CLine::Add(char const* szName, char const* szHelp)
{
    CLI::App& tCommand = *m_tApp.add_subcommand(szName, szHelp);
    tCommand.fallthrough();
    if (m_tApp.get_require_subcommand_max() == 0) // nothing is said yet
    {
        m_tApp.require_subcommand(0, 1);
    }
    return {tCommand, m_fnChosen};
}

CLine CLine::Add(char const* szName, char const* szHelp, Action fnAction)
{
    CLine tLine = Add(szName, szHelp);
    tLine.Does(std::move(fnAction));
    return tLine;
}

void CLine::Does(Action fnAction)
{
    // Called for the command that was given first, then for those that it belongs to.
    m_tApp.callback([&fnChosen = m_fnChosen, fnAction] { fnChosen = fnChosen ? fnChosen : fnAction; });
}

void CLine::NeedsCommand()
{
    m_tApp.require_subcommand(1);
}

// --- all of it -------------------------------------------------------------------------------------------------------

CCommandLine::CCommandLine(std::string const& strAbout, std::string const& strEnd, std::string const& strVersion)
    : m_pApp(std::make_unique<CLI::App>(strAbout, "tessaro"))
{
    m_pApp->footer(strEnd);
    m_pApp->set_version_flag("--version", strVersion);
}

CCommandLine::~CCommandLine() = default;

CLine CCommandLine::Line()
{
    return {*m_pApp, m_fnChosen};
}

bool CCommandLine::Read(int nArguments, char** aszArguments, int& nExit)
{
    std::vector<std::string> astr;
    for (int i = nArguments - 1; i > 0; --i) // CLI11 takes them from the last on
    {
        const std::string str = aszArguments[i];
        const bool bNumber = str.size() > 1 && str[0] == '-' && std::isdigit(static_cast<unsigned char>(str[1])) != 0;
        astr.push_back(bNumber ? g_szMinus + str.substr(1) : str);
    }
    try
    {
        m_pApp->parse(astr);
        return true;
    }
    catch (CLI::ParseError const& tError)
    {
        m_pApp->exit(tError);
        nExit = tError.get_exit_code() == 0 ? eExitDone : eExitUsage;
        return false;
    }
}

std::string CCommandLine::Help() const
{
    return m_pApp->help();
}

tagLineText CCommandLine::Text() const
{
    return TextOf(*m_pApp);
}
} // namespace tessaro
