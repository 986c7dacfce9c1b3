#include "tools/tessaro/replay/Replay.h"

#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/trace/Arguments.h"

#include <atomic>
#include <dlfcn.h>
#include <tuple>

namespace tessaro
{
namespace
{
using Adapter_ProtocolSet::CClientProtocolBase;

std::atomic<unsigned long> g_dwCallbacks = 0;

// Any callback: counts.
template <class F>
struct tagCounted;
template <class R, class... A>
struct tagCounted<R (*)(A...)>
{
    static R Call(A...)
    {
        ++g_dwCallbacks;
        return R();
    }
};

// Room for what one call's arguments point at.
struct tagCallRoom
{
    tagTracedCall tCall;
    json const& tIn;
    std::string const& strPassword;
    std::map<std::string, void*>& tHandles;
    Arena tArena;
    std::map<std::string, void*> tOpened; ///< where new handles go, by their argument
    std::list<void*> ahRoom;

    json const* Find(std::string const& strName) const { return tIn.contains(strName) ? &tIn.at(strName) : nullptr; }
    unsigned char* Room(std::size_t nBytes) { return tArena.emplace_back(nBytes).data(); }

    json WithPassword(json t) const
    {
        for (auto& [strKey, tValue] : t.items())
        {
            if (tValue.is_structured())
            {
                tValue = WithPassword(tValue);
            }
            else if (tValue == "***")
            {
                tValue = strPassword;
            }
        }
        return t;
    }
    void* Record(tagRecord const& tRecord, json const* pt)
    {
        unsigned char* const pRoom = Room(tRecord.nSize);
        FromJson(tRecord, pt ? WithPassword(*pt) : json::object(), pRoom, tArena);
        return pRoom;
    }
    template <class Block>
    Block* MakeBlock(json const& t)
    {
        auto* const pt = reinterpret_cast<Block*>(Room(sizeof(Block)));
        pt->type = static_cast<std::uint32_t>(NamesOf<eConfigType>().Find(t.at("type").get<std::string>()).value_or(0));
        pt->index = t.at("index").get<std::uint32_t>();
        pt->extra[1] =
            t.contains("stream")
                ? static_cast<std::uint32_t>(NamesOf<eStreamKind>().Find(t["stream"].get<std::string>()).value_or(0))
                : 0;
        if (tagRecord const* const ptRecord = t.contains("record") ? BlockRecord(pt->type) : nullptr)
        {
            FromJson(*ptRecord, WithPassword(t["record"]), pt->data, tArena);
        }
        return pt;
    }
};

constexpr std::size_t g_nBuffer = 1 << 16;

// An argument as it was, in T.
template <class T>
T Argument(tagCallRoom& tRoom, std::string const& strName)
{
    using Pointed = std::remove_cv_t<std::remove_pointer_t<T>>;
    json const* const pt = tRoom.Find(strName);
    if constexpr (std::is_enum_v<T>)
    {
        return static_cast<T>(pt && pt->is_string() ? NamesOf<T>().Find(pt->get<std::string>()).value_or(0) : 0);
    }
    else if constexpr (std::is_integral_v<T>)
    {
        return pt && pt->is_number() ? pt->get<T>() : T{};
    }
    else if constexpr (std::is_same_v<T, void*>)
    {
        if (strName[0] == 'h')
        {
            const auto it = pt ? tRoom.tHandles.find(pt->get<std::string>()) : tRoom.tHandles.end();
            return it == tRoom.tHandles.end() ? nullptr : it->second;
        }
        tagRecord const* const ptRecord = tRoom.tCall.RecordBehind();
        return ptRecord ? tRoom.Record(*ptRecord, pt && pt->is_object() ? pt : nullptr) : tRoom.Room(g_nBuffer);
    }
    else if constexpr (std::is_same_v<T, void**>)
    {
        void*& h = tRoom.ahRoom.emplace_back(nullptr);
        tRoom.tOpened[strName] = &h;
        return &h;
    }
    else if constexpr (std::is_function_v<Pointed>)
    {
        return pt && *pt == "function" ? &tagCounted<T>::Call : nullptr;
    }
    else if constexpr (std::is_same_v<Pointed, char> || std::is_same_v<Pointed, unsigned char>)
    {
        auto* const sz = reinterpret_cast<char*>(tRoom.Room(g_nBuffer));
        if (pt && pt->is_string())
        {
            pt->get<std::string>().copy(sz, g_nBuffer - 1);
        }
        return reinterpret_cast<T>(sz);
    }
    else if constexpr (IsBlock<Pointed>)
    {
        return pt ? tRoom.MakeBlock<Pointed>(*pt) : nullptr;
    }
    else if constexpr (std::is_same_v<Pointed, tagBuffer>)
    {
        auto* const ptBuffer = reinterpret_cast<tagBuffer*>(tRoom.Room(sizeof(tagBuffer))); // a trace has no contents
        ptBuffer->dwLength = pt ? pt->at("bytes").get<std::uint32_t>() : 0;
        ptBuffer->pData = tRoom.Room(ptBuffer->dwLength + 1);
        return ptBuffer;
    }
    else if constexpr (HasRecord<Pointed>)
    {
        const bool bFilled = tRoom.tCall.Reads() && !pt;
        return pt || bFilled ? static_cast<T>(tRoom.Record(RecordOf<Pointed>(), pt)) : nullptr;
    }
    else if constexpr (std::is_integral_v<Pointed> || std::is_enum_v<Pointed>)
    {
        unsigned char* const pRoom = tRoom.Room(g_nBuffer);
        if constexpr (std::is_integral_v<Pointed>)
        {
            const Pointed tValue = pt && pt->is_number() ? pt->get<Pointed>() : Pointed{};
            std::memcpy(pRoom, &tValue, sizeof tValue);
        }
        return reinterpret_cast<T>(pRoom);
    }
    else
    {
        return T{};
    }
}

template <class Signature>
struct tagReplayed;
template <class... A>
struct tagReplayed<int(A...)>
{
    static int Call(void* pEntry, tagCallRoom& tRoom, char const* szNames)
    {
        return Make(pEntry, tRoom, SplitNames(szNames), std::index_sequence_for<A...>());
    }
    template <std::size_t... i>
    static int Make(void* pEntry, tagCallRoom& tRoom, [[maybe_unused]] std::vector<std::string> const& astrNames,
                    std::index_sequence<i...>)
    {
        const std::tuple<A...> t{Argument<A>(tRoom, astrNames[i])...};
        return std::apply(reinterpret_cast<int (*)(A...)>(pEntry), t);
    }
};

struct tagRow
{
    char const* szOperation;
    char const* szNames;
    int (*pfnCall)(void* pEntry, tagCallRoom& tRoom, char const* szNames);
};
constexpr tagRow g_atRows[] = {
#define OPERATION(line, name, ...)                                                                                     \
    {#name, #__VA_ARGS__, &tagReplayed<tagCall<&CClientProtocolBase::name>::Function>::Call},
#define UNROUTED_OPERATION(...)
#include "protocol/operations.def"
    {"Create", "phStream, ptPara, dwChannel", &tagReplayed<int(void**, tagRTSPClientPara*, unsigned int)>::Call},
    {"StreamCB", "hStream, pfnFrame, dwUser", &tagReplayed<int(void*, StreamMediaCallback, unsigned long)>::Call},
    {"EventCB", "hStream, pfnEvent, dwUser", &tagReplayed<int(void*, DeviceEventCallback, unsigned long)>::Call},
    {"Control", "hStream, eControl", &tagReplayed<int(void*, eTaskControl)>::Call},
    {"Destroy", "hStream", &tagReplayed<int(void*)>::Call},
    {"Getpackageinfo", "hStream, pInfo, nLength", &tagReplayed<int(void*, void*, int)>::Call},
};
} // namespace

CReplay::CReplay(std::string const& strFile, std::string strPassword)
    : m_hModule(dlopen(strFile.c_str(), RTLD_LAZY | RTLD_LOCAL)), m_strPassword(std::move(strPassword))
{
    if (!m_hModule)
    {
        throw CFailure(eExitNoPlugin, dlerror(), "tessaro doctor says more");
    }
}

unsigned long CReplay::Callbacks()
{
    return g_dwCallbacks;
}

int CReplay::Call(json const& tLine)
{
    const std::string strSymbol = tLine.at("call").get<std::string>();
    const std::string strOperation = strSymbol.substr(strSymbol.find('_') + 1);
    void* const pEntry = dlsym(m_hModule, strSymbol.c_str());
    auto const* const ptRow =
        std::ranges::find_if(g_atRows, [&](tagRow const& t) { return strOperation == t.szOperation; });
    if (strOperation == "SetProtocolInterface")
    {
        return tLine.at("result").get<int>();
    }
    if (!pEntry || ptRow == std::end(g_atRows))
    {
        return eResultNoEntryPoint;
    }
    tagCallRoom tRoom{{strOperation, {}}, tLine.at("in"), m_strPassword, m_tHandles, {}, {}, {}};
    for (auto const& [strName, tValue] : tRoom.tIn.items())
    {
        if (tValue.is_number_integer())
        {
            tRoom.tCall.tWords[strName] = tValue.get<unsigned long>();
        }
    }
    const int nResult = ptRow->pfnCall(pEntry, tRoom, ptRow->szNames);
    for (auto const& [strName, pHandle] : tRoom.tOpened)
    {
        if (nResult == eResultOk && tLine.at("out").contains(strName))
        {
            m_tHandles[tLine["out"][strName].get<std::string>()] = *static_cast<void**>(pHandle);
        }
    }
    return nResult;
}
} // namespace tessaro
