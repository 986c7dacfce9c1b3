#pragma once

#include "onvif/Discovery.h"

namespace onvifclient
{
/// Looks for devices, and reports them to Face().tProbe on a thread for callbacks.
onvif::CDiscovery& Nearby();
} // namespace onvifclient
