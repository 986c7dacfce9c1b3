/// @file
/// Events of devices.

#ifndef TESSARO_PROTOCOL_INTERFACE_EVENTS_H
#define TESSARO_PROTOCOL_INTERFACE_EVENTS_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup events Device events
/// What the callback of ClientAdapter_SubscribeEvent gets from a device. RTSP streams have events of their own:
/// eConnectionEvent.
/// @{

/// First word of a device's events.
///
/// | First word               | Second word                 | Third word                                  |
/// | ------------------------ | --------------------------- | ------------------------------------------- |
/// | eEventMotion             | channel                     | 1 began, 0 ended                            |
/// | eEventAlarmInput         | input                       | 1 active, 0 idle                            |
/// | eEventAlarmOutput        | output                      | 1 active, 0 idle                            |
/// | eEventVideoLoss          | channel                     | 1 lost, 0 back                              |
/// | eEventTamper             | channel                     | 1 began, 0 ended                            |
/// | eEventDiskFull           | disk, TESSARO_ALL: all      | 1 full, 0 room again                        |
/// | eEventDiskError          | disk                        | 1 began, 0 ended                            |
/// | eEventRecording          | channel                     | eHistoryStreamType that began, 0 ended      |
/// | eEventUserLogin          | eUserLevel of the user      | 1 in, 0 out, 2 refused                      |
/// | eEventLoginLost          | ePluginResult: why          | milliseconds to the next try; 0: none comes |
/// | eEventLoginRestored      | milliseconds it was lost    | 0                                           |
/// | eEventDeviceRestarted    | eRestartReason              | 0                                           |
/// | eEventConfigChanged      | eConfigType                 | index of the block                          |
/// | eEventClockChanged       | milliseconds, signed        | 0                                           |
/// | eEventPanelKey           | ePanelKey                   | 1 pressed                                   |
/// | eEventWindow             | window of a decoder         | eDecoderWindowState                         |
/// | eEventsMissed            | how many, 0: not known      | 0                                           |
/// | eEventOther              | channel, TESSARO_ALL: none  | pointer to a tagEventDetail                 |
///
/// The fourth word is always the time of the event on the device's clock, in seconds since 1970 UTC; 0: not known.
/// Where a third word is a state, a subscription begins with one event for each state that isn't 0. eEventLoginLost and
/// eEventLoginRestored come from the plug-in itself: subscriptions and streams of the login come back by themselves.
TESSARO_ENUM(eDeviceEvent){
    eEventMotion = 100,          ///< something moves in the picture
    eEventAlarmInput = 101,      ///< an alarm input changed
    eEventAlarmOutput = 102,     ///< an alarm output changed
    eEventVideoLoss = 103,       ///< no picture comes from the sensor or cable
    eEventTamper = 104,          ///< the camera was covered, turned or blinded
    eEventDiskFull = 105,        ///< no room, and nothing may be overwritten
    eEventDiskError = 106,       ///< a disk answers with errors
    eEventRecording = 107,       ///< a recording began or ended
    eEventUserLogin = 108,       ///< a user logged in or out, or was refused
    eEventLoginLost = 109,       ///< the device can't be reached, or has ended the login
    eEventLoginRestored = 110,   ///< the login lives again
    eEventDeviceRestarted = 111, ///< the device started since the last event
    eEventConfigChanged = 112,   ///< a configuration block was changed, by anybody
    eEventClockChanged = 113,    ///< the device's clock was set
    eEventPanelKey = 114,        ///< a key on the front panel
    eEventWindow = 115,          ///< a window of a decoder shows something else
    eEventsMissed = 116,         ///< events may have been lost before this one
    eEventOther = 117,           ///< anything else, with the device's own words
};

/// dwEvent of ClientAdapter_SubscribeEvent and ClientAdapter_UnSubscribeEvent: a sum of these,
/// `TESSARO_EVENT(eEventMotion) | TESSARO_EVENT(eEventTamper)`, or 0 for all events. A new subscription of a login
/// takes the place of the one before; unsubscribing some leaves the rest.
#define TESSARO_EVENT(event) (1ul << ((unsigned long)(event)-100ul))

/// Why a device started.
TESSARO_ENUM(eRestartReason){
    eRestartUnknown = 0,  ///< not known
    eRestartAsked = 1,    ///< somebody asked for it: ClientAdapter_DeviceControl
    eRestartPower = 2,    ///< the power came back
    eRestartFirmware = 3, ///< new firmware
    eRestartFault = 4,    ///< it failed
};

/// An event in the device's own words. Filled by the plug-in; valid until the callback returns.
typedef struct tagEventDetail
{
    uint32_t dwSize;    ///< what the plug-in knows of this record
    uint32_t dwState;   ///< 1 began, 0 ended; 2: it has no state
    int64_t llTimeUs;   ///< microseconds since 1970 UTC on the device's clock, 0: not known
    char szTopic[256];  ///< what (ONVIF: the topic, "tns1:Device/Trigger/Relay")
    char szSource[128]; ///< where, as name=value with commas between
    char szData[256];   ///< the values that came with it, as name=value with commas between
} tagEventDetail;

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagEventDetail, 656, 656);

#endif
