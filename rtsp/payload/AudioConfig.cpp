#include "rtsp/payload/AudioConfig.h"

#include <iterator>

namespace rtsp
{
namespace
{
enum : unsigned
{
    g_uScalable = 6,
    g_uReplication = 5, ///< spectral band replication: the output has twice the samples
    g_uFirstResilient = 17,
    g_uResilientScalable = 20,
    g_uSliced = 22,
    g_uLowDelay = 23,
    g_uStereo = 29, ///< parametric stereo: the output has two channels
    g_uEscape = 31,
    g_uEnhancedLowDelay = 39,
};

constexpr unsigned g_uExtension = 0x2B7; // 11 bits

unsigned ReadKind(CBitReader& tReader)
{
    const unsigned uKind = tReader.Bits(5);
    return uKind == g_uEscape ? 32 + tReader.Bits(6) : uKind;
}

std::uint32_t ReadRate(CBitReader& tReader)
{
    constexpr std::uint32_t adwRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                          22050, 16000, 12000, 11025, 8000,  7350};
    const unsigned uIndex = tReader.Bits(4);
    return uIndex == 15 ? tReader.Bits(24) : uIndex < std::size(adwRates) ? adwRates[uIndex] : 0;
}

bool IsGeneral(unsigned uKind)
{
    return (uKind >= 1 && uKind <= 4) || uKind == g_uScalable || uKind == 7 || uKind == g_uFirstResilient ||
           (uKind >= 19 && uKind <= g_uLowDelay);
}

// False: what follows can't be found.
bool SkipGeneral(CBitReader& tReader, unsigned uKind, bool bChannelsHere, tagAudioConfig& tConfig)
{
    const bool bShort = tReader.Flag();
    tConfig.nFrameLength = uKind == g_uLowDelay ? (bShort ? 480 : 512) : bShort ? 960 : 1024;
    if (tReader.Flag())
    {
        tReader.Skip(14);
    }
    const bool bExtension = tReader.Flag();
    if (bChannelsHere)
    {
        return false;
    }
    if (uKind == g_uScalable || uKind == g_uResilientScalable)
    {
        tReader.Skip(3);
    }
    if (bExtension)
    {
        tReader.Skip(uKind == g_uSliced ? 16 : uKind >= g_uFirstResilient ? 3 : 0);
        tReader.Skip(1);
    }
    if (uKind >= g_uFirstResilient)
    {
        const unsigned uProtection = tReader.Bits(2);
        return uProtection < 2;
    }
    return true;
}

// Replication and stereo as older decoders pass over them: behind the end.
void ReadExtension(CBitReader& tReader, tagAudioConfig& tConfig)
{
    if (tReader.Bits(11) != g_uExtension || ReadKind(tReader) != g_uReplication || !tReader.Flag())
    {
        return;
    }
    const std::uint32_t dwRate = ReadRate(tReader);
    tConfig.dwRate = !tReader.Failed() && dwRate != 0 ? dwRate : tConfig.dwRate;
    if (tReader.Bits(11) == 0x548 && tReader.Flag() && !tReader.Failed())
    {
        tConfig.nChannels = 2;
    }
}
} // namespace

std::optional<tagAudioConfig> ParseAudioConfig(CBitReader& tReader, bool bToTheEnd)
{
    tagAudioConfig tConfig;
    unsigned uKind = ReadKind(tReader);
    tConfig.dwCoreRate = tConfig.dwRate = ReadRate(tReader);
    const unsigned uChannels = tReader.Bits(4);
    tConfig.nChannels = uChannels == 7 ? 8 : uChannels < 7 ? uChannels : 0;
    if (uKind == g_uReplication || uKind == g_uStereo)
    {
        tConfig.nChannels = uKind == g_uStereo ? 2 : tConfig.nChannels;
        tConfig.dwRate = ReadRate(tReader);
        uKind = ReadKind(tReader);
        tReader.Skip(uKind == g_uSliced ? 4 : 0);
    }
    if (tReader.Failed())
    {
        return std::nullopt;
    }
    const bool bFound = IsGeneral(uKind) && SkipGeneral(tReader, uKind, uChannels == 0, tConfig);
    if (uKind == g_uEnhancedLowDelay)
    {
        tConfig.nFrameLength = tReader.Flag() ? 480 : 512;
    }
    if (!bToTheEnd)
    {
        // Some encoders let the extension follow here too. What else may follow never begins with its mark.
        CBitReader tAhead = tReader;
        if (bFound && tAhead.Bits(11) == g_uExtension && !tAhead.Failed())
        {
            ReadExtension(tReader, tConfig);
        }
        return bFound && !tReader.Failed() ? std::optional(tConfig) : std::nullopt;
    }
    if (bFound && tConfig.dwRate == tConfig.dwCoreRate)
    {
        ReadExtension(tReader, tConfig);
    }
    return tConfig;
}
} // namespace rtsp
