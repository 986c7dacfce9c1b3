#pragma once

#include "tools/onvif_device/Quirks.h"

#include <span>
#include <string>
#include <string_view>

namespace onvif_device
{
class CCall;

enum class eService : unsigned char
{
    Device,
    Media,
    Media2,
    Ptz,
    Imaging,
    Events,
    DeviceIo,
    Search,
    Recording,
    Replay,
    Receiver,
    Display,
    Analytics,
};

/// One of ONVIF's services on this device.
struct tagService
{
    eService eWhich;
    char const* szPrefix; ///< of its namespace
    char const* szName;   ///< in the quirk `without`
    char const* szPath;
    char const* szOddPath; ///< where it stands with the quirk `odd_paths`
    unsigned nMajor;
    unsigned nMinor;
};
extern const tagService g_atServices[13];
tagService const& ServiceOf(eService eWhich);
char const* PathOf(tagService const& tService, tagQuirks const& tQuirks);
/// Null: none stands there.
tagService const* ServiceAt(std::string_view strPath, tagQuirks const& tQuirks);

/// One operation of a service.
struct tagAction
{
    char const* szName;     ///< of the request's element; in the service's namespace, unless it has a prefix
    uint32_t dwLevel;       ///< eUserLevel that it needs; 0: not even a login
    char const* szElements; ///< what a request must hold: see CheckElements
    void (*pfnServe)(CCall&);
};

/// @name The operations of each service, in its own source
/// @{
std::span<tagAction const> DeviceActions();
std::span<tagAction const> DeviceNetworkActions();
std::span<tagAction const> DeviceSystemActions();
std::span<tagAction const> MediaActions();
std::span<tagAction const> MediaEncoderActions();
std::span<tagAction const> Media2Actions();
std::span<tagAction const> PtzActions();
std::span<tagAction const> PtzNodeActions();
std::span<tagAction const> ImagingActions();
std::span<tagAction const> EventActions();
std::span<tagAction const> DeviceIoActions();
std::span<tagAction const> SearchActions();
std::span<tagAction const> RecordingActions();
std::span<tagAction const> ReplayActions();
std::span<tagAction const> ReceiverActions();
std::span<tagAction const> DisplayActions();
std::span<tagAction const> AnalyticsActions();
/// @}

/// An operation by the namespace and the local name of its element; null: no service has it.
tagAction const* FindAction(std::string_view strUri, std::string_view strName, eService& eOf);
} // namespace onvif_device
