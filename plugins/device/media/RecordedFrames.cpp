#include "plugins/device/media/RecordedFrames.h"

#include "plugins/device/media/FrameRecord.h"
#include "plugins/device/media/Grid.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace device
{
// --- one frame -------------------------------------------------------------------------------------------------------

std::size_t tagRecordedFrame::Length() const
{
    return pClip ? pClip->Length(ullNumber, dwSinceKey) : g_dwPacketSamples;
}

Bytes tagRecordedFrame::Data(std::vector<unsigned char>& abyRoom) const
{
    return pClip ? pClip->Frame(ullNumber, dwSinceKey, abyRoom) : CClips::Instance().Sound(dwCodec, ullNumber);
}

tagStreamMediaFrame tagRecordedFrame::Record(Bytes tData) const
{
    tagStreamMediaFrame tFrame = pClip ? VideoRecord(*pClip, IsKey()) : AudioRecord(dwCodec);
    tFrame.llWallClockUs = llTimeUs;
    tFrame.pData = tData.data();
    tFrame.dwLength = static_cast<uint32_t>(tData.size());
    return tFrame;
}

// --- all of them -----------------------------------------------------------------------------------------------------

namespace
{
int64_t FirstPacket(int64_t llTimeUs)
{
    return (llTimeUs + g_llPacketUs - 1) / g_llPacketUs;
}

auto FormatOf(tagConfigVideoEncoder const& t)
{
    return std::tie(t.dwCodec, t.dwWidth, t.dwHeight, t.dwFrameRate, t.dwKeyFrameInterval);
}
} // namespace

CRecordedFrames::CRecordedFrames(std::vector<tagRecording> const& atRecordings, int64_t llStartUs, int64_t llEndUs,
                                 bool bAudio, bool bKeyFramesOnly)
    : m_bAudio(bAudio), m_bKeyFramesOnly(bKeyFramesOnly)
{
    for (tagRecording const& t : atRecordings)
    {
        tagSpan tSpan{std::max(t.llStartUs, llStartUs),
                      llEndUs ? std::min(t.llEndUs, llEndUs) : t.llEndUs,
                      t.tVideo,
                      t.tAudio,
                      CClips::Instance().Find(t.tVideo.dwCodec, t.tVideo.dwWidth, t.tVideo.dwHeight),
                      true};
        if (!m_atSpans.empty())
        {
            // What was recorded for several reasons at once is there once.
            tagSpan& tBefore = m_atSpans.back();
            tSpan.bAfterGap = tSpan.llStartUs > tBefore.llEndUs;
            tSpan.llStartUs = std::max(tSpan.llStartUs, tBefore.llEndUs);
            if (!tSpan.bAfterGap && FormatOf(tSpan.tVideo) == FormatOf(tBefore.tVideo))
            {
                tBefore.llEndUs = std::max(tBefore.llEndUs, tSpan.llEndUs);
                continue;
            }
        }
        if (tSpan.pClip && FirstPicture(tSpan) <= LastPicture(tSpan))
        {
            m_atSpans.push_back(tSpan);
        }
    }
    if (!m_atSpans.empty())
    {
        m_atSpans.front().bAfterGap = false;
        Enter(0);
    }
}

std::vector<CClip const*> CRecordedFrames::Clips() const
{
    std::vector<CClip const*> apClips;
    for (tagSpan const& t : m_atSpans)
    {
        if (std::ranges::find(apClips, t.pClip) == apClips.end())
        {
            apClips.push_back(t.pClip);
        }
    }
    return apClips;
}

uint32_t CRecordedFrames::AudioCodec() const
{
    const auto it = std::ranges::find_if(m_atSpans, [](tagSpan const& t) { return t.tAudio.bEnabled != 0; });
    return m_bAudio && it != m_atSpans.end() ? it->tAudio.dwCodec : 0;
}

int64_t CRecordedFrames::StartUs() const
{
    return m_atSpans.empty() ? 0 : m_atSpans.front().llStartUs;
}

int64_t CRecordedFrames::EndUs() const
{
    return m_atSpans.empty() ? 0 : m_atSpans.back().llEndUs;
}

int64_t CRecordedFrames::FirstPicture(tagSpan const& tSpan)
{
    return PictureAt(tSpan.llStartUs - 1, tSpan.tVideo.dwFrameRate) + 1;
}

int64_t CRecordedFrames::LastPicture(tagSpan const& tSpan)
{
    return PictureAt(tSpan.llEndUs - 1, tSpan.tVideo.dwFrameRate);
}

int64_t CRecordedFrames::KeyBefore(tagSpan const& tSpan, int64_t llPicture)
{
    return std::max(FirstPicture(tSpan), llPicture - llPicture % tSpan.tVideo.dwKeyFrameInterval);
}

void CRecordedFrames::Enter(std::size_t nSpan)
{
    m_nSpan = nSpan;
    m_llPicture = FirstPicture(m_atSpans[nSpan]);
    m_llPacket = FirstPacket(m_atSpans[nSpan].llStartUs);
    m_bVideoAfterGap = m_bAudioAfterGap = m_atSpans[nSpan].bAfterGap;
}

tagRecordedFrame CRecordedFrames::Video(tagSpan const& tSpan, int64_t llPicture)
{
    tagRecordedFrame tFrame;
    tFrame.llTimeUs = PictureTimeUs(llPicture, tSpan.tVideo.dwFrameRate);
    tFrame.llDurationUs = PictureTimeUs(llPicture + 1, tSpan.tVideo.dwFrameRate) - tFrame.llTimeUs;
    tFrame.dwSinceKey = static_cast<uint32_t>(llPicture - KeyBefore(tSpan, llPicture));
    tFrame.ullNumber = static_cast<uint64_t>(llPicture);
    tFrame.pClip = tSpan.pClip;
    tFrame.dwCodec = tSpan.tVideo.dwCodec;
    return tFrame;
}

bool CRecordedFrames::Seek(int64_t llTimeUs)
{
    const auto it = std::ranges::find_if(m_atSpans, [&](tagSpan const& t) { return t.llEndUs > llTimeUs; });
    if (it == m_atSpans.end())
    {
        m_nSpan = m_atSpans.size();
        return false;
    }
    Enter(static_cast<std::size_t>(it - m_atSpans.begin()));
    m_bVideoAfterGap = m_bAudioAfterGap = false;
    if (llTimeUs > it->llStartUs)
    {
        m_llPicture = KeyBefore(*it, std::max(PictureAt(llTimeUs, it->tVideo.dwFrameRate), m_llPicture));
        m_llPacket = std::max(m_llPacket, FirstPacket(PictureTimeUs(m_llPicture, it->tVideo.dwFrameRate)));
    }
    return true;
}

void CRecordedFrames::Resume(int64_t llTimeUs)
{
    const int64_t llInterval = m_bKeyFramesOnly && Seek(llTimeUs) ? m_atSpans[m_nSpan].tVideo.dwKeyFrameInterval : 1;
    if (Seek(llTimeUs) && llTimeUs > m_atSpans[m_nSpan].llStartUs)
    {
        m_llPicture = PictureAt(llTimeUs - 1, m_atSpans[m_nSpan].tVideo.dwFrameRate) + 1;
        m_llPicture = (m_llPicture + llInterval - 1) / llInterval * llInterval;
        m_llPacket = FirstPacket(llTimeUs);
    }
}

bool CRecordedFrames::SeekBackwards(int64_t llTimeUs)
{
    for (m_nSpan = m_atSpans.size(); m_nSpan-- > 0;)
    {
        tagSpan const& tSpan = m_atSpans[m_nSpan];
        if (llTimeUs >= PictureTimeUs(FirstPicture(tSpan), tSpan.tVideo.dwFrameRate))
        {
            m_llPicture = KeyBefore(tSpan, std::min(PictureAt(llTimeUs, tSpan.tVideo.dwFrameRate), LastPicture(tSpan)));
            m_bVideoAfterGap = false;
            return true;
        }
    }
    m_nSpan = m_atSpans.size();
    return false;
}

bool CRecordedFrames::Next(tagRecordedFrame& tFrame)
{
    for (; m_nSpan < m_atSpans.size(); m_nSpan + 1 < m_atSpans.size() ? Enter(m_nSpan + 1) : void(++m_nSpan))
    {
        tagSpan const& tSpan = m_atSpans[m_nSpan];
        const int64_t llVideoUs = PictureTimeUs(m_llPicture, tSpan.tVideo.dwFrameRate);
        const int64_t llAudioUs = m_llPacket * g_llPacketUs;
        const bool bVideo = m_llPicture <= LastPicture(tSpan);
        const bool bAudio = m_bAudio && tSpan.tAudio.bEnabled != 0 && llAudioUs < tSpan.llEndUs;
        if (bVideo && (!bAudio || llVideoUs <= llAudioUs))
        {
            tFrame = Video(tSpan, m_llPicture);
            tFrame.bAfterGap = std::exchange(m_bVideoAfterGap, false);
            const int64_t llInterval = tSpan.tVideo.dwKeyFrameInterval;
            m_llPicture = m_bKeyFramesOnly ? (m_llPicture / llInterval + 1) * llInterval : m_llPicture + 1;
            return true;
        }
        if (bAudio)
        {
            tFrame = {};
            tFrame.llTimeUs = llAudioUs;
            tFrame.llDurationUs = g_llPacketUs;
            tFrame.dwMediaType = eMediaAudio;
            tFrame.ullNumber = static_cast<uint64_t>(m_llPacket++);
            tFrame.dwCodec = tSpan.tAudio.dwCodec;
            tFrame.bAfterGap = std::exchange(m_bAudioAfterGap, false);
            return true;
        }
    }
    return false;
}

bool CRecordedFrames::NextBackwards(tagRecordedFrame& tFrame)
{
    if (m_nSpan >= m_atSpans.size())
    {
        return false;
    }
    tagSpan const& tSpan = m_atSpans[m_nSpan];
    tFrame = Video(tSpan, m_llPicture);
    tFrame.bAfterGap = std::exchange(m_bVideoAfterGap, false);
    if (m_llPicture > FirstPicture(tSpan))
    {
        m_llPicture = KeyBefore(tSpan, m_llPicture - 1);
    }
    else if (m_nSpan > 0)
    {
        m_bVideoAfterGap = tSpan.bAfterGap;
        --m_nSpan;
        m_llPicture = KeyBefore(m_atSpans[m_nSpan], LastPicture(m_atSpans[m_nSpan]));
    }
    else
    {
        m_nSpan = m_atSpans.size();
    }
    return true;
}
} // namespace device
