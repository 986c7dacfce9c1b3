#include "onvif/Watch.h"

#include "protocol/PluginInterface.h"

#include <algorithm>
#include <utility>

namespace onvif
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tBeat = 15s; // of silence, until it is asked
constexpr std::chrono::seconds g_atPauses[] = {1s, 2s, 4s, 8s, 16s, 30s};

std::chrono::milliseconds PauseAfter(std::size_t nFailures)
{
    return g_atPauses[std::min(nFailures, std::size(g_atPauses) - 1)];
}
} // namespace

CWatch::CWatch(std::shared_ptr<CClient> pClient, std::shared_ptr<IWatcher> pWatcher)
    : m_pClient(std::move(pClient)), m_pGroup(m_pClient->Group()), m_pWatcher(std::move(pWatcher)),
      m_eStatus(eLoginAlive)
{
}

void CWatch::Begin()
{
    m_pClient->OnResult(
        [pWeak = weak_from_this()](int nResult)
        {
            if (const auto pSelf = pWeak.lock())
            {
                pSelf->OnResult(nResult);
            }
        });
    m_pClient->Http().Begin(Beat(shared_from_this()));
}

void CWatch::OnResult(int nResult)
{
    if (nResult == eResultOk)
    {
        m_tHeard = Clock::now();
    }
    else if (m_eStatus == eLoginAlive && !m_pGroup->IsEnded() && !m_bChecking.exchange(true))
    {
        m_pClient->Http().Begin(Check(shared_from_this(), false));
    }
}

void CWatch::Doubt()
{
    if (!m_bChecking.exchange(true))
    {
        m_pClient->Http().Begin(Check(shared_from_this(), true));
    }
}

rtsp::CTask<> CWatch::Beat(std::shared_ptr<CWatch> pSelf)
{
    CClient& tClient = *pSelf->m_pClient;
    pSelf->m_tHeard = Clock::now();
    for (;;)
    {
        const bool bGoesOn = co_await tClient.Http().Until(pSelf->m_pGroup, pSelf->m_tHeard.load() + g_tBeat);
        if (!bGoesOn)
        {
            break;
        }
        if (!pSelf->IsAlive() || pSelf->m_bChecking)
        {
            pSelf->m_tHeard = Clock::now();
        }
        else if (Clock::now() >= pSelf->m_tHeard.load() + g_tBeat)
        {
            // What needs a login, so that a changed password shows too.
            tagRequest tRequest{eService::Device, "GetDeviceInformation"};
            const CAnswer tAnswer = co_await tClient.CallAsync(std::move(tRequest));
            pSelf->m_tHeard = Clock::now();
            if (tAnswer.Result() == eResultWrongLogin)
            {
                pSelf->Doubt();
            }
        }
    }
}

void CWatch::Lose(int nResult, std::chrono::milliseconds tNextTry)
{
    if (m_eStatus.exchange(eLoginLost) == eLoginAlive)
    {
        m_tLost = Clock::now();
        m_pWatcher->OnLost(nResult, tNextTry);
    }
}

// Until the device answers, and has let this user in. What it came to: 0, or why nobody tries any more.
rtsp::CTask<int> CWatch::Regain()
{
    for (std::size_t nFailures = 0;; ++nFailures)
    {
        int nResult = co_await m_pClient->PingAsync(m_pClient->Limit());
        if (nResult == eResultOk && nFailures == 0)
        {
            co_return eResultOk; // only that one call has failed
        }
        if (nResult == eResultOk)
        {
            nResult = co_await m_pClient->LoginAsync();
        }
        if (nResult == eResultOk || nResult == eResultWrongLogin || m_pGroup->IsEnded())
        {
            co_return nResult;
        }
        const auto tPause = PauseAfter(nFailures);
        Lose(nResult, tPause);
        const bool bGoesOn = co_await m_pClient->Http().Until(m_pGroup, Clock::now() + tPause);
        if (!bGoesOn)
        {
            co_return m_pGroup->Result();
        }
    }
}

rtsp::CTask<> CWatch::Check(std::shared_ptr<CWatch> pSelf, bool bDoubt)
{
    int nResult = eResultTimeOut;
    if (bDoubt)
    {
        nResult = co_await pSelf->m_pClient->LoginAsync();
    }
    if (nResult != eResultOk && nResult != eResultWrongLogin)
    {
        nResult = co_await pSelf->Regain();
    }
    if (!pSelf->m_pGroup->IsEnded())
    {
        const int eBefore = pSelf->m_eStatus.exchange(nResult == eResultOk ? eLoginAlive : eLoginEnded);
        if (nResult != eResultOk)
        {
            pSelf->m_pWatcher->OnEnded(nResult);
        }
        else if (eBefore == eLoginLost)
        {
            pSelf->m_pWatcher->OnRestored(
                std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - pSelf->m_tLost));
        }
    }
    pSelf->m_bChecking = false;
}
} // namespace onvif
