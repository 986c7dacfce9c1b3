#pragma once

#include "plugins/onvif/Face.h"
#include "plugins/onvif/Live.h"
#include "plugins/onvif/Login.h"
#include "plugins/onvif/Maintenance.h"
#include "plugins/onvif/Upload.h"

#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"

// What serves each operation: one row each, by the source file that has it. Operations without a row are not supported.

namespace onvifclient
{
using Adapter_ProtocolSet::CClientProtocolBase;

/// An operation without a row.
template <auto Op, class... A>
int Serve(tagCall<Op>, A...)
{
    return eResultNotSupported;
}

// Written out, in the source that the comment names.
#define OWN(name) tagCall<&CClientProtocolBase::name>::Named Serve;
// Closes what is of one of these classes.
#define CLOSE(name, ...)                                                                                               \
    inline int Serve(tagCall<&CClientProtocolBase::name>, void* hObject)                                               \
    {                                                                                                                  \
        return CloseHandle<__VA_ARGS__>(hObject);                                                                      \
    }

// clang-format off

// Session.cpp: start, stop, logins
OWN(Start)
OWN(Stop)
OWN(SetProtocolInterface)
OWN(SetCallbackFunc)
OWN(SetMiscPara)
OWN(GetMiscPara)
OWN(UserLogin)
CLOSE(UserLogout, CLogin)
OWN(GetLoginLevel)
OWN(GetLoginMac)
OWN(DeleteUserForceCB)

// LiveStreams.cpp, Snapshot.cpp
OWN(RealStreamConnect)
CLOSE(RealStreamDisconnect, CLive)
OWN(StreamMediaCB)
OWN(StreamMediaRawCB)
OWN(StreamMediaControl)
OWN(ForceIFrame)
OWN(GetPackInfo)
OWN(QueryStreamMediaLinkID)
OWN(SetStreamMediaLinkID)
OWN(ImageCapture)

// Configuration.cpp, Camera.cpp
OWN(SetConfig)
OWN(SetConfigV2)
OWN(SetConfigBySn)
OWN(GetConfig)
OWN(GetConfigV2)
OWN(SetIpcPara)
OWN(GetIpcPara)
OWN(SetChromaDefault)
OWN(PTZControl)

// Contacts.cpp: alarm inputs and outputs
OWN(AlarmoutControl)
OWN(AlarminStateGet)
OWN(AlarmoutStateGet)

// Maintenance.cpp, Upload.cpp: restart, log, files to the device
OWN(DeviceControl)
OWN(HistoryLogQueryConnect)
OWN(HistoryLogQueryNext)
CLOSE(HistoryLogQueryDisconnect, CLogQuery)
OWN(FileUploadConnect)
OWN(FileUploadControl)
CLOSE(FileUploadDisconnect, CUpload)
OWN(FileUploadCB)

// Events.cpp: subscriptions, the login's state
OWN(GetLoginStatus)
OWN(SubscribeEvent)
OWN(UnSubscribeEvent)

// RecordingQueries.cpp
OWN(HistoryStreamQueryConnect)
OWN(HistoryStreamQueryNext)
OWN(HistoryStreamMultiTypeQueryConnect)
OWN(HistoryStreamMultiTypeQueryNext)
OWN(HistoryStreamQueryDisconnect)
OWN(FileQueryConnect)
OWN(FileQueryNext)
OWN(FileQueryDisconnect)
OWN(DataExistCheck)
OWN(RecordControl)

// RecordedStreams.cpp: playback
OWN(HistoryStreamCreate)
OWN(HistoryStreamMultiTypeCreate)
OWN(HistoryStreamDestroy)
OWN(HistoryStreamPosition)
OWN(HistoryStreamSync)
OWN(HistoryStreamUnSync)
OWN(HistoryStreamSetSpeed)
OWN(HistoryStreamCB)

// Downloads.cpp
OWN(FileDownloadConnect)
OWN(FileDownloadControl)
OWN(FileDownloadDisconnect)
OWN(FileDownloadCB)
OWN(GetFileHeader)

// Voice.cpp: talk
OWN(VoiceStreamConnect)
OWN(VoiceStreamDisconnect)
OWN(VoiceStreamSend)
OWN(VoiceStreamCB)

// Decoders.cpp: decoder walls
OWN(SetScreenSplitMode)
OWN(DecoderSetConfig)
OWN(DecoderGetConfig)
OWN(DecoderSetChannelConfig)
OWN(DecoderGetChannelConfig)
OWN(DecoderDynamicConnect)
OWN(DecoderDynamicDisconnect)
OWN(DecoderGetVideoStandard)
OWN(DecoderGetChannelInformation)
OWN(DecoderChannelGetStatus)

// Nearby.cpp: what needs no login
OWN(DeviceProbeStart)
OWN(DeviceProbeStop)
OWN(DeviceProbeResearch)
OWN(DeviceIsOnline)
OWN(GetSDKVersion)
OWN(GetSDKVersionByHandle)
OWN(GetDeviceConfigFromHttp)

// clang-format on
#undef OWN
#undef CLOSE
} // namespace onvifclient
