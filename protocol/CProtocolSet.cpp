#include "protocol/CProtocolSet.h"

#include "protocol/CreateBinding.h"
#include "system/OutputMessage.h"

#include <utility>

namespace Adapter_ProtocolSet
{
namespace
{
constexpr char g_szSource[] = "CProtocolSet.cpp";
constexpr std::uint32_t g_dwEmpty = 1;
constexpr std::uint32_t g_dwInserted = 2;

struct tagProtocolName
{
    int nLine;
    char const* szCreate;
};
constexpr tagProtocolName g_atCreate[] = {
    {51, "Create CProtocolPrivate\n"},
    {44, "Create CProtocolOnvif\n"},
    {58, "Create CProtocolRTSP\n"},
    {65, "Create CProtocolVTQ\n"},
};

bool Valid(eProtocolType eType)
{
    return static_cast<unsigned>(eType) <= static_cast<unsigned>(eProtocolVTQ);
}

[[gnu::cold, gnu::noinline]] int Failed(char const* szFunction, int nLine, int nResult = eResultNoProtocol)
{
    DiagnosticLine(g_szSource, szFunction, nLine);
    return nResult;
}
} // namespace

CClientProtocolSet::CClientProtocolSet()
    : m_dwState{g_dwEmpty, g_dwEmpty, g_dwEmpty, g_dwEmpty}, m_pBinding{nullptr, nullptr, nullptr, nullptr}
{
}

CClientProtocolSet::~CClientProtocolSet() = default;

int CClientProtocolSet::InsertProtocol(eProtocolType eType, char const* szPath)
{
    if (!Valid(eType) || !szPath)
    {
        return Failed("InsertProtocol", 30);
    }
    if (m_dwState[eType] == g_dwInserted)
    {
        return Failed("InsertProtocol", 35, eResultAlreadyInserted);
    }
    m_dwState[eType] = g_dwInserted;
    DiagnosticLine(g_szSource, "InsertProtocol", g_atCreate[eType].nLine, g_atCreate[eType].szCreate);
    m_pBinding[eType] = CreateBinding(eType, szPath).release();
    if (!m_pBinding[eType])
    {
        m_dwState[eType] = g_dwEmpty;
        return Failed("InsertProtocol", 30);
    }
    return eResultOk;
}

int CClientProtocolSet::RemoveProtocol(eProtocolType eType)
{
    if (!Valid(eType) || m_dwState[eType] == g_dwEmpty)
    {
        return Failed("RemoveProtocol", 76);
    }
    m_dwState[eType] = g_dwEmpty;
    // Out of the table first: a plug-in that calls in from its own end finds nothing, not what is being destroyed.
    delete std::exchange(m_pBinding[eType], nullptr);
    return eResultOk;
}

int CClientProtocolSet::RemoveAllProtocol()
{
    for (const eProtocolType eType : {eProtocolPrivate, eProtocolOnvif, eProtocolRTSP, eProtocolVTQ})
    {
        if (m_dwState[eType] == g_dwInserted)
        {
            RemoveProtocol(eType);
        }
    }
    return eResultOk;
}

inline CClientProtocolBase* CClientProtocolSet::Bound(eProtocolType eType) const
{
    return Valid(eType) ? m_pBinding[eType] : nullptr;
}

CClientProtocolBase const* BindingOf(CClientProtocolSet const& tSet, eProtocolType eType)
{
    return tSet.Bound(eType);
}

namespace
{
// What an operation does with the binding it found: calls it. Three do more.
template <auto Op, class... A>
inline int Run(tagCall<Op>, IProtocol*, CClientProtocolBase& tBinding, eProtocolType, A... tArguments)
{
    return (tBinding.*Op)(tArguments...);
}

int Run(tagCall<&CClientProtocolBase::Start>, IProtocol* pProtocols, CClientProtocolBase& tBinding, eProtocolType)
{
    const int nResult = tBinding.Start();
    if (nResult == eResultOk)
    {
        tBinding.SetProtocolInterface(pProtocols);
    }
    return nResult;
}

int Run(tagCall<&CClientProtocolBase::UserLogin>, IProtocol*, CClientProtocolBase& tBinding, eProtocolType eType,
        void** phLogin, tagUserLoginPara* ptPara)
{
    CAdapter_OutputMessage::OutputMessage("UserLogin:eProtocol:%d, %p\n", static_cast<int>(eType),
                                          static_cast<void*>(&tBinding));
    return tBinding.UserLogin(phLogin, ptPara);
}

int Run(tagCall<&CClientProtocolBase::SubscribeEvent>, IProtocol*, CClientProtocolBase& tBinding, eProtocolType,
        void* hLogin, unsigned long dwEvent, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    CAdapter_OutputMessage::OutputMessage("==SubscribeEvent:%p %lu, %p, %lu\n", hLogin, dwEvent,
                                          reinterpret_cast<void*>(pfnEvent), dwUser);
    return tBinding.SubscribeEvent(hLogin, dwEvent, pfnEvent, dwUser);
}
} // namespace

#define OPERATION(line, name, ...)                                                                                     \
    int CClientProtocolSet::name(ROUTED(name, __VA_ARGS__))                                                            \
    {                                                                                                                  \
        CClientProtocolBase* const pBinding = Bound(eType);                                                            \
        if (!pBinding) [[unlikely]]                                                                                    \
        {                                                                                                              \
            return Failed(#name, line);                                                                                \
        }                                                                                                              \
        return Run(tagCall<&CClientProtocolBase::name>{}, this, *pBinding, eType __VA_OPT__(,) __VA_ARGS__);           \
    }
#define UNROUTED_OPERATION(...)
#include "protocol/operations.def"
} // namespace Adapter_ProtocolSet
