#include "tools/tessaro/media/Pictures.h"

#include "tools/tessaro/media/Av.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fmt/format.h>

namespace tessaro
{
namespace
{
tagPicture Scaled(AVPixelFormat eFormat, int nWidth, int nHeight, unsigned char const* const* apData,
                  int const* anStride, int nToWidth, int nToHeight)
{
    tagPicture t{nToWidth, nToHeight, std::vector<unsigned char>(static_cast<std::size_t>(nToWidth * nToHeight) * 3)};
    const AvScaler pScaler(sws_getContext(nWidth, nHeight, eFormat, nToWidth, nToHeight, AV_PIX_FMT_RGB24, SWS_AREA,
                                          nullptr, nullptr, nullptr));
    unsigned char* apTo[] = {t.abyRgb.data(), nullptr, nullptr, nullptr};
    const int anToStride[] = {nToWidth * 3, 0, 0, 0};
    if (!pScaler || sws_scale(pScaler.get(), apData, anStride, 0, nHeight, apTo, anToStride) <= 0)
    {
        throw CFailure(eExitFailed, "a picture can't be scaled");
    }
    return t;
}

AvFrame DecodeFrame(AVCodecID eCodec, std::vector<unsigned char> const& abyFrame)
{
    AVCodec const* const pCodec = avcodec_find_decoder(eCodec);
    const AvCodec pDecoder(pCodec ? avcodec_alloc_context3(pCodec) : nullptr);
    const AvPacket pPacket(av_packet_alloc());
    AvFrame pFrame(av_frame_alloc());
    if (!pDecoder || av_new_packet(pPacket.get(), static_cast<int>(abyFrame.size())) != 0)
    {
        return nullptr;
    }
    std::memcpy(pPacket->data, abyFrame.data(), abyFrame.size());
    pDecoder->thread_count = 1;
    pDecoder->flags |= AV_CODEC_FLAG_LOW_DELAY;
    const bool bDecoded = avcodec_open2(pDecoder.get(), pCodec, nullptr) == 0 &&
                          avcodec_send_packet(pDecoder.get(), pPacket.get()) == 0 &&
                          avcodec_send_packet(pDecoder.get(), nullptr) == 0 &&
                          avcodec_receive_frame(pDecoder.get(), pFrame.get()) == 0;
    return bDecoded ? std::move(pFrame) : nullptr;
}

// The full-range formats of JPEG under their names of today.
AVPixelFormat Modern(int nFormat)
{
    return nFormat == AV_PIX_FMT_YUVJ420P   ? AV_PIX_FMT_YUV420P
           : nFormat == AV_PIX_FMT_YUVJ422P ? AV_PIX_FMT_YUV422P
           : nFormat == AV_PIX_FMT_YUVJ444P ? AV_PIX_FMT_YUV444P
                                            : static_cast<AVPixelFormat>(nFormat);
}
} // namespace

void CLastKeyFrame::Take(tagStreamMediaFrame const& tFrame)
{
    if (tFrame.dwMediaType != eMediaVideo || (tFrame.dwFlags & eFrameKey) == 0)
    {
        return;
    }
    const std::lock_guard tLock(m_tMutex);
    m_dwCodec = tFrame.dwCodec;
    m_abyFrame.assign(tFrame.pData, tFrame.pData + tFrame.dwLength);
    ++m_ullTaken;
}

std::uint64_t CLastKeyFrame::Taken() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_ullTaken;
}

std::optional<tagPicture> CLastKeyFrame::Decode() const
{
    std::vector<unsigned char> abyFrame;
    std::uint32_t dwCodec = eCodecOther;
    {
        const std::lock_guard tLock(m_tMutex);
        abyFrame = m_abyFrame;
        dwCodec = m_dwCodec;
    }
    const AvFrame pFrame = abyFrame.empty() ? nullptr : DecodeFrame(AvCodecOf(dwCodec), abyFrame);
    if (!pFrame)
    {
        return std::nullopt;
    }
    return Scaled(Modern(pFrame->format), pFrame->width, pFrame->height, pFrame->data, pFrame->linesize, pFrame->width,
                  pFrame->height);
}

