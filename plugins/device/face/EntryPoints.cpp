// The entry points, by the names that a binding looks up: the prefix comes from the build.

#include "plugins/device/face/Operations.h"

#define JOINED(prefix, name) JOIN(prefix, name)
#define JOIN(prefix, name)   prefix##name

namespace device
{
namespace
{
// Nothing is thrown across an entry point, and only Start works before Start.
template <auto Op, class... A>
int Enter(tagCall<Op> tCall, A... tArguments)
try
{
    if constexpr (!std::is_same_v<tagCall<Op>, tagCall<&CClientProtocolBase::Start>>)
    {
        if (!Face().bStarted)
        {
            return eResultNotStarted;
        }
    }
    return Serve(tCall, tArguments...);
}
catch (...)
{
    return eResultNoResources;
}
} // namespace
} // namespace device

#define OPERATION(line, name, ...)                                                                                     \
    extern "C" TESSARO_API int JOINED(DEVICE_PREFIX,                                                                   \
                                      name)(PARAMETERS(&device::CClientProtocolBase::name __VA_OPT__(, ) __VA_ARGS__)) \
    {                                                                                                                  \
        return device::Enter(tagCall<&device::CClientProtocolBase::name> {} __VA_OPT__(, ) __VA_ARGS__);               \
    }
#include "protocol/operations.def"

// VTQ has its own name for this one.
#ifdef DEVICE_IS_VTQ
extern "C" TESSARO_API int VTQClient_Getpackageinfo(void* hStream, void* pInfo, int nLength)
{
    return VTQClient_GetPackInfo(hStream, pInfo, nLength);
}
#endif
