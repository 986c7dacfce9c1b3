/// @file
/// A device as a whole: restart, snapshots, protected files, versions.

#ifndef TESSARO_PROTOCOL_INTERFACE_DEVICE_H
#define TESSARO_PROTOCOL_INTERFACE_DEVICE_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup devicerecords Device control, snapshots, versions
/// What a device does on request.
/// @{

/// What ClientAdapter_DeviceControl does. Answers 0 when the device has agreed. After a restart logins and streams come
/// back by themselves, with eEventLoginLost and eEventLoginRestored.
TESSARO_ENUM(eRemoteDeviceControl){
    eDeviceRestart = 1,        ///< stops and starts again
    eDeviceShutDown = 2,       ///< stops; only a person starts it again
    eDeviceFactoryDefault = 3, ///< forgets its configuration but its network and users, and restarts
    eDeviceFactoryReset = 4,   ///< forgets all its configuration, and restarts; may change its address
    eDeviceClearLog = 5,       ///< forgets its log
};

/// How a picture is coded.
TESSARO_ENUM(eImageFormat){
    eImageJpeg = 0, ///< a JPEG file
    eImagePng = 1,  ///< a PNG file
};

/// What ClientAdapter_ImageCapture takes a picture of: a channel's number, or one of these plus a number.
TESSARO_ENUM(eCaptureTarget){
    eCaptureChannel = 0,      ///< a camera's or recorder's channel, from 0
    eCaptureWindow = 0x10000, ///< plus a window: what one window of a decoder shows
    eCaptureScreen = 0x20000, ///< plus a screen, from 0: what one screen of a decoder shows
    eCaptureWall = 0x30000,   ///< what all screens of a decoder show together
};

/// Where a picture goes: to a file of this machine, to memory, or both. eResultBadArgument: neither;
/// eResultNoResources: pbyData is too small, dwLength says what is needed, and nothing was written.
typedef struct tagImageFileInfo
{
    uint32_t dwSize;                         ///< sizeof this record, by the application
    uint32_t dwWidth;                        ///< in: at most so wide, 0: as it is; out: pixels
    uint32_t dwHeight;                       ///< in: at most so high, 0: as it is; out: pixels
    uint32_t dwQuality;                      ///< JPEG: 1 to 100, 0: 80
    int64_t llTimeUs;                        ///< out: when the picture was taken, microseconds since 1970 UTC
    uint32_t dwCapacity;                     ///< in: bytes at pbyData
    uint32_t dwLength;                       ///< out: bytes of the picture
    char szPath[256];                        ///< in: the file to write, overwritten; empty: none
    TESSARO_POINTER(unsigned char* pbyData); ///< in: where to put the picture, the application's; null: nowhere
} tagImageFileInfo;

/// What ClientAdapter_FileLock does with a recorded file.
TESSARO_ENUM(eFileLockOperationCode){
    eFileUnlock = 0, ///< it may be overwritten again
    eFileLock = 1,   ///< it is not overwritten
};

/// Which version of its protocol a device speaks.
TESSARO_ENUM(eNetworkSDKVersion){
    eSDKVersionUnknown = 0, ///< not known
    eSDKVersion1 = 1,       ///< the first: configuration blocks in the first layout; ONVIF: Media 1
    eSDKVersion2 = 2,       ///< the second: blocks in both layouts; ONVIF: Media 2 too
};

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagImageFileInfo, 296, 296);

#endif
