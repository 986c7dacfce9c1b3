#pragma once

#include "tools/onvif_device/Call.h"

#include <vector>

namespace onvif_device
{
/// To ONVIF a device has one recording of each channel, Recording_1, with a track of video and one of sound; what the
/// device calls a recording is a stretch of data in it.

/// The stretches of a channel, the oldest first. Locks the device; so does the next.
std::vector<device::tagRecording> StretchesOf(CCall& tCall, uint32_t dwChannel);
/// Its RecordingInformation, as an element of this name.
void WriteRecordingInformation(CCall& tCall, char const* szElement, uint32_t dwChannel);
/// Its Source, as an element of this name; takes no lock.
void WriteRecordingSource(CCall& tCall, char const* szElement, uint32_t dwChannel);
/// The channel of a Recording_n; throws CFault.
uint32_t RecordingAt(CCall& tCall, CCall::Path astrPath);
} // namespace onvif_device
