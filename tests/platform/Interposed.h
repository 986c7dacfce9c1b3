#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <sys/time.h>

/// Stands between the library and the C library, on the calling thread, while it lives: a call fails, or the clock
/// stands still.
class CInterposed
{
public:
    /// szCall fails with nError.
    CInterposed(char const* szCall, int nError) : m_strCall(szCall), m_nError(nError) { g_ptCurrent = this; }
    /// gettimeofday and time tell tNow; a timed wait and select end at once, and are kept.
    explicit CInterposed(timeval tNow) : m_tNow(tNow) { g_ptCurrent = this; }
    ~CInterposed() { g_ptCurrent = nullptr; }
    CInterposed(CInterposed const&) = delete;
    CInterposed& operator=(CInterposed const&) = delete;

    timeval tSlept{};     ///< how long select would have slept
    timespec tDeadline{}; ///< of the last timed wait

    /// For the call szCall itself: the error that it is to fail with, 0 for none.
    static int ErrorOf(char const* szCall)
    {
        return g_ptCurrent && g_ptCurrent->m_strCall == szCall ? g_ptCurrent->m_nError : 0;
    }
    static CInterposed* WithClock() { return g_ptCurrent && g_ptCurrent->m_tNow ? g_ptCurrent : nullptr; }
    timeval Now() const { return *m_tNow; }

private:
    static inline thread_local CInterposed* g_ptCurrent = nullptr;
    std::string m_strCall;
    int m_nError = 0;
    std::optional<timeval> m_tNow;
};
