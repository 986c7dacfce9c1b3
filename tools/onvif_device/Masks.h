#pragma once

#include "tools/onvif_device/Call.h"

namespace onvif_device
{
/// @name Parts of the picture that nobody may see; of the second media service
/// @{
void GetMasks(CCall& tCall);
void GetMaskOptions(CCall& tCall);
void SetMask(CCall& tCall);
void CreateMask(CCall& tCall);
void DeleteMask(CCall& tCall);
/// @}

/// What SetMask and CreateMask take: the mask's elements are of the service's own schema.
#define ONVIF_MASK                                                                                                     \
    "Mask[token]{tr2:ConfigurationToken tr2:Polygon{Point[x y]+} tr2:Type tr2:Color[X Y Z]? tr2:Enabled ...}"
} // namespace onvif_device
