#include "rtsp/Watchdog.h"

#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <system_error>
#include <time.h>
#include <unistd.h>

namespace rtsp
{
CWatchdog::CWatchdog()
    : m_nTimer(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
      m_nBell(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_nTimer < 0 || m_nBell < 0)
    {
        const int nError = errno;
        close(m_nTimer);
        close(m_nBell);
        throw std::system_error(nError, std::generic_category());
    }
}

CWatchdog::~CWatchdog()
{
    close(m_nTimer);
    close(m_nBell);
}

void CWatchdog::Set(std::chrono::nanoseconds tTime)
{
    constexpr long nSecond = 1'000'000'000;
    itimerspec tSpec{};
    tSpec.it_value.tv_sec = static_cast<time_t>(tTime.count() / nSecond);
    tSpec.it_value.tv_nsec = static_cast<long>(tTime.count() % nSecond);
    timerfd_settime(m_nTimer, 0, &tSpec, nullptr);
}

void CWatchdog::Clear()
{
    Set(std::chrono::nanoseconds(0));
}

void CWatchdog::Ring()
{
    eventfd_write(m_nBell, 1);
}

void CWatchdog::Await()
{
    pollfd atFiles[] = {{m_nTimer, POLLIN, 0}, {m_nBell, POLLIN, 0}};
    eventfd_t ullTimes; // both count in 64 bits
    // A timer that was cleared after it had run down has nothing to read.
    do
    {
        poll(atFiles, 2, -1);
    } while (eventfd_read(m_nTimer, &ullTimes) != 0 && eventfd_read(m_nBell, &ullTimes) != 0);
}
} // namespace rtsp
