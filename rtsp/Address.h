#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace rtsp
{
/// An rtsp:// or rtsps:// URL, taken apart. It never holds a user name or a password.
struct tagUrl
{
    bool bTls = false;
    std::string strHost; ///< a name in lower case, or an address; IPv6 without brackets, with its zone: "fe80::1%eth0"
    std::uint16_t wPort = 554;
    std::string strPath; ///< path and query, with the slash in front; empty where the URL has none

    /// The whole URL as a server takes it: with the port where it isn't 554 (rtsps: 322), without an IPv6 zone.
    std::string Text() const;
    std::string Authority() const; ///< host and port as Text has them
    bool operator==(tagUrl const&) const = default;
};

/// Nothing: not such a URL, control characters or blanks in it, no host, a bad port, or a login in it.
std::optional<tagUrl> ParseUrl(std::string_view strUrl);

/// A control address as an SDP gives it, absolute or relative to strBase ("*" and empty: strBase itself). A relative
/// one is put behind the base, a query included: that is what devices expect. They differ in whether the base ends in a
/// slash: one is put in between where there is none. A path that goes on from the base's own path is taken as absolute.
/// Blanks and control characters become escapes.
std::string ResolveControl(std::string_view strBase, std::string_view strControlText);
} // namespace rtsp
