#include "plugins/device/media/Font.h"

#include "plugins/device/media/Image.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

namespace device
{
namespace
{
// Where Debian and others keep a font with many characters; else any font will do.
std::string const& UsualFont()
{
    static const std::string s_strFont = []
    {
        std::error_code tError;
        std::string strAny;
        for (char const* const szPath :
             {"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", "/usr/share/fonts/TTF/DejaVuSans.ttf"})
        {
            if (std::filesystem::exists(szPath, tError))
            {
                return std::string(szPath);
            }
        }
        for (std::filesystem::recursive_directory_iterator it("/usr/share/fonts", tError), itEnd;
             !tError && it != itEnd; it.increment(tError))
        {
            const std::string strPath = it->path().string();
            if (it->path().extension() == ".ttf" && (strAny.empty() || strPath < strAny))
            {
                strAny = strPath;
            }
        }
        return strAny;
    }();
    return s_strFont;
}
} // namespace

struct CFont::tagFace
{
    FT_Library pLibrary = nullptr;
    FT_Face pFace = nullptr;

    tagFace() = default;
    tagFace(tagFace const&) = delete;
    tagFace& operator=(tagFace const&) = delete;
    ~tagFace()
    {
        FT_Done_Face(pFace);
        FT_Done_FreeType(pLibrary);
    }
};

CFont::CFont(std::string const& strPath, uint32_t dwHeight) : m_pFace(std::make_unique<tagFace>()), m_dwHeight(dwHeight)
{
    std::string const& strFont = strPath.empty() ? UsualFont() : strPath;
    if (FT_Init_FreeType(&m_pFace->pLibrary) != 0 ||
        FT_New_Face(m_pFace->pLibrary, strFont.c_str(), 0, &m_pFace->pFace) != 0 || !FT_IS_SCALABLE(m_pFace->pFace))
    {
        throw std::runtime_error(strFont + ": no font");
    }
    // Highest and lowest characters fit a line.
    const FT_Face pFace = m_pFace->pFace;
    const auto nSpan = std::max<FT_Long>(pFace->ascender - pFace->descender, 1);
    const auto nSize = static_cast<FT_UInt>(static_cast<FT_Long>(dwHeight) * pFace->units_per_EM / nSpan);
    FT_Set_Pixel_Sizes(pFace, 0, std::max<FT_UInt>(nSize, 1));
}

CFont::~CFont() = default;

CFont::tagDots CFont::Render(std::u32string const& strText, uint32_t dwSpacing, bool bBold, bool bMono) const
{
    const FT_Face pFace = m_pFace->pFace;
    const auto nHeight = static_cast<int>(m_dwHeight);
    const int nBase = static_cast<int>(nHeight * static_cast<FT_Long>(pFace->ascender) /
                                       std::max<FT_Long>(pFace->ascender - pFace->descender, 1));
    // Loads a character; how far it is to the next one.
    const auto fnLoad = [&](char32_t c)
    {
        if (FT_Load_Char(pFace, c, bMono ? FT_LOAD_TARGET_MONO : FT_LOAD_DEFAULT) != 0)
        {
            return 0;
        }
        const FT_Pos nBolder = bBold ? std::max<FT_Pos>(64, nHeight * 3) : 0;
        if (bBold && pFace->glyph->format == FT_GLYPH_FORMAT_OUTLINE)
        {
            FT_Outline_Embolden(&pFace->glyph->outline, nBolder);
        }
        return static_cast<int>((pFace->glyph->advance.x + nBolder) >> 6) + static_cast<int>(dwSpacing);
    };
    tagDots tDots;
    int nWidth = 0;
    int nLines = 1;
    int nX = 0;
    for (const char32_t c : strText)
    {
        nLines += c == U'\n' ? 1 : 0;
        nX = c == U'\n' ? 0 : nX + fnLoad(c);
        nWidth = std::max(nWidth, nX - static_cast<int>(dwSpacing));
    }
    tDots.dwWidth = static_cast<uint32_t>(std::max(nWidth, 0));
    tDots.dwHeight = static_cast<uint32_t>(nHeight * nLines);
    tDots.abyDots.resize(std::size_t{tDots.dwWidth} * tDots.dwHeight);
    nX = 0;
    int nTop = 0;
    for (const char32_t c : strText)
    {
        if (c == U'\n')
        {
            nX = 0;
            nTop += nHeight;
            continue;
        }
        const int nAdvance = fnLoad(c);
        if (nAdvance != 0 && FT_Render_Glyph(pFace->glyph, bMono ? FT_RENDER_MODE_MONO : FT_RENDER_MODE_NORMAL) == 0)
        {
            FT_Bitmap const& tBitmap = pFace->glyph->bitmap;
            for (int y = 0; y < static_cast<int>(tBitmap.rows); ++y)
            {
                const int nY = nTop + nBase - pFace->glyph->bitmap_top + y;
                unsigned char const* const pRow = tBitmap.buffer + y * tBitmap.pitch;
                for (int x = 0; x < static_cast<int>(tBitmap.width); ++x)
                {
                    const int nAt = nX + pFace->glyph->bitmap_left + x;
                    const int nFull = bMono ? (pRow[x / 8] >> (7 - x % 8) & 1) * 255 : pRow[x];
                    if (nAt >= 0 && nAt < nWidth && nY >= nTop && nY < nTop + nHeight)
                    {
                        unsigned char& byDot = tDots.abyDots[static_cast<uint32_t>(nY) * std::size_t{tDots.dwWidth} +
                                                             static_cast<uint32_t>(nAt)];
                        byDot = static_cast<unsigned char>(std::max<int>(byDot, nFull));
                    }
                }
            }
        }
        nX += nAdvance;
    }
    return tDots;
}

bool FromUtf8(char const* szText, std::u32string& strText)
{
    strText.clear();
    for (auto const* p = reinterpret_cast<unsigned char const*>(szText); *p != 0;)
    {
        const int nMore = *p < 0x80                 ? 0
                          : *p >= 0xC2 && *p < 0xE0 ? 1
                          : *p >= 0xE0 && *p < 0xF0 ? 2
                          : *p < 0xF5               ? 3
                                                    : -1;
        if (nMore < 0 || (nMore == 3 && *p < 0xF0))
        {
            return false;
        }
        char32_t c = nMore == 0 ? *p : *p & (0x3F >> nMore);
        ++p;
        for (int i = 0; i < nMore; ++i, ++p)
        {
            if ((*p & 0xC0) != 0x80)
            {
                return false;
            }
            c = c << 6 | (*p & 0x3F);
        }
        strText.push_back(c);
    }
    return true;
}

void DrawText(tagImage& tOn, double fLeft, double fTop, double fHeight, uint32_t dwColour, std::string const& strText)
try
{
    std::u32string strCharacters;
    if (!FromUtf8(strText.c_str(), strCharacters) || strCharacters.empty())
    {
        return;
    }
    const auto dwHeight = static_cast<uint32_t>(std::clamp(fHeight, 6.0, 512.0));
    const CFont::tagDots tDots = CFont({}, dwHeight).Render(strCharacters, 0, false, false);
    const auto nLeft = static_cast<int>(fLeft);
    const auto nTop = static_cast<int>(fTop);
    for (uint32_t y = 0; y < tDots.dwHeight; ++y)
    {
        for (uint32_t x = 0; x < tDots.dwWidth; ++x)
        {
            const int nX = nLeft + static_cast<int>(x);
            const int nY = nTop + static_cast<int>(y);
            const int nFull = tDots.abyDots[std::size_t{y} * tDots.dwWidth + x];
            if (nFull == 0 || nX < 0 || nY < 0 || nX >= static_cast<int>(tOn.dwWidth) ||
                nY >= static_cast<int>(tOn.dwHeight))
            {
                continue;
            }
            unsigned char* const pDot = tOn.Dot(static_cast<uint32_t>(nX), static_cast<uint32_t>(nY));
            for (int i = 0; i < 3; ++i)
            {
                const int nColour = static_cast<int>(dwColour >> (16 - 8 * i) & 255);
                pDot[i] = static_cast<unsigned char>((pDot[i] * (255 - nFull) + nColour * nFull) / 255);
            }
        }
    }
}
catch (std::runtime_error const&)
{
    // There is no font: a picture without a text is better than none.
}
} // namespace device
