#pragma once

#include "../system/Call.h"
#include "../system/Export.h"
#include "CClientProtocolBase.h"
#include "IProtocol.h"

#include <cstdint>

/// The protocols behind the adapter, and the switch between them.
namespace Adapter_ProtocolSet
{
/// The switchboard: owns at most one binding per protocol and routes every operation to the binding of the protocol
/// that the caller names. Answers 4, with a "Failed" line, for a bad protocol or one without a binding; any other
/// answer is the binding's.
///
/// Takes no lock. Operations only read and may run on any number of threads; InsertProtocol, RemoveProtocol and
/// RemoveAllProtocol must not overlap with each other or with an operation on the same protocol.
///
/// Beside the members listed here it has one for each operation of CClientProtocolBase but SetProtocolInterface: the
/// operation's parameters, then the protocol. One of them:
///
///     int DeviceControl(void* hLogin, eRemoteDeviceControl eControl, eProtocolType eType);
///
/// @ingroup classes
class TESSARO_API CClientProtocolSet final : public IProtocol
{
public:
    CClientProtocolSet();
    ~CClientProtocolSet(); ///< leaves bindings that are still inserted alone: their plug-ins may be running
    CClientProtocolSet(CClientProtocolSet const&) = delete;
    CClientProtocolSet& operator=(CClientProtocolSet const&) = delete;

    /// Makes the protocol's binding and loads its plug-in from szPath (not kept). 0, also when the plug-in could not be
    /// loaded: its operations then answer 1. 4: bad protocol, null path, or no memory; 13: inserted already.
    int InsertProtocol(eProtocolType eType, char const* szPath);
    /// Destroys the protocol's binding and closes its plug-in, without stopping it first. 4: not inserted.
    int RemoveProtocol(eProtocolType eType);
    /// The same for every protocol that is inserted; always 0.
    int RemoveAllProtocol();

    // Start, when the plug-in's Start answers 0, hands the plug-in this set as its IProtocol.
    /// @cond
#define ROUTED(name, ...)          PARAMETERS(&CClientProtocolBase::name, __VA_ARGS__) __VA_OPT__(,) eProtocolType eType
#define OPERATION(line, name, ...) int name(ROUTED(name, __VA_ARGS__));
#define UNROUTED_OPERATION(...)
#include "operations.def"
    /// @endcond

private:
    friend CClientProtocolBase const* BindingOf(CClientProtocolSet const& tSet, eProtocolType eType);
    [[gnu::visibility("hidden")]] CClientProtocolBase* Bound(eProtocolType eType) const;

    std::uint32_t m_dwState[4];         ///< 1: no binding is inserted for the protocol; 2: one is
    CClientProtocolBase* m_pBinding[4]; ///< owned; null where there is none
};
} // namespace Adapter_ProtocolSet
