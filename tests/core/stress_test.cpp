// Races: what threads of the application and of plug-ins may do at once, under the invariants that a call reaches its
// own plug-in handle, that an ID comes back only when the search has gone round, and that a callback gets the ID and
// user data of one registration.

#include "adapter/ClientAdapter.h"
#include "tests/recorder/Journal.h"

#include <array>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace
{
// Between threads only relaxed words, so that nothing but the library puts them in order.
constexpr auto g_eRelaxed = std::memory_order_relaxed;
std::atomic<int> g_nCalls;
std::atomic<int> g_nDelivered;
std::atomic<int> g_nFailed;

void Check(bool bHolds, char const* szInvariant)
{
    if (!bHolds && g_nFailed.fetch_add(1, g_eRelaxed) < 20)
    {
        std::fprintf(stderr, "not so: %s\n", szInvariant);
    }
}

void Called()
{
    g_nCalls.fetch_add(1, g_eRelaxed);
}

template <class F>
void InThreads(int nThreads, F fnRun)
{
    std::vector<std::thread> atThreads;
    for (int i = 0; i < nThreads; ++i)
    {
        atThreads.emplace_back(fnRun, i);
    }
    for (std::thread& tThread : atThreads)
    {
        tThread.join();
    }
}

// --- The plug-ins ----------------------------------------------------------------------------------------------------

constexpr eProtocolType g_aeProtocols[] = {eProtocolOnvif, eProtocolRTSP, eProtocolVTQ};
std::atomic<std::uintptr_t> g_uHandles = 1;

// What the plug-in heard from the calling thread. Handles are numbered, each once, and tell their protocol.
struct tagHeard
{
    std::uintptr_t uOpened; // the handle it gave
    std::uintptr_t uHandle; // the handle it was called with; 0: none
    void* pfnCallback;      // what it was given to call
    int nAddress;           // the address it was to connect to
};
thread_local tagHeard g_tHeard;

std::uintptr_t Protocol(std::string const& strEntry)
{
    return strEntry[0] == 'O' ? eProtocolOnvif : strEntry[0] == 'R' ? eProtocolRTSP : eProtocolVTQ;
}

int Plugin(tagCalled const& tCall, void** ppHandle)
{
    const std::uintptr_t uProtocol = Protocol(tCall.strEntry);
    auto const& auArguments = tCall.auArguments;
    if (ppHandle)
    {
        g_tHeard.uOpened = g_uHandles.fetch_add(1, g_eRelaxed) * 4 + uProtocol;
        *ppHandle = reinterpret_cast<void*>(g_tHeard.uOpened);
        if (tCall.strEntry == "RTSPClient_Create")
        {
            char const* const szUrl = reinterpret_cast<tagRTSPClientPara*>(auArguments[1])->szUrl;
            std::from_chars(szUrl, szUrl + std::strlen(szUrl), g_tHeard.nAddress);
        }
        return 0;
    }
    if (auArguments.empty() || tCall.strEntry.ends_with("Interface") || tCall.strEntry.ends_with("Channel"))
    {
        return 0; // of the service: no handle
    }
    g_tHeard.uHandle = auArguments[0];
    Check(g_tHeard.uHandle % 4 == uProtocol, "a handle stays in its protocol");
    if (tCall.strEntry.ends_with("CB") || tCall.strEntry.ends_with("SubscribeEvent"))
    {
        g_tHeard.pfnCallback = reinterpret_cast<void*>(auArguments.end()[-2]);
    }
    return 0;
}

// --- IDs -------------------------------------------------------------------------------------------------------------

constexpr int g_nMostOpen = 100; // of one table at any time

// The IDs of one table, as their users see them.
class CIDs
{
public:
    // nTaken: how many IDs the opening took.
    template <class F>
    int Open(int nTaken, F fnOpen)
    {
        const int nEnded = m_nEnded.load(g_eRelaxed);
        m_nBegun.fetch_add(nTaken, g_eRelaxed);
        int nID = -1;
        Check(fnOpen(&nID) == 0 && nID >= 0 && nID < 1000, "an opening succeeds");
        m_nEnded.fetch_add(nTaken, g_eRelaxed);
        Called();
        Check(!m_abOpen[Slot(nID)].exchange(true, g_eRelaxed), "no ID is given twice at once");
        Check(WentRound(GivenAt(nID)), "no ID comes back before the search has gone round");
        m_anGiven[Slot(nID)].store(nEnded, g_eRelaxed);
        return nID;
    }

    template <class F>
    void Close(int nID, F fnClose)
    {
        m_abOpen[Slot(nID)].store(false, g_eRelaxed);
        Check(fnClose(nID) == 0, "a closing succeeds");
        Called();
    }

    // When the ID was given, on the clock of all openings; -1: never.
    int GivenAt(int nID) const { return m_anGiven[Slot(nID)].load(g_eRelaxed); }

    // Whether the search may have come by again since.
    bool WentRound(int nGivenAt) const
    {
        return nGivenAt < 0 || m_nBegun.load(g_eRelaxed) - nGivenAt >= 999 - g_nMostOpen;
    }

    CIDs() { Forget(); }

    // For after openings that didn't come through here.
    void Forget()
    {
        for (auto& nGiven : m_anGiven)
        {
            nGiven.store(-1, g_eRelaxed);
        }
    }

private:
    static std::size_t Slot(int nID) { return static_cast<std::size_t>(nID < 0 ? 0 : nID % 1000); }

    std::atomic<int> m_nBegun = 0; // at least as many as were given
    std::atomic<int> m_nEnded = 0; // at most
    std::array<std::atomic<bool>, 1000> m_abOpen{};
    std::array<std::atomic<int>, 1000> m_anGiven;
};
CIDs g_tLogins;
CIDs g_tMedia;

struct tagLogin
{
    int nID;
    eProtocolType eType;
    std::uintptr_t uHandle;
    int nGivenAt;
};

tagLogin Login(eProtocolType eType, int nAddress = 0)
{
    tagUserLoginPara tPara{};
    std::snprintf(tPara.szAddress, sizeof tPara.szAddress, "%d", nAddress);
    const int nID = g_tLogins.Open(eType == eProtocolRTSP ? 2 : 1,
                                   [&](int* pnID) { return ClientAdapter_UserLogin(pnID, eType, &tPara); });
    return {nID, eType, g_tHeard.uOpened, g_tLogins.GivenAt(nID)};
}

void Logout(tagLogin const& tLogin)
{
    g_tHeard.uHandle = 0;
    g_tLogins.Close(tLogin.nID, &ClientAdapter_UserLogout);
    Check(tLogin.eType == eProtocolRTSP || g_tHeard.uHandle == tLogin.uHandle, "a logout reaches its own login");
}

struct tagStream
{
    int nID;
    std::uintptr_t uHandle;
    int nGivenAt;
};

tagStream Connect(int nLogin)
{
    tagRealStreamPara tPara{};
    tPara.dwStreamKind = eStreamMain;
    const int nID = g_tMedia.Open(1, [&](int* pnID) { return ClientAdapter_RealStreamConnect(pnID, nLogin, &tPara); });
    return {nID, g_tHeard.uOpened, g_tMedia.GivenAt(nID)};
}

void Disconnect(tagStream const& tStream)
{
    g_tHeard.uHandle = 0;
    g_tMedia.Close(tStream.nID, &ClientAdapter_RealStreamDisconnect);
    Check(g_tHeard.uHandle == tStream.uHandle, "a closing reaches its own stream");
}

void Use(tagStream const& tStream)
{
    g_tHeard.uHandle = 0;
    Check(ClientAdapter_StreamMediaControl(tStream.nID, eTaskPlay) == 0 && g_tHeard.uHandle == tStream.uHandle,
          "a call reaches its own stream");
    Called();
}

void Use(tagLogin const& tLogin)
{
    g_tHeard.uHandle = 0;
    Check(ClientAdapter_DeviceControl(tLogin.nID, {}) == 0 &&
              (tLogin.eType == eProtocolRTSP || g_tHeard.uHandle == tLogin.uHandle),
          "a call reaches its own login");
    Called();
}

// What a plug-in was given by the calling thread's last registration.
template <class Function>
Function Trampoline()
{
    return reinterpret_cast<Function>(g_tHeard.pfnCallback);
}

void* AsHandle(int nID)
{
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(nID));
}

