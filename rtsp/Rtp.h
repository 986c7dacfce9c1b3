#pragma once

#include "rtsp/Bytes.h"

#include <array>
#include <cstdint>
#include <optional>

namespace rtsp
{
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
    Bytes abyJpegSegments; ///< of ONVIF's JPEG extension: marker segments for the picture's header; empty: none
};

/// Nothing: no RTP packet of version 2, or shorter than its own header says.
std::optional<tagRtpPacket> ParseRtp(Bytes abyPacket);

/// What stands before the payload of a packet that we send: its numbers, without extension.
std::array<unsigned char, 12> MakeRtpHeader(tagRtpPacket const& tPacket);
} // namespace rtsp
