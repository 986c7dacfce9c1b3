#pragma once

#include "adapter/ClientAdapter.h"
#include "adapter/Globals.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

/// The functions of the C API that the tests have called: `API(PanelControl)(nLogin, &tPara)`.
inline std::set<std::string> g_strCalled;
#define API(name) (g_strCalled.insert("ClientAdapter_" #name), &ClientAdapter_##name)

/// What such a call answers.
#define WORKS(name, ...)           EXPECT_EQ(API(name)(__VA_ARGS__), 0)
#define ANSWERS(result, name, ...) EXPECT_EQ(API(name)(__VA_ARGS__), result)

/// Fails at the end of a run of all tests, those of szFilter, that didn't call every exported function.
class CNoneIsLeftOut : public testing::Environment
{
public:
    explicit CNoneIsLeftOut(char const* szFilter) : m_szFilter(szFilter) {}

private:
    void TearDown() override
    {
        if (testing::GTEST_FLAG(filter) != m_szFilter)
        {
            return;
        }
        std::set<std::string> strMissing{"ClientAdapter_Start",          "ClientAdapter_Stop",
                                         "ClientAdapter_UserLogin",      "ClientAdapter_UserLogout",
                                         "ClientAdapter_GetLoginStatus", "ClientAdapter_GetConfig",
                                         "ClientAdapter_SetConfigBySn",  "ClientAdapter_ForceIFrame",
                                         "ClientAdapter_SubscribeEvent", "ClientAdapter_DeviceProbeStart"};
#define EXPORT(shape, line, function, ...) strMissing.insert(#function);
#include "adapter/exports.def"
        EXPECT_EQ(strMissing.size(), 131);
        for (std::string const& strName : g_strCalled)
        {
            strMissing.erase(strName);
        }
        EXPECT_EQ(testing::PrintToString(strMissing), "{}");
    }

    char const* const m_szFilter;
};

/// A camera parameter comes back as written, with one word changed, and is unchanged after nonsense in that word.
template <class Record>
void TryCamera(int nLogin, eCameraParameter eWhich, uint32_t Record::*pWord, uint32_t dwGood, uint32_t dwBad)
{
    SCOPED_TRACE(eWhich);
    Record tRecord{};
    tRecord.dwSize = sizeof tRecord;
    const auto fnPass = [&](auto pfnPass) { return pfnPass(nLogin, 1, eWhich, &tRecord, sizeof tRecord); };
    EXPECT_EQ(fnPass(API(GetIpcPara)), 0);
    EXPECT_NE(tRecord.*pWord, dwGood);
    tRecord.*pWord = dwGood;
    EXPECT_EQ(fnPass(API(SetIpcPara)), 0);
    tRecord.*pWord = dwBad;
    EXPECT_EQ(fnPass(API(SetIpcPara)), eResultBadArgument);
    EXPECT_EQ(fnPass(API(GetIpcPara)), 0);
    EXPECT_EQ(tRecord.*pWord, dwGood);
}
inline void TryCameraParameters(int nLogin)
{
    TryCamera(nLogin, eCameraPicture, &tagCameraPicture::dwBrightness, 30, 101);
    TryCamera(nLogin, eCameraDayNight, &tagCameraDayNight::dwMode, eDayNightNight, 4);
    TryCamera(nLogin, eCameraExposure, &tagCameraExposure::dwMode, eModeManual, 2);
    TryCamera(nLogin, eCameraFocus, &tagCameraFocus::dwMode, eModeManual, 2);
}

/// What comes is waited for: long, so that a machine that is busy passes.
constexpr auto g_tPatience = 60s;

/// What callbacks bring.
template <class T>
class CInbox
{
public:
    void Put(T tNew)
    {
        const std::lock_guard tLock(m_tMutex);
        m_atCame.push_back(std::move(tNew));
        m_tCame.notify_all();
    }
    /// The first one that is wanted; it and those before it are gone then. A failure, and T{}, when none comes.
    template <class Wanted>
    T Await(Wanted fnWanted)
    {
        std::unique_lock tLock(m_tMutex);
        const auto tUntil = std::chrono::steady_clock::now() + g_tPatience;
        do
        {
            while (!m_atCame.empty())
            {
                T tFirst = std::move(m_atCame.front());
                m_atCame.pop_front();
                if (std::invoke(fnWanted, tFirst))
                {
                    return tFirst;
                }
            }
        } while (m_tCame.wait_until(tLock, tUntil) == std::cv_status::no_timeout);
        ADD_FAILURE() << "it did not come";
        return {};
    }
    T Next()
    {
        return Await([](T const&) { return true; });
    }
    /// How many have come since the last look.
    std::size_t Drain()
    {
        const std::lock_guard tLock(m_tMutex);
        return std::exchange(m_atCame, {}).size();
    }

private:
    std::mutex m_tMutex;
    std::condition_variable m_tCame;
    std::deque<T> m_atCame;
};

