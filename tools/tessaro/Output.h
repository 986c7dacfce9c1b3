#pragma once

#include "tools/tessaro/records/Records.h"

#include <cstdio>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace tessaro
{
/// A column of a table: its heading, and the key of what stands in it.
struct tagColumn
{
    char const* szHeading;
    char const* szKey;
};

/// Where a command's results go: text for people or JSON for programs. Standard output is this object's alone: the
/// library writes its diagnostic lines there too, which go elsewhere once it exists. One in the process.
class COutput
{
public:
    /// With bVerbose the library's lines go to standard error, else nowhere.
    void Open(bool bJson, bool bVerbose);

    bool IsJson() const { return m_bJson; }
    bool IsTerminal() const { return m_bTerminal; }
    std::size_t Width() const; ///< of the terminal in characters; 100 where there is none

    /// A line for people.
    template <class... A>
    void Say(fmt::format_string<A...> szFormat, A&&... tArguments)
    {
        if (!m_bJson)
        {
            Line(fmt::format(szFormat, std::forward<A>(tArguments)...));
        }
    }
    /// The result, for programs. A command writes one document, or one object a line for what comes over time (bLine).
    void Result(json const& tResult, bool bLine = false);
    /// A list of objects: for people a table of the columns that hold something.
    void Table(std::vector<tagColumn> const& atColumns, json const& tRows);
    /// An object for people, a line for each value.
    void Fields(json const& tObject, std::string const& strIndent = "");
    /// How it stands: on a terminal a line that takes the place of the one before, else nothing unless bAlways.
    void Status(std::string const& strLine, bool bAlways = false);
    void EndStatus(); ///< the last status stays

private:
    void Line(std::string const& strLine);

    std::FILE* m_pFile = stdout;
    bool m_bJson = false;
    bool m_bTerminal = false;
    bool m_bStatus = false;
};

/// "1.5 MB"
std::string SizeText(double dBytes);
/// "[#####.....]"
std::string BarText(double dShare, std::size_t nWidth);
} // namespace tessaro
