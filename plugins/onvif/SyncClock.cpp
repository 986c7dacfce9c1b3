#include "plugins/onvif/SyncClock.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
using namespace std::chrono_literals;
using std::chrono::microseconds;

constexpr auto g_tAhead = 100ms; // what pictures may come later than the first ones did
constexpr auto g_tLate = 20ms;   // more is late
constexpr auto g_tGap = 1s;      // more until the next picture is a gap
constexpr auto g_tPatience = 3s; // with who has no picture at the start
} // namespace

void CSyncClock::Join(void const* pMember)
{
    const std::lock_guard tLock(m_tMutex);
    m_tPictures.try_emplace(pMember);
}

void CSyncClock::Leave(void const* pMember)
{
    const std::lock_guard tLock(m_tMutex);
    m_tPictures.erase(pMember);
}

void CSyncClock::Forget(void const* pMember)
{
    const std::lock_guard tLock(m_tMutex);
    if (const auto it = m_tPictures.find(pMember); it != m_tPictures.end())
    {
        it->second.reset();
    }
}

void CSyncClock::Restart()
{
    const std::lock_guard tLock(m_tMutex);
    m_tBase.reset();
    m_tWaits = {};
}

CSyncClock::Time CSyncClock::At(tagBase const& tBase, int64_t llTimeUs, double dScale)
{
    const auto dUs = static_cast<double>(llTimeUs - tBase.llTimeUs) / dScale;
    return tBase.tAt + microseconds(static_cast<int64_t>(dUs));
}

bool CSyncClock::HaveAll() const
{
    return std::ranges::all_of(m_tPictures, [](auto const& t) { return t.second.has_value(); });
}

// Of what is there.
int64_t CSyncClock::Earliest(double dScale) const
{
    std::optional<int64_t> tFound;
    for (auto const& [pMember, tPicture] : m_tPictures)
    {
        if (tPicture && (!tFound || (dScale > 0 ? *tPicture < *tFound : *tPicture > *tFound)))
        {
            tFound = tPicture;
        }
    }
    return tFound.value_or(0);
}

CSyncClock::Time CSyncClock::Due(void const* pMember, int64_t llTimeUs, double dScale, Time tNow, bool& bOthers)
{
    const std::lock_guard tLock(m_tMutex);
    const auto it = m_tPictures.find(pMember);
    if (it == m_tPictures.end() || m_tPictures.size() < 2)
    {
        return tNow;
    }
    // Pictures that are sent in another order than they are shown in.
    if (it->second && (dScale > 0 ? llTimeUs < *it->second : llTimeUs > *it->second))
    {
        return tNow;
    }
    it->second = llTimeUs;
    if (!m_tBase)
    {
        m_tWaits = m_tWaits == Time{} ? tNow : m_tWaits;
        if (!HaveAll() && tNow < m_tWaits + g_tPatience)
        {
            return m_tWaits + g_tPatience;
        }
        m_tBase = {Earliest(dScale), tNow + g_tAhead};
        bOthers = true;
    }
    Time tDue = At(*m_tBase, llTimeUs, dScale);
    if (tDue + g_tLate < tNow)
    {
        m_tBase->tAt += tNow - tDue;
        tDue = tNow;
    }
    else if (tDue > tNow + g_tGap && HaveAll())
    {
        const Time tNext = At(*m_tBase, Earliest(dScale), dScale);
        if (tNext > tNow + g_tGap)
        {
            m_tBase->tAt -= tNext - tNow;
            tDue -= tNext - tNow;
            bOthers = true;
        }
    }
    return tDue;
}
} // namespace onvifclient
