#pragma once

// What the plug-ins call in place of the application: finds the registration by the ID that came along as user data,
// and calls the application with its own ID and user data. Included by ClientAdapter.cpp alone, after Shapes.h.
//
// The media trampolines run once a frame: no lock, no allocation, and no waiting for who registers. A process may end
// while plug-ins still deliver; what they read here is either never destroyed (the media records have nothing to
// destroy) or closed first (CEvents).

#include "adapter/Registrations.h"
#include "adapter/Shapes.h"
#include "system/Lock.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace
{
using Adapter_ApplicationLayer::CSetCallBack;
using Adapter_ApplicationLayer::g_tRegistrations;
using Adapter_ApplicationLayer::UserEventKind;

void* AsHandle(int nID)
{
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(nID));
}

template <class Kind, class... A>
[[gnu::always_inline]] inline int Deliver(tagSite tSite, typename Kind::tagRegistration const& tFound, A... tArguments)
{
    if (!tFound.bUsed || !tFound.pfnCallback) [[unlikely]]
    {
        return Failed(tSite, eResultNoEntryPoint);
    }
    tFound.pfnCallback(AsHandle(tFound.nID), tArguments..., tFound.dwUser);
    return eResultOk;
}

// A registration is being made. Apart, to keep the path of a frame short.
template <class Kind, class... A>
[[gnu::cold, gnu::noinline]] int RelayMeanwhile(tagSite tSite, CSetCallBack const& tRecord, A... tArguments)
{
    return Deliver<Kind>(tSite, g_tRegistrations.Read<Kind>(tRecord), tArguments...);
}

template <class Kind, class... A>
[[gnu::always_inline]] inline int Relay(tagSite tSite, unsigned long dwMediaID, A... tArguments)
{
    if (dwMediaID >= std::size(g_SetCallBack)) [[unlikely]]
    {
        return Failed(tSite, eResultNoEntryPoint);
    }
    CSetCallBack const& tRecord = g_SetCallBack[dwMediaID];
    typename Kind::tagRegistration tFound;
    if (!g_tRegistrations.TryRead<Kind>(tRecord, tFound)) [[unlikely]]
    {
        return RelayMeanwhile<Kind>(tSite, tRecord, tArguments...);
    }
    return Deliver<Kind>(tSite, tFound, tArguments...);
}

// The two that run once a frame begin a cache line: their time depends on how many they are spread over.
[[gnu::aligned(64)]] int SetStreamMediaCB(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    return Relay<Adapter_ApplicationLayer::StreamMediaKind>({"SetStreamMediaCB", 3573}, dwUser, ptFrame);
}

[[gnu::aligned(64)]] int SetStreamMediaRawCB(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    return Relay<Adapter_ApplicationLayer::StreamMediaRawKind>({"SetStreamMediaRawCB", 3590}, dwUser, ptFrame);
}

int SetStreamVoiceCB(void*, eVoiceStreamSource eSource, tagStreamVoiceFrame const* ptFrame, unsigned long dwUser)
{
    return Relay<Adapter_ApplicationLayer::StreamVoiceKind>({"SetStreamVoiceCB", 3600}, dwUser, eSource, ptFrame);
}

int SetTransparentChannelCB(void*, tagBuffer* ptBuffer, unsigned long dwUser)
{
    return Relay<Adapter_ApplicationLayer::TransparentChannelKind>({"SetTransparentChannelCB", 3610}, dwUser, ptBuffer);
}

int SetFileUploadCB(void*, tagFileUploadState tState, unsigned long dwUser)
{
    return Relay<Adapter_ApplicationLayer::FileUploadKind>({"SetFileUploadCB", 3620}, dwUser, tState);
}

int SetFileDownloadCB(void*, tagBuffer tBuffer, unsigned long dwUser)
{
    return Relay<Adapter_ApplicationLayer::FileDownloadKind>({"SetFileDownloadCB", 3630}, dwUser, tBuffer);
}

/// Guards g_SetUserCallBack, which changes shape when a login subscribes for the first time. A trampoline that finds
/// the lock taken doesn't wait for it, but reads a copy. Destroyed before the map is: whoever comes later finds no
/// record.
class CEvents
{
public:
    ~CEvents()
    {
        const CLock tLock(m_tMutex);
        m_bClosed = true;
    }

    /// False when memory runs out or the lock can't be had.
    bool Register(int nLoginID, UserEventKind::Function pfnEvent, unsigned long dwUser)
    {
        if (pthread_mutex_lock(&m_tMutex) != 0)
        {
            return false;
        }
        const bool bStored = m_bClosed || Store(nLoginID, {true, pfnEvent, nLoginID, dwUser});
        pthread_mutex_unlock(&m_tMutex);
        return bStored;
    }

