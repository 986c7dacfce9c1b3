// Talk.

#include "plugins/onvif/Voice.h"

#include "plugins/onvif/Live.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Playback.h"
#include "plugins/onvif/Profiles.h"
#include "plugins/onvif/StreamAddress.h"

#include <map>
#include <utility>
#include <vector>

namespace onvifclient
{
namespace
{
using namespace std::chrono_literals;

constexpr uint32_t g_dwUsualPacketMs = 20;
constexpr uint32_t g_dwMostPacketMs = 200;
constexpr uint32_t g_dwFlags = eVoiceListenOnly | eVoiceTalkOnly | eVoiceReportSent;
constexpr uint32_t g_dwAacSamples = 1024; // of an access unit
constexpr auto g_tLook = 20ms;            // how often it is looked whether the device's answer has come
constexpr auto g_tBreak = 200ms;          // more between two packets was silence

int ResultOf(unsigned long dwStatus)
{
    return dwStatus == 401 || dwStatus == 403   ? int{eResultWrongLogin}
           : dwStatus == 453 || dwStatus == 503 ? int{eResultBusy}
           : dwStatus == 404                    ? int{eResultNotFound}
                                                : int{eResultNotSupported};
}

// Who talks to each device.
std::mutex g_tTalkersMutex;
std::map<std::string, std::weak_ptr<CVoice>>& Talkers()
{
    static auto& s_tTalkers = *new std::map<std::string, std::weak_ptr<CVoice>>;
    return s_tTalkers;
}

// False: somebody else of this process does.
bool TakeTurn(std::string const& strDevice, std::shared_ptr<CVoice> const& pVoice)
{
    const std::lock_guard tLock(g_tTalkersMutex);
    auto& tTalkers = Talkers();
    std::erase_if(tTalkers, [](auto const& t) { return t.second.expired(); });
    return tTalkers.try_emplace(strDevice, pVoice).second;
}

// The address of the stream that talk goes along with.
int TalkAddress(CMedia& tParent, std::string& strUrl)
{
    if (auto const* const pLive = dynamic_cast<CLive const*>(&tParent))
    {
        return StreamAddress(tParent.Login(), pLive->Wish().bMedia2, pLive->Wish().strProfile, eRtspTcp, strUrl);
    }
    CProfiles& tProfiles = tParent.Login().Part<CProfiles>();
    auto const* const pPlayback = dynamic_cast<CPlayback const*>(&tParent);
    std::shared_ptr<tagChannel const> pChannel;
    const int nResult = tProfiles.Channel(pPlayback ? pPlayback->Channel() : 0, pChannel);
    return nResult ? nResult
                   : StreamAddress(tParent.Login(), tProfiles.IsMedia2(), pChannel->atProfiles.front().strToken,
                                   eRtspTcp, strUrl);
}
} // namespace

CVoice::CVoice(std::shared_ptr<CLogin> pLogin, std::shared_ptr<rtsp::CEngine> pEngine, tagVoiceStreamPara const& tPara)
    : CObject(std::move(pLogin)), m_pEngine(std::move(pEngine)), m_pDelivery(std::make_shared<CDelivery>(m_pEngine)),
      m_tPara(tPara)
{
}

bool CVoice::Close()
{
    std::shared_ptr<rtsp::CStream> pStream;
    {
        const std::lock_guard tLock(m_tMutex);
        pStream = std::move(m_pStream);
        m_nFailed = eResultBadHandle;
        m_tChanged.notify_all();
    }
    if (pStream)
    {
        pStream->Close();
    }
    {
        const std::lock_guard tLock(g_tTalkersMutex);
        std::erase_if(Talkers(), [this](auto const& t) { return t.second.expired() || t.second.lock().get() == this; });
    }
    m_pDelivery->Close();
    return m_tCallback.Close();
}

int CVoice::SetCallback(StreamVoiceCallback pfnVoice, unsigned long dwUser)
{
    return Ended(m_tCallback.Set(pfnVoice, dwUser));
}

// What both sides can do.
int CVoice::Agree(rtsp::tagAudioFormat const& tFormat)
{
    if ((m_tPara.dwCodec != 0 && m_tPara.dwCodec != static_cast<uint32_t>(tFormat.eCodec)) ||
        (m_tPara.dwSampleRate != 0 && m_tPara.dwSampleRate != tFormat.dwSampleRate) ||
        (m_tPara.dwChannels > 1 && m_tPara.dwChannels != tFormat.dwChannels))
    {
        return eResultRefused;
    }
    m_tPara.dwCodec = static_cast<uint32_t>(tFormat.eCodec);
    m_tPara.dwSampleRate = tFormat.dwSampleRate;
    m_tPara.dwChannels = std::max(tFormat.dwChannels, 1U);
    m_tPara.dwPacketMs = tFormat.eCodec == eCodecAAC ? g_dwAacSamples * 1000 / std::max(tFormat.dwSampleRate, 1U)
                         : m_tPara.dwPacketMs        ? m_tPara.dwPacketMs
                                                     : g_dwUsualPacketMs;
    return eResultOk;
}

int CVoice::Open(void* hVoice, rtsp::tagStreamOptions tOptions, onvif::Clock::time_point tUntil,
                 tagVoiceStreamPara& tPara)
{
    m_hVoice = hVoice;
    tOptions.bBackChannel = !Is(eVoiceListenOnly);
    std::shared_ptr<rtsp::CStream> pStream = m_pEngine->Open(hVoice, std::move(tOptions));
    {
        const std::lock_guard tLock(m_tMutex);
        m_pStream = pStream;
    }
    pStream->SetListener(rtsp::eListener::EventCB, &CVoice::OnEvent, 0);
    pStream->SetFrameCallback(&CVoice::OnFrame, 0);
    std::unique_lock tLock(m_tMutex);
    for (;;)
    {
        auto tFormat = m_tHeard;
        if (!Is(eVoiceListenOnly))
        {
            tLock.unlock();
            tFormat = pStream->BackFormat();
            tLock.lock();
        }
        if (tFormat)
        {
            const int nResult = Agree(*tFormat);
            tPara = m_tPara;
            return nResult;
        }
        if (m_nFailed || onvif::Clock::now() >= tUntil)
        {
            return m_nFailed.value_or(eResultTimeOut);
        }
        if (m_bLive && !Is(eVoiceListenOnly))
        {
            return eResultNotSupported; // the stream runs, and has no back channel
        }
        m_tChanged.wait_for(tLock, g_tLook);
    }
}

int CVoice::OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long)
{
    if (const auto pSelf = Face().tHandles.Find<CVoice>(hStream))
    {
        pSelf->Take(*ptFrame);
    }
    return 0;
}

