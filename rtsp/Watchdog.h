#pragma once

#include <chrono>

namespace rtsp
{
/// Wakes a thread when something takes too long. Who does it in time pays two short system calls and wakes nobody.
class CWatchdog
{
public:
    /// Throws std::system_error.
    CWatchdog();
    ~CWatchdog();
    CWatchdog(CWatchdog const&) = delete;
    CWatchdog& operator=(CWatchdog const&) = delete;

    /// Await returns after so long, unless Clear comes first. Any thread.
    void Set(std::chrono::nanoseconds tTime);
    void Clear();
    /// Await returns now, or the next time. Any thread.
    void Ring();
    /// One thread at a time.
    void Await();

private:
    const int m_nTimer;
    const int m_nBell;
};
} // namespace rtsp
