/// @file
/// The Tessaro client adapter: one way to talk to every camera, recorder and video decoder on a site. C99 and C++.

/// @defgroup api The C API
/// Plain functions on small integer IDs, for applications in C99 and C++: tessaro/ClientAdapter.h.
///
/// Conventions:
///
/// 1. IDs. A login ID names a login to a device, a media ID a connection under it: a live stream, a playback, a query.
///    Both are numbers from 0 to 999 and independent of each other. Preset ID variables to -1. When all 1000 are taken,
///    an opening function that succeeds stores -1 in place of an ID: no later call accepts it, and what was opened
///    stays open in the plug-in. An RTSP login takes two of the 1000 login IDs.
/// 2. Results. 0 is success. 3: unknown login ID; -1: unknown media ID; 4: the protocol has no binding (the service
///    isn't started); 1: the protocol's plug-in can't do this. These and the few others are listed at eResult. Any
///    other number is the plug-in's own, handed on unchanged: ePluginResult. Nothing is thrown. Every call to a device
///    may answer eResultBadHandle (the plug-in was stopped meanwhile), eResultBadArgument, eResultNotSupported,
///    eResultNotStarted, eResultNoResources, eResultBusy, eResultTimeOut, eResultConnectionLost, eResultUnreachable,
///    and eResultWrongLogin when the user's level (eUserLevel) doesn't allow it. Each group says which others can
///    come, and each function only what is special to it.
/// 3. What a protocol doesn't know is not asked: 0, nothing done, outputs as they were. RTSP knows logins, live streams
///    with their frames, events and control, and attributes; all else on an RTSP ID does nothing, and an opening
///    function takes a media ID with nothing behind it. ONVIF, VTQ and the private protocol know everything, unless
///    a function says otherwise.
/// 4. Pointers. What a pointer points at stays the caller's and need not outlive the call. Unless a function says
///    otherwise, the library doesn't test pointers: the plug-in gets exactly what the caller passed.
/// 5. Values. nLength and dwLength count the bytes at the pointer before them. Records and codes, with their units,
///    are those of @ref plugin; channels, inputs, outputs, disks, screens and windows count from 0. A plug-in of
///    somebody else's may have numbers of its own: the library hands everything on unchanged.
/// 6. Threads. Any function may be called from any thread, with two exceptions: ClientAdapter_Start and
///    ClientAdapter_Stop must not overlap with any other call, and an ID must not be closed while another thread is
///    still using it. A call blocks as long as the plug-in's entry point does; the library itself never waits.
/// 7. Callbacks. They run on a plug-in's thread, which waits for them to return: be quick. First they get the
///    application's own ID, as a pointer-sized number, and last the user data of their registration; frames and records
///    are the plug-in's and end with the callback. Their result is not used. The library holds no lock meanwhile: every
///    function but Start and Stop may be called from inside every callback. A callback stays registered for its ID
///    until another takes its place (null: none), also after the ID was closed; when callbacks of a closed stream end
///    is the plug-in's promise.
/// 8. Diagnostics. Failures on the library's side write one line each to standard output.

#ifndef TESSARO_ADAPTER_CLIENTADAPTER_H
#define TESSARO_ADAPTER_CLIENTADAPTER_H

#include "../protocol/PluginInterface.h"
#include "../system/Export.h"

TESSARO_C_BEGIN

/// @addtogroup api
/// @{

// --- Service ---------------------------------------------------------------------------------------------------------

/// @defgroup service Service
/// Start before every other call, stop after all of them, both with no other call under way.
/// @snippet service.c service
/// @{

/// Loads and starts the ONVIF, RTSP and VTQ plug-ins, looked for as libonvifclient.so, librtspclient.so and libVTQ.so
/// on the dynamic loader's search path, to which the folder tessaro beside the library belongs. dwMaxChannel: how many
/// streams RTSP may open at once. Always 0: a plug-in that is missing or doesn't start shows in the diagnostic lines,
/// and in 1 or the plug-in's own results from every later call on its protocol. Calling it again without a stop starts
/// the same plug-ins again. Blocks while the plug-ins start.
TESSARO_API int ClientAdapter_Start(unsigned int dwMaxChannel);

/// Stops and unloads every plug-in, the application's private one too (which it stops itself, before). Always 0. Close
/// streams and log out first: IDs that are still open stay registered, but what they stood for is gone. Not from inside
/// a callback, and not beside any other call. Blocks while the plug-ins stop.
TESSARO_API int ClientAdapter_Stop(void);

/// @}

// --- Login -----------------------------------------------------------------------------------------------------------

/// @defgroup login Login
/// A login is what every other call begins with: it names the protocol, the device and the credentials.
///
/// A login that was made lives on by itself: when the device is lost the plug-in looks for it again, and takes streams
/// and subscriptions up with it (eEventLoginLost, eEventLoginRestored). Plug-in's results of a login:
/// eResultBadAddress, eResultWrongLogin, eResultLocked, eResultUnreachable, eResultTimeOut.
/// @snippet login.c login
/// @{

/// Logs in to a device. *pnLoginID: the new login ID, on 0 only; on a failure its value is not to be used. -1:
/// pnLoginID or ptPara is null. 4 also for a bad eType. For RTSP nothing is sent yet: a wrong address or password shows
/// on the stream.
TESSARO_API int ClientAdapter_UserLogin(int* pnLoginID, eProtocolType eType, tagUserLoginPara* ptPara);

