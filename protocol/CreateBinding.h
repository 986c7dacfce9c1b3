#pragma once

#include "protocol/CClientProtocolBase.h"

#include <memory>

namespace Adapter_ProtocolSet
{
/// Makes the binding of a protocol, which loads its plug-in from szPath. The one edge that runs up: the protocol set
/// declares what it needs, the bindings supply it. Null only when memory runs out; eType is valid.
std::unique_ptr<CClientProtocolBase> CreateBinding(eProtocolType eType, char const* szPath);
} // namespace Adapter_ProtocolSet
