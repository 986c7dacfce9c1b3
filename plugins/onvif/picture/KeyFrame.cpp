#include "plugins/onvif/picture/KeyFrame.h"

#include "protocol/interface/Frames.h"

#include <algorithm>
#include <cstring>
#include <memory>

extern "C"
{
#include <libavcodec/avcodec.h>
}

namespace onvifclient
{
namespace
{
constexpr std::size_t g_nMostFrame = 64U << 20;

struct tagFree
{
    void operator()(AVCodecContext* pt) const { avcodec_free_context(&pt); }
    void operator()(AVFrame* pt) const { av_frame_free(&pt); }
    void operator()(AVPacket* pt) const { av_packet_free(&pt); }
};

unsigned char Byte(int n)
{
    return static_cast<unsigned char>(std::clamp(n, 0, 255));
}

// What the colours of a frame stand for: how much of each goes into red, green and blue, in parts of 65536.
struct tagColours
{
    int nLight;
    int nBlack;
    int nRedOfRed;
    int nRedOfGreen;
    int nBlueOfGreen;
    int nBlueOfBlue;
};

// Small pictures are meant by the older of the two standards, where a stream doesn't say.
tagColours ColoursOf(AVFrame const& tFrame)
{
    const bool bFull = tFrame.color_range == AVCOL_RANGE_JPEG || tFrame.format == AV_PIX_FMT_YUVJ420P;
    const bool bNew =
        tFrame.colorspace == AVCOL_SPC_BT709 || (tFrame.colorspace == AVCOL_SPC_UNSPECIFIED && tFrame.height >= 720);
    const double dChroma = bFull ? 65536 : 65536 * 255.0 / 224;
    const auto fnPart = [&](double d) { return static_cast<int>(d * dChroma); };
    return {bFull ? 65536 : static_cast<int>(65536 * 255.0 / 219),
            bFull ? 0 : 16,
            fnPart(bNew ? 1.5748 : 1.402),
            fnPart(bNew ? 0.4681 : 0.7141),
            fnPart(bNew ? 0.1873 : 0.3441),
            fnPart(bNew ? 1.8556 : 1.772)};
}

void ToDots(AVFrame const& tFrame, tagDots& t)
{
    const tagColours tColours = ColoursOf(tFrame);
    t.dwWidth = static_cast<uint32_t>(tFrame.width);
    t.dwHeight = static_cast<uint32_t>(tFrame.height);
    t.abyDots.resize(std::size_t{t.dwWidth} * t.dwHeight * 3);
    unsigned char* pbyDot = t.abyDots.data();
    for (int y = 0; y < tFrame.height; ++y)
    {
        unsigned char const* const pbyLight = tFrame.data[0] + std::ptrdiff_t{y} * tFrame.linesize[0];
        unsigned char const* const pbyBlue = tFrame.data[1] + std::ptrdiff_t{y / 2} * tFrame.linesize[1];
        unsigned char const* const pbyRed = tFrame.data[2] + std::ptrdiff_t{y / 2} * tFrame.linesize[2];
        for (int x = 0; x < tFrame.width; ++x, pbyDot += 3)
        {
            const int nLight = (pbyLight[x] - tColours.nBlack) * tColours.nLight + 32768;
            const int nBlue = pbyBlue[x / 2] - 128;
            const int nRed = pbyRed[x / 2] - 128;
            pbyDot[0] = Byte((nLight + nRed * tColours.nRedOfRed) >> 16);
            pbyDot[1] = Byte((nLight - nRed * tColours.nRedOfGreen - nBlue * tColours.nBlueOfGreen) >> 16);
            pbyDot[2] = Byte((nLight + nBlue * tColours.nBlueOfBlue) >> 16);
        }
    }
}
} // namespace

bool DecodeKeyFrame(unsigned char const* pbyFrame, std::size_t nLength, uint32_t dwCodec, tagDots& t)
{
    const AVCodecID eCodec = dwCodec == eCodecH264   ? AV_CODEC_ID_H264
                             : dwCodec == eCodecH265 ? AV_CODEC_ID_HEVC
                                                     : AV_CODEC_ID_NONE;
    AVCodec const* const pCodec = avcodec_find_decoder(eCodec);
    const std::unique_ptr<AVCodecContext, tagFree> pContext(pCodec ? avcodec_alloc_context3(pCodec) : nullptr);
    const std::unique_ptr<AVFrame, tagFree> pFrame(av_frame_alloc());
    const std::unique_ptr<AVPacket, tagFree> pPacket(av_packet_alloc());
    if (!pContext || !pFrame || !pPacket || nLength == 0 || nLength > g_nMostFrame)
    {
        return false;
    }
    pContext->thread_count = 1;
    if (avcodec_open2(pContext.get(), pCodec, nullptr) < 0 ||
        av_new_packet(pPacket.get(), static_cast<int>(nLength)) < 0)
    {
        return false;
    }
    std::memcpy(pPacket->data, pbyFrame, nLength);
    // With nothing behind it the decoder gives the picture at once.
    if (avcodec_send_packet(pContext.get(), pPacket.get()) < 0 || avcodec_send_packet(pContext.get(), nullptr) < 0 ||
        avcodec_receive_frame(pContext.get(), pFrame.get()) < 0 ||
        (pFrame->format != AV_PIX_FMT_YUV420P && pFrame->format != AV_PIX_FMT_YUVJ420P))
    {
        return false;
    }
    ToDots(*pFrame, t);
    return true;
}
} // namespace onvifclient
