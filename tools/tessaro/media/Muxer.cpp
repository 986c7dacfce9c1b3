#include "tools/tessaro/media/Muxer.h"

#include "tools/tessaro/media/Av.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <fmt/format.h>
#include <mutex>
#include <optional>
#include <set>
#include <vector>

namespace tessaro
{
namespace
{
constexpr AVRational g_tMicroseconds = {1, 1000000};
constexpr std::int64_t g_llWaitUs = 1000000; // for the other track
constexpr std::size_t g_nEnoughFrames = 8;   // show whether frames come in another order than they are shown in

using Bytes = std::vector<unsigned char>;

// The parameter sets at the beginning of a key frame, as they stand: all before its first slice.
Bytes ParameterSets(tagStreamMediaFrame const& tFrame, Bytes const& abyData)
{
    for (std::size_t i = 0; i + 3 < abyData.size(); ++i)
    {
        if (abyData[i] != 0 || abyData[i + 1] != 0 || abyData[i + 2] != 1)
        {
            continue;
        }
        const unsigned int byHead = abyData[i + 3];
        const bool bSlice =
            tFrame.dwCodec == eCodecH264 ? (byHead & 0x1F) >= 1 && (byHead & 0x1F) <= 5 : ((byHead >> 1) & 0x3F) < 32;
        if (bSlice)
        {
            return {abyData.begin(), abyData.begin() + static_cast<std::ptrdiff_t>(i)};
        }
    }
    return {};
}
} // namespace

struct CMuxer::tagState
{
    struct tagKept
    {
        tagStreamMediaFrame tFrame;
        Bytes abyData;
        Bytes abyConfig;
    };

    std::string strFile;
    std::mutex tMutex;
    AVFormatContext* pOutput = nullptr;
    bool bBegun = false;
    std::optional<CFailure> tFailure;
    std::string strLeftOut;
    std::deque<tagKept> tWaiting;
    std::optional<std::int64_t> llBaseUs;
    std::int64_t allLast[2] = {INT64_MIN / 2, INT64_MIN / 2}; ///< times of decoding
    AVStream* apTracks[2] = {nullptr, nullptr};
    std::size_t nReordered = 0;           ///< so many frames at most come before one that is shown earlier
    std::int64_t llFrameUs = 0;           ///< between two frames
    std::multiset<std::int64_t> tllShown; ///< times whose turn as a time of decoding hasn't come yet

    static int Track(tagStreamMediaFrame const& t) { return t.dwMediaType == eMediaVideo ? 0 : 1; }
    tagKept const* First(int nTrack) const
    {
        const auto it = std::ranges::find_if(tWaiting, [&](tagKept const& t) { return Track(t.tFrame) == nTrack; });
        return it == tWaiting.end() ? nullptr : &*it;
    }

    std::vector<std::int64_t> WaitingVideo() const
    {
        std::vector<std::int64_t> allUs;
        for (tagKept const& t : tWaiting)
        {
            if (Track(t.tFrame) == 0)
            {
                allUs.push_back(t.tFrame.llPresentationTimeUs);
            }
        }
        return allUs;
    }

    // Whether there are frames that are decoded early because others refer to them, and how early.
    void SeeOrder()
    {
        const std::vector<std::int64_t> allUs = WaitingVideo();
        for (auto it = allUs.begin(); it != allUs.end(); ++it)
        {
            const auto nLater = std::count_if(allUs.begin(), it, [&](std::int64_t ll) { return ll > *it; });
            nReordered = std::max(nReordered, static_cast<std::size_t>(nLater));
        }
        if (nReordered > 0)
        {
            const auto [itFirst, itLast] = std::ranges::minmax_element(allUs);
            llFrameUs = (*itLast - *itFirst) / static_cast<std::int64_t>(allUs.size() - 1);
        }
    }

