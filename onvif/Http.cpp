#include "onvif/Http.h"

#include "onvif/HttpCallers.h"
#include "onvif/Transfer.h"

#include "protocol/PluginInterface.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <deque>
#include <map>
#include <new>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace onvif
{
namespace
{
constexpr std::size_t g_nSpareTransfers = 8;

// Runs a task, and frees itself when it has ended.
struct tagDetached
{
    struct promise_type
    {
        tagDetached get_return_object() noexcept { return {}; }
        std::suspend_never initial_suspend() noexcept { return {}; }
        std::suspend_never final_suspend() noexcept { return {}; }
        void return_void() noexcept {}
        void unhandled_exception() noexcept {} // a task that found no memory ends
    };
};
} // namespace

// The thread.
class CHttp::CImpl
{
public:
    CImpl()
    {
        SetUpHttpLibraries();
        m_nEpoll = epoll_create1(EPOLL_CLOEXEC);
        m_nWake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        m_pMulti = curl_multi_init();
        epoll_event tEvent{};
        tEvent.events = EPOLLIN;
        tEvent.data.fd = m_nWake;
        if (m_nEpoll < 0 || m_nWake < 0 || !m_pMulti || epoll_ctl(m_nEpoll, EPOLL_CTL_ADD, m_nWake, &tEvent) != 0)
        {
            CleanUp();
            throw std::bad_alloc();
        }
        curl_multi_setopt(m_pMulti, CURLMOPT_SOCKETFUNCTION, &OnSocket);
        curl_multi_setopt(m_pMulti, CURLMOPT_SOCKETDATA, this);
        curl_multi_setopt(m_pMulti, CURLMOPT_TIMERFUNCTION, &OnTimer);
        curl_multi_setopt(m_pMulti, CURLMOPT_TIMERDATA, this);
    }
    ~CImpl() { CleanUp(); }

    // --- any thread ---

    bool Begin(rtsp::CTask<> tTask)
    {
        {
            const std::lock_guard tLock(m_tMutex);
            if (m_bStopping)
            {
                return false;
            }
            m_atNew.push_back(std::move(tTask));
            if (!m_tThread.joinable())
            {
                m_tThread = std::thread([this] { Run(); });
            }
        }
        Wake(); // outside, or the thread would wake up and wait for us
        return true;
    }
    void End(std::shared_ptr<CHttpGroup> const& pGroup)
    {
        {
            const std::lock_guard tLock(m_tMutex);
            if (!m_tThread.joinable())
            {
                return; // nothing waits
            }
            m_apEnded.push_back(pGroup);
        }
        Wake();
    }
    void Stop()
    {
        std::thread tThread;
        {
            const std::lock_guard tLock(m_tMutex);
            m_bStopping = true;
            tThread = std::move(m_tThread);
            Wake();
        }
        if (tThread.joinable())
        {
            tThread.join();
        }
    }
    void Start()
    {
        const std::lock_guard tLock(m_tMutex);
        m_bStopping = false;
        m_bAllEnded = false;
    }
    bool IsThisThread() const { return m_tThreadId == std::this_thread::get_id(); }

    // --- the thread ---

    bool Send(CSend& tSend)
    {
        const int nEnded = EndedResult(*tSend.m_pGroup);
        const int nResult = nEnded ? nEnded : TrySend(tSend);
        tSend.m_tAnswer.nResult = nResult;
        return nResult == eResultOk;
    }
    bool Pause(CPause& tPause)
    {
        if (EndedResult(*tPause.m_pGroup))
        {
            return false;
        }
        m_tPauses.emplace(tPause.m_tWhen, &tPause);
        return true;
    }
    bool Watch(CReadable& tReadable)
    {
        epoll_event tEvent{};
        tEvent.data.fd = tReadable.m_nFile;
        tEvent.events = EPOLLIN;
        if (EndedResult(*tReadable.m_pGroup) || epoll_ctl(m_nEpoll, EPOLL_CTL_ADD, tReadable.m_nFile, &tEvent) != 0)
        {
            return false;
        }
        m_tWatched.emplace(tReadable.m_nFile, &tReadable);
        return true;
    }

private:
    void CleanUp()
    {
        if (m_pMulti)
        {
            curl_multi_cleanup(m_pMulti);
        }
        for (const int nFile : {m_nEpoll, m_nWake})
        {
            if (nFile >= 0)
            {
                close(nFile);
            }
        }
    }

    void Wake()
    {
        const std::uint64_t ullOne = 1;
        (void)!write(m_nWake, &ullOne, sizeof ullOne);
    }

    // After Stop every group that is met is ended, so that its coroutines see it.
    int EndedResult(CHttpGroup& tGroup) const
    {
        if (m_bAllEnded)
        {
            tGroup.End(eResultNotStarted);
        }
        return tGroup.Result();
    }

    tagDetached Detach(rtsp::CTask<> tTask)
    {
        struct tagCount
        {
            explicit tagCount(std::size_t& n) : nRunning(n) { ++nRunning; }
            ~tagCount() { --nRunning; }
            std::size_t& nRunning;
        } tCount(m_nRunning);
        co_await tTask;
    }

    void Run()
    {
        m_tThreadId = std::this_thread::get_id();
        sigset_t tSignals;
        sigemptyset(&tSignals);
        sigaddset(&tSignals, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &tSignals, nullptr); // a device may close its connection while we write
        while (TakePosted())
        {
            OnTime();
            std::array<epoll_event, 64> atEvents{};
            const int nEvents = epoll_wait(m_nEpoll, atEvents.data(), static_cast<int>(atEvents.size()), WaitTime());
            for (int i = 0; i < nEvents; ++i)
            {
                OnEvent(atEvents[static_cast<std::size_t>(i)]);
            }
            FinishDone();
        }
        m_tThreadId = std::thread::id();
    }

    void OnTime()
    {
        // What begins sets libcurl's timer to now.
        for (auto tNow = Clock::now(); m_tCurlTime <= tNow || FirstPause() <= tNow; tNow = Clock::now())
        {
            if (std::exchange(m_tCurlTime, Clock::time_point::max()) <= tNow)
            {
                int nRunning = 0;
                curl_multi_socket_action(m_pMulti, CURL_SOCKET_TIMEOUT, 0, &nRunning);
                FinishDone();
            }
            FinishPauses(tNow);
        }
    }

    Clock::time_point FirstPause() const
    {
        return m_tPauses.empty() ? Clock::time_point::max() : m_tPauses.begin()->first;
    }

    // False: stopped, and nothing is left.
    bool TakePosted()
    {
        std::deque<rtsp::CTask<>> atNew;
        std::vector<std::shared_ptr<CHttpGroup>> apEnded;
        bool bStopping = false;
        {
            const std::lock_guard tLock(m_tMutex);
            atNew.swap(m_atNew);
            apEnded.swap(m_apEnded);
            bStopping = m_bStopping;
        }
        for (auto const& pGroup : apEnded)
        {
            FinishIf([&](CHttpGroup const& tGroup) { return &tGroup == pGroup.get(); });
        }
        for (rtsp::CTask<>& tTask : atNew)
        {
            Detach(std::move(tTask));
        }
        if (bStopping)
        {
            m_bAllEnded = true;
            FinishIf([this](CHttpGroup& tGroup) { return EndedResult(tGroup) != 0; });
        }
        return !bStopping || m_nRunning != 0;
    }

    int WaitTime() const
    {
        const auto tFirst = std::min(m_tCurlTime, FirstPause());
        if (tFirst == Clock::time_point::max())
        {
            return -1;
        }
        const auto tWait = std::chrono::ceil<std::chrono::milliseconds>(tFirst - Clock::now());
        return static_cast<int>(std::clamp<std::int64_t>(tWait.count(), 0, 1 << 30));
    }

    void OnEvent(epoll_event const& tEvent)
    {
        if (tEvent.data.fd == m_nWake)
        {
            std::uint64_t ullCount = 0;
            (void)!read(m_nWake, &ullCount, sizeof ullCount);
            return;
        }
        if (m_tWatched.contains(tEvent.data.fd))
        {
            FinishWatch(tEvent.data.fd, true);
            return;
        }
        const int nWhat = (tEvent.events & EPOLLIN ? CURL_CSELECT_IN : 0) |
                          (tEvent.events & EPOLLOUT ? CURL_CSELECT_OUT : 0) |
                          (tEvent.events & (EPOLLERR | EPOLLHUP) ? CURL_CSELECT_ERR : 0);
        int nRunning = 0;
        curl_multi_socket_action(m_pMulti, tEvent.data.fd, nWhat, &nRunning);
    }

    // --- transfers ---

    int TrySend(CSend& tSend)
    {
        if (m_apSpare.empty())
        {
            m_apSpare.push_back(std::make_unique<CTransfer>());
        }
        CTransfer& tTransfer = *m_apSpare.back();
        m_tTransfers.emplace(&tTransfer, tagSent{nullptr, &tSend}).first->second.pTransfer =
            std::move(m_apSpare.back());
        m_apSpare.pop_back();
        const int nResult = tTransfer.Begin(m_pMulti, *tSend.m_pGroup, tSend.m_tRequest, tSend.m_tAnswer);
        if (nResult != eResultOk)
        {
            Release(tTransfer);
        }
        return nResult;
    }

    static int OnSocket(CURL*, curl_socket_t nFile, int nWhat, void* pThis, void* pKnown)
    {
        auto& tThis = *static_cast<CImpl*>(pThis);
        epoll_event tEvent{};
        tEvent.data.fd = nFile;
        tEvent.events = (nWhat & CURL_POLL_IN ? EPOLLIN : 0U) | (nWhat & CURL_POLL_OUT ? EPOLLOUT : 0U);
        const int nAction = nWhat == CURL_POLL_REMOVE ? EPOLL_CTL_DEL : pKnown ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
        epoll_ctl(tThis.m_nEpoll, nAction, nFile, &tEvent);
        curl_multi_assign(tThis.m_pMulti, nFile, nAction == EPOLL_CTL_DEL ? nullptr : pThis);
        return 0;
    }

    static int OnTimer(CURLM*, long nMilliseconds, void* pThis)
    {
        static_cast<CImpl*>(pThis)->m_tCurlTime =
            nMilliseconds < 0 ? Clock::time_point::max() : Clock::now() + std::chrono::milliseconds(nMilliseconds);
        return 0;
    }

    // --- ends ---

    // It is done with.
    std::coroutine_handle<> Release(CTransfer& tTransfer)
    {
        const auto it = m_tTransfers.find(&tTransfer);
        const auto tCaller = it->second.ptSend->m_tCaller;
        if (m_apSpare.size() < g_nSpareTransfers)
        {
            m_apSpare.push_back(std::move(it->second.pTransfer));
        }
        m_tTransfers.erase(it);
        return tCaller;
    }

    void FinishDone()
    {
        int nLeft = 0;
        while (CURLMsg const* const ptMessage = curl_multi_info_read(m_pMulti, &nLeft))
        {
            if (ptMessage->msg == CURLMSG_DONE)
            {
                CTransfer& tTransfer = CTransfer::Of(ptMessage->easy_handle);
                tTransfer.Finish(ptMessage->data.result);
                Release(tTransfer).resume();
            }
        }
    }

    void FinishPauses(Clock::time_point tNow)
    {
        while (!m_tPauses.empty() && m_tPauses.begin()->first <= tNow)
        {
            CPause* const pPause = m_tPauses.begin()->second;
            m_tPauses.erase(m_tPauses.begin());
            pPause->m_tCaller.resume();
        }
    }

    void FinishWatch(int nFile, bool bReadable)
    {
        epoll_ctl(m_nEpoll, EPOLL_CTL_DEL, nFile, nullptr);
        CReadable* const pReadable = m_tWatched.at(nFile);
        m_tWatched.erase(nFile);
        pReadable->m_bReadable = bReadable;
        pReadable->m_tCaller.resume();
    }

    // Who is resumed may begin new ones, also in the same group; these end by themselves.
    template <class F>
    void FinishIf(F fnEnds)
    {
        std::vector<CTransfer*> aptTransfers;
        for (auto const& [ptTransfer, tSent] : m_tTransfers)
        {
            if (fnEnds(*tSent.ptSend->m_pGroup))
            {
                aptTransfers.push_back(ptTransfer);
            }
        }
        std::vector<int> anWatched;
        for (auto const& [nFile, pReadable] : m_tWatched)
        {
            if (fnEnds(*pReadable->m_pGroup))
            {
                anWatched.push_back(nFile);
            }
        }
        std::vector<CPause*> apPauses;
        std::erase_if(m_tPauses,
                      [&](auto const& tEntry)
                      {
                          const bool bEnds = fnEnds(*tEntry.second->m_pGroup);
                          if (bEnds)
                          {
                              apPauses.push_back(tEntry.second);
                          }
                          return bEnds;
                      });
        for (CTransfer* const ptTransfer : aptTransfers)
        {
            ptTransfer->Abandon(EndedResult(ptTransfer->Group()));
            Release(*ptTransfer).resume();
        }
        for (const int nFile : anWatched)
        {
            FinishWatch(nFile, false);
        }
        for (CPause* const pPause : apPauses)
        {
            pPause->m_tCaller.resume();
        }
    }

    int m_nEpoll = -1;
    int m_nWake = -1;
    CURLM* m_pMulti = nullptr;

    std::mutex m_tMutex;
    std::deque<rtsp::CTask<>> m_atNew;
    std::vector<std::shared_ptr<CHttpGroup>> m_apEnded;
    bool m_bStopping = false;
    std::thread m_tThread;
    std::atomic<std::thread::id> m_tThreadId{};

    // --- the thread's ---
    struct tagSent
    {
        std::unique_ptr<CTransfer> pTransfer;
        CSend* ptSend;
    };
    std::map<CTransfer*, tagSent> m_tTransfers;
    std::multimap<Clock::time_point, CPause*> m_tPauses;
    std::map<int, CReadable*> m_tWatched;
    std::vector<std::unique_ptr<CTransfer>> m_apSpare;
    Clock::time_point m_tCurlTime = Clock::time_point::max();
    std::size_t m_nRunning = 0;
    bool m_bAllEnded = false;
};

CHttp::CHttp() : m_pImpl(std::make_shared<CImpl>()), m_pCallers(std::make_unique<CHttpCallers>()) {}

CHttp::~CHttp()
{
    Stop();
}

void CHttp::Begin(rtsp::CTask<> tTask)
{
    m_pImpl->Begin(std::move(tTask));
}

void CHttp::End(std::shared_ptr<CHttpGroup> const& pGroup, int nResult)
{
    if (pGroup->End(nResult))
    {
        m_pCallers->Wake(*pGroup);
        m_pImpl->End(pGroup);
    }
    pGroup->CloseConnections();
}

void CHttp::Stop()
{
    m_pCallers->Stop();
    m_pImpl->Stop();
}

void CHttp::Start()
{
    m_pImpl->Start();
    m_pCallers->Start();
}

bool CHttp::IsThisThread() const
{
    return m_pImpl->IsThisThread();
}

CHttp::CInside::CInside(CHttp& tHttp)
    : m_ptCallers(!tHttp.IsThisThread() && tHttp.m_pCallers->Enter() ? tHttp.m_pCallers.get() : nullptr)
{
}

CHttp::CInside::~CInside()
{
    if (m_ptCallers)
    {
        m_ptCallers->Leave();
    }
}

CHttp::CSend CHttp::Send(std::shared_ptr<CHttpGroup> pGroup, tagHttpRequest const& tRequest)
{
    return {*this, std::move(pGroup), tRequest};
}

CHttp::CPause CHttp::Until(std::shared_ptr<CHttpGroup> pGroup, Clock::time_point tWhen)
{
    return {*m_pImpl, std::move(pGroup), tWhen};
}

CHttp::CReadable CHttp::Readable(std::shared_ptr<CHttpGroup> pGroup, int nFile)
{
    return {*m_pImpl, std::move(pGroup), nFile};
}

bool CHttp::CSend::await_ready()
{
    const bool bHere = !m_tHttp.IsThisThread();
    if (bHere)
    {
        m_tHttp.m_pCallers->Perform(*m_pGroup, m_tRequest, m_tAnswer);
    }
    return bHere;
}

bool CHttp::CSend::await_suspend(std::coroutine_handle<> tCaller)
{
    m_tCaller = tCaller;
    return m_tHttp.m_pImpl->Send(*this);
}

bool CHttp::CPause::await_suspend(std::coroutine_handle<> tCaller)
{
    m_tCaller = tCaller;
    return m_tImpl.Pause(*this);
}

bool CHttp::CReadable::await_suspend(std::coroutine_handle<> tCaller)
{
    m_tCaller = tCaller;
    return m_tImpl.Watch(*this);
}
} // namespace onvif
