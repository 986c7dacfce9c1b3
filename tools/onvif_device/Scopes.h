#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace device
{
class CDevice;
}

namespace onvif_device
{
/// What a device says of itself to who looks for it.
struct tagScope
{
    std::string strUri;
    bool bFixed;
};

/// Needs the device's lock; so does the next.
std::vector<tagScope> ScopesOf(device::CDevice& tDevice);
/// urn:uuid:... : the same as long as the device exists.
std::string EndpointOf(device::CDevice& tDevice);

/// The value of a scope of this kind: "name", "Gate" of onvif://www.onvif.org/name/Gate. False: it is of another kind.
bool ScopeValue(std::string_view strUri, std::string_view strKind, std::string& strValue);
} // namespace onvif_device
