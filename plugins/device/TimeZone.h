#pragma once

#include "plugins/common/TimeZone.h"

namespace device
{
using plugin::IsTimeZone;
using plugin::UtcOffsetMinutes;
} // namespace device
