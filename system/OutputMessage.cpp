#include "system/OutputMessage.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace
{
constexpr int g_nBuffer = 1024;
std::atomic<DiagnosticSink> g_pfnSink = nullptr;

// What was formatted is written as it is: a '%' in an argument stays a '%'.
void Write(char const* szFormat, va_list tArguments)
{
    char szText[g_nBuffer];
    if (vsnprintf(szText, sizeof szText, szFormat, tArguments) < 0)
    {
        return;
    }
    std::fputs(szText, stdout);
    if (const DiagnosticSink pfnSink = g_pfnSink)
    {
        const std::size_t nLength = std::strlen(szText);
        szText[nLength - (nLength > 0 && szText[nLength - 1] == '\n')] = '\0';
        pfnSink(szText);
    }
}
} // namespace

int CAdapter_OutputMessage::OutputMessage(char const* szFormat, ...)
{
    va_list tArguments;
    va_start(tArguments, szFormat);
    Write(szFormat, tArguments);
    va_end(tArguments);
    return 0;
}

int CAdapter_OutputMessage::ControlMessage(char const* szFormat, ...)
{
    va_list tArguments;
    va_start(tArguments, szFormat);
    Write(szFormat, tArguments);
    va_end(tArguments);
    return 0;
}

int CAdapter_OutputMessage::CommandRPCMessage(char const* szFormat, ...)
{
    char szText[g_nBuffer];
    va_list tArguments;
    va_start(tArguments, szFormat);
    vsnprintf(szText, sizeof szText, szFormat, tArguments);
    va_end(tArguments);
    return 0;
}

int CAdapter_OutputMessage::CommandRPCOutput(char*)
{
    return 0;
}

int CAdapter_OutputMessage::CommandRPCOutput(char*, int)
{
    return 0;
}

void SetDiagnosticSink(DiagnosticSink pfnSink)
{
    g_pfnSink = pfnSink;
}

void DiagnosticLine(char const* szSource, char const* szFunction, int nLine, char const* szText)
{
    CAdapter_OutputMessage::OutputMessage("[Tessaro] %s %s %d %s.\n", szSource, szFunction, nLine, szText);
}

void SystemErrorLine(char const* szSource, char const* szFunction, int nLine)
{
    const int nError = errno;
    CAdapter_OutputMessage::ControlMessage("[Tessaro] %s %s %d Failed syserr:%d %s\n", szSource, szFunction, nLine,
                                           nError, strerror(nError));
}