/// Logs out and frees the login ID. When the plug-in answers anything but 0, the ID stays and may be logged out again.
/// Streams opened under the login stay open. Not while another thread uses the ID: what it calls could reach a login
/// that the plug-in has ended.
TESSARO_API int ClientAdapter_UserLogout(int nLoginID);

/// The access level of the login's user (eUserLevel), into *pnLevel. 3 also when the plug-in answers a negative result;
/// every other answer becomes 0, also when nobody could tell and *pnLevel is as it was: preset it. Asks ONVIF and VTQ.
TESSARO_API int ClientAdapter_GetLoginLevel(int nLoginID, int* pnLevel);

/// The device's hardware address, 6 bytes, into the nLength bytes at pbyMac: preset them. Results and protocols as
/// ClientAdapter_GetLoginLevel.
TESSARO_API int ClientAdapter_GetLoginMac(int nLoginID, unsigned char* pbyMac, int nLength);

/// Whether a login still lives (eLoginStatus): *pnStatus is the plug-in's answer to the status query, also when that is
/// 1 or 4, the codes of a plug-in or binding that isn't there. 3 also when it is negative, *pnStatus as it was; 4:
/// pnStatus is null. Asks VTQ; 0 from the others.
TESSARO_API int ClientAdapter_GetLoginStatus(int nLoginID, int* pnStatus);

/// @}

// --- Live streams ----------------------------------------------------------------------------------------------------

/// @defgroup live Live streams
/// Open a stream under a login, register for its frames and events, close it before the logout.
///
/// Plug-in's results: eResultNoChannel, eResultTooManyStreams.
/// @snippet live.c live
/// @{

/// Opens a live stream under a login. *pnMediaID: the new media ID, on 0 only; untouched on a failure. For RTSP the
/// stream connects on a thread of its own after this returns: follow it with ClientAdapter_SubscribeEvent; 1 also when
/// ptPara is null or names no stream kind.
TESSARO_API int ClientAdapter_RealStreamConnect(int* pnMediaID, int nLoginID, tagRealStreamPara* ptPara);

/// Closes a live stream and frees its media ID, whatever the plug-in answers. For RTSP no callback of the stream runs
/// once this has returned, which takes 2 s at most; from inside the stream's own callback it returns at once. Not while
/// another thread uses the ID, as with every function that closes something.
TESSARO_API int ClientAdapter_RealStreamDisconnect(int nMediaID);

/// Plays, pauses, steps; live streams and playback. RTSP: play and pause; 201 for every other code.
TESSARO_API int ClientAdapter_StreamMediaControl(int nMediaID, eTaskControl eControl);

/// Asks the device for a key frame at once. 3 when either ID is unknown; the stream must be of the login's protocol.
/// RTSP: 201.
TESSARO_API int ClientAdapter_ForceIFrame(int nLoginID, int nMediaID);

/// What came in on a connection, into the nLength bytes at pInfo: tagRTSPPackageInfo. Asks VTQ (1: pInfo is null). The
/// counts of an RTSP stream come from TessaroExtra_GetStreamStatistics.
TESSARO_API int ClientAdapter_GetPackageInfo(int nMediaID, void* pInfo, int nLength);

/// Marks a stream as belonging to a link, whose ID comes from ClientAdapter_QueryStreamMediaLinkID.
TESSARO_API int ClientAdapter_SetStreamMediaLinkID(int nMediaID, unsigned long dwLink);

/// The link ID to use for a media function, into *ptResult.
TESSARO_API int ClientAdapter_QueryStreamMediaLinkID(int nLoginID, eMediaFunctionType eFunction,
                                                     tagMediaLinkIDQueryResult* ptResult);

/// @}

// --- The plug-ins themselves -----------------------------------------------------------------------------------------

/// @defgroup plugins The plug-ins themselves
/// What reaches a plug-in without any login: after ClientAdapter_Start, before the streams it is to affect.
/// @snippet plugins.c plugins
/// @{

/// Hands RTSP and VTQ a function of the kind dwType (eCallbackKind), which they may keep and call until the stop; ONVIF
/// knows none. Always 0.
TESSARO_API int ClientAdapter_SetCallbackFunc(unsigned long dwType, void* pFunction);

/// Sets a parameter of the plug-in of eType: dwType (eMiscParameter) names it. The names of this and the next three say
/// nothing: all four do the same, on the protocol that the caller names.
TESSARO_API int ClientAdapter_RTSPSetIsProductTest(unsigned long dwType, void* pPara, unsigned long dwLength,
                                                   eProtocolType eType);
/// Does what ClientAdapter_RTSPSetIsProductTest does.
TESSARO_API int ClientAdapter_VTQDealRepairIpcMsg(unsigned long dwType, void* pPara, unsigned long dwLength,
                                                  eProtocolType eType);
/// Does what ClientAdapter_RTSPSetIsProductTest does.
TESSARO_API int ClientAdapter__VoiceStreamMedia(unsigned long dwType, void* pPara, unsigned long dwLength,
                                                eProtocolType eType);
/// Does what ClientAdapter_RTSPSetIsProductTest does.
TESSARO_API int ClientAdapter__VoiceStreamIf(unsigned long dwType, void* pPara, unsigned long dwLength,
                                             eProtocolType eType);

/// @}

// --- Callbacks -------------------------------------------------------------------------------------------------------

