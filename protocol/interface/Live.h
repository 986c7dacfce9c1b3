/// @file
/// Live streams, and how RTSP streams come and go.

#ifndef TESSARO_PROTOCOL_INTERFACE_LIVE_H
#define TESSARO_PROTOCOL_INTERFACE_LIVE_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup streams Live streams
/// What to open as a live stream, and what to do with an open one.
/// @{

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

/// Whether an rtsps:// device must show who it is: dwStreamPara[1] of a stream opened on an RTSP login.
TESSARO_ENUM(eRtspCertificate){
    eRtspCertificateAny = 0,     ///< any certificate will do: cameras sign their own
    eRtspCertificateTrusted = 1, ///< it must name the host and lead to an authority of the system's store, or of the
                                 ///< files that the environment names in SSL_CERT_FILE or SSL_CERT_DIR
};

/// What to open as a live stream.
typedef struct tagRealStreamPara
{
    uint32_t dwChannel;       ///< the device's channel, from 0; RTSP does not use it, its address names the channel
    uint32_t dwReserved;      ///< not read
    uint32_t dwStreamKind;    ///< eStreamKind
    uint32_t dwStreamPara[7]; ///< for the plug-in; RTSP: [0] eRtspTransport, [1] eRtspCertificate, the others 0
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
    eTaskStep = 2,  ///< playback: one frame comes, then it is paused; RTSP: eResultNotSupported
};

/// What a stream is for: ClientAdapter_QueryStreamMediaLinkID.
TESSARO_ENUM(eMediaFunctionType){
    eMediaFunctionLive = 0,     ///< live streams
    eMediaFunctionPlayback = 1, ///< playback
    eMediaFunctionVoice = 2,    ///< voice talk
    eMediaFunctionDownload = 3, ///< file transfer
};

/// The link that streams of one kind may share: one connection to the device in place of one for each stream. Streams
/// marked with its ID (ClientAdapter_SetStreamMediaLinkID, before their frames are asked for) come through it.
typedef struct tagMediaLinkIDQueryResult
{
    uint32_t dwSize;       ///< sizeof this record, by the application
    uint32_t dwLink;       ///< the link's ID, from 1; 0: the device shares no connection for this
    uint32_t dwMaxStreams; ///< streams that may share it; 0: no limit
    uint32_t dwStreams;    ///< streams that share it now
} tagMediaLinkIDQueryResult;

/// @}

/// @defgroup life The life of a connection
/// How RTSP streams come and go; the RTSP plug-in's page tells when.
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

/// How a stream is doing. What RTSPClient_GetPackageInfo fills in, given the record and its size; also the record of
/// ClientAdapter_GetPackageInfo. Counts run from the stream's creation on
/// and survive reconnects.
typedef struct tagRTSPPackageInfo
{
    uint32_t dwState;      ///< eConnectionState
    uint32_t dwReconnects; ///< times the stream was connected again after its first connection
    uint32_t dwLastStatus; ///< RTSP status of the last refusal, 0: none yet
    uint32_t dwDropped;    ///< frames dropped because the callback took too long
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

/// @}

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
TESSARO_STATIC_ASSERT(sizeof(tagRTSPPackageInfo) == 48, "tagRTSPPackageInfo");

TESSARO_C_END

TESSARO_RECORD(tagMediaLinkIDQueryResult, 16, 16);

#endif
