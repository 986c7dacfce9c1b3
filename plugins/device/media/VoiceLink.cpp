#include "plugins/device/media/VoiceLink.h"

#include "plugins/device/Device.h"
#include "plugins/device/media/Clips.h"

#include "protocol/interface/Results.h"

#include <algorithm>
#include <map>
#include <utility>

namespace device
{
namespace
{
constexpr uint32_t g_dwUsualPacketMs = 20;
constexpr uint32_t g_dwMaxPacketMs = 200;
constexpr uint32_t g_dwVoiceFlags = eVoiceListenOnly | eVoiceTalkOnly | eVoiceReportSent;
constexpr std::size_t g_nMaxPackets = 256; // on their way; more than so are thrown away

// Who talks to each device.
std::mutex g_tTalkersMutex;
std::map<CDevice const*, std::weak_ptr<CVoiceLink>>& Talkers()
{
    static std::map<CDevice const*, std::weak_ptr<CVoiceLink>> s_tTalkers;
    return s_tTalkers;
}

// What is agreed on a wish.
int Agree(CDevice const& tDevice, tagVoiceStreamPara& tPara)
{
    const bool bListen = (tPara.dwFlags & eVoiceListenOnly) != 0;
    if ((tPara.dwFlags & ~g_dwVoiceFlags) != 0 || (bListen && (tPara.dwFlags & eVoiceTalkOnly) != 0) ||
        tPara.dwPacketMs > g_dwMaxPacketMs)
    {
        return eResultBadArgument;
    }
    if (tPara.dwInput >= tDevice.Channels() || tPara.dwOutput >= tDevice.Channels())
    {
        return eResultNoChannel;
    }
    tPara.dwCodec = tPara.dwCodec ? tPara.dwCodec : static_cast<uint32_t>(eCodecG711A);
    tPara.dwSampleRate = tPara.dwSampleRate ? tPara.dwSampleRate : g_dwSampleRate;
    tPara.dwChannels = tPara.dwChannels ? tPara.dwChannels : 1;
    tPara.dwPacketMs = tPara.dwPacketMs ? tPara.dwPacketMs : g_dwUsualPacketMs;
    return (tPara.dwCodec == eCodecG711A || tPara.dwCodec == eCodecG711U) && tPara.dwSampleRate == g_dwSampleRate &&
                   tPara.dwChannels == 1
               ? static_cast<int>(eResultOk)
               : static_cast<int>(eResultRefused);
}

// Whether the device can be reached.
bool IsUp(CDevice& tDevice)
{
    tagStreamState tState;
    return tDevice.StreamState(0, 0, tState) == eResultOk && (tState.bUp || tState.tVideo.bEnabled == 0);
}
} // namespace

int CVoiceLink::Open(std::shared_ptr<CDevice> pDevice, tagVoiceStreamPara& tPara, std::shared_ptr<IVoiceSink> pSink,
                     std::shared_ptr<CVoiceLink>& pVoice)
{
    tagVoiceStreamPara tAgreed = tPara;
    if (const int nResult = Agree(*pDevice, tAgreed))
    {
        return nResult;
    }
    CDevice const* const pKey = pDevice.get();
    const auto pNew = std::make_shared<CVoiceLink>(std::move(pDevice), tAgreed, std::move(pSink));
    if ((tAgreed.dwFlags & eVoiceListenOnly) == 0)
    {
        const std::lock_guard tLock(g_tTalkersMutex);
        auto& tTalkers = Talkers();
        std::erase_if(tTalkers, [](auto const& t) { return t.second.expired(); });
        const auto it = tTalkers.find(pKey);
        const auto pOther = it == tTalkers.end() ? nullptr : it->second.lock();
        if (pOther && !pOther->m_bClosed)
        {
            return eResultBusy;
        }
        tTalkers[pKey] = pNew;
    }
    else
    {
        CClips::Instance(); // throws here rather than later
        CPump::Instance().Wake(pNew, CPump::NowUs());
    }
    tPara = tAgreed;
    pVoice = pNew;
    return eResultOk;
}

CVoiceLink::CVoiceLink(std::shared_ptr<CDevice> pDevice, tagVoiceStreamPara const& tPara,
                       std::shared_ptr<IVoiceSink> pSink)
    : m_pDevice(std::move(pDevice)), m_tPara(tPara), m_pSink(std::move(pSink)), m_llBeginUs(CPump::NowUs())
{
}

int CVoiceLink::Send(tagBuffer const& tBuffer)
{
    if (!tBuffer.pData || tBuffer.dwLength != m_tPara.dwSampleRate / 1000 * m_tPara.dwPacketMs)
    {
        return eResultBadArgument;
    }
    if ((m_tPara.dwFlags & eVoiceListenOnly) != 0)
    {
        return eResultRefused;
    }
    if (!IsUp(*m_pDevice))
    {
        return eResultConnectionLost;
    }
    const int64_t llNowUs = CPump::NowUs();
    const std::vector<unsigned char> abyData(tBuffer.pData, tBuffer.pData + tBuffer.dwLength);
    const auto fnAdd = [&](int64_t llAtUs, eVoiceStreamSource eSource)
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_atPackets.size() < g_nMaxPackets)
        {
            const auto it = std::ranges::upper_bound(m_atPackets, llAtUs, {}, &tagPacket::llAtUs);
            m_atPackets.insert(it, {llAtUs, eSource, abyData});
        }
    };
    if ((m_tPara.dwFlags & eVoiceReportSent) != 0)
    {
        fnAdd(llNowUs, eVoiceFromLocal);
    }
    if ((m_tPara.dwFlags & eVoiceTalkOnly) == 0)
    {
        fnAdd(llNowUs + g_llEchoUs, eVoiceFromDevice);
    }
    CPump::Instance().Wake(shared_from_this(),
                           (m_tPara.dwFlags & eVoiceReportSent) != 0 ? llNowUs : llNowUs + g_llEchoUs);
    return eResultOk;
}

