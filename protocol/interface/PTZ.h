/// @file
/// Pan, tilt and zoom.

#ifndef TESSARO_PROTOCOL_INTERFACE_PTZ_H
#define TESSARO_PROTOCOL_INTERFACE_PTZ_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup ptzrecords Pan, tilt, zoom
/// Commands of ClientAdapter_PTZControl, and what is read with ClientAdapter_GetIpcPara.
///
/// Positions and speeds are ten-thousandths of the camera's whole range, as in ONVIF's generic spaces (10000 is ONVIF's
/// 1.0): pan -10000 (left) to 10000 (right), tilt -10000 (down) to 10000 (up), zoom 0 (wide) to 10000 (tele). Speeds
/// have the direction as their sign. Numbers with a sign go through the API's words as TESSARO_SIGNED(-3000); a plug-in
/// takes them back with (int32_t)dwPara.
/// @{

/// What a camera is to do. What dwPara1 to dwPara4 are depends on the command; ms are milliseconds.
///
/// | Command             | dwPara1                | dwPara2               | dwPara3            | dwPara4        |
/// | ------------------- | ---------------------- | --------------------- | ------------------ | -------------- |
/// | ePTZStop            | ePTZAxis bits, 0: all  | 0                     | 0                  | 0              |
/// | ePTZMove            | pan speed, signed      | tilt speed, signed    | zoom speed, signed | ms, 0: 5000    |
/// | ePTZZoom            | zoom speed, signed     | 0                     | 0                  | ms, 0: 5000    |
/// | ePTZFocus           | speed, signed, + far   | 0                     | 0                  | ms, 0: 5000    |
/// | ePTZIris            | speed, signed, + opens | 0                     | 0                  | ms, 0: 5000    |
/// | ePTZAbsolute        | pan, signed            | tilt, signed          | zoom               | speed, 0: full |
/// | ePTZRelative        | pan by, signed         | tilt by, signed       | zoom by, signed    | speed, 0: full |
/// | ePTZFocusOnce       | 0                      | 0                     | 0                  | 0              |
/// | ePTZPresetSet       | preset, from 1         | name (below), 0: none | 0                  | 0              |
/// | ePTZPresetCall      | preset                 | speed, 0: full        | 0                  | 0              |
/// | ePTZPresetRemove    | preset                 | 0                     | 0                  | 0              |
/// | ePTZHomeSet         | 0                      | 0                     | 0                  | 0              |
/// | ePTZHomeCall        | speed, 0: full         | 0                     | 0                  | 0              |
/// | ePTZTourAddPreset   | tour, from 1           | preset                | seconds to stay    | speed, 0: full |
/// | ePTZTourRecordStart | tour                   | 0                     | 0                  | 0              |
/// | ePTZTourRecordStop  | tour                   | 0                     | 0                  | 0              |
/// | ePTZTourRun         | tour                   | rounds, 0: for ever   | 0                  | 0              |
/// | ePTZTourStop        | tour                   | 0                     | 0                  | 0              |
/// | ePTZTourRemove      | tour                   | 0                     | 0                  | 0              |
/// | ePTZAuxiliary       | ePTZAuxiliaryKind      | 1 on, 0 off           | 0                  | ms, 0: stays   |
///
/// Every continuous movement ends by itself after dwPara4 milliseconds (at most 60000, longer ones end then), so a
/// camera never runs on because a stop was lost. To go on, give the command again before that. A new movement takes
/// the place of the one before on the axes that it names: ePTZMove names pan, tilt and zoom, also where a speed is 0.
///
/// A name is text, passed as `(unsigned long)"Gate"`: UTF-8, at most 63 bytes, read before the call returns.
///
/// Answers 0 when the camera has taken the command, not when it has arrived: see tagPTZPosition::bMoving.
/// eResultNotSupported: the channel can't move, or has no such function. eResultNotFound: no such preset or tour.
/// eResultBadArgument: a value out of its range. eResultBusy: a user of a higher level is moving it.
TESSARO_ENUM(ePTZControlCmdCode){
    ePTZStop = 1,             ///< ends movements, and a tour that runs
    ePTZMove = 2,             ///< pan, tilt and zoom at given speeds for a time
    ePTZZoom = 3,             ///< zoom alone; pan and tilt go on as they are
    ePTZFocus = 4,            ///< focus nearer or farther; turns automatic focus off
    ePTZIris = 5,             ///< iris wider or narrower; turns automatic exposure off
    ePTZAbsolute = 6,         ///< go to a position
    ePTZRelative = 7,         ///< go by so much; ends at the limits
    ePTZFocusOnce = 8,        ///< focus by itself, once
    ePTZPresetSet = 10,       ///< remember where it looks now; one of that number is overwritten
    ePTZPresetCall = 11,      ///< go to a preset
    ePTZPresetRemove = 12,    ///< forget a preset
    ePTZHomeSet = 13,         ///< make the present position the home position
    ePTZHomeCall = 14,        ///< go home
    ePTZTourAddPreset = 20,   ///< append a preset to a tour, which begins to exist with its first
    ePTZTourRecordStart = 21, ///< begin to record the movements that follow as a tour
    ePTZTourRecordStop = 22,  ///< end the recording; the tour can be run
    ePTZTourRun = 23,         ///< run a tour
    ePTZTourStop = 24,        ///< stop a tour that runs
    ePTZTourRemove = 25,      ///< forget a tour
    ePTZAuxiliary = 30,       ///< switch the wiper, a light, the washer
};

