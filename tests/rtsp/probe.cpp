// Runs RTSP streams as its standard input asks, by the plug-in's entry points or the C API, and prints what they tell
// and deliver. The tests in Python are at the other end. A line each, its words between tabs:
//
//   open ID plugin|api URL USER PASSWORD TRANSPORT CERTIFICATE ACTION FILE CODEC      a stream with listeners; ACTION:
//              what the first frame's callback does, FILE: where the bytes of all frames of CODEC go; both may be empty
//   close ID   control ID CODE   frames ID 0|1   late ID   info ID   release   self   stop
//
//   opened ID RESULT HANDLE             closed ID RESULT MILLISECONDS        did ID RESULT
//   event ID WORD WORD WORD WORD        late ID (the same, to the other registration)
//   frame ID HANDLE TYPE CODEC FLAGS SEQUENCE LOST LENGTH TIME WALL WIDTH HEIGHT RATE CHANNELS CONFIG SUM NAME
//   info ID STATE RECONNECTS STATUS DROPPED PACKETS FRAMES BYTES LOST        self THREADS FILES BYTES

#include "adapter/ClientAdapter.h"
#include "plugins/rtsp/EntryPoints.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iostream>
#include <latch>
#include <malloc.h>
#include <map>
#include <memory>
#include <numeric>
#include <pthread.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{
struct tagStream
{
    int nID = 0;
    bool bApi = false;
    int nLogin = -1, nMedia = -1;
    void* hStream = nullptr;
    std::string strAction{};
    std::unique_ptr<FILE, int (*)(FILE*)> pFile{nullptr, &std::fclose};
    std::uint32_t dwCodec = 0; ///< of what goes there
    bool bActed = false;

    unsigned long User() { return reinterpret_cast<unsigned long>(this); }
};

std::map<int, std::unique_ptr<tagStream>> g_apStreams; // all that ever were: a callback may still run
std::promise<void> g_tRelease;
const std::shared_future<void> g_tReleased = g_tRelease.get_future().share();
std::latch g_tMeeting{2};

[[gnu::format(printf, 1, 2)]] void Print(char const* szFormat, ...)
{
    char szLine[512]; // a pipe takes it whole
    va_list tArguments;
    va_start(tArguments, szFormat);
    const int nLength = std::vsnprintf(szLine, sizeof szLine, szFormat, tArguments);
    va_end(tArguments);
    if (write(STDOUT_FILENO, szLine, static_cast<std::size_t>(nLength)) != nLength)
    {
        std::abort();
    }
}

void Close(tagStream& tStream)
{
    const auto tBefore = std::chrono::steady_clock::now();
    const int nResult =
        tStream.bApi ? ClientAdapter_RealStreamDisconnect(tStream.nMedia) : RTSPClient_Destroy(tStream.hStream);
    const auto tTaken = std::chrono::steady_clock::now() - tBefore;
    Print("closed\t%d\t%d\t%ld\n", tStream.nID, nResult,
          static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(tTaken).count()));
    if (tStream.bApi)
    {
        ClientAdapter_UserLogout(tStream.nLogin);
    }
}

int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser);

// Everything that may be called from inside a callback, this stream's end included: another takes its place.
int DoAll(tagStream& tStream)
{
    int nStatus = -1;
    tagRealStreamPara tPara{};
    tPara.dwStreamKind = eStreamMain;
    tagStream& tNext = *(g_apStreams[-1] = std::make_unique<tagStream>());
    tNext.nID = -1;
    return ClientAdapter_GetLoginStatus(tStream.nLogin, &nStatus) ||
           ClientAdapter_RealStreamConnect(&tNext.nMedia, tStream.nLogin, &tPara) ||
           ClientAdapter_StreamMediaCB(tNext.nMedia, &OnFrame, tNext.User()) ||
           ClientAdapter_SubscribeEvent(tStream.nLogin, 0, nullptr, 0) ||
           ClientAdapter_StreamMediaControl(tStream.nMedia, eTaskPlay) ||
           ClientAdapter_StreamMediaCB(tStream.nMedia, nullptr, 0) ||
           ClientAdapter_RealStreamDisconnect(tStream.nMedia) || ClientAdapter_UserLogout(tStream.nLogin);
}

