#include "rtsp/Stream.h"

#include "rtsp/Life.h"

#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr std::size_t g_nMostAudio = 1400; // a packet of it fits a datagram
constexpr auto g_tLastThreads = 200ms;     // for threads to end, when their streams have ended
} // namespace

CStream::CStream(std::shared_ptr<CLife> pLife) : m_pLife(std::move(pLife)) {}

CStream::~CStream()
{
    Close();
}

int CStream::SetFrameCallback(StreamMediaCallback pfnFrame, unsigned long dwUser)
{
    return m_pLife->Delivery().SetFrameCallback(pfnFrame, dwUser);
}

int CStream::SetListener(eListener eWhich, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    return m_pLife->Delivery().SetListener(eWhich, pfnEvent, dwUser);
}

void CStream::SetPaused(bool bPaused)
{
    m_pLife->SetPaused(bPaused);
}

void CStream::Play(tagPlayback const& tPlayback)
{
    m_pLife->Play(tPlayback);
}

tagRTSPPackageInfo CStream::Info() const
{
    return m_pLife->Delivery().Info();
}

std::optional<tagAudioFormat> CStream::BackFormat()
{
    return m_pLife->BackFormat();
}

int CStream::SendAudio(Bytes abyFrame, std::uint32_t nSamples, bool bFirst)
{
    if (abyFrame.empty() || abyFrame.size() > g_nMostAudio)
    {
        return eResultBadArgument;
    }
    return m_pLife->SendAudio(abyFrame, nSamples, bFirst) ? 0 : eResultConnectionLost;
}

void CStream::Close()
{
    Mute();
    m_pLife->RequestEnd();
}

int CStream::AwaitSilence(Clock::time_point tUntil)
{
    return m_pLife->Delivery().AwaitSilence(tUntil);
}

void CStream::Mute()
{
    m_pLife->Delivery().Mute();
}

CEngine::CEngine() : m_pCore(std::make_shared<CEngineCore>()) {}

CEngine::~CEngine()
{
    if (!m_bStopped)
    {
        Stop(Clock::now());
    }
}

std::unique_ptr<CStream> CEngine::Open(void* hStream, tagStreamOptions tOptions)
{
    auto pLife = std::make_shared<CLife>(m_pCore, hStream, std::move(tOptions));
    auto pStream = std::make_unique<CStream>(pLife);
    pLife->Begin();
    return pStream;
}

void CEngine::Stop(Clock::time_point tUntil)
{
    m_bStopped = true;
    m_pCore->AwaitEnds(tUntil - g_tLastThreads);
    m_pCore->tLoop.Stop(tUntil);
}

CLoop& CEngine::Loop() const
{
    return m_pCore->tLoop;
}

void CEngine::Freeze()
{
    m_pCore->tLoop.Freeze(Clock::now() + g_tLastThreads);
}
} // namespace rtsp