tagPicture Fitted(tagPicture const& tPicture, int nMostWidth, int nMostHeight)
{
    const double dShare = std::min(
        {1.0, static_cast<double>(nMostWidth) / tPicture.nWidth, static_cast<double>(nMostHeight) / tPicture.nHeight});
    unsigned char const* const apData[] = {tPicture.abyRgb.data(), nullptr, nullptr, nullptr};
    const int anStride[] = {tPicture.nWidth * 3, 0, 0, 0};
    return Scaled(AV_PIX_FMT_RGB24, tPicture.nWidth, tPicture.nHeight, apData, anStride,
                  std::max(1, static_cast<int>(std::lround(tPicture.nWidth * dShare))),
                  std::max(1, static_cast<int>(std::lround(tPicture.nHeight * dShare))));
}

tagPicture ContactSheet(std::vector<std::optional<tagPicture>> const& atPictures, int nCellWidth, int nCellHeight)
{
    const int nCount = std::max(1, static_cast<int>(atPictures.size()));
    const int nColumns = static_cast<int>(std::ceil(std::sqrt(nCount)));
    const int nRows = (nCount + nColumns - 1) / nColumns;
    tagPicture tSheet{nColumns * nCellWidth, nRows * nCellHeight, {}};
    tSheet.abyRgb.assign(static_cast<std::size_t>(tSheet.nWidth * tSheet.nHeight) * 3, 0x30);
    for (int i = 0; i < static_cast<int>(atPictures.size()); ++i)
    {
        if (!atPictures[static_cast<std::size_t>(i)])
        {
            continue;
        }
        const tagPicture tCell = Fitted(*atPictures[static_cast<std::size_t>(i)], nCellWidth, nCellHeight);
        const int nLeft = i % nColumns * nCellWidth + (nCellWidth - tCell.nWidth) / 2;
        const int nTop = i / nColumns * nCellHeight + (nCellHeight - tCell.nHeight) / 2;
        for (int y = 0; y < tCell.nHeight; ++y)
        {
            std::memcpy(&tSheet.abyRgb[static_cast<std::size_t>((nTop + y) * tSheet.nWidth + nLeft) * 3],
                        &tCell.abyRgb[static_cast<std::size_t>(y * tCell.nWidth) * 3],
                        static_cast<std::size_t>(tCell.nWidth) * 3);
        }
    }
    return tSheet;
}

void WritePng(tagPicture const& tPicture, std::string const& strFile)
{
    AVCodec const* const pCodec = avcodec_find_encoder(AV_CODEC_ID_PNG);
    const AvCodec pEncoder(avcodec_alloc_context3(pCodec));
    const AvFrame pFrame(av_frame_alloc());
    const AvPacket pPacket(av_packet_alloc());
    pEncoder->width = pFrame->width = tPicture.nWidth;
    pEncoder->height = pFrame->height = tPicture.nHeight;
    pEncoder->pix_fmt = AV_PIX_FMT_RGB24;
    pEncoder->time_base = {1, 1};
    pFrame->format = AV_PIX_FMT_RGB24;
    CheckAv(avcodec_open2(pEncoder.get(), pCodec, nullptr), "making a PNG picture");
    CheckAv(av_frame_get_buffer(pFrame.get(), 0), "making a PNG picture");
    for (int y = 0; y < tPicture.nHeight; ++y)
    {
        std::memcpy(pFrame->data[0] + y * pFrame->linesize[0],
                    &tPicture.abyRgb[static_cast<std::size_t>(y * tPicture.nWidth) * 3],
                    static_cast<std::size_t>(tPicture.nWidth) * 3);
    }
    CheckAv(avcodec_send_frame(pEncoder.get(), pFrame.get()), "making a PNG picture");
    CheckAv(avcodec_receive_packet(pEncoder.get(), pPacket.get()), "making a PNG picture");

    const std::string strNew = strFile + ".new";
    std::FILE* const pFile = std::fopen(strNew.c_str(), "wb");
    const bool bWritten = pFile && std::fwrite(pPacket->data, 1, static_cast<std::size_t>(pPacket->size), pFile) ==
                                       static_cast<std::size_t>(pPacket->size);
    if (!(pFile && std::fclose(pFile) == 0 && bWritten && std::rename(strNew.c_str(), strFile.c_str()) == 0))
    {
        const int nError = errno;
        std::remove(strNew.c_str());
        throw CFailure(eExitFailed, fmt::format("{} can't be written: {}", strFile, strerror(nError)));
    }
}
} // namespace tessaro