void Act(tagStream& tStream)
{
    std::istringstream tAction(tStream.strAction);
    std::string strWhat;
    int nOther = tStream.nID;
    tAction >> strWhat >> nOther;
    int nResult = 0;
    if (strWhat == "hang")
    {
        g_tReleased.wait();
    }
    else if (strWhat == "throw")
    {
        throw std::runtime_error("the application's own");
    }
    else if (strWhat == "exit")
    {
        pthread_exit(nullptr);
    }
    else if (strWhat == "cancel")
    {
        pthread_cancel(pthread_self());
        pthread_testcancel();
    }
    else if (strWhat == "close" || strWhat == "meet")
    {
        if (strWhat == "meet") // both callbacks run before either closes the other's stream
        {
            g_tMeeting.arrive_and_wait();
        }
        Close(*g_apStreams.at(nOther));
    }
    else if (!strWhat.empty())
    {
        nResult = strWhat == "stop" ? RTSPClient_Stop() : DoAll(tStream);
    }
    Print("did\t%d\t%d\n", tStream.nID, nResult);
}

int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    tagStream& tStream = *reinterpret_cast<tagStream*>(dwUser);
    tagStreamMediaFrame const& t = *ptFrame;
    Print("frame\t%d\t%td\t%u\t%u\t%u\t%u\t%u\t%u\t%lld\t%lld\t%u\t%u\t%u\t%u\t%u\t%u\t%s\n", tStream.nID,
          reinterpret_cast<std::ptrdiff_t>(hStream), t.dwMediaType, t.dwCodec, t.dwFlags, t.dwSequence, t.dwLostBefore,
          t.dwLength, static_cast<long long>(t.llPresentationTimeUs), static_cast<long long>(t.llWallClockUs),
          t.dwWidth, t.dwHeight, t.dwSampleRate, t.dwChannels, t.dwConfigLength,
          std::accumulate(t.pData, t.pData + t.dwLength, 0U) +
              std::accumulate(t.pConfig, t.pConfig + t.dwConfigLength, 0U),
          t.szCodecName);
    if (tStream.pFile && t.dwCodec == tStream.dwCodec)
    {
        std::fwrite(t.pData, 1, t.dwLength, tStream.pFile.get());
        std::fflush(tStream.pFile.get());
    }
    if (!std::exchange(tStream.bActed, true))
    {
        Act(tStream);
    }
    return 0;
}

template <char const* g_szName>
int OnEvent(void*, unsigned long dw1, unsigned long dw2, unsigned long dw3, unsigned long dw4, unsigned long dwUser)
{
    Print("%s\t%d\t%lu\t%lu\t%lu\t%lu\n", g_szName, reinterpret_cast<tagStream*>(dwUser)->nID, dw1, dw2, dw3, dw4);
    return 0;
}
constexpr char g_szEvent[] = "event";
constexpr char g_szLate[] = "late";

template <std::size_t nSize>
void Copy(char (&sz)[nSize], std::string const& str)
{
    str.copy(sz, nSize);
}

void Open(std::vector<std::string> const& astrWords)
{
    const int nID = std::stoi(astrWords[1]);
    tagStream& t = *(g_apStreams[nID] = std::make_unique<tagStream>());
    t.nID = nID;
    t.bApi = astrWords[2] == "api";
    t.strAction = astrWords[8];
    t.pFile.reset(astrWords[9].empty() ? nullptr : std::fopen(astrWords[9].c_str(), "wb"));
    t.dwCodec = static_cast<std::uint32_t>(std::stoul(astrWords[10]));
    const auto fnFill = [&](auto& tLogin, std::uint32_t(&dwPara)[7])
    {
        Copy(tLogin.szUserName, astrWords[4]);
        Copy(tLogin.szPassword, astrWords[5]);
        dwPara[0] = static_cast<std::uint32_t>(std::stoul(astrWords[6]));
        dwPara[1] = static_cast<std::uint32_t>(std::stoul(astrWords[7]));
    };
    int nResult = 0;
    if (t.bApi)
    {
        tagUserLoginPara tLogin{};
        tagRealStreamPara tPara{};
        fnFill(tLogin, tPara.dwStreamPara);
        Copy(tLogin.szAddress, astrWords[3]);
        tPara.dwStreamKind = eStreamMain;
        nResult = ClientAdapter_UserLogin(&t.nLogin, eProtocolRTSP, &tLogin) ||
                  ClientAdapter_RealStreamConnect(&t.nMedia, t.nLogin, &tPara) ||
                  ClientAdapter_SubscribeEvent(t.nLogin, 0, &OnEvent<g_szEvent>, t.User());
    }
    else
    {
        tagRTSPClientPara tPara{};
        fnFill(tPara, tPara.dwStreamPara);
        Copy(tPara.szUrl, astrWords[3]);
        nResult =
            RTSPClient_Create(&t.hStream, &tPara, 0) || RTSPClient_EventCB(t.hStream, &OnEvent<g_szEvent>, t.User());
    }
    Print("opened\t%d\t%d\t%td\n", nID, nResult, t.bApi ? t.nMedia : reinterpret_cast<std::ptrdiff_t>(t.hStream));
}

