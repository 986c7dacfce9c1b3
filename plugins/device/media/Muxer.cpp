#include "plugins/device/media/Muxer.h"

#include "protocol/interface/Transfer.h"

namespace device
{
std::unique_ptr<CMuxer> CMuxer::Make(uint32_t dwFormat, CRecordedFrames const& tFrames)
{
    switch (dwFormat)
    {
    case eFileFormatNative:
    case eFileFormatMpegTs:
        return MakeTransportStream(dwFormat == eFileFormatNative);
    case eFileFormatMp4:
        return MakeFragmentedMp4(tFrames);
    default:
        return nullptr;
    }
}
} // namespace device
