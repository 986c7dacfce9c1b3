/// The Tessaro client adapter: one way to talk to every camera, recorder and video decoder on a site. C99 and C++.
///
/// Conventions:
///
/// 1. IDs. A login ID names a login to a device, a media ID a connection under it: a live stream, a playback, a query.
///    Both are numbers from 0 to 999 and independent of each other. When all 1000 are taken, an opening function that
///    succeeds stores -1 in place of an ID: no later call accepts it, and what was opened stays open in the plug-in.
/// 2. Results. 0 is success. 3: unknown login ID; -1: unknown media ID; 4: the protocol has no binding (the service
///    isn't started); 1: the protocol's plug-in can't do this. These and the few others are listed at eResult. Any
///    other number is the plug-in's own, handed on unchanged. Nothing is thrown. Each function below tells only what is
///    special to it.
/// 3. Pointers. What a pointer points at stays the caller's and need not outlive the call. Apart from what a function
///    tells, the library doesn't test pointers: the plug-in gets exactly what the caller passed.
/// 4. Threads. Any function may be called from any thread, with two exceptions: ClientAdapter_Start and
///    ClientAdapter_Stop must not overlap with any other call, and an ID must not be closed while another thread is
///    still using it. A call blocks as long as the plug-in's entry point does; the library itself never waits.
/// 5. Callbacks. They run on a plug-in's thread, which waits for them to return: be quick. First they get the
///    application's own ID, as a pointer-sized number, and last the user data of their registration; frames and records
///    are the plug-in's and end with the callback. Their result is not used. The library holds no lock meanwhile: every
///    function but Start and Stop may be called from inside every callback. A callback stays registered for its ID
///    until another takes its place (null: none), also after the ID was closed; when callbacks of a closed stream end
///    is the plug-in's promise.
/// 6. Diagnostics. Failures on the library's side write one line each to standard output.
#ifndef TESSARO_ADAPTER_CLIENTADAPTER_H
#define TESSARO_ADAPTER_CLIENTADAPTER_H

#include "protocol/PluginInterface.h"
#include "system/Export.h"

TESSARO_C_BEGIN

// --- Service ---------------------------------------------------------------------------------------------------------

/// Loads and starts the ONVIF, RTSP and VTQ plug-ins, looked for as libonvifclient.so, librtspclient.so and libVTQ.so
/// on the dynamic loader's search path. dwMaxChannel: how many streams RTSP may open at once. Always 0: a plug-in that
/// is missing or doesn't start shows in the diagnostic lines, and in 1 or 4 from every later call on its protocol.
/// Calling it again without a stop starts the same plug-ins again.
TESSARO_API int ClientAdapter_Start(unsigned int dwMaxChannel);

/// Stops and unloads every plug-in, an application's private one too. Always 0. Close streams and log out first: IDs
/// that are still open stay registered, but what they stood for is gone.
TESSARO_API int ClientAdapter_Stop(void);

// --- Login -----------------------------------------------------------------------------------------------------------

/// Logs in to a device. *pnLoginID: the new login ID, on 0 only; on a failure its value is not to be used. -1:
/// pnLoginID or ptPara is null. For RTSP nothing is sent yet: a wrong address or password shows on the stream.
TESSARO_API int ClientAdapter_UserLogin(int* pnLoginID, eProtocolType eType, tagUserLoginPara* ptPara);

/// Logs out and frees the login ID. When the plug-in answers anything but 0, the ID stays and may be logged out again.
/// Streams opened under the login stay open.
TESSARO_API int ClientAdapter_UserLogout(int nLoginID);

/// *pnLevel: the access level of the login's user. 3 also when the plug-in answers a negative result; every other
/// answer of the plug-in becomes 0, also when it can't tell and leaves *pnLevel as it was.
TESSARO_API int ClientAdapter_GetLoginLevel(int nLoginID, int* pnLevel);

/// The device's hardware address, into the nLength bytes at pbyMac. Results as ClientAdapter_GetLoginLevel.
TESSARO_API int ClientAdapter_GetLoginMac(int nLoginID, unsigned char* pbyMac, int nLength);

/// *pnStatus: the plug-in's answer to the status query. 3 also when that is negative; 4: pnStatus is null.
TESSARO_API int ClientAdapter_GetLoginStatus(int nLoginID, int* pnStatus);

// --- Live streams ----------------------------------------------------------------------------------------------------

