#include "adapter/CallbackRecord.h"

#include <cstddef>

namespace Adapter_ApplicationLayer
{
namespace
{
constexpr std::size_t g_nWord = sizeof(void*);
static_assert(sizeof(CSetCallBack) == (g_nWord == 4 ? 88 : 152), "CSetCallBack");
static_assert(offsetof(CSetCallBack, cbFileDownload) == 6 * g_nWord);
static_assert(offsetof(CSetCallBack, m_hUserEvent) == 7 * g_nWord);
static_assert(offsetof(CSetCallBack, m_dwUserEvent) == (g_nWord == 4 ? 56 : 88));
static_assert(offsetof(CSetCallBack, m_bUsed) == (g_nWord == 4 ? 84 : 144));
} // namespace

CSetCallBack::~CSetCallBack() = default;
} // namespace Adapter_ApplicationLayer
