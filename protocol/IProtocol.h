#pragma once

#include "PluginInterface.h"

/// The adapter as a plug-in sees it: through it one plug-in drives another protocol's plug-in. A plug-in gets it with
/// its SetProtocolInterface entry point and may keep it until its Stop.
///
/// Plug-ins are built apart from the library, so the order and the signatures below never change. Each operation is the
/// one of the same name in Adapter_ProtocolSet::CClientProtocolBase, on the protocol that eType names; 4 when that
/// protocol has no binding. Calls run on the caller's thread and may be made from any thread.
/// @ingroup plugin
class IProtocol
{
public:
    /// Starts a protocol's plug-in, which then gets this interface itself.
    virtual int Start(eProtocolType eType) = 0;
    /// Stops a protocol's plug-in: no callback of it runs afterwards.
    virtual int Stop(eProtocolType eType) = 0;
    /// Opens a login. *phLogin: the other plug-in's handle of it, written on success.
    virtual int UserLogin(void** phLogin, tagUserLoginPara* ptPara, eProtocolType eType) = 0;
    /// Closes a login. Connections opened under it stay open until each is closed.
    virtual int UserLogout(void* hLogin, eProtocolType eType) = 0;
    /// Opens a live stream under a login. *phStream: the other plug-in's handle of it.
    virtual int RealStreamConnect(void** phStream, void* hLogin, tagRealStreamPara* ptPara, eProtocolType eType) = 0;
    /// Closes a live stream.
    virtual int RealStreamDisconnect(void* hStream, eProtocolType eType) = 0;
    /// Frames go to pfnFrame on the other plug-in's thread, in place of an earlier one.
    virtual int StreamMediaCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser,
                              eProtocolType eType) = 0;
    /// Plays, pauses and the like.
    virtual int StreamMediaControl(void* hStream, eTaskControl eControl, eProtocolType eType) = 0;
    /// Events of an RTSP stream go to pfnEvent, on the other plug-in's thread.
    virtual int SetRtspEvenCb(void* hStream, DeviceEventCallback pfnEvent, unsigned long dwUser,
                              eProtocolType eType) = 0;
    /// Tells RTSP which product it works in.
    virtual int SetProductMode(void* hStream, unsigned long dwMode, eProtocolType eType) = 0;
    /// RTSP's statistics of a stream (tagRTSPPackageInfo), into the nLength bytes at pInfo.
    virtual int GetPackageInfo(void* hStream, void* pInfo, int nLength, int nFlag, eProtocolType eType) = 0;
    /// How many streams RTSP may open at once.
    virtual int SetMaxChannel(unsigned int dwCount, eProtocolType eType) = 0;
};
