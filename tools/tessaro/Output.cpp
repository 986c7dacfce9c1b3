#include "tools/tessaro/Output.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tessaro
{
namespace
{
// How a value looks to people.
std::string Plain(json const& tValue)
{
    if (tValue.is_string())
    {
        return tValue.get<std::string>();
    }
    if (tValue.is_null())
    {
        return "";
    }
    if (tValue.is_boolean())
    {
        return tValue.get<bool>() ? "yes" : "no";
    }
    if (tValue.is_array())
    {
        std::string strList;
        for (json const& t : tValue)
        {
            strList += (strList.empty() ? "" : ", ") + Plain(t);
        }
        return strList;
    }
    return tValue.dump();
}

// Characters, not bytes.
std::size_t Length(std::string const& strText)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(strText, [](char ch) { return (static_cast<unsigned char>(ch) & 0xC0) != 0x80; }));
}

std::string Padded(std::string const& strText, std::size_t nWidth)
{
    const std::size_t nLength = Length(strText);
    return strText + std::string(nWidth > nLength ? nWidth - nLength : 0, ' ');
}
} // namespace

void COutput::Open(bool bJson, bool bVerbose)
{
    m_bJson = bJson;
    m_bTerminal = isatty(STDOUT_FILENO) == 1;
    const int nOwn = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    const int nLibrary = bVerbose ? STDERR_FILENO : open("/dev/null", O_WRONLY | O_CLOEXEC);
    std::FILE* const pFile = nOwn < 0 ? nullptr : fdopen(nOwn, "w");
    if (pFile && nLibrary >= 0)
    {
        m_pFile = pFile;
        dup2(nLibrary, STDOUT_FILENO);
    }
    if (nLibrary >= 0 && nLibrary != STDERR_FILENO)
    {
        close(nLibrary);
    }
}

std::size_t COutput::Width() const
{
    winsize tSize{};
    return m_bTerminal && ioctl(fileno(m_pFile), TIOCGWINSZ, &tSize) == 0 && tSize.ws_col > 0 ? tSize.ws_col : 100;
}

void COutput::Line(std::string const& strLine)
{
    EndStatus();
    fmt::print(m_pFile, "{}\n", strLine);
    std::fflush(m_pFile);
}

void COutput::Result(json const& tResult, bool bLine)
{
    if (m_bJson)
    {
        Line(tResult.dump(bLine ? -1 : 2, ' ', false, json::error_handler_t::replace));
    }
}

void COutput::Table(std::vector<tagColumn> const& atColumns, json const& tRows)
{
    if (m_bJson || tRows.empty())
    {
        return;
    }
    std::vector<std::string> astrLines(tRows.size() + 1);
    for (tagColumn const& tColumn : atColumns)
    {
        std::vector<std::string> astrCells{tColumn.szHeading};
        for (json const& tRow : tRows)
        {
            astrCells.push_back(tRow.contains(tColumn.szKey) ? Plain(tRow.at(tColumn.szKey)) : "");
        }
        std::size_t nWidth = 0;
        bool bEmpty = true;
        for (std::size_t i = 0; i < astrCells.size(); ++i)
        {
            nWidth = std::max(nWidth, Length(astrCells[i]));
            bEmpty = bEmpty && (i == 0 || astrCells[i].empty());
        }
        for (std::size_t i = 0; i < astrCells.size() && !bEmpty; ++i)
        {
            astrLines[i] += Padded(astrCells[i], nWidth + 2);
        }
    }
    for (std::string& strLine : astrLines)
    {
        strLine.erase(strLine.find_last_not_of(' ') + 1);
        Line(strLine);
    }
}

void COutput::Fields(json const& tObject, std::string const& strIndent)
{
    if (m_bJson)
    {
        return;
    }
    std::size_t nWidth = 0;
    for (auto const& [strKey, tValue] : tObject.items())
    {
        nWidth = std::max(nWidth, Length(strKey));
    }
    for (auto const& [strKey, tValue] : tObject.items())
    {
        const bool bObjects = tValue.is_array() && !tValue.empty() && tValue[0].is_object();
        if (!tValue.is_object() && !bObjects)
        {
            Line(fmt::format("{}{}  {}", strIndent, Padded(strKey, nWidth), Plain(tValue)));
            continue;
        }
        Line(strIndent + strKey);
        for (json const& tInner : bObjects ? tValue : json::array({tValue}))
        {
            Fields(tInner, strIndent + "  ");
            if (bObjects && &tInner != &tValue.back())
            {
                Line("");
            }
        }
    }
}

void COutput::Status(std::string const& strLine, bool bAlways)
{
    if (m_bJson)
    {
        return;
    }
    if (!m_bTerminal)
    {
        if (bAlways)
        {
            Line(strLine);
        }
        return;
    }
    std::string strShown = strLine;
    while (Length(strShown) >= Width())
    {
        strShown.pop_back();
    }
    fmt::print(m_pFile, "\r{}\x1b[K", strShown);
    std::fflush(m_pFile);
    m_bStatus = true;
}

void COutput::EndStatus()
{
    if (m_bStatus)
    {
        m_bStatus = false;
        std::fputc('\n', m_pFile);
        std::fflush(m_pFile);
    }
}

std::string SizeText(double dBytes)
{
    static constexpr char const* s_aszUnits[] = {"B", "kB", "MB", "GB", "TB", "PB"};
    std::size_t i = 0;
    for (; dBytes >= 1000 && i + 1 < std::size(s_aszUnits); ++i)
    {
        dBytes /= 1000;
    }
    return i == 0 ? fmt::format("{:.0f} B", dBytes) : fmt::format("{:.1f} {}", dBytes, s_aszUnits[i]);
}

std::string BarText(double dShare, std::size_t nWidth)
{
    const auto nFull = static_cast<std::size_t>(std::clamp(dShare, 0.0, 1.0) * static_cast<double>(nWidth) + 0.5);
    return "[" + std::string(nFull, '#') + std::string(nWidth - nFull, '.') + "]";
}
} // namespace tessaro
