#pragma once

#include "onvif/Http.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

namespace onvifclient
{
/// What playbacks in step go by: when a picture that was recorded at some time is to be shown. It starts when each
/// member has a picture, and runs at the speed that was asked for; a picture that comes late makes all wait for it, and
/// a gap that all have is left out. Any thread may call any function; none calls anybody.
class CSyncClock
{
public:
    using Time = onvif::Clock::time_point;

    void Join(void const* pMember);
    void Leave(void const* pMember);
    /// What this member had no longer counts: it begins anew.
    void Forget(void const* pMember);
    /// Begins anew: another position, another speed.
    void Restart();
    /// When a member's next picture is to be shown; up to tNow: at once, as always where there is one member alone.
    /// bOthers: those of the others may have become due meanwhile.
    Time Due(void const* pMember, int64_t llTimeUs, double dScale, Time tNow, bool& bOthers);

private:
    struct tagBase
    {
        int64_t llTimeUs; ///< what was recorded then
        Time tAt;         ///< is shown at this time
    };
    static Time At(tagBase const& tBase, int64_t llTimeUs, double dScale);
    bool HaveAll() const;
    int64_t Earliest(double dScale) const;

    std::mutex m_tMutex;
    std::optional<tagBase> m_tBase;                            ///< nothing: it hasn't started
    Time m_tWaits{};                                           ///< since when it could
    std::map<void const*, std::optional<int64_t>> m_tPictures; ///< the furthest of each member
};
} // namespace onvifclient
