#include "tools/onvif_device/Osd.h"

namespace onvif_device
{
void GetOSDs(CCall&) {}
void GetOSD(CCall&) {}
void GetOSDOptions(CCall&) {}
void SetOSD(CCall&) {}
void CreateOSD(CCall&) {}
void DeleteOSD(CCall&) {}
std::span<tagAction const> DeviceNetworkActions()
{
    return {};
}
std::span<tagAction const> DeviceSystemActions()
{
    return {};
}
std::span<tagAction const> Media2Actions()
{
    return {};
}
std::span<tagAction const> ImagingActions()
{
    return {};
}
std::span<tagAction const> DeviceIoActions()
{
    return {};
}
std::span<tagAction const> SearchActions()
{
    return {};
}
std::span<tagAction const> RecordingActions()
{
    return {};
}
std::span<tagAction const> ReplayActions()
{
    return {};
}
std::span<tagAction const> ReceiverActions()
{
    return {};
}
std::span<tagAction const> DisplayActions()
{
    return {};
}
} // namespace onvif_device
