// RFC 6184 without its interleaved mode: packets of that are passed over, and what they belong to is damaged.

#include "rtsp/BigEndian.h"
#include "rtsp/BitReader.h"
#include "rtsp/payload/Nal.h"
#include "rtsp/payload/PictureSize.h"

#include <algorithm>

namespace rtsp
{
namespace
{
enum : unsigned
{
    g_uSlice = 1,
    g_uSliceA = 2, ///< of a slice in three parts
    g_uSliceC = 4,
    g_uSliceKey = 5,
    g_uInformation = 6,
    g_uSequenceSet = 7,
    g_uPictureSet = 8,
    g_uDelimiter = 9,
    g_uLastUnit = 23,
    g_uAggregate = 24,
    g_uFragment = 28,
};

// Streams that refresh bit by bit have no key picture, but a message that decoding can start here.
bool HasRecoveryPoint(Bytes abyMessages)
{
    constexpr unsigned uRecoveryPoint = 6;
    std::size_t nAt = 0;
    const auto fnNumber = [&]
    {
        unsigned uNumber = 0;
        while (nAt < abyMessages.size() && abyMessages[nAt] == 0xFF)
        {
            uNumber += abyMessages[nAt++];
        }
        return nAt < abyMessages.size() ? uNumber + abyMessages[nAt++] : uNumber;
    };
    while (nAt + 2 < abyMessages.size())
    {
        if (fnNumber() == uRecoveryPoint)
        {
            return true;
        }
        const std::size_t nLength = fnNumber();
        nAt += std::min(nLength, abyMessages.size() - nAt);
    }
    return false;
}

class CH264 final : public CNal
{
public:
    explicit CH264(tagMediaDescription const& tDescription) : CNal(tDescription, eCodecH264, "h264")
    {
        TakeSets(tDescription.Parameter("sprop-parameter-sets"));
    }

private:
    tagNalKind Kind(Bytes abyHeader, Bytes abyBody) const override
    {
        const unsigned uType = abyHeader[0] & 0x1F;
        tagNalKind tKind;
        tKind.bSlice = uType >= g_uSlice && uType <= g_uSliceKey;
        tKind.bFirstSlice = (uType == g_uSlice || uType == g_uSliceA || uType == g_uSliceKey) && !abyBody.empty() &&
                            (abyBody[0] & 0x80) != 0;
        tKind.bKey = uType == g_uSliceKey || (uType == g_uInformation && HasRecoveryPoint(abyBody));
        tKind.bDelimiter = uType == g_uDelimiter;
        if (uType == g_uSequenceSet || uType == g_uPictureSet)
        {
            tKind.eSet = uType == g_uSequenceSet ? CParameterSets::eKind::Sequence : CParameterSets::eKind::Picture;
        }
        return tKind;
    }

    bool Split(Bytes abyPayload, PieceFunction const& fnPiece) const override
    {
        if (abyPayload.empty()) // padding only
        {
            return true;
        }
        const unsigned uType = abyPayload[0] & 0x1F;
        if (uType <= g_uLastUnit)
        {
            fnPiece({.abyHeader = {}, .abyBody = abyPayload});
            return true;
        }
        if (uType == g_uAggregate)
        {
            return SplitAggregate(abyPayload.subspan(1), fnPiece);
        }
        if (uType == g_uFragment && abyPayload.size() > 2)
        {
            const unsigned char abyHeader[] = {
                static_cast<unsigned char>((abyPayload[0] & 0xE0) | (abyPayload[1] & 0x1F))};
            fnPiece({true, (abyPayload[1] & 0x80) != 0, (abyPayload[1] & 0x40) != 0, abyHeader, abyPayload.subspan(2)});
            return true;
        }
        return false;
    }

    static bool SplitAggregate(Bytes abyUnits, PieceFunction const& fnPiece)
    {
        while (abyUnits.size() >= 2)
        {
            const std::size_t nLength = Big16(abyUnits, 0);
            if (nLength > abyUnits.size() - 2)
            {
                return false;
            }
            fnPiece({.abyHeader = {}, .abyBody = abyUnits.subspan(2, nLength)});
            abyUnits = abyUnits.subspan(2 + nLength);
        }
        return abyUnits.empty();
    }

    std::uint32_t PictureSet(Bytes abyUnit) const override
    {
        CBitReader tReader(abyUnit, CBitReader::eForm::NalUnit);
        tReader.Skip(8);
        tReader.Ue(); // first macroblock
        tReader.Ue(); // kind of slice
        return tReader.Ue();
    }

    void FindSize(Bytes abySequenceSet) override
    {
        if (const auto tSize = SizeOfH264(abySequenceSet))
        {
            m_tFormat.tFrame.dwWidth = tSize->dwWidth;
            m_tFormat.tFrame.dwHeight = tSize->dwHeight;
        }
    }
};
} // namespace

std::unique_ptr<CPayload> MakeH264(tagMediaDescription const& tDescription)
{
    return std::make_unique<CH264>(tDescription);
}
} // namespace rtsp
