#pragma once

#include "plugins/common/Handles.h"
#include "plugins/device/Device.h"

#include <memory>

namespace device
{
/// Whatever an application holds a handle of.
class CObject
{
public:
    /// pSession: the login that it was opened under.
    CObject(std::shared_ptr<CDevice> pDevice, std::shared_ptr<CSession> pSession)
        : m_pDevice(std::move(pDevice)), m_pSession(std::move(pSession))
    {
    }
    virtual ~CObject() = default;

    /// Ends it and its callbacks; comes once. False: one that began before is still running, and is the last.
    virtual bool Close() = 0;

    CDevice& Device() const { return *m_pDevice; }
    std::shared_ptr<CDevice> const& DevicePointer() const { return m_pDevice; }
    CSession& Session() const { return *m_pSession; }
    std::shared_ptr<CSession> const& SessionPointer() const { return m_pSession; }

private:
    std::shared_ptr<CDevice> m_pDevice;
    std::shared_ptr<CSession> m_pSession;
};

using CHandles = plugin::CHandles<CObject>;
} // namespace device
