#pragma once

#include "protocol/IProtocol.h"
#include "tools/tessaro/trace/Arguments.h"
#include "tools/tessaro/trace/Journal.h"

#include <chrono>
#include <deque>
#include <mutex>
#include <tuple>

/// What stands between the library and a plug-in: each call goes on to the plug-in, and leaves a line.
namespace tessaro
{
template <class T>
constexpr bool g_bFunction = std::is_pointer_v<T>&& std::is_function_v<std::remove_pointer_t<T>>;

/// Stands in an application's place as a callback: writes a line, and calls on.
template <class F>
struct tagRelay;

template <class R, class... A>
struct tagRelay<R (*)(A...)>
{
    using Function = R (*)(A...);
    static constexpr bool bHasUser =
        std::is_same_v<std::tuple_element_t<sizeof...(A) - 1, std::tuple<A...>>, unsigned long>;
    struct tagRegistration
    {
        Function pfn;
        unsigned long dwUser;
        char const* szSymbol;
    };
    static inline tagRegistration s_tOnly{}; ///< of those without user data

    /// What the plug-in gets instead. A registration stays for ever: a last call may still be on its way.
    static tagRegistration* Register(Function pfn, unsigned long dwUser, char const* szSymbol)
    {
        static std::mutex& s_tMutex = *new std::mutex;
        static std::deque<tagRegistration>& s_tAll = *new std::deque<tagRegistration>;
        const std::lock_guard tLock(s_tMutex);
        return &s_tAll.emplace_back(tagRegistration{pfn, dwUser, szSymbol});
    }

    static R Call(A... tArguments)
    {
        std::tuple<A...> t(tArguments...);
        tagRegistration tRegistration = s_tOnly;
        if constexpr (bHasUser)
        {
            unsigned long& dwUser = std::get<sizeof...(A) - 1>(t);
            tRegistration = *reinterpret_cast<tagRegistration*>(dwUser);
            dwUser = tRegistration.dwUser;
        }
        json tLine = {
            {"t", TraceTime()}, {"thread", TraceThread()}, {"callback", tRegistration.szSymbol}, {"in", json::array()}};
        const tagTracedCall tNone{};
        (tLine["in"].push_back(ArgumentJson(tNone, "h", tArguments, false)), ...);
        if constexpr (std::is_void_v<R>)
        {
            std::apply(tRegistration.pfn, t);
            WriteTrace(tLine);
        }
        else
        {
            const R nResult = std::apply(tRegistration.pfn, t);
            tLine["result"] = nResult;
            WriteTrace(tLine);
            return nResult;
        }
    }
};

/// Puts our callback, and our user data, in the place of the application's.
template <class... A>
void Relay(std::tuple<A...>& t, char const* szSymbol)
{
    constexpr std::size_t n = sizeof...(A);
    if constexpr (n >= 2)
    {
        using First = std::tuple_element_t<n - 2, std::tuple<A...>>;
        if constexpr (g_bFunction<First>)
        {
            auto& pfn = std::get<n - 2>(t);
            if (pfn)
            {
                auto* const pt = tagRelay<First>::Register(pfn, std::get<n - 1>(t), szSymbol);
                pfn = &tagRelay<First>::Call;
                std::get<n - 1>(t) = reinterpret_cast<unsigned long>(pt);
            }
        }
    }
    if constexpr (n >= 1)
    {
        using Last = std::tuple_element_t<n - 1, std::tuple<A...>>;
        if constexpr (g_bFunction<Last>)
        {
            auto& pfn = std::get<n - 1>(t);
            if (pfn)
            {
                tagRelay<Last>::s_tOnly = {pfn, 0, szSymbol};
                pfn = &tagRelay<Last>::Call;
            }
        }
    }
}

template <class... A>
int Traced(void* pBehind, char const* szOperation, char const* szSymbol, char const* szNames, A... tArguments)
{
    const std::vector<std::string> astrNames = SplitNames(szNames);
    tagTracedCall tCall{szOperation, {}};
    std::size_t i = 0;
    [[maybe_unused]] const auto Word = [&](auto tValue)
    {
        if constexpr (std::is_integral_v<decltype(tValue)>)
        {
            tCall.tWords[astrNames[i]] = static_cast<unsigned long>(tValue);
        }
        ++i;
    };
    (Word(tArguments), ...);
    json tIn = json::object();
    json tOut = json::object();
    [[maybe_unused]] const auto Add = [&](json& tTo, auto tValue, bool bAfter)
    {
        const json t = ArgumentJson(tCall, astrNames[i], tValue, bAfter);
        if (!t.is_null() && !(bAfter && tIn.contains(astrNames[i]) && tIn[astrNames[i]] == t))
        {
            tTo[astrNames[i]] = t;
        }
        ++i;
    };
    i = 0;
    (Add(tIn, tArguments, false), ...);
    std::tuple<A...> tPassed(tArguments...);
    Relay(tPassed, szSymbol);
    const double dBegin = TraceTime();
    auto* const pfn = reinterpret_cast<int (*)(A...)>(pBehind);
    const int nResult = pfn ? std::apply(pfn, tPassed) : static_cast<int>(eResultNoEntryPoint);
    const double dEnd = TraceTime();
    if (nResult == eResultOk)
    {
        i = 0;
        (Add(tOut, tArguments, true), ...);
    }
    WriteTrace({{"t", dBegin},
                {"thread", TraceThread()},
                {"call", szSymbol},
                {"in", tIn},
                {"result", nResult},
                {"us", static_cast<long long>((dEnd - dBegin) * 1e6)},
                {"out", tOut}});
    return nResult;
}

/// One entry point of the plug-in behind, looked up once.
#define TRACED(operation, symbol, names, ...)                                                                          \
    static void* const s_pBehind = tessaro::FindBehind(symbol);                                                        \
    return tessaro::Traced(s_pBehind, operation, symbol, names __VA_OPT__(,) __VA_ARGS__)
} // namespace tessaro
