#pragma once

#include "plugins/common/Results.h"
#include "plugins/device/face/Face.h"

#include <vector>

namespace device
{
/// A query, and what it has found.
template <class Result>
class CQuery : public CObject, public plugin::CResults<Result>
{
public:
    CQuery(CObject const& tParent, std::vector<Result> atFound)
        : CObject(tParent.DevicePointer(), tParent.SessionPointer()), plugin::CResults<Result>(std::move(atFound))
    {
    }
    bool Close() override { return true; }
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
