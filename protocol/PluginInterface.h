/// @file
/// What applications and protocol plug-ins share: records, enumerations, callback types, result codes.

/// @defgroup plugin The plug-in interface
/// What applications and protocol plug-ins share: protocol/PluginInterface.h, and IProtocol for plug-ins in C++.
///
/// Records, enumerations, callback types and result codes; C99 and C++, no code. An application gets it with
/// adapter/ClientAdapter.h, a plug-in author includes it alone (C++ plug-ins also protocol/IProtocol.h).
///
/// Enumerations are 32 bits wide on both sides: `enum eName : int` in C++, a typedef of int in C. Records that the
/// library only hands on, and that nothing here fills yet, stay incomplete. Sizes are in bytes, times in microseconds,
/// and words in the machine's byte order, unless a comment says otherwise.

#ifndef TESSARO_PROTOCOL_PLUGININTERFACE_H
#define TESSARO_PROTOCOL_PLUGININTERFACE_H

#include "system/Export.h"

#include <stddef.h>
#include <stdint.h>

/// @cond
// clang-format off
#ifdef __cplusplus
#define TESSARO_ENUM(name) enum name : int
#define TESSARO_OPAQUE_ENUM(name) enum name : int
#define TESSARO_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define TESSARO_ENUM(name) typedef int name; enum
#define TESSARO_OPAQUE_ENUM(name) typedef int name
#if defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define TESSARO_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#else
#define TESSARO_STATIC_ASSERT(condition, text) extern char tagLayoutHolds[(condition) ? 1 : -1]
#endif
#endif
// clang-format on
/// @endcond

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

// --- Protocols and results -------------------------------------------------------------------------------------------

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

// --- Frames ----------------------------------------------------------------------------------------------------------

/// @defgroup frames Frames and buffers
/// What the callbacks hand over.
/// @{

/// What a frame carries.
TESSARO_ENUM(eMediaType){
    eMediaVideo = 0, ///< one access unit
    eMediaAudio = 1, ///< one packet
    eMediaOther = 2, ///< metadata, subtitles, an application track
};

/// How a frame is coded. Codecs without a value of their own are passed on as eCodecOther and named in szCodecName.
TESSARO_ENUM(eMediaCodec){
    eCodecOther = 0,     ///< see szCodecName
    eCodecH264 = 1,      ///< Annex B byte stream
    eCodecH265 = 2,      ///< Annex B byte stream
    eCodecAAC = 3,       ///< raw access units without ADTS header; tagStreamMediaFrame::pConfig describes them
    eCodecG711A = 4,     ///< A-law
    eCodecG711U = 5,     ///< mu-law
    eCodecG726 = 6,      ///< ADPCM; szCodecName ends in the bit rate: "g726-32"
    eCodecOpus = 7,      ///< one packet
    eCodecMJPEG = 8,     ///< one whole JPEG file
    eCodecMPEG4 = 9,     ///< MPEG-4 Part 2; one access unit
    eCodecMPEGTS = 10,   ///< whole transport stream packets of 188 bytes
    eCodecMetadata = 11, ///< one XML document of ONVIF metadata
};

/// Bits of tagStreamMediaFrame::dwFlags.
TESSARO_ENUM(eFrameFlag){
    eFrameKey = 1, ///< decoding can start here; H.264 and H.265 then have their parameter sets before the picture
    eFrameDiscontinuity = 2, ///< presentation times do not continue those of the frame before (reconnect, clock jump)
    eFrameDamaged = 4, ///< parts of this frame may be lost: packets were missing at its beginning, inside or at its end
};

/// One frame of a live or recorded stream. The record and its data belong to the plug-in and are valid until the
/// callback returns.
typedef struct tagStreamMediaFrame
{
    uint32_t dwMediaType;         ///< eMediaType
    uint32_t dwCodec;             ///< eMediaCodec
    char szCodecName[16];         ///< the codec's usual short name, lower case: "h264", "hevc", "aac", "mjpeg"
    uint32_t dwFlags;             ///< eFrameFlag bits
    uint32_t dwSequence;          ///< counts the frames of this track as they arrive, from 0; a gap: frames held back
    uint32_t dwLostBefore;        ///< RTP packets known to be lost since the frame before it on this stream
    uint32_t dwLength;            ///< bytes at pData
    int64_t llPresentationTimeUs; ///< microseconds on the stream's own time line, which starts near 0
    int64_t llWallClockUs;        ///< the device's clock, microseconds since 1970 UTC; 0 while it is not known
    uint32_t dwWidth;             ///< video: picture width in pixels, else 0
    uint32_t dwHeight;            ///< video: picture height in pixels, else 0
    uint32_t dwSampleRate;        ///< audio: samples per second, else 0
    uint32_t dwChannels;          ///< audio: channels, else 0
    const unsigned char* pData;   ///< one access unit of video, or one packet of audio
    const unsigned char* pConfig; ///< what a decoder needs beside the frames (AAC: AudioSpecificConfig); null: nothing
    uint32_t dwConfigLength;      ///< bytes at pConfig
} tagStreamMediaFrame;

