#include "plugins/device/media/Playback.h"

#include "plugins/device/Device.h"

#include "protocol/interface/Results.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace device
{
namespace
{
constexpr int64_t g_llLatePlaybackUs = 1000000; // frames that are later than so are left out
constexpr uint32_t g_dwMinSpeed = eSpeedNormal / 8;
constexpr uint32_t g_dwMaxSpeed = eSpeedNormal * 16;
constexpr uint32_t g_dwHistoryFlags = eHistoryPaused | eHistoryNoAudio | eHistoryKeyFramesOnly;
} // namespace

int CPlayback::Open(std::shared_ptr<CDevice> pDevice, tagRecordingQuestion const& tQuestion, uint32_t dwFlags,
                    std::shared_ptr<IFrameSink> pSink, std::shared_ptr<CPlayback>& pPlayback)
{
    if ((dwFlags & ~g_dwHistoryFlags) != 0 || (tQuestion.llEndUs != 0 && tQuestion.llEndUs <= tQuestion.llStartUs))
    {
        return eResultBadArgument;
    }
    const auto pNew = std::make_shared<CPlayback>(std::move(pDevice), tQuestion, dwFlags, std::move(pSink));
    if (pNew->m_tFrames.IsEmpty())
    {
        return eResultNotFound;
    }
    pNew->Join(std::make_shared<CPlayClock>(pNew->m_tFrames.StartUs(),
                                            (dwFlags & static_cast<uint32_t>(eHistoryPaused)) != 0));
    pNew->m_pSeen = pNew->m_pClock; // a step that is asked for before the first run counts
    pPlayback = pNew;
    return eResultOk;
}

CPlayback::CPlayback(std::shared_ptr<CDevice> pDevice, tagRecordingQuestion const& tQuestion, uint32_t dwFlags,
                     std::shared_ptr<IFrameSink> pSink)
    : m_pDevice(std::move(pDevice)), m_tQuestion(tQuestion), m_dwFlags(dwFlags), m_pSink(std::move(pSink)),
      m_tFrames(Find())
{
    m_llLastUs = m_tFrames.StartUs();
}

CRecordedFrames CPlayback::Find() const
{
    return {m_pDevice->Recordings(m_tQuestion), m_tQuestion.llStartUs, m_tQuestion.llEndUs,
            (m_dwFlags & (eHistoryNoAudio | eHistoryKeyFramesOnly)) == 0, (m_dwFlags & eHistoryKeyFramesOnly) != 0};
}

// --- from any thread -------------------------------------------------------------------------------------------------

std::shared_ptr<CPlayClock> CPlayback::Clock() const
{
    const std::lock_guard tLock(m_tClockMutex);
    return m_pClock;
}

// Takes a clock, and leaves the one before.
void CPlayback::Join(std::shared_ptr<CPlayClock> const& pClock)
{
    const auto pSelf = std::static_pointer_cast<CPlayback>(shared_from_this());
    if (const auto pBefore = Clock())
    {
        const std::lock_guard tLock(pBefore->Mutex());
        std::erase_if(pBefore->m_apMembers,
                      [&](auto const& p)
                      {
                          const auto pMember = p.lock();
                          return !pMember || pMember == pSelf;
                      });
    }
    {
        const std::lock_guard tLock(pClock->Mutex());
        pClock->m_apMembers.push_back(pSelf);
    }
    const std::lock_guard tLock(m_tClockMutex);
    m_pClock = pClock;
}

void CPlayback::WakeAll(CPlayClock const& tClock)
{
    for (auto const& p : tClock.m_apMembers)
    {
        if (const auto pMember = p.lock())
        {
            CPump::Instance().Wake(pMember, CPump::NowUs());
        }
    }
}

// Does something to the clock, and lets all that it drives see it.
template <class F>
void CPlayback::Steer(F fnSteer)
{
    const auto pClock = Clock();
    const std::lock_guard tLock(pClock->Mutex());
    fnSteer(*pClock, CPump::NowUs());
    WakeAll(*pClock);
}

void CPlayback::Start()
{
    m_bStarted = true;
    CPump::Instance().Wake(shared_from_this(), CPump::NowUs());
}

void CPlayback::Stop()
{
    m_bStarted = false;
}

int CPlayback::Control(eTaskControl eControl)
{
    switch (eControl)
    {
    case eTaskPlay:
    case eTaskPause:
        Steer([&](CPlayClock& tClock, int64_t llNowUs) { tClock.Pause(eControl == eTaskPause, llNowUs); });
        return eResultOk;
    case eTaskStep:
        Steer([](CPlayClock& tClock, int64_t llNowUs) { tClock.Step(llNowUs); });
        return eResultOk;
    default:
        return eResultBadArgument;
    }
}

int CPlayback::SetSpeed(uint32_t dwSpeed)
{
    const bool bReverse = (dwSpeed & eSpeedReverse) != 0;
    const uint32_t dwThousandths = dwSpeed & ~static_cast<uint32_t>(eSpeedReverse);
    if (dwThousandths < g_dwMinSpeed || dwThousandths > g_dwMaxSpeed)
    {
        return eResultBadArgument;
    }
    Steer([&](CPlayClock& tClock, int64_t llNowUs) { tClock.SetSpeed(dwThousandths, bReverse, llNowUs); });
    return eResultOk;
}

int CPlayback::Position(eOperationType eAction, tagTimeInfo& tTime)
{
    if (eAction == eOperationGet)
    {
        tTime.llTimeUs = m_llLastUs;
        tTime.nUtcOffsetMinutes = m_pDevice->UtcOffsetMinutes(tTime.llTimeUs);
        return eResultOk;
    }
    if (eAction != eOperationSet || tTime.llTimeUs < 0)
    {
        return eResultBadArgument;
    }
    if (tTime.llTimeUs >= Find().EndUs())
    {
        return eResultNotFound;
    }
    Steer([&](CPlayClock& tClock, int64_t) { tClock.Seek(tTime.llTimeUs); });
    return eResultOk;
}

int CPlayback::Sync(std::shared_ptr<CPlayback> const& pOther)
{
    if (pOther.get() == this)
    {
        return eResultBadArgument;
    }
    const auto pClock = pOther->Clock();
    if (pClock != Clock())
    {
        Join(pClock);
        CPump::Instance().Wake(shared_from_this(), CPump::NowUs());
    }
    return eResultOk;
}

int CPlayback::UnSync(std::shared_ptr<CPlayback> const& pOther)
{
    const auto pClock = Clock();
    if (pOther.get() == this || pOther->Clock() != pClock)
    {
        return eResultBadArgument;
    }
    std::shared_ptr<CPlayClock> pOwn;
    {
        const std::lock_guard tLock(pClock->Mutex());
        pOwn = std::make_shared<CPlayClock>(*pClock);
    }
    Join(pOwn);
    CPump::Instance().Wake(shared_from_this(), CPump::NowUs());
    return eResultOk;
}

void CPlayback::Close()
{
    m_bClosed = true;
}

// --- in its time -----------------------------------------------------------------------------------------------------

bool CPlayback::IsLeader(CPlayClock const& tClock) const
{
    const auto it = std::ranges::find_if(tClock.m_apMembers,
                                         [](auto const& p)
                                         {
                                             const auto pMember = p.lock();
                                             return pMember && !pMember->m_bClosed && pMember->m_bStarted;
                                         });
    return it == tClock.m_apMembers.end() || it->lock().get() == this;
}

// Sees whether the position was set, or the direction has changed, or the clock is another one.
void CPlayback::Follow(CPlayClock& tClock, int64_t llNowUs)
{
    if (m_bBegan && tClock.Seeks() == m_dwSeeks && tClock.IsReverse() == m_bReverse)
    {
        return;
    }
    m_dwSeeks = tClock.Seeks();
    m_bReverse = tClock.IsReverse();
    m_tVideo.bDiscontinuity = m_tAudio.bDiscontinuity = m_bBegan;
    m_bBegan = true;
    m_bSaidEnd = false;
    m_tNext.reset();
    const int64_t llTimeUs = tClock.At(llNowUs);
    m_bReverse ? m_tFrames.SeekBackwards(llTimeUs) : m_tFrames.Seek(llTimeUs);
    if (Fetch() && IsLeader(tClock))
    {
        tClock.Set(m_tNext->llTimeUs, llNowUs);
    }
}

// The frame that comes next. False: there is none.
bool CPlayback::Fetch()
{
    tagRecordedFrame tFrame;
    if (!m_tNext && (m_bReverse ? m_tFrames.NextBackwards(tFrame) : m_tFrames.Next(tFrame)))
    {
        m_tNext = tFrame;
    }
    return m_tNext.has_value();
}

// Leaves out what is too late, up to a key frame. False: there is none before what is due.
bool CPlayback::CatchUp(CPlayClock& tClock, int64_t llNowUs)
{
    const tagRecordedFrame tMissed = *m_tNext;
    const CRecordedFrames tBefore = m_tFrames;
    const int64_t llTimeUs = tClock.At(llNowUs);
    m_tNext.reset();
    m_bReverse ? m_tFrames.SeekBackwards(llTimeUs) : m_tFrames.Seek(llTimeUs);
    if (!Fetch() || (m_bReverse ? m_tNext->llTimeUs >= tMissed.llTimeUs : m_tNext->llTimeUs <= tMissed.llTimeUs))
    {
        m_tFrames = tBefore;
        m_tNext = tMissed;
        return false;
    }
    m_tVideo.dwSequence += tMissed.pClip && m_tNext->pClip
                               ? static_cast<uint32_t>(std::abs(static_cast<int64_t>(m_tNext->ullNumber) -
                                                                static_cast<int64_t>(tMissed.ullNumber)))
                               : 1;
    return true;
}

// Whether the device can be reached.
bool CPlayback::IsDeviceUp()
{
    const uint32_t dwVersion = m_pDevice->StreamVersion();
    if (!m_bKnown || dwVersion != m_dwVersion)
    {
        tagStreamState tState;
        m_bUp = m_pDevice->StreamState(0, 0, tState) == eResultOk && (tState.bUp || tState.tVideo.bEnabled == 0);
        m_dwVersion = dwVersion;
        m_bKnown = true;
    }
    return m_bUp;
}

// Whether more is being recorded of what is played; takes in what has come.
bool CPlayback::GrowsOn()
{
    const auto atRecordings = m_pDevice->Recordings(m_tQuestion);
    const bool bGrows = !m_bReverse && std::ranges::any_of(atRecordings, &tagRecording::bRecording) &&
                        (m_tQuestion.llEndUs == 0 || m_pDevice->NowUs() < m_tQuestion.llEndUs);
    const int64_t llEndUs = m_tFrames.EndUs();
    CRecordedFrames tNew = Find();
    if (bGrows && tNew.EndUs() > llEndUs)
    {
        m_tFrames = std::move(tNew);
        m_tFrames.Resume(llEndUs);
    }
    return bGrows;
}

int64_t CPlayback::Run(int64_t llNowUs)
{
    if (m_bClosed || !m_bStarted)
    {
        return g_llNotAgain;
    }
    if (!IsDeviceUp())
    {
        return llNowUs + CPump::g_llPollUs;
    }
    const auto pClock = Clock();
    std::unique_lock tLock(pClock->Mutex());
    if (pClock != m_pSeen)
    {
        m_dwSteps = pClock->Steps();
        m_dwSeeks = pClock->Seeks() - (m_pSeen ? 1 : 0);
        m_pSeen = pClock;
    }
    pClock->Start(llNowUs);
    Follow(*pClock, llNowUs);
    m_dwToStep += pClock->Steps() - std::exchange(m_dwSteps, pClock->Steps());
    m_dwToStep = pClock->IsPaused() ? m_dwToStep : 0;
    if (pClock->IsPaused() && m_dwToStep == 0)
    {
        return g_llNotAgain;
    }
    if (!Fetch())
    {
        tLock.unlock();
        if (GrowsOn())
        {
            return llNowUs + CPump::g_llPollUs;
        }
        SendEnd();
        return g_llNotAgain;
    }
    const bool bStep = m_dwToStep > 0;
    if (m_tNext->bAfterGap && IsLeader(*pClock) && !bStep)
    {
        pClock->Set(m_tNext->llTimeUs, llNowUs);
        WakeAll(*pClock);
    }
    const int64_t llDueUs = bStep ? llNowUs : pClock->When(m_tNext->llTimeUs);
    if (llDueUs > llNowUs)
    {
        return llDueUs;
    }
    if (llNowUs - llDueUs > g_llLatePlaybackUs && CatchUp(*pClock, llNowUs))
    {
        return llNowUs;
    }
    const tagRecordedFrame tFrame = *m_tNext;
    m_tNext.reset();
    if (bStep)
    {
        if (!tFrame.pClip)
        {
            return llNowUs; // sound doesn't count as a step
        }
        --m_dwToStep;
        pClock->Set(tFrame.llTimeUs, llNowUs);
    }
    tLock.unlock();
    Deliver(tFrame);
    return llNowUs;
}

void CPlayback::Deliver(tagRecordedFrame const& tFrame)
{
    tagTrack& tTrack = tFrame.pClip ? m_tVideo : m_tAudio;
    tagStreamMediaFrame tRecord = tFrame.Record(tFrame.Data(CPump::Room()));
    const bool bNewTime = tTrack.bDiscontinuity || tFrame.bAfterGap;
    tRecord.dwFlags |= bNewTime ? eFrameDiscontinuity : 0;
    tRecord.dwSequence = tTrack.dwSequence++;
    tTrack.bDiscontinuity = false;
    if (m_llBeforeUs != 0)
    {
        const int64_t llPassedUs = std::abs(tFrame.llTimeUs - m_llBeforeUs);
        m_llPresentationUs += bNewTime ? std::min(llPassedUs, tFrame.llDurationUs) : llPassedUs;
    }
    m_llBeforeUs = tFrame.llTimeUs;
    tRecord.llPresentationTimeUs = m_llPresentationUs;
    m_llLastUs = tFrame.llTimeUs;
    if (m_bStarted && !m_bClosed)
    {
        m_pSink->OnFrame(tRecord);
    }
}

void CPlayback::SendEnd()
{
    if (std::exchange(m_bSaidEnd, true))
    {
        return;
    }
    tagStreamMediaFrame tRecord{};
    tRecord.dwFlags = eFrameEnd;
    tRecord.dwSequence = m_tVideo.dwSequence++;
    tRecord.llWallClockUs = m_llLastUs;
    tRecord.llPresentationTimeUs = m_llPresentationUs;
    m_pSink->OnFrame(tRecord);
}
} // namespace device
