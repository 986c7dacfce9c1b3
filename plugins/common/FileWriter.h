#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace plugin
{
using Bytes = std::span<unsigned char const>;
using Output = std::vector<unsigned char>;

/// How a file's pictures are coded.
struct tagVideoFormat
{
    uint32_t dwCodec = 0; ///< eMediaCodec: eCodecH264 or eCodecH265
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    std::vector<Output> aabyParameterSets; ///< without start codes: VPS (H.265), SPS, PPS
};

/// How a file's sound is coded.
struct tagAudioFormat
{
    uint32_t dwCodec = 0; ///< eMediaCodec: eCodecG711A, eCodecG711U or eCodecAAC; 0: no sound
    uint32_t dwSampleRate = 0;
    uint32_t dwChannels = 1;
    Output abyConfig; ///< AAC: AudioSpecificConfig
};

/// A picture, or a packet of sound.
struct tagSample
{
    bool bVideo = false;
    bool bKey = false;        ///< a picture that decoding can start at
    uint32_t dwFormat = 0;    ///< of pictures: which of the formats that the file began with
    int64_t llTimeUs = 0;     ///< in the file, from 0
    int64_t llDurationUs = 0; ///< until the next one of its kind
    Bytes tData;              ///< a picture as an Annex B byte stream
};

/// Packs pictures and sound into a file. The same samples make the same bytes.
class CFileWriter
{
public:
    virtual ~CFileWriter() = default;
    /// Each of these appends bytes of the file.
    virtual void Begin(Output& abyOut) = 0;
    virtual void Add(tagSample const& tSample, Output& abyOut) = 0;
    virtual void End(Output& abyOut) = 0;
};

/// Fragmented MP4 (ISO/IEC 14496-12), a fragment for each key frame. atVideo: not empty, all of one codec.
std::unique_ptr<CFileWriter> MakeFragmentedMp4(std::vector<tagVideoFormat> atVideo, tagAudioFormat tAudio);
/// An MPEG transport stream (ISO/IEC 13818-1). It has no place for G.711: pictures alone. strMaker: a packet before it
/// says this, which players skip; empty: none does.
std::unique_ptr<CFileWriter> MakeTransportStream(uint32_t dwVideoCodec, std::string_view strMaker);

/// @name What each file begins with, whatever is in it.
/// @{
Output FragmentedMp4Header();
Output TransportStreamHeader(std::string_view strMaker);
/// @}

/// The units of an Annex B byte stream, without their start codes.
std::vector<Bytes> UnitsOf(Bytes tStream);
/// Whether a unit is a parameter set of this codec. bDelimiters: or an access unit delimiter.
bool IsParameterSet(uint32_t dwCodec, Bytes tUnit, bool bDelimiters);
/// The parameter sets of a key frame, in the order that a tagVideoFormat has; empty where one is missing.
std::vector<Output> ParameterSetsOf(uint32_t dwCodec, Bytes tKeyFrame);

/// For GetFileHeader: copies a header into dwLength bytes at pbyHeader, and makes dwLength its length in any case. 0;
/// eResultNoResources: it doesn't fit; eResultBadArgument: pbyHeader is null.
int GiveHeader(Output const& abyHeader, char* pbyHeader, unsigned long& dwLength);
} // namespace plugin
