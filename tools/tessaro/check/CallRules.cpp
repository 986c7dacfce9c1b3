// Rules of calls: handles, null pointers, records, logins, start and stop.

#include "adapter/Globals.h"
#include "tools/tessaro/check/Rules.h"
#include "tools/tessaro/records/Records.h"

#include <RecordTables.h>
#include <cstring>
#include <filesystem>
#include <thread>
#include <tuple>

namespace tessaro
{
namespace
{
using Adapter_ProtocolSet::CClientProtocolBase;
using Adapter_ProtocolSet::CClientProtocolSet;

// How an operation is called with a handle and nothing else.
struct tagHandleCall
{
    char const* szName;
    int (*pfnCall)(void* hHandle, eProtocolType eProtocol); ///< null: it takes no handle first
    bool bRecord;                                           ///< takes a pointer to a record
};

template <class T>
constexpr bool g_bRecordPointer = std::is_pointer_v<T>&& std::is_class_v<std::remove_pointer_t<T>>;

// 0, and room where a number or bytes are to go: no record.
template <class T>
T Blank()
{
    if constexpr (std::is_pointer_v<T> && !std::is_class_v<std::remove_pointer_t<T>> &&
                  !std::is_function_v<std::remove_pointer_t<T>> && !std::is_pointer_v<std::remove_pointer_t<T>>)
    {
        alignas(std::max_align_t) static char s_achRoom[65536];
        std::memset(s_achRoom, 0, sizeof s_achRoom);
        return reinterpret_cast<T>(s_achRoom);
    }
    else
    {
        return T{};
    }
}

template <auto Op>
struct tagWithHandle;

template <class... A, int (CClientProtocolSet::*Op)(A...)>
struct tagWithHandle<Op>
{
    using Arguments = std::tuple<A...>;
    static constexpr bool bHandle = std::is_same_v<std::tuple_element_t<0, Arguments>, void*>;
    static constexpr bool bRecord = (g_bRecordPointer<A> || ...);

