#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <sys/time.h>
#include <vector>

/// Stands between the library and the C library, on the calling thread, while it lives: calls are counted, one of them
/// fails, or the clock stands still.
class CInterposed
{
public:
    /// The nFailing-th call of all, from 0 up, fails; a negative number: none.
    explicit CInterposed(int nFailing) : m_nFailing(nFailing) { g_ptCurrent = this; }
    /// szCall fails with nError.
    CInterposed(char const* szCall, int nError) : m_strCall(szCall), m_nError(nError) { g_ptCurrent = this; }
    /// gettimeofday and time tell tNow; select tells in Slept how long it would have slept.
    explicit CInterposed(timeval tNow) : m_tNow(tNow) { g_ptCurrent = this; }
    ~CInterposed() { g_ptCurrent = nullptr; }
    CInterposed(CInterposed const&) = delete;
    CInterposed& operator=(CInterposed const&) = delete;

    timeval tSlept{};
    timespec tDeadline{}; ///< of the last timed wait

    /// The calls so far, by name.
    std::vector<std::string> const& Seen() const { return m_astrSeen; }

    /// For the call szCall itself: the error that it is to fail with, 0 for none. nUsual: one that it may fail with.
    static int ErrorOf(char const* szCall, int nUsual) { return g_ptCurrent ? g_ptCurrent->Error(szCall, nUsual) : 0; }
    static CInterposed* WithClock() { return g_ptCurrent && g_ptCurrent->m_tNow ? g_ptCurrent : nullptr; }
    timeval Now() const { return *m_tNow; }

private:
    int Error(char const* szCall, int nUsual)
    {
        m_astrSeen.emplace_back(szCall);
        return m_strCall == szCall ? m_nError : m_nFailing == static_cast<int>(m_astrSeen.size()) - 1 ? nUsual : 0;
    }

    static inline thread_local CInterposed* g_ptCurrent = nullptr;
    std::string m_strCall;
    int m_nError = 0;
    int m_nFailing = -1;
    std::vector<std::string> m_astrSeen;
    std::optional<timeval> m_tNow;
};
