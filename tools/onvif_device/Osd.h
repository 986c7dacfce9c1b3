#pragma once

#include "tools/onvif_device/Call.h"

namespace onvif_device
{
/// @name Texts in the picture, the same in both media services
/// @{
void GetOSDs(CCall& tCall);
void GetOSD(CCall& tCall);
void GetOSDOptions(CCall& tCall);
void SetOSD(CCall& tCall);
void CreateOSD(CCall& tCall);
void DeleteOSD(CCall& tCall);
/// @}

/// What SetOSD and CreateOSD take.
#define ONVIF_OSD                                                                                                      \
    "OSD[token]{VideoSourceConfigurationToken Type Position{Type Pos? ...} "                                           \
    "TextString{Type DateFormat? TimeFormat? FontSize? FontColor{Color[X Y Z] ...}? BackgroundColor{...}? "            \
    "PlainText? ...}? Image{...}? ...}"
} // namespace onvif_device
