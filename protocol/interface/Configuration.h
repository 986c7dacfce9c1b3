/// @file
/// Configuration blocks.

#ifndef TESSARO_PROTOCOL_INTERFACE_CONFIGURATION_H
#define TESSARO_PROTOCOL_INTERFACE_CONFIGURATION_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup blocks Configuration blocks
/// A device's configuration in blocks. A block's type and index name it, its data begins with the record of that type.
///
/// **The envelope** comes in two layouts with the same contents, both 262168 bytes. `type` is an eConfigType, `index`
/// is what its table says. `extra[0]` is the length of the record in data: the plug-in fills it on a read; on a write
/// it is 0 or the record's dwSize. `extra[1]` is the eStreamKind where the table says so (0: eStreamMain). `extra[2]`
/// and `extra[3]` are 0.
///
/// **Reading.** Only type, index and extra[1] are looked at. The plug-in fills data with the whole record as it knows
/// it, dwSize included, and zeros after it; there is room for any record. Copy sizeof your record out of data: what an
/// older plug-in doesn't know is then 0.
///
/// **Writing.** Read the block, change what is to change, write it back. What the written record's dwSize doesn't cover
/// stays as it is on the device. A value out of its range: eResultBadArgument, and nothing was changed. Fields marked
/// "read only" are not looked at. A write takes effect at once, is kept over a restart, and is reported to every
/// subscriber by eEventConfigChanged.
///
/// eResultNotFound: the device has no such block; eResultNoChannel: no such index; eResultWrongLogin: the user's level
/// doesn't allow it (administrators write; everybody reads, but not eConfigUsers).
///
/// Places in a picture are ten-thousandths of its width and height, from its top left. Words whose name begins with b
/// are 0 or 1. Levels are percent.
/// @{

/// The types of blocks.
///
/// | Type                 | index             | Record                   | extra[1]    |
/// | -------------------- | ----------------- | ------------------------ | ----------- |
/// | eConfigIdentity      | 0                 | tagConfigIdentity        | 0           |
/// | eConfigNetwork       | network interface | tagConfigNetwork         | 0           |
/// | eConfigClock         | 0                 | tagConfigClock           | 0           |
/// | eConfigUsers         | 0                 | tagConfigUsers           | 0           |
/// | eConfigStorage       | 0                 | tagConfigStorage         | 0           |
/// | eConfigVideoEncoder  | channel           | tagConfigVideoEncoder    | eStreamKind |
/// | eConfigAudioEncoder  | channel           | tagConfigAudioEncoder    | eStreamKind |
/// | eConfigPicture       | channel           | tagCameraPicture         | 0           |
/// | eConfigOverlay       | channel           | tagConfigOverlay         | 0           |
/// | eConfigMotion        | channel           | tagConfigMotion          | 0           |
/// | eConfigPrivacy       | channel           | tagConfigPrivacy         | 0           |
/// | eConfigSchedule      | channel           | tagConfigSchedule        | 0           |
/// | eConfigAlarmInput    | alarm input       | tagConfigAlarmInput      | 0           |
/// | eConfigAlarmOutput   | alarm output      | tagConfigAlarmOutput     | 0           |
/// | eConfigMacAddress    | 0xFFFFFFFF        | tagConfigMacAddress      | 0           |
TESSARO_ENUM(eConfigType){
    eConfigIdentity = 100,     ///< who the device is and what it has
    eConfigNetwork = 101,      ///< a network interface
    eConfigClock = 102,        ///< clock, time zone, NTP
    eConfigUsers = 103,        ///< users
    eConfigStorage = 104,      ///< disks; read only
    eConfigVideoEncoder = 110, ///< how a stream's video is coded
    eConfigAudioEncoder = 111, ///< how a stream's audio is coded
    eConfigPicture = 112,      ///< how a channel's picture looks
    eConfigOverlay = 113,      ///< text in a channel's picture
    eConfigMotion = 114,       ///< motion detection of a channel
    eConfigPrivacy = 115,      ///< parts of a channel's picture that nobody may see
    eConfigSchedule = 116,     ///< when a channel is recorded
    eConfigAlarmInput = 120,   ///< an alarm input
    eConfigAlarmOutput = 121,  ///< an alarm output
    eConfigMacAddress = 209,   ///< the hardware address alone; read only
};

