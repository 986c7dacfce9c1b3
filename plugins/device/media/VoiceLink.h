#pragma once

#include "plugins/device/Sinks.h"
#include "plugins/device/media/Pump.h"

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace device
{
class CDevice;

/// A voice connection: what is said comes back g_llEchoUs later. One that is only for listening hears the device's
/// microphone. Any thread may call any function; none of them waits for the sink.
class CVoiceLink final : public CPumped
{
public:
    static constexpr int64_t g_llEchoUs = 100000;

    /// tPara is filled with what was agreed. eResultNoChannel: no such input or output; eResultBusy: somebody else
    /// talks to the device; eResultRefused: none of the codecs is known here; eResultBadArgument.
    static int Open(std::shared_ptr<CDevice> pDevice, tagVoiceStreamPara& tPara, std::shared_ptr<IVoiceSink> pSink,
                    std::shared_ptr<CVoiceLink>& pVoice);
    CVoiceLink(std::shared_ptr<CDevice> pDevice, tagVoiceStreamPara const& tPara, std::shared_ptr<IVoiceSink> pSink);

    /// One packet. eResultBadArgument: not of the length that was agreed; eResultRefused: it is only for listening;
    /// eResultConnectionLost: the device can't be reached.
    int Send(tagBuffer const& tBuffer);
    /// No voice comes any more.
    void Close();

    int64_t Run(int64_t llNowUs) override;

private:
    struct tagPacket
    {
        int64_t llAtUs;
        eVoiceStreamSource eSource;
        std::vector<unsigned char> abyData;
    };
    int64_t Listen(int64_t llNowUs, bool bUp);
    void Deliver(eVoiceStreamSource eSource, std::vector<unsigned char> const& abyData, int64_t llTimeUs);

    const std::shared_ptr<CDevice> m_pDevice;
    const tagVoiceStreamPara m_tPara;
    const std::shared_ptr<IVoiceSink> m_pSink;
    const int64_t m_llBeginUs;
    std::atomic<bool> m_bClosed{false};
    std::mutex m_tMutex;
    std::deque<tagPacket> m_atPackets; // by their time
    uint64_t m_ullHeard = 0;           // packets of the microphone
};
} // namespace device
