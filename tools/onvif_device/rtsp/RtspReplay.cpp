// Recordings with the replay extension: each packet says when it was recorded.

#include "plugins/device/Device.h"
#include "tools/onvif_device/rtsp/RtspMount.h"
#include "tools/onvif_device/rtsp/RtspReplaySource.h"

#include <string>

namespace onvif_device
{
namespace
{
// Adds a track to a media's element: its source, and what makes packets of it.
bool AddTrack(GstElement* pElement, std::unique_ptr<CReplayTrack> pTrack, std::string const& strPayloader, int nTrack)
{
    const std::string strLaunch = strPayloader + " ! rtponviftimestamp name=stamp ntp-offset=0 set-e-bit=true "
                                                 "set-t-bit=true drop-out-of-segment=false";
    GstElement* const pPay = gst_parse_bin_from_description(strLaunch.c_str(), TRUE, nullptr);
    if (!pPay)
    {
        return false;
    }
    gst_object_set_name(GST_OBJECT(pPay), ("pay" + std::to_string(nTrack)).c_str());
    GstElement* const pSource = MakeReplaySource(std::move(pTrack));
    gst_bin_add_many(GST_BIN(pElement), pSource, pPay, nullptr);
    return gst_element_link(pSource, pPay);
}

class CReplayMount final : public CRtspMount
{
public:
    CReplayMount(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel)
        : m_pDevice(std::move(pDevice)), m_dwChannel(dwChannel)
    {
    }

    GstElement* MakeElement(GstRTSPMediaFactory*, GstRTSPUrl const*) override
    {
        device::tagRecordingQuestion tQuestion;
        tQuestion.ullChannels = uint64_t{1} << m_dwChannel;
        const auto atRecordings = m_pDevice->Recordings(tQuestion);
        const device::CRecordedFrames tFrames(atRecordings, 0, 0, true, false);
        if (tFrames.IsEmpty() || !m_pDevice->IsUp())
        {
            return nullptr;
        }
        const uint32_t dwVideo = tFrames.Clips().front()->Codec();
        const uint32_t dwAudio = tFrames.AudioCodec();
        GstElement* pElement = gst_bin_new(nullptr);
        bool bMade = AddTrack(pElement, std::make_unique<CReplayTrack>(m_pDevice, m_dwChannel, true, dwVideo),
                              dwVideo == eCodecH264 ? "rtph264pay pt=96" : "rtph265pay pt=96", 0);
        if (dwAudio != 0)
        {
            bMade = bMade && AddTrack(pElement, std::make_unique<CReplayTrack>(m_pDevice, m_dwChannel, false, dwAudio),
                                      dwAudio == eCodecG711A ? "rtppcmapay pt=8" : "rtppcmupay pt=0", 1);
        }
        if (!bMade)
        {
            gst_clear_object(&pElement);
        }
        return pElement;
    }

    void Configure(GstRTSPMedia*, GstElement*) override {}

private:
    const std::shared_ptr<device::CDevice> m_pDevice;
    const uint32_t m_dwChannel;
};
} // namespace

std::shared_ptr<CRtspMount> ReplayMount(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel)
{
    return std::make_shared<CReplayMount>(std::move(pDevice), dwChannel);
}
} // namespace onvif_device
