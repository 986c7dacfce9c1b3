#pragma once

#include "protocol/PluginInterface.h"

#include <optional>
#include <string>

namespace rtsp
{
/// What to connect to, as libavformat takes it: with user name and password inside. Print it nowhere.
struct tagAddress
{
    std::string strUrl;
    eRtspTransport eTransport = eRtspTcp;
};

/// Puts a connect block's parts together. Nothing: the address isn't an rtsp:// or rtsps:// URL, carries a user name or
/// password of its own, or user name and password can't be carried: a user name with a colon, or more than 127 bytes
/// once characters that mean something in a URL are escaped.
std::optional<tagAddress> MakeAddress(tagRTSPClientPara const& tPara);
} // namespace rtsp
