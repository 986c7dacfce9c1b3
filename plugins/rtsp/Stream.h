#pragma once

#include "plugins/rtsp/Address.h"
#include "plugins/rtsp/Callback.h"
#include "plugins/rtsp/Connection.h"
#include "plugins/rtsp/StackLog.h"
#include "plugins/rtsp/Timeline.h"
#include "plugins/rtsp/Track.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace rtsp
{
using Clock = std::chrono::steady_clock;

/// One stream and its life: a thread that connects, receives, and after a failure tries again for as long as the stream
/// exists. Every public member may be called from any thread, the stream's own inside a callback included; none blocks
/// but the two registrations, Mute and WaitForEnd.
class CStream final : private IWatchdog, private IStackListener
{
public:
    /// Which of the two registrations for events.
    enum class eListener
    {
        EventCB,
        SetRtspEvenCb,
    };

    /// Starts the thread. hStream: what callbacks get first. Throws std::system_error when no thread can be had.
    CStream(void* hStream, tagAddress tAddress);
    ~CStream(); ///< the thread has ended
    CStream(CStream const&) = delete;
    CStream& operator=(CStream const&) = delete;

    /// Of these two: when one returns, the function registered before isn't running; exceptions as for Mute.
    void SetFrameCallback(StreamMediaCallback pfnFrame, unsigned long dwUser);
    /// The present state is told to pfnEvent at once, on the stream's thread.
    void SetListener(eListener eWhich, DeviceEventCallback pfnEvent, unsigned long dwUser);
    void SetPaused(bool bPaused);
    tagRTSPPackageInfo Info() const;

    /// Asks the thread to end: TEARDOWN, then no more.
    void RequestEnd();
    /// No callback runs once this has returned; waits for one that is running. It doesn't wait where that would be for
    /// itself: on the stream's own thread, or on another stream's whose end this one's callback is waiting for.
    void Mute();
    /// The same without waiting, for a process that is ending.
    void MuteNow();
    /// True: the thread has ended (or was ended before). False: not until tUntil, or it is the caller's own.
    bool WaitForEnd(Clock::time_point tUntil);

private:
    enum class eOutcome
    {
        Ended,   ///< asked to
        Paused,  ///< asked to, where the session can't be kept
        Refused, ///< by the device, with an RTSP status
        Lost,
    };

    bool GiveUp() override;
    void OnStatus(int nStatus) override { m_nStatus = nStatus; }
    void OnMissed(unsigned nPackets) override;
    void OnRedirect() override { ++m_nRedirects; }

    void Run();
    void Try();
    eOutcome RunSessionGuarded();
    eOutcome RunSession();
    eOutcome Receive(CConnection& tConnection);
    eOutcome Failed(int nError);
    bool StayPaused(CConnection& tConnection);
    Clock::duration NextPause(eOutcome eWhy);
    void WaitForPlay();
    bool WaitForNextTry();
    bool IsPauseWanted() const;
    void WaitForCallback(void const* pCallback);

    void OnPacket(AVPacket const& tPacket);
    void OnFrame(unsigned iTrack, tagTrackFrame& tFrame);
    bool PassesGate(tagStreamMediaFrame const& tFrame);

    void SetState(eConnectionState eState, unsigned long dwDetail = 0, unsigned long dwPauseMs = 0);
    void Tell(std::array<unsigned long, 4> const& adwWords);
    void TellNewListeners();
    template <class Callback>
    Callback BeginCall(Callback const& tCallback);
    template <class Callback, class... A>
    void Call(Callback const& tCallback, A... tArguments);
    bool IsEndRequested() const;

    void* const m_hStream;
    const tagAddress m_tAddress;

    // --- the thread's own ---
    enum class ePhase
    {
        Waiting,
        Connecting,
        Receiving,
        Closing,
    };
    ePhase m_ePhase = ePhase::Waiting;
    Clock::time_point m_tDeadline; ///< of the phase
    Clock::time_point m_tLastPacket;
    Clock::time_point m_tLiveSince; ///< of this session; zero: not yet
    Clock::time_point m_tNextTry;
    int m_nStatus = 0;         ///< the last RTSP status of 400 or more in this session
    int m_nError = 0;          ///< errno of the last failure
    unsigned m_nRedirects = 0; ///< in this session
    unsigned m_nFailures = 0;  ///< in a row
    unsigned m_nMissed = 0;    ///< packets missing before the next one
    std::vector<std::unique_ptr<CTrack>> m_apTracks;
    std::vector<std::uint32_t> m_adwSequence; ///< of each track, over all sessions
    std::vector<bool> m_abHeldBreak;          ///< of each track: a discontinuity was at a frame that was held back
    std::uint32_t m_dwHeldLost = 0;           ///< packets missing before frames that were held back
    CTimeline m_tTimeline;
    std::vector<CWallClock> m_atWallClocks; ///< of each track
    bool m_bHasVideo = false;
    bool m_bGateOpen = false; ///< a key frame went out since the gate was closed

    // --- shared ---
    mutable std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    bool m_bEndRequested = false;
    bool m_bPauseWanted = false;
    bool m_bMuted = false;
    void const* m_pRunning = nullptr; ///< the registration whose function is running
    std::uint64_t m_ullCalls = 0;     ///< callbacks that have returned
    bool m_bEnded = false;
    tagCallback<StreamMediaCallback> m_tFrameCallback;
    bool m_bNewFrameCallback = false; ///< delivering starts anew, with a key frame
    std::array<tagCallback<DeviceEventCallback>, 2> m_atListeners;
    std::array<bool, 2> m_abNewListener{};
    std::array<unsigned long, 4> m_adwState{}; ///< the words of the last change of state
    tagRTSPPackageInfo m_tInfo{};
    bool m_bWasConnected = false;
    std::thread m_tThread; ///< last: it uses all of the above
};
} // namespace rtsp