template <class T>
unsigned long User(T& tTarget)
{
    return reinterpret_cast<unsigned long>(&tTarget);
}
template <class T>
T& Target(unsigned long dwUser)
{
    return *reinterpret_cast<T*>(dwUser);
}
inline int IdOf(void* hSource)
{
    return static_cast<int>(reinterpret_cast<intptr_t>(hSource));
}

/// A frame, copied.
struct tagSeen : tagStreamMediaFrame
{
    int nMedia = -1;
    std::string strData;

    bool IsKey() const { return dwMediaType == eMediaVideo && (dwFlags & eFrameKey) != 0; }
    bool IsVideo() const { return dwMediaType == eMediaVideo && (dwFlags & eFrameEnd) == 0; }
    bool IsEnd() const { return (dwFlags & eFrameEnd) != 0; }
};
using Frames = CInbox<tagSeen>;

inline int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    Target<Frames>(dwUser).Put(
        {*ptFrame, IdOf(hStream), {reinterpret_cast<char const*>(ptFrame->pData), ptFrame->dwLength}});
    return 0;
}

struct tagEvent
{
    int nLogin;
    unsigned long dwEvent, dwWhere, dwState;
};
using Events = CInbox<tagEvent>;

inline int OnEvent(void* hLogin, unsigned long dwEvent, unsigned long dwWhere, unsigned long dwState, unsigned long,
                   unsigned long dwUser)
{
    Target<Events>(dwUser).Put({IdOf(hLogin), dwEvent, dwWhere, dwState});
    return 0;
}

/// Bytes, wherever they come from.
using Bytes = CInbox<std::string>;

inline int PutBytes(unsigned char const* pData, uint32_t dwLength, unsigned long dwUser)
{
    Target<Bytes>(dwUser).Put({reinterpret_cast<char const*>(pData), dwLength});
    return 0;
}
inline int OnBytes(void*, tagBuffer* ptBuffer, unsigned long dwUser)
{
    return PutBytes(ptBuffer->pData, ptBuffer->dwLength, dwUser);
}
inline int OnBlock(void*, tagBuffer tBuffer, unsigned long dwUser)
{
    EXPECT_TRUE(tBuffer.pData || tBuffer.dwLength == 0); // the end, or why it ended
    std::this_thread::sleep_for(50ms);                   // so long that another thread goes on with what else there is
    return PutBytes(tBuffer.pData, tBuffer.dwLength, dwUser);
}
inline int OnVoice(void*, eVoiceStreamSource, tagStreamVoiceFrame const* ptFrame, unsigned long dwUser)
{
    return PutBytes(ptFrame->pData, ptFrame->dwLength, dwUser);
}
inline tagBuffer Buffer(std::string& strBytes)
{
    return {reinterpret_cast<unsigned char*>(strBytes.data()), static_cast<uint32_t>(strBytes.size())};
}

inline constexpr int64_t g_llSecond = 1000000;

/// Whether fnHolds does, in the end.
template <class Holds>
bool Comes(Holds fnHolds)
{
    for (const auto tUntil = std::chrono::steady_clock::now() + g_tPatience; !fnHolds();)
    {
        if (std::chrono::steady_clock::now() > tUntil)
        {
            return false;
        }
        std::this_thread::sleep_for(5ms);
    }
    return true;
}
/// Wanted events.
inline auto Is(eDeviceEvent eEvent, unsigned long dwWhere, unsigned long dwState)
{
    return [=](tagEvent const& t)
    { return t.dwEvent == static_cast<unsigned long>(eEvent) && t.dwWhere == dwWhere && t.dwState == dwState; };
}
inline auto Is(eDeviceEvent eEvent)
{
    return [=](tagEvent const& t) { return t.dwEvent == static_cast<unsigned long>(eEvent); };
}

/// A record that says how long it is.
template <class Record>
Record Sized()
{
    Record tRecord{};
    tRecord.dwSize = sizeof tRecord;
    return tRecord;
}

/// A record with a list, and room for it.
template <class List, class Entry>
struct tagListed : List
{
    Entry at[64]{};
    tagListed() : List{}
    {
        this->dwSize = sizeof(List);
        this->dwEntrySize = sizeof(Entry);
        this->dwCapacity = 64;
        this->ptEntries = at;
    }
};

