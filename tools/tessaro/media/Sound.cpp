#include "tools/tessaro/media/Sound.h"

#include "tools/tessaro/media/Av.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fmt/format.h>

namespace tessaro
{
struct CSoundSource::tagState
{
    tagVoiceStreamPara tAgreed{};
    bool bRaw = false;
    bool bEnded = false;
    AvInput pInput;
    AvCodec pDecoder, pEncoder;
    AvResampler pResampler;
    int nTrack = -1;
    std::vector<std::int16_t> anSamples; // decoded, not yet in a packet

    std::size_t PacketSamples() const
    {
        return std::size_t{tAgreed.dwSampleRate} * tAgreed.dwPacketMs / 1000 * tAgreed.dwChannels;
    }

    void OpenFile(std::string const& strFile)
    {
        AVFormatContext* pOpened = nullptr;
        CheckAv(avformat_open_input(&pOpened, strFile.c_str(), nullptr, nullptr), strFile);
        pInput.reset(pOpened);
        CheckAv(avformat_find_stream_info(pInput.get(), nullptr), strFile);
        AVCodec const* pCodec = nullptr;
        nTrack = CheckAv(av_find_best_stream(pInput.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &pCodec, 0),
                         strFile + " has no sound");
        pDecoder.reset(avcodec_alloc_context3(pCodec));
        CheckAv(avcodec_parameters_to_context(pDecoder.get(), pInput->streams[nTrack]->codecpar), strFile);
        CheckAv(avcodec_open2(pDecoder.get(), pCodec, nullptr), strFile);
        AVChannelLayout tLayout{};
        av_channel_layout_default(&tLayout, static_cast<int>(tAgreed.dwChannels));
        SwrContext* pMade = nullptr;
        CheckAv(swr_alloc_set_opts2(&pMade, &tLayout, AV_SAMPLE_FMT_S16, static_cast<int>(tAgreed.dwSampleRate),
                                    &pDecoder->ch_layout, pDecoder->sample_fmt, pDecoder->sample_rate, 0, nullptr),
                strFile);
        pResampler.reset(pMade);
        CheckAv(swr_init(pResampler.get()), strFile);
    }

    void OpenEncoder()
    {
        AVCodec const* const pCodec = avcodec_find_encoder(AvCodecOf(tAgreed.dwCodec));
        if (!pCodec || (tAgreed.dwCodec != eCodecG711A && tAgreed.dwCodec != eCodecG711U))
        {
            throw CFailure(eExitUnsupported, "the device wants a codec that this program can't write");
        }
        pEncoder.reset(avcodec_alloc_context3(pCodec));
        pEncoder->sample_rate = static_cast<int>(tAgreed.dwSampleRate);
        pEncoder->sample_fmt = AV_SAMPLE_FMT_S16;
        av_channel_layout_default(&pEncoder->ch_layout, static_cast<int>(tAgreed.dwChannels));
        CheckAv(avcodec_open2(pEncoder.get(), pCodec, nullptr), "coding sound");
    }

    void Resample(AVFrame const* pFrame)
    {
        std::int16_t an[8192];
        auto* pTo = reinterpret_cast<unsigned char*>(an);
        const int nRoom = static_cast<int>(std::size(an) / tAgreed.dwChannels);
        auto const** const apFrom = pFrame ? const_cast<unsigned char const**>(pFrame->extended_data) : nullptr;
        for (int n = swr_convert(pResampler.get(), &pTo, nRoom, apFrom, pFrame ? pFrame->nb_samples : 0); n > 0;
             n = swr_convert(pResampler.get(), &pTo, nRoom, nullptr, 0))
        {
            anSamples.insert(anSamples.end(), an, an + static_cast<std::size_t>(n) * tAgreed.dwChannels);
            if (pFrame && n < nRoom)
            {
                break;
            }
        }
    }

    void ReadFile()
    {
        const AvPacket pPacket(av_packet_alloc());
        const AvFrame pFrame(av_frame_alloc());
        bEnded = av_read_frame(pInput.get(), pPacket.get()) < 0;
        if (!bEnded && pPacket->stream_index != nTrack)
        {
            return;
        }
        avcodec_send_packet(pDecoder.get(), bEnded ? nullptr : pPacket.get());
        while (avcodec_receive_frame(pDecoder.get(), pFrame.get()) == 0)
        {
            Resample(pFrame.get());
        }
        if (bEnded)
        {
            Resample(nullptr);
        }
    }

