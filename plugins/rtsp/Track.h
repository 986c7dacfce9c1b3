#pragma once

#include "protocol/PluginInterface.h"

#include <cstdint>
#include <vector>

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace rtsp
{
/// A frame as it left its track: everything but its place on the stream's time line.
struct tagTrackFrame
{
    tagStreamMediaFrame tFrame{};
    std::int64_t llStampUs = 0; ///< the device's time stamp, microseconds
};

/// Makes frames out of the packets of one track. H.264 and H.265 come in pieces: all with one time stamp are one access
/// unit, complete when the next begins; key frames leave with their parameter sets in front. Other codecs pass as they
/// come.
class CTrack
{
public:
    explicit CTrack(AVStream const& tStream);

    eMediaType Type() const { return static_cast<eMediaType>(m_tProperties.dwMediaType); }

    /// Forgets the access unit that is being put together: what follows doesn't continue it.
    void Reset() { m_tUnit = {}; }
    /// Takes a packet of this track. True: a frame is complete; it is valid until the next Take.
    bool Take(AVPacket const& tPacket, unsigned nMissedBefore, tagTrackFrame& tFrame);

private:
    /// An access unit being put together.
    struct tagUnit
    {
        std::vector<unsigned char> abyData;
        std::int64_t llStamp = AV_NOPTS_VALUE;
        std::int64_t llWallClockUs = 0;
        unsigned nMissedBefore = 0;
        bool bDamaged = false;
        bool bPicture = false; ///< has a slice, not only parameter sets
        bool bKey = false;
        unsigned uParameterSets = 0; ///< the kinds of parameter sets that came with it, a bit each
        unsigned uSetsWithin = 0;    ///< those of them that are in abyData
    };

    bool BeginsPicture(AVPacket const& tPacket) const;
    void Begin(AVPacket const& tPacket);
    bool KnowsParameterSets() const;
    bool IsAssembled() const { return m_tProperties.dwCodec == eCodecH264 || m_tProperties.dwCodec == eCodecH265; }
    void Add(AVPacket const& tPacket, unsigned nMissedBefore);
    int Look(unsigned char const* pbyUnit, std::size_t nLength);
    bool LacksParameterSets() const;
    void PutParameterSetsInFront();
    void FindSize();
    void Finish(tagTrackFrame& tFrame);
    void PassOn(AVPacket const& tPacket, unsigned nMissedBefore, tagTrackFrame& tFrame);
    std::int64_t ToUs(std::int64_t llStamp) const;

    const AVCodecID m_eCodec;
    AVRational m_tTimeBase;
    tagStreamMediaFrame m_tProperties{}; ///< what all frames of the track share
    std::vector<unsigned char> m_abyConfig;
    bool m_bAlwaysKey = false;
    std::int64_t m_llNextStamp = 0;                    ///< for packets that come without one
    std::vector<unsigned char> m_aabyParameterSets[3]; ///< the newest of each kind: video (H.265), sequence, picture
    std::vector<unsigned char> m_abySizedBy;           ///< the sequence parameter set that told the picture size
    tagUnit m_tUnit;                                   ///< being put together
    tagUnit m_tDone;                                   ///< being handed out
};
} // namespace rtsp
