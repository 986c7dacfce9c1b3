#pragma once

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

    /// For the plug-ins. ppHandle: the entry point's handle output, null where it has none.
    int Called(tagCalled tCall, void** ppHandle);

private:
    std::mutex m_tMutex;
    std::vector<tagCalled> m_atCalls;
    std::map<std::string, Handler> m_tAnswers;
    bool m_bWriteHandles = true;
    std::uintptr_t m_uLastHandle = 0x5000;
};
