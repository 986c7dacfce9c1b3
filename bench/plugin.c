/* A plug-in whose entry points do nothing: what is left of a call through it is the library's cost. */

#include "protocol/PluginInterface.h"

static StreamMediaCallback g_pfnFrame;
static unsigned long g_dwUser;

TESSARO_API int VTQClient_Start(void)
{
    return 0;
}

TESSARO_API int VTQClient_Stop(void)
{
    return 0;
}

TESSARO_API int VTQClient_UserLogin(void** phLogin, tagUserLoginPara* ptPara)
{
    *phLogin = ptPara;
    return 0;
}

TESSARO_API int VTQClient_UserLogout(void* hLogin)
{
    return hLogin ? 0 : 1;
}

TESSARO_API int VTQClient_RealStreamConnect(void** phStream, void* hLogin, tagRealStreamPara* ptPara)
{
    *phStream = ptPara;
    return hLogin ? 0 : 1;
}

TESSARO_API int VTQClient_RealStreamDisconnect(void* hStream)
{
    return hStream ? 0 : 1;
}

TESSARO_API int VTQClient_StreamMediaControl(void* hStream, eTaskControl eControl)
{
    (void)hStream;
    return eControl;
}

TESSARO_API int VTQClient_StreamMediaCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser)
{
    (void)hStream;
    g_pfnFrame = pfnFrame;
    g_dwUser = dwUser;
    return 0;
}

/* Delivers frames to the callback that is registered: the library's trampoline or, for the floor, the application's. */
TESSARO_API void Bench_Deliver(unsigned long dwCount)
{
    const tagStreamMediaFrame tFrame = {0};
    for (; dwCount; --dwCount)
    {
        g_pfnFrame(0, &tFrame, g_dwUser);
    }
}
