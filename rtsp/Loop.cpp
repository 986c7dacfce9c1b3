#include "rtsp/Loop.h"
#include "rtsp/ThreadUse.h"
#include "rtsp/Watchdog.h"

#define ASIO_STANDALONE
#define ASIO_NO_DEPRECATED
#define ASIO_DISABLE_VISIBILITY
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wpedantic"
#include <asio/basic_waitable_timer.hpp>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/posix/basic_stream_descriptor.hpp>
#include <asio/post.hpp>
#pragma GCC diagnostic pop

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <list>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;
using Executor = asio::io_context::executor_type;
using Timer = asio::basic_waitable_timer<Clock, asio::wait_traits<Clock>, Executor>;

constexpr unsigned g_nFree = 2;        // runners outside callbacks, while callbacks are slow
constexpr unsigned g_nQuickGrowth = 2; // runners beyond the cores that quick callbacks may bring about
constexpr auto g_tSlow = 5ms;          // a callback that sleeps or computes for longer
constexpr auto g_tLookTime = 10ms;     // between looks at what callbacks do
constexpr unsigned g_nLooks = 100;     // until they are counted
constexpr unsigned g_nFew = 1000;      // callbacks in that time
constexpr unsigned g_nMany = 2000;     // callbacks, until it is worth counting them again
constexpr auto g_tLate = 20ms;         // a loop that needs longer to come to something is busy
constexpr unsigned g_nLate = 3;        // so many times in a row: too busy
constexpr auto g_tProbeTime = 100ms;   // between tries how long that takes
constexpr auto g_tCalmTime = 3s;       // between looks at how many runners were needed
constexpr double g_dBusy = 0.6;        // of one core

struct tagThread
{
    std::thread tThread;
    std::atomic<pid_t> nId{0};
    std::atomic<Clock::rep> nCallbackBegan{0};  // 0: outside
    Clock::rep nSeen = 0;                       // the beginning of a callback that was looked at before
    std::chrono::nanoseconds tCpuTimeSeen{0};   // of that time
    std::chrono::nanoseconds tCpuTimeBefore{0}; // when runners were last trimmed
    bool bGuard = false;
    bool bEnded = false;
};

// Of the calling thread; null: not one of ours.
thread_local tagThread* g_ptThread = nullptr;

// Thrown through asio, which is its way to make one thread leave.
struct tagLeave
{
};
} // namespace

// --- the pool --------------------------------------------------------------------------------------------------------

// One thread, the runner, does everything as long as callbacks are quick: each further one that waits for work beside
// it would be woken for every packet, which costs more than the packet. Another thread, the guard, sees to it that no
// callback keeps the runner. In quiet times it sleeps, and the runner winds a watchdog up for each callback; when there
// are many, it looks every few milliseconds instead. Once a callback was slow, two runners are kept free of callbacks,
// until all has been quick for a while. The guard also adds runners when one alone can't keep up, as many as there are
// cores.
class CLoop::CImpl : public std::enable_shared_from_this<CImpl>
{
public:
    asio::io_context& Context() { return m_tContext; }

    void Start()
    {
        const std::lock_guard tLock(m_tMutex);
        StartThread(true);
        StartThread(false);
    }

    void BeginCallback()
    {
        const unsigned nInside = ++m_nInside;
        if (g_ptThread)
        {
            g_ptThread->nCallbackBegan.store(Clock::now().time_since_epoch().count(), std::memory_order_relaxed);
        }
        const std::uint32_t dwCallbacks = m_dwCallbacks.fetch_add(1, std::memory_order_relaxed);
        if (m_bSlowTimes.load(std::memory_order_relaxed) && nInside + g_nFree > m_nRunners) [[unlikely]]
        {
            Grow();
        }
        if (m_bQuiet)
        {
            m_tWatchdog.Set(g_tLookTime);
            if (dwCallbacks % g_nMany == 0)
            {
                m_tWatchdog.Ring();
            }
        }
    }
    void EndCallback()
    {
        if (m_bQuiet)
        {
            m_tWatchdog.Clear();
        }
        if (g_ptThread)
        {
            g_ptThread->nCallbackBegan.store(0, std::memory_order_relaxed);
        }
        --m_nInside;
    }

