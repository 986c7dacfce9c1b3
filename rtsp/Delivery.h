#pragma once

#include "protocol/PluginInterface.h"
#include "rtsp/Callback.h"
#include "rtsp/Loop.h"
#include "rtsp/Track.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>

namespace rtsp
{
/// Who sees to it that CDelivery::Run is called.
class IDeliverer
{
public:
    /// Run is to be called soon, on a thread of the loop. Any thread; must not block, throw or allocate.
    virtual void WantDelivery() = 0;

protected:
    ~IDeliverer() = default;
};

/// What goes from one stream to the application: frames and events, in order, one callback at a time. It is filled by
/// the stream's strand and emptied by whichever thread has just left it, so that a slow callback never holds up what
/// the stream does. What such a callback can't take is kept up to a bound; then whole groups of pictures are dropped.
///
/// Who may call what: Put... and SetState the strand; Run a thread of the loop outside the strand; all others any.
class CDelivery
{
public:
    using Words = std::array<unsigned long, 4>;

    static constexpr std::size_t nMostBytes = std::size_t{8} << 20; ///< of frames that wait

    /// hStream: what callbacks get first.
    CDelivery(void* hStream, CLoop& tLoop, IDeliverer& tDeliverer);
    CDelivery(CDelivery const&) = delete;
    CDelivery& operator=(CDelivery const&) = delete;

    /// What the next frames belong to: delivering starts anew, with a key frame if there is video.
    void Restart(bool bHasVideo);
    /// iTrack: the same for the same track in each session. tFrame's dwLostBefore and eFrameDiscontinuity reach the
    /// application with the next frame that goes out. The frame is moved from.
    void PutFrame(tagTrackFrame& tFrame, unsigned iTrack);
    /// A change of state: told to the listeners, and to those that come later.
    void SetState(Words const& adwWords);
    /// Another event.
    void PutEvent(Words const& adwWords);

    /// Calls back until nothing is left; at once if another thread does already.
    void Run();

    /// Of these two: 0: the function registered before isn't running any more, or this is inside a callback that can't
    /// be waited for. eResultStillRunning: it has been running for 2 s since.
    int SetFrameCallback(StreamMediaCallback pfnFrame, unsigned long dwUser);
    /// The present state is told to pfnEvent at once.
    int SetListener(eListener eWhich, DeviceEventCallback pfnEvent, unsigned long dwUser);

    /// No callback begins any more. Doesn't wait.
    void Mute();
    /// Waits for the callback that is running, if any, until tUntil: 0, or eResultStillRunning. Doesn't wait where that
    /// would be for itself: inside this stream's callback, or inside another's that this one's is waiting for.
    int AwaitSilence(Clock::time_point tUntil);

    tagRTSPPackageInfo Info() const;
    /// fn gets the record to change.
    template <class F>
    void EditInfo(F fn)
    {
        const std::lock_guard tLock(m_tMutex);
        fn(m_tInfo);
    }

private:
    struct tagItem
    {
        Words adwWords{}; ///< an event; the first is 0: a frame
        tagTrackFrame tFrame;
        unsigned iTrack = 0;
        bool bFirst = false;
        bool bHasVideo = false;
    };
    struct tagCall;

    static std::uint32_t Bit(unsigned iTrack);
    bool IsHeldBack(tagItem const& tItem, std::size_t nCost);
    void Put(tagItem&& tItem);
    bool Admit(tagItem& tItem);
    bool CallNext(std::unique_lock<std::mutex>& tLock);
    void CallWithFrame(std::unique_lock<std::mutex>& tLock, tagItem& tItem);
    template <class Function, class... A>
    int Call(std::unique_lock<std::mutex>& tLock, tagCallback<Function> const& tCallback, A... tArguments);
    int AwaitCallback(void const* pCallback, Clock::time_point tUntil);

    void* const m_hStream;
    CLoop& m_tLoop;
    IDeliverer& m_tDeliverer;

    mutable std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    tagRTSPPackageInfo m_tInfo{};
    tagCallback<StreamMediaCallback> m_tFrameCallback;
    std::array<tagCallback<DeviceEventCallback>, 2> m_atListeners;
    std::array<bool, 2> m_abNewListener{};
    Words m_adwTold{}; ///< the last change of state that was told
    std::list<tagItem> m_atItems;
    std::list<tagItem> m_atSpare; ///< room for the next one
    std::size_t m_nBytes = 0;     ///< of the frames among them
    bool m_bRunning = false;      ///< a thread is in Run
    bool m_bMuted = false;
    void const* m_pCalled = nullptr; ///< the registration whose function is running
    std::uint64_t m_ullCalls = 0;    ///< callbacks that have returned

    // What comes in.
    bool m_bHasVideo = false;
    bool m_bFirst = false;               ///< the next frame is the first since Restart
    bool m_bDropping = false;            ///< until a key frame finds room
    std::uint32_t m_dwDroppedLost = 0;   ///< packets missing before frames that were dropped
    std::uint32_t m_dwDroppedBreaks = 0; ///< a bit for each track that frames of were dropped

    // What goes out.
    bool m_bGateOpen = false; ///< a key frame went out since the gate was closed
    bool m_bVideoOut = false;
    std::uint32_t m_dwHeldLost = 0;   ///< packets missing before frames that were held back
    std::uint32_t m_dwHeldBreaks = 0; ///< a bit for each track: a discontinuity was at a frame that was held back
};
} // namespace rtsp
