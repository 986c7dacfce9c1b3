/// The RTSP plug-in's entry points, as the RTSP binding looks them up by name. C99 and C++; for tests and tools that
/// drive the plug-in without the library. Any thread may call any of them, from inside callbacks too. Besides 0 they
/// answer the codes of ePluginResult; eResultBadHandle from each that takes a stream.
#ifndef TESSARO_PLUGINS_RTSP_ENTRYPOINTS_H
#define TESSARO_PLUGINS_RTSP_ENTRYPOINTS_H

#include "protocol/PluginInterface.h"
#include "system/Export.h"

#ifdef __cplusplus
class IProtocol;
#else
typedef struct IProtocol IProtocol;
#endif

TESSARO_C_BEGIN

TESSARO_API int RTSPClient_Start(void);
/// Ends every stream; at most 2 s.
TESSARO_API int RTSPClient_Stop(void);

/// Opens a stream and returns at once; it connects on the plug-in's threads. *phStream: its handle, on 0 only.
TESSARO_API int RTSPClient_Create(void** phStream, tagRTSPClientPara* ptPara, unsigned int dwChannel);
/// Closes a stream; at most 2 s. None of its callbacks runs afterwards. From inside a callback of the stream it returns
/// at once, and that callback is the last. eResultStillRunning: closed, but a callback has been running for the 2 s,
/// and is the last.
TESSARO_API int RTSPClient_Destroy(void* hStream);

/// Of these three: on 0 the function registered before isn't running any more. eResultStillRunning: registered, but the
/// one before has been running for 2 s since.
TESSARO_API int RTSPClient_StreamCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser);
/// Events (eConnectionEvent) go to pfnEvent; the present state is told to it first. Two registrations of equal rank.
TESSARO_API int RTSPClient_EventCB(void* hStream, DeviceEventCallback pfnEvent, unsigned long dwUser);
TESSARO_API int RTSPClient_SetRtspEvenCb(void* hStream, DeviceEventCallback pfnEvent, unsigned long dwUser);

/// eTaskPlay and eTaskPause; done later, told by an event.
TESSARO_API int RTSPClient_Control(void* hStream, eTaskControl eControl);
/// pInfo: a tagRTSPPackageInfo; nLength: its size.
TESSARO_API int RTSPClient_GetPackageInfo(void* hStream, void* pInfo, int nLength, int nFlag);
/// How many streams may be open at once; 0: 1000. Open ones stay open.
TESSARO_API int RTSPClient_SetMaxChannel(unsigned int dwCount);
TESSARO_API int RTSP_GetAttribute(eClientSDKAttributeType eAttribute, unsigned long* pdwValue);

/// Accepted; this plug-in has no use for the other protocols.
TESSARO_API int RTSPClient_SetProtocolInterface(IProtocol* pProtocols);
/// Always eResultNotSupported: RTSP has no word for a forced key frame, and there are no product modes or functions of
/// the plug-in's own kinds.
TESSARO_API int RTSP_ForceIFrame(void* hStream, unsigned long dwValue);
TESSARO_API int RTSPClient_SetProductMode(void* hStream, unsigned long dwMode);
TESSARO_API int RTSPClient_SetCallbackFunc(unsigned long dwType, void* pFunction);

TESSARO_C_END

#endif
