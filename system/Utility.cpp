#include "system/Utility.h"

#include "system/OutputMessage.h"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace Adapter_System
{
namespace
{
constexpr char g_szSource[] = "Utility.cpp";
}

CUtility::CUtility() = default;

CUtility::~CUtility() = default;

int CUtility::RemoveFile(char const* szPath)
{
    if (std::remove(szPath) != 0)
    {
        SystemErrorLine(g_szSource, "RemoveFile", 98);
        return 1;
    }
    return 0;
}

int CUtility::GetFileSize(char const* szPath, unsigned long long& ullSize)
{
    if (!szPath)
    {
        DiagnosticLine(g_szSource, "GetFileSize", 108);
        return 1;
    }
    return GetFileSize_Linux(szPath, ullSize);
}

int CUtility::GetFileSize_Linux(char const* szPath, unsigned long long& ullSize)
{
    struct stat tStatus;
    if (lstat(szPath, &tStatus) != 0)
    {
        SystemErrorLine(g_szSource, "GetFileSize_Linux", 126);
        return 1;
    }
    ullSize = static_cast<unsigned long long>(tStatus.st_size);
    return 0;
}

int CUtility::GetSystemTime(tagAbsoluteTime& tTime)
{
    return GetSystemTime_Linux(tTime);
}

int CUtility::GetSystemTime_Linux(tagAbsoluteTime& tTime)
{
    const time_t nNow = time(nullptr);
    tm tCalendar{};
    if (!gmtime_r(&nNow, &tCalendar))
    {
        return 1;
    }
    const auto Word = [](int nValue) { return static_cast<std::uint16_t>(nValue); };
    tTime = {
        Word(tCalendar.tm_year + 1900), Word(tCalendar.tm_mon + 1), Word(tCalendar.tm_wday), Word(tCalendar.tm_mday),
        Word(tCalendar.tm_hour),        Word(tCalendar.tm_min),     Word(tCalendar.tm_sec),  0};
    return 0;
}

std::uint32_t CUtility::GetTickCount()
{
    return GetTickCount_Linux();
}

std::uint32_t CUtility::GetTickCount_Linux()
{
    timeval tNow{};
    gettimeofday(&tNow, nullptr);
    return static_cast<std::uint32_t>(tNow.tv_sec) * 1000U + static_cast<std::uint32_t>(tNow.tv_usec / 1000);
}

std::uint32_t CUtility::GetTickExpend()
{
    const std::uint32_t dwNow = GetTickCount();
    const std::uint32_t dwElapsed = m_dwLastTick == 0 ? 0 : dwNow - m_dwLastTick;
    m_dwLastTick = dwNow;
    return dwElapsed;
}

int CUtility::Sleep(unsigned long dwMilliseconds)
{
    return Sleep_Linux(dwMilliseconds);
}

int CUtility::Sleep_Linux(unsigned long dwMilliseconds)
{
    timeval tTime{};
    tTime.tv_sec = static_cast<time_t>(dwMilliseconds / 1000);
    tTime.tv_usec = static_cast<suseconds_t>(dwMilliseconds % 1000 * 1000);
    select(0, nullptr, nullptr, nullptr, &tTime);
    return 0;
}

int CUtility::GetSystemError()
{
    return GetSystemError_Linux();
}

int CUtility::GetSystemError_Linux()
{
    return errno;
}

int CUtility::GetCurrentThreadID()
{
    return GetCurrentThreadID_Linux();
}

int CUtility::GetCurrentThreadID_Linux()
{
    return getpid();
}

int CUtility::GetCurrentProcessID()
{
    return GetCurrentProcessID_Linux();
}

int CUtility::GetCurrentProcessID_Linux()
{
    return getpid();
}

int CUtility::GetHttpContent(char const* szUrl, char* pBuffer, unsigned long& dwLength)
{
    return GetHttpContent_Linux(szUrl, pBuffer, dwLength);
}

int CUtility::GetHttpContent_Linux(char const*, char*, unsigned long&)
{
    return 1;
}

int CUtility::GetFileSize_Window(char const*, unsigned long long&)
{
    return 0;
}

int CUtility::GetSystemTime_Windows(tagAbsoluteTime&)
{
    return 0;
}

std::uint32_t CUtility::GetTickCount_Windows()
{
    return 0;
}

int CUtility::Sleep_Windows(unsigned long)
{
    return 0;
}

int CUtility::GetSystemError_Windows()
{
    return 0;
}

int CUtility::GetCurrentThreadID_Windows()
{
    return 0;
}

int CUtility::GetCurrentProcessID_Windows()
{
    return 0;
}

int CUtility::GetHttpContent_Windows(char const*, char*, unsigned long&)
{
    return 0;
}
} // namespace Adapter_System