void CVoice::Take(tagStreamMediaFrame const& tFrame)
{
    if (tFrame.dwMediaType != eMediaAudio || Is(eVoiceTalkOnly))
    {
        return;
    }
    {
        const std::lock_guard tLock(m_tMutex);
        m_tHeard = {static_cast<eMediaCodec>(tFrame.dwCodec), tFrame.dwSampleRate, tFrame.dwChannels};
        m_tChanged.notify_all();
    }
    const tagStreamVoiceFrame t{tFrame.dwCodec,  tFrame.dwSampleRate,         tFrame.dwChannels,
                                tFrame.dwLength, tFrame.llPresentationTimeUs, tFrame.pData};
    m_tCallback.Call(m_hVoice.load(), eVoiceFromDevice, &t);
}

int CVoice::OnEvent(void* hStream, unsigned long dwEvent, unsigned long dwWord2, unsigned long, unsigned long,
                    unsigned long)
{
    if (const auto pSelf = Face().tHandles.Find<CVoice>(hStream))
    {
        pSelf->TakeEvent(dwEvent, dwWord2);
    }
    return 0;
}

// Once it runs, a stream that breaks off comes back by itself.
void CVoice::TakeEvent(unsigned long dwEvent, unsigned long dwWord2)
{
    const std::lock_guard tLock(m_tMutex);
    m_bLive = m_bLive || dwEvent == eEventLive;
    if (dwEvent == eEventRefused || dwEvent == eEventLost)
    {
        m_nFailed = dwEvent == eEventRefused ? ResultOf(dwWord2) : int{eResultConnectionLost};
    }
    m_tChanged.notify_all();
}

