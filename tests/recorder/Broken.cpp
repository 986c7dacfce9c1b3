// Plug-ins that the dynamic loader refuses, or that it would be better off refusing; and one that calls in at its end.

#if defined BROKEN_CALLS
#include "adapter/ClientAdapter.h"

#include <dlfcn.h>
#endif

#if defined BROKEN_UNDEFINED
extern int g_nNowhere; // data is looked up when the library is opened, functions when they are called
int* g_pnNowhere = &g_nNowhere;
#elif defined BROKEN_THROWS
struct tagThrows
{
    tagThrows() { throw 1; }
} g_tThrows;
#elif defined BROKEN_CALLS
struct tagCalls
{
    ~tagCalls()
    {
        reinterpret_cast<decltype(&ClientAdapter_RTSPSetIsProductTest)>(
            dlsym(RTLD_DEFAULT, "ClientAdapter_RTSPSetIsProductTest"))(0, nullptr, 0, eProtocolPrivate);
    }
} g_tCalls;
#else
int NeededElsewhere();
#if defined BROKEN_NEEDS
int g_nNeeded = NeededElsewhere();
#else
int NeededElsewhere() // in the library that won't be found
{
    return 1;
}
#endif
#endif
