#pragma once

#include "rtsp/Bytes.h"

#include <cstdint>
#include <vector>

namespace rtsp
{
/// What RFC 2435 says of a picture.
struct tagJpegHeader
{
    unsigned uType = 0;      ///< 0: 4:2:2, 1: 4:2:0
    unsigned uQ = 0;         ///< 1 to 99; abyTables counts when it isn't empty
    Bytes abyTables;         ///< quantization tables, luma then chroma; one: for both
    unsigned uPrecision = 0; ///< a bit for each table: its values have 16 bits
    std::uint32_t dwWidth = 0;
    std::uint32_t dwHeight = 0;
    std::uint16_t wRestart = 0; ///< restart interval, 0: no restart markers
    Bytes abySegments;          ///< marker segments that take the place of ours, of the same kind
};

/// Adds all that stands before a picture's data to abyOut. Width and height become those of abySegments, where these
/// say so. False: no picture can have such a header.
bool MakeJpegHeader(tagJpegHeader& tHeader, std::vector<unsigned char>& abyOut);
} // namespace rtsp
