// Start, stop and logins.

#include "onvif/Xml.h"
#include "plugins/common/Text.h"
#include "plugins/onvif/Events.h"
#include "plugins/onvif/Identity.h"
#include "plugins/onvif/Nearby.h"
#include "plugins/onvif/Operations.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace onvifclient
{
namespace
{
using std::chrono::milliseconds;

constexpr auto g_tEndTime = milliseconds(1800); // of the 2 s that stopping may take

std::mutex g_tStartMutex;
std::mutex g_tEngineMutex;
std::shared_ptr<rtsp::CEngine> g_pEngine; // from its first use on

std::shared_ptr<rtsp::CEngine> TakeEngine()
{
    const std::lock_guard tLock(g_tEngineMutex);
    return std::exchange(g_pEngine, nullptr);
}

// A process that ends without a stop: no callback runs any more.
void OnExit()
{
    if (Face().bStarted.exchange(false))
    {
        Http().Stop();
        if (const auto pEngine = TakeEngine())
        {
            pEngine->Freeze();
        }
    }
}

int MakeOptions(tagUserLoginPara const& tPara, onvif::tagClientOptions& tOptions)
{
    const auto tAddress = onvif::ParseDevice(plugin::Text(tPara.szAddress), tPara.dwPort);
    if (!tAddress)
    {
        return eResultBadAddress;
    }
    tOptions.tAddress = *tAddress;
    tOptions.strUser = plugin::Text(tPara.szUserName);
    tOptions.strPassword = plugin::Text(tPara.szPassword);
    tOptions.bCheckCertificate = Face().bCheckCertificates;
    if (tPara.dwTimeoutMs)
    {
        tOptions.tLoginLimit = tOptions.tLimit = milliseconds(tPara.dwTimeoutMs);
    }
    return eResultOk;
}
} // namespace

tagFace& Face()
{
    static tagFace& s_tFace = *new tagFace; // threads that go on at the end of the process look at it
    return s_tFace;
}

onvif::CHttp& Http()
{
    static onvif::CHttp& s_tHttp = *new onvif::CHttp;
    return s_tHttp;
}

std::shared_ptr<rtsp::CEngine> Engine()
{
    const std::lock_guard tLock(g_tEngineMutex);
    if (!g_pEngine && Face().bStarted)
    {
        g_pEngine = std::make_shared<rtsp::CEngine>();
    }
    return g_pEngine;
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
    Http().Start();
    static const bool s_bOnce = std::atexit(&OnExit) == 0; // behind OpenSSL's own, so that we are before it
    static_cast<void>(s_bOnce);
    Face().bStarted = true;
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::Stop>)
{
    const std::lock_guard tLock(g_tStartMutex);
    const auto tUntil = onvif::Clock::now() + g_tEndTime;
    Face().bStarted = false;
    Http().Stop();
    Nearby().Stop();
    bool bEnded = Face().tForcedOff.Set(nullptr) && Face().tProbe.Set(nullptr);
    for (auto const& pObject : Face().tHandles.TakeAll())
    {
        bEnded = pObject->Close() && bEnded;
    }
    if (const auto pEngine = TakeEngine())
    {
        pEngine->Stop(tUntil);
    }
    Face().pfnLog = nullptr;
    Face().pProtocols = nullptr;
    return Ended(bEnded);
}

// Whether the https devices of later logins must show who they are.
int Serve(tagCall<&CClientProtocolBase::SetMiscPara>, int, unsigned long dwType, void* pPara, unsigned long dwLength)
{
    if (dwType != eMiscCertificate)
    {
        return eResultNotSupported;
    }
    uint32_t dwWanted = 0;
    if (!pPara || dwLength != sizeof dwWanted)
    {
        return eResultBadArgument;
    }
    std::memcpy(&dwWanted, pPara, sizeof dwWanted);
    if (dwWanted > eRtspCertificateTrusted)
    {
        return eResultBadArgument;
    }
    Face().bCheckCertificates = dwWanted == eRtspCertificateTrusted;
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::GetMiscPara>, int, unsigned long dwType, void* pPara, unsigned long dwLength)
{
    if (dwType != eMiscCertificate)
    {
        return eResultNotSupported;
    }
    const uint32_t dwNow = Face().bCheckCertificates ? eRtspCertificateTrusted : eRtspCertificateAny;
    if (!pPara || dwLength != sizeof dwNow)
    {
        return eResultBadArgument;
    }
    std::memcpy(pPara, &dwNow, sizeof dwNow);
    return eResultOk;
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

bool CLogin::Close()
{
    std::map<std::type_index, std::shared_ptr<CPart>> apParts;
    {
        const std::lock_guard tLock(m_tMutex);
        apParts = m_apParts; // they stay as long as the login: streams still ask them
    }
    bool bEnded = true;
    for (auto const& [tType, pPart] : apParts)
    {
        bEnded = pPart->Close() && bEnded;
    }
    Client().Interrupt(eResultBadHandle);
    return bEnded;
}

void CLogin::Forget()
{
    std::map<std::type_index, std::shared_ptr<CPart>> apParts;
    {
        const std::lock_guard tLock(m_tMutex);
        apParts = m_apParts;
    }
    for (auto const& [tType, pPart] : apParts)
    {
        pPart->Forget();
    }
}

int Serve(tagCall<&CClientProtocolBase::UserLogin>, void** phLogin, tagUserLoginPara* ptPara)
{
    if (!phLogin || !ptPara || ptPara->szAddress[0] == '\0')
    {
        return eResultBadArgument;
    }
    onvif::tagClientOptions tOptions;
    if (const int nResult = MakeOptions(*ptPara, tOptions))
    {
        return nResult;
    }
    const std::string strWho = tOptions.tAddress.HostText() + ": login of " + tOptions.strUser;
    const auto pClient = std::make_shared<onvif::CClient>(Http(), std::move(tOptions));
    if (const int nResult = pClient->Login())
    {
        Log(5, strWho + " failed with " + std::to_string(nResult));
        return nResult;
    }
    const auto pLogin = std::make_shared<CLogin>(pClient);
    void* const hLogin = Face().tHandles.Add(pLogin);
    pLogin->m_hLogin = hLogin;
    pLogin->Part<CEvents>().Begin();
    *phLogin = hLogin;
    Log(6, strWho);
    return eResultOk;
}

namespace
{
// A negative result is the only failure of the login queries.
template <class F>
int LoginQuery(void* hLogin, F fnAnswer)
{
    return -With<CLogin>(hLogin, fnAnswer);
}

// "02:00:5e:10:00:01"; what stands behind it doesn't matter. False: it is no such thing.
bool ReadMac(std::string_view strText, unsigned char (&abyMac)[6])
{
    for (unsigned char& by : abyMac)
    {
        char const* const pcEnd = strText.data() + std::min<std::size_t>(strText.size(), 2);
        const auto tResult = std::from_chars(strText.data(), pcEnd, by, 16);
        strText.remove_prefix(static_cast<std::size_t>(tResult.ptr - strText.data()));
        const bool bLast = &by == std::end(abyMac) - 1;
        if (tResult.ec != std::errc() || (!bLast && !strText.starts_with(':')))
        {
            return false;
        }
        strText.remove_prefix(bLast ? 0 : 1);
    }
    return true;
}

int LevelOf(std::string_view strLevel)
{
    return strLevel == "Administrator" ? eUserAdministrator : strLevel == "Operator" ? eUserOperator : eUserViewer;
}

// Who may not read the list of users is no administrator. Whether he is an operator shows in what only operators may
// do; neither of these changes anything: one reads, and the other speaks of an output that no device has.
int LevelByTrying(CLogin const& tLogin)
{
    const std::string strNoOutput =
        onvif::CXmlWriter().Add("tds:RelayOutputToken", "no such output").Add("tds:LogicalState", "inactive").Take();
    for (auto const& [szName, strBody] :
         {std::pair{"GetIPAddressFilter", std::string()}, {"SetRelayOutputState", strNoOutput}})
    {
        const onvif::CAnswer tAnswer = tLogin.Call({onvif::eService::Device, szName, strBody});
        if (tAnswer || tAnswer.Result() == eResultWrongLogin)
        {
            return tAnswer ? eUserOperator : eUserViewer;
        }
    }
    return eUserOperator;
}

int AskLevel(CLogin const& tLogin, int& nLevel)
{
    std::string const& strUser = tLogin.Client().User();
    nLevel = eUserViewer;
    if (strUser.empty())
    {
        return eResultOk;
    }
    const onvif::CAnswer tAnswer = tLogin.Call({.szName = "GetUsers"});
    for (pugi::xml_node const& tUser : onvif::Children(tAnswer.Body(), "User"))
    {
        if (onvif::Text(tUser, "Username") == strUser)
        {
            nLevel = LevelOf(onvif::Text(tUser, "UserLevel"));
            return eResultOk;
        }
    }
    if (!tAnswer && tAnswer.Result() != eResultWrongLogin && tAnswer.Result() != eResultNotSupported &&
        tAnswer.Result() != eResultRefused)
    {
        return tAnswer.Result();
    }
    nLevel = LevelByTrying(tLogin);
    return eResultOk;
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::GetLoginLevel>, void* hLogin, int* pnLevel)
{
    return LoginQuery(hLogin,
                      [&](CLogin const& tLogin) -> int
                      { return pnLevel ? AskLevel(tLogin, *pnLevel) : int{eResultBadArgument}; });
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
                          int nResult = eResultOk;
                          const std::string strMac = AskMac(tLogin.Client(), nResult);
                          unsigned char abyMac[6];
                          if (nResult == eResultOk && !ReadMac(strMac, abyMac))
                          {
                              nResult = eResultNotSupported;
                          }
                          if (nResult == eResultOk)
                          {
                              std::memcpy(pbyMac, abyMac, sizeof abyMac);
                          }
                          return nResult;
                      });
}

int Serve(tagCall<&CClientProtocolBase::DeleteUserForceCB>, DeleteUserForceCallback pfnDelete, unsigned long dwUser)
{
    return Ended(Face().tForcedOff.Set(pfnDelete, dwUser));
}
} // namespace onvifclient
