#include "tools/tessaro/replay/Replay.h"

#include "adapter/Globals.h"
#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Plugins.h"
#include "tools/tessaro/records/Arguments.h"
#include "tools/tessaro/records/Blocks.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <utility>

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

// An argument as it was: a number, or a pointer to room that holds what it led to.
std::uintptr_t Argument(tagCallRoom& tRoom, std::string const& strName, tagArgumentType const& tType)
{
    json const* const pt = tRoom.Find(strName);
    const auto Address = [](void* p) { return reinterpret_cast<std::uintptr_t>(p); };
    switch (tType.eKind)
    {
    case eArgument::Named:
    {
        const std::string str = pt && pt->is_string() ? pt->get<std::string>() : "0"; // a number where there is no name
        return static_cast<std::uintptr_t>(tType.pfnNames().Find(str).value_or(std::atoll(str.c_str())));
    }
    case eArgument::Number:
        return pt && pt->is_number() ? static_cast<std::uintptr_t>(pt->get<long long>()) : 0;
    case eArgument::Function:
        return pt && *pt == "function";
    case eArgument::Pointer:
    {
        if (strName[0] == 'h')
        {
            const auto it = pt ? tRoom.tHandles.find(pt->get<std::string>()) : tRoom.tHandles.end();
            return it == tRoom.tHandles.end() ? 0 : Address(it->second);
        }
        tagRecord const* const ptRecord = tRoom.tCall.RecordBehind();
        return Address(ptRecord ? tRoom.Record(*ptRecord, pt && pt->is_object() ? pt : nullptr)
                                : tRoom.Room(g_nBuffer));
    }
    case eArgument::NewHandle:
    {
        void*& h = tRoom.ahRoom.emplace_back(nullptr);
        tRoom.tOpened[strName] = &h;
        return Address(&h);
    }
    case eArgument::Text:
    case eArgument::Bytes:
    {
        unsigned char* const sz = tRoom.Room(g_nBuffer);
        if (pt && pt->is_string())
        {
            pt->get<std::string>().copy(reinterpret_cast<char*>(sz), g_nBuffer - 1);
        }
        return Address(sz);
    }
    case eArgument::Block:
        return pt ? Address(tRoom.MakeBlock<tagConfigInformation>(*pt)) : 0;
    case eArgument::BlockV2:
        return pt ? Address(tRoom.MakeBlock<tagConfigInformationV2>(*pt)) : 0;
    case eArgument::Buffer:
    {
        auto* const ptBuffer = reinterpret_cast<tagBuffer*>(tRoom.Room(sizeof(tagBuffer))); // a trace has no contents
        ptBuffer->dwLength = pt ? pt->at("bytes").get<std::uint32_t>() : 0;
        ptBuffer->pData = tRoom.Room(ptBuffer->dwLength + 1);
        return Address(ptBuffer);
    }
    case eArgument::RecordAt:
        return pt || tRoom.tCall.Reads() ? Address(tRoom.Record(tType.pfnRecord(), pt)) : 0;
    case eArgument::NumberAt:
    case eArgument::NamedAt:
    {
        unsigned char* const pRoom = tRoom.Room(g_nBuffer);
        const long long llValue = pt && pt->is_number() ? pt->get<long long>() : 0;
        std::memcpy(pRoom, &llValue, tType.nSize);
        return Address(pRoom);
    }
    case eArgument::Record: // callbacks' alone
        break;
    }
    return 0;
}

// The word that Argument made, in its type again.
template <class T>
T FromWord(std::uintptr_t nWord)
{
    if constexpr (std::is_pointer_v<T> && std::is_function_v<std::remove_pointer_t<T>>)
    {
        return nWord ? &tagCounted<T>::Call : nullptr;
    }
    else if constexpr (std::is_pointer_v<T>)
    {
        return reinterpret_cast<T>(nWord);
    }
    else
    {
        return static_cast<T>(nWord);
    }
}

template <class Signature>
struct tagReplayed;
template <class... A>
struct tagReplayed<int(A...)>
{
    static constexpr tagArgumentType g_atTypes[] = {ArgumentType<A>()..., {}};

    static int Call(void* pEntry, std::uintptr_t const* anWords)
    {
        return Make(pEntry, anWords, std::index_sequence_for<A...>());
    }
    template <std::size_t... i>
    static int Make(void* pEntry, [[maybe_unused]] std::uintptr_t const* anWords, std::index_sequence<i...>)
    {
        return reinterpret_cast<int (*)(A...)>(pEntry)(FromWord<A>(anWords[i])...);
    }
};

struct tagRow
{
    char const* szOperation;
    char const* szNames;
    tagArgumentType const* atTypes;
    int (*pfnCall)(void* pEntry, std::uintptr_t const* anWords);
};
template <class Signature>
constexpr tagRow Row(char const* szOperation, char const* szNames)
{
    return {szOperation, szNames, tagReplayed<Signature>::g_atTypes, &tagReplayed<Signature>::Call};
}
constexpr tagRow g_atRows[] = {
#define OPERATION(line, name, ...) Row<tagCall<&CClientProtocolBase::name>::Function>(#name, #__VA_ARGS__),
#define UNROUTED_OPERATION(...)
#include "protocol/operations.def"
    Row<int(void**, tagRTSPClientPara*, unsigned int)>("Create", "phStream, ptPara, dwChannel"),
    Row<int(void*, StreamMediaCallback, unsigned long)>("StreamCB", "hStream, pfnFrame, dwUser"),
    Row<int(void*, DeviceEventCallback, unsigned long)>("EventCB", "hStream, pfnEvent, dwUser"),
    Row<int(void*, eTaskControl)>("Control", "hStream, eControl"),
    Row<int(void*)>("Destroy", "hStream"),
    Row<int(void*, void*, int)>("Getpackageinfo", "hStream, pInfo, nLength"),
};
} // namespace

CReplay::CReplay(std::string const& strFile, std::string strPassword)
    : m_hModule(OpenPlugin(strFile)), m_strPassword(std::move(strPassword))
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
    if (!pEntry)
    {
        return eResultNoEntryPoint;
    }
    if (strOperation == "SetProtocolInterface")
    {
        // RTSP's plug-in alone is driven by others, and is started by the trace.
        g_cProtocolSet.InsertProtocol(eProtocolRTSP, PluginName(eProtocolRTSP).c_str());
        return reinterpret_cast<int (*)(IProtocol*)>(pEntry)(&g_cProtocolSet);
    }
    if (ptRow == std::end(g_atRows))
    {
        return eResultNoEntryPoint;
    }
    tagCallRoom tRoom{{strOperation, {}}, tLine.at("in"), m_strPassword, m_tHandles, {}, {}, {}};
    for (auto const& [strName, tValue] : tRoom.tIn.items())
    {
        if (tValue.is_number_integer())
        {
            tRoom.tCall.tWords[strName] = tValue.get<long long>();
        }
    }
    std::vector<std::uintptr_t> anWords;
    for (std::string const& strName : SplitNames(ptRow->szNames))
    {
        anWords.push_back(Argument(tRoom, strName, ptRow->atTypes[anWords.size()]));
    }
    const int nResult = ptRow->pfnCall(pEntry, anWords.data());
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
