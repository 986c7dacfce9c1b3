#pragma once

#include "protocol/interface/Configuration.h"
#include "protocol/interface/Playback.h"

#include <string>

namespace device
{
/// What one channel recorded without a gap, for one reason. Times are those of the device's clock, microseconds.
struct tagRecording
{
    uint32_t dwChannel = 0;
    uint32_t dwType = eHistoryContinuous; ///< eHistoryStreamType
    uint32_t dwStreamKind = 0;            ///< eStreamKind
    int64_t llStartUs = 0;
    int64_t llEndUs = 0; ///< that of now while it is being recorded
    uint64_t ullLength = 0;
    uint32_t dwDisk = 0;
    bool bLocked = false;
    bool bRecording = false;
    tagConfigVideoEncoder tVideo{}; ///< how its video was coded
    tagConfigAudioEncoder tAudio{}; ///< how its sound was coded; bEnabled 0: none

    /// Its name on the device: the same as long as the recording exists.
    std::string File() const;
};

/// Which recordings are meant: those that overlap the time and match the rest.
struct tagRecordingQuestion
{
    uint64_t ullChannels = 0;  ///< bit n: channel n; 0: all
    uint32_t dwTypes = 0;      ///< eHistoryStreamType bits; 0: all
    uint32_t dwStreamKind = 0; ///< eStreamKind; 0: the main stream
    int64_t llStartUs = 0;     ///< 0: from the first
    int64_t llEndUs = 0;       ///< 0: to the last
    bool bLockedOnly = false;  ///< only those that are protected
    std::string strFile;       ///< this one alone; empty: all
};
} // namespace device
