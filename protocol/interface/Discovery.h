/// @file
/// Devices that are found or register themselves, and what needs no login.

#ifndef TESSARO_PROTOCOL_INTERFACE_DISCOVERY_H
#define TESSARO_PROTOCOL_INTERFACE_DISCOVERY_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup discoveryrecords Discovery
/// What is known of a device before a login.
///
/// Records that a plug-in hands to a callback have their dwSize filled by the plug-in: an application looks only at
/// what it covers. Addresses are text: `192.0.2.10`, `2001:db8::10`. Hardware addresses are text too:
/// `02:00:5e:10:00:01`.
/// @{

/// Where and how to look for devices. Filled by the application.
typedef struct tagDeviceProbeParameter
{
    uint32_t dwSize;      ///< sizeof this record
    uint32_t dwSeconds;   ///< ask again and again for so long, then only listen; 0: 5
    uint32_t dwFlags;     ///< eProbeFlag bits
    uint32_t dwPort;      ///< the port to ask at szAddress; 0: the protocol's usual one
    char szInterface[32]; ///< the network interface to look on, by name; empty: all
    char szAddress[256];  ///< ask this device alone, directly; empty: all, by multicast
} tagDeviceProbeParameter;

/// Bits of tagDeviceProbeParameter::dwFlags.
TESSARO_ENUM(eProbeFlag){
    eProbeIPv4Only = 1, ///< not on IPv6
    eProbeIPv6Only = 2, ///< not on IPv4
};

/// Bits of tagDeviceProbeConfig::dwFlags.
TESSARO_ENUM(eProbeState){
    eProbeGone = 1,       ///< the device said good-bye, or hasn't answered for long
    eProbeDhcp = 2,       ///< it has its address from DHCP
    eProbeNoPassword = 4, ///< nobody has set a password yet
};

/// A device that was found. Filled by the plug-in; comes once for each device, and again when something changed.
typedef struct tagDeviceProbeConfig
{
    uint32_t dwSize;         ///< what the plug-in knows of this record
    uint32_t dwProtocol;     ///< eProtocolType to log in with
    uint32_t dwPort;         ///< port to log in at
    uint32_t dwChannels;     ///< its channels, 0: not known
    uint32_t dwFlags;        ///< eProbeState bits
    uint32_t dwReserved;     ///< 0
    char szAddress[64];      ///< where it was reached
    char szSubnetMask[64];   ///< IPv4: as an address; IPv6: empty; empty: not known
    char szGateway[64];      ///< empty: not known
    char szMac[24];          ///< empty: not known
    char szName[64];         ///< what its owner calls it
    char szManufacturer[64]; ///< who made it
    char szModel[64];        ///< what its maker calls it
    char szSerialNumber[64]; ///< which one of them it is; with the model the same for every answer of a device
    char szFirmware[64];     ///< what it runs
    char szLocation[64];     ///< where its owner says that it stands
    char szService[256];     ///< the address of its service, where the protocol has one (ONVIF: XAddr)
} tagDeviceProbeConfig;

/// With what to log in to a device that was found. Filled by the application.
typedef struct tagDeviceProbeUserLoginPara
{
    uint32_t dwSize;     ///< sizeof this record
    uint32_t dwReserved; ///< 0
    char szUserName[32]; ///< at most 31 bytes
    char szPassword[32]; ///< at most 31 bytes
} tagDeviceProbeUserLoginPara;

/// A configuration block of a device that was found, for a plug-in's probe operations.
typedef struct tagDeviceProbeConfigInformation
{
    uint32_t dwSize;     ///< sizeof this record, by the application
    uint32_t dwType;     ///< eConfigType
    uint32_t dwIndex;    ///< as tagConfigInformation::index
    uint32_t dwCapacity; ///< bytes at pbyData, by the application
    uint32_t dwLength;   ///< bytes of the block: by the application to write, by the plug-in on a read
    uint32_t dwReserved; ///< 0
    TESSARO_POINTER(unsigned char* pbyData); ///< the block's record, the application's
} tagDeviceProbeConfigInformation;

/// A device that registered itself. Filled by the plug-in; valid until the callback returns. Log in to it by szAddress
/// and dwPort.
typedef struct tagDeviceRegisterInfo
{
    uint32_t dwSize;         ///< what the plug-in knows of this record
    uint32_t dwProtocol;     ///< eProtocolType to log in with
    uint32_t dwPort;         ///< port to log in at
    uint32_t dwChannels;     ///< its channels, 0: not known
    char szAddress[64];      ///< where it came from
    char szMac[24];          ///< empty: not known
    char szName[64];         ///< what its owner calls it
    char szModel[64];        ///< what its maker calls it
    char szSerialNumber[64]; ///< which one of them it is
    char szFirmware[64];     ///< what it runs
} tagDeviceRegisterInfo;

/// What a device answers over HTTP, for ClientAdapter_GetDeviceConfigFromHttp. Answered by the last plug-in that could
/// tell: dwHttpStatus changes from 0, else nothing has answered.
typedef struct tagDeviceConfigFromHttp
{
    uint32_t dwSize;         ///< sizeof this record, by the application
    uint32_t dwPort;         ///< in: port of its web server; 0: 80
    uint32_t dwTimeoutMs;    ///< in: how long to wait; 0: 5000
    uint32_t dwHttpStatus;   ///< out: what it answered: 200, or why not
    uint32_t dwProtocol;     ///< out: eProtocolType to log in with
    uint32_t dwDevicePort;   ///< out: port to log in at
    uint32_t dwRtspPort;     ///< out: port of its RTSP server, 0: none
    uint32_t dwChannels;     ///< out: its channels
    char szUserName[32];     ///< in: empty: without
    char szPassword[32];     ///< in: at most 31 bytes
    char szName[64];         ///< out: what its owner calls it
    char szModel[64];        ///< out: what its maker calls it
    char szSerialNumber[64]; ///< out: which one of them it is
    char szFirmware[64];     ///< out: what it runs
    char szMac[24];          ///< out: hardware address
} tagDeviceConfigFromHttp;

/// How a text becomes dots, for ClientAdapter_StringToLattice. Filled by the application.
///
/// The lattice is written row by row from the top. With 1 bit a dot, the leftmost dot is the highest bit of a row's
/// first byte, and each row begins a new byte; with 8 bits a dot is one byte, 0 empty to 255 full. The function's three
/// words receive width and height in dots and the length in bytes. When dwCapacity is too small, nothing is written at
/// pLattice, and the length says what is needed.
typedef struct tagFontPara
{
    uint32_t dwSize;       ///< sizeof this record
    uint32_t dwHeight;     ///< height of a line in dots, 8 to 256; 0: 16
    uint32_t dwBitsPerDot; ///< 1 or 8; 0: 1
    uint32_t dwSpacing;    ///< dots to add between two characters
    uint32_t bBold;        ///< 1: bold
    uint32_t dwCapacity;   ///< bytes at pLattice
    char szFont[256];      ///< a font file of this machine; empty: one that the plug-in finds
} tagFontPara;

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagDeviceProbeParameter, 304, 304);
TESSARO_RECORD(tagDeviceProbeConfig, 880, 880);
TESSARO_RECORD(tagDeviceProbeUserLoginPara, 72, 72);
TESSARO_RECORD(tagDeviceProbeConfigInformation, 32, 32);
TESSARO_RECORD(tagDeviceRegisterInfo, 360, 360);
TESSARO_RECORD(tagDeviceConfigFromHttp, 376, 376);
TESSARO_RECORD(tagFontPara, 280, 280);

#endif