/// Bits of what moves.
TESSARO_ENUM(ePTZAxis){
    ePTZAxisPan = 1,   ///< left and right
    ePTZAxisTilt = 2,  ///< up and down
    ePTZAxisZoom = 4,  ///< wide and tele
    ePTZAxisFocus = 8, ///< near and far
    ePTZAxisIris = 16, ///< closed and open
};

/// What ePTZAuxiliary switches.
TESSARO_ENUM(ePTZAuxiliaryKind){
    ePTZWiper = 1,    ///< the wiper of the window
    ePTZWasher = 2,   ///< the washer of the window
    ePTZLight = 3,    ///< a light that people see
    ePTZInfrared = 4, ///< a light that they don't
    ePTZHeater = 5,   ///< the heater of the window
};

/// Where a camera looks, and what it is doing. Read with ClientAdapter_GetIpcPara(..., eCameraPosition, ...); all
/// but dwSize filled by the plug-in.
typedef struct tagPTZPosition
{
    uint32_t dwSize;       ///< sizeof this record, by the application
    int32_t nPan;          ///< ten-thousandths of the range, -10000 to 10000
    int32_t nTilt;         ///< ten-thousandths of the range, -10000 to 10000
    int32_t nZoom;         ///< ten-thousandths of the range, 0 to 10000
    uint32_t bMoving;      ///< 1: not yet where it was sent, a timed movement runs, or a tour
    uint32_t dwPreset;     ///< the preset that it stands on, 0: none
    uint32_t dwTour;       ///< the tour that runs, 0: none
    uint32_t bHasDegrees;  ///< 1: the camera knows angles, and the next three hold them
    int32_t nPanDegrees;   ///< hundredths of a degree, clockwise from above
    int32_t nTiltDegrees;  ///< hundredths of a degree above the horizon
    uint32_t dwZoomFactor; ///< hundredths: 100 is the widest view, 3000 is 30 times
    uint32_t dwAuxiliary;  ///< what is switched on: bit n for ePTZAuxiliaryKind n
} tagPTZPosition;

