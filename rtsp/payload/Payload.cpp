#include "rtsp/payload/Payload.h"
#include "rtsp/Buffers.h"
#include "rtsp/Text.h"

#include <algorithm>
#include <string>
#include <utility>

namespace rtsp
{
namespace
{
eMediaType MediaType(std::string_view strMedia)
{
    return strMedia == "video" ? eMediaVideo : strMedia == "audio" ? eMediaAudio : eMediaOther;
}

struct tagKnown
{
    char const* szEncoding;
    std::unique_ptr<CPayload> (*pfnMake)(tagMediaDescription const&);
};
constexpr tagKnown g_atKnown[] = {
    {"H264", &MakeH264}, {"H265", &MakeH265}, {"MPEG4-GENERIC", &MakeAac}, {"MP4A-LATM", &MakeLatm},
    {"JPEG", &MakeJpeg}, {"HEVC", &MakeH265}, {"MP4V-ES", &MakeMpeg4},     {"MP2T", &MakeMpegTs},
};

struct tagSimple
{
    char const* szEncoding;
    eMediaCodec eCodec;
    char const* szName;
};
constexpr tagSimple g_atWhole[] = {
    {"PCMA", eCodecG711A, "pcm_alaw"},
    {"PCMU", eCodecG711U, "pcm_mulaw"},
    {"G726-16", eCodecG726, "g726-16"},
    {"G726-24", eCodecG726, "g726-24"},
    {"G726-32", eCodecG726, "g726-32"},
    {"G726-40", eCodecG726, "g726-40"},
    {"AAL2-G726-16", eCodecG726, "aal2-g726-16"}, // the same bits, the other way round in a byte
    {"AAL2-G726-24", eCodecG726, "aal2-g726-24"},
    {"AAL2-G726-32", eCodecG726, "aal2-g726-32"},
    {"AAL2-G726-40", eCodecG726, "aal2-g726-40"},
    {"OPUS", eCodecOpus, "opus"},
};
} // namespace

void tagUnit::TakeReplay(tagRtpPacket const& tPacket)
{
    if (!tPacket.tReplay)
    {
        return;
    }
    llRecordedUs = llRecordedUs.value_or(tPacket.tReplay->llTimeUs);
    bReplayGap = bReplayGap || tPacket.tReplay->bDiscontinuity;
    bReplayEnd = bReplayEnd || tPacket.tReplay->bEndOfSection || tPacket.tReplay->bTerminal;
    bRecordingEnds = bRecordingEnds || tPacket.tReplay->bTerminal;
}

CPayload::CPayload(tagMediaDescription const& tDescription, eMediaCodec eCodec, std::string_view strName)
{
    tagStreamMediaFrame& tFrame = m_tFormat.tFrame;
    tFrame.dwMediaType = static_cast<std::uint32_t>(MediaType(tDescription.strMedia));
    tFrame.dwCodec = static_cast<std::uint32_t>(eCodec);
    strName.substr(0, sizeof tFrame.szCodecName - 1).copy(tFrame.szCodecName, sizeof tFrame.szCodecName - 1);
    if (tFrame.dwMediaType == eMediaVideo)
    {
        tFrame.dwWidth = tDescription.nWidth;
        tFrame.dwHeight = tDescription.nHeight;
    }
    else if (tFrame.dwMediaType == eMediaAudio)
    {
        tFrame.dwSampleRate = tDescription.dwClockRate;
        tFrame.dwChannels = std::max(tDescription.nChannels, 1U);
    }
}

void CPayload::SetConfig(std::vector<unsigned char> abyConfig)
{
    m_tFormat.pabyConfig.reset();
    if (!abyConfig.empty())
    {
        m_tFormat.pabyConfig = std::make_shared<std::vector<unsigned char> const>(std::move(abyConfig));
    }
    m_tFormat.tFrame.pConfig = m_tFormat.pabyConfig ? m_tFormat.pabyConfig->data() : nullptr;
    m_tFormat.tFrame.dwConfigLength =
        m_tFormat.pabyConfig ? static_cast<std::uint32_t>(m_tFormat.pabyConfig->size()) : 0;
}

void CPacketPayload::PassOn(Bytes abyFrame, tagRtpPacket const& tPacket, std::uint32_t dwStamp, bool bDamaged,
                            IUnitSink& tSink)
{
    tagUnit tUnit;
    tUnit.abyData = TakeBuffer(abyFrame.size());
    Append(tUnit.abyData, abyFrame);
    tUnit.dwStamp = dwStamp;
    tUnit.nLostBefore = std::exchange(m_nLostBefore, 0U);
    tUnit.bKey = true;
    tUnit.bDamaged = bDamaged;
    tUnit.TakeReplay(tPacket);
    tSink.OnUnit(tUnit);
    GiveBuffer(std::move(tUnit.abyData));
}

std::unique_ptr<CPayload> MakePayload(tagMediaDescription const& tDescription)
{
    for (tagKnown const& tKnown : g_atKnown)
    {
        if (tDescription.strEncoding == tKnown.szEncoding)
        {
            return tKnown.pfnMake(tDescription);
        }
    }
    for (tagSimple const& tWhole : g_atWhole)
    {
        if (tDescription.strEncoding == tWhole.szEncoding)
        {
            return MakeWhole(tDescription, tWhole.eCodec, tWhole.szName);
        }
    }
    if (tDescription.strEncoding == "VND.ONVIF.METADATA")
    {
        return MakeMarked(tDescription, eCodecMetadata, "onvif-metadata");
    }
    const std::string strName = Lower(tDescription.strEncoding);
    return tDescription.strMedia == "audio" ? MakeWhole(tDescription, eCodecOther, strName)
                                            : MakeMarked(tDescription, eCodecOther, strName);
}
} // namespace rtsp