    // When a frame is decoded: the times at which frames are shown in their order, so much earlier that none is late.
    std::int64_t DecodingUs(std::int64_t llShownUs)
    {
        tllShown.insert(llShownUs);
        const std::int64_t llFirstUs = *tllShown.begin();
        if (tllShown.size() <= nReordered)
        {
            return llFirstUs - static_cast<std::int64_t>(nReordered + 1 - tllShown.size()) * llFrameUs;
        }
        tllShown.erase(tllShown.begin());
        return llFirstUs;
    }

    void AddTrack(tagKept const& t)
    {
        const AVCodecID eCodec = AvCodecOf(t.tFrame.dwCodec);
        if (eCodec == AV_CODEC_ID_NONE || avformat_query_codec(pOutput->oformat, eCodec, FF_COMPLIANCE_NORMAL) != 1)
        {
            strLeftOut = t.tFrame.szCodecName;
            return;
        }
        AVStream* const pTrack = avformat_new_stream(pOutput, nullptr);
        AVCodecParameters& tParameters = *pTrack->codecpar;
        const bool bVideo = Track(t.tFrame) == 0;
        tParameters.codec_type = bVideo ? AVMEDIA_TYPE_VIDEO : AVMEDIA_TYPE_AUDIO;
        tParameters.codec_id = eCodec;
        tParameters.width = static_cast<int>(t.tFrame.dwWidth);
        tParameters.height = static_cast<int>(t.tFrame.dwHeight);
        tParameters.sample_rate = static_cast<int>(t.tFrame.dwSampleRate);
        av_channel_layout_default(&tParameters.ch_layout,
                                  bVideo ? 0 : static_cast<int>(std::max(1u, t.tFrame.dwChannels)));
        const bool bSets = t.tFrame.dwCodec == eCodecH264 || t.tFrame.dwCodec == eCodecH265;
        Bytes const abyConfig = bSets ? ParameterSets(t.tFrame, t.abyData) : t.abyConfig;
        if (!abyConfig.empty())
        {
            tParameters.extradata =
                static_cast<unsigned char*>(av_mallocz(abyConfig.size() + AV_INPUT_BUFFER_PADDING_SIZE));
            tParameters.extradata_size = static_cast<int>(abyConfig.size());
            std::memcpy(tParameters.extradata, abyConfig.data(), abyConfig.size());
        }
        pTrack->time_base = bVideo ? AVRational{1, 90000} : AVRational{1, std::max(1, tParameters.sample_rate)};
        apTracks[bVideo ? 0 : 1] = pTrack;
    }

    void Begin()
    {
        bBegun = true;
        SeeOrder();
        for (int nTrack = 0; nTrack < 2; ++nTrack)
        {
            if (tagKept const* const pt = First(nTrack))
            {
                AddTrack(*pt);
            }
        }
        if (!apTracks[0] && !apTracks[1])
        {
            throw CFailure(eExitFailed, fmt::format("{} can't hold {}; .mkv takes more", strFile, strLeftOut));
        }
        CheckAv(avio_open(&pOutput->pb, strFile.c_str(), AVIO_FLAG_WRITE), strFile + " can't be written");
        CheckAv(avformat_write_header(pOutput, nullptr), "beginning " + strFile);
        for (; !tWaiting.empty(); tWaiting.pop_front())
        {
            Write(tWaiting.front());
        }
    }

