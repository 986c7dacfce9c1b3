/// @file
/// Playback of recordings.

#ifndef TESSARO_PROTOCOL_INTERFACE_PLAYBACK_H
#define TESSARO_PROTOCOL_INTERFACE_PLAYBACK_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup playbackrecords Playback
/// What to play, from where, how fast.
///
/// Frames go to the callback of ClientAdapter_HistoryStreamCB at the speed of the recording;
/// tagStreamMediaFrame::llWallClockUs says when each was recorded. None comes before a callback is registered. Gaps
/// in a recording are skipped; the frame after one has eFrameDiscontinuity. At the end comes one empty frame with
/// eFrameEnd, then nothing until the position is set; the playback stays open. ClientAdapter_StreamMediaControl plays,
/// pauses and steps.
/// @{

/// Why something was recorded. Bits: a mask of several is a "types" word.
TESSARO_ENUM(eHistoryStreamType){
    eHistoryAny = 0,        ///< in a question: whatever the reason
    eHistoryContinuous = 1, ///< by schedule
    eHistoryMotion = 2,     ///< motion was detected
    eHistoryAlarm = 4,      ///< an alarm input was active
    eHistoryManual = 8,     ///< somebody asked for it: ClientAdapter_RecordControl
};

/// Bits of dwFlag of ClientAdapter_HistoryStreamCreate and ClientAdapter_HistoryStreamMultiTypeCreate.
TESSARO_ENUM(eHistoryFlag){
    eHistoryPaused = 1,        ///< begins paused: no frame comes before eTaskPlay or eTaskStep
    eHistoryNoAudio = 2,       ///< video alone
    eHistoryKeyFramesOnly = 4, ///< only frames with eFrameKey
};

/// What to play: a channel between two times, or one file. Filled by the application.
typedef struct tagHistoryStreamPara
{
    uint32_t dwSize;       ///< sizeof this record
    uint32_t dwChannel;    ///< the device's channel, from 0
    uint32_t dwType;       ///< eHistoryStreamType, one of them; eHistoryAny: all
    uint32_t dwStreamKind; ///< eStreamKind; 0: the main stream
    int64_t llStartUs;     ///< begin, microseconds since 1970 UTC; 0: where the file or the recordings begin
    int64_t llEndUs;       ///< end, microseconds since 1970 UTC; 0: where the file or the recordings end
    char szFile[256];      ///< a file's name on the device, from a query: plays that; empty: plays the channel
} tagHistoryStreamPara;

/// What to play over several record types. Filled by the application.
typedef struct tagHistoryStreamMultiTypePara
{
    uint32_t dwSize;       ///< sizeof this record
    uint32_t dwChannel;    ///< the device's channel, from 0
    uint32_t dwTypes;      ///< eHistoryStreamType bits; 0: all
    uint32_t dwStreamKind; ///< eStreamKind; 0: the main stream
    int64_t llStartUs;     ///< begin, microseconds since 1970 UTC; 0: where the recordings begin
    int64_t llEndUs;       ///< end, microseconds since 1970 UTC; 0: where the recordings end
} tagHistoryStreamMultiTypePara;

/// Whether to read or to set a position.
TESSARO_ENUM(eOperationType){
    eOperationGet = 0, ///< into the record: when the frame that came last was recorded
    eOperationSet = 1, ///< from the record: go on from the key frame at or before it; in a gap, from the gap's end
};

/// A time. Of ClientAdapter_HistoryStreamPosition and ClientAdapter_DecoderChannelGetOSDTime.
typedef struct tagTimeInfo
{
    uint32_t dwSize;           ///< sizeof this record, by the application
    int32_t nUtcOffsetMinutes; ///< how far the device's local time is ahead of UTC; filled on a read, 0 if not known
    int64_t llTimeUs;          ///< microseconds since 1970 UTC
} tagTimeInfo;

/// dwSpeed of ClientAdapter_HistoryStreamSetSpeed, in thousandths of the recording's own speed: `eSpeedNormal * 4`,
/// `eSpeedNormal / 8`. From an eighth to 16 times. With eSpeedReverse backwards: key frames in falling order, each at
/// its time. eResultBadArgument: out of this range.
TESSARO_ENUM(ePlaybackSpeed){
    eSpeedNormal = 1000,     ///< as recorded
    eSpeedReverse = 0x10000, ///< a bit to add: `eSpeedReverse + eSpeedNormal * 2`
};

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagHistoryStreamPara, 288, 288);
TESSARO_RECORD(tagHistoryStreamMultiTypePara, 32, 32);
TESSARO_RECORD(tagTimeInfo, 16, 16);

#endif
