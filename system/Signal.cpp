#include "system/Signal.h"

#include "system/OutputMessage.h"
#include "system/ThreadResult.h"

#include <cerrno>
#include <ctime>
#include <sys/time.h>

namespace Adapter_System
{
namespace
{
constexpr char g_szSource[] = "Signal.cpp";

timespec Deadline(unsigned long dwMilliseconds)
{
    constexpr long nSecond = 1'000'000'000; // nanoseconds
    timeval tNow{};
    gettimeofday(&tNow, nullptr);
    timespec tDeadline{};
    tDeadline.tv_sec = tNow.tv_sec + static_cast<time_t>(dwMilliseconds / 1000);
    tDeadline.tv_nsec = tNow.tv_usec * 1000 + static_cast<long>(dwMilliseconds % 1000) * 1'000'000;
    if (tDeadline.tv_nsec >= nSecond)
    {
        tDeadline.tv_nsec -= nSecond;
        ++tDeadline.tv_sec;
    }
    return tDeadline;
}
} // namespace

// NOLINTBEGIN(cppcoreguidelines-pro-type-member-init): create initialises the system's objects.
CSignal::CSignal() = default;

CSignal::CSignal(CSignal const& tOther) : m_nSignalled(tOther.m_nSignalled) {}
// NOLINTEND(cppcoreguidelines-pro-type-member-init)

CSignal::~CSignal() = default;

CSignal& CSignal::operator=(CSignal const&)
{
    return *this;
}

int CSignal::create()
{
    if (m_bCreated)
    {
        DiagnosticLine(g_szSource, "create", 103, "Warning");
    }
    m_bCreated = false;
    if (const int nError = pthread_mutex_init(&m_tMutex, nullptr); nError != 0)
    {
        return ThreadResult(nError, g_szSource, "create", 107);
    }
    if (const int nError = pthread_cond_init(&m_tCondition, nullptr); nError != 0)
    {
        pthread_mutex_destroy(&m_tMutex);
        return ThreadResult(nError, g_szSource, "create", 113);
    }
    m_nSignalled = 0;
    m_bCreated = true;
    return 0;
}

int CSignal::destroy()
{
    if (m_bCreated)
    {
        m_bCreated = false;
        pthread_mutex_destroy(&m_tMutex);
        pthread_cond_destroy(&m_tCondition);
    }
    return 0;
}

int CSignal::signal()
{
    if (!m_bCreated)
    {
        DiagnosticLine(g_szSource, "signal", 138);
        return 1;
    }
    pthread_mutex_lock(&m_tMutex);
    m_nSignalled = 1;
    pthread_cond_signal(&m_tCondition);
    pthread_mutex_unlock(&m_tMutex);
    return 0;
}

int CSignal::wait(unsigned long dwMilliseconds)
{
    if (!m_bCreated)
    {
        DiagnosticLine(g_szSource, "wait", 153);
        return 1;
    }
    const bool bForEver = dwMilliseconds == Infinite;
    const timespec tDeadline = bForEver ? timespec{} : Deadline(dwMilliseconds); // spurious wake-ups don't move it
    int nError = 0;
    pthread_mutex_lock(&m_tMutex);
    while (nError == 0 && m_nSignalled <= 0)
    {
        nError = bForEver ? pthread_cond_wait(&m_tCondition, &m_tMutex)
                          : pthread_cond_timedwait(&m_tCondition, &m_tMutex, &tDeadline);
    }
    if (nError == 0)
    {
        m_nSignalled = 0;
    }
    pthread_mutex_unlock(&m_tMutex);
    return nError == ETIMEDOUT && !bForEver ? 9 : ThreadResult(nError, g_szSource, "wait", bForEver ? 164 : 190);
}
} // namespace Adapter_System
