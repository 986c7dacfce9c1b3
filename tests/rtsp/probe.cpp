// Runs RTSP streams as its standard input asks, by the plug-in's entry points or the C API, and prints what they tell
// and deliver. The tests in Python are at the other end. A line each, its words between tabs:
//
//   open ID plugin|api URL USER PASSWORD TRANSPORT CERTIFICATE ACTION FILE CODEC     a stream with a listener; ACTION:
//        what the first frame's callback does, FILE: where the bytes of all frames of CODEC go; both may be empty
//   frames ID 0|1    control ID CODE    late ID    info ID    close ID    release    self    stop
//   record ID URL SECONDS SCALE    a recording from so many seconds since 1970 on, with a back channel
//   again ID SECONDS SCALE    talk ID BYTES    end ID
//
//   opened ID RESULT HANDLE    closed ID RESULT MILLISECONDS    did ID RESULT    talked ID RESULT CODEC
//   event ID WORD WORD WORD WORD    late ID (the same, to the other registration)
//   frame ID HANDLE TYPE CODEC FLAGS SEQUENCE LOST LENGTH TIME WALL WIDTH HEIGHT RATE CHANNELS CONFIG SUM NAME
//   info ID STATE RECONNECTS STATUS DROPPED PACKETS FRAMES BYTES LOST    self THREADS FILES BYTES

#include "adapter/ClientAdapter.h"
#include "plugins/rtsp/EntryPoints.h"
#include "rtsp/Stream.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
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
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{
using namespace std::chrono_literals;

struct tagStream
{
    int nID = 0;
    bool bApi = false;
    int nLogin = -1, nMedia = -1;
    void* hStream = nullptr;
    std::unique_ptr<rtsp::CEngine> pEngine{};
    std::unique_ptr<rtsp::CStream> pStream{};
    std::string strAction{};
    FILE* pFile = nullptr;
    std::uint32_t dwCodec = 0; ///< of what goes there
    bool bActed = false;

    unsigned long User() { return reinterpret_cast<unsigned long>(this); }
};

// All that ever were, never destroyed: a callback may run until the process has ended.
std::map<int, tagStream>& g_atStreams = *new std::map<int, tagStream>;
std::promise<void>& g_tRelease = *new std::promise<void>;
const std::shared_future<void>& g_tReleased = *new std::shared_future<void>(g_tRelease.get_future());
std::latch g_tMeeting{2};

template <class... A>
void Print(A const&... tWords)
{
    std::ostringstream tLine;
    ((tLine << tWords << '\t'), ...);
    std::string strLine = tLine.str();
    strLine.back() = '\n';
    if (write(STDOUT_FILENO, strLine.data(), strLine.size()) < 0) // a pipe takes it whole
    {
        std::abort();
    }
}

std::ptrdiff_t Number(void* h)
{
    return reinterpret_cast<std::ptrdiff_t>(h);
}

void Close(tagStream& t)
{
    using namespace std::chrono;
    const auto tBefore = steady_clock::now();
    const int nResult = t.bApi ? ClientAdapter_RealStreamDisconnect(t.nMedia) : RTSPClient_Destroy(t.hStream);
    Print("closed", t.nID, nResult, duration_cast<milliseconds>(steady_clock::now() - tBefore).count());
    if (t.bApi)
    {
        ClientAdapter_UserLogout(t.nLogin);
    }
}

int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser);

// Everything that may be called from inside a callback, this stream's end included.
int DoAll(tagStream& t)
{
    int nStatus = -1;
    int nOther = -1;
    tagRealStreamPara tPara{};
    tPara.dwStreamKind = eStreamMain;
    return ClientAdapter_GetLoginStatus(t.nLogin, &nStatus) ||
           ClientAdapter_RealStreamConnect(&nOther, t.nLogin, &tPara) ||
           ClientAdapter_SubscribeEvent(t.nLogin, 0, nullptr, 0) ||
           ClientAdapter_StreamMediaControl(t.nMedia, eTaskPlay) || ClientAdapter_StreamMediaCB(t.nMedia, nullptr, 0) ||
           ClientAdapter_RealStreamDisconnect(nOther) || ClientAdapter_RealStreamDisconnect(t.nMedia) ||
           ClientAdapter_UserLogout(t.nLogin);
}

