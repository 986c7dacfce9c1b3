#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace rtsp
{
using Clock = std::chrono::steady_clock;

/// Whom the loop calls, on one of its threads. Calls may overlap and come late: a tag tells what they belong to. It
/// lives in a shared pointer, of which the loop holds a share as long as something is waited for.
class ILoopClient : public std::enable_shared_from_this<ILoopClient>
{
public:
    virtual void OnReadable(std::uint32_t dwTag) = 0;
    virtual void OnWritable(std::uint32_t dwTag) = 0;
    /// An alarm's time has come, or a waker was raised.
    virtual void OnWake() = 0;

protected:
    ~ILoopClient() = default;
};

/// Waits for sockets and times on a few threads, on which callbacks of the application run too; these may take any
/// time. As long as they are quick, one thread does everything, or as many as it takes, at most one a core. When one of
/// them has slept or computed for longer than 5 ms, two threads are kept free of callbacks, however many are slow at
/// once; some seconds after the last slow one there are few threads again. A callback that only waits for a core isn't
/// slow.
class CLoop
{
public:
    /// Throws std::system_error when no thread can be had.
    CLoop();
    ~CLoop(); ///< stopped
    CLoop(CLoop const&) = delete;
    CLoop& operator=(CLoop const&) = delete;

    /// While it lives, the calling thread runs a callback of the application.
    class CCallbackScope
    {
    public:
        explicit CCallbackScope(CLoop& tLoop);
        ~CCallbackScope();
        CCallbackScope(CCallbackScope const&) = delete;
        CCallbackScope& operator=(CCallbackScope const&) = delete;

    private:
        CLoop& m_tLoop;
    };

    /// Nobody is called any more, and the threads end. Waits until tUntil for those that aren't the caller's own; one
    /// that is inside a callback longer than that ends by itself. What clients still wait for is dropped.
    void Stop(Clock::time_point tUntil);
    /// For a process that is ending: nobody is called any more. Waits until tUntil for threads outside callbacks.
    void Freeze(Clock::time_point tUntil);

private:
    friend class CDescriptor;
    friend class CAlarm;
    friend class CWaker;
    class CImpl;

    const std::shared_ptr<CImpl> m_pImpl; ///< each thread has its share
};

/// A socket of the loop's. One thread at a time.
class CDescriptor
{
public:
    /// Owns nFile from here on, also when it throws. It mustn't block.
    CDescriptor(CLoop& tLoop, int nFile, std::uint32_t dwTag);
    ~CDescriptor(); ///< closes it; nothing that is waited for comes then, but what is on its way
    CDescriptor(CDescriptor const&) = delete;
    CDescriptor& operator=(CDescriptor const&) = delete;

    int File() const;
    std::uint32_t Tag() const { return m_dwTag; }
    /// OnReadable or OnWritable once, as soon as it is; also when it was already. One of each at a time.
    void AwaitReadable(ILoopClient& tClient);
    void AwaitWritable(ILoopClient& tClient);
    /// Nothing waits for writability any more, nor for readability: the loop forgets that anything ever did, and is not
    /// woken for it.
    void ForgetWritable();

private:
    struct tagImpl;
    tagImpl& Impl();
    tagImpl const& Impl() const;

    static constexpr std::size_t nPlace = 64;
    alignas(std::max_align_t) unsigned char m_abyPlace[nPlace]; ///< of a tagImpl: here, since each packet looks at it
    const std::uint32_t m_dwTag;
};

/// One time to be woken at. One thread at a time.
class CAlarm
{
public:
    explicit CAlarm(CLoop& tLoop);
    ~CAlarm();
    CAlarm(CAlarm const&) = delete;
    CAlarm& operator=(CAlarm const&) = delete;

    /// OnWake at tWhen, instead of a time set before.
    void Set(Clock::time_point tWhen, ILoopClient& tClient);
    void Cancel();

private:
    struct tagImpl;
    std::unique_ptr<tagImpl> m_pImpl;
};

/// Makes a client's OnWake run soon on a thread of the loop. Any thread may raise it; that takes no memory. Several
/// times before OnWake begins count as once.
class CWaker
{
public:
    explicit CWaker(CLoop& tLoop) : m_tLoop(tLoop) {}
    CWaker(CWaker const&) = delete;
    CWaker& operator=(CWaker const&) = delete;

    void Raise(ILoopClient& tClient); ///< tClient keeps this waker alive

private:
    static constexpr std::size_t nPlace = 128;
    template <class T>
    struct tagInPlace;
    struct tagHandler;

    CLoop& m_tLoop;
    std::atomic<bool> m_bRaised{false};
    alignas(std::max_align_t) unsigned char m_abyPlace[nPlace];
};
} // namespace rtsp
