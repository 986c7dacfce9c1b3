#include "plugins/onvif/Delivery.h"

namespace onvifclient
{
CDelivery::CDelivery(std::shared_ptr<rtsp::CEngine> pEngine)
    : m_pEngine(std::move(pEngine)), m_tWaker(m_pEngine->Loop())
{
}

void CDelivery::Add(std::function<void()> fnCall)
{
    const std::lock_guard tLock(m_tMutex);
    if (!m_bClosed)
    {
        m_afnCalls.push_back(std::move(fnCall));
        m_tWaker.Raise(*this);
    }
}

void CDelivery::Close()
{
    std::deque<std::function<void()>> afnDropped;
    const std::lock_guard tLock(m_tMutex);
    m_bClosed = true;
    afnDropped.swap(m_afnCalls);
}

void CDelivery::OnWake()
{
    std::unique_lock tLock(m_tMutex);
    if (m_bRunning)
    {
        return; // that thread goes on with what was added
    }
    m_bRunning = true;
    while (!m_afnCalls.empty())
    {
        const std::function<void()> fnCall = std::move(m_afnCalls.front());
        m_afnCalls.pop_front();
        tLock.unlock();
        {
            const rtsp::CLoop::CCallbackScope tScope(m_pEngine->Loop());
            fnCall();
        }
        tLock.lock();
    }
    m_bRunning = false;
}
} // namespace onvifclient
