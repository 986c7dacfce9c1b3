#pragma once

#include "plugins/common/Results.h"
#include "plugins/onvif/Face.h"

#include <vector>

namespace onvifclient
{
/// A query, and what it has found.
template <class Result>
class CQuery final : public CObject
{
public:
    CQuery(std::shared_ptr<CLogin> pLogin, std::vector<Result> atFound)
        : CObject(std::move(pLogin)), m_tResults(std::move(atFound))
    {
    }
    bool Close() override { return true; }
    int Next(Result* ptResult) { return m_tResults.Next(ptResult); }

private:
    plugin::CResults<Result> m_tResults;
};

/// Gives what was found a handle.
template <class Result>
int OpenQuery(void** phQuery, std::shared_ptr<CLogin> pLogin, std::vector<Result> atFound)
{
    *phQuery = Face().tHandles.Add(std::make_shared<CQuery<Result>>(std::move(pLogin), std::move(atFound)));
    return eResultOk;
}

/// The next entry of a query.
template <class Result>
int NextEntry(void* hQuery, Result* ptResult)
{
    return With<CQuery<Result>>(hQuery, [&](CQuery<Result>& tQuery) { return tQuery.Next(ptResult); });
}
} // namespace onvifclient
