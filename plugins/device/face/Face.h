#pragma once

#include "plugins/common/Callback.h"
#include "plugins/device/face/Handles.h"

#include "protocol/PluginInterface.h"
#include "protocol/Record.h"

#include <atomic>

class IProtocol;

namespace device
{
using plugin::CCallback;

/// What the plug-in has as a whole.
struct tagFace
{
    std::atomic<bool> bStarted{false};
    CHandles tHandles;
    CCallback<DeleteUserForceCallback> tForcedOff;
    CCallback<DeviceProbeCallback> tProbe;
    CCallback<DeviceRegisterCallback> tRegister;
    std::atomic<PluginLogCallback> pfnLog{nullptr};
    std::atomic<IProtocol*> pProtocols{nullptr};
};
tagFace& Face();

/// A line for whoever wants to read it; dwLevel as in syslog.
void Log(unsigned long dwLevel, std::string const& strText);

/// Asks a device for something: waits as its faults say, looks whether the user may do it, and calls fnAnswer.
template <class F>
int Ask(CObject const& tObject, uint32_t dwLevel, F fnAnswer)
{
    CSession& tSession = tObject.Session();
    if (const int nResult = tObject.Device().Admit(&tSession, tSession.Caller().dwTimeoutMs))
    {
        return nResult;
    }
    return tSession.Level() < dwLevel ? int{eResultWrongLogin} : fnAnswer();
}

/// The same for what a handle names: fnAnswer gets the object.
template <class Object, class F>
int AskWith(void* hObject, uint32_t dwLevel, F fnAnswer)
{
    const auto pObject = Face().tHandles.Find<Object>(hObject);
    return pObject ? Ask(*pObject, dwLevel, [&]() -> int { return fnAnswer(*pObject); })
                   : static_cast<int>(eResultBadHandle);
}

/// For what needs no device's answer.
template <class Object, class F>
int With(void* hObject, F fnDo)
{
    const auto pObject = Face().tHandles.Find<Object>(hObject);
    return pObject ? static_cast<int>(fnDo(*pObject)) : int{eResultBadHandle};
}

/// Who asks.
inline tagCaller CallerOf(CSession const& tSession)
{
    tagCaller tCaller = tSession.Caller();
    tCaller.dwLevel = tSession.Level();
    return tCaller;
}

/// Closes what one of these classes has under the handle.
template <class... Objects>
int CloseHandle(void* hObject)
{
    std::shared_ptr<CObject> pObject;
    (void)((pObject = Face().tHandles.Take<Objects>(hObject)) || ...);
    return !pObject ? int{eResultBadHandle} : pObject->Close() ? int{eResultOk} : int{eResultStillRunning};
}

/// A result of CCallback's as a code.
inline int Ended(bool bEnded)
{
    return bEnded ? int{eResultOk} : int{eResultStillRunning};
}
} // namespace device
