#pragma once

#include "protocol/interface/Camera.h"

namespace onvif
{
class CClient;
}

namespace onvifclient
{
struct tagChannel;

/// The records of eCameraParameter that ONVIF's imaging service knows. A read fills the whole record, a write lays the
/// caller's over the present one and sends what has changed. bMedia2: which media service turns the picture.
/// Answer eResultOk or an ePluginResult; block.
/// @{
int ReadPicture(onvif::CClient& tClient, tagChannel const& tChannel, bool bMedia2, tagCameraPicture& t);
int WritePicture(onvif::CClient& tClient, tagChannel const& tChannel, bool bMedia2, tagCameraPicture const* ptWritten);
int ReadDayNight(onvif::CClient& tClient, tagChannel const& tChannel, tagCameraDayNight& t);
int WriteDayNight(onvif::CClient& tClient, tagChannel const& tChannel, tagCameraDayNight const* ptWritten);
int ReadExposure(onvif::CClient& tClient, tagChannel const& tChannel, tagCameraExposure& t);
int WriteExposure(onvif::CClient& tClient, tagChannel const& tChannel, tagCameraExposure const* ptWritten);
int ReadFocus(onvif::CClient& tClient, tagChannel const& tChannel, tagCameraFocus& t);
int WriteFocus(onvif::CClient& tClient, tagChannel const& tChannel, tagCameraFocus const* ptWritten);
/// @}

/// Levels to the middle of their ranges, switches off, modes to automatic: ONVIF doesn't know the factory's values.
int DefaultCamera(onvif::CClient& tClient, tagChannel const& tChannel, bool bMedia2, eChromaDefault eWhat);

/// Sets the iris by so many ten-thousandths of its range, + opens, and exposure to manual. eResultNotSupported: it can't
/// be set.
int StepIris(onvif::CClient& tClient, tagChannel const& tChannel, int64_t llBy);
/// The speed at which the lens moves its focus, by ten-thousandths of its range, + is far; 0: stop.
int MoveFocus(onvif::CClient& tClient, tagChannel const& tChannel, int32_t nSpeed);
/// Automatic focus on or off.
int SetAutoFocus(onvif::CClient& tClient, tagChannel const& tChannel, bool bOn);
} // namespace onvifclient
