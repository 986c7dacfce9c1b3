#pragma once

#include "tools/onvif_device/Call.h"

namespace onvif_device
{
/// A channel's motion detection, as an element of this name of VideoAnalyticsConfiguration's type. Needs the device's
/// lock.
void WriteAnalyticsConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel);
} // namespace onvif_device
