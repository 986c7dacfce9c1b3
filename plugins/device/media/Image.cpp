#include "plugins/device/media/Image.h"

#include "protocol/interface/Camera.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>

#include <png.h>
#include <turbojpeg.h>

namespace device
{
namespace
{
constexpr int g_nMaxSide = 8192;

using JpegHandle = std::unique_ptr<void, decltype(&tjDestroy)>;

// Whole dots of a rectangle that lie in a picture.
struct tagDots
{
    uint32_t dwLeft;
    uint32_t dwTop;
    uint32_t dwRight; // after the last one
    uint32_t dwBottom;
};

uint32_t Clamp(double fValue, uint32_t dwMax)
{
    return static_cast<uint32_t>(std::clamp(std::floor(fValue + 0.5), 0.0, static_cast<double>(dwMax)));
}

tagDots DotsOf(tagImage const& tImage, tagRectangle const& t)
{
    return {Clamp(t.fLeft, tImage.dwWidth), Clamp(t.fTop, tImage.dwHeight), Clamp(t.fLeft + t.fWidth, tImage.dwWidth),
            Clamp(t.fTop + t.fHeight, tImage.dwHeight)};
}

unsigned char Level(double fValue)
{
    return static_cast<unsigned char>(std::clamp(fValue + 0.5, 0.0, 255.0));
}

// Which dots of the source each dot of the target shows, in one direction: from and up to.
std::vector<std::pair<uint32_t, uint32_t>> Sources(uint32_t dwFrom, uint32_t dwTo, double fWhere, double fLength,
                                                   double fPart, double fPartLength, uint32_t dwLimit)
{
    std::vector<std::pair<uint32_t, uint32_t>> atSources;
    for (uint32_t i = dwFrom; i < dwTo; ++i)
    {
        const double fBegin = fPart + (i - fWhere) * fPartLength / fLength;
        const double fEnd = fPart + (i + 1 - fWhere) * fPartLength / fLength;
        const auto dwBegin = static_cast<uint32_t>(std::clamp(fBegin, 0.0, dwLimit - 1.0));
        const auto dwEnd = static_cast<uint32_t>(std::clamp(fEnd, dwBegin + 1.0, static_cast<double>(dwLimit)));
        atSources.emplace_back(dwBegin, std::max(dwEnd, dwBegin + 1));
    }
    return atSources;
}

tagImage ReadJpeg(Bytes tFile)
{
    const JpegHandle pHandle(tjInitDecompress(), &tjDestroy);
    int nWidth = 0;
    int nHeight = 0;
    int nSampling = 0;
    int nColours = 0;
    const auto nLength = static_cast<unsigned long>(tFile.size());
    if (!pHandle ||
        tjDecompressHeader3(pHandle.get(), tFile.data(), nLength, &nWidth, &nHeight, &nSampling, &nColours) != 0 ||
        nWidth > g_nMaxSide || nHeight > g_nMaxSide)
    {
        throw std::runtime_error("not a JPEG file");
    }
    tagImage tImage(static_cast<uint32_t>(nWidth), static_cast<uint32_t>(nHeight), 0);
    // A warning leaves a picture of which a part is grey.
    if (tjDecompress2(pHandle.get(), tFile.data(), nLength, tImage.abyDots.data(), nWidth, 0, nHeight, TJPF_RGB, 0) !=
            0 &&
        tjGetErrorCode(pHandle.get()) == TJERR_FATAL)
    {
        throw std::runtime_error("not a whole JPEG file");
    }
    return tImage;
}

// What libpng keeps of a picture goes with it.
struct tagPng : png_image
{
    tagPng() : png_image{} { version = PNG_IMAGE_VERSION; }
    ~tagPng() { png_image_free(this); }
    tagPng(tagPng const&) = delete;
    tagPng& operator=(tagPng const&) = delete;
};

tagImage ReadPng(Bytes tFile)
{
    tagPng tPng;
    if (png_image_begin_read_from_memory(&tPng, tFile.data(), tFile.size()) == 0 || tPng.width > g_nMaxSide ||
        tPng.height > g_nMaxSide)
    {
        throw std::runtime_error("not a PNG file");
    }
    tPng.format = PNG_FORMAT_RGB;
    tagImage tImage(tPng.width, tPng.height, 0);
    const png_color tBlack{};
    if (png_image_finish_read(&tPng, &tBlack, tImage.abyDots.data(), 0, nullptr) == 0)
    {
        throw std::runtime_error("not a whole PNG file");
    }
    return tImage;
}

std::vector<unsigned char> WriteJpeg(tagImage const& tImage, uint32_t dwQuality)
{
    const JpegHandle pHandle(tjInitCompress(), &tjDestroy);
    const auto nWidth = static_cast<int>(tImage.dwWidth);
    const auto nHeight = static_cast<int>(tImage.dwHeight);
    std::vector<unsigned char> abyFile(tjBufSize(nWidth, nHeight, TJSAMP_420));
    auto nLength = static_cast<unsigned long>(abyFile.size());
    unsigned char* pFile = abyFile.data();
    if (!pHandle || tjCompress2(pHandle.get(), tImage.abyDots.data(), nWidth, 0, nHeight, TJPF_RGB, &pFile, &nLength,
                                TJSAMP_420, static_cast<int>(dwQuality), TJFLAG_NOREALLOC) != 0)
    {
        throw std::runtime_error("the picture can't be coded");
    }
    abyFile.resize(nLength);
    return abyFile;
}

std::vector<unsigned char> WritePng(tagImage const& tImage)
{
    tagPng tPng;
    tPng.width = tImage.dwWidth;
    tPng.height = tImage.dwHeight;
    tPng.format = PNG_FORMAT_RGB;
    tPng.flags = PNG_IMAGE_FLAG_FAST;
    png_alloc_size_t nLength = PNG_IMAGE_PNG_SIZE_MAX(tPng);
    std::vector<unsigned char> abyFile(nLength);
    if (png_image_write_to_memory(&tPng, abyFile.data(), &nLength, 0, tImage.abyDots.data(), 0, nullptr) == 0)
    {
        throw std::runtime_error("the picture can't be coded");
    }
    abyFile.resize(nLength);
    return abyFile;
}
} // namespace

tagImage::tagImage(uint32_t dwAcross, uint32_t dwDown, uint32_t dwColour)
    : dwWidth(dwAcross), dwHeight(dwDown), abyDots(std::size_t{dwAcross} * dwDown * 3)
{
    if (dwColour != 0)
    {
        Fill(*this, WholeOf(*this), dwColour);
    }
}

tagImage ReadImage(Bytes tFile)
{
    return tFile.size() > 2 && tFile[0] == 0xFF && tFile[1] == 0xD8 ? ReadJpeg(tFile) : ReadPng(tFile);
}

std::vector<unsigned char> WriteImage(tagImage const& tImage, eImageFormat eFormat, uint32_t dwQuality)
{
    return eFormat == eImageJpeg ? WriteJpeg(tImage, dwQuality) : WritePng(tImage);
}

void Draw(tagImage& tOn, tagRectangle const& tWhere, tagImage const& tWhat, tagRectangle const& tPart,
          uint32_t dwOpacity)
{
    const tagDots t = DotsOf(tOn, tWhere);
    if (t.dwLeft >= t.dwRight || t.dwTop >= t.dwBottom || tWhat.abyDots.empty())
    {
        return;
    }
    const auto atColumns =
        Sources(t.dwLeft, t.dwRight, tWhere.fLeft, tWhere.fWidth, tPart.fLeft, tPart.fWidth, tWhat.dwWidth);
    const auto atRows =
        Sources(t.dwTop, t.dwBottom, tWhere.fTop, tWhere.fHeight, tPart.fTop, tPart.fHeight, tWhat.dwHeight);
    for (uint32_t y = t.dwTop; y < t.dwBottom; ++y)
    {
        const auto [dwTop, dwBottom] = atRows[y - t.dwTop];
        unsigned char* pTo = tOn.Dot(t.dwLeft, y);
        for (auto const& [dwLeft, dwRight] : atColumns)
        {
            // The mean of all dots that become one.
            uint32_t adwSum[3] = {};
            for (uint32_t dwY = dwTop; dwY < dwBottom; ++dwY)
            {
                unsigned char const* pFrom = tWhat.Dot(dwLeft, dwY);
                for (uint32_t dwX = dwLeft; dwX < dwRight; ++dwX, pFrom += 3)
                {
                    adwSum[0] += pFrom[0];
                    adwSum[1] += pFrom[1];
                    adwSum[2] += pFrom[2];
                }
            }
            const uint32_t dwCount = (dwBottom - dwTop) * (dwRight - dwLeft);
            for (uint32_t const dwSum : adwSum)
            {
                *pTo = static_cast<unsigned char>((*pTo * (100 - dwOpacity) + dwSum / dwCount * dwOpacity) / 100);
                ++pTo;
            }
        }
    }
}

void Fill(tagImage& tOn, tagRectangle const& tWhere, uint32_t dwColour)
{
    const tagDots t = DotsOf(tOn, tWhere);
    for (uint32_t y = t.dwTop; y < t.dwBottom; ++y)
    {
        for (uint32_t x = t.dwLeft; x < t.dwRight; ++x)
        {
            unsigned char* const pDot = tOn.Dot(x, y);
            pDot[0] = static_cast<unsigned char>(dwColour >> 16 & 255);
            pDot[1] = static_cast<unsigned char>(dwColour >> 8 & 255);
            pDot[2] = static_cast<unsigned char>(dwColour & 255);
        }
    }
}

tagImage Turn(tagImage const& tImage, uint32_t dwTurn)
{
    const bool bQuarter = (dwTurn & eTurnQuarter) != 0;
    tagImage tTurned(bQuarter ? tImage.dwHeight : tImage.dwWidth, bQuarter ? tImage.dwWidth : tImage.dwHeight, 0);
    for (uint32_t y = 0; y < tImage.dwHeight; ++y)
    {
        for (uint32_t x = 0; x < tImage.dwWidth; ++x)
        {
            const uint32_t dwX = (dwTurn & eTurnMirror) != 0 ? tImage.dwWidth - 1 - x : x;
            const uint32_t dwY = (dwTurn & eTurnFlip) != 0 ? tImage.dwHeight - 1 - y : y;
            unsigned char* const pTo = bQuarter ? tTurned.Dot(tImage.dwHeight - 1 - dwY, dwX) : tTurned.Dot(dwX, dwY);
            std::copy_n(tImage.Dot(x, y), 3, pTo);
        }
    }
    return tTurned;
}

void Adjust(tagImage& tImage, tagRectangle const& tWhere, uint32_t dwBrightness, uint32_t dwContrast,
            uint32_t dwSaturation)
{
    if (dwBrightness == 50 && dwContrast == 50 && dwSaturation == 50)
    {
        return;
    }
    const double fAdd = (dwBrightness - 50.0) * 2.55;
    const double fContrast = dwContrast / 50.0;
    const double fSaturation = dwSaturation / 50.0;
    const tagDots t = DotsOf(tImage, tWhere);
    for (uint32_t y = t.dwTop; y < t.dwBottom; ++y)
    {
        for (uint32_t x = t.dwLeft; x < t.dwRight; ++x)
        {
            unsigned char* const pDot = tImage.Dot(x, y);
            const double fGrey = 0.299 * pDot[0] + 0.587 * pDot[1] + 0.114 * pDot[2];
            for (int i = 0; i < 3; ++i)
            {
                const double fColour = fGrey + (pDot[i] - fGrey) * fSaturation;
                pDot[i] = Level((fColour - 128) * fContrast + 128 + fAdd);
            }
        }
    }
}

void Limit(uint32_t& dwWidth, uint32_t& dwHeight, uint32_t dwMaxWidth, uint32_t dwMaxHeight)
{
    double fScale = 1;
    fScale = dwMaxWidth ? std::min(fScale, static_cast<double>(dwMaxWidth) / dwWidth) : fScale;
    fScale = dwMaxHeight ? std::min(fScale, static_cast<double>(dwMaxHeight) / dwHeight) : fScale;
    dwWidth = std::max(1U, static_cast<uint32_t>(dwWidth * fScale + 0.001));
    dwHeight = std::max(1U, static_cast<uint32_t>(dwHeight * fScale + 0.001));
}
} // namespace device
