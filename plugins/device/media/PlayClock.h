#pragma once

#include "protocol/interface/Playback.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace device
{
class CPlayback;

/// At what time of the recordings one playback is, or several that are in step. llNowUs is the pump's clock. All but
/// Mutex need the mutex locked.
class CPlayClock
{
public:
    CPlayClock(int64_t llTimeUs, bool bPaused) : m_bPaused(bPaused), m_llTimeUs(llTimeUs) {}
    /// As the other one stands, and alone.
    CPlayClock(CPlayClock const& tOther)
        : m_bPaused(tOther.m_bPaused), m_bReverse(tOther.m_bReverse), m_dwSpeed(tOther.m_dwSpeed),
          m_dwSteps(tOther.m_dwSteps), m_llTimeUs(tOther.m_llTimeUs), m_llSinceUs(tOther.m_llSinceUs)
    {
    }
    CPlayClock& operator=(CPlayClock const&) = delete;

    std::mutex& Mutex() { return m_tMutex; }

    bool IsPaused() const { return m_bPaused; }
    bool IsReverse() const { return m_bReverse; }
    /// Counts the positions that were set.
    uint32_t Seeks() const { return m_dwSeeks; }
    /// Counts the steps that were asked for.
    uint32_t Steps() const { return m_dwSteps; }

    /// It runs only from here on.
    void Start(int64_t llNowUs) { m_llSinceUs = m_llSinceUs == 0 ? llNowUs : m_llSinceUs; }
    int64_t At(int64_t llNowUs) const
    {
        const int64_t llPassedUs = m_bPaused || m_llSinceUs == 0 ? 0 : (llNowUs - m_llSinceUs) * m_dwSpeed / 1000;
        return m_bReverse ? m_llTimeUs - llPassedUs : m_llTimeUs + llPassedUs;
    }
    /// When it will be at this time, or was; not while it is paused.
    int64_t When(int64_t llTimeUs) const
    {
        const int64_t llAheadUs = m_bReverse ? m_llTimeUs - llTimeUs : llTimeUs - m_llTimeUs;
        return m_llSinceUs + llAheadUs * 1000 / m_dwSpeed;
    }
    /// It is at this time now.
    void Set(int64_t llTimeUs, int64_t llNowUs)
    {
        m_llTimeUs = llTimeUs;
        m_llSinceUs = m_llSinceUs == 0 ? 0 : llNowUs;
    }
    /// The same, because somebody wants it so. It runs on when playing has got there: a pump that comes late mustn't
    /// begin elsewhere, backwards perhaps before the first picture.
    void Seek(int64_t llTimeUs)
    {
        m_llTimeUs = llTimeUs;
        m_llSinceUs = 0;
        ++m_dwSeeks;
    }
    /// In thousandths. Another direction is taken as a position is.
    void SetSpeed(uint32_t dwSpeed, bool bReverse, int64_t llNowUs)
    {
        Set(At(llNowUs), llNowUs);
        m_llSinceUs = bReverse == m_bReverse ? m_llSinceUs : 0;
        m_dwSpeed = dwSpeed;
        m_bReverse = bReverse;
    }
    void Pause(bool bPaused, int64_t llNowUs)
    {
        Set(At(llNowUs), llNowUs);
        m_bPaused = bPaused;
    }
    void Step(int64_t llNowUs)
    {
        Pause(true, llNowUs);
        ++m_dwSteps;
    }

    /// Those that it drives. The first one that still exists leads: it decides when a gap is skipped.
    std::vector<std::weak_ptr<CPlayback>> m_apMembers;

private:
    std::mutex m_tMutex;
    bool m_bPaused;
    bool m_bReverse = false;
    uint32_t m_dwSpeed = eSpeedNormal;
    uint32_t m_dwSeeks = 0;
    uint32_t m_dwSteps = 0;
    int64_t m_llTimeUs;      // at m_llSinceUs
    int64_t m_llSinceUs = 0; // 0: it doesn't run yet
};
} // namespace device