    void Write(tagKept const& t)
    {
        const int nTrack = Track(t.tFrame);
        AVStream const* const pTrack = apTracks[nTrack];
        if (!pTrack)
        {
            return;
        }
        llBaseUs = llBaseUs.value_or(t.tFrame.llPresentationTimeUs);
        const AvPacket pPacket(av_packet_alloc());
        CheckAv(av_new_packet(pPacket.get(), static_cast<int>(t.abyData.size())), "writing " + strFile);
        std::memcpy(pPacket->data, t.abyData.data(), t.abyData.size());
        const std::int64_t llShownUs = std::max<std::int64_t>(0, t.tFrame.llPresentationTimeUs - *llBaseUs);
        const auto Ticks = [&](std::int64_t llUs) { return av_rescale_q(llUs, g_tMicroseconds, pTrack->time_base); };
        // A container wants times of decoding that rise, whatever the device's clock did.
        pPacket->dts = std::max(Ticks(nTrack == 0 ? DecodingUs(llShownUs) : llShownUs), allLast[nTrack] + 1);
        pPacket->pts = std::max(Ticks(llShownUs), pPacket->dts);
        allLast[nTrack] = pPacket->dts;
        pPacket->stream_index = pTrack->index;
        pPacket->flags = nTrack == 1 || (t.tFrame.dwFlags & eFrameKey) != 0 ? AV_PKT_FLAG_KEY : 0;
        CheckAv(av_interleaved_write_frame(pOutput, pPacket.get()), "writing " + strFile);
    }

    void Take(tagStreamMediaFrame const& tFrame)
    {
        const bool bWanted = tFrame.dwMediaType != eMediaOther && tFrame.dwLength > 0;
        const bool bStart = tFrame.dwMediaType == eMediaAudio || (tFrame.dwFlags & eFrameKey) != 0;
        if (!bWanted || tFailure || (tFrame.dwMediaType == eMediaVideo && !bBegun && !First(0) && !bStart))
        {
            return;
        }
        tagKept tKept{tFrame, Bytes(tFrame.pData, tFrame.pData + tFrame.dwLength), {}};
        if (tFrame.pConfig)
        {
            tKept.abyConfig.assign(tFrame.pConfig, tFrame.pConfig + tFrame.dwConfigLength);
        }
        if (bBegun)
        {
            return Write(tKept);
        }
        tWaiting.push_back(std::move(tKept));
        const auto llWaitedUs = tFrame.llPresentationTimeUs - tWaiting.front().tFrame.llPresentationTimeUs;
        const bool bAll = First(1) && WaitingVideo().size() >= g_nEnoughFrames;
        if (First(0) && (bAll || llWaitedUs > g_llWaitUs))
        {
            Begin();
        }
    }
};

CMuxer::CMuxer(std::string const& strFile) : m_pState(std::make_unique<tagState>())
{
    m_pState->strFile = strFile;
    av_log_set_level(AV_LOG_QUIET);
    if (avformat_alloc_output_context2(&m_pState->pOutput, nullptr, nullptr, strFile.c_str()) < 0)
    {
        throw CFailure(eExitUsage, fmt::format("the name {} doesn't say what kind of file it is", strFile),
                       "end it in .mp4, .mkv, .mov or .ts");
    }
}

CMuxer::~CMuxer()
{
    if (m_pState->pOutput)
    {
        avio_closep(&m_pState->pOutput->pb);
        avformat_free_context(m_pState->pOutput);
    }
}

void CMuxer::Take(tagStreamMediaFrame const& tFrame)
{
    const std::lock_guard tLock(m_pState->tMutex);
    try
    {
        m_pState->Take(tFrame);
    }
    catch (CFailure const& tFailure)
    {
        m_pState->tFailure = tFailure;
    }
}

void CMuxer::Close()
{
    const std::lock_guard tLock(m_pState->tMutex);
    tagState& t = *m_pState;
    if (t.tFailure)
    {
        throw *t.tFailure;
    }
    if (!t.bBegun && (t.First(0) || t.First(1)))
    {
        t.Begin();
    }
    if (!t.bBegun)
    {
        throw CFailure(eExitFailed, "nothing came that could be written to " + t.strFile);
    }
    CheckAv(av_write_trailer(t.pOutput), "completing " + t.strFile);
    CheckAv(avio_closep(&t.pOutput->pb), "completing " + t.strFile);
}

std::string CMuxer::LeftOut() const
{
    const std::lock_guard tLock(m_pState->tMutex);
    return m_pState->strLeftOut;
}
} // namespace tessaro
