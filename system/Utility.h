#pragma once

#include "Export.h"

#include <cstdint>

namespace Adapter_System
{
/// A calendar time.
/// @ingroup classes
struct tagAbsoluteTime
{
    std::uint16_t wYear;         ///< in full: 2024
    std::uint16_t wMonth;        ///< 1 to 12
    std::uint16_t wDayOfWeek;    ///< 0, Sunday, to 6
    std::uint16_t wDay;          ///< 1 to 31
    std::uint16_t wHour;         ///< 0 to 23
    std::uint16_t wMinute;       ///< 0 to 59
    std::uint16_t wSecond;       ///< 0 to 60
    std::uint16_t wMilliseconds; ///< always 0: the time source counts seconds
};

/// What an application wants of the operating system. Static functions may be called from any thread, on any number of
/// threads; they answer 0, or 1 for a failure, unless they say otherwise.
/// @ingroup classes
class TESSARO_API CUtility
{
public:
    CUtility();
    ~CUtility();

    static int RemoveFile(char const* szPath); ///< 1 with a line
    /// In bytes; of a symbolic link, not of what it points to. 1 with a line, ullSize untouched. Where the platform's
    /// file sizes have 32 bits, a larger file is a failure.
    static int GetFileSize(char const* szPath, unsigned long long& ullSize);
    static int GetSystemTime(tagAbsoluteTime& tTime); ///< now, in UTC; on failure tTime is untouched
    /// Milliseconds of the time of day. Wraps about every 49.7 days.
    static std::uint32_t GetTickCount();
    /// Milliseconds since the last call on this object, 0 at the first one; right across one wrap. An object of its own
    /// for each thread.
    std::uint32_t GetTickExpend();
    static int Sleep(unsigned long dwMilliseconds); ///< blocks; a signal ends it early
    static int GetSystemError();                    ///< the thread's errno
    static int GetCurrentThreadID();                ///< the process ID, on every thread
    static int GetCurrentProcessID();               ///< as getpid
    /// Not offered: 1, and nothing is touched.
    static int GetHttpContent(char const* szUrl, char* pBuffer, unsigned long& dwLength);

    /// @name Forms for one platform
    /// @{
    static int GetFileSize_Linux(char const* szPath, unsigned long long& ullSize);  ///< what GetFileSize calls
    static int GetFileSize_Window(char const* szPath, unsigned long long& ullSize); ///< does nothing; 0
    static int GetSystemTime_Linux(tagAbsoluteTime& tTime);                         ///< what GetSystemTime calls
    static int GetSystemTime_Windows(tagAbsoluteTime& tTime);                       ///< does nothing; 0
    static std::uint32_t GetTickCount_Linux();                                      ///< what GetTickCount calls
    static std::uint32_t GetTickCount_Windows();                                    ///< does nothing; 0
    static int Sleep_Linux(unsigned long dwMilliseconds);                           ///< what Sleep calls
    static int Sleep_Windows(unsigned long dwMilliseconds);                         ///< does nothing; 0
    static int GetSystemError_Linux();                                              ///< what GetSystemError calls
    static int GetSystemError_Windows();                                            ///< does nothing; 0
    static int GetCurrentThreadID_Linux();                                          ///< what GetCurrentThreadID calls
    static int GetCurrentThreadID_Windows();                                        ///< does nothing; 0
    static int GetCurrentProcessID_Linux();                                         ///< what GetCurrentProcessID calls
    static int GetCurrentProcessID_Windows();                                       ///< does nothing; 0
    static int GetHttpContent_Linux(char const* szUrl, char* pBuffer,
                                    unsigned long& dwLength); ///< what GetHttpContent calls
    static int GetHttpContent_Windows(char const* szUrl, char* pBuffer, unsigned long& dwLength); ///< does nothing; 0
    /// @}

private:
    std::uint32_t m_dwLastTick = 0;
};
} // namespace Adapter_System
