#pragma once

#include "onvif/Client.h"

#include "protocol/interface/Login.h"

#include <atomic>
#include <chrono>
#include <memory>

namespace onvif
{
/// Who hears how a login is. On the HTTP thread; none of these may block.
class IWatcher
{
public:
    /// The device doesn't answer any more; nResult: why. It is tried again until it does.
    virtual void OnLost(int nResult, std::chrono::milliseconds tNextTry) = 0;
    virtual void OnRestored(std::chrono::milliseconds tWasLost) = 0;
    /// The device refuses this user now. Nobody tries any more.
    virtual void OnEnded(int nResult) = 0;

protected:
    ~IWatcher() = default;
};

/// Whether a device that was logged in to still answers. Every call tells; when there is none, it asks by itself. A
/// device that is lost is asked with growing pauses, and once it is back its clock and services are read anew.
class CWatch : public std::enable_shared_from_this<CWatch>
{
public:
    /// Of a client that is logged in. Until the client is interrupted.
    CWatch(std::shared_ptr<CClient> pClient, std::shared_ptr<IWatcher> pWatcher);

    void Begin();
    bool IsAlive() const { return m_eStatus == eLoginAlive; }
    /// eLoginStatus.
    int Status() const { return m_eStatus; }
    /// On the HTTP thread: the device was heard to refuse this user, who is asked for once more.
    void Doubt();

private:
    static rtsp::CTask<> Beat(std::shared_ptr<CWatch> pSelf);
    static rtsp::CTask<> Check(std::shared_ptr<CWatch> pSelf, bool bDoubt);
    rtsp::CTask<int> Regain();
    void OnResult(int nResult); ///< any thread
    void Lose(int nResult, std::chrono::milliseconds tNextTry);

    const std::shared_ptr<CClient> m_pClient;
    const std::shared_ptr<CHttpGroup> m_pGroup; ///< ended: the login is
    const std::shared_ptr<IWatcher> m_pWatcher;
    std::atomic<int> m_eStatus;

    std::atomic<bool> m_bChecking{false};
    std::atomic<Clock::time_point> m_tHeard{}; ///< when it answered last
    Clock::time_point m_tLost{};               ///< the HTTP thread's
};
} // namespace onvif
