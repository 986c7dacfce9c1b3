#pragma once

#include "protocol/interface/Events.h"
#include "protocol/interface/Login.h"
#include "protocol/interface/Results.h"

#include <atomic>
#include <memory>
#include <string>

namespace device
{
/// Who asks, and from where.
struct tagCaller
{
    std::string strUser;
    uint32_t dwLevel = eUserAdministrator; ///< eUserLevel
    uint32_t dwTimeoutMs = 5000;           ///< most that a call may take
};

/// Something happened to a device.
struct tagDeviceEvent
{
    eDeviceEvent eEvent{};
    uint32_t dwWord2 = 0;
    uint32_t dwWord3 = 0;
    uint32_t dwTime = 0;                           ///< seconds since 1970 UTC on the device's clock
    std::shared_ptr<tagEventDetail const> pDetail; ///< eEventOther: its words
};

/// A login as its device knows it. Its owner derives from it to hear what happens.
class CSession
{
public:
    explicit CSession(tagCaller tCaller) : m_tCaller(std::move(tCaller)), m_dwLevel(m_tCaller.dwLevel) {}
    virtual ~CSession() = default;

    /// Comes on the delivery thread, one after the other, with no lock held.
    virtual void OnEvent(tagDeviceEvent const& tEvent) = 0;
    /// The device has forced the user off. As OnEvent; none comes after it.
    virtual void OnForcedOff() = 0;

    tagCaller const& Caller() const { return m_tCaller; }
    uint32_t Level() const { return m_dwLevel; }
    void SetLevel(uint32_t dwLevel) { m_dwLevel = dwLevel; }
    /// Its owner has closed it: calls that wait for an answer end.
    bool Closed() const { return m_bClosed; }
    void Close() { m_bClosed = true; }
    /// The device has ended it.
    bool Ended() const { return m_bEnded; }
    void End() { m_bEnded = true; }

private:
    tagCaller m_tCaller;
    std::atomic<uint32_t> m_dwLevel;
    std::atomic<bool> m_bClosed{false};
    std::atomic<bool> m_bEnded{false};
};
} // namespace device
