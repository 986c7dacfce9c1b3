#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"

#include "protocol/interface/Camera.h"

namespace device
{
/// The parameters of the cameras: what SetIpcPara and GetIpcPara name.
class CCamera : public CPart
{
public:
    using CPart::CPart;

    int Read(int nChannel, uint32_t dwType, void* pPara, uint32_t dwLength);
    int Write(tagCaller const& tCaller, int nChannel, uint32_t dwType, void* pPara, uint32_t dwLength);
    /// dwFlag: eChromaDefault.
    int Default(tagCaller const& tCaller, uint32_t dwChannel, uint32_t dwFlag);

    tagCameraDayNight DayNight(uint32_t dwChannel) const;
    tagCameraExposure Exposure(uint32_t dwChannel) const;
    tagCameraFocus Focus(uint32_t dwChannel) const;
    void SetExposure(uint32_t dwChannel, tagCameraExposure const& tExposure);
    void SetFocus(uint32_t dwChannel, tagCameraFocus const& tFocus);
};
} // namespace device
