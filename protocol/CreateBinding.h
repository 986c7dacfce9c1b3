#pragma once

#include "protocol/CProtocolSet.h"

#include <memory>

namespace Adapter_ProtocolSet
{
/// Makes the binding of a protocol, which loads its plug-in from szPath. The one edge that runs up: the protocol set
/// declares what it needs, the bindings supply it. Null only when memory runs out; eType is valid.
std::unique_ptr<CClientProtocolBase> CreateBinding(eProtocolType eType, char const* szPath);

/// The binding that is inserted for a protocol, null: none is. To be looked at only while nobody inserts or removes
/// one.
CClientProtocolBase const* BindingOf(CClientProtocolSet const& tSet, eProtocolType eType);
} // namespace Adapter_ProtocolSet
