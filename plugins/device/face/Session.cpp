// Start, stop, logins and their events.

#include "plugins/device/Discovery.h"
#include "plugins/device/Fleet.h"
#include "plugins/device/Text.h"
#include "plugins/device/face/Answers.h"
#include "plugins/device/face/Operations.h"

#include <cstdlib>
#include <stdexcept>

namespace device
{
namespace
{
std::mutex g_tStartMutex;

// The environment's fleet, once in a process: what its devices have become outlives a stop.
int LoadEnvironment()
{
    static bool s_bLoaded = false;
    char const* const szPath = std::getenv("TESSARO_FLEET"); // NOLINT(concurrency-mt-unsafe)
    if (s_bLoaded || !szPath || !*szPath)
    {
        return eResultOk;
    }
    try
    {
        Fleet().Load(szPath);
    }
    catch (std::runtime_error const& tError)
    {
        std::fprintf(stderr, "TESSARO_FLEET: %s\n", tError.what());
        return eResultBadArgument;
    }
    s_bLoaded = true;
    return eResultOk;
}

void SaveAll()
{
    for (auto const& pDevice : Fleet().All())
    {
        const CDevice::CLock tLock(*pDevice);
        pDevice->Store().Save();
    }
}

// A process that ends without a stop: no callback runs any more.
[[gnu::destructor]] void OnExit()
{
    if (Face().bStarted.exchange(false))
    {
        MediaStop();
        TimeWorker().Stop();
        DeliveryWorker().Stop();
        SaveAll();
    }
}

unsigned long EventBit(eDeviceEvent eEvent)
{
    return TESSARO_EVENT(eEvent);
}

// A negative result is the only failure of the login queries.
template <class F>
int LoginQuery(void* hLogin, F fnAnswer)
{
    return -AskWith<CLogin>(hLogin, eUserViewer, fnAnswer);
}
} // namespace

tagFace& Face()
{
    static tagFace& s_tFace = *new tagFace; // threads that go on at the end of the process look at it
    return s_tFace;
}

void Log(unsigned long dwLevel, std::string const& strText)
{
    if (const auto pfnLog = Face().pfnLog.load())
    {
        pfnLog(dwLevel, strText.c_str());
    }
}

// --- start and stop --------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::Start>)
{
    const std::lock_guard tLock(g_tStartMutex);
    if (Face().bStarted)
    {
        return eResultOk;
    }
    TimeWorker().Start();
    DeliveryWorker().Start();
    CDevice::EndCalls(false);
    Discovery().Start(g_eProtocol);
    if (const int nResult = LoadEnvironment())
    {
        TimeWorker().Stop();
        DeliveryWorker().Stop();
        return nResult;
    }
    Face().bStarted = true;
    for (auto const& pDevice : Fleet().All())
    {
        pDevice->Tick();
    }
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::Stop>)
{
    const std::lock_guard tLock(g_tStartMutex);
    Face().bStarted = false;
    CDevice::EndCalls(true);
    const auto apDevices = Fleet().All();
    for (auto const& pDevice : apDevices)
    {
        pDevice->Interrupt();
    }
    Discovery().Stop();
    bool bEnded = Face().tForcedOff.Set(nullptr) && Face().tProbe.Set(nullptr) && Face().tRegister.Set(nullptr);
    for (auto const& pObject : Face().tHandles.TakeAll())
    {
        bEnded = pObject->Close() && bEnded;
    }
    MediaStop();
    TimeWorker().Stop();
    DeliveryWorker().Stop();
    SaveAll();
    Face().pfnLog = nullptr;
    return Ended(bEnded);
}

int Serve(tagCall<&CClientProtocolBase::SetProtocolInterface>, IProtocol* pProtocols)
{
    Face().pProtocols = pProtocols;
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::SetCallbackFunc>, unsigned long dwType, void* pFunction)
{
    if (dwType != eCallbackLog)
    {
        return eResultNotSupported;
    }
    Face().pfnLog = reinterpret_cast<PluginLogCallback>(pFunction);
    return eResultOk;
}

// --- logins ----------------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::UserLogin>, void** phLogin, tagUserLoginPara* ptPara)
{
    if (!phLogin || !ptPara || ptPara->szAddress[0] == '\0' || ptPara->szUserName[0] == '\0')
    {
        return eResultBadArgument;
    }
    const std::string strAddress = Text(ptPara->szAddress);
    const auto pDevice = Fleet().Find(strAddress, ptPara->dwPort);
    if (!pDevice)
    {
        return eResultUnreachable;
    }
    if (const int nResult = pDevice->Admit(nullptr, ptPara->dwTimeoutMs ? ptPara->dwTimeoutMs : 10000))
    {
        return nResult;
    }
    const auto pSession = std::make_shared<CLoginSession>(
        tagCaller{Text(ptPara->szUserName), 0, ptPara->dwTimeoutMs ? ptPara->dwTimeoutMs : 5000});
    if (const int nResult = pDevice->Login(pSession, Text(ptPara->szPassword)))
    {
        Log(5, strAddress + ": login of " + pSession->Caller().strUser + " refused");
        return nResult;
    }
    *phLogin = Face().tHandles.Add(std::make_shared<CLogin>(pDevice, pSession));
    pSession->m_hLogin = *phLogin;
    Log(6, strAddress + ": " + pSession->Caller().strUser + " logged in");
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::GetLoginLevel>, void* hLogin, int* pnLevel)
{
    return LoginQuery(hLogin,
                      [&](CLogin const& tLogin) -> int
                      {
                          if (!pnLevel)
                          {
                              return eResultBadArgument;
                          }
                          *pnLevel = static_cast<int>(tLogin.Session().Level());
                          return eResultOk;
                      });
}

int Serve(tagCall<&CClientProtocolBase::GetLoginMac>, void* hLogin, unsigned char* pbyMac, int nLength)
{
    return LoginQuery(hLogin,
                      [&](CLogin const& tLogin) -> int
                      {
                          if (!pbyMac || nLength < 6)
                          {
                              return eResultBadArgument;
                          }
                          const CDevice::CLock tLock(tLogin.Device());
                          const std::string strMac = tLogin.Device().Part<CConfiguration>().Mac();
                          for (std::size_t i = 0; i < 6; ++i)
                          {
                              pbyMac[i] = static_cast<unsigned char>(std::stoul(strMac.substr(i * 3, 2), nullptr, 16));
                          }
                          return eResultOk;
                      });
}

int Serve(tagCall<&CClientProtocolBase::GetLoginStatus>, void* hLogin, int*)
{
    const auto pLogin = Face().tHandles.Find<CLogin>(hLogin);
    return !pLogin                     ? -int{eResultBadHandle}
           : pLogin->Session().Ended() ? static_cast<int>(eLoginEnded)
           : pLogin->Device().IsUp()   ? static_cast<int>(eLoginAlive)
                                       : static_cast<int>(eLoginLost);
}

// --- events ----------------------------------------------------------------------------------------------------------

void CLoginSession::OnEvent(tagDeviceEvent const& tEvent)
{
    const unsigned long dwEvents = m_dwEvents;
    if (dwEvents == 0 || (dwEvents & EventBit(tEvent.eEvent)) != 0)
    {
        const auto dwWord3 = tEvent.pDetail ? reinterpret_cast<unsigned long>(tEvent.pDetail.get())
                                            : static_cast<unsigned long>(tEvent.dwWord3);
        m_tEvents.Call(m_hLogin.load(), static_cast<unsigned long>(tEvent.eEvent),
                       static_cast<unsigned long>(tEvent.dwWord2), dwWord3, static_cast<unsigned long>(tEvent.dwTime));
    }
}

void CLoginSession::OnForcedOff()
{
    Face().tForcedOff.Call(m_hLogin.load());
}

int Serve(tagCall<&CClientProtocolBase::SubscribeEvent>, void* hLogin, unsigned long dwEvent,
          DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    return AskWith<CLogin>(hLogin, eUserViewer,
                           [&](CLogin const& tLogin)
                           {
                               tLogin.Events().m_dwEvents = dwEvent;
                               const bool bEnded = tLogin.Events().m_tEvents.Set(pfnEvent, dwUser);
                               tLogin.Device().ReportStates(tLogin.Session());
                               return Ended(bEnded);
                           });
}

// What is left of a subscription goes on.
int Serve(tagCall<&CClientProtocolBase::UnSubscribeEvent>, void* hLogin, unsigned long dwEvent)
{
    return With<CLogin>(hLogin,
                        [&](CLogin const& tLogin) -> int
                        {
                            CLoginSession& tEvents = tLogin.Events();
                            constexpr unsigned long dwAll = (1UL << (eEventOther - eEventMotion + 1)) - 1;
                            const unsigned long dwHad = tEvents.m_dwEvents ? tEvents.m_dwEvents.load() : dwAll;
                            const unsigned long dwLeft = dwEvent == 0 ? 0 : dwHad & ~dwEvent;
                            tEvents.m_dwEvents = dwLeft;
                            return dwLeft == 0 ? Ended(tEvents.m_tEvents.Set(nullptr)) : int{eResultOk};
                        });
}

int Serve(tagCall<&CClientProtocolBase::DeleteUserForceCB>, DeleteUserForceCallback pfnDelete, unsigned long dwUser)
{
    return Ended(Face().tForcedOff.Set(pfnDelete, dwUser));
}
} // namespace device
