#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace device
{
/// Microseconds on a clock that nobody sets.
int64_t SteadyUs();

/// One thread that does things at their time, in order. Any thread may call any function.
class CWorker
{
public:
    using Task = std::function<void()>;

    ~CWorker() { Stop(); }
    void Start();
    /// What has not begun is forgotten. Returns when the thread has ended; from the thread itself, or when a task takes
    /// longer than 2 s, at once: it ends after its task.
    void Stop();
    /// Does nothing while the worker is stopped.
    void At(int64_t llSteadyUs, Task fnTask);
    void Post(Task fnTask) { At(SteadyUs(), std::move(fnTask)); }

private:
    struct tagTask
    {
        int64_t llAtUs;
        uint64_t ullOrder;
        Task fn;
    };
    struct tagState
    {
        std::mutex tMutex;
        std::condition_variable tChanged;
        std::vector<tagTask> atTasks; // a heap, the earliest on top
        uint64_t ullOrder = 0;
        bool bStop = false;
        bool bEnded = false;
    };
    static void Run(std::shared_ptr<tagState> const& pState);

    std::mutex m_tMutex;
    std::shared_ptr<tagState> m_pState; // null: stopped
    std::thread m_tThread;
};

/// Where devices go on by themselves. Never calls an application.
CWorker& TimeWorker();
/// Where callbacks run, but those of frames.
CWorker& DeliveryWorker();
} // namespace device
