#include "tools/tessaro/records/Blocks.h"

#include <RecordTables.h>
#include <algorithm>
#include <iterator>

namespace tessaro
{
namespace
{
struct tagRow
{
    unsigned int dwType;
    tagRecord const& (*pfnRecord)();
};
constexpr tagRow g_atBlocks[] = {
    {eConfigIdentity, &RecordOf<tagConfigIdentity>},
    {eConfigNetwork, &RecordOf<tagConfigNetwork>},
    {eConfigClock, &RecordOf<tagConfigClock>},
    {eConfigUsers, &RecordOf<tagConfigUsers>},
    {eConfigStorage, &RecordOf<tagConfigStorage>},
    {eConfigVideoEncoder, &RecordOf<tagConfigVideoEncoder>},
    {eConfigAudioEncoder, &RecordOf<tagConfigAudioEncoder>},
    {eConfigPicture, &RecordOf<tagCameraPicture>},
    {eConfigOverlay, &RecordOf<tagConfigOverlay>},
    {eConfigMotion, &RecordOf<tagConfigMotion>},
    {eConfigPrivacy, &RecordOf<tagConfigPrivacy>},
    {eConfigSchedule, &RecordOf<tagConfigSchedule>},
    {eConfigAlarmInput, &RecordOf<tagConfigAlarmInput>},
    {eConfigAlarmOutput, &RecordOf<tagConfigAlarmOutput>},
    {eConfigMacAddress, &RecordOf<tagConfigMacAddress>},
};
constexpr tagRow g_atCamera[] = {
    {eCameraPicture, &RecordOf<tagCameraPicture>},   {eCameraDayNight, &RecordOf<tagCameraDayNight>},
    {eCameraExposure, &RecordOf<tagCameraExposure>}, {eCameraFocus, &RecordOf<tagCameraFocus>},
    {eCameraPosition, &RecordOf<tagPTZPosition>},    {eCameraPresets, &RecordOf<tagPTZPresetList>},
    {eCameraTours, &RecordOf<tagPTZTourList>},       {eCameraPTZAbility, &RecordOf<tagPTZAbility>},
};

template <std::size_t n>
tagRecord const* Find(tagRow const (&at)[n], unsigned int dwType)
{
    auto const* const pt = std::ranges::find(at, dwType, &tagRow::dwType);
    return pt == std::end(at) ? nullptr : &pt->pfnRecord();
}
} // namespace

tagRecord const* BlockRecord(unsigned int dwType)
{
    return Find(g_atBlocks, dwType);
}

tagRecord const* CameraRecord(unsigned int dwType)
{
    return Find(g_atCamera, dwType);
}
} // namespace tessaro
