#pragma once

#include "plugins/device/Recording.h"
#include "plugins/device/media/Clips.h"

#include <cstdint>
#include <vector>

namespace device
{
/// One frame of a recording.
struct tagRecordedFrame
{
    int64_t llTimeUs = 0; ///< when it was recorded
    uint32_t dwMediaType = eMediaVideo;
    uint32_t dwSinceKey = 0;      ///< video: pictures since the key frame
    uint64_t ullNumber = 0;       ///< the picture, or the packet of sound
    CClip const* pClip = nullptr; ///< video
    uint32_t dwCodec = 0;         ///< eMediaCodec
    int64_t llDurationUs = 0;     ///< until the next one of its kind
    bool bAfterGap = false;       ///< nothing was recorded right before it

    bool IsKey() const { return dwMediaType == eMediaVideo && dwSinceKey == 0; }
    std::size_t Length() const;
    /// The bytes stay until abyRoom changes.
    Bytes Data(std::vector<unsigned char>& abyRoom) const;
    /// As an application gets it; but for its sequence and presentation time.
    tagStreamMediaFrame Record(Bytes tData) const;
};

/// The frames of some recordings of one channel, in the order of their time. They are not stored: what was recorded at
/// a time follows from the time alone.
class CRecordedFrames
{
public:
    /// Between two times; 0: from the first, to the last.
    CRecordedFrames(std::vector<tagRecording> const& atRecordings, int64_t llStartUs, int64_t llEndUs, bool bAudio,
                    bool bKeyFramesOnly);

    bool IsEmpty() const { return m_atSpans.empty(); }
    /// The clips that occur.
    std::vector<CClip const*> Clips() const;
    /// eMediaCodec of the sound; 0: there is none.
    uint32_t AudioCodec() const;
    int64_t StartUs() const;
    int64_t EndUs() const;
    /// The next one is the key frame at or before this time; in a gap: the first one after the gap. False: after the
    /// end.
    bool Seek(int64_t llTimeUs);
    /// The next one is the last key frame at or before this time, and others follow backwards. False: before the begin.
    bool SeekBackwards(int64_t llTimeUs);
    /// The next one is the first one from this time on.
    void Resume(int64_t llTimeUs);
    /// False: there is no further one.
    bool Next(tagRecordedFrame& tFrame);
    /// The key frame before. False: there is none.
    bool NextBackwards(tagRecordedFrame& tFrame);

private:
    // A time without a gap in which all frames are of one kind.
    struct tagSpan
    {
        int64_t llStartUs;
        int64_t llEndUs;
        tagConfigVideoEncoder tVideo;
        tagConfigAudioEncoder tAudio;
        CClip const* pClip;
        bool bAfterGap;
    };
    void Enter(std::size_t nSpan);
    static int64_t FirstPicture(tagSpan const& tSpan);
    static int64_t LastPicture(tagSpan const& tSpan);
    static int64_t KeyBefore(tagSpan const& tSpan, int64_t llPicture);
    static tagRecordedFrame Video(tagSpan const& tSpan, int64_t llPicture);

    bool m_bAudio;
    bool m_bKeyFramesOnly;
    std::vector<tagSpan> m_atSpans;
    std::size_t m_nSpan = 0;
    int64_t m_llPicture = 0;
    int64_t m_llPacket = 0;
    bool m_bVideoAfterGap = false;
    bool m_bAudioAfterGap = false;
};
} // namespace device
