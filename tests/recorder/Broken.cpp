// A plug-in whose constructor throws, and one that calls in at its end.

#include "adapter/ClientAdapter.h"

#include <dlfcn.h>

namespace
{
struct tagBroken
{
#if defined BROKEN_THROWS
    tagBroken()
    {
        throw 1;
    }
#else
    ~tagBroken()
    {
        reinterpret_cast<decltype(&ClientAdapter_RTSPSetIsProductTest)>(
            dlsym(RTLD_DEFAULT, "ClientAdapter_RTSPSetIsProductTest"))(0, nullptr, 0, eProtocolPrivate);
    }
#endif
} g_tBroken;
} // namespace
