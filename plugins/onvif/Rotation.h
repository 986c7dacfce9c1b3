#pragma once

#include <cstdint>

namespace onvif
{
class CClient;
}

namespace onvifclient
{
struct tagChannel;

/// How a channel's picture is turned: ePictureTurn bits. ONVIF turns by quarters; mirroring alone is
/// eResultBadArgument, and so is every turn where the device has none.
int ReadTurn(onvif::CClient& tClient, tagChannel const& tChannel, bool bMedia2, uint32_t& dwTurn);
int WriteTurn(onvif::CClient& tClient, tagChannel const& tChannel, bool bMedia2, uint32_t dwTurn);
/// Whether WriteTurn would take it; the device isn't changed.
int CheckTurn(onvif::CClient& tClient, tagChannel const& tChannel, bool bMedia2, uint32_t dwTurn);
} // namespace onvifclient
