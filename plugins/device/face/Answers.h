#pragma once

#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"

namespace device
{
/// The protocol that this plug-in speaks: what differs between the two, beside the names of their entry points.
extern const eProtocolType g_eProtocol;

/// What the entry points call: a function for each operation, under its name.
namespace answers
{
using Adapter_ProtocolSet::CClientProtocolBase;

#define OPERATION(line, name, ...) int name(PARAMETERS(&CClientProtocolBase::name __VA_OPT__(, ) __VA_ARGS__));
#include "protocol/operations.def"
} // namespace answers
} // namespace device
