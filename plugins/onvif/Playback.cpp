#include "plugins/onvif/Playback.h"

#include "protocol/interface/Live.h"
#include "protocol/interface/Playback.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace onvifclient
{
namespace
{
constexpr uint32_t g_dwMinSpeed = eSpeedNormal / 8;
constexpr uint32_t g_dwMaxSpeed = eSpeedNormal * 16;
} // namespace

CPlayback::CPlayback(std::shared_ptr<CLogin> pLogin, std::shared_ptr<rtsp::CEngine> pEngine, uint32_t dwChannel,
                     std::vector<tagStretch> atStretches, uint32_t dwFlags)
    : CMedia(std::move(pLogin)), m_pEngine(std::move(pEngine)), m_pDelivery(std::make_shared<CDelivery>(m_pEngine)),
      m_dwChannel(dwChannel), m_atStretches(std::move(atStretches)), m_dwFlags(dwFlags),
      m_pGroup(std::make_shared<tagSyncGroup>()), m_bPaused((dwFlags & static_cast<uint32_t>(eHistoryPaused)) != 0),
      m_llLastUs(m_atStretches.front().llStartUs), m_llAfterUs(g_llNothingYet)
{
}

void CPlayback::Begin(void* hStream)
{
    m_hStream = hStream;
    m_pGroup->apMembers.push_back(weak_from_this());
}

bool CPlayback::Close()
{
    Leave();
    std::unique_ptr<rtsp::CStream> pStream;
    {
        const std::lock_guard tLock(m_tMutex);
        m_bClosed = true;
        TakePart();
        ++m_dwRun;
        pStream = std::move(m_pStream);
        m_atHeld.clear();
    }
    m_pDelivery->Close();
    Http().End(m_pWaits, eResultBadHandle);
    pStream.reset();
    return m_tFrames.Close();
}

int CPlayback::SetCallback(StreamMediaCallback pfnFrame, unsigned long dwUser)
{
    const bool bEnded = m_tFrames.Set(pfnFrame, dwUser);
    std::unique_ptr<rtsp::CStream> pStream;
    const std::lock_guard tLock(m_tMutex);
    m_bWanted = pfnFrame != nullptr && !m_bClosed;
    TakePart();
    if (m_bWanted)
    {
        GoOn();
    }
    else
    {
        pStream = std::move(m_pStream);
        Shut();
    }
    return Ended(bEnded);
}

int64_t CPlayback::PositionUs() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_llLastUs;
}

// --- the stream ------------------------------------------------------------------------------------------------------

// Into which stretch a time falls; between two of them it becomes the begin of the later one (backwards: the end of the
// earlier one). False: there is none any more.
bool CPlayback::FindStretch(int64_t& llTimeUs)
{
    const auto nCount = m_atStretches.size();
    for (std::size_t n = 0; n < nCount; ++n)
    {
        const std::size_t i = m_dScale < 0 ? nCount - 1 - n : n;
        tagStretch const& t = m_atStretches[i];
        if (m_dScale < 0 ? llTimeUs >= t.llStartUs : llTimeUs < t.llEndUs || t.bGrows)
        {
            m_iStretch = i;
            llTimeUs = m_dScale < 0 ? std::min(llTimeUs, t.llEndUs) : std::max(llTimeUs, t.llStartUs);
            return true;
        }
    }
    return false;
}

rtsp::tagPlayback CPlayback::PlaybackFrom(int64_t llFromUs) const
{
    tagStretch const& t = m_atStretches[m_iStretch];
    rtsp::tagPlayback tPlayback;
    tPlayback.dScale = m_dScale;
    tPlayback.bAsFastAsPossible = m_bPaused;
    tPlayback.tRange.emplace();
    tPlayback.tRange->bClock = true;
    tPlayback.tRange->llBeginUs = llFromUs;
    if (m_dScale < 0)
    {
        tPlayback.tRange->llEndUs = t.llStartUs;
    }
    else if (!t.bGrows)
    {
        tPlayback.tRange->llEndUs = t.llEndUs;
    }
    return tPlayback;
}

void CPlayback::Shut()
{
    ++m_dwRun;
    m_pStream.reset();
    m_atHeld.clear();
    m_nHeld = 0;
    m_llHeardUs = m_llLastUs;
    m_bStretchEnded = false;
    m_tWake.reset();
    m_pGroup->tClock.Forget(this);
}

// Nothing more comes; who is in step doesn't wait for it.
void CPlayback::Finish()
{
    m_bEnded = true;
    TakePart();
    m_pDelivery->Add([pSelf = shared_from_this()] { pSelf->SendEnd(); });
}

// While it is paused, frames for steps come as fast as they can.
void CPlayback::Open()
{
    Shut();
    int64_t llFromUs = m_llLastUs;
    if (!FindStretch(llFromUs))
    {
        Finish();
        return;
    }
    rtsp::tagStreamOptions tOptions = m_atStretches[m_iStretch].tOptions;
    tOptions.tPlayback = PlaybackFrom(llFromUs);
    m_pStream = m_pEngine->Open(m_hStream.load(), std::move(tOptions));
    m_pStream->SetListener(rtsp::eListener::EventCB, &CPlayback::OnEvent, m_dwRun);
    m_pStream->SetFrameCallback(&CPlayback::OnFrame, m_dwRun);
}

