#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"

#include "protocol/interface/Queries.h"

#include <deque>
#include <string>
#include <vector>

namespace device
{
/// What happened, the last 10,000 entries of it.
class CDeviceLog : public CPart
{
public:
    using CPart::CPart;

    /// ptCaller: who did it; null: the device itself.
    void Add(eLogType eType, std::string const& strText, tagCaller const* ptCaller = nullptr, uint32_t dwEvent = 0,
             uint32_t dwChannel = 0);
    void Clear() { m_atEntries.clear(); }
    int Query(tagLogQueryFactor const& tFactor, std::vector<tagLogQueryResult>& atFound) const;
    /// All of it, one line for each entry.
    std::string Text() const;

private:
    std::deque<tagLogQueryResult> m_atEntries;
};
} // namespace device
