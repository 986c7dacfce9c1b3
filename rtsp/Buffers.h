#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace rtsp
{
// Frames are put together in buffers that all streams of the process share: a stream that waits for its next frame
// holds none. Any thread may call these.

/// An empty buffer with room for at least nBytes.
std::vector<unsigned char> TakeBuffer(std::size_t nBytes);
/// Keeps a buffer that is no longer needed for the next TakeBuffer, or frees it when enough are kept. Calling it is a
/// matter of speed: a buffer that is simply destroyed is freed.
void GiveBuffer(std::vector<unsigned char>&& abyBuffer);
/// Grows abyBuffer into a larger one of the shared buffers where it has to. abyMore isn't part of abyBuffer.
void Append(std::vector<unsigned char>& abyBuffer, std::span<unsigned char const> abyMore);
} // namespace rtsp
