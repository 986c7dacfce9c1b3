// Entry points of decoder walls.

#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Wall.h"

namespace onvifclient
{
namespace
{
template <class F>
int OnWall(void* hLogin, F fnDo)
{
    return With<CLogin>(hLogin, [&](CLogin& tLogin) { return fnDo(tLogin.Part<CWall>()); });
}

uint32_t Word(unsigned long dw)
{
    return static_cast<uint32_t>(dw);
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::SetScreenSplitMode>, void* hLogin, unsigned long dwScreen, unsigned long dwMode,
          unsigned long* pdwChannels)
{
    return OnWall(hLogin, [&](CWall& t) { return t.Split(Word(dwScreen), Word(dwMode), pdwChannels); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderSetConfig>, void* hLogin, tagDecoderDeviceConfig* ptConfig)
{
    return OnWall(hLogin, [&](CWall& t) { return t.SetLayout(ptConfig); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderGetConfig>, void* hLogin, tagDecoderDeviceConfig* ptConfig)
{
    return OnWall(hLogin, [&](CWall& t) { return t.Layout(ptConfig); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderSetChannelConfig>, void* hLogin, unsigned long dwChannel,
          tagDecoderChannelConfig* ptConfig)
{
    return OnWall(hLogin, [&](CWall& t) { return t.SetWindow(Word(dwChannel), ptConfig); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderGetChannelConfig>, void* hLogin, unsigned long dwChannel,
          tagDecoderChannelConfig* ptConfig)
{
    return OnWall(hLogin, [&](CWall& t) { return t.Window(Word(dwChannel), ptConfig); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderDynamicConnect>, void* hLogin, unsigned long dwChannel,
          tagDecoderDynamicInformation* ptInfo)
{
    return OnWall(hLogin, [&](CWall& t) { return t.Connect(Word(dwChannel), ptInfo); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderDynamicDisconnect>, void* hLogin, unsigned long dwChannel,
          unsigned long dwFlag)
{
    return OnWall(hLogin, [&](CWall& t) { return t.Disconnect(Word(dwChannel), Word(dwFlag)); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderGetVideoStandard>, void* hLogin, unsigned long dwChannel,
          tagDecoderVideoStandardConfig* ptConfig)
{
    return OnWall(hLogin, [&](CWall& t) { return t.Signal(Word(dwChannel), ptConfig); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderGetChannelInformation>, void* hLogin, unsigned long dwChannel,
          tagDecoderChannelInformation* ptInfo)
{
    return OnWall(hLogin, [&](CWall& t) { return t.Information(Word(dwChannel), ptInfo); });
}

int Serve(tagCall<&CClientProtocolBase::DecoderChannelGetStatus>, void* hLogin, tagDecoderChannelStatus* ptStatus)
{
    return OnWall(hLogin, [&](CWall& t) { return t.Status(ptStatus); });
}
} // namespace onvifclient
