#pragma once

#include "onvif/Client.h"
#include "plugins/common/Callback.h"
#include "plugins/common/Handles.h"
#include "protocol/PluginInterface.h"
#include "protocol/Record.h"
#include "rtsp/Stream.h"

#include <atomic>
#include <memory>
#include <string>

class IProtocol;

namespace onvifclient
{
using plugin::CCallback;

class CLogin;

/// Whatever an application holds a handle of.
class CObject
{
public:
    /// pLogin: what it was opened under; it stays alive as long as this. Null: a login itself.
    explicit CObject(std::shared_ptr<CLogin> pLogin) : m_pLogin(std::move(pLogin)) {}
    virtual ~CObject() = default;
    CObject(CObject const&) = delete;
    CObject& operator=(CObject const&) = delete;

    /// Ends it and its callbacks; comes once. False: one that began before is still running, and is the last.
    virtual bool Close() = 0;

    std::shared_ptr<CLogin> const& LoginPointer() const { return m_pLogin; }
    CLogin& Login() const { return *m_pLogin; }

private:
    const std::shared_ptr<CLogin> m_pLogin;
};

/// What the plug-in has as a whole.
struct tagFace
{
    std::atomic<bool> bStarted{false};
    plugin::CHandles<CObject> tHandles;
    CCallback<DeleteUserForceCallback> tForcedOff;
    CCallback<DeviceProbeCallback> tProbe;
    std::atomic<PluginLogCallback> pfnLog{nullptr};
    std::atomic<IProtocol*> pProtocols{nullptr};
    std::atomic<bool> bCheckCertificates{false};
};
tagFace& Face();

/// What speaks with all devices; it is there as long as the process, and answers eResultNotStarted after Stop.
onvif::CHttp& Http();
/// What plays recordings, and whose threads call the application; null after Stop. Throws when no thread can be had.
std::shared_ptr<rtsp::CEngine> Engine();

/// A line for whoever wants to read it; dwLevel as in syslog. Never with a secret.
void Log(unsigned long dwLevel, std::string const& strText);

/// fnDo with what a handle names.
template <class Object, class F>
int With(void* hObject, F fnDo)
{
    const auto pObject = Face().tHandles.Find<Object>(hObject);
    return pObject ? static_cast<int>(fnDo(*pObject)) : int{eResultBadHandle};
}

/// A result of CCallback's as a code.
inline int Ended(bool bEnded)
{
    return bEnded ? int{eResultOk} : int{eResultStillRunning};
}

/// Closes what one of these classes has under the handle.
template <class... Objects>
int CloseHandle(void* hObject)
{
    std::shared_ptr<CObject> pObject;
    (void)((pObject = Face().tHandles.Take<Objects>(hObject)) || ...);
    return pObject ? Ended(pObject->Close()) : int{eResultBadHandle};
}
} // namespace onvifclient
