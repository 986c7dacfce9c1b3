#pragma once

#include "rtsp/payload/Marked.h"
#include "rtsp/payload/ParameterSets.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

namespace rtsp
{
/// What we need to know of a NAL unit.
struct tagNalKind
{
    bool bSlice = false;
    bool bFirstSlice = false; ///< of a picture
    bool bKey = false;        ///< decoding can start here
    bool bDelimiter = false;
    std::optional<CParameterSets::eKind> eSet;
};

/// A NAL unit, or a fragment of one, as it is in a packet.
struct tagNalPiece
{
    bool bFragment = false;
    bool bBegin = true;
    bool bEnd = true;
    Bytes abyHeader; ///< of a fragmented unit; it isn't part of abyBody
    Bytes abyBody;   ///< of a whole unit: all of it
};

/// Access units of H.264 and H.265, as byte streams. All with one time stamp are one; a picture may also begin without
/// a new time stamp, of a device whose clock stands still, or as the second field of a frame.
///
/// Parameter sets are taken out and kept, wherever they come: devices send them before each slice, where a decoder
/// takes them for the beginning of another picture, behind the first slice, or in an access unit of their own. Key
/// frames leave with all of them in front, other frames only when some came with them.
///
/// Of a unit with a piece missing, what came before the gap is kept.
class CNal : public CMarked
{
public:
    /// Calls fnPiece for each piece in a packet. False: some of it can't be taken apart.
    using PieceFunction = std::function<void(tagNalPiece const&)>;

protected:
    CNal(tagMediaDescription const& tDescription, eMediaCodec eCodec, std::string_view strName);

    /// abyBody: may be only the beginning of the unit, or empty.
    virtual tagNalKind Kind(Bytes abyHeader, Bytes abyBody) const = 0;
    virtual bool Split(Bytes abyPayload, PieceFunction const& fnPiece) const = 0;
    /// The number of the picture parameter set that the first slice of a picture names.
    virtual std::uint32_t PictureSet(Bytes abyUnit) const = 0;
    virtual void FindSize(Bytes abySequenceSet) = 0;

    /// Parameter sets of the description: base64, with commas in between.
    void TakeSets(std::string_view strSets);
    std::size_t HeaderLength() const { return m_tFormat.tFrame.dwCodec == eCodecH264 ? 1 : 2; }

private:
    ePlace Place(Bytes abyPayload) const override;
    void Add(tagRtpPacket const& tPacket, bool bGap) override;
    bool IsInside() const override { return m_bInside; }
    void Finish() override;
    void Forget() override;

    void AddPiece(tagNalPiece const& tPiece);
    void AddFragment(tagNalPiece const& tPiece);
    void AddUnit(Bytes abyUnit);
    void CutUnit();
    void Look(tagNalKind const& tKind, Bytes abyUnit);
    tagNalKind KindOf(Bytes abyUnit) const;
    template <class F>
    void ForEachUnit(Bytes abyUnits, F fnUnit) const;

    CParameterSets m_tSets;
    bool m_bInside = false;       ///< a unit was begun that another packet goes on with
    bool m_bInsideSlice = false;  ///< it is a slice
    bool m_bSetsInFront = false;  ///< parameter sets came before the first slice
    std::size_t m_nUnit = 0;      ///< where the unit that is being put together begins in m_tUnit
    std::size_t m_nDelimiter = 0; ///< where the access unit delimiter ends in m_tUnit
    std::uint32_t m_dwPictureSet = 0;
    std::uint32_t m_dwSizedSet = 0;     ///< m_dwPictureSet for which the size was found
    std::uint32_t m_dwSizedVersion = 0; ///< and the version of the sets
};
} // namespace rtsp
