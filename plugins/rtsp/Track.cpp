#include "plugins/rtsp/Track.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

namespace rtsp
{
namespace
{
// What we need to know of a NAL unit, by codec.
struct tagNalKind
{
    bool bSlice;
    bool bFirstSlice; ///< of a picture
    bool bKey;        ///< decoding can start here
    bool bDelimiter;
    int iParameterSet; ///< 0 video, 1 sequence, 2 picture; else -1
};

// pbyUnit: a NAL unit of at least nLength bytes.
tagNalKind KindOf(std::uint32_t dwCodec, unsigned char const* pbyUnit, std::size_t nLength)
{
    if (dwCodec == eCodecH264)
    {
        const int nType = pbyUnit[0] & 0x1F;
        // Streams that refresh bit by bit have no IDR picture, but a recovery point message (type 6 of an SEI unit).
        const bool bRecoveryPoint = nType == 6 && nLength > 1 && pbyUnit[1] == 6;
        const bool bSlice = nType >= 1 && nType <= 5;
        return {bSlice, bSlice && nLength > 1 && (pbyUnit[1] & 0x80), nType == 5 || bRecoveryPoint, nType == 9,
                nType == 7 || nType == 8 ? nType - 6 : -1};
    }
    const int nType = (pbyUnit[0] >> 1) & 0x3F;
    return {nType < 32, nType < 32 && nLength > 2 && (pbyUnit[2] & 0x80), nType >= 16 && nType <= 21, nType == 35,
            nType >= 32 && nType <= 34 ? nType - 32 : -1};
}

constexpr unsigned char g_abyStartCode[] = {0, 0, 1};

// Larger than any picture: what doesn't end must not fill the memory.
constexpr std::size_t g_nLargestUnit = std::size_t{16} << 20;

// Microseconds, either way. Beyond is what a device makes up, or what didn't fit when it was converted; up to here,
// sums of a few time stamps fit too.
constexpr std::int64_t g_llLastUs = std::int64_t{1} << 60;

// How many bytes of start code a packet begins with; 0: it goes on with a NAL unit that another packet began.
std::size_t StartCode(AVPacket const& tPacket)
{
    constexpr unsigned char abyLong[] = {0, 0, 0, 1};
    const auto fnBegins = [&](unsigned char const* pby, int n)
    { return tPacket.size > n && std::equal(pby, pby + n, tPacket.data); };
    return fnBegins(abyLong, 4) ? 4 : fnBegins(g_abyStartCode, 3) ? 3 : 0;
}

// Calls fnUnit for each NAL unit of a byte stream: where its start code begins, and how long both are.
template <class F>
void ForEachUnit(unsigned char const* pbyData, std::size_t nLength, F fnUnit)
{
    unsigned char const* const pbyEnd = pbyData + nLength;
    const auto fnNext = [&](unsigned char const* pby)
    { return std::search(pby, pbyEnd, std::begin(g_abyStartCode), std::end(g_abyStartCode)); };
    for (unsigned char const* pby = fnNext(pbyData); pbyEnd - pby > 3;)
    {
        unsigned char const* const pbyNext = fnNext(pby + 3);
        fnUnit(pby, static_cast<std::size_t>(pbyNext - pby));
        pby = pbyNext;
    }
}

eMediaType MediaType(AVMediaType eType)
{
    return eType == AVMEDIA_TYPE_VIDEO ? eMediaVideo : eType == AVMEDIA_TYPE_AUDIO ? eMediaAudio : eMediaOther;
}

eMediaCodec MediaCodec(AVCodecID eCodec)
{
    switch (eCodec)
    {
    case AV_CODEC_ID_H264:
        return eCodecH264;
    case AV_CODEC_ID_HEVC:
        return eCodecH265;
    case AV_CODEC_ID_AAC:
        return eCodecAAC;
    case AV_CODEC_ID_PCM_ALAW:
        return eCodecG711A;
    case AV_CODEC_ID_PCM_MULAW:
        return eCodecG711U;
    default:
        return eCodecOther;
    }
}

// The device's clock at this packet; libavformat tells it once a sender report has come.
std::int64_t WallClock(AVPacket const& tPacket)
{
    std::size_t nSize = 0;
    auto const* const pbyData = av_packet_get_side_data(&tPacket, AV_PKT_DATA_PRFT, &nSize);
    return nSize >= sizeof(AVProducerReferenceTime)
               ? reinterpret_cast<AVProducerReferenceTime const*>(pbyData)->wallclock
               : 0;
}
} // namespace

CTrack::CTrack(AVStream const& tStream) : m_eCodec(tStream.codecpar->codec_id), m_tTimeBase(tStream.time_base)
{
    AVCodecParameters const& tCodec = *tStream.codecpar;
    m_tProperties.dwMediaType = static_cast<std::uint32_t>(MediaType(tCodec.codec_type));
    m_tProperties.dwCodec = static_cast<std::uint32_t>(MediaCodec(tCodec.codec_id));
    std::snprintf(m_tProperties.szCodecName, sizeof m_tProperties.szCodecName, "%s", avcodec_get_name(tCodec.codec_id));
    m_tProperties.dwWidth = static_cast<std::uint32_t>(tCodec.width);
    m_tProperties.dwHeight = static_cast<std::uint32_t>(tCodec.height);
    if (tCodec.codec_type == AVMEDIA_TYPE_AUDIO) // libavformat puts RTP's clock rate here for the others
    {
        m_tProperties.dwSampleRate = static_cast<std::uint32_t>(tCodec.sample_rate);
        m_tProperties.dwChannels = static_cast<std::uint32_t>(tCodec.ch_layout.nb_channels);
    }
    AVCodecDescriptor const* const ptDescriptor = avcodec_descriptor_get(tCodec.codec_id);
    m_bAlwaysKey = ptDescriptor && (ptDescriptor->props & AV_CODEC_PROP_INTRA_ONLY);
    if (IsAssembled())
    {
        ForEachUnit(tCodec.extradata, static_cast<std::size_t>(tCodec.extradata_size),
                    [this](unsigned char const* pby, std::size_t n) { Look(pby, n); });
        m_tUnit = {};
    }
    else if (tCodec.extradata_size > 0)
    {
        m_abyConfig.assign(tCodec.extradata, tCodec.extradata + tCodec.extradata_size);
        m_tProperties.pConfig = m_abyConfig.data();
        m_tProperties.dwConfigLength = static_cast<std::uint32_t>(m_abyConfig.size());
    }
}

std::int64_t CTrack::ToUs(std::int64_t llStamp) const
{
    return std::clamp(av_rescale_q(llStamp, m_tTimeBase, AVRational{1, 1000000}), -g_llLastUs, g_llLastUs);
}

bool CTrack::Take(AVPacket const& tPacket, unsigned nMissedBefore, tagTrackFrame& tFrame)
{
    if (!IsAssembled())
    {
        PassOn(tPacket, nMissedBefore, tFrame);
        return true;
    }
    const bool bNewStamp = tPacket.pts != AV_NOPTS_VALUE && tPacket.pts != m_tUnit.llStamp;
    const bool bNext = m_tUnit.bPicture && (bNewStamp || BeginsPicture(tPacket));
    if (bNext)
    {
        m_tUnit.bDamaged |= nMissedBefore > 0; // its end may be among what is missing
        std::swap(m_tUnit, m_tDone);
        m_tUnit.abyData.clear();
        m_tUnit = {.abyData = std::move(m_tUnit.abyData)};
        Finish(tFrame);
    }
    Add(tPacket, nMissedBefore);
    return bNext;
}

// A picture may begin without a new time stamp: of a device whose clock stands still, or as the second field of a
// frame.
bool CTrack::BeginsPicture(AVPacket const& tPacket) const
{
    if (StartCode(tPacket) == 0)
    {
        return false;
    }
    // Parameter sets may come before it in the same packet.
    tagNalKind tFirst{};
    ForEachUnit(tPacket.data, static_cast<std::size_t>(tPacket.size),
                [&](unsigned char const* pby, std::size_t n)
                {
                    constexpr std::size_t nStart = sizeof g_abyStartCode;
                    tFirst = tFirst.bSlice ? tFirst : KindOf(m_tProperties.dwCodec, pby + nStart, n - nStart);
                });
    return tFirst.bFirstSlice;
}

// Time and damage are those of the picture's own packets, not of what came before it and was kept or dropped.
void CTrack::Begin(AVPacket const& tPacket)
{
    if (tPacket.pts != AV_NOPTS_VALUE && tPacket.pts != m_tUnit.llStamp)
    {
        m_tUnit.llStamp = tPacket.pts;
        m_tUnit.llWallClockUs = 0;
        m_tUnit.bDamaged &= !m_tUnit.abyData.empty();
    }
    if (m_tUnit.llWallClockUs == 0)
    {
        m_tUnit.llWallClockUs = WallClock(tPacket);
    }
}

void CTrack::Add(AVPacket const& tPacket, unsigned nMissedBefore)
{
    Begin(tPacket);
    m_tUnit.nMissedBefore += nMissedBefore;
    m_tUnit.bDamaged |= nMissedBefore > 0;
    if (m_tUnit.abyData.size() + static_cast<std::size_t>(tPacket.size) > g_nLargestUnit)
    {
        m_tUnit = {.abyData = {}, .llStamp = m_tUnit.llStamp, .nMissedBefore = m_tUnit.nMissedBefore, .bDamaged = true};
    }
    if (m_tUnit.abyData.empty() && StartCode(tPacket) == 0)
    {
        m_tUnit.bDamaged = true; // the rest of a NAL unit whose beginning is missing is of no use
        return;
    }
    // Some devices repeat the parameter sets before each slice of a key frame, where a decoder takes them for the
    // beginning of another picture: behind a slice they are kept, but left out.
    unsigned char const* pbyFrom = tPacket.data;
    unsigned char const* const pbyEnd = tPacket.data + tPacket.size;
    const auto fnTake = [&](unsigned char const* pbyTo)
    { m_tUnit.abyData.insert(m_tUnit.abyData.end(), pbyFrom, pbyTo); };
    ForEachUnit(tPacket.data, static_cast<std::size_t>(tPacket.size),
                [&](unsigned char const* pby, std::size_t n)
                {
                    const bool bBehindSlice = m_tUnit.bPicture;
                    const int iParameterSet = Look(pby, n);
                    if (iParameterSet >= 0 && bBehindSlice)
                    {
                        fnTake(pby);
                        pbyFrom = pby + n;
                    }
                    else if (iParameterSet >= 0)
                    {
                        m_tUnit.uSetsWithin |= 1U << iParameterSet;
                    }
                });
    fnTake(pbyEnd);
}

// A NAL unit with its start code; tells which kind of parameter set it is, or -1. Of a fragmented one this is the
// beginning, which is all that is needed of it; parameter sets are never fragmented. One that comes with a picture
// takes the place of all of its kind that came before.
int CTrack::Look(unsigned char const* pbyUnit, std::size_t nLength)
{
    constexpr std::size_t nStart = sizeof g_abyStartCode;
    const tagNalKind tKind = KindOf(m_tProperties.dwCodec, pbyUnit + nStart, nLength - nStart);
    m_tUnit.bDamaged |= tKind.bSlice && !m_tUnit.bPicture && !tKind.bFirstSlice; // earlier slices are missing
    m_tUnit.bPicture |= tKind.bSlice;
    m_tUnit.bKey |= tKind.bKey;
    if (tKind.iParameterSet >= 0)
    {
        std::vector<unsigned char>& abySets = m_aabyParameterSets[tKind.iParameterSet];
        const unsigned uKind = 1U << tKind.iParameterSet;
        if (!(m_tUnit.uParameterSets & uKind))
        {
            abySets.clear();
        }
        m_tUnit.uParameterSets |= uKind;
        abySets.push_back(0);
        abySets.insert(abySets.end(), pbyUnit, pbyUnit + nLength);
    }
    return tKind.iParameterSet;
}

bool CTrack::LacksParameterSets() const
{
    return (m_tDone.uSetsWithin & 6U) != 6U || (m_tProperties.dwCodec == eCodecH265 && !(m_tDone.uSetsWithin & 1U));
}

// Without them no decoder can start, whatever the picture is.
bool CTrack::KnowsParameterSets() const
{
    return !m_aabyParameterSets[1].empty() && !m_aabyParameterSets[2].empty() &&
           (m_tProperties.dwCodec != eCodecH265 || !m_aabyParameterSets[0].empty());
}

// Behind an access unit delimiter, if there is one: it has to stay first.
void CTrack::PutParameterSetsInFront()
{
    std::vector<unsigned char>& abyData = m_tDone.abyData;
    std::size_t nAt = 0;
    ForEachUnit(abyData.data(), abyData.size(),
                [&](unsigned char const* pby, std::size_t n)
                {
                    if (nAt == 0 && KindOf(m_tProperties.dwCodec, pby + sizeof g_abyStartCode, 1).bDelimiter)
                    {
                        nAt = static_cast<std::size_t>(pby - abyData.data()) + n;
                    }
                });
    for (std::vector<unsigned char> const& abySets : m_aabyParameterSets)
    {
        abyData.insert(abyData.begin() + static_cast<std::ptrdiff_t>(nAt), abySets.begin(), abySets.end());
        nAt += abySets.size();
    }
}

// Parsers keep a few hundred KiB, so one lives only for the key frames that may tell another size: those with another
// sequence parameter set than before, or with several to choose from.
void CTrack::FindSize()
{
    std::vector<unsigned char> const& abySets = m_aabyParameterSets[1];
    std::size_t nSets = 0;
    ForEachUnit(abySets.data(), abySets.size(), [&](unsigned char const*, std::size_t) { ++nSets; });
    if (nSets == 1 && abySets == m_abySizedBy)
    {
        return;
    }
    struct tagFree
    {
        void operator()(AVCodecParserContext* pt) const { av_parser_close(pt); }
        void operator()(AVCodecContext* pt) const { avcodec_free_context(&pt); }
    };
    const std::unique_ptr<AVCodecParserContext, tagFree> ptParser(av_parser_init(m_eCodec));
    const std::unique_ptr<AVCodecContext, tagFree> ptCodec(avcodec_alloc_context3(nullptr));
    if (!ptParser || !ptCodec)
    {
        return;
    }
    ptParser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
    unsigned char* pbyOut = nullptr;
    int nOut = 0;
    av_parser_parse2(ptParser.get(), ptCodec.get(), &pbyOut, &nOut, m_tDone.abyData.data(),
                     static_cast<int>(m_tDone.abyData.size()), AV_NOPTS_VALUE, AV_NOPTS_VALUE, 0);
    if (ptParser->width > 0 && ptParser->height > 0)
    {
        m_tProperties.dwWidth = static_cast<std::uint32_t>(ptParser->width);
        m_tProperties.dwHeight = static_cast<std::uint32_t>(ptParser->height);
        m_abySizedBy = abySets;
    }
}

void CTrack::Finish(tagTrackFrame& tFrame)
{
    m_tDone.bKey &= KnowsParameterSets();
    if (m_tDone.bKey)
    {
        if (LacksParameterSets())
        {
            PutParameterSetsInFront();
        }
        // Parsers may read a little beyond a frame's end; what they find there must be zero.
        const std::size_t nLength = m_tDone.abyData.size();
        m_tDone.abyData.resize(nLength + AV_INPUT_BUFFER_PADDING_SIZE);
        m_tDone.abyData.resize(nLength);
        FindSize();
    }
    tFrame.tFrame = m_tProperties;
    tFrame.tFrame.dwFlags =
        (m_tDone.bKey ? unsigned{eFrameKey} : 0U) | (m_tDone.bDamaged ? unsigned{eFrameDamaged} : 0U);
    tFrame.tFrame.dwLostBefore = m_tDone.nMissedBefore;
    tFrame.tFrame.llWallClockUs = m_tDone.llWallClockUs;
    tFrame.tFrame.pData = m_tDone.abyData.data();
    tFrame.tFrame.dwLength = static_cast<std::uint32_t>(m_tDone.abyData.size());
    if (m_tDone.llStamp != AV_NOPTS_VALUE) // libavformat takes RTP's 0xFFFFFFFF for none
    {
        m_llNextStamp = m_tDone.llStamp;
    }
    tFrame.llStampUs = ToUs(m_llNextStamp);
}

void CTrack::PassOn(AVPacket const& tPacket, unsigned nMissedBefore, tagTrackFrame& tFrame)
{
    const std::int64_t llStamp = tPacket.pts != AV_NOPTS_VALUE ? tPacket.pts : m_llNextStamp;
    // Several AAC frames may share one RTP packet and its time stamp; each lasts 1024 samples.
    m_llNextStamp = av_sat_add64(llStamp, tPacket.duration > 0 ? tPacket.duration : 1024);
    tFrame.tFrame = m_tProperties;
    tFrame.tFrame.dwFlags = (m_bAlwaysKey || (tPacket.flags & AV_PKT_FLAG_KEY) ? unsigned{eFrameKey} : 0U) |
                            (tPacket.flags & AV_PKT_FLAG_CORRUPT ? unsigned{eFrameDamaged} : 0U);
    tFrame.tFrame.dwLostBefore = nMissedBefore;
    tFrame.tFrame.llWallClockUs = WallClock(tPacket);
    tFrame.tFrame.pData = tPacket.data;
    tFrame.tFrame.dwLength = static_cast<std::uint32_t>(tPacket.size);
    tFrame.llStampUs = ToUs(llStamp);
}
} // namespace rtsp
