#pragma once

#include <span>

namespace rtsp
{
/// Bytes that somebody else owns.
using Bytes = std::span<unsigned char const>;
} // namespace rtsp