/// Opens a live stream under a login. *pnMediaID: the new media ID, on 0 only; untouched on a failure. For RTSP the
/// stream connects on a thread of its own after this returns: follow it with ClientAdapter_SubscribeEvent.
TESSARO_API int ClientAdapter_RealStreamConnect(int* pnMediaID, int nLoginID, tagRealStreamPara* ptPara);

/// Closes a live stream and frees its media ID, whatever the plug-in answers. For RTSP no callback of the stream runs
/// once this has returned.
TESSARO_API int ClientAdapter_RealStreamDisconnect(int nMediaID);

/// Plays, pauses and the like.
TESSARO_API int ClientAdapter_StreamMediaControl(int nMediaID, eTaskControl eControl);

/// Asks the device for a key frame at once. 3 when either ID is unknown.
TESSARO_API int ClientAdapter_ForceIFrame(int nLoginID, int nMediaID);

/// What came in on a connection, into the nLength bytes at pInfo; the plug-in defines the record.
TESSARO_API int ClientAdapter_GetPackageInfo(int nMediaID, void* pInfo, int nLength);

/// Marks a stream as belonging to a link.
TESSARO_API int ClientAdapter_SetStreamMediaLinkID(int nMediaID, unsigned long dwLink);

/// The link ID to use for a media function.
TESSARO_API int ClientAdapter_QueryStreamMediaLinkID(int nLoginID, eMediaFunctionType eFunction,
                                                     tagMediaLinkIDQueryResult* ptResult);

// --- The plug-ins themselves -----------------------------------------------------------------------------------------

/// Hands ONVIF, RTSP and VTQ a function of their own kinds, which they may keep. Always 0.
TESSARO_API int ClientAdapter_SetCallbackFunc(unsigned long dwType, void* pFunction);

/// Sets a parameter of the plug-in of eType. dwLength: bytes at pPara. The four names do the same.
TESSARO_API int ClientAdapter_RTSPSetIsProductTest(unsigned long dwType, void* pPara, unsigned long dwLength,
                                                   eProtocolType eType);
TESSARO_API int ClientAdapter_VTQDealRepairIpcMsg(unsigned long dwType, void* pPara, unsigned long dwLength,
                                                  eProtocolType eType);
TESSARO_API int ClientAdapter__VoiceStreamMedia(unsigned long dwType, void* pPara, unsigned long dwLength,
                                                eProtocolType eType);
TESSARO_API int ClientAdapter__VoiceStreamIf(unsigned long dwType, void* pPara, unsigned long dwLength,
                                             eProtocolType eType);

// --- Callbacks -------------------------------------------------------------------------------------------------------
//
// Each takes the place of an earlier one of the same kind for the same ID, at once and as a whole: never is one
// registration's function called with another's user data. A null function ends the kind's callbacks for the ID. When
// the plug-in refuses a registration, its result comes back and the function stays in place for the next try.

/// Frames of a live stream go to pfnFrame.
TESSARO_API int ClientAdapter_StreamMediaCB(int nMediaID, StreamMediaCallback pfnFrame, unsigned long dwUser);

/// Frames of a playback stream go to pfnFrame.
TESSARO_API int ClientAdapter_HistoryStreamCB(int nMediaID, StreamMediaCallback pfnFrame, unsigned long dwUser);

/// Frames as they came from the device go to pfnFrame, beside those of ClientAdapter_StreamMediaCB.
TESSARO_API int ClientAdapter_StreamMediaRawCB(int nMediaID, StreamMediaCallback pfnFrame, unsigned long dwUser);

/// Voice from the device goes to pfnVoice.
TESSARO_API int ClientAdapter_VoiceStreamCB(int nMediaID, StreamVoiceCallback pfnVoice, unsigned long dwUser);

/// What comes through a transparent channel goes to pfnData.
TESSARO_API int ClientAdapter_TransparentChannelCB(int nMediaID, TransparentChannelCallback pfnData,
                                                   unsigned long dwUser);

/// Progress of an upload goes to pfnState.
TESSARO_API int ClientAdapter_FileUploadCB(int nMediaID, FileUploadCallback pfnState, unsigned long dwUser);

/// The blocks of a download go to pfnData.
TESSARO_API int ClientAdapter_FileDownloadCB(int nMediaID, FileDownloadCallback pfnData, unsigned long dwUser);

