#pragma once

#include "adapter/ClientAdapter.h"

#include <string>

namespace tessaro
{
/// Where a device is, as a person writes it: PROTOCOL://[user@]host[:port][/path].
struct tagAddress
{
    eProtocolType eProtocol = eProtocolVTQ;
    std::string strUser;     ///< empty: without; "admin" if none was named, but for RTSP
    std::string strHost;     ///< RTSP: the whole address, without the user
    unsigned int dwPort = 0; ///< 0: the protocol's usual one
    std::string strText;     ///< as it was written

    /// Throws CFailure when it is none, or carries a password.
    static tagAddress Parse(std::string const& strText);
};

/// The help of every command's address.
inline constexpr char const* g_szAddressHelp = "the device: PROTOCOL://[user@]host[:port], PROTOCOL being vtq, onvif "
                                               "or private; a stream: rtsp://[user@]host/path";
} // namespace tessaro
