#pragma once

#include "plugins/device/Recording.h"
#include "plugins/device/Sinks.h"
#include "plugins/device/media/Pump.h"
#include "plugins/device/media/RecordedFrames.h"

#include "protocol/interface/Live.h"
#include "protocol/interface/Playback.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace device
{
class CDevice;
class CPlayback;

/// What drives one playback, or several that are in step: at what time of the recordings they are.
class CPlayClock
{
public:
    explicit CPlayClock(int64_t llTimeUs, bool bPaused) : m_bPaused(bPaused), m_llTimeUs(llTimeUs) {}

    /// Each of these needs Mutex.
    std::mutex& Mutex() { return m_tMutex; }
    int64_t At(int64_t llNowUs) const;
    int64_t When(int64_t llTimeUs) const;
    void Set(int64_t llTimeUs, int64_t llNowUs);
    void SetSpeed(uint32_t dwSpeed, int64_t llNowUs);
    void Pause(bool bPaused, int64_t llNowUs);

    bool m_bPaused;
    bool m_bReverse = false;
    uint32_t m_dwSpeed = eSpeedNormal; // thousandths
    uint32_t m_dwSeeks = 0;            // counts the positions that were set
    uint32_t m_dwSteps = 0;            // counts the steps that were asked for
    int64_t m_llLastUs = 0;            // when what came last was recorded
    std::vector<std::weak_ptr<CPlayback>> m_apMembers;

private:
    std::mutex m_tMutex;
    int64_t m_llTimeUs;      // of the recordings
    int64_t m_llSinceUs = 0; // the pump's clock at that time; 0: it does not run yet
};

/// A playback of recordings. Any thread may call any function; none of them waits for the sink.
///
/// A frame whose sink is still busy with the one before comes late. When it is more than a second late, what was missed
/// is left out up to the next key frame, which shows as a gap in dwSequence.
class CPlayback final : public CPumped
{
public:
    /// What tQuestion finds of one channel, between its two times; dwFlags: eHistoryFlag. No frame comes before Start.
    /// eResultNoChannel, eResultBadArgument, eResultNotFound: nothing was recorded.
    static int Open(std::shared_ptr<CDevice> pDevice, tagRecordingQuestion const& tQuestion, uint32_t dwFlags,
                    std::shared_ptr<IFrameSink> pSink, std::shared_ptr<CPlayback>& pPlayback);
    CPlayback(std::shared_ptr<CDevice> pDevice, tagRecordingQuestion const& tQuestion, uint32_t dwFlags,
              std::shared_ptr<IFrameSink> pSink, std::vector<tagRecording> const& atRecordings);

    /// Frames come from now on.
    void Start();
    /// No frame comes until Start; the position stays.
    void Stop();
    /// eTaskPlay, eTaskPause, eTaskStep; eResultBadArgument.
    int Control(eTaskControl eControl);
    /// ePlaybackSpeed; eResultBadArgument.
    int SetSpeed(uint32_t dwSpeed);
    /// eOperationGet, eOperationSet; eResultBadArgument, eResultNotFound: after the end.
    int Position(eOperationType eAction, tagTimeInfo& tTime);
    /// Takes the clock of the other one; from now on steering one steers both. eResultBadArgument: with itself.
    int Sync(std::shared_ptr<CPlayback> const& pOther);
    /// Goes on alone, from where it is. eResultBadArgument: they were not in step.
    int UnSync(std::shared_ptr<CPlayback> const& pOther);
    /// Stop, for good.
    void Close();

    int64_t Run(int64_t llNowUs) override;

private:
    std::shared_ptr<CPlayClock> Clock() const;
    void Join(std::shared_ptr<CPlayClock> const& pClock);
    void Leave();
    static void WakeAll(CPlayClock const& tClock);
    bool IsLeader(CPlayClock const& tClock) const;
    void Seek(int64_t llTimeUs, bool bReverse);
    void End();
    void Deliver(tagRecordedFrame const& tFrame);

    const std::shared_ptr<CDevice> m_pDevice;
    const tagRecordingQuestion m_tQuestion;
    const uint32_t m_dwFlags;
    const std::shared_ptr<IFrameSink> m_pSink;
    std::atomic<bool> m_bStarted{false};
    std::atomic<bool> m_bClosed{false};
    mutable std::mutex m_tClockMutex; // of the pointer
    std::shared_ptr<CPlayClock> m_pClock;

    // The rest belongs to Run.
    CRecordedFrames m_tFrames;
    CPlayClock const* m_pSeenClock = nullptr;
    uint32_t m_dwSeeks = 0;
    uint32_t m_dwSteps = 0;
    uint32_t m_dwToStep = 0;
    bool m_bReverse = false;
    bool m_bEnded = false;
    bool m_bDiscontinuity = false;
    uint32_t m_dwVideo = 0; // sequences
    uint32_t m_dwAudio = 0;
    int64_t m_llBaseUs = -1; // time of the recording that is 0 on the stream's time line
};
} // namespace device