/// Device events of a login go to pfnEvent, which gets the login ID first. For RTSP: the events (eConnectionEvent) of
/// the newest stream that the login opened, so open it first; a login of ten streams needs ten subscriptions, each
/// after its stream. 3 also when memory runs out.
TESSARO_API int ClientAdapter_SubscribeEvent(int nLoginID, unsigned long dwEvent, DeviceEventCallback pfnEvent,
                                             unsigned long dwUser);

/// Tells the plug-in to end what ClientAdapter_SubscribeEvent began. Should it call back all the same, the callback
/// runs.
TESSARO_API int ClientAdapter_UnSubscribeEvent(int nLoginID, unsigned long dwEvent);

/// Told when an ONVIF or VTQ device forces a user off; called by the plug-ins directly. Always 0.
TESSARO_API int ClientAdapter_DeleteUserForceCB(DeleteUserForceCallback pfnDelete, unsigned long dwUser);

/// ONVIF and VTQ devices that register themselves are told to pfnRegister, by the plug-ins directly. Always 0.
TESSARO_API int ClientAdapter_DeviceRegisterCB(DeviceRegisterCallback pfnRegister);

/// Looks for ONVIF and VTQ devices on the network; each is told to pfnProbe, by the plug-ins directly. Always 0.
TESSARO_API int ClientAdapter_DeviceProbeStart(tagDeviceProbeParameter* ptPara, DeviceProbeCallback pfnProbe);

// --- Configuration and attributes ------------------------------------------------------------------------------------

/// Writes one configuration block.
TESSARO_API int ClientAdapter_SetConfig(int nLoginID, tagConfigInformation* ptConfig);
/// Writes one configuration block, second layout.
TESSARO_API int ClientAdapter_SetConfigV2(int nLoginID, tagConfigInformationV2* ptConfig);
/// Reads the block that type and index name. Every call writes a diagnostic line.
TESSARO_API int ClientAdapter_GetConfig(int nLoginID, tagConfigInformation* ptConfig);
/// Reads the block that type and index name, second layout.
TESSARO_API int ClientAdapter_GetConfigV2(int nLoginID, tagConfigInformationV2* ptConfig);
/// Writes one configuration block to the device with this serial number, without a login, through the protocol eType.
TESSARO_API int ClientAdapter_SetConfigBySn(char const* szSerial, eProtocolType eType,
                                            tagConfigInformationV2* ptConfig);
/// Reads an attribute of the RTSP plug-in (eClientSDKAttributeType).
TESSARO_API int ClientAdapter_GetAttribute(eClientSDKAttributeType eAttribute, unsigned long* pdwValue);
/// Does nothing.
TESSARO_API int ClientAdapter_SetAttribute(eClientSDKAttributeType eAttribute, unsigned long dwValue);

// --- Device control and parameters -----------------------------------------------------------------------------------

/// Restart, shut down, restore and the like.
TESSARO_API int ClientAdapter_DeviceControl(int nLoginID, eRemoteDeviceControl eControl);
/// Writes a camera parameter. dwLength: bytes at pPara.
TESSARO_API int ClientAdapter_SetIpcPara(int nLoginID, int nChannel, unsigned long dwType, void* pPara,
                                         unsigned long dwLength);
/// Reads a camera parameter. dwLength: bytes at pPara.
TESSARO_API int ClientAdapter_GetIpcPara(int nLoginID, int nChannel, unsigned long dwType, void* pPara,
                                         unsigned long dwLength);
/// Sets a channel's picture back to its default.
TESSARO_API int ClientAdapter_SetChromaDefault(int nLoginID, unsigned long dwChannel, unsigned long dwFlag);
/// Which version a logged-in device speaks.
TESSARO_API int ClientAdapter_GetSDKVersionByHandle(int nLoginID, eNetworkSDKVersion* peVersion);

// --- Alarms, capture, recording and file locks -----------------------------------------------------------------------

/// Ends an alarm.
TESSARO_API int ClientAdapter_AlarmClear(int nLoginID, unsigned long dwType, unsigned long dwChannel);
/// Takes a picture; ptInfo says where it goes.
TESSARO_API int ClientAdapter_ImageCapture(int nLoginID, unsigned long dwChannel, eImageFormat eFormat,
                                           tagImageFileInfo* ptInfo);