    void ReadRaw()
    {
        std::int16_t an[1024];
        const std::size_t n = std::fread(an, sizeof an[0], std::min(std::size(an), PacketSamples()), stdin);
        anSamples.insert(anSamples.end(), an, an + n);
        bEnded = n == 0;
    }
};

CSoundSource::CSoundSource(std::string const& strFile, tagVoiceStreamPara const& tAgreed)
    : m_pState(std::make_unique<tagState>())
{
    m_pState->tAgreed = tAgreed;
    m_pState->bRaw = strFile == "-";
    av_log_set_level(AV_LOG_QUIET);
    m_pState->OpenEncoder();
    if (!m_pState->bRaw)
    {
        m_pState->OpenFile(strFile);
    }
}

CSoundSource::~CSoundSource() = default;

std::vector<unsigned char> CSoundSource::Next()
{
    tagState& t = *m_pState;
    const std::size_t nWanted = t.PacketSamples();
    while (t.anSamples.size() < nWanted && !t.bEnded)
    {
        t.bRaw ? t.ReadRaw() : t.ReadFile();
    }
    if (t.anSamples.empty())
    {
        return {};
    }
    t.anSamples.resize(std::max(nWanted, t.anSamples.size())); // the last packet ends in silence
    const AvFrame pFrame(av_frame_alloc());
    pFrame->format = AV_SAMPLE_FMT_S16;
    pFrame->nb_samples = static_cast<int>(nWanted / t.tAgreed.dwChannels);
    pFrame->sample_rate = t.pEncoder->sample_rate;
    CheckAv(av_channel_layout_copy(&pFrame->ch_layout, &t.pEncoder->ch_layout), "coding sound");
    CheckAv(av_frame_get_buffer(pFrame.get(), 0), "coding sound");
    std::memcpy(pFrame->data[0], t.anSamples.data(), nWanted * sizeof t.anSamples[0]);
    t.anSamples.erase(t.anSamples.begin(), t.anSamples.begin() + static_cast<std::ptrdiff_t>(nWanted));
    const AvPacket pPacket(av_packet_alloc());
    CheckAv(avcodec_send_frame(t.pEncoder.get(), pFrame.get()), "coding sound");
    CheckAv(avcodec_receive_packet(t.pEncoder.get(), pPacket.get()), "coding sound");
    return {pPacket->data, pPacket->data + pPacket->size};
}

CWavFile::CWavFile(std::string const& strFile) : m_pFile(std::fopen(strFile.c_str(), "wb"))
{
    if (!m_pFile)
    {
        throw CFailure(eExitFailed, fmt::format("{} can't be written: {}", strFile, strerror(errno)));
    }
}

CWavFile::~CWavFile()
{
    Head(); // now that its length is known
    std::fclose(m_pFile);
}

void CWavFile::Head()
{
    const auto Four = [&](std::uint32_t dw) { std::fwrite(&dw, 4, 1, m_pFile); };
    const auto Two = [&](unsigned int w)
    {
        const auto wShort = static_cast<std::uint16_t>(w);
        std::fwrite(&wShort, 2, 1, m_pFile);
    };
    const std::uint32_t dwChannels = std::max(1u, m_tFirst.dwChannels);
    std::fseek(m_pFile, 0, SEEK_SET);
    std::fputs("RIFF", m_pFile);
    Four(38 + m_dwBytes);
    std::fputs("WAVEfmt ", m_pFile);
    Four(18);
    Two(m_tFirst.dwCodec == eCodecG711U ? 7 : 6);
    Two(dwChannels);
    Four(m_tFirst.dwSampleRate);
    Four(m_tFirst.dwSampleRate * dwChannels);
    Two(dwChannels);
    Two(8);
    Two(0);
    std::fputs("data", m_pFile);
    Four(m_dwBytes);
}

void CWavFile::Take(tagStreamVoiceFrame const& tFrame)
{
    if (tFrame.dwCodec != eCodecG711A && tFrame.dwCodec != eCodecG711U)
    {
        return;
    }
    if (m_dwBytes == 0)
    {
        m_tFirst = tFrame;
        Head();
    }
    m_dwBytes += static_cast<std::uint32_t>(std::fwrite(tFrame.pData, 1, tFrame.dwLength, m_pFile));
}
} // namespace tessaro
