#pragma once

#include "plugins/onvif/Convert.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace onvifclient
{
/// What an encoder takes, as its options tell. What they don't tell is nothing, and takes anything.
struct tagEncoderLimits
{
    bool bOffered = false; ///< it codes so at all
    std::optional<tagSpan> tQuality;
    std::optional<tagSpan> tFrameRate; ///< frames per second
    std::optional<tagSpan> tBitRate;   ///< kilobits per second
    std::optional<tagSpan> tKeyFrames; ///< frames from one key frame to the next
    bool bConstantBitRate = false;
    std::vector<std::pair<uint32_t, uint32_t>> atSizes;
    std::vector<std::string> astrProfiles;
};

/// For this codec. tAnswer: the response to GetVideoEncoderConfigurationOptions.
tagEncoderLimits VideoLimits(pugi::xml_node tAnswer, bool bMedia2, uint32_t dwCodec);
/// Whether an audio encoder codes so: bit rate in kilobits per second, sample rate in samples per second.
bool TakesAudio(pugi::xml_node tAnswer, bool bMedia2, uint32_t dwCodec, uint32_t dwBitRate, uint32_t dwSampleRate);
} // namespace onvifclient
