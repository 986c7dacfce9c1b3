#include "protocol/PluginInterface.h"
#include "protocol/Record.h"

#include <gtest/gtest.h>

using namespace Adapter_ProtocolSet;

namespace
{
/// A record that grew: its first version ended before dwSecond.
struct tagGrown
{
    uint32_t dwSize, dwFirst, dwSecond, dwThird;
};

struct tagGrownList
{
    uint32_t dwSize, dwEntrySize, dwCapacity, dwCount;
    TESSARO_POINTER(tagGrown* ptEntries);
};

/// A caller's memory: a record of some length, and bytes behind it that are nobody's.
union tagCaller
{
    uint32_t adwWords[8];
    tagGrown tRecord;
    tagGrown atEntries[2];
};
} // namespace

template <>
struct tagRecordSize<tagGrown>
{
    static constexpr uint32_t dwFirst = 8;
};
template <>
struct tagRecordSize<tagGrownList>
{
    static constexpr uint32_t dwFirst = sizeof(tagGrownList);
};

/// Records of every length against one plug-in: what it sees, what it keeps, what it writes.
TEST(Record, OlderAndNewerCallers)
{
    for (uint32_t dwSize : {0u, 7u, 8u, 12u, 14u, 16u, 24u})
    {
        SCOPED_TRACE(dwSize);
        tagCaller tCaller{{dwSize, 1, 2, 3, 4, 5, 6, 7}};
        tagCaller tRead{}, tMerged{{16, 91, 92, 93}};
        const tagGrown tAnswer{16, 51, 52, 53};
        const int nExpected = dwSize < 8 ? int{eResultBadArgument} : eResultOk;
        EXPECT_EQ(ReadRecord(tRead.tRecord, &tCaller.tRecord), nExpected);
        EXPECT_EQ(MergeRecord(tMerged.tRecord, &tCaller.tRecord), nExpected);
        EXPECT_EQ(WriteRecord(&tCaller.tRecord, tAnswer), nExpected);
        EXPECT_EQ(tCaller.adwWords[0], dwSize);
        for (uint32_t dwByte = 4; dwByte < sizeof tCaller; dwByte += 4)
        {
            const uint32_t dwWord = dwByte / 4;
            const bool bCovered = dwSize >= 8 && dwByte + 4 <= dwSize && dwByte < sizeof(tagGrown);
            if (dwByte < dwSize && dwSize < dwByte + 4)
            {
                continue; // a word that ends in the middle
            }
            EXPECT_EQ(tCaller.adwWords[dwWord], bCovered ? 50 + dwWord : dwWord) << dwWord;
            if (dwByte < sizeof(tagGrown))
            {
                EXPECT_EQ(tRead.adwWords[dwWord], bCovered ? dwWord : 0) << dwWord;
                EXPECT_EQ(tMerged.adwWords[dwWord], bCovered ? dwWord : 90 + dwWord) << dwWord;
            }
        }
        EXPECT_EQ(tMerged.tRecord.dwSize, 16u);
    }
    tagGrown tRead{};
    EXPECT_EQ(ReadRecord<tagGrown>(tRead, nullptr), eResultBadArgument);
    EXPECT_EQ(WriteRecord<tagGrown>(nullptr, tRead), eResultBadArgument);
}

/// Lists whose entries are shorter or longer than the plug-in's, with less and more room than there are entries.
TEST(Record, ListsOfOtherEntries)
{
    const tagGrown atAll[] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    for (uint32_t dwEntrySize : {8u, 16u, 20u, 0u})
    {
        for (uint32_t dwCapacity : {0u, 1u, 2u})
        {
            tagCaller tCaller{{99, 99, 99, 99, 99, 99, 99, 99}};
            tagGrownList tList{sizeof tList, dwEntrySize, dwEntrySize == 20 ? std::min(dwCapacity, 1u) : dwCapacity, 77,
                               tCaller.atEntries};
            SCOPED_TRACE(std::to_string(dwEntrySize) + " bytes, room for " + std::to_string(tList.dwCapacity));
            const bool bGood = dwEntrySize != 0 || tList.dwCapacity == 0;
            EXPECT_EQ(WriteList(&tList, atAll, 2), bGood ? eResultOk : int{eResultBadArgument});
            EXPECT_EQ(tList.dwCount, bGood ? 2u : 77u);
            const uint32_t dwWords = dwEntrySize / 4;
            for (uint32_t dwWord = 0; dwWord < 8; ++dwWord)
            {
                const uint32_t dwEntry = dwWords ? dwWord / dwWords : 8;
                const uint32_t dwField = dwWords ? dwWord % dwWords : 0;
                const uint32_t dwKnown = dwField < 4 ? dwEntry * 4 + dwField + 1 : 0;
                EXPECT_EQ(tCaller.adwWords[dwWord], dwEntry < tList.dwCapacity ? dwKnown : 99) << dwWord;
            }
            if (dwEntrySize != 0 && tList.dwCapacity == 2)
            {
                EXPECT_EQ(ReadEntry<tagGrown>(tList, 1).dwSecond, dwEntrySize == 8 ? 0u : 7u);
            }
        }
    }
}