    void Stop(Clock::time_point tUntil)
    {
        std::list<tagThread> atEnded;
        {
            std::unique_lock tLock(m_tMutex);
            AwaitThreads(tLock, tUntil, [](tagThread const& t) { return t.bEnded || &t == g_ptThread; });
            Reap(atEnded);
            for (tagThread& tThread : m_atThreads)
            {
                tThread.tThread.detach();
            }
        }
        Join(atEnded);
        // What was on its way holds its clients, and these hold us.
        m_tWork.reset();
        m_tContext.restart();
        m_tContext.poll();
        m_tContext.stop();
    }

    void Freeze(Clock::time_point tUntil)
    {
        std::list<tagThread> atEnded;
        {
            std::unique_lock tLock(m_tMutex);
            AwaitThreads(tLock, tUntil, [](tagThread const& t) { return t.bEnded || t.nCallbackBegan != 0; });
            Reap(atEnded);
        }
        Join(atEnded); // OpenSSL's own ends of threads are over too
    }

private:
    template <class F>
    void AwaitThreads(std::unique_lock<std::mutex>& tLock, Clock::time_point tUntil, F const& fnIsDone)
    {
        m_bStopping = true;
        m_tContext.stop();
        m_tChanged.notify_all();
        m_tWatchdog.Ring();
        m_tChanged.wait_until(tLock, tUntil,
                              [&] { return std::all_of(m_atThreads.begin(), m_atThreads.end(), fnIsDone); });
    }

    // --- threads: under the mutex ---

    void StartThread(bool bGuard)
    {
        tagThread& tThread = m_atThreads.emplace_back();
        tThread.bGuard = bGuard;
        try
        {
            tThread.tThread = std::thread([pThis = shared_from_this(), &tThread] { pThis->Run(tThread); });
        }
        catch (...)
        {
            m_atThreads.pop_back();
            throw;
        }
        m_nRunners += bGuard ? 0 : 1;
    }
    void StartRunners(unsigned nUpTo)
    try
    {
        while (m_nRunners < nUpTo)
        {
            StartThread(false);
        }
    }
    catch (...) // no thread to be had: callbacks hold each other up until there is
    {
    }
    void Reap(std::list<tagThread>& atEnded)
    {
        for (auto it = m_atThreads.begin(); it != m_atThreads.end();)
        {
            const auto itThis = it++;
            if (itThis->bEnded && &*itThis != g_ptThread)
            {
                atEnded.splice(atEnded.end(), m_atThreads, itThis);
            }
        }
    }

    // A callback that merely waits for a core isn't slow.
    static bool IsSlow(tagThread& tThread, Clock::time_point tNow)
    {
        const Clock::rep nBegan = tThread.nCallbackBegan.load(std::memory_order_relaxed);
        if (nBegan == 0 || tNow - Clock::time_point(Clock::duration(nBegan)) < g_tSlow)
        {
            return false;
        }
        const std::chrono::nanoseconds tUsed = CpuTime(tThread.tThread.native_handle());
        if (std::exchange(tThread.nSeen, nBegan) != nBegan)
        {
            tThread.tCpuTimeSeen = tUsed;
        }
        return tUsed - tThread.tCpuTimeSeen >= g_tSlow || IsAsleep(tThread.nId.load(std::memory_order_relaxed));
    }
    bool IsAnySlow()
    {
        const Clock::time_point tNow = Clock::now();
        return std::any_of(m_atThreads.begin(), m_atThreads.end(), [=](tagThread& t) { return IsSlow(t, tNow); });
    }

    // --- outside the mutex ---

    static void Join(std::list<tagThread>& atEnded)
    {
        for (tagThread& tThread : atEnded)
        {
            tThread.tThread.join();
        }
        atEnded.clear();
    }

