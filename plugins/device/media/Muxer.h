#pragma once

#include "plugins/device/media/RecordedFrames.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace device
{
using Output = std::vector<unsigned char>;

/// Packs the frames of a recording into a file. The bytes are the same every time.
class CMuxer
{
public:
    virtual ~CMuxer() = default;
    /// Each of these appends bytes of the file. llTimeUs: the frame's time in the file, from 0.
    virtual void Begin(Output& abyOut) = 0;
    virtual void Add(tagRecordedFrame const& tFrame, int64_t llTimeUs, Output& abyOut) = 0;
    virtual void End(Output& abyOut) = 0;

    /// dwFormat: eFileFormat. Null: there is none.
    static std::unique_ptr<CMuxer> Make(uint32_t dwFormat, CRecordedFrames const& tFrames);
};

/// An MPEG transport stream (ISO/IEC 13818-1). It has no place for G.711: pictures alone. bNative: with a packet before
/// it that says what device has made it; other players skip that.
std::unique_ptr<CMuxer> MakeTransportStream(bool bNative);
/// Fragmented MP4 (ISO/IEC 14496-12), a fragment for each key frame.
std::unique_ptr<CMuxer> MakeFragmentedMp4(CRecordedFrames const& tFrames);

/// @name What each file begins with, whatever is in it.
/// @{
Output TransportStreamHeader(bool bNative);
Output FragmentedMp4Header();
/// @}
} // namespace device
