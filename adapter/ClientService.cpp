#include "adapter/ClientService.h"

#include "system/OutputMessage.h"

namespace
{
constexpr char g_szSource[] = "ClientService.cpp";
constexpr std::int32_t g_nInitialised = 2;
constexpr std::int32_t g_nStarted = 4;
constexpr std::int32_t g_nStopped = 5;

CAdapta_PlatformResource& Platform()
{
    return *Adapter_CommonKit::TSingletons<CAdapter_GlobalObject>::Instance().PlatformResource();
}
} // namespace

template class Adapter_CommonKit::TSingletons<CAdapter_GlobalObject>;

CAdapta_PlatformResource::CAdapta_PlatformResource() = default;

CAdapta_PlatformResource::CAdapta_PlatformResource(CAdapta_PlatformResource const&) = default;

CAdapta_PlatformResource::~CAdapta_PlatformResource() = default;

CAdapta_PlatformResource& CAdapta_PlatformResource::operator=(CAdapta_PlatformResource const&)
{
    return *this;
}

int CAdapta_PlatformResource::Initialize()
{
    return 0;
}

int CAdapta_PlatformResource::Start()
{
    return Initialize();
}

int CAdapta_PlatformResource::Stop()
{
    return Destroy();
}

int CAdapta_PlatformResource::Destroy()
{
    return 0;
}

CAdapta_ClientService::CAdapta_ClientService() : m_nState(g_nInitialised)
{
    Initialize();
}

CAdapta_ClientService::CAdapta_ClientService(CAdapta_ClientService const&)
{
    Initialize();
}

CAdapta_ClientService::~CAdapta_ClientService()
{
    Destroy();
}

CAdapta_ClientService& CAdapta_ClientService::operator=(CAdapta_ClientService const&)
{
    return *this;
}

int CAdapta_ClientService::Initialize()
{
    m_nState = g_nInitialised;
    return 0;
}

int CAdapta_ClientService::Start()
{
    if (Platform().Start() != 0)
    {
        DiagnosticLine(g_szSource, "Start", 59);
        return 1;
    }
    m_nState = g_nStarted;
    return 0;
}

int CAdapta_ClientService::Stop()
{
    m_nState = g_nStopped;
    if (Platform().Stop() != 0)
    {
        DiagnosticLine(g_szSource, "Stop", 87);
    }
    return 0;
}

int CAdapta_ClientService::Destroy()
{
    m_nState = g_nInitialised;
    return 0;
}

int CAdapta_ClientService::Status() const
{
    return m_nState == g_nStarted ? 0 : 1;
}

CAdapter_GlobalObject::CAdapter_GlobalObject() = default;

CAdapter_GlobalObject::~CAdapter_GlobalObject() = default;

CAdapter_GlobalObject& CAdapter_GlobalObject::operator=(CAdapter_GlobalObject const&)
{
    return *this;
}

CAdapta_PlatformResource* CAdapter_GlobalObject::PlatformResource()
{
    return &m_tPlatformResource;
}

CAdapta_ClientService* CAdapter_GlobalObject::ClientService()
{
    return &m_tClientService;
}

Adapter_ProtocolSet::CClientProtocolSet* CAdapter_GlobalObject::ProtocolResource()
{
    return &m_tProtocolResource;
}
