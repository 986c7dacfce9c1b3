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
    std::string strHost; ///< a name or an address; an IPv6 address without its brackets
    std::uint16_t wPort = 554;
    std::string strPath; ///< path and query, with the slash in front; empty where the URL has none

    std::string Text() const;      ///< the whole URL, with the port where it isn't 554 (rtsps: 322)
    std::string Authority() const; ///< host and port as Text has them
    bool operator==(tagUrl const&) const = default;
};

/// Nothing: not such a URL, control characters or blanks in it, no host, a bad port, or a login in it.
std::optional<tagUrl> ParseUrl(std::string_view strUrl);

/// A control address as an SDP gives it, absolute or relative to strBase ("*": strBase itself). Devices differ in
/// whether the base ends in a slash: one is put in between where there is none.
std::string ResolveControl(std::string_view strBase, std::string_view strControl);
} // namespace rtsp
