// The private protocol: the library never loads it by itself, so the application inserts it into the protocol set with
// its plug-in's path, starts it, and stops it before the library.

#include <tessaro/Globals.h>

static bool g_bStarted = false;

extern "C" int StartPrivateProtocol(char const* szPlugin)
{
    int nResult = g_cProtocolSet.InsertProtocol(eProtocolPrivate, szPlugin);
    if (nResult == eResultOk)
    {
        nResult = g_cProtocolSet.Start(eProtocolPrivate);
    }
    g_bStarted = nResult == eResultOk;
    return nResult;
}

extern "C" void StopPrivateProtocol()
{
    if (g_bStarted)
    {
        g_cProtocolSet.Stop(eProtocolPrivate); // ClientAdapter_Stop unloads it
    }
}
