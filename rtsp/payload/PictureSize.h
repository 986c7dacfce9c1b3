#pragma once

#include "rtsp/Bytes.h"

#include <cstdint>
#include <optional>

namespace rtsp
{
struct tagPictureSize
{
    std::uint32_t dwWidth = 0;
    std::uint32_t dwHeight = 0;
};

/// The size of the pictures, as they are shown, by the headers of the codecs. Nothing: not such a header, broken, or of
/// a size that no camera has.
std::optional<tagPictureSize> SizeOfH264(Bytes abySet);    ///< a sequence parameter set, from its NAL unit header on
std::optional<tagPictureSize> SizeOfH265(Bytes abySet);    ///< the same
std::optional<tagPictureSize> SizeOfMpeg4(Bytes abyLayer); ///< a video object layer, behind its start code
} // namespace rtsp
