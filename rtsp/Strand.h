#pragma once

#include "rtsp/Loop.h"
#include "rtsp/Task.h"

#include <coroutine>
#include <mutex>
#include <utility>

namespace rtsp
{
/// What belongs to one stream runs one at a time, whichever thread it runs on: handlers of sockets, and one coroutine,
/// which waits for something to have happened. Unlike a queue of handlers a strand is left in the middle of a handler's
/// thread: who has read a frame leaves the strand and delivers the frame itself, while another thread reads on.
class CStrand
{
public:
    CStrand(CLoop& tLoop, ILoopClient& tClient) : m_tClient(tClient), m_tAlarm(tLoop) {}
    CStrand(CStrand const&) = delete;
    CStrand& operator=(CStrand const&) = delete;

    /// Runs fn, then the coroutine if it has something to look at.
    template <class F>
    void Enter(F fn)
    {
        const std::lock_guard tLock(m_tMutex);
        fn();
        GoOn();
    }
    /// Runs fn and nothing else, for threads that aren't the loop's.
    template <class F>
    void Visit(F fn)
    {
        const std::lock_guard tLock(m_tMutex);
        fn();
    }

    // --- inside the strand ---

    /// Something happened that the coroutine must look at.
    void Notify() { m_bHappened = true; }
    /// The client's OnWake: the alarm's time may have come, or somebody raised the waker.
    void OnWake()
    {
        m_tAlarmAt = Clock::time_point::max();
        m_bHappened = true;
    }
    /// The coroutine isn't run any more.
    void Forget()
    {
        m_tWaiting = nullptr;
        CancelAlarm();
    }
    /// Waits until something happened, or until tUntil. Look what it was: it may be nothing.
    auto Next(Clock::time_point tUntil)
    {
        struct tagWait
        {
            bool await_ready() { return std::exchange(tStrand.m_bHappened, false); }
            void await_suspend(std::coroutine_handle<> tSelf) { tStrand.m_tWaiting = tSelf; }
            void await_resume() {}
            CStrand& tStrand;
        };
        WakeAt(tUntil);
        return tagWait{*this};
    }
    /// The coroutine is to look then at the latest.
    void WakeAt(Clock::time_point tWhen)
    {
        if (tWhen < m_tAlarmAt)
        {
            m_tAlarm.Set(tWhen, m_tClient);
            m_tAlarmAt = tWhen;
        }
    }
    void CancelAlarm()
    {
        m_tAlarm.Cancel();
        m_tAlarmAt = Clock::time_point::max();
    }

private:
    void GoOn()
    {
        while (m_bHappened && m_tWaiting)
        {
            m_bHappened = false;
            std::exchange(m_tWaiting, nullptr).resume();
        }
    }

    std::mutex m_tMutex;
    ILoopClient& m_tClient;
    CAlarm m_tAlarm;
    Clock::time_point m_tAlarmAt = Clock::time_point::max();
    std::coroutine_handle<> m_tWaiting;
    bool m_bHappened = false;
};
} // namespace rtsp