/// Protects a recorded file from being overwritten, or lets it go.
TESSARO_API int ClientAdapter_FileLock(int nLoginID, char* szFile, eFileLockOperationCode eAction);
/// Starts or stops recording on the device.
TESSARO_API int ClientAdapter_RecordControl(int nLoginID, unsigned long dwChannel, unsigned long dwOn);
/// Sets an alarm output.
TESSARO_API int ClientAdapter_AlarmoutControl(int nLoginID, unsigned long dwOutput, unsigned long dwOn);
/// Reads the alarm inputs.
TESSARO_API int ClientAdapter_AlarminStateGet(int nLoginID, unsigned long* pdwCount, unsigned long* pdwState);
/// Reads the alarm outputs.
TESSARO_API int ClientAdapter_AlarmoutStateGet(int nLoginID, unsigned long* pdwCount, unsigned long* pdwState);

// --- Playback --------------------------------------------------------------------------------------------------------
//
// From here on an opening function takes a media ID whatever the plug-in answers, and stores it in *pnMediaID: close
// it, also after a failure. Only an unknown ID to open under leaves *pnMediaID as it was. A close frees the ID whatever
// the plug-in answers. Frames are asked for with ClientAdapter_HistoryStreamCB.

/// Opens playback of a recording.
TESSARO_API int ClientAdapter_HistoryStreamCreate(int* pnMediaID, int nLoginID, tagHistoryStreamPara* ptPara,
                                                  unsigned long dwFlag);
/// Opens playback over several record types.
TESSARO_API int ClientAdapter_HistoryStreamMultiTypeCreate(int* pnMediaID, int nLoginID,
                                                           tagHistoryStreamMultiTypePara* ptPara, unsigned long dwFlag);
/// Closes playback of either kind.
TESSARO_API int ClientAdapter_HistoryStreamDestroy(int nMediaID);
/// Reads or sets the playback position.
TESSARO_API int ClientAdapter_HistoryStreamPosition(int nMediaID, eOperationType eAction, tagTimeInfo* ptTime);
/// Plays the stream on the clock of another.
TESSARO_API int ClientAdapter_HistoryStreamSync(int nMediaID, int nOtherID);
/// Ends what HistoryStreamSync began.
TESSARO_API int ClientAdapter_HistoryStreamUnSync(int nMediaID, int nOtherID);
/// Sets the playback speed.
TESSARO_API int ClientAdapter_HistoryStreamSetSpeed(int nMediaID, unsigned long dwSpeed);

// --- Voice talk ------------------------------------------------------------------------------------------------------

/// Opens voice talk under a media connection.
TESSARO_API int ClientAdapter_VoiceStreamConnect(int* pnMediaID, int nParentID, tagVoiceStreamPara* ptPara);
/// Closes a voice connection.
TESSARO_API int ClientAdapter_VoiceStreamDisconnect(int nMediaID);
/// Sends voice; the buffer is yours again on return.
TESSARO_API int ClientAdapter_VoiceStreamSend(int nMediaID, tagBuffer* ptBuffer);

// --- Queries ---------------------------------------------------------------------------------------------------------
//
// Each query is opened, read record by record until the plug-in's result says there are no more, and closed.

/// Opens a query for recordings.
TESSARO_API int ClientAdapter_HistoryStreamQueryConnect(int* pnMediaID, int nLoginID,
                                                        tagHistoryStreamQueryFactor* ptFactor);
/// Opens a query over several record types.
TESSARO_API int ClientAdapter_HistoryStreamMultiTypeQueryConnect(int* pnMediaID, int nLoginID,
                                                                 tagHistoryStreamMultiTypeQueryFactor* ptFactor);
/// The next recording found.
TESSARO_API int ClientAdapter_HistoryStreamQueryNext(int nMediaID, tagHistoryStreamQueryResult* ptResult);
/// The next recording found, of several types.
TESSARO_API int ClientAdapter_HistoryStreamMultiTypeQueryNext(int nMediaID,
                                                              tagHistoryStreamMultiTypeQueryResult* ptResult);
