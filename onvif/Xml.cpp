#include "onvif/Xml.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>

namespace onvif
{
namespace
{
constexpr unsigned g_nDeepest = 100;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string_view Trimmed(std::string_view strText)
{
    while (!strText.empty() && IsBlank(strText.front()))
    {
        strText.remove_prefix(1);
    }
    while (!strText.empty() && IsBlank(strText.back()))
    {
        strText.remove_suffix(1);
    }
    return strText;
}

bool IsTooDeep(pugi::xml_node tRoot)
{
    unsigned nDepth = 0;
    for (pugi::xml_node tNode = tRoot; tNode;)
    {
        if (pugi::xml_node tChild = tNode.first_child())
        {
            if (++nDepth > g_nDeepest)
            {
                return true;
            }
            tNode = tChild;
            continue;
        }
        while (tNode && tNode != tRoot && !tNode.next_sibling())
        {
            tNode = tNode.parent();
            --nDepth;
        }
        tNode = tNode == tRoot ? pugi::xml_node() : tNode.next_sibling();
    }
    return false;
}

// A number at the front of strText, which is cut off.
template <class T>
std::optional<T> CutNumber(std::string_view& strText)
{
    T nNumber{};
    const auto tResult = std::from_chars(strText.data(), strText.data() + strText.size(), nNumber);
    if (tResult.ec != std::errc())
    {
        return std::nullopt;
    }
    strText.remove_prefix(static_cast<std::size_t>(tResult.ptr - strText.data()));
    return nNumber;
}

bool CutChar(std::string_view& strText, char c)
{
    const bool bThere = strText.starts_with(c);
    strText.remove_prefix(bThere ? 1 : 0);
    return bThere;
}

// ".25" in microseconds; more digits are cut.
std::int64_t CutFraction(std::string_view& strText)
{
    std::int64_t llMicroseconds = 0;
    if (CutChar(strText, '.') || CutChar(strText, ','))
    {
        for (std::int64_t llWorth = 100000; !strText.empty() && strText[0] >= '0' && strText[0] <= '9'; llWorth /= 10)
        {
            llMicroseconds += (strText[0] - '0') * llWorth;
            strText.remove_prefix(1);
        }
    }
    return llMicroseconds;
}

// "+02:00" or "Z" in seconds.
std::optional<std::int64_t> ZoneOf(std::string_view strText)
{
    if (strText.empty() || strText == "Z" || strText == "z")
    {
        return 0;
    }
    const bool bEast = strText[0] == '+';
    if (!bEast && strText[0] != '-')
    {
        return std::nullopt;
    }
    strText.remove_prefix(1);
    auto nHours = CutNumber<int>(strText);
    auto nMinutes = CutChar(strText, ':') ? CutNumber<int>(strText) : std::optional(0);
    if (!nHours || !nMinutes || *nHours < 0 || *nMinutes < 0 || *nHours > 1400 || !strText.empty())
    {
        return std::nullopt;
    }
    if (*nHours >= 100) // "0230"
    {
        nMinutes = *nHours % 100;
        nHours = *nHours / 100;
    }
    return (bEast ? 1 : -1) * (*nHours * 3600LL + *nMinutes * 60LL);
}
} // namespace

// --- reading ---------------------------------------------------------------------------------------------------------

std::shared_ptr<pugi::xml_document const> ParseXml(std::string strText)
{
    // The document stands in the text itself.
    struct tagParsed
    {
        std::string strText;
        pugi::xml_document tDocument;
    };
    const auto pParsed = std::make_shared<tagParsed>();
    pParsed->strText = std::move(strText);
    pugi::xml_document& tDocument = pParsed->tDocument;
    const auto tResult = tDocument.load_buffer_inplace(pParsed->strText.data(), pParsed->strText.size());
    return tResult && !IsTooDeep(tDocument) ? std::shared_ptr<pugi::xml_document const>(pParsed, &tDocument) : nullptr;
}

std::string_view WithoutPrefix(std::string_view strName)
{
    return strName.substr(strName.find(':') + 1); // npos + 1 is 0
}

std::string_view LocalName(pugi::xml_node tNode)
{
    return WithoutPrefix(tNode.name());
}

pugi::xml_node Child(pugi::xml_node tNode, std::string_view strName)
{
    for (pugi::xml_node const& tChild : tNode)
    {
        if (tChild.type() == pugi::node_element && LocalName(tChild) == strName)
        {
            return tChild;
        }
    }
    return {};
}

pugi::xml_node Find(pugi::xml_node tNode, std::string_view strPath)
{
    while (!strPath.empty() && tNode)
    {
        const std::string_view strStep = strPath.substr(0, strPath.find('/'));
        tNode = Child(tNode, strStep);
        strPath.remove_prefix(std::min(strStep.size() + 1, strPath.size()));
    }
    return tNode;
}

std::vector<pugi::xml_node> Children(pugi::xml_node tNode, std::string_view strName)
{
    std::vector<pugi::xml_node> atChildren;
    for (pugi::xml_node const& tChild : tNode)
    {
        if (tChild.type() == pugi::node_element && LocalName(tChild) == strName)
        {
            atChildren.push_back(tChild);
        }
    }
    return atChildren;
}

std::string_view Attribute(pugi::xml_node tNode, std::string_view strName)
{
    for (pugi::xml_attribute const& tAttribute : tNode.attributes())
    {
        if (WithoutPrefix(tAttribute.name()) == strName)
        {
            return tAttribute.value();
        }
    }
    return {};
}

std::string_view Text(pugi::xml_node tNode, std::string_view strPath)
{
    return Trimmed(Find(tNode, strPath).child_value());
}

std::optional<double> Number(pugi::xml_node tNode, std::string_view strPath)
{
    std::string_view strText = Text(tNode, strPath);
    CutChar(strText, '+');
    const auto dNumber = CutNumber<double>(strText);
    return dNumber && strText.empty() && std::isfinite(*dNumber) ? dNumber : std::nullopt;
}

std::optional<std::int64_t> Integer(pugi::xml_node tNode, std::string_view strPath)
{
    std::string_view strText = Text(tNode, strPath);
    CutChar(strText, '+');
    const auto llNumber = CutNumber<std::int64_t>(strText);
    return llNumber && strText.empty() ? llNumber : std::nullopt;
}

std::optional<bool> Truth(pugi::xml_node tNode, std::string_view strPath)
{
    const std::string_view strText = Text(tNode, strPath);
    const auto fnIs = [&](std::string_view strOther)
    {
        return std::ranges::equal(strText, strOther,
                                  [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
    };
    return fnIs("true") || strText == "1"    ? std::optional(true)
           : fnIs("false") || strText == "0" ? std::optional(false)
                                             : std::nullopt;
}

std::optional<std::int64_t> Time(pugi::xml_node tNode, std::string_view strPath)
{
    return ParseTime(Text(tNode, strPath));
}

// --- times -----------------------------------------------------------------------------------------------------------

std::optional<std::int64_t> ParseTime(std::string_view strText)
{
    namespace chr = std::chrono;
    strText = Trimmed(strText);
    const auto nYear = CutNumber<int>(strText);
    const bool bMonth = CutChar(strText, '-');
    const auto nMonth = CutNumber<unsigned>(strText);
    const bool bDay = CutChar(strText, '-');
    const auto nDay = CutNumber<unsigned>(strText);
    const bool bTime = CutChar(strText, 'T') || CutChar(strText, ' ');
    const auto nHour = CutNumber<unsigned>(strText);
    const bool bMinute = CutChar(strText, ':');
    const auto nMinute = CutNumber<unsigned>(strText);
    const auto nSecond = CutChar(strText, ':') ? CutNumber<unsigned>(strText) : std::optional(0U);
    if (!nYear || !bMonth || !nMonth || !bDay || !nDay || !bTime || !nHour || !bMinute || !nMinute || !nSecond)
    {
        return std::nullopt;
    }
    const std::int64_t llFraction = CutFraction(strText);
    const auto llZone = ZoneOf(strText);
    const chr::year_month_day tDate{chr::year(*nYear), chr::month(*nMonth), chr::day(*nDay)};
    if (!llZone || !tDate.ok() || *nYear < 1900 || *nYear > 9999 || *nHour > 24 || *nMinute > 59 || *nSecond > 60)
    {
        return std::nullopt;
    }
    const std::int64_t llDays = chr::sys_days(tDate).time_since_epoch().count();
    return (llDays * 86400 + *nHour * 3600LL + *nMinute * 60LL + *nSecond - *llZone) * 1000000 + llFraction;
}

std::optional<std::int64_t> ParseDuration(std::string_view strText)
{
    strText = Trimmed(strText);
    const bool bNegative = CutChar(strText, '-');
    if (!CutChar(strText, 'P') || strText.empty())
    {
        return std::nullopt;
    }
    double dMilliseconds = 0;
    bool bTime = false;
    while (!strText.empty())
    {
        bTime = CutChar(strText, 'T') || bTime;
        const auto dNumber = CutNumber<double>(strText);
        const double dUnit = CutChar(strText, 'D')            ? 86400e3
                             : CutChar(strText, 'H')          ? 3600e3
                             : bTime && CutChar(strText, 'M') ? 60e3
                             : CutChar(strText, 'S')          ? 1e3
                                                              : 0;
        if (!dNumber || dUnit == 0 || !(*dNumber >= 0) || *dNumber > 1e9)
        {
            return std::nullopt;
        }
        dMilliseconds += *dNumber * dUnit;
    }
    return std::llround(bNegative ? -dMilliseconds : dMilliseconds);
}

namespace
{
// With zeros in front of it.
void AddDigits(std::string& strText, unsigned nNumber, std::size_t nLeast)
{
    char szText[10];
    const auto nLength = static_cast<std::size_t>(std::to_chars(szText, szText + sizeof szText, nNumber).ptr - szText);
    strText.append(nLeast - std::min(nLeast, nLength), '0').append(szText, nLength);
}
} // namespace

std::string TimeText(std::int64_t llTimeUs)
{
    namespace chr = std::chrono;
    const chr::sys_time<chr::microseconds> tTime{chr::microseconds(llTimeUs)};
    const auto tDay = chr::floor<chr::days>(tTime);
    const chr::year_month_day tDate(tDay);
    const chr::hh_mm_ss tClock(tTime - tDay);
    const int nYear = static_cast<int>(tDate.year());
    std::string strText = nYear < 0 ? "-" : "";
    strText.reserve(28);
    AddDigits(strText, static_cast<unsigned>(std::abs(nYear)), 4);
    for (const auto& [c, nPart] :
         {std::pair('-', static_cast<unsigned>(tDate.month())), std::pair('-', static_cast<unsigned>(tDate.day())),
          std::pair('T', static_cast<unsigned>(tClock.hours().count())),
          std::pair(':', static_cast<unsigned>(tClock.minutes().count())),
          std::pair(':', static_cast<unsigned>(tClock.seconds().count()))})
    {
        strText += c;
        AddDigits(strText, nPart, 2);
    }
    if (const auto llFraction = tClock.subseconds().count())
    {
        strText += '.';
        AddDigits(strText, static_cast<unsigned>(llFraction), 6);
    }
    return strText + 'Z';
}

std::string DurationText(std::int64_t llMilliseconds)
{
    return "PT" + NumberText(static_cast<double>(llMilliseconds) / 1000) + 'S';
}

std::string NumberText(double dNumber)
{
    char szText[400];
    const auto tResult = std::to_chars(szText, szText + sizeof szText, dNumber, std::chars_format::fixed);
    return std::string(szText, tResult.ptr);
}

// --- writing ---------------------------------------------------------------------------------------------------------

std::string Escaped(std::string_view strText)
{
    constexpr auto fnIsPlain = [](char c)
    {
        const bool bHidden = static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
        return !bHidden && c != '&' && c != '<' && c != '>' && c != '"';
    };
    std::string strEscaped;
    strEscaped.reserve(strText.size());
    while (!strText.empty())
    {
        const auto nPlain = static_cast<std::size_t>(std::ranges::find_if_not(strText, fnIsPlain) - strText.begin());
        strEscaped.append(strText.substr(0, nPlain));
        strText.remove_prefix(nPlain);
        if (!strText.empty())
        {
            const char c = strText.front();
            strEscaped += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : "";
            strText.remove_prefix(1);
        }
    }
    return strEscaped;
}

void CXmlWriter::EndTag()
{
    if (m_bInTag)
    {
        m_strXml += '>';
        m_bInTag = false;
    }
}

CXmlWriter& CXmlWriter::Open(std::string_view strName)
{
    EndTag();
    m_strXml.append("<").append(strName);
    m_astrOpen.emplace_back(strName);
    m_bInTag = true;
    return *this;
}

CXmlWriter& CXmlWriter::Attribute(std::string_view strName, std::string_view strValue)
{
    m_strXml.append(" ").append(strName).append("=\"").append(Escaped(strValue)).append("\"");
    return *this;
}

CXmlWriter& CXmlWriter::Close()
{
    EndTag();
    m_strXml.append("</").append(m_astrOpen.back()).append(">");
    m_astrOpen.pop_back();
    return *this;
}

CXmlWriter& CXmlWriter::Add(std::string_view strName, std::string_view strText)
{
    return Open(strName).Text(strText).Close();
}

CXmlWriter& CXmlWriter::Text(std::string_view strText)
{
    return Raw(Escaped(strText));
}

CXmlWriter& CXmlWriter::Raw(std::string_view strXml)
{
    EndTag();
    m_strXml += strXml;
    return *this;
}

std::string CXmlWriter::Take()
{
    while (!m_astrOpen.empty())
    {
        Close();
    }
    return std::move(m_strXml);
}

namespace
{
struct tagToString : pugi::xml_writer
{
    void write(void const* pData, size_t nSize) override { strXml.append(static_cast<char const*>(pData), nSize); }
    std::string strXml;
};

std::string Print(pugi::xml_node tNode)
{
    tagToString tWriter;
    tNode.print(tWriter, "", pugi::format_raw | pugi::format_no_declaration);
    return std::move(tWriter.strXml);
}

// The declarations that hold at tNode; of each prefix the innermost.
std::map<std::string, std::string> Declarations(pugi::xml_node tNode)
{
    std::map<std::string, std::string> tDeclarations;
    for (; tNode; tNode = tNode.parent())
    {
        for (pugi::xml_attribute const& tAttribute : tNode.attributes())
        {
            if (std::string_view(tAttribute.name()).starts_with("xmlns"))
            {
                tDeclarations.emplace(tAttribute.name(), tAttribute.value());
            }
        }
    }
    return tDeclarations;
}
} // namespace

std::string Serialized(pugi::xml_node tNode)
{
    pugi::xml_document tDocument;
    pugi::xml_node tCopy = tDocument.append_copy(tNode);
    for (auto const& [strName, strValue] : Declarations(tNode))
    {
        if (!tCopy.attribute(strName.c_str()))
        {
            tCopy.append_attribute(strName.c_str()) = strValue.c_str();
        }
    }
    return Print(tCopy);
}

std::string SerializedChildren(pugi::xml_node tNode)
{
    std::string strXml;
    for (pugi::xml_node const& tChild : tNode)
    {
        strXml += tChild.type() == pugi::node_element ? Serialized(tChild) : Print(tChild);
    }
    return strXml;
}
} // namespace onvif
