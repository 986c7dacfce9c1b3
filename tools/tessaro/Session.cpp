#include "tools/tessaro/Session.h"

#include "adapter/Globals.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Password.h"

#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <mutex>

namespace tessaro
{
namespace
{
constexpr unsigned int g_dwMaxStreams = 256;
} // namespace

CService::CService()
{
    if (m_nStarted++ == 0)
    {
        ClientAdapter_Start(g_dwMaxStreams);
    }
}

CService::~CService()
{
    if (--m_nStarted > 0)
    {
        return;
    }
    if (m_tInserted.contains(eProtocolPrivate))
    {
        g_cProtocolSet.Stop(eProtocolPrivate); // the library doesn't by itself
    }
    ClientAdapter_Stop();
    m_tInserted.clear();
}

void CService::Insert(eProtocolType eProtocol, std::string const& strPlugin)
{
    if (m_tInserted[eProtocol] == strPlugin)
    {
        return;
    }
    g_cProtocolSet.Stop(eProtocol);
    g_cProtocolSet.RemoveProtocol(eProtocol);
    Check(g_cProtocolSet.InsertProtocol(eProtocol, strPlugin.c_str()), "loading " + strPlugin);
    Check(g_cProtocolSet.Start(eProtocol), "starting " + strPlugin);
    m_tInserted[eProtocol] = strPlugin;
    if (eProtocol == eProtocolRTSP)
    {
        g_cProtocolSet.SetMaxChannel(g_dwMaxStreams, eProtocolRTSP);
    }
}

tagUserLoginPara LoginRecord(tagContext const& tContext, tagAddress const& tAddress)
{
    tagUserLoginPara tLogin{};
    tAddress.strHost.copy(tLogin.szAddress, sizeof tLogin.szAddress - 1);
    tAddress.strUser.copy(tLogin.szUserName, sizeof tLogin.szUserName - 1);
    tLogin.dwPort = tAddress.dwPort;
    tLogin.dwTimeoutMs = tContext.dwTimeoutMs;
    if (!tAddress.strUser.empty())
    {
        AskPassword(tContext.strPasswordFile, tAddress.strUser + " at " + tAddress.strText)
            .copy(tLogin.szPassword, sizeof tLogin.szPassword - 1);
    }
    return tLogin;
}

CSession::CSession(tagContext& tContext, std::string const& strAddress) : m_tAddress(tagAddress::Parse(strAddress))
{
    tagUserLoginPara tLogin = LoginRecord(tContext, m_tAddress);
    std::string strPlugin = tContext.strPlugin;
    if (strPlugin.empty() && m_tAddress.eProtocol == eProtocolPrivate)
    {
        char const* const szPlugin = getenv("TESSARO_PRIVATE_PLUGIN");
        strPlugin = szPlugin ? szPlugin : "libvornclient.so";
    }
    if (!strPlugin.empty())
    {
        m_tService.Insert(m_tAddress.eProtocol, strPlugin);
    }
    const int nResult = ClientAdapter_UserLogin(&m_nLogin, m_tAddress.eProtocol, &tLogin);
    explicit_bzero(tLogin.szPassword, sizeof tLogin.szPassword);
    Check(nResult, "logging in to " + m_tAddress.strText);
}

CSession::~CSession()
{
    if (m_nLogin >= 0)
    {
        ClientAdapter_UserLogout(m_nLogin);
    }
}

void CSession::NeedsDevice(char const* szWhat) const
{
    if (IsRtsp())
    {
        throw CFailure(eExitUnsupported, std::string("an RTSP address is a stream, which has no ") + szWhat);
    }
}

int CSession::ReadBlock(eConfigType eType, unsigned int dwIndex, unsigned int dwStream, void* pRecord,
                        std::size_t nRecord) const
{
    const auto pBlock = std::make_unique<tagConfigInformationV2>();
    pBlock->type = eType;
    pBlock->index = dwIndex;
    pBlock->extra[1] = dwStream;
    const int nResult = ClientAdapter_GetConfigV2(m_nLogin, pBlock.get());
    if (nResult == eResultOk)
    {
        std::memcpy(pRecord, pBlock->data, nRecord);
    }
    return nResult;
}

int CSession::WriteBlock(eConfigType eType, unsigned int dwIndex, unsigned int dwStream, void const* pRecord,
                         std::size_t nRecord) const
{
    const auto pBlock = std::make_unique<tagConfigInformationV2>();
    pBlock->type = eType;
    pBlock->index = dwIndex;
    pBlock->extra[1] = dwStream;
    std::memcpy(pBlock->data, pRecord, nRecord);
    return ClientAdapter_SetConfigV2(m_nLogin, pBlock.get());
}

unsigned int CSession::Channels() const
{
    tagConfigIdentity tIdentity{};
    const bool bKnown = !IsRtsp() && Read(eConfigIdentity, 0, tIdentity) == eResultOk;
    return bKnown && tIdentity.dwChannels > 0 ? tIdentity.dwChannels : 1;
}

int CMedia::Shut()
{
    const int nId = m_nId;
    m_nId = -1;
    return nId < 0 ? static_cast<int>(eResultUnknownMedia) : m_pfnClose(nId);
}

// Stays for ever: an event may be on its way when the subscription ends.
struct CEventSubscription::tagState
{
    std::mutex tMutex;
    Handler fnHandler; // null: ended
};

CEventSubscription::CEventSubscription(int nLogin, unsigned long dwMask, Handler fnHandler)
    : m_nLogin(nLogin), m_tState(
                            []() -> tagState&
                            {
                                static std::list<tagState>& s_tAll = *new std::list<tagState>;
                                return s_tAll.emplace_back();
                            }())
{
    m_tState.fnHandler = std::move(fnHandler);
    m_nResult = ClientAdapter_SubscribeEvent(
        nLogin, dwMask,
        [](void*, unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3, unsigned long dwWord4,
           unsigned long dwUser)
        {
            auto& tState = *reinterpret_cast<tagState*>(dwUser);
            const std::lock_guard tLock(tState.tMutex);
            if (tState.fnHandler)
            {
                tState.fnHandler(dwEvent, dwWord2, dwWord3, dwWord4);
            }
            return 0;
        },
        reinterpret_cast<unsigned long>(&m_tState));
}

CEventSubscription::~CEventSubscription()
{
    ClientAdapter_UnSubscribeEvent(m_nLogin, 0);
    const std::lock_guard tLock(m_tState.tMutex);
    m_tState.fnHandler = nullptr;
}
} // namespace tessaro
