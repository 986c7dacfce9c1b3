#pragma once

#include "bindings/Binding.h"

namespace Adapter_ProtocolSet
{
/// What a protocol's binding asks its plug-in for, place by place.
struct tagProtocolEntry
{
    tagEntryName tName;   ///< tName.szSymbol is null beyond the last place
    bool bBound = false;  ///< the protocol has a binding
    bool bExists = false; ///< whose plug-in has the entry point
};

/// eType is valid. pBinding: the protocol's binding, null: none. The name may stand in szRoom.
tagProtocolEntry ProtocolEntry(eProtocolType eType, CClientProtocolBase const* pBinding, std::size_t iEntry,
                               char (&szRoom)[g_nSymbolRoom]);
} // namespace Adapter_ProtocolSet
