// RFC 7798 in decoding order: where the description says that packets carry decoding order numbers, they are passed
// over.

#include "rtsp/BigEndian.h"
#include "rtsp/BitReader.h"
#include "rtsp/payload/Nal.h"
#include "rtsp/payload/PictureSize.h"

namespace rtsp
{
namespace
{
enum : unsigned
{
    g_uFirstKey = 16,
    g_uLastKey = 21,
    g_uLastReservedKey = 23,
    g_uLastSlice = 31,
    g_uVideoSet = 32,
    g_uPictureSet = 34,
    g_uDelimiter = 35,
    g_uAggregate = 48,
    g_uFragment = 49,
};

unsigned Type(Bytes abyHeader)
{
    return abyHeader[0] >> 1 & 0x3F;
}

class CH265 final : public CNal
{
public:
    explicit CH265(tagMediaDescription const& tDescription)
        : CNal(tDescription, eCodecH265, "hevc"),
          m_bNumbered(IsNumber(tDescription.Parameter("sprop-max-don-diff")) ||
                      IsNumber(tDescription.Parameter("sprop-depack-buf-nalus")))
    {
        TakeSets(tDescription.Parameter("sprop-vps"));
        TakeSets(tDescription.Parameter("sprop-sps"));
        TakeSets(tDescription.Parameter("sprop-pps"));
    }

private:
    // Above zero.
    static bool IsNumber(std::string_view strNumber)
    {
        return strNumber.find_first_of("123456789") != std::string_view::npos;
    }

    tagNalKind Kind(Bytes abyHeader, Bytes abyBody) const override
    {
        const unsigned uType = Type(abyHeader);
        if ((abyHeader[0] & 1) != 0 || abyHeader[1] >= 8) // of a layer above the pictures that everyone decodes
        {
            return {};
        }
        tagNalKind tKind;
        tKind.bSlice = uType <= g_uLastSlice;
        tKind.bFirstSlice = tKind.bSlice && !abyBody.empty() && (abyBody[0] & 0x80) != 0;
        tKind.bKey = uType >= g_uFirstKey && uType <= g_uLastKey;
        tKind.bDelimiter = uType == g_uDelimiter;
        if (uType >= g_uVideoSet && uType <= g_uPictureSet)
        {
            tKind.eSet = static_cast<CParameterSets::eKind>(uType - g_uVideoSet);
        }
        return tKind;
    }

    bool Split(Bytes abyPayload, PieceFunction const& fnPiece) const override
    {
        if (abyPayload.size() < 2)
        {
            return abyPayload.empty(); // padding only
        }
        const unsigned uType = Type(abyPayload);
        if (uType < g_uAggregate)
        {
            // A number stands behind the header of a unit of its own, too, but the unit has to stay in one piece.
            if (!m_bNumbered || abyPayload.size() < 4)
            {
                fnPiece({.abyHeader = {}, .abyBody = abyPayload});
            }
            else
            {
                fnPiece({true, true, true, abyPayload.first(2), abyPayload.subspan(4)});
            }
            return true;
        }
        if (uType == g_uAggregate)
        {
            return SplitAggregate(abyPayload.subspan(2), fnPiece);
        }
        const std::size_t nBefore = abyPayload.size() > 2 && (abyPayload[2] & 0x80) != 0 && m_bNumbered ? 5 : 3;
        if (uType != g_uFragment || abyPayload.size() <= nBefore)
        {
            return false;
        }
        const unsigned char abyHeader[] = {
            static_cast<unsigned char>((abyPayload[0] & 0x81) | (abyPayload[2] & 0x3F) << 1), abyPayload[1]};
        fnPiece(
            {true, (abyPayload[2] & 0x80) != 0, (abyPayload[2] & 0x40) != 0, abyHeader, abyPayload.subspan(nBefore)});
        return true;
    }

    bool SplitAggregate(Bytes abyUnits, PieceFunction const& fnPiece) const
    {
        std::size_t nBefore = m_bNumbered ? 2 : 0; // the first unit's number, then differences
        while (abyUnits.size() >= nBefore + 2)
        {
            const std::size_t nLength = Big16(abyUnits, nBefore);
            abyUnits = abyUnits.subspan(nBefore + 2);
            if (nLength > abyUnits.size())
            {
                return false;
            }
            fnPiece({.abyHeader = {}, .abyBody = abyUnits.first(nLength)});
            abyUnits = abyUnits.subspan(nLength);
            nBefore = m_bNumbered ? 1 : 0;
        }
        return abyUnits.empty();
    }

    std::uint32_t PictureSet(Bytes abyUnit) const override
    {
        CBitReader tReader(abyUnit, CBitReader::eForm::NalUnit);
        const unsigned uType = Type(abyUnit);
        tReader.Skip(16 + (uType >= g_uFirstKey && uType <= g_uLastReservedKey ? 2 : 1));
        return tReader.Ue();
    }

    void FindSize(Bytes abySequenceSet) override
    {
        if (const auto tSize = SizeOfH265(abySequenceSet))
        {
            m_tFormat.tFrame.dwWidth = tSize->dwWidth;
            m_tFormat.tFrame.dwHeight = tSize->dwHeight;
        }
    }

    bool m_bNumbered;
};
} // namespace

std::unique_ptr<CPayload> MakeH265(tagMediaDescription const& tDescription)
{
    return std::make_unique<CH265>(tDescription);
}
} // namespace rtsp