/// @defgroup callbacks Callbacks
/// Where frames, data, progress and events go.
///
/// Each registration takes the place of an earlier one of the same kind for the same ID, at once and as a whole: never
/// is one registration's function called with another's user data. A null function ends the kind's callbacks for the
/// ID; what the plug-in goes on calling back then writes a diagnostic line each time. When the plug-in refuses a
/// registration, its result comes back and the function stays in place for the next try.
///
/// The last three are the exception: they go to the plug-ins as they are, without an ID.
/// @snippet callbacks.c callbacks
/// @{

/// Frames of a live stream go to pfnFrame. RTSP waits for a run of the earlier function to end, so what that one used
/// may be freed afterwards: hold no lock that it takes.
TESSARO_API int ClientAdapter_StreamMediaCB(int nMediaID, StreamMediaCallback pfnFrame, unsigned long dwUser);

/// Frames of a playback stream go to pfnFrame. Of the same kind as ClientAdapter_StreamMediaCB.
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

/// Device events of a login (eDeviceEvent) go to pfnEvent, which gets the login ID first. dwEvent says which: 0 all, or
/// a sum of TESSARO_EVENT. A login has one pfnEvent: another subscription, whatever its dwEvent, replaces it and dwUser
/// for all events of the login. For RTSP: the events (eConnectionEvent) of one stream, whatever dwEvent is: of the
/// stream that was opened last under the login when this is called (202: there is none). So subscribe after opening,
/// once for each stream; the events of all of them go to the latest pfnEvent and don't say which stream they are of. 3
/// also when memory runs out.
TESSARO_API int ClientAdapter_SubscribeEvent(int nLoginID, unsigned long dwEvent, DeviceEventCallback pfnEvent,
                                             unsigned long dwUser);

/// Tells the plug-in to end the events of dwEvent, 0: all that ClientAdapter_SubscribeEvent began. If it still calls
/// back, the callback runs. For RTSP nothing ends: a stream's events go on until it is closed.
TESSARO_API int ClientAdapter_UnSubscribeEvent(int nLoginID, unsigned long dwEvent);

/// pfnDelete is called when an ONVIF or VTQ device logs a user out; by the plug-ins directly, with their own handle of
/// the login. They may keep pfnDelete until the stop. Always 0.
TESSARO_API int ClientAdapter_DeleteUserForceCB(DeleteUserForceCallback pfnDelete, unsigned long dwUser);

/// pfnRegister is called for each ONVIF and VTQ device that registers itself, by the plug-ins directly. They may keep
/// it until the stop. Always 0. ClientAdapter_DeviceRegisterListenStart starts to listen for devices.
TESSARO_API int ClientAdapter_DeviceRegisterCB(DeviceRegisterCallback pfnRegister);

/// Looks for ONVIF and VTQ devices on the network. pfnProbe is called for each, by the plug-ins directly, until
/// ClientAdapter_DeviceProbeStop. Always 0. Every call writes three diagnostic lines.
TESSARO_API int ClientAdapter_DeviceProbeStart(tagDeviceProbeParameter* ptPara, DeviceProbeCallback pfnProbe);

/// @}

// --- Configuration and attributes ------------------------------------------------------------------------------------

/// @defgroup configuration Configuration and attributes
/// A device's configuration is read and written in blocks, each named by type and index: @ref blocks lists them.
///
/// Plug-in's results: eResultNotFound (the device has no such block), eResultNoChannel, eResultBadArgument (a value out
/// of its range: nothing was changed), eResultRefused.
///
/// The two layouts hold the same; a private plug-in that knows only the first is served in the second by conversion (1:
/// there is no memory for it). A block is a quarter of a megabyte: not for a small stack.
/// @snippet configuration.c configuration
/// @{

/// Writes one configuration block.
TESSARO_API int ClientAdapter_SetConfig(int nLoginID, tagConfigInformation* ptConfig);
/// Writes one configuration block, second layout.
TESSARO_API int ClientAdapter_SetConfigV2(int nLoginID, tagConfigInformationV2* ptConfig);
/// Reads the block that type and index name, into *ptConfig. Every call writes a diagnostic line.
TESSARO_API int ClientAdapter_GetConfig(int nLoginID, tagConfigInformation* ptConfig);
/// Reads the block that type and index name, into *ptConfig, second layout.
TESSARO_API int ClientAdapter_GetConfigV2(int nLoginID, tagConfigInformationV2* ptConfig);
/// Writes one configuration block to the device with this serial number, without a login, through the protocol eType.
/// Asks ONVIF and VTQ. 4 also for a bad eType.
TESSARO_API int ClientAdapter_SetConfigBySn(char const* szSerial, eProtocolType eType,
                                            tagConfigInformationV2* ptConfig);
/// Reads an attribute of the RTSP plug-in, into *pdwValue. 201: no such attribute; 203: pdwValue is null.
TESSARO_API int ClientAdapter_GetAttribute(eClientSDKAttributeType eAttribute, unsigned long* pdwValue);
/// Does nothing. Always 0.
TESSARO_API int ClientAdapter_SetAttribute(eClientSDKAttributeType eAttribute, unsigned long dwValue);

/// @}

// --- Device control and parameters -----------------------------------------------------------------------------------

