#pragma once

#include <cstdint>
#include <gst/rtsp-server/rtsp-server.h>
#include <memory>

namespace device
{
class CDevice;
}

namespace onvif_device
{
/// One address of an RTSP server. Every client that asks for it gets a media of its own.
class CRtspMount
{
public:
    virtual ~CRtspMount() = default;
    /// Called for each client: what makes its packets, with payloaders pay0, pay1. pFactory makes pipelines of texts,
    /// with the back channel. The caller's; null: there is nothing to be had now, and the client is refused.
    virtual GstElement* MakeElement(GstRTSPMediaFactory* pFactory, GstRTSPUrl const* pUrl) = 0;
    /// The element is part of a media now, which isn't prepared yet.
    virtual void Configure(GstRTSPMedia* pMedia, GstElement* pElement) = 0;
    /// What takes in sound; null: there is no back channel.
    virtual char const* BackChannel() const { return nullptr; }
    /// See IRtspSide.
    virtual void ForceKeyFrame() {}
};

/// A live stream of a channel, with the back channel to its loudspeaker.
std::shared_ptr<CRtspMount> LiveMount(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel,
                                      uint32_t dwStreamKind);
/// All that a channel has recorded, with the replay extension.
std::shared_ptr<CRtspMount> ReplayMount(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel);

/// GStreamer's view of a mount. It keeps the mount, and is the caller's.
GstRTSPMediaFactory* MakeFactory(std::shared_ptr<CRtspMount> pMount);
/// How a factory makes an element of its text.
GstElement* ElementOfText(GstRTSPMediaFactory* pFactory, GstRTSPUrl const* pUrl, char const* szLaunch);

/// Nanoseconds since 1900, in which RTP, RTSP's absolute ranges and our pipelines count.
constexpr int64_t g_llNtpUs = 2208988800 * int64_t{1000000};
constexpr GstClockTime NtpNs(int64_t llTimeUs)
{
    return static_cast<GstClockTime>(llTimeUs + g_llNtpUs) * 1000;
}
constexpr int64_t TimeUs(GstClockTime tNtp)
{
    return static_cast<int64_t>(tNtp / 1000) - g_llNtpUs;
}
} // namespace onvif_device