/// One configuration block, first layout.
typedef struct tagConfigInformation
{
    uint32_t type;              ///< eConfigType
    uint32_t index;             ///< which one of the type: a channel, an input
    unsigned char data[262144]; ///< the type's record
    uint32_t extra[4];          ///< [0] length of the record, [1] eStreamKind, [2] and [3] 0
} tagConfigInformation;

/// The same block, second layout.
typedef struct tagConfigInformationV2
{
    uint32_t type;              ///< eConfigType
    uint32_t index;             ///< which one of the type: a channel, an input
    uint32_t extra[4];          ///< [0] length of the record, [1] eStreamKind, [2] and [3] 0
    unsigned char data[262144]; ///< the type's record
} tagConfigInformationV2;

/// eConfigIdentity. Only szName and szLocation can be written.
typedef struct tagConfigIdentity
{
    uint32_t dwSize;         ///< sizeof this record
    uint32_t dwChannels;     ///< video channels; read only
    uint32_t dwAlarmInputs;  ///< alarm inputs; read only
    uint32_t dwAlarmOutputs; ///< alarm outputs; read only
    uint32_t dwAudioInputs;  ///< audio inputs; read only
    uint32_t dwAudioOutputs; ///< audio outputs; read only
    uint32_t dwSerialPorts;  ///< serial ports; read only
    uint32_t dwDisks;        ///< places for disks; read only
    uint32_t dwScreens;      ///< screens that it drives as a decoder; read only
    uint32_t dwInterfaces;   ///< network interfaces; read only
    char szName[64];         ///< what its owner calls it
    char szLocation[64];     ///< where its owner says that it stands
    char szManufacturer[64]; ///< who made it; read only
    char szModel[64];        ///< what its maker calls it; read only
    char szSerialNumber[64]; ///< which one of them it is; read only
    char szFirmware[64];     ///< what it runs; read only
    char szHardware[64];     ///< what it is made of; read only
} tagConfigIdentity;

/// index of eConfigNetwork: an interface's number from 0, or this one.
TESSARO_ENUM(eNetworkInterface){
    eInterfaceOfLogin = 4, ///< the one that the login came in through
};

/// eConfigNetwork. Texts of addresses are IPv4 or IPv6. A write may end the login: the device answers first, then
/// changes its address.
typedef struct tagConfigNetwork
{
    uint32_t dwSize;              ///< sizeof this record
    uint32_t bEnabled;            ///< 1: in use
    uint32_t bDhcp;               ///< 1: address, prefix, gateway and name servers come from DHCP
    uint32_t dwMtu;               ///< largest packet in bytes
    uint32_t dwSpeed;             ///< megabits per second, 0: no link; read only
    uint32_t dwHttpPort;          ///< port of its web server, 0: off
    uint32_t dwHttpsPort;         ///< port of its web server with TLS, 0: off
    uint32_t dwRtspPort;          ///< port of its RTSP server, 0: off
    uint32_t dwDevicePort;        ///< port to log in at
    char szInterface[16];         ///< the interface's name: "eth0"; read only
    char szMac[18];               ///< hardware address: "02:00:5e:10:00:01"; read only; at byte 52
    unsigned char abyReserved[2]; ///< 0
    uint32_t dwPrefixLength;      ///< bits of the address that name the network
    uint32_t dwReserved;          ///< 0
    char szAddress[48];           ///< its address
    char szGateway[48];           ///< where other networks are; empty: nowhere
    char szNameServer1[48];       ///< DNS; empty: none
    char szNameServer2[48];       ///< DNS; empty: none
    char szHostName[64];          ///< its name in the network
} tagConfigNetwork;

/// eConfigMacAddress. Without dwSize: the library itself makes it from a private plug-in's tagConfigNetwork.
typedef struct tagConfigMacAddress
{
    uint32_t dwCount;             ///< 1
    uint32_t dwReserved;          ///< 0
    char szMac[18];               ///< hardware address: "02:00:5e:10:00:01"
    unsigned char abyReserved[2]; ///< 0
} tagConfigMacAddress;

/// How a device's clock is set.
TESSARO_ENUM(eClockMode){
    eClockManual = 0, ///< by hand
    eClockNtp = 1,    ///< from an NTP server
};

