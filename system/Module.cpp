#include "system/Module.h"

#include "system/OutputMessage.h"

#include <cerrno>
#include <dlfcn.h>

namespace Adapter_System
{
namespace
{
constexpr char g_szSource[] = "Module.cpp";

// Opening a library runs its constructors. dlopen's declaration promises for them that they don't throw; called through
// a pointer that makes no such promise, what they do throw can be caught. The dynamic loader isn't made for it: it
// stays locked for all threads but this one.
void* (*const volatile g_pfnOpen)(char const*, int) = dlopen;

void* OpenLibrary(char const* szPath)
{
    try
    {
        return g_pfnOpen(szPath, RTLD_LAZY);
    }
    catch (...)
    {
        return nullptr;
    }
}
} // namespace

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
    m_hModule = OpenLibrary(szPath);
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
