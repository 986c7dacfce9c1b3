#pragma once

#include "plugins/device/media/Image.h"

#include <cstdint>
#include <string>

namespace device
{
class CDevice;

/// All of a picture: places in it are in ten-thousandths.
inline constexpr double g_fWhole = 10000;

/// What a channel's camera sees at a time of its device's clock, with its texts and masks, as large as its main stream.
/// eResultNoChannel; eResultRefused: there is no picture. Throws std::runtime_error: the clips can't be read.
int TakeScene(CDevice& tDevice, uint32_t dwChannel, int64_t llTimeUs, tagImage& tImage);

/// A local time as text. szFormat: as strftime takes it; empty: as usual.
std::string TimeText(int64_t llTimeUs, int32_t nUtcOffsetMinutes, std::string const& strFormat = {});
} // namespace device