/// One frame of a voice connection; life time as tagStreamMediaFrame.
typedef struct tagStreamVoiceFrame
{
    uint32_t dwCodec;             ///< eMediaCodec
    uint32_t dwSampleRate;        ///< samples per second
    uint32_t dwChannels;          ///< channels
    uint32_t dwLength;            ///< bytes at pData
    int64_t llPresentationTimeUs; ///< microseconds on the stream's own time line
    const unsigned char* pData;   ///< one packet
} tagStreamVoiceFrame;

/// A block of bytes. The call that takes the record says who owns pData.
typedef struct tagBuffer
{
    unsigned char* pData; ///< the bytes
    uint32_t dwLength;    ///< bytes at pData
} tagBuffer;

/// How far a file upload has come; handed to the callback by value.
typedef struct tagFileUploadState
{
    uint32_t dwState;   ///< 0 running, 1 finished, 2 failed
    uint32_t dwResult;  ///< the plug-in's reason when failed, else 0
    uint64_t ullSent;   ///< bytes the device has taken
    uint64_t ullLength; ///< bytes of the whole file
} tagFileUploadState;

/// @}

// --- Logging in and opening a stream ---------------------------------------------------------------------------------

/// @defgroup opening Logging in and opening a stream
/// Records that the application fills; zero what isn't used.
/// @{

/// What a login needs. Text is NUL-terminated; one that fills its field ends at the field. What is not used is
/// zero.
///
/// RTSP has no login of its own: the record says how to build the two stream addresses. With dwRtspUrlMode 0,
/// szAddress is the whole address of the main stream and there is no sub stream. With any other value the addresses
/// are rtsp://host:port/path, made of the host and the main or sub port and path.
typedef struct tagUserLoginPara
{
    char szAddress[256];       ///< device host name or address; for RTSP with dwRtspUrlMode 0 the whole address
    uint32_t dwPort;           ///< device port; for RTSP with dwRtspUrlMode 0 the port of that address
    char szUserName[32];       ///< at most 31 characters
    char szPassword[32];       ///< at most 31 characters
    uint32_t dwReserved;       ///< not read
    int32_t dwRtspMainPort;    ///< RTSP port of the main stream
    int32_t dwRtspSubPort;     ///< RTSP port of the sub stream
    char szRtspMainPath[128];  ///< path of the main stream, without the slash before it
    char szRtspSubPath[128];   ///< path of the sub stream, without the slash before it
    uint32_t dwRtspUrlMode;    ///< 0: szAddress is the address; any other value: build the addresses
    uint32_t dwRtspHostSelect; ///< 1: the host is szRtspHost; any other value: szAddress
    char szRtspHost[256];      ///< second host name or address
} tagUserLoginPara;

/// Which of a device's live streams to open.
TESSARO_ENUM(eStreamKind){
    eStreamMain = 1, ///< 2 and 3 name the main stream too
    eStreamSub = 4,  ///< so does 5
};

/// How RTP travels: dwStreamPara[0] of a stream opened on an RTSP login.
TESSARO_ENUM(eRtspTransport){
    eRtspTcp = 0,       ///< interleaved with RTSP in one TCP connection
    eRtspUdp = 1,       ///< to a port of this machine
    eRtspMulticast = 2, ///< to a group that the device names
    eRtspAutomatic = 3, ///< UDP first; TCP when nothing has come within 3 s, which eEventTransport reports
};

/// What to open as a live stream.
typedef struct tagRealStreamPara
{
    uint32_t dwChannel;       ///< the device's channel, from 0; RTSP does not use it, its address names the channel
    uint32_t dwReserved;      ///< not read
    uint32_t dwStreamKind;    ///< eStreamKind
    uint32_t dwStreamPara[7]; ///< for the plug-in; RTSP: [0] eRtspTransport, the others 0
} tagRealStreamPara;

