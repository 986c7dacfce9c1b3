#pragma once

#include <cstdint>
#include <mutex>

namespace device
{
/// A device's clock. Any thread.
class CClock
{
public:
    CClock();
    /// Microseconds since 1970 UTC.
    int64_t NowUs() const;
    /// Sets it forward, or back.
    void Jump(int64_t llByUs);
    /// From now on it runs too fast by so many parts in a million; 0: true.
    void Drift(int32_t nPartsPerMillion);

private:
    int64_t Read(int64_t llSteadyUs) const;

    mutable std::mutex m_tMutex;
    int64_t m_llSteadyUs; // when it showed m_llBaseUs
    int64_t m_llBaseUs;
    int32_t m_nDrift = 0;
};
} // namespace device
