#include "rtsp/BackChannel.h"

#include "rtsp/Rtcp.h"
#include "rtsp/Rtp.h"

#include <algorithm>
#include <chrono>
#include <random>

namespace rtsp
{
namespace
{
std::uint32_t Random()
{
    return std::random_device()();
}
} // namespace

std::optional<tagAudioFormat> CBackChannel::FormatOf(tagMediaDescription const& tDescription)
{
    tagAudioFormat tFormat{eCodecOther, tDescription.dwClockRate, std::max(tDescription.nChannels, 1U)};
    if (tDescription.strEncoding == "PCMA")
    {
        tFormat.eCodec = eCodecG711A;
    }
    else if (tDescription.strEncoding == "PCMU")
    {
        tFormat.eCodec = eCodecG711U;
    }
    else if (tDescription.strEncoding.starts_with("G726"))
    {
        tFormat.eCodec = eCodecG726;
    }
    else if (tDescription.strEncoding == "MPEG4-GENERIC")
    {
        tFormat.eCodec = eCodecAAC;
    }
    return tFormat.eCodec == eCodecOther || tFormat.dwSampleRate == 0 ? std::nullopt : std::optional(tFormat);
}

CBackChannel::CBackChannel(tagMediaDescription const& tDescription, tagAudioFormat const& tFormat)
    : m_tFormat(tFormat), m_byPayloadType(static_cast<std::uint8_t>(tDescription.nPayloadType)), m_dwSource(Random()),
      m_wSequence(static_cast<std::uint16_t>(Random())), m_dwStamp(Random())
{
}

std::string CBackChannel::MakePacket(Bytes abyFrame, std::uint32_t nSamples, bool bFirst)
{
    tagRtpPacket tPacket;
    tPacket.bMarker = bFirst || m_tFormat.eCodec == eCodecAAC; // of AAC: the end of an access unit
    tPacket.byPayloadType = m_byPayloadType;
    tPacket.wSequence = m_wSequence++;
    tPacket.dwStamp = m_dwStamp;
    tPacket.dwSource = m_dwSource;
    const auto abyHeader = MakeRtpHeader(tPacket);
    std::string strPacket(abyHeader.begin(), abyHeader.end());
    if (m_tFormat.eCodec == eCodecAAC) // one access unit header of 16 bits: its size in 13, its index in 3
    {
        strPacket += {0, 16, static_cast<char>(abyFrame.size() >> 5), static_cast<char>(abyFrame.size() << 3)};
    }
    strPacket.append(reinterpret_cast<char const*>(abyFrame.data()), abyFrame.size());
    m_dwStamp += nSamples;
    ++m_dwPackets;
    m_dwBytes += static_cast<std::uint32_t>(abyFrame.size());
    return strPacket;
}

std::string CBackChannel::MakeReport() const
{
    if (m_dwPackets == 0)
    {
        return {};
    }
    const auto tNow = std::chrono::system_clock::now().time_since_epoch();
    tagSenderReport tReport;
    tReport.dwOwnSource = m_dwSource;
    tReport.ullNtp = UsToNtp(std::chrono::duration_cast<std::chrono::microseconds>(tNow).count());
    tReport.dwStamp = m_dwStamp;
    tReport.dwPackets = m_dwPackets;
    tReport.dwBytes = m_dwBytes;
    return MakeSenderReport(tReport);
}
} // namespace rtsp
