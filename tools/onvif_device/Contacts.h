#pragma once

#include "tools/onvif_device/Call.h"

namespace onvif_device
{
/// @name Outputs, the same in the device service and in the one for contacts
/// @{
void GetRelayOutputs(CCall& tCall);
/// The properties are the request's, or those of its element RelayOutput.
void SetRelayOutputSettings(CCall& tCall);
void SetRelayOutputState(CCall& tCall);
/// @}
} // namespace onvif_device
