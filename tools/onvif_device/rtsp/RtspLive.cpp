// Live streams: the device's frames, as they come, into GStreamer's pipelines; and what is said on the back channel.

#include "plugins/device/Device.h"
#include "plugins/device/media/Clips.h"
#include "plugins/device/media/Grid.h"
#include "plugins/device/media/LiveStream.h"
#include "plugins/device/media/VoiceLink.h"
#include "tools/onvif_device/rtsp/RtspMount.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/rtsp-server/rtsp-onvif-server.h>
#include <mutex>
#include <string>
#include <vector>

namespace onvif_device
{
namespace
{
constexpr int64_t g_llClockSetUs = 500000; // a clock that is off by more was set
constexpr int64_t g_llEchoHoldUs = 500000; // so long after the last word the microphone is silent
constexpr std::size_t g_nVoicePacket = 160;

// Takes the device's frames, and the echo of what is said to it. They come on the device's thread.
class CLiveFeed final : public device::IFrameSink, public device::IVoiceSink
{
public:
    CLiveFeed(std::shared_ptr<device::CDevice> pDevice, uint32_t dwCodec, GstElement* pElement)
        : m_pDevice(std::move(pDevice)), m_dwCodec(dwCodec),
          m_pVideo(GST_APP_SRC(gst_bin_get_by_name(GST_BIN(pElement), "video"))),
          m_pAudio(GST_APP_SRC(gst_bin_get_by_name(GST_BIN(pElement), "audio")))
    {
    }
    ~CLiveFeed() override
    {
        gst_object_unref(m_pVideo);
        gst_clear_object(&m_pAudio);
    }
    CLiveFeed(CLiveFeed const&) = delete;
    CLiveFeed& operator=(CLiveFeed const&) = delete;

    void SetPlaying(bool bPlaying) { m_bPlaying = bPlaying; }
    GstAppSrc* Video() const { return m_pVideo; }
    GstAppSrc* Audio() const { return m_pAudio; }

    void OnFrame(tagStreamMediaFrame const& tFrame) override
    {
        if (!m_bPlaying)
        {
            return;
        }
        const bool bVideo = tFrame.dwMediaType == eMediaVideo;
        if (bVideo && (tFrame.dwCodec != m_dwCodec || IsClockSet(tFrame.llWallClockUs)))
        {
            End(); // clients come again, and get what there is then
            return;
        }
        if (bVideo || m_llEchoUs + g_llEchoHoldUs < tFrame.llWallClockUs)
        {
            Push(bVideo ? m_pVideo : m_pAudio, {tFrame.pData, tFrame.dwLength}, tFrame.llWallClockUs,
                 bVideo && (tFrame.dwFlags & eFrameKey) == 0);
        }
    }

    void OnVoice(eVoiceStreamSource, tagStreamVoiceFrame const& tFrame) override
    {
        if (m_bPlaying)
        {
            m_llEchoUs = m_pDevice->NowUs();
            Push(m_pAudio, {tFrame.pData, tFrame.dwLength}, m_llEchoUs, false);
        }
    }

    // A description needs a frame of each track before anybody plays.
    static void Prime(GstAppSrc* pSource, device::Bytes tData)
    {
        GstBuffer* const pBuffer = gst_buffer_new_memdup(tData.data(), tData.size());
        GST_BUFFER_PTS(pBuffer) = 0;
        gst_app_src_push_buffer(pSource, pBuffer);
    }

    void End()
    {
        m_bPlaying = false;
        gst_app_src_end_of_stream(m_pVideo);
        if (m_pAudio)
        {
            gst_app_src_end_of_stream(m_pAudio);
        }
    }

private:
    // The pipeline counts the device's time as it was in the beginning.
    bool IsClockSet(int64_t llTimeUs) const
    {
        GstClock* pClock = gst_element_get_clock(GST_ELEMENT(m_pVideo));
        const bool bSet = pClock && std::llabs(llTimeUs - TimeUs(gst_clock_get_time(pClock))) > g_llClockSetUs;
        gst_clear_object(&pClock);
        return bSet;
    }

