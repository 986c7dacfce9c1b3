/// @file
/// Queries for recordings, files and log entries.

#ifndef TESSARO_PROTOCOL_INTERFACE_QUERIES_H
#define TESSARO_PROTOCOL_INTERFACE_QUERIES_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup queryrecords Queries
/// Questions ("factors", filled by the application) and answers (filled by the plug-in, one for each call).
///
/// Answers come in the order of their begin, the oldest first; log entries too. After the last one every call answers
/// eResultNoMoreEntries. A query that finds nothing opens all the same. What comes into being after the query was
/// opened may or may not be among the answers. Times are microseconds since 1970 UTC; whatever overlaps the time asked
/// for is an answer, with its whole length.
/// @{

/// Asks for recordings of one type.
typedef struct tagHistoryStreamQueryFactor
{
    uint32_t dwSize;       ///< sizeof this record
    uint32_t dwChannel;    ///< the device's channel, from 0
    uint32_t dwType;       ///< eHistoryStreamType, one of them; eHistoryAny: all
    uint32_t dwStreamKind; ///< eStreamKind; 0: the main stream
    int64_t llStartUs;     ///< recorded after this; 0: from the first
    int64_t llEndUs;       ///< recorded before this; 0: to the last
    uint32_t bLockedOnly;  ///< 1: only what ClientAdapter_FileLock protects
    uint32_t dwReserved;   ///< 0
} tagHistoryStreamQueryFactor;

/// Asks for recordings of several types and channels.
typedef struct tagHistoryStreamMultiTypeQueryFactor
{
    uint32_t dwSize;       ///< sizeof this record
    uint32_t dwTypes;      ///< eHistoryStreamType bits; 0: all
    uint64_t ullChannels;  ///< bit n: channel n; 0: all
    uint32_t dwStreamKind; ///< eStreamKind; 0: the main stream
    uint32_t bLockedOnly;  ///< 1: only what ClientAdapter_FileLock protects
    int64_t llStartUs;     ///< recorded after this; 0: from the first
    int64_t llEndUs;       ///< recorded before this; 0: to the last
} tagHistoryStreamMultiTypeQueryFactor;

/// Asks a device for the recordings of another one that it reaches: a camera behind a recorder, say.
typedef struct tagTransmitHistoryStreamQueryFactor
{
    uint32_t dwSize;       ///< sizeof this record
    uint32_t dwProtocol;   ///< eProtocolType that the other device speaks
    uint32_t dwPort;       ///< the other device's port; 0: the protocol's usual one
    uint32_t dwChannel;    ///< the other device's channel, from 0
    uint32_t dwTypes;      ///< eHistoryStreamType bits; 0: all
    uint32_t dwStreamKind; ///< eStreamKind; 0: the main stream
    int64_t llStartUs;     ///< recorded after this; 0: from the first
    int64_t llEndUs;       ///< recorded before this; 0: to the last
    char szAddress[256];   ///< the other device's host name or address, as the asked one sees it
    char szUserName[32];   ///< for the other device
    char szPassword[32];   ///< for the other device
} tagTransmitHistoryStreamQueryFactor;

/// One recording: what one channel recorded without a gap, for one reason.
typedef struct tagHistoryStreamQueryResult
{
    uint32_t dwSize;       ///< sizeof this record, by the application
    uint32_t dwChannel;    ///< the device's channel, from 0
    uint32_t dwType;       ///< eHistoryStreamType
    uint32_t dwStreamKind; ///< eStreamKind
    int64_t llStartUs;     ///< time of its first frame
    int64_t llEndUs;       ///< end of its last frame; that of now while it is being recorded
    uint64_t ullLength;    ///< bytes, 0: not known
    uint32_t dwCodec;      ///< eMediaCodec of its video
    uint32_t bLocked;      ///< 1: protected from being overwritten
    uint32_t bRecording;   ///< 1: still being recorded
    uint32_t dwReserved;   ///< 0
    char szFile[256];      ///< its name on the device: for playback, download and ClientAdapter_FileLock
} tagHistoryStreamQueryResult;

/// One recording that a query over several types found; fields as in tagHistoryStreamQueryResult.
typedef struct tagHistoryStreamMultiTypeQueryResult
{
    uint32_t dwSize;       ///< sizeof this record, by the application
    uint32_t dwChannel;    ///< the device's channel, from 0
    uint32_t dwType;       ///< eHistoryStreamType: the one type that it is of
    uint32_t dwStreamKind; ///< eStreamKind
    int64_t llStartUs;     ///< time of its first frame
    int64_t llEndUs;       ///< end of its last frame
    uint64_t ullLength;    ///< bytes, 0: not known
    uint32_t dwCodec;      ///< eMediaCodec of its video
    uint32_t bLocked;      ///< 1: protected from being overwritten
    uint32_t bRecording;   ///< 1: still being recorded
    uint32_t dwReserved;   ///< 0
    char szFile[256];      ///< its name on the device
} tagHistoryStreamMultiTypeQueryResult;

