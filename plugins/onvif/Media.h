#pragma once

#include "plugins/onvif/Login.h"

#include <string>

namespace onvifclient
{
/// A stream of media: talk and questions for files are opened under it.
class CMedia : public CObject
{
public:
    using CObject::CObject;

    virtual int Control(eTaskControl eControl) = 0;
};

/// The address of a profile's stream, as it can be reached from here and without credentials. bMedia2: whose profile it
/// is; eTransport: an eRtspTransport.
int StreamAddress(CLogin const& tLogin, bool bMedia2, std::string const& strProfile, uint32_t dwTransport,
                  std::string& strUrl);
} // namespace onvifclient
