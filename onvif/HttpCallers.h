#pragma once

#include "onvif/Http.h"

#include <condition_variable>

namespace onvif
{
/// The requests that callers' threads drive by themselves. Any thread.
class CHttpCallers
{
public:
    CHttpCallers();
    ~CHttpCallers();
    CHttpCallers(CHttpCallers const&) = delete;
    CHttpCallers& operator=(CHttpCallers const&) = delete;

    /// Whoever enters leaves. False after Stop.
    bool Enter();
    void Leave();
    /// Blocks until the answer is there, the time is over, or the group has ended. Between Enter and Leave.
    void Perform(CHttpGroup& tGroup, tagHttpRequest const& tRequest, tagHttpAnswer& tAnswer);
    /// Those of an ended group look at it.
    void Wake(CHttpGroup const& tGroup);
    /// Ends all with eResultNotStarted; returns when all have left.
    void Stop();
    void Start();

private:
    class CDriver;
    class CLease;

    bool MustEnd(CHttpGroup& tGroup) const;

    std::atomic<bool> m_bStopping{false};
    std::mutex m_tMutex;
    std::condition_variable m_tLeft;
    std::size_t m_nInside = 0;
    std::vector<CDriver*> m_apBusy;
    std::vector<std::unique_ptr<CDriver>> m_apSpare;
};
} // namespace onvif
