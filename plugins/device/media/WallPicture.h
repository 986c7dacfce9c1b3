#pragma once

#include "plugins/device/WallView.h"
#include "plugins/device/media/Image.h"

namespace device
{
/// What a window, a screen or the whole wall shows (dwTarget: eCaptureTarget), at most so large; 0: as it is.
/// eResultNoChannel: no such window or screen. Throws std::runtime_error: the clips can't be read.
int TakeWall(tagWallView const& tView, uint32_t dwTarget, uint32_t dwMaxWidth, uint32_t dwMaxHeight, tagImage& tImage);
} // namespace device