// Callbacks of any kind, told apart by a number that is in the user data as well, beside the ID.
constexpr unsigned long UserData(int nID, int nFunction)
{
    return static_cast<unsigned long>(nID * 2 + nFunction);
}
template <int nFunction, class... A>
int Heard(void* hID, A... tArguments)
{
    const auto dwUser = std::get<sizeof...(A) - 1>(std::tuple{tArguments...});
    const auto nID = static_cast<int>(reinterpret_cast<std::intptr_t>(hID));
    Check(dwUser == UserData(nID, nFunction), "function, ID and user data are of one registration");
    g_nDelivered.fetch_add(1, g_eRelaxed);
    return 0;
}
template <int nFunction, class... A>
auto HeardAs(int (*)(void*, A...))
{
    return &Heard<nFunction, A...>;
}

// --- Races -----------------------------------------------------------------------------------------------------------

// Threads log in, open, use, close and log out on IDs of their own, and all use the same long-lived ones.
void OpenAndClose()
{
    std::vector<tagLogin> atLogins;
    std::vector<tagStream> atStreams;
    for (const eProtocolType eType : g_aeProtocols)
    {
        atLogins.push_back(Login(eType));
        atStreams.push_back(Connect(atLogins.back().nID));
    }
    InThreads(4,
              [&](int nThread)
              {
                  for (int i = 0; i < 4000; ++i)
                  {
                      const int nAddress = nThread * 10000 + i;
                      const tagLogin tLogin = Login(g_aeProtocols[i % 3], nAddress);
                      const tagStream tStream = Connect(tLogin.nID);
                      Check(tLogin.eType != eProtocolRTSP || g_tHeard.nAddress == nAddress,
                            "a stream is opened with its own login's address");
                      for (std::size_t j = 0; j < std::size(g_aeProtocols); ++j)
                      {
                          Use(atLogins[j]);
                          Use(atStreams[j]);
                          Use(tLogin);
                          Use(tStream);
                      }
                      Disconnect(tStream);
                      Check(ClientAdapter_StreamMediaControl(tStream.nID, eTaskPlay) == -1 ||
                                g_tMedia.WentRound(tStream.nGivenAt),
                            "a closed media ID is unknown");
                      Logout(tLogin);
                      Check(ClientAdapter_DeviceControl(tLogin.nID, {}) == 3 || g_tLogins.WentRound(tLogin.nGivenAt),
                            "a closed login ID is unknown");
                  }
              });
    for (std::size_t j = 0; j < std::size(g_aeProtocols); ++j)
    {
        Disconnect(atStreams[j]);
        Logout(atLogins[j]);
    }
}

