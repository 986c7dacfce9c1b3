#pragma once

#include "protocol/PluginInterface.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <mutex>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

inline constexpr auto g_tPatience = 30s; // for anything that is bound to come

/// A running RTSP server with its mounts; see tools/rtsp_server. Ends with the object. "--password" among the options
/// and the word after it go into the server's environment.
class CServer
{
public:
    explicit CServer(std::vector<std::string> astrOptions = {}, int nPort = 0)
    {
        const std::string strClips = TESSARO_CLIPS;
        std::vector<std::string> astrArguments{TESSARO_RTSP_SERVER, "--port", std::to_string(nPort), "--seconds",
                                               "300"};
        astrArguments.insert(astrArguments.end(), astrOptions.begin(), astrOptions.end());
        const std::string strH264 = "h264parse ! rtph264pay name=pay0 pt=96 config-interval=-1";
        for (std::string const& strWord : std::vector<std::string>{
                 "/h264", "( filesrc location=" + strClips + "/h264.mp4 ! qtdemux ! " + strH264 + " )", "/h265",
                 "( filesrc location=" + strClips + "/h265.mp4 ! qtdemux ! h265parse ! rtph265pay name=pay0 )", "/av",
                 "( filesrc location=" + strClips + "/h264.mp4 ! qtdemux name=d d.video_0 ! queue ! " + strH264 +
                     " d.audio_0 ! queue ! aacparse ! rtpmp4gpay name=pay1 pt=97 )",
                 "/alaw",
                 "( audiotestsrc is-live=true ! audio/x-raw,rate=8000,channels=1 ! alawenc ! rtppcmapay name=pay0 )",
                 "/mulaw",
                 "( audiotestsrc is-live=true ! audio/x-raw,rate=8000,channels=1 ! mulawenc ! rtppcmupay name=pay0 )",
                 "/mjpeg",
                 "( videotestsrc is-live=true ! video/x-raw,format=I420,width=160,height=120,framerate=10/1 ! jpegenc "
                 "! "
                 "rtpjpegpay name=pay0 )",
                 "/broken", "( filesrc location=/nowhere/nothing ! rtpgstpay name=pay0 )"})
        {
            astrArguments.push_back(strWord);
        }
        Launch(astrArguments);
    }
    ~CServer() { Signal(SIGKILL); }
    CServer(CServer const&) = delete;
    CServer& operator=(CServer const&) = delete;

    int Port() const { return m_nPort; }
    std::string Url(std::string const& strMount) const
    {
        return "rtsp://127.0.0.1:" + std::to_string(m_nPort) + strMount;
    }
    void Signal(int nSignal)
    {
        if (m_nProcess > 0)
        {
            kill(m_nProcess, nSignal);
        }
        if (m_nProcess > 0 && nSignal == SIGKILL)
        {
            waitpid(m_nProcess, nullptr, 0);
            close(m_nInput);
            m_nProcess = -1;
        }
    }

private:
    void Launch(std::vector<std::string> astrArguments)
    {
        std::string strPassword;
        if (const auto it = std::ranges::find(astrArguments, "--password"); it != astrArguments.end())
        {
            strPassword = it[1];
            astrArguments.erase(it, it + 2);
        }
        std::vector<char*> aszArguments;
        for (std::string const& strArgument : astrArguments)
        {
            aszArguments.push_back(const_cast<char*>(strArgument.c_str()));
        }
        aszArguments.push_back(nullptr);
        int anIn[2];
        int anOut[2];
        ASSERT_EQ(pipe2(anIn, O_CLOEXEC) + pipe2(anOut, O_CLOEXEC), 0);
        m_nProcess = fork();
        if (m_nProcess == 0)
        {
            dup2(anIn[0], STDIN_FILENO);
            dup2(anOut[1], STDOUT_FILENO);
            setenv("TESSARO_PASSWORD", strPassword.c_str(), 1);
            execv(aszArguments[0], aszArguments.data());
            _exit(127);
        }
        close(anIn[0]);
        close(anOut[1]);
        m_nInput = anIn[1];
        std::unique_ptr<FILE, int (*)(FILE*)> pOutput(fdopen(anOut[0], "r"), &fclose);
        ASSERT_EQ(std::fscanf(pOutput.get(), "rtsp_server: port %d", &m_nPort), 1);
    }

    pid_t m_nProcess = -1;
    int m_nInput = -1;
    int m_nPort = 0;
};

