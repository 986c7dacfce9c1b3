#pragma once

#include "protocol/interface/Device.h"

#include <string>

namespace onvifclient
{
/// Brings a picture, a JPEG file or a key frame, into the format and the limits of tInfo, and fills its width and
/// height. A JPEG file that fits stays as it is; for anything else the picture library is loaded: eResultNotSupported
/// without it. eResultRefused: it is no picture.
int Fit(std::string& strFile, uint32_t dwCodec, eImageFormat eFormat, tagImageFileInfo& tInfo);
} // namespace onvifclient
