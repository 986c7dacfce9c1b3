// The entry points, by the names that a binding looks up: the prefix comes from the build. Once for each protocol; all
// else is the same in both.

#include "plugins/device/face/Answers.h"

#define JOINED(prefix, name) JOIN(prefix, name)
#define JOIN(prefix, name)   prefix##name

#define OPERATION(line, name, ...)                                                                                     \
    extern "C" TESSARO_API int JOINED(DEVICE_PREFIX, name)(                                                            \
        PARAMETERS(&device::answers::CClientProtocolBase::name __VA_OPT__(, ) __VA_ARGS__))                            \
    {                                                                                                                  \
        return device::answers::name(__VA_ARGS__);                                                                     \
    }
#include "protocol/operations.def"

#ifdef DEVICE_IS_VTQ
// VTQ has its own name for this one.
extern "C" TESSARO_API int VTQClient_Getpackageinfo(void* hStream, void* pInfo, int nLength)
{
    return VTQClient_GetPackInfo(hStream, pInfo, nLength);
}
const eProtocolType device::g_eProtocol = eProtocolVTQ;
#else
const eProtocolType device::g_eProtocol = eProtocolPrivate;
#endif
