#pragma once

#include "rtsp/Authentication.h"
#include "rtsp/Control.h"
#include "rtsp/Delivery.h"
#include "rtsp/Media.h"
#include "rtsp/Stream.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace rtsp
{
/// What all lives use, and who waits for their ends.
class CEngineCore
{
public:
    CLoop tLoop;
    CResolver tResolver;

    void Add(CLife& tLife);
    void Remove(CLife& tLife);
    /// Waits until none is left. What is left at tUntil ends without a word.
    void AwaitEnds(Clock::time_point tUntil);

private:
    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::set<CLife*> m_apLives;
};

/// The life of a stream, as one coroutine: connects, sets up, plays, receives, and after a failure tries again. Its
/// socket handlers and it share a strand; callbacks run outside. The loop holds a share of it as long as it lives.
class CLife final : public ILoopClient, private IControlOwner, private IDeliverer
{
public:
    CLife(std::shared_ptr<CEngineCore> pCore, void* hStream, tagStreamOptions tOptions);
    ~CLife();
    CLife(CLife const&) = delete;
    CLife& operator=(CLife const&) = delete;

    void Begin();
    CDelivery& Delivery() { return m_tDelivery; }
    void SetPaused(bool bPaused);
    void Play(tagPlayback const& tPlayback);
    std::optional<tagAudioFormat> BackFormat();
    bool SendAudio(Bytes abyFrame, std::uint32_t nSamples, bool bFirst);
    /// Ends soon.
    void RequestEnd();
    /// Ends here and now.
    void Abandon();

    // --- the loop's ---
    void OnReadable(std::uint32_t dwTag) override;
    void OnWritable(std::uint32_t dwTag) override;
    void OnWake() override;

private:
    /// What a step of the life came to.
    enum class eOutcome
    {
        Done,
        Ended,   ///< asked to
        Paused,  ///< asked to, where the session can't be kept
        Refused, ///< by the device, with an RTSP status
        Lost,
        Moved,     ///< the device named another address
        NoUdpCame, ///< TCP is to be tried
    };

    CTask<> Live();
    CTask<> LiveOn();
    CTask<> Try();
    CTask<eOutcome> Session();
    CTask<eOutcome> SetUp();
    CTask<eOutcome> SetUpAt(tagUrl tUrl);
    CTask<eOutcome> SetUpTracks(tagDescription tDescription, std::string strBase);
    CTask<eOutcome> SetUpTrack(CChannel& tChannel, tagMediaDescription const& tDescription, std::string strUri,
                               std::size_t iTrack);
    void AddRequire(tagMessage& tRequest) const;
    CTask<eOutcome> PlayAll(std::vector<std::string> const& astrTracks);
    CTask<eOutcome> Receive();
    CTask<eOutcome> StayPaused();
    CTask<eOutcome> Request(tagMessage tRequest, tagMessage& tAnswer);
    CTask<> Disconnect();

    eOutcome Failed(int nError);
    bool IsSignOfLifeDue(Clock::time_point tNow);
    bool TakeLateAnswer();
    tagMessage SignOfLife() const;
    tagMessage PlayRequest(std::string strUri, bool bResumes);
    Clock::time_point NextLook() const;
    Clock::duration NextPause(eOutcome eWhy);
    void OnLive(Clock::time_point tNow);
    void SetState(eConnectionState eState, unsigned long dwDetail = 0, unsigned long dwPauseMs = 0);
    template <class F>
    void Handle(F fn);

    void OnInterleaved(unsigned nChannel, Bytes abyPacket) override;
    bool GivesUp() const override { return m_bEndRequested && !m_bClosing; }
    void OnLookedUp() override { WantDelivery(); }
    void WantDelivery() override { m_tWaker.Raise(*this); }

    const std::shared_ptr<CEngineCore> m_pCore;
    const tagStreamOptions m_tOptions;
    std::atomic<bool> m_bEndRequested{false};
    std::atomic<bool> m_bPauseWanted{false};
    CWaker m_tWaker;
    CStrand m_tStrand;
    CDelivery m_tDelivery;

    // --- the strand's ---
    CAuthenticator m_tAuthenticator;
    CControl m_tControl;
    CMedia m_tMedia;
    bool m_bBegun = false;
    bool m_bClosing = false; ///< waits for the answer to TEARDOWN, whatever is asked for
    eConnectionState m_eState = eConnectionConnecting;
    eRtspTransport m_eTransport; ///< that is used next
    bool m_bWasConnected = false;
    unsigned m_nReconnects = 0;
    unsigned m_nFailures = 0; ///< in a row
    Clock::time_point m_tNextTry;
    eConnectionState m_eWaiting = eConnectionLost; ///< why it waits for the next try
    bool m_bFinished = false;                      ///< a recording that isn't tried again

    // Of one session.
    Clock::time_point m_tDeadline;  ///< of what is being done
    Clock::time_point m_tNow;       ///< when what is being read came
    Clock::time_point m_tPlayed;    ///< when the device was last told to play
    Clock::time_point m_tLiveSince; ///< zero: not yet
    Clock::time_point m_tSignOfLife;
    Clock::time_point m_tReports;
    Clock::duration m_tSignOfLifeTime{};
    int m_nStatus = 0; ///< of a refusal
    int m_nError = 0;  ///< errno of a failure
    bool m_bCanPause = true;
    bool m_bKnowsGetParameter = false;
    bool m_bTransportRefused = false;
    std::string m_strUri;     ///< of the whole session
    std::string m_strMovedTo; ///< the address that the device named

    std::mutex m_tPlaybackMutex;
    tagPlayback m_tPlayback; ///< of a recording: what to play
    std::atomic<bool> m_bPlayAnew{false};

    CTask<> m_tLife; ///< last: it uses all of the above
};
} // namespace rtsp
