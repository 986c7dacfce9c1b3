#include "tools/tessaro/trace/Journal.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace tessaro
{
namespace
{
int OpenFile()
{
    char const* const szFile = getenv("TESSARO_TRACE_FILE");
    const int nFile = szFile ? open(szFile, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    return nFile < 0 ? STDERR_FILENO : nFile;
}
} // namespace

void WriteTrace(json const& tLine)
{
    static const int s_nFile = OpenFile();
    const std::string strLine = tLine.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
    [[maybe_unused]] const auto nWritten = write(s_nFile, strLine.data(), strLine.size());
}

double TraceTime()
{
    static const auto s_tBegin = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - s_tBegin).count();
}

int TraceThread()
{
    static std::atomic<int> s_nThreads = 0;
    thread_local const int t_nThread = ++s_nThreads;
    return t_nThread;
}
} // namespace tessaro
