#include "plugins/onvif/Numbers.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace onvifclient
{
namespace
{
constexpr uint32_t g_dwMost = 9999;

// 0: it is none.
uint32_t Parse(std::string_view strDigits)
{
    uint32_t dw = 0;
    const auto [pEnd, eError] = std::from_chars(strDigits.data(), strDigits.data() + strDigits.size(), dw);
    return eError == std::errc{} && pEnd == strDigits.data() + strDigits.size() && dw <= g_dwMost ? dw : 0;
}

uint32_t Wanted(std::string const& strKind, std::string const& strToken, std::string const& strName)
{
    if (strName.starts_with(strKind + ' '))
    {
        if (const uint32_t dwNumber = Parse(std::string_view(strName).substr(strKind.size() + 1)))
        {
            return dwNumber;
        }
    }
    const std::size_t nDigits = strToken.find_last_not_of("0123456789");
    return Parse(std::string_view(strToken).substr(nDigits + 1)); // npos + 1 is 0
}
} // namespace

void CNumbers::Take(std::string const& strKind, std::vector<std::pair<std::string, std::string>> const& atAll)
{
    std::erase_if(m_tNumbers, [&](auto const& t)
                  { return std::ranges::none_of(atAll, [&](auto const& tThere) { return tThere.first == t.first; }); });
    const auto fnIsFree = [&](uint32_t dwNumber) { return Token(dwNumber).empty(); };
    for (auto const& [strToken, strName] : atAll)
    {
        const uint32_t dwWanted = Wanted(strKind, strToken, strName);
        if (dwWanted != 0 && fnIsFree(dwWanted) && !m_tNumbers.contains(strToken))
        {
            m_tNumbers[strToken] = dwWanted;
        }
    }
    uint32_t dwFree = 1;
    for (auto const& [strToken, strName] : atAll)
    {
        if (!m_tNumbers.contains(strToken))
        {
            while (!fnIsFree(dwFree))
            {
                ++dwFree;
            }
            m_tNumbers[strToken] = dwFree;
        }
    }
}

void CNumbers::Set(std::string const& strToken, uint32_t dwNumber)
{
    std::erase_if(m_tNumbers, [&](auto const& t) { return t.second == dwNumber; });
    m_tNumbers[strToken] = dwNumber;
}

uint32_t CNumbers::Number(std::string const& strToken) const
{
    const auto it = m_tNumbers.find(strToken);
    return it == m_tNumbers.end() ? 0 : it->second;
}

std::string CNumbers::Token(uint32_t dwNumber) const
{
    const auto it = std::ranges::find(m_tNumbers, dwNumber, [](auto const& t) { return t.second; });
    return it == m_tNumbers.end() ? std::string() : it->first;
}
} // namespace onvifclient