// A kind of media callback: registers number nFunction for a stream, and calls back as the plug-in does.
struct tagKind
{
    int (*pfnRegister)(int nMediaID, int nFunction);
    int (*pfnDeliver)(void* pfnTrampoline, int nMediaID);
};
template <auto pfnRegister, class Function, auto... tArguments>
constexpr tagKind Kind()
{
    return {[](int nMediaID, int nFunction)
            {
                return pfnRegister(nMediaID, nFunction ? HeardAs<1>(Function{}) : HeardAs<0>(Function{}),
                                   UserData(nMediaID, nFunction));
            },
            [](void* pfnTrampoline, int nMediaID) {
                return reinterpret_cast<Function>(pfnTrampoline)(nullptr, tArguments...,
                                                                 static_cast<unsigned long>(nMediaID));
            }};
}
constexpr tagKind g_atKinds[] = {
    Kind<&ClientAdapter_StreamMediaCB, StreamMediaCallback, nullptr>(),
    Kind<&ClientAdapter_StreamMediaRawCB, StreamMediaCallback, nullptr>(),
    Kind<&ClientAdapter_VoiceStreamCB, StreamVoiceCallback, eVoiceStreamSource{}, nullptr>(),
    Kind<&ClientAdapter_TransparentChannelCB, TransparentChannelCallback, nullptr>(),
    Kind<&ClientAdapter_FileUploadCB, FileUploadCallback, tagFileUploadState{}>(),
    Kind<&ClientAdapter_FileDownloadCB, FileDownloadCallback, tagBuffer{}>(),
};

