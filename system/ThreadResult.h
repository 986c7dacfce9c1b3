#pragma once

#include "system/OutputMessage.h"

#include <cerrno>

namespace Adapter_System
{
/// The result of a POSIX thread call as the lock classes answer it: 0, or 1 with the line of a failed system call.
/// These calls return their error number and leave errno alone; it is put there, where the line looks for it.
inline int ThreadResult(int nError, char const* szSource, char const* szFunction, int nLine)
{
    if (nError == 0)
    {
        return 0;
    }
    errno = nError;
    SystemErrorLine(szSource, szFunction, nLine);
    return 1;
}
} // namespace Adapter_System
