// The documented layouts of the exported records and classes, on 32 and 64 bit: their documented members in order, and
// nothing else. What the library needs beyond them stands beside the objects.

#include "adapter/ClientService.h"
#include "adapter/Globals.h"
#include "system/Buffer.h"
#include "system/File.h"
#include "system/Module.h"
#include "system/Mutex.h"
#include "system/Signal.h"
#include "system/Utility.h"

#include <cstddef>

namespace
{
using namespace Adapter_ApplicationLayer;
using namespace Adapter_System;

constexpr std::size_t g_nWord = sizeof(void*);
constexpr bool g_b32Bit = g_nWord == 4;

// A class with virtual functions that had these members, one after the other.
// NOLINTBEGIN(bugprone-sizeof-expression): pointers are members like any other.
template <class... Members>
constexpr std::size_t Polymorphic()
{
    std::size_t nSize = g_nWord;
    ((nSize = (nSize + alignof(Members) - 1) / alignof(Members) * alignof(Members) + sizeof(Members)), ...);
    return (nSize + g_nWord - 1) / g_nWord * g_nWord;
}
// NOLINTEND(bugprone-sizeof-expression)

static_assert(sizeof(CSetCallBack) == (g_b32Bit ? 88 : 152));
static_assert(offsetof(CSetCallBack, cbFileDownload) == 6 * g_nWord);
static_assert(offsetof(CSetCallBack, m_hUserEvent) == 7 * g_nWord);
static_assert(offsetof(CSetCallBack, m_dwUserEvent) == (g_b32Bit ? 56 : 88));
static_assert(offsetof(CSetCallBack, m_bUsed) == (g_b32Bit ? 84 : 144));

static_assert(sizeof(tagResource) == (g_b32Bit ? 616 : 632));
static_assert(offsetof(tagResource, byProtocolData) == 3 * g_nWord);
static_assert(offsetof(Client, m_nUserState) == 1000 * sizeof(tagResource));
static_assert(offsetof(Client, m_nUserCursor) == 1000 * (sizeof(tagResource) + sizeof(int)));
static_assert(offsetof(Client, m_stMedia) == offsetof(Client, m_nUserCursor) + g_nWord);
static_assert(offsetof(Client, m_mtxUser) == 2 * offsetof(Client, m_stMedia));
static_assert(sizeof(Client) == offsetof(Client, m_mtxUser) + 2 * sizeof(pthread_mutex_t));

static_assert(sizeof(CMutex) == Polymorphic<pthread_mutex_t, pthread_mutexattr_t, bool>());
static_assert(sizeof(CSignal) == Polymorphic<pthread_mutex_t, pthread_cond_t, std::int32_t, bool>());
static_assert(sizeof(CGuard) == Polymorphic<CMutex*>());
static_assert(sizeof(CModule) == Polymorphic<void*>());
static_assert(sizeof(CFile) == Polymorphic<std::FILE*>());
static_assert(sizeof(CUtility) == sizeof(std::uint32_t) && sizeof(tagAbsoluteTime) == 16);
static_assert(sizeof(IBuffer) == Polymorphic<>());
static_assert(sizeof(CAdapta_Buffer) == Polymorphic<unsigned char*, unsigned long, unsigned long>());
static_assert(sizeof(Adapter_ProtocolSet::CClientProtocolSet) == Polymorphic<std::uint32_t[4], void* [4]>());
static_assert(sizeof(CAdapta_PlatformResource) == Polymorphic<>());
static_assert(sizeof(CAdapta_ClientService) == Polymorphic<std::int32_t>());
static_assert(sizeof(CAdapter_GlobalObject) ==
              Polymorphic<CAdapta_PlatformResource, CAdapta_ClientService, Adapter_ProtocolSet::CClientProtocolSet>());
} // namespace
