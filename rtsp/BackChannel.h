#pragma once

#include "protocol/PluginInterface.h"
#include "rtsp/Bytes.h"
#include "rtsp/Description.h"

#include <cstdint>
#include <optional>
#include <string>

namespace rtsp
{
/// What a device's loudspeaker takes.
struct tagAudioFormat
{
    eMediaCodec eCodec = eCodecOther; ///< eCodecG711A, eCodecG711U, eCodecG726 or eCodecAAC
    std::uint32_t dwSampleRate = 0;
    std::uint32_t dwChannels = 0;
};

/// Makes the RTP packets of a back channel. Who calls keeps the pace: one frame when it is due.
class CBackChannel
{
public:
    /// Nothing: the track's codec can't be sent.
    static std::optional<tagAudioFormat> FormatOf(tagMediaDescription const& tDescription);

    CBackChannel(tagMediaDescription const& tDescription, tagAudioFormat const& tFormat);

    tagAudioFormat const& Format() const { return m_tFormat; }
    /// abyFrame: samples of G.711 or G.726, or one raw access unit of AAC. nSamples: its duration. bFirst: silence came
    /// before it.
    std::string MakePacket(Bytes abyFrame, std::uint32_t nSamples, bool bFirst);
    /// A report about what was sent; empty before the first packet.
    std::string MakeReport() const;

private:
    const tagAudioFormat m_tFormat;
    const std::uint8_t m_byPayloadType;
    const std::uint32_t m_dwSource;
    std::uint16_t m_wSequence;
    std::uint32_t m_dwStamp;
    std::uint32_t m_dwPackets = 0;
    std::uint32_t m_dwBytes = 0;
};
} // namespace rtsp
