#pragma once

#include "plugins/device/Sinks.h"
#include "plugins/device/StreamState.h"
#include "plugins/device/media/Clips.h"
#include "plugins/device/media/Pump.h"

#include "protocol/interface/Live.h"
#include "protocol/interface/Results.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace device
{
class CDevice;

/// A live stream of a channel. Any thread may call any function; none of them waits for the sink.
///
/// Pictures stand on a grid of the device's clock, so all streams of a channel show the same one at the same time. A
/// frame whose sink is still busy with the one before is left out, which shows as a gap in dwSequence and a key frame.
class CLiveStream final : public CPumped
{
public:
    CLiveStream(std::shared_ptr<CDevice> pDevice, uint32_t dwChannel, uint32_t dwStreamKind,
                std::shared_ptr<IFrameSink> pSink);
    /// dwStreamKind: eStreamKind, 0 the main stream. No frame comes before Start. eResultNoChannel, eResultBadArgument,
    /// eResultRefused: the stream is switched off.
    static int Open(std::shared_ptr<CDevice> pDevice, uint32_t dwChannel, uint32_t dwStreamKind,
                    std::shared_ptr<IFrameSink> pSink, std::shared_ptr<CLiveStream>& pStream);

    /// Frames come from now on, the first one a key frame.
    void Start();
    /// No frame comes until Start.
    void Stop();
    /// eTaskPlay and eTaskPause; eResultNotSupported.
    int Control(eTaskControl eControl);
    /// The next frame of video is a key frame.
    void ForceKeyFrame();
    /// Counts since Open.
    tagRTSPPackageInfo Info() const;
    /// Stop, for good.
    void Close();

    int64_t Run(int64_t llNowUs) override;

private:
    struct tagTrack
    {
        int64_t llNext = 0; // the frame that comes next, on the track's grid
        uint32_t dwSequence = 0;
        bool bDiscontinuity = false;
        uint32_t dwLose = 0;   // thousandths of a frame that are to be lost
        uint32_t dwDamage = 0; // the same of damage
    };
    bool Refresh();
    void Anchor(int64_t llDeviceUs, bool bNewTime);
    void CheckClock(int64_t llNowUs, int64_t llDeviceUs);
    void SendVideo();
    void SendAudio();
    void Send(tagTrack& tTrack, tagStreamMediaFrame& tFrame, Bytes tData);
    void SetState(uint32_t dwState);

    const std::shared_ptr<CDevice> m_pDevice;
    const uint32_t m_dwChannel;
    const uint32_t m_dwStreamKind;
    const std::shared_ptr<IFrameSink> m_pSink;
    std::atomic<bool> m_bStarted{false};
    std::atomic<bool> m_bPaused{false};
    std::atomic<bool> m_bClosed{false};
    std::atomic<bool> m_bForceKey{true};

    // The rest belongs to Run.
    bool m_bKnown = false; // m_tState holds
    uint32_t m_dwVersion = 0;
    uint32_t m_dwState = 0; // eConnectionState
    tagStreamState m_tState{};
    CClip const* m_pClip = nullptr;
    bool m_bAnchored = false; // the tracks stand at the device's present time
    bool m_bBegan = false;    // the stream's time line has begun
    bool m_bGateOpen = false; // the first key frame has come
    int64_t m_llBaseUs = 0;   // time on the device's clock that is 0 on the stream's time line
    int64_t m_llOffsetUs = 0; // the device's clock less the pump's, lately
    int64_t m_llLastUs = 0;   // on the stream's time line: the end of what came last
    uint32_t m_dwSinceKey = 0;
    uint32_t m_dwLostBefore = 0;
    tagTrack m_tVideo;
    tagTrack m_tAudio;

    mutable std::mutex m_tInfoMutex;
    tagRTSPPackageInfo m_tInfo{};
};
} // namespace device
