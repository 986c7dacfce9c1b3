#pragma once

#include "plugins/device/Part.h"

#include "protocol/interface/Plugin.h"

#include <string>
#include <vector>

namespace device
{
struct tagStreamState;

/// How the device misbehaves at the moment.
class CFaults : public CPart
{
public:
    using CPart::CPart;

    /// Begins what tFault says, or ends all with eFaultNone. eResultBadArgument; eResultNoChannel.
    int Set(tagDeviceFault const& tFault);
    /// The fault that is on: tFault says of which kind (eFaultNone: any), and of which channel, disk or input; becomes
    /// what was set, with the time and the count that are left. eResultNotFound.
    int Get(tagDeviceFault& tFault) const;
    /// Ends those whose time is over.
    void Advance();
    int64_t NextDue() const;

    /// The fault of this kind, null when it isn't on. dwChannel: TESSARO_ALL where there is none.
    tagDeviceFault const* On(eFaultKind eKind, uint32_t dwChannel = TESSARO_ALL) const;
    /// Whether the next call isn't to be answered; counts it.
    bool TakeHang();
    void Describe(uint32_t dwChannel, tagStreamState& tState) const;

private:
    struct tagActive
    {
        tagDeviceFault tFault;
        int64_t llEndUs;
    };
    void Apply(tagDeviceFault const& tFault, bool bOn);
    void EndAll();

    std::vector<tagActive> m_atActive;
};
} // namespace device