    void Run(tagThread& tThread)
    {
        g_ptThread = &tThread;
        tThread.nId.store(gettid(), std::memory_order_relaxed);
        struct tagScope // a callback may end its thread
        {
            ~tagScope() { tImpl.OnThreadEnds(tThread, bLeft); }
            CImpl& tImpl;
            tagThread& tThread;
            bool bLeft = false;
        } tScope{*this, tThread};
        try
        {
            if (tThread.bGuard)
            {
                Guard();
            }
            else
            {
                m_tContext.run();
            }
        }
        catch (tagLeave const&)
        {
        }
        tScope.bLeft = true;
    }

    void OnThreadEnds(tagThread& tThread, bool bLeft)
    {
        const std::lock_guard tLock(m_tMutex);
        tThread.bEnded = true;
        m_nRunners -= tThread.bGuard ? 0 : 1;
        m_tChanged.notify_all();
        if (!bLeft && !m_bStopping)
        {
            StartRunners(m_nRunners + 1);
        }
    }

    // Callbacks are slow, and leave fewer than two runners. The last one is replaced always; the last but one only when
    // there are few: quick callbacks meet now and then on a busy machine.
    [[gnu::cold, gnu::noinline]] void Grow()
    {
        const std::lock_guard tLock(m_tMutex);
        const unsigned nInside = m_nInside;
        m_nMostInside = std::max(m_nMostInside, nInside);
        const bool bMany = m_nRunners >= m_nCores + g_nQuickGrowth;
        if (!m_bStopping && (nInside >= m_nRunners || !bMany || IsAnySlow()))
        {
            StartRunners(nInside + g_nFree);
        }
    }

    // --- the guard ---

    void Guard()
    {
        std::list<tagThread> atEnded;
        std::unique_lock tLock(m_tMutex);
        while (!m_bStopping)
        {
            Look(Clock::now());
            Reap(atEnded);
            tLock.unlock();
            Join(atEnded);
            tLock.lock();
            if (BecomesQuiet())
            {
                SleepQuietly(tLock);
            }
            else
            {
                m_tChanged.wait_for(tLock, g_tLookTime, [this] { return m_bStopping; });
                ++m_nLooks;
            }
        }
    }

    // Callbacks were few and quick since they were last counted.
    bool BecomesQuiet()
    {
        if (m_bStopping || m_nLooks < g_nLooks)
        {
            return false;
        }
        if (m_nRunners > 1 || m_bSlowTimes || m_nLate > 0 || m_dwCallbacks - m_dwCounted > g_nFew)
        {
            Count();
            return false;
        }
        m_tWatchdog.Clear();
        m_bQuiet = true;
        m_bQuiet = m_nInside == 0; // one that has begun hasn't wound the watchdog up
        return m_bQuiet;
    }
    void SleepQuietly(std::unique_lock<std::mutex>& tLock)
    {
        tLock.unlock();
        m_tWatchdog.Await();
        tLock.lock();
        m_bQuiet = false;
        m_tProbed = Clock::now();
        Count();
    }
    void Count()
    {
        m_nLooks = 0;
        m_dwCounted = m_dwCallbacks;
    }

    void Look(Clock::time_point tNow)
    {
        m_nMostInside = std::max(m_nMostInside, m_nInside.load());
        if (IsAnySlow())
        {
            m_tLastSlow = tNow;
            m_bSlowTimes = true;
            StartRunners(m_nInside + g_nFree);
        }
        else
        {
            Probe(tNow);
        }
        if (tNow - m_tTrimmed >= g_tCalmTime)
        {
            Trim(tNow);
        }
    }

    // How long does the loop need to come to something?
    void Probe(Clock::time_point tNow)
    {
        const bool bLate = tNow - m_tProbed >= g_tLate;
        if (m_bProbing)
        {
            if (bLate && !std::exchange(m_bWasLate, true) && ++m_nLate >= g_nLate && m_nBase < m_nCores)
            {
                m_nLate = 0;
                m_tTrimmed = tNow;
                StartRunners(++m_nBase);
            }
        }
        else if (tNow - m_tProbed >= g_tProbeTime)
        {
            m_nLate = m_bWasLate ? m_nLate : 0;
            m_bWasLate = false;
            m_tProbed = tNow;
            m_bProbing = true;
            asio::post(m_tContext, [this] { m_bProbing = false; });
        }
    }

