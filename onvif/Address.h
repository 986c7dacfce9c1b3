#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace onvif
{
/// An http:// or https:// address, taken apart. It never holds a user name or a password.
struct tagAddress
{
    bool bTls = false;
    std::string strHost; ///< a name, or an address; IPv6 without brackets, with its zone: "fe80::1%eth0"
    std::uint16_t wPort = 80;
    std::string strPath; ///< path and query, with the slash in front

    std::string Text() const;
    /// What goes into a URL: IPv6 with brackets.
    std::string HostText() const;
    bool operator==(tagAddress const&) const = default;
};

/// Nothing: no such address, or a login in it.
std::optional<tagAddress> ParseAddress(std::string_view strUrl);

/// What a user names a device by: a host, an IPv4 or IPv6 address, or the whole address of its device service. wPort 0:
/// the one that the text names, else the usual one. The path, where the text has none, is the usual one.
std::optional<tagAddress> ParseDevice(std::string_view strText, std::uint32_t dwPort);

/// An address of any scheme that a device announces, with the host by which it was reached, and where it speaks of the
/// device's own HTTP server with the port too: a device behind a router announces what only it can reach. Other ports
/// (RTSP) stay. A text that is no address stays as it is.
std::string Reachable(std::string_view strAnnounced, tagAddress const& tReached, std::uint16_t wAnnouncedPort);
} // namespace onvif
