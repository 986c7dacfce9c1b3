// A plug-in that does nothing but tell the journal. Built once for each protocol, with RECORDER_PREFIX as the prefix of
// its entry points; a new operation appears in it by itself.

#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"
#include "system/Export.h"
#include "tests/recorder/Journal.h"

#include <type_traits>
#include <utility>

namespace
{
template <class... A>
int Called(char const* szEntry, A... tArguments)
{
    void** ppHandle = nullptr;
    [[maybe_unused]] const auto fnLook = [&](auto tArgument)
    {
        if constexpr (std::is_same_v<decltype(tArgument), void**>)
        {
            ppHandle = tArgument;
        }
        return (std::uintptr_t)tArgument; // a C cast takes pointers, numbers and enumerations alike
    };
    tagCalled tCall{szEntry, {fnLook(tArguments)...}};
    return CJournal::Instance().Called(std::move(tCall), ppHandle);
}
} // namespace

using Adapter_ProtocolSet::CClientProtocolBase;

#define JOIN_(prefix, name) prefix##name
#define JOIN(prefix, name)  JOIN_(prefix, name)
#define TEXT_(name)         #name
#define TEXT(name)          TEXT_(name)
#define ENTRY(symbol, operation, ...)                                                                                  \
    extern "C" TESSARO_API int symbol(PARAMETERS(&CClientProtocolBase::operation, __VA_ARGS__))                        \
    {                                                                                                                  \
        return Called(TEXT(symbol) __VA_OPT__(,) __VA_ARGS__);                                                         \
    }

#define OPERATION(line, name, ...) ENTRY(JOIN(RECORDER_PREFIX, name), name, __VA_ARGS__)
#include "protocol/operations.def"

// Entry points that aren't named after their operation, or differ from it.
ENTRY(JOIN(RECORDER_PREFIX, Getpackageinfo), GetPackInfo, hStream, pInfo, nLength)
ENTRY(JOIN(RECORDER_PREFIX, StreamCB), StreamMediaCB, hStream, pfnFrame, dwUser)
ENTRY(JOIN(RECORDER_PREFIX, Control), StreamMediaControl, hStream, eControl)
ENTRY(JOIN(RECORDER_PREFIX, Destroy), RealStreamDisconnect, hStream)
ENTRY(RTSP_GetAttribute, GetAttribute, eAttribute, pdwValue)
ENTRY(RTSP_ForceIFrame, ForceIFrame, hLogin, dwStream)

extern "C" TESSARO_API int JOIN(RECORDER_PREFIX, Create)(void** phStream, tagRTSPClientPara* ptPara,
                                                         unsigned int dwChannel)
{
    return Called(TEXT(JOIN(RECORDER_PREFIX, Create)), phStream, ptPara, dwChannel);
}

extern "C" TESSARO_API int JOIN(RECORDER_PREFIX, EventCB)(void* hStream, DeviceEventCallback pfnEvent,
                                                          unsigned long dwUser)
{
    return Called(TEXT(JOIN(RECORDER_PREFIX, EventCB)), hStream, pfnEvent, dwUser);
}
