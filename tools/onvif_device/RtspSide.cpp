#include "tools/onvif_device/RtspSide.h"

#include <string>

namespace onvif_device
{
namespace
{
// Addresses of streams that nobody serves yet.
class CNoRtsp final : public IRtspSide
{
public:
    uint32_t Port(std::size_t) const override { return 554; }
    std::string StreamPath(std::size_t, uint32_t dwChannel, uint32_t dwStreamKind) const override
    {
        return "/live/" + std::to_string(dwChannel) + '/' + std::to_string(dwStreamKind);
    }
    std::string ReplayPath(std::size_t, uint32_t dwChannel) const override
    {
        return "/replay/" + std::to_string(dwChannel);
    }
    void ForceKeyFrame(std::size_t, uint32_t, uint32_t) override {}
    void SetUp(std::size_t, bool) override {}
};
} // namespace

std::unique_ptr<IRtspSide> StartRtsp(std::vector<std::shared_ptr<device::CDevice>> const&, tagRtspOptions const&)
{
    return std::make_unique<CNoRtsp>();
}
} // namespace onvif_device