/// What the RTSP binding hands to RTSPClient_Create: one stream to connect to. The record is the caller's and need
/// not outlive the call.
typedef struct tagRTSPClientPara
{
    char szUrl[256];          ///< the stream's address; never with user name or password in it
    uint32_t dwPort;          ///< the port that the login named for this stream; the address decides
    uint32_t dwFlag;          ///< 1
    char szUserName[32];      ///< empty: no authentication
    char szPassword[32];      ///< at most 31 characters
    char szSubUrl[256];       ///< zero here; the sub stream's address inside a login record
    uint32_t dwSubPort;       ///< zero here; the sub stream's port inside a login record
    uint32_t dwStreamPara[7]; ///< as in tagRealStreamPara
    uint32_t dwChannel;       ///< as in tagRealStreamPara
    uint32_t dwReserved[3];   ///< zero
} tagRTSPClientPara;

/// What to do with an open stream. The RTSP binding passes every code of 3 or more as 3.
TESSARO_ENUM(eTaskControl){
    eTaskPlay = 0,  ///< frames come
    eTaskPause = 1, ///< no frames come, the stream stays open
};

/// @}

// --- The life of a connection ----------------------------------------------------------------------------------------

/// @defgroup life The life of a connection
/// How RTSP streams come and go; the RTSP plug-in's page says when.
/// @{

/// Where an RTSP stream is in its life.
TESSARO_ENUM(eConnectionState){
    eConnectionConnecting = 1, ///< looking for the device and setting the stream up
    eConnectionLive = 2,       ///< frames arrive
    eConnectionStalled = 3,    ///< connected, but nothing has come for 5 s
    eConnectionRefused = 4,    ///< the device answered with an error; tried again after a pause
    eConnectionLost = 5,       ///< the connection failed, broke or ended; tried again after a pause
    eConnectionPaused = 6,     ///< paused by the application
};

/// First word of an RTSP stream's events. The first six are the changes of eConnectionState, with the same values.
///
/// | First word          | Second word                            | Third word               | Fourth word    |
/// | ------------------- | -------------------------------------- | ------------------------ | -------------- |
/// | eEventConnecting    | 0                                      | 0                        | reconnects yet |
/// | eEventLive          | 0                                      | 0                        | reconnects yet |
/// | eEventStalled       | milliseconds of silence                | 0                        | reconnects yet |
/// | eEventRefused       | RTSP status (401, 404, 461...)         | milliseconds to next try | reconnects yet |
/// | eEventLost          | errno of the failure, 0: stream's end  | milliseconds to next try | reconnects yet |
/// | eEventPaused        | 0                                      | 0                        | reconnects yet |
/// | eEventClockJump     | size of the jump in milliseconds       | 0 forward, 1 backward    | eMediaType     |
/// | eEventTransport     | the eRtspTransport that is used now    | the one that was tried   | reconnects yet |
TESSARO_ENUM(eConnectionEvent){
    eEventConnecting = 1, ///< eConnectionConnecting
    eEventLive = 2,       ///< eConnectionLive
    eEventStalled = 3,    ///< eConnectionStalled
    eEventRefused = 4,    ///< eConnectionRefused
    eEventLost = 5,       ///< eConnectionLost
    eEventPaused = 6,     ///< eConnectionPaused
    eEventClockJump = 7,  ///< the device's clock was set or its time stamps began again; the stream goes on
    eEventTransport = 8,  ///< another transport than the one asked for is used
};

/// What RTSPClient_GetPackageInfo fills in, given the record and its size. Counts run from the stream's creation on
/// and survive reconnects.
typedef struct tagRTSPPackageInfo
{
    uint32_t dwState;      ///< eConnectionState
    uint32_t dwReconnects; ///< times the stream was connected again after its first connection
    uint32_t dwLastStatus; ///< RTSP status of the last refusal, 0: none yet
    uint32_t dwReserved;   ///< 0
    uint64_t ullPackets;   ///< access units and audio packets that arrived
    uint64_t ullFrames;    ///< frames handed to a callback
    uint64_t ullBytes;     ///< bytes of those frames
    uint64_t ullLost;      ///< RTP packets known to be lost
} tagRTSPPackageInfo;

/// What can be asked with RTSP_GetAttribute.
TESSARO_ENUM(eClientSDKAttributeType){
    eAttributeMaxChannel = 0,  ///< the bound on open streams
    eAttributeOpenStreams = 1, ///< streams open now
};

