#pragma once

#include "tools/tessaro/Context.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace CLI
{
class App;
class Option;
} // namespace CLI

/// The command line: what it may be, and what it was. The library that reads it is Line.cpp's own affair.
namespace tessaro
{
/// What a command does when its command line was read: what the program ends with (eExit), or a CFailure.
using Action = std::function<int(tagContext&)>;

/// An option, or an argument by its place, that was added to a line.
class COption
{
public:
    explicit COption(CLI::Option& tOption) : m_tOption(tOption) {}

    COption& Needed(bool bNeeded = true);
    COption& Value(char const* szWord); ///< what help calls the value
    COption& OneOf(std::vector<std::string> const& astrWords);
    COption& Positive();
    COption& Between(unsigned int dwLeast, unsigned int dwMost);
    COption& List(); ///< several, with commas between
    COption& NotWith(COption const& tOther);
    /// The function says what is wrong with a word; empty: nothing.
    COption& Checked(char const* szWord, std::function<std::string(std::string const&)> fnCheck);

private:
    CLI::Option& m_tOption;
};

/// A command's line, or the whole program's. What options fill is the caller's and outlives the reading.
class CLine
{
public:
    CLine(CLI::App& tApp, Action& fnChosen) : m_tApp(tApp), m_fnChosen(fnChosen) {}

    /// An option ("--seconds"), or an argument by its place ("address"). T: unsigned int, unsigned long, double,
    /// std::string, or a vector of std::string or unsigned long.
    template <class T>
    COption Option(std::string const& strName, T& tTarget, std::string const& strHelp);
    void Flag(char const* szName, bool& bTarget, std::string const& strHelp);
    /// A command below this one.
    CLine Add(char const* szName, char const* szHelp);
    CLine Add(char const* szName, char const* szHelp, Action fnAction);
    /// What happens when none of its own commands is given.
    void Does(Action fnAction);
    /// One of its own commands must be given.
    void NeedsCommand();

private:
    CLI::App& m_tApp;
    Action& m_fnChosen;
};

/// What help says, for other forms of it.
struct tagOptionText
{
    std::string strName; ///< as the manual shows it: "--seconds N"
    std::string strHelp;
    std::vector<std::string> astrWords; ///< what can be typed
};
struct tagLineText
{
    std::string strName;
    std::string strHelp;
    std::vector<tagOptionText> atOptions;
    std::vector<tagLineText> atCommands;
};

class CCommandLine
{
public:
    CCommandLine(std::string const& strAbout, std::string const& strEnd, std::string const& strVersion);
    ~CCommandLine();
    CCommandLine(CCommandLine const&) = delete;
    CCommandLine& operator=(CCommandLine const&) = delete;

    CLine Line();
    /// False: nothing is left to do but to end with nExit; help was asked for, or the line is wrong, which was said.
    bool Read(int nArguments, char** aszArguments, int& nExit);
    /// What the command that was given does; null: none was given.
    Action const& Chosen() const { return m_fnChosen; }
    std::string Help() const;
    tagLineText Text() const;

private:
    std::unique_ptr<CLI::App> m_pApp;
    Action m_fnChosen;
};

/// A word as it was typed: a negative number gets its sign back, which the reading takes from it.
std::string Typed(std::string const& strWord);
} // namespace tessaro
