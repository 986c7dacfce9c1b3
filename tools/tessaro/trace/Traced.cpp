#include "tools/tessaro/trace/Traced.h"

#include "tools/tessaro/trace/Journal.h"

#include <cstdlib>
#include <cstring>
#include <deque>
#include <dlfcn.h>
#include <mutex>
#include <utility>

namespace tessaro
{
namespace
{
struct tagBehind
{
    char const* szPrefix;
    char const* szVariable;
};
constexpr tagBehind g_atBehind[] = {
    {"VTQ", "TESSARO_TRACE_VTQ"},
    {"RTSP", "TESSARO_TRACE_RTSP"},
    {"Onvif", "TESSARO_TRACE_ONVIF"},
    {"Vorn", "TESSARO_TRACE_PRIVATE"},
};

// The call that this thread is in; null: none, or the application's code runs in a callback.
thread_local char const* t_szInside = nullptr;
} // namespace

void* FindBehind(char const* szSymbol)
{
    for (tagBehind const& t : g_atBehind)
    {
        char const* const szFile =
            std::strncmp(szSymbol, t.szPrefix, std::strlen(t.szPrefix)) == 0 ? getenv(t.szVariable) : nullptr;
        if (szFile)
        {
            void* const hModule = dlopen(szFile, RTLD_LAZY | RTLD_LOCAL); // the same one each time, never closed
            return hModule ? dlsym(hModule, szSymbol) : nullptr;
        }
    }
    return nullptr;
}

int TraceCall(tagTracedEntry const& tEntry, tagArgumentType const* atTypes, std::size_t nArguments,
              void* const* apValues, int (*pfnCall)(tagTracedEntry const& tEntry, void* const* apValues))
{
    const std::vector<std::string> astrNames = SplitNames(tEntry.szNames);
    tagTracedCall tCall{tEntry.szOperation, {}};
    for (std::size_t i = 0; i < nArguments; ++i)
    {
        if (atTypes[i].eKind == eArgument::Number)
        {
            tCall.tWords[astrNames[i]] = NumberAt(atTypes[i], apValues[i]);
        }
    }
    json tIn = json::object();
    json tOut = json::object();
    const auto Add = [&](json& tTo, bool bAfter)
    {
        for (std::size_t i = 0; i < nArguments; ++i)
        {
            const json t = ArgumentJson(tCall, astrNames[i], atTypes[i], apValues[i], bAfter);
            if (!t.is_null() && !(bAfter && tIn.contains(astrNames[i]) && tIn[astrNames[i]] == t))
            {
                tTo[astrNames[i]] = t;
            }
        }
    };
    Add(tIn, false);
    char const* const szOuter = std::exchange(t_szInside, tEntry.szSymbol);
    const double dBegin = TraceTime();
    const int nResult = tEntry.pBehind ? pfnCall(tEntry, apValues) : static_cast<int>(eResultNoEntryPoint);
    const double dEnd = TraceTime();
    t_szInside = szOuter;
    if (nResult == eResultOk)
    {
        Add(tOut, true);
    }
    json tLine = {{"t", dBegin}, {"thread", TraceThread()}, {"call", tEntry.szSymbol},
                  {"in", tIn},   {"result", nResult},       {"us", static_cast<long long>((dEnd - dBegin) * 1e6)},
                  {"out", tOut}};
    if (szOuter)
    {
        tLine["inside"] = szOuter; // one plug-in drives another
    }
    WriteTrace(tLine);
    return nResult;
}

tagRegistration* Register(tagRegistration const& t)
{
    static std::mutex& s_tMutex = *new std::mutex;
    static std::deque<tagRegistration>& s_tAll = *new std::deque<tagRegistration>;
    const std::lock_guard tLock(s_tMutex);
    return &s_tAll.emplace_back(t);
}

int TraceCallback(tagRegistration const& tRegistration, bool bResult, tagArgumentType const* atTypes,
                  std::size_t nArguments, void* const* apValues,
                  int (*pfnCall)(tagRegistration const& tRegistration, void* const* apValues))
{
    json tLine = {
        {"t", TraceTime()}, {"thread", TraceThread()}, {"callback", tRegistration.szSymbol}, {"in", json::array()}};
    const tagTracedCall tNone{};
    for (std::size_t i = 0; i < nArguments; ++i)
    {
        tLine["in"].push_back(ArgumentJson(tNone, "h", atTypes[i], apValues[i], false));
    }
    char const* const szOuter = std::exchange(t_szInside, nullptr);
    const int nResult = pfnCall(tRegistration, apValues);
    t_szInside = szOuter;
    if (bResult)
    {
        tLine["result"] = nResult;
    }
    WriteTrace(tLine);
    return nResult;
}
} // namespace tessaro
