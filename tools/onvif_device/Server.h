#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace device
{
struct tagDeviceEvent;
}

namespace onvif_device
{
class CFace;

struct tagServerOptions
{
    std::string strListen = "127.0.0.1"; ///< the address to listen at
    uint32_t dwPort = 0;                 ///< 0: a free one
    std::string strCertificate;          ///< PEM of certificate and key, to serve https; empty: http
};

/// Serves one device by HTTP. While the device is down nobody listens at its port.
class CServer : public std::enable_shared_from_this<CServer>
{
public:
    /// Throws std::runtime_error.
    static std::shared_ptr<CServer> Start(std::shared_ptr<CFace> pFace, tagServerOptions tOptions);
    virtual ~CServer() = default;
    virtual uint32_t Port() const = 0;
    /// Nobody listens any more, for good.
    virtual void Stop() = 0;
    /// Requests that wait look again whether they have an answer. Any thread.
    virtual void Wake() = 0;
    /// What happened to the device; on the delivery thread.
    virtual void OnEvent(device::tagDeviceEvent const& tEvent) = 0;
    /// Users were forced off; on the delivery thread. By ONVIF nobody is logged in, so that everything ends that
    /// anybody has: connections, streams, subscriptions. For a second nobody listens.
    virtual void OnForcedOff() = 0;
};
} // namespace onvif_device
