#pragma once

// What the plug-ins call in place of the application: finds the registration by the ID that came along as user data,
// and calls the application with its own ID and user data. Included by ClientAdapter.cpp alone, after Shapes.h.
//
// The media trampolines run once a frame: no lock, no allocation. A process may end while plug-ins still deliver; what
// they read here is either never destroyed (the media records have nothing to destroy) or closed first (CEvents).

#include "adapter/Shapes.h"

#include <cstdint>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <sched.h>

namespace
{
using Adapter_ApplicationLayer::CSetCallBack;
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

// A registration is being made, which takes a few stores: waits for its end. Apart, to keep the path of a frame short.
template <class Kind, class... A>
[[gnu::cold, gnu::noinline]] int RelayAgain(tagSite tSite, CSetCallBack const& tRecord, A... tArguments)
{
    typename Kind::tagRegistration tFound;
    do
    {
        sched_yield();
    } while (!Kind::TryRead(tRecord, tFound));
    return Deliver<Kind>(tSite, tFound, tArguments...);
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
    if (!Kind::TryRead(tRecord, tFound)) [[unlikely]]
    {
        return RelayAgain<Kind>(tSite, tRecord, tArguments...);
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

/// Guards g_SetUserCallBack, which changes shape when a login subscribes for the first time. The lock is held for the
/// look-up only. Destroyed before the map is: whoever comes later finds no record.
class CEvents
{
public:
    ~CEvents()
    {
        const std::lock_guard tLock(m_tMutex);
        m_bClosed = true;
    }

    /// False when memory runs out or the lock can't be had.
    bool Register(int nLoginID, DeviceEventCallback pfnEvent, unsigned long dwUser)
    try
    {
        const std::lock_guard tLock(m_tMutex);
        if (!m_bClosed)
        {
            UserEventKind::Register(g_SetUserCallBack[nLoginID], pfnEvent, nLoginID, dwUser);
        }
        return true;
    }
    catch (...)
    {
        return false;
    }

    /// What is registered; a record that doesn't exist, or can't be looked at, counts as a cleared one.
    UserEventKind::tagRegistration Find(int nLoginID)
    try
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_bClosed)
        {
            return {};
        }
        UserEventKind::tagRegistration tFound;
        if (const auto itRecord = g_SetUserCallBack.find(nLoginID); itRecord != g_SetUserCallBack.end())
        {
            // Always whole: registrations hold the same lock.
            [[maybe_unused]] const bool bWhole = UserEventKind::TryRead(itRecord->second, tFound);
        }
        return tFound;
    }
    catch (...)
    {
        return {};
    }

private:
    static inline std::mutex m_tMutex; // no destructor: outlives this object
    static inline bool m_bClosed = false;
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
    Client::tagTarget tMedia;
    if (!g_cClient.FindMedia(nMediaID, tMedia))
    {
        return eResultUnknownMedia;
    }
    Relay::Record::Register(g_SetCallBack[nMediaID], pfnCallback, nMediaID, dwUser);
    return fnOperation(tMedia.hHandle, Relay::pfn, static_cast<unsigned long>(nMediaID), tMedia.eType);
}
} // namespace