// Media callbacks of two streams are registered while all of their kinds arrive.
void RegisterWhileFramesArrive()
{
    const tagLogin tLogin = Login(eProtocolVTQ);
    const tagStream atStreams[] = {Connect(tLogin.nID), Connect(tLogin.nID)};
    void* apfnTrampoline[std::size(g_atKinds)];
    for (std::size_t i = 0; i < std::size(g_atKinds); ++i)
    {
        for (tagStream const& tStream : atStreams)
        {
            Check(g_atKinds[i].pfnRegister(tStream.nID, 0) == 0, "a registration succeeds");
        }
        apfnTrampoline[i] = g_tHeard.pfnCallback;
    }
    std::atomic<int> nRegistering = 2;
    InThreads(
        4,
        [&](int nThread)
        {
            const auto fnEach = [&](auto fnRun)
            {
                for (std::size_t i = 0; i < std::size(g_atKinds); ++i)
                {
                    for (tagStream const& tStream : atStreams)
                    {
                        fnRun(i, tStream);
                    }
                }
            };
            if (nThread < 2)
            {
                while (nRegistering.load(g_eRelaxed))
                {
                    fnEach(
                        [&](std::size_t i, tagStream const& tStream) {
                            Check(g_atKinds[i].pfnDeliver(apfnTrampoline[i], tStream.nID) == 0, "a frame is delivered");
                        });
                }
                return;
            }
            for (int n = 0; n < 3000; ++n)
            {
                fnEach(
                    [&](std::size_t i, tagStream const& tStream)
                    {
                        g_tHeard.uHandle = 0;
                        Check(g_atKinds[i].pfnRegister(tStream.nID, n % 2) == 0 && g_tHeard.uHandle == tStream.uHandle,
                              "a registration reaches its own stream");
                        Called();
                    });
            }
            nRegistering.fetch_sub(1, g_eRelaxed);
        });
    Disconnect(atStreams[0]);
    Disconnect(atStreams[1]);
    Logout(tLogin);
}

// Logins subscribe for the first time, which makes their records, while events of all of them arrive.
void SubscribeWhileEventsArrive()
{
    constexpr int nEach = g_nMostOpen / 2 - 1;
    std::vector<tagLogin> atLogins;
    for (int i = 0; i < 2 * nEach; ++i)
    {
        atLogins.push_back(Login(eProtocolVTQ));
    }
    ClientAdapter_SubscribeEvent(atLogins[0].nID, 1, HeardAs<0>(DeviceEventCallback{}), UserData(atLogins[0].nID, 0));
    const auto pfnTrampoline = Trampoline<DeviceEventCallback>();
    std::atomic<int> nSubscribing = 2;
    InThreads(4,
              [&](int nThread)
              {
                  if (nThread < 2)
                  {
                      do
                      {
                          for (tagLogin const& tLogin : atLogins)
                          {
                              pfnTrampoline(nullptr, 1, 2, 3, 4, static_cast<unsigned long>(tLogin.nID));
                          }
                      } while (nSubscribing.load(g_eRelaxed));
                      return;
                  }
                  for (int n = 0; n < 100; ++n)
                  {
                      for (int i = 0; i < nEach; ++i)
                      {
                          tagLogin const& tLogin = atLogins[static_cast<std::size_t>(2 * i + nThread % 2)];
                          g_tHeard.uHandle = 0;
                          Check(ClientAdapter_SubscribeEvent(tLogin.nID, 1,
                                                             n % 2 ? HeardAs<1>(DeviceEventCallback{})
                                                                   : HeardAs<0>(DeviceEventCallback{}),
                                                             UserData(tLogin.nID, n % 2)) == 0 &&
                                    g_tHeard.uHandle == tLogin.uHandle,
                                "a subscription reaches its own login");
                          Called();
                      }
                  }
                  nSubscribing.fetch_sub(1, g_eRelaxed);
              });
    Check(g_nDelivered > 0, "events are delivered");
    for (tagLogin const& tLogin : atLogins)
    {
        Logout(tLogin);
    }
}