    /// What is registered; a record that doesn't exist counts as a cleared one.
    UserEventKind::tagRegistration Find(int nLoginID)
    {
        UserEventKind::tagRegistration tFound;
        if (pthread_mutex_trylock(&m_tMutex) != 0)
        {
            if (!m_bClosed && nLoginID < Client::nSlots)
            {
                tFound = g_tRegistrations.Read<UserEventKind>(m_atCopy[nLoginID]);
            }
            return tFound;
        }
        if (!m_bClosed)
        {
            if (const auto itRecord = g_SetUserCallBack.find(nLoginID); itRecord != g_SetUserCallBack.end())
            {
                tFound = UserEventKind::Load(itRecord->second); // whole: who subscribes holds the lock
            }
        }
        pthread_mutex_unlock(&m_tMutex);
        return tFound;
    }

private:
    static bool Store(int nLoginID, UserEventKind::tagRegistration const& tNew)
    try
    {
        g_tRegistrations.Register<UserEventKind>(g_SetUserCallBack[nLoginID], tNew);
        g_tRegistrations.Register<UserEventKind>(m_atCopy[nLoginID], tNew);
        return true;
    }
    catch (...)
    {
        return false;
    }

    // Nothing of it is destroyed: outlives this object.
    static inline pthread_mutex_t m_tMutex = PTHREAD_MUTEX_INITIALIZER;
    static inline std::atomic<bool> m_bClosed = false;
    static inline constinit CSetCallBack m_atCopy[Client::nSlots]; // by login ID
};

extern CEvents g_tEvents;

int SetUserEventCB(void*, unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3, unsigned long dwWord4,
                   unsigned long dwUser)
{
    const bool bUsable = dwUser <= 1000; // one more than there are IDs: 1000 is usable and finds no record
    const auto tFound = bUsable ? g_tEvents.Find(static_cast<int>(dwUser)) : UserEventKind::tagRegistration{};
    if (tFound.bUsed && tFound.pfnCallback)
    {
        tFound.pfnCallback(AsHandle(tFound.nID), dwEvent, dwWord2, dwWord3, dwWord4, tFound.dwUser);
        return eResultOk;
    }
    Failed({"SetUserEventCB", 3556}, eResultNoEntryPoint);
    std::printf("%d-%d-%d dwUserData %lu, cbUserEvent 0x%p, m_hUserEvent %d fail\n", !bUsable, !tFound.bUsed,
                !tFound.pfnCallback, dwUser, reinterpret_cast<void*>(tFound.pfnCallback), tFound.nID);
    return eResultNoEntryPoint;
}

/// A kind of registration: the fields of its record and the trampoline that the plug-in gets.
template <class Kind, auto pfnTrampoline>
struct tagRelay
{
    static constexpr auto pfn = pfnTrampoline;
    using Record = Kind;
};
using StreamMediaRelay = tagRelay<Adapter_ApplicationLayer::StreamMediaKind, &SetStreamMediaCB>;
using StreamMediaRawRelay = tagRelay<Adapter_ApplicationLayer::StreamMediaRawKind, &SetStreamMediaRawCB>;
using StreamVoiceRelay = tagRelay<Adapter_ApplicationLayer::StreamVoiceKind, &SetStreamVoiceCB>;
using TransparentChannelRelay = tagRelay<Adapter_ApplicationLayer::TransparentChannelKind, &SetTransparentChannelCB>;
using FileUploadRelay = tagRelay<Adapter_ApplicationLayer::FileUploadKind, &SetFileUploadCB>;
using FileDownloadRelay = tagRelay<Adapter_ApplicationLayer::FileDownloadKind, &SetFileDownloadCB>;

/// Registers a callback for a media connection: the record first, so that the plug-in's first call finds it complete.
template <class Relay, class F>
int Register(tagSite, F fnOperation, int nMediaID, typename Relay::Record::Function pfnCallback, unsigned long dwUser)
{
    tagTarget tMedia;
    if (!FindMedia(nMediaID, tMedia))
    {
        return eResultUnknownMedia;
    }
    using Kind = typename Relay::Record;
    g_tRegistrations.Register<Kind>(g_SetCallBack[nMediaID], {true, pfnCallback, nMediaID, dwUser});
    return fnOperation(tMedia.hHandle, Relay::pfn, static_cast<unsigned long>(nMediaID), tMedia.eType);
}
} // namespace
