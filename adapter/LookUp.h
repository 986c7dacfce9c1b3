#pragma once

#include "adapter/HandleRegistry.h"
#include "system/Sequence.h"

// What the library itself does with g_cClient: the look-up that every exported function makes, and changing a login in
// place. An application's own Client objects have neither.

namespace Adapter_ApplicationLayer
{
/// What a call needs of a record.
struct tagTarget
{
    eProtocolType eType; ///< whose handle it is
    void* hHandle;       ///< the plug-in's
};

/// What looking an ID up reads, in one place for each slot of g_cClient: the records are far apart, and their states so
/// close that opening and closing one would hold up many others. All zero for a free slot, so that a table of them
/// takes no memory until IDs are given.
struct alignas(16) tagLookUp
{
    CSequence tSequence;     ///< whole while the slot is used: not while it is free or being allocated
    eProtocolType eType{};   ///< the record's
    void* hHandle = nullptr; ///< the record's
};

[[gnu::visibility("hidden")]] extern tagLookUp g_atUserLookUp[Client::nSlots];  ///< of the logins
[[gnu::visibility("hidden")]] extern tagLookUp g_atMediaLookUp[Client::nSlots]; ///< of the media connections

/// False, and tTarget is not to be used: not a used slot. Never waits: when an allocation is under way or was just
/// done, the slot was free a moment ago, and that is the answer.
inline bool Find(tagLookUp const (&atLookUp)[Client::nSlots], int nID, tagTarget& tTarget)
{
    if (static_cast<unsigned>(nID) >= Client::nSlots)
    {
        return false;
    }
    tagLookUp const& tLookUp = atLookUp[nID];
    return tLookUp.tSequence.TryRead(
        [&] {
            tTarget = {CSequence::Load(tLookUp.eType), CSequence::Load(tLookUp.hHandle)};
        });
}

inline bool FindUser(int nID, tagTarget& tTarget)
{
    return Find(g_atUserLookUp, nID, tTarget);
}

inline bool FindMedia(int nID, tagTarget& tTarget)
{
    return Find(g_atMediaLookUp, nID, tTarget);
}

/// Sets one pointer of a login record of g_cClient in place, as a whole; does nothing when the slot isn't used.
void UpdateUser(int nID, void* tagResource::*pField, void* hValue);
} // namespace Adapter_ApplicationLayer