/// eConfigClock.
typedef struct tagConfigClock
{
    uint32_t dwSize;           ///< sizeof this record
    uint32_t dwMode;           ///< eClockMode
    int64_t llTimeUs;          ///< now, microseconds since 1970 UTC; written with eClockManual, 0: leave it
    int32_t nUtcOffsetMinutes; ///< how far local time is ahead of UTC now; read only
    uint32_t bSynchronised;    ///< 1: NTP has set the clock; read only
    uint32_t dwNtpPort;        ///< port of the servers; 0: 123
    uint32_t dwNtpSeconds;     ///< between two questions; 0: the device decides
    char szTimeZone[64];       ///< as POSIX writes it: "CET-1CEST,M3.5.0,M10.5.0/3"
    char szNtpServer1[128];    ///< host name or address; empty: none, or the one that DHCP names
    char szNtpServer2[128];    ///< host name or address; empty: none
} tagConfigClock;

/// One user.
typedef struct tagConfigUser
{
    char szUserName[32]; ///< at most 31 bytes
    char szPassword[32]; ///< never filled on a read; on a write: empty: as it is
    uint32_t dwLevel;    ///< eUserLevel
    uint32_t bLocked;    ///< 1: locked after wrong passwords; written 0: let the user in again
} tagConfigUser;

/// eConfigUsers. A write makes these the only users: one that isn't there any more is removed and logged out, a new one
/// needs a password. Refused without an administrator left: eResultBadArgument.
typedef struct tagConfigUsers
{
    uint32_t dwSize;           ///< sizeof this record
    uint32_t dwCount;          ///< users
    tagConfigUser atUsers[32]; ///< the first dwCount hold
} tagConfigUsers;

/// One disk.
typedef struct tagConfigDisk
{
    uint32_t dwState;     ///< eDiskState
    uint32_t dwGroup;     ///< the group that it belongs to; TESSARO_ALL: none
    uint32_t dwGroupType; ///< eDiskGroupType of that
    uint32_t dwReserved;  ///< 0
    uint64_t ullCapacity; ///< bytes
    uint64_t ullFree;     ///< bytes
    char szName[32];      ///< what its maker calls it
} tagConfigDisk;

/// eConfigStorage; read only.
typedef struct tagConfigStorage
{
    uint32_t dwSize;           ///< sizeof this record
    uint32_t dwCount;          ///< places for disks
    tagConfigDisk atDisks[16]; ///< the first dwCount hold
} tagConfigStorage;

/// H.264's and H.265's profiles.
TESSARO_ENUM(eVideoProfile){
    eProfileMain = 0,     ///< Main
    eProfileBaseline = 1, ///< Constrained Baseline; H.264 alone
    eProfileHigh = 2,     ///< High; H.265: Main 10
};

/// How a bit rate is kept.
TESSARO_ENUM(eBitRateMode){
    eBitRateConstant = 0, ///< as close to dwBitRate as can be
    eBitRateVariable = 1, ///< by quality, with dwBitRate as its limit
};

/// eConfigVideoEncoder.
typedef struct tagConfigVideoEncoder
{
    uint32_t dwSize;             ///< sizeof this record
    uint32_t dwCodec;            ///< eMediaCodec: eCodecH264, eCodecH265, eCodecMJPEG
    uint32_t dwProfile;          ///< eVideoProfile
    uint32_t dwWidth;            ///< pixels
    uint32_t dwHeight;           ///< pixels
    uint32_t dwFrameRate;        ///< frames per 1000 s: 25000
    uint32_t dwBitRateMode;      ///< eBitRateMode
    uint32_t dwBitRate;          ///< kilobits per second
    uint32_t dwQuality;          ///< percent; eBitRateVariable and MJPEG
    uint32_t dwKeyFrameInterval; ///< frames from one key frame to the next (ONVIF: GovLength)
    uint32_t bEnabled;           ///< 1: the stream can be opened
    uint32_t dwReserved;         ///< 0
} tagConfigVideoEncoder;

/// Where sound comes from.
TESSARO_ENUM(eAudioSource){
    eAudioMicrophone = 0, ///< a microphone
    eAudioLine = 1,       ///< a line input
};

