// What every entry point of a plug-in does around its operation. For one source file, which defines PLUGIN_NAMESPACE
// before. In that namespace stand IsStarted() and Serve(), once for each operation.

#ifndef PLUGIN_NAMESPACE
#error define PLUGIN_NAMESPACE before including plugins/common/Enter.h
#endif

#include "protocol/CClientProtocolBase.h"
#include "protocol/PluginInterface.h"
#include "system/Call.h"

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
