#include "plugins/device/Worker.h"

#include <algorithm>
#include <chrono>

namespace device
{
namespace
{
// For a heap with the earliest on top.
constexpr auto g_fnLater = [](auto const& tLeft, auto const& tRight)
{ return tLeft.llAtUs != tRight.llAtUs ? tLeft.llAtUs > tRight.llAtUs : tLeft.ullOrder > tRight.ullOrder; };
} // namespace

int64_t SteadyUs()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

void CWorker::Start()
{
    const std::lock_guard tLock(m_tMutex);
    if (!m_pState)
    {
        const auto pState = std::make_shared<tagState>();
        m_tThread = std::thread([pState] { Run(pState); });
        m_pState = pState;
    }
}

void CWorker::Stop()
{
    std::unique_lock tLock(m_tMutex);
    const auto pState = std::move(m_pState);
    std::thread tThread = std::move(m_tThread);
    m_pState = nullptr;
    tLock.unlock();
    if (!pState)
    {
        return;
    }
    std::unique_lock tStateLock(pState->tMutex);
    pState->bStop = true;
    pState->atTasks.clear();
    pState->tChanged.notify_all();
    const bool bSelf = tThread.get_id() == std::this_thread::get_id();
    const bool bEnded =
        !bSelf && pState->tChanged.wait_for(tStateLock, std::chrono::seconds(2), [&] { return pState->bEnded; });
    tStateLock.unlock();
    if (bEnded)
    {
        tThread.join();
    }
    else
    {
        tThread.detach();
    }
}

void CWorker::At(int64_t llSteadyUs, Task fnTask)
{
    const std::unique_lock tLock(m_tMutex);
    if (!m_pState)
    {
        return;
    }
    tagState& tState = *m_pState;
    const std::lock_guard tStateLock(tState.tMutex);
    tState.atTasks.push_back({llSteadyUs, tState.ullOrder++, std::move(fnTask)});
    std::ranges::push_heap(tState.atTasks, g_fnLater);
    tState.tChanged.notify_all();
}

void CWorker::Run(std::shared_ptr<tagState> const& pState)
{
    tagState& tState = *pState;
    std::unique_lock tLock(tState.tMutex);
    while (!tState.bStop)
    {
        if (tState.atTasks.empty())
        {
            tState.tChanged.wait(tLock);
            continue;
        }
        const int64_t llWaitUs = tState.atTasks.front().llAtUs - SteadyUs();
        if (llWaitUs > 0)
        {
            tState.tChanged.wait_for(tLock, std::chrono::microseconds(llWaitUs));
            continue;
        }
        std::ranges::pop_heap(tState.atTasks, g_fnLater);
        {
            const Task fnTask = std::move(tState.atTasks.back().fn);
            tState.atTasks.pop_back();
            tLock.unlock();
            fnTask();
        }
        tLock.lock();
    }
    tState.bEnded = true;
    tState.tChanged.notify_all();
}

// Neither is ever destroyed: a thread that could not be waited for may still look at it.
CWorker& TimeWorker()
{
    static CWorker& s_tWorker = *new CWorker;
    return s_tWorker;
}

CWorker& DeliveryWorker()
{
    static CWorker& s_tWorker = *new CWorker;
    return s_tWorker;
}
} // namespace device