    static void Push(GstAppSrc* pSource, device::Bytes tData, int64_t llTimeUs, bool bDelta)
    {
        const GstClockTime tBase = pSource ? gst_element_get_base_time(GST_ELEMENT(pSource)) : 0;
        if (tBase == 0 || NtpNs(llTimeUs) < tBase)
        {
            return; // not running yet
        }
        GstBuffer* const pBuffer = gst_buffer_new_memdup(tData.data(), tData.size());
        GST_BUFFER_PTS(pBuffer) = NtpNs(llTimeUs) - tBase;
        if (bDelta)
        {
            GST_BUFFER_FLAG_SET(pBuffer, GST_BUFFER_FLAG_DELTA_UNIT);
        }
        gst_app_src_push_buffer(pSource, pBuffer);
    }

    const std::shared_ptr<device::CDevice> m_pDevice;
    const uint32_t m_dwCodec;
    GstAppSrc* const m_pVideo;
    GstAppSrc* m_pAudio;
    std::atomic<bool> m_bPlaying{false};
    std::atomic<int64_t> m_llEchoUs{0};
};

// What belongs to one client's media, and ends with it.
class CLiveMedia
{
public:
    CLiveMedia(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel, device::tagStreamState const& tState,
               GstElement* pElement)
        : m_pDevice(std::move(pDevice)), m_dwChannel(dwChannel), m_tState(tState),
          m_pFeed(std::make_shared<CLiveFeed>(m_pDevice, tState.tVideo.dwCodec, pElement))
    {
    }
    ~CLiveMedia()
    {
        if (m_pStream)
        {
            m_pStream->Close();
        }
        if (m_pVoice)
        {
            m_pVoice->Close();
        }
    }
    CLiveMedia(CLiveMedia const&) = delete;
    CLiveMedia& operator=(CLiveMedia const&) = delete;

    bool Open(uint32_t dwStreamKind)
    {
        if (device::CLiveStream::Open(m_pDevice, m_dwChannel, dwStreamKind, m_pFeed, m_pStream) != eResultOk)
        {
            return false;
        }
        m_pStream->Start();
        return true;
    }

    void SetPlaying(bool bPlaying)
    {
        m_pFeed->SetPlaying(bPlaying);
        ForceKeyFrame();
    }
    void ForceKeyFrame() { m_pStream->ForceKeyFrame(); }
    CLiveFeed& Feed() { return *m_pFeed; }

    // One of the sources wants data: before anybody plays it gets what a description needs.
    void OnNeed(GstAppSrc* pSource)
    {
        if (pSource == m_pFeed->Audio())
        {
            if (!m_bAudioPrimed.exchange(true))
            {
                CLiveFeed::Prime(pSource, device::CClips::Instance().Sound(m_tState.tAudio.dwCodec, 0));
            }
        }
        else if (!m_bVideoPrimed.exchange(true))
        {
            tagConfigVideoEncoder const& t = m_tState.tVideo;
            std::vector<unsigned char> abyRoom;
            CLiveFeed::Prime(
                pSource,
                device::CClips::Instance()
                    .Find(t.dwCodec, t.dwWidth, t.dwHeight)
                    ->Frame(static_cast<uint64_t>(device::PictureAt(m_pDevice->NowUs(), t.dwFrameRate)), 0, abyRoom));
        }
    }

