#include "rtsp/Loop.h"

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

constexpr unsigned g_nFree = 2;        // threads outside callbacks
constexpr unsigned g_nQuickGrowth = 3; // threads beyond the cores, as long as no callback is slow
constexpr auto g_tSlow = 10ms;         // a callback that runs for longer
constexpr auto g_tShrinkTime = 3s;     // between looks at how many threads were needed

struct tagThread
{
    std::thread tThread;
    std::atomic<Clock::rep> nCallbackBegan{0}; // 0: outside
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

class CLoop::CImpl : public std::enable_shared_from_this<CImpl>
{
public:
    asio::io_context& Context() { return m_tContext; }

    void Start()
    {
        const std::lock_guard tLock(m_tMutex);
        for (unsigned i = 0; i < m_nBase; ++i)
        {
            StartThread();
        }
    }

    void BeginCallback()
    {
        const unsigned nInside = ++m_nInside;
        if (g_ptThread)
        {
            g_ptThread->nCallbackBegan.store(Clock::now().time_since_epoch().count(), std::memory_order_relaxed);
        }
        if (nInside > m_nMostInside.load(std::memory_order_relaxed))
        {
            m_nMostInside.store(nInside, std::memory_order_relaxed);
        }
        if (nInside + g_nFree > m_nThreads.load(std::memory_order_relaxed)) [[unlikely]]
        {
            Grow();
        }
    }
    void EndCallback()
    {
        if (g_ptThread)
        {
            g_ptThread->nCallbackBegan.store(0, std::memory_order_relaxed);
        }
        --m_nInside;
    }

    void Stop(Clock::time_point tUntil)
    {
        m_tContext.stop();
        std::list<tagThread> atEnded;
        {
            std::unique_lock tLock(m_tMutex);
            m_bStopping = true;
            m_tChanged.wait_until(tLock, tUntil,
                                  [this]
                                  {
                                      return std::all_of(m_atThreads.begin(), m_atThreads.end(),
                                                         [](auto const& t) { return t.bEnded || &t == g_ptThread; });
                                  });
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
        m_tContext.stop();
        std::unique_lock tLock(m_tMutex);
        m_bStopping = true;
        m_tChanged.wait_until(tLock, tUntil,
                              [this]
                              {
                                  return std::all_of(m_atThreads.begin(), m_atThreads.end(),
                                                     [](auto const& t) { return t.bEnded || t.nCallbackBegan != 0; });
                              });
    }

private:
    // Under the mutex.
    void StartThread()
    {
        tagThread& tThread = m_atThreads.emplace_back();
        try
        {
            tThread.tThread = std::thread([pThis = shared_from_this(), &tThread] { pThis->Run(tThread); });
        }
        catch (...)
        {
            m_atThreads.pop_back();
            throw;
        }
        ++m_nThreads;
    }

    void Run(tagThread& tThread)
    {
        g_ptThread = &tThread;
        struct tagScope // a callback may end its thread
        {
            ~tagScope() { tImpl.OnThreadEnds(tThread, bLeft); }
            CImpl& tImpl;
            tagThread& tThread;
            bool bLeft = false;
        } tScope{*this, tThread};
        try
        {
            m_tContext.run();
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
        --m_nThreads;
        m_tChanged.notify_all();
        if (!bLeft && !m_bStopping)
        {
            TryToStartThread();
        }
    }

    void TryToStartThread()
    try
    {
        StartThread();
    }
    catch (...) // no thread to be had: callbacks hold each other up until there is
    {
    }

    // Callbacks leave fewer than two threads. The last one is replaced always; the last but one only when callbacks are
    // slow, or while there are few: quick callbacks meet now and then on a busy machine.
    [[gnu::cold, gnu::noinline]] void Grow()
    {
        std::list<tagThread> atEnded;
        {
            const std::lock_guard tLock(m_tMutex);
            const unsigned nInside = m_nInside;
            if (m_bStopping || nInside + g_nFree <= m_nThreads ||
                (nInside < m_nThreads && m_nThreads >= m_nCores + g_nQuickGrowth && !IsAnySlow()))
            {
                return;
            }
            Reap(atEnded);
            TryToStartThread();
            WatchForShrinking();
        }
        Join(atEnded);
    }

    bool IsAnySlow() const
    {
        const Clock::rep nBefore = (Clock::now() - g_tSlow).time_since_epoch().count();
        return std::any_of(m_atThreads.begin(), m_atThreads.end(),
                           [=](tagThread const& t)
                           {
                               const Clock::rep nBegan = t.nCallbackBegan.load(std::memory_order_relaxed);
                               return nBegan != 0 && nBegan < nBefore;
                           });
    }

    // Under the mutex.
    void WatchForShrinking()
    try
    {
        if (!m_bWatching && m_nThreads > m_nBase)
        {
            m_tShrinkTimer.expires_after(g_tShrinkTime);
            m_tShrinkTimer.async_wait(
                [this](asio::error_code const& tError)
                {
                    if (!tError)
                    {
                        Shrink();
                    }
                });
            m_bWatching = true;
        }
    }
    catch (...) // no memory: with the next growth
    {
    }

    void Shrink()
    {
        std::list<tagThread> atEnded;
        {
            const std::lock_guard tLock(m_tMutex);
            const unsigned nNeeded = std::max(m_nBase, m_nMostInside.exchange(m_nInside) + g_nFree);
            for (unsigned i = m_nThreads; i > nNeeded; --i)
            {
                asio::post(m_tContext, [] { throw tagLeave{}; });
            }
            Reap(atEnded);
            m_bWatching = false;
            WatchForShrinking();
        }
        Join(atEnded);
    }

    // Under the mutex.
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
    static void Join(std::list<tagThread>& atEnded)
    {
        for (tagThread& tThread : atEnded)
        {
            tThread.tThread.join();
        }
    }

    const unsigned m_nCores = std::max(1U, std::thread::hardware_concurrency());
    const unsigned m_nBase = std::max(g_nFree, m_nCores);
    asio::io_context m_tContext{static_cast<int>(m_nBase)};
    asio::executor_work_guard<Executor> m_tWork{m_tContext.get_executor()};
    Timer m_tShrinkTimer{m_tContext};
    std::atomic<unsigned> m_nThreads{0};
    std::atomic<unsigned> m_nInside{0};     ///< callbacks
    std::atomic<unsigned> m_nMostInside{0}; ///< since the last look at it
    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::list<tagThread> m_atThreads;
    bool m_bWatching = false;
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

CDescriptor::CDescriptor(CLoop& tLoop, int nFile, std::uint32_t dwTag)
try : m_pImpl(new tagImpl{asio::posix::basic_stream_descriptor<Executor>(tLoop.m_pImpl->Context())}), m_dwTag(dwTag)
{
    m_pImpl->tDescriptor.assign(nFile);
}
catch (...)
{
    close(nFile);
}

CDescriptor::~CDescriptor()
{
    asio::error_code tIgnored;
    m_pImpl->tDescriptor.close(tIgnored);
}

int CDescriptor::File() const
{
    return m_pImpl->tDescriptor.native_handle();
}

void CDescriptor::AwaitReadable(ILoopClient& tClient)
{
    m_pImpl->tDescriptor.async_wait(
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
    m_pImpl->tDescriptor.async_wait(
        asio::posix::descriptor_base::wait_write,
        [pClient = tClient.shared_from_this(), dwTag = m_dwTag](asio::error_code const& tError)
        {
            if (tError != asio::error::operation_aborted)
            {
                pClient->OnWritable(dwTag);
            }
        });
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
