// The packets of a track: a byte for the codec, then the parameter sets of its description, then packets. Whatever has
// a length begins with it, in two bytes.

#include "fuzz/Input.h"
#include "plugins/rtsp/Track.h"

#include <memory>

namespace
{
struct tagStreamOwner
{
    AVFormatContext* pt = avformat_alloc_context();
    ~tagStreamOwner() { avformat_free_context(pt); }
};

void SetExtradata(AVCodecParameters& tCodec, std::string_view strBytes)
{
    tCodec.extradata = static_cast<std::uint8_t*>(av_mallocz(strBytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::memcpy(tCodec.extradata, strBytes.data(), strBytes.size());
    tCodec.extradata_size = static_cast<int>(strBytes.size());
}
bool HasUnit(tagStreamMediaFrame const& tFrame, int nType)
{
    for (std::uint32_t i = 3; i < tFrame.dwLength; ++i)
    {
        unsigned char const* const pby = tFrame.pData + i;
        const int nThis = tFrame.dwCodec == eCodecH264 ? *pby & 0x1F : *pby >> 1 & 0x3F;
        if (pby[-3] == 0 && pby[-2] == 0 && pby[-1] == 1 && nThis == nType)
        {
            return true;
        }
    }
    return false;
}

// A decoder can start with it.
bool HasParameterSets(tagStreamMediaFrame const& tFrame)
{
    return tFrame.dwCodec == eCodecH264 ? HasUnit(tFrame, 7) && HasUnit(tFrame, 8)
                                        : HasUnit(tFrame, 32) && HasUnit(tFrame, 33) && HasUnit(tFrame, 34);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    av_log_set_level(AV_LOG_QUIET);
    constexpr AVCodecID aeCodecs[] = {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_AAC, AV_CODEC_ID_MJPEG};
    CInput tInput(pbyData, nLength);
    const tagStreamOwner tOwner;
    AVStream& tStream = *avformat_new_stream(tOwner.pt, nullptr);
    tStream.time_base = {1, 90000};
    AVCodecParameters& tCodec = *tStream.codecpar;
    tCodec.codec_id = aeCodecs[tInput.Number<std::uint8_t>() % std::size(aeCodecs)];
    tCodec.codec_type = avcodec_get_type(tCodec.codec_id);
    SetExtradata(tCodec, tInput.Bytes(tInput.Number<std::uint16_t>()));
    rtsp::CTrack tTrack(tStream);

    const std::unique_ptr<AVPacket, void (*)(AVPacket*)> ptPacket(av_packet_alloc(),
                                                                  [](AVPacket* pt) { av_packet_free(&pt); });
    std::size_t nTaken = 0;
    std::size_t nMissed = 0;
    std::size_t nTold = 0;
    while (!tInput.IsEmpty())
    {
        const auto byFlags = tInput.Number<std::uint8_t>();
        const auto llStamp = tInput.Number<std::int64_t>();
        const std::string_view strData = tInput.Bytes(tInput.Number<std::uint16_t>());
        if (strData.empty() || av_new_packet(ptPacket.get(), static_cast<int>(strData.size())) != 0)
        {
            continue; // libavformat hands out no empty ones
        }
        std::memcpy(ptPacket->data, strData.data(), strData.size());
        ptPacket->pts = byFlags & 1 ? llStamp : AV_NOPTS_VALUE;
        ptPacket->flags = byFlags & 2 ? AV_PKT_FLAG_KEY : 0;
        const unsigned uMissed = byFlags >> 6;
        if (byFlags & 4)
        {
            tTrack.Reset();
        }
        nTaken += strData.size();
        nMissed += uMissed;
        rtsp::tagTrackFrame tFrame;
        if (tTrack.Take(*ptPacket, uMissed, tFrame))
        {
            tagStreamMediaFrame const& t = tFrame.tFrame;
            const bool bVideo = t.dwCodec == eCodecH264 || t.dwCodec == eCodecH265;
            REQUIRE(t.dwLength <= 3 * (nTaken + static_cast<std::size_t>(tCodec.extradata_size))); // sets come twice
            REQUIRE(t.dwLength > 0 || (bVideo && t.dwFlags & eFrameDamaged));
            REQUIRE(!bVideo || !(t.dwFlags & eFrameKey) || HasParameterSets(t));
            REQUIRE(tFrame.llStampUs >= -(std::int64_t{1} << 60) && tFrame.llStampUs <= (std::int64_t{1} << 60));
            nTold += t.dwLostBefore;
            REQUIRE(nTold <= nMissed);
            // Every byte can be read.
            static volatile unsigned g_uSum = 0;
            for (std::size_t i = 0; i < t.dwLength; ++i)
            {
                g_uSum = g_uSum + t.pData[i];
            }
            for (std::size_t i = 0; i < t.dwConfigLength; ++i)
            {
                g_uSum = g_uSum + t.pConfig[i];
            }
        }
        av_packet_unref(ptPacket.get());
    }
    return 0;
}