/// @defgroup control Device control and parameters
/// Acts on a device as a whole, or on a camera's parameters: @ref camera lists them.
///
/// Plug-in's results: eResultNoChannel, eResultBadArgument (a value out of its range: nothing was changed),
/// eResultRefused.
/// @snippet control.c control
/// @{

/// Restart, shut down, restore and the like.
TESSARO_API int ClientAdapter_DeviceControl(int nLoginID, eRemoteDeviceControl eControl);
/// Writes the camera parameter that dwType (eCameraParameter) names, from the dwLength bytes at pPara.
TESSARO_API int ClientAdapter_SetIpcPara(int nLoginID, int nChannel, unsigned long dwType, void* pPara,
                                         unsigned long dwLength);
/// Reads the camera parameter that dwType (eCameraParameter) names, into the record of dwLength bytes at pPara, whose
/// dwSize is dwLength.
TESSARO_API int ClientAdapter_GetIpcPara(int nLoginID, int nChannel, unsigned long dwType, void* pPara,
                                         unsigned long dwLength);
/// Sets a channel's picture (brightness, contrast and the like) back to the factory's. dwFlag: eChromaDefault.
TESSARO_API int ClientAdapter_SetChromaDefault(int nLoginID, unsigned long dwChannel, unsigned long dwFlag);
/// Which version a logged-in device speaks, into *peVersion.
TESSARO_API int ClientAdapter_GetSDKVersionByHandle(int nLoginID, eNetworkSDKVersion* peVersion);

/// @}

// --- Alarms, capture, recording and file locks -----------------------------------------------------------------------

/// @defgroup alarms Alarms, capture, recording and file locks
/// Alarm inputs and outputs, and what a recorder does on request.
///
/// Plug-in's results: eResultNoChannel (no such channel, input or output), eResultNotFound (no such file),
/// eResultDeviceFull (recording), eResultRefused.
/// @snippet alarms.c alarms
/// @{

/// Ends an alarm that is on: dwType is its eDeviceEvent (0: any), dwChannel its channel or input, or TESSARO_ALL. Ends
/// what the device does because of it; one whose cause is still there begins again with the next change.
TESSARO_API int ClientAdapter_AlarmClear(int nLoginID, unsigned long dwType, unsigned long dwChannel);
/// Takes a picture; ptInfo says where it goes. dwChannel: a channel, or an eCaptureTarget.
TESSARO_API int ClientAdapter_ImageCapture(int nLoginID, unsigned long dwChannel, eImageFormat eFormat,
                                           tagImageFileInfo* ptInfo);
/// Protects a recorded file from being overwritten, or lets it go. szFile: its name on the device.
TESSARO_API int ClientAdapter_FileLock(int nLoginID, char* szFile, eFileLockOperationCode eAction);
/// Starts (dwOn 1) or stops (0) recording a channel on the device, beside its schedule. 0 also when it was so already.
TESSARO_API int ClientAdapter_RecordControl(int nLoginID, unsigned long dwChannel, unsigned long dwOn);
/// Switches an alarm output: dwOn 0 off, 1 on, more: on for so many milliseconds.
TESSARO_API int ClientAdapter_AlarmoutControl(int nLoginID, unsigned long dwOutput, unsigned long dwOn);
/// Reads the alarm inputs: 1 active, 0 idle, one word each at pdwState. *pdwCount: the words that there is room for,
/// then the inputs that there are, also when those are more.
TESSARO_API int ClientAdapter_AlarminStateGet(int nLoginID, unsigned long* pdwCount, unsigned long* pdwState);
/// Reads the alarm outputs, as ClientAdapter_AlarminStateGet the inputs.
TESSARO_API int ClientAdapter_AlarmoutStateGet(int nLoginID, unsigned long* pdwCount, unsigned long* pdwState);

/// @}

// --- Playback --------------------------------------------------------------------------------------------------------

/// @defgroup playback Playback
/// Recordings as streams. Frames are asked for with ClientAdapter_HistoryStreamCB; ClientAdapter_StreamMediaControl
/// pauses and steps.
///
/// Plug-in's results: eResultNoChannel, eResultNotFound (no such file, nothing recorded at that time),
/// eResultTooManyStreams.
///
/// From here on an opening function takes a media ID whatever the plug-in answers, and stores it in *pnMediaID: close
/// it, also after a failure. Only an unknown ID to open under leaves *pnMediaID as it was. A close frees the ID
/// whatever the plug-in answers.
/// @snippet playback.c playback
/// @{

/// Opens playback of a recording. dwFlag: eHistoryFlag bits.
TESSARO_API int ClientAdapter_HistoryStreamCreate(int* pnMediaID, int nLoginID, tagHistoryStreamPara* ptPara,
                                                  unsigned long dwFlag);
/// Opens playback over several record types. dwFlag: eHistoryFlag bits.
TESSARO_API int ClientAdapter_HistoryStreamMultiTypeCreate(int* pnMediaID, int nLoginID,
                                                           tagHistoryStreamMultiTypePara* ptPara, unsigned long dwFlag);
