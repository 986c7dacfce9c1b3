#include "rtsp/ThreadUse.h"

#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <time.h>
#include <unistd.h>

namespace rtsp
{
std::chrono::nanoseconds CpuTime(pthread_t tThread)
{
    clockid_t nClock;
    timespec tUsed{};
    if (pthread_getcpuclockid(tThread, &nClock) != 0 || clock_gettime(nClock, &tUsed) != 0)
    {
        return std::chrono::nanoseconds(0);
    }
    return std::chrono::seconds(tUsed.tv_sec) + std::chrono::nanoseconds(tUsed.tv_nsec);
}

bool IsAsleep(pid_t nThread)
{
    char szPath[64];
    std::snprintf(szPath, sizeof szPath, "/proc/self/task/%d/stat", static_cast<int>(nThread));
    const int nFile = open(szPath, O_RDONLY | O_CLOEXEC);
    if (nFile < 0)
    {
        return true;
    }
    char szText[128]; // "123 (a name) R ..."
    const ssize_t nRead = read(nFile, szText, sizeof szText);
    close(nFile);
    const std::string_view strText(szText, nRead < 0 ? 0 : static_cast<std::size_t>(nRead));
    const std::size_t nName = strText.rfind(") ");
    return nName == std::string_view::npos || strText.substr(nName + 2, 1) != "R";
}
} // namespace rtsp
