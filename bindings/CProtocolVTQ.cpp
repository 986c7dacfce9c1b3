#include "bindings/CProtocolVTQ.h"

#include "system/OutputMessage.h"

namespace Adapter_ProtocolSet
{
int CProtocolSetVTQ::Run(tagCall<&CClientProtocolBase::GetLoginLevel> tCall, void* hLogin, int* pnLevel)
{
    return pnLevel ? Run<>(tCall, hLogin, pnLevel) : static_cast<int>(eResultNoEntryPoint);
}

int CProtocolSetVTQ::Run(tagCall<&CClientProtocolBase::GetLoginMac> tCall, void* hLogin, unsigned char* pbyMac,
                         int nLength)
{
    return pbyMac ? Run<>(tCall, hLogin, pbyMac, nLength) : static_cast<int>(eResultNoEntryPoint);
}

int CProtocolSetVTQ::Run(tagCall<&CClientProtocolBase::GetPackInfo> tCall, void* hStream, void* pInfo, int nLength)
{
    return pInfo ? Run<>(tCall, hStream, pInfo, nLength) : static_cast<int>(eResultNoEntryPoint);
}

int CProtocolSetVTQ::Run(tagCall<&CClientProtocolBase::ForceIFrame> tCall, void* hLogin, unsigned long dwStream)
{
    if (!m_tEntry.Get<&CClientProtocolBase::ForceIFrame>())
    {
        CAdapter_OutputMessage::OutputMessage("[%s:%d] ForceIFrame \n", "ForceIFrame", 456);
    }
    return Run<>(tCall, hLogin, dwStream);
}
} // namespace Adapter_ProtocolSet
