/* Looks for devices on the network for three seconds and lists them; needs no login.

     discovery [ADDRESS]

   With an address that device alone is asked, directly. */

#include "Tour.h"

static tagCounter g_tFound = COUNTER;

/* On a thread of a plug-in, and without user data. The record is the plug-in's and ends with the callback. */
static void OnDevice(tagDeviceProbeConfig* ptDevice)
{
    if (ptDevice->dwFlags & eProbeGone)
    {
        printf("%s is gone.\n", ptDevice->szAddress);
        return;
    }
    printf("%s, port %" PRIu32 ": %s (%s, serial number %s), protocol %" PRIu32 "\n", ptDevice->szAddress,
           ptDevice->dwPort, ptDevice->szName, ptDevice->szModel, ptDevice->szSerialNumber, ptDevice->dwProtocol);
    Count(&g_tFound);
}

int main(int nArguments, char** aszArguments)
{
    tagDeviceProbeParameter tWhere = {.dwSize = sizeof tWhere, .dwSeconds = 3};
    if (nArguments > 1)
    {
        snprintf(tWhere.szAddress, sizeof tWhere.szAddress, "%s", aszArguments[1]);
    }
    ClientAdapter_Start(1);
    ClientAdapter_DeviceProbeStart(&tWhere, OnDevice); /* always 0: what is found shows whether it worked */
    Sleep(3000);
    ClientAdapter_DeviceProbeStop();
    printf("%lu devices.\n", Counted(&g_tFound));
    return EndTour(-1, Expect(Counted(&g_tFound) > 0, "a device answers"));
}
