#pragma once

#include "onvif/Notification.h"
#include "onvif/Watch.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace onvif
{
class CListener;

/// Who gets what a subscription brings. On the HTTP thread, or one of the listener's; none of these may block.
class ISubscriber
{
public:
    /// In the order in which they came.
    virtual void OnEvents(std::vector<tagNotification> atEvents) = 0;
    /// The device had forgotten the subscription, and a new one was made: events may have been missed. bRestarted: it
    /// had been out of reach before, and forgot it before its time.
    virtual void OnGap(bool bRestarted) = 0;
    /// There is none to be had, and nobody tries any more. nResult: eResultNotSupported, or that of the login's end.
    virtual void OnNone(int nResult) = 0;

protected:
    ~ISubscriber() = default;
};

/// A device's events: fetched by a pull point that is renewed in time, or where the device has none, sent to a
/// listener of ours. A subscription that was lost is made again, when the login lives.
class CSubscription : public std::enable_shared_from_this<CSubscription>
{
public:
    /// pListener: null where there can be none. Looks the device's name up, if it is one: blocks as long as that.
    CSubscription(std::shared_ptr<CClient> pClient, std::shared_ptr<CWatch> pWatch,
                  std::shared_ptr<ISubscriber> pSubscriber, std::shared_ptr<CListener> pListener);

    void Begin();
    /// Nothing is told any more, but what is on its way. The device is told so. A client that is interrupted ends it
    /// too.
    void End();

    /// All states of a device as they stand, by a pull point of their own that is given back. Blocks.
    static int ReadStates(CClient& tClient, std::vector<tagNotification>& atStates);

private:
    /// A subscription as the device knows it.
    struct tagManager
    {
        std::string strTo;
        std::string strHeader;
        Clock::duration tGranted{};
        Clock::time_point tEnds{};
    };

    static rtsp::CTask<> Run(std::shared_ptr<CSubscription> pSelf);
    static rtsp::CTask<> Leave(std::shared_ptr<CClient> pClient, tagManager tManager);
    static rtsp::CTask<int> StatesOf(std::shared_ptr<CClient> pClient, std::vector<tagNotification>* patStates);
    static rtsp::CTask<int> CreatePullPoint(std::shared_ptr<CClient> pClient, tagManager* ptManager);
    static rtsp::CTask<CAnswer> Pull(std::shared_ptr<CClient> pClient, tagManager* ptManager,
                                     std::chrono::milliseconds tWait);
    static void TakeTimes(CAnswer const& tAnswer, tagManager& tManager);
    rtsp::CTask<int> Create();
    rtsp::CTask<int> Subscribe();
    rtsp::CTask<int> Serve();
    rtsp::CTask<int> Renew();
    bool IsOver() const { return m_bEnded || m_pGroup->IsEnded(); }

    const std::shared_ptr<CClient> m_pClient;
    const std::shared_ptr<CHttpGroup> m_pGroup; ///< ended: the login is
    const std::shared_ptr<CWatch> m_pWatch;
    const std::shared_ptr<ISubscriber> m_pSubscriber;
    const std::shared_ptr<CListener> m_pListener;
    const std::string m_strLocalHost; ///< of this machine, as the device reaches it; empty: not known
    std::atomic<bool> m_bEnded{false};

    // The HTTP thread's.
    tagManager m_tManager;     ///< strTo is empty: there is none
    std::string m_strListener; ///< where the device sends to; empty: it is a pull point
    bool m_bPullsFail = false; ///< the device has no pull points
    bool m_bServed = false;    ///< since it was looked at last, it has worked
};
} // namespace onvif
