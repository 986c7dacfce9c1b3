/// @file
/// Parameters of a camera: picture, day and night, exposure, focus.

#ifndef TESSARO_PROTOCOL_INTERFACE_CAMERA_H
#define TESSARO_PROTOCOL_INTERFACE_CAMERA_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup camera Camera parameters
/// Records of ClientAdapter_SetIpcPara and ClientAdapter_GetIpcPara. pPara points at the record that dwType names, and
/// dwLength is its dwSize.
///
/// To change one value: read the record, change the value, write the record back. A write takes effect at once and is
/// kept over a restart. What a written record's dwSize doesn't cover stays as it is on the device. Levels are percent,
/// 0 to 100, with the factory's value at 50 where nothing else is said. What a camera lacks it answers as 0 and takes
/// only as 0.
///
/// eResultNoChannel: no such channel. eResultNotSupported: the channel has none of it. eResultBadArgument: a value out
/// of its range; nothing was changed.
/// @{

/// What dwType of ClientAdapter_SetIpcPara and ClientAdapter_GetIpcPara names.
TESSARO_ENUM(eCameraParameter){
    eCameraPicture = 1,     ///< tagCameraPicture
    eCameraDayNight = 2,    ///< tagCameraDayNight
    eCameraExposure = 3,    ///< tagCameraExposure
    eCameraFocus = 4,       ///< tagCameraFocus
    eCameraPosition = 10,   ///< tagPTZPosition; read only, moved by ClientAdapter_PTZControl
    eCameraPresets = 11,    ///< tagPTZPresetList; read only
    eCameraTours = 12,      ///< tagPTZTourList; read only
    eCameraPTZAbility = 13, ///< tagPTZAbility; read only
};

/// Off, on, or as the camera decides.
TESSARO_ENUM(eCameraSwitch){
    eSwitchOff = 0,  ///< off
    eSwitchOn = 1,   ///< on
    eSwitchAuto = 2, ///< the camera decides
};

/// Whether a camera decides by itself.
TESSARO_ENUM(eCameraMode){
    eModeAuto = 0,   ///< the camera decides
    eModeManual = 1, ///< the record's values hold
};

/// How a picture is turned. Bits.
TESSARO_ENUM(ePictureTurn){
    eTurnNone = 0,    ///< as the sensor sees it
    eTurnMirror = 1,  ///< left and right exchanged
    eTurnFlip = 2,    ///< up and down exchanged; with eTurnMirror: by 180 degrees
    eTurnQuarter = 4, ///< by 90 degrees clockwise, after the other two
};

/// How a camera's picture looks; also configuration block eConfigPicture.
typedef struct tagCameraPicture
{
    uint32_t dwSize;             ///< sizeof this record, by the application
    uint32_t dwBrightness;       ///< percent
    uint32_t dwContrast;         ///< percent
    uint32_t dwSaturation;       ///< percent; 0: grey
    uint32_t dwSharpness;        ///< percent
    uint32_t dwHue;              ///< percent; 50: unchanged
    uint32_t dwNoiseReduction;   ///< percent; 0: none
    uint32_t dwTurn;             ///< ePictureTurn bits
    uint32_t dwWideDynamicRange; ///< eCameraSwitch
    uint32_t dwWideDynamicLevel; ///< percent, while that is on
    uint32_t dwBacklight;        ///< eCameraSwitch: backlight compensation
    uint32_t dwBacklightLevel;   ///< percent, while that is on
    uint32_t dwWhiteBalance;     ///< eCameraMode
    uint32_t dwRedGain;          ///< percent; used when white balance is manual
    uint32_t dwBlueGain;         ///< percent; used when white balance is manual
    uint32_t dwDefog;            ///< eCameraSwitch
} tagCameraPicture;

/// When a camera sees in colour, and its own light. ONVIF calls the filter IrCutFilter: on by day, off at night.
typedef struct tagCameraDayNight
{
    uint32_t dwSize;          ///< sizeof this record, by the application
    uint32_t dwMode;          ///< eDayNightMode
    uint32_t dwSensitivity;   ///< percent: how soon automatic mode changes; higher: in less darkness
    uint32_t dwDelaySeconds;  ///< how long it must be dark or light before automatic mode changes
    uint32_t dwDayMinute;     ///< minute of the device's local day when day begins; eDayNightSchedule
    uint32_t dwNightMinute;   ///< minute of the device's local day when night begins; eDayNightSchedule
    uint32_t dwInfrared;      ///< eCameraSwitch: the camera's own light, automatic: on at night
    uint32_t dwInfraredLevel; ///< percent of its power; factory value 100
    uint32_t bNight;          ///< 1: it is night now; filled on a read, not looked at on a write
    uint32_t dwReserved;      ///< 0
} tagCameraDayNight;

/// When a camera changes between day (colour) and night (grey).
TESSARO_ENUM(eDayNightMode){
    eDayNightAuto = 0,     ///< by the light
    eDayNightDay = 1,      ///< always day
    eDayNightNight = 2,    ///< always night
    eDayNightSchedule = 3, ///< by the clock
};

/// How a camera lights its picture.
typedef struct tagCameraExposure
{
    uint32_t dwSize;          ///< sizeof this record, by the application
    uint32_t dwMode;          ///< eCameraMode
    uint32_t dwPriority;      ///< 0: low noise, 1: frame rate; automatic mode
    uint32_t dwMinExposureUs; ///< shortest time in microseconds; automatic mode
    uint32_t dwMaxExposureUs; ///< longest time in microseconds; automatic mode
    uint32_t dwExposureUs;    ///< time in microseconds; manual mode
    uint32_t dwMinGain;       ///< hundredths of a decibel; automatic mode
    uint32_t dwMaxGain;       ///< hundredths of a decibel; automatic mode
    uint32_t dwGain;          ///< hundredths of a decibel; manual mode
    uint32_t dwIris;          ///< ten-thousandths, 0 closed; manual mode
    uint32_t dwFlicker;       ///< the mains' frequency: 50, 60, or 0: not avoided
    uint32_t dwReserved;      ///< 0
} tagCameraExposure;

/// How a camera focuses.
typedef struct tagCameraFocus
{
    uint32_t dwSize;        ///< sizeof this record, by the application
    uint32_t dwMode;        ///< eCameraMode
    uint32_t dwPosition;    ///< ten-thousandths, 0 nearest; taken in manual mode, filled in both
    uint32_t dwNearLimitCm; ///< nothing nearer is looked for, centimetres; 0: no limit
    uint32_t dwFarLimitCm;  ///< nothing farther is looked for, centimetres; 0: no limit
    uint32_t dwSpeed;       ///< percent
} tagCameraFocus;

/// What dwFlag of ClientAdapter_SetChromaDefault sets back to the factory's values.
TESSARO_ENUM(eChromaDefault){
    eDefaultPicture = 0, ///< tagCameraPicture
    eDefaultAll = 1,     ///< all four records of eCameraParameter that can be written
};

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagCameraPicture, 64, 64);
TESSARO_RECORD(tagCameraDayNight, 40, 40);
TESSARO_RECORD(tagCameraExposure, 48, 48);
TESSARO_RECORD(tagCameraFocus, 24, 24);

#endif
