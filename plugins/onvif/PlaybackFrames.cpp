// A playback's frames on their way to the application, and its ends.

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
using namespace std::chrono_literals;

constexpr std::size_t g_nMostHeld = std::size_t{4} << 20; // bytes of frames that wait
constexpr int64_t g_llMostUs = 1000000;                   // more between two frames is a gap
constexpr int64_t g_llMostKeysUs = 15000000;              // the same between two key frames
constexpr unsigned g_nFruitless = 2;                      // tries after which a replay without more frames has ended
constexpr std::chrono::seconds g_atPauses[] = {1s, 2s, 4s, 8s, 16s, 30s};
} // namespace

// --- frames ----------------------------------------------------------------------------------------------------------

// The handle names nothing any more once the playback is closed.
int CPlayback::OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    if (const auto pSelf = Face().tHandles.Find<CPlayback>(hStream))
    {
        pSelf->Take(*ptFrame, dwUser);
    }
    return 0;
}

int CPlayback::OnEvent(void* hStream, unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3,
                       unsigned long, unsigned long dwUser)
{
    const auto pSelf = Face().tHandles.Find<CPlayback>(hStream);
    auto tEnd = ReplayEnd(dwEvent, dwWord2, dwWord3);
    if (pSelf && (tEnd || dwEvent == eEventStalled))
    {
        pSelf->TakeEnd(tEnd.value_or(tagReplayEnd{false, eResultOk}), dwUser);
    }
    return 0;
}

// Whether a frame lies behind the end of what is to be played.
bool CPlayback::IsOver(tagStreamMediaFrame const& tFrame) const
{
    tagStretch const& t = m_atStretches[m_iStretch];
    const int64_t llTimeUs = tFrame.llWallClockUs;
    return llTimeUs != 0 && tFrame.dwMediaType == eMediaVideo &&
           (m_dScale < 0 ? llTimeUs < t.llStartUs : !t.bGrows && llTimeUs >= t.llEndUs);
}

bool CPlayback::IsWanted(tagStreamMediaFrame const& tFrame) const
{
    const bool bVideo = tFrame.dwMediaType == eMediaVideo;
    const bool bKeysOnly = m_dScale < 0 || (m_dwFlags & eHistoryKeyFramesOnly) != 0;
    const bool bNoAudio = bKeysOnly || m_bPaused || (m_dwFlags & eHistoryNoAudio) != 0; // a step is a picture
    const bool bKnown =
        m_llAfterUs != g_llNothingYet && tFrame.llWallClockUs != 0 && bVideo && tFrame.llWallClockUs <= m_llAfterUs;
    return bVideo ? !bKnown && (!bKeysOnly || (tFrame.dwFlags & eFrameKey) != 0)
                  : tFrame.dwMediaType == eMediaAudio && !bNoAudio;
}

// For the next step. When there are many, no more are fetched until they are used up.
void CPlayback::Hold(tagStreamMediaFrame const& tFrame)
{
    m_nHeld += tFrame.dwLength;
    tagHeld& t = m_atHeld.emplace_back();
    t.tFrame = tFrame;
    t.abyData.assign(tFrame.pData, tFrame.pData + tFrame.dwLength);
    t.abyConfig.assign(tFrame.pConfig, tFrame.pConfig + tFrame.dwConfigLength);
    if (m_nHeld > g_nMostHeld)
    {
        ++m_dwRun;
        m_pStream.reset();
    }
}

// Sequence and time line as the application sees them: frames that were left out leave no gap, and neither do gaps in a
// recording.
void CPlayback::Number(tagStreamMediaFrame& tFrame)
{
    const bool bVideo = tFrame.dwMediaType == eMediaVideo;
    tFrame.dwSequence = m_adwSequence[bVideo ? 0 : 1]++;
    tFrame.dwFlags &= m_dScale < 0 ? ~static_cast<uint32_t>(eFrameDiscontinuity) : ~0U; // each is a jump back
    if (const int64_t llTimeUs = tFrame.llWallClockUs; llTimeUs != 0)
    {
        const bool bFirst = m_llBaseUs == 0;
        const int64_t llMostUs = m_dScale < 0 || (m_dwFlags & eHistoryKeyFramesOnly) != 0 ? g_llMostKeysUs : g_llMostUs;
        if (std::exchange(m_bNewTime, false) || bFirst || std::abs(llTimeUs - m_llLastUs) > llMostUs)
        {
            tFrame.dwFlags = bFirst ? tFrame.dwFlags & ~static_cast<uint32_t>(eFrameDiscontinuity)
                                    : tFrame.dwFlags | static_cast<uint32_t>(eFrameDiscontinuity);
            m_llBaseUs = llTimeUs;
            m_llBasePresentationUs = bFirst ? 0 : m_llPresentationUs + g_llPictureUs;
        }
        tFrame.llPresentationTimeUs = m_llBasePresentationUs + std::abs(llTimeUs - m_llBaseUs);
        m_llPresentationUs = std::max(m_llPresentationUs, tFrame.llPresentationTimeUs);
        m_llLastUs = llTimeUs;
        m_llAfterUs = m_dScale < 0 ? g_llNothingYet : bVideo ? llTimeUs : m_llAfterUs;
    }
}

