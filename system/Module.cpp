#include "system/Module.h"

#include "system/OutputMessage.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>

namespace Adapter_System
{
namespace
{
constexpr char g_szSource[] = "Module.cpp";

std::atomic<char const*> g_szOpening = nullptr;
std::atomic<std::terminate_handler> g_pfnTerminate = nullptr; // what it is while no library is being opened

[[noreturn]] void EndWhileOpening()
{
    if (char const* const szPath = g_szOpening)
    {
        CAdapter_OutputMessage::OutputMessage("[Tessaro] %s %s %d An exception ended the process while it opened %s.\n",
                                              g_szSource, "Open", 60, szPath);
        std::fflush(stdout);
    }
    g_pfnTerminate.load()();
    std::abort();
}

// dlopen's declaration promises not to throw; a call through a pointer that makes no such promise has a place
// where an exception ends.
void* (*const volatile g_pfnOpen)(char const*, int) = dlopen;

// Opening a library runs its constructors. An exception that one of them throws ends the process, here or inside the
// dynamic loader: the loader can't be left that way, it would stay locked for all other threads.
void* OpenLibrary(char const* szPath) noexcept
{
    const std::terminate_handler pfnBefore = std::set_terminate(&EndWhileOpening);
    if (pfnBefore != &EndWhileOpening) // else a constructor opens a library in turn
    {
        g_pfnTerminate = pfnBefore;
    }
    char const* const szBefore = g_szOpening.exchange(szPath);
    void* const hModule = g_pfnOpen(szPath, RTLD_LAZY);
    g_szOpening = szBefore;
    std::set_terminate(pfnBefore);
    return hModule;
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
