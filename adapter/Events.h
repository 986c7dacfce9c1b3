#pragma once

#include "adapter/Registrations.h"

#include <atomic>

namespace Adapter_ApplicationLayer
{
/// Guards g_SetUserCallBack, which changes shape when a login subscribes for the first time. A trampoline that finds
/// the lock taken doesn't wait for it, but reads a copy. Destroyed before the map is: whoever comes later finds no
/// record.
class CEvents
{
public:
    ~CEvents();

    /// False when memory runs out or the lock can't be had.
    bool Register(int nLoginID, UserEventKind::Function pfnEvent, unsigned long dwUser);

    /// What is registered; a record that doesn't exist counts as a cleared one.
    UserEventKind::tagRegistration Find(int nLoginID);

private:
    bool Store(int nLoginID, UserEventKind::tagRegistration const& tNew);
};

[[gnu::visibility("hidden")]] extern CEvents g_tEvents;
} // namespace Adapter_ApplicationLayer
