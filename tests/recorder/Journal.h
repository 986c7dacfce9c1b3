#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

/// One call that reached a recorder plug-in.
struct tagCalled
{
    std::string strEntry;                    ///< the entry point's whole name
    std::vector<std::uintptr_t> auArguments; ///< numbers and pointers alike, in order
};

/// What the recorder plug-ins heard, and what they are to answer. One for the process, shared by the plug-ins and the
/// test. Thread-safe.
class __attribute__((visibility("default"))) CJournal
{
public:
    using Handler = std::function<int(tagCalled const&)>;

    static CJournal& Instance();

    /// Forgets calls and answers. From here on every entry point answers 0 and fills in a new handle where it has one.
    void Reset();
    void Answer(std::string const& strEntry, int nResult);
    /// fnHandler runs inside the entry point, on the calling thread.
    void Answer(std::string const& strEntry, Handler fnHandler);
    void WriteHandles(bool bWrite);

    std::vector<tagCalled> Take(); ///< the calls since the last Take, oldest first
    std::uintptr_t LastHandle();

    /// Runs fnDeliver on a thread of the plug-in's own, and waits for it: how a plug-in calls back.
    static void Deliver(std::function<void()> fnDeliver);

    /// From here on pfnObserver hears every call in place of the journal, without a lock: for tests whose threads the
    /// journal's mutex must not put in order. Null ends it.
    using Observer = int(tagCalled const& tCall, void** ppHandle);
    void Observe(Observer* pfnObserver) { m_pfnObserver.store(pfnObserver, std::memory_order_relaxed); }

    /// For the plug-ins. ppHandle: the entry point's handle output, null where it has none.
    int Called(tagCalled tCall, void** ppHandle);

private:
    std::atomic<Observer*> m_pfnObserver = nullptr;
    std::mutex m_tMutex;
    std::vector<tagCalled> m_atCalls;
    std::map<std::string, Handler> m_tAnswers;
    bool m_bWriteHandles = true;
    std::uintptr_t m_uLastHandle = 0x5000;
};