void CVoiceLink::Close()
{
    m_bClosed = true;
}

int64_t CVoiceLink::Run(int64_t llNowUs)
{
    if (m_bClosed)
    {
        return g_llNotAgain;
    }
    const bool bUp = IsUp(*m_pDevice);
    if ((m_tPara.dwFlags & eVoiceListenOnly) != 0)
    {
        return Listen(llNowUs, bUp);
    }
    for (;;)
    {
        tagPacket tPacket{};
        {
            const std::lock_guard tLock(m_tMutex);
            if (m_atPackets.empty() || m_atPackets.front().llAtUs > llNowUs)
            {
                return m_atPackets.empty() ? g_llNotAgain : m_atPackets.front().llAtUs;
            }
            tPacket = std::move(m_atPackets.front());
            m_atPackets.pop_front();
        }
        if (bUp)
        {
            Deliver(tPacket.eSource, tPacket.abyData, tPacket.llAtUs - m_llBeginUs);
        }
    }
}

// The microphone: the clip's sound in packets of the length that was agreed.
int64_t CVoiceLink::Listen(int64_t llNowUs, bool bUp)
{
    const std::size_t nLength = m_tPara.dwSampleRate / 1000 * m_tPara.dwPacketMs;
    const int64_t llPacketUs = int64_t{m_tPara.dwPacketMs} * 1000;
    // One that is late doesn't catch up.
    const auto ullNow = static_cast<uint64_t>((llNowUs - m_llBeginUs) / llPacketUs);
    m_ullHeard = std::max(m_ullHeard, ullNow);
    if (bUp)
    {
        std::vector<unsigned char> abyPacket(nLength);
        for (std::size_t i = 0; i < nLength; ++i)
        {
            const uint64_t ullSample = m_ullHeard * nLength + i;
            const auto nInPacket = static_cast<std::size_t>(ullSample % g_dwPacketSamples);
            abyPacket[i] = CClips::Instance().Sound(m_tPara.dwCodec, ullSample / g_dwPacketSamples)[nInPacket];
        }
        Deliver(eVoiceFromDevice, abyPacket, static_cast<int64_t>(m_ullHeard) * llPacketUs);
    }
    return m_llBeginUs + static_cast<int64_t>(++m_ullHeard) * llPacketUs;
}

void CVoiceLink::Deliver(eVoiceStreamSource eSource, std::vector<unsigned char> const& abyData, int64_t llTimeUs)
{
    tagStreamVoiceFrame tFrame{};
    tFrame.dwCodec = m_tPara.dwCodec;
    tFrame.dwSampleRate = m_tPara.dwSampleRate;
    tFrame.dwChannels = m_tPara.dwChannels;
    tFrame.dwLength = static_cast<uint32_t>(abyData.size());
    tFrame.llPresentationTimeUs = llTimeUs;
    tFrame.pData = abyData.data();
    if (!m_bClosed)
    {
        m_pSink->OnVoice(eSource, tFrame);
    }
}
} // namespace device