/// @}

// --- Configuration ---------------------------------------------------------------------------------------------------

/// @defgroup blocks Configuration blocks
/// The same contents in two layouts, both 262168 bytes.
/// @{

/// One configuration block, first layout.
typedef struct tagConfigInformation
{
    uint32_t type;              ///< configuration type code; the device protocol defines them
    uint32_t index;             ///< qualifier of the type
    unsigned char data[262144]; ///< the contents
    uint32_t extra[4];          ///< words for the plug-in, in and out
} tagConfigInformation;

/// The same block, second layout.
typedef struct tagConfigInformationV2
{
    uint32_t type;              ///< configuration type code
    uint32_t index;             ///< qualifier of the type
    uint32_t extra[4];          ///< words for the plug-in, in and out
    unsigned char data[262144]; ///< the contents
} tagConfigInformationV2;

/// @}

// --- Handed on without a look ----------------------------------------------------------------------------------------

/// @defgroup opaque Handed on without a look
/// Enumerations and records of the device protocols. The library hands them on; their values and fields come with the
/// plug-in for the device, in a header of its own. To an application without it the records are incomplete types: it
/// can hold pointers to them, which somebody else made, but no objects.
/// @{

/// @name Enumerations
/// @{

/// The device protocol defines its values.
TESSARO_OPAQUE_ENUM(eDecoderChannelStatus);
TESSARO_OPAQUE_ENUM(eDeviceChannelControl);
TESSARO_OPAQUE_ENUM(eDiskGroupOperation);
TESSARO_OPAQUE_ENUM(eDiskGroupType);
TESSARO_OPAQUE_ENUM(eFileLockOperationCode);
TESSARO_OPAQUE_ENUM(eFileTransferControl);
TESSARO_OPAQUE_ENUM(eHistoryStreamType);
TESSARO_OPAQUE_ENUM(eImageFormat);
TESSARO_OPAQUE_ENUM(eMediaFunctionType);
TESSARO_OPAQUE_ENUM(eNetworkSDKVersion);
TESSARO_OPAQUE_ENUM(eOperationType);
TESSARO_OPAQUE_ENUM(ePTZControlCmdCode);
TESSARO_OPAQUE_ENUM(eRemoteDeviceControl);
TESSARO_OPAQUE_ENUM(eVoiceStreamSource);
/// @}

/// @name Records
/// @{

/// The device protocol defines its fields.
typedef struct tagDecoderChannelConfig tagDecoderChannelConfig;
typedef struct tagDecoderChannelInformation tagDecoderChannelInformation;
typedef struct tagDecoderChannelLoopConfig tagDecoderChannelLoopConfig;
typedef struct tagDecoderChannelStatus tagDecoderChannelStatus;
typedef struct tagDecoderDeviceConfig tagDecoderDeviceConfig;
typedef struct tagDecoderDisplayConfig tagDecoderDisplayConfig;
typedef struct tagDecoderDisplayStatus tagDecoderDisplayStatus;
typedef struct tagDecoderDynamicInformation tagDecoderDynamicInformation;
typedef struct tagDecoderGetPlayStatusParameter tagDecoderGetPlayStatusParameter;
typedef struct tagDecoderLoopStatus tagDecoderLoopStatus;
typedef struct tagDecoderSetPlayStatusParameter tagDecoderSetPlayStatusParameter;
typedef struct tagDecoderVideoStandardConfig tagDecoderVideoStandardConfig;
typedef struct tagDeviceConfigFromHttp tagDeviceConfigFromHttp;
typedef struct tagDeviceProbeConfig tagDeviceProbeConfig;
typedef struct tagDeviceProbeConfigInformation tagDeviceProbeConfigInformation;
typedef struct tagDeviceProbeParameter tagDeviceProbeParameter;
typedef struct tagDeviceProbeUserLoginPara tagDeviceProbeUserLoginPara;
typedef struct tagDeviceRegisterInfo tagDeviceRegisterInfo;
typedef struct tagFileDownloadPara tagFileDownloadPara;
typedef struct tagFileQueryFactor tagFileQueryFactor;
typedef struct tagFileQueryResult tagFileQueryResult;
typedef struct tagFileUploadPara tagFileUploadPara;
typedef struct tagFontPara tagFontPara;
typedef struct tagHistoryStreamMultiTypePara tagHistoryStreamMultiTypePara;
typedef struct tagHistoryStreamMultiTypeQueryFactor tagHistoryStreamMultiTypeQueryFactor;
typedef struct tagHistoryStreamMultiTypeQueryResult tagHistoryStreamMultiTypeQueryResult;
typedef struct tagHistoryStreamPara tagHistoryStreamPara;
typedef struct tagHistoryStreamQueryFactor tagHistoryStreamQueryFactor;
typedef struct tagHistoryStreamQueryResult tagHistoryStreamQueryResult;
typedef struct tagImageFileInfo tagImageFileInfo;
typedef struct tagLogQueryFactor tagLogQueryFactor;
typedef struct tagLogQueryResult tagLogQueryResult;
typedef struct tagMediaLinkIDQueryResult tagMediaLinkIDQueryResult;
typedef struct tagPanelControlParameter tagPanelControlParameter;
typedef struct tagPanelStatusInfo tagPanelStatusInfo;
typedef struct tagStreamTransferFrame tagStreamTransferFrame;
typedef struct tagStreamTransferPara tagStreamTransferPara;
typedef struct tagTimeInfo tagTimeInfo;
typedef struct tagTransmitHistoryStreamQueryFactor tagTransmitHistoryStreamQueryFactor;
typedef struct tagTransparentChannelPara tagTransparentChannelPara;
typedef struct tagUploadLogoParameter tagUploadLogoParameter;
typedef struct tagVoiceStreamPara tagVoiceStreamPara;
/// @}

