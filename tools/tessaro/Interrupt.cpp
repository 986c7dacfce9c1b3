#include "tools/tessaro/Interrupt.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tessaro
{
CInterrupt::CInterrupt() : m_nEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

CInterrupt& CInterrupt::Instance()
{
    static CInterrupt& s_t = *new CInterrupt; // threads of plug-ins may outlive main
    return s_t;
}

void CInterrupt::Catch()
{
    struct sigaction tAction = {};
    tAction.sa_handler = [](int)
    {
        const int nError = errno;
        Instance().m_bAsked = true;
        Instance().Wake();
        errno = nError;
    };
    tAction.sa_flags = SA_RESETHAND; // the second one ends the process
    sigaction(SIGINT, &tAction, nullptr);
    sigaction(SIGTERM, &tAction, nullptr);
}

void CInterrupt::Wake()
{
    const std::uint64_t ullOne = 1;
    [[maybe_unused]] const auto nWritten = write(m_nEvent, &ullOne, sizeof ullOne);
}

bool CInterrupt::Wait(int nMilliseconds, int nFile)
{
    pollfd atFiles[] = {{m_nEvent, POLLIN, 0}, {nFile, POLLIN, 0}};
    if (!m_bAsked && poll(atFiles, nFile < 0 ? 1 : 2, nMilliseconds) > 0)
    {
        std::uint64_t ullCount = 0;
        [[maybe_unused]] const auto nRead = read(m_nEvent, &ullCount, sizeof ullCount);
    }
    return !m_bAsked;
}

long long NowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

long long NowUs()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}
} // namespace tessaro