/// eConfigAudioEncoder.
typedef struct tagConfigAudioEncoder
{
    uint32_t dwSize;       ///< sizeof this record
    uint32_t bEnabled;     ///< 1: the stream has sound
    uint32_t dwCodec;      ///< eMediaCodec
    uint32_t dwSampleRate; ///< samples per second
    uint32_t dwChannels;   ///< channels
    uint32_t dwBitRate;    ///< kilobits per second; where the codec has a choice
    uint32_t dwSource;     ///< eAudioSource
    uint32_t dwVolume;     ///< percent
} tagConfigAudioEncoder;

/// What a text in the picture says.
TESSARO_ENUM(eOverlayKind){
    eOverlayText = 0, ///< szText
    eOverlayTime = 1, ///< date and time of the device; szText is the format as strftime takes it, empty: as usual
    eOverlayName = 2, ///< the channel's name, which is szText
};

/// One text in the picture.
typedef struct tagOverlayText
{
    uint32_t bEnabled; ///< 1: shown
    uint32_t dwKind;   ///< eOverlayKind
    uint32_t dwLeft;   ///< ten-thousandths of the picture's width
    uint32_t dwTop;    ///< ten-thousandths of the picture's height
    uint32_t dwHeight; ///< of its characters, ten-thousandths of the picture's height; 0: 400
    uint32_t dwColour; ///< 0xRRGGBB
    char szText[128];  ///< UTF-8
} tagOverlayText;

/// eConfigOverlay.
typedef struct tagConfigOverlay
{
    uint32_t dwSize;           ///< sizeof this record
    uint32_t dwCount;          ///< texts
    tagOverlayText atTexts[8]; ///< the first dwCount hold
} tagConfigOverlay;

/// What else a device does when something happens. Zero: nothing.
typedef struct tagConfigAction
{
    uint64_t ullRecord;       ///< bit n: record channel n
    uint32_t dwOutputs;       ///< bit n: switch alarm output n on
    uint32_t bBeep;           ///< 1: beep
    uint32_t dwPresetChannel; ///< the channel of the next
    uint32_t dwPreset;        ///< send a camera to this preset; 0: none
} tagConfigAction;

/// eConfigMotion. The picture is a grid of dwColumns by dwRows cells (ONVIF: cell motion detection).
typedef struct tagConfigMotion
{
    uint32_t dwSize;         ///< sizeof this record
    uint32_t bEnabled;       ///< 1: on
    uint32_t dwSensitivity;  ///< percent
    uint32_t dwThreshold;    ///< how many percent of the watched cells must change
    uint32_t dwHoldSeconds;  ///< how long it must be still until motion counts as ended
    uint32_t dwColumns;      ///< cells in a row, at most 64; read only
    uint32_t dwRows;         ///< rows, at most 64; read only
    uint32_t dwReserved;     ///< 0
    tagConfigAction tAction; ///< what else to do
    unsigned char
        abyCells[512]; ///< bit n of the whole, lowest first: cell n is watched; cell = row * dwColumns + column
} tagConfigMotion;

/// One privacy mask.
typedef struct tagPrivacyMask
{
    uint32_t bEnabled; ///< 1: covers its part of the picture
    uint32_t dwLeft;   ///< ten-thousandths of the picture's width
    uint32_t dwTop;    ///< ten-thousandths of the picture's height
    uint32_t dwWidth;  ///< ten-thousandths of the picture's width
    uint32_t dwHeight; ///< ten-thousandths of the picture's height
    uint32_t dwColour; ///< 0xRRGGBB
} tagPrivacyMask;

/// eConfigPrivacy. Covers live streams, recordings and snapshots alike.
typedef struct tagConfigPrivacy
{
    uint32_t dwSize;           ///< sizeof this record
    uint32_t dwCount;          ///< masks
    tagPrivacyMask atMasks[8]; ///< the first dwCount hold
} tagConfigPrivacy;

/// One span of a week in which something is recorded.
typedef struct tagScheduleSpan
{
    uint32_t dwDay;         ///< day of the week in local time, 0: Sunday
    uint32_t dwStartMinute; ///< minute of the day, 0 to 1439
    uint32_t dwEndMinute;   ///< minute of the day after its last one, 1 to 1440
    uint32_t dwTypes;       ///< eHistoryStreamType bits: for what reasons
} tagScheduleSpan;