    // Runners that weren't needed lately leave.
    void Trim(Clock::time_point tNow)
    {
        const double dCores =
            std::chrono::duration<double>(RunnersCpuTime()) / (tNow - std::exchange(m_tTrimmed, tNow));
        m_nBase -= m_nBase > 1 && dCores < g_dBusy * (m_nBase - 1) ? 1 : 0;
        m_bSlowTimes = tNow - m_tLastSlow < g_tCalmTime;
        const unsigned nNeeded = m_bSlowTimes ? std::max(m_nBase, m_nMostInside + g_nFree) : m_nBase;
        for (unsigned i = m_nRunners; i > nNeeded; --i)
        {
            asio::post(m_tContext, [] { throw tagLeave{}; });
        }
        m_nMostInside = 0;
    }

    // Of the runners, since it was last asked for.
    std::chrono::nanoseconds RunnersCpuTime()
    {
        std::chrono::nanoseconds tAll{0};
        for (tagThread& tThread : m_atThreads)
        {
            if (!tThread.bGuard && !tThread.bEnded)
            {
                const std::chrono::nanoseconds tUsed = CpuTime(tThread.tThread.native_handle());
                tAll += tUsed - std::exchange(tThread.tCpuTimeBefore, tUsed);
            }
        }
        return tAll;
    }

    const unsigned m_nCores = std::max(1U, std::thread::hardware_concurrency());
    asio::io_context m_tContext;
    asio::executor_work_guard<Executor> m_tWork{m_tContext.get_executor()};
    std::atomic<unsigned> m_nRunners{0};
    std::atomic<unsigned> m_nInside{0};          ///< callbacks
    std::atomic<std::uint32_t> m_dwCallbacks{0}; ///< that have begun
    std::atomic<bool> m_bSlowTimes{false};
    std::atomic<bool> m_bQuiet{false}; ///< the guard sleeps until the watchdog wakes it
    std::atomic<bool> m_bProbing{false};
    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    CWatchdog m_tWatchdog;
    std::list<tagThread> m_atThreads;
    unsigned m_nLooks = g_nLooks;  ///< since callbacks were counted
    std::uint32_t m_dwCounted = 0; ///< so many they were then
    unsigned m_nBase = 1;          ///< runners that are needed when callbacks are quick
    unsigned m_nMostInside = 0;    ///< since they were trimmed
    Clock::time_point m_tTrimmed;
    Clock::time_point m_tLastSlow;
    Clock::time_point m_tProbed;
    unsigned m_nLate = 0; ///< probes in a row
    bool m_bWasLate = false;
    bool m_bStopping = false;
};

CLoop::CLoop() : m_pImpl(std::make_shared<CImpl>())
{
    try
    {
        m_pImpl->Start();
    }
    catch (...)
    {
        Stop(Clock::time_point::max());
        throw;
    }
}

CLoop::~CLoop() = default;

void CLoop::Stop(Clock::time_point tUntil)
{
    m_pImpl->Stop(tUntil);
}

void CLoop::Freeze(Clock::time_point tUntil)
{
    m_pImpl->Freeze(tUntil);
}

CLoop::CCallbackScope::CCallbackScope(CLoop& tLoop) : m_tLoop(tLoop)
{
    m_tLoop.m_pImpl->BeginCallback();
}

CLoop::CCallbackScope::~CCallbackScope()
{
    m_tLoop.m_pImpl->EndCallback();
}

// --- sockets and times -----------------------------------------------------------------------------------------------

struct CDescriptor::tagImpl
{
    asio::posix::basic_stream_descriptor<Executor> tDescriptor;
};

CDescriptor::tagImpl& CDescriptor::Impl()
{
    return *std::launder(reinterpret_cast<tagImpl*>(m_abyPlace));
}

CDescriptor::tagImpl const& CDescriptor::Impl() const
{
    return *std::launder(reinterpret_cast<tagImpl const*>(m_abyPlace));
}

