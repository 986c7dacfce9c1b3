#pragma once

#include "plugins/onvif/Login.h"

#include <string>

namespace onvifclient
{
/// Opens a profile's stream, waits for one key frame, at most for the time of a call, and closes it again.
int TakeKeyFrame(CLogin& tLogin, bool bMedia2, std::string const& strProfile, std::string& strFrame);
} // namespace onvifclient
