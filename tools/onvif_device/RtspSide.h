#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace device
{
class CDevice;
}

namespace onvif_device
{
/// The RTSP servers of the devices, one for each, which stand as long as this does.
///
/// A path begins with "/" and holds nothing that an URL must escape. Any thread may call any function.
class IRtspSide
{
public:
    virtual ~IRtspSide() = default;
    /// Where the server of a device listens.
    virtual uint32_t Port(std::size_t nDevice) const = 0;
    /// A live stream; dwStreamKind: eStreamKind.
    virtual std::string StreamPath(std::size_t nDevice, uint32_t dwChannel, uint32_t dwStreamKind) const = 0;
    /// All that a channel has recorded, for the replay extension.
    virtual std::string ReplayPath(std::size_t nDevice, uint32_t dwChannel) const = 0;
    /// No connection is let in, and those that there are end: the device has gone down; until it is up again.
    virtual void SetUp(std::size_t nDevice, bool bUp) = 0;
    /// The next frame of this live stream is a key frame, for everybody who looks.
    virtual void ForceKeyFrame(std::size_t nDevice, uint32_t dwChannel, uint32_t dwStreamKind) = 0;
};

struct tagRtspOptions
{
    std::string strListen = "127.0.0.1"; ///< the address to listen at
    bool bLogin = true;                  ///< clients must authenticate, as one of the device's users
};

/// Starts a server for each device, on free ports. Throws std::runtime_error.
std::unique_ptr<IRtspSide> StartRtsp(std::vector<std::shared_ptr<device::CDevice>> const& apDevices,
                                     tagRtspOptions const& tOptions);
} // namespace onvif_device
