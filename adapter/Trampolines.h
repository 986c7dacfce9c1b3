#pragma once

// What the plug-ins call in place of the application: finds the registration by the ID that came along as user data,
// and calls the application with its own ID and user data. Included by ClientAdapter.cpp alone, after Shapes.h.
//
// The media trampolines run once a frame: no lock, no allocation, and no waiting for who registers. A process may end
// while plug-ins still deliver; what they read here is either never destroyed (the media records have nothing to
// destroy) or closed first (CEvents).

#include "adapter/Events.h"
#include "adapter/Registrations.h"
#include "adapter/Shapes.h"
#include "system/OutputMessage.h"

#include <cstdint>
#include <iterator>

namespace
{
using Adapter_ApplicationLayer::CSetCallBack;
using Adapter_ApplicationLayer::g_tEvents;
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
    CAdapter_OutputMessage::OutputMessage("%d-%d-%d dwUserData %lu, cbUserEvent 0x%p, m_hUserEvent %d fail\n", !bUsable,
                                          !tFound.bUsed, !tFound.pfnCallback, dwUser,
                                          reinterpret_cast<void*>(tFound.pfnCallback), tFound.nID);
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