int Act(tagStream& tStream)
{
    std::istringstream tAction(tStream.strAction);
    std::string strWhat;
    int nOther = tStream.nID;
    tAction >> strWhat >> nOther;
    const std::map<std::string, std::function<int()>> afnWays{
        {"", [] { return 0; }},
        {"hang", [] { return g_tReleased.wait(), 0; }},
        {"compute",
         []
         {
             while (g_tReleased.wait_for(0s) != std::future_status::ready)
             {
             }
             return 0;
         }},
        {"throw", []() -> int { throw std::runtime_error("the application's own"); }},
        {"exit", []() -> int { pthread_exit(nullptr); }},
        {"cancel", [] { return pthread_cancel(pthread_self()), pthread_testcancel(), 0; }},
        {"close", [&] { return Close(g_atStreams.at(nOther)), 0; }},
        // Both callbacks run before either closes the other's stream.
        {"meet", [&] { return g_tMeeting.arrive_and_wait(), Close(g_atStreams.at(nOther)), 0; }},
        {"stop", [] { return RTSPClient_Stop(); }},
        {"all", [&] { return DoAll(tStream); }},
    };
    return afnWays.at(strWhat)();
}

int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    tagStream& tStream = *reinterpret_cast<tagStream*>(dwUser);
    tagStreamMediaFrame const& t = *ptFrame;
    const unsigned nSum = std::accumulate(t.pData, t.pData + t.dwLength, 0U) +
                          std::accumulate(t.pConfig, t.pConfig + t.dwConfigLength, 0U);
    Print("frame", tStream.nID, Number(hStream), t.dwMediaType, t.dwCodec, t.dwFlags, t.dwSequence, t.dwLostBefore,
          t.dwLength, t.llPresentationTimeUs, t.llWallClockUs, t.dwWidth, t.dwHeight, t.dwSampleRate, t.dwChannels,
          t.dwConfigLength, nSum, t.szCodecName);
    if (tStream.pFile && t.dwCodec == tStream.dwCodec)
    {
        std::fwrite(t.pData, 1, t.dwLength, tStream.pFile);
        std::fflush(tStream.pFile);
    }
    if (!std::exchange(tStream.bActed, true))
    {
        Print("did", tStream.nID, Act(tStream));
    }
    return 0;
}

template <char const* g_szName>
int OnEvent(void*, unsigned long dw1, unsigned long dw2, unsigned long dw3, unsigned long dw4, unsigned long dwUser)
{
    Print(g_szName, reinterpret_cast<tagStream*>(dwUser)->nID, dw1, dw2, dw3, dw4);
    return 0;
}
constexpr char g_szEvent[] = "event";
constexpr char g_szLate[] = "late";

using Words = std::vector<std::string>;

int Open(tagStream& t, Words const& astrWords)
{
    t.nID = std::stoi(astrWords[1]);
    t.bApi = astrWords[2] == "api";
    t.strAction = astrWords[8];
    t.pFile = astrWords[9].empty() ? nullptr : std::fopen(astrWords[9].c_str(), "wb");
    t.dwCodec = static_cast<std::uint32_t>(std::stoul(astrWords[10]));
    const auto fnFill = [&](auto& szUrl, auto& tLogin, auto& tStream)
    {
        astrWords[3].copy(szUrl, sizeof szUrl);
        astrWords[4].copy(tLogin.szUserName, sizeof tLogin.szUserName);
        astrWords[5].copy(tLogin.szPassword, sizeof tLogin.szPassword);
        tStream.dwStreamPara[0] = static_cast<std::uint32_t>(std::stoul(astrWords[6]));
        tStream.dwStreamPara[1] = static_cast<std::uint32_t>(std::stoul(astrWords[7]));
    };
    if (t.bApi)
    {
        tagUserLoginPara tLogin{};
        tagRealStreamPara tPara{};
        tPara.dwStreamKind = eStreamMain;
        fnFill(tLogin.szAddress, tLogin, tPara);
        return ClientAdapter_UserLogin(&t.nLogin, eProtocolRTSP, &tLogin) ||
               ClientAdapter_RealStreamConnect(&t.nMedia, t.nLogin, &tPara) ||
               ClientAdapter_SubscribeEvent(t.nLogin, 0, &OnEvent<g_szEvent>, t.User());
    }
    tagRTSPClientPara tPara{};
    fnFill(tPara.szUrl, tPara, tPara);
    return RTSPClient_Create(&t.hStream, &tPara, 0) || RTSPClient_EventCB(t.hStream, &OnEvent<g_szEvent>, t.User());
}

rtsp::tagPlayback Playback(std::string const& strSeconds, std::string const& strScale)
{
    rtsp::tagRange tRange;
    tRange.bClock = true;
    tRange.llBeginUs = 1000000 * std::stoll(strSeconds);
    return {tRange, std::stod(strScale), true};
}

