#pragma once

#include "rtsp/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace rtsp
{
/// Numbers in network order. The caller has checked that the bytes are there.
constexpr std::uint16_t Big16(Bytes abyData, std::size_t nAt)
{
    return static_cast<std::uint16_t>(abyData[nAt] << 8 | abyData[nAt + 1]);
}
constexpr std::uint32_t Big32(Bytes abyData, std::size_t nAt)
{
    return std::uint32_t{Big16(abyData, nAt)} << 16 | Big16(abyData, nAt + 2);
}

constexpr void PutBig16(unsigned char* pby, std::uint16_t w)
{
    pby[0] = static_cast<unsigned char>(w >> 8);
    pby[1] = static_cast<unsigned char>(w);
}
constexpr void PutBig32(unsigned char* pby, std::uint32_t dw)
{
    PutBig16(pby, static_cast<std::uint16_t>(dw >> 16));
    PutBig16(pby + 2, static_cast<std::uint16_t>(dw));
}
} // namespace rtsp
