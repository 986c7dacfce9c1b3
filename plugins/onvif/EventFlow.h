#pragma once

#include "onvif/Subscription.h"
#include "plugins/onvif/Delivery.h"
#include "plugins/onvif/Login.h"
#include "plugins/onvif/Topics.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace onvifclient
{
/// A login's events on their way to the application: what the watch and the subscription tell, in the interface's
/// words, in order, on the threads that may block. Knows the device's states, so that only changes are told.
class CEventFlow final : public onvif::IWatcher,
                         public onvif::ISubscriber,
                         public std::enable_shared_from_this<CEventFlow>
{
public:
    explicit CEventFlow(std::weak_ptr<CLogin> pLogin) : m_pLogin(std::move(pLogin)) {}

    /// From now on these events go there, in place of an earlier function; states that stand come first. False: an
    /// earlier one is still running.
    bool Set(unsigned long dwEvents, DeviceEventCallback pfnEvent, unsigned long dwUser);
    /// What is left of them; 0: none.
    unsigned long Remove(unsigned long dwEvents);
    /// For good. False: one is still running.
    bool Close();

    void SetPlaces(tagPlaces tPlaces);
    /// The states of one kind of event, by their place; nothing has been told yet: false.
    bool States(uint32_t dwEvent, std::map<uint32_t, uint32_t>& tStates) const;

    // --- on the HTTP thread ---
    void OnLost(int nResult, std::chrono::milliseconds tNextTry) override;
    void OnRestored(std::chrono::milliseconds tWasLost) override;
    void OnEnded(int nResult) override;
    void OnEvents(std::vector<onvif::tagNotification> atEvents) override;
    void OnGap(bool bRestarted) override;
    void OnNone(int nResult) override;

private:
    using Words = std::array<unsigned long, 4>;
    using Place = std::pair<uint32_t, uint32_t>; ///< eDeviceEvent and its second word

    static rtsp::CTask<> TellClock(std::shared_ptr<CEventFlow> pSelf, std::shared_ptr<onvif::CClient> pClient,
                                   uint32_t dwTime);
    void TakeEvent(onvif::tagNotification const& tEvent);
    void TakeState(onvif::tagNotification const& tEvent, tagTold const& tTold);
    void TakeTime(onvif::tagNotification const& tEvent, tagTold const& tTold);
    void TakeOther(onvif::tagNotification const& tEvent, tagTold const& tTold);
    uint32_t StateAt(Place const& tPlace) const;
    void Tell(Words const& adwWords, std::shared_ptr<tagEventDetail const> pDetail = nullptr);
    void Add(std::function<void()> fnCall);

    const std::weak_ptr<CLogin> m_pLogin;
    CCallback<DeviceEventCallback> m_tEvents;

    mutable std::mutex m_tMutex;
    std::shared_ptr<CDelivery> m_pDelivery; ///< from its first use on
    bool m_bClosed = false;
    bool m_bWanted = false;       ///< there is a function
    unsigned long m_dwEvents = 0; ///< of which events; 0: all
    uint64_t m_ullTurn = 0;       ///< counts registrations: what was told for an earlier one is dropped
    tagPlaces m_tPlaces;
    bool m_bFilled = false; ///< the device has told its states
    /// What each topic and source says of a place's state: 0 is left out.
    std::map<Place, std::map<std::string, uint32_t>> m_tStates;
    std::map<uint32_t, uint32_t> m_tTimes; ///< of what is told by its time
};
} // namespace onvifclient
