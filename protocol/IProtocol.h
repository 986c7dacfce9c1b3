#pragma once

#include "protocol/PluginInterface.h"

/// The adapter as a plug-in sees it: through it one plug-in drives another protocol's plug-in. A plug-in gets it with
/// its SetProtocolInterface entry point and may keep it until its Stop.
///
/// Plug-ins are built apart from the library, so the order and the signatures below never change. Each operation is the
/// one of the same name in Adapter_ProtocolSet::CClientProtocolBase, on the protocol that eType names; 4 when that
/// protocol has no binding. Calls run on the caller's thread and may be made from any thread.
class IProtocol
{
public:
    virtual int Start(eProtocolType eType) = 0;
    virtual int Stop(eProtocolType eType) = 0;
    virtual int UserLogin(void** phLogin, tagUserLoginPara* ptPara, eProtocolType eType) = 0;
    virtual int UserLogout(void* hLogin, eProtocolType eType) = 0;
    virtual int RealStreamConnect(void** phStream, void* hLogin, tagRealStreamPara* ptPara, eProtocolType eType) = 0;
    virtual int RealStreamDisconnect(void* hStream, eProtocolType eType) = 0;
    virtual int StreamMediaCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser,
                              eProtocolType eType) = 0;
    virtual int StreamMediaControl(void* hStream, eTaskControl eControl, eProtocolType eType) = 0;
    virtual int SetRtspEvenCb(void* hStream, DeviceEventCallback pfnEvent, unsigned long dwUser,
                              eProtocolType eType) = 0;
    virtual int SetProductMode(void* hStream, unsigned long dwMode, eProtocolType eType) = 0;
    virtual int GetPackageInfo(void* hStream, void* pInfo, int nLength, int nFlag, eProtocolType eType) = 0;
    virtual int SetMaxChannel(unsigned int dwCount, eProtocolType eType) = 0;
};
