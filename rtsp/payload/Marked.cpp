#include "rtsp/payload/Marked.h"
#include "rtsp/Buffers.h"

#include <algorithm>
#include <utility>

namespace rtsp
{
// The marker of the packet before, seen from the one that follows it.
void CMarked::Judge(bool bSameStamp, ePlace eAt, bool bGap)
{
    if (bSameStamp && eAt == ePlace::GoOn)
    {
        m_tMarkers.OnWrong();
    }
    else if (!bGap && (!bSameStamp || eAt == ePlace::Begin))
    {
        m_tMarkers.OnRight();
    }
}

void CMarked::Take(tagRtpPacket const& tPacket, unsigned nLostBefore, IUnitSink& tSink)
{
    const bool bGap = nLostBefore > 0;
    const bool bSameStamp = m_bAny && tPacket.dwStamp == m_tUnit.dwStamp;
    const ePlace eAt = bSameStamp ? Place(tPacket.abyPayload) : ePlace::Unknown;
    const bool bNext = m_bAny && (!bSameStamp || eAt == ePlace::Begin);
    if (m_bMarked)
    {
        Judge(bSameStamp, eAt, bGap);
    }
    if (bNext)
    {
        m_bTooLarge = false;
        if (m_bFrame)
        {
            m_tUnit.bDamaged |= bGap || IsInside(); // its end may be among what is missing
            HandOut(tSink);
        }
    }
    if (!bSameStamp)
    {
        // Time and damage are those of the picture's own packets, not of what came before it.
        m_bAny = true;
        m_tUnit.dwStamp = tPacket.dwStamp;
        m_tUnit.bDamaged = m_tUnit.bDamaged && !m_tUnit.abyData.empty();
        m_tUnit.llRecordedUs.reset();
    }
    m_tUnit.nLostBefore += nLostBefore;
    m_tUnit.bDamaged |= bGap;
    m_tUnit.TakeReplay(tPacket);
    if (!m_bTooLarge)
    {
        Add(tPacket, bGap);
    }
    m_bMarked = tPacket.bMarker && m_bFrame;
    if (m_bMarked && IsInside())
    {
        m_tMarkers.OnWrong();
    }
    else if (m_bMarked && m_tMarkers.EndFrames())
    {
        HandOut(tSink);
    }
}

bool CMarked::Put(Bytes abyMore)
{
    std::vector<unsigned char>& abyData = m_tUnit.abyData;
    if (abyData.size() + abyMore.size() > g_nLargestUnit)
    {
        m_bTooLarge = m_tUnit.bDamaged = true;
        m_bFrame = m_tUnit.bKey = false;
        Forget();
        GiveBuffer(std::exchange(abyData, {}));
        return false;
    }
    if (abyData.capacity() == 0)
    {
        abyData = TakeBuffer(std::max(m_nUsual, abyMore.size()));
    }
    Append(abyData, abyMore);
    return true;
}

void CMarked::HandOut(IUnitSink& tSink)
{
    Finish();
    m_bFrame = false;
    Forget();
    const std::size_t nLength = m_tUnit.abyData.size();
    m_nUsual = std::min(m_nLast, nLength);
    m_nLast = nLength;
    tagUnit tDone = std::exchange(m_tUnit, {});
    m_tUnit.dwStamp = tDone.dwStamp;
    tSink.OnUnit(tDone);
    GiveBuffer(std::move(tDone.abyData));
}

void CMarked::Flush(IUnitSink& tSink)
{
    if (m_bFrame)
    {
        m_tUnit.bDamaged |= IsInside() || !m_bMarked;
        HandOut(tSink);
    }
}

void CMarked::Reset()
{
    Forget();
    GiveBuffer(std::move(m_tUnit.abyData));
    const unsigned nLostBefore = m_tUnit.nLostBefore; // not told yet
    m_tUnit = {};
    m_tUnit.nLostBefore = nLostBefore;
    m_bFrame = m_bAny = m_bMarked = m_bTooLarge = false;
}
} // namespace rtsp
