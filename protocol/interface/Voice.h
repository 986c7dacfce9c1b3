/// @file
/// Voice talk.

#ifndef TESSARO_PROTOCOL_INTERFACE_VOICE_H
#define TESSARO_PROTOCOL_INTERFACE_VOICE_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup voicerecords Voice talk
/// Audio to a device and back, under a media connection that is open.
/// @{

/// Where a voice frame comes from.
TESSARO_ENUM(eVoiceStreamSource){
    eVoiceFromDevice = 0, ///< the device's microphone or line input
    eVoiceFromLocal = 1,  ///< what the application itself sent, as the device took it; with eVoiceReportSent
};

/// Bits of tagVoiceStreamPara::dwFlags.
TESSARO_ENUM(eVoiceFlag){
    eVoiceListenOnly = 1, ///< nothing will be sent
    eVoiceTalkOnly = 2,   ///< nothing is to come
    eVoiceReportSent = 4, ///< what is sent comes back to the callback as eVoiceFromLocal
};

/// How voice is to be coded. The application says what it wants; when the call returns, the record says what was
/// agreed, before the first packet is sent. Send packets of dwPacketMs, one each dwPacketMs; the plug-in does not keep
/// the time for its caller.
typedef struct tagVoiceStreamPara
{
    uint32_t dwSize;       ///< sizeof this record, by the application
    uint32_t dwCodec;      ///< eMediaCodec; in: 0: the device may choose; out: what was agreed
    uint32_t dwSampleRate; ///< samples per second; in: 0: the device may choose; out: what was agreed
    uint32_t dwChannels;   ///< channels; in: 0: 1; out: what was agreed
    uint32_t dwPacketMs;   ///< length of a packet in milliseconds; in: 0: 20; out: what was agreed
    uint32_t dwFlags;      ///< eVoiceFlag bits
    uint32_t dwOutput;     ///< the device's audio output, from 0
    uint32_t dwInput;      ///< the device's audio input, from 0
} tagVoiceStreamPara;

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagVoiceStreamPara, 32, 32);

#endif
