#pragma once

#include "plugins/onvif/Delivery.h"
#include "plugins/onvif/Media.h"
#include "plugins/onvif/Replay.h"
#include "plugins/onvif/SyncClock.h"

#include <deque>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace onvifclient
{
class CPlayback;

/// Playbacks that are steered together.
struct tagSyncGroup
{
    std::mutex tMutex;
    std::vector<std::weak_ptr<CPlayback>> apMembers;
    CSyncClock tClock;

    std::vector<std::shared_ptr<CPlayback>> Members();
};

/// A playback: one recording after the other by the replay service, at the device's pace; several in step by one clock.
/// While it is paused nothing is fetched but for steps: then frames come as fast as they can and wait here for the next
/// ones. Any thread may call any function; none waits for the application or the device.
class CPlayback final : public CMedia, public std::enable_shared_from_this<CPlayback>
{
public:
    /// atStretches: not empty; dwFlags: eHistoryFlag.
    CPlayback(std::shared_ptr<CLogin> pLogin, std::shared_ptr<rtsp::CEngine> pEngine, uint32_t dwChannel,
              std::vector<tagStretch> atStretches, uint32_t dwFlags);

    /// The application's handle; it works from here on.
    void Begin(void* hStream);
    bool Close() override;
    /// Frames come as long as there is a function.
    int SetCallback(StreamMediaCallback pfnFrame, unsigned long dwUser);
    uint32_t Channel() const { return m_dwChannel; }
    /// When the frame that came last was recorded.
    int64_t PositionUs() const;

    /// These steer all that are in step with it. eResultBadArgument, eResultNotFound: after the end.
    int Control(eTaskControl eControl) override;
    int SetSpeed(uint32_t dwSpeed);
    int Seek(int64_t llTimeUs);
    /// Goes where the other one is and as it does, and from now on with it.
    int Sync(std::shared_ptr<CPlayback> const& pOther);
    int UnSync(std::shared_ptr<CPlayback> const& pOther);

private:
    static constexpr int64_t g_llNothingYet = std::numeric_limits<int64_t>::min();

    /// A frame that waits.
    struct tagHeld
    {
        tagStreamMediaFrame tFrame;
        std::vector<unsigned char> abyData;
        std::vector<unsigned char> abyConfig;
    };

    static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser);
    static int OnEvent(void* hStream, unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3,
                       unsigned long dwWord4, unsigned long dwUser);
    static rtsp::CTask<> TryAgain(std::shared_ptr<CPlayback> pSelf, unsigned long dwRun,
                                  std::chrono::milliseconds tPause);
    static rtsp::CTask<> LookAgain(std::shared_ptr<CPlayback> pSelf, onvif::Clock::time_point tWhen);
    template <class F>
    int ForAll(F fnDo);
    void Leave();

    // With the mutex locked.
    void Open();
    void Shut();
    void Finish();
    void Unfinish();
    void TakePart();
    void GoOn();
    void Restart();
    void MoveTo(int64_t llTimeUs);
    void SetScale(double dScale);
    bool FindStretch(int64_t& llTimeUs);
    void EndStretch();
    void NextStretch();
    rtsp::tagPlayback PlaybackFrom(int64_t llFromUs) const;
    bool IsOver(tagStreamMediaFrame const& tFrame) const;
    bool IsWanted(tagStreamMediaFrame const& tFrame) const;
    bool IsDue(tagStreamMediaFrame const& tFrame);
    bool TakesStep(tagStreamMediaFrame const& tFrame);
    void Number(tagStreamMediaFrame& tFrame);
    void Hold(tagStreamMediaFrame const& tFrame);
    void Give(tagStreamMediaFrame const& tFrame, std::unique_lock<std::mutex>& tLock);

    void Take(tagStreamMediaFrame const& tFrame, unsigned long dwRun);
    void TakeEnd(tagReplayEnd const& tEnd, unsigned long dwRun);
    void GiveHeld();
    void SendEnd();

    const std::shared_ptr<rtsp::CEngine> m_pEngine;
    const std::shared_ptr<CDelivery> m_pDelivery;
    const std::shared_ptr<onvif::CHttpGroup> m_pWaits = std::make_shared<onvif::CHttpGroup>();
    const uint32_t m_dwChannel;
    const std::vector<tagStretch> m_atStretches;
    const uint32_t m_dwFlags;
    std::atomic<void*> m_hStream{nullptr};
    CCallback<StreamMediaCallback> m_tFrames;

    mutable std::mutex m_tMutex;
    std::shared_ptr<tagSyncGroup> m_pGroup;
    std::unique_ptr<rtsp::CStream> m_pStream; ///< null: not open
    unsigned long m_dwRun = 0;                ///< of the stream: what comes from an older one doesn't count
    std::size_t m_iStretch = 0;
    bool m_bWanted = false; ///< there is a callback
    bool m_bClosed = false;
    bool m_bPaused = false;
    bool m_bEnded = false;                           ///< all has come, and was told so
    std::optional<onvif::Clock::time_point> m_tWake; ///< when what is held is looked at again, for the clock
    unsigned m_nSteps = 0;                           ///< that wait for a frame
    double m_dScale = 1;
    unsigned m_nFailures = 0;
    std::deque<tagHeld> m_atHeld;
    std::size_t m_nHeld = 0; ///< bytes of those
    bool m_bGiving = false;  ///< a callback is running
    bool m_bStretchEnded = false;
    int64_t m_llHeardUs = 0; ///< when the picture that the device has sent last was recorded
    int64_t m_llLastUs;      ///< when what came last was recorded, or where to begin
    int64_t m_llAfterUs;     ///< what was recorded up to here has come already

    // As the application sees them.
    bool m_bNewTime = false; ///< the next frame continues nothing
    std::array<uint32_t, 2> m_adwSequence{};
    int64_t m_llPresentationUs = 0;     ///< the highest so far
    int64_t m_llBaseUs = 0;             ///< this time of the recording
    int64_t m_llBasePresentationUs = 0; ///< is at this one of the stream's
};
} // namespace onvifclient
