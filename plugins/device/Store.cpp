#include "plugins/device/Store.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace device
{
namespace
{
int Digit(char c)
{
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}
} // namespace

std::string ToHex(std::vector<unsigned char> const& abyValue)
{
    std::string strHex;
    strHex.reserve(abyValue.size() * 2);
    for (const unsigned char by : abyValue)
    {
        strHex += "0123456789abcdef"[by >> 4];
        strHex += "0123456789abcdef"[by & 15];
    }
    return strHex;
}

bool FromHex(std::string const& strHex, std::vector<unsigned char>& abyValue)
{
    for (std::size_t i = 0; i + 1 < strHex.size(); i += 2)
    {
        const int nHigh = Digit(strHex[i]);
        const int nLow = Digit(strHex[i + 1]);
        if (nHigh < 0 || nLow < 0)
        {
            return false;
        }
        abyValue.push_back(static_cast<unsigned char>(nHigh * 16 + nLow));
    }
    return strHex.size() % 2 == 0;
}

// One line for each entry: the key, a blank, the bytes as hexadecimal digits. A line that is none is left out.
CStore::CStore(std::string strPath) : m_strPath(std::move(strPath))
{
    std::ifstream tFile(m_strPath);
    for (std::string strKey, strHex; tFile >> strKey >> strHex;)
    {
        Bytes abyValue;
        if (FromHex(strHex, abyValue))
        {
            m_tEntries[strKey] = std::move(abyValue);
        }
    }
}

void CStore::Save()
{
    if (!m_bChanged || m_strPath.empty())
    {
        return;
    }
    const std::string strNew = m_strPath + ".new";
    std::ofstream tFile(strNew);
    for (auto const& [strKey, abyValue] : m_tEntries)
    {
        tFile << strKey << ' ' << ToHex(abyValue) << '\n';
    }
    tFile.close();
    std::error_code tError;
    if (tFile)
    {
        std::filesystem::rename(strNew, m_strPath, tError);
    }
    m_bChanged = !tFile || tError;
}

void CStore::Put(std::string const& strKey, Bytes abyValue)
{
    m_tEntries[strKey] = std::move(abyValue);
    m_bChanged = true;
}

void CStore::Remove(std::string const& strKey)
{
    m_bChanged = m_tEntries.erase(strKey) != 0 || m_bChanged;
}

void CStore::RemoveAll(std::string const& strPrefix, std::initializer_list<std::string> astrBut)
{
    const auto nRemoved = std::erase_if(m_tEntries,
                                        [&](auto const& tEntry)
                                        {
                                            return tEntry.first.starts_with(strPrefix) &&
                                                   std::ranges::none_of(astrBut, [&](auto const& str)
                                                                        { return tEntry.first.starts_with(str); });
                                        });
    m_bChanged = nRemoved != 0 || m_bChanged;
}
} // namespace device
