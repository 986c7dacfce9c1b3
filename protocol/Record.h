#pragma once

#include "interface/Common.h"
#include "interface/Results.h"

#include <algorithm>
#include <cstring>

/// @file
/// How a plug-in in C++ reads and writes records that may be older or newer than itself. Nothing here is needed to use
/// the library.

namespace Adapter_ProtocolSet
{
/// Bytes of a caller's record that both sides know; 0 for one that no version of the interface had.
/// @ingroup plugin
template <class Record>
std::size_t SharedSize(Record const* ptCaller)
{
    const bool bKnown = ptCaller && ptCaller->dwSize >= tagRecordSize<Record>::dwFirst;
    return bKnown ? std::min<std::size_t>(ptCaller->dwSize, sizeof(Record)) : 0;
}

/// Lays a caller's record over tRecord: what the caller's dwSize doesn't cover stays as it is, and so does dwSize. For
/// settings, which are changed in part. eResultBadArgument for a null or too short record.
/// @ingroup plugin
template <class Record>
int MergeRecord(Record& tRecord, Record const* ptCaller)
{
    const auto nShared = SharedSize(ptCaller);
    if (nShared == 0)
    {
        return eResultBadArgument;
    }
    const auto dwSize = tRecord.dwSize;
    std::memcpy(&tRecord, ptCaller, nShared);
    tRecord.dwSize = dwSize;
    return eResultOk;
}

/// A caller's record as this side knows it: what the caller's dwSize doesn't cover is 0, and dwSize is this side's.
/// @ingroup plugin
template <class Record>
int ReadRecord(Record& tRecord, Record const* ptCaller)
{
    tRecord = Record{};
    tRecord.dwSize = sizeof(Record);
    return MergeRecord(tRecord, ptCaller);
}

/// An answer, into as much of the caller's record as both know; the caller's dwSize stays as it is.
/// @ingroup plugin
template <class Record>
int WriteRecord(Record* ptCaller, Record const& tRecord)
{
    const auto nShared = SharedSize(ptCaller);
    if (nShared == 0)
    {
        return eResultBadArgument;
    }
    std::memcpy(reinterpret_cast<char*>(ptCaller) + sizeof ptCaller->dwSize,
                reinterpret_cast<char const*>(&tRecord) + sizeof tRecord.dwSize, nShared - sizeof tRecord.dwSize);
    return eResultOk;
}

/// Entries, into a caller's list: as many as there is room for, each as long as the caller's, and the count of all.
/// eResultBadArgument when the list is too short a record, or has room but neither entries nor their size.
/// @ingroup plugin
template <class List, class Entry>
int WriteList(List* ptCaller, Entry const* ptEntries, std::size_t nCount)
{
    if (SharedSize(ptCaller) == 0 || (ptCaller->dwCapacity != 0 && (!ptCaller->ptEntries || !ptCaller->dwEntrySize)))
    {
        return eResultBadArgument;
    }
    auto* const pTarget = reinterpret_cast<char*>(ptCaller->ptEntries);
    const auto nShared = std::min<std::size_t>(ptCaller->dwEntrySize, sizeof(Entry));
    for (std::size_t i = 0; i < std::min<std::size_t>(nCount, ptCaller->dwCapacity); ++i)
    {
        std::memset(pTarget + i * ptCaller->dwEntrySize, 0, ptCaller->dwEntrySize);
        std::memcpy(pTarget + i * ptCaller->dwEntrySize, &ptEntries[i], nShared);
    }
    ptCaller->dwCount = static_cast<uint32_t>(nCount);
    return eResultOk;
}

/// The entry of a caller's list that stands at nIndex; beyond the caller's entry size it is 0. The list must have been
/// looked at before: dwCount entries at ptEntries.
/// @ingroup plugin
template <class Entry, class List>
Entry ReadEntry(List const& tList, std::size_t nIndex)
{
    Entry tEntry{};
    std::memcpy(&tEntry, reinterpret_cast<char const*>(tList.ptEntries) + nIndex * tList.dwEntrySize,
                std::min<std::size_t>(tList.dwEntrySize, sizeof(Entry)));
    return tEntry;
}
} // namespace Adapter_ProtocolSet
