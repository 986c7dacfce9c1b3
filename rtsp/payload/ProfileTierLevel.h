#pragma once

#include "rtsp/BitReader.h"

namespace rtsp
{
/// Passes over what stands before its number in a sequence parameter set of H.265, the NAL unit header included.
inline void SkipToNumberOfSequence(CBitReader& tReader)
{
    constexpr unsigned nProfile = 88;
    constexpr unsigned nLevel = 8;
    tReader.Skip(16 + 4);
    const unsigned nSubLayers = tReader.Bits(3);
    tReader.Skip(1 + nProfile + nLevel);
    unsigned nMore = nSubLayers > 0 ? (8 - nSubLayers) * 2 : 0;
    for (unsigned i = 0; i < nSubLayers; ++i)
    {
        nMore += tReader.Flag() ? nProfile : 0;
        nMore += tReader.Flag() ? nLevel : 0;
    }
    tReader.Skip(nMore);
}
} // namespace rtsp