CDescriptor::CDescriptor(CLoop& tLoop, int nFile, std::uint32_t dwTag) : m_dwTag(dwTag)
{
    static_assert(sizeof(tagImpl) <= nPlace && alignof(tagImpl) <= alignof(std::max_align_t));
    tagImpl* const ptImpl =
        new (m_abyPlace) tagImpl{asio::posix::basic_stream_descriptor<Executor>(tLoop.m_pImpl->Context())};
    asio::error_code tError;
    ptImpl->tDescriptor.assign(nFile, tError);
    if (tError)
    {
        close(nFile);
        ptImpl->~tagImpl();
        throw std::system_error(tError);
    }
}

CDescriptor::~CDescriptor()
{
    asio::error_code tIgnored;
    Impl().tDescriptor.close(tIgnored);
    Impl().~tagImpl();
}

int CDescriptor::File() const
{
    return const_cast<tagImpl&>(Impl()).tDescriptor.native_handle();
}

void CDescriptor::AwaitReadable(ILoopClient& tClient)
{
    Impl().tDescriptor.async_wait(
        asio::posix::descriptor_base::wait_read,
        [pClient = tClient.shared_from_this(), dwTag = m_dwTag](asio::error_code const& tError)
        {
            if (tError != asio::error::operation_aborted)
            {
                pClient->OnReadable(dwTag);
            }
        });
}

void CDescriptor::AwaitWritable(ILoopClient& tClient)
{
    Impl().tDescriptor.async_wait(
        asio::posix::descriptor_base::wait_write,
        [pClient = tClient.shared_from_this(), dwTag = m_dwTag](asio::error_code const& tError)
        {
            if (tError != asio::error::operation_aborted)
            {
                pClient->OnWritable(dwTag);
            }
        });
}

// asio watches for ever what was waited for once.
void CDescriptor::ForgetWritable()
{
    const int nFile = Impl().tDescriptor.release();
    Impl().tDescriptor.assign(nFile);
}

struct CAlarm::tagImpl
{
    Timer tTimer;
};

CAlarm::CAlarm(CLoop& tLoop) : m_pImpl(new tagImpl{Timer(tLoop.m_pImpl->Context())}) {}

CAlarm::~CAlarm() = default;

void CAlarm::Set(Clock::time_point tWhen, ILoopClient& tClient)
{
    m_pImpl->tTimer.expires_at(tWhen);
    m_pImpl->tTimer.async_wait(
        [pClient = tClient.shared_from_this()](asio::error_code const& tError)
        {
            if (!tError)
            {
                pClient->OnWake();
            }
        });
}

void CAlarm::Cancel()
{
    m_pImpl->tTimer.cancel();
}

// The memory of an operation that is posted while the one before has ended.
template <class T>
struct CWaker::tagInPlace
{
    using value_type = T;

    explicit tagInPlace(void* p) : pPlace(p) {}
    template <class U>
    tagInPlace(tagInPlace<U> const& tOther) : pPlace(tOther.pPlace) // NOLINT(google-explicit-constructor)
    {
    }
    T* allocate(std::size_t)
    {
        static_assert(sizeof(T) <= nPlace);
        return static_cast<T*>(pPlace);
    }
    void deallocate(T*, std::size_t) {}
    bool operator==(tagInPlace const&) const = default;

    void* pPlace;
};

struct CWaker::tagHandler
{
    using allocator_type = tagInPlace<unsigned char>;
    allocator_type get_allocator() const { return allocator_type(ptWaker->m_abyPlace); }

    void operator()() const // its place is free again
    {
        ptWaker->m_bRaised = false;
        pClient->OnWake();
    }

    CWaker* ptWaker;
    std::shared_ptr<ILoopClient> pClient;
};

void CWaker::Raise(ILoopClient& tClient)
{
    if (!m_bRaised.exchange(true))
    {
        asio::post(m_tLoop.m_pImpl->Context(), tagHandler{this, tClient.shared_from_this()});
    }
}
} // namespace rtsp
