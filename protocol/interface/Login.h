/// @file
/// Logging in.

#ifndef TESSARO_PROTOCOL_INTERFACE_LOGIN_H
#define TESSARO_PROTOCOL_INTERFACE_LOGIN_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup opening Logging in
/// What a login needs; zero what isn't used.
/// @{

/// What a login needs. Text is NUL-terminated; one that fills its field ends at the field. What is not used is
/// zero.
///
/// RTSP has no login of its own: the record says how to build the two stream addresses. With dwRtspUrlMode 0,
/// szAddress is the whole address of the main stream and there is no sub stream. With any other value the addresses
/// are rtsp://host:port/path, made of the host and the main or sub port and path.
typedef struct tagUserLoginPara
{
    char szAddress[256];      ///< device host name or address; for RTSP with dwRtspUrlMode 0 the whole address
    uint32_t dwPort;          ///< device port, 0: the usual one; for RTSP with dwRtspUrlMode 0 the port of that address
    char szUserName[32];      ///< at most 31 characters
    char szPassword[32];      ///< at most 31 characters
    uint32_t dwTimeoutMs;     ///< most that a call may take; 0: 10000 for the login, 5000 for others; not for RTSP
    int32_t dwRtspMainPort;   ///< RTSP port of the main stream
    int32_t dwRtspSubPort;    ///< RTSP port of the sub stream
    char szRtspMainPath[128]; ///< path of the main stream, without the slash before it
    char szRtspSubPath[128];  ///< path of the sub stream, without the slash before it
    uint32_t dwRtspUrlMode;   ///< 0: szAddress is the address; any other value: build the addresses
    uint32_t dwRtspHostSelect; ///< 1: the host is szRtspHost; any other value: szAddress
    char szRtspHost[256];      ///< second host name or address
} tagUserLoginPara;

/// What a user may do: ClientAdapter_GetLoginLevel.
TESSARO_ENUM(eUserLevel){
    eUserViewer = 1,        ///< look and listen, live and recorded
    eUserOperator = 2,      ///< also move cameras, talk, switch outputs, steer recording and decoders
    eUserAdministrator = 3, ///< everything
};

/// Whether a login lives: ClientAdapter_GetLoginStatus. 0 and 1 are nobody's answer: the protocol knows no status, or
/// its plug-in is missing.
TESSARO_ENUM(eLoginStatus){
    eLoginAlive = 10, ///< the device answers
    eLoginLost = 11,  ///< the device doesn't answer; the plug-in goes on trying
    eLoginEnded = 12, ///< the device has ended the login, and nobody tries any more: log out
};

/// @}

/// @}

TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwPort) == 256, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szUserName) == 260, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szPassword) == 292, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwTimeoutMs) == 324, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwRtspMainPort) == 328, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwRtspSubPort) == 332, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szRtspMainPath) == 336, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szRtspSubPath) == 464, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwRtspUrlMode) == 592, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwRtspHostSelect) == 596, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szRtspHost) == 600, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(sizeof(tagUserLoginPara) == 856, "tagUserLoginPara");

TESSARO_C_END

#endif
