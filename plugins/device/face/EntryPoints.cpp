#include "plugins/device/face/Operations.h"

namespace device
{
namespace
{
bool IsStarted()
{
    return Face().bStarted;
}
} // namespace
} // namespace device

#define PLUGIN_PREFIX    DEVICE_PREFIX
#define PLUGIN_NAMESPACE device
#include "plugins/common/EntryPoints.h"

// VTQ has its own name for this one.
#ifdef DEVICE_IS_VTQ
extern "C" TESSARO_API int VTQClient_Getpackageinfo(void* hStream, void* pInfo, int nLength)
{
    return VTQClient_GetPackInfo(hStream, pInfo, nLength);
}
#endif
