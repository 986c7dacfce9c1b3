// The entry points whose names are regular: a protocol's prefix and the operation's name.

#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"
#include "system/Export.h"
#include "tools/tessaro/trace/Traced.h"

using Adapter_ProtocolSet::CClientProtocolBase;

// clang-format off
#define ENTRY_POINT(symbol, name, ...)                                                                                 \
    extern "C" TESSARO_API int symbol(PARAMETERS(&CClientProtocolBase::name, __VA_ARGS__))                             \
    {                                                                                                                  \
        TRACED(#name, #symbol, #__VA_ARGS__ __VA_OPT__(,) __VA_ARGS__);                                                \
    }

#define OPERATION(line, name, ...) ENTRY_POINT(OnvifClient_##name, name, __VA_ARGS__)
#include "protocol/operations.def"
#define OPERATION(line, name, ...) ENTRY_POINT(RTSPClient_##name, name, __VA_ARGS__)
#include "protocol/operations.def"
#define OPERATION(line, name, ...) ENTRY_POINT(VTQClient_##name, name, __VA_ARGS__)
#include "protocol/operations.def"
#define OPERATION(line, name, ...) ENTRY_POINT(VornClient_##name, name, __VA_ARGS__)
#include "protocol/operations.def"
// clang-format on