    // Sound of the client's, in pieces of any length.
    void OnVoice(GstBuffer* pBuffer)
    {
        GstMapInfo tMap;
        if (!gst_buffer_map(pBuffer, &tMap, GST_MAP_READ))
        {
            return;
        }
        m_abyVoice.insert(m_abyVoice.end(), tMap.data, tMap.data + tMap.size);
        gst_buffer_unmap(pBuffer, &tMap);
        if (!m_pVoice)
        {
            tagVoiceStreamPara tPara{};
            tPara.dwSize = sizeof tPara;
            tPara.dwCodec = eCodecG711A;
            tPara.dwOutput = tPara.dwInput = m_dwChannel;
            if (device::CVoiceLink::Open(m_pDevice, tPara, m_pFeed, m_pVoice) != eResultOk)
            {
                m_abyVoice.clear(); // somebody else talks
                return;
            }
        }
        std::size_t nDone = 0;
        for (; nDone + g_nVoicePacket <= m_abyVoice.size(); nDone += g_nVoicePacket)
        {
            m_pVoice->Send({m_abyVoice.data() + nDone, g_nVoicePacket});
        }
        m_abyVoice.erase(m_abyVoice.begin(), m_abyVoice.begin() + static_cast<std::ptrdiff_t>(nDone));
    }

private:
    const std::shared_ptr<device::CDevice> m_pDevice;
    const uint32_t m_dwChannel;
    const device::tagStreamState m_tState;
    const std::shared_ptr<CLiveFeed> m_pFeed;
    std::shared_ptr<device::CLiveStream> m_pStream;
    std::atomic<bool> m_bVideoPrimed{false};
    std::atomic<bool> m_bAudioPrimed{false};
    std::shared_ptr<device::CVoiceLink> m_pVoice; // this and the next belong to the back channel's thread
    std::vector<unsigned char> m_abyVoice;
};

using Media = std::shared_ptr<CLiveMedia>;
using WeakMedia = std::weak_ptr<CLiveMedia>; // for what the media itself keeps alive

template <class Pointer>
void Delete(void* p)
{
    delete static_cast<Pointer*>(p);
}

void OnNeedData(GstAppSrc* pSource, guint, gpointer pMedia)
{
    if (const Media p = static_cast<WeakMedia*>(pMedia)->lock())
    {
        p->OnNeed(pSource);
    }
}

GstFlowReturn OnBackChannel(GstAppSink* pSink, gpointer pMedia)
{
    GstSample* pSample = gst_app_sink_pull_sample(pSink);
    const Media p = static_cast<WeakMedia*>(pMedia)->lock();
    if (pSample && p)
    {
        p->OnVoice(gst_sample_get_buffer(pSample));
    }
    g_clear_pointer(&pSample, gst_sample_unref);
    return GST_FLOW_OK;
}

void OnNewState(GstRTSPMedia*, gint nState, gpointer pMedia)
{
    (*static_cast<Media*>(pMedia))->SetPlaying(nState == GST_STATE_PLAYING);
}

// Sender reports tell the device's time, which is the pipeline's.
void OnElement(GstBin*, GstElement* pElement, gpointer)
{
    GstElementFactory* const pFactory = gst_element_get_factory(pElement);
    if (pFactory && std::string(GST_OBJECT_NAME(pFactory)) == "rtpbin")
    {
        gst_util_set_object_arg(G_OBJECT(pElement), "ntp-time-source", "clock-time");
    }
}

void UseClock(GstRTSPMedia* pMedia, int64_t llNowUs)
{
    auto* const pClock = GST_CLOCK(
        g_object_new(GST_TYPE_SYSTEM_CLOCK, "name", "device", "clock-type", GST_CLOCK_TYPE_MONOTONIC, nullptr));
    gst_clock_set_calibration(pClock, gst_clock_get_internal_time(pClock), NtpNs(llNowUs), 1, 1);
    gst_rtsp_media_set_clock(pMedia, pClock);
    gst_object_unref(pClock);
}

class CLiveMount final : public CRtspMount
{
public:
    CLiveMount(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel, uint32_t dwStreamKind)
        : m_pDevice(std::move(pDevice)), m_dwChannel(dwChannel), m_dwStreamKind(dwStreamKind)
    {
    }