void CPlayback::Unfinish()
{
    m_bEnded = false;
    TakePart();
}

// The clock waits for who has something to show, and to somebody.
void CPlayback::TakePart()
{
    if (m_bWanted && !m_bEnded && !m_bClosed)
    {
        m_pGroup->tClock.Join(this);
    }
    else
    {
        m_pGroup->tClock.Leave(this);
    }
}

// Frames are wanted.
void CPlayback::GoOn()
{
    const bool bWaits = m_bPaused ? m_nSteps == 0 : m_tWake.has_value();
    if (!m_bWanted || m_bEnded || m_bClosed || m_bGiving || bWaits)
    {
        return; // who gives a frame looks again
    }
    if (!m_atHeld.empty())
    {
        m_pDelivery->Add([pSelf = shared_from_this()] { pSelf->GiveHeld(); });
    }
    else if (m_bStretchEnded)
    {
        NextStretch();
    }
    else if (!m_pStream)
    {
        Open();
    }
}

// Another position, another speed: the device begins again with the key frame before. A session that only goes on
// would have to wait for the next one.
void CPlayback::Restart()
{
    Shut();
    GoOn();
}

// The device has nothing more of this stretch; the next one follows when all of it was given.
void CPlayback::EndStretch()
{
    m_bStretchEnded = true;
    ++m_dwRun;
    m_pStream.reset();
    GoOn();
}

// The recordings' next stretch, or the end.
void CPlayback::NextStretch()
{
    const bool bReverse = m_dScale < 0;
    const std::size_t iLast = bReverse ? 0 : m_atStretches.size() - 1;
    Shut();
    if (m_iStretch == iLast)
    {
        Finish();
        return;
    }
    tagStretch const& tNext = m_atStretches[bReverse ? m_iStretch - 1 : m_iStretch + 1];
    m_llLastUs = bReverse ? tNext.llEndUs : tNext.llStartUs;
    m_llAfterUs = g_llNothingYet;
    m_bNewTime = true;
    GoOn();
}

// --- steering --------------------------------------------------------------------------------------------------------

template <class F>
int CPlayback::ForAll(F fnDo)
{
    std::shared_ptr<tagSyncGroup> pGroup;
    {
        const std::lock_guard tLock(m_tMutex);
        pGroup = m_pGroup;
    }
    pGroup->tClock.Restart();
    for (auto const& pMember : pGroup->Members())
    {
        const std::lock_guard tLock(pMember->m_tMutex);
        fnDo(*pMember);
    }
    return eResultOk;
}

int CPlayback::Control(eTaskControl eControl)
{
    switch (eControl)
    {
    case eTaskPlay:
    case eTaskPause:
        return ForAll(
            [&](CPlayback& t)
            {
                const bool bPaused = eControl == eTaskPause;
                if (t.m_bPaused != bPaused)
                {
                    t.m_bPaused = bPaused;
                    t.m_nSteps = 0;
                    t.Restart();
                }
            });
    case eTaskStep:
        return ForAll(
            [](CPlayback& t)
            {
                if (!std::exchange(t.m_bPaused, true))
                {
                    t.Shut();
                }
                ++t.m_nSteps;
                t.GoOn();
            });
    default:
        return eResultBadArgument;
    }
}

void CPlayback::SetScale(double dScale)
{
    if ((dScale < 0) != (m_dScale < 0))
    {
        m_llAfterUs = g_llNothingYet;
        m_bNewTime = true;
        Unfinish();
    }
    m_dScale = dScale;
    Restart();
}

// Goes on at another time.
void CPlayback::MoveTo(int64_t llTimeUs)
{
    m_llLastUs = llTimeUs;
    m_llAfterUs = g_llNothingYet;
    m_bNewTime = true;
    Unfinish();
    m_nFailures = 0;
    Restart();
}

int CPlayback::SetSpeed(uint32_t dwSpeed)
{
    const bool bReverse = (dwSpeed & static_cast<uint32_t>(eSpeedReverse)) != 0;
    const uint32_t dwThousandths = dwSpeed & ~static_cast<uint32_t>(eSpeedReverse);
    if (dwThousandths < g_dwMinSpeed || dwThousandths > g_dwMaxSpeed)
    {
        return eResultBadArgument;
    }
    const double dScale = (bReverse ? -1.0 : 1.0) * dwThousandths / int{eSpeedNormal};
    return ForAll([&](CPlayback& t) { t.SetScale(dScale); });
}

int CPlayback::Seek(int64_t llTimeUs)
{
    if (llTimeUs < 0)
    {
        return eResultBadArgument;
    }
    if (llTimeUs >= m_atStretches.back().llEndUs && !m_atStretches.back().bGrows)
    {
        return eResultNotFound;
    }
    return ForAll([&](CPlayback& t) { t.MoveTo(llTimeUs); });
}
} // namespace onvifclient
