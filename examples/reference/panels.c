/* [panels] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Writes a message on a recorder's front, lights the alarm lamp, and beeps. */
int CallOperator(int nLoginID, char const* szMessage)
{
    tagPanelStatusInfo tPanel = {.dwSize = sizeof tPanel};
    tagPanelControlParameter tBeep = {.dwSize = sizeof tBeep, .dwAction = ePanelBeep, .dwMilliseconds = 1000};
    int nResult = ClientAdapter_PanelGetStatus(nLoginID, &tPanel);
    if (nResult == eResultOk)
    {
        tPanel.dwLampsOn |= eLampAlarm;
        snprintf(tPanel.szLine1, sizeof tPanel.szLine1, "%s", szMessage);
        nResult = ClientAdapter_PanelSetStatus(nLoginID, &tPanel);
    }
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_PanelControl(nLoginID, &tBeep);
    }
    if (nResult == eResultNotSupported)
    {
        fputs("this device has no front panel\n", stderr);
    }
    return nResult;
}
/* [panels] */
