/* What a program does with results, and where the library's own lines go. */

#include "../tours/Tour.h"

/* [kinds] */
typedef enum eWhatToDo
{
    eGoOn,      /* it is done */
    eAskPerson, /* only a person can change something: never again by itself */
    eTryLater,  /* the same call may work later */
    eHide,      /* this device can't: don't offer it */
    eInstall,   /* the installation is wrong */
    eOurFault,  /* a mistake of this program: log it */
} eWhatToDo;

static eWhatToDo WhatToDo(int nResult)
{
    switch (nResult)
    {
    case eResultOk:
        return eGoOn;
    case eResultWrongLogin: /* trying again locks the account */
    case eResultLocked:
    case eResultBadAddress:
    case eResultRefused:
    case eResultDeviceFull:
        return eAskPerson;
    case eResultUnreachable:
    case eResultTimeOut:
    case eResultConnectionLost:
    case eResultBusy:
    case eResultNoResources:
    case eResultTooManyStreams:
        return eTryLater;
    case eResultNotSupported:
    case eResultNoChannel:
    case eResultNotFound:
        return eHide;
    case eResultNoEntryPoint: /* the plug-in isn't there, or lacks this */
    case eResultNoProtocol:   /* and it isn't that ClientAdapter_Start was forgotten */
        return eInstall;
    default: /* eResultBadArgument, eResultBadHandle, an unknown ID; or a number of somebody else's plug-in */
        return eOurFault;
    }
}
/* [kinds] */

/* [lines] */
/* On the thread that writes the line, several at once. It must not call the library. */
static void OnLine(char const* szLine)
{
    fprintf(stderr, "library: %s\n", szLine); /* one call, so lines don't mix */
}
/* [lines] */

/* [log] */
/* What the plug-ins have to say: on any thread of theirs. */
static void OnLog(unsigned long dwLevel, char const* szText)
{
    if (dwLevel <= 4) /* 3 error, 4 warning, up to 7 debug */
    {
        fprintf(stderr, "plug-in: %s\n", szText);
    }
}
/* [log] */

static int Try(char const* szAddress, char const* szPassword, eWhatToDo eExpected)
{
    tagUserLoginPara tLogin = {.szUserName = "admin"};
    int nLogin = -1, nResult;
    snprintf(tLogin.szAddress, sizeof tLogin.szAddress, "%s", szAddress);
    snprintf(tLogin.szPassword, sizeof tLogin.szPassword, "%s", szPassword);
    /* [text] */
    nResult = ClientAdapter_UserLogin(&nLogin, eProtocolVTQ, &tLogin);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "logging in at %s: %s (%d)\n", tLogin.szAddress, TessaroExtra_ResultText(nResult), nResult);
    }
    /* [text] */
    ClientAdapter_UserLogout(nLogin);
    return Expect(WhatToDo(nResult) == eExpected, "the result is of this kind");
}

int main(void)
{
    int bWorked;
    /* [sinks] */
    const PluginLogCallback pfnLog = OnLog;
    void* pLog;
    TessaroExtra_DiagnosticCB(OnLine); /* before the start, which has the most to say */
    ClientAdapter_Start(16);
    memcpy(&pLog, &pfnLog, sizeof pLog); /* C has no conversion from a function to a void* */
    ClientAdapter_SetCallbackFunc(eCallbackLog, pLog);
    /* [sinks] */
    bWorked = Try("192.0.2.1", "admin", eGoOn) && Try("192.0.2.1", "wrong", eAskPerson) &&
              Try("nobody.invalid", "admin", eTryLater);
    bWorked = Expect(WhatToDo(ClientAdapter_UserLogout(999)) == eOurFault, "an unknown ID is our fault") && bWorked;
    return EndTour(-1, bWorked);
}