// Whether a frame is to be given now: while it is paused, as many pictures as steps were asked for.
bool CPlayback::TakesStep(tagStreamMediaFrame const& tFrame)
{
    const bool bTakes = !m_bPaused || m_nSteps != 0;
    m_nSteps -= bTakes && m_bPaused && tFrame.dwMediaType == eMediaVideo ? 1 : 0;
    return bTakes;
}

void CPlayback::Take(tagStreamMediaFrame const& tFrame, unsigned long dwRun)
{
    tagStreamMediaFrame tRecord = tFrame;
    std::unique_lock tLock(m_tMutex);
    if (dwRun != m_dwRun || !m_bWanted || m_bClosed)
    {
        return;
    }
    if (tFrame.dwMediaType == eMediaVideo && tFrame.llWallClockUs != 0)
    {
        m_llHeardUs = tFrame.llWallClockUs;
    }
    if (IsOver(tFrame))
    {
        EndStretch();
        return;
    }
    if (!IsWanted(tFrame))
    {
        return;
    }
    m_nFailures = 0;
    if (!m_atHeld.empty() || m_bGiving || !IsDue(tFrame) || !TakesStep(tFrame))
    {
        Hold(tFrame);
        return;
    }
    Number(tRecord);
    Give(tRecord, tLock);
    GoOn();
}

// One at a time, whichever thread it is on.
void CPlayback::Give(tagStreamMediaFrame const& tFrame, std::unique_lock<std::mutex>& tLock)
{
    m_bGiving = true;
    tLock.unlock();
    m_tFrames.Call(m_hStream.load(), &tFrame);
    tLock.lock();
    m_bGiving = false;
}

// What has waited, one by one, as far as it is wanted.
void CPlayback::GiveHeld()
{
    std::unique_lock tLock(m_tMutex);
    while (m_bWanted && !m_bClosed && !m_bGiving && !m_atHeld.empty() && IsDue(m_atHeld.front().tFrame) &&
           TakesStep(m_atHeld.front().tFrame))
    {
        const tagHeld tHeld = std::move(m_atHeld.front());
        m_atHeld.pop_front();
        m_nHeld -= tHeld.abyData.size();
        tagStreamMediaFrame tFrame = tHeld.tFrame;
        tFrame.pData = tHeld.abyData.data();
        tFrame.pConfig = tHeld.abyConfig.empty() ? nullptr : tHeld.abyConfig.data();
        Number(tFrame);
        Give(tFrame, tLock);
    }
    GoOn();
}

// --- ends ------------------------------------------------------------------------------------------------------------

void CPlayback::TakeEnd(tagReplayEnd const& tEnd, unsigned long dwRun)
{
    const std::lock_guard tLock(m_tMutex);
    if (dwRun != m_dwRun || m_bClosed || !m_bWanted)
    {
        return;
    }
    tagStretch const& t = m_atStretches[m_iStretch];
    const bool bNear =
        m_dScale < 0 ? m_llHeardUs <= t.llStartUs + g_llNearUs : !t.bGrows && m_llHeardUs >= t.llEndUs - g_llNearUs;
    // A device that starts again closes the connection like one that has nothing more; only trying shows.
    if (bNear || (tEnd.bDone && m_nFailures >= g_nFruitless))
    {
        EndStretch();
    }
    else if (tEnd.nResult != eResultOk)
    {
        const auto tPause = g_atPauses[std::min<std::size_t>(m_nFailures++, std::size(g_atPauses) - 1)];
        Log(5, "replay broke off with " + std::to_string(tEnd.nResult));
        Http().Begin(TryAgain(shared_from_this(), m_dwRun, tPause));
    }
}

rtsp::CTask<> CPlayback::TryAgain(std::shared_ptr<CPlayback> pSelf, unsigned long dwRun,
                                  std::chrono::milliseconds tPause)
{
    const bool bGoesOn = co_await Http().Until(pSelf->m_pWaits, onvif::Clock::now() + tPause);
    const std::lock_guard tLock(pSelf->m_tMutex);
    if (bGoesOn && dwRun == pSelf->m_dwRun)
    {
        pSelf->Restart();
    }
}

void CPlayback::SendEnd()
{
    tagStreamMediaFrame tFrame{};
    {
        const std::lock_guard tLock(m_tMutex);
        if (!m_bEnded || m_bClosed || !m_bWanted)
        {
            return;
        }
        tFrame.dwFlags = eFrameEnd;
        tFrame.dwSequence = m_adwSequence[0]++;
        tFrame.llWallClockUs = m_llLastUs;
        tFrame.llPresentationTimeUs = m_llPresentationUs;
    }
    m_tFrames.Call(m_hStream.load(), &tFrame);
}
} // namespace onvifclient
