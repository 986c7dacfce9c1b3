/* Listens to a device's events, reads its inputs, switches an output, records and takes a picture.

   Leaves alarm.jpg in the present folder. */

#include "Tour.h"

/* What the event callback has seen. */
typedef struct tagAlarms
{
    tagCounter tEvents, tOutput;
} tagAlarms;

/* [event] */
/* On a thread of the plug-in. The words are explained at eDeviceEvent. */
static int OnEvent(void* hLogin, unsigned long dwEvent, unsigned long dwWhere, unsigned long dwState,
                   unsigned long dwTime, unsigned long dwUser)
{
    tagAlarms* const ptAlarms = (tagAlarms*)dwUser;
    char szTime[32];
    (void)hLogin; /* our login ID; there is only one */
    TimeText((int64_t)dwTime * 1000000, szTime);
    switch (dwEvent)
    {
    case eEventMotion:
        printf("%s: motion before channel %lu %s.\n", szTime, dwWhere, dwState ? "began" : "ended");
        break;
    case eEventAlarmInput:
        printf("%s: alarm input %lu is %s.\n", szTime, dwWhere, dwState ? "active" : "idle");
        break;
    case eEventAlarmOutput:
        printf("%s: alarm output %lu is %s.\n", szTime, dwWhere, dwState ? "on" : "off");
        Count(&ptAlarms->tOutput);
        break;
    case eEventRecording:
        printf("%s: the recording of channel %lu %s.\n", szTime, dwWhere, dwState ? "began" : "ended");
        break;
    case eEventLoginLost:
        printf("%s: the device is gone (%lu), next try in %lu ms.\n", szTime, dwWhere, dwState);
        break;
    case eEventOther:
        printf("%s: %s\n", szTime, ((tagEventDetail const*)dwState)->szTopic);
        break;
    default:
        printf("%s: event %lu (%lu, %lu).\n", szTime, dwEvent, dwWhere, dwState);
    }
    Count(&ptAlarms->tEvents);
    return 0;
}
/* [event] */

static int ReadContacts(int nLogin)
{
    unsigned long adwStates[64];
    unsigned long dwInputs = 64, dwOutputs = 64;
    if (!Worked(ClientAdapter_AlarminStateGet(nLogin, &dwInputs, adwStates), "reading the inputs"))
    {
        return 0;
    }
    for (unsigned long i = 0; i < dwInputs; ++i)
    {
        printf("Alarm input %lu is %s.\n", i, adwStates[i] ? "active" : "idle");
    }
    if (!Worked(ClientAdapter_AlarmoutStateGet(nLogin, &dwOutputs, adwStates), "reading the outputs"))
    {
        return 0;
    }
    printf("%lu alarm outputs.\n", dwOutputs);
    return Expect(dwOutputs > 0, "the device has an alarm output");
}

static int TakePicture(int nLogin)
{
    tagImageFileInfo tPicture = {.dwSize = sizeof tPicture, .szPath = "alarm.jpg"};
    if (!Worked(ClientAdapter_ImageCapture(nLogin, 0, eImageJpeg, &tPicture), "taking a picture"))
    {
        return 0;
    }
    printf("alarm.jpg: %" PRIu32 "x%" PRIu32 ", %" PRIu32 " bytes.\n", tPicture.dwWidth, tPicture.dwHeight,
           tPicture.dwLength);
    return 1;
}

static int Alarm(int nLogin, tagAlarms* ptAlarms)
{
    const int bRaised = Worked(ClientAdapter_AlarmoutControl(nLogin, 0, 1), "switching the output on") &&
                        Await(&ptAlarms->tOutput, 1, 5, "the output's event") &&
                        Worked(ClientAdapter_RecordControl(nLogin, 0, 1), "recording") && TakePicture(nLogin);
    /* Each of these also when another one failed. */
    const int bStopped = Worked(ClientAdapter_RecordControl(nLogin, 0, 0), "ending the recording");
    const int bOff = Worked(ClientAdapter_AlarmoutControl(nLogin, 0, 0), "switching the output off");
    return bRaised && bStopped && bOff && Await(&ptAlarms->tOutput, 2, 5, "the output's second event") &&
           WorkedOrLacks(ClientAdapter_AlarmClear(nLogin, eEventAlarmInput, TESSARO_ALL), "clearing the alarms");
}

/* [watch] */
static int Watch(int nLogin)
{
    tagAlarms tAlarms = {.tEvents = COUNTER, .tOutput = COUNTER};
    int bWorked;
    /* 0: all events. Some of them alone: TESSARO_EVENT(eEventMotion) | TESSARO_EVENT(eEventTamper). */
    if (!Worked(ClientAdapter_SubscribeEvent(nLogin, 0, OnEvent, (unsigned long)&tAlarms), "subscribing"))
    {
        return 0;
    }
    bWorked = ReadContacts(nLogin) && Alarm(nLogin, &tAlarms);
    bWorked = Worked(ClientAdapter_UnSubscribeEvent(nLogin, 0), "unsubscribing") && bWorked;
    printf("%lu events.\n", Counted(&tAlarms.tEvents));
    return bWorked;
}
/* [watch] */

int main(int nArguments, char** aszArguments)
{
    const int nLogin = BeginTour(nArguments, aszArguments);
    return EndTour(nLogin, nLogin != -1 && Watch(nLogin));
}
