#pragma once

#include <span>
#include <string>
#include <string_view>

namespace onvifclient
{
/// The cells of a motion detector as ONVIF has them: a bit each, the first one highest in its byte, packed by PackBits
/// and in Base64. The interface has the first one lowest.
/// @{

/// nCells: how many there are; abyCells has room for them.
std::string CellsText(std::span<unsigned char const> abyCells, std::size_t nCells);
/// What doesn't come is 0. False: it is no such text.
bool TakeCells(std::string_view strText, std::span<unsigned char> abyCells);
/// @}
} // namespace onvifclient
