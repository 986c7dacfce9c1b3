// Memory that runs out: every allocation that the library makes fails once, in turn.

#include "system/Buffer.h"
#include "tests/core/Support.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <memory>
#include <new>

namespace
{
// The library's allocations on this thread: how many there were, and which one fails. -1: none is watched.
thread_local int g_nSeen = -1;
thread_local int g_nFailing = -1;

// Plug-ins and this program allocate too; only the library's own count.
void* Allocate(std::size_t nBytes, void* pCaller)
{
    Dl_info tCaller{};
    const bool bCounts =
        g_nSeen >= 0 && dladdr(pCaller, &tCaller) != 0 && std::strstr(tCaller.dli_fname, "libclientadapter");
    return bCounts && g_nSeen++ == g_nFailing ? nullptr : std::malloc(nBytes ? nBytes : 1);
}

void* AllocateOrThrow(std::size_t nBytes, void* pCaller)
{
    void* const pBytes = Allocate(nBytes, pCaller);
    return pBytes ? pBytes : throw std::bad_alloc();
}
} // namespace

// NOLINTBEGIN(misc-new-delete-overloads)
// clang-format off
#define CALLER __builtin_return_address(0)
TESSARO_API void* operator new(std::size_t n) { return AllocateOrThrow(n, CALLER); }
TESSARO_API void* operator new[](std::size_t n) { return AllocateOrThrow(n, CALLER); }
TESSARO_API void* operator new(std::size_t n, std::nothrow_t const&) noexcept { return Allocate(n, CALLER); }
TESSARO_API void* operator new[](std::size_t n, std::nothrow_t const&) noexcept { return Allocate(n, CALLER); }
TESSARO_API void operator delete(void* p) noexcept { std::free(p); }
TESSARO_API void operator delete[](void* p) noexcept { std::free(p); }
TESSARO_API void operator delete(void* p, std::size_t) noexcept { std::free(p); }
TESSARO_API void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
// clang-format on
// NOLINTEND(misc-new-delete-overloads)

namespace
{
class Faults : public CSession
{
protected:
    // fnCall goes well by itself, and answers nResult with a text that holds strLine when any of its allocations fails.
    void FailInTurn(char const* szName, std::function<int()> const& fnCall, int nResult, std::string const& strLine)
    {
        SCOPED_TRACE(szName);
        const auto fnWatched = [&](int nFailing)
        {
            g_nFailing = nFailing;
            g_nSeen = 0;
            const int nAnswer = fnCall();
            const int nSeen = g_nSeen;
            g_nSeen = -1;
            return std::pair(nAnswer, nSeen);
        };
        m_tCapture.Text();
        const auto [nGood, nAllocations] = fnWatched(-1);
        EXPECT_EQ(nGood, 0);
        EXPECT_GT(nAllocations, 0);
        const std::string strUsual = m_tCapture.Text();
        for (int nFailing = 0; nFailing < nAllocations; ++nFailing)
        {
            EXPECT_EQ(fnWatched(nFailing).first, nResult) << "allocation " << nFailing;
            EXPECT_NE(m_tCapture.Text().find(strLine), std::string::npos);
        }
        EXPECT_EQ(fnWatched(-1).first, 0) << "and goes well again";
        EXPECT_EQ(m_tCapture.Text(), strUsual);
        m_nFailed += nAllocations;
    }

    int m_nFailed = 0;
};

TEST_F(Faults, EveryAllocationFailsOnce)
{
    const CReducedPlugin tOld(g_atProtocols[0], {"VornClient_GetConfigV2", "VornClient_SetConfigV2"});
    const auto fnInsert = [&]
    {
        const int nResult = g_cProtocolSet.InsertProtocol(eProtocolPrivate, g_atProtocols[0].Path().c_str());
        EXPECT_EQ(g_cProtocolSet.RemoveProtocol(eProtocolPrivate), nResult) << "nothing is half inserted";
        return nResult;
    };
    FailInTurn("insertion", fnInsert, 4, Line("CProtocolSet", "InsertProtocol", 30));

    ASSERT_EQ(g_cProtocolSet.InsertProtocol(eProtocolPrivate, g_atProtocols[0].Path().c_str()), 0);
    const auto ptV1 = std::make_unique<tagConfigInformation>();
    const auto ptV2 = std::make_unique<tagConfigInformationV2>();
    ptV1->type = 209;
    ptV1->index = 0xFFFFFFFF;
    FailInTurn(
        "special query", [&] { return g_cProtocolSet.GetConfig(nullptr, ptV1.get(), eProtocolPrivate); }, 1, "");
    FailInTurn(
        "converted query", [&] { return g_cProtocolSet.GetConfigV2(nullptr, ptV2.get(), eProtocolPrivate); }, 1, "");
    FailInTurn(
        "converted setting", [&] { return g_cProtocolSet.SetConfigV2(nullptr, ptV2.get(), eProtocolPrivate); }, 1, "");
    EXPECT_EQ(g_cProtocolSet.RemoveProtocol(eProtocolPrivate), 0);

    const auto fnSubscribe = [&]
    {
        g_SetUserCallBack.erase(m_nLogin); // the first subscription is the one that allocates
        return ClientAdapter_SubscribeEvent(m_nLogin, 1, reinterpret_cast<DeviceEventCallback>(0x10), 2);
    };
    FailInTurn("subscription", fnSubscribe, 3, Line("ClientAdapter", "ClientAdapter_SubscribeEvent", 295));

    const auto fnBuffer = []
    {
        CAdapta_Buffer tBuffer;
        const int nResult = tBuffer.Create(10);
        tBuffer.Destroy();
        return nResult;
    };
    FailInTurn("buffer", fnBuffer, 1, Line("Buffer", "Create", 91));
    std::fprintf(stderr, "tried: %d allocations failed, each in turn\n", m_nFailed);
}

// A start with too little memory for one protocol starts the others.
TEST_F(Faults, StartGoesOnWithoutOne)
{
    for (int nFailing = 0; nFailing < 3; ++nFailing)
    {
        ClientAdapter_Stop();
        Journal().Take();
        g_nFailing = nFailing;
        g_nSeen = 0;
        ClientAdapter_Start(16);
        EXPECT_EQ(std::exchange(g_nSeen, -1), 3);
        const auto atCalls = Journal().Take();
        EXPECT_EQ(std::count_if(atCalls.begin(), atCalls.end(),
                                [](tagCalled const& t) { return t.strEntry.ends_with("_Start"); }),
                  2);
    }
}
} // namespace
