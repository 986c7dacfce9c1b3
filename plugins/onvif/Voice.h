#pragma once

#include "plugins/onvif/Delivery.h"
#include "plugins/onvif/Media.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace onvifclient
{
/// Talk with a device, by the back channel of a stream of its own.
class CVoice final : public CObject, public std::enable_shared_from_this<CVoice>
{
public:
    /// tPara: what is wanted.
    CVoice(std::shared_ptr<CLogin> pLogin, std::shared_ptr<rtsp::CEngine> pEngine, tagVoiceStreamPara const& tPara);

    /// Connects to strUrl and waits until it is known what the device takes, at most until tUntil; tPara is then what
    /// was agreed. eResultNotSupported: it has no back channel; eResultRefused: it takes another codec; and others.
    int Open(void* hVoice, rtsp::tagStreamOptions tOptions, onvif::Clock::time_point tUntil, tagVoiceStreamPara& tPara);
    bool Close() override;
    int SetCallback(StreamVoiceCallback pfnVoice, unsigned long dwUser);
    /// One packet. eResultBadArgument: not of the length that was agreed; eResultRefused: it is only for listening;
    /// eResultConnectionLost.
    int Send(tagBuffer const& tBuffer);

private:
    static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser);
    static int OnEvent(void* hStream, unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3,
                       unsigned long dwWord4, unsigned long dwUser);
    void Take(tagStreamMediaFrame const& tFrame);
    void TakeEvent(unsigned long dwEvent, unsigned long dwWord2);
    bool Is(eVoiceFlag eFlag) const { return (m_tPara.dwFlags & static_cast<uint32_t>(eFlag)) != 0; }
    int Agree(rtsp::tagAudioFormat const& tFormat);

    const std::shared_ptr<rtsp::CEngine> m_pEngine;
    const std::shared_ptr<CDelivery> m_pDelivery;
    tagVoiceStreamPara m_tPara; ///< from Open on what was agreed
    std::atomic<void*> m_hVoice{nullptr};
    CCallback<StreamVoiceCallback> m_tCallback;

    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::shared_ptr<rtsp::CStream> m_pStream;
    std::optional<rtsp::tagAudioFormat> m_tHeard; ///< what comes from the device
    std::optional<int> m_nFailed;                 ///< why the stream has ended, before anything was agreed
    bool m_bLive = false;
    onvif::Clock::time_point m_tSent{};
    int64_t m_llSentUs = 0; ///< on the time line of what was sent
};
} // namespace onvifclient
