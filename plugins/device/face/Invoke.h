#pragma once

#include "plugins/device/face/Face.h"

#include <tuple>
#include <utility>

namespace device
{
/// One parameter of an entry point on its way to a function of the model. Read comes before the call, Write after one
/// that worked; both answer a result.
template <class From, class To>
struct tagArgument
{
    static int Read(From, To&) { return eResultOk; }
    static int Write(From, To&) { return eResultOk; }
    static To Make(From tFrom) { return static_cast<To>(tFrom); }
};

/// A record that goes in: a copy as this side knows it.
template <class Record>
struct tagArgument<Record*, Record const&>
{
    static Record Make(Record*) { return {}; }
    static int Read(Record* ptFrom, Record& tTo) { return Adapter_ProtocolSet::ReadRecord(tTo, ptFrom); }
    static int Write(Record*, Record&) { return eResultOk; }
};

/// A record that is filled; what came in is there too.
template <class Record>
requires requires(Record t)
{
    t.dwSize;
}
struct tagArgument<Record*, Record&>
{
    static Record Make(Record*) { return {}; }
    static int Read(Record* ptFrom, Record& tTo) { return Adapter_ProtocolSet::ReadRecord(tTo, ptFrom); }
    static int Write(Record* ptFrom, Record& tTo) { return Adapter_ProtocolSet::WriteRecord(ptFrom, tTo); }
};

/// A word or a number that is filled.
template <class From, class To>
requires(!requires(From t) { t.dwSize; }) struct tagArgument<From*, To&>
{
    static To Make(From*) { return {}; }
    static int Read(From* pFrom, To& tTo)
    {
        if (!pFrom)
        {
            return eResultBadArgument;
        }
        tTo = static_cast<To>(*pFrom);
        return eResultOk;
    }
    static int Write(From* pFrom, To& tTo)
    {
        *pFrom = static_cast<From>(tTo);
        return eResultOk;
    }
};

/// A text that must be there.
template <>
struct tagArgument<char*, std::string const&>
{
    static std::string Make(char* szFrom) { return szFrom ? szFrom : ""; }
    static int Read(char* szFrom, std::string&) { return szFrom ? int{eResultOk} : int{eResultBadArgument}; }
    static int Write(char*, std::string&) { return eResultOk; }
};

/// What a function of the model is: its class, and its parameters but for who asks.
template <class Function>
struct tagMethod;
template <class Part, class... To>
struct tagMethod<int (Part::*)(To...)>
{
    using Owner = Part;
    template <std::size_t i>
    using Parameter = std::tuple_element_t<i, std::tuple<To...>>;
    static constexpr bool bCaller = false;
};
template <class Part, class... To>
struct tagMethod<int (Part::*)(tagCaller const&, To...)>
{
    using Owner = Part;
    template <std::size_t i>
    using Parameter = std::tuple_element_t<i, std::tuple<To...>>;
    static constexpr bool bCaller = true;
};
template <class Part, class... To>
struct tagMethod<int (Part::*)(To...) const> : tagMethod<int (Part::*)(To...)>
{
};

/// Calls a function of the model with an entry point's parameters: reads the records, calls, writes the records back.
template <auto Method, std::size_t... i, class... From>
int Invoke(std::index_sequence<i...>, CDevice& tDevice, tagCaller const& tCaller, From... tFrom)
{
    using M = tagMethod<decltype(Method)>;
    std::tuple<std::decay_t<typename M::template Parameter<i>>...> tValues{
        tagArgument<From, typename M::template Parameter<i>>::Make(tFrom)...};
    int nResult = eResultOk;
    const auto fnStep = [&](int nStep) { return (nResult = nStep) == eResultOk; };
    const auto fnCall = [&]
    {
        const CDevice::CLock tLock(tDevice);
        auto& tPart = tDevice.Part<typename M::Owner>();
        if constexpr (M::bCaller)
        {
            return (tPart.*Method)(tCaller, std::get<i>(tValues)...);
        }
        else
        {
            return (tPart.*Method)(std::get<i>(tValues)...);
        }
    };
    (void)((fnStep(tagArgument<From, typename M::template Parameter<i>>::Read(tFrom, std::get<i>(tValues))) && ...) &&
           fnStep(fnCall()) &&
           (fnStep(tagArgument<From, typename M::template Parameter<i>>::Write(tFrom, std::get<i>(tValues))) && ...));
    return nResult;
}
} // namespace device
