/* [alarms] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Switches an alarm output on for ten seconds and has the channel beside it recorded and photographed into a file. */
int RaiseAlarm(int nLoginID, unsigned long dwOutput, unsigned long dwChannel, char const* szPath)
{
    tagImageFileInfo tImage = {.dwSize = sizeof tImage};
    int nResult = ClientAdapter_AlarmoutControl(nLoginID, dwOutput, 10000); /* 1: until it is switched off */
    if (nResult != eResultOk)
    {
        fprintf(stderr, "alarm output %lu: %d\n", dwOutput, nResult);
        return nResult;
    }
    nResult = ClientAdapter_RecordControl(nLoginID, dwChannel, 1);
    if (nResult == eResultOk)
    {
        snprintf(tImage.szPath, sizeof tImage.szPath, "%s", szPath);
        nResult = ClientAdapter_ImageCapture(nLoginID, dwChannel, eImageJpeg, &tImage);
    }
    return nResult;
}

/* Ends it all, each step also when another fails. */
void EndAlarm(int nLoginID, unsigned long dwOutput, unsigned long dwChannel)
{
    ClientAdapter_RecordControl(nLoginID, dwChannel, 0);
    ClientAdapter_AlarmoutControl(nLoginID, dwOutput, 0);
    ClientAdapter_AlarmClear(nLoginID, eEventAlarmInput, TESSARO_ALL);
}
/* [alarms] */
