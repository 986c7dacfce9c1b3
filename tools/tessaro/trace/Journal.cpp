#include "tools/tessaro/trace/Journal.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace tessaro
{
namespace
{
struct tagBehind
{
    char const* szPrefix;
    char const* szVariable;
};
constexpr tagBehind g_atBehind[] = {
    {"VTQ", "TESSARO_TRACE_VTQ"},
    {"RTSP", "TESSARO_TRACE_RTSP"},
    {"Onvif", "TESSARO_TRACE_ONVIF"},
    {"Vorn", "TESSARO_TRACE_PRIVATE"},
};

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

void* FindBehind(char const* szSymbol)
{
    for (tagBehind const& t : g_atBehind)
    {
        char const* const szFile =
            std::strncmp(szSymbol, t.szPrefix, std::strlen(t.szPrefix)) == 0 ? getenv(t.szVariable) : nullptr;
        if (szFile)
        {
            void* const hModule = dlopen(szFile, RTLD_LAZY | RTLD_LOCAL); // the same one each time, never closed
            return hModule ? dlsym(hModule, szSymbol) : nullptr;
        }
    }
    return nullptr;
}
} // namespace tessaro
