#include "plugins/common/FileWriter.h"

#include "protocol/interface/Frames.h"
#include "protocol/interface/Results.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace plugin
{
namespace
{
unsigned TypeOf(uint32_t dwCodec, Bytes tUnit)
{
    return tUnit.empty() ? 0 : dwCodec == eCodecH264 ? tUnit[0] & 31U : tUnit[0] >> 1 & 63U;
}
} // namespace

std::vector<Bytes> UnitsOf(Bytes tStream)
{
    constexpr std::array<unsigned char, 3> abyStart{0, 0, 1};
    std::vector<Bytes> atUnits;
    auto it = std::search(tStream.begin(), tStream.end(), abyStart.begin(), abyStart.end());
    while (it != tStream.end())
    {
        const auto itBegin = it + 3;
        it = std::search(itBegin, tStream.end(), abyStart.begin(), abyStart.end());
        Bytes tUnit(itBegin, it);
        while (!tUnit.empty() && tUnit.back() == 0)
        {
            tUnit = tUnit.first(tUnit.size() - 1); // of the next, longer start code
        }
        if (!tUnit.empty())
        {
            atUnits.push_back(tUnit);
        }
    }
    return atUnits;
}

bool IsParameterSet(uint32_t dwCodec, Bytes tUnit, bool bDelimiters)
{
    const unsigned nType = TypeOf(dwCodec, tUnit);
    const unsigned nFirst = dwCodec == eCodecH264 ? 7 : 32;
    const unsigned nSets = dwCodec == eCodecH264 ? 2 : 3; // the delimiter comes right behind them
    return nType >= nFirst && nType < nFirst + nSets + (bDelimiters ? 1 : 0);
}

std::vector<Output> ParameterSetsOf(uint32_t dwCodec, Bytes tKeyFrame)
{
    std::vector<Output> aabySets;
    const unsigned nFirst = dwCodec == eCodecH264 ? 7 : 32;
    for (unsigned nType = nFirst; nType < nFirst + (dwCodec == eCodecH264 ? 2 : 3); ++nType)
    {
        const auto atUnits = UnitsOf(tKeyFrame);
        const auto it = std::ranges::find(atUnits, nType, [&](Bytes t) { return TypeOf(dwCodec, t); });
        if (it == atUnits.end() || it->size() < 4)
        {
            return {};
        }
        aabySets.emplace_back(it->begin(), it->end());
    }
    return aabySets;
}

int GiveHeader(Output const& abyHeader, char* pbyHeader, unsigned long& dwLength)
{
    const unsigned long dwRoom = std::exchange(dwLength, static_cast<unsigned long>(abyHeader.size()));
    if (dwRoom < abyHeader.size())
    {
        return eResultNoResources;
    }
    if (!pbyHeader)
    {
        return eResultBadArgument;
    }
    std::memcpy(pbyHeader, abyHeader.data(), abyHeader.size());
    return eResultOk;
}
} // namespace plugin
