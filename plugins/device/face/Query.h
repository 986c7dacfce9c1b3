#pragma once

#include "plugins/device/face/Face.h"

#include <vector>

namespace device
{
/// A query, and what it has found.
template <class Result>
class CQuery : public CObject
{
public:
    CQuery(CObject const& tParent, std::vector<Result> atFound)
        : CObject(tParent.DevicePointer(), tParent.SessionPointer()), m_atFound(std::move(atFound))
    {
    }
    bool Close() override { return true; }
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

/// Opens a query: Method answers it. Parent: what the query is asked of.
template <auto Method>
struct tagQuery;
template <class Part, class Factor, class Result, int (Part::*Method)(Factor const&, std::vector<Result>&) const>
struct tagQuery<Method>
{
    template <class Parent>
    static int Open(void** phQuery, void* hParent, Factor* ptFactor)
    {
        return AskWith<Parent>(hParent, eUserViewer,
                               [&](CObject const& tParent) -> int
                               {
                                   Factor tFactor{};
                                   std::vector<Result> atFound;
                                   int nResult = Adapter_ProtocolSet::ReadRecord(tFactor, ptFactor);
                                   if (nResult == eResultOk && phQuery)
                                   {
                                       const CDevice::CLock tLock(tParent.Device());
                                       nResult = (tParent.Device().Part<Part>().*Method)(tFactor, atFound);
                                   }
                                   if (nResult == eResultOk && phQuery)
                                   {
                                       *phQuery = Face().tHandles.Add(
                                           std::make_shared<CQuery<Result>>(tParent, std::move(atFound)));
                                   }
                                   return phQuery ? nResult : int{eResultBadArgument};
                               });
    }
};

/// The next entry of a query.
template <class Result>
int NextEntry(void* hQuery, Result* ptResult)
{
    return AskWith<CQuery<Result>>(hQuery, 0, [&](CQuery<Result>& tQuery) { return tQuery.Next(ptResult); });
}
} // namespace device