/// eConfigSchedule.
typedef struct tagConfigSchedule
{
    uint32_t dwSize;             ///< sizeof this record
    uint32_t bEnabled;           ///< 1: the schedule holds; 0: only ClientAdapter_RecordControl records
    uint32_t dwStreamKind;       ///< eStreamKind
    uint32_t bAudio;             ///< 1: with sound
    uint32_t dwBeforeSeconds;    ///< how much of the time before a motion or alarm belongs to its recording
    uint32_t dwAfterSeconds;     ///< how much of the time after it
    uint32_t dwKeepDays;         ///< older recordings are deleted; 0: only when room is needed
    uint32_t dwCount;            ///< spans
    tagScheduleSpan atSpans[56]; ///< the first dwCount hold
} tagConfigSchedule;

/// What a contact is like when nothing happens.
TESSARO_ENUM(eContactIdle){
    eContactOpen = 0,   ///< open (ONVIF: idle state open)
    eContactClosed = 1, ///< closed
};

/// eConfigAlarmInput.
typedef struct tagConfigAlarmInput
{
    uint32_t dwSize;         ///< sizeof this record
    uint32_t bEnabled;       ///< 1: watched
    uint32_t dwIdle;         ///< eContactIdle
    uint32_t dwHoldMs;       ///< how long a change must last to count, milliseconds
    tagConfigAction tAction; ///< what else to do
    char szName[64];         ///< what its owner calls it
} tagConfigAlarmInput;

/// eConfigAlarmOutput.
typedef struct tagConfigAlarmOutput
{
    uint32_t dwSize;     ///< sizeof this record
    uint32_t dwIdle;     ///< eContactIdle
    uint32_t dwPulseMs;  ///< switches itself off after so long (ONVIF: monostable); 0: stays on (bistable)
    uint32_t dwReserved; ///< 0
    char szName[64];     ///< what its owner calls it
} tagConfigAlarmOutput;

/// @}

/// @}

TESSARO_STATIC_ASSERT(offsetof(tagConfigInformation, data) == 8, "tagConfigInformation");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformation, extra) == 262152, "tagConfigInformation");
TESSARO_STATIC_ASSERT(sizeof(tagConfigInformation) == 262168, "tagConfigInformation");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformationV2, extra) == 8, "tagConfigInformationV2");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformationV2, data) == 24, "tagConfigInformationV2");
TESSARO_STATIC_ASSERT(sizeof(tagConfigInformationV2) == 262168, "tagConfigInformationV2");

TESSARO_STATIC_ASSERT(offsetof(tagConfigNetwork, szMac) == 52, "the private binding reads it there");
TESSARO_STATIC_ASSERT(offsetof(tagConfigNetwork, dwPrefixLength) == 72, "the private binding asks for so much");
TESSARO_STATIC_ASSERT(offsetof(tagConfigMacAddress, szMac) == 8, "the private binding writes it there");
TESSARO_STATIC_ASSERT(sizeof(tagConfigUser) == 72, "tagConfigUser");
TESSARO_STATIC_ASSERT(sizeof(tagConfigDisk) == 64, "tagConfigDisk");
TESSARO_STATIC_ASSERT(sizeof(tagOverlayText) == 152, "tagOverlayText");
TESSARO_STATIC_ASSERT(sizeof(tagConfigAction) == 24, "tagConfigAction");
TESSARO_STATIC_ASSERT(sizeof(tagPrivacyMask) == 24, "tagPrivacyMask");
TESSARO_STATIC_ASSERT(sizeof(tagScheduleSpan) == 16, "tagScheduleSpan");

TESSARO_C_END

TESSARO_RECORD(tagConfigIdentity, 488, 488);
TESSARO_RECORD(tagConfigNetwork, 72, 336);
TESSARO_RECORD(tagConfigClock, 352, 352);
TESSARO_RECORD(tagConfigUsers, 2312, 2312);
TESSARO_RECORD(tagConfigStorage, 1032, 1032);
TESSARO_RECORD(tagConfigVideoEncoder, 48, 48);
TESSARO_RECORD(tagConfigAudioEncoder, 32, 32);
TESSARO_RECORD(tagConfigOverlay, 1224, 1224);
TESSARO_RECORD(tagConfigMotion, 568, 568);
TESSARO_RECORD(tagConfigPrivacy, 200, 200);
TESSARO_RECORD(tagConfigSchedule, 928, 928);
TESSARO_RECORD(tagConfigAlarmInput, 104, 104);
TESSARO_RECORD(tagConfigAlarmOutput, 80, 80);

#endif
