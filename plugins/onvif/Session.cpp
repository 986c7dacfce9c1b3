// Start, stop and logins.

#include "plugins/common/Text.h"
#include "plugins/onvif/Operations.h"

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
[[gnu::destructor]] void OnExit()
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
    Face().bStarted = true;
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::Stop>)
{
    const std::lock_guard tLock(g_tStartMutex);
    const auto tUntil = onvif::Clock::now() + g_tEndTime;
    Face().bStarted = false;
    Http().Stop();
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
    const std::lock_guard tLock(m_tMutex);
    for (auto const& [tType, pPart] : m_apParts)
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
    *phLogin = hLogin;
    Log(6, strWho);
    return eResultOk;
}

int Serve(tagCall<&CClientProtocolBase::DeleteUserForceCB>, DeleteUserForceCallback pfnDelete, unsigned long dwUser)
{
    return Ended(Face().tForcedOff.Set(pfnDelete, dwUser));
}
} // namespace onvifclient