    static int Call(void* hHandle, eProtocolType eProtocol)
    {
        if constexpr (bHandle)
        {
            Arguments t{Blank<A>()...};
            std::get<0>(t) = hHandle;
            std::get<sizeof...(A) - 1>(t) = eProtocol;
            return std::apply([](auto... tArguments) { return (g_cProtocolSet.*Op)(tArguments...); }, t);
        }
        return 0;
    }
    static constexpr tagHandleCall Row(char const* szName) { return {szName, bHandle ? &Call : nullptr, bRecord}; }
};

constexpr tagHandleCall g_atHandleCalls[] = {
#define OPERATION(line, name, ...) tagWithHandle<&CClientProtocolSet::name>::Row(#name),
#define UNROUTED_OPERATION(...)
#include "protocol/operations.def"
};

// Those that the library asks this plug-in for.
bool Asked(eProtocolType eProtocol, char const* szOperation)
{
    auto tEntry = Sized<tagEntryPoint>();
    for (unsigned int i = 0; TessaroExtra_GetEntryPoint(eProtocol, i, &tEntry) == eResultOk; ++i)
    {
        if (tEntry.dwState == eEntryPointThere && Text(tEntry.szOperation) == szOperation)
        {
            return true;
        }
    }
    return false;
}

bool IsLoginQuestion(char const* szName)
{
    const std::string_view str = szName;
    return str == "GetLoginLevel" || str == "GetLoginMac" || str == "GetLoginStatus";
}

// Every operation with this handle must say that there is none.
tagVerdict NoneKnows(tagTried& tTried, void* hHandle, std::string const& strWhat)
{
    std::string strBad;
    std::size_t nTried = 0;
    for (tagHandleCall const& t : g_atHandleCalls)
    {
        if (!t.pfnCall || !Asked(tTried.eProtocol, t.szName))
        {
            continue;
        }
        ++nTried;
        const int nResult = t.pfnCall(hHandle, tTried.eProtocol);
        const bool bLogin = IsLoginQuestion(t.szName);
        const bool bFine = bLogin ? nResult < 0
                                  : nResult == eResultBadHandle || nResult == eResultNotSupported ||
                                        (tTried.IsRtsp() && nResult == eResultNoEntryPoint);
        strBad += bFine ? "" : fmt::format("{}{} answers {}", strBad.empty() ? "" : ", ", t.szName, nResult);
    }
    return strBad.empty() ? tagVerdict{tagVerdict::eKept, fmt::format("{} operations with {}", nTried, strWhat)}
                          : tagVerdict{tagVerdict::eBroken, fmt::format("with {}: {}", strWhat, strBad)};
}

tagVerdict NullHandle(tagTried& tTried)
{
    return NoneKnows(tTried, nullptr, "a null handle");
}

tagVerdict StrangeHandle(tagTried& tTried)
{
    static char s_ch;
    return NoneKnows(tTried, &s_ch, "a handle that nobody gave out");
}

int LogIn(tagTried& tTried, void** phLogin)
{
    tagUserLoginPara tLogin = tTried.tLogin;
    return g_cProtocolSet.UserLogin(phLogin, &tLogin, tTried.eProtocol);
}

tagVerdict Login(tagTried& tTried)
{
    void* hLogin = nullptr;
    const int nResult = LogIn(tTried, &hLogin);
    const bool bHandle = hLogin || tTried.IsRtsp(); // RTSP's is the library's own, and may be 0
    if (nResult != eResultOk || !bHandle)
    {
        return Bad(fmt::format("a login answers {}, handle {}", nResult, hLogin ? "given" : "null"));
    }
    const int nOut = g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol);
    return nOut == eResultOk ? tagVerdict{} : Bad(fmt::format("a logout answers {}", nOut));
}

tagVerdict WrongPassword(tagTried& tTried)
{
    if (tTried.IsRtsp() || tTried.tLogin.szUserName[0] == '\0')
    {
        return {tagVerdict::eSkipped, "there is no login with a password"};
    }
    tagUserLoginPara tLogin = tTried.tLogin;
    std::snprintf(tLogin.szPassword, sizeof tLogin.szPassword, "not-%.20s", tTried.tLogin.szPassword);
    void* hLogin = nullptr;
    const int nResult = g_cProtocolSet.UserLogin(&hLogin, &tLogin, tTried.eProtocol);
    return nResult == eResultWrongLogin && !hLogin
               ? tagVerdict{}
               : Bad(fmt::format("answers {} and {} handle", nResult, hLogin ? "gives a" : "no"));
}

tagVerdict ClosedHandle(tagTried& tTried)
{
    if (tTried.IsRtsp())
    {
        return {tagVerdict::eSkipped, "its logins are the library's"};
    }
    void* hLogin = nullptr;
    if (const int nResult = LogIn(tTried, &hLogin))
    {
        return Bad(fmt::format("a login answers {}", nResult));
    }
    g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol);
    return NoneKnows(tTried, hLogin, "the handle of a closed login");
}

// A live login, and no record where one belongs.
tagVerdict NullRecords(tagTried& tTried)
{
    if (tTried.IsRtsp())
    {
        return {tagVerdict::eSkipped, "it takes its records from the library"};
    }
    void* hLogin = nullptr;
    if (const int nResult = LogIn(tTried, &hLogin))
    {
        return Bad(fmt::format("a login answers {}", nResult));
    }
    std::string strBad;
    std::size_t nTried = 0;
    for (tagHandleCall const& t : g_atHandleCalls)
    {
        if (t.pfnCall && t.bRecord && Asked(tTried.eProtocol, t.szName))
        {
            ++nTried;
            const int nResult = t.pfnCall(hLogin, tTried.eProtocol);
            strBad += nResult != eResultOk ? "" : fmt::format("{}{}", strBad.empty() ? "" : ", ", t.szName);
        }
    }
    g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol);
    return strBad.empty() ? tagVerdict{tagVerdict::eKept, fmt::format("{} operations", nTried)}
                          : Bad("done without their record: " + strBad);
}

// A record that is no version of itself.
tagVerdict ShortRecord(tagTried& tTried)
{
    if (tTried.IsRtsp())
    {
        return {tagVerdict::eSkipped, "it has no such record"};
    }
    void* hLogin = nullptr;
    if (const int nResult = LogIn(tTried, &hLogin))
    {
        return Bad(fmt::format("a login answers {}", nResult));
    }
    tagPTZPosition tPosition{};
    tPosition.dwSize = 8;
    const int nPosition = g_cProtocolSet.GetIpcPara(hLogin, 0, eCameraPosition, &tPosition, 8, tTried.eProtocol);
    tagImageFileInfo tImage{};
    tImage.dwSize = 8;
    const int nImage = g_cProtocolSet.ImageCapture(hLogin, 0, eImageJpeg, &tImage, tTried.eProtocol);
    g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol);
    const auto Fine = [](int n) { return n == eResultBadArgument || n == eResultNotSupported; };
    return Fine(nPosition) && Fine(nImage)
               ? tagVerdict{}
               : Bad(fmt::format("GetIpcPara answers {}, ImageCapture {}", nPosition, nImage));
}

