#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace onvif
{
/// The header block wsse:Security with a digest of the password, for a device whose clock shows llDeviceTimeUs now.
/// Throws std::bad_alloc; empty when the machine has no random numbers.
std::string UsernameToken(std::string_view strUser, std::string_view strPassword, std::int64_t llDeviceTimeUs);

/// Base64(SHA-1(nonce + created + password)); strNonce as bytes.
std::string PasswordDigest(std::string_view strNonce, std::string_view strCreated, std::string_view strPassword);
} // namespace onvif
