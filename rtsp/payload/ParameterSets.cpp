#include "rtsp/payload/ParameterSets.h"
#include "rtsp/BitReader.h"
#include "rtsp/payload/ProfileTierLevel.h"

#include <algorithm>
#include <utility>

namespace rtsp
{
namespace
{
// More than any device has; all of them go out with each key frame.
constexpr std::size_t g_nMostBytes = std::size_t{64} << 10;
} // namespace

CParameterSets::tagSet CParameterSets::Parse(eKind eWhat, Bytes abyUnit) const
{
    tagSet tSet{eWhat, 0, 0, {}};
    CBitReader tReader(abyUnit, CBitReader::eForm::NalUnit);
    if (eWhat == eKind::Sequence && m_bH265)
    {
        SkipToNumberOfSequence(tReader);
    }
    else
    {
        tReader.Skip((m_bH265 ? 16U : 8U) + (eWhat == eKind::Sequence ? 24U : 0U));
    }
    tSet.dwNumber = eWhat == eKind::Video ? tReader.Bits(4) : tReader.Ue();
    tSet.dwParent = eWhat == eKind::Picture ? tReader.Ue() : 0;
    return tSet;
}

void CParameterSets::Take(eKind eWhat, Bytes abyUnit)
{
    if (abyUnit.size() > g_nMostBytes)
    {
        return;
    }
    tagSet tNew = Parse(eWhat, abyUnit);
    const auto itOld = std::find_if(m_atSets.begin(), m_atSets.end(),
                                    [&](tagSet const& t) { return t.eWhat == eWhat && t.dwNumber == tNew.dwNumber; });
    if (itOld != m_atSets.end() && std::ranges::equal(itOld->abyUnit, abyUnit))
    {
        return;
    }
    ++m_dwVersion;
    if (itOld != m_atSets.end())
    {
        m_atSets.erase(itOld);
    }
    if (eWhat == eKind::Sequence)
    {
        std::erase_if(m_atSets,
                      [&](tagSet const& t) { return t.eWhat == eKind::Picture && t.dwParent == tNew.dwNumber; });
    }
    MakeRoom(abyUnit.size());
    tNew.abyUnit.assign(abyUnit.begin(), abyUnit.end());
    m_atSets.push_back(std::move(tNew));
}

void CParameterSets::MakeRoom(std::size_t nBytes)
{
    for (tagSet const& tSet : m_atSets)
    {
        nBytes += tSet.abyUnit.size() + sizeof tSet;
    }
    while (nBytes > g_nMostBytes && !m_atSets.empty())
    {
        nBytes -= m_atSets.front().abyUnit.size() + sizeof m_atSets.front();
        m_atSets.erase(m_atSets.begin());
    }
}

bool CParameterSets::Has(eKind eWhat) const
{
    return std::any_of(m_atSets.begin(), m_atSets.end(), [=](tagSet const& t) { return t.eWhat == eWhat; });
}

bool CParameterSets::AreComplete() const
{
    return Has(eKind::Sequence) && Has(eKind::Picture) && (!m_bH265 || Has(eKind::Video));
}

std::vector<unsigned char> CParameterSets::Stream() const
{
    std::vector<unsigned char> abyStream;
    for (const eKind eWhat : {eKind::Video, eKind::Sequence, eKind::Picture})
    {
        for (tagSet const& tSet : m_atSets)
        {
            if (tSet.eWhat == eWhat)
            {
                abyStream.insert(abyStream.end(), {0, 0, 0, 1});
                abyStream.insert(abyStream.end(), tSet.abyUnit.begin(), tSet.abyUnit.end());
            }
        }
    }
    return abyStream;
}

Bytes CParameterSets::Sequence(std::uint32_t dwPicture) const
{
    const auto fnFind = [this](eKind eWhat, std::uint32_t dwNumber)
    {
        return std::find_if(m_atSets.begin(), m_atSets.end(),
                            [=](tagSet const& t) { return t.eWhat == eWhat && t.dwNumber == dwNumber; });
    };
    const auto itPicture = fnFind(eKind::Picture, dwPicture);
    const auto itSequence = itPicture == m_atSets.end() ? itPicture : fnFind(eKind::Sequence, itPicture->dwParent);
    return itSequence == m_atSets.end() ? Bytes() : Bytes(itSequence->abyUnit);
}
} // namespace rtsp
