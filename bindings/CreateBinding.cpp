#include "protocol/CreateBinding.h"

#include "bindings/CProtocolOnvif.h"
#include "bindings/CProtocolPrivate.h"
#include "bindings/CProtocolRTSP.h"
#include "bindings/CProtocolVTQ.h"

#include <new>

namespace Adapter_ProtocolSet
{
namespace
{
template <class Binding>
std::unique_ptr<CClientProtocolBase> Create(char const* szPath)
{
    return std::unique_ptr<CClientProtocolBase>(new (std::nothrow) Binding(szPath));
}
} // namespace

std::unique_ptr<CClientProtocolBase> CreateBinding(eProtocolType eType, char const* szPath)
{
    switch (eType)
    {
    case eProtocolPrivate:
        return Create<CProtocolSetPrivate>(szPath);
    case eProtocolOnvif:
        return Create<CProtocolSetOnvif>(szPath);
    case eProtocolRTSP:
        return Create<CProtocolSetRTSP>(szPath);
    case eProtocolVTQ:
        return Create<CProtocolSetVTQ>(szPath);
    }
    return nullptr;
}
} // namespace Adapter_ProtocolSet
