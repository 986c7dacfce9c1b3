#include "tests/recorder/Journal.h"

#include <thread>
#include <utility>

CJournal& CJournal::Instance()
{
    static auto* const g_pJournal = new CJournal; // outlives plug-in threads at exit
    return *g_pJournal;
}

void CJournal::Reset()
{
    const std::lock_guard tLock(m_tMutex);
    m_atCalls.clear();
    m_tAnswers.clear();
    m_bWriteHandles = true;
}

void CJournal::Answer(std::string const& strEntry, int nResult)
{
    Answer(strEntry, [nResult](tagCalled const&) { return nResult; });
}

void CJournal::Answer(std::string const& strEntry, Handler fnHandler)
{
    const std::lock_guard tLock(m_tMutex);
    m_tAnswers[strEntry] = std::move(fnHandler);
}

void CJournal::WriteHandles(bool bWrite)
{
    const std::lock_guard tLock(m_tMutex);
    m_bWriteHandles = bWrite;
}

std::vector<tagCalled> CJournal::Take()
{
    const std::lock_guard tLock(m_tMutex);
    return std::exchange(m_atCalls, {});
}

std::uintptr_t CJournal::LastHandle()
{
    const std::lock_guard tLock(m_tMutex);
    return m_uLastHandle;
}

void CJournal::Deliver(std::function<void()> fnDeliver)
{
    std::thread(std::move(fnDeliver)).join();
}

int CJournal::Called(tagCalled tCall, void** ppHandle)
{
    if (auto* const pfnObserver = m_pfnObserver.load(std::memory_order_relaxed))
    {
        return pfnObserver(tCall, ppHandle);
    }
    Handler fnAnswer;
    {
        const std::lock_guard tLock(m_tMutex);
        m_atCalls.push_back(tCall);
        if (ppHandle && m_bWriteHandles)
        {
            *ppHandle = reinterpret_cast<void*>(m_uLastHandle += 0x10);
        }
        if (const auto itAnswer = m_tAnswers.find(tCall.strEntry); itAnswer != m_tAnswers.end())
        {
            fnAnswer = itAnswer->second;
        }
    }
    return fnAnswer ? fnAnswer(tCall) : 0;
}
