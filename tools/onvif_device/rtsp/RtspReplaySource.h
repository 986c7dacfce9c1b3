#pragma once

#include "plugins/device/Recording.h"
#include "plugins/device/media/RecordedFrames.h"

#include <cstdint>
#include <gst/gst.h>
#include <memory>
#include <optional>
#include <vector>

namespace device
{
class CDevice;
}

namespace onvif_device
{
/// One track of what a channel has recorded, on a time line of its own: nanoseconds since 1900. Gaps are left out of
/// its running time. What is coded in another way than at first is left out too: an RTP stream has one codec.
///
/// Backwards, and when only key frames are wanted, there is no sound but a first packet, for which the server waits.
class CReplayTrack
{
public:
    enum class eNext : unsigned char
    {
        Frame,
        NotYet, ///< it is being recorded just now
        End,
    };

    CReplayTrack(std::shared_ptr<device::CDevice> pDevice, uint32_t dwChannel, bool bVideo, uint32_t dwCodec);

    GstCaps* Caps() const;
    GstClockTime EndNs() const;
    /// Goes where the segment begins: the key frame at or before it. The segment is changed to what will come.
    void Seek(GstSegment& tSegment);
    /// tSegment is filled when another one begins with this frame.
    eNext Next(GstBuffer*& pBuffer, std::optional<GstSegment>& tSegment);

private:
    // Recorded without a gap; llPlayedUs: how long all before it are.
    struct tagSection
    {
        int64_t llStartUs;
        int64_t llEndUs;
        int64_t llPlayedUs;
    };
    std::vector<device::tagRecording> Recordings() const;
    void Load();
    bool IsMine(device::tagRecordedFrame const& tFrame) const;
    void FindNext(int64_t llTimeUs);
    bool Fetch(device::CRecordedFrames& tFrames, device::tagRecordedFrame& tFrame) const;
    tagSection const& SectionAt(int64_t llTimeUs) const;
    int64_t PlayedAt(int64_t llTimeUs) const;
    GstSegment SegmentFrom(int64_t llTimeUs) const;
    bool GrowsOn();

    const std::shared_ptr<device::CDevice> m_pDevice;
    const uint32_t m_dwChannel;
    const bool m_bVideo;
    const uint32_t m_dwCodec;
    std::optional<device::CRecordedFrames> m_tFrames;
    std::optional<device::tagRecordedFrame> m_tNext; // found by Seek
    std::vector<tagSection> m_atSections;
    int64_t m_llSection = 0; // begin of the one that frames come from
    GstSegment m_tAsked{};   // by the last Seek
    int64_t m_llAnchorUs = 0;
    bool m_bReverse = false;
    bool m_bKeysOnly = false;
    std::vector<unsigned char> m_abyRoom;
};

/// A GStreamer source of a track; the caller's.
GstElement* MakeReplaySource(std::unique_ptr<CReplayTrack> pTrack);
} // namespace onvif_device
