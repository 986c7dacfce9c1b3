// The program's own definitions of these functions come before the C library's, also for the library under test.

#include "tests/platform/Interposed.h"

#include "system/Export.h"

#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/select.h>

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
#define ANSWERS_ERROR(name, parameters, arguments)                                                                     \
    extern "C" TESSARO_API int name parameters                                                                         \
    {                                                                                                                  \
        NEXT(name);                                                                                                    \
        const int nError = CInterposed::ErrorOf(#name);                                                                \
        return nError != 0 ? nError : pfnNext arguments;                                                               \
    }
// clang-format off
ANSWERS_ERROR(pthread_mutexattr_init, (pthread_mutexattr_t* pt) noexcept, (pt))
ANSWERS_ERROR(pthread_mutex_init, (pthread_mutex_t* pt, pthread_mutexattr_t const* ptAttributes) noexcept, (pt, ptAttributes))
ANSWERS_ERROR(pthread_mutex_lock, (pthread_mutex_t* pt) noexcept, (pt))
ANSWERS_ERROR(pthread_mutex_trylock, (pthread_mutex_t* pt) noexcept, (pt))
ANSWERS_ERROR(pthread_cond_init, (pthread_cond_t* pt, pthread_condattr_t const* ptAttributes) noexcept, (pt, ptAttributes))
ANSWERS_ERROR(pthread_cond_wait, (pthread_cond_t* pt, pthread_mutex_t* ptMutex), (pt, ptMutex))
// clang-format on

extern "C" TESSARO_API int pthread_cond_timedwait(pthread_cond_t* pt, pthread_mutex_t* ptMutex,
                                                  timespec const* ptDeadline)
{
    NEXT(pthread_cond_timedwait);
    if (CInterposed* ptClock = CInterposed::WithClock())
    {
        ptClock->tDeadline = *ptDeadline;
        return ETIMEDOUT;
    }
    const int nError = CInterposed::ErrorOf("pthread_cond_timedwait");
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
    return pfnNext(ptNow, pZone);
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
    return pfnNext(nDescriptors, ptRead, ptWrite, ptExcept, ptTime);
}
