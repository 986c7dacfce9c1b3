#include "bindings/EntryPoints.h"

#include "bindings/CProtocolOnvif.h"
#include "bindings/CProtocolPrivate.h"
#include "bindings/CProtocolRTSP.h"
#include "bindings/CProtocolVTQ.h"

namespace Adapter_ProtocolSet
{
namespace
{
// CreateBinding made the binding, so eType says which class it is of.
template <class Binding>
tagProtocolEntry Describe(tagBindingProfile const& tProfile, CClientProtocolBase const* pBinding, std::size_t iEntry,
                          char (&szRoom)[g_nSymbolRoom])
{
    const tagEntryName tName = EntryName(tProfile, iEntry, szRoom);
    return {tName, pBinding != nullptr,
            pBinding && tName.szSymbol && static_cast<Binding const*>(pBinding)->Entries().Has(tName.eOp)};
}
} // namespace

tagProtocolEntry ProtocolEntry(eProtocolType eType, CClientProtocolBase const* pBinding, std::size_t iEntry,
                               char (&szRoom)[g_nSymbolRoom])
{
    switch (eType)
    {
    case eProtocolPrivate:
        return Describe<CProtocolSetPrivate>(g_tPrivateProfile, pBinding, iEntry, szRoom);
    case eProtocolOnvif:
        return Describe<CProtocolSetOnvif>(g_tOnvifProfile, pBinding, iEntry, szRoom);
    case eProtocolRTSP:
        return Describe<CProtocolSetRTSP>(g_tRTSPProfile, pBinding, iEntry, szRoom);
    case eProtocolVTQ:
        return Describe<CProtocolSetVTQ>(g_tVTQProfile, pBinding, iEntry, szRoom);
    }
    return {};
}
} // namespace Adapter_ProtocolSet
