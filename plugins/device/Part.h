#pragma once

#include "protocol/interface/Results.h"

#include <cstdint>
#include <limits>

namespace device
{
class CDevice;

/// A point of time that doesn't come.
inline constexpr int64_t g_llNever = std::numeric_limits<int64_t>::max();

/// One subject of a device. All its functions run with the device locked, and after its time has come to now: see
/// CDevice::CLock. Times are those of SteadyUs.
class CPart
{
public:
    explicit CPart(CDevice& tDevice) : m_tDevice(tDevice) {}
    CPart(CPart const&) = delete;
    CPart& operator=(CPart const&) = delete;

protected:
    ~CPart() = default;
    CDevice& m_tDevice;
};
} // namespace device
