/// The Tessaro client adapter: one way to talk to every camera, recorder and video decoder on a site. C99 and C++.
///
/// Conventions:
///
/// 1. IDs. A login ID names a login to a device, a media ID a connection under it: a live stream, a playback, a query.
///    Both are numbers from 0 to 999 and independent of each other. When all 1000 are taken, an opening function
///    answers 0 and stores -1: no later call accepts it, and what was opened stays open in the plug-in.
/// 2. Results. 0 is success. 3: unknown login ID; -1: unknown media ID; 4: the protocol has no binding (the service
///    isn't started); 1: the protocol's plug-in can't do this. These and the few others are listed at eResult. Any
///    other number is the plug-in's own, handed on unchanged. Nothing is thrown. Each function below tells only what is
///    special to it.
/// 3. Pointers. What a pointer points at stays the caller's and need not outlive the call. Apart from what a function
///    tells, the library doesn't test pointers: the plug-in gets exactly what the caller passed.
/// 4. Threads. Any function may be called from any thread, with two exceptions: ClientAdapter_Start and
///    ClientAdapter_Stop must not overlap with any other call, and an ID must not be closed while another thread is
///    still using it. A call blocks as long as the plug-in's entry point does; the library itself never waits.
/// 5. Callbacks. They run on a plug-in's thread, which waits for them to return: be quick. They get the application's
/// own
///    ID first, as a pointer-sized number, and the user data of their registration last; frames and records are the
///    plug-in's and end with the callback. Their result is not used. The library holds no lock meanwhile: every
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

TESSARO_C_END

#endif
