#pragma once

#include "onvif/Client.h"

#include <string>

namespace onvifclient
{
/// Who a device says that it is, beside what CClient::Information has. Each asks the device.
struct tagIdentity
{
    std::string strName;
    std::string strLocation;
};
/// From its scopes; empty texts where it doesn't say.
tagIdentity AskIdentity(onvif::CClient& tClient);

/// The hardware address of its first interface that is switched on, "02:00:5e:10:00:01"; empty: it doesn't say.
/// A result in nResult.
std::string AskMac(onvif::CClient& tClient, int& nResult);
} // namespace onvifclient