/// Closes playback of either kind.
TESSARO_API int ClientAdapter_HistoryStreamDestroy(int nMediaID);
/// Reads the playback position into *ptTime, or sets it from there, as eAction says.
TESSARO_API int ClientAdapter_HistoryStreamPosition(int nMediaID, eOperationType eAction, tagTimeInfo* ptTime);
/// Plays the stream on the clock of another: what was recorded at the same time comes at the same time, within a frame,
/// and position, speed and pause of either are those of both. -1: either is unknown. Both must be of one protocol: the
/// second one's handle goes to the first one's plug-in.
TESSARO_API int ClientAdapter_HistoryStreamSync(int nMediaID, int nOtherID);
/// Ends what ClientAdapter_HistoryStreamSync began between the two.
TESSARO_API int ClientAdapter_HistoryStreamUnSync(int nMediaID, int nOtherID);
/// Sets the playback speed (ePlaybackSpeed): `eSpeedNormal * 4`, `eSpeedReverse + eSpeedNormal`.
TESSARO_API int ClientAdapter_HistoryStreamSetSpeed(int nMediaID, unsigned long dwSpeed);

/// @}

// --- Voice talk ------------------------------------------------------------------------------------------------------

/// @defgroup voice Voice talk
/// Voice both ways, under a media connection that is open: what the device says goes to ClientAdapter_VoiceStreamCB.
///
/// Plug-in's results: eResultNoChannel (no such audio input or output), eResultBusy (somebody else is talking),
/// eResultRefused (none of the codecs is known to both).
/// @snippet voice.c voice
/// @{

/// Opens voice talk under a media connection, not under a login: -1 when nParentID is unknown. *ptPara says afterwards
/// which codec was agreed. Takes a media ID whatever the plug-in answers.
TESSARO_API int ClientAdapter_VoiceStreamConnect(int* pnMediaID, int nParentID, tagVoiceStreamPara* ptPara);
/// Closes a voice connection and frees its media ID, whatever the plug-in answers. The parent stays open.
TESSARO_API int ClientAdapter_VoiceStreamDisconnect(int nMediaID);
/// Sends voice, coded as the connection was opened for; the buffer is yours again on return.
TESSARO_API int ClientAdapter_VoiceStreamSend(int nMediaID, tagBuffer* ptBuffer);

/// @}

// --- Queries ---------------------------------------------------------------------------------------------------------

/// @defgroup queries Queries
/// What is on a device: recordings, files, log entries.
///
/// Each query is opened, read record by record until eResultNoMoreEntries, and closed; stop at the first result that
/// isn't 0. Plug-in's other results: eResultNoChannel. Opening takes a media ID whatever the plug-in
/// answers, and closing frees it whatever the plug-in answers. Records are copied into the caller's.
/// @snippet queries.c queries
/// @{

/// Opens a query for recordings.
TESSARO_API int ClientAdapter_HistoryStreamQueryConnect(int* pnMediaID, int nLoginID,
                                                        tagHistoryStreamQueryFactor* ptFactor);
/// Opens a query over several record types.
TESSARO_API int ClientAdapter_HistoryStreamMultiTypeQueryConnect(int* pnMediaID, int nLoginID,
                                                                 tagHistoryStreamMultiTypeQueryFactor* ptFactor);
/// The next recording found, into *ptResult.
TESSARO_API int ClientAdapter_HistoryStreamQueryNext(int nMediaID, tagHistoryStreamQueryResult* ptResult);
/// The next recording found, of several types, into *ptResult.
TESSARO_API int ClientAdapter_HistoryStreamMultiTypeQueryNext(int nMediaID,
                                                              tagHistoryStreamMultiTypeQueryResult* ptResult);
/// Closes a recording query of either kind.
TESSARO_API int ClientAdapter_HistoryStreamQueryDisconnect(int nMediaID);
/// Opens a query for files, under a media connection: -1 when nParentID is unknown.
TESSARO_API int ClientAdapter_FileQueryConnect(int* pnMediaID, int nParentID, tagFileQueryFactor* ptFactor);
/// The next file found, into *ptResult.
TESSARO_API int ClientAdapter_FileQueryNext(int nMediaID, tagFileQueryResult* ptResult);
/// Closes a file query; its parent stays open.
TESSARO_API int ClientAdapter_FileQueryDisconnect(int nMediaID);
/// Opens a query for log entries.
TESSARO_API int ClientAdapter_HistoryLogQueryConnect(int* pnMediaID, int nLoginID, tagLogQueryFactor* ptFactor);
/// The next log entry found, into *ptResult.
TESSARO_API int ClientAdapter_HistoryLogQueryNext(int nMediaID, tagLogQueryResult* ptResult);
/// Closes a log query.
TESSARO_API int ClientAdapter_HistoryLogQueryDisconnect(int nMediaID);
/// Opens a recording query that the device passes on.
TESSARO_API int ClientAdapter_TransmitHistoryStreamQueryConnect(int* pnMediaID, int nLoginID,
                                                                tagTransmitHistoryStreamQueryFactor* ptFactor);
/// The next recording found by a query that was passed on, into *ptResult.
TESSARO_API int ClientAdapter_TransmitHistoryStreamQueryNext(int nMediaID,
                                                             tagHistoryStreamMultiTypeQueryResult* ptResult);
/// Closes a query that was passed on.
TESSARO_API int ClientAdapter_TransmitHistoryStreamQueryDisconnect(int nMediaID);

/// @}

// --- Transparent channel, file transfer, stream transfer -------------------------------------------------------------

/// @defgroup transfer Transparent channel, file transfer, stream transfer
/// Bytes, files and frames to a device and back. Opening and closing as for @ref playback.
///
/// Bytes come in at ClientAdapter_TransparentChannelCB and ClientAdapter_FileDownloadCB, progress of an upload at
/// ClientAdapter_FileUploadCB: register between opening a transfer and starting it.
///
/// Plug-in's results: eResultNoChannel (no such port or window), eResultNotFound (no such file, here or there),
/// eResultDeviceFull, eResultRefused, eResultBusy (the port is in use).
/// @snippet transfer.c transfer
/// @{

