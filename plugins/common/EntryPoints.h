// All entry points of a plug-in, by the names that a binding looks up. For one source file, which defines PLUGIN_PREFIX
// (in front of the names) before, and PLUGIN_NAMESPACE: see plugins/common/Enter.h.

#ifndef PLUGIN_PREFIX
#error define PLUGIN_PREFIX before including plugins/common/EntryPoints.h
#endif

#include "plugins/common/Enter.h"

#include "system/Export.h"

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
