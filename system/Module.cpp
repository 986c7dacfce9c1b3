#include "system/Module.h"

#include "system/OutputMessage.h"

#include <cerrno>
#include <dlfcn.h>

namespace Adapter_System
{
namespace
{
constexpr char g_szSource[] = "Module.cpp";
}

CModule::CModule()
{
    Initialize();
}

CModule::CModule(CModule const&)
{
    Initialize();
}

CModule::~CModule()
{
    Close();
}

CModule& CModule::operator=(CModule const&)
{
    return *this;
}

int CModule::Initialize()
{
    m_hModule = nullptr;
    return 0;
}

int CModule::Open(char const* szPath)
{
    if (!szPath)
    {
        DiagnosticLine(g_szSource, "Open", 50);
        return 1;
    }
    errno = 0; // a failure that sets no error number must not report an older one
    m_hModule = dlopen(szPath, RTLD_LAZY);
    if (!m_hModule)
    {
        SystemErrorLine(g_szSource, "Open", 60);
        return 1;
    }
    return 0;
}

int CModule::Export(char const* szName, void*& pAddress)
{
    if (!szName || !m_hModule)
    {
        DiagnosticLine(g_szSource, "Export", 70);
        return 1;
    }
    pAddress = dlsym(m_hModule, szName);
    if (!pAddress)
    {
        DiagnosticLine(g_szSource, "Export", 80, szName);
        return 1;
    }
    return 0;
}

int CModule::Close()
{
    if (m_hModule)
    {
        dlclose(m_hModule);
        m_hModule = nullptr;
    }
    return 0;
}
} // namespace Adapter_System
