/* [discovery] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

static int OnRegister(tagDeviceRegisterInfo* ptInfo)
{
    (void)ptInfo; /* an incomplete type here: hand it to code that has the device plug-in's own header */
    puts("a device registered itself");
    return 0;
}

static void OnProbe(tagDeviceProbeConfig* ptConfig)
{
    (void)ptConfig; /* the same */
    puts("a device was found");
}

/* Waits for devices that register themselves at this address of ours, and looks for others. Every result is 0: that
   nothing is found is the only sign of a failure. ptWhere comes from the same code; its content stays ours. */
void BeginDiscovery(char* szOwnAddress, unsigned long dwPort, tagDeviceProbeParameter* ptWhere)
{
    ClientAdapter_DeviceRegisterCB(OnRegister); /* before the listening, to miss none */
    ClientAdapter_DeviceRegisterListenStart(szOwnAddress, dwPort);
    ClientAdapter_DeviceProbeStart(ptWhere, OnProbe);
}

void LookAgain(tagDeviceProbeParameter* ptWhere)
{
    ClientAdapter_DeviceProbeResearch(ptWhere);
}

void EndDiscovery(void)
{
    ClientAdapter_DeviceProbeStop();
    ClientAdapter_DeviceRegisterListenStop();
}
/* [discovery] */
