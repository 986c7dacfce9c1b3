#pragma once

#include "plugins/device/Recording.h"
#include "plugins/device/Sinks.h"
#include "plugins/device/media/PlayClock.h"
#include "plugins/device/media/Pump.h"
#include "plugins/device/media/RecordedFrames.h"

#include "protocol/interface/Live.h"
#include "protocol/interface/Playback.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace device
{
class CDevice;

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
              std::shared_ptr<IFrameSink> pSink);

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
    static void WakeAll(CPlayClock const& tClock);
    template <class F>
    void Steer(F fnSteer);
    bool IsLeader(CPlayClock const& tClock) const;
    CRecordedFrames Find() const;
    void Follow(CPlayClock& tClock, int64_t llNowUs);
    bool Fetch();
    bool CatchUp(CPlayClock& tClock, int64_t llNowUs);
    bool IsDeviceUp();
    bool GrowsOn();
    void Deliver(tagRecordedFrame const& tFrame);
    void SendEnd();

    const std::shared_ptr<CDevice> m_pDevice;
    const tagRecordingQuestion m_tQuestion;
    const uint32_t m_dwFlags;
    const std::shared_ptr<IFrameSink> m_pSink;
    std::atomic<bool> m_bStarted{false};
    std::atomic<bool> m_bClosed{false};
    std::atomic<int64_t> m_llLastUs{0}; // when what came last was recorded
    mutable std::mutex m_tClockMutex;   // of the pointer
    std::shared_ptr<CPlayClock> m_pClock;

    // The rest belongs to Run.
    bool m_bKnown = false; // m_bUp holds
    bool m_bUp = false;
    uint32_t m_dwVersion = 0;
    CRecordedFrames m_tFrames;
    std::optional<tagRecordedFrame> m_tNext;
    std::shared_ptr<CPlayClock> m_pSeen; // the clock that these belong to
    uint32_t m_dwSeeks = 0;
    uint32_t m_dwSteps = 0;
    uint32_t m_dwToStep = 0;
    bool m_bReverse = false;
    bool m_bSaidEnd = false;
    struct tagTrack
    {
        uint32_t dwSequence = 0;
        bool bDiscontinuity = false;
    };
    tagTrack m_tVideo;
    tagTrack m_tAudio;
    bool m_bBegan = false;
    int64_t m_llBeforeUs = 0;       // time of the frame before
    int64_t m_llPresentationUs = 0; // of the frame before
};
} // namespace device