void ShowInfo(tagStream const& tStream)
{
    tagRTSPPackageInfo t{};
    if (RTSPClient_GetPackageInfo(tStream.hStream, &t, sizeof t, 0) == 0)
    {
        Print("info\t%d\t%u\t%u\t%u\t%u\t%llu\t%llu\t%llu\t%llu\n", tStream.nID, t.dwState, t.dwReconnects,
              t.dwLastStatus, t.dwDropped, static_cast<unsigned long long>(t.ullPackets),
              static_cast<unsigned long long>(t.ullFrames), static_cast<unsigned long long>(t.ullBytes),
              static_cast<unsigned long long>(t.ullLost));
    }
}

long Entries(char const* szWhat)
{
    return static_cast<long>(
        std::distance(std::filesystem::directory_iterator(std::string("/proc/self/") + szWhat), {}));
}

void Do(std::vector<std::string> const& astrWords)
{
    std::string const& strWhat = astrWords[0];
    tagStream* const pt =
        astrWords.size() > 1 && strWhat != "open" ? g_apStreams.at(std::stoi(astrWords[1])).get() : nullptr;
    if (strWhat == "open")
    {
        Open(astrWords);
    }
    else if (strWhat == "close")
    {
        Close(*pt);
    }
    else if (strWhat == "control")
    {
        const auto eCode = static_cast<eTaskControl>(std::stoi(astrWords[2]));
        pt->bApi ? ClientAdapter_StreamMediaControl(pt->nMedia, eCode) : RTSPClient_Control(pt->hStream, eCode);
    }
    else if (strWhat == "frames")
    {
        const StreamMediaCallback pfn = astrWords[2] == "1" ? &OnFrame : nullptr;
        pt->bApi ? ClientAdapter_StreamMediaCB(pt->nMedia, pfn, pt->User())
                 : RTSPClient_StreamCB(pt->hStream, pfn, pt->User());
    }
    else if (strWhat == "late")
    {
        RTSPClient_SetRtspEvenCb(pt->hStream, &OnEvent<g_szLate>, pt->User());
    }
    else if (strWhat == "info")
    {
        ShowInfo(*pt);
    }
    else if (strWhat == "release")
    {
        g_tRelease.set_value();
    }
    else if (strWhat == "self")
    {
        Print("self\t%ld\t%ld\t%ld\n", Entries("task"), Entries("fd"), static_cast<long>(mallinfo2().uordblks));
    }
    else if (strWhat == "stop")
    {
        Print("did\t0\t%d\n", RTSPClient_Stop());
    }
}
} // namespace

int main()
{
    rlimit tFiles{};
    getrlimit(RLIMIT_NOFILE, &tFiles);
    tFiles.rlim_cur = tFiles.rlim_max;
    setrlimit(RLIMIT_NOFILE, &tFiles);
    ClientAdapter_Start(2000);
    for (std::string strLine; std::getline(std::cin, strLine);)
    {
        std::vector<std::string> astrWords;
        std::istringstream tLine(strLine + '\t');
        for (std::string strWord; std::getline(tLine, strWord, '\t');)
        {
            astrWords.push_back(strWord);
        }
        Do(astrWords);
    }
    return ClientAdapter_Stop();
}
