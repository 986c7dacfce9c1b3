#include "plugins/onvif/picture/Picture.h"

#include "plugins/onvif/picture/KeyFrame.h"

#include "protocol/interface/Frames.h"
#include "protocol/interface/Results.h"

#include <algorithm>
#include <memory>
#include <png.h>
#include <turbojpeg.h>
#include <vector>

namespace onvifclient
{
namespace
{
constexpr int g_nUsualQuality = 80;
constexpr uint64_t g_ullMostDots = 64U << 20;

using Handle = std::unique_ptr<void, decltype(&tjDestroy)>;

struct tagFile
{
    unsigned char const* pby;
    std::size_t nLength;
};

bool DecodeJpeg(tagFile const& tFile, tagDots& t)
{
    const Handle pDecoder(tjInitDecompress(), &tjDestroy);
    int nWidth = 0;
    int nHeight = 0;
    int nSampling = 0;
    int nColours = 0;
    if (!pDecoder ||
        tjDecompressHeader3(pDecoder.get(), tFile.pby, tFile.nLength, &nWidth, &nHeight, &nSampling, &nColours) != 0 ||
        uint64_t{static_cast<uint32_t>(nWidth)} * static_cast<uint32_t>(nHeight) > g_ullMostDots)
    {
        return false;
    }
    t.dwWidth = static_cast<uint32_t>(nWidth);
    t.dwHeight = static_cast<uint32_t>(nHeight);
    t.abyDots.resize(std::size_t{t.dwWidth} * t.dwHeight * 3);
    // What ends early is shown as far as it goes.
    return tjDecompress2(pDecoder.get(), tFile.pby, tFile.nLength, t.abyDots.data(), nWidth, 0, nHeight, TJPF_RGB, 0) ==
               0 ||
           tjGetErrorCode(pDecoder.get()) == TJERR_WARNING;
}

// Down to the limits: each dot is the mean of those that it stands for.
tagDots Reduce(tagDots const& tFrom, uint32_t dwWidth, uint32_t dwHeight)
{
    tagDots t{dwWidth, dwHeight, std::vector<unsigned char>(std::size_t{dwWidth} * dwHeight * 3)};
    for (uint32_t y = 0; y < dwHeight; ++y)
    {
        const uint32_t dwTop = static_cast<uint32_t>(uint64_t{y} * tFrom.dwHeight / dwHeight);
        const uint32_t dwBottom =
            std::max(dwTop + 1, static_cast<uint32_t>((uint64_t{y} + 1) * tFrom.dwHeight / dwHeight));
        for (uint32_t x = 0; x < dwWidth; ++x)
        {
            const uint32_t dwLeft = static_cast<uint32_t>(uint64_t{x} * tFrom.dwWidth / dwWidth);
            const uint32_t dwRight =
                std::max(dwLeft + 1, static_cast<uint32_t>((uint64_t{x} + 1) * tFrom.dwWidth / dwWidth));
            uint32_t adwSum[3] = {};
            for (uint32_t v = dwTop; v < dwBottom; ++v)
            {
                for (uint32_t u = dwLeft; u < dwRight; ++u)
                {
                    for (uint32_t i = 0; i < 3; ++i)
                    {
                        adwSum[i] += tFrom.abyDots[(std::size_t{v} * tFrom.dwWidth + u) * 3 + i];
                    }
                }
            }
            const uint32_t dwDots = (dwBottom - dwTop) * (dwRight - dwLeft);
            for (uint32_t i = 0; i < 3; ++i)
            {
                t.abyDots[(std::size_t{y} * dwWidth + x) * 3 + i] = static_cast<unsigned char>(adwSum[i] / dwDots);
            }
        }
    }
    return t;
}

bool EncodeJpeg(tagDots const& t, int nQuality, std::string& strFile)
{
    const Handle pEncoder(tjInitCompress(), &tjDestroy);
    unsigned char* pbyOut = nullptr;
    unsigned long dwLength = 0;
    const bool bDone = pEncoder && tjCompress2(pEncoder.get(), t.abyDots.data(), static_cast<int>(t.dwWidth), 0,
                                               static_cast<int>(t.dwHeight), TJPF_RGB, &pbyOut, &dwLength, TJSAMP_420,
                                               nQuality, 0) == 0;
    const std::unique_ptr<unsigned char, decltype(&tjFree)> pOut(pbyOut, &tjFree);
    if (bDone)
    {
        strFile.assign(reinterpret_cast<char const*>(pbyOut), dwLength);
    }
    return bDone;
}

bool EncodePng(tagDots const& t, std::string& strFile)
{
    png_image tImage{};
    tImage.version = PNG_IMAGE_VERSION;
    tImage.width = t.dwWidth;
    tImage.height = t.dwHeight;
    tImage.format = PNG_FORMAT_RGB;
    png_alloc_size_t nLength = PNG_IMAGE_PNG_SIZE_MAX(tImage);
    strFile.resize(nLength);
    const bool bDone =
        png_image_write_to_memory(&tImage, strFile.data(), &nLength, 0, t.abyDots.data(), 0, nullptr) != 0;
    strFile.resize(bDone ? nLength : 0);
    return bDone;
}

// How far down: whichever of width and height is more beyond its limit.
void Limit(tagDots const& t, uint32_t& dwWidth, uint32_t& dwHeight)
{
    const uint32_t dwMaxWidth = dwWidth ? dwWidth : t.dwWidth;
    const uint32_t dwMaxHeight = dwHeight ? dwHeight : t.dwHeight;
    dwWidth = t.dwWidth;
    dwHeight = t.dwHeight;
    if (dwWidth > dwMaxWidth)
    {
        dwHeight = static_cast<uint32_t>(uint64_t{t.dwHeight} * dwMaxWidth / t.dwWidth);
        dwWidth = dwMaxWidth;
    }
    if (dwHeight > dwMaxHeight)
    {
        dwWidth = static_cast<uint32_t>(uint64_t{t.dwWidth} * dwMaxHeight / t.dwHeight);
        dwHeight = dwMaxHeight;
    }
    dwWidth = std::max(dwWidth, 1U);
    dwHeight = std::max(dwHeight, 1U);
}

int Convert(tagFile const& tFile, uint32_t dwCodec, eImageFormat eFormat, tagImageFileInfo& tInfo, std::string& strFile)
{
    tagDots tDots;
    if (!(dwCodec == eCodecMJPEG ? DecodeJpeg(tFile, tDots) : DecodeKeyFrame(tFile.pby, tFile.nLength, dwCodec, tDots)))
    {
        return eResultRefused;
    }
    Limit(tDots, tInfo.dwWidth, tInfo.dwHeight);
    if (tInfo.dwWidth != tDots.dwWidth || tInfo.dwHeight != tDots.dwHeight)
    {
        tDots = Reduce(tDots, tInfo.dwWidth, tInfo.dwHeight);
    }
    const int nQuality = tInfo.dwQuality ? static_cast<int>(tInfo.dwQuality) : g_nUsualQuality;
    const bool bDone = eFormat == eImageJpeg ? EncodeJpeg(tDots, nQuality, strFile) : EncodePng(tDots, strFile);
    return bDone ? int{eResultOk} : int{eResultNoResources};
}
} // namespace
} // namespace onvifclient

int OnvifPicture_Convert(unsigned char const* pbyFile, std::size_t nLength, uint32_t dwCodec, eImageFormat eFormat,
                         tagImageFileInfo* ptInfo, std::string* pstrFile)
try
{
    return onvifclient::Convert({pbyFile, nLength}, dwCodec, eFormat, *ptInfo, *pstrFile);
}
catch (...)
{
    return eResultNoResources;
}
