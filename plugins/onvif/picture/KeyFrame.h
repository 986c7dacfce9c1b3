#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace onvifclient
{
/// A picture in memory, three bytes a dot: red, green, blue.
struct tagDots
{
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    std::vector<unsigned char> abyDots;
};

/// One access unit of H.264 or H.265 with its parameter sets in front. False: it can't be decoded by itself.
bool DecodeKeyFrame(unsigned char const* pbyFrame, std::size_t nLength, uint32_t dwCodec, tagDots& t);
} // namespace onvifclient