tagVerdict ManyThreads(tagTried& tTried)
{
    constexpr int nThreads = 4;
    constexpr int nRounds = 10;
    std::atomic<int> nFailed = 0;
    std::atomic<int> nLast = 0;
    {
        std::vector<std::jthread> atThreads;
        for (int i = 0; i < nThreads; ++i)
        {
            atThreads.emplace_back(
                [&]
                {
                    for (int k = 0; k < nRounds; ++k)
                    {
                        void* hLogin = nullptr;
                        int nResult = LogIn(tTried, &hLogin);
                        nResult = nResult == eResultOk ? g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol) : nResult;
                        nFailed += nResult != eResultOk;
                        nLast = nResult != eResultOk ? nResult : nLast.load();
                    }
                });
        }
    }
    return nFailed == 0
               ? tagVerdict{tagVerdict::eKept, fmt::format("{} logins on {} threads", nThreads * nRounds, nThreads)}
               : Bad(fmt::format("{} of {} logins failed, the last with {}", nFailed.load(), nThreads * nRounds,
                                 nLast.load()));
}

std::size_t OpenFiles()
{
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

tagVerdict NothingStays(tagTried& tTried)
{
    void* hLogin = nullptr;
    LogIn(tTried, &hLogin);
    g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol);
    const std::size_t nBefore = OpenFiles();
    for (int i = 0; i < 20; ++i)
    {
        LogIn(tTried, &hLogin);
        g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol);
    }
    const std::size_t nAfter = OpenFiles();
    return nAfter <= nBefore + 2 ? tagVerdict{tagVerdict::eKept, "20 logins"}
                                 : Bad(fmt::format("20 logins leave {} files open", nAfter - nBefore));
}

tagVerdict StopAndStart(tagTried& tTried)
{
    void* hLogin = nullptr;
    const bool bOpen = tTried.tLogin.szAddress[0] != '\0' && LogIn(tTried, &hLogin) == eResultOk && !tTried.IsRtsp();
    const int nStopped = g_cProtocolSet.Stop(tTried.eProtocol);
    const int nAfter =
        bOpen ? g_cProtocolSet.UserLogout(hLogin, tTried.eProtocol) : static_cast<int>(eResultNotStarted);
    const int nStarted = g_cProtocolSet.Start(tTried.eProtocol);
    if (nStopped != eResultOk || nStarted != eResultOk)
    {
        return Bad(fmt::format("Stop answers {}, Start {} afterwards", nStopped, nStarted));
    }
    return nAfter == eResultNotStarted || nAfter == eResultBadHandle
               ? tagVerdict{}
               : Bad(fmt::format("a call on a stopped plug-in answers {}", nAfter));
}

constexpr tagRule g_atCallRules[] = {
    {"null handle", "a null handle is answered with eResultBadHandle, by every operation", false, &NullHandle},
    {"strange handle", "so is one that nobody gave out", false, &StrangeHandle},
    {"login", "a login gives a handle, and can be closed", true, &Login},
    {"wrong password", "a wrong password is answered with eResultWrongLogin, and gives no handle", true,
     &WrongPassword},
    {"closed handle", "the handle of a closed login is answered with eResultBadHandle", true, &ClosedHandle},
    {"null record", "an operation without the record that it needs isn't done", true, &NullRecords},
    {"short record", "a record shorter than its first version is answered with eResultBadArgument", true, &ShortRecord},
    {"threads", "entry points may be called from any thread at once", true, &ManyThreads},
    {"nothing stays", "what is closed leaves no open files", true, &NothingStays},
    {"stop", "a plug-in can be stopped with logins open, and started again", false, &StopAndStart},
};
} // namespace

std::span<tagRule const> CallRules()
{
    return g_atCallRules;
}
} // namespace tessaro
