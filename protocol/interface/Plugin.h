/// @file
/// What is set in a plug-in itself, without a login.

#ifndef TESSARO_PROTOCOL_INTERFACE_PLUGIN_H
#define TESSARO_PROTOCOL_INTERFACE_PLUGIN_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup pluginrecords Parameters of a plug-in
/// dwType of ClientAdapter_RTSPSetIsProductTest and its three siblings, which all set a parameter of the plug-in of the
/// protocol named, and of ClientAdapter_SetCallbackFunc.
///
/// A number that a plug-in doesn't know is answered with eResultNotSupported. 0x5000 to 0x50FF are those of the
/// simulated device; other plug-ins never give them a meaning.
/// @{

/// What a parameter of a plug-in is.
TESSARO_ENUM(eMiscParameter){
    eMiscCertificate = 0x4000, ///< an eRtspCertificate, 4 bytes: for the https devices of later ONVIF logins
    eMiscFault = 0x5000, ///< tagDeviceFault: a simulated device misbehaves
    eMiscFleet =
        0x5001, ///< a path as text, dwLength its bytes with the terminator: the simulated devices' file, read now
};

/// How a simulated device misbehaves. Each goes on for dwMilliseconds (0: until eFaultNone), and dwValue, dwCount and
/// dwChannel mean what stands here; those not named are 0.
TESSARO_ENUM(eFaultKind){
    eFaultNone = 0,    ///< the device behaves: all its faults end
    eFaultLockOut = 1, ///< after dwCount wrong passwords (0: 5) the account is locked for dwMilliseconds: eResultLocked
    eFaultBusy = 2,    ///< every call is answered with eResultBusy
    eFaultSlow = 3,    ///< every call takes dwValue milliseconds longer
    eFaultHang = 4,    ///< the next dwCount calls (0: all) aren't answered: they end by time-out, logout or stop
    eFaultDrop = 5,    ///< the connection breaks now, and stays broken
    eFaultRestart = 6, ///< the device restarts now, and is down for dwMilliseconds (0: 5000)
    eFaultClockDrift = 7,  ///< the device's clock runs too fast by dwValue (signed) parts in a million
    eFaultClockJump = 8,   ///< the device's clock is set forward by llOffsetUs, once
    eFaultStall = 9,       ///< streams of dwChannel stay open, but no frame comes
    eFaultLose = 10,       ///< of a thousand frames of dwChannel dwValue are lost, and the next one has dwLostBefore
    eFaultDamage = 11,     ///< of a thousand frames of dwChannel dwValue come with eFrameDamaged and wrong bytes
    eFaultDiskFull = 12,   ///< disk dwChannel is full: eEventDiskFull, recordings end, eResultDeviceFull
    eFaultDiskError = 13,  ///< disk dwChannel answers with errors: eEventDiskError
    eFaultVideoLoss = 14,  ///< dwChannel has no picture: eEventVideoLoss
    eFaultMotion = 15,     ///< something moves before dwChannel: eEventMotion
    eFaultTamper = 16,     ///< dwChannel is covered: eEventTamper
    eFaultAlarmInput = 17, ///< alarm input dwChannel is active: eEventAlarmInput
    eFaultForceOff = 18, ///< the device ends the logins of szUserName: the callback of ClientAdapter_DeleteUserForceCB
    eFaultRegister = 19, ///< the device registers itself with whoever listens: ClientAdapter_DeviceRegisterListenStart
};

/// Makes a simulated device misbehave, or something happen to it. Filled by the application.
typedef struct tagDeviceFault
{
    uint32_t dwSize;         ///< sizeof this record
    uint32_t dwFault;        ///< eFaultKind
    uint32_t dwChannel;      ///< channel, disk or input from 0; TESSARO_ALL: all
    uint32_t dwMilliseconds; ///< how long; 0: until eFaultNone
    uint32_t dwCount;        ///< how often
    uint32_t dwValue;        ///< how much
    int64_t llOffsetUs;      ///< microseconds, signed
    char szAddress[256];     ///< the device's address as in the login; empty: all devices
    char szUserName[32];     ///< a user
} tagDeviceFault;

/// dwType of ClientAdapter_SetCallbackFunc.
TESSARO_ENUM(eCallbackKind){
    eCallbackLog = 1, ///< PluginLogCallback
};

/// What a plug-in has to say about its work: szText is one line without its end, valid until the callback returns;
/// dwLevel as in syslog, 3 error to 7 debug. Comes on any thread of the plug-in; a null function ends it.
typedef void (*PluginLogCallback)(unsigned long dwLevel, char const* szText);

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagDeviceFault, 320, 320);

#endif