int CVoice::Send(tagBuffer const& tBuffer)
{
    const bool bSamples = m_tPara.dwCodec == eCodecG711A || m_tPara.dwCodec == eCodecG711U;
    const uint32_t dwSamples =
        m_tPara.dwCodec == eCodecAAC ? g_dwAacSamples : m_tPara.dwSampleRate * m_tPara.dwPacketMs / 1000;
    if (Is(eVoiceListenOnly))
    {
        return eResultRefused;
    }
    if (!tBuffer.pData || tBuffer.dwLength == 0 || (bSamples && tBuffer.dwLength != dwSamples * m_tPara.dwChannels))
    {
        return eResultBadArgument;
    }
    std::shared_ptr<rtsp::CStream> pStream;
    bool bFirst = false;
    int64_t llTimeUs = 0;
    {
        const std::lock_guard tLock(m_tMutex);
        pStream = m_pStream;
        const auto tNow = onvif::Clock::now();
        bFirst = tNow - std::exchange(m_tSent, tNow) > g_tBreak;
        llTimeUs = m_llSentUs;
        m_llSentUs += int64_t{dwSamples} * 1000000 / m_tPara.dwSampleRate;
    }
    const int nResult = pStream ? pStream->SendAudio({tBuffer.pData, tBuffer.dwLength}, dwSamples, bFirst)
                                : static_cast<int>(eResultConnectionLost);
    if (nResult == eResultOk && Is(eVoiceReportSent))
    {
        m_pDelivery->Add(
            [pSelf = shared_from_this(), llTimeUs,
             abyData = std::vector<unsigned char>(tBuffer.pData, tBuffer.pData + tBuffer.dwLength)]
            {
                const tagStreamVoiceFrame t{pSelf->m_tPara.dwCodec,
                                            pSelf->m_tPara.dwSampleRate,
                                            pSelf->m_tPara.dwChannels,
                                            static_cast<uint32_t>(abyData.size()),
                                            llTimeUs,
                                            abyData.data()};
                pSelf->m_tCallback.Call(pSelf->m_hVoice.load(), eVoiceFromLocal, &t);
            });
    }
    return nResult;
}

// --- entry points ----------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::VoiceStreamConnect>, void** phVoice, void* hParent, tagVoiceStreamPara* ptPara)
{
    return With<CMedia>(
        hParent,
        [&](CMedia& tParent) -> int
        {
            tagVoiceStreamPara t{};
            if (!phVoice || Adapter_ProtocolSet::ReadRecord(t, ptPara) != eResultOk || (t.dwFlags & ~g_dwFlags) != 0 ||
                (t.dwFlags & (eVoiceListenOnly | eVoiceTalkOnly)) == (eVoiceListenOnly | eVoiceTalkOnly) ||
                t.dwPacketMs > g_dwMostPacketMs)
            {
                return eResultBadArgument;
            }
            if (t.dwOutput != 0 || t.dwInput != 0)
            {
                return eResultNoChannel; // a stream has one of each
            }
            CLogin& tLogin = tParent.Login();
            std::string strUrl;
            if (const int nResult = TalkAddress(tParent, strUrl))
            {
                return nResult;
            }
            const auto tUrl = rtsp::ParseUrl(strUrl);
            const auto pEngine = Engine();
            if (!tUrl || !pEngine)
            {
                return tUrl ? int{eResultNotStarted} : int{eResultRefused};
            }
            rtsp::tagStreamOptions tOptions;
            tOptions.tUrl = *tUrl;
            tOptions.strUser = tLogin.Client().User();
            tOptions.strPassword = tLogin.Client().Password();
            const auto pVoice = std::make_shared<CVoice>(tParent.LoginPointer(), pEngine, t);
            if ((t.dwFlags & eVoiceListenOnly) == 0 && !TakeTurn(tLogin.Client().Address().Text(), pVoice))
            {
                return eResultBusy;
            }
            void* const hVoice = Face().tHandles.Add(pVoice);
            const int nResult =
                pVoice->Open(hVoice, std::move(tOptions), onvif::Clock::now() + tLogin.Client().Limit(), t);
            if (nResult != eResultOk)
            {
                CloseHandle<CVoice>(hVoice);
                return nResult;
            }
            Adapter_ProtocolSet::WriteRecord(ptPara, t);
            *phVoice = hVoice;
            return eResultOk;
        });
}

int Serve(tagCall<&CClientProtocolBase::VoiceStreamDisconnect>, void* hVoice)
{
    return CloseHandle<CVoice>(hVoice);
}

int Serve(tagCall<&CClientProtocolBase::VoiceStreamSend>, void* hVoice, tagBuffer* ptBuffer)
{
    return With<CVoice>(hVoice,
                        [&](CVoice& t) { return ptBuffer ? t.Send(*ptBuffer) : static_cast<int>(eResultBadArgument); });
}

int Serve(tagCall<&CClientProtocolBase::VoiceStreamCB>, void* hVoice, StreamVoiceCallback pfnVoice,
          unsigned long dwUser)
{
    return With<CVoice>(hVoice, [&](CVoice& t) { return t.SetCallback(pfnVoice, dwUser); });
}
} // namespace onvifclient
