#pragma once

#include "plugins/device/media/Clips.h"

#include "protocol/interface/Device.h"

#include <cstdint>
#include <vector>

namespace device
{
/// A picture in memory, three bytes a dot: red, green, blue.
struct tagImage
{
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    std::vector<unsigned char> abyDots;

    tagImage() = default;
    /// dwColour: 0xRRGGBB.
    tagImage(uint32_t dwAcross, uint32_t dwDown, uint32_t dwColour);
    unsigned char* Dot(uint32_t dwX, uint32_t dwY) { return abyDots.data() + (std::size_t{dwY} * dwWidth + dwX) * 3; }
    unsigned char const* Dot(uint32_t dwX, uint32_t dwY) const
    {
        return abyDots.data() + (std::size_t{dwY} * dwWidth + dwX) * 3;
    }
};

/// A part of a picture, in dots of it; may lie outside.
struct tagRectangle
{
    double fLeft = 0;
    double fTop = 0;
    double fWidth = 0;
    double fHeight = 0;
};

/// @name Files. Throw std::runtime_error.
/// @{
tagImage ReadImage(Bytes tFile);
std::vector<unsigned char> WriteImage(tagImage const& tImage, eImageFormat eFormat, uint32_t dwQuality);
/// @}

/// Draws a part of a picture over a part of another one, and scales it. dwOpacity: percent.
void Draw(tagImage& tOn, tagRectangle const& tWhere, tagImage const& tWhat, tagRectangle const& tPart,
          uint32_t dwOpacity = 100);
void Fill(tagImage& tOn, tagRectangle const& tWhere, uint32_t dwColour);
/// dwTurn: ePictureTurn bits.
tagImage Turn(tagImage const& tImage, uint32_t dwTurn);
/// Levels in percent, 50: unchanged. Only the dots of tWhere.
void Adjust(tagImage& tImage, tagRectangle const& tWhere, uint32_t dwBrightness, uint32_t dwContrast,
            uint32_t dwSaturation);
inline tagRectangle WholeOf(tagImage const& tImage)
{
    return {0, 0, static_cast<double>(tImage.dwWidth), static_cast<double>(tImage.dwHeight)};
}
/// How a picture must be scaled down to be at most so large; 0: no limit. Leaves it at 1 or more dots.
void Limit(uint32_t& dwWidth, uint32_t& dwHeight, uint32_t dwMaxWidth, uint32_t dwMaxHeight);
} // namespace device
