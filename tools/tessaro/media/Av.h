#pragma once

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include "tools/tessaro/Failure.h"

#include <memory>
#include <string>

namespace tessaro
{
template <auto pfnFree>
struct tagFree
{
    template <class T>
    void operator()(T* pt) const
    {
        pfnFree(&pt);
    }
};
using AvCodec = std::unique_ptr<AVCodecContext, tagFree<avcodec_free_context>>;
using AvFrame = std::unique_ptr<AVFrame, tagFree<av_frame_free>>;
using AvPacket = std::unique_ptr<AVPacket, tagFree<av_packet_free>>;
using AvInput = std::unique_ptr<AVFormatContext, tagFree<avformat_close_input>>;
using AvResampler = std::unique_ptr<SwrContext, tagFree<swr_free>>;
struct tagFreeScaler
{
    void operator()(SwsContext* pt) const { sws_freeContext(pt); }
};
using AvScaler = std::unique_ptr<SwsContext, tagFreeScaler>;

/// Throws what an error of the media libraries means.
inline int CheckAv(int nResult, std::string const& strWhat)
{
    if (nResult < 0)
    {
        char sz[AV_ERROR_MAX_STRING_SIZE]{};
        av_strerror(nResult, sz, sizeof sz);
        throw CFailure(eExitFailed, strWhat + ": " + sz);
    }
    return nResult;
}

/// The media libraries' number of a codec of ours; AV_CODEC_ID_NONE: they have none.
inline AVCodecID AvCodecOf(std::uint32_t dwCodec)
{
    switch (dwCodec)
    {
    case eCodecH264:
        return AV_CODEC_ID_H264;
    case eCodecH265:
        return AV_CODEC_ID_HEVC;
    case eCodecAAC:
        return AV_CODEC_ID_AAC;
    case eCodecG711A:
        return AV_CODEC_ID_PCM_ALAW;
    case eCodecG711U:
        return AV_CODEC_ID_PCM_MULAW;
    case eCodecG726:
        return AV_CODEC_ID_ADPCM_G726LE;
    case eCodecOpus:
        return AV_CODEC_ID_OPUS;
    case eCodecMJPEG:
        return AV_CODEC_ID_MJPEG;
    case eCodecMPEG4:
        return AV_CODEC_ID_MPEG4;
    default:
        return AV_CODEC_ID_NONE;
    }
}
} // namespace tessaro
