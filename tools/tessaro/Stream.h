#pragma once

#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Line.h"
#include "tools/tessaro/Session.h"

#include <functional>
#include <mutex>
#include <optional>

namespace tessaro
{
/// Takes a frame, on a thread of the plug-in.
using FrameHandler = std::function<void(tagStreamMediaFrame const&)>;

/// What came of a stream. Frames are counted on the plug-in's thread, read on ours.
class CFrameCount
{
public:
    void Count(tagStreamMediaFrame const& tFrame);

    struct tagTrack
    {
        std::string strCodec;
        std::uint64_t ullFrames = 0, ullBytes = 0, ullLost = 0, ullKeys = 0;
        std::int64_t llFirstUs = 0, llLastUs = 0; ///< presentation times
        std::uint32_t dwWidth = 0, dwHeight = 0, dwSampleRate = 0, dwChannels = 0;
    };
    struct tagTotals
    {
        tagTrack tVideo, tAudio;
        std::int64_t llWallClockUs = 0; ///< when the last frame was taken, by the device's clock; 0: not known
        std::int64_t llLatencyUs = 0;   ///< from there until it arrived, if the device's clock is right
        std::uint32_t dwSequence = 0;
        bool bEnded = false; ///< playback has come to its end
    };
    tagTotals Totals() const;

private:
    mutable std::mutex m_tMutex;
    tagTotals m_t;
};

/// Totals as JSON: what a command says at its end.
json ToJson(CFrameCount::tagTotals const& tTotals);

/// How a stream stands, once a second: rates since the last call.
class CRates
{
public:
    explicit CRates(CFrameCount const& tCount) : m_tCount(tCount) {}
    json Now();                                  ///< frames, fps, kbit/s, losses, latency
    static std::string Text(json const& tRates); ///< the same in a line

private:
    CFrameCount const& m_tCount;
    CFrameCount::tagTotals m_tBefore;
    long long m_llBeforeMs = 0;
    long long m_llBeginMs = 0;
};

struct tagLiveOptions
{
    unsigned int dwChannel = 0;
    bool bSub = false;
    std::string strTransport = "tcp"; ///< of RTSP
};
class CLiveStream
{
public:
    /// Opens a live stream; throws CFailure. Frames go to fnFrame from Begin on.
    CLiveStream(CSession const& tSession, tagLiveOptions const& tOptions, FrameHandler fnFrame);
    ~CLiveStream();
    CLiveStream(CLiveStream const&) = delete;
    CLiveStream& operator=(CLiveStream const&) = delete;

    int Id() const { return m_tMedia.Id(); }
    CFrameCount const& Count() const { return m_tCount; }
    /// Waits for the first frame. Throws CFailure when none comes; false: Ctrl-C.
    bool AwaitFirst(int nSeconds = 15);
    /// Why nothing comes, of RTSP; empty: nothing is known to be wrong.
    std::string Trouble() const;

private:
    CFailure Silence() const;
    void OnEvent(unsigned long dwEvent, unsigned long dwDetail);

    CSession const& m_tSession;
    FrameHandler m_fnFrame;
    CFrameCount m_tCount;
    mutable std::mutex m_tMutex;
    unsigned long m_dwEvent = 0, m_dwDetail = 0;
    std::optional<CEventSubscription> m_tEvents; // RTSP's go on until the stream is closed, so it is closed first
    CMedia m_tMedia;
};

/// Options of every command that opens a live stream.
void AddLiveOptions(CLine& tLine, tagLiveOptions& tOptions);
} // namespace tessaro
