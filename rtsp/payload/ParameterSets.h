#pragma once

#include "rtsp/Bytes.h"

#include <cstdint>
#include <vector>

namespace rtsp
{
/// The newest parameter sets of a stream of H.264 or H.265, one of each number. A sequence parameter set that says
/// something new takes away the picture parameter sets that belonged to the old one: decoders do the same.
class CParameterSets
{
public:
    enum class eKind : unsigned char
    {
        Video, ///< H.265 only
        Sequence,
        Picture,
    };

    explicit CParameterSets(bool bH265) : m_bH265(bH265) {}

    /// A NAL unit, from its header on. The same again changes nothing.
    void Take(eKind eWhat, Bytes abyUnit);

    /// A decoder can start with them.
    bool AreComplete() const;
    /// As a byte stream, in the order in which a decoder needs them.
    std::vector<unsigned char> Stream() const;
    /// The sequence parameter set that a picture refers to, by the number of its picture parameter set; empty: not
    /// known. Valid until the next Take.
    Bytes Sequence(std::uint32_t dwPicture) const;
    /// Changes with each set that says something new.
    std::uint32_t Version() const { return m_dwVersion; }

private:
    struct tagSet
    {
        eKind eWhat;
        std::uint32_t dwNumber;
        std::uint32_t dwParent; ///< of a picture parameter set: the number of its sequence parameter set
        std::vector<unsigned char> abyUnit;
    };
    tagSet Parse(eKind eWhat, Bytes abyUnit) const;
    bool Has(eKind eWhat) const;
    void MakeRoom(std::size_t nBytes);

    bool m_bH265;
    std::uint32_t m_dwVersion = 0;
    std::vector<tagSet> m_atSets; ///< in the order in which they came
};
} // namespace rtsp