/// The library with the devices of one protocol, and a login of the administrator to one that no other test uses.
class CDeviceTest : public testing::TestWithParam<eProtocolType>
{
protected:
    CDeviceTest() { Start(); }
    ~CDeviceTest() override
    {
        API(UserLogout)(m_nLogin);
        Stop();
    }
    void Start()
    {
        API(Start)(16);
        if (GetParam() == eProtocolPrivate)
        {
            EXPECT_EQ(g_cProtocolSet.InsertProtocol(eProtocolPrivate, "libvornclient.so"), 0);
            EXPECT_EQ(g_cProtocolSet.Start(eProtocolPrivate), 0);
        }
        EXPECT_EQ(Login(m_nLogin), 0);
    }
    void Stop()
    {
        if (GetParam() == eProtocolPrivate)
        {
            g_cProtocolSet.Stop(eProtocolPrivate);
        }
        API(Stop)();
    }
    int Login(int& nLogin, char const* szUser = "admin", char const* szPassword = "admin")
    {
        tagUserLoginPara tPara{};
        m_strAddress.copy(tPara.szAddress, sizeof tPara.szAddress);
        strcpy(tPara.szUserName, szUser);
        strcpy(tPara.szPassword, szPassword);
        return API(UserLogin)(&nLogin, GetParam(), &tPara);
    }
    tagDeviceFault FaultOf(eFaultKind eKind)
    {
        auto tFault = Sized<tagDeviceFault>();
        tFault.dwFault = static_cast<uint32_t>(eKind);
        m_strAddress.copy(tFault.szAddress, sizeof tFault.szAddress);
        return tFault;
    }
    /// The device misbehaves.
    int Fault(eFaultKind eKind, uint32_t dwChannel = 0, uint32_t dwMilliseconds = 0, uint32_t dwCount = 0,
              uint32_t dwValue = 0, int64_t llOffsetUs = 0)
    {
        tagDeviceFault tFault = FaultOf(eKind);
        tFault.dwChannel = dwChannel;
        tFault.dwMilliseconds = dwMilliseconds;
        tFault.dwCount = dwCount;
        tFault.dwValue = dwValue;
        tFault.llOffsetUs = llOffsetUs;
        return API(RTSPSetIsProductTest)(eMiscFault, &tFault, sizeof tFault, GetParam());
    }
    bool IsVTQ() const { return GetParam() == eProtocolVTQ; }

    static auto Block(eConfigType eType, uint32_t dwIndex, uint32_t dwStream)
    {
        auto ptBlock = std::make_unique<tagConfigInformation>();
        ptBlock->type = static_cast<uint32_t>(eType);
        ptBlock->index = dwIndex;
        ptBlock->extra[1] = dwStream;
        return ptBlock;
    }
    template <class Record>
    Record Read(eConfigType eType, uint32_t dwIndex = 0, uint32_t dwStream = 0)
    {
        const auto ptBlock = Block(eType, dwIndex, dwStream);
        WORKS(GetConfig, m_nLogin, ptBlock.get()) << eType;
        EXPECT_EQ(ptBlock->extra[0], sizeof(Record)) << eType;
        Record tRecord;
        std::memcpy(&tRecord, ptBlock->data, sizeof tRecord);
        return tRecord;
    }
    template <class Record>
    int Write(eConfigType eType, Record const& tRecord, uint32_t dwIndex = 0, uint32_t dwStream = 0)
    {
        const auto ptBlock = Block(eType, dwIndex, dwStream);
        std::memcpy(ptBlock->data, &tRecord, sizeof tRecord);
        return API(SetConfig)(m_nLogin, ptBlock.get());
    }
    int Open(int& nMedia, uint32_t dwChannel, uint32_t dwStreamKind = eStreamMain)
    {
        tagRealStreamPara tPara{dwChannel, 0, dwStreamKind, {}};
        return API(RealStreamConnect)(&nMedia, m_nLogin, &tPara);
    }
    /// What a query answers, to its end.
    template <class Result, class Connect, class Factor, class Next, class Close>
    static std::vector<Result> Ask(int nUnder, Connect pfnConnect, Factor tFactor, Next pfnNext, Close pfnClose)
    {
        std::vector<Result> atFound;
        auto tResult = Sized<Result>();
        int nQuery = -1;
        EXPECT_EQ(pfnConnect(&nQuery, nUnder, &tFactor), 0);
        while (pfnNext(nQuery, &tResult) == 0 && atFound.size() < 100000)
        {
            atFound.push_back(tResult);
        }
        EXPECT_EQ(pfnNext(nQuery, &tResult), eResultNoMoreEntries);
        EXPECT_EQ(pfnClose(nQuery), 0);
        EXPECT_EQ(pfnNext(nQuery, &tResult), -1);
        return atFound;
    }
    auto Recordings(tagHistoryStreamQueryFactor tFactor = Sized<tagHistoryStreamQueryFactor>())
    {
        return Ask<tagHistoryStreamQueryResult>(m_nLogin, API(HistoryStreamQueryConnect), tFactor,
                                                API(HistoryStreamQueryNext), API(HistoryStreamQueryDisconnect));
    }

    std::string m_strAddress = Fresh();
    Events m_tEvents; // of m_nLogin, until it is logged out
    int m_nLogin = -1;

private:
    static std::string Fresh()
    {
        static int s_nDevices = 0;
        return "box-" + std::to_string(++s_nDevices);
    }
};
