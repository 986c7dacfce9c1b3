// The entry points whose names or parameters aren't their operation's: RTSP's, and one of VTQ.

#include "protocol/PluginInterface.h"
#include "system/Export.h"
#include "tools/tessaro/trace/Traced.h"

extern "C"
{
    TESSARO_API int RTSPClient_Create(void** phStream, tagRTSPClientPara* ptPara, unsigned int dwChannel)
    {
        TRACED("Create", "RTSPClient_Create", "phStream, ptPara, dwChannel", phStream, ptPara, dwChannel);
    }

    TESSARO_API int RTSPClient_StreamCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser)
    {
        TRACED("StreamMediaCB", "RTSPClient_StreamCB", "hStream, pfnFrame, dwUser", hStream, pfnFrame, dwUser);
    }

    TESSARO_API int RTSPClient_EventCB(void* hStream, DeviceEventCallback pfnEvent, unsigned long dwUser)
    {
        TRACED("SubscribeEvent", "RTSPClient_EventCB", "hStream, pfnEvent, dwUser", hStream, pfnEvent, dwUser);
    }

    TESSARO_API int RTSPClient_Control(void* hStream, eTaskControl eControl)
    {
        TRACED("StreamMediaControl", "RTSPClient_Control", "hStream, eControl", hStream, eControl);
    }

    TESSARO_API int RTSPClient_Destroy(void* hStream)
    {
        TRACED("RealStreamDisconnect", "RTSPClient_Destroy", "hStream", hStream);
    }

    TESSARO_API int RTSP_GetAttribute(eClientSDKAttributeType eAttribute, unsigned long* pdwValue)
    {
        TRACED("GetAttribute", "RTSP_GetAttribute", "eAttribute, pdwValue", eAttribute, pdwValue);
    }

    TESSARO_API int RTSP_ForceIFrame(void* hLogin, unsigned long dwStream)
    {
        TRACED("ForceIFrame", "RTSP_ForceIFrame", "hLogin, dwStream", hLogin, dwStream);
    }

    TESSARO_API int VTQClient_Getpackageinfo(void* hStream, void* pInfo, int nLength)
    {
        TRACED("GetPackInfo", "VTQClient_Getpackageinfo", "hStream, pInfo, nLength", hStream, pInfo, nLength);
    }
}
