#pragma once

#include "onvif/Notification.h"

#include "protocol/interface/Events.h"

#include <cstdint>
#include <map>
#include <string>

namespace onvifclient
{
using onvif::tagNotification;

/// The numbers that the interface has for what a device names by tokens.
struct tagPlaces
{
    using Numbers = std::map<std::string, uint32_t, std::less<>>;

    Numbers tChannels; ///< video sources, their configurations, profiles, encoders, recordings
    uint32_t dwChannels = 0;
    Numbers tInputs;
    Numbers tOutputs;
    Numbers tWindows; ///< by receiver
};

/// A device's event in the words of the interface.
struct tagTold
{
    uint32_t dwEvent = eEventOther; ///< eDeviceEvent
    uint32_t dwPlace = 0;           ///< its second word
    uint32_t dwState = 0;           ///< its third word; of eEventOther: 1 began, 0 ended, 2 it has no state
    bool bState = false;            ///< it tells of a state: only changes count
    uint32_t dwTime = 0;            ///< its fourth word
};

/// What an event is. Where its topic isn't known it is eEventOther; eEventDeviceRestarted and eEventClockChanged say
/// that the device has told when that was: dwTime.
tagTold Translate(tagNotification const& tEvent, tagPlaces const& tPlaces);
/// The event in its own words.
tagEventDetail DetailOf(tagNotification const& tEvent, tagTold const& tTold);

/// The topics that motion and active alarm inputs have in recordings, for a search.
char const* TopicsOf(uint32_t dwHistoryType);
} // namespace onvifclient
