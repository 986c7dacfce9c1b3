#pragma once

#include "plugins/onvif/Login.h"

namespace onvifclient
{
/// A stream of media: talk and questions for files are opened under it.
class CMedia : public CObject
{
public:
    using CObject::CObject;

    virtual int Control(eTaskControl eControl) = 0;
};
} // namespace onvifclient
