// What whole streams cost, through the library and its RTSP plug-in or on the bare stack (libavformat, one thread for
// each stream, with the plug-in's options), from a server whose streams have 25 pictures a second:
//
//   bench_streams --through library|bare --streams N --seconds S URL
//
// Prints one line of JSON: milliseconds of CPU time for each second and stream, KiB of resident memory for each stream,
// threads, frames received in S seconds, and how much was lost in all the time.

#include "adapter/ClientAdapter.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <thread>
#include <utility>
#include <vector>

extern "C"
{
#include <libavformat/avformat.h>
}

namespace
{
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::int64_t g_nPeriodUs = 40000;

// What came of one stream. Written by the stream's thread.
struct alignas(64) tagCounts
{
    std::atomic<std::uint64_t> ullFrames{0};
    std::atomic<std::uint64_t> ullLost{0};
    std::int64_t llLastUs = 0;

    // A frame with this presentation time came whole.
    void Count(std::int64_t llTimeUs, unsigned nLost)
    {
        if (ullFrames > 0)
        {
            const std::int64_t nSteps = (llTimeUs - llLastUs + g_nPeriodUs / 2) / g_nPeriodUs;
            nLost += static_cast<unsigned>(std::abs(nSteps - 1));
        }
        llLastUs = llTimeUs;
        ++ullFrames;
        ullLost += nLost;
    }
};

// A way to receive streams. Counts are written until all are closed, or the way ends.
class IWay
{
public:
    virtual ~IWay() = default;
    virtual void Open(tagCounts& tCounts) = 0;
    virtual void CloseAll() = 0;
};

class CLibrary final : public IWay
{
public:
    CLibrary(char const* szUrl, unsigned long nStreams)
    {
        tagUserLoginPara tLogin{};
        std::snprintf(tLogin.szAddress, sizeof tLogin.szAddress, "%s", szUrl);
        ClientAdapter_Start(static_cast<unsigned int>(nStreams));
        ClientAdapter_UserLogin(&m_nLogin, eProtocolRTSP, &tLogin);
    }
    ~CLibrary() override { ClientAdapter_Stop(); }

    void Open(tagCounts& tCounts) override
    {
        tagRealStreamPara tStream{};
        tStream.dwStreamKind = eStreamMain;
        int nMedia = -1;
        if (ClientAdapter_RealStreamConnect(&nMedia, m_nLogin, &tStream) == 0)
        {
            m_anMedia.push_back(nMedia);
            ClientAdapter_StreamMediaCB(nMedia, &OnFrame, reinterpret_cast<unsigned long>(&tCounts));
        }
    }
    void CloseAll() override
    {
        for (int nMedia : m_anMedia)
        {
            ClientAdapter_RealStreamDisconnect(nMedia);
        }
        m_anMedia.clear();
    }

private:
    static int OnFrame(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
    {
        reinterpret_cast<tagCounts*>(dwUser)->Count(ptFrame->llPresentationTimeUs, ptFrame->dwLostBefore);
        return 0;
    }

    int m_nLogin = -1;
    std::vector<int> m_anMedia;
};

thread_local unsigned g_nMissed = 0; // RTP packets, since the last frame of this thread's stream

class CBare final : public IWay
{
public:
    explicit CBare(char const* szUrl) : m_szUrl(szUrl) { av_log_set_callback(&OnLine); }
    ~CBare() override { CloseAll(); }

    void Open(tagCounts& tCounts) override
    {
        m_atThreads.emplace_back([this, &tCounts] { Receive(tCounts); });
    }
    void CloseAll() override
    {
        m_bEnd = true;
        for (std::thread& tThread : m_atThreads)
        {
            tThread.join();
        }
        m_atThreads.clear();
        m_bEnd = false;
    }

private:
    static void OnLine(void*, int, char const* szFormat, va_list tArguments)
    {
        if (std::strncmp(szFormat, "RTP: missed", 11) == 0)
        {
            g_nMissed += va_arg(tArguments, unsigned);
        }
    }
    static int IsEnding(void* pThis) { return static_cast<CBare*>(pThis)->m_bEnd; }

    void Receive(tagCounts& tCounts)
    {
        AVFormatContext* ptContext = avformat_alloc_context();
        ptContext->interrupt_callback = {&IsEnding, this};
        ptContext->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
        AVDictionary* ptOptions = nullptr;
        av_dict_set(&ptOptions, "rtsp_transport", "tcp", 0);
        av_dict_set_int(&ptOptions, "buffer_size", 2 << 20, 0);
        av_dict_set_int(&ptOptions, "correct_ts_overflow", 0, 0);
        av_dict_set_int(&ptOptions, "reorder_queue_size", 2, 0);
        const int nResult = avformat_open_input(&ptContext, m_szUrl, nullptr, &ptOptions);
        av_dict_free(&ptOptions);
        if (nResult == 0)
        {
            ReadPackets(*ptContext, tCounts);
        }
        avformat_close_input(&ptContext);
    }

    // A frame is complete when the next begins.
    static void ReadPackets(AVFormatContext& tContext, tagCounts& tCounts)
    {
        AVPacket* ptPacket = av_packet_alloc();
        std::int64_t llStamp = AV_NOPTS_VALUE;
        while (av_read_frame(&tContext, ptPacket) >= 0)
        {
            if (ptPacket->pts != llStamp)
            {
                if (llStamp != AV_NOPTS_VALUE)
                {
                    tCounts.Count(av_rescale_q(llStamp, tContext.streams[0]->time_base, {1, 1000000}),
                                  std::exchange(g_nMissed, 0U));
                }
                llStamp = ptPacket->pts;
            }
            av_packet_unref(ptPacket);
        }
        av_packet_free(&ptPacket);
    }

