#pragma once

#include "rtsp/Task.h"

#include <array>
#include <atomic>
#include <chrono>
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
    std::size_t nMost = 8U << 20; ///< bytes of an answer
    std::function<void(std::uint64_t)> fnSent =
        {}; ///< hears while it is sent how much of the body has gone; null: nobody
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

/// What belongs together and is ended together: the requests, waits and connections of one login. Any thread may end
/// it.
class CHttpGroup
{
public:
    CHttpGroup() = default;
    ~CHttpGroup();
    CHttpGroup(CHttpGroup const&) = delete;
    CHttpGroup& operator=(CHttpGroup const&) = delete;

    bool IsEnded() const { return m_nEnded != 0; }
    /// What those that were ended answer.
    int Result() const { return m_nEnded; }

private:
    friend class CHttp;
    friend class CHttpCallers;
    friend class CTransfer;

    /// False: it was ended before.
    bool End(int nResult);
    /// A connection that nobody uses, for one transfer: a libcurl share. Null: none can be had.
    void* TakeConnection();
    void ReturnConnection(void* pConnection);
    void CloseConnections();

    std::atomic<int> m_nEnded{0};
    std::mutex m_tMutex;
    std::array<void*, 4> m_apIdle{};
    std::size_t m_nIdle = 0;
};

class CHttpCallers;

/// Speaks HTTP with all devices, by coroutines. Where an application waits for an answer, its own thread sends and
/// reads (Run). All else is done by one thread, which begins with the first task: coroutines run on it and wait there
/// for answers and times; nothing on it may block, and callbacks of the application never run on it.
class CHttp
{
public:
    CHttp();
    ~CHttp();
    CHttp(CHttp const&) = delete;
    CHttp& operator=(CHttp const&) = delete;

    // --- any thread ---

    /// Runs a coroutine on the thread; it is owned there until it ends. After Stop it doesn't begin.
    void Begin(rtsp::CTask<> tTask);
    /// Runs a coroutine here, which may await Send and nothing else of ours: it blocks there. On the thread itself:
    /// nothing, at once. Also nothing after Stop, and when there is no memory.
    template <class T>
    std::optional<T> Run(rtsp::CTask<T> tTask);
    /// Ends what waits in this group, with nResult, and what will: at once, but not before this returns. Its
    /// connections are closed.
    void End(std::shared_ptr<CHttpGroup> const& pGroup, int nResult);
    /// Ends everything with eResultNotStarted; returns when all tasks have ended and the thread too. Not on the thread.
    void Stop();
    /// After a Stop: tasks begin again.
    void Start();
    bool IsThisThread() const;

    // --- coroutines ---

    class CSend;
    class CPause;
    class CReadable;
    /// co_await it: a tagHttpAnswer. tRequest stays until then.
    CSend Send(std::shared_ptr<CHttpGroup> pGroup, tagHttpRequest const& tRequest);
    /// On the thread. co_await it: false when the group was ended before.
    CPause Until(std::shared_ptr<CHttpGroup> pGroup, Clock::time_point tWhen);
    /// On the thread. co_await it: true when the socket nFile has something to read, false when the group was ended
    /// before. One waits for a socket.
    CReadable Readable(std::shared_ptr<CHttpGroup> pGroup, int nFile);

private:
    class CImpl;
    /// While a caller's coroutine runs.
    class CInside
    {
    public:
        explicit CInside(CHttp& tHttp);
        ~CInside();
        CInside(CInside const&) = delete;
        CInside& operator=(CInside const&) = delete;
        explicit operator bool() const { return m_ptCallers != nullptr; }

    private:
        CHttpCallers* m_ptCallers; ///< null: it may not run
    };

    const std::shared_ptr<CImpl> m_pImpl;
    const std::unique_ptr<CHttpCallers> m_pCallers;
};

/// Waits for an answer.
class CHttp::CSend
{
public:
    /// True on a caller's thread, which has waited here.
    bool await_ready();
    bool await_suspend(std::coroutine_handle<> tCaller);
    tagHttpAnswer await_resume() { return std::move(m_tAnswer); }

private:
    friend class CHttp;
    friend class CHttp::CImpl;
    CSend(CHttp& tHttp, std::shared_ptr<CHttpGroup> pGroup, tagHttpRequest const& tRequest)
        : m_tHttp(tHttp), m_pGroup(std::move(pGroup)), m_tRequest(tRequest)
    {
    }

    CHttp& m_tHttp;
    std::shared_ptr<CHttpGroup> m_pGroup;
    tagHttpRequest const& m_tRequest;
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
std::optional<T> CHttp::Run(rtsp::CTask<T> tTask)
{
    const CInside tInside(*this);
    if (!tInside)
    {
        return std::nullopt;
    }
    try
    {
        tTask.Begin();
        return tTask.Result();
    }
    catch (...) // no memory
    {
        return std::nullopt;
    }
}
} // namespace onvif
