#pragma once

#include "plugins/onvif/Login.h"

#include <string>

namespace onvifclient
{
/// The address of a profile's stream, as it can be reached from here and without credentials. bMedia2: whose profile it
/// is; dwTransport: an eRtspTransport. Blocks.
int StreamAddress(CLogin const& tLogin, bool bMedia2, std::string const& strProfile, uint32_t dwTransport,
                  std::string& strUrl);

/// The same in two steps, for the HTTP thread: the question, in the words of either media service, and the address in
/// its answer; empty: there is none.
/// @{
onvif::tagRequest AddressRequest(bool bMedia2, std::string const& strProfile, uint32_t dwTransport);
std::string AddressOf(onvif::CClient const& tClient, onvif::CAnswer const& tAnswer, bool bMedia2);
/// @}
} // namespace onvifclient
