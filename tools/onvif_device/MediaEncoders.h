#pragma once

#include "tools/onvif_device/MediaParts.h"

namespace onvif_device
{
/// @name Encoders as the first media service says them. Need the device's lock.
/// @{

/// A stream in H.264, the only codec that there is to it.
bool IsH264(CCall& tCall, tagStreamKey const& tKey);
void WriteVideoEncoder(CCall& tCall, char const* szElement, tagStreamKey const& tKey);
void WriteAudioEncoder(CCall& tCall, char const* szElement, tagStreamKey const& tKey);
/// @}
} // namespace onvif_device