    char const* const m_szUrl;
    std::atomic<bool> m_bEnd{false};
    std::vector<std::thread> m_atThreads;
};

double CpuMs()
{
    rusage tUsage{};
    getrusage(RUSAGE_SELF, &tUsage);
    const auto fnMs = [](timeval const& t)
    { return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_usec) / 1e3; };
    return fnMs(tUsage.ru_utime) + fnMs(tUsage.ru_stime);
}

long ResidentKiB()
{
    std::ifstream tFile("/proc/self/smaps_rollup");
    std::string strWord;
    long nKiB = 0;
    while (tFile >> strWord && strWord != "Rss:")
    {
    }
    tFile >> nKiB;
    return nKiB;
}

std::uint64_t Frames(std::vector<tagCounts> const& atCounts)
{
    std::uint64_t ullFrames = 0;
    for (tagCounts const& tCounts : atCounts)
    {
        ullFrames += tCounts.ullFrames;
    }
    return ullFrames;
}

// False: a stream had no frame for a minute.
bool AllRun(std::vector<tagCounts> const& atCounts)
{
    const auto tUntil = Clock::now() + 60s;
    for (tagCounts const& tCounts : atCounts)
    {
        while (tCounts.ullFrames == 0)
        {
            if (Clock::now() > tUntil)
            {
                return false;
            }
            std::this_thread::sleep_for(10ms);
        }
    }
    return true;
}

int Measure(IWay& tWay, std::vector<tagCounts>& atCounts, char const* szThrough, double dSeconds)
{
    // What is loaded, and set up once in a process, belongs to no stream.
    std::vector<tagCounts> atFirst(1);
    tWay.Open(atFirst[0]);
    bool bRun = AllRun(atFirst);
    tWay.CloseAll();

    const long nKiBBefore = ResidentKiB();
    for (tagCounts& tCounts : atCounts)
    {
        tWay.Open(tCounts);
    }
    bRun = bRun && AllRun(atCounts);
    std::this_thread::sleep_for(2s);

    const std::uint64_t ullFramesBefore = Frames(atCounts);
    const double dCpuBefore = CpuMs();
    const auto tBegin = Clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(dSeconds));
    const double dTook = std::chrono::duration<double>(Clock::now() - tBegin).count();
    const double dCpu = CpuMs() - dCpuBefore;
    const std::uint64_t ullFrames = Frames(atCounts) - ullFramesBefore;
    const long nKiB = ResidentKiB() - nKiBBefore;
    const auto nThreads = std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    std::uint64_t ullLost = 0;
    for (tagCounts const& tCounts : atCounts)
    {
        ullLost += tCounts.ullLost;
    }
    const auto dStreams = static_cast<double>(atCounts.size());
    std::printf("{\"through\": \"%s\", \"streams\": %zu, \"seconds\": %.2f, \"cpu\": %.3f, \"memory\": %.1f, "
                "\"threads\": %td, \"frames\": %llu, \"lost\": %llu}\n",
                szThrough, atCounts.size(), dTook, dCpu / dTook / dStreams, static_cast<double>(nKiB) / dStreams,
                nThreads, static_cast<unsigned long long>(ullFrames), static_cast<unsigned long long>(ullLost));
    return bRun ? EXIT_SUCCESS : EXIT_FAILURE;
}

void AllowManyFiles()
{
    rlimit tFiles{};
    getrlimit(RLIMIT_NOFILE, &tFiles);
    tFiles.rlim_cur = tFiles.rlim_max;
    setrlimit(RLIMIT_NOFILE, &tFiles);
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    char const* szThrough = "";
    char const* szUrl = nullptr;
    unsigned long nStreams = 1;
    double dSeconds = 10;
    for (int i = 1; i < nArguments; ++i)
    {
        const std::string_view strName = aszArguments[i];
        if (strName.substr(0, 2) != "--")
        {
            szUrl = aszArguments[i];
        }
        else if (++i < nArguments)
        {
            szThrough = strName == "--through" ? aszArguments[i] : szThrough;
            nStreams = strName == "--streams" ? std::strtoul(aszArguments[i], nullptr, 10) : nStreams;
            dSeconds = strName == "--seconds" ? std::atof(aszArguments[i]) : dSeconds;
        }
    }
    const bool bBare = std::strcmp(szThrough, "bare") == 0;
    if (!szUrl || nStreams == 0 || (!bBare && std::strcmp(szThrough, "library") != 0))
    {
        std::fputs("usage: bench_streams --through library|bare [--streams N] [--seconds S] URL\n", stderr);
        return EXIT_FAILURE;
    }
    AllowManyFiles();
    std::vector<tagCounts> atCounts(nStreams);
    std::unique_ptr<IWay> pWay;
    if (bBare)
    {
        pWay = std::make_unique<CBare>(szUrl);
    }
    else
    {
        pWay = std::make_unique<CLibrary>(szUrl, nStreams);
    }
    return Measure(*pWay, atCounts, szThrough, dSeconds);
}
