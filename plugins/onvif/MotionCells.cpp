#include "plugins/onvif/MotionCells.h"

#include <algorithm>
#include <openssl/evp.h>
#include <vector>

namespace onvifclient
{
namespace
{
constexpr std::size_t g_nMostText = 4096;
constexpr std::size_t g_nMostRun = 128; // bytes behind one header
constexpr unsigned char g_byNothing = 0x80;

unsigned char Reversed(unsigned char by)
{
    unsigned char byNew = 0;
    for (int i = 0; i < 8; ++i)
    {
        byNew = static_cast<unsigned char>(byNew << 1 | (by >> i & 1));
    }
    return byNew;
}

// A header says how many bytes follow (n + 1), or how often the next one comes (257 - n).
std::vector<unsigned char> Packed(std::vector<unsigned char> const& abyPlain)
{
    std::vector<unsigned char> abyPacked;
    for (auto it = abyPlain.begin(); it != abyPlain.end();)
    {
        const auto itEnd = it + std::min<std::ptrdiff_t>(g_nMostRun, abyPlain.end() - it);
        const auto itOther = std::find_if(it, itEnd, [&](unsigned char by) { return by != *it; });
        if (itOther - it > 1)
        {
            abyPacked.insert(abyPacked.end(), {static_cast<unsigned char>(257 - (itOther - it)), *it});
            it = itOther;
            continue;
        }
        const auto itSame = std::adjacent_find(it, itEnd);
        abyPacked.push_back(static_cast<unsigned char>(itSame - it - 1));
        abyPacked.insert(abyPacked.end(), it, itSame);
        it = itSame;
    }
    return abyPacked;
}
} // namespace

std::string CellsText(std::span<unsigned char const> abyCells, std::size_t nCells)
{
    std::vector<unsigned char> abyBits;
    std::transform(abyCells.begin(), abyCells.begin() + static_cast<std::ptrdiff_t>((nCells + 7) / 8),
                   std::back_inserter(abyBits), Reversed);
    if (nCells % 8 != 0)
    {
        abyBits.back() &= static_cast<unsigned char>(0xFF << (8 - nCells % 8));
    }
    const auto abyPacked = Packed(abyBits);
    std::string strText(abyPacked.size() * 4 / 3 + 5, '\0');
    strText.resize(static_cast<std::size_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(strText.data()),
                                                            abyPacked.data(), static_cast<int>(abyPacked.size()))));
    return strText;
}

bool TakeCells(std::string_view strText, std::span<unsigned char> abyCells)
{
    std::ranges::fill(abyCells, static_cast<unsigned char>(0));
    std::vector<unsigned char> abyPacked(strText.size() / 4 * 3 + 3);
    const int nLength = strText.size() > g_nMostText || strText.size() % 4 != 0
                            ? -1
                            : EVP_DecodeBlock(abyPacked.data(), reinterpret_cast<unsigned char const*>(strText.data()),
                                              static_cast<int>(strText.size()));
    if (nLength < 0)
    {
        return false;
    }
    const std::size_t nPadding = strText.ends_with("==") ? 2 : strText.ends_with('=') ? 1 : 0;
    abyPacked.resize(static_cast<std::size_t>(nLength) - nPadding);
    std::size_t nTo = 0;
    for (std::size_t n = 0; n < abyPacked.size();)
    {
        const std::size_t nHeader = abyPacked[n++];
        const bool bRepeat = nHeader > g_byNothing;
        const std::size_t nCount = nHeader == g_byNothing ? 0 : bRepeat ? 257 - nHeader : nHeader + 1;
        if (nCount != 0 && n + (bRepeat ? 1 : nCount) > abyPacked.size())
        {
            return false;
        }
        for (std::size_t i = 0; i < nCount && nTo < abyCells.size(); ++i)
        {
            abyCells[nTo++] = Reversed(abyPacked[bRepeat ? n : n + i]);
        }
        n += nCount == 0 ? 0 : bRepeat ? 1 : nCount;
    }
    return true;
}
} // namespace onvifclient
