#pragma once

#include "protocol/PluginInterface.h"

#include <algorithm>
#include <array>
#include <atomic>
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
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

inline constexpr auto g_tPatience = 45s; // for anything that is bound to come
inline constexpr auto g_tClosing = 5s;   // 2 s, and what a busy machine adds

inline constexpr char g_szPassword[] = "secret"; // of CServer, where it has a --user

/// A child process with pipes to its standard input and from its output. Killed with the object.
class CChild
{
public:
    explicit CChild(std::vector<std::string> const& astrArguments)
    {
        std::vector<char*> aszArguments;
        for (std::string const& strArgument : astrArguments)
        {
            aszArguments.push_back(const_cast<char*>(strArgument.c_str()));
        }
        aszArguments.push_back(nullptr);
        int anIn[2];
        int anOut[2];
        EXPECT_EQ(pipe2(anIn, O_CLOEXEC) + pipe2(anOut, O_CLOEXEC), 0);
        m_nProcess = fork();
        if (m_nProcess == 0)
        {
            dup2(anIn[0], STDIN_FILENO);
            dup2(anOut[1], STDOUT_FILENO);
            setenv("TESSARO_PASSWORD", g_szPassword, 1);
            execvp(aszArguments[0], aszArguments.data());
            _exit(127);
        }
        close(anIn[0]);
        close(anOut[1]);
        m_nInput = anIn[1];
        m_pOutput.reset(fdopen(anOut[0], "r"));
    }
    ~CChild() { Signal(SIGKILL); }
    CChild(CChild const&) = delete;
    CChild& operator=(CChild const&) = delete;

    void Say(std::string const& strLine) const
    {
        EXPECT_EQ(write(m_nInput, strLine.data(), strLine.size()), static_cast<ssize_t>(strLine.size()));
    }
    void EndInput() { close(std::exchange(m_nInput, -1)); }
    /// The next line of its output, without its end; false: there is none.
    bool Line(std::string& strLine)
    {
        strLine.clear();
        for (int c; (c = std::getc(m_pOutput.get())) != EOF; strLine += static_cast<char>(c))
        {
            if (c == '\n')
            {
                return true;
            }
        }
        return false;
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
            m_nProcess = -1;
            EndInput();
        }
    }

private:
    struct tagClose
    {
        void operator()(FILE* p) const { std::fclose(p); }
    };
    pid_t m_nProcess = -1;
    int m_nInput = -1;
    std::unique_ptr<FILE, tagClose> m_pOutput;
};

inline std::string LocalUrl(int nPort, std::string const& strPath)
{
    return "rtsp://127.0.0.1:" + std::to_string(nPort) + strPath;
}

/// GStreamer's server with its mounts; see tools/rtsp_server.
class CServer
{
public:
    explicit CServer(std::vector<std::string> const& astrOptions = {}, int nPort = 0)
        : m_tChild(Arguments(astrOptions, nPort))
    {
        std::string strLine;
        m_tChild.Line(strLine);
        EXPECT_EQ(std::sscanf(strLine.c_str(), "rtsp_server: port %d", &m_nPort), 1);
    }

    int Port() const { return m_nPort; }
    std::string Url(std::string const& strMount) const { return LocalUrl(m_nPort, strMount); }
    void Signal(int nSignal) { m_tChild.Signal(nSignal); }

private:
    static std::vector<std::string> Arguments(std::vector<std::string> const& astrOptions, int nPort)
    {
        const auto fnClip = [](std::string const& strName)
        { return "( filesrc location=" TESSARO_CLIPS "/" + strName + ".mp4 ! qtdemux name=d d.video_0 ! queue ! "; };
        const std::string strH264 = "h264parse ! rtph264pay name=pay0 pt=96 config-interval=-1";
        const std::string strTone = "( audiotestsrc freq=441 ! audioconvert ! audioresample ! ";
        const std::string strAudio = fnClip("h264") + strH264 + " d.audio_0 ! queue ! aacparse ! ";
        std::vector<std::string> astrArguments{TESSARO_RTSP_SERVER, "--port", std::to_string(nPort), "--seconds",
                                               "300"};
        astrArguments.insert(astrArguments.end(), astrOptions.begin(), astrOptions.end());
        for (auto const& [szMount, strLine] : std::vector<std::pair<char const*, std::string>>{
                 {"/h264", fnClip("h264") + strH264},
                 {"/h265", fnClip("h265") + "h265parse ! rtph265pay name=pay0"},
                 {"/mpeg4", fnClip("mpeg4") + "mpeg4videoparse ! rtpmp4vpay name=pay0 config-interval=-1"},
                 {"/av", strAudio + "rtpmp4gpay name=pay1 pt=97"},
                 {"/latm", strAudio + "rtpmp4apay name=pay1 pt=97"},
                 {"/ts", fnClip("h264") + "h264parse ! mpegtsmux alignment=7 ! rtpmp2tpay name=pay0"},
                 {"/alaw", strTone + "audio/x-raw,rate=8000,channels=1 ! alawenc ! rtppcmapay name=pay0"},
                 {"/mulaw", strTone + "audio/x-raw,rate=8000,channels=1 ! mulawenc ! rtppcmupay name=pay0"},
                 {"/opus", strTone + "audio/x-raw,rate=48000,channels=2 ! opusenc ! rtpopuspay name=pay0"},
                 {"/mjpeg", "( videotestsrc ! video/x-raw,format=I420,width=160,height=120,framerate=10/1 ! jpegenc ! "
                            "rtpjpegpay name=pay0"},
                 {"/g726", "( filesrc location=" TESSARO_CLIPS "/g726.wav ! wavparse ! rtpg726pay name=pay0"},
                 {"/broken", "( filesrc location=/nowhere/nothing ! rtpgstpay name=pay0"}})
        {
            astrArguments.insert(astrArguments.end(), {szMount, strLine + " )"});
        }
        return astrArguments;
    }

