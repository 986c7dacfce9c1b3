#pragma once

#include "rtsp/BitReader.h"

#include <cstdint>
#include <optional>

namespace rtsp
{
/// What MPEG-4's AudioSpecificConfig says.
struct tagAudioConfig
{
    std::uint32_t dwCoreRate = 0; ///< samples a second of what is coded; 0: a reserved value
    std::uint32_t dwRate = 0;     ///< of what a decoder puts out
    unsigned nChannels = 0;       ///< 0: told elsewhere
    unsigned nFrameLength = 1024; ///< coded samples in a frame
};

/// Reads one. Nothing: broken, or of a kind whose end can't be told. bToTheEnd: the reader's bytes end with it, so that
/// what may come behind it belongs to it.
std::optional<tagAudioConfig> ParseAudioConfig(CBitReader& tReader, bool bToTheEnd);
} // namespace rtsp
