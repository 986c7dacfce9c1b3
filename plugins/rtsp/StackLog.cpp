#include "plugins/rtsp/StackLog.h"

#include <cstdio>
#include <mutex>
#include <utility>

extern "C"
{
#include <libavutil/log.h>
}

namespace rtsp
{
namespace
{
thread_local IStackListener* g_pListener = nullptr;

std::mutex g_tTakenMutex;
unsigned g_nTaken = 0;

void OnLine(void* pContext, int nLevel, char const* szFormat, va_list tArguments)
{
    if (!g_pListener)
    {
        av_log_default_callback(pContext, nLevel, szFormat, tArguments);
        return;
    }
    if (nLevel > AV_LOG_INFO)
    {
        return;
    }
    char szLine[160];
    std::vsnprintf(szLine, sizeof szLine, szFormat, tArguments);
    int nStatus = 0;
    unsigned nMissed = 0;
    if (std::sscanf(szLine, "method %*s failed: %d", &nStatus) == 1)
    {
        if (nStatus >= 400 && nStatus <= 999) // others are no RTSP statuses, but whatever stood there
        {
            g_pListener->OnStatus(nStatus);
        }
    }
    else if (std::sscanf(szLine, "RTP: missed %u packets", &nMissed) == 1)
    {
        g_pListener->OnMissed(nMissed);
    }
    else if (std::sscanf(szLine, "Status %d: Redirecting", &nStatus) == 1)
    {
        g_pListener->OnRedirect();
    }
}
} // namespace

void TakeStackLog()
{
    const std::lock_guard tLock(g_tTakenMutex);
    if (g_nTaken++ == 0)
    {
        av_log_set_callback(&OnLine);
    }
}

void GiveBackStackLog()
{
    const std::lock_guard tLock(g_tTakenMutex);
    if (--g_nTaken == 0)
    {
        av_log_set_callback(&av_log_default_callback);
    }
}

CStackLogScope::CStackLogScope(IStackListener& tListener)
{
    TakeStackLog();
    g_pListener = &tListener;
}

CStackLogScope::~CStackLogScope()
{
    g_pListener = nullptr;
    GiveBackStackLog();
}

CStackLogBreak::CStackLogBreak() : m_pListener(std::exchange(g_pListener, nullptr)) {}

CStackLogBreak::~CStackLogBreak()
{
    g_pListener = m_pListener;
}
} // namespace rtsp
