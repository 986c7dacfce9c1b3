#pragma once

#include "protocol/interface/Frames.h"

#include <algorithm>
#include <iterator>

namespace device
{
/// A picture that there are frames of.
struct tagClipSize
{
    uint32_t dwCodec;
    uint32_t dwWidth;
    uint32_t dwHeight;
};

/// All of them; a stream can have no other.
inline constexpr tagClipSize g_atClipSizes[] = {
    {eCodecH264, 1920, 1080}, {eCodecH264, 1280, 720}, {eCodecH264, 640, 360},
    {eCodecH264, 320, 180},   {eCodecH265, 1280, 720}, {eCodecH265, 640, 360},
};

inline bool HasClip(uint32_t dwCodec, uint32_t dwWidth, uint32_t dwHeight)
{
    return std::any_of(std::begin(g_atClipSizes), std::end(g_atClipSizes),
                       [&](tagClipSize const& t)
                       { return t.dwCodec == dwCodec && t.dwWidth == dwWidth && t.dwHeight == dwHeight; });
}
} // namespace device
