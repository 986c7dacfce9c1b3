#include "plugins/rtsp/StackLog.h"

#include <cstdio>

extern "C"
{
#include <libavutil/log.h>
}

namespace rtsp
{
namespace
{
thread_local IStackListener* g_pListener = nullptr;

void OnLine(void* pContext, int nLevel, char const* szFormat, va_list tArguments)
{
    if (!g_pListener)
    {
        av_log_default_callback(pContext, nLevel, szFormat, tArguments);
        return;
    }
    if (nLevel > AV_LOG_WARNING)
    {
        return;
    }
    char szLine[160];
    std::vsnprintf(szLine, sizeof szLine, szFormat, tArguments);
    int nStatus = 0;
    unsigned nMissed = 0;
    if (std::sscanf(szLine, "method %*s failed: %d", &nStatus) == 1)
    {
        g_pListener->OnStatus(nStatus);
    }
    else if (std::sscanf(szLine, "RTP: missed %u packets", &nMissed) == 1)
    {
        g_pListener->OnMissed(nMissed);
    }
}
} // namespace

void TakeStackLog()
{
    av_log_set_callback(&OnLine);
}

void GiveBackStackLog()
{
    av_log_set_callback(&av_log_default_callback);
}

CStackLogScope::CStackLogScope(IStackListener& tListener)
{
    g_pListener = &tListener;
}

CStackLogScope::~CStackLogScope()
{
    g_pListener = nullptr;
}
} // namespace rtsp
