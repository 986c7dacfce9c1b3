#pragma once

#include "protocol/interface/Device.h"
#include "system/Export.h"

#include <cstddef>
#include <string>

/// What the picture library has for the plug-in, which loads it with the first picture that needs it: no login pays for
/// decoders. Both are built together.
extern "C"
{
    /// A JPEG file or a key frame as a file of eFormat. dwCodec: what it is, eMediaCodec. ptInfo: limits and quality;
    /// its width and height are filled. eResultRefused: it is no picture. Any thread; throws nothing.
    TESSARO_API int OnvifPicture_Convert(unsigned char const* pbyFile, std::size_t nLength, uint32_t dwCodec,
                                         eImageFormat eFormat, tagImageFileInfo* ptInfo, std::string* pstrFile);
}