    GstElement* MakeElement(GstRTSPMediaFactory* pFactory, GstRTSPUrl const* pUrl) override
    {
        device::tagStreamState tState;
        if (m_pDevice->StreamState(m_dwChannel, m_dwStreamKind, tState) != eResultOk || !tState.bUp)
        {
            return nullptr;
        }
        const std::string strSource = "appsrc is-live=true format=time max-bytes=4000000 leaky-type=upstream ";
        const std::string strCodec = tState.tVideo.dwCodec == eCodecH264 ? "h264" : "h265";
        std::string strLaunch = "( " + strSource + "name=video caps=video/x-" + strCodec +
                                ",stream-format=byte-stream,alignment=au ! rtp" + strCodec + "pay name=pay0 pt=96 ";
        if (tState.tAudio.bEnabled != 0)
        {
            const bool bALaw = tState.tAudio.dwCodec == eCodecG711A;
            strLaunch += strSource + "name=audio caps=audio/x-" + (bALaw ? "alaw" : "mulaw") +
                         ",rate=8000,channels=1 ! " +
                         (bALaw ? "rtppcmapay name=pay1 pt=8 " : "rtppcmupay name=pay1 pt=0 ");
        }
        return ElementOfText(pFactory, pUrl, (strLaunch + ")").c_str());
    }

    char const* BackChannel() const override
    {
        return "( capsfilter name=depay_backchannel caps=\"application/x-rtp, media=audio, payload=8, clock-rate=8000, "
               "encoding-name=PCMA\" ! rtppcmadepay ! appsink name=back async=false sync=false )";
    }

    void Configure(GstRTSPMedia* pMedia, GstElement* pElement) override
    {
        device::tagStreamState tState;
        m_pDevice->StreamState(m_dwChannel, m_dwStreamKind, tState);
        auto* const ppMedia = new Media(std::make_shared<CLiveMedia>(m_pDevice, m_dwChannel, tState, pElement));
        g_object_set_data_full(G_OBJECT(pMedia), "tessaro-media", ppMedia, Delete<Media>);
        Media const& p = *ppMedia;
        GstElement* const pPipeline = GST_ELEMENT(gst_element_get_parent(pElement));
        g_signal_connect(pPipeline, "element-added", G_CALLBACK(OnElement), nullptr);
        gst_object_unref(pPipeline);
        UseClock(pMedia, m_pDevice->NowUs());
        GstAppSrcCallbacks tSource{};
        tSource.need_data = OnNeedData;
        for (GstAppSrc* const pSource : {p->Feed().Video(), p->Feed().Audio()})
        {
            if (pSource)
            {
                gst_app_src_set_callbacks(pSource, &tSource, new WeakMedia(p), Delete<WeakMedia>);
            }
        }
        if (GstElement* const pBack = gst_bin_get_by_name(GST_BIN(pElement), "back"))
        {
            GstAppSinkCallbacks tSink{};
            tSink.new_sample = OnBackChannel;
            gst_app_sink_set_callbacks(GST_APP_SINK(pBack), &tSink, new WeakMedia(p), Delete<WeakMedia>);
            gst_object_unref(pBack);
        }
        p->Open(m_dwStreamKind);
        g_signal_connect(pMedia, "new-state", G_CALLBACK(OnNewState), ppMedia);
        const std::lock_guard tLock(m_tMutex);
        std::erase_if(m_apMedia, [](auto const& t) { return t.expired(); });
        m_apMedia.push_back(p);
    }

    void ForceKeyFrame() override
    {
        const std::lock_guard tLock(m_tMutex);
        for (auto const& pWeak : m_apMedia)
        {
            if (const Media p = pWeak.lock())
            {
                p->ForceKeyFrame();
            }
        }
    }

private:
    const std::shared_ptr<device::CDevice> m_pDevice;
    const uint32_t m_dwChannel;
    const uint32_t m_dwStreamKind;
    std::mutex m_tMutex;
    std::vector<std::weak_ptr<CLiveMedia>> m_apMedia;
};
} // namespace

std::shared_ptr<CRtspMount> LiveMount(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel,
                                      uint32_t dwStreamKind)
{
    return std::make_shared<CLiveMount>(std::move(pDevice), dwChannel, dwStreamKind);
}
} // namespace onvif_device
