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
class CEventFlow;

/// A login's life and its events.
class CEvents final : public CPart
{
public:
    explicit CEvents(CLogin& tLogin);

    /// Right after the login: from now on it is watched.
    void Begin();
    int Subscribe(unsigned long dwEvents, DeviceEventCallback pfnEvent, unsigned long dwUser);
    int Unsubscribe(unsigned long dwEvents);
    bool Close() override;

    /// eLoginStatus.
    int Status() const;
    /// Whether each of the device's alarm inputs or outputs (eEventAlarmInput, eEventAlarmOutput) is active. Asks the
    /// device where no subscription tells.
    int ContactStates(eDeviceEvent eWhich, std::vector<bool>& abActive);

private:
    void EndSubscription();

    CLogin& m_tLogin;
    std::mutex m_tMutex; ///< of the subscription
    const std::shared_ptr<CEventFlow> m_pFlow;
    std::shared_ptr<onvif::CWatch> m_pWatch;
    std::shared_ptr<onvif::CSubscription> m_pSubscription; ///< null: nobody listens
};

/// The numbers of what a device has. Asks the device; what it doesn't tell is empty.
tagPlaces PlacesOf(CLogin& tLogin);
} // namespace onvifclient
