#include "plugins/device/Device.h"
#include "tools/onvif_device/rtsp/RtspMount.h"
#include "tools/onvif_device/rtsp/RtspReplaySource.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace onvif_device
{
using device::CRecordedFrames;
using device::tagRecordedFrame;

CReplayTrack::CReplayTrack(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel, bool bVideo, uint32_t dwCodec)
    : m_pDevice(std::move(pDevice)), m_dwChannel(dwChannel), m_bVideo(bVideo), m_dwCodec(dwCodec)
{
    gst_segment_init(&m_tAsked, GST_FORMAT_TIME);
    Load();
}

std::vector<device::tagRecording> CReplayTrack::Recordings() const
{
    device::tagRecordingQuestion tQuestion;
    tQuestion.ullChannels = uint64_t{1} << m_dwChannel;
    return m_pDevice->Recordings(tQuestion);
}

void CReplayTrack::Load()
{
    const auto atRecordings = Recordings();
    m_atSections.clear();
    for (device::tagRecording const& t : atRecordings)
    {
        if (!m_atSections.empty() && t.llStartUs <= m_atSections.back().llEndUs)
        {
            m_atSections.back().llEndUs = std::max(m_atSections.back().llEndUs, t.llEndUs);
            continue;
        }
        const int64_t llPlayedUs = m_atSections.empty() ? 0
                                                        : m_atSections.back().llPlayedUs + m_atSections.back().llEndUs -
                                                              m_atSections.back().llStartUs;
        m_atSections.push_back({t.llStartUs, t.llEndUs, llPlayedUs});
    }
    m_tFrames.emplace(atRecordings, 0, 0, !m_bVideo, m_bVideo && m_bKeysOnly);
}

GstCaps* CReplayTrack::Caps() const
{
    switch (m_dwCodec)
    {
    case eCodecH264:
    case eCodecH265:
        return gst_caps_new_simple(m_dwCodec == eCodecH264 ? "video/x-h264" : "video/x-h265", "stream-format",
                                   G_TYPE_STRING, "byte-stream", "alignment", G_TYPE_STRING, "au", nullptr);
    default:
        return gst_caps_new_simple(m_dwCodec == eCodecG711A ? "audio/x-alaw" : "audio/x-mulaw", "rate", G_TYPE_INT,
                                   8000, "channels", G_TYPE_INT, 1, nullptr);
    }
}

GstClockTime CReplayTrack::EndNs() const
{
    return m_atSections.empty() ? 0 : NtpNs(m_atSections.back().llEndUs);
}

bool CReplayTrack::IsMine(tagRecordedFrame const& tFrame) const
{
    return (tFrame.pClip != nullptr) == m_bVideo && (m_bVideo ? tFrame.pClip->Codec() : tFrame.dwCodec) == m_dwCodec;
}

// The next frame of this track in the direction that was asked for.
bool CReplayTrack::Fetch(CRecordedFrames& tFrames, tagRecordedFrame& tFrame) const
{
    while (m_bReverse ? tFrames.NextBackwards(tFrame) : tFrames.Next(tFrame))
    {
        if ((tFrame.pClip != nullptr) == m_bVideo && (m_bVideo ? tFrame.pClip->Codec() : tFrame.dwCodec) == m_dwCodec)
        {
            return true;
        }
    }
    return false;
}

CReplayTrack::tagSection const& CReplayTrack::SectionAt(int64_t llTimeUs) const
{
    const auto it = std::ranges::upper_bound(m_atSections, llTimeUs, {}, &tagSection::llStartUs);
    return it == m_atSections.begin() ? *it : *(it - 1);
}

// How much was recorded before this time.
int64_t CReplayTrack::PlayedAt(int64_t llTimeUs) const
{
    tagSection const& t = SectionAt(llTimeUs);
    return t.llPlayedUs + llTimeUs - t.llStartUs;
}

// The segment from this time on. All tracks come to the same: it follows from what was asked and recorded.
GstSegment CReplayTrack::SegmentFrom(int64_t llTimeUs) const
{
    GstSegment tSegment = m_tAsked;
    (m_bReverse ? tSegment.stop : tSegment.start) = NtpNs(llTimeUs);
    tSegment.position = NtpNs(llTimeUs);
    tSegment.time = tSegment.start;
    const int64_t llPlayedUs = std::llabs(PlayedAt(llTimeUs) - PlayedAt(m_llAnchorUs));
    tSegment.base = static_cast<guint64>(static_cast<double>(llPlayedUs) * 1000 / std::fabs(tSegment.rate));
    return tSegment;
}

void CReplayTrack::Seek(GstSegment& tSegment)
{
    m_bReverse = tSegment.rate < 0;
    m_bKeysOnly = (tSegment.flags & GST_SEGMENT_FLAG_TRICKMODE_KEY_UNITS) != 0;
    m_tAsked = tSegment;
    m_tNext.reset();
    Load();
    if (m_atSections.empty())
    {
        return;
    }
    // Something must come: the server waits for it.
    const int64_t llWantedUs =
        std::clamp(TimeUs(tSegment.position), m_tFrames->StartUs() + 1000000, m_tFrames->EndUs() - 1);
    // Where the pictures begin, whichever track this is.
    CRecordedFrames tPictures(Recordings(), 0, 0, false, m_bKeysOnly);
    tagRecordedFrame tFirst;
    if (m_bReverse ? !tPictures.SeekBackwards(llWantedUs) || !tPictures.NextBackwards(tFirst)
                   : !tPictures.Seek(llWantedUs) || !tPictures.Next(tFirst))
    {
        m_tFrames->Resume(m_atSections.back().llEndUs);
        return;
    }
    m_llAnchorUs = tFirst.llTimeUs + (m_bReverse ? tFirst.llDurationUs : 0);
    if (m_bVideo && m_bReverse)
    {
        m_tFrames->SeekBackwards(llWantedUs);
    }
    else
    {
        FindNext(tFirst.llTimeUs);
    }
    m_llSection = SectionAt(tFirst.llTimeUs).llStartUs;
    tSegment = SegmentFrom(m_llAnchorUs);
}

// Whether more is being recorded; takes in what has come.
bool CReplayTrack::GrowsOn()
{
    const auto atRecordings = Recordings();
    if (m_bReverse || std::ranges::none_of(atRecordings, &device::tagRecording::bRecording))
    {
        return false;
    }
    const int64_t llEndUs = m_tFrames->EndUs();
    Load();
    m_tFrames->Resume(llEndUs);
    return true;
}

// The first frame of this track from a time on. Sound is looked up forwards, whichever way pictures go.
void CReplayTrack::FindNext(int64_t llTimeUs)
{
    m_tFrames->Seek(llTimeUs);
    tagRecordedFrame tFrame;
    while (m_tFrames->Next(tFrame))
    {
        if (IsMine(tFrame) && tFrame.llTimeUs >= llTimeUs)
        {
            m_tNext = tFrame;
            return;
        }
    }
}

CReplayTrack::eNext CReplayTrack::Next(GstBuffer*& pBuffer, std::optional<GstSegment>& tSegment)
{
    tagRecordedFrame tFrame;
    if (m_tNext)
    {
        tFrame = *std::exchange(m_tNext, std::nullopt);
    }
    else if (!m_bVideo && (m_bReverse || m_bKeysOnly))
    {
        return eNext::End;
    }
    else if (!Fetch(*m_tFrames, tFrame))
    {
        return GrowsOn() ? eNext::NotYet : eNext::End;
    }
    const GstClockTime tTime = NtpNs(tFrame.llTimeUs);
    if (m_bReverse ? GST_CLOCK_TIME_IS_VALID(m_tAsked.start) && tTime < m_tAsked.start
                   : GST_CLOCK_TIME_IS_VALID(m_tAsked.stop) && tTime >= m_tAsked.stop)
    {
        return eNext::End;
    }
    const int64_t llSection = SectionAt(tFrame.llTimeUs).llStartUs;
    const bool bOther = llSection != m_llSection;
    m_llSection = llSection;
    if (m_bReverse)
    {
        // A sink that plays backwards looks at a packet's end, which it takes from the segment.
        tSegment = SegmentFrom(tFrame.llTimeUs + tFrame.llDurationUs);
    }
    else if (bOther)
    {
        tSegment = SegmentFrom(llSection);
    }
    const device::Bytes tData = tFrame.Data(m_abyRoom);
    pBuffer = gst_buffer_new_memdup(tData.data(), tData.size());
    GST_BUFFER_PTS(pBuffer) = tTime;
    GST_BUFFER_DURATION(pBuffer) = static_cast<GstClockTime>(tFrame.llDurationUs) * 1000;
    if (m_bVideo && !tFrame.IsKey())
    {
        GST_BUFFER_FLAG_SET(pBuffer, GST_BUFFER_FLAG_DELTA_UNIT);
    }
    if (bOther)
    {
        GST_BUFFER_FLAG_SET(pBuffer, GST_BUFFER_FLAG_DISCONT);
    }
    return eNext::Frame;
}
} // namespace onvif_device
