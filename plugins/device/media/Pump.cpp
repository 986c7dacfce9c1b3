#include "plugins/device/media/Pump.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <system_error>
#include <thread>
#include <vector>

namespace device
{
namespace
{
// Work that is due within so long is done together: the thread wakes up seldom, however many streams there are.
constexpr int64_t g_llTogetherUs = 4000;

std::chrono::steady_clock::time_point TimePoint(int64_t llUs)
{
    return std::chrono::steady_clock::time_point(std::chrono::microseconds(llUs));
}
} // namespace

// One thread leads: it does the work. Another one stands by, and takes the lead when the leader doesn't come back from
// a callback. A thread that comes back and has lost the lead stands by in its turn, or ends when somebody does already.
struct CPump::tagState
{
    struct tagEntry
    {
        int64_t llDueUs;
        std::shared_ptr<CPumped> pWho;
    };
    // The earliest on top of a heap.
    static bool IsLater(tagEntry const& a, tagEntry const& b) { return a.llDueUs > b.llDueUs; }

    std::mutex tMutex;
    std::condition_variable tChanged; // for the leader: work, or the end
    std::condition_variable tHelp;    // for who stands by
    std::condition_variable tEnded;
    std::vector<tagEntry> atHeap; // an entry whose time isn't its object's any more doesn't count
    std::vector<std::thread> atThreads;
    std::thread::id tLeader;
    int64_t llBusySinceUs = 0; // of the leader, 0: it waits
    int nThreads = 0;
    int nStandingBy = 0;
    bool bStop = false;
};

CPump::~CPump()
{
    Stop();
}

std::vector<unsigned char>& CPump::Room()
{
    static thread_local std::vector<unsigned char> s_abyRoom;
    return s_abyRoom;
}

CPump& CPump::Instance()
{
    static CPump s_tPump;
    return s_tPump;
}

int64_t CPump::NowUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void CPump::Wake(std::shared_ptr<CPumped> const& pWho, int64_t llAtUs)
{
    const std::lock_guard tLock(m_tMutex);
    if (!m_pState)
    {
        m_pState = std::make_shared<tagState>();
    }
    const std::lock_guard tStateLock(m_pState->tMutex);
    if (llAtUs < pWho->m_llDueUs)
    {
        pWho->m_llDueUs = llAtUs;
        if (!pWho->m_bRunning)
        {
            m_pState->atHeap.push_back({llAtUs, pWho});
            std::ranges::push_heap(m_pState->atHeap, tagState::IsLater);
            m_pState->tChanged.notify_one();
        }
    }
    while (m_pState->nThreads < 2)
    {
        StartThread(m_pState);
    }
}

// Needs the state's mutex.
void CPump::StartThread(std::shared_ptr<tagState> const& pState)
{
    pState->atThreads.emplace_back(&CPump::Work, pState);
    ++pState->nThreads;
}

void CPump::Stop()
{
    std::shared_ptr<tagState> pState;
    {
        const std::lock_guard tLock(m_tMutex);
        pState.swap(m_pState);
    }
    if (!pState)
    {
        return;
    }
    bool bAll = false;
    std::vector<std::thread> atThreads;
    std::vector<tagState::tagEntry> atForgotten; // goes without the lock: what is in it may have more to do
    {
        std::unique_lock tLock(pState->tMutex);
        pState->bStop = true;
        for (tagState::tagEntry const& tEntry : pState->atHeap)
        {
            tEntry.pWho->m_llDueUs = CPumped::g_llNotAgain;
        }
        atForgotten.swap(pState->atHeap);
        pState->tChanged.notify_all();
        pState->tHelp.notify_all();
        const bool bOwn = std::ranges::any_of(pState->atThreads, [](std::thread const& t)
                                              { return t.get_id() == std::this_thread::get_id(); });
        pState->tEnded.wait_for(tLock, std::chrono::seconds(2), [&] { return pState->nThreads <= (bOwn ? 1 : 0); });
        atThreads.swap(pState->atThreads);
        bAll = pState->nThreads == 0;
    }
    // One that still runs a callback ends after it.
    for (std::thread& tThread : atThreads)
    {
        bAll ? tThread.join() : tThread.detach();
    }
}

// Does what is due, until the lead is lost or it is the end.
void CPump::Lead(std::shared_ptr<tagState> const& pState, std::unique_lock<std::mutex>& tLock)
{
    auto& atHeap = pState->atHeap;
    while (!pState->bStop && pState->tLeader == std::this_thread::get_id())
    {
        const int64_t llNowUs = NowUs();
        if (atHeap.empty())
        {
            pState->tChanged.wait(tLock);
            continue;
        }
        if (atHeap.front().llDueUs > llNowUs)
        {
            pState->tChanged.wait_until(tLock,
                                        TimePoint((atHeap.front().llDueUs / g_llTogetherUs + 1) * g_llTogetherUs));
            continue;
        }
        std::ranges::pop_heap(atHeap, tagState::IsLater);
        tagState::tagEntry tEntry = std::move(atHeap.back());
        atHeap.pop_back();
        CPumped& tWho = *tEntry.pWho;
        if (tWho.m_bRunning || tWho.m_llDueUs != tEntry.llDueUs)
        {
            tLock.unlock();
            tEntry.pWho.reset();
            tLock.lock();
            continue;
        }
        tWho.m_bRunning = true;
        tWho.m_llDueUs = CPumped::g_llNotAgain;
        pState->llBusySinceUs = llNowUs;
        tLock.unlock();
        const int64_t llNextUs = tWho.Run(llNowUs);
        tLock.lock();
        tWho.m_bRunning = false;
        if (pState->tLeader == std::this_thread::get_id())
        {
            pState->llBusySinceUs = 0;
        }
        tWho.m_llDueUs = std::min(llNextUs, tWho.m_llDueUs);
        if (tWho.m_llDueUs == CPumped::g_llNotAgain || pState->bStop)
        {
            tWho.m_llDueUs = CPumped::g_llNotAgain;
            tLock.unlock();
            tEntry.pWho.reset();
            tLock.lock();
            continue;
        }
        tEntry.llDueUs = tWho.m_llDueUs;
        atHeap.push_back(std::move(tEntry));
        std::ranges::push_heap(atHeap, tagState::IsLater);
        if (pState->tLeader != std::this_thread::get_id())
        {
            pState->tChanged.notify_one(); // who leads now may wait for ever, having found nothing to do
        }
    }
}

void CPump::Work(std::shared_ptr<tagState> const& pState)
{
    std::unique_lock tLock(pState->tMutex);
    while (!pState->bStop)
    {
        if (pState->tLeader == std::thread::id())
        {
            pState->tLeader = std::this_thread::get_id();
        }
        if (pState->tLeader == std::this_thread::get_id())
        {
            Lead(pState, tLock);
            continue;
        }
        if (pState->nStandingBy > 0)
        {
            break; // one is enough
        }
        ++pState->nStandingBy;
        pState->tHelp.wait_for(tLock, std::chrono::microseconds(pState->atHeap.empty() && pState->llBusySinceUs == 0
                                                                    ? 50 * g_llPatienceUs
                                                                    : g_llPatienceUs));
        --pState->nStandingBy;
        if (pState->llBusySinceUs != 0 && NowUs() - pState->llBusySinceUs > g_llPatienceUs)
        {
            pState->tLeader = std::this_thread::get_id();
            pState->llBusySinceUs = 0;
            try
            {
                if (pState->nThreads < g_nMaxThreads)
                {
                    StartThread(pState);
                }
            }
            catch (std::system_error const&)
            {
                // No thread is left: what comes next waits for this one.
            }
        }
    }
    --pState->nThreads;
    pState->tEnded.notify_all();
    // Whoever ends by itself is not waited for.
    const auto it = std::ranges::find(pState->atThreads, std::this_thread::get_id(), &std::thread::get_id);
    if (it != pState->atThreads.end() && !pState->bStop)
    {
        it->detach();
        pState->atThreads.erase(it);
    }
}
} // namespace device
