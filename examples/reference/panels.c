/* [panels] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

/* Reads a front panel, lets the caller change what it shows, and writes it back. The records are incomplete types here:
   ptStatus and ptBeep come from code that has the device plug-in's own header, pfnChange is part of it. */
int ChangePanel(int nLoginID, tagPanelStatusInfo* ptStatus, void (*pfnChange)(tagPanelStatusInfo* ptStatus),
                tagPanelControlParameter* ptBeep)
{
    int nResult = ClientAdapter_PanelGetStatus(nLoginID, ptStatus);
    if (nResult == eResultOk)
    {
        pfnChange(ptStatus);
        nResult = ClientAdapter_PanelSetStatus(nLoginID, ptStatus);
    }
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_PanelControl(nLoginID, ptBeep);
    }
    if (nResult == eResultNoEntryPoint)
    {
        fputs("this device has no front panel to control\n", stderr);
    }
    return nResult;
}
/* [panels] */
