/* [discovery] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* The records are the plug-in's and end with the callback. */
static int OnRegister(tagDeviceRegisterInfo* ptInfo)
{
    printf("%s registered itself: %s\n", ptInfo->szAddress, ptInfo->szName);
    return 0;
}

static void OnProbe(tagDeviceProbeConfig* ptConfig)
{
    printf("%s %s: %s\n", ptConfig->szAddress, ptConfig->dwFlags & eProbeGone ? "is gone" : "was found",
           ptConfig->szName);
}

/* Waits for devices that register themselves at this address of ours, and looks for others. Every result is 0: that
   nothing is found is the only sign of a failure. */
void BeginDiscovery(char* szOwnAddress, unsigned long dwPort)
{
    tagDeviceProbeParameter tWhere = {.dwSize = sizeof tWhere, .dwSeconds = 10};
    ClientAdapter_DeviceRegisterCB(OnRegister); /* before the listening, to miss none */
    ClientAdapter_DeviceRegisterListenStart(szOwnAddress, dwPort);
    ClientAdapter_DeviceProbeStart(&tWhere, OnProbe);
}

void EndDiscovery(void)
{
    ClientAdapter_DeviceProbeStop();
    ClientAdapter_DeviceRegisterListenStop();
}
/* [discovery] */