/// What a camera's head can do. Read with ClientAdapter_GetIpcPara(..., eCameraPTZAbility, ...). A channel that can't
/// move answers 0 with all words 0.
typedef struct tagPTZAbility
{
    uint32_t dwSize;          ///< sizeof this record, by the application
    uint32_t dwMoveAxes;      ///< ePTZAxis bits that move continuously
    uint32_t dwPositionAxes;  ///< ePTZAxis bits that can be sent to a position
    uint32_t dwPresets;       ///< presets at most
    uint32_t dwTours;         ///< tours at most
    uint32_t dwAuxiliaries;   ///< what can be switched: bit n for ePTZAuxiliaryKind n
    uint32_t bHome;           ///< 1: has a home position
    uint32_t dwReserved;      ///< 0
    int32_t nPanMinDegrees;   ///< hundredths of a degree at -10000; both pan limits 0: not known
    int32_t nPanMaxDegrees;   ///< hundredths of a degree at 10000
    int32_t nTiltMinDegrees;  ///< hundredths of a degree at -10000; both tilt limits 0: not known
    int32_t nTiltMaxDegrees;  ///< hundredths of a degree at 10000
    uint32_t dwPanMaxSpeed;   ///< hundredths of a degree per second at speed 10000, 0: not known
    uint32_t dwTiltMaxSpeed;  ///< hundredths of a degree per second at speed 10000, 0: not known
    uint32_t dwZoomMaxFactor; ///< hundredths at zoom 10000, 0: not known
    uint32_t dwReserved2;     ///< 0
} tagPTZAbility;

/// One preset of a camera.
typedef struct tagPTZPreset
{
    uint32_t dwPreset; ///< its number, from 1
    int32_t nPan;      ///< as in tagPTZPosition; all three 0 where the device doesn't tell
    int32_t nTilt;     ///< as in tagPTZPosition
    int32_t nZoom;     ///< as in tagPTZPosition
    char szName[64];   ///< UTF-8
} tagPTZPreset;

/// The presets of a camera, in the order of their numbers. Read with ClientAdapter_GetIpcPara(..., eCameraPresets,
/// ...).
typedef struct tagPTZPresetList
{
    uint32_t dwSize;      ///< sizeof this record, by the application
    uint32_t dwEntrySize; ///< sizeof(tagPTZPreset), by the application
    uint32_t dwCapacity;  ///< entries that there is room for, by the application
    uint32_t dwCount;     ///< entries that there are, by the plug-in; may be more than there was room for
    TESSARO_POINTER(tagPTZPreset* ptEntries); ///< the application's; the first dwCapacity of dwCount are filled
} tagPTZPresetList;

/// One tour of a camera.
typedef struct tagPTZTour
{
    uint32_t dwTour;    ///< its number, from 1
    uint32_t dwPresets; ///< presets that it goes to; 0: recorded movements
    uint32_t dwSeconds; ///< how long one run takes, 0: not known
    uint32_t bRunning;  ///< 1: runs now
} tagPTZTour;

/// The tours of a camera. Read with ClientAdapter_GetIpcPara(..., eCameraTours, ...).
typedef struct tagPTZTourList
{
    uint32_t dwSize;      ///< sizeof this record, by the application
    uint32_t dwEntrySize; ///< sizeof(tagPTZTour), by the application
    uint32_t dwCapacity;  ///< entries that there is room for, by the application
    uint32_t dwCount;     ///< entries that there are, by the plug-in; may be more than there was room for
    TESSARO_POINTER(tagPTZTour* ptEntries); ///< the application's; the first dwCapacity of dwCount are filled
} tagPTZTourList;

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagPTZPosition, 48, 48);
TESSARO_RECORD(tagPTZAbility, 64, 64);
TESSARO_STATIC_ASSERT(sizeof(tagPTZPreset) == 80, "tagPTZPreset");
TESSARO_RECORD(tagPTZPresetList, 24, 24);
TESSARO_STATIC_ASSERT(sizeof(tagPTZTour) == 16, "tagPTZTour");
TESSARO_RECORD(tagPTZTourList, 24, 24);

#endif
