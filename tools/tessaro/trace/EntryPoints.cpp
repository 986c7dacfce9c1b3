// The entry points of a protocol whose names are regular: prefix and operation. Compiled once for each prefix.

#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"
#include "system/Export.h"
#include "tools/tessaro/trace/Traced.h"

using Adapter_ProtocolSet::CClientProtocolBase;

#define JOINED(prefix, name) prefix##name
#define SYMBOL(prefix, name) JOINED(prefix, name)
#define TEXT_OF(symbol)      #symbol
#define SYMBOL_TEXT(symbol)  TEXT_OF(symbol)

// clang-format off
#define OPERATION(line, name, ...)                                                                                     \
    extern "C" TESSARO_API int SYMBOL(TRACE_PREFIX, name)(PARAMETERS(&CClientProtocolBase::name, __VA_ARGS__))         \
    {                                                                                                                  \
        TRACED(#name, SYMBOL_TEXT(SYMBOL(TRACE_PREFIX, name)), #__VA_ARGS__ __VA_OPT__(,) __VA_ARGS__);                \
    }
#include "protocol/operations.def"
// clang-format on
