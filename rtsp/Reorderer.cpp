#include "rtsp/Reorderer.h"
#include "rtsp/Buffers.h"

#include <algorithm>
#include <utility>

namespace rtsp
{
namespace
{
// How far wSequence is ahead of wFrom, on the shorter way round.
int Ahead(std::uint16_t wSequence, std::uint16_t wFrom)
{
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(wSequence - wFrom));
}
} // namespace

void CReorderer::Take(tagRtpPacket const& tPacket, Bytes abyWhole, std::chrono::steady_clock::time_point tNow,
                      IPacketSink& tSink)
{
    int nAhead = m_bAny ? Ahead(tPacket.wSequence, m_wNext) : 0;
    if (nAhead > nLargestGap || nAhead < -nLongestBack || (nAhead < 0 && ProvesRestart(tPacket.wSequence)))
    {
        Restart(tSink);
        m_bRestarted = true;
        nAhead = 0;
    }
    if (nAhead < 0)
    {
        return;
    }
    m_bAny = true;
    m_nLateRun = 0;
    m_wLastCame = tPacket.wSequence;
    if (nAhead == 0)
    {
        Pass(tPacket, 0, tSink);
        if (!m_atHeld.empty())
        {
            PassHeld(tSink);
        }
    }
    else if (m_tWait.count() == 0)
    {
        Pass(tPacket, static_cast<unsigned>(nAhead), tSink);
    }
    else
    {
        Hold(tPacket, abyWhole, tNow);
        while (m_atHeld.size() > nMostHeld)
        {
            SkipGap(tSink);
        }
    }
}

// A source that counts on from a smaller number looks like one whose packets are all late.
bool CReorderer::ProvesRestart(std::uint16_t wSequence)
{
    if (wSequence != m_wLastCame) // else a duplicate, which says nothing
    {
        const bool bNext = m_nLateRun > 0 && Ahead(wSequence, m_wLastCame) == 1;
        m_nLateRun = bNext ? m_nLateRun + 1 : 1;
        m_wLastCame = wSequence;
    }
    return m_nLateRun >= nProof;
}

void CReorderer::Hold(tagRtpPacket const& tPacket, Bytes abyWhole, std::chrono::steady_clock::time_point tNow)
{
    auto itAt = m_atHeld.end();
    while (itAt != m_atHeld.begin() && Ahead(std::prev(itAt)->wSequence, tPacket.wSequence) > 0)
    {
        --itAt;
    }
    if (itAt != m_atHeld.begin() && std::prev(itAt)->wSequence == tPacket.wSequence)
    {
        return;
    }
    tagHeld tHeld{TakeBuffer(abyWhole.size()), tPacket.wSequence, tNow};
    Append(tHeld.abyWhole, abyWhole);
    m_atHeld.insert(itAt, std::move(tHeld));
}

// All that is held up to the next gap.
void CReorderer::PassHeld(IPacketSink& tSink)
{
    std::size_t nPassed = 0;
    while (nPassed < m_atHeld.size() && m_atHeld[nPassed].wSequence == m_wNext)
    {
        tagHeld& tHeld = m_atHeld[nPassed++];
        if (const auto tPacket = ParseRtp(tHeld.abyWhole))
        {
            Pass(*tPacket, 0, tSink);
        }
        GiveBuffer(std::move(tHeld.abyWhole));
    }
    m_atHeld.erase(m_atHeld.begin(), m_atHeld.begin() + static_cast<std::ptrdiff_t>(nPassed));
    if (m_atHeld.empty())
    {
        m_atHeld = {}; // a track at rest is small
    }
}

void CReorderer::SkipGap(IPacketSink& tSink)
{
    tagHeld tFirst = std::move(m_atHeld.front());
    m_atHeld.erase(m_atHeld.begin());
    if (const auto tPacket = ParseRtp(tFirst.abyWhole))
    {
        Pass(*tPacket, static_cast<unsigned>(Ahead(tFirst.wSequence, m_wNext)), tSink);
    }
    GiveBuffer(std::move(tFirst.abyWhole));
    PassHeld(tSink);
}

void CReorderer::Pass(tagRtpPacket const& tPacket, unsigned nLost, IPacketSink& tSink)
{
    m_wNext = static_cast<std::uint16_t>(tPacket.wSequence + 1);
    m_ullLost += nLost;
    tSink.OnPacket(tPacket, nLost, std::exchange(m_bRestarted, false));
}

std::optional<std::chrono::steady_clock::time_point> CReorderer::Deadline() const
{
    if (m_atHeld.empty())
    {
        return std::nullopt;
    }
    // Not always the first one's: it may have come last.
    const auto itOldest =
        std::min_element(m_atHeld.begin(), m_atHeld.end(),
                         [](tagHeld const& tA, tagHeld const& tB) { return tA.tArrived < tB.tArrived; });
    return itOldest->tArrived + m_tWait;
}

void CReorderer::OnDeadline(std::chrono::steady_clock::time_point tNow, IPacketSink& tSink)
{
    for (auto tDue = Deadline(); tDue && *tDue <= tNow; tDue = Deadline())
    {
        SkipGap(tSink);
    }
}

void CReorderer::Restart(IPacketSink& tSink)
{
    while (!m_atHeld.empty())
    {
        SkipGap(tSink);
    }
    Forget();
}

void CReorderer::Forget()
{
    m_atHeld = {};
    m_bAny = false;
    m_bRestarted = false;
    m_nLateRun = 0;
}
} // namespace rtsp
