#pragma once

#include "plugins/device/face/Invoke.h"
#include "plugins/device/face/Login.h"
#include "plugins/device/face/Media.h"
#include "plugins/device/face/Query.h"

#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"

// What serves each operation: one row each, in the order of the subjects. Operations without a row are not supported.

namespace device
{
using Adapter_ProtocolSet::CClientProtocolBase;

/// An operation without a row.
template <auto Op, class... A>
int Serve(tagCall<Op>, A...)
{
    return eResultNotSupported;
}

/// A call under a login: one function of the model.
template <auto Method, class... A>
int OnDevice(uint32_t dwLevel, void* hLogin, A... tArguments)
{
    return AskWith<CLogin>(hLogin, dwLevel,
                           [&](CLogin const& tLogin)
                           {
                               return Invoke<Method>(std::index_sequence_for<A...>{}, tLogin.Device(),
                                                     CallerOf(tLogin.Session()), tArguments...);
                           });
}

// The model answers it: this function, for users of this level.
#define ON_DEVICE(name, level, method)                                                                                 \
    template <class... A>                                                                                              \
    int Serve(tagCall<&CClientProtocolBase::name>, A... tArguments)                                                    \
    {                                                                                                                  \
        return OnDevice<&method>(level, tArguments...);                                                                \
    }
// Opens a query that this function of the model answers. parent: the class of what it is asked of.
#define QUERY(name, parent, method)                                                                                    \
    template <class... A>                                                                                              \
    int Serve(tagCall<&CClientProtocolBase::name>, A... tArguments)                                                    \
    {                                                                                                                  \
        return tagQuery<&method>::Open<parent>(tArguments...);                                                         \
    }
#define NEXT(name)                                                                                                     \
    template <class... A>                                                                                              \
    int Serve(tagCall<&CClientProtocolBase::name>, A... tArguments)                                                    \
    {                                                                                                                  \
        return NextEntry(tArguments...);                                                                               \
    }
// Closes what is of one of these classes.
#define CLOSE(name, ...)                                                                                               \
    inline int Serve(tagCall<&CClientProtocolBase::name>, void* hObject)                                               \
    {                                                                                                                  \
        return CloseHandle<__VA_ARGS__>(hObject);                                                                      \
    }
// Written out: in the source that the comment names.
#define OWN(name) tagCall<&CClientProtocolBase::name>::Named Serve;

// clang-format off

// Session.cpp
OWN(Start)
OWN(Stop)
OWN(UserLogin)
CLOSE(UserLogout, CLogin)
OWN(GetLoginLevel)
OWN(GetLoginMac)
OWN(GetLoginStatus)
OWN(SetCallbackFunc)
OWN(SubscribeEvent)
OWN(UnSubscribeEvent)
OWN(DeleteUserForceCB)
OWN(SetProtocolInterface)

// Settings.cpp
OWN(SetConfig)
OWN(SetConfigV2)
OWN(SetConfigBySn)
OWN(GetConfig)
OWN(GetConfigV2)
OWN(SetMiscPara)
OWN(GetMiscPara)
ON_DEVICE(SetIpcPara,           eUserAdministrator, CCamera::Write)
ON_DEVICE(GetIpcPara,           eUserViewer,        CCamera::Read)
ON_DEVICE(SetChromaDefault,     eUserAdministrator, CCamera::Default)
ON_DEVICE(DeviceControl,        eUserAdministrator, CDevice::Control)
ON_DEVICE(GetSDKVersionByHandle, eUserViewer,       CDevice::SDKVersion)

// alarms and recording
ON_DEVICE(AlarmClear,           eUserOperator,      CAlarms::Clear)
ON_DEVICE(AlarmoutControl,      eUserOperator,      CAlarms::SetOutput)
ON_DEVICE(AlarminStateGet,      eUserViewer,        CAlarms::InputStates)
ON_DEVICE(AlarmoutStateGet,     eUserViewer,        CAlarms::OutputStates)
ON_DEVICE(FileLock,             eUserOperator,      CStorage::Lock)
ON_DEVICE(RecordControl,        eUserOperator,      CStorage::Control)
ON_DEVICE(DataExistCheck,       eUserViewer,        CStorage::DaysWithData)
ON_DEVICE(DiskGroupManage,      eUserAdministrator, CStorage::Manage)
ON_DEVICE(GetMultiTypeDataSize, eUserViewer,        CStorage::SizeOf)
ON_DEVICE(GetDataSize,          eUserViewer,        CStorage::SizeOf)

// queries
QUERY(HistoryStreamQueryConnect,          CLogin, CStorage::Query)
QUERY(HistoryStreamMultiTypeQueryConnect, CLogin, CStorage::QueryTypes)
QUERY(HistoryLogQueryConnect,             CLogin, CDeviceLog::Query)
QUERY(FileQueryConnect,                   CMedia, CFiles::Query)
OWN(TransmitHistoryStreamQueryConnect) // Transfer.cpp
NEXT(HistoryStreamQueryNext)
NEXT(HistoryStreamMultiTypeQueryNext)
NEXT(HistoryLogQueryNext)
NEXT(FileQueryNext)
NEXT(TransmitHistoryStreamQueryNext)
CLOSE(HistoryStreamQueryDisconnect, CQuery<tagHistoryStreamQueryResult>, CQuery<tagHistoryStreamMultiTypeQueryResult>)
CLOSE(HistoryLogQueryDisconnect, CQuery<tagLogQueryResult>)
CLOSE(FileQueryDisconnect, CQuery<tagFileQueryResult>)
CLOSE(TransmitHistoryStreamQueryDisconnect, CQuery<tagHistoryStreamMultiTypeQueryResult>)

// PTZ, panel
ON_DEVICE(PTZControl,           eUserOperator,      CPTZ::Command)
ON_DEVICE(PanelGetStatus,       eUserViewer,        CPanel::Status)
ON_DEVICE(PanelSetStatus,       eUserOperator,      CPanel::SetStatus)
ON_DEVICE(PanelControl,         eUserOperator,      CPanel::Control)

// decoders
ON_DEVICE(SetScreenSplitMode,           eUserOperator, CWall::Split)
ON_DEVICE(DecoderSetConfig,             eUserOperator, CWall::SetLayout)
ON_DEVICE(DecoderGetConfig,             eUserViewer,   CWall::Layout)
ON_DEVICE(DecoderSetChannelConfig,      eUserOperator, CWall::SetWindow)
ON_DEVICE(DecoderGetChannelConfig,      eUserViewer,   CWall::Window)
ON_DEVICE(DecoderDynamicConnect,        eUserOperator, CWall::Connect)
ON_DEVICE(DecoderDynamicDisconnect,     eUserOperator, CWall::Disconnect)
ON_DEVICE(DecoderSetVideoStandard,      eUserOperator, CWall::SetSignal)
ON_DEVICE(DecoderGetVideoStandard,      eUserViewer,   CWall::Signal)
ON_DEVICE(DecoderSetChannelLoopConfig,  eUserOperator, CWall::SetLoop)
ON_DEVICE(DecoderGetChannelLoopConfig,  eUserViewer,   CWall::Loop)
ON_DEVICE(DecoderChannelSetLoopEnable,  eUserOperator, CWall::SetLoopState)
ON_DEVICE(DecoderChannelGetLoopEnable,  eUserViewer,   CWall::LoopState)
ON_DEVICE(DecoderGetLoopEnable,         eUserViewer,   CWall::LoopStates)
ON_DEVICE(DecoderGetChannelInformation, eUserViewer,   CWall::Information)
ON_DEVICE(DecoderChannelGetStatus,      eUserViewer,   CWall::Status)
ON_DEVICE(DecoderChannelSetPlayStatus,  eUserOperator, CWall::SetPlay)
ON_DEVICE(DecoderChannelGetPlayStatus,  eUserViewer,   CWall::Play)
ON_DEVICE(UploadLogo,                   eUserOperator, CWall::SetLogo)
ON_DEVICE(DecoderChannelLogoSwitch,     eUserOperator, CWall::SwitchLogo)
ON_DEVICE(DecoderChannelDisplayControl, eUserOperator, CWall::Display)
ON_DEVICE(DecoderSetDisplayConfig,      eUserOperator, CWall::SetScreen)
ON_DEVICE(DecoderGetDisplayConfig,      eUserViewer,   CWall::Screen)
ON_DEVICE(DecoderChannelGetOSDTime,     eUserViewer,   CWall::Time)

// Streams.cpp
OWN(RealStreamConnect)
CLOSE(RealStreamDisconnect, CLive)
OWN(StreamMediaCB)
OWN(StreamMediaRawCB)
OWN(StreamMediaControl)
OWN(ForceIFrame)
OWN(GetPackInfo)
OWN(SetStreamMediaLinkID)
OWN(QueryStreamMediaLinkID)
OWN(HistoryStreamCreate)
OWN(HistoryStreamMultiTypeCreate)
CLOSE(HistoryStreamDestroy, CRecorded)
OWN(HistoryStreamPosition)
OWN(HistoryStreamSync)
OWN(HistoryStreamUnSync)
OWN(HistoryStreamSetSpeed)
OWN(HistoryStreamCB)
OWN(VoiceStreamConnect)
CLOSE(VoiceStreamDisconnect, CVoice)
OWN(VoiceStreamSend)
OWN(VoiceStreamCB)
OWN(ImageCapture)

// Transfer.cpp
OWN(TransparentChannelConnect)
CLOSE(TransparentChannelDisconnect, CSerialChannel)
OWN(TransparentChannelWrite)
OWN(TransparentChannelCB)
OWN(FileUploadConnect)
OWN(FileUploadControl)
CLOSE(FileUploadDisconnect, CUpload)
OWN(FileUploadCB)
OWN(FileDownloadConnect)
OWN(FileDownloadControl)
CLOSE(FileDownloadDisconnect, CFetch)
OWN(FileDownloadCB)
OWN(StreamTransferConnect)
OWN(StreamTransferSend)
CLOSE(StreamTransferDisconnect, CWindowTransfer)

// Nearby.cpp: what needs no login
OWN(DeviceRegisterListenStart)
OWN(DeviceRegisterListenStop)
OWN(DeviceRegisterCB)
OWN(DeviceProbeStart)
OWN(DeviceProbeStop)
OWN(DeviceProbeResearch)
OWN(DeviceProbeSetDeviceConfig)
OWN(DeviceProbeSetAllDeviceConfig)
OWN(DeviceProbeSetConfig)
OWN(DeviceProbeGetConfig)
OWN(GetDeviceConfigFromHttp)
OWN(DeviceIsOnline)
OWN(GetSDKVersion)
OWN(GetFileHeader)
OWN(StringToLattice)

// clang-format on
#undef ON_DEVICE
#undef QUERY
#undef NEXT
#undef CLOSE
#undef OWN
} // namespace device
