#pragma once

#include "plugins/onvif/Login.h"

#include "protocol/interface/Configuration.h"

namespace onvifclient
{
/// Which block of a type: a channel, an input; and of which stream.
struct tagWhich
{
    uint32_t dwIndex = 0;
    uint32_t dwStreamKind = 0;
};

/// One block, as the device has it. Read fills a record that is zero but for dwSize; Write makes what differs from
/// tBefore as tAfter says. Answer eResultOk or an ePluginResult; block.
/// @{

// ConfigurationDevice.cpp
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigIdentity& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigIdentity const& tBefore, tagConfigIdentity const& tAfter);
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigClock& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigClock const& tBefore, tagConfigClock const& tAfter);
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigStorage& t);

// ConfigurationUsers.cpp
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigUsers& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigUsers const& tBefore, tagConfigUsers const& tAfter);

// ConfigurationNetwork.cpp
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigNetwork& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigNetwork const& tBefore, tagConfigNetwork const& tAfter);

// ConfigurationMedia.cpp
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigVideoEncoder& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigVideoEncoder const& tBefore,
          tagConfigVideoEncoder const& tAfter);
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigAudioEncoder& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigAudioEncoder const& tBefore,
          tagConfigAudioEncoder const& tAfter);

// ConfigurationOverlay.cpp
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigOverlay& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigOverlay const& tBefore, tagConfigOverlay const& tAfter);
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigPrivacy& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigPrivacy const& tBefore, tagConfigPrivacy const& tAfter);

// ConfigurationMotion.cpp
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigMotion& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigMotion const& tBefore, tagConfigMotion const& tAfter);

// ConfigurationSchedule.cpp
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigSchedule& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigSchedule const& tBefore, tagConfigSchedule const& tAfter);

// Contacts.cpp
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigAlarmInput& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigAlarmInput const& tBefore,
          tagConfigAlarmInput const& tAfter);
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigAlarmOutput& t);
int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigAlarmOutput const& tBefore,
          tagConfigAlarmOutput const& tAfter);
/// @}

/// Whether two texts of records say the same.
template <std::size_t nSize>
bool IsSame(char const (&szOne)[nSize], char const (&szOther)[nSize])
{
    return strncmp(szOne, szOther, nSize) == 0;
}
} // namespace onvifclient
