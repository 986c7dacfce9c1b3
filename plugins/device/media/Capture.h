#pragma once

#include "protocol/interface/Device.h"

#include <cstdint>

namespace device
{
class CDevice;

/// Takes a picture of a channel, a window, a screen or the wall (dwTarget: a channel or eCaptureTarget), and puts it
/// where tInfo says. tInfo is filled, with eResultNoResources too. A channel's picture is kept among the device's files
/// (eFilePicture) as well. eResultNoChannel; eResultBadArgument; eResultRefused: the channel has no picture now;
/// eResultNoResources: no room, or the file can't be written.
int Capture(CDevice& tDevice, uint32_t dwTarget, eImageFormat eFormat, tagImageFileInfo& tInfo);
} // namespace device
