/* [alarms] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

/* Switches an alarm output on and has the channel beside it recorded and photographed. The image record is an
   incomplete type here: it comes from code that has the device plug-in's own header, as eFormat does. */
int RaiseAlarm(int nLoginID, unsigned long dwOutput, unsigned long dwChannel, eImageFormat eFormat,
               tagImageFileInfo* ptImage)
{
    int nResult = ClientAdapter_AlarmoutControl(nLoginID, dwOutput, 1);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "alarm output %lu: %d\n", dwOutput, nResult);
        return nResult;
    }
    nResult = ClientAdapter_RecordControl(nLoginID, dwChannel, 1);
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_ImageCapture(nLoginID, dwChannel, eFormat, ptImage);
    }
    return nResult;
}

/* Ends it all, each step also when another fails. */
void EndAlarm(int nLoginID, unsigned long dwType, unsigned long dwOutput, unsigned long dwChannel)
{
    ClientAdapter_RecordControl(nLoginID, dwChannel, 0);
    ClientAdapter_AlarmoutControl(nLoginID, dwOutput, 0);
    ClientAdapter_AlarmClear(nLoginID, dwType, dwChannel);
}
/* [alarms] */
