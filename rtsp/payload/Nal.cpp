#include "rtsp/payload/Nal.h"
#include "rtsp/Buffers.h"
#include "rtsp/payload/Encoded.h"

#include <algorithm>

namespace rtsp
{
namespace
{
constexpr unsigned char g_abyStart[] = {0, 0, 0, 1};

// Where the next start code of three bytes begins; the end when there is none.
std::size_t FindStart(Bytes abyData, std::size_t nFrom)
{
    constexpr unsigned char abyShort[] = {0, 0, 1};
    return static_cast<std::size_t>(std::search(abyData.begin() + static_cast<std::ptrdiff_t>(nFrom), abyData.end(),
                                                std::begin(abyShort), std::end(abyShort)) -
                                    abyData.begin());
}
} // namespace

CNal::CNal(tagMediaDescription const& tDescription, eMediaCodec eCodec, std::string_view strName)
    : CMarked(tDescription, eCodec, strName), m_tSets(eCodec == eCodecH265)
{
}

void CNal::TakeSets(std::string_view strSets)
{
    while (!strSets.empty())
    {
        const std::size_t nEnd = std::min(strSets.find(','), strSets.size());
        const std::vector<unsigned char> abySet = FromBase64(strSets.substr(0, nEnd));
        ForEachUnit(abySet,
                    [this](Bytes abyUnit)
                    {
                        if (const auto eSet = KindOf(abyUnit).eSet)
                        {
                            m_tSets.Take(*eSet, abyUnit);
                        }
                    });
        strSets.remove_prefix(std::min(nEnd + 1, strSets.size()));
    }
    if (const Bytes abySet = m_tSets.Sequence(0); !abySet.empty())
    {
        FindSize(abySet);
    }
}

tagNalKind CNal::KindOf(Bytes abyUnit) const
{
    return Kind(abyUnit.first(HeaderLength()), abyUnit.subspan(HeaderLength()));
}

// Some devices put several units with start codes where one without belongs. Only what begins like that, or is no
// slice, is searched for more: slices are large, and what follows them there is right in a byte stream as it is.
template <class F>
void CNal::ForEachUnit(Bytes abyUnits, F fnUnit) const
{
    const auto fnTake = [&](Bytes abyUnit)
    {
        if (abyUnit.size() >= HeaderLength())
        {
            fnUnit(abyUnit);
        }
    };
    const std::size_t nFirst = FindStart(abyUnits.first(std::min<std::size_t>(abyUnits.size(), 4)), 0);
    if (nFirst >= 2 && (abyUnits.size() < HeaderLength() || KindOf(abyUnits).bSlice))
    {
        fnTake(abyUnits);
        return;
    }
    for (std::size_t nBegin = 0; nBegin < abyUnits.size();)
    {
        const std::size_t nNext = FindStart(abyUnits, nBegin);
        std::size_t nEnd = nNext;
        while (nNext < abyUnits.size() && nEnd > nBegin && abyUnits[nEnd - 1] == 0) // of a longer start code
        {
            --nEnd;
        }
        fnTake(abyUnits.subspan(nBegin, nEnd - nBegin));
        nBegin = nNext + 3;
    }
}

CMarked::ePlace CNal::Place(Bytes abyPayload) const
{
    ePlace eAt = ePlace::Unknown;
    const auto fnSee = [&](tagNalKind const& tKind)
    {
        if (eAt == ePlace::Unknown && (tKind.bSlice || tKind.bDelimiter))
        {
            eAt = tKind.bFirstSlice || tKind.bDelimiter ? ePlace::Begin : ePlace::GoOn;
        }
    };
    Split(abyPayload,
          [&](tagNalPiece const& tPiece)
          {
              if (!tPiece.bFragment)
              {
                  ForEachUnit(tPiece.abyBody, [&](Bytes abyUnit) { fnSee(KindOf(abyUnit)); });
              }
              else if (tPiece.bBegin)
              {
                  fnSee(Kind(tPiece.abyHeader, tPiece.abyBody));
              }
          });
    return eAt;
}

void CNal::Add(tagRtpPacket const& tPacket, bool bGap)
{
    if (bGap)
    {
        CutUnit();
    }
    if (!Split(tPacket.abyPayload, [this](tagNalPiece const& tPiece) { AddPiece(tPiece); }))
    {
        m_tUnit.bDamaged = true;
    }
}

void CNal::AddPiece(tagNalPiece const& tPiece)
{
    if (tPiece.bFragment)
    {
        AddFragment(tPiece);
        return;
    }
    CutUnit();
    ForEachUnit(tPiece.abyBody, [this](Bytes abyUnit) { AddUnit(abyUnit); });
}

void CNal::AddFragment(tagNalPiece const& tPiece)
{
    if (tPiece.bBegin)
    {
        CutUnit();
        m_nUnit = m_tUnit.abyData.size();
        if (!Put(g_abyStart) || !Put(tPiece.abyHeader))
        {
            return;
        }
        const tagNalKind tKind = Kind(tPiece.abyHeader, tPiece.abyBody);
        m_bInside = true;
        m_bInsideSlice = tKind.bSlice;
    }
    else if (!m_bInside)
    {
        m_tUnit.bDamaged = true; // the rest of a unit whose beginning is missing is of no use
        return;
    }
    if (!Put(tPiece.abyBody))
    {
        return;
    }
    const Bytes abyUnit = Bytes(m_tUnit.abyData).subspan(m_nUnit + sizeof g_abyStart);
    if (tPiece.bBegin && m_bInsideSlice)
    {
        Look(KindOf(abyUnit), abyUnit);
    }
    if (tPiece.bEnd)
    {
        m_bInside = false;
        if (!m_bInsideSlice) // what it is can be told now that it is whole
        {
            const std::vector<unsigned char> abyWhole(abyUnit.begin(), abyUnit.end());
            m_tUnit.abyData.resize(m_nUnit);
            ForEachUnit(abyWhole, [this](Bytes abyOne) { AddUnit(abyOne); });
        }
    }
}

// The unit that is being put together goes on no further.
void CNal::CutUnit()
{
    if (m_bInside)
    {
        m_bInside = false;
        m_tUnit.bDamaged = true;
        m_tUnit.abyData.resize(m_bInsideSlice ? m_tUnit.abyData.size() : m_nUnit);
    }
}

void CNal::AddUnit(Bytes abyUnit)
{
    const tagNalKind tKind = KindOf(abyUnit);
    if (tKind.eSet)
    {
        m_tSets.Take(*tKind.eSet, abyUnit);
        m_bSetsInFront |= !m_bFrame;
        return;
    }
    const bool bFirst = m_tUnit.abyData.empty();
    if (!Put(g_abyStart) || !Put(abyUnit))
    {
        return;
    }
    if (bFirst && tKind.bDelimiter)
    {
        m_nDelimiter = m_tUnit.abyData.size();
    }
    Look(tKind, abyUnit);
}

void CNal::Look(tagNalKind const& tKind, Bytes abyUnit)
{
    m_tUnit.bDamaged |= tKind.bSlice && !m_bFrame && !tKind.bFirstSlice; // earlier slices are missing
    m_bFrame |= tKind.bSlice;
    m_tUnit.bKey |= tKind.bKey;
    if (tKind.bFirstSlice && m_tUnit.bKey)
    {
        m_dwPictureSet = PictureSet(abyUnit);
    }
}

void CNal::Finish()
{
    m_tUnit.bKey &= m_tSets.AreComplete();
    if (m_tUnit.bKey || m_bSetsInFront)
    {
        // Behind an access unit delimiter, if there is one: it has to stay first.
        std::vector<unsigned char>& abyData = m_tUnit.abyData;
        const std::vector<unsigned char> abySets = m_tSets.Stream();
        const std::size_t nBefore = abyData.size();
        Append(abyData, abySets);
        const auto fnAt = [&](std::size_t n) { return abyData.begin() + static_cast<std::ptrdiff_t>(n); };
        std::copy_backward(fnAt(m_nDelimiter), fnAt(nBefore), abyData.end());
        std::copy(abySets.begin(), abySets.end(), fnAt(m_nDelimiter));
    }
    if (m_tUnit.bKey && (m_dwSizedSet != m_dwPictureSet || m_dwSizedVersion != m_tSets.Version()))
    {
        m_dwSizedSet = m_dwPictureSet;
        m_dwSizedVersion = m_tSets.Version();
        FindSize(m_tSets.Sequence(m_dwPictureSet));
    }
}

void CNal::Forget()
{
    m_bInside = m_bInsideSlice = m_bSetsInFront = false;
    m_nUnit = m_nDelimiter = 0;
}
} // namespace rtsp
