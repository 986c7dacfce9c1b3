#include "plugins/onvif/Picture.h"

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

unsigned char const* Bytes(std::string const& strFile)
{
    return reinterpret_cast<unsigned char const*>(strFile.data());
}

struct tagDots
{
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    std::vector<unsigned char> abyDots; // red, green, blue
};

bool Decode(std::string const& strJpeg, tagDots& t)
{
    const Handle pDecoder(tjInitDecompress(), &tjDestroy);
    int nWidth = 0;
    int nHeight = 0;
    int nSampling = 0;
    int nColours = 0;
    if (!pDecoder || tjDecompressHeader3(pDecoder.get(), Bytes(strJpeg), strJpeg.size(), &nWidth, &nHeight, &nSampling,
                                         &nColours) != 0)
    {
        return false;
    }
    t.dwWidth = static_cast<uint32_t>(nWidth);
    t.dwHeight = static_cast<uint32_t>(nHeight);
    t.abyDots.resize(std::size_t{t.dwWidth} * t.dwHeight * 3);
    // What ends early is shown as far as it goes.
    return tjDecompress2(pDecoder.get(), Bytes(strJpeg), strJpeg.size(), t.abyDots.data(), nWidth, 0, nHeight, TJPF_RGB,
                         0) == 0 ||
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
} // namespace

bool SizeOf(std::string const& strJpeg, uint32_t& dwWidth, uint32_t& dwHeight)
{
    const Handle pDecoder(tjInitDecompress(), &tjDestroy);
    int nWidth = 0;
    int nHeight = 0;
    int nSampling = 0;
    int nColours = 0;
    const bool bIs = pDecoder && tjDecompressHeader3(pDecoder.get(), Bytes(strJpeg), strJpeg.size(), &nWidth, &nHeight,
                                                     &nSampling, &nColours) == 0;
    dwWidth = bIs ? static_cast<uint32_t>(nWidth) : 0;
    dwHeight = bIs ? static_cast<uint32_t>(nHeight) : 0;
    return bIs && uint64_t{dwWidth} * dwHeight <= g_ullMostDots;
}

int Fit(std::string& strFile, eImageFormat eFormat, tagImageFileInfo& tInfo)
{
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    if (!SizeOf(strFile, dwWidth, dwHeight))
    {
        return eResultRefused;
    }
    const uint32_t dwMaxWidth = tInfo.dwWidth ? tInfo.dwWidth : dwWidth;
    const uint32_t dwMaxHeight = tInfo.dwHeight ? tInfo.dwHeight : dwHeight;
    // How far down, as width to width or height to height: whichever is more.
    uint32_t dwToWidth = dwWidth;
    uint32_t dwToHeight = dwHeight;
    if (dwToWidth > dwMaxWidth)
    {
        dwToHeight = static_cast<uint32_t>(uint64_t{dwHeight} * dwMaxWidth / dwWidth);
        dwToWidth = dwMaxWidth;
    }
    if (dwToHeight > dwMaxHeight)
    {
        dwToWidth = static_cast<uint32_t>(uint64_t{dwWidth} * dwMaxHeight / dwHeight);
        dwToHeight = dwMaxHeight;
    }
    tInfo.dwWidth = std::max(dwToWidth, 1U);
    tInfo.dwHeight = std::max(dwToHeight, 1U);
    const bool bSame = tInfo.dwWidth == dwWidth && tInfo.dwHeight == dwHeight;
    if (bSame && eFormat == eImageJpeg)
    {
        return eResultOk;
    }
    tagDots tDots;
    if (!Decode(strFile, tDots))
    {
        return eResultRefused;
    }
    if (!bSame)
    {
        tDots = Reduce(tDots, tInfo.dwWidth, tInfo.dwHeight);
    }
    const int nQuality = tInfo.dwQuality ? static_cast<int>(tInfo.dwQuality) : g_nUsualQuality;
    const bool bDone = eFormat == eImageJpeg ? EncodeJpeg(tDots, nQuality, strFile) : EncodePng(tDots, strFile);
    return bDone ? int{eResultOk} : int{eResultNoResources};
}
} // namespace onvifclient
