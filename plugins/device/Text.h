#pragma once

#include "plugins/common/Text.h"
#include "plugins/device/WallView.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace device
{
using plugin::CopyText;
using plugin::Text;

std::string LowerCase(std::string_view strText);
SharedBytes ToBytes(std::string_view strText);

/// 2024-05-31T08:00:00Z, and back. False: it is no such text.
std::string UtcText(int64_t llTimeUs);
bool ParseUtc(std::string_view strText, int64_t& llTimeUs);
/// 20240531T080000Z: as a part of a file's name.
std::string CompactUtc(int64_t llTimeUs);
} // namespace device
