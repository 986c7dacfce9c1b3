#pragma once

#include "tools/tessaro/records/Arguments.h"

#include <tuple>
#include <type_traits>
#include <utility>

/// What stands between the library and a plug-in: each call goes on to the plug-in, and leaves a line. What differs
/// from one signature to the next is here, and no more than passes the arguments on; the rest takes them as data.
namespace tessaro
{
/// An entry point, and the one of the plug-in behind.
struct tagTracedEntry
{
    char const* szOperation;
    char const* szSymbol;
    char const* szNames; ///< of the arguments
    void* pBehind;       ///< null: the plug-in lacks it
};

/// Writes a call's line. apValues: where its arguments lie. pfnCall makes it.
int TraceCall(tagTracedEntry const& tEntry, tagArgumentType const* atTypes, std::size_t nArguments,
              void* const* apValues, int (*pfnCall)(tagTracedEntry const& tEntry, void* const* apValues));

/// A callback of the application. It stays for ever: a last call may still be on its way.
struct tagRegistration
{
    void (*pfn)();
    unsigned long dwUser;
    char const* szSymbol; ///< of the entry point that took it
};
tagRegistration* Register(tagRegistration const& t);

/// Writes a callback's line. Its result shows where bResult.
int TraceCallback(tagRegistration const& tRegistration, bool bResult, tagArgumentType const* atTypes,
                  std::size_t nArguments, void* const* apValues,
                  int (*pfnCall)(tagRegistration const& tRegistration, void* const* apValues));

/// Stands in an application's place as a callback.
template <class F>
struct tagRelay;

template <class R, class... A>
struct tagRelay<R (*)(A...)>
{
    using Function = R (*)(A...);
    static constexpr bool g_bHasUser =
        std::is_same_v<std::tuple_element_t<sizeof...(A) - 1, std::tuple<A...>>, unsigned long>;
    static constexpr tagArgumentType g_atTypes[] = {ArgumentType<A>()...};
    static inline tagRegistration* s_ptOnly = nullptr; ///< of those without user data

    /// Puts itself, and its user data, in the place of the application's.
    static void StandIn(Function& pfn, unsigned long* pdwUser, char const* szSymbol)
    {
        if (!pfn)
        {
            return;
        }
        tagRegistration* const pt = Register({reinterpret_cast<void (*)()>(pfn), g_bHasUser ? *pdwUser : 0, szSymbol});
        pfn = &Call;
        if constexpr (g_bHasUser)
        {
            *pdwUser = reinterpret_cast<unsigned long>(pt);
        }
        else
        {
            s_ptOnly = pt;
        }
    }

    static R Call(A... tArguments)
    {
        void* const apValues[] = {&tArguments...};
        tagRegistration const* pt = s_ptOnly;
        if constexpr (g_bHasUser)
        {
            auto& dwUser = *static_cast<unsigned long*>(apValues[sizeof...(A) - 1]);
            pt = reinterpret_cast<tagRegistration const*>(dwUser);
            dwUser = pt->dwUser;
        }
        const int nResult = TraceCallback(*pt, !std::is_void_v<R>, g_atTypes, sizeof...(A), apValues,
                                          [](tagRegistration const& t, void* const* apGiven)
                                          { return Forward(t, apGiven, std::index_sequence_for<A...>()); });
        if constexpr (!std::is_void_v<R>)
        {
            return nResult;
        }
    }

private:
    template <std::size_t... i>
    static int Forward(tagRegistration const& t, void* const* apValues, std::index_sequence<i...>)
    {
        auto* const pfn = reinterpret_cast<Function>(t.pfn);
        if constexpr (std::is_void_v<R>)
        {
            pfn(*static_cast<A*>(apValues[i])...);
            return 0;
        }
        else
        {
            return pfn(*static_cast<A*>(apValues[i])...);
        }
    }
};

/// Calls the plug-in behind, its callbacks replaced by ours.
template <class... A, std::size_t... i>
int CallBehind(tagTracedEntry const& tEntry, void* const* apValues, std::index_sequence<i...>)
{
    [[maybe_unused]] const auto StandIn = [&]<class T>(T* ptArgument, void* pNext)
    {
        if constexpr (std::is_pointer_v<T> && std::is_function_v<std::remove_pointer_t<T>>)
        {
            tagRelay<T>::StandIn(*ptArgument, static_cast<unsigned long*>(pNext), tEntry.szSymbol);
        }
    };
    (StandIn(static_cast<A*>(apValues[i]), apValues[i + 1]), ...);
    return reinterpret_cast<int (*)(A...)>(tEntry.pBehind)(*static_cast<A*>(apValues[i])...);
}

template <class... A>
int Traced(tagTracedEntry const& tEntry, A... tArguments)
{
    static constexpr tagArgumentType s_atTypes[] = {ArgumentType<A>()..., {}};
    void* const apValues[] = {&tArguments..., nullptr};
    return TraceCall(tEntry, s_atTypes, sizeof...(A), apValues,
                     [](tagTracedEntry const& t, void* const* apGiven)
                     { return CallBehind<A...>(t, apGiven, std::index_sequence_for<A...>()); });
}

/// An entry point of the plug-in behind, by its name; null: that one lacks it. Which plug-in it is follows from the
/// name's beginning: TESSARO_TRACE_VTQ, _RTSP, _ONVIF and _PRIVATE name the files.
void* FindBehind(char const* szSymbol);

/// An entry point's body.
#define TRACED(operation, symbol, names, ...)                                                                          \
    static const tessaro::tagTracedEntry s_tEntry{operation, symbol, names, tessaro::FindBehind(symbol)};              \
    return tessaro::Traced(s_tEntry __VA_OPT__(,) __VA_ARGS__)
} // namespace tessaro
