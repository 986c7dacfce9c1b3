/// @file
/// Front panels.

#ifndef TESSARO_PROTOCOL_INTERFACE_PANELS_H
#define TESSARO_PROTOCOL_INTERFACE_PANELS_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup panelrecords Front panels
/// The keys, lamps and text on the front of a recorder.
/// @{

/// Lamps. Bits.
TESSARO_ENUM(ePanelLamp){
    eLampPower = 1,   ///< the device runs
    eLampRecord = 2,  ///< it records
    eLampAlarm = 4,   ///< an alarm is on
    eLampNetwork = 8, ///< the network is there
    eLampDisk = 16,   ///< a disk is at work
    eLampFault = 32,  ///< something is broken
};

/// Keys.
TESSARO_ENUM(ePanelKey){
    ePanelKeyUp = 1,      ///< up
    ePanelKeyDown = 2,    ///< down
    ePanelKeyLeft = 3,    ///< left
    ePanelKeyRight = 4,   ///< right
    ePanelKeyEnter = 5,   ///< take what is marked
    ePanelKeyEscape = 6,  ///< go back
    ePanelKeyMenu = 7,    ///< open the menu
    ePanelKeyPlay = 8,    ///< play
    ePanelKeyStop = 9,    ///< stop
    ePanelKeyRecord = 10, ///< record
    ePanelKeyDigit = 20,  ///< plus 0 to 9: a digit
};

/// What ClientAdapter_PanelControl does.
TESSARO_ENUM(ePanelAction){
    ePanelPress = 1,    ///< press dwKey, as a person would
    ePanelLock = 2,     ///< keys do nothing any more; eResultRefused to ePanelPress
    ePanelUnlock = 3,   ///< keys work again
    ePanelBeep = 4,     ///< beep for dwMilliseconds
    ePanelLampTest = 5, ///< all lamps light up for dwMilliseconds
};

/// A front panel. A read fills all but dwSize. A write takes dwLampsOn, dwLampsBlinking, dwBrightness and the lines;
/// lamps that the device steers itself (eLampPower, eLampNetwork, eLampDisk) stay as they are.
typedef struct tagPanelStatusInfo
{
    uint32_t dwSize;          ///< sizeof this record, by the application
    uint32_t dwLamps;         ///< ePanelLamp bits that the panel has; not looked at on a write
    uint32_t dwLampsOn;       ///< ePanelLamp bits that are lit
    uint32_t dwLampsBlinking; ///< ePanelLamp bits that blink; they count as lit
    uint32_t dwBrightness;    ///< of lamps and display, percent
    uint32_t bLocked;         ///< 1: the keys are locked; not looked at on a write
    uint32_t bBeeping;        ///< 1: the beeper sounds; not looked at on a write
    uint32_t dwLastKey;       ///< ePanelKey that was pressed last, 0: none; not looked at on a write
    char szLine1[64];         ///< first line of the display, UTF-8
    char szLine2[64];         ///< second line of the display, UTF-8
} tagPanelStatusInfo;

/// What a front panel is to do. Filled by the application.
typedef struct tagPanelControlParameter
{
    uint32_t dwSize;         ///< sizeof this record
    uint32_t dwAction;       ///< ePanelAction
    uint32_t dwKey;          ///< ePanelKey, for ePanelPress
    uint32_t dwMilliseconds; ///< for ePanelBeep and ePanelLampTest; 0: 500, at most 60000
} tagPanelControlParameter;

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagPanelStatusInfo, 160, 160);
TESSARO_RECORD(tagPanelControlParameter, 16, 16);

#endif
