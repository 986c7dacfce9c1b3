// The program's own definitions of these functions come before the C library's, also for the library under test.

#include "tests/platform/Interposed.h"

#include "system/Export.h"

#include <cerrno>
#include <cstdio>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/select.h>
#include <sys/stat.h>

namespace
{
template <class F>
F* Next(F*, char const* szName)
{
    return reinterpret_cast<F*>(dlsym(RTLD_NEXT, szName));
}
} // namespace

#define NEXT(name) static const auto pfnNext = Next(&(name), #name)

// The threads' functions answer with the error itself.
#define ANSWERS_ERROR(error, name, parameters, arguments)                                                              \
    extern "C" TESSARO_API int name parameters                                                                         \
    {                                                                                                                  \
        NEXT(name);                                                                                                    \
        const int nError = CInterposed::ErrorOf(#name, error);                                                         \
        return nError != 0 ? nError : pfnNext arguments;                                                               \
    }
// The others answer something else, and leave the error in errno.
#define SETS_ERROR(error, failed, type, name, parameters, arguments)                                                   \
    extern "C" TESSARO_API type name parameters                                                                        \
    {                                                                                                                  \
        NEXT(name);                                                                                                    \
        if (const int nError = CInterposed::ErrorOf(#name, error); nError != 0)                                        \
        {                                                                                                              \
            errno = nError;                                                                                            \
            return failed;                                                                                             \
        }                                                                                                              \
        return pfnNext arguments;                                                                                      \
    }

// clang-format off
ANSWERS_ERROR(ENOMEM, pthread_mutexattr_init, (pthread_mutexattr_t* pt) noexcept, (pt))
ANSWERS_ERROR(EINVAL, pthread_mutexattr_settype, (pthread_mutexattr_t* pt, int nType) noexcept, (pt, nType))
ANSWERS_ERROR(EINVAL, pthread_mutexattr_destroy, (pthread_mutexattr_t* pt) noexcept, (pt))
ANSWERS_ERROR(EAGAIN, pthread_mutex_init, (pthread_mutex_t* pt, pthread_mutexattr_t const* ptAttributes) noexcept, (pt, ptAttributes))
ANSWERS_ERROR(EBUSY, pthread_mutex_destroy, (pthread_mutex_t* pt) noexcept, (pt))
ANSWERS_ERROR(EAGAIN, pthread_mutex_lock, (pthread_mutex_t* pt) noexcept, (pt))
ANSWERS_ERROR(EINVAL, pthread_mutex_trylock, (pthread_mutex_t* pt) noexcept, (pt))
ANSWERS_ERROR(ENOMEM, pthread_cond_init, (pthread_cond_t* pt, pthread_condattr_t const* ptAttributes) noexcept, (pt, ptAttributes))
ANSWERS_ERROR(EBUSY, pthread_cond_destroy, (pthread_cond_t* pt) noexcept, (pt))
ANSWERS_ERROR(EINVAL, pthread_cond_signal, (pthread_cond_t* pt) noexcept, (pt))
ANSWERS_ERROR(EPERM, pthread_cond_wait, (pthread_cond_t* pt, pthread_mutex_t* ptMutex), (pt, ptMutex))
SETS_ERROR(EMFILE, nullptr, FILE*, fopen, (char const* szPath, char const* szMode), (szPath, szMode))
SETS_ERROR(EIO, 0, size_t, fread, (void* p, size_t nSize, size_t nCount, FILE* pt), (p, nSize, nCount, pt))
SETS_ERROR(ENOSPC, 0, size_t, fwrite, (void const* p, size_t nSize, size_t nCount, FILE* pt), (p, nSize, nCount, pt))
SETS_ERROR(ESPIPE, -1, int, fseek, (FILE* pt, long nOffset, int nWhence), (pt, nOffset, nWhence))
SETS_ERROR(ENOSPC, EOF, int, fflush, (FILE* pt), (pt))
SETS_ERROR(EACCES, -1, int, lstat, (char const* szPath, struct stat* pt) noexcept, (szPath, pt))
SETS_ERROR(EACCES, -1, int, remove, (char const* szPath) noexcept, (szPath))
SETS_ERROR(EOVERFLOW, nullptr, tm*, gmtime_r, (time_t const* pnTime, tm* pt) noexcept, (pnTime, pt))
SETS_ERROR(ENOMEM, nullptr, void*, dlopen, (char const* szPath, int nFlags) noexcept, (szPath, nFlags))
// clang-format on

// Told as failed, but done: other threads need the mutex, and what fails to close is closed all the same.
extern "C" TESSARO_API int pthread_mutex_unlock(pthread_mutex_t* pt) noexcept
{
    NEXT(pthread_mutex_unlock);
    const int nResult = pfnNext(pt);
    const int nError = CInterposed::ErrorOf("pthread_mutex_unlock", EPERM);
    return nError != 0 ? nError : nResult;
}
extern "C" TESSARO_API int fclose(FILE* pt)
{
    NEXT(fclose);
    const int nResult = pfnNext(pt);
    return CInterposed::ErrorOf("fclose", ENOSPC) != 0 ? EOF : nResult;
}
extern "C" TESSARO_API int dlclose(void* pModule) noexcept
{
    NEXT(dlclose);
    const int nResult = pfnNext(pModule);
    return CInterposed::ErrorOf("dlclose", EINVAL) != 0 ? -1 : nResult;
}

extern "C" TESSARO_API int pthread_cond_timedwait(pthread_cond_t* pt, pthread_mutex_t* ptMutex,
                                                  timespec const* ptDeadline)
{
    NEXT(pthread_cond_timedwait);
    if (CInterposed* ptClock = CInterposed::WithClock())
    {
        ptClock->tDeadline = *ptDeadline;
        return ETIMEDOUT;
    }
    const int nError = CInterposed::ErrorOf("pthread_cond_timedwait", EINVAL);
    return nError != 0 ? nError : pfnNext(pt, ptMutex, ptDeadline);
}

extern "C" TESSARO_API int gettimeofday(timeval* ptNow, void* pZone) noexcept
{
    NEXT(gettimeofday);
    if (CInterposed const* ptClock = CInterposed::WithClock())
    {
        *ptNow = ptClock->Now();
        return 0;
    }
    return CInterposed::ErrorOf("gettimeofday", EFAULT) != 0 ? -1 : pfnNext(ptNow, pZone);
}

extern "C" TESSARO_API time_t time(time_t* pnNow) noexcept
{
    NEXT(time);
    CInterposed const* ptClock = CInterposed::WithClock();
    return ptClock ? ptClock->Now().tv_sec : pfnNext(pnNow);
}

extern "C" TESSARO_API int select(int nDescriptors, fd_set* ptRead, fd_set* ptWrite, fd_set* ptExcept, timeval* ptTime)
{
    NEXT(select);
    if (CInterposed* ptClock = CInterposed::WithClock())
    {
        ptClock->tSlept = *ptTime;
        errno = EINTR;
        return -1;
    }
    return CInterposed::ErrorOf("select", EINTR) != 0 ? -1 : pfnNext(nDescriptors, ptRead, ptWrite, ptExcept, ptTime);
}