/// Closes a recording query of either kind.
TESSARO_API int ClientAdapter_HistoryStreamQueryDisconnect(int nMediaID);
/// Opens a query for files, under a media connection.
TESSARO_API int ClientAdapter_FileQueryConnect(int* pnMediaID, int nParentID, tagFileQueryFactor* ptFactor);
/// The next file found.
TESSARO_API int ClientAdapter_FileQueryNext(int nMediaID, tagFileQueryResult* ptResult);
/// Closes a file query.
TESSARO_API int ClientAdapter_FileQueryDisconnect(int nMediaID);
/// Opens a query for log entries.
TESSARO_API int ClientAdapter_HistoryLogQueryConnect(int* pnMediaID, int nLoginID, tagLogQueryFactor* ptFactor);
/// The next log entry found.
TESSARO_API int ClientAdapter_HistoryLogQueryNext(int nMediaID, tagLogQueryResult* ptResult);
/// Closes a log query.
TESSARO_API int ClientAdapter_HistoryLogQueryDisconnect(int nMediaID);
/// Opens a recording query that the device passes on.
TESSARO_API int ClientAdapter_TransmitHistoryStreamQueryConnect(int* pnMediaID, int nLoginID,
                                                                tagTransmitHistoryStreamQueryFactor* ptFactor);
/// The next recording found.
TESSARO_API int ClientAdapter_TransmitHistoryStreamQueryNext(int nMediaID,
                                                             tagHistoryStreamMultiTypeQueryResult* ptResult);
/// Closes such a query.
TESSARO_API int ClientAdapter_TransmitHistoryStreamQueryDisconnect(int nMediaID);

// --- Transparent channel, file transfer, stream transfer -------------------------------------------------------------

/// Opens a channel through to the device's serial port, under a media connection.
TESSARO_API int ClientAdapter_TransparentChannelConnect(int* pnMediaID, int nParentID,
                                                        tagTransparentChannelPara* ptPara);
/// Writes through; the buffer is yours again on return.
TESSARO_API int ClientAdapter_TransparentChannelWrite(int nMediaID, tagBuffer* ptBuffer);
/// Closes a transparent channel.
TESSARO_API int ClientAdapter_TransparentChannelDisconnect(int nMediaID);
/// Opens an upload.
TESSARO_API int ClientAdapter_FileUploadConnect(int* pnMediaID, int nLoginID, tagFileUploadPara* ptPara);
/// Starts, pauses or ends an upload.
TESSARO_API int ClientAdapter_FileUploadControl(int nMediaID, eFileTransferControl eControl);
/// Closes an upload.
TESSARO_API int ClientAdapter_FileUploadDisconnect(int nMediaID);
/// Opens a download.
TESSARO_API int ClientAdapter_FileDownloadConnect(int* pnMediaID, int nLoginID, tagFileDownloadPara* ptPara);
/// Starts, pauses or ends a download.
TESSARO_API int ClientAdapter_FileDownloadControl(int nMediaID, eFileTransferControl eControl);
/// Closes a download.
TESSARO_API int ClientAdapter_FileDownloadDisconnect(int nMediaID);
/// Opens a connection that carries frames to a device.
TESSARO_API int ClientAdapter_StreamTransferConnect(int* pnMediaID, int nLoginID, unsigned long dwChannel,
                                                    tagStreamTransferPara* ptPara);
/// Sends one frame; it is yours again on return.
TESSARO_API int ClientAdapter_StreamTransferSend(int nMediaID, tagStreamTransferFrame* ptFrame);
/// Closes such a connection.
TESSARO_API int ClientAdapter_StreamTransferDisconnect(int nMediaID);

// --- Devices that register themselves, probing, fonts, configuration over HTTP ---------------------------------------
//
// These ask ONVIF, then VTQ, with the same pointers, so the later answer stands; their results are not told: always 0.

/// Listens for devices that register themselves.
TESSARO_API int ClientAdapter_DeviceRegisterListenStart(char* szAddress, unsigned long dwPort);
/// Ends the listening.
TESSARO_API int ClientAdapter_DeviceRegisterListenStop(void);
/// Ends the looking.
TESSARO_API int ClientAdapter_DeviceProbeStop(void);
/// Looks once more.
TESSARO_API int ClientAdapter_DeviceProbeResearch(tagDeviceProbeParameter* ptPara);
/// Does nothing.
TESSARO_API int ClientAdapter_DeviceProbeSetDeviceConfig(unsigned char const* pbyMac, unsigned short wPort,
                                                         tagDeviceProbeConfig* ptConfig);
/// Does nothing.
TESSARO_API int ClientAdapter_DeviceProbeSetAllDeviceConfig(tagDeviceProbeParameter* ptPara,
                                                            tagDeviceProbeConfig* ptConfig);
