#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace rtsp
{
using Bytes = std::span<unsigned char const>;

/// ONVIF's replay header extension.
struct tagReplayExtension
{
    std::int64_t llTimeUs = 0;   ///< when this was recorded, microseconds since 1970 UTC
    bool bCleanPoint = false;    ///< C: decoding can start here
    bool bEndOfSection = false;  ///< E: the last packet of a contiguous section
    bool bDiscontinuity = false; ///< D: a gap in the recording comes before it
    bool bTerminal = false;      ///< T: the last of the recording
    std::uint8_t byCSeq = 0;     ///< low byte of the PLAY request's CSeq
};

/// One RTP packet, taken apart. Valid as long as the bytes it was made from.
struct tagRtpPacket
{
    bool bMarker = false;
    std::uint8_t byPayloadType = 0;
    std::uint16_t wSequence = 0;
    std::uint32_t dwStamp = 0;
    std::uint32_t dwSource = 0;
    Bytes abyPayload; ///< without padding
    std::optional<tagReplayExtension> tReplay;
};

/// Nothing: no RTP packet of version 2, or shorter than its own header says.
std::optional<tagRtpPacket> ParseRtp(Bytes abyPacket);
} // namespace rtsp
