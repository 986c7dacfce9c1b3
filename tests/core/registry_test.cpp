// IDs: in which order they are given, what a look-up finds, what threads may do at once.

#include "tests/core/Support.h"

#include <atomic>
#include <memory>
#include <thread>

namespace
{
// The two tables are alike; every case runs on both.
struct tagTable
{
    char const* szName;
    int (Client::*pfnSet)(int&, void*, eProtocolType);
    int (Client::*pfnGet)(int, tagResource&);
    int (Client::*pfnDelete)(int);
    int Client::*pnCursor;
    pthread_mutex_t Client::*pMutex;
};
constexpr tagTable g_atTables[] = {
    {"logins", &Client::SetUserType, &Client::GetUserType, &Client::DeleteUserType, &Client::m_nUserCursor,
     &Client::m_mtxUser},
    {"media", &Client::SetMeidaType, &Client::GetMediaType, &Client::DeleteMediaType, &Client::m_nMediaCursor,
     &Client::m_mtxMedia},
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

// While the table's lock is held, another thread neither allocates nor frees; then it finds what was written meanwhile.
TEST_P(Registry, AllocatesAndFreesUnderTheLock)
{
    const int nFreed = Allocate();
    tagResource tRecord{};
    std::atomic<int> nNew = -1;
    pthread_mutex_lock(&(m_tClient.*GetParam().pMutex));
    std::thread tThread(
        [&]
        {
            nNew = Allocate();
            Free(nFreed);
        });
    for (int i = 0; i < 50; ++i)
    {
        std::this_thread::yield();
    }
    EXPECT_EQ(nNew, -1);
    EXPECT_EQ(Get(nFreed, tRecord), 0);
    m_tClient.*GetParam().pnCursor = 500;
    pthread_mutex_unlock(&(m_tClient.*GetParam().pMutex));
    tThread.join();
    EXPECT_EQ(nNew, 500);
    EXPECT_EQ(Get(nFreed, tRecord), 1);
}

INSTANTIATE_TEST_SUITE_P(Tables, Registry, testing::ValuesIn(g_atTables),
                         [](auto const& tInfo) { return std::string(tInfo.param.szName); });

TEST(RegistryRecord, ComesBackWhole)
{
    const auto pClient = std::make_unique<Client>();
    tagResource tRecord{eProtocolRTSP, &tRecord, pClient.get(), {1, 2, 3}};
    tRecord.byProtocolData[603] = 9;
    int nID = -1;
    pClient->SetUserType(nID, tRecord);
    tagResource tFound{};
    EXPECT_EQ(pClient->GetUserType(nID, tFound), 0);
    EXPECT_EQ(tFound.hStream, pClient.get());
    EXPECT_EQ(tFound.hHandle, &tRecord);
    EXPECT_EQ(memcmp(tFound.byProtocolData, tRecord.byProtocolData, sizeof tFound.byProtocolData), 0);
    EXPECT_EQ(pClient->GetMediaType(nID, tFound), 1) << "the tables are independent";
}
} // namespace
