#pragma once

#include "rtsp/Task.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <coroutine>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace onvif
{
using Clock = std::chrono::steady_clock;

/// What is sent.
struct tagHttpRequest
{
    std::string strUrl;
    std::string strBody; ///< empty: GET
    std::string strType; ///< Content-Type of the body
    std::string strAuthorization;
    std::chrono::milliseconds tLimit{5000}; ///< for the whole of it
    bool bCheckCertificate = false;
    std::size_t nMost = 8U << 20;                   ///< bytes of an answer
    std::function<void(std::uint64_t)> fnSent = {}; ///< hears on the thread how much of the body has gone; null: nobody
};

/// What came.
struct tagHttpAnswer
{
    int nResult = 0; ///< 0: an answer, whatever its status; else an ePluginResult
    int nStatus = 0;
    std::string strBody;
    std::string strType;
    std::string strLocation; ///< of a redirection
    std::string strDate;
    std::vector<std::string> astrChallenges; ///< WWW-Authenticate
    std::string strError;                    ///< for a line in a log
};

/// A Date header's time in microseconds since 1970; nothing: it is none.
std::optional<std::int64_t> ParseHttpDate(std::string const& strDate);

/// What belongs together and is ended together: the requests and waits of one login. Any thread may end it.
class CHttpGroup
{
public:
    bool IsEnded() const { return m_nEnded != 0; }
    /// What those that were ended answer.
    int Result() const { return m_nEnded; }

private:
    friend class CHttp;
    std::atomic<int> m_nEnded{0};
};

/// One thread that speaks HTTP with all devices. Coroutines run on it and wait there for answers and times; nothing on
/// it may block. Callbacks of the application never run on it, so that these may make calls which wait for it.
class CHttp
{
public:
    CHttp(); ///< its thread begins with the first task
    ~CHttp();
    CHttp(CHttp const&) = delete;
    CHttp& operator=(CHttp const&) = delete;

    // --- any thread ---

    /// Runs a coroutine on the thread; it is owned there until it ends. After Stop it doesn't begin.
    void Begin(rtsp::CTask<> tTask);
    /// The same, and waits for its result. On the thread itself: nothing, at once. Also nothing after Stop.
    template <class T>
    std::optional<T> Wait(rtsp::CTask<T> tTask);
    /// Ends what waits in this group, with nResult, and what will: at once, but not before this returns.
    void End(std::shared_ptr<CHttpGroup> const& pGroup, int nResult);
    /// Ends everything with eResultNotStarted; returns when all tasks have ended and the thread too. Not on the thread.
    void Stop();
    /// After a Stop: tasks begin again.
    void Start();
    bool IsThisThread() const;

    // --- the thread's coroutines ---

    class CSend;
    class CPause;
    class CReadable;
    /// co_await it: a tagHttpAnswer.
    CSend Send(std::shared_ptr<CHttpGroup> pGroup, tagHttpRequest tRequest);
    /// co_await it: false when the group was ended before.
    CPause Until(std::shared_ptr<CHttpGroup> pGroup, Clock::time_point tWhen);
    /// co_await it: true when the socket nFile has something to read, false when the group was ended before. One waits
    /// for a socket.
    CReadable Readable(std::shared_ptr<CHttpGroup> pGroup, int nFile);

private:
    class CImpl;
    struct tagWaiter
    {
        std::mutex tMutex;
        std::condition_variable tChanged;
        bool bDone = false;
    };
    static void Notify(tagWaiter& tWaiter);
    static void Await(tagWaiter& tWaiter);
    template <class T>
    static rtsp::CTask<> Store(rtsp::CTask<T> tTask, std::shared_ptr<std::optional<T>> pResult,
                               std::shared_ptr<tagWaiter> pWaiter);
    /// False: it doesn't begin.
    bool TryBegin(rtsp::CTask<> tTask);

    const std::shared_ptr<CImpl> m_pImpl;
};

/// Waits for an answer.
class CHttp::CSend
{
public:
    bool await_ready() const { return false; }
    bool await_suspend(std::coroutine_handle<> tCaller);
    tagHttpAnswer await_resume() { return std::move(m_tAnswer); }

private:
    friend class CHttp;
    friend class CHttp::CImpl;
    CSend(CImpl& tImpl, std::shared_ptr<CHttpGroup> pGroup, tagHttpRequest tRequest)
        : m_tImpl(tImpl), m_pGroup(std::move(pGroup)), m_tRequest(std::move(tRequest))
    {
    }

    CImpl& m_tImpl;
    std::shared_ptr<CHttpGroup> m_pGroup;
    tagHttpRequest m_tRequest;
    tagHttpAnswer m_tAnswer;
    std::coroutine_handle<> m_tCaller;
};

/// Waits for a time.
class CHttp::CPause
{
public:
    bool await_ready() const { return false; }
    bool await_suspend(std::coroutine_handle<> tCaller);
    bool await_resume() const { return !m_pGroup->IsEnded(); }

private:
    friend class CHttp;
    friend class CHttp::CImpl;
    CPause(CImpl& tImpl, std::shared_ptr<CHttpGroup> pGroup, Clock::time_point tWhen)
        : m_tImpl(tImpl), m_pGroup(std::move(pGroup)), m_tWhen(tWhen)
    {
    }

    CImpl& m_tImpl;
    std::shared_ptr<CHttpGroup> m_pGroup;
    Clock::time_point m_tWhen;
    std::coroutine_handle<> m_tCaller;
};

/// Waits for a datagram.
class CHttp::CReadable
{
public:
    bool await_ready() const { return false; }
    bool await_suspend(std::coroutine_handle<> tCaller);
    bool await_resume() const { return m_bReadable; }

private:
    friend class CHttp;
    friend class CHttp::CImpl;
    CReadable(CImpl& tImpl, std::shared_ptr<CHttpGroup> pGroup, int nFile)
        : m_tImpl(tImpl), m_pGroup(std::move(pGroup)), m_nFile(nFile)
    {
    }

    CImpl& m_tImpl;
    std::shared_ptr<CHttpGroup> m_pGroup;
    int m_nFile;
    bool m_bReadable = false;
    std::coroutine_handle<> m_tCaller;
};

template <class T>
rtsp::CTask<> CHttp::Store(rtsp::CTask<T> tTask, std::shared_ptr<std::optional<T>> pResult,
                           std::shared_ptr<tagWaiter> pWaiter)
{
    struct tagDone
    {
        ~tagDone() { Notify(tWaiter); }
        tagWaiter& tWaiter;
    } tDone{*pWaiter};
    try
    {
        pResult->emplace(co_await tTask);
    }
    catch (...) // no memory: nothing
    {
    }
}

template <class T>
std::optional<T> CHttp::Wait(rtsp::CTask<T> tTask)
{
    const auto pResult = std::make_shared<std::optional<T>>();
    const auto pWaiter = std::make_shared<tagWaiter>();
    if (IsThisThread() || !TryBegin(Store<T>(std::move(tTask), pResult, pWaiter)))
    {
        return std::nullopt;
    }
    Await(*pWaiter);
    return std::move(*pResult);
}
} // namespace onvif
