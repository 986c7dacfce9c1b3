#include "onvif/Incoming.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

namespace onvif
{
namespace
{
constexpr std::size_t g_nMostBytes = std::size_t{1} << 20;
constexpr std::size_t g_nMostHead = std::size_t{16} << 10;

bool IsEqual(std::string_view strLeft, std::string_view strLower)
{
    return std::ranges::equal(strLeft, strLower,
                              [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
}

// A header's value; the name in lower case. Nothing: it isn't there.
std::optional<std::string_view> Header(std::string_view strHead, std::string_view strName)
{
    for (std::size_t nBegin = strHead.find("\r\n"); nBegin != std::string_view::npos;)
    {
        const std::size_t nEnd = strHead.find("\r\n", nBegin + 2);
        std::string_view strLine =
            strHead.substr(nBegin + 2, nEnd == std::string_view::npos ? nEnd : nEnd - nBegin - 2);
        if (strLine.size() > strName.size() && strLine[strName.size()] == ':' &&
            IsEqual(strLine.substr(0, strName.size()), strName))
        {
            strLine.remove_prefix(strName.size() + 1);
            strLine.remove_prefix(std::min(strLine.find_first_not_of(" \t"), strLine.size()));
            return strLine;
        }
        nBegin = nEnd;
    }
    return std::nullopt;
}
} // namespace

CIncoming::eState CIncoming::TakeChunks(std::string_view strRest)
{
    m_strBody.clear();
    for (;;)
    {
        const std::size_t nLine = strRest.find("\r\n");
        if (nLine == std::string_view::npos)
        {
            return eState::Partial;
        }
        std::size_t nLength = 0;
        if (std::from_chars(strRest.data(), strRest.data() + nLine, nLength, 16).ec != std::errc{} ||
            nLength > g_nMostBytes)
        {
            return eState::Bad;
        }
        if (nLength == 0)
        {
            return eState::Whole; // what follows the last chunk isn't of use
        }
        if (strRest.size() < nLine + 2 + nLength + 2)
        {
            return eState::Partial;
        }
        m_strBody.append(strRest.substr(nLine + 2, nLength));
        strRest.remove_prefix(nLine + 2 + nLength + 2);
    }
}

CIncoming::eState CIncoming::Take(std::string_view strBytes)
{
    m_strBytes.append(strBytes);
    const std::size_t nHead = m_strBytes.find("\r\n\r\n");
    if (nHead == std::string::npos)
    {
        return m_strBytes.size() > g_nMostHead ? eState::Bad : eState::Partial;
    }
    const std::string_view strHead = std::string_view(m_strBytes).substr(0, nHead);
    const std::string_view strRest = std::string_view(m_strBytes).substr(nHead + 4);
    const std::size_t nPath = strHead.find(' ');
    if (!strHead.starts_with("POST ") || m_strBytes.size() > g_nMostBytes)
    {
        return eState::Bad;
    }
    m_strPath = strHead.substr(nPath + 1, strHead.find_first_of(" \r", nPath + 1) - nPath - 1);
    m_bExpects = Header(strHead, "expect").has_value();
    if (const auto strCoding = Header(strHead, "transfer-encoding"))
    {
        return TakeChunks(strRest);
    }
    std::size_t nLength = 0;
    const std::string_view strLength = Header(strHead, "content-length").value_or("");
    if (std::from_chars(strLength.data(), strLength.data() + strLength.size(), nLength).ec != std::errc{} ||
        nLength > g_nMostBytes)
    {
        return eState::Bad;
    }
    m_strBody = strRest.substr(0, nLength);
    return strRest.size() < nLength ? eState::Partial : eState::Whole;
}
} // namespace onvif
