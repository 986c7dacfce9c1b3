#include "rtsp/payload/PictureSize.h"
#include "rtsp/BitReader.h"
#include "rtsp/payload/ProfileTierLevel.h"

#include <algorithm>
#include <iterator>

namespace rtsp
{
namespace
{
constexpr std::uint32_t g_dwLargest = 32768;

// Sides are cut by what the header says, in units of samples.
std::optional<tagPictureSize> Cropped(CBitReader const& tReader, std::uint64_t ullWidth, std::uint64_t ullHeight,
                                      std::uint64_t ullCutX, std::uint64_t ullCutY)
{
    if (tReader.Failed() || ullWidth > g_dwLargest || ullHeight > g_dwLargest || ullCutX >= ullWidth ||
        ullCutY >= ullHeight)
    {
        return std::nullopt;
    }
    return tagPictureSize{static_cast<std::uint32_t>(ullWidth - ullCutX),
                          static_cast<std::uint32_t>(ullHeight - ullCutY)};
}

void SkipScalingList(CBitReader& tReader, int nEntries)
{
    int nLast = 8;
    int nNext = 8;
    for (int i = 0; i < nEntries && nNext != 0 && !tReader.Failed(); ++i)
    {
        nNext = (nLast + tReader.Se() % 256 + 256) % 256;
        nLast = nNext == 0 ? nLast : nNext;
    }
}

// What profiles above the main one have more. Tells the chroma format.
std::uint32_t ReadHighProfile(CBitReader& tReader)
{
    std::uint32_t dwChroma = tReader.Ue();
    const bool bSeparate = dwChroma == 3 && tReader.Flag();
    tReader.Ue(); // bit depths
    tReader.Ue();
    tReader.Skip(1);
    if (tReader.Flag())
    {
        for (int i = 0; i < (dwChroma == 3 ? 12 : 8); ++i)
        {
            if (tReader.Flag())
            {
                SkipScalingList(tReader, i < 6 ? 16 : 64);
            }
        }
    }
    return bSeparate ? 0 : dwChroma;
}

void SkipPictureOrder(CBitReader& tReader)
{
    const std::uint32_t dwType = tReader.Ue();
    if (dwType == 0)
    {
        tReader.Ue();
    }
    else if (dwType == 1)
    {
        tReader.Skip(1);
        tReader.Se();
        tReader.Se();
        for (std::uint32_t i = std::min(tReader.Ue(), 255U); i > 0; --i)
        {
            tReader.Se();
        }
    }
}
} // namespace

std::optional<tagPictureSize> SizeOfH264(Bytes abySet)
{
    constexpr unsigned auHigh[] = {44, 83, 86, 100, 110, 118, 122, 128, 134, 135, 138, 139, 244};
    CBitReader tReader(abySet, CBitReader::eForm::NalUnit);
    tReader.Skip(8);
    const unsigned uProfile = tReader.Bits(8);
    tReader.Skip(16); // constraints, level
    tReader.Ue();     // its number
    const bool bHigh = std::find(std::begin(auHigh), std::end(auHigh), uProfile) != std::end(auHigh);
    const std::uint32_t dwChroma = bHigh ? ReadHighProfile(tReader) : 1;
    tReader.Ue();
    SkipPictureOrder(tReader);
    tReader.Ue(); // reference frames
    tReader.Skip(1);
    const std::uint64_t ullColumns = std::uint64_t{tReader.Ue()} + 1;
    const std::uint64_t ullRows = std::uint64_t{tReader.Ue()} + 1;
    const bool bFrames = tReader.Flag();
    tReader.Skip(bFrames ? 1 : 2);
    const std::uint64_t ullFields = bFrames ? 1 : 2;
    const std::uint64_t ullUnitX = dwChroma == 1 || dwChroma == 2 ? 2 : 1;
    const std::uint64_t ullUnitY = (dwChroma == 1 ? 2 : 1) * ullFields;
    std::uint64_t aullCut[4]{};
    if (tReader.Flag())
    {
        std::generate(std::begin(aullCut), std::end(aullCut), [&] { return tReader.Ue(); });
    }
    return Cropped(tReader, ullColumns * 16, ullRows * 16 * ullFields, (aullCut[0] + aullCut[1]) * ullUnitX,
                   (aullCut[2] + aullCut[3]) * ullUnitY);
}

std::optional<tagPictureSize> SizeOfH265(Bytes abySet)
{
    CBitReader tReader(abySet, CBitReader::eForm::NalUnit);
    SkipToNumberOfSequence(tReader);
    tReader.Ue();
    const std::uint32_t dwChroma = tReader.Ue();
    const bool bSeparate = dwChroma == 3 && tReader.Flag();
    const std::uint64_t ullWidth = tReader.Ue();
    const std::uint64_t ullHeight = tReader.Ue();
    std::uint64_t aullCut[4]{};
    if (tReader.Flag())
    {
        std::generate(std::begin(aullCut), std::end(aullCut), [&] { return tReader.Ue(); });
    }
    const std::uint64_t ullUnitX = !bSeparate && (dwChroma == 1 || dwChroma == 2) ? 2 : 1;
    const std::uint64_t ullUnitY = dwChroma == 1 ? 2 : 1;
    return Cropped(tReader, ullWidth, ullHeight, (aullCut[0] + aullCut[1]) * ullUnitX,
                   (aullCut[2] + aullCut[3]) * ullUnitY);
}

std::optional<tagPictureSize> SizeOfMpeg4(Bytes abyLayer)
{
    CBitReader tReader(abyLayer);
    tReader.Skip(1 + 8);
    unsigned uVersion = 1;
    if (tReader.Flag())
    {
        uVersion = tReader.Bits(4);
        tReader.Skip(3);
    }
    if (tReader.Bits(4) == 15) // a pixel's shape of its own
    {
        tReader.Skip(16);
    }
    if (tReader.Flag()) // control parameters
    {
        tReader.Skip(3);
        if (tReader.Flag())
        {
            tReader.Skip(79); // of the decoder's buffer
        }
    }
    const unsigned uShape = tReader.Bits(2);
    if (uShape == 3 && uVersion != 1)
    {
        tReader.Skip(4);
    }
    tReader.Skip(1);
    const unsigned uTicks = tReader.Bits(16);
    tReader.Skip(1);
    if (tReader.Flag())
    {
        unsigned nBits = 1;
        while (nBits < 16 && (uTicks - 1) >> nBits != 0)
        {
            ++nBits;
        }
        tReader.Skip(nBits);
    }
    if (uShape != 0) // only rectangles have a size
    {
        return std::nullopt;
    }
    tReader.Skip(1);
    const std::uint64_t ullWidth = tReader.Bits(13);
    tReader.Skip(1);
    return Cropped(tReader, ullWidth, tReader.Bits(13), 0, 0);
}
} // namespace rtsp
