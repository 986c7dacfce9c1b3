#include "adapter/Events.h"

#include "adapter/HandleRegistry.h"
#include "system/Lock.h"

namespace Adapter_ApplicationLayer
{
namespace
{
// Apart from the object, which they outlive.
constinit pthread_mutex_t g_tMutex = PTHREAD_MUTEX_INITIALIZER;
constinit std::atomic<bool> g_bClosed = false;
constinit CSetCallBack g_atCopy[Client::nSlots]; // by login ID
} // namespace

CEvents::~CEvents()
{
    const CLock tLock(g_tMutex);
    g_bClosed = true;
}

bool CEvents::Register(int nLoginID, UserEventKind::Function pfnEvent, unsigned long dwUser)
{
    if (pthread_mutex_lock(&g_tMutex) != 0)
    {
        return false;
    }
    const bool bStored = g_bClosed || Store(nLoginID, {true, pfnEvent, nLoginID, dwUser});
    pthread_mutex_unlock(&g_tMutex);
    return bStored;
}

UserEventKind::tagRegistration CEvents::Find(int nLoginID)
{
    UserEventKind::tagRegistration tFound;
    if (pthread_mutex_trylock(&g_tMutex) != 0)
    {
        if (!g_bClosed && nLoginID < Client::nSlots)
        {
            tFound = g_tRegistrations.Read<UserEventKind>(g_atCopy[nLoginID]);
        }
        return tFound;
    }
    if (!g_bClosed)
    {
        if (const auto itRecord = g_SetUserCallBack.find(nLoginID); itRecord != g_SetUserCallBack.end())
        {
            tFound = UserEventKind::Load(itRecord->second); // whole: who subscribes holds the lock
        }
    }
    pthread_mutex_unlock(&g_tMutex);
    return tFound;
}

bool CEvents::Store(int nLoginID, UserEventKind::tagRegistration const& tNew)
try
{
    g_tRegistrations.Register<UserEventKind>(g_SetUserCallBack[nLoginID], tNew);
    g_tRegistrations.Register<UserEventKind>(g_atCopy[nLoginID], tNew);
    return true;
}
catch (...)
{
    return false;
}
} // namespace Adapter_ApplicationLayer
