// All entry points of a plug-in, by the names that a binding looks up. For one source file, which defines PLUGIN_PREFIX
// (in front of the names) and PLUGIN_NAMESPACE before. In that namespace stand IsStarted() and Serve(), once for each
// operation.

#ifndef PLUGIN_PREFIX
#error define PLUGIN_PREFIX and PLUGIN_NAMESPACE before including plugins/common/EntryPoints.h
#endif

#include "protocol/CClientProtocolBase.h"
#include "protocol/PluginInterface.h"
#include "system/Call.h"
#include "system/Export.h"

#include <type_traits>

namespace PLUGIN_NAMESPACE
{
// Nothing is thrown across an entry point, and only Start works before Start.
template <auto Op, class... A>
int Enter(tagCall<Op> tCall, A... tArguments)
try
{
    using Adapter_ProtocolSet::CClientProtocolBase;
    if constexpr (!std::is_same_v<tagCall<Op>, tagCall<&CClientProtocolBase::Start>>)
    {
        if (!IsStarted())
        {
            return eResultNotStarted;
        }
    }
    return Serve(tCall, tArguments...);
}
catch (...)
{
    return eResultNoResources;
}
} // namespace PLUGIN_NAMESPACE

#define JOINED(prefix, name) JOIN(prefix, name)
#define JOIN(prefix, name)   prefix##name
#define OPERATION(line, name, ...)                                                                                     \
    extern "C" TESSARO_API int JOINED(PLUGIN_PREFIX, name)(                                                            \
        PARAMETERS(&Adapter_ProtocolSet::CClientProtocolBase::name __VA_OPT__(, ) __VA_ARGS__))                        \
    {                                                                                                                  \
        return PLUGIN_NAMESPACE::Enter(                                                                                \
            tagCall<&Adapter_ProtocolSet::CClientProtocolBase::name> {} __VA_OPT__(, ) __VA_ARGS__);                   \
    }
#include "protocol/operations.def"
