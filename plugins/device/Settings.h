#pragma once

#include "plugins/device/Text.h"

#include "protocol/interface/Configuration.h"

#include <initializer_list>
#include <type_traits>

namespace device
{
/// A word of a record, and the least and the most that it may be.
template <class Record>
struct tagRange
{
    uint32_t Record::*pWord;
    uint32_t dwLeast;
    uint32_t dwMost;
};

/// Whether every word is in its range.
template <class Record>
bool InRange(Record const& tRecord, std::initializer_list<tagRange<std::type_identity_t<Record>>> atRanges)
{
    for (tagRange<Record> const& tRange : atRanges)
    {
        if (tRecord.*tRange.pWord < tRange.dwLeast || tRecord.*tRange.pWord > tRange.dwMost)
        {
            return false;
        }
    }
    return true;
}

/// A text that fills its array is cut at a character and terminated.
template <std::size_t nSize>
void Terminate(char (&szText)[nSize])
{
    CopyText(szText, Text(szText));
}

/// All there is of a place in a picture.
inline constexpr uint32_t g_dwWhole = 10000;
inline constexpr uint32_t g_dwColour = 0xFFFFFF;
} // namespace device