    CChild m_tChild;
    int m_nPort = 0;
};

/// The servers of server.py, in one process.
class CScripted
{
public:
    explicit CScripted(int nServers = 1) : m_tChild({TESSARO_PYTHON, "-B", TESSARO_SCRIPTED, std::to_string(nServers)})
    {
        std::string strLine;
        while (m_tChild.Line(strLine) && strLine.starts_with("case "))
        {
            m_astrCases.push_back(strLine);
        }
        std::istringstream tPorts(strLine.substr(std::min<std::size_t>(6, strLine.size())));
        m_anPorts.assign(std::istream_iterator<int>(tPorts), {});
        EXPECT_EQ(m_anPorts.size(), static_cast<std::size_t>(nServers));
        m_tThread = std::thread([this] { Run(); });
    }
    ~CScripted()
    {
        m_tChild.Signal(SIGKILL);
        m_tThread.join();
    }

    std::vector<std::string> const& Cases() const { return m_astrCases; }
    std::string Url(std::string const& strPath, std::size_t iServer = 0) const
    {
        return LocalUrl(m_anPorts.at(iServer), strPath);
    }
    void Reboot(std::size_t iServer = 0) { m_tChild.Say("reboot " + std::to_string(iServer) + "\n"); }
    /// Until nobody is connected any more.
    void AwaitNoPeers()
    {
        const int nBefore = Count("gone");
        m_tChild.Say("gone\n");
        Await("gone", nBefore + 1);
    }
    /// Until this line has come so often.
    void Await(std::string const& strLine, int nTimes = 1, Clock::time_point tUntil = Clock::now() + g_tPatience)
    {
        std::unique_lock tLock(m_tMutex);
        EXPECT_TRUE(m_tChanged.wait_until(tLock, tUntil, [&] { return m_anLines[strLine] >= nTimes; })) << strLine;
    }
    int Count(std::string const& strLine)
    {
        const std::lock_guard tLock(m_tMutex);
        return m_anLines[strLine];
    }

private:
    void Run()
    {
        for (std::string strLine; m_tChild.Line(strLine);)
        {
            EXPECT_FALSE(strLine.starts_with("error")) << strLine;
            const std::lock_guard tLock(m_tMutex);
            ++m_anLines[strLine];
            m_tChanged.notify_all();
        }
    }

    CChild m_tChild;
    std::vector<std::string> m_astrCases;
    std::vector<int> m_anPorts;
    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::map<std::string, int> m_anLines;
    std::thread m_tThread;
};

/// A frame that came, its data kept.
struct tagGot
{
    tagStreamMediaFrame tFrame;
    std::string strData;
    void* hStream;
    Clock::time_point tWhen = Clock::now();

    bool Is(unsigned uFlag) const { return (tFrame.dwFlags & uFlag) != 0; }
    bool IsVideo() const { return tFrame.dwMediaType == eMediaVideo; }
};

/// Takes a stream's frames and events, checks what holds for all of them, and waits for what is bound to come. Its
/// address is the callbacks' user data.
class CReceiver
{
public:
    using Words = std::array<unsigned long, 4>;

    static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
    {
        auto& tThis = *reinterpret_cast<CReceiver*>(dwUser);
        const std::lock_guard tLock(tThis.m_tMutex);
        auto const* const pchData = reinterpret_cast<char const*>(ptFrame->pData);
        tThis.m_atFrames.push_back({*ptFrame, {pchData, ptFrame->dwLength}, hStream});
        tThis.Check(tThis.m_atFrames.back());
        tThis.m_tChanged.notify_all();
        return 0;
    }
    static int OnEvent(void*, unsigned long dwEvent, unsigned long dw2, unsigned long dw3, unsigned long dw4,
                       unsigned long dwUser)
    {
        auto& tThis = *reinterpret_cast<CReceiver*>(dwUser);
        const std::lock_guard tLock(tThis.m_tMutex);
        tThis.m_atEvents.push_back({dwEvent, dw2, dw3, dw4});
        tThis.m_bBroken |= dwEvent == eEventLost || dwEvent == eEventRefused;
        tThis.m_tChanged.notify_all();
        return 0;
    }
    unsigned long User() { return reinterpret_cast<unsigned long>(this); }

