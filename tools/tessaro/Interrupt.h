#pragma once

#include <atomic>

namespace tessaro
{
/// Lets threads of plug-ins wake the main thread, and Ctrl-C end what it does. One object in the process.
class CInterrupt
{
public:
    static CInterrupt& Instance();

    /// From now on SIGINT and SIGTERM set Asked instead of ending the process.
    void Catch();
    /// Somebody pressed Ctrl-C.
    bool Asked() const { return m_bAsked; }
    /// Wakes the main thread. Any thread, also from a signal.
    void Wake();
    /// Until somebody wakes it, nFile has something to read (-1: none), or so long. False: Ctrl-C was pressed.
    bool Wait(int nMilliseconds, int nFile = -1);

private:
    CInterrupt();
    std::atomic<bool> m_bAsked = false;
    int m_nEvent;
};

/// Waits in steps until fnDone says so, Ctrl-C, or so long (negative: for ever). What fnDone says at the end.
template <class F>
bool WaitUntil(F fnDone, long long llMilliseconds);

long long NowMs(); ///< a clock that isn't set
long long NowUs(); ///< microseconds since 1970 UTC

template <class F>
bool WaitUntil(F fnDone, long long llMilliseconds)
{
    const long long llEnd = NowMs() + llMilliseconds;
    while (!fnDone())
    {
        const long long llLeft = llMilliseconds < 0 ? 3600000 : llEnd - NowMs();
        if (llLeft <= 0 || !CInterrupt::Instance().Wait(static_cast<int>(llLeft < 3600000 ? llLeft : 3600000)))
        {
            return fnDone();
        }
    }
    return true;
}
} // namespace tessaro
