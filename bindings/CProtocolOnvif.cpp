#include "bindings/CProtocolOnvif.h"

namespace Adapter_ProtocolSet
{
int CProtocolSetOnvif::Run(tagCall<&CClientProtocolBase::GetLoginLevel> tCall, void* hLogin, int* pnLevel)
{
    return pnLevel ? Run<>(tCall, hLogin, pnLevel) : static_cast<int>(eResultNoEntryPoint);
}

int CProtocolSetOnvif::Run(tagCall<&CClientProtocolBase::GetLoginMac> tCall, void* hLogin, unsigned char* pbyMac,
                           int nLength)
{
    return pbyMac ? Run<>(tCall, hLogin, pbyMac, nLength) : static_cast<int>(eResultNoEntryPoint);
}
} // namespace Adapter_ProtocolSet
