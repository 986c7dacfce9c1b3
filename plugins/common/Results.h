#pragma once

#include "protocol/Record.h"

#include <mutex>
#include <utility>
#include <vector>

namespace plugin
{
/// What a query has found, to be fetched one by one. Any thread.
template <class Result>
class CResults
{
public:
    explicit CResults(std::vector<Result> atFound) : m_atFound(std::move(atFound)) {}

    int Next(Result* ptResult)
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_nNext == m_atFound.size())
        {
            return Adapter_ProtocolSet::SharedSize(ptResult) ? int{eResultNoMoreEntries} : int{eResultBadArgument};
        }
        const int nResult = Adapter_ProtocolSet::WriteRecord(ptResult, m_atFound[m_nNext]);
        m_nNext += nResult == eResultOk ? 1 : 0;
        return nResult;
    }

private:
    std::mutex m_tMutex;
    std::vector<Result> m_atFound;
    std::size_t m_nNext = 0;
};
} // namespace plugin
