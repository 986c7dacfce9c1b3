#include "plugins/device/media/Lattice.h"

#include "plugins/device/media/Font.h"

#include "protocol/interface/Results.h"

#include <cstring>
#include <stdexcept>

namespace device
{
int Lattice(char const* szText, tagFontPara const& tFont, void* pLattice, unsigned long& dwWidth,
            unsigned long& dwHeight, unsigned long& dwLength)
{
    const uint32_t dwLine = tFont.dwHeight ? tFont.dwHeight : 16;
    const uint32_t dwBits = tFont.dwBitsPerDot ? tFont.dwBitsPerDot : 1;
    std::u32string strText;
    if (!szText || !FromUtf8(szText, strText) || strText.size() > 4096 || dwLine < 8 || dwLine > 256 ||
        (dwBits != 1 && dwBits != 8) || tFont.dwSpacing > 256 || tFont.bBold > 1)
    {
        return eResultBadArgument;
    }
    CFont::tagDots tDots;
    try
    {
        const std::string strFont(tFont.szFont, strnlen(tFont.szFont, sizeof tFont.szFont));
        tDots = CFont(strFont, dwLine).Render(strText, tFont.dwSpacing, tFont.bBold != 0, dwBits == 1);
    }
    catch (std::runtime_error const&)
    {
        return eResultNotFound;
    }
    const std::size_t nRow = dwBits == 1 ? (tDots.dwWidth + 7) / 8 : tDots.dwWidth;
    dwWidth = tDots.dwWidth;
    dwHeight = tDots.dwHeight;
    dwLength = static_cast<unsigned long>(nRow * tDots.dwHeight);
    if (dwLength > tFont.dwCapacity)
    {
        return eResultNoResources;
    }
    if (dwLength != 0 && !pLattice)
    {
        return eResultBadArgument;
    }
    auto* const pTo = static_cast<unsigned char*>(pLattice);
    if (dwBits == 8)
    {
        std::memcpy(pTo, tDots.abyDots.data(), dwLength);
        return eResultOk;
    }
    std::memset(pTo, 0, dwLength);
    for (uint32_t y = 0; y < tDots.dwHeight; ++y)
    {
        for (uint32_t x = 0; x < tDots.dwWidth; ++x)
        {
            const bool bDot = tDots.abyDots[std::size_t{y} * tDots.dwWidth + x] != 0;
            pTo[y * nRow + x / 8] |= static_cast<unsigned char>(bDot ? 0x80 >> x % 8 : 0);
        }
    }
    return eResultOk;
}
} // namespace device
