#pragma once

#include "protocol/interface/Results.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

namespace plugin
{
/// An application's function with its user data: replaced as a pair, and never running when it has been ended. No lock
/// is held while it runs.
template <class Function>
class CCallback
{
public:
    /// A null function ends it. False: one that began before is still running after 2 s, and is the last. From inside
    /// itself it returns at once.
    bool Set(Function pfn, unsigned long dwUser = 0)
    {
        std::unique_lock tLock(m_tMutex);
        if (m_bClosed)
        {
            return true;
        }
        m_pfn = pfn;
        m_dwUser = dwUser;
        return pfn ? true : Await(tLock);
    }
    /// As Set with a null function, for good.
    bool Close()
    {
        std::unique_lock tLock(m_tMutex);
        m_bClosed = true;
        m_pfn = nullptr;
        return Await(tLock);
    }
    explicit operator bool() const
    {
        const std::lock_guard tLock(m_tMutex);
        return m_pfn != nullptr;
    }
    /// Calls it, if there is one, with the user data as its last argument, where it takes it. False: there is none, or
    /// it answered eResultNoEntryPoint, which says the same of whoever stands behind it.
    template <class... A>
    bool Call(A... tArguments)
    {
        std::unique_lock tLock(m_tMutex);
        const Function pfn = m_pfn;
        const unsigned long dwUser = m_dwUser;
        if (!pfn)
        {
            return false;
        }
        m_atRunning.push_back(std::this_thread::get_id());
        tLock.unlock();
        const auto fnCall = [&]
        {
            if constexpr (std::is_invocable_v<Function, A..., unsigned long>)
            {
                return pfn(tArguments..., dwUser);
            }
            else
            {
                return pfn(tArguments...);
            }
        };
        bool bTaken = true;
        if constexpr (std::is_void_v<decltype(fnCall())>)
        {
            fnCall();
        }
        else
        {
            bTaken = fnCall() != eResultNoEntryPoint;
        }
        tLock.lock();
        m_atRunning.erase(std::ranges::find(m_atRunning, std::this_thread::get_id()));
        m_tEnded.notify_all();
        return bTaken;
    }

private:
    bool Await(std::unique_lock<std::mutex>& tLock)
    {
        return m_tEnded.wait_for(tLock, std::chrono::seconds(2),
                                 [this]
                                 {
                                     return std::ranges::all_of(m_atRunning, [](std::thread::id tThread)
                                                                { return tThread == std::this_thread::get_id(); });
                                 });
    }

    mutable std::mutex m_tMutex;
    std::condition_variable m_tEnded;
    std::vector<std::thread::id> m_atRunning;
    Function m_pfn = nullptr;
    unsigned long m_dwUser = 0;
    bool m_bClosed = false;
};
} // namespace plugin
