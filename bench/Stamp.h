#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

/// When a picture was sent, in its last 8 bytes: 56 bits of nanoseconds of the monotonic clock, which server and client
/// have in common. The highest bit of each byte is set, so that no start code comes of it.
constexpr std::size_t g_nStamp = 8;

inline std::uint64_t NowNs()
{
    return static_cast<std::uint64_t>(
        std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count());
}

/// Into the 8 bytes before pbyEnd.
inline void PutStamp(unsigned char* pbyEnd)
{
    std::uint64_t ullNow = NowNs();
    for (std::size_t i = 0; i < g_nStamp; ++i)
    {
        *--pbyEnd = static_cast<unsigned char>(ullNow | 0x80);
        ullNow >>= 7;
    }
}

/// Microseconds since the picture that ends at pbyEnd was sent.
inline std::uint64_t UsSinceStamp(unsigned char const* pbyEnd)
{
    std::uint64_t ullSent = 0;
    for (std::size_t i = g_nStamp; i > 0; --i)
    {
        ullSent = ullSent << 7 | (pbyEnd[-static_cast<std::ptrdiff_t>(i)] & 0x7F);
    }
    return (NowNs() - ullSent) / 1000;
}