/// @}

// --- Callbacks -------------------------------------------------------------------------------------------------------

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
/// An event of a device or stream. The four words are the plug-in's; for RTSP streams see eConnectionEvent.
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

// --- Layouts that both sides rely on, on 32 and on 64 bits -----------------------------------------------------------

TESSARO_STATIC_ASSERT(sizeof(eProtocolType) == 4, "enumerations are 32 bits wide");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwPort) == 256, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szUserName) == 260, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szPassword) == 292, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwReserved) == 324, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwRtspMainPort) == 328, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwRtspSubPort) == 332, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szRtspMainPath) == 336, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szRtspSubPath) == 464, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwRtspUrlMode) == 592, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, dwRtspHostSelect) == 596, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagUserLoginPara, szRtspHost) == 600, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(sizeof(tagUserLoginPara) == 856, "tagUserLoginPara");
TESSARO_STATIC_ASSERT(offsetof(tagRealStreamPara, dwStreamKind) == 8, "tagRealStreamPara");
TESSARO_STATIC_ASSERT(offsetof(tagRealStreamPara, dwStreamPara) == 12, "tagRealStreamPara");
TESSARO_STATIC_ASSERT(sizeof(tagRealStreamPara) == 40, "tagRealStreamPara");
TESSARO_STATIC_ASSERT(offsetof(tagRTSPClientPara, dwPort) == 256, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(offsetof(tagRTSPClientPara, dwFlag) == 260, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(offsetof(tagRTSPClientPara, szUserName) == 264, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(offsetof(tagRTSPClientPara, szPassword) == 296, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(offsetof(tagRTSPClientPara, szSubUrl) == 328, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(offsetof(tagRTSPClientPara, dwSubPort) == 584, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(offsetof(tagRTSPClientPara, dwStreamPara) == 588, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(offsetof(tagRTSPClientPara, dwChannel) == 616, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(sizeof(tagRTSPClientPara) == 632, "tagRTSPClientPara");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformation, data) == 8, "tagConfigInformation");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformation, extra) == 262152, "tagConfigInformation");
TESSARO_STATIC_ASSERT(sizeof(tagConfigInformation) == 262168, "tagConfigInformation");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformationV2, extra) == 8, "tagConfigInformationV2");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformationV2, data) == 24, "tagConfigInformationV2");
TESSARO_STATIC_ASSERT(sizeof(tagConfigInformationV2) == 262168, "tagConfigInformationV2");
TESSARO_STATIC_ASSERT(offsetof(tagStreamMediaFrame, llPresentationTimeUs) == 40, "tagStreamMediaFrame");
TESSARO_STATIC_ASSERT(offsetof(tagStreamMediaFrame, pData) == 72, "tagStreamMediaFrame");
TESSARO_STATIC_ASSERT(sizeof(tagFileUploadState) == 24, "tagFileUploadState");
TESSARO_STATIC_ASSERT(sizeof(tagRTSPPackageInfo) == 48, "tagRTSPPackageInfo");

TESSARO_C_END

#endif
