#include "adapter/ClientAdapter.h"

#include "adapter/Globals.h"
#include "adapter/Shapes.h"
#include "adapter/Trampolines.h"
#include "adapter/Version.h"
#include "system/Call.h"
#include "system/OutputMessage.h"

using Adapter_ApplicationLayer::CSetCallBack;

CClientProtocolSet g_cProtocolSet;
constinit CSetCallBack g_SetCallBack[1000];
constinit Adapter_ApplicationLayer::CRegistrations Adapter_ApplicationLayer::g_tRegistrations;
std::map<int, CSetCallBack> g_SetUserCallBack;
Adapter_ApplicationLayer::CEvents Adapter_ApplicationLayer::g_tEvents;
Client g_cClient;
char const g_cVersion[18] = TESSARO_BUILD;

TESSARO_C_BEGIN

#define EXPORT(shape, line, function, operation, ...)                                                                  \
    int function(PARAMETERS(&function, __VA_ARGS__))                                                                   \
    {                                                                                                                  \
        return shape(tagSite{#function, line}, [](auto... tArguments)                                                  \
                     { return g_cProtocolSet.operation(tArguments...); } __VA_OPT__(,) __VA_ARGS__);                   \
    }
#include "adapter/exports.def"

// --- Irregular -------------------------------------------------------------------------------------------------------

int ClientAdapter_Start(unsigned int dwMaxChannel)
{
    DiagnosticLine(g_szSource, "ClientAdapter_Start", 62, "eProtocolOnvif");
    g_cProtocolSet.InsertProtocol(eProtocolOnvif, "libonvifclient.so");
    DiagnosticLine(g_szSource, "ClientAdapter_Start", 65, "eProtocolRTSP");
    g_cProtocolSet.InsertProtocol(eProtocolRTSP, "librtspclient.so");
    DiagnosticLine(g_szSource, "ClientAdapter_Start", 69, "eProtocolVTQ");
    g_cProtocolSet.InsertProtocol(eProtocolVTQ, "libVTQ.so");
    g_cProtocolSet.Start(eProtocolOnvif);
    g_cProtocolSet.Start(eProtocolRTSP);
    g_cProtocolSet.Start(eProtocolVTQ);
    g_cProtocolSet.SetMaxChannel(dwMaxChannel, eProtocolRTSP);
    return eResultOk;
}

int ClientAdapter_Stop(void)
{
    g_cProtocolSet.Stop(eProtocolOnvif);
    g_cProtocolSet.Stop(eProtocolRTSP);
    g_cProtocolSet.Stop(eProtocolVTQ);
    g_cProtocolSet.RemoveAllProtocol();
    return eResultOk;
}

int ClientAdapter_UserLogin(int* pnLoginID, eProtocolType eType, tagUserLoginPara* ptPara)
{
    if (!pnLoginID || !ptPara)
    {
        return Failed({"ClientAdapter_UserLogin", 126}, eResultUnknownMedia);
    }
    void* hLogin = nullptr;
    const int nResult = g_cProtocolSet.UserLogin(&hLogin, ptPara, eType);
    if (nResult == eResultOk)
    {
        int nNew = -1;
        g_cClient.SetUserType(nNew, hLogin, eType);
        *pnLoginID = nNew;
    }
    return nResult;
}

int ClientAdapter_UserLogout(int nLoginID)
{
    tagTarget tLogin;
    if (!FindUser(nLoginID, tLogin))
    {
        return Failed({"ClientAdapter_UserLogout", 258}, eResultUnknownLogin);
    }
    const int nResult = g_cProtocolSet.UserLogout(tLogin.hHandle, tLogin.eType);
    if (nResult == eResultOk)
    {
        g_cClient.DeleteUserType(nLoginID);
    }
    return nResult;
}

int ClientAdapter_GetLoginStatus(int nLoginID, int* pnStatus)
{
    tagTarget tLogin;
    if (!FindUser(nLoginID, tLogin))
    {
        return Failed({"ClientAdapter_GetLoginStatus", 218}, eResultUnknownLogin);
    }
    const int nResult = g_cProtocolSet.GetLoginStatus(tLogin.hHandle, pnStatus, tLogin.eType);
    if (nResult < 0)
    {
        return eResultUnknownLogin;
    }
    if (!pnStatus)
    {
        return eResultNoProtocol;
    }
    *pnStatus = nResult;
    return eResultOk;
}

int ClientAdapter_GetConfig(int nLoginID, tagConfigInformation* ptConfig)
{
    DiagnosticLine(g_szSource, "ClientAdapter_GetConfig", 418,
                   "*************************************ClientAdapter_GetConfig");
    tagTarget tLogin;
    if (!FindUser(nLoginID, tLogin))
    {
        return Failed({"ClientAdapter_GetConfig", 423}, eResultUnknownLogin);
    }
    return g_cProtocolSet.GetConfig(tLogin.hHandle, ptConfig, tLogin.eType);
}

int ClientAdapter_SetConfigBySn(char const* szSerial, eProtocolType eType, tagConfigInformationV2* ptConfig)
{
    return g_cProtocolSet.SetConfigBySn(szSerial, ptConfig, eType);
}

int ClientAdapter_ForceIFrame(int nLoginID, int nMediaID)
{
    tagTarget tLogin;
    tagTarget tMedia;
    if (nMediaID == -1)
    {
        return Failed({"ClientAdapter_ForceIFrame", 541}, eResultUnknownLogin);
    }
    if (!FindUser(nLoginID, tLogin))
    {
        return Failed({"ClientAdapter_ForceIFrame", 547}, eResultUnknownLogin);
    }
    if (!FindMedia(nMediaID, tMedia))
    {
        return Failed({"ClientAdapter_ForceIFrame", 553}, eResultUnknownLogin);
    }
    return g_cProtocolSet.ForceIFrame(tLogin.hHandle, reinterpret_cast<unsigned long>(tMedia.hHandle), tLogin.eType);
}

int ClientAdapter_SubscribeEvent(int nLoginID, unsigned long dwEvent, DeviceEventCallback pfnEvent,
                                 unsigned long dwUser)
{
    tagTarget tLogin;
    if (!FindUser(nLoginID, tLogin) || !g_tEvents.Register(nLoginID, pfnEvent, dwUser))
    {
        return Failed({"ClientAdapter_SubscribeEvent", 295}, eResultUnknownLogin);
    }
    return g_cProtocolSet.SubscribeEvent(tLogin.hHandle, dwEvent, &SetUserEventCB, static_cast<unsigned long>(nLoginID),
                                         tLogin.eType);
}

int ClientAdapter_DeviceProbeStart(tagDeviceProbeParameter* ptPara, DeviceProbeCallback pfnProbe)
{
    CAdapter_OutputMessage::OutputMessage("[%s][%d]\n", g_szSource, 2377);
    g_cProtocolSet.DeviceProbeStart(ptPara, pfnProbe, eProtocolOnvif);
    CAdapter_OutputMessage::OutputMessage("[%s][%d]\n", g_szSource, 2379);
    g_cProtocolSet.DeviceProbeStart(ptPara, pfnProbe, eProtocolVTQ);
    CAdapter_OutputMessage::OutputMessage("[%s][%d]\n", g_szSource, 2381);
    return eResultOk;
}

TESSARO_C_END
