/// @file
/// Protocols and results: which plug-in answers, and what.

#ifndef TESSARO_PROTOCOL_INTERFACE_RESULTS_H
#define TESSARO_PROTOCOL_INTERFACE_RESULTS_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup results Protocols and results
/// Which plug-in answers, and what.
/// @{

/// The protocol behind a login or connection.
TESSARO_ENUM(eProtocolType){
    eProtocolPrivate = 0, ///< the private device protocol; inserted by the application, never by the library
    eProtocolOnvif = 1,   ///< ONVIF: libonvifclient.so
    eProtocolRTSP = 2,    ///< RTSP: librtspclient.so
    eProtocolVTQ = 3,     ///< VTQ: libVTQ.so
};

/// The codes of the library itself. A plug-in's own result passes through every layer unchanged, so any other
/// number, and these too, may come from a plug-in.
TESSARO_ENUM(eResult){
    eResultOk = 0,               ///< done; or the protocol knows no such thing, and nothing was done
    eResultNoEntryPoint = 1,     ///< the plug-in lacks the entry point; from a trampoline: no callback is registered
    eResultUnknownLogin = 3,     ///< the login ID is not registered, or a login query came back negative
    eResultNoProtocol = 4,       ///< bad protocol type, no binding inserted for it, or a required pointer is null
    eResultAlreadyInserted = 13, ///< the protocol has a binding already
    eResultUnknownMedia = -1,    ///< the media ID is not registered; at login: a required pointer is null
};

/// The results of our plug-ins, the same for every protocol, so that an application handles them once. Where something
/// is refused, nothing was changed.
TESSARO_ENUM(ePluginResult){
    eResultNotSupported = 201,   ///< the protocol or this device has no such function
    eResultBadHandle = 202,      ///< nothing open has this handle (null and closed ones included)
    eResultBadArgument = 203,    ///< a required pointer is null, a record too small, or a value out of its range
    eResultTooManyStreams = 204, ///< as many streams are open as the application allowed
    eResultNotStarted = 205,     ///< the plug-in has not been started, or has been stopped
    eResultNoResources = 206,    ///< no memory or no thread was left
    eResultBadAddress = 207,     ///< the address is no address of this protocol, or holds a user name or password
    eResultWrongLogin = 208,     ///< wrong user name or password, or the user may not do this
    eResultLocked = 209,         ///< the device has locked the account for a while
    eResultUnreachable = 210,    ///< nobody answers at the address
    eResultTimeOut = 211,        ///< the device did not answer in time
    eResultConnectionLost = 212, ///< the connection broke while the call was waiting
    eResultBusy = 213,           ///< the device is occupied; the same call may succeed later
    eResultNoChannel = 214,      ///< the device has no such channel, input, output or window
    eResultRefused = 215,        ///< the device answered that it will not do it
    eResultNotFound = 216,       ///< no such file, recording, preset, user or block
    eResultNoMoreEntries = 217,  ///< a query has given its last entry
    eResultDeviceFull = 218,     ///< the device has no room left
    eResultStillRunning = 219,   ///< closed; a callback that began before is still running, and is the last
};

/// @}

/// @}

TESSARO_STATIC_ASSERT(sizeof(eProtocolType) == 4, "enumerations are 32 bits wide");

TESSARO_C_END

#endif
