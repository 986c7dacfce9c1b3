#include "plugins/device/media/Muxer.h"

#include "protocol/interface/Transfer.h"

#include <algorithm>

namespace device
{
namespace
{
constexpr std::string_view g_strNative = "Tessaro simulated device, recording, version 1";

std::string_view MakerOf(uint32_t dwFormat)
{
    return dwFormat == eFileFormatNative ? g_strNative : std::string_view{};
}

std::unique_ptr<plugin::CFileWriter> MakeMp4(CRecordedFrames const& tFrames)
{
    std::vector<plugin::tagVideoFormat> atVideo;
    for (CClip const* const pClip : tFrames.Clips())
    {
        plugin::tagVideoFormat& t = atVideo.emplace_back();
        t = {pClip->Codec(), pClip->Width(), pClip->Height(), {}};
        for (const Bytes tSet : pClip->ParameterSets())
        {
            t.aabyParameterSets.emplace_back(tSet.begin(), tSet.end());
        }
    }
    return plugin::MakeFragmentedMp4(std::move(atVideo), {tFrames.AudioCodec(), g_dwSampleRate, 1, {}});
}
} // namespace

std::unique_ptr<CMuxer> CMuxer::Make(uint32_t dwFormat, CRecordedFrames const& tFrames)
{
    const auto apClips = tFrames.Clips();
    switch (dwFormat)
    {
    case eFileFormatNative:
    case eFileFormatMpegTs:
        return std::make_unique<CMuxer>(
            plugin::MakeTransportStream(apClips.empty() ? uint32_t{eCodecH264} : apClips.front()->Codec(),
                                        MakerOf(dwFormat)),
            apClips);
    case eFileFormatMp4:
        return std::make_unique<CMuxer>(MakeMp4(tFrames), apClips);
    default:
        return nullptr;
    }
}

void CMuxer::Add(tagRecordedFrame const& tFrame, int64_t llTimeUs, Output& abyOut)
{
    plugin::tagSample t;
    t.bVideo = tFrame.pClip != nullptr;
    t.bKey = tFrame.IsKey();
    t.dwFormat = t.bVideo ? static_cast<uint32_t>(std::ranges::find(m_apClips, tFrame.pClip) - m_apClips.begin()) : 0;
    t.llTimeUs = llTimeUs;
    t.llDurationUs = t.bVideo ? tFrame.llDurationUs : g_llPacketUs;
    t.tData = tFrame.Data(m_abyRoom);
    m_pWriter->Add(t, abyOut);
}

Output FileHeader(uint32_t dwFormat)
{
    return dwFormat == eFileFormatMp4 ? plugin::FragmentedMp4Header()
                                      : plugin::TransportStreamHeader(MakerOf(dwFormat));
}
} // namespace device
