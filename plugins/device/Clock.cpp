#include "plugins/device/Clock.h"

#include "plugins/device/Worker.h"

#include <chrono>

namespace device
{
CClock::CClock()
    : m_llSteadyUs(SteadyUs()), m_llBaseUs(std::chrono::duration_cast<std::chrono::microseconds>(
                                               std::chrono::system_clock::now().time_since_epoch())
                                               .count())
{
}

int64_t CClock::Read(int64_t llSteadyUs) const
{
    const int64_t llPassedUs = llSteadyUs - m_llSteadyUs;
    return m_llBaseUs + llPassedUs + llPassedUs / 1000000 * m_nDrift + llPassedUs % 1000000 * m_nDrift / 1000000;
}

int64_t CClock::NowUs() const
{
    const std::lock_guard tLock(m_tMutex);
    return Read(SteadyUs());
}

void CClock::Jump(int64_t llByUs)
{
    const std::lock_guard tLock(m_tMutex);
    m_llBaseUs += llByUs;
}

void CClock::Drift(int32_t nPartsPerMillion)
{
    const std::lock_guard tLock(m_tMutex);
    const int64_t llSteadyUs = SteadyUs();
    m_llBaseUs = Read(llSteadyUs);
    m_llSteadyUs = llSteadyUs;
    m_nDrift = nPartsPerMillion;
}
} // namespace device