void Record(tagStream& t, Words const& astrWords)
{
    rtsp::tagStreamOptions tOptions;
    tOptions.tUrl = *rtsp::ParseUrl(astrWords[2]);
    tOptions.tPlayback = Playback(astrWords[3], astrWords[4]);
    tOptions.bBackChannel = true;
    t.nID = std::stoi(astrWords[1]);
    t.pEngine = std::make_unique<rtsp::CEngine>();
    t.pStream = t.pEngine->Open(nullptr, std::move(tOptions));
    t.pStream->SetListener(rtsp::eListener::EventCB, &OnEvent<g_szEvent>, t.User());
    t.pStream->SetFrameCallback(&OnFrame, t.User());
}

std::ptrdiff_t Entries(char const* szFolder)
{
    return std::distance(std::filesystem::directory_iterator(szFolder), {});
}

// What the first word asks of the stream that the second names.
const std::map<std::string, void (*)(tagStream&, Words const&)> g_apfnCommands{
    {"open",
     [](tagStream& t, Words const& astrWords)
     {
         const int nResult = Open(t, astrWords);
         Print("opened", t.nID, nResult, t.bApi ? t.nMedia : Number(t.hStream));
     }},
    {"frames",
     [](tagStream& t, Words const& astrWords)
     {
         const StreamMediaCallback pfn = astrWords[2] == "1" ? &OnFrame : nullptr;
         t.bApi ? ClientAdapter_StreamMediaCB(t.nMedia, pfn, t.User()) : RTSPClient_StreamCB(t.hStream, pfn, t.User());
     }},
    {"control",
     [](tagStream& t, Words const& astrWords)
     {
         const auto eCode = static_cast<eTaskControl>(std::stoi(astrWords[2]));
         t.bApi ? ClientAdapter_StreamMediaControl(t.nMedia, eCode) : RTSPClient_Control(t.hStream, eCode);
     }},
    {"late", [](tagStream& t, Words const&) { RTSPClient_SetRtspEvenCb(t.hStream, &OnEvent<g_szLate>, t.User()); }},
    {"info",
     [](tagStream& t, Words const&)
     {
         tagRTSPPackageInfo tInfo{};
         RTSPClient_GetPackageInfo(t.hStream, &tInfo, sizeof tInfo, 0);
         Print("info", t.nID, tInfo.dwState, tInfo.dwReconnects, tInfo.dwLastStatus, tInfo.dwDropped, tInfo.ullPackets,
               tInfo.ullFrames, tInfo.ullBytes, tInfo.ullLost);
     }},
    {"record", &Record},
    {"again", [](tagStream& t, Words const& astrWords) { t.pStream->Play(Playback(astrWords[2], astrWords[3])); }},
    {"talk",
     [](tagStream& t, Words const& astrWords)
     {
         const std::vector<unsigned char> abyFrame(std::stoul(astrWords[2]), 0xD5);
         const auto tFormat = t.pStream->BackFormat();
         Print("talked", t.nID, t.pStream->SendAudio(abyFrame, 160, true), tFormat ? tFormat->eCodec : -1);
     }},
    {"end", [](tagStream& t, Words const&) { t.pStream.reset(), t.pEngine->Stop(rtsp::Clock::now() + 5s); }},
    {"close", [](tagStream& t, Words const&) { Close(t); }},
    {"release", [](tagStream&, Words const&) { g_tRelease.set_value(); }},
    {"self", [](tagStream&, Words const&)
     { Print("self", Entries("/proc/self/task"), Entries("/proc/self/fd"), mallinfo2().uordblks); }},
    {"stop", [](tagStream&, Words const&) { Print("did", 0, RTSPClient_Stop()); }},
};
} // namespace

int main()
{
    g_atStreams[0];                              // for commands that name none
    fcntl(STDOUT_FILENO, F_SETPIPE_SZ, 1 << 20); // callbacks mustn't wait for who reads
    ClientAdapter_Start(2000);
    for (std::string strLine; std::getline(std::cin, strLine);)
    {
        Words astrWords;
        std::istringstream tLine(strLine + '\t');
        for (std::string strWord; std::getline(tLine, strWord, '\t');)
        {
            astrWords.push_back(strWord);
        }
        g_apfnCommands.at(astrWords[0])(g_atStreams[astrWords.size() > 1 ? std::stoi(astrWords[1]) : 0], astrWords);
    }
    return ClientAdapter_Stop();
}
