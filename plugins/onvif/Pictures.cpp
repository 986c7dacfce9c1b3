#include "plugins/onvif/Pictures.h"

#include "plugins/onvif/picture/Picture.h"

#include "protocol/interface/Frames.h"
#include "protocol/interface/Results.h"

#include <dlfcn.h>

namespace onvifclient
{
namespace
{
// Width and height, from the frame header of a JPEG file. False: it is none.
bool SizeOf(std::string const& strJpeg, uint32_t& dwWidth, uint32_t& dwHeight)
{
    const auto fnByte = [&](std::size_t n) { return static_cast<uint32_t>(static_cast<unsigned char>(strJpeg[n])); };
    std::size_t n = 2;
    if (strJpeg.size() < 4 || fnByte(0) != 0xFF || fnByte(1) != 0xD8)
    {
        return false;
    }
    while (n + 9 <= strJpeg.size() && fnByte(n) == 0xFF)
    {
        const uint32_t dwMarker = fnByte(n + 1);
        const bool bFrame =
            dwMarker >= 0xC0 && dwMarker <= 0xCF && dwMarker != 0xC4 && dwMarker != 0xC8 && dwMarker != 0xCC;
        if (bFrame)
        {
            dwHeight = fnByte(n + 5) << 8 | fnByte(n + 6);
            dwWidth = fnByte(n + 7) << 8 | fnByte(n + 8);
            return dwWidth != 0 && dwHeight != 0;
        }
        // Fill bytes have no length.
        n += dwMarker == 0xFF ? 1 : 2 + (fnByte(n + 2) << 8 | fnByte(n + 3));
    }
    return false;
}

// Null: it isn't installed, or can't be loaded.
decltype(&OnvifPicture_Convert) Library()
{
    static const auto s_pfnConvert = []
    {
        void* const hLibrary = dlopen("libonvifpicture.so", RTLD_NOW | RTLD_LOCAL); // for as long as the process
        return hLibrary ? reinterpret_cast<decltype(&OnvifPicture_Convert)>(dlsym(hLibrary, "OnvifPicture_Convert"))
                        : nullptr;
    }();
    return s_pfnConvert;
}
} // namespace

int Fit(std::string& strFile, uint32_t dwCodec, eImageFormat eFormat, tagImageFileInfo& tInfo)
{
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    if (dwCodec == eCodecMJPEG && !SizeOf(strFile, dwWidth, dwHeight))
    {
        return eResultRefused;
    }
    if (dwCodec == eCodecMJPEG && eFormat == eImageJpeg && (tInfo.dwWidth == 0 || dwWidth <= tInfo.dwWidth) &&
        (tInfo.dwHeight == 0 || dwHeight <= tInfo.dwHeight))
    {
        tInfo.dwWidth = dwWidth;
        tInfo.dwHeight = dwHeight;
        return eResultOk;
    }
    const auto pfnConvert = Library();
    std::string strNew;
    const int nResult = pfnConvert ? pfnConvert(reinterpret_cast<unsigned char const*>(strFile.data()), strFile.size(),
                                                dwCodec, eFormat, &tInfo, &strNew)
                                   : int{eResultNotSupported};
    strFile.swap(strNew);
    return nResult;
}
} // namespace onvifclient
