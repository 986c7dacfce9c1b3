#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace device
{
struct tagImage;

/// Characters as dots.
class CFont
{
public:
    /// dwHeight: dots of a line. An empty path: a font that this machine has. Throws std::runtime_error: no such font.
    CFont(std::string const& strPath, uint32_t dwHeight);
    ~CFont();
    CFont(CFont const&) = delete;
    CFont& operator=(CFont const&) = delete;

    /// A text of one or more lines; how full each dot is, row by row. bMono: 0 or 255 only.
    struct tagDots
    {
        uint32_t dwWidth = 0;
        uint32_t dwHeight = 0;
        std::vector<unsigned char> abyDots;
    };
    /// dwSpacing: dots to add between two characters.
    tagDots Render(std::u32string const& strText, uint32_t dwSpacing, bool bBold, bool bMono) const;

private:
    struct tagFace;
    std::unique_ptr<tagFace> m_pFace;
    uint32_t m_dwHeight;
};

/// False: it isn't UTF-8.
bool FromUtf8(char const* szText, std::u32string& strText);

/// Writes a text into a picture, with its top left there. Nothing happens when there is no font.
void DrawText(tagImage& tOn, double fLeft, double fTop, double fHeight, uint32_t dwColour, std::string const& strText);
} // namespace device
