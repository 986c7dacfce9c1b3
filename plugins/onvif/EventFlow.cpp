#include "plugins/onvif/EventFlow.h"

#include "plugins/onvif/Events.h"
#include "plugins/onvif/Face.h"

#include <algorithm>
#include <utility>

namespace onvifclient
{
namespace
{
constexpr unsigned long g_dwAll = (1UL << (eEventOther - eEventMotion + 1)) - 1;

bool IsIn(unsigned long dwEvents, unsigned long dwEvent)
{
    return dwEvents == 0 || (dwEvents & TESSARO_EVENT(dwEvent)) != 0;
}
} // namespace

// --- registrations ---------------------------------------------------------------------------------------------------

bool CEventFlow::Set(unsigned long dwEvents, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    const bool bEnded = m_tEvents.Set(pfnEvent, dwUser);
    const std::lock_guard tLock(m_tMutex);
    m_dwEvents = dwEvents;
    m_bWanted = pfnEvent != nullptr;
    ++m_ullTurn;
    for (auto const& [tPlace, tSays] : m_tStates)
    {
        if (const uint32_t dwState = StateAt(tPlace))
        {
            Tell({tPlace.first, tPlace.second, dwState, 0});
        }
    }
    return bEnded;
}

unsigned long CEventFlow::Remove(unsigned long dwEvents)
{
    const std::lock_guard tLock(m_tMutex);
    const unsigned long dwLeft = dwEvents == 0 || !m_bWanted ? 0 : (m_dwEvents ? m_dwEvents : g_dwAll) & ~dwEvents;
    m_dwEvents = dwLeft;
    m_bWanted = dwLeft != 0;
    return dwLeft;
}

bool CEventFlow::Close()
{
    {
        const std::lock_guard tLock(m_tMutex);
        m_bClosed = true;
        if (m_pDelivery)
        {
            m_pDelivery->Close();
        }
    }
    return m_tEvents.Close();
}

void CEventFlow::SetPlaces(tagPlaces tPlaces)
{
    const std::lock_guard tLock(m_tMutex);
    m_tPlaces = std::move(tPlaces);
}

bool CEventFlow::States(uint32_t dwEvent, std::map<uint32_t, uint32_t>& tStates) const
{
    const std::lock_guard tLock(m_tMutex);
    for (auto const& [tPlace, tSays] : m_tStates)
    {
        if (tPlace.first == dwEvent)
        {
            tStates[tPlace.second] = StateAt(tPlace);
        }
    }
    return m_bFilled;
}

// --- what is told ----------------------------------------------------------------------------------------------------

// With the mutex locked.
void CEventFlow::Add(std::function<void()> fnCall)
{
    if (!m_pDelivery && !m_bClosed)
    {
        const auto pEngine = Engine();
        m_pDelivery = pEngine ? std::make_shared<CDelivery>(pEngine) : nullptr;
    }
    if (m_pDelivery)
    {
        m_pDelivery->Add(std::move(fnCall));
    }
}

// With the mutex locked.
void CEventFlow::Tell(Words const& adwWords, std::shared_ptr<tagEventDetail const> pDetail)
{
    if (!m_bWanted || m_bClosed || !IsIn(m_dwEvents, adwWords[0]))
    {
        return;
    }
    Add(
        [pSelf = shared_from_this(), adwWords, pDetail, ullTurn = m_ullTurn]
        {
            const auto pLogin = pSelf->m_pLogin.lock();
            bool bWanted = false;
            {
                const std::lock_guard tLock(pSelf->m_tMutex);
                bWanted = pSelf->m_bWanted && pSelf->m_ullTurn == ullTurn && IsIn(pSelf->m_dwEvents, adwWords[0]);
            }
            if (pLogin && bWanted)
            {
                const auto dwWord3 = pDetail ? reinterpret_cast<unsigned long>(pDetail.get()) : adwWords[2];
                pSelf->m_tEvents.Call(pLogin->m_hLogin.load(), adwWords[0], adwWords[1], dwWord3, adwWords[3]);
            }
        });
}

void CEventFlow::OnLost(int nResult, std::chrono::milliseconds tNextTry)
{
    const std::lock_guard tLock(m_tMutex);
    Tell({eEventLoginLost, static_cast<unsigned long>(nResult), static_cast<unsigned long>(tNextTry.count()), 0});
}

void CEventFlow::OnRestored(std::chrono::milliseconds tWasLost)
{
    const std::lock_guard tLock(m_tMutex);
    // The parts may be busy asking the device, so this isn't for the HTTP thread.
    Add(
        [pSelf = shared_from_this()]
        {
            const auto pLogin = pSelf->m_pLogin.lock();
            if (!pLogin)
            {
                return;
            }
            pLogin->Forget();
            std::unique_lock tWantedLock(pSelf->m_tMutex);
            if (pSelf->m_bWanted)
            {
                tWantedLock.unlock();
                pSelf->SetPlaces(PlacesOf(*pLogin));
            }
        });
    Tell({eEventLoginRestored, static_cast<unsigned long>(tWasLost.count()), 0, 0});
}

void CEventFlow::OnEnded(int nResult)
{
    const std::lock_guard tLock(m_tMutex);
    Tell({eEventLoginLost, static_cast<unsigned long>(nResult), 0, 0});
    Add(
        [pWeak = m_pLogin]
        {
            if (const auto pLogin = pWeak.lock())
            {
                Face().tForcedOff.Call(pLogin->m_hLogin.load());
            }
        });
}

void CEventFlow::OnGap(bool bRestarted)
{
    const std::lock_guard tLock(m_tMutex);
    // A device that tells when it started will do so by itself.
    if (bRestarted && !m_tTimes.contains(eEventDeviceRestarted))
    {
        Tell({eEventDeviceRestarted, eRestartUnknown, 0, 0});
    }
    Tell({eEventsMissed, 0, 0, 0});
}

void CEventFlow::OnNone(int nResult)
{
    Log(6, "no events can be had: " + std::to_string(nResult));
}

// --- the device's events ---------------------------------------------------------------------------------------------

void CEventFlow::OnEvents(std::vector<onvif::tagNotification> atEvents)
{
    const std::lock_guard tLock(m_tMutex);
    m_bFilled = true;
    for (onvif::tagNotification const& tEvent : atEvents)
    {
        TakeEvent(tEvent);
    }
}

void CEventFlow::TakeEvent(onvif::tagNotification const& tEvent)
{
    const tagTold t = Translate(tEvent, m_tPlaces);
    if (t.bState)
    {
        TakeState(tEvent, t);
    }
    else if (t.dwEvent == eEventDeviceRestarted || t.dwEvent == eEventClockChanged)
    {
        TakeTime(tEvent, t);
    }
    else if (t.dwEvent == eEventOther)
    {
        TakeOther(tEvent, t);
    }
    else if (tEvent.eWhat != onvif::eChange::Initialized)
    {
        Tell({t.dwEvent, t.dwPlace, t.dwState, t.dwTime});
    }
}

// Several topics may speak of one place: it is on as long as one says so.
uint32_t CEventFlow::StateAt(Place const& tPlace) const
{
    const auto it = m_tStates.find(tPlace);
    uint32_t dwState = 0;
    if (it != m_tStates.end())
    {
        for (auto const& [strKey, dwSays] : it->second)
        {
            dwState = std::max(dwState, dwSays);
        }
    }
    return dwState;
}

void CEventFlow::TakeState(onvif::tagNotification const& tEvent, tagTold const& tTold)
{
    const Place tPlace{tTold.dwEvent, tTold.dwPlace};
    const uint32_t dwBefore = StateAt(tPlace);
    m_tStates[tPlace][tEvent.Key()] = tTold.dwState;
    const uint32_t dwNow = StateAt(tPlace);
    if (dwNow != dwBefore)
    {
        Tell({tTold.dwEvent, tTold.dwPlace, dwNow, tTold.dwTime});
    }
}

// How it stands tells nothing new, but after it was another time.
void CEventFlow::TakeTime(onvif::tagNotification const& tEvent, tagTold const& tTold)
{
    const auto [it, bNew] = m_tTimes.try_emplace(tTold.dwEvent, tTold.dwTime);
    const bool bChanged = it->second != tTold.dwTime;
    it->second = tTold.dwTime;
    if (bNew ? tEvent.eWhat == onvif::eChange::Initialized : !bChanged)
    {
        return;
    }
    const auto pLogin = m_pLogin.lock();
    if (tTold.dwEvent == eEventDeviceRestarted)
    {
        Tell({tTold.dwEvent, eRestartUnknown, 0, tTold.dwTime});
    }
    else if (pLogin)
    {
        Http().Begin(TellClock(shared_from_this(), pLogin->ClientPointer(), tTold.dwTime));
    }
}

// By how much a clock was set, its offset tells before and after.
rtsp::CTask<> CEventFlow::TellClock(std::shared_ptr<CEventFlow> pSelf, std::shared_ptr<onvif::CClient> pClient,
                                    uint32_t dwTime)
{
    const int64_t llBeforeUs = pClient->ClockOffsetUs();
    co_await pClient->PingAsync(pClient->Limit());
    const int64_t llMs = (pClient->ClockOffsetUs() - llBeforeUs) / 1000;
    const std::lock_guard tLock(pSelf->m_tMutex);
    pSelf->Tell({eEventClockChanged, TESSARO_SIGNED(llMs), 0, dwTime});
}

void CEventFlow::TakeOther(onvif::tagNotification const& tEvent, tagTold const& tTold)
{
    // How things stand is told only where it isn't as usual.
    if (tEvent.eWhat != onvif::eChange::Initialized || tTold.dwState == 1)
    {
        const auto pDetail = std::make_shared<tagEventDetail const>(DetailOf(tEvent, tTold));
        Tell({eEventOther, tTold.dwPlace == UINT32_MAX ? TESSARO_ALL : tTold.dwPlace, 0, tTold.dwTime}, pDetail);
    }
}
} // namespace onvifclient
