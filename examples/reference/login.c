/* [login] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* The new login ID, or -1. The address of an RTSP device is a whole URL, with no user name or password in it. */
int LogIn(eProtocolType eType, char const* szAddress, char const* szUser, char const* szPassword)
{
    tagUserLoginPara tPara = {.dwPort = 0};
    int nLoginID = -1, nLevel = -1, nResult;
    snprintf(tPara.szAddress, sizeof tPara.szAddress, "%s", szAddress);
    snprintf(tPara.szUserName, sizeof tPara.szUserName, "%s", szUser);
    snprintf(tPara.szPassword, sizeof tPara.szPassword, "%s", szPassword);

    nResult = ClientAdapter_UserLogin(&nLoginID, eType, &tPara);
    if (nResult != eResultOk)
    {
        fprintf(stderr, "login: %s (%d)\n", nResult == eResultNoProtocol ? "not started" : "refused", nResult);
        return -1;
    }
    if (nLoginID == -1)
    {
        fputs("login: all 1000 IDs are taken\n", stderr);
        return -1;
    }
    if (ClientAdapter_GetLoginLevel(nLoginID, &nLevel) == eResultOk && nLevel != -1)
    {
        printf("access level %d\n", nLevel);
    }
    return nLoginID;
}

/* False when the device didn't let go: the ID is still good, try again. */
int LogOut(int nLoginID)
{
    const int nResult = ClientAdapter_UserLogout(nLoginID);
    return nResult == eResultOk || nResult == eResultUnknownLogin;
}
/* [login] */