/// A frame that came, its data kept.
struct tagGot
{
    tagStreamMediaFrame tFrame;
    std::vector<unsigned char> abyData;
    void* hStream;
    Clock::time_point tWhen = Clock::now();
};

/// Takes frames and events, and waits for what is bound to come. Its address is the callbacks' user data.
class CReceiver
{
public:
    using Words = std::array<unsigned long, 4>;

    static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
    {
        auto& tThis = *reinterpret_cast<CReceiver*>(dwUser);
        const std::lock_guard tLock(tThis.m_tMutex);
        tThis.m_atFrames.push_back({*ptFrame, {ptFrame->pData, ptFrame->pData + ptFrame->dwLength}, hStream});
        tThis.m_tChanged.notify_all();
        return 0;
    }
    static int OnEvent(void*, unsigned long dwEvent, unsigned long dw2, unsigned long dw3, unsigned long dw4,
                       unsigned long dwUser)
    {
        auto& tThis = *reinterpret_cast<CReceiver*>(dwUser);
        const std::lock_guard tLock(tThis.m_tMutex);
        tThis.m_atEvents.push_back({dwEvent, dw2, dw3, dw4});
        tThis.m_tChanged.notify_all();
        return 0;
    }
    unsigned long User() { return reinterpret_cast<unsigned long>(this); }

    /// The first frame, of those that came since the last Clear, that fnWanted wants.
    tagGot Frame(std::function<bool(tagGot const&)> const& fnWanted) { return Await(m_atFrames, fnWanted); }
    tagGot FirstFrame()
    {
        return Frame([](tagGot const&) { return true; });
    }
    /// All frames, once there are nFrames.
    std::vector<tagGot> Frames(std::size_t nFrames)
    {
        std::unique_lock tLock(m_tMutex);
        EXPECT_TRUE(m_tChanged.wait_for(tLock, g_tPatience, [&] { return m_atFrames.size() >= nFrames; }));
        return m_atFrames;
    }
    /// The first event since the last Clear whose first word is dwEvent.
    Words Event(unsigned long dwEvent)
    {
        return Await(m_atEvents, [&](Words const& adwWords) { return adwWords[0] == dwEvent; });
    }
    void Clear()
    {
        const std::lock_guard tLock(m_tMutex);
        m_atFrames.clear();
        m_atEvents.clear();
    }
    std::size_t Count() { return Frames(0).size(); }

private:
    template <class T, class F>
    T Await(std::vector<T> const& atCame, F const& fnWanted)
    {
        std::unique_lock tLock(m_tMutex);
        auto itFound = atCame.end();
        const auto fnCame = [&]
        {
            itFound = std::find_if(atCame.begin(), atCame.end(), fnWanted);
            return itFound != atCame.end();
        };
        const bool bCame = m_tChanged.wait_for(tLock, g_tPatience, fnCame);
        EXPECT_TRUE(bCame) << "it didn't come; " << atCame.size() << " others did";
        return bCame ? *itFound : T{};
    }

    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::vector<tagGot> m_atFrames;
    std::vector<Words> m_atEvents;
};

inline bool IsVideo(tagGot const& tGot)
{
    return tGot.tFrame.dwMediaType == eMediaVideo;
}

/// Entries of a directory of /proc/self: threads ("task") or open files ("fd").
inline std::ptrdiff_t CountSelf(char const* szWhat)
{
    return std::distance(std::filesystem::directory_iterator(std::string("/proc/self/") + szWhat), {});
}

/// Whether so many threads are left; a joined one may stay in the list for a moment.
inline bool ThreadsLeft(std::ptrdiff_t nThreads)
{
    const auto tUntil = Clock::now() + g_tPatience;
    while (CountSelf("task") != nThreads && Clock::now() < tUntil)
    {
        std::this_thread::yield();
    }
    return CountSelf("task") == nThreads;
}

/// Frames of one track: none missing, none out of order.
inline void ExpectInOrder(std::vector<tagGot> const& atFrames)
{
    for (std::size_t i = 1; i < atFrames.size(); ++i)
    {
        EXPECT_EQ(atFrames[i].tFrame.dwSequence, atFrames[i - 1].tFrame.dwSequence + 1);
        EXPECT_EQ(atFrames[i].tFrame.dwLostBefore, 0U) << "before frame " << i;
        EXPECT_NEAR(
            static_cast<double>(atFrames[i].tFrame.llPresentationTimeUs - atFrames[i - 1].tFrame.llPresentationTimeUs),
            40000, 2000);
    }
}
