/// @file
/// Frames and buffers: what the callbacks hand over.

#ifndef TESSARO_PROTOCOL_INTERFACE_FRAMES_H
#define TESSARO_PROTOCOL_INTERFACE_FRAMES_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup frames Frames and buffers
/// What the callbacks hand over.
/// @{

/// What a frame carries.
TESSARO_ENUM(eMediaType){
    eMediaVideo = 0, ///< one access unit
    eMediaAudio = 1, ///< one packet
    eMediaOther = 2, ///< metadata, subtitles, an application track
};

/// How a frame is coded. Codecs without a value of their own are passed on as eCodecOther and named in szCodecName.
TESSARO_ENUM(eMediaCodec){
    eCodecOther = 0,     ///< see szCodecName
    eCodecH264 = 1,      ///< Annex B byte stream
    eCodecH265 = 2,      ///< Annex B byte stream
    eCodecAAC = 3,       ///< raw access units without ADTS header; tagStreamMediaFrame::pConfig describes them
    eCodecG711A = 4,     ///< A-law
    eCodecG711U = 5,     ///< mu-law
    eCodecG726 = 6,      ///< ADPCM; szCodecName ends in the bit rate: "g726-32"
    eCodecOpus = 7,      ///< one packet
    eCodecMJPEG = 8,     ///< one whole JPEG file
    eCodecMPEG4 = 9,     ///< MPEG-4 Part 2; one access unit
    eCodecMPEGTS = 10,   ///< whole transport stream packets of 188 bytes
    eCodecMetadata = 11, ///< one XML document of ONVIF metadata
};

/// Bits of tagStreamMediaFrame::dwFlags.
TESSARO_ENUM(eFrameFlag){
    eFrameKey = 1, ///< decoding can start here; H.264 and H.265 then have their parameter sets before the picture
    eFrameDiscontinuity = 2, ///< presentation times do not continue those of the frame before (reconnect, clock jump)
    eFrameDamaged = 4, ///< parts of this frame may be lost: packets were missing at its beginning, inside or at its end
    eFrameEnd = 8,     ///< no frame: playback has come to its end; dwLength is 0 and pData null
};

/// One frame of a live or recorded stream. The record and its data belong to the plug-in and are valid until the
/// callback returns.
typedef struct tagStreamMediaFrame
{
    uint32_t dwMediaType;         ///< eMediaType
    uint32_t dwCodec;             ///< eMediaCodec
    char szCodecName[16];         ///< the codec's usual short name, lower case: "h264", "hevc", "aac", "mjpeg"
    uint32_t dwFlags;             ///< eFrameFlag bits
    uint32_t dwSequence;          ///< counts the frames of this track as they arrive, from 0; a gap: frames held back
    uint32_t dwLostBefore;        ///< RTP packets known to be lost since the frame before it on this stream
    uint32_t dwLength;            ///< bytes at pData
    int64_t llPresentationTimeUs; ///< microseconds on the stream's own time line, which starts near 0
    int64_t llWallClockUs;        ///< the device's clock, microseconds since 1970 UTC; 0 while it is not known
    uint32_t dwWidth;             ///< video: picture width in pixels, else 0
    uint32_t dwHeight;            ///< video: picture height in pixels, else 0
    uint32_t dwSampleRate;        ///< audio: samples per second, else 0
    uint32_t dwChannels;          ///< audio: channels, else 0
    const unsigned char* pData;   ///< one access unit of video, or one packet of audio
    const unsigned char* pConfig; ///< what a decoder needs beside the frames (AAC: AudioSpecificConfig); null: nothing
    uint32_t dwConfigLength;      ///< bytes at pConfig
} tagStreamMediaFrame;

/// One frame of a voice connection; life time as tagStreamMediaFrame.
typedef struct tagStreamVoiceFrame
{
    uint32_t dwCodec;             ///< eMediaCodec
    uint32_t dwSampleRate;        ///< samples per second
    uint32_t dwChannels;          ///< channels
    uint32_t dwLength;            ///< bytes at pData
    int64_t llPresentationTimeUs; ///< microseconds on the stream's own time line
    const unsigned char* pData;   ///< one packet
} tagStreamVoiceFrame;

/// A block of bytes. The call that takes the record says who owns pData.
typedef struct tagBuffer
{
    unsigned char* pData; ///< the bytes
    uint32_t dwLength;    ///< bytes at pData
} tagBuffer;

/// How far a file upload has come; handed to the callback by value.
typedef struct tagFileUploadState
{
    uint32_t dwState;   ///< 0 running, 1 finished, 2 failed
    uint32_t dwResult;  ///< the plug-in's reason when failed, else 0
    uint64_t ullSent;   ///< bytes the device has taken
    uint64_t ullLength; ///< bytes of the whole file
} tagFileUploadState;

/// @}

/// @}

TESSARO_STATIC_ASSERT(offsetof(tagStreamMediaFrame, llPresentationTimeUs) == 40, "tagStreamMediaFrame");
TESSARO_STATIC_ASSERT(offsetof(tagStreamMediaFrame, pData) == 72, "tagStreamMediaFrame");
TESSARO_STATIC_ASSERT(sizeof(tagFileUploadState) == 24, "tagFileUploadState");

TESSARO_C_END

#endif
