#pragma once

#include "Export.h"

#include <pthread.h>

namespace Adapter_System
{
/// A recursive mutex: its holder may lock it again and unlocks once for each lock.
///
/// Made by create and released by destroy; the destructor releases nothing. Results: 0 done; 1 not created, or the
/// system refused (a diagnostic line says which); 9 busy. Any thread may call lock, trylock and unlock; create and
/// destroy want the object for themselves.
/// @ingroup classes
class TESSARO_API CMutex
{
public:
    CMutex();
    CMutex(CMutex const& tOther); ///< a mutex that isn't created
    virtual ~CMutex();
    CMutex& operator=(CMutex const& tOther); ///< changes nothing

    /// Creating it twice makes it anew, with a line of warning: nobody may hold it.
    int create();
    int destroy(); ///< 0, also when it isn't created
    int lock();    ///< blocks until the mutex is free
    int trylock(); ///< 9, without a line, when another thread holds it
    int unlock();  ///< 1 when this thread doesn't hold it

private:
    pthread_mutex_t m_tMutex;
    pthread_mutexattr_t m_tAttributes; // lives as long as the mutex
    bool m_bCreated = false;
};

/// Locks a mutex for as long as it lives. The mutex stays the caller's and must outlive it; a guard ends on the thread
/// that made it.
/// @ingroup classes
class TESSARO_API CGuard
{
public:
    explicit CGuard(CMutex* ptMutex); ///< blocks until it has the lock; a lock that fails is only a diagnostic line
    /// Locks once more, and unlocks only what it locked: when that lock fails the copy guards nothing.
    CGuard(CGuard const& tOther);
    virtual ~CGuard();
    CGuard& operator=(CGuard const& tOther); ///< changes nothing: each goes on guarding its own mutex

private:
    CMutex* m_ptMutex;
};
} // namespace Adapter_System
