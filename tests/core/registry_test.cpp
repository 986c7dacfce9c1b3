// IDs: in which order they are given, what a look-up finds, what threads may do at once.

#include "tests/core/Support.h"

#include <memory>
#include <random>

namespace
{
// The two tables are alike; every case runs on both.
struct tagTable
{
    char const* szName;
    int (Client::*pfnSet)(int&, void*, eProtocolType);
    int (Client::*pfnGet)(int, tagResource&);
    int (Client::*pfnDelete)(int);
};
constexpr tagTable g_atTables[] = {
    {"logins", &Client::SetUserType, &Client::GetUserType, &Client::DeleteUserType},
    {"media", &Client::SetMeidaType, &Client::GetMediaType, &Client::DeleteMediaType},
};

class Registry : public testing::TestWithParam<tagTable>
{
protected:
    int Allocate(std::uintptr_t uHandle = 1, eProtocolType eType = eProtocolVTQ)
    {
        int nID = -1;
        EXPECT_EQ((m_tClient.*GetParam().pfnSet)(nID, reinterpret_cast<void*>(uHandle), eType), 0);
        return nID;
    }
    void Free(int nID) { EXPECT_EQ((m_tClient.*GetParam().pfnDelete)(nID), 0); }
    int Get(int nID, tagResource& tRecord) { return (m_tClient.*GetParam().pfnGet)(nID, tRecord); }
    void Fill()
    {
        while (Allocate() != -1)
        {
        }
    }

    std::unique_ptr<Client> m_pClient = std::make_unique<Client>();
    Client& m_tClient = *m_pClient;
};

TEST_P(Registry, IDsRiseAndWrapAround)
{
    EXPECT_EQ(Allocate(), 0);
    EXPECT_EQ(Allocate(), 1);
    Free(0);
    for (int nID = 2; nID < 1000; ++nID)
    {
        ASSERT_EQ(Allocate(), nID);
    }
    EXPECT_EQ(Allocate(), 0);
    EXPECT_EQ(Allocate(), -1);
}

TEST_P(Registry, TheSecondPassNeverTakesSlotZero)
{
    Fill();
    Free(500);
    EXPECT_EQ(Allocate(), 500); // the cursor is now 501
    Free(0);
    EXPECT_EQ(Allocate(), -1);
    Free(1);
    EXPECT_EQ(Allocate(), 1);
    Free(999);
    EXPECT_EQ(Allocate(), 999); // the cursor is now 0
    EXPECT_EQ(Allocate(), 0);
}

TEST_P(Registry, LookUp)
{
    tagResource tRecord{eProtocolOnvif, nullptr, nullptr, {}};
    const int nID = Allocate(0x77);
    for (const int nUnknown : {-1, 1000, 2000000000, nID + 1})
    {
        EXPECT_EQ(Get(nUnknown, tRecord), 1);
        Free(nUnknown);
    }
    EXPECT_EQ(tRecord.eType, eProtocolOnvif) << "left alone";
    EXPECT_EQ(Get(nID, tRecord), 0);
    EXPECT_EQ(tRecord.eType, eProtocolVTQ);
    EXPECT_EQ(tRecord.hHandle, reinterpret_cast<void*>(0x77));
    Free(nID);
    Free(nID);
    EXPECT_EQ(Get(nID, tRecord), 1);
}

// In random order, with few and with many slots in use: no ID is given twice, and a freed one leads nowhere.
TEST_P(Registry, AMillionOpensAndCloses)
{
#if defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__
    constexpr int nRounds = 100'000; // the tables are plain memory: a sanitizer sees no more in a million
#else
    constexpr int nRounds = 1'000'000;
#endif
    std::mt19937 tRandom(7);
    std::vector<int> anOpen;
    std::vector<std::uintptr_t> auHandles(1000); // by ID; 0: free
    tagResource tRecord{};
    int nOpened = 0;
    for (int i = 0; i < nRounds; ++i)
    {
        const unsigned uLimit = i / 20'000 % 2 ? 990U : 10U;
        if (anOpen.size() < tRandom() % uLimit)
        {
            const auto uHandle = static_cast<std::uintptr_t>(i) + 1;
            const int nID = Allocate(uHandle);
            ASSERT_TRUE(nID >= 0 && auHandles.at(static_cast<std::size_t>(nID)) == 0) << "given twice: " << nID;
            auHandles[static_cast<std::size_t>(nID)] = uHandle;
            anOpen.push_back(nID);
            ++nOpened;
        }
        else if (!anOpen.empty())
        {
            std::swap(anOpen[tRandom() % anOpen.size()], anOpen.back());
            Free(anOpen.back());
            auHandles[static_cast<std::size_t>(anOpen.back())] = 0;
            anOpen.pop_back();
        }
        const auto nAny = static_cast<int>(tRandom() % 1000);
        const std::uintptr_t uExpected = auHandles[static_cast<std::size_t>(nAny)];
        ASSERT_EQ(Get(nAny, tRecord), uExpected ? 0 : 1);
        ASSERT_TRUE(!uExpected || tRecord.hHandle == reinterpret_cast<void*>(uExpected));
    }
    std::fprintf(stderr, "tried: %s: %d opens and closes, %d opens\n", GetParam().szName, nRounds, nOpened);
}

INSTANTIATE_TEST_SUITE_P(Tables, Registry, testing::ValuesIn(g_atTables),
                         [](auto const& tInfo) { return std::string(tInfo.param.szName); });

TEST(RegistryRecord, ComesBackWholeAndChangesInPlace)
{
    const auto pClient = std::make_unique<Client>();
    tagResource tRecord{eProtocolRTSP, &tRecord, nullptr, {1, 2, 3}};
    tRecord.byProtocolData[603] = 9;
    int nID = -1;
    pClient->SetUserType(nID, tRecord);
    pClient->m_stUser[nID + 1].hStream = nullptr;
    for (const int nChanged : {nID, nID + 1, -1, 1000})
    {
        pClient->UpdateUser(nChanged, &tagResource::hStream, pClient.get());
    }
    tagResource tFound{};
    EXPECT_EQ(pClient->GetUserType(nID, tFound), 0);
    EXPECT_EQ(tFound.hStream, pClient.get());
    EXPECT_EQ(tFound.hHandle, &tRecord);
    EXPECT_EQ(memcmp(tFound.byProtocolData, tRecord.byProtocolData, sizeof tFound.byProtocolData), 0);
    EXPECT_EQ(pClient->GetMediaType(nID, tFound), 1) << "the tables are independent";
    EXPECT_EQ(pClient->m_stUser[nID + 1].hStream, nullptr) << "a free slot";
}
} // namespace
