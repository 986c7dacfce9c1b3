#pragma once

#include "plugins/device/Recording.h"
#include "plugins/device/StreamState.h"
#include "plugins/device/WallView.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace device
{
/// One simulated device: what it is, what it has, what it is doing. Knows nothing of entry points, and nothing of
/// frames. Each of these functions locks the device itself, for a moment; any thread may call them.
class CDevice : public std::enable_shared_from_this<CDevice>
{
public:
    /// The device's clock, microseconds since 1970 UTC: drifts and jumps as its faults say.
    int64_t NowUs() const;
    /// How far its local time is ahead of UTC at this time.
    int32_t UtcOffsetMinutes(int64_t llTimeUs) const;
    uint32_t Channels() const;
    std::string Name() const;

    /// Changes whenever the tagStreamState of any channel may have changed: what was read before holds as long as this
    /// stays the same. Takes no lock.
    uint32_t StreamVersion() const { return m_dwStreamVersion.load(std::memory_order_acquire); }
    /// dwStreamKind: eStreamKind, 0 the main stream. eResultNoChannel, eResultBadArgument.
    int StreamState(uint32_t dwChannel, uint32_t dwStreamKind, tagStreamState& tState) const;
    /// eResultNoChannel.
    int PictureState(uint32_t dwChannel, tagPictureState& tState) const;

    /// In the order of their begin, the oldest first.
    std::vector<tagRecording> Recordings(tagRecordingQuestion const& tQuestion) const;
    /// A file that is no recording, by its eFileKind and name; null when there is none.
    SharedBytes File(uint32_t dwKind, std::string const& strName) const;
    /// Keeps a snapshot among the device's files (eFilePicture).
    void KeepPicture(uint32_t dwChannel, std::string const& strName, SharedBytes pData);

    /// What the wall shows now; no windows when the device drives no screens.
    tagWallView WallView() const;

private:
    mutable std::mutex m_tMutex;
    std::atomic<uint32_t> m_dwStreamVersion{0};
};
} // namespace device
