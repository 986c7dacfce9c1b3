#pragma once

#include <cstdint>
#include <pugixml.hpp>

namespace onvif_device
{
class CFace;
struct tagExchange;

/// Finds out who asks, by the header's UsernameToken (none: a null node), the HTTP digest, or both, as the device's
/// quirks want it; sets tCaller. Without credentials the caller has no name and level 0. Throws CFault for wrong ones.
void Authenticate(CFace& tFace, tagExchange& tExchange, pugi::xml_node tHeader);
/// By HTTP digest alone, which must be there.
void AuthenticateDigest(CFace& tFace, tagExchange& tExchange);
/// Throws CFault when the caller's level is lower.
void RequireLevel(CFace& tFace, tagExchange& tExchange, uint32_t dwLevel);
} // namespace onvif_device
