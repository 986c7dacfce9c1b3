#pragma once

#include "plugins/device/face/Face.h"

namespace device
{
/// A login's events on their way to the application.
class CLoginSession : public CSession
{
public:
    using CSession::CSession;

    void OnEvent(tagDeviceEvent const& tEvent) override;
    void OnForcedOff() override;

    std::atomic<void*> m_hLogin{nullptr};
    std::atomic<unsigned long> m_dwEvents{0}; // 0: all
    CCallback<DeviceEventCallback> m_tEvents;
};

/// A login.
class CLogin : public CObject
{
public:
    CLogin(std::shared_ptr<CDevice> pDevice, std::shared_ptr<CLoginSession> const& pSession)
        : CObject(std::move(pDevice), pSession), m_pLoginSession(pSession)
    {
    }
    bool Close() override
    {
        Device().Logout(Session());
        return m_pLoginSession->m_tEvents.Close();
    }
    CLoginSession& Events() const { return *m_pLoginSession; }

private:
    std::shared_ptr<CLoginSession> m_pLoginSession;
};
} // namespace device
