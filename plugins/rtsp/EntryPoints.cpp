#include "plugins/rtsp/EntryPoints.h"

#include "plugins/rtsp/Streams.h"

using rtsp::CStream;
using rtsp::CStreams;
using rtsp::eListener;

namespace
{
// Nothing is thrown across an entry point.
template <class F>
int Guarded(F fnEntry)
try
{
    return fnEntry();
}
catch (...)
{
    return eResultNoResources;
}

template <class F>
int OnStream(void* hStream, F fnEntry)
{
    return Guarded(
        [&]() -> int
        {
            const std::shared_ptr<CStream> pStream = CStreams::Instance().Find(hStream);
            return pStream ? static_cast<int>(fnEntry(*pStream)) : static_cast<int>(eResultBadHandle);
        });
}

int Listen(void* hStream, eListener eWhich, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    return OnStream(hStream, [&](CStream& tStream) { return tStream.SetListener(eWhich, pfnEvent, dwUser); });
}
} // namespace

TESSARO_C_BEGIN

int RTSPClient_Start()
{
    return Guarded([] { return CStreams::Instance().Start(); });
}

int RTSPClient_Stop()
{
    return Guarded([] { return CStreams::Instance().Stop(); });
}

int RTSPClient_Create(void** phStream, tagRTSPClientPara* ptPara, unsigned int)
{
    if (!phStream || !ptPara)
    {
        return eResultBadArgument;
    }
    return Guarded([&] { return CStreams::Instance().Create(phStream, *ptPara); });
}

int RTSPClient_Destroy(void* hStream)
{
    return Guarded([&] { return CStreams::Instance().Destroy(hStream); });
}

int RTSPClient_StreamCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser)
{
    return OnStream(hStream, [&](CStream& tStream) { return tStream.SetFrameCallback(pfnFrame, dwUser); });
}

int RTSPClient_EventCB(void* hStream, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    return Listen(hStream, eListener::EventCB, pfnEvent, dwUser);
}

int RTSPClient_SetRtspEvenCb(void* hStream, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    return Listen(hStream, eListener::SetRtspEvenCb, pfnEvent, dwUser);
}

int RTSPClient_Control(void* hStream, eTaskControl eControl)
{
    return OnStream(hStream,
                    [&](CStream& tStream) -> int
                    {
                        if (eControl != eTaskPlay && eControl != eTaskPause)
                        {
                            return eResultNotSupported;
                        }
                        tStream.SetPaused(eControl == eTaskPause);
                        return eResultOk;
                    });
}

int RTSPClient_GetPackageInfo(void* hStream, void* pInfo, int nLength, int)
{
    return OnStream(hStream,
                    [&](CStream& tStream) -> int
                    {
                        if (!pInfo || nLength < static_cast<int>(sizeof(tagRTSPPackageInfo)))
                        {
                            return eResultBadArgument;
                        }
                        *static_cast<tagRTSPPackageInfo*>(pInfo) = tStream.Info();
                        return eResultOk;
                    });
}

int RTSPClient_SetMaxChannel(unsigned int dwCount)
{
    return Guarded(
        [&]
        {
            CStreams::Instance().SetMost(dwCount);
            return eResultOk;
        });
}

int RTSP_GetAttribute(eClientSDKAttributeType eAttribute, unsigned long* pdwValue)
{
    return Guarded(
        [&]() -> int
        {
            if (eAttribute != eAttributeMaxChannel && eAttribute != eAttributeOpenStreams)
            {
                return eResultNotSupported;
            }
            if (!pdwValue)
            {
                return eResultBadArgument;
            }
            *pdwValue = eAttribute == eAttributeMaxChannel ? CStreams::Instance().Most() : CStreams::Instance().Open();
            return eResultOk;
        });
}

// RTSP has no word for a forced key frame, and this plug-in no use for the other protocols, product modes or functions
// of its own kinds.

int RTSP_ForceIFrame(void*, unsigned long)
{
    return eResultNotSupported;
}

int RTSPClient_SetProtocolInterface(IProtocol*)
{
    return eResultOk;
}

int RTSPClient_SetProductMode(void*, unsigned long)
{
    return eResultNotSupported;
}

int RTSPClient_SetCallbackFunc(unsigned long, void*)
{
    return eResultNotSupported;
}

TESSARO_C_END
