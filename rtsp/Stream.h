#pragma once

#include "protocol/PluginInterface.h"
#include "rtsp/Address.h"
#include "rtsp/BackChannel.h"
#include "rtsp/Callback.h"
#include "rtsp/Headers.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace rtsp
{
using Clock = std::chrono::steady_clock;

class CEngineCore;
class CLife;
class CLoop;

/// Which part of a recording to play, and how.
struct tagPlayback
{
    std::optional<tagRange> tRange; ///< nothing: from where it is
    double dScale = 1;              ///< speed of the recording's time; negative: backwards
    bool bAsFastAsPossible = false; ///< the server doesn't keep the recording's pace (Rate-Control: no)
};

/// What to connect to, and how.
struct tagStreamOptions
{
    tagUrl tUrl;
    std::string strUser; ///< empty: no login. Neither goes to another host or port than tUrl's
    std::string strPassword;
    eRtspTransport eTransport = eRtspTcp; ///< rtsps always uses eRtspTcp
    eRtspCertificate eCertificate = eRtspCertificateAny;
    std::optional<tagPlayback> tPlayback; ///< a recording; nothing: live
    bool bBackChannel = false;            ///< asks for one, for SendAudio
};

/// One stream and its life: it connects, receives, and after a failure tries again for as long as it exists. A
/// recording isn't tried again: its eEventLost has 0 as the time to the next try.
///
/// Every member may be called from any thread, from inside the stream's own callbacks too. None blocks but the two
/// registrations and AwaitSilence. Destroying it closes it.
class CStream
{
public:
    explicit CStream(std::shared_ptr<CLife> pLife);
    ~CStream();
    CStream(CStream const&) = delete;
    CStream& operator=(CStream const&) = delete;

    /// Of these two: when one returns 0, the function registered before isn't running (but inside a callback of this
    /// stream it may be the caller itself). eResultStillRunning: it has been running for 2 s since.
    int SetFrameCallback(StreamMediaCallback pfnFrame, unsigned long dwUser);
    /// The present state is told to pfnEvent at once.
    int SetListener(eListener eWhich, DeviceEventCallback pfnEvent, unsigned long dwUser);
    void SetPaused(bool bPaused);
    /// Of a recording: goes on here, at once; also after its end.
    void Play(tagPlayback const& tPlayback);
    tagRTSPPackageInfo Info() const;

    /// What the back channel takes; nothing: it isn't there, or not yet.
    std::optional<tagAudioFormat> BackFormat();
    /// Sends one frame on the back channel: samples of G.711 or G.726, or one raw access unit of AAC. nSamples: its
    /// duration; who calls keeps the pace. bFirst: silence came before it. 0; eResultBadArgument: it is empty or larger
    /// than a packet; eResultConnectionLost: there is no back channel now. Throws std::bad_alloc.
    int SendAudio(Bytes abyFrame, std::uint32_t nSamples, bool bFirst);

    /// No callback begins any more, and the stream ends: TEARDOWN, then no more. Takes no memory.
    void Close();
    /// After Close: waits for a callback that is running. 0, or eResultStillRunning: it was until tUntil, and is the
    /// last. Doesn't wait inside that callback, or where two streams' callbacks would wait for each other.
    int AwaitSilence(Clock::time_point tUntil);
    /// No callback begins any more; for a process that is ending.
    void Mute();

private:
    const std::shared_ptr<CLife> m_pLife;
};

/// What streams share: the threads. Streams that live longer only wait for their end.
class CEngine
{
public:
    /// Starts threads. Throws when none can be had.
    CEngine();
    ~CEngine(); ///< stops
    CEngine(CEngine const&) = delete;
    CEngine& operator=(CEngine const&) = delete;

    /// hStream: what its callbacks get first. Throws std::bad_alloc.
    std::unique_ptr<CStream> Open(void* hStream, tagStreamOptions tOptions);
    /// Waits for closed streams to say good-bye, and for the threads to end, all in all until tUntil. A thread inside a
    /// callback then ends by itself. No stream may be open.
    void Stop(Clock::time_point tUntil);
    /// Its threads, for other callbacks of the plug-in; good as long as the engine.
    CLoop& Loop() const;
    /// For a process that is ending: all is still once this returns, but what callbacks do. At most 200 ms.
    void Freeze();

private:
    const std::shared_ptr<CEngineCore> m_pCore;
    bool m_bStopped = false;
};
} // namespace rtsp
