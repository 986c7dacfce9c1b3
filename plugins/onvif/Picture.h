#pragma once

#include "protocol/interface/Device.h"

#include <string>

namespace onvifclient
{
/// Width and height of a JPEG file. False: it is none.
bool SizeOf(std::string const& strJpeg, uint32_t& dwWidth, uint32_t& dwHeight);

/// Brings a JPEG file into the format and the limits of tInfo, and fills its width and height. One that fits as it is
/// stays as it is. eResultRefused: it is no picture.
int Fit(std::string& strFile, eImageFormat eFormat, tagImageFileInfo& tInfo);
} // namespace onvifclient
