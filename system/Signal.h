#pragma once

#include "Export.h"

#include <cstdint>
#include <pthread.h>

namespace Adapter_System
{
/// An auto-reset event: each signal releases one waiting thread, or the next one to wait. Signals don't add up.
///
/// Made by create and released by destroy; the destructor releases nothing. Results: 0 done; 1 not created, or the
/// system refused (a diagnostic line says which); 9 timed out. Any thread may call signal and wait; create and destroy
/// want the object for themselves.
/// @ingroup classes
class TESSARO_API CSignal
{
public:
    /// wait's "no time-out".
    static constexpr unsigned long Infinite = 4294967295UL; // NOLINT(readability-identifier-naming): what callers write

    CSignal();
    CSignal(CSignal const& tOther); ///< isn't created; takes over whether tOther was signalled
    virtual ~CSignal();
    CSignal& operator=(CSignal const& tOther); ///< changes nothing

    /// Creating it twice makes it anew, with a line of warning: nobody may be waiting.
    int create();
    int destroy(); ///< 0, also when it isn't created
    int signal();  ///< wakes at most one waiting thread
    /// Blocks until signalled, at most so many milliseconds; 9, without a line, when they are over. They are measured
    /// by the real-time clock: setting the system's time lengthens or shortens a wait that is under way.
    int wait(unsigned long dwMilliseconds);

private:
    pthread_mutex_t m_tMutex;
    pthread_cond_t m_tCondition;
    std::int32_t m_nSignalled = 0; // under m_tMutex
    bool m_bCreated = false;
};
} // namespace Adapter_System