/// Does nothing.
TESSARO_API int ClientAdapter_DeviceProbeSetConfig(unsigned char const* pbyMac, unsigned short wPort,
                                                   tagDeviceProbeUserLoginPara* ptLogin,
                                                   tagDeviceProbeConfigInformation* ptConfig);
/// Does nothing.
TESSARO_API int ClientAdapter_DeviceProbeGetConfig(unsigned char const* pbyMac, unsigned short wPort,
                                                   tagDeviceProbeUserLoginPara* ptLogin,
                                                   tagDeviceProbeConfigInformation* ptConfig);
/// Renders a text as a dot lattice.
TESSARO_API int ClientAdapter_StringToLattice(char const* szText, tagFontPara* ptFont, void* pLattice,
                                              unsigned long* pdwWidth, unsigned long* pdwHeight,
                                              unsigned long* pdwLength);
/// Reads a configuration over HTTP, without a login.
TESSARO_API int ClientAdapter_GetDeviceConfigFromHttp(char const* szAddress, tagDeviceConfigFromHttp* ptConfig);

// --- Pan-tilt-zoom, disks, screen split ------------------------------------------------------------------------------

/// Moves a camera, sets and calls presets and tours.
TESSARO_API int ClientAdapter_PTZControl(int nLoginID, unsigned long dwChannel, ePTZControlCmdCode eCommand,
                                         unsigned long dwPara1, unsigned long dwPara2, unsigned long dwPara3,
                                         unsigned long dwPara4);
/// Which days of a month hold recordings.
TESSARO_API int ClientAdapter_DataExistCheck(int nLoginID, unsigned long dwChannel, unsigned long dwType,
                                             unsigned long dwMonth, char* szDays, unsigned long* pdwLength);
/// Manages groups of disks.
TESSARO_API int ClientAdapter_DiskGroupManage(int nLoginID, eDiskGroupOperation eAction, unsigned long dwGroup,
                                              unsigned long dwDisk, unsigned long dwValue);
/// Size of the recordings of several types.
TESSARO_API int ClientAdapter_GetMultiTypeDataSize(int nLoginID, unsigned long dwChannel, eDiskGroupType eGroup,
                                                   unsigned long dwTypes, char const* szBegin, char const* szEnd,
                                                   unsigned long dwFlag, unsigned long* pdwSize);
/// Size of the recordings of one type.
TESSARO_API int ClientAdapter_GetDataSize(int nLoginID, unsigned long dwChannel, eDiskGroupType eGroup,
                                          eHistoryStreamType eStreamType, char const* szBegin, char const* szEnd,
                                          unsigned long dwFlag, unsigned long* pdwSize);
/// Splits a screen into windows.
TESSARO_API int ClientAdapter_SetScreenSplitMode(int nLoginID, unsigned long dwScreen, unsigned long dwMode,
                                                 unsigned long* pdwChannels);

// --- Front panels ----------------------------------------------------------------------------------------------------

/// Reads a front panel.
TESSARO_API int ClientAdapter_PanelGetStatus(int nLoginID, tagPanelStatusInfo* ptStatus);
/// Sets a front panel's lamps and texts.
TESSARO_API int ClientAdapter_PanelSetStatus(int nLoginID, tagPanelStatusInfo* ptStatus);
/// Locks, unlocks, beeps.
TESSARO_API int ClientAdapter_PanelControl(int nLoginID, tagPanelControlParameter* ptPara);

// --- Decoders --------------------------------------------------------------------------------------------------------

/// Lets a decoder channel show a source at once.
TESSARO_API int ClientAdapter_DecoderDynamicConnect(int nLoginID, unsigned long dwChannel,
                                                    tagDecoderDynamicInformation* ptInfo);
/// Ends what DecoderDynamicConnect began.
TESSARO_API int ClientAdapter_DecoderDynamicDisconnect(int nLoginID, unsigned long dwChannel, unsigned long dwFlag);
/// Writes a decoder's configuration.
TESSARO_API int ClientAdapter_DecoderSetConfig(int nLoginID, tagDecoderDeviceConfig* ptConfig);
/// Reads a decoder's configuration.
TESSARO_API int ClientAdapter_DecoderGetConfig(int nLoginID, tagDecoderDeviceConfig* ptConfig);
/// Writes a decoder channel's configuration.
TESSARO_API int ClientAdapter_DecoderSetChannelConfig(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderChannelConfig* ptConfig);
/// Reads a decoder channel's configuration.
TESSARO_API int ClientAdapter_DecoderGetChannelConfig(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderChannelConfig* ptConfig);
/// Sets a decoder channel's video standard.
TESSARO_API int ClientAdapter_DecoderSetVideoStandard(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderVideoStandardConfig* ptConfig);
/// Reads a decoder channel's video standard.
TESSARO_API int ClientAdapter_DecoderGetVideoStandard(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderVideoStandardConfig* ptConfig);
/// Writes the tour of sources that a channel shows.
TESSARO_API int ClientAdapter_DecoderSetChannelLoopConfig(int nLoginID, unsigned long dwChannel,
                                                          tagDecoderChannelLoopConfig* ptConfig);
