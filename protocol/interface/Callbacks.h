/// @file
/// Callback types.

#ifndef TESSARO_PROTOCOL_INTERFACE_CALLBACKS_H
#define TESSARO_PROTOCOL_INTERFACE_CALLBACKS_H

#include "Discovery.h"
#include "Frames.h"
#include "Voice.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup callbacktypes Callback types
/// A plug-in calls them on a thread of its own.
///
/// First comes what the callback belongs to: the plug-in's handle between plug-in and library, the application's own ID
/// as a pointer-sized number between library and application. Last comes the user data of the registration, unchanged.
/// What a pointer points at is the plug-in's and ends with the callback. Results are not used.
/// @{

/// A frame of a live or playback stream.
typedef int (*StreamMediaCallback)(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser);
/// A frame of voice from the device; eSource: where the device took it.
typedef int (*StreamVoiceCallback)(void* hVoice, eVoiceStreamSource eSource, tagStreamVoiceFrame const* ptFrame,
                                   unsigned long dwUser);
/// An event of a device or stream. The four words are the plug-in's; for RTSP streams eConnectionEvent, for all others
/// eDeviceEvent.
typedef int (*DeviceEventCallback)(void* hSource, unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3,
                                   unsigned long dwWord4, unsigned long dwUser);
/// Bytes that came through a transparent channel.
typedef int (*TransparentChannelCallback)(void* hChannel, tagBuffer* ptBuffer, unsigned long dwUser);
/// How far an upload has come.
typedef int (*FileUploadCallback)(void* hUpload, tagFileUploadState tState, unsigned long dwUser);
/// A block of a downloaded file.
typedef int (*FileDownloadCallback)(void* hDownload, tagBuffer tBuffer, unsigned long dwUser);
/// A device that registers itself. Comes from the plug-in directly, without ID and user data.
typedef int (*DeviceRegisterCallback)(tagDeviceRegisterInfo* ptInfo);
/// A device that was found. Comes from the plug-in directly, without ID and user data.
typedef void (*DeviceProbeCallback)(tagDeviceProbeConfig* ptConfig);
/// A user that a device forced off. Comes from the plug-in directly: hLogin is its own handle, not a login ID.
typedef int (*DeleteUserForceCallback)(void* hLogin, unsigned long dwUser);

/// @}

/// @}

TESSARO_C_END

#endif
