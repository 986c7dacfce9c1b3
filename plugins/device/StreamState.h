#pragma once

#include "protocol/interface/Camera.h"
#include "protocol/interface/Configuration.h"

namespace device
{
/// How one stream of a channel is just now: what has to be known to make its frames.
struct tagStreamState
{
    bool bUp = false;        ///< the device runs, can be reached, and the stream is enabled: frames come
    bool bStalled = false;   ///< no frame comes, though it is up
    bool bVideoLoss = false; ///< there is no picture from the sensor
    bool bMotion = false;    ///< something moves
    uint32_t dwLose = 0;     ///< of a thousand frames so many are lost
    uint32_t dwDamage = 0;   ///< of a thousand frames so many come with wrong bytes
    uint32_t dwRun = 0;      ///< counts the device's starts: another one than before: a new time line
    tagConfigVideoEncoder tVideo{};
    tagConfigAudioEncoder tAudio{};
};

/// What a channel's picture looks like beside its stream.
struct tagPictureState
{
    tagCameraPicture tPicture{};
    tagConfigOverlay tOverlay{};
    tagConfigPrivacy tPrivacy{};
    bool bNight = false; ///< grey
    int32_t nPan = 0;    ///< ten-thousandths, as in tagPTZPosition
    int32_t nTilt = 0;   ///< the same
    int32_t nZoom = 0;   ///< the same
};
} // namespace device