    /// Until fnCame is true of the frames and events since the last Clear.
    bool Await(std::function<bool(std::vector<tagGot> const&, std::vector<Words> const&)> const& fnCame,
               Clock::time_point tUntil = Clock::now() + g_tPatience)
    {
        std::unique_lock tLock(m_tMutex);
        const bool bCame = m_tChanged.wait_until(tLock, tUntil, [&] { return fnCame(m_atFrames, m_atEvents); });
        EXPECT_TRUE(bCame) << "it didn't come; " << m_atFrames.size() << " frames and " << m_atEvents.size()
                           << " events did";
        return bCame;
    }
    /// The first frame that fnWanted wants.
    tagGot Frame(std::function<bool(tagGot const&)> const& fnWanted)
    {
        tagGot tFound{};
        Await(
            [&](auto const& atFrames, auto const&)
            {
                const auto itFound = std::find_if(atFrames.begin(), atFrames.end(), fnWanted);
                tFound = itFound == atFrames.end() ? tagGot{} : *itFound;
                return itFound != atFrames.end();
            });
        return tFound;
    }
    /// All frames, once there are nFrames.
    std::vector<tagGot> Frames(std::size_t nFrames)
    {
        Await([&](auto const& atFrames, auto const&) { return atFrames.size() >= nFrames; });
        const std::lock_guard tLock(m_tMutex);
        return m_atFrames;
    }
    tagGot FirstFrame() { return Frames(1).at(0); }
    /// The first event of this kind.
    Words Event(unsigned long dwEvent)
    {
        Words adwFound{};
        Await(
            [&](auto const&, auto const& atEvents)
            {
                for (Words const& adwWords : atEvents)
                {
                    adwFound = adwWords[0] == dwEvent && adwFound[0] == 0 ? adwWords : adwFound;
                }
                return adwFound[0] == dwEvent;
            });
        return adwFound;
    }
    std::vector<Words> Events()
    {
        const std::lock_guard tLock(m_tMutex);
        return m_atEvents;
    }
    std::size_t Count() { return Frames(0).size(); }
    void Clear()
    {
        const std::lock_guard tLock(m_tMutex);
        m_atFrames.clear();
        m_atEvents.clear();
    }

private:
    // Every stream begins with a key frame, as it goes on after a failure, flagged; numbers grow, time doesn't run
    // back; what needs the frame before comes right behind it.
    void Check(tagGot const& tGot)
    {
        tagStreamMediaFrame const& tFrame = tGot.tFrame;
        const std::string strTrack = std::to_string(tFrame.dwMediaType) + tFrame.szCodecName;
        const auto itLast = m_atLast.find(strTrack);
        if (tGot.IsVideo() && (m_bBroken || itLast == m_atLast.end()))
        {
            EXPECT_TRUE(tGot.Is(eFrameKey) && !tGot.Is(eFrameDamaged));
            EXPECT_TRUE(tGot.Is(eFrameDiscontinuity) || itLast == m_atLast.end());
            m_bBroken = false;
        }
        else if (itLast != m_atLast.end())
        {
            const std::uint32_t dwStep = tFrame.dwSequence - itLast->second.dwSequence;
            EXPECT_TRUE(dwStep == 1 || (dwStep > 1 && dwStep < 100000 && (tGot.Is(eFrameKey) || !tGot.IsVideo())))
                << tFrame.dwSequence << " after " << itLast->second.dwSequence << " of " << strTrack;
            EXPECT_GE(tFrame.llPresentationTimeUs, itLast->second.llPresentationTimeUs) << strTrack;
        }
        m_atLast[strTrack] = tFrame;
    }

    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::vector<tagGot> m_atFrames;
    std::vector<Words> m_atEvents;
    std::map<std::string, tagStreamMediaFrame> m_atLast; ///< of each track; its pointers are stale
    bool m_bBroken = false;
};

/// Entries of a directory of /proc/self: threads ("task") or open files ("fd").
inline std::ptrdiff_t CountSelf(char const* szWhat)
{
    return std::distance(std::filesystem::directory_iterator(std::string("/proc/self/") + szWhat), {});
}

/// Whether fnIs becomes true.
inline bool Becomes(std::function<bool()> const& fnIs)
{
    const auto tUntil = Clock::now() + g_tPatience;
    while (!fnIs() && Clock::now() < tUntil)
    {
        std::this_thread::sleep_for(1ms);
    }
    return fnIs();
}

/// Frames of one track: none missing, none out of order, each 40 ms after the one before.
inline void ExpectInOrder(std::vector<tagGot> const& atFrames)
{
    for (std::size_t i = 1; i < atFrames.size(); ++i)
    {
        EXPECT_EQ(atFrames[i].tFrame.dwSequence, atFrames[i - 1].tFrame.dwSequence + 1);
        EXPECT_EQ(atFrames[i].tFrame.dwLostBefore, 0U) << "before frame " << i;
        const auto llStep = atFrames[i].tFrame.llPresentationTimeUs - atFrames[i - 1].tFrame.llPresentationTimeUs;
        EXPECT_NEAR(static_cast<double>(llStep), 40000, 2000) << "before frame " << i;
    }
}
