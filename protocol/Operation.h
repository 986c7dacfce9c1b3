#pragma once

#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"

#include <cstddef>
#include <iterator>

namespace Adapter_ProtocolSet
{
/// The operations of CClientProtocolBase by number, in declaration order.
enum class eOperation : unsigned char
{
#define OPERATION(line, name, ...) name,
#include "protocol/operations.def"
};

/// The operations' names, by number.
inline constexpr char const* g_aszOperation[] = {
#define OPERATION(line, name, ...) #name,
#include "protocol/operations.def"
};

inline constexpr std::size_t g_nOperations = std::size(g_aszOperation);

/// The number of &CClientProtocolBase::Name.
template <auto Op>
inline constexpr eOperation g_eNumber = eOperation{0xFF};
#define OPERATION(line, name, ...)                                                                                     \
    template <>                                                                                                        \
    inline constexpr eOperation g_eNumber<&CClientProtocolBase::name> = eOperation::name;
#include "protocol/operations.def"
} // namespace Adapter_ProtocolSet
