#pragma once

#include <cstdint>

namespace device
{
/// Where pictures stand in time: picture n of a stream of dwRate frames per 1000 s begins at n times 1000 s / dwRate
/// after 1970.
inline int64_t PictureTimeUs(int64_t llPicture, uint32_t dwRate)
{
    const int64_t llRate = dwRate;
    return llPicture / llRate * 1000000000 + (llPicture % llRate * 1000000000 + llRate - 1) / llRate;
}

/// The picture that shows at a time that isn't before 1970.
inline int64_t PictureAt(int64_t llTimeUs, uint32_t dwRate)
{
    return llTimeUs / 1000000000 * dwRate + llTimeUs % 1000000000 * dwRate / 1000000000;
}
} // namespace device
