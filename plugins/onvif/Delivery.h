#pragma once

#include "rtsp/Loop.h"
#include "rtsp/Stream.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace onvifclient
{
/// Calls of the application, in their order, one at a time, on the threads of the RTSP engine; they may take any time.
/// Lives in a shared pointer.
class CDelivery final : public rtsp::ILoopClient
{
public:
    explicit CDelivery(std::shared_ptr<rtsp::CEngine> pEngine);
    ~CDelivery() = default;

    /// Any thread. fnCall throws nothing.
    void Add(std::function<void()> fnCall);
    /// What hasn't begun is dropped, and nothing begins any more. Doesn't wait.
    void Close();

private:
    void OnReadable(std::uint32_t) override {}
    void OnWritable(std::uint32_t) override {}
    void OnWake() override;

    const std::shared_ptr<rtsp::CEngine> m_pEngine;
    rtsp::CWaker m_tWaker;
    std::mutex m_tMutex;
    std::deque<std::function<void()>> m_afnCalls;
    bool m_bRunning = false;
    bool m_bClosed = false;
};
} // namespace onvifclient
