#include "plugins/onvif/Operations.h"

namespace onvifclient
{
namespace
{
bool IsStarted()
{
    return Face().bStarted;
}
} // namespace
} // namespace onvifclient

#define PLUGIN_PREFIX    OnvifClient_
#define PLUGIN_NAMESPACE onvifclient
#include "plugins/common/EntryPoints.h"
