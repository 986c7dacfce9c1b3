#pragma once

#include "plugins/common/FileWriter.h"
#include "plugins/device/media/RecordedFrames.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace device
{
using plugin::Output;

/// Packs the frames of a recording into a file. The bytes are the same every time.
class CMuxer
{
public:
    /// Each of these appends bytes of the file. llTimeUs: the frame's time in the file, from 0.
    void Begin(Output& abyOut) { m_pWriter->Begin(abyOut); }
    void Add(tagRecordedFrame const& tFrame, int64_t llTimeUs, Output& abyOut);
    void End(Output& abyOut) { m_pWriter->End(abyOut); }

    /// dwFormat: eFileFormat. Null: there is none.
    static std::unique_ptr<CMuxer> Make(uint32_t dwFormat, CRecordedFrames const& tFrames);
    CMuxer(std::unique_ptr<plugin::CFileWriter> pWriter, std::vector<CClip const*> apClips)
        : m_pWriter(std::move(pWriter)), m_apClips(std::move(apClips))
    {
    }

private:
    const std::unique_ptr<plugin::CFileWriter> m_pWriter;
    const std::vector<CClip const*> m_apClips;
    Output m_abyRoom;
};

/// What each file of this format (eFileFormat) begins with, whatever is in it.
Output FileHeader(uint32_t dwFormat);
} // namespace device