/// Opens a channel through to the device's serial port, under a media connection: -1 when nParentID is unknown.
TESSARO_API int ClientAdapter_TransparentChannelConnect(int* pnMediaID, int nParentID,
                                                        tagTransparentChannelPara* ptPara);
/// Writes through; the buffer is yours again on return.
TESSARO_API int ClientAdapter_TransparentChannelWrite(int nMediaID, tagBuffer* ptBuffer);
/// Closes a transparent channel; its parent stays open.
TESSARO_API int ClientAdapter_TransparentChannelDisconnect(int nMediaID);
/// Opens an upload; ptPara says which file.
TESSARO_API int ClientAdapter_FileUploadConnect(int* pnMediaID, int nLoginID, tagFileUploadPara* ptPara);
/// Starts, pauses or gives up an upload.
TESSARO_API int ClientAdapter_FileUploadControl(int nMediaID, eFileTransferControl eControl);
/// Closes an upload.
TESSARO_API int ClientAdapter_FileUploadDisconnect(int nMediaID);
/// Opens a download; ptPara says which file, and afterwards how long it is.
TESSARO_API int ClientAdapter_FileDownloadConnect(int* pnMediaID, int nLoginID, tagFileDownloadPara* ptPara);
/// Starts, pauses or gives up a download.
TESSARO_API int ClientAdapter_FileDownloadControl(int nMediaID, eFileTransferControl eControl);
/// Closes a download.
TESSARO_API int ClientAdapter_FileDownloadDisconnect(int nMediaID);
/// Opens a connection that carries frames to a decoder's window dwChannel.
TESSARO_API int ClientAdapter_StreamTransferConnect(int* pnMediaID, int nLoginID, unsigned long dwChannel,
                                                    tagStreamTransferPara* ptPara);
/// Sends one frame; it is yours again on return.
TESSARO_API int ClientAdapter_StreamTransferSend(int nMediaID, tagStreamTransferFrame* ptFrame);
/// Closes a connection that carries frames.
TESSARO_API int ClientAdapter_StreamTransferDisconnect(int nMediaID);

/// @}

// --- Devices that register themselves, probing, fonts, configuration over HTTP ---------------------------------------

/// @defgroup discovery Devices that register themselves, probing, fonts, configuration over HTTP
/// What needs no login.
///
/// These ask ONVIF, then VTQ, with the same pointers, so the later answer stands. The plug-ins' results are lost:
/// always 0, also before the start. What is found goes to the callbacks of ClientAdapter_DeviceRegisterCB and
/// ClientAdapter_DeviceProbeStart.
/// @snippet discovery.c discovery
/// @{

/// Listens for devices that register themselves, at an address of this machine. Register the callback first.
TESSARO_API int ClientAdapter_DeviceRegisterListenStart(char* szAddress, unsigned long dwPort);
/// Ends the listening.
TESSARO_API int ClientAdapter_DeviceRegisterListenStop(void);
/// Ends the looking that ClientAdapter_DeviceProbeStart began.
TESSARO_API int ClientAdapter_DeviceProbeStop(void);
/// Looks once more; what is found goes to the callback of ClientAdapter_DeviceProbeStart.
TESSARO_API int ClientAdapter_DeviceProbeResearch(tagDeviceProbeParameter* ptPara);
/// Does nothing. Always 0.
TESSARO_API int ClientAdapter_DeviceProbeSetDeviceConfig(unsigned char const* pbyMac, unsigned short wPort,
                                                         tagDeviceProbeConfig* ptConfig);
/// Does nothing. Always 0.
TESSARO_API int ClientAdapter_DeviceProbeSetAllDeviceConfig(tagDeviceProbeParameter* ptPara,
                                                            tagDeviceProbeConfig* ptConfig);
/// Does nothing. Always 0.
TESSARO_API int ClientAdapter_DeviceProbeSetConfig(unsigned char const* pbyMac, unsigned short wPort,
                                                   tagDeviceProbeUserLoginPara* ptLogin,
                                                   tagDeviceProbeConfigInformation* ptConfig);
/// Does nothing. Always 0; *ptConfig stays as it was.
TESSARO_API int ClientAdapter_DeviceProbeGetConfig(unsigned char const* pbyMac, unsigned short wPort,
                                                   tagDeviceProbeUserLoginPara* ptLogin,
                                                   tagDeviceProbeConfigInformation* ptConfig);
/// Renders a text as a dot lattice, into pLattice, and tells its width, height and length (tagFontPara).
TESSARO_API int ClientAdapter_StringToLattice(char const* szText, tagFontPara* ptFont, void* pLattice,
                                              unsigned long* pdwWidth, unsigned long* pdwHeight,
                                              unsigned long* pdwLength);
/// Reads a configuration over HTTP, into *ptConfig, without a login. Blocks for both plug-ins' waits, one after the
/// other.
TESSARO_API int ClientAdapter_GetDeviceConfigFromHttp(char const* szAddress, tagDeviceConfigFromHttp* ptConfig);

/// @}

// --- Pan-tilt-zoom, disks, screen split ------------------------------------------------------------------------------