// Callbacks of several plug-in threads close their own stream, open the next, register for it and log in and out.
thread_local tagStream g_tOwn;
thread_local tagLogin g_tOwnLogin;
int Hop(void* hStream, tagStreamMediaFrame const*, unsigned long dwUser)
{
    Check(hStream == AsHandle(g_tOwn.nID) && dwUser == g_tOwn.uHandle, "a frame comes to its own stream");
    g_nDelivered.fetch_add(1, g_eRelaxed);
    Use(g_tOwn);
    Check(ClientAdapter_StreamMediaCB(g_tOwn.nID, nullptr, 0) == 0, "a registration succeeds inside");
    Disconnect(g_tOwn);
    const tagLogin tLogin = Login(g_tOwnLogin.eType);
    Use(tLogin);
    g_tOwn = Connect(tLogin.nID);
    Logout(g_tOwnLogin);
    g_tOwnLogin = tLogin;
    Check(ClientAdapter_StreamMediaCB(g_tOwn.nID, &Hop, g_tOwn.uHandle) == 0, "a registration succeeds inside");
    return 0;
}

void CallFromInside()
{
    InThreads(4,
              [](int nThread)
              {
                  g_tOwnLogin = Login(g_aeProtocols[nThread % 3]);
                  g_tOwn = Connect(g_tOwnLogin.nID);
                  ClientAdapter_StreamMediaCB(g_tOwn.nID, &Hop, g_tOwn.uHandle);
                  const auto pfnTrampoline = Trampoline<StreamMediaCallback>();
                  for (int i = 0; i < 4000; ++i)
                  {
                      Check(pfnTrampoline(nullptr, nullptr, static_cast<unsigned long>(g_tOwn.nID)) == 0,
                            "a frame is delivered");
                  }
                  ClientAdapter_StreamMediaCB(g_tOwn.nID, nullptr, 0);
                  Disconnect(g_tOwn);
                  Logout(g_tOwnLogin);
              });
}

// The misuse: threads use an ID that another closes and opens again and again, for one protocol and another. All other
// slots are taken, so it is the same ID each time. Here the order of things is what is checked, so the words keep it.
void UseWhileAnotherCloses()
{
    constexpr int nRounds = 20000;
    const tagLogin atLogins[] = {Login(eProtocolOnvif), Login(eProtocolVTQ)};
    tagRealStreamPara tPara{};
    std::vector<int> anTaken;
    for (int nID = -1; ClientAdapter_RealStreamConnect(&nID, atLogins[0].nID, &tPara) == 0 && nID != -1;)
    {
        anTaken.push_back(nID);
    }
    Check(anTaken.size() == 1000, "a table has 1000 slots");
    constexpr int nFree = 500;
    ClientAdapter_RealStreamDisconnect(nFree);
    const std::uintptr_t uFirst = g_uHandles.load(g_eRelaxed);
    std::vector<std::atomic<int>> anClosed(nRounds); // by handle: when its closing had returned; 0: not yet
    std::atomic<int> nClock = 1;
    std::atomic<bool> bEnd = false;
    std::atomic<int> nReached = 0;
    InThreads(4,
              [&](int nThread)
              {
                  if (nThread == 0)
                  {
                      for (int i = 0; i < nRounds; ++i)
                      {
                          int nID = -1;
                          Check(ClientAdapter_RealStreamConnect(&nID, atLogins[i % 2].nID, &tPara) == 0 && nID == nFree,
                                "the only free slot is given");
                          Use(tagStream{nID, g_tHeard.uOpened, 0});
                          if (const int nBefore = nReached; i % 1000 == 0)
                          {
                              while (nReached == nBefore) // the others must get to run
                              {
                                  std::this_thread::yield();
                              }
                          }
                          ClientAdapter_RealStreamDisconnect(nID);
                          anClosed[static_cast<std::size_t>(i)] = nClock++;
                      }
                      bEnd = true;
                      return;
                  }
                  while (!bEnd)
                  {
                      const int nBegin = nClock++;
                      g_tHeard.uHandle = 0;
                      const int nResult = ClientAdapter_StreamMediaControl(nFree, eTaskPlay);
                      Called();
                      if (nResult != 0)
                      {
                          Check(nResult == -1 && g_tHeard.uHandle == 0, "a closed ID is unknown");
                          continue;
                      }
                      ++nReached;
                      const std::size_t i = g_tHeard.uHandle / 4 - uFirst;
                      if (i >= anClosed.size())
                      {
                          Check(false, "a call reaches a handle that was given");
                          continue;
                      }
                      const int nClosed = anClosed[i];
                      Check(nClosed == 0 || nClosed > nBegin, "a handle isn't used after its closing");
                  }
              });
    for (const int nID : anTaken)
    {
        if (nID != nFree)
        {
            ClientAdapter_RealStreamDisconnect(nID);
        }
    }
    g_tMedia.Forget();
    Logout(atLogins[0]);
    Logout(atLogins[1]);
}

