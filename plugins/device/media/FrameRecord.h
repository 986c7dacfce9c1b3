#pragma once

#include "plugins/device/media/Clips.h"

#include <cstring>

namespace device
{
/// A frame of a clip as an application gets it, but for its bytes, its sequence and its times.
inline tagStreamMediaFrame VideoRecord(CClip const& tClip, bool bKey)
{
    tagStreamMediaFrame tFrame{};
    tFrame.dwMediaType = eMediaVideo;
    tFrame.dwCodec = tClip.Codec();
    std::strcpy(tFrame.szCodecName, tClip.Codec() == eCodecH264 ? "h264" : "hevc");
    tFrame.dwFlags = bKey ? eFrameKey : 0;
    tFrame.dwWidth = tClip.Width();
    tFrame.dwHeight = tClip.Height();
    return tFrame;
}

/// The same of a packet of sound. dwCodec: eCodecG711A or eCodecG711U.
inline tagStreamMediaFrame AudioRecord(uint32_t dwCodec)
{
    tagStreamMediaFrame tFrame{};
    tFrame.dwMediaType = eMediaAudio;
    tFrame.dwCodec = dwCodec;
    std::strcpy(tFrame.szCodecName, dwCodec == eCodecG711A ? "pcm_alaw" : "pcm_mulaw");
    tFrame.dwSampleRate = g_dwSampleRate;
    tFrame.dwChannels = 1;
    return tFrame;
}
} // namespace device