/// @defgroup ptz Pan-tilt-zoom, disks, screen split
/// A camera that moves, a recorder's disks and what they hold, a decoder's screen: @ref ptzrecords, @ref storage,
/// @ref decoderrecords.
///
/// Plug-in's results: eResultNoChannel (no such channel, disk or screen), eResultNotFound (no such preset or tour),
/// eResultBusy (a disk is being formatted; somebody of a higher level moves the camera).
/// @snippet ptz.c ptz
/// @{

/// Moves a camera, sets and calls presets and tours. What the four parameters mean depends on the command: see
/// ePTZControlCmdCode. Presets, tours and the position are read with ClientAdapter_GetIpcPara.
TESSARO_API int ClientAdapter_PTZControl(int nLoginID, unsigned long dwChannel, ePTZControlCmdCode eCommand,
                                         unsigned long dwPara1, unsigned long dwPara2, unsigned long dwPara3,
                                         unsigned long dwPara4);
/// Which days of a month (202405) hold recordings, into szDays, one character for each day, and *pdwLength: see
/// @ref storage.
TESSARO_API int ClientAdapter_DataExistCheck(int nLoginID, unsigned long dwChannel, unsigned long dwType,
                                             unsigned long dwMonth, char* szDays, unsigned long* pdwLength);
/// Manages groups of disks: see eDiskGroupOperation.
TESSARO_API int ClientAdapter_DiskGroupManage(int nLoginID, eDiskGroupOperation eAction, unsigned long dwGroup,
                                              unsigned long dwDisk, unsigned long dwValue);
/// Size of the recordings of several types between two times, in mebibytes, into *pdwSize: see @ref storage.
TESSARO_API int ClientAdapter_GetMultiTypeDataSize(int nLoginID, unsigned long dwChannel, eDiskGroupType eGroup,
                                                   unsigned long dwTypes, char const* szBegin, char const* szEnd,
                                                   unsigned long dwFlag, unsigned long* pdwSize);
/// Size of the recordings of one type between two times, in mebibytes, into *pdwSize: see @ref storage.
TESSARO_API int ClientAdapter_GetDataSize(int nLoginID, unsigned long dwChannel, eDiskGroupType eGroup,
                                          eHistoryStreamType eStreamType, char const* szBegin, char const* szEnd,
                                          unsigned long dwFlag, unsigned long* pdwSize);
/// Splits a decoder's screen into windows. dwMode (eScreenSplitMode) is their number, pdwChannels what each shows.
TESSARO_API int ClientAdapter_SetScreenSplitMode(int nLoginID, unsigned long dwScreen, unsigned long dwMode,
                                                 unsigned long* pdwChannels);

/// @}

// --- Front panels ----------------------------------------------------------------------------------------------------

/// @defgroup panels Front panels
/// The keys, lamps and texts on the front of a recorder.
///
/// Plug-in's results: eResultNotSupported (the device has none), eResultRefused (a key, while the keys are locked).
/// @snippet panels.c panels
/// @{

/// Reads a front panel, into *ptStatus.
TESSARO_API int ClientAdapter_PanelGetStatus(int nLoginID, tagPanelStatusInfo* ptStatus);
/// Sets a front panel's lamps and texts.
TESSARO_API int ClientAdapter_PanelSetStatus(int nLoginID, tagPanelStatusInfo* ptStatus);
/// Presses a key, locks and unlocks the keys, beeps.
TESSARO_API int ClientAdapter_PanelControl(int nLoginID, tagPanelControlParameter* ptPara);

/// @}

// --- Decoders --------------------------------------------------------------------------------------------------------

/// @defgroup decoders Decoders
/// What a video decoder shows: one source at once, a tour of sources in turn, a recording, a logo. @ref decoderrecords
/// begins with how a wall, its screens and its windows belong together; dwChannel is a window, or a screen where said.
///
/// Plug-in's results: eResultNoChannel (no such window or screen), eResultNotSupported (no decoder), eResultNotFound
/// (no tour, logo or recording), eResultNoResources (too many windows to decode).
/// @snippet decoders.c decoders
/// @{

/// Lets a window show a source at once; it shows it until ClientAdapter_DecoderDynamicDisconnect.
TESSARO_API int ClientAdapter_DecoderDynamicConnect(int nLoginID, unsigned long dwChannel,
                                                    tagDecoderDynamicInformation* ptInfo);
/// Ends what ClientAdapter_DecoderDynamicConnect began in the window. dwFlag: eDecoderDisconnect.
TESSARO_API int ClientAdapter_DecoderDynamicDisconnect(int nLoginID, unsigned long dwChannel, unsigned long dwFlag);
/// Writes a decoder's wall: where its screens and windows are.
TESSARO_API int ClientAdapter_DecoderSetConfig(int nLoginID, tagDecoderDeviceConfig* ptConfig);
/// Reads a decoder's wall, into *ptConfig and the list that it points at.
TESSARO_API int ClientAdapter_DecoderGetConfig(int nLoginID, tagDecoderDeviceConfig* ptConfig);
/// Writes how a window shows, and what it is bound to.
TESSARO_API int ClientAdapter_DecoderSetChannelConfig(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderChannelConfig* ptConfig);
/// Reads how a window shows, and what it is bound to, into *ptConfig.
TESSARO_API int ClientAdapter_DecoderGetChannelConfig(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderChannelConfig* ptConfig);
/// Sets what signal the screen dwChannel gets.
TESSARO_API int ClientAdapter_DecoderSetVideoStandard(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderVideoStandardConfig* ptConfig);
/// Reads what signal the screen dwChannel gets, into *ptConfig.
TESSARO_API int ClientAdapter_DecoderGetVideoStandard(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderVideoStandardConfig* ptConfig);
/// Writes the tour of sources that a window shows; ClientAdapter_DecoderChannelSetLoopEnable turns it on.
TESSARO_API int ClientAdapter_DecoderSetChannelLoopConfig(int nLoginID, unsigned long dwChannel,
                                                          tagDecoderChannelLoopConfig* ptConfig);