// Start and stop again and again; the stop comes when the plug-ins' threads have made their last call, not when they
// have ended.
void StopAfterTheLastCall()
{
    for (int nRound = 0; nRound < 60; ++nRound)
    {
        ClientAdapter_Stop();
        ClientAdapter_Start(16);
        const tagLogin tLogin = Login(eProtocolVTQ);
        const tagStream tStream = Connect(tLogin.nID);
        ClientAdapter_SubscribeEvent(tLogin.nID, 1, HeardAs<0>(DeviceEventCallback{}), UserData(tLogin.nID, 0));
        const auto pfnEvent = Trampoline<DeviceEventCallback>();
        ClientAdapter_StreamMediaCB(tStream.nID, HeardAs<0>(StreamMediaCallback{}), UserData(tStream.nID, 0));
        const auto pfnFrame = Trampoline<StreamMediaCallback>();
        std::atomic<int> nRunning = 3;
        std::vector<std::thread> atThreads;
        for (int i = 0; i < 3; ++i)
        {
            atThreads.emplace_back(
                [&]
                {
                    for (int n = 0; n < 20; ++n)
                    {
                        pfnFrame(nullptr, nullptr, static_cast<unsigned long>(tStream.nID));
                        pfnEvent(nullptr, 1, 2, 3, 4, static_cast<unsigned long>(tLogin.nID));
                        Use(tStream);
                    }
                    nRunning.fetch_sub(1, std::memory_order_release);
                });
        }
        while (nRunning.load(std::memory_order_acquire))
        {
            std::this_thread::yield();
        }
        Disconnect(tStream);
        Logout(tLogin);
        ClientAdapter_Stop();
        for (std::thread& tThread : atThreads)
        {
            tThread.join();
        }
        ClientAdapter_Start(16);
    }
}

constexpr struct
{
    char const* szName;
    void (*pfnRun)();
} g_atRaces[] = {
    {"events", &SubscribeWhileEventsArrive}, // first: no login has a record yet
    {"open and close", &OpenAndClose},       {"register", &RegisterWhileFramesArrive}, {"inside", &CallFromInside},
    {"misuse", &UseWhileAnotherCloses},      {"stop", &StopAfterTheLastCall},
};
} // namespace

int main()
{
    std::FILE* const pResult = fdopen(dup(STDOUT_FILENO), "w"); // beside the library's many lines
    if (!pResult || !std::freopen("/dev/null", "w", stdout))
    {
        return EXIT_FAILURE;
    }
    CJournal::Instance().Observe(&Plugin);
    ClientAdapter_Start(16);
    std::fprintf(pResult, "tried: races:");
    for (auto const& tRace : g_atRaces)
    {
        const int nFailed = g_nFailed;
        tRace.pfnRun();
        std::fprintf(pResult, " %s%s,", tRace.szName, g_nFailed == nFailed ? "" : " FAILED");
    }
    ClientAdapter_Stop();
    std::fprintf(pResult, " %d calls, %d callbacks, %d failed\n", g_nCalls.load(), g_nDelivered.load(),
                 g_nFailed.load());
    std::fclose(pResult);
    return g_nFailed ? EXIT_FAILURE : EXIT_SUCCESS;
}
