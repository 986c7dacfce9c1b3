#include "system/Mutex.h"

#include "system/OutputMessage.h"
#include "system/ThreadResult.h"

#include <cerrno>

namespace Adapter_System
{
namespace
{
constexpr char g_szSource[] = "Mutex.cpp";

int CreateRecursive(pthread_mutex_t& tMutex, pthread_mutexattr_t& tAttributes)
{
    int nError = pthread_mutexattr_init(&tAttributes);
    if (nError != 0)
    {
        return nError;
    }
    nError = pthread_mutexattr_settype(&tAttributes, PTHREAD_MUTEX_RECURSIVE);
    if (nError == 0)
    {
        nError = pthread_mutex_init(&tMutex, &tAttributes);
    }
    if (nError != 0)
    {
        pthread_mutexattr_destroy(&tAttributes);
    }
    return nError;
}
} // namespace

// NOLINTBEGIN(cppcoreguidelines-pro-type-member-init): create initialises the system's objects.
CMutex::CMutex() = default;

CMutex::CMutex(CMutex const&) : CMutex() {}
// NOLINTEND(cppcoreguidelines-pro-type-member-init)

CMutex::~CMutex() = default;

CMutex& CMutex::operator=(CMutex const&)
{
    return *this;
}

int CMutex::create()
{
    if (m_bCreated)
    {
        DiagnosticLine(g_szSource, "create", 122, "Warning");
    }
    const int nError = CreateRecursive(m_tMutex, m_tAttributes);
    m_bCreated = nError == 0;
    return ThreadResult(nError, g_szSource, "create", 137);
}

int CMutex::destroy()
{
    if (m_bCreated)
    {
        m_bCreated = false;
        pthread_mutex_destroy(&m_tMutex);
        pthread_mutexattr_destroy(&m_tAttributes);
    }
    return 0;
}

int CMutex::lock()
{
    if (!m_bCreated)
    {
        DiagnosticLine(g_szSource, "lock", 158);
        return 1;
    }
    return ThreadResult(pthread_mutex_lock(&m_tMutex), g_szSource, "lock", 164);
}

int CMutex::trylock()
{
    if (!m_bCreated)
    {
        DiagnosticLine(g_szSource, "trylock", 175);
        return 1;
    }
    const int nError = pthread_mutex_trylock(&m_tMutex);
    return nError == EBUSY ? 9 : ThreadResult(nError, g_szSource, "trylock", 187);
}

int CMutex::unlock()
{
    if (!m_bCreated)
    {
        DiagnosticLine(g_szSource, "unlock", 196);
        return 1;
    }
    return ThreadResult(pthread_mutex_unlock(&m_tMutex), g_szSource, "unlock", 201);
}

CGuard::CGuard(CMutex* ptMutex) : m_ptMutex(ptMutex)
{
    if (m_ptMutex)
    {
        m_ptMutex->lock();
    }
}

CGuard::CGuard(CGuard const& tOther)
    : m_ptMutex(tOther.m_ptMutex && tOther.m_ptMutex->lock() == 0 ? tOther.m_ptMutex : nullptr)
{
}

CGuard::~CGuard()
{
    if (m_ptMutex)
    {
        m_ptMutex->unlock();
    }
}

CGuard& CGuard::operator=(CGuard const&)
{
    return *this;
}
} // namespace Adapter_System