/// Reads the tour of sources that a window shows, into *ptConfig and the list that it points at.
TESSARO_API int ClientAdapter_DecoderGetChannelLoopConfig(int nLoginID, unsigned long dwChannel,
                                                          tagDecoderChannelLoopConfig* ptConfig);
/// Turns a window's tour on or off, or holds it.
TESSARO_API int ClientAdapter_DecoderChannelSetLoopEnable(int nLoginID, unsigned long dwChannel,
                                                          eDecoderChannelStatus eStatus);
/// Whether a window's tour is on, into *peStatus.
TESSARO_API int ClientAdapter_DecoderChannelGetLoopEnable(int nLoginID, unsigned long dwChannel,
                                                          eDecoderChannelStatus* peStatus);
/// Whether the tours of all windows are on, and where they are, into the list of *ptStatus.
TESSARO_API int ClientAdapter_DecoderGetLoopEnable(int nLoginID, tagDecoderLoopStatus* ptStatus);
/// What a window can do, into *ptInfo.
TESSARO_API int ClientAdapter_DecoderGetChannelInformation(int nLoginID, unsigned long dwChannel,
                                                           tagDecoderChannelInformation* ptInfo);
/// What all windows are doing, into the list of *ptStatus.
TESSARO_API int ClientAdapter_DecoderChannelGetStatus(int nLoginID, tagDecoderChannelStatus* ptStatus);
/// Plays a recording in a window, and steers it.
TESSARO_API int ClientAdapter_DecoderChannelSetPlayStatus(int nLoginID, unsigned long dwChannel,
                                                          tagDecoderSetPlayStatusParameter* ptPara);
/// Where the recording in a window is, into *ptPara, whose dwChannel names the window.
TESSARO_API int ClientAdapter_DecoderChannelGetPlayStatus(int nLoginID, tagDecoderGetPlayStatusParameter* ptPara);
/// Sends a logo for a window to show; ClientAdapter_DecoderChannelLogoSwitch shows it.
TESSARO_API int ClientAdapter_UploadLogo(int nLoginID, unsigned long dwChannel, tagUploadLogoParameter* ptPara);
/// Shows or hides the logo.
TESSARO_API int ClientAdapter_DecoderChannelLogoSwitch(int nLoginID, unsigned long dwChannel,
                                                       eDeviceChannelControl eControl);
/// Enlarges, restores, hides or freezes a window.
TESSARO_API int ClientAdapter_DecoderChannelDisplayControl(int nLoginID, unsigned long dwChannel,
                                                           tagDecoderDisplayStatus* ptStatus);
/// Writes how the screen dwChannel shows.
TESSARO_API int ClientAdapter_DecoderSetDisplayConfig(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderDisplayConfig* ptConfig);
/// Reads how the screen dwChannel shows, into *ptConfig.
TESSARO_API int ClientAdapter_DecoderGetDisplayConfig(int nLoginID, unsigned long dwChannel,
                                                      tagDecoderDisplayConfig* ptConfig);
/// The time that a window's picture or its screen's clock shows, into *ptTime. dwFlag: eOsdTime.
TESSARO_API int ClientAdapter_DecoderChannelGetOSDTime(int nLoginID, unsigned long dwChannel, tagTimeInfo* ptTime,
                                                       unsigned long dwFlag);

/// @}

// --- Version, online state, file headers -----------------------------------------------------------------------------

/// @defgroup version Version, online state, file headers
/// More that needs no login. ONVIF, then VTQ, with the same pointers, as those of @ref discovery "probing"; always 0.
///
/// Preset what is to be filled in: that it changed is the only sign of an answer. Two of them name RTSP too, before
/// VTQ; it knows neither.
/// @snippet version.c version
/// @{

/// Which version a device speaks, into *peVersion, without a login. dwTimeout: milliseconds to wait, 0: 5000. Blocks
/// for the plug-ins' waits one after the other.
TESSARO_API int ClientAdapter_GetSDKVersion(char const* szAddress, unsigned long dwPort, unsigned long dwTimeout,
                                            eNetworkSDKVersion* peVersion);
/// Lets the plug-ins see whether a device answers, without a login. Always 0, whatever they answer. Blocks as
/// ClientAdapter_GetSDKVersion.
TESSARO_API int ClientAdapter_DeviceIsOnline(char const* szAddress, unsigned long dwPort, unsigned long dwTimeout);
/// The header that recorded files of a type (eFileFormat) begin with, into pbyHeader. *pdwLength: the room there, then
/// the header's length.
TESSARO_API int ClientAdapter_GetFileHeader(unsigned long dwType, char* pbyHeader, unsigned long* pdwLength);

/// @}

/// @}

TESSARO_C_END

#endif
