// Playbacks that are steered together, and go by one clock.

#include "plugins/onvif/Playback.h"

#include "protocol/interface/Live.h"

#include <algorithm>

namespace onvifclient
{
std::vector<std::shared_ptr<CPlayback>> tagSyncGroup::Members()
{
    std::vector<std::shared_ptr<CPlayback>> apAll;
    const std::lock_guard tLock(tMutex);
    for (auto const& pWeak : apMembers)
    {
        if (auto pMember = pWeak.lock())
        {
            apAll.push_back(std::move(pMember));
        }
    }
    return apAll;
}

void CPlayback::Leave()
{
    std::shared_ptr<tagSyncGroup> pGroup;
    {
        const std::lock_guard tLock(m_tMutex);
        pGroup = m_pGroup;
    }
    pGroup->tClock.Leave(this);
    const std::lock_guard tLock(pGroup->tMutex);
    std::erase_if(pGroup->apMembers,
                  [&](auto const& pWeak)
                  {
                      const auto pMember = pWeak.lock();
                      return !pMember || pMember.get() == this;
                  });
}

int CPlayback::Sync(std::shared_ptr<CPlayback> const& pOther)
{
    if (pOther.get() == this)
    {
        return eResultBadArgument;
    }
    std::shared_ptr<tagSyncGroup> pGroup;
    int64_t llTimeUs = 0;
    double dScale = 1;
    bool bPaused = false;
    {
        const std::lock_guard tLock(pOther->m_tMutex);
        pGroup = pOther->m_pGroup;
        llTimeUs = pOther->m_llLastUs;
        dScale = pOther->m_dScale;
        bPaused = pOther->m_bPaused;
    }
    Leave();
    {
        const std::lock_guard tLock(pGroup->tMutex);
        pGroup->apMembers.push_back(weak_from_this());
    }
    pGroup->tClock.Restart();
    const std::lock_guard tLock(m_tMutex);
    m_pGroup = pGroup;
    m_dScale = dScale;
    m_bPaused = bPaused;
    m_nSteps = 0;
    MoveTo(llTimeUs);
    return eResultOk;
}

int CPlayback::UnSync(std::shared_ptr<CPlayback> const& pOther)
{
    std::shared_ptr<tagSyncGroup> pGroup;
    {
        const std::lock_guard tLock(pOther->m_tMutex);
        pGroup = pOther->m_pGroup;
    }
    {
        const std::lock_guard tLock(m_tMutex);
        if (pOther.get() == this || pGroup != m_pGroup)
        {
            return eResultBadArgument;
        }
    }
    Leave();
    const std::lock_guard tLock(m_tMutex);
    m_pGroup = std::make_shared<tagSyncGroup>();
    m_pGroup->apMembers.push_back(weak_from_this());
    TakePart();
    m_tWake.reset();
    GoOn();
    return eResultOk;
}

// --- the clock -------------------------------------------------------------------------------------------------------

// Whether a frame is to be given now; if not, it is looked at again in time. Sound goes along with the pictures.
bool CPlayback::IsDue(tagStreamMediaFrame const& tFrame)
{
    if (m_bPaused || tFrame.dwMediaType != eMediaVideo || tFrame.llWallClockUs == 0)
    {
        return true;
    }
    const auto tNow = onvif::Clock::now();
    bool bOthers = false;
    const auto tDue = m_pGroup->tClock.Due(this, tFrame.llWallClockUs, m_dScale, tNow, bOthers);
    if (bOthers)
    {
        for (auto const& pOther : m_pGroup->Members())
        {
            if (pOther.get() != this)
            {
                pOther->m_pDelivery->Add([pOther] { pOther->GiveHeld(); });
            }
        }
    }
    if (tDue > tNow && (!m_tWake || tDue < *m_tWake))
    {
        m_tWake = tDue;
        Http().Begin(LookAgain(shared_from_this(), tDue));
    }
    return tDue <= tNow;
}

rtsp::CTask<> CPlayback::LookAgain(std::shared_ptr<CPlayback> pSelf, onvif::Clock::time_point tWhen)
{
    const bool bGoesOn = co_await Http().Until(pSelf->m_pWaits, tWhen);
    const std::lock_guard tLock(pSelf->m_tMutex);
    if (pSelf->m_tWake && *pSelf->m_tWake <= tWhen)
    {
        pSelf->m_tWake.reset();
    }
    if (bGoesOn)
    {
        pSelf->m_pDelivery->Add([pSelf] { pSelf->GiveHeld(); });
    }
}
} // namespace onvifclient