/// What a file on a device is.
TESSARO_ENUM(eFileKind){
    eFileAny = 0,           ///< in a question: whatever it is
    eFileRecording = 1,     ///< video and audio
    eFilePicture = 2,       ///< a snapshot
    eFileConfiguration = 3, ///< the whole configuration, to save and to restore
    eFileFirmware = 4,      ///< what the device runs; an upload restarts it
    eFileLog = 5,           ///< the log as text
    eFileSupport = 6,       ///< what a maker's support asks for
    eFileAudio = 7,         ///< a sound that the device can play
};

/// Asks for files.
typedef struct tagFileQueryFactor
{
    uint32_t dwSize;    ///< sizeof this record
    uint32_t dwKind;    ///< eFileKind
    uint32_t dwChannel; ///< the device's channel, from 0; recordings and pictures
    uint32_t dwTypes;   ///< eHistoryStreamType bits, 0: all; recordings and pictures
    int64_t llStartUs;  ///< made after this; 0: from the first
    int64_t llEndUs;    ///< made before this; 0: to the last
} tagFileQueryFactor;

/// One file.
typedef struct tagFileQueryResult
{
    uint32_t dwSize;     ///< sizeof this record, by the application
    uint32_t dwKind;     ///< eFileKind
    uint32_t dwChannel;  ///< the device's channel; 0 where the file is of none
    uint32_t dwType;     ///< eHistoryStreamType; 0 where there is none
    int64_t llStartUs;   ///< when it begins or was made
    int64_t llEndUs;     ///< when it ends; as llStartUs for what has no length in time
    uint64_t ullLength;  ///< bytes, 0: not known
    uint32_t bLocked;    ///< 1: protected from being overwritten
    uint32_t dwReserved; ///< 0
    char szFile[256];    ///< its name on the device: for a download and ClientAdapter_FileLock
} tagFileQueryResult;

/// What a log entry is about. Bits.
TESSARO_ENUM(eLogType){
    eLogSystem = 1,        ///< start, stop, clock, network, disks
    eLogConfiguration = 2, ///< somebody changed a setting
    eLogAlarm = 4,         ///< motion, inputs, outputs, tamper, video loss
    eLogRecording = 8,     ///< recordings began, ended, were played or deleted
    eLogAccess = 16,       ///< logins, refused ones too
};

/// Asks for log entries.
typedef struct tagLogQueryFactor
{
    uint32_t dwSize;     ///< sizeof this record
    uint32_t dwTypes;    ///< eLogType bits; 0: all
    int64_t llStartUs;   ///< after this; 0: from the first
    int64_t llEndUs;     ///< before this; 0: to the last
    char szUserName[32]; ///< of this user; empty: of all
    char szText[64];     ///< with this in their text, upper and lower case alike; empty: all
} tagLogQueryFactor;

/// One log entry.
typedef struct tagLogQueryResult
{
    uint32_t dwSize;     ///< sizeof this record, by the application
    uint32_t dwType;     ///< eLogType, one of them
    int64_t llTimeUs;    ///< when
    uint32_t dwEvent;    ///< eDeviceEvent, where one stands for it, else 0
    uint32_t dwChannel;  ///< the channel, input, output or disk that it is about, else 0
    char szUserName[32]; ///< who; empty: the device itself
    char szAddress[64];  ///< from where; empty: from the device itself
    char szText[256];    ///< what happened, in the device's words
} tagLogQueryResult;

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagHistoryStreamQueryFactor, 40, 40);
TESSARO_RECORD(tagHistoryStreamMultiTypeQueryFactor, 40, 40);
TESSARO_RECORD(tagTransmitHistoryStreamQueryFactor, 360, 360);
TESSARO_RECORD(tagHistoryStreamQueryResult, 312, 312);
TESSARO_RECORD(tagHistoryStreamMultiTypeQueryResult, 312, 312);
TESSARO_RECORD(tagFileQueryFactor, 32, 32);
TESSARO_RECORD(tagFileQueryResult, 304, 304);
TESSARO_RECORD(tagLogQueryFactor, 120, 120);
TESSARO_RECORD(tagLogQueryResult, 376, 376);

#endif