/// Reads the tour of sources that a channel shows.
TESSARO_API int ClientAdapter_DecoderGetChannelLoopConfig(int nLoginID, unsigned long dwChannel,
                                                          tagDecoderChannelLoopConfig* ptConfig);
/// Turns a channel's tour on or off.
TESSARO_API int ClientAdapter_DecoderChannelSetLoopEnable(int nLoginID, unsigned long dwChannel,
                                                          eDecoderChannelStatus eStatus);
/// Whether a channel's tour is on.
TESSARO_API int ClientAdapter_DecoderChannelGetLoopEnable(int nLoginID, unsigned long dwChannel,
                                                          eDecoderChannelStatus* peStatus);
/// Whether the tours of all channels are on.
TESSARO_API int ClientAdapter_DecoderGetLoopEnable(int nLoginID, tagDecoderLoopStatus* ptStatus);
/// What a channel can do.
TESSARO_API int ClientAdapter_DecoderGetChannelInformation(int nLoginID, unsigned long dwChannel,
                                                           tagDecoderChannelInformation* ptInfo);
/// What the channels are doing.
TESSARO_API int ClientAdapter_DecoderChannelGetStatus(int nLoginID, tagDecoderChannelStatus* ptStatus);
/// Controls playback on a channel.
TESSARO_API int ClientAdapter_DecoderChannelSetPlayStatus(int nLoginID, unsigned long dwChannel,
                                                          tagDecoderSetPlayStatusParameter* ptPara);
/// Where playback on a channel is.
TESSARO_API int ClientAdapter_DecoderChannelGetPlayStatus(int nLoginID, tagDecoderGetPlayStatusParameter* ptPara);
/// Sends a logo to show.
TESSARO_API int ClientAdapter_UploadLogo(int nLoginID, unsigned long dwChannel, tagUploadLogoParameter* ptPara);
/// Shows or hides the logo.
TESSARO_API int ClientAdapter_DecoderChannelLogoSwitch(int nLoginID, unsigned long dwChannel,
                                                       eDeviceChannelControl eControl);
/// Enlarges, restores or hides a window.
TESSARO_API int ClientAdapter_DecoderChannelDisplayControl(int nLoginID, unsigned long dwChannel,
                                                           tagDecoderDisplayStatus* ptStatus);
/// Writes a display's configuration.
TESSARO_API int ClientAdapter_DecoderSetDisplayConfig(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderDisplayConfig* ptConfig);
/// Reads a display's configuration.
TESSARO_API int ClientAdapter_DecoderGetDisplayConfig(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderDisplayConfig* ptConfig);
/// The time that a channel shows in its picture.
TESSARO_API int ClientAdapter_DecoderChannelGetOSDTime(int nLoginID, unsigned long dwChannel, tagTimeInfo* ptTime,
                                                       unsigned long dwFlag);

// --- Version, online state, file headers -----------------------------------------------------------------------------
//
// As the group of probing; ClientAdapter_GetSDKVersion and ClientAdapter_GetFileHeader ask RTSP too, before VTQ. Always
// 0.

/// Which version a device speaks, without a login.
TESSARO_API int ClientAdapter_GetSDKVersion(char const* szAddress, unsigned long dwPort, unsigned long dwTimeout,
                                            eNetworkSDKVersion* peVersion);
/// Whether a device answers, without a login.
TESSARO_API int ClientAdapter_DeviceIsOnline(char const* szAddress, unsigned long dwPort, unsigned long dwTimeout);
/// The header that recorded files of a type begin with.
TESSARO_API int ClientAdapter_GetFileHeader(unsigned long dwType, char* pbyHeader, unsigned long* pdwLength);

TESSARO_C_END

#endif
