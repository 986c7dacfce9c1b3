"""The C API as it is: functions, records, enumerations and callback types under their own names.

Made by generate.py from the headers of the C API, never written by hand. Functions answer a result, 0 when it is done;
the records' size words are filled. A pointer to a number takes `ctypes.c_int()` and the like, a pointer to a record the
record itself, a null pointer is None. A callback must be kept by the program for as long as the library may call it.
"""
# mypy: disable-error-code="misc"

from __future__ import annotations

import ctypes
from ctypes import (POINTER, c_char, c_char_p, c_int, c_int32, c_int64, c_ubyte, c_uint, c_uint32, c_uint64, c_ulong,
                    c_ushort, c_void_p)
from typing import Any, Optional

from .base import Enumeration, Record, null, wide
from .library import Functions

TESSARO_ALL = 0xFFFFFFFF  #: every channel, input, output or window at once, where a function says that it takes it


def TESSARO_EVENT(event: int) -> int:
    """A bit of ClientAdapter_SubscribeEvent's dwEvent."""
    return 1 << (event - 100)


class eCameraParameter(Enumeration):
    """What dwType of ClientAdapter_SetIpcPara and ClientAdapter_GetIpcPara names."""

    eCameraPicture = 1  #: tagCameraPicture
    eCameraDayNight = 2  #: tagCameraDayNight
    eCameraExposure = 3  #: tagCameraExposure
    eCameraFocus = 4  #: tagCameraFocus
    eCameraPosition = 10  #: tagPTZPosition; read only, moved by ClientAdapter_PTZControl
    eCameraPresets = 11  #: tagPTZPresetList; read only
    eCameraTours = 12  #: tagPTZTourList; read only
    eCameraPTZAbility = 13  #: tagPTZAbility; read only


class eCameraSwitch(Enumeration):
    """Off, on, or as the camera decides."""

    eSwitchOff = 0  #: off
    eSwitchOn = 1  #: on
    eSwitchAuto = 2  #: the camera decides


class eCameraMode(Enumeration):
    """Whether a camera decides by itself."""

    eModeAuto = 0  #: the camera decides
    eModeManual = 1  #: the record's values hold


class ePictureTurn(Enumeration):
    """How a picture is turned. Bits."""

    eTurnNone = 0  #: as the sensor sees it
    eTurnMirror = 1  #: left and right exchanged
    eTurnFlip = 2  #: up and down exchanged; with eTurnMirror: by 180 degrees
    eTurnQuarter = 4  #: by 90 degrees clockwise, after the other two


class eDayNightMode(Enumeration):
    """When a camera changes between day (colour) and night (grey)."""

    eDayNightAuto = 0  #: by the light
    eDayNightDay = 1  #: always day
    eDayNightNight = 2  #: always night
    eDayNightSchedule = 3  #: by the clock


class eChromaDefault(Enumeration):
    """What dwFlag of ClientAdapter_SetChromaDefault sets back to the factory's values."""

    eDefaultPicture = 0  #: tagCameraPicture
    eDefaultAll = 1  #: all four records of eCameraParameter that can be written


class eConfigType(Enumeration):
    """The types of blocks.

    | Type                 | index             | Record                   | extra[1]    |
    | -------------------- | ----------------- | ------------------------ | ----------- |
    | eConfigIdentity      | 0                 | tagConfigIdentity        | 0           |
    | eConfigNetwork       | network interface | tagConfigNetwork         | 0           |
    | eConfigClock         | 0                 | tagConfigClock           | 0           |
    | eConfigUsers         | 0                 | tagConfigUsers           | 0           |
    | eConfigStorage       | 0                 | tagConfigStorage         | 0           |
    | eConfigVideoEncoder  | channel           | tagConfigVideoEncoder    | eStreamKind |
    | eConfigAudioEncoder  | channel           | tagConfigAudioEncoder    | eStreamKind |
    | eConfigPicture       | channel           | tagCameraPicture         | 0           |
    | eConfigOverlay       | channel           | tagConfigOverlay         | 0           |
    | eConfigMotion        | channel           | tagConfigMotion          | 0           |
    | eConfigPrivacy       | channel           | tagConfigPrivacy         | 0           |
    | eConfigSchedule      | channel           | tagConfigSchedule        | 0           |
    | eConfigAlarmInput    | alarm input       | tagConfigAlarmInput      | 0           |
    | eConfigAlarmOutput   | alarm output      | tagConfigAlarmOutput     | 0           |
    | eConfigMacAddress    | 0xFFFFFFFF        | tagConfigMacAddress      | 0           |
    """

    eConfigIdentity = 100  #: who the device is and what it has
    eConfigNetwork = 101  #: a network interface
    eConfigClock = 102  #: clock, time zone, NTP
    eConfigUsers = 103  #: users
    eConfigStorage = 104  #: disks; read only
    eConfigVideoEncoder = 110  #: how a stream's video is coded
    eConfigAudioEncoder = 111  #: how a stream's audio is coded
    eConfigPicture = 112  #: how a channel's picture looks
    eConfigOverlay = 113  #: text in a channel's picture
    eConfigMotion = 114  #: motion detection of a channel
    eConfigPrivacy = 115  #: parts of a channel's picture that nobody may see
    eConfigSchedule = 116  #: when a channel is recorded
    eConfigAlarmInput = 120  #: an alarm input
    eConfigAlarmOutput = 121  #: an alarm output
    eConfigMacAddress = 209  #: the hardware address alone; read only


class eNetworkInterface(Enumeration):
    """index of eConfigNetwork: an interface's number from 0, or this one."""

    eInterfaceOfLogin = 4  #: the one that the login came in through


class eClockMode(Enumeration):
    """How a device's clock is set."""

    eClockManual = 0  #: by hand
    eClockNtp = 1  #: from an NTP server


class eVideoProfile(Enumeration):
    """H.264's and H.265's profiles."""

    eProfileMain = 0  #: Main
    eProfileBaseline = 1  #: Constrained Baseline; H.264 alone
    eProfileHigh = 2  #: High; H.265: Main 10


class eBitRateMode(Enumeration):
    """How a bit rate is kept."""

    eBitRateConstant = 0  #: as close to dwBitRate as can be
    eBitRateVariable = 1  #: by quality, with dwBitRate as its limit


class eAudioSource(Enumeration):
    """Where sound comes from."""

    eAudioMicrophone = 0  #: a microphone
    eAudioLine = 1  #: a line input


class eOverlayKind(Enumeration):
    """What a text in the picture says."""

    eOverlayText = 0  #: szText
    eOverlayTime = 1  #: date and time of the device; szText is the format as strftime takes it, empty: as usual
    eOverlayName = 2  #: the channel's name, which is szText


class eContactIdle(Enumeration):
    """What a contact is like when nothing happens."""

    eContactOpen = 0  #: open (ONVIF: idle state open)
    eContactClosed = 1  #: closed


class eDecoderNumber(Enumeration):
    """Numbers of a decoder."""

    eWindowsOfScreen = 64  #: the windows of a screen that was split begin at a multiple of this


class eScreenSplitMode(Enumeration):
    """dwMode of ClientAdapter_SetScreenSplitMode: the number of windows. 1, 4, 9, 16, 25 and 36 are even grids.
    pdwChannels points at one word for each window: the decoder's own channel to bind it to, or TESSARO_ALL for none;
    null: none. What the screen's windows were bound to before is forgotten.
    """

    eSplit1 = 1  #: one window
    eSplit4 = 4  #: 2 x 2
    eSplit6 = 6  #: one of two thirds, and five around it
    eSplit8 = 8  #: one of three quarters, and seven around it
    eSplit9 = 9  #: 3 x 3
    eSplit16 = 16  #: 4 x 4
    eSplit25 = 25  #: 5 x 5
    eSplit36 = 36  #: 6 x 6


class eDecoderSourceKind(Enumeration):
    """Where a window's pictures come from."""

    eDecoderSourceNone = 0  #: nothing
    eDecoderSourceAddress = 1  #: a stream's address: szAddress is the whole URL
    eDecoderSourceDevice = 2  #: a channel of another device that the decoder logs in to
    eDecoderSourceChannel = 3  #: a channel of the decoder's own
    eDecoderSourceTransfer = 4  #: frames that the application sends: ClientAdapter_StreamTransferConnect


class eDecoderFit(Enumeration):
    """How a picture is fitted to a window of another shape."""

    eFitWhole = 0  #: all of it, with the background beside it
    eFitStretch = 1  #: all of it, out of shape
    eFitFill = 2  #: as much of it as fills the window


class eDecoderLoss(Enumeration):
    """What a window shows when no frame comes."""

    eLossFreeze = 0  #: the last picture
    eLossBlank = 1  #: the background
    eLossMessage = 2  #: a message, "no signal"


class eDecoderDisconnect(Enumeration):
    """dwFlag of ClientAdapter_DecoderDynamicDisconnect."""

    eDecoderRestore = 0  #: the window shows what comes next in its order
    eDecoderBlank = 1  #: the window shows its background until something new is connected


class eVideoStandard(Enumeration):
    """Output standards of a screen."""

    eStandardAutomatic = 0  #: what the screen says that it likes best
    eStandardPal = 1  #: analogue, 720x576, 25 frames
    eStandardNtsc = 2  #: analogue, 720x480, 30 frames
    eStandardMode = 3  #: digital, as the record's size and rate say


class eDecoderChannelStatus(Enumeration):
    """Whether a window's tour is on."""

    eDecoderLoopOff = 0  #: off
    eDecoderLoopOn = 1  #: on
    eDecoderLoopHold = 2  #: on, but stays where it is until it is switched on again


class eDecoderAbility(Enumeration):
    """Bits of tagDecoderChannelInformation::dwAbilities."""

    eDecoderCanLoop = 1  #: tours
    eDecoderCanPlay = 2  #: recordings
    eDecoderCanLogo = 4  #: logos
    eDecoderCanAudio = 8  #: sound
    eDecoderCanTransfer = 16  #: frames that the application sends


class eDecoderWindowState(Enumeration):
    """What a window is doing."""

    eWindowEmpty = 0  #: shows its background
    eWindowConnecting = 1  #: looks for its source
    eWindowShowing = 2  #: shows a live stream
    eWindowPlaying = 3  #: plays a recording
    eWindowPaused = 4  #: stands in a recording
    eWindowNoSignal = 5  #: the source was there, and no frame comes; tried again
    eWindowRefused = 6  #: the source can't be reached or refused; tried again


class eDecoderPlayAction(Enumeration):
    """What to do with a recording in a window."""

    eDecoderPlayOpen = 1  #: play the recordings of tSource between two times
    eDecoderPlayPause = 2  #: stand still
    eDecoderPlayGo = 3  #: go on
    eDecoderPlayStep = 4  #: show the next frame and stand still
    eDecoderPlaySeek = 5  #: go to llPositionUs
    eDecoderPlaySpeed = 6  #: play at dwSpeed
    eDecoderPlayClose = 7  #: the window shows what comes next in its order


class eDeviceChannelControl(Enumeration):
    """Shows or hides a logo."""

    eChannelHide = 0  #: hide
    eChannelShow = 1  #: show


class eDecoderDisplayAction(Enumeration):
    """What to do with a window's place for now."""

    eDisplayRestore = 0  #: back to where the layout has it
    eDisplayFillScreen = 1  #: over its whole screen, before all others
    eDisplayFillWall = 2  #: over the whole wall, before all others
    eDisplayHide = 3  #: not shown; its stream goes on
    eDisplayFreeze = 4  #: stays at the picture that it shows


class eOsdTime(Enumeration):
    """dwFlag of ClientAdapter_DecoderChannelGetOSDTime."""

    eOsdFrameTime = 0  #: when the picture that the window shows was taken
    eOsdClock = 1  #: what the clock on the window's screen shows


class eRemoteDeviceControl(Enumeration):
    """What ClientAdapter_DeviceControl does. Answers 0 when the device has agreed. After a restart logins and streams come
    back by themselves, with eEventLoginLost and eEventLoginRestored.
    """

    eDeviceRestart = 1  #: stops and starts again
    eDeviceShutDown = 2  #: stops; only a person starts it again
    eDeviceFactoryDefault = 3  #: forgets its configuration but its network and users, and restarts
    eDeviceFactoryReset = 4  #: forgets all its configuration, and restarts; may change its address
    eDeviceClearLog = 5  #: forgets its log


class eImageFormat(Enumeration):
    """How a picture is coded."""

    eImageJpeg = 0  #: a JPEG file
    eImagePng = 1  #: a PNG file


class eCaptureTarget(Enumeration):
    """What ClientAdapter_ImageCapture takes a picture of: a channel's number, or one of these plus a number."""

    eCaptureChannel = 0  #: a camera's or recorder's channel, from 0
    eCaptureWindow = 0x10000  #: plus a window: what one window of a decoder shows
    eCaptureScreen = 0x20000  #: plus a screen, from 0: what one screen of a decoder shows
    eCaptureWall = 0x30000  #: what all screens of a decoder show together


class eFileLockOperationCode(Enumeration):
    """What ClientAdapter_FileLock does with a recorded file."""

    eFileUnlock = 0  #: it may be overwritten again
    eFileLock = 1  #: it is not overwritten


class eNetworkSDKVersion(Enumeration):
    """Which version of its protocol a device speaks."""

    eSDKVersionUnknown = 0  #: not known
    eSDKVersion1 = 1  #: the first: configuration blocks in the first layout; ONVIF: Media 1
    eSDKVersion2 = 2  #: the second: blocks in both layouts; ONVIF: Media 2 too


class eProbeFlag(Enumeration):
    """Bits of tagDeviceProbeParameter::dwFlags."""

    eProbeIPv4Only = 1  #: not on IPv6
    eProbeIPv6Only = 2  #: not on IPv4


class eProbeState(Enumeration):
    """Bits of tagDeviceProbeConfig::dwFlags."""

    eProbeGone = 1  #: the device said good-bye, or hasn't answered for long
    eProbeDhcp = 2  #: it has its address from DHCP
    eProbeNoPassword = 4  #: nobody has set a password yet


class eDeviceEvent(Enumeration):
    """First word of a device's events.

    | First word               | Second word                 | Third word                                  |
    | ------------------------ | --------------------------- | ------------------------------------------- |
    | eEventMotion             | channel                     | 1 began, 0 ended                            |
    | eEventAlarmInput         | input                       | 1 active, 0 idle                            |
    | eEventAlarmOutput        | output                      | 1 active, 0 idle                            |
    | eEventVideoLoss          | channel                     | 1 lost, 0 back                              |
    | eEventTamper             | channel                     | 1 began, 0 ended                            |
    | eEventDiskFull           | disk, TESSARO_ALL: all      | 1 full, 0 room again                        |
    | eEventDiskError          | disk                        | 1 began, 0 ended                            |
    | eEventRecording          | channel                     | eHistoryStreamType that began, 0 ended      |
    | eEventUserLogin          | eUserLevel of the user      | 1 in, 0 out, 2 refused                      |
    | eEventLoginLost          | ePluginResult: why          | milliseconds to the next try; 0: none comes |
    | eEventLoginRestored      | milliseconds it was lost    | 0                                           |
    | eEventDeviceRestarted    | eRestartReason              | 0                                           |
    | eEventConfigChanged      | eConfigType                 | index of the block                          |
    | eEventClockChanged       | milliseconds, signed        | 0                                           |
    | eEventPanelKey           | ePanelKey                   | 1 pressed                                   |
    | eEventWindow             | window of a decoder         | eDecoderWindowState                         |
    | eEventsMissed            | how many, 0: not known      | 0                                           |
    | eEventOther              | channel, TESSARO_ALL: none  | pointer to a tagEventDetail                 |

    The fourth word is always the time of the event on the device's clock, in seconds since 1970 UTC; 0: not known.
    Where a third word is a state, a subscription begins with one event for each state that isn't 0. eEventLoginLost and
    eEventLoginRestored come from the plug-in itself: subscriptions and streams of the login come back by themselves.
    """

    eEventMotion = 100  #: something moves in the picture
    eEventAlarmInput = 101  #: an alarm input changed
    eEventAlarmOutput = 102  #: an alarm output changed
    eEventVideoLoss = 103  #: no picture comes from the sensor or cable
    eEventTamper = 104  #: the camera was covered, turned or blinded
    eEventDiskFull = 105  #: no room, and nothing may be overwritten
    eEventDiskError = 106  #: a disk answers with errors
    eEventRecording = 107  #: a recording began or ended
    eEventUserLogin = 108  #: a user logged in or out, or was refused
    eEventLoginLost = 109  #: the device can't be reached, or has ended the login
    eEventLoginRestored = 110  #: the login lives again
    eEventDeviceRestarted = 111  #: the device started since the last event
    eEventConfigChanged = 112  #: a configuration block was changed, by anybody
    eEventClockChanged = 113  #: the device's clock was set
    eEventPanelKey = 114  #: a key on the front panel
    eEventWindow = 115  #: a window of a decoder shows something else
    eEventsMissed = 116  #: events may have been lost before this one
    eEventOther = 117  #: anything else, with the device's own words


class eRestartReason(Enumeration):
    """Why a device started."""

    eRestartUnknown = 0  #: not known
    eRestartAsked = 1  #: somebody asked for it: ClientAdapter_DeviceControl
    eRestartPower = 2  #: the power came back
    eRestartFirmware = 3  #: new firmware
    eRestartFault = 4  #: it failed


class eMediaType(Enumeration):
    """What a frame carries."""

    eMediaVideo = 0  #: one access unit
    eMediaAudio = 1  #: one packet
    eMediaOther = 2  #: metadata, subtitles, an application track


class eMediaCodec(Enumeration):
    """How a frame is coded. Codecs without a value of their own are passed on as eCodecOther and named in szCodecName."""

    eCodecOther = 0  #: see szCodecName
    eCodecH264 = 1  #: Annex B byte stream
    eCodecH265 = 2  #: Annex B byte stream
    eCodecAAC = 3  #: raw access units without ADTS header; tagStreamMediaFrame::pConfig describes them
    eCodecG711A = 4  #: A-law
    eCodecG711U = 5  #: mu-law
    eCodecG726 = 6  #: ADPCM; szCodecName ends in the bit rate: "g726-32"
    eCodecOpus = 7  #: one packet
    eCodecMJPEG = 8  #: one whole JPEG file
    eCodecMPEG4 = 9  #: MPEG-4 Part 2; one access unit
    eCodecMPEGTS = 10  #: whole transport stream packets of 188 bytes
    eCodecMetadata = 11  #: one XML document of ONVIF metadata


class eFrameFlag(Enumeration):
    """Bits of tagStreamMediaFrame::dwFlags."""

    eFrameKey = 1  #: decoding can start here; H.264 and H.265 then have their parameter sets before the picture
    eFrameDiscontinuity = 2  #: presentation times do not continue those of the frame before (reconnect, clock jump)
    eFrameDamaged = 4  #: parts of this frame may be lost: packets were missing at its beginning, inside or at its end
    eFrameEnd = 8  #: no frame: playback has come to its end; dwLength is 0 and pData null


class eStreamKind(Enumeration):
    """Which of a device's live streams to open."""

    eStreamMain = 1  #: 2 and 3 name the main stream too
    eStreamSub = 4  #: so does 5


class eRtspTransport(Enumeration):
    """How RTP travels: dwStreamPara[0] of a stream opened on an RTSP login."""

    eRtspTcp = 0  #: interleaved with RTSP in one TCP connection
    eRtspUdp = 1  #: to a port of this machine
    eRtspMulticast = 2  #: to a group that the device names
    eRtspAutomatic = 3  #: UDP first; TCP when nothing has come within 3 s, which eEventTransport reports


class eRtspCertificate(Enumeration):
    """Whether an rtsps:// device must show who it is: dwStreamPara[1] of a stream opened on an RTSP login."""

    eRtspCertificateAny = 0  #: any certificate will do: cameras sign their own
    eRtspCertificateTrusted = 1  #: it must name the host and lead to an authority of the system's store, or of the files that the environment names in SSL_CERT_FILE or SSL_CERT_DIR


class eTaskControl(Enumeration):
    """What to do with an open stream. The RTSP binding passes every code of 3 or more as 3."""

    eTaskPlay = 0  #: frames come
    eTaskPause = 1  #: no frames come, the stream stays open
    eTaskStep = 2  #: playback: one frame comes, then it is paused; RTSP: eResultNotSupported


class eMediaFunctionType(Enumeration):
    """What a stream is for: ClientAdapter_QueryStreamMediaLinkID."""

    eMediaFunctionLive = 0  #: live streams
    eMediaFunctionPlayback = 1  #: playback
    eMediaFunctionVoice = 2  #: voice talk
    eMediaFunctionDownload = 3  #: file transfer


class eConnectionState(Enumeration):
    """Where an RTSP stream is in its life."""

    eConnectionConnecting = 1  #: looking for the device and setting the stream up
    eConnectionLive = 2  #: frames arrive
    eConnectionStalled = 3  #: connected, but nothing has come for 5 s
    eConnectionRefused = 4  #: the device answered with an error; tried again after a pause
    eConnectionLost = 5  #: the connection failed, broke or ended; tried again after a pause
    eConnectionPaused = 6  #: paused by the application


class eConnectionEvent(Enumeration):
    """First word of an RTSP stream's events. The first six are the changes of eConnectionState, with the same values.

    | First word          | Second word                            | Third word               | Fourth word    |
    | ------------------- | -------------------------------------- | ------------------------ | -------------- |
    | eEventConnecting    | 0                                      | 0                        | reconnects yet |
    | eEventLive          | 0                                      | 0                        | reconnects yet |
    | eEventStalled       | milliseconds of silence                | 0                        | reconnects yet |
    | eEventRefused       | RTSP status (401, 404, 461...)         | milliseconds to next try | reconnects yet |
    | eEventLost          | errno of the failure, 0: stream's end  | milliseconds to next try | reconnects yet |
    | eEventPaused        | 0                                      | 0                        | reconnects yet |
    | eEventClockJump     | size of the jump in milliseconds       | 0 forward, 1 backward    | eMediaType     |
    | eEventTransport     | the eRtspTransport that is used now    | the one that was tried   | reconnects yet |
    """

    eEventConnecting = 1  #: eConnectionConnecting
    eEventLive = 2  #: eConnectionLive
    eEventStalled = 3  #: eConnectionStalled
    eEventRefused = 4  #: eConnectionRefused
    eEventLost = 5  #: eConnectionLost
    eEventPaused = 6  #: eConnectionPaused
    eEventClockJump = 7  #: the device's clock was set or its time stamps began again; the stream goes on
    eEventTransport = 8  #: another transport than the one asked for is used


class eClientSDKAttributeType(Enumeration):
    """What can be asked with RTSP_GetAttribute."""

    eAttributeMaxChannel = 0  #: the bound on open streams
    eAttributeOpenStreams = 1  #: streams open now


class eUserLevel(Enumeration):
    """What a user may do: ClientAdapter_GetLoginLevel."""

    eUserViewer = 1  #: look and listen, live and recorded
    eUserOperator = 2  #: also move cameras, talk, switch outputs, steer recording and decoders
    eUserAdministrator = 3  #: everything


class eLoginStatus(Enumeration):
    """Whether a login lives: ClientAdapter_GetLoginStatus. 0 and 1 are nobody's answer: the protocol knows no status, or
    its plug-in is missing.
    """

    eLoginAlive = 10  #: the device answers
    eLoginLost = 11  #: the device doesn't answer; the plug-in goes on trying
    eLoginEnded = 12  #: the device has ended the login, and nobody tries any more: log out


class ePTZControlCmdCode(Enumeration):
    """What a camera is to do. What dwPara1 to dwPara4 are depends on the command; ms are milliseconds.

    | Command             | dwPara1                | dwPara2               | dwPara3            | dwPara4        |
    | ------------------- | ---------------------- | --------------------- | ------------------ | -------------- |
    | ePTZStop            | ePTZAxis bits, 0: all  | 0                     | 0                  | 0              |
    | ePTZMove            | pan speed, signed      | tilt speed, signed    | zoom speed, signed | ms, 0: 5000    |
    | ePTZZoom            | zoom speed, signed     | 0                     | 0                  | ms, 0: 5000    |
    | ePTZFocus           | speed, signed, + far   | 0                     | 0                  | ms, 0: 5000    |
    | ePTZIris            | speed, signed, + opens | 0                     | 0                  | ms, 0: 5000    |
    | ePTZAbsolute        | pan, signed            | tilt, signed          | zoom               | speed, 0: full |
    | ePTZRelative        | pan by, signed         | tilt by, signed       | zoom by, signed    | speed, 0: full |
    | ePTZFocusOnce       | 0                      | 0                     | 0                  | 0              |
    | ePTZPresetSet       | preset, from 1         | name (below), 0: none | 0                  | 0              |
    | ePTZPresetCall      | preset                 | speed, 0: full        | 0                  | 0              |
    | ePTZPresetRemove    | preset                 | 0                     | 0                  | 0              |
    | ePTZHomeSet         | 0                      | 0                     | 0                  | 0              |
    | ePTZHomeCall        | speed, 0: full         | 0                     | 0                  | 0              |
    | ePTZTourAddPreset   | tour, from 1           | preset                | seconds to stay    | speed, 0: full |
    | ePTZTourRecordStart | tour                   | 0                     | 0                  | 0              |
    | ePTZTourRecordStop  | tour                   | 0                     | 0                  | 0              |
    | ePTZTourRun         | tour                   | rounds, 0: for ever   | 0                  | 0              |
    | ePTZTourStop        | tour                   | 0                     | 0                  | 0              |
    | ePTZTourRemove      | tour                   | 0                     | 0                  | 0              |
    | ePTZAuxiliary       | ePTZAuxiliaryKind      | 1 on, 0 off           | 0                  | ms, 0: stays   |

    Every continuous movement ends by itself after dwPara4 milliseconds (at most 60000, longer ones end then), so a
    camera never runs on because a stop was lost. To go on, give the command again before that. A new movement takes
    the place of the one before on the axes that it names: ePTZMove names pan, tilt and zoom, also where a speed is 0.

    A name is text, passed as `(unsigned long)"Gate"`: UTF-8, at most 63 bytes, read before the call returns.

    Answers 0 when the camera has taken the command, not when it has arrived: see tagPTZPosition::bMoving.
    eResultNotSupported: the channel can't move, or has no such function. eResultNotFound: no such preset or tour.
    eResultBadArgument: a value out of its range. eResultBusy: a user of a higher level is moving it.
    """

    ePTZStop = 1  #: ends movements, and a tour that runs
    ePTZMove = 2  #: pan, tilt and zoom at given speeds for a time
    ePTZZoom = 3  #: zoom alone; pan and tilt go on as they are
    ePTZFocus = 4  #: focus nearer or farther; turns automatic focus off
    ePTZIris = 5  #: iris wider or narrower; turns automatic exposure off
    ePTZAbsolute = 6  #: go to a position
    ePTZRelative = 7  #: go by so much; ends at the limits
    ePTZFocusOnce = 8  #: focus by itself, once
    ePTZPresetSet = 10  #: remember where it looks now; one of that number is overwritten
    ePTZPresetCall = 11  #: go to a preset
    ePTZPresetRemove = 12  #: forget a preset
    ePTZHomeSet = 13  #: make the present position the home position
    ePTZHomeCall = 14  #: go home
    ePTZTourAddPreset = 20  #: append a preset to a tour, which begins to exist with its first
    ePTZTourRecordStart = 21  #: begin to record the movements that follow as a tour
    ePTZTourRecordStop = 22  #: end the recording; the tour can be run
    ePTZTourRun = 23  #: run a tour
    ePTZTourStop = 24  #: stop a tour that runs
    ePTZTourRemove = 25  #: forget a tour
    ePTZAuxiliary = 30  #: switch the wiper, a light, the washer


class ePTZAxis(Enumeration):
    """Bits of what moves."""

    ePTZAxisPan = 1  #: left and right
    ePTZAxisTilt = 2  #: up and down
    ePTZAxisZoom = 4  #: wide and tele
    ePTZAxisFocus = 8  #: near and far
    ePTZAxisIris = 16  #: closed and open


class ePTZAuxiliaryKind(Enumeration):
    """What ePTZAuxiliary switches."""

    ePTZWiper = 1  #: the wiper of the window
    ePTZWasher = 2  #: the washer of the window
    ePTZLight = 3  #: a light that people see
    ePTZInfrared = 4  #: a light that they don't
    ePTZHeater = 5  #: the heater of the window


class ePanelLamp(Enumeration):
    """Lamps. Bits."""

    eLampPower = 1  #: the device runs
    eLampRecord = 2  #: it records
    eLampAlarm = 4  #: an alarm is on
    eLampNetwork = 8  #: the network is there
    eLampDisk = 16  #: a disk is at work
    eLampFault = 32  #: something is broken


class ePanelKey(Enumeration):
    """Keys."""

    ePanelKeyUp = 1  #: up
    ePanelKeyDown = 2  #: down
    ePanelKeyLeft = 3  #: left
    ePanelKeyRight = 4  #: right
    ePanelKeyEnter = 5  #: take what is marked
    ePanelKeyEscape = 6  #: go back
    ePanelKeyMenu = 7  #: open the menu
    ePanelKeyPlay = 8  #: play
    ePanelKeyStop = 9  #: stop
    ePanelKeyRecord = 10  #: record
    ePanelKeyDigit = 20  #: plus 0 to 9: a digit


class ePanelAction(Enumeration):
    """What ClientAdapter_PanelControl does."""

    ePanelPress = 1  #: press dwKey, as a person would
    ePanelLock = 2  #: keys do nothing any more; eResultRefused to ePanelPress
    ePanelUnlock = 3  #: keys work again
    ePanelBeep = 4  #: beep for dwMilliseconds
    ePanelLampTest = 5  #: all lamps light up for dwMilliseconds


class eHistoryStreamType(Enumeration):
    """Why something was recorded. Bits: a mask of several is a "types" word."""

    eHistoryAny = 0  #: in a question: whatever the reason
    eHistoryContinuous = 1  #: by schedule
    eHistoryMotion = 2  #: motion was detected
    eHistoryAlarm = 4  #: an alarm input was active
    eHistoryManual = 8  #: somebody asked for it: ClientAdapter_RecordControl


class eHistoryFlag(Enumeration):
    """Bits of dwFlag of ClientAdapter_HistoryStreamCreate and ClientAdapter_HistoryStreamMultiTypeCreate."""

    eHistoryPaused = 1  #: begins paused: no frame comes before eTaskPlay or eTaskStep
    eHistoryNoAudio = 2  #: video alone
    eHistoryKeyFramesOnly = 4  #: only frames with eFrameKey


class eOperationType(Enumeration):
    """Whether to read or to set a position."""

    eOperationGet = 0  #: into the record: when the frame that came last was recorded
    eOperationSet = 1  #: from the record: go on from the key frame at or before it; in a gap, from the gap's end


class ePlaybackSpeed(Enumeration):
    """dwSpeed of ClientAdapter_HistoryStreamSetSpeed, in thousandths of the recording's own speed: `eSpeedNormal * 4`,
    `eSpeedNormal / 8`. From an eighth to 16 times. With eSpeedReverse backwards: key frames in falling order, each at
    its time. eResultBadArgument: out of this range.
    """

    eSpeedNormal = 1000  #: as recorded
    eSpeedReverse = 0x10000  #: a bit to add: `eSpeedReverse + eSpeedNormal * 2`


class eMiscParameter(Enumeration):
    """What a parameter of a plug-in is."""

    eMiscCertificate = 0x4000  #: an eRtspCertificate, 4 bytes: for the https devices of later ONVIF logins
    eMiscFault = 0x5000  #: tagDeviceFault: a simulated device misbehaves
    eMiscFleet = 0x5001  #: a path as text, dwLength its bytes with the terminator: the simulated devices' file, read now


class eFaultKind(Enumeration):
    """How a simulated device misbehaves. Each goes on for dwMilliseconds (0: until eFaultNone), and dwValue, dwCount and
    dwChannel mean what stands here; those not named are 0.
    """

    eFaultNone = 0  #: the device behaves: all its faults end
    eFaultLockOut = 1  #: after dwCount wrong passwords (0: 5) the account is locked for dwMilliseconds: eResultLocked
    eFaultBusy = 2  #: every call is answered with eResultBusy
    eFaultSlow = 3  #: every call takes dwValue milliseconds longer
    eFaultHang = 4  #: the next dwCount calls (0: all) aren't answered: they end by time-out, logout or stop
    eFaultDrop = 5  #: the connection breaks now, and stays broken
    eFaultRestart = 6  #: the device restarts now, and is down for dwMilliseconds (0: 5000)
    eFaultClockDrift = 7  #: the device's clock runs too fast by dwValue (signed) parts in a million
    eFaultClockJump = 8  #: the device's clock is set forward by llOffsetUs, once
    eFaultStall = 9  #: streams of dwChannel stay open, but no frame comes
    eFaultLose = 10  #: of a thousand frames of dwChannel dwValue are lost, and the next one has dwLostBefore
    eFaultDamage = 11  #: of a thousand frames of dwChannel dwValue come with eFrameDamaged and wrong bytes
    eFaultDiskFull = 12  #: disk dwChannel is full: eEventDiskFull, recordings end, eResultDeviceFull
    eFaultDiskError = 13  #: disk dwChannel answers with errors: eEventDiskError
    eFaultVideoLoss = 14  #: dwChannel has no picture: eEventVideoLoss
    eFaultMotion = 15  #: something moves before dwChannel: eEventMotion
    eFaultTamper = 16  #: dwChannel is covered: eEventTamper
    eFaultAlarmInput = 17  #: alarm input dwChannel is active: eEventAlarmInput
    eFaultForceOff = 18  #: the device ends the logins of szUserName: the callback of ClientAdapter_DeleteUserForceCB
    eFaultRegister = 19  #: the device registers itself with whoever listens: ClientAdapter_DeviceRegisterListenStart


class eCallbackKind(Enumeration):
    """dwType of ClientAdapter_SetCallbackFunc."""

    eCallbackLog = 1  #: PluginLogCallback


class eFileKind(Enumeration):
    """What a file on a device is."""

    eFileAny = 0  #: in a question: whatever it is
    eFileRecording = 1  #: video and audio
    eFilePicture = 2  #: a snapshot
    eFileConfiguration = 3  #: the whole configuration, to save and to restore
    eFileFirmware = 4  #: what the device runs; an upload restarts it
    eFileLog = 5  #: the log as text
    eFileSupport = 6  #: what a maker's support asks for
    eFileAudio = 7  #: a sound that the device can play


class eLogType(Enumeration):
    """What a log entry is about. Bits."""

    eLogSystem = 1  #: start, stop, clock, network, disks
    eLogConfiguration = 2  #: somebody changed a setting
    eLogAlarm = 4  #: motion, inputs, outputs, tamper, video loss
    eLogRecording = 8  #: recordings began, ended, were played or deleted
    eLogAccess = 16  #: logins, refused ones too


class eProtocolType(Enumeration):
    """The protocol behind a login or connection."""

    eProtocolPrivate = 0  #: the private device protocol; inserted by the application, never by the library
    eProtocolOnvif = 1  #: ONVIF: libonvifclient.so
    eProtocolRTSP = 2  #: RTSP: librtspclient.so
    eProtocolVTQ = 3  #: VTQ: libVTQ.so


class eResult(Enumeration):
    """The codes of the library itself. A plug-in's own result passes through every layer unchanged, so any other
    number, and these too, may come from a plug-in.
    """

    eResultOk = 0  #: done; or the protocol knows no such thing, and nothing was done
    eResultNoEntryPoint = 1  #: the plug-in lacks the entry point; from a trampoline: no callback is registered
    eResultUnknownLogin = 3  #: the login ID is not registered, or a login query came back negative
    eResultNoProtocol = 4  #: bad protocol type, no binding inserted for it, or a required pointer is null
    eResultAlreadyInserted = 13  #: the protocol has a binding already
    eResultUnknownMedia = -1  #: the media ID is not registered; at login: a required pointer is null


class ePluginResult(Enumeration):
    """The results of our plug-ins, the same for every protocol, so that an application handles them once. Where something
    is refused, nothing was changed.
    """

    eResultNotSupported = 201  #: the protocol or this device has no such function
    eResultBadHandle = 202  #: nothing open has this handle (null and closed ones included)
    eResultBadArgument = 203  #: a required pointer is null, a record too small, or a value out of its range
    eResultTooManyStreams = 204  #: as many streams are open as the application allowed
    eResultNotStarted = 205  #: the plug-in has not been started, or has been stopped
    eResultNoResources = 206  #: no memory or no thread was left
    eResultBadAddress = 207  #: the address is no address of this protocol, or holds a user name or password
    eResultWrongLogin = 208  #: wrong user name or password, or the user may not do this
    eResultLocked = 209  #: the device has locked the account for a while
    eResultUnreachable = 210  #: nobody answers at the address
    eResultTimeOut = 211  #: the device did not answer in time
    eResultConnectionLost = 212  #: the connection broke while the call was waiting
    eResultBusy = 213  #: the device is occupied; the same call may succeed later
    eResultNoChannel = 214  #: the device has no such channel, input, output or window
    eResultRefused = 215  #: the device answered that it will not do it
    eResultNotFound = 216  #: no such file, recording, preset, user or block
    eResultNoMoreEntries = 217  #: a query has given its last entry
    eResultDeviceFull = 218  #: the device has no room left
    eResultStillRunning = 219  #: closed; a callback that began before is still running, and is the last


class eDiskGroupType(Enumeration):
    """Which groups of disks a size is asked of."""

    eDiskGroupAll = 0  #: all of them
    eDiskGroupMain = 1  #: where recordings go
    eDiskGroupRedundant = 2  #: where second copies go
    eDiskGroupArchive = 3  #: where recordings are moved for good


class eDiskGroupOperation(Enumeration):
    """What ClientAdapter_DiskGroupManage does. Groups and disks have numbers from 0.

    | Operation            | dwGroup | dwDisk    | dwValue                                               |
    | -------------------- | ------- | --------- | ----------------------------------------------------- |
    | eDiskGroupAddDisk    | group   | disk      | eDiskGroupType of the group, when it begins with this |
    | eDiskGroupRemoveDisk | group   | disk      | 0                                                     |
    | eDiskGroupFormat     | 0       | disk      | 0                                                     |
    | eDiskGroupBind       | group   | 0         | channel, or TESSARO_ALL                               |
    | eDiskGroupQuota      | group   | channel   | percent of the group; 0: no limit                     |
    """

    eDiskGroupAddDisk = 1  #: the disk belongs to this group, and to no other; its recordings stay
    eDiskGroupRemoveDisk = 2  #: the disk belongs to no group: nothing is recorded there, what is there stays
    eDiskGroupFormat = 3  #: everything on the disk is deleted, protected files too
    eDiskGroupBind = 4  #: the channel records to this group
    eDiskGroupQuota = 5  #: the channel keeps at most so much of the group


class eDiskState(Enumeration):
    """What a disk is doing."""

    eDiskAbsent = 0  #: not there
    eDiskOk = 1  #: works
    eDiskSleeping = 2  #: works, and stands still
    eDiskFormatting = 3  #: is being formatted
    eDiskFull = 4  #: full, and nothing may be overwritten
    eDiskFaulty = 5  #: answers with errors


class eSerialKind(Enumeration):
    """How a serial port is wired."""

    eSerialRS232 = 0  #: RS-232
    eSerialRS485 = 1  #: RS-485, one direction at a time


class eSerialParity(Enumeration):
    """What checks a serial character."""

    eParityNone = 0  #: nothing
    eParityOdd = 1  #: an odd number of ones
    eParityEven = 2  #: an even number of ones


class eSerialFlow(Enumeration):
    """How a serial port's flow is controlled."""

    eFlowNone = 0  #: not at all
    eFlowHardware = 1  #: RTS and CTS
    eFlowSoftware = 2  #: XON and XOFF


class eFileTransferControl(Enumeration):
    """Steers a file transfer. One that was just opened waits for eTransferStart."""

    eTransferStart = 1  #: begin, or go on after a pause
    eTransferPause = 2  #: stop for now
    eTransferStop = 3  #: give up: what came over is thrown away, only closing is left


class eFileFormat(Enumeration):
    """How a recording is packed."""

    eFileFormatNative = 0  #: as it lies on the device; the header is that of ClientAdapter_GetFileHeader
    eFileFormatMp4 = 1  #: fragmented MP4
    eFileFormatMpegTs = 2  #: MPEG transport stream


class eUploadState(Enumeration):
    """tagFileUploadState::dwState."""

    eUploadRunning = 0  #: bytes are on their way
    eUploadFinished = 1  #: the device has taken the whole file, checked it, and keeps it
    eUploadFailed = 2  #: it has not, and kept nothing; tagFileUploadState::dwResult says why


class eVoiceStreamSource(Enumeration):
    """Where a voice frame comes from."""

    eVoiceFromDevice = 0  #: the device's microphone or line input
    eVoiceFromLocal = 1  #: what the application itself sent, as the device took it; with eVoiceReportSent


class eVoiceFlag(Enumeration):
    """Bits of tagVoiceStreamPara::dwFlags."""

    eVoiceListenOnly = 1  #: nothing will be sent
    eVoiceTalkOnly = 2  #: nothing is to come
    eVoiceReportSent = 4  #: what is sent comes back to the callback as eVoiceFromLocal


class eEntryPointState(Enumeration):
    """Whether a plug-in has an entry point."""

    eEntryPointUnbound = 0  #: the protocol has no binding: the service isn't started, or nobody inserted it
    eEntryPointMissing = 1  #: the plug-in isn't there, or lacks it: eResultNoEntryPoint from the operation
    eEntryPointThere = 2  #: the plug-in has it


class tagCameraPicture(Record):
    """How a camera's picture looks; also configuration block eConfigPicture."""

    dwSize: int  #: sizeof this record, by the application
    dwBrightness: int  #: percent
    dwContrast: int  #: percent
    dwSaturation: int  #: percent; 0: grey
    dwSharpness: int  #: percent
    dwHue: int  #: percent; 50: unchanged
    dwNoiseReduction: int  #: percent; 0: none
    dwTurn: int  #: ePictureTurn bits
    dwWideDynamicRange: int  #: eCameraSwitch
    dwWideDynamicLevel: int  #: percent, while that is on
    dwBacklight: int  #: eCameraSwitch: backlight compensation
    dwBacklightLevel: int  #: percent, while that is on
    dwWhiteBalance: int  #: eCameraMode
    dwRedGain: int  #: percent; used when white balance is manual
    dwBlueGain: int  #: percent; used when white balance is manual
    dwDefog: int  #: eCameraSwitch
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwBrightness", c_uint32),
        ("dwContrast", c_uint32),
        ("dwSaturation", c_uint32),
        ("dwSharpness", c_uint32),
        ("dwHue", c_uint32),
        ("dwNoiseReduction", c_uint32),
        ("dwTurn", c_uint32),
        ("dwWideDynamicRange", c_uint32),
        ("dwWideDynamicLevel", c_uint32),
        ("dwBacklight", c_uint32),
        ("dwBacklightLevel", c_uint32),
        ("dwWhiteBalance", c_uint32),
        ("dwRedGain", c_uint32),
        ("dwBlueGain", c_uint32),
        ("dwDefog", c_uint32),
    ]


class tagCameraDayNight(Record):
    """When a camera sees in colour, and its own light. ONVIF calls the filter IrCutFilter: on by day, off at night."""

    dwSize: int  #: sizeof this record, by the application
    dwMode: int  #: eDayNightMode
    dwSensitivity: int  #: percent: how soon automatic mode changes; higher: in less darkness
    dwDelaySeconds: int  #: how long it must be dark or light before automatic mode changes
    dwDayMinute: int  #: minute of the device's local day when day begins; eDayNightSchedule
    dwNightMinute: int  #: minute of the device's local day when night begins; eDayNightSchedule
    dwInfrared: int  #: eCameraSwitch: the camera's own light, automatic: on at night
    dwInfraredLevel: int  #: percent of its power; factory value 100
    bNight: int  #: 1: it is night now; filled on a read, not looked at on a write
    dwReserved: int  #: 0
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwMode", c_uint32),
        ("dwSensitivity", c_uint32),
        ("dwDelaySeconds", c_uint32),
        ("dwDayMinute", c_uint32),
        ("dwNightMinute", c_uint32),
        ("dwInfrared", c_uint32),
        ("dwInfraredLevel", c_uint32),
        ("bNight", c_uint32),
        ("dwReserved", c_uint32),
    ]


class tagCameraExposure(Record):
    """How a camera lights its picture."""

    dwSize: int  #: sizeof this record, by the application
    dwMode: int  #: eCameraMode
    dwPriority: int  #: 0: low noise, 1: frame rate; automatic mode
    dwMinExposureUs: int  #: shortest time in microseconds; automatic mode
    dwMaxExposureUs: int  #: longest time in microseconds; automatic mode
    dwExposureUs: int  #: time in microseconds; manual mode
    dwMinGain: int  #: hundredths of a decibel; automatic mode
    dwMaxGain: int  #: hundredths of a decibel; automatic mode
    dwGain: int  #: hundredths of a decibel; manual mode
    dwIris: int  #: ten-thousandths, 0 closed; manual mode
    dwFlicker: int  #: the mains' frequency: 50, 60, or 0: not avoided
    dwReserved: int  #: 0
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwMode", c_uint32),
        ("dwPriority", c_uint32),
        ("dwMinExposureUs", c_uint32),
        ("dwMaxExposureUs", c_uint32),
        ("dwExposureUs", c_uint32),
        ("dwMinGain", c_uint32),
        ("dwMaxGain", c_uint32),
        ("dwGain", c_uint32),
        ("dwIris", c_uint32),
        ("dwFlicker", c_uint32),
        ("dwReserved", c_uint32),
    ]


class tagCameraFocus(Record):
    """How a camera focuses."""

    dwSize: int  #: sizeof this record, by the application
    dwMode: int  #: eCameraMode
    dwPosition: int  #: ten-thousandths, 0 nearest; taken in manual mode, filled in both
    dwNearLimitCm: int  #: nothing nearer is looked for, centimetres; 0: no limit
    dwFarLimitCm: int  #: nothing farther is looked for, centimetres; 0: no limit
    dwSpeed: int  #: percent
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwMode", c_uint32),
        ("dwPosition", c_uint32),
        ("dwNearLimitCm", c_uint32),
        ("dwFarLimitCm", c_uint32),
        ("dwSpeed", c_uint32),
    ]


class tagConfigInformation(Record):
    """One configuration block, first layout."""

    type: int  #: eConfigType
    index: int  #: which one of the type: a channel, an input
    data: ctypes.Array[c_ubyte]  #: the type's record
    extra: ctypes.Array[c_uint32]  #: [0] length of the record, [1] eStreamKind, [2] and [3] 0
    _fields_ = [
        ("type", c_uint32),
        ("index", c_uint32),
        ("data", c_ubyte * 262144),
        ("extra", c_uint32 * 4),
    ]


class tagConfigInformationV2(Record):
    """The same block, second layout."""

    type: int  #: eConfigType
    index: int  #: which one of the type: a channel, an input
    extra: ctypes.Array[c_uint32]  #: [0] length of the record, [1] eStreamKind, [2] and [3] 0
    data: ctypes.Array[c_ubyte]  #: the type's record
    _fields_ = [
        ("type", c_uint32),
        ("index", c_uint32),
        ("extra", c_uint32 * 4),
        ("data", c_ubyte * 262144),
    ]


class tagConfigIdentity(Record):
    """eConfigIdentity. Only szName and szLocation can be written."""

    dwSize: int  #: sizeof this record
    dwChannels: int  #: video channels; read only
    dwAlarmInputs: int  #: alarm inputs; read only
    dwAlarmOutputs: int  #: alarm outputs; read only
    dwAudioInputs: int  #: audio inputs; read only
    dwAudioOutputs: int  #: audio outputs; read only
    dwSerialPorts: int  #: serial ports; read only
    dwDisks: int  #: places for disks; read only
    dwScreens: int  #: screens that it drives as a decoder; read only
    dwInterfaces: int  #: network interfaces; read only
    szName: bytes  #: what its owner calls it
    szLocation: bytes  #: where its owner says that it stands
    szManufacturer: bytes  #: who made it; read only
    szModel: bytes  #: what its maker calls it; read only
    szSerialNumber: bytes  #: which one of them it is; read only
    szFirmware: bytes  #: what it runs; read only
    szHardware: bytes  #: what it is made of; read only
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwChannels", c_uint32),
        ("dwAlarmInputs", c_uint32),
        ("dwAlarmOutputs", c_uint32),
        ("dwAudioInputs", c_uint32),
        ("dwAudioOutputs", c_uint32),
        ("dwSerialPorts", c_uint32),
        ("dwDisks", c_uint32),
        ("dwScreens", c_uint32),
        ("dwInterfaces", c_uint32),
        ("szName", c_char * 64),
        ("szLocation", c_char * 64),
        ("szManufacturer", c_char * 64),
        ("szModel", c_char * 64),
        ("szSerialNumber", c_char * 64),
        ("szFirmware", c_char * 64),
        ("szHardware", c_char * 64),
    ]


class tagConfigNetwork(Record):
    """eConfigNetwork. Texts of addresses are IPv4 or IPv6. A write may end the login: the device answers first, then
    changes its address.
    """

    dwSize: int  #: sizeof this record
    bEnabled: int  #: 1: in use
    bDhcp: int  #: 1: address, prefix, gateway and name servers come from DHCP
    dwMtu: int  #: largest packet in bytes
    dwSpeed: int  #: megabits per second, 0: no link; read only
    dwHttpPort: int  #: port of its web server, 0: off
    dwHttpsPort: int  #: port of its web server with TLS, 0: off
    dwRtspPort: int  #: port of its RTSP server, 0: off
    dwDevicePort: int  #: port to log in at
    szInterface: bytes  #: the interface's name: "eth0"; read only
    szMac: bytes  #: hardware address: "02:00:5e:10:00:01"; read only; at byte 52
    abyReserved: ctypes.Array[c_ubyte]  #: 0
    dwPrefixLength: int  #: bits of the address that name the network
    dwReserved: int  #: 0
    szAddress: bytes  #: its address
    szGateway: bytes  #: where other networks are; empty: nowhere
    szNameServer1: bytes  #: DNS; empty: none
    szNameServer2: bytes  #: DNS; empty: none
    szHostName: bytes  #: its name in the network
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("bEnabled", c_uint32),
        ("bDhcp", c_uint32),
        ("dwMtu", c_uint32),
        ("dwSpeed", c_uint32),
        ("dwHttpPort", c_uint32),
        ("dwHttpsPort", c_uint32),
        ("dwRtspPort", c_uint32),
        ("dwDevicePort", c_uint32),
        ("szInterface", c_char * 16),
        ("szMac", c_char * 18),
        ("abyReserved", c_ubyte * 2),
        ("dwPrefixLength", c_uint32),
        ("dwReserved", c_uint32),
        ("szAddress", c_char * 48),
        ("szGateway", c_char * 48),
        ("szNameServer1", c_char * 48),
        ("szNameServer2", c_char * 48),
        ("szHostName", c_char * 64),
    ]


class tagConfigMacAddress(Record):
    """eConfigMacAddress. Without dwSize: the library itself makes it from a private plug-in's tagConfigNetwork."""

    dwCount: int  #: 1
    dwReserved: int  #: 0
    szMac: bytes  #: hardware address: "02:00:5e:10:00:01"
    abyReserved: ctypes.Array[c_ubyte]  #: 0
    _fields_ = [
        ("dwCount", c_uint32),
        ("dwReserved", c_uint32),
        ("szMac", c_char * 18),
        ("abyReserved", c_ubyte * 2),
    ]


class tagConfigClock(Record):
    """eConfigClock."""

    dwSize: int  #: sizeof this record
    dwMode: int  #: eClockMode
    llTimeUs: int  #: now, microseconds since 1970 UTC; written with eClockManual, 0: leave it
    nUtcOffsetMinutes: int  #: how far local time is ahead of UTC now; read only
    bSynchronised: int  #: 1: NTP has set the clock; read only
    dwNtpPort: int  #: port of the servers; 0: 123
    dwNtpSeconds: int  #: between two questions; 0: the device decides
    szTimeZone: bytes  #: as POSIX writes it: "CET-1CEST,M3.5.0,M10.5.0/3"
    szNtpServer1: bytes  #: host name or address; empty: none, or the one that DHCP names
    szNtpServer2: bytes  #: host name or address; empty: none
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwMode", c_uint32),
        ("llTimeUs", c_int64),
        ("nUtcOffsetMinutes", c_int32),
        ("bSynchronised", c_uint32),
        ("dwNtpPort", c_uint32),
        ("dwNtpSeconds", c_uint32),
        ("szTimeZone", c_char * 64),
        ("szNtpServer1", c_char * 128),
        ("szNtpServer2", c_char * 128),
    ]


class tagConfigUser(Record):
    """One user."""

    szUserName: bytes  #: at most 31 bytes
    szPassword: bytes  #: never filled on a read; on a write: empty: as it is
    dwLevel: int  #: eUserLevel
    bLocked: int  #: 1: locked after wrong passwords; written 0: let the user in again
    _fields_ = [
        ("szUserName", c_char * 32),
        ("szPassword", c_char * 32),
        ("dwLevel", c_uint32),
        ("bLocked", c_uint32),
    ]


class tagConfigUsers(Record):
    """eConfigUsers. A write makes these the only users: one that isn't there any more is removed and logged out, a new one
    needs a password. Refused without an administrator left: eResultBadArgument.
    """

    dwSize: int  #: sizeof this record
    dwCount: int  #: users
    atUsers: ctypes.Array[tagConfigUser]  #: the first dwCount hold
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwCount", c_uint32),
        ("atUsers", tagConfigUser * 32),
    ]


class tagConfigDisk(Record):
    """One disk."""

    dwState: int  #: eDiskState
    dwGroup: int  #: the group that it belongs to; TESSARO_ALL: none
    dwGroupType: int  #: eDiskGroupType of that
    dwReserved: int  #: 0
    ullCapacity: int  #: bytes
    ullFree: int  #: bytes
    szName: bytes  #: what its maker calls it
    _fields_ = [
        ("dwState", c_uint32),
        ("dwGroup", c_uint32),
        ("dwGroupType", c_uint32),
        ("dwReserved", c_uint32),
        ("ullCapacity", c_uint64),
        ("ullFree", c_uint64),
        ("szName", c_char * 32),
    ]


class tagConfigStorage(Record):
    """eConfigStorage; read only."""

    dwSize: int  #: sizeof this record
    dwCount: int  #: places for disks
    atDisks: ctypes.Array[tagConfigDisk]  #: the first dwCount hold
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwCount", c_uint32),
        ("atDisks", tagConfigDisk * 16),
    ]


class tagConfigVideoEncoder(Record):
    """eConfigVideoEncoder."""

    dwSize: int  #: sizeof this record
    dwCodec: int  #: eMediaCodec: eCodecH264, eCodecH265, eCodecMJPEG
    dwProfile: int  #: eVideoProfile
    dwWidth: int  #: pixels
    dwHeight: int  #: pixels
    dwFrameRate: int  #: frames per 1000 s: 25000
    dwBitRateMode: int  #: eBitRateMode
    dwBitRate: int  #: kilobits per second
    dwQuality: int  #: percent; eBitRateVariable and MJPEG
    dwKeyFrameInterval: int  #: frames from one key frame to the next (ONVIF: GovLength)
    bEnabled: int  #: 1: the stream can be opened
    dwReserved: int  #: 0
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwCodec", c_uint32),
        ("dwProfile", c_uint32),
        ("dwWidth", c_uint32),
        ("dwHeight", c_uint32),
        ("dwFrameRate", c_uint32),
        ("dwBitRateMode", c_uint32),
        ("dwBitRate", c_uint32),
        ("dwQuality", c_uint32),
        ("dwKeyFrameInterval", c_uint32),
        ("bEnabled", c_uint32),
        ("dwReserved", c_uint32),
    ]


class tagConfigAudioEncoder(Record):
    """eConfigAudioEncoder."""

    dwSize: int  #: sizeof this record
    bEnabled: int  #: 1: the stream has sound
    dwCodec: int  #: eMediaCodec
    dwSampleRate: int  #: samples per second
    dwChannels: int  #: channels
    dwBitRate: int  #: kilobits per second; where the codec has a choice
    dwSource: int  #: eAudioSource
    dwVolume: int  #: percent
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("bEnabled", c_uint32),
        ("dwCodec", c_uint32),
        ("dwSampleRate", c_uint32),
        ("dwChannels", c_uint32),
        ("dwBitRate", c_uint32),
        ("dwSource", c_uint32),
        ("dwVolume", c_uint32),
    ]


class tagOverlayText(Record):
    """One text in the picture."""

    bEnabled: int  #: 1: shown
    dwKind: int  #: eOverlayKind
    dwLeft: int  #: ten-thousandths of the picture's width
    dwTop: int  #: ten-thousandths of the picture's height
    dwHeight: int  #: of its characters, ten-thousandths of the picture's height; 0: 400
    dwColour: int  #: 0xRRGGBB
    szText: bytes  #: UTF-8
    _fields_ = [
        ("bEnabled", c_uint32),
        ("dwKind", c_uint32),
        ("dwLeft", c_uint32),
        ("dwTop", c_uint32),
        ("dwHeight", c_uint32),
        ("dwColour", c_uint32),
        ("szText", c_char * 128),
    ]


class tagConfigOverlay(Record):
    """eConfigOverlay."""

    dwSize: int  #: sizeof this record
    dwCount: int  #: texts
    atTexts: ctypes.Array[tagOverlayText]  #: the first dwCount hold
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwCount", c_uint32),
        ("atTexts", tagOverlayText * 8),
    ]


class tagConfigAction(Record):
    """What else a device does when something happens. Zero: nothing."""

    ullRecord: int  #: bit n: record channel n
    dwOutputs: int  #: bit n: switch alarm output n on
    bBeep: int  #: 1: beep
    dwPresetChannel: int  #: the channel of the next
    dwPreset: int  #: send a camera to this preset; 0: none
    _fields_ = [
        ("ullRecord", c_uint64),
        ("dwOutputs", c_uint32),
        ("bBeep", c_uint32),
        ("dwPresetChannel", c_uint32),
        ("dwPreset", c_uint32),
    ]


class tagConfigMotion(Record):
    """eConfigMotion. The picture is a grid of dwColumns by dwRows cells (ONVIF: cell motion detection)."""

    dwSize: int  #: sizeof this record
    bEnabled: int  #: 1: on
    dwSensitivity: int  #: percent
    dwThreshold: int  #: how many percent of the watched cells must change
    dwHoldSeconds: int  #: how long it must be still until motion counts as ended
    dwColumns: int  #: cells in a row, at most 64; read only
    dwRows: int  #: rows, at most 64; read only
    dwReserved: int  #: 0
    tAction: tagConfigAction  #: what else to do
    abyCells: ctypes.Array[c_ubyte]  #: bit n of the whole, lowest first: cell n is watched; cell = row * dwColumns + column
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("bEnabled", c_uint32),
        ("dwSensitivity", c_uint32),
        ("dwThreshold", c_uint32),
        ("dwHoldSeconds", c_uint32),
        ("dwColumns", c_uint32),
        ("dwRows", c_uint32),
        ("dwReserved", c_uint32),
        ("tAction", tagConfigAction),
        ("abyCells", c_ubyte * 512),
    ]


class tagPrivacyMask(Record):
    """One privacy mask."""

    bEnabled: int  #: 1: covers its part of the picture
    dwLeft: int  #: ten-thousandths of the picture's width
    dwTop: int  #: ten-thousandths of the picture's height
    dwWidth: int  #: ten-thousandths of the picture's width
    dwHeight: int  #: ten-thousandths of the picture's height
    dwColour: int  #: 0xRRGGBB
    _fields_ = [
        ("bEnabled", c_uint32),
        ("dwLeft", c_uint32),
        ("dwTop", c_uint32),
        ("dwWidth", c_uint32),
        ("dwHeight", c_uint32),
        ("dwColour", c_uint32),
    ]


class tagConfigPrivacy(Record):
    """eConfigPrivacy. Covers live streams, recordings and snapshots alike."""

    dwSize: int  #: sizeof this record
    dwCount: int  #: masks
    atMasks: ctypes.Array[tagPrivacyMask]  #: the first dwCount hold
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwCount", c_uint32),
        ("atMasks", tagPrivacyMask * 8),
    ]


class tagScheduleSpan(Record):
    """One span of a week in which something is recorded."""

    dwDay: int  #: day of the week in local time, 0: Sunday
    dwStartMinute: int  #: minute of the day, 0 to 1439
    dwEndMinute: int  #: minute of the day after its last one, 1 to 1440
    dwTypes: int  #: eHistoryStreamType bits: for what reasons
    _fields_ = [
        ("dwDay", c_uint32),
        ("dwStartMinute", c_uint32),
        ("dwEndMinute", c_uint32),
        ("dwTypes", c_uint32),
    ]


class tagConfigSchedule(Record):
    """eConfigSchedule."""

    dwSize: int  #: sizeof this record
    bEnabled: int  #: 1: the schedule holds; 0: only ClientAdapter_RecordControl records
    dwStreamKind: int  #: eStreamKind
    bAudio: int  #: 1: with sound
    dwBeforeSeconds: int  #: how much of the time before a motion or alarm belongs to its recording
    dwAfterSeconds: int  #: how much of the time after it
    dwKeepDays: int  #: older recordings are deleted; 0: only when room is needed
    dwCount: int  #: spans
    atSpans: ctypes.Array[tagScheduleSpan]  #: the first dwCount hold
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("bEnabled", c_uint32),
        ("dwStreamKind", c_uint32),
        ("bAudio", c_uint32),
        ("dwBeforeSeconds", c_uint32),
        ("dwAfterSeconds", c_uint32),
        ("dwKeepDays", c_uint32),
        ("dwCount", c_uint32),
        ("atSpans", tagScheduleSpan * 56),
    ]


class tagConfigAlarmInput(Record):
    """eConfigAlarmInput."""

    dwSize: int  #: sizeof this record
    bEnabled: int  #: 1: watched
    dwIdle: int  #: eContactIdle
    dwHoldMs: int  #: how long a change must last to count, milliseconds
    tAction: tagConfigAction  #: what else to do
    szName: bytes  #: what its owner calls it
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("bEnabled", c_uint32),
        ("dwIdle", c_uint32),
        ("dwHoldMs", c_uint32),
        ("tAction", tagConfigAction),
        ("szName", c_char * 64),
    ]


class tagConfigAlarmOutput(Record):
    """eConfigAlarmOutput."""

    dwSize: int  #: sizeof this record
    dwIdle: int  #: eContactIdle
    dwPulseMs: int  #: switches itself off after so long (ONVIF: monostable); 0: stays on (bistable)
    dwReserved: int  #: 0
    szName: bytes  #: what its owner calls it
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwIdle", c_uint32),
        ("dwPulseMs", c_uint32),
        ("dwReserved", c_uint32),
        ("szName", c_char * 64),
    ]


class tagDecoderSource(Record):
    """A source of pictures. Fields that the kind doesn't need are 0. On a read szPassword is empty; written empty for the
    address and user that were there before, it stays as it was.
    """

    dwKind: int  #: eDecoderSourceKind
    dwProtocol: int  #: eProtocolType that the device speaks
    dwPort: int  #: the device's port; 0: the protocol's usual one
    dwChannel: int  #: the device's channel, from 0
    dwStreamKind: int  #: eStreamKind; 0: as fits the window's size
    dwTransport: int  #: eRtspTransport
    szAddress: bytes  #: the stream's URL, or the device's host name or address; no user name or password in it
    szUserName: bytes  #: empty: without
    szPassword: bytes  #: at most 31 bytes
    _fields_ = [
        ("dwKind", c_uint32),
        ("dwProtocol", c_uint32),
        ("dwPort", c_uint32),
        ("dwChannel", c_uint32),
        ("dwStreamKind", c_uint32),
        ("dwTransport", c_uint32),
        ("szAddress", c_char * 256),
        ("szUserName", c_char * 32),
        ("szPassword", c_char * 32),
    ]


class tagDecoderWindow(Record):
    """A window's place on the wall."""

    dwChannel: int  #: the window's number, 0 to 1023
    dwLeft: int  #: ten-thousandths of the wall's width
    dwTop: int  #: ten-thousandths of the wall's height
    dwWidth: int  #: ten-thousandths of the wall's width, at least 1
    dwHeight: int  #: ten-thousandths of the wall's height, at least 1
    dwLayer: int  #: windows with a higher one lie before those with a lower one
    bHidden: int  #: 1: it is there, but not shown; its stream goes on
    dwReserved: int  #: 0
    _fields_ = [
        ("dwChannel", c_uint32),
        ("dwLeft", c_uint32),
        ("dwTop", c_uint32),
        ("dwWidth", c_uint32),
        ("dwHeight", c_uint32),
        ("dwLayer", c_uint32),
        ("bHidden", c_uint32),
        ("dwReserved", c_uint32),
    ]


class tagDecoderDeviceConfig(Record):
    """A wall: its screens and its windows (ONVIF: Layout). On a write the windows take the place of all there were; one
    that keeps its number keeps what it shows. On a read dwCount windows exist, of which the first dwCapacity are
    filled.
    """

    dwSize: int  #: sizeof this record, by the application
    dwRows: int  #: rows of screens
    dwColumns: int  #: screens in a row; dwRows * dwColumns is at most dwScreens
    dwScreens: int  #: screens that the decoder can drive; filled on a read, not looked at on a write
    szName: bytes  #: the layout's name, UTF-8
    dwEntrySize: int  #: sizeof(tagDecoderWindow), by the application
    dwCapacity: int  #: on a read: entries that there is room for
    dwCount: int  #: on a write: entries; on a read: windows that there are
    dwReserved: int  #: 0
    ptEntries: Any  #: the application's
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwRows", c_uint32),
        ("dwColumns", c_uint32),
        ("dwScreens", c_uint32),
        ("szName", c_char * 64),
        ("dwEntrySize", c_uint32),
        ("dwCapacity", c_uint32),
        ("dwCount", c_uint32),
        ("dwReserved", c_uint32),
        *wide("ptEntries", POINTER(tagDecoderWindow)),
    ]


class tagDecoderChannelConfig(Record):
    """How a window shows, and what it is bound to."""

    dwSize: int  #: sizeof this record, by the application
    dwFit: int  #: eDecoderFit
    dwLoss: int  #: eDecoderLoss
    dwLossSeconds: int  #: how long no frame must come before that; 0: 5
    dwBufferMs: int  #: how long frames are held to even out their arrival; 0: as short as can be
    bAudio: int  #: 1: its sound is heard; at most one window of a screen
    dwVolume: int  #: percent
    bShowName: int  #: 1: szName is written into the picture
    bShowTime: int  #: 1: the time of the frame is written into the picture
    dwBorder: int  #: width of a border in pixels; 0: none
    dwBorderColour: int  #: 0xRRGGBB
    dwReserved: int  #: 0
    szName: bytes  #: the window's name, UTF-8
    tSource: tagDecoderSource  #: what it is bound to
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwFit", c_uint32),
        ("dwLoss", c_uint32),
        ("dwLossSeconds", c_uint32),
        ("dwBufferMs", c_uint32),
        ("bAudio", c_uint32),
        ("dwVolume", c_uint32),
        ("bShowName", c_uint32),
        ("bShowTime", c_uint32),
        ("dwBorder", c_uint32),
        ("dwBorderColour", c_uint32),
        ("dwReserved", c_uint32),
        ("szName", c_char * 64),
        ("tSource", tagDecoderSource),
    ]


class tagDecoderDynamicInformation(Record):
    """What a window is to show for now: ClientAdapter_DecoderDynamicConnect. Filled by the application."""

    dwSize: int  #: sizeof this record
    dwSeconds: int  #: how long; 0: until ClientAdapter_DecoderDynamicDisconnect
    tSource: tagDecoderSource  #: what
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwSeconds", c_uint32),
        ("tSource", tagDecoderSource),
    ]


class tagDecoderVideoStandardConfig(Record):
    """What signal a screen gets. dwChannel of the function is the screen, from 0."""

    dwSize: int  #: sizeof this record, by the application
    dwStandard: int  #: eVideoStandard
    dwWidth: int  #: pixels; taken with eStandardMode, filled with all
    dwHeight: int  #: pixels
    dwFrameRate: int  #: frames per 1000 s: 60000
    bInterlaced: int  #: 1: half pictures
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwStandard", c_uint32),
        ("dwWidth", c_uint32),
        ("dwHeight", c_uint32),
        ("dwFrameRate", c_uint32),
        ("bInterlaced", c_uint32),
    ]


class tagDecoderLoopEntry(Record):
    """One stop of a window's tour."""

    dwDwellSeconds: int  #: how long it shows, from its first frame on; 0: 10
    dwPreset: int  #: the camera is sent to this preset first; 0: to none
    tSource: tagDecoderSource  #: what shows
    _fields_ = [
        ("dwDwellSeconds", c_uint32),
        ("dwPreset", c_uint32),
        ("tSource", tagDecoderSource),
    ]


class tagDecoderChannelLoopConfig(Record):
    """A window's tour: sources in turn. On a write the entries take the place of all there were, and none ends the tour.
    One whose source can't be reached within dwSkipSeconds is skipped until the next round.
    """

    dwSize: int  #: sizeof this record, by the application
    dwSkipSeconds: int  #: 0: 5
    dwEntrySize: int  #: sizeof(tagDecoderLoopEntry), by the application
    dwCapacity: int  #: on a read: entries that there is room for
    dwCount: int  #: on a write: entries; on a read: entries that there are
    dwReserved: int  #: 0
    ptEntries: Any  #: the application's
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwSkipSeconds", c_uint32),
        ("dwEntrySize", c_uint32),
        ("dwCapacity", c_uint32),
        ("dwCount", c_uint32),
        ("dwReserved", c_uint32),
        *wide("ptEntries", POINTER(tagDecoderLoopEntry)),
    ]


class tagDecoderLoopState(Record):
    """One window's tour."""

    dwChannel: int  #: the window
    dwStatus: int  #: eDecoderChannelStatus
    dwEntry: int  #: the entry that shows, from 0
    dwRemainingMs: int  #: how long it still does
    _fields_ = [
        ("dwChannel", c_uint32),
        ("dwStatus", c_uint32),
        ("dwEntry", c_uint32),
        ("dwRemainingMs", c_uint32),
    ]


class tagDecoderLoopStatus(Record):
    """The tours of all windows that have one."""

    dwSize: int  #: sizeof this record, by the application
    dwEntrySize: int  #: sizeof(tagDecoderLoopState), by the application
    dwCapacity: int  #: entries that there is room for, by the application
    dwCount: int  #: entries that there are, by the plug-in
    ptEntries: Any  #: the application's; the first dwCapacity of dwCount are filled
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwEntrySize", c_uint32),
        ("dwCapacity", c_uint32),
        ("dwCount", c_uint32),
        *wide("ptEntries", POINTER(tagDecoderLoopState)),
    ]


class tagDecoderChannelInformation(Record):
    """What a window can do. Filled by the plug-in, but for dwSize."""

    dwSize: int  #: sizeof this record, by the application
    dwAbilities: int  #: eDecoderAbility bits
    dwCodecs: int  #: bit n: decodes eMediaCodec n
    dwMaxWidth: int  #: of a picture to decode, pixels
    dwMaxHeight: int  #: of a picture to decode, pixels
    dwMaxFrameRate: int  #: frames per 1000 s
    dwMaxLoop: int  #: entries of a tour at most
    dwScreen: int  #: the screen that its top left corner lies on
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwAbilities", c_uint32),
        ("dwCodecs", c_uint32),
        ("dwMaxWidth", c_uint32),
        ("dwMaxHeight", c_uint32),
        ("dwMaxFrameRate", c_uint32),
        ("dwMaxLoop", c_uint32),
        ("dwScreen", c_uint32),
    ]


class tagDecoderWindowStatus(Record):
    """One window: what it shows."""

    dwChannel: int  #: the window
    dwState: int  #: eDecoderWindowState
    dwShows: int  #: which of the five it shows, 1 to 5, as numbered at @ref decoderrecords
    dwResult: int  #: ePluginResult that the source last ended with, else 0
    dwCodec: int  #: eMediaCodec, 0 while nothing comes
    dwWidth: int  #: of the stream's picture, pixels
    dwHeight: int  #: of the stream's picture, pixels
    dwFrameRate: int  #: frames per 1000 s, measured
    dwBitRate: int  #: kilobits per second, measured
    dwLost: int  #: packets lost since the source was connected
    dwKind: int  #: eDecoderSourceKind of the source
    dwSourceChannel: int  #: the source's channel
    szAddress: bytes  #: the source's address
    _fields_ = [
        ("dwChannel", c_uint32),
        ("dwState", c_uint32),
        ("dwShows", c_uint32),
        ("dwResult", c_uint32),
        ("dwCodec", c_uint32),
        ("dwWidth", c_uint32),
        ("dwHeight", c_uint32),
        ("dwFrameRate", c_uint32),
        ("dwBitRate", c_uint32),
        ("dwLost", c_uint32),
        ("dwKind", c_uint32),
        ("dwSourceChannel", c_uint32),
        ("szAddress", c_char * 256),
    ]


class tagDecoderChannelStatus(Record):
    """What all windows are doing."""

    dwSize: int  #: sizeof this record, by the application
    dwEntrySize: int  #: sizeof(tagDecoderWindowStatus), by the application
    dwCapacity: int  #: entries that there is room for, by the application
    dwCount: int  #: entries that there are, by the plug-in
    ptEntries: Any  #: the application's; dwCapacity of dwCount are filled
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwEntrySize", c_uint32),
        ("dwCapacity", c_uint32),
        ("dwCount", c_uint32),
        *wide("ptEntries", POINTER(tagDecoderWindowStatus)),
    ]


class tagDecoderSetPlayStatusParameter(Record):
    """Steers a recording in a window. Filled by the application; only what the action names."""

    dwSize: int  #: sizeof this record
    dwAction: int  #: eDecoderPlayAction
    dwSpeed: int  #: eDecoderPlaySpeed: as ePlaybackSpeed
    dwTypes: int  #: eDecoderPlayOpen: eHistoryStreamType bits, 0: all
    llPositionUs: int  #: eDecoderPlaySeek: microseconds since 1970 UTC
    llStartUs: int  #: eDecoderPlayOpen: begin, microseconds since 1970 UTC
    llEndUs: int  #: eDecoderPlayOpen: end, microseconds since 1970 UTC
    tSource: tagDecoderSource  #: eDecoderPlayOpen: whose recordings
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwAction", c_uint32),
        ("dwSpeed", c_uint32),
        ("dwTypes", c_uint32),
        ("llPositionUs", c_int64),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("tSource", tagDecoderSource),
    ]


class tagDecoderGetPlayStatusParameter(Record):
    """Where a recording in a window is."""

    dwSize: int  #: sizeof this record, by the application
    dwChannel: int  #: the window, by the application
    dwState: int  #: eWindowPlaying, eWindowPaused; anything else: it shows no recording
    dwSpeed: int  #: as ePlaybackSpeed
    llPositionUs: int  #: time of the picture, microseconds since 1970 UTC
    llStartUs: int  #: begin, microseconds since 1970 UTC
    llEndUs: int  #: end, microseconds since 1970 UTC
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwChannel", c_uint32),
        ("dwState", c_uint32),
        ("dwSpeed", c_uint32),
        ("llPositionUs", c_int64),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
    ]


class tagUploadLogoParameter(Record):
    """A picture to lay over a window. Filled by the application. It is kept over a restart, and shown or hidden by
    ClientAdapter_DecoderChannelLogoSwitch; a new one is hidden.
    """

    dwSize: int  #: sizeof this record
    dwFormat: int  #: eImageFormat
    dwLeft: int  #: ten-thousandths of the window's width
    dwTop: int  #: ten-thousandths of the window's height
    dwWidth: int  #: ten-thousandths of the window's width; 0: the picture's own size
    dwOpacity: int  #: percent; 0: 100
    dwLength: int  #: bytes at pbyData
    dwReserved: int  #: 0
    pbyData: Any  #: an image file; the application's again when the call returns
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwFormat", c_uint32),
        ("dwLeft", c_uint32),
        ("dwTop", c_uint32),
        ("dwWidth", c_uint32),
        ("dwOpacity", c_uint32),
        ("dwLength", c_uint32),
        ("dwReserved", c_uint32),
        *wide("pbyData", POINTER(c_ubyte)),
    ]


class tagDecoderDisplayStatus(Record):
    """Enlarges, hides or freezes a window: ClientAdapter_DecoderChannelDisplayControl. Not kept over a restart."""

    dwSize: int  #: sizeof this record, by the application
    dwAction: int  #: eDecoderDisplayAction
    dwZoomLeft: int  #: the part of the picture to show, ten-thousandths of its width
    dwZoomTop: int  #: ten-thousandths of its height
    dwZoomWidth: int  #: ten-thousandths of its width; 0: all of it
    dwZoomHeight: int  #: ten-thousandths of its height; 0: all of it
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwAction", c_uint32),
        ("dwZoomLeft", c_uint32),
        ("dwZoomTop", c_uint32),
        ("dwZoomWidth", c_uint32),
        ("dwZoomHeight", c_uint32),
    ]


class tagDecoderDisplayConfig(Record):
    """How a screen shows. dwChannel of the function is the screen, from 0. Levels are percent, 50 from the factory."""

    dwSize: int  #: sizeof this record, by the application
    bOn: int  #: 1: the screen is lit, 0: dark
    dwBrightness: int  #: percent
    dwContrast: int  #: percent
    dwSaturation: int  #: percent
    dwHue: int  #: percent; 50: unchanged
    dwBackground: int  #: colour where no window shows anything, 0xRRGGBB
    bShowClock: int  #: 1: the decoder's local time is written on the screen
    dwClockLeft: int  #: ten-thousandths of the screen's width
    dwClockTop: int  #: ten-thousandths of the screen's height
    dwClockHeight: int  #: of its characters, ten-thousandths of the screen's height; 0: 400
    dwReserved: int  #: 0
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("bOn", c_uint32),
        ("dwBrightness", c_uint32),
        ("dwContrast", c_uint32),
        ("dwSaturation", c_uint32),
        ("dwHue", c_uint32),
        ("dwBackground", c_uint32),
        ("bShowClock", c_uint32),
        ("dwClockLeft", c_uint32),
        ("dwClockTop", c_uint32),
        ("dwClockHeight", c_uint32),
        ("dwReserved", c_uint32),
    ]


class tagImageFileInfo(Record):
    """Where a picture goes: to a file of this machine, to memory, or both. eResultBadArgument: neither;
    eResultNoResources: pbyData is too small, dwLength says what is needed, and nothing was written.
    """

    dwSize: int  #: sizeof this record, by the application
    dwWidth: int  #: in: at most so wide, 0: as it is; out: pixels
    dwHeight: int  #: in: at most so high, 0: as it is; out: pixels
    dwQuality: int  #: JPEG: 1 to 100, 0: 80
    llTimeUs: int  #: out: when the picture was taken, microseconds since 1970 UTC
    dwCapacity: int  #: in: bytes at pbyData
    dwLength: int  #: out: bytes of the picture
    szPath: bytes  #: in: the file to write, overwritten; empty: none
    pbyData: Any  #: in: where to put the picture, the application's; null: nowhere
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwWidth", c_uint32),
        ("dwHeight", c_uint32),
        ("dwQuality", c_uint32),
        ("llTimeUs", c_int64),
        ("dwCapacity", c_uint32),
        ("dwLength", c_uint32),
        ("szPath", c_char * 256),
        *wide("pbyData", POINTER(c_ubyte)),
    ]


class tagDeviceProbeParameter(Record):
    """Where and how to look for devices. Filled by the application."""

    dwSize: int  #: sizeof this record
    dwSeconds: int  #: ask again and again for so long, then only listen; 0: 5
    dwFlags: int  #: eProbeFlag bits
    dwPort: int  #: the port to ask at szAddress; 0: the protocol's usual one
    szInterface: bytes  #: the network interface to look on, by name; empty: all
    szAddress: bytes  #: ask this device alone, directly; empty: all, by multicast
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwSeconds", c_uint32),
        ("dwFlags", c_uint32),
        ("dwPort", c_uint32),
        ("szInterface", c_char * 32),
        ("szAddress", c_char * 256),
    ]


class tagDeviceProbeConfig(Record):
    """A device that was found. Filled by the plug-in; comes once for each device, and again when something changed."""

    dwSize: int  #: what the plug-in knows of this record
    dwProtocol: int  #: eProtocolType to log in with
    dwPort: int  #: port to log in at
    dwChannels: int  #: its channels, 0: not known
    dwFlags: int  #: eProbeState bits
    dwReserved: int  #: 0
    szAddress: bytes  #: where it was reached
    szSubnetMask: bytes  #: IPv4: as an address; IPv6: empty; empty: not known
    szGateway: bytes  #: empty: not known
    szMac: bytes  #: empty: not known
    szName: bytes  #: what its owner calls it
    szManufacturer: bytes  #: who made it
    szModel: bytes  #: what its maker calls it
    szSerialNumber: bytes  #: which one of them it is; with the model the same for every answer of a device
    szFirmware: bytes  #: what it runs
    szLocation: bytes  #: where its owner says that it stands
    szService: bytes  #: the address of its service, where the protocol has one (ONVIF: XAddr)
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwProtocol", c_uint32),
        ("dwPort", c_uint32),
        ("dwChannels", c_uint32),
        ("dwFlags", c_uint32),
        ("dwReserved", c_uint32),
        ("szAddress", c_char * 64),
        ("szSubnetMask", c_char * 64),
        ("szGateway", c_char * 64),
        ("szMac", c_char * 24),
        ("szName", c_char * 64),
        ("szManufacturer", c_char * 64),
        ("szModel", c_char * 64),
        ("szSerialNumber", c_char * 64),
        ("szFirmware", c_char * 64),
        ("szLocation", c_char * 64),
        ("szService", c_char * 256),
    ]


class tagDeviceProbeUserLoginPara(Record):
    """With what to log in to a device that was found. Filled by the application."""

    dwSize: int  #: sizeof this record
    dwReserved: int  #: 0
    szUserName: bytes  #: at most 31 bytes
    szPassword: bytes  #: at most 31 bytes
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwReserved", c_uint32),
        ("szUserName", c_char * 32),
        ("szPassword", c_char * 32),
    ]


class tagDeviceProbeConfigInformation(Record):
    """A configuration block of a device that was found, for a plug-in's probe operations."""

    dwSize: int  #: sizeof this record, by the application
    dwType: int  #: eConfigType
    dwIndex: int  #: as tagConfigInformation::index
    dwCapacity: int  #: bytes at pbyData, by the application
    dwLength: int  #: bytes of the block: by the application to write, by the plug-in on a read
    dwReserved: int  #: 0
    pbyData: Any  #: the block's record, the application's
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwType", c_uint32),
        ("dwIndex", c_uint32),
        ("dwCapacity", c_uint32),
        ("dwLength", c_uint32),
        ("dwReserved", c_uint32),
        *wide("pbyData", POINTER(c_ubyte)),
    ]


class tagDeviceRegisterInfo(Record):
    """A device that registered itself. Filled by the plug-in; valid until the callback returns. Log in to it by szAddress
    and dwPort.
    """

    dwSize: int  #: what the plug-in knows of this record
    dwProtocol: int  #: eProtocolType to log in with
    dwPort: int  #: port to log in at
    dwChannels: int  #: its channels, 0: not known
    szAddress: bytes  #: where it came from
    szMac: bytes  #: empty: not known
    szName: bytes  #: what its owner calls it
    szModel: bytes  #: what its maker calls it
    szSerialNumber: bytes  #: which one of them it is
    szFirmware: bytes  #: what it runs
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwProtocol", c_uint32),
        ("dwPort", c_uint32),
        ("dwChannels", c_uint32),
        ("szAddress", c_char * 64),
        ("szMac", c_char * 24),
        ("szName", c_char * 64),
        ("szModel", c_char * 64),
        ("szSerialNumber", c_char * 64),
        ("szFirmware", c_char * 64),
    ]


class tagDeviceConfigFromHttp(Record):
    """What a device answers over HTTP, for ClientAdapter_GetDeviceConfigFromHttp. Answered by the last plug-in that could
    tell: dwHttpStatus changes from 0, else nothing has answered.
    """

    dwSize: int  #: sizeof this record, by the application
    dwPort: int  #: in: port of its web server; 0: 80
    dwTimeoutMs: int  #: in: how long to wait; 0: 5000
    dwHttpStatus: int  #: out: what it answered: 200, or why not
    dwProtocol: int  #: out: eProtocolType to log in with
    dwDevicePort: int  #: out: port to log in at
    dwRtspPort: int  #: out: port of its RTSP server, 0: none
    dwChannels: int  #: out: its channels
    szUserName: bytes  #: in: empty: without
    szPassword: bytes  #: in: at most 31 bytes
    szName: bytes  #: out: what its owner calls it
    szModel: bytes  #: out: what its maker calls it
    szSerialNumber: bytes  #: out: which one of them it is
    szFirmware: bytes  #: out: what it runs
    szMac: bytes  #: out: hardware address
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwPort", c_uint32),
        ("dwTimeoutMs", c_uint32),
        ("dwHttpStatus", c_uint32),
        ("dwProtocol", c_uint32),
        ("dwDevicePort", c_uint32),
        ("dwRtspPort", c_uint32),
        ("dwChannels", c_uint32),
        ("szUserName", c_char * 32),
        ("szPassword", c_char * 32),
        ("szName", c_char * 64),
        ("szModel", c_char * 64),
        ("szSerialNumber", c_char * 64),
        ("szFirmware", c_char * 64),
        ("szMac", c_char * 24),
    ]


class tagFontPara(Record):
    """How a text becomes dots, for ClientAdapter_StringToLattice. Filled by the application.

    The lattice is written row by row from the top. With 1 bit a dot, the leftmost dot is the highest bit of a row's
    first byte, and each row begins a new byte; with 8 bits a dot is one byte, 0 empty to 255 full. The function's three
    words receive width and height in dots and the length in bytes. When dwCapacity is too small, nothing is written at
    pLattice, and the length says what is needed.
    """

    dwSize: int  #: sizeof this record
    dwHeight: int  #: height of a line in dots, 8 to 256; 0: 16
    dwBitsPerDot: int  #: 1 or 8; 0: 1
    dwSpacing: int  #: dots to add between two characters
    bBold: int  #: 1: bold
    dwCapacity: int  #: bytes at pLattice
    szFont: bytes  #: a font file of this machine; empty: one that the plug-in finds
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwHeight", c_uint32),
        ("dwBitsPerDot", c_uint32),
        ("dwSpacing", c_uint32),
        ("bBold", c_uint32),
        ("dwCapacity", c_uint32),
        ("szFont", c_char * 256),
    ]


class tagEventDetail(Record):
    """An event in the device's own words. Filled by the plug-in; valid until the callback returns."""

    dwSize: int  #: what the plug-in knows of this record
    dwState: int  #: 1 began, 0 ended; 2: it has no state
    llTimeUs: int  #: microseconds since 1970 UTC on the device's clock, 0: not known
    szTopic: bytes  #: what (ONVIF: the topic, "tns1:Device/Trigger/Relay")
    szSource: bytes  #: where, as name=value with commas between
    szData: bytes  #: the values that came with it, as name=value with commas between
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwState", c_uint32),
        ("llTimeUs", c_int64),
        ("szTopic", c_char * 256),
        ("szSource", c_char * 128),
        ("szData", c_char * 256),
    ]


class tagStreamMediaFrame(Record):
    """One frame of a live or recorded stream. The record and its data belong to the plug-in and are valid until the
    callback returns.
    """

    dwMediaType: int  #: eMediaType
    dwCodec: int  #: eMediaCodec
    szCodecName: bytes  #: the codec's usual short name, lower case: "h264", "hevc", "aac", "mjpeg"
    dwFlags: int  #: eFrameFlag bits
    dwSequence: int  #: counts the frames of this track as they arrive, from 0; a gap: frames held back
    dwLostBefore: int  #: RTP packets known to be lost since the frame before it on this stream
    dwLength: int  #: bytes at pData
    llPresentationTimeUs: int  #: microseconds on the stream's own time line, which starts near 0
    llWallClockUs: int  #: the device's clock, microseconds since 1970 UTC; 0 while it is not known
    dwWidth: int  #: video: picture width in pixels, else 0
    dwHeight: int  #: video: picture height in pixels, else 0
    dwSampleRate: int  #: audio: samples per second, else 0
    dwChannels: int  #: audio: channels, else 0
    pData: Any  #: one access unit of video, or one packet of audio
    pConfig: Any  #: what a decoder needs beside the frames (AAC: AudioSpecificConfig); null: nothing
    dwConfigLength: int  #: bytes at pConfig
    _fields_ = [
        ("dwMediaType", c_uint32),
        ("dwCodec", c_uint32),
        ("szCodecName", c_char * 16),
        ("dwFlags", c_uint32),
        ("dwSequence", c_uint32),
        ("dwLostBefore", c_uint32),
        ("dwLength", c_uint32),
        ("llPresentationTimeUs", c_int64),
        ("llWallClockUs", c_int64),
        ("dwWidth", c_uint32),
        ("dwHeight", c_uint32),
        ("dwSampleRate", c_uint32),
        ("dwChannels", c_uint32),
        ("pData", POINTER(c_ubyte)),
        ("pConfig", POINTER(c_ubyte)),
        ("dwConfigLength", c_uint32),
    ]


class tagStreamVoiceFrame(Record):
    """One frame of a voice connection; life time as tagStreamMediaFrame."""

    dwCodec: int  #: eMediaCodec
    dwSampleRate: int  #: samples per second
    dwChannels: int  #: channels
    dwLength: int  #: bytes at pData
    llPresentationTimeUs: int  #: microseconds on the stream's own time line
    pData: Any  #: one packet
    _fields_ = [
        ("dwCodec", c_uint32),
        ("dwSampleRate", c_uint32),
        ("dwChannels", c_uint32),
        ("dwLength", c_uint32),
        ("llPresentationTimeUs", c_int64),
        ("pData", POINTER(c_ubyte)),
    ]


class tagBuffer(Record):
    """A block of bytes. The call that takes the record says who owns pData."""

    pData: Any  #: the bytes
    dwLength: int  #: bytes at pData
    _fields_ = [
        ("pData", POINTER(c_ubyte)),
        ("dwLength", c_uint32),
    ]


class tagFileUploadState(Record):
    """How far a file upload has come; handed to the callback by value."""

    dwState: int  #: 0 running, 1 finished, 2 failed
    dwResult: int  #: the plug-in's reason when failed, else 0
    ullSent: int  #: bytes the device has taken
    ullLength: int  #: bytes of the whole file
    _fields_ = [
        ("dwState", c_uint32),
        ("dwResult", c_uint32),
        ("ullSent", c_uint64),
        ("ullLength", c_uint64),
    ]


class tagRealStreamPara(Record):
    """What to open as a live stream."""

    dwChannel: int  #: the device's channel, from 0; RTSP does not use it, its address names the channel
    dwReserved: int  #: not read
    dwStreamKind: int  #: eStreamKind
    dwStreamPara: ctypes.Array[c_uint32]  #: for the plug-in; RTSP: [0] eRtspTransport, [1] eRtspCertificate, the others 0
    _fields_ = [
        ("dwChannel", c_uint32),
        ("dwReserved", c_uint32),
        ("dwStreamKind", c_uint32),
        ("dwStreamPara", c_uint32 * 7),
    ]


class tagRTSPClientPara(Record):
    """What the RTSP binding hands to RTSPClient_Create: one stream to connect to. The record is the caller's and need
    not outlive the call.
    """

    szUrl: bytes  #: the stream's address; never with user name or password in it
    dwPort: int  #: the port that the login named for this stream; the address decides
    dwFlag: int  #: 1
    szUserName: bytes  #: empty: no authentication
    szPassword: bytes  #: at most 31 characters
    szSubUrl: bytes  #: zero here; the sub stream's address inside a login record
    dwSubPort: int  #: zero here; the sub stream's port inside a login record
    dwStreamPara: ctypes.Array[c_uint32]  #: as in tagRealStreamPara
    dwChannel: int  #: as in tagRealStreamPara
    dwReserved: ctypes.Array[c_uint32]  #: zero
    _fields_ = [
        ("szUrl", c_char * 256),
        ("dwPort", c_uint32),
        ("dwFlag", c_uint32),
        ("szUserName", c_char * 32),
        ("szPassword", c_char * 32),
        ("szSubUrl", c_char * 256),
        ("dwSubPort", c_uint32),
        ("dwStreamPara", c_uint32 * 7),
        ("dwChannel", c_uint32),
        ("dwReserved", c_uint32 * 3),
    ]


class tagMediaLinkIDQueryResult(Record):
    """The link that streams of one kind may share: one connection to the device in place of one for each stream. Streams
    marked with its ID (ClientAdapter_SetStreamMediaLinkID, before their frames are asked for) come through it.
    """

    dwSize: int  #: sizeof this record, by the application
    dwLink: int  #: the link's ID, from 1; 0: the device shares no connection for this
    dwMaxStreams: int  #: streams that may share it; 0: no limit
    dwStreams: int  #: streams that share it now
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwLink", c_uint32),
        ("dwMaxStreams", c_uint32),
        ("dwStreams", c_uint32),
    ]


class tagRTSPPackageInfo(Record):
    """How a stream is doing. What RTSPClient_GetPackageInfo fills in, given the record and its size; also the record of
    ClientAdapter_GetPackageInfo. Counts run from the stream's creation on
    and survive reconnects.
    """

    dwState: int  #: eConnectionState
    dwReconnects: int  #: times the stream was connected again after its first connection
    dwLastStatus: int  #: RTSP status of the last refusal, 0: none yet
    dwDropped: int  #: frames dropped because the callback took too long
    ullPackets: int  #: access units and audio packets that arrived
    ullFrames: int  #: frames handed to a callback
    ullBytes: int  #: bytes of those frames
    ullLost: int  #: RTP packets known to be lost
    _fields_ = [
        ("dwState", c_uint32),
        ("dwReconnects", c_uint32),
        ("dwLastStatus", c_uint32),
        ("dwDropped", c_uint32),
        ("ullPackets", c_uint64),
        ("ullFrames", c_uint64),
        ("ullBytes", c_uint64),
        ("ullLost", c_uint64),
    ]


class tagUserLoginPara(Record):
    """What a login needs. Text is NUL-terminated; one that fills its field ends at the field. What is not used is
    zero.

    RTSP has no login of its own: the record says how to build the two stream addresses. With dwRtspUrlMode 0,
    szAddress is the whole address of the main stream and there is no sub stream. With any other value the addresses
    are rtsp://host:port/path, made of the host and the main or sub port and path.
    """

    szAddress: bytes  #: device host name or address; for RTSP with dwRtspUrlMode 0 the whole address
    dwPort: int  #: device port, 0: the usual one; for RTSP with dwRtspUrlMode 0 the port of that address
    szUserName: bytes  #: at most 31 characters
    szPassword: bytes  #: at most 31 characters
    dwTimeoutMs: int  #: most that a call may take; 0: 10000 for the login, 5000 for others; not for RTSP
    dwRtspMainPort: int  #: RTSP port of the main stream
    dwRtspSubPort: int  #: RTSP port of the sub stream
    szRtspMainPath: bytes  #: path of the main stream, without the slash before it
    szRtspSubPath: bytes  #: path of the sub stream, without the slash before it
    dwRtspUrlMode: int  #: 0: szAddress is the address; any other value: build the addresses
    dwRtspHostSelect: int  #: 1: the host is szRtspHost; any other value: szAddress
    szRtspHost: bytes  #: second host name or address
    _fields_ = [
        ("szAddress", c_char * 256),
        ("dwPort", c_uint32),
        ("szUserName", c_char * 32),
        ("szPassword", c_char * 32),
        ("dwTimeoutMs", c_uint32),
        ("dwRtspMainPort", c_int32),
        ("dwRtspSubPort", c_int32),
        ("szRtspMainPath", c_char * 128),
        ("szRtspSubPath", c_char * 128),
        ("dwRtspUrlMode", c_uint32),
        ("dwRtspHostSelect", c_uint32),
        ("szRtspHost", c_char * 256),
    ]


class tagPTZPosition(Record):
    """Where a camera looks, and what it is doing. Read with ClientAdapter_GetIpcPara(..., eCameraPosition, ...); all
    but dwSize filled by the plug-in.
    """

    dwSize: int  #: sizeof this record, by the application
    nPan: int  #: ten-thousandths of the range, -10000 to 10000
    nTilt: int  #: ten-thousandths of the range, -10000 to 10000
    nZoom: int  #: ten-thousandths of the range, 0 to 10000
    bMoving: int  #: 1: not yet where it was sent, a timed movement runs, or a tour
    dwPreset: int  #: the preset that it stands on, 0: none
    dwTour: int  #: the tour that runs, 0: none
    bHasDegrees: int  #: 1: the camera knows angles, and the next three hold them
    nPanDegrees: int  #: hundredths of a degree, clockwise from above
    nTiltDegrees: int  #: hundredths of a degree above the horizon
    dwZoomFactor: int  #: hundredths: 100 is the widest view, 3000 is 30 times
    dwAuxiliary: int  #: what is switched on: bit n for ePTZAuxiliaryKind n
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("nPan", c_int32),
        ("nTilt", c_int32),
        ("nZoom", c_int32),
        ("bMoving", c_uint32),
        ("dwPreset", c_uint32),
        ("dwTour", c_uint32),
        ("bHasDegrees", c_uint32),
        ("nPanDegrees", c_int32),
        ("nTiltDegrees", c_int32),
        ("dwZoomFactor", c_uint32),
        ("dwAuxiliary", c_uint32),
    ]


class tagPTZAbility(Record):
    """What a camera's head can do. Read with ClientAdapter_GetIpcPara(..., eCameraPTZAbility, ...). A channel that can't
    move answers 0 with all words 0.
    """

    dwSize: int  #: sizeof this record, by the application
    dwMoveAxes: int  #: ePTZAxis bits that move continuously
    dwPositionAxes: int  #: ePTZAxis bits that can be sent to a position
    dwPresets: int  #: presets at most
    dwTours: int  #: tours at most
    dwAuxiliaries: int  #: what can be switched: bit n for ePTZAuxiliaryKind n
    bHome: int  #: 1: has a home position
    dwReserved: int  #: 0
    nPanMinDegrees: int  #: hundredths of a degree at -10000; both pan limits 0: not known
    nPanMaxDegrees: int  #: hundredths of a degree at 10000
    nTiltMinDegrees: int  #: hundredths of a degree at -10000; both tilt limits 0: not known
    nTiltMaxDegrees: int  #: hundredths of a degree at 10000
    dwPanMaxSpeed: int  #: hundredths of a degree per second at speed 10000, 0: not known
    dwTiltMaxSpeed: int  #: hundredths of a degree per second at speed 10000, 0: not known
    dwZoomMaxFactor: int  #: hundredths at zoom 10000, 0: not known
    dwReserved2: int  #: 0
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwMoveAxes", c_uint32),
        ("dwPositionAxes", c_uint32),
        ("dwPresets", c_uint32),
        ("dwTours", c_uint32),
        ("dwAuxiliaries", c_uint32),
        ("bHome", c_uint32),
        ("dwReserved", c_uint32),
        ("nPanMinDegrees", c_int32),
        ("nPanMaxDegrees", c_int32),
        ("nTiltMinDegrees", c_int32),
        ("nTiltMaxDegrees", c_int32),
        ("dwPanMaxSpeed", c_uint32),
        ("dwTiltMaxSpeed", c_uint32),
        ("dwZoomMaxFactor", c_uint32),
        ("dwReserved2", c_uint32),
    ]


class tagPTZPreset(Record):
    """One preset of a camera."""

    dwPreset: int  #: its number, from 1
    nPan: int  #: as in tagPTZPosition; all three 0 where the device doesn't tell
    nTilt: int  #: as in tagPTZPosition
    nZoom: int  #: as in tagPTZPosition
    szName: bytes  #: UTF-8
    _fields_ = [
        ("dwPreset", c_uint32),
        ("nPan", c_int32),
        ("nTilt", c_int32),
        ("nZoom", c_int32),
        ("szName", c_char * 64),
    ]


class tagPTZPresetList(Record):
    """The presets of a camera, in the order of their numbers. Read with ClientAdapter_GetIpcPara(..., eCameraPresets,
    ...).
    """

    dwSize: int  #: sizeof this record, by the application
    dwEntrySize: int  #: sizeof(tagPTZPreset), by the application
    dwCapacity: int  #: entries that there is room for, by the application
    dwCount: int  #: entries that there are, by the plug-in; may be more than there was room for
    ptEntries: Any  #: the application's; the first dwCapacity of dwCount are filled
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwEntrySize", c_uint32),
        ("dwCapacity", c_uint32),
        ("dwCount", c_uint32),
        *wide("ptEntries", POINTER(tagPTZPreset)),
    ]


class tagPTZTour(Record):
    """One tour of a camera."""

    dwTour: int  #: its number, from 1
    dwPresets: int  #: presets that it goes to; 0: recorded movements
    dwSeconds: int  #: how long one run takes, 0: not known
    bRunning: int  #: 1: runs now
    _fields_ = [
        ("dwTour", c_uint32),
        ("dwPresets", c_uint32),
        ("dwSeconds", c_uint32),
        ("bRunning", c_uint32),
    ]


class tagPTZTourList(Record):
    """The tours of a camera. Read with ClientAdapter_GetIpcPara(..., eCameraTours, ...)."""

    dwSize: int  #: sizeof this record, by the application
    dwEntrySize: int  #: sizeof(tagPTZTour), by the application
    dwCapacity: int  #: entries that there is room for, by the application
    dwCount: int  #: entries that there are, by the plug-in; may be more than there was room for
    ptEntries: Any  #: the application's; the first dwCapacity of dwCount are filled
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwEntrySize", c_uint32),
        ("dwCapacity", c_uint32),
        ("dwCount", c_uint32),
        *wide("ptEntries", POINTER(tagPTZTour)),
    ]


class tagPanelStatusInfo(Record):
    """A front panel. A read fills all but dwSize. A write takes dwLampsOn, dwLampsBlinking, dwBrightness and the lines;
    lamps that the device steers itself (eLampPower, eLampNetwork, eLampDisk) stay as they are.
    """

    dwSize: int  #: sizeof this record, by the application
    dwLamps: int  #: ePanelLamp bits that the panel has; not looked at on a write
    dwLampsOn: int  #: ePanelLamp bits that are lit
    dwLampsBlinking: int  #: ePanelLamp bits that blink; they count as lit
    dwBrightness: int  #: of lamps and display, percent
    bLocked: int  #: 1: the keys are locked; not looked at on a write
    bBeeping: int  #: 1: the beeper sounds; not looked at on a write
    dwLastKey: int  #: ePanelKey that was pressed last, 0: none; not looked at on a write
    szLine1: bytes  #: first line of the display, UTF-8
    szLine2: bytes  #: second line of the display, UTF-8
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwLamps", c_uint32),
        ("dwLampsOn", c_uint32),
        ("dwLampsBlinking", c_uint32),
        ("dwBrightness", c_uint32),
        ("bLocked", c_uint32),
        ("bBeeping", c_uint32),
        ("dwLastKey", c_uint32),
        ("szLine1", c_char * 64),
        ("szLine2", c_char * 64),
    ]


class tagPanelControlParameter(Record):
    """What a front panel is to do. Filled by the application."""

    dwSize: int  #: sizeof this record
    dwAction: int  #: ePanelAction
    dwKey: int  #: ePanelKey, for ePanelPress
    dwMilliseconds: int  #: for ePanelBeep and ePanelLampTest; 0: 500, at most 60000
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwAction", c_uint32),
        ("dwKey", c_uint32),
        ("dwMilliseconds", c_uint32),
    ]


class tagHistoryStreamPara(Record):
    """What to play: a channel between two times, or one file. Filled by the application."""

    dwSize: int  #: sizeof this record
    dwChannel: int  #: the device's channel, from 0
    dwType: int  #: eHistoryStreamType, one of them; eHistoryAny: all
    dwStreamKind: int  #: eStreamKind; 0: the main stream
    llStartUs: int  #: begin, microseconds since 1970 UTC; 0: where the file or the recordings begin
    llEndUs: int  #: end, microseconds since 1970 UTC; 0: where the file or the recordings end
    szFile: bytes  #: a file's name on the device, from a query: plays that; empty: plays the channel
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwChannel", c_uint32),
        ("dwType", c_uint32),
        ("dwStreamKind", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("szFile", c_char * 256),
    ]


class tagHistoryStreamMultiTypePara(Record):
    """What to play over several record types. Filled by the application."""

    dwSize: int  #: sizeof this record
    dwChannel: int  #: the device's channel, from 0
    dwTypes: int  #: eHistoryStreamType bits; 0: all
    dwStreamKind: int  #: eStreamKind; 0: the main stream
    llStartUs: int  #: begin, microseconds since 1970 UTC; 0: where the recordings begin
    llEndUs: int  #: end, microseconds since 1970 UTC; 0: where the recordings end
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwChannel", c_uint32),
        ("dwTypes", c_uint32),
        ("dwStreamKind", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
    ]


class tagTimeInfo(Record):
    """A time. Of ClientAdapter_HistoryStreamPosition and ClientAdapter_DecoderChannelGetOSDTime."""

    dwSize: int  #: sizeof this record, by the application
    nUtcOffsetMinutes: int  #: how far the device's local time is ahead of UTC; filled on a read, 0 if not known
    llTimeUs: int  #: microseconds since 1970 UTC
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("nUtcOffsetMinutes", c_int32),
        ("llTimeUs", c_int64),
    ]


class tagDeviceFault(Record):
    """Makes a simulated device misbehave, or something happen to it. Filled by the application."""

    dwSize: int  #: sizeof this record
    dwFault: int  #: eFaultKind
    dwChannel: int  #: channel, disk or input from 0; TESSARO_ALL: all
    dwMilliseconds: int  #: how long; 0: until eFaultNone
    dwCount: int  #: how often
    dwValue: int  #: how much
    llOffsetUs: int  #: microseconds, signed
    szAddress: bytes  #: the device's address as in the login; empty: all devices
    szUserName: bytes  #: a user
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwFault", c_uint32),
        ("dwChannel", c_uint32),
        ("dwMilliseconds", c_uint32),
        ("dwCount", c_uint32),
        ("dwValue", c_uint32),
        ("llOffsetUs", c_int64),
        ("szAddress", c_char * 256),
        ("szUserName", c_char * 32),
    ]


class tagHistoryStreamQueryFactor(Record):
    """Asks for recordings of one type."""

    dwSize: int  #: sizeof this record
    dwChannel: int  #: the device's channel, from 0
    dwType: int  #: eHistoryStreamType, one of them; eHistoryAny: all
    dwStreamKind: int  #: eStreamKind; 0: the main stream
    llStartUs: int  #: recorded after this; 0: from the first
    llEndUs: int  #: recorded before this; 0: to the last
    bLockedOnly: int  #: 1: only what ClientAdapter_FileLock protects
    dwReserved: int  #: 0
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwChannel", c_uint32),
        ("dwType", c_uint32),
        ("dwStreamKind", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("bLockedOnly", c_uint32),
        ("dwReserved", c_uint32),
    ]


class tagHistoryStreamMultiTypeQueryFactor(Record):
    """Asks for recordings of several types and channels."""

    dwSize: int  #: sizeof this record
    dwTypes: int  #: eHistoryStreamType bits; 0: all
    ullChannels: int  #: bit n: channel n; 0: all
    dwStreamKind: int  #: eStreamKind; 0: the main stream
    bLockedOnly: int  #: 1: only what ClientAdapter_FileLock protects
    llStartUs: int  #: recorded after this; 0: from the first
    llEndUs: int  #: recorded before this; 0: to the last
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwTypes", c_uint32),
        ("ullChannels", c_uint64),
        ("dwStreamKind", c_uint32),
        ("bLockedOnly", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
    ]


class tagTransmitHistoryStreamQueryFactor(Record):
    """Asks a device for the recordings of another one that it reaches: a camera behind a recorder, say."""

    dwSize: int  #: sizeof this record
    dwProtocol: int  #: eProtocolType that the other device speaks
    dwPort: int  #: the other device's port; 0: the protocol's usual one
    dwChannel: int  #: the other device's channel, from 0
    dwTypes: int  #: eHistoryStreamType bits; 0: all
    dwStreamKind: int  #: eStreamKind; 0: the main stream
    llStartUs: int  #: recorded after this; 0: from the first
    llEndUs: int  #: recorded before this; 0: to the last
    szAddress: bytes  #: the other device's host name or address, as the asked one sees it
    szUserName: bytes  #: for the other device
    szPassword: bytes  #: for the other device
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwProtocol", c_uint32),
        ("dwPort", c_uint32),
        ("dwChannel", c_uint32),
        ("dwTypes", c_uint32),
        ("dwStreamKind", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("szAddress", c_char * 256),
        ("szUserName", c_char * 32),
        ("szPassword", c_char * 32),
    ]


class tagHistoryStreamQueryResult(Record):
    """One recording: what one channel recorded without a gap, for one reason."""

    dwSize: int  #: sizeof this record, by the application
    dwChannel: int  #: the device's channel, from 0
    dwType: int  #: eHistoryStreamType
    dwStreamKind: int  #: eStreamKind
    llStartUs: int  #: time of its first frame
    llEndUs: int  #: end of its last frame; that of now while it is being recorded
    ullLength: int  #: bytes, 0: not known
    dwCodec: int  #: eMediaCodec of its video
    bLocked: int  #: 1: protected from being overwritten
    bRecording: int  #: 1: still being recorded
    dwReserved: int  #: 0
    szFile: bytes  #: its name on the device: for playback, download and ClientAdapter_FileLock
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwChannel", c_uint32),
        ("dwType", c_uint32),
        ("dwStreamKind", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("ullLength", c_uint64),
        ("dwCodec", c_uint32),
        ("bLocked", c_uint32),
        ("bRecording", c_uint32),
        ("dwReserved", c_uint32),
        ("szFile", c_char * 256),
    ]


class tagHistoryStreamMultiTypeQueryResult(Record):
    """One recording that a query over several types found; fields as in tagHistoryStreamQueryResult."""

    dwSize: int  #: sizeof this record, by the application
    dwChannel: int  #: the device's channel, from 0
    dwType: int  #: eHistoryStreamType: the one type that it is of
    dwStreamKind: int  #: eStreamKind
    llStartUs: int  #: time of its first frame
    llEndUs: int  #: end of its last frame
    ullLength: int  #: bytes, 0: not known
    dwCodec: int  #: eMediaCodec of its video
    bLocked: int  #: 1: protected from being overwritten
    bRecording: int  #: 1: still being recorded
    dwReserved: int  #: 0
    szFile: bytes  #: its name on the device
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwChannel", c_uint32),
        ("dwType", c_uint32),
        ("dwStreamKind", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("ullLength", c_uint64),
        ("dwCodec", c_uint32),
        ("bLocked", c_uint32),
        ("bRecording", c_uint32),
        ("dwReserved", c_uint32),
        ("szFile", c_char * 256),
    ]


class tagFileQueryFactor(Record):
    """Asks for files."""

    dwSize: int  #: sizeof this record
    dwKind: int  #: eFileKind
    dwChannel: int  #: the device's channel, from 0; recordings and pictures
    dwTypes: int  #: eHistoryStreamType bits, 0: all; recordings and pictures
    llStartUs: int  #: made after this; 0: from the first
    llEndUs: int  #: made before this; 0: to the last
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwKind", c_uint32),
        ("dwChannel", c_uint32),
        ("dwTypes", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
    ]


class tagFileQueryResult(Record):
    """One file."""

    dwSize: int  #: sizeof this record, by the application
    dwKind: int  #: eFileKind
    dwChannel: int  #: the device's channel; 0 where the file is of none
    dwType: int  #: eHistoryStreamType; 0 where there is none
    llStartUs: int  #: when it begins or was made
    llEndUs: int  #: when it ends; as llStartUs for what has no length in time
    ullLength: int  #: bytes, 0: not known
    bLocked: int  #: 1: protected from being overwritten
    dwReserved: int  #: 0
    szFile: bytes  #: its name on the device: for a download and ClientAdapter_FileLock
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwKind", c_uint32),
        ("dwChannel", c_uint32),
        ("dwType", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("ullLength", c_uint64),
        ("bLocked", c_uint32),
        ("dwReserved", c_uint32),
        ("szFile", c_char * 256),
    ]


class tagLogQueryFactor(Record):
    """Asks for log entries."""

    dwSize: int  #: sizeof this record
    dwTypes: int  #: eLogType bits; 0: all
    llStartUs: int  #: after this; 0: from the first
    llEndUs: int  #: before this; 0: to the last
    szUserName: bytes  #: of this user; empty: of all
    szText: bytes  #: with this in their text, upper and lower case alike; empty: all
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwTypes", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("szUserName", c_char * 32),
        ("szText", c_char * 64),
    ]


class tagLogQueryResult(Record):
    """One log entry."""

    dwSize: int  #: sizeof this record, by the application
    dwType: int  #: eLogType, one of them
    llTimeUs: int  #: when
    dwEvent: int  #: eDeviceEvent, where one stands for it, else 0
    dwChannel: int  #: the channel, input, output or disk that it is about, else 0
    szUserName: bytes  #: who; empty: the device itself
    szAddress: bytes  #: from where; empty: from the device itself
    szText: bytes  #: what happened, in the device's words
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwType", c_uint32),
        ("llTimeUs", c_int64),
        ("dwEvent", c_uint32),
        ("dwChannel", c_uint32),
        ("szUserName", c_char * 32),
        ("szAddress", c_char * 64),
        ("szText", c_char * 256),
    ]


class tagTransparentChannelPara(Record):
    """A serial port to be opened through the device. Filled by the application. The port belongs to one channel at a
    time: eResultBusy. eResultNoChannel: no such port.
    """

    dwSize: int  #: sizeof this record
    dwPort: int  #: the device's serial port, from 0
    dwKind: int  #: eSerialKind
    dwBaudRate: int  #: bits per second; 0: 9600
    dwDataBits: int  #: 5 to 8; 0: 8
    dwStopBits: int  #: 1 or 2; 0: 1
    dwParity: int  #: eSerialParity
    dwFlow: int  #: eSerialFlow
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwPort", c_uint32),
        ("dwKind", c_uint32),
        ("dwBaudRate", c_uint32),
        ("dwDataBits", c_uint32),
        ("dwStopBits", c_uint32),
        ("dwParity", c_uint32),
        ("dwFlow", c_uint32),
    ]


class tagFileUploadPara(Record):
    """A file to send: from a file of this machine, or from memory. Filled by the application. Progress goes to the
    callback of ClientAdapter_FileUploadCB; its last call says finished or failed.
    """

    dwSize: int  #: sizeof this record
    dwKind: int  #: eFileKind; eFileFirmware restarts the device once it is finished
    ullLength: int  #: bytes at pbyData
    szPath: bytes  #: the file to send; empty: send pbyData
    szFile: bytes  #: its name on the device; empty: the device finds one
    pbyData: Any  #: must stay until the upload is closed
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwKind", c_uint32),
        ("ullLength", c_uint64),
        ("szPath", c_char * 256),
        ("szFile", c_char * 256),
        *wide("pbyData", POINTER(c_ubyte)),
    ]


class tagFileDownloadPara(Record):
    """A file to fetch: a file by its name, or a channel's recordings between two times. Its blocks go in order to the
    callback of ClientAdapter_FileDownloadCB. The last call has no bytes: pData is null, and dwLength is 0 when the
    whole file has come, else the ePluginResult that ended it.
    """

    dwSize: int  #: sizeof this record, by the application
    dwKind: int  #: eFileKind
    dwChannel: int  #: the device's channel, from 0; without szFile
    dwTypes: int  #: eHistoryStreamType bits, 0: all; without szFile
    dwStreamKind: int  #: eStreamKind, 0: the main stream; without szFile
    dwFormat: int  #: eFileFormat, of recordings
    llStartUs: int  #: begin, microseconds since 1970 UTC; 0: where the recordings begin
    llEndUs: int  #: end, microseconds since 1970 UTC; 0: where the recordings end
    ullOffset: int  #: begin at this byte of the file, to go on with a transfer that broke off
    ullLength: int  #: out: bytes of the whole file, 0: not known beforehand
    szFile: bytes  #: the file's name on the device, from a query; empty: channel and times
    szPath: bytes  #: a file of this machine to write too, appended to if ullOffset isn't 0; empty: none
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwKind", c_uint32),
        ("dwChannel", c_uint32),
        ("dwTypes", c_uint32),
        ("dwStreamKind", c_uint32),
        ("dwFormat", c_uint32),
        ("llStartUs", c_int64),
        ("llEndUs", c_int64),
        ("ullOffset", c_uint64),
        ("ullLength", c_uint64),
        ("szFile", c_char * 256),
        ("szPath", c_char * 256),
    ]


class tagStreamTransferPara(Record):
    """What frames a connection will carry to a device. Filled by the application. dwChannel of
    ClientAdapter_StreamTransferConnect: the window of a decoder, which must be bound to eDecoderSourceTransfer.
    """

    dwSize: int  #: sizeof this record
    dwVideoCodec: int  #: eMediaCodec; 0: no video
    dwWidth: int  #: pixels, 0: not known beforehand
    dwHeight: int  #: pixels, 0: not known beforehand
    dwFrameRate: int  #: frames per 1000 s, 0: not known beforehand
    dwAudioCodec: int  #: eMediaCodec; 0: no audio
    dwSampleRate: int  #: samples per second
    dwChannels: int  #: audio channels
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwVideoCodec", c_uint32),
        ("dwWidth", c_uint32),
        ("dwHeight", c_uint32),
        ("dwFrameRate", c_uint32),
        ("dwAudioCodec", c_uint32),
        ("dwSampleRate", c_uint32),
        ("dwChannels", c_uint32),
    ]


class tagStreamTransferFrame(Record):
    """One frame to send. Filled by the application; its data is the application's again when the call returns."""

    dwSize: int  #: sizeof this record
    dwMediaType: int  #: eMediaType
    dwCodec: int  #: eMediaCodec
    dwFlags: int  #: eFrameFlag bits
    llPresentationTimeUs: int  #: microseconds on the stream's own time line
    dwLength: int  #: bytes at pbyData
    dwReserved: int  #: 0
    pbyData: Any  #: one access unit of video, or one packet of audio
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwMediaType", c_uint32),
        ("dwCodec", c_uint32),
        ("dwFlags", c_uint32),
        ("llPresentationTimeUs", c_int64),
        ("dwLength", c_uint32),
        ("dwReserved", c_uint32),
        *wide("pbyData", POINTER(c_ubyte)),
    ]


class tagVoiceStreamPara(Record):
    """How voice is to be coded. The application says what it wants; when the call returns, the record says what was
    agreed, before the first packet is sent. Send packets of dwPacketMs, one each dwPacketMs; the plug-in does not keep
    the time for its caller.
    """

    dwSize: int  #: sizeof this record, by the application
    dwCodec: int  #: eMediaCodec; in: 0: the device may choose; out: what was agreed
    dwSampleRate: int  #: samples per second; in: 0: the device may choose; out: what was agreed
    dwChannels: int  #: channels; in: 0: 1; out: what was agreed
    dwPacketMs: int  #: length of a packet in milliseconds; in: 0: 20; out: what was agreed
    dwFlags: int  #: eVoiceFlag bits
    dwOutput: int  #: the device's audio output, from 0
    dwInput: int  #: the device's audio input, from 0
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwCodec", c_uint32),
        ("dwSampleRate", c_uint32),
        ("dwChannels", c_uint32),
        ("dwPacketMs", c_uint32),
        ("dwFlags", c_uint32),
        ("dwOutput", c_uint32),
        ("dwInput", c_uint32),
    ]


class tagEntryPoint(Record):
    """One entry point that the library looks up in a protocol's plug-in."""

    dwSize: int  #: sizeof this record, by the application
    dwState: int  #: eEntryPointState
    szOperation: bytes  #: what it does: "UserLogin"
    szSymbol: bytes  #: its name in the plug-in: "OnvifClient_UserLogin"
    _sized_ = True
    _fields_ = [
        ("dwSize", c_uint32),
        ("dwState", c_uint32),
        ("szOperation", c_char * 64),
        ("szSymbol", c_char * 64),
    ]


#: The configuration block that a record is read and written as.
BLOCKS: dict[type[Record], eConfigType] = {
    tagConfigIdentity: eConfigType.eConfigIdentity,
    tagConfigNetwork: eConfigType.eConfigNetwork,
    tagConfigClock: eConfigType.eConfigClock,
    tagConfigUsers: eConfigType.eConfigUsers,
    tagConfigStorage: eConfigType.eConfigStorage,
    tagConfigVideoEncoder: eConfigType.eConfigVideoEncoder,
    tagConfigAudioEncoder: eConfigType.eConfigAudioEncoder,
    tagCameraPicture: eConfigType.eConfigPicture,
    tagConfigOverlay: eConfigType.eConfigOverlay,
    tagConfigMotion: eConfigType.eConfigMotion,
    tagConfigPrivacy: eConfigType.eConfigPrivacy,
    tagConfigSchedule: eConfigType.eConfigSchedule,
    tagConfigAlarmInput: eConfigType.eConfigAlarmInput,
    tagConfigAlarmOutput: eConfigType.eConfigAlarmOutput,
    tagConfigMacAddress: eConfigType.eConfigMacAddress,
}

#: The camera parameter that a record is read and written as.
PARAMETERS: dict[type[Record], eCameraParameter] = {
    tagCameraPicture: eCameraParameter.eCameraPicture,
    tagCameraDayNight: eCameraParameter.eCameraDayNight,
    tagCameraExposure: eCameraParameter.eCameraExposure,
    tagCameraFocus: eCameraParameter.eCameraFocus,
    tagPTZPosition: eCameraParameter.eCameraPosition,
    tagPTZPresetList: eCameraParameter.eCameraPresets,
    tagPTZTourList: eCameraParameter.eCameraTours,
    tagPTZAbility: eCameraParameter.eCameraPTZAbility,
}



# A frame of a live or playback stream.
# Parameters: hStream, ptFrame, dwUser.
StreamMediaCallback = ctypes.CFUNCTYPE(c_int, c_void_p, POINTER(tagStreamMediaFrame), c_ulong)

# A frame of voice from the device; eSource: where the device took it.
# Parameters: hVoice, eSource, ptFrame, dwUser.
StreamVoiceCallback = ctypes.CFUNCTYPE(c_int, c_void_p, c_int, POINTER(tagStreamVoiceFrame), c_ulong)

# An event of a device or stream. The four words are the plug-in's; for RTSP streams eConnectionEvent, for all others
# eDeviceEvent.
# Parameters: hSource, dwEvent, dwWord2, dwWord3, dwWord4, dwUser.
DeviceEventCallback = ctypes.CFUNCTYPE(c_int, c_void_p, c_ulong, c_ulong, c_ulong, c_ulong, c_ulong)

# Bytes that came through a transparent channel.
# Parameters: hChannel, ptBuffer, dwUser.
TransparentChannelCallback = ctypes.CFUNCTYPE(c_int, c_void_p, POINTER(tagBuffer), c_ulong)

# How far an upload has come.
# Parameters: hUpload, tState, dwUser.
FileUploadCallback = ctypes.CFUNCTYPE(c_int, c_void_p, tagFileUploadState, c_ulong)

# A block of a downloaded file.
# Parameters: hDownload, tBuffer, dwUser.
FileDownloadCallback = ctypes.CFUNCTYPE(c_int, c_void_p, tagBuffer, c_ulong)

# A device that registers itself. Comes from the plug-in directly, without ID and user data.
# Parameters: ptInfo.
DeviceRegisterCallback = ctypes.CFUNCTYPE(c_int, POINTER(tagDeviceRegisterInfo))

# A device that was found. Comes from the plug-in directly, without ID and user data.
# Parameters: ptConfig.
DeviceProbeCallback = ctypes.CFUNCTYPE(None, POINTER(tagDeviceProbeConfig))

# A user that a device forced off. Comes from the plug-in directly: hLogin is its own handle, not a login ID.
# Parameters: hLogin, dwUser.
DeleteUserForceCallback = ctypes.CFUNCTYPE(c_int, c_void_p, c_ulong)

# What a plug-in has to say about its work: szText is one line without its end, valid until the callback returns;
# dwLevel as in syslog, 3 error to 7 debug. Comes on any thread of the plug-in; a null function ends it.
# Parameters: dwLevel, szText.
PluginLogCallback = ctypes.CFUNCTYPE(None, c_ulong, c_char_p)

# Gets one diagnostic line, without its end, on the thread that writes it. szLine is valid until it returns. It may
# run on several threads at once, and must not call a function of this library.
# Parameters: szLine.
DiagnosticCallback = ctypes.CFUNCTYPE(None, c_char_p)

_library = Functions({
    "ClientAdapter_Start": (c_int, [c_uint]),
    "ClientAdapter_Stop": (c_int, []),
    "ClientAdapter_UserLogin": (c_int, [POINTER(c_int), c_int, POINTER(tagUserLoginPara)]),
    "ClientAdapter_UserLogout": (c_int, [c_int]),
    "ClientAdapter_GetLoginLevel": (c_int, [c_int, POINTER(c_int)]),
    "ClientAdapter_GetLoginMac": (c_int, [c_int, POINTER(c_ubyte), c_int]),
    "ClientAdapter_GetLoginStatus": (c_int, [c_int, POINTER(c_int)]),
    "ClientAdapter_RealStreamConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagRealStreamPara)]),
    "ClientAdapter_RealStreamDisconnect": (c_int, [c_int]),
    "ClientAdapter_StreamMediaControl": (c_int, [c_int, c_int]),
    "ClientAdapter_ForceIFrame": (c_int, [c_int, c_int]),
    "ClientAdapter_GetPackageInfo": (c_int, [c_int, c_void_p, c_int]),
    "ClientAdapter_SetStreamMediaLinkID": (c_int, [c_int, c_ulong]),
    "ClientAdapter_QueryStreamMediaLinkID": (c_int, [c_int, c_int, POINTER(tagMediaLinkIDQueryResult)]),
    "ClientAdapter_SetCallbackFunc": (c_int, [c_ulong, c_void_p]),
    "ClientAdapter_RTSPSetIsProductTest": (c_int, [c_ulong, c_void_p, c_ulong, c_int]),
    "ClientAdapter_VTQDealRepairIpcMsg": (c_int, [c_ulong, c_void_p, c_ulong, c_int]),
    "ClientAdapter__VoiceStreamMedia": (c_int, [c_ulong, c_void_p, c_ulong, c_int]),
    "ClientAdapter__VoiceStreamIf": (c_int, [c_ulong, c_void_p, c_ulong, c_int]),
    "ClientAdapter_StreamMediaCB": (c_int, [c_int, StreamMediaCallback, c_ulong]),
    "ClientAdapter_HistoryStreamCB": (c_int, [c_int, StreamMediaCallback, c_ulong]),
    "ClientAdapter_StreamMediaRawCB": (c_int, [c_int, StreamMediaCallback, c_ulong]),
    "ClientAdapter_VoiceStreamCB": (c_int, [c_int, StreamVoiceCallback, c_ulong]),
    "ClientAdapter_TransparentChannelCB": (c_int, [c_int, TransparentChannelCallback, c_ulong]),
    "ClientAdapter_FileUploadCB": (c_int, [c_int, FileUploadCallback, c_ulong]),
    "ClientAdapter_FileDownloadCB": (c_int, [c_int, FileDownloadCallback, c_ulong]),
    "ClientAdapter_SubscribeEvent": (c_int, [c_int, c_ulong, DeviceEventCallback, c_ulong]),
    "ClientAdapter_UnSubscribeEvent": (c_int, [c_int, c_ulong]),
    "ClientAdapter_DeleteUserForceCB": (c_int, [DeleteUserForceCallback, c_ulong]),
    "ClientAdapter_DeviceRegisterCB": (c_int, [DeviceRegisterCallback]),
    "ClientAdapter_DeviceProbeStart": (c_int, [POINTER(tagDeviceProbeParameter), DeviceProbeCallback]),
    "ClientAdapter_SetConfig": (c_int, [c_int, POINTER(tagConfigInformation)]),
    "ClientAdapter_SetConfigV2": (c_int, [c_int, POINTER(tagConfigInformationV2)]),
    "ClientAdapter_GetConfig": (c_int, [c_int, POINTER(tagConfigInformation)]),
    "ClientAdapter_GetConfigV2": (c_int, [c_int, POINTER(tagConfigInformationV2)]),
    "ClientAdapter_SetConfigBySn": (c_int, [c_char_p, c_int, POINTER(tagConfigInformationV2)]),
    "ClientAdapter_GetAttribute": (c_int, [c_int, POINTER(c_ulong)]),
    "ClientAdapter_SetAttribute": (c_int, [c_int, c_ulong]),
    "ClientAdapter_DeviceControl": (c_int, [c_int, c_int]),
    "ClientAdapter_SetIpcPara": (c_int, [c_int, c_int, c_ulong, c_void_p, c_ulong]),
    "ClientAdapter_GetIpcPara": (c_int, [c_int, c_int, c_ulong, c_void_p, c_ulong]),
    "ClientAdapter_SetChromaDefault": (c_int, [c_int, c_ulong, c_ulong]),
    "ClientAdapter_GetSDKVersionByHandle": (c_int, [c_int, POINTER(c_int)]),
    "ClientAdapter_AlarmClear": (c_int, [c_int, c_ulong, c_ulong]),
    "ClientAdapter_ImageCapture": (c_int, [c_int, c_ulong, c_int, POINTER(tagImageFileInfo)]),
    "ClientAdapter_FileLock": (c_int, [c_int, c_char_p, c_int]),
    "ClientAdapter_RecordControl": (c_int, [c_int, c_ulong, c_ulong]),
    "ClientAdapter_AlarmoutControl": (c_int, [c_int, c_ulong, c_ulong]),
    "ClientAdapter_AlarminStateGet": (c_int, [c_int, POINTER(c_ulong), POINTER(c_ulong)]),
    "ClientAdapter_AlarmoutStateGet": (c_int, [c_int, POINTER(c_ulong), POINTER(c_ulong)]),
    "ClientAdapter_HistoryStreamCreate": (c_int, [POINTER(c_int), c_int, POINTER(tagHistoryStreamPara), c_ulong]),
    "ClientAdapter_HistoryStreamMultiTypeCreate": (c_int, [POINTER(c_int), c_int, POINTER(tagHistoryStreamMultiTypePara), c_ulong]),
    "ClientAdapter_HistoryStreamDestroy": (c_int, [c_int]),
    "ClientAdapter_HistoryStreamPosition": (c_int, [c_int, c_int, POINTER(tagTimeInfo)]),
    "ClientAdapter_HistoryStreamSync": (c_int, [c_int, c_int]),
    "ClientAdapter_HistoryStreamUnSync": (c_int, [c_int, c_int]),
    "ClientAdapter_HistoryStreamSetSpeed": (c_int, [c_int, c_ulong]),
    "ClientAdapter_VoiceStreamConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagVoiceStreamPara)]),
    "ClientAdapter_VoiceStreamDisconnect": (c_int, [c_int]),
    "ClientAdapter_VoiceStreamSend": (c_int, [c_int, POINTER(tagBuffer)]),
    "ClientAdapter_HistoryStreamQueryConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagHistoryStreamQueryFactor)]),
    "ClientAdapter_HistoryStreamMultiTypeQueryConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagHistoryStreamMultiTypeQueryFactor)]),
    "ClientAdapter_HistoryStreamQueryNext": (c_int, [c_int, POINTER(tagHistoryStreamQueryResult)]),
    "ClientAdapter_HistoryStreamMultiTypeQueryNext": (c_int, [c_int, POINTER(tagHistoryStreamMultiTypeQueryResult)]),
    "ClientAdapter_HistoryStreamQueryDisconnect": (c_int, [c_int]),
    "ClientAdapter_FileQueryConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagFileQueryFactor)]),
    "ClientAdapter_FileQueryNext": (c_int, [c_int, POINTER(tagFileQueryResult)]),
    "ClientAdapter_FileQueryDisconnect": (c_int, [c_int]),
    "ClientAdapter_HistoryLogQueryConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagLogQueryFactor)]),
    "ClientAdapter_HistoryLogQueryNext": (c_int, [c_int, POINTER(tagLogQueryResult)]),
    "ClientAdapter_HistoryLogQueryDisconnect": (c_int, [c_int]),
    "ClientAdapter_TransmitHistoryStreamQueryConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagTransmitHistoryStreamQueryFactor)]),
    "ClientAdapter_TransmitHistoryStreamQueryNext": (c_int, [c_int, POINTER(tagHistoryStreamMultiTypeQueryResult)]),
    "ClientAdapter_TransmitHistoryStreamQueryDisconnect": (c_int, [c_int]),
    "ClientAdapter_TransparentChannelConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagTransparentChannelPara)]),
    "ClientAdapter_TransparentChannelWrite": (c_int, [c_int, POINTER(tagBuffer)]),
    "ClientAdapter_TransparentChannelDisconnect": (c_int, [c_int]),
    "ClientAdapter_FileUploadConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagFileUploadPara)]),
    "ClientAdapter_FileUploadControl": (c_int, [c_int, c_int]),
    "ClientAdapter_FileUploadDisconnect": (c_int, [c_int]),
    "ClientAdapter_FileDownloadConnect": (c_int, [POINTER(c_int), c_int, POINTER(tagFileDownloadPara)]),
    "ClientAdapter_FileDownloadControl": (c_int, [c_int, c_int]),
    "ClientAdapter_FileDownloadDisconnect": (c_int, [c_int]),
    "ClientAdapter_StreamTransferConnect": (c_int, [POINTER(c_int), c_int, c_ulong, POINTER(tagStreamTransferPara)]),
    "ClientAdapter_StreamTransferSend": (c_int, [c_int, POINTER(tagStreamTransferFrame)]),
    "ClientAdapter_StreamTransferDisconnect": (c_int, [c_int]),
    "ClientAdapter_DeviceRegisterListenStart": (c_int, [c_char_p, c_ulong]),
    "ClientAdapter_DeviceRegisterListenStop": (c_int, []),
    "ClientAdapter_DeviceProbeStop": (c_int, []),
    "ClientAdapter_DeviceProbeResearch": (c_int, [POINTER(tagDeviceProbeParameter)]),
    "ClientAdapter_DeviceProbeSetDeviceConfig": (c_int, [POINTER(c_ubyte), c_ushort, POINTER(tagDeviceProbeConfig)]),
    "ClientAdapter_DeviceProbeSetAllDeviceConfig": (c_int, [POINTER(tagDeviceProbeParameter), POINTER(tagDeviceProbeConfig)]),
    "ClientAdapter_DeviceProbeSetConfig": (c_int, [POINTER(c_ubyte), c_ushort, POINTER(tagDeviceProbeUserLoginPara), POINTER(tagDeviceProbeConfigInformation)]),
    "ClientAdapter_DeviceProbeGetConfig": (c_int, [POINTER(c_ubyte), c_ushort, POINTER(tagDeviceProbeUserLoginPara), POINTER(tagDeviceProbeConfigInformation)]),
    "ClientAdapter_StringToLattice": (c_int, [c_char_p, POINTER(tagFontPara), c_void_p, POINTER(c_ulong), POINTER(c_ulong), POINTER(c_ulong)]),
    "ClientAdapter_GetDeviceConfigFromHttp": (c_int, [c_char_p, POINTER(tagDeviceConfigFromHttp)]),
    "ClientAdapter_PTZControl": (c_int, [c_int, c_ulong, c_int, c_ulong, c_ulong, c_ulong, c_ulong]),
    "ClientAdapter_DataExistCheck": (c_int, [c_int, c_ulong, c_ulong, c_ulong, c_char_p, POINTER(c_ulong)]),
    "ClientAdapter_DiskGroupManage": (c_int, [c_int, c_int, c_ulong, c_ulong, c_ulong]),
    "ClientAdapter_GetMultiTypeDataSize": (c_int, [c_int, c_ulong, c_int, c_ulong, c_char_p, c_char_p, c_ulong, POINTER(c_ulong)]),
    "ClientAdapter_GetDataSize": (c_int, [c_int, c_ulong, c_int, c_int, c_char_p, c_char_p, c_ulong, POINTER(c_ulong)]),
    "ClientAdapter_SetScreenSplitMode": (c_int, [c_int, c_ulong, c_ulong, POINTER(c_ulong)]),
    "ClientAdapter_PanelGetStatus": (c_int, [c_int, POINTER(tagPanelStatusInfo)]),
    "ClientAdapter_PanelSetStatus": (c_int, [c_int, POINTER(tagPanelStatusInfo)]),
    "ClientAdapter_PanelControl": (c_int, [c_int, POINTER(tagPanelControlParameter)]),
    "ClientAdapter_DecoderDynamicConnect": (c_int, [c_int, c_ulong, POINTER(tagDecoderDynamicInformation)]),
    "ClientAdapter_DecoderDynamicDisconnect": (c_int, [c_int, c_ulong, c_ulong]),
    "ClientAdapter_DecoderSetConfig": (c_int, [c_int, POINTER(tagDecoderDeviceConfig)]),
    "ClientAdapter_DecoderGetConfig": (c_int, [c_int, POINTER(tagDecoderDeviceConfig)]),
    "ClientAdapter_DecoderSetChannelConfig": (c_int, [c_int, c_ulong, POINTER(tagDecoderChannelConfig)]),
    "ClientAdapter_DecoderGetChannelConfig": (c_int, [c_int, c_ulong, POINTER(tagDecoderChannelConfig)]),
    "ClientAdapter_DecoderSetVideoStandard": (c_int, [c_int, c_ulong, POINTER(tagDecoderVideoStandardConfig)]),
    "ClientAdapter_DecoderGetVideoStandard": (c_int, [c_int, c_ulong, POINTER(tagDecoderVideoStandardConfig)]),
    "ClientAdapter_DecoderSetChannelLoopConfig": (c_int, [c_int, c_ulong, POINTER(tagDecoderChannelLoopConfig)]),
    "ClientAdapter_DecoderGetChannelLoopConfig": (c_int, [c_int, c_ulong, POINTER(tagDecoderChannelLoopConfig)]),
    "ClientAdapter_DecoderChannelSetLoopEnable": (c_int, [c_int, c_ulong, c_int]),
    "ClientAdapter_DecoderChannelGetLoopEnable": (c_int, [c_int, c_ulong, POINTER(c_int)]),
    "ClientAdapter_DecoderGetLoopEnable": (c_int, [c_int, POINTER(tagDecoderLoopStatus)]),
    "ClientAdapter_DecoderGetChannelInformation": (c_int, [c_int, c_ulong, POINTER(tagDecoderChannelInformation)]),
    "ClientAdapter_DecoderChannelGetStatus": (c_int, [c_int, POINTER(tagDecoderChannelStatus)]),
    "ClientAdapter_DecoderChannelSetPlayStatus": (c_int, [c_int, c_ulong, POINTER(tagDecoderSetPlayStatusParameter)]),
    "ClientAdapter_DecoderChannelGetPlayStatus": (c_int, [c_int, POINTER(tagDecoderGetPlayStatusParameter)]),
    "ClientAdapter_UploadLogo": (c_int, [c_int, c_ulong, POINTER(tagUploadLogoParameter)]),
    "ClientAdapter_DecoderChannelLogoSwitch": (c_int, [c_int, c_ulong, c_int]),
    "ClientAdapter_DecoderChannelDisplayControl": (c_int, [c_int, c_ulong, POINTER(tagDecoderDisplayStatus)]),
    "ClientAdapter_DecoderSetDisplayConfig": (c_int, [c_int, c_ulong, POINTER(tagDecoderDisplayConfig)]),
    "ClientAdapter_DecoderGetDisplayConfig": (c_int, [c_int, c_ulong, POINTER(tagDecoderDisplayConfig)]),
    "ClientAdapter_DecoderChannelGetOSDTime": (c_int, [c_int, c_ulong, POINTER(tagTimeInfo), c_ulong]),
    "ClientAdapter_GetSDKVersion": (c_int, [c_char_p, c_ulong, c_ulong, POINTER(c_int)]),
    "ClientAdapter_DeviceIsOnline": (c_int, [c_char_p, c_ulong, c_ulong]),
    "ClientAdapter_GetFileHeader": (c_int, [c_ulong, c_char_p, POINTER(c_ulong)]),
    "TessaroExtra_GetStreamStatistics": (c_int, [c_int, POINTER(tagRTSPPackageInfo)]),
    "TessaroExtra_ResultText": (c_char_p, [c_int]),
    "TessaroExtra_Version": (c_char_p, []),
    "TessaroExtra_GetEntryPoint": (c_int, [c_int, c_uint, POINTER(tagEntryPoint)]),
    "TessaroExtra_DiagnosticCB": (c_int, [DiagnosticCallback]),
})


def ClientAdapter_Start(dwMaxChannel: int) -> int:
    """Loads and starts the ONVIF, RTSP and VTQ plug-ins, looked for as libonvifclient.so, librtspclient.so and libVTQ.so
    on the dynamic loader's search path, to which the folder tessaro beside the library belongs. dwMaxChannel: how many
    streams RTSP may open at once. Always 0: a plug-in that is missing or doesn't start shows in the diagnostic lines,
    and in 1 or the plug-in's own results from every later call on its protocol. Calling it again without a stop starts
    the same plug-ins again. Blocks while the plug-ins start.
    """
    return _library.ClientAdapter_Start(dwMaxChannel)  # type: ignore[no-any-return]


def ClientAdapter_Stop() -> int:
    """Stops and unloads every plug-in, the application's private one too (which it stops itself, before). Always 0. Close
    streams and log out first: IDs that are still open stay registered, but what they stood for is gone. Not from inside
    a callback, and not beside any other call. Blocks while the plug-ins stop.
    """
    return _library.ClientAdapter_Stop()  # type: ignore[no-any-return]


def ClientAdapter_UserLogin(pnLoginID: Any, eType: int, ptPara: Optional[tagUserLoginPara]) -> int:
    """Logs in to a device. *pnLoginID: the new login ID, on 0 only; on a failure its value is not to be used. -1:
    pnLoginID or ptPara is null. 4 also for a bad eType. For RTSP nothing is sent yet: a wrong address or password shows
    on the stream.
    """
    return _library.ClientAdapter_UserLogin(pnLoginID, eType, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_UserLogout(nLoginID: int) -> int:
    """Logs out and frees the login ID. When the plug-in answers anything but 0, the ID stays and may be logged out again.
    Streams opened under the login stay open. Not while another thread uses the ID: what it calls could reach a login
    that the plug-in has ended.
    """
    return _library.ClientAdapter_UserLogout(nLoginID)  # type: ignore[no-any-return]


def ClientAdapter_GetLoginLevel(nLoginID: int, pnLevel: Any) -> int:
    """The access level of the login's user (eUserLevel), into *pnLevel. 3 also when the plug-in answers a negative result;
    every other answer becomes 0, also when nobody could tell and *pnLevel is as it was: preset it. Asks ONVIF and VTQ.
    """
    return _library.ClientAdapter_GetLoginLevel(nLoginID, pnLevel)  # type: ignore[no-any-return]


def ClientAdapter_GetLoginMac(nLoginID: int, pbyMac: Any, nLength: int) -> int:
    """The device's hardware address, 6 bytes, into the nLength bytes at pbyMac: preset them. Results and protocols as
    ClientAdapter_GetLoginLevel.
    """
    return _library.ClientAdapter_GetLoginMac(nLoginID, pbyMac, nLength)  # type: ignore[no-any-return]


def ClientAdapter_GetLoginStatus(nLoginID: int, pnStatus: Any) -> int:
    """Whether a login still lives (eLoginStatus): *pnStatus is the plug-in's answer to the status query, also when that is
    1 or 4, the codes of a plug-in or binding that isn't there. 3 also when it is negative, *pnStatus as it was; 4:
    pnStatus is null. Asks VTQ; 0 from the others.
    """
    return _library.ClientAdapter_GetLoginStatus(nLoginID, pnStatus)  # type: ignore[no-any-return]


def ClientAdapter_RealStreamConnect(pnMediaID: Any, nLoginID: int, ptPara: Optional[tagRealStreamPara]) -> int:
    """Opens a live stream under a login. *pnMediaID: the new media ID, on 0 only; untouched on a failure. For RTSP the
    stream connects on a thread of its own after this returns: follow it with ClientAdapter_SubscribeEvent; 1 also when
    ptPara is null or names no stream kind.
    """
    return _library.ClientAdapter_RealStreamConnect(pnMediaID, nLoginID, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_RealStreamDisconnect(nMediaID: int) -> int:
    """Closes a live stream and frees its media ID, whatever the plug-in answers. For RTSP no callback of the stream runs
    once this has returned, which takes 2 s at most; from inside the stream's own callback it returns at once. Not while
    another thread uses the ID, as with every function that closes something.
    """
    return _library.ClientAdapter_RealStreamDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_StreamMediaControl(nMediaID: int, eControl: int) -> int:
    """Plays, pauses, steps; live streams and playback. RTSP: play and pause; 201 for every other code."""
    return _library.ClientAdapter_StreamMediaControl(nMediaID, eControl)  # type: ignore[no-any-return]


def ClientAdapter_ForceIFrame(nLoginID: int, nMediaID: int) -> int:
    """Asks the device for a key frame at once. 3 when either ID is unknown; the stream must be of the login's protocol.
    RTSP: 201.
    """
    return _library.ClientAdapter_ForceIFrame(nLoginID, nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_GetPackageInfo(nMediaID: int, pInfo: Any, nLength: int) -> int:
    """What came in on a connection, into the nLength bytes at pInfo: tagRTSPPackageInfo. Asks VTQ (1: pInfo is null). The
    counts of an RTSP stream come from TessaroExtra_GetStreamStatistics.
    """
    return _library.ClientAdapter_GetPackageInfo(nMediaID, pInfo, nLength)  # type: ignore[no-any-return]


def ClientAdapter_SetStreamMediaLinkID(nMediaID: int, dwLink: int) -> int:
    """Marks a stream as belonging to a link, whose ID comes from ClientAdapter_QueryStreamMediaLinkID."""
    return _library.ClientAdapter_SetStreamMediaLinkID(nMediaID, dwLink)  # type: ignore[no-any-return]


def ClientAdapter_QueryStreamMediaLinkID(nLoginID: int, eFunction: int, ptResult: Optional[tagMediaLinkIDQueryResult]) -> int:
    """The link ID to use for a media function, into *ptResult."""
    return _library.ClientAdapter_QueryStreamMediaLinkID(nLoginID, eFunction, ptResult)  # type: ignore[no-any-return]


def ClientAdapter_SetCallbackFunc(dwType: int, pFunction: Any) -> int:
    """Hands RTSP and VTQ a function of the kind dwType (eCallbackKind), which they may keep and call until the stop; ONVIF
    knows none. Always 0.
    """
    return _library.ClientAdapter_SetCallbackFunc(dwType, pFunction)  # type: ignore[no-any-return]


def ClientAdapter_RTSPSetIsProductTest(dwType: int, pPara: Any, dwLength: int, eType: int) -> int:
    """Sets a parameter of the plug-in of eType: dwType (eMiscParameter) names it. The names of this and the next three say
    nothing: all four do the same, on the protocol that the caller names.
    """
    return _library.ClientAdapter_RTSPSetIsProductTest(dwType, pPara, dwLength, eType)  # type: ignore[no-any-return]


def ClientAdapter_VTQDealRepairIpcMsg(dwType: int, pPara: Any, dwLength: int, eType: int) -> int:
    """Does what ClientAdapter_RTSPSetIsProductTest does."""
    return _library.ClientAdapter_VTQDealRepairIpcMsg(dwType, pPara, dwLength, eType)  # type: ignore[no-any-return]


def ClientAdapter__VoiceStreamMedia(dwType: int, pPara: Any, dwLength: int, eType: int) -> int:
    """Does what ClientAdapter_RTSPSetIsProductTest does."""
    return _library.ClientAdapter__VoiceStreamMedia(dwType, pPara, dwLength, eType)  # type: ignore[no-any-return]


def ClientAdapter__VoiceStreamIf(dwType: int, pPara: Any, dwLength: int, eType: int) -> int:
    """Does what ClientAdapter_RTSPSetIsProductTest does."""
    return _library.ClientAdapter__VoiceStreamIf(dwType, pPara, dwLength, eType)  # type: ignore[no-any-return]


def ClientAdapter_StreamMediaCB(nMediaID: int, pfnFrame: Any, dwUser: int) -> int:
    """Frames of a live stream go to pfnFrame. RTSP waits for a run of the earlier function to end, so what that one used
    may be freed afterwards: hold no lock that it takes.
    """
    return _library.ClientAdapter_StreamMediaCB(nMediaID, pfnFrame or null(StreamMediaCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamCB(nMediaID: int, pfnFrame: Any, dwUser: int) -> int:
    """Frames of a playback stream go to pfnFrame. Of the same kind as ClientAdapter_StreamMediaCB."""
    return _library.ClientAdapter_HistoryStreamCB(nMediaID, pfnFrame or null(StreamMediaCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_StreamMediaRawCB(nMediaID: int, pfnFrame: Any, dwUser: int) -> int:
    """Frames as they came from the device go to pfnFrame, beside those of ClientAdapter_StreamMediaCB."""
    return _library.ClientAdapter_StreamMediaRawCB(nMediaID, pfnFrame or null(StreamMediaCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_VoiceStreamCB(nMediaID: int, pfnVoice: Any, dwUser: int) -> int:
    """Voice from the device goes to pfnVoice."""
    return _library.ClientAdapter_VoiceStreamCB(nMediaID, pfnVoice or null(StreamVoiceCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_TransparentChannelCB(nMediaID: int, pfnData: Any, dwUser: int) -> int:
    """What comes through a transparent channel goes to pfnData."""
    return _library.ClientAdapter_TransparentChannelCB(nMediaID, pfnData or null(TransparentChannelCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_FileUploadCB(nMediaID: int, pfnState: Any, dwUser: int) -> int:
    """Progress of an upload goes to pfnState."""
    return _library.ClientAdapter_FileUploadCB(nMediaID, pfnState or null(FileUploadCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_FileDownloadCB(nMediaID: int, pfnData: Any, dwUser: int) -> int:
    """The blocks of a download go to pfnData."""
    return _library.ClientAdapter_FileDownloadCB(nMediaID, pfnData or null(FileDownloadCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_SubscribeEvent(nLoginID: int, dwEvent: int, pfnEvent: Any, dwUser: int) -> int:
    """Device events of a login (eDeviceEvent) go to pfnEvent, which gets the login ID first. dwEvent says which: 0 all, or
    a sum of TESSARO_EVENT. A login has one pfnEvent: another subscription, whatever its dwEvent, replaces it and dwUser
    for all events of the login. For RTSP: the events (eConnectionEvent) of one stream, whatever dwEvent is: of the
    stream that was opened last under the login when this is called (202: there is none). So subscribe after opening,
    once for each stream; the events of all of them go to the latest pfnEvent and don't say which stream they are of. 3
    also when memory runs out.
    """
    return _library.ClientAdapter_SubscribeEvent(nLoginID, dwEvent, pfnEvent or null(DeviceEventCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_UnSubscribeEvent(nLoginID: int, dwEvent: int) -> int:
    """Tells the plug-in to end the events of dwEvent, 0: all that ClientAdapter_SubscribeEvent began. If it still calls
    back, the callback runs. For RTSP nothing ends: a stream's events go on until it is closed.
    """
    return _library.ClientAdapter_UnSubscribeEvent(nLoginID, dwEvent)  # type: ignore[no-any-return]


def ClientAdapter_DeleteUserForceCB(pfnDelete: Any, dwUser: int) -> int:
    """pfnDelete is called when an ONVIF or VTQ device logs a user out; by the plug-ins directly, with their own handle of
    the login. They may keep pfnDelete until the stop. Always 0.
    """
    return _library.ClientAdapter_DeleteUserForceCB(pfnDelete or null(DeleteUserForceCallback), dwUser)  # type: ignore[no-any-return]


def ClientAdapter_DeviceRegisterCB(pfnRegister: Any) -> int:
    """pfnRegister is called for each ONVIF and VTQ device that registers itself, by the plug-ins directly. They may keep
    it until the stop. Always 0. ClientAdapter_DeviceRegisterListenStart starts to listen for devices.
    """
    return _library.ClientAdapter_DeviceRegisterCB(pfnRegister or null(DeviceRegisterCallback))  # type: ignore[no-any-return]


def ClientAdapter_DeviceProbeStart(ptPara: Optional[tagDeviceProbeParameter], pfnProbe: Any) -> int:
    """Looks for ONVIF and VTQ devices on the network. pfnProbe is called for each, by the plug-ins directly, until
    ClientAdapter_DeviceProbeStop. Always 0. Every call writes three diagnostic lines.
    """
    return _library.ClientAdapter_DeviceProbeStart(ptPara, pfnProbe or null(DeviceProbeCallback))  # type: ignore[no-any-return]


def ClientAdapter_SetConfig(nLoginID: int, ptConfig: Optional[tagConfigInformation]) -> int:
    """Writes one configuration block."""
    return _library.ClientAdapter_SetConfig(nLoginID, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_SetConfigV2(nLoginID: int, ptConfig: Optional[tagConfigInformationV2]) -> int:
    """Writes one configuration block, second layout."""
    return _library.ClientAdapter_SetConfigV2(nLoginID, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_GetConfig(nLoginID: int, ptConfig: Optional[tagConfigInformation]) -> int:
    """Reads the block that type and index name, into *ptConfig. Every call writes a diagnostic line."""
    return _library.ClientAdapter_GetConfig(nLoginID, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_GetConfigV2(nLoginID: int, ptConfig: Optional[tagConfigInformationV2]) -> int:
    """Reads the block that type and index name, into *ptConfig, second layout."""
    return _library.ClientAdapter_GetConfigV2(nLoginID, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_SetConfigBySn(szSerial: Any, eType: int, ptConfig: Optional[tagConfigInformationV2]) -> int:
    """Writes one configuration block to the device with this serial number, without a login, through the protocol eType.
    Asks ONVIF and VTQ. 4 also for a bad eType.
    """
    return _library.ClientAdapter_SetConfigBySn(szSerial, eType, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_GetAttribute(eAttribute: int, pdwValue: Any) -> int:
    """Reads an attribute of the RTSP plug-in, into *pdwValue. 201: no such attribute; 203: pdwValue is null."""
    return _library.ClientAdapter_GetAttribute(eAttribute, pdwValue)  # type: ignore[no-any-return]


def ClientAdapter_SetAttribute(eAttribute: int, dwValue: int) -> int:
    """Does nothing. Always 0."""
    return _library.ClientAdapter_SetAttribute(eAttribute, dwValue)  # type: ignore[no-any-return]


def ClientAdapter_DeviceControl(nLoginID: int, eControl: int) -> int:
    """Restart, shut down, restore and the like."""
    return _library.ClientAdapter_DeviceControl(nLoginID, eControl)  # type: ignore[no-any-return]


def ClientAdapter_SetIpcPara(nLoginID: int, nChannel: int, dwType: int, pPara: Any, dwLength: int) -> int:
    """Writes the camera parameter that dwType (eCameraParameter) names, from the dwLength bytes at pPara."""
    return _library.ClientAdapter_SetIpcPara(nLoginID, nChannel, dwType, pPara, dwLength)  # type: ignore[no-any-return]


def ClientAdapter_GetIpcPara(nLoginID: int, nChannel: int, dwType: int, pPara: Any, dwLength: int) -> int:
    """Reads the camera parameter that dwType (eCameraParameter) names, into the record of dwLength bytes at pPara, whose
    dwSize is dwLength.
    """
    return _library.ClientAdapter_GetIpcPara(nLoginID, nChannel, dwType, pPara, dwLength)  # type: ignore[no-any-return]


def ClientAdapter_SetChromaDefault(nLoginID: int, dwChannel: int, dwFlag: int) -> int:
    """Sets a channel's picture (brightness, contrast and the like) back to the factory's. dwFlag: eChromaDefault."""
    return _library.ClientAdapter_SetChromaDefault(nLoginID, dwChannel, dwFlag)  # type: ignore[no-any-return]


def ClientAdapter_GetSDKVersionByHandle(nLoginID: int, peVersion: Any) -> int:
    """Which version a logged-in device speaks, into *peVersion."""
    return _library.ClientAdapter_GetSDKVersionByHandle(nLoginID, peVersion)  # type: ignore[no-any-return]


def ClientAdapter_AlarmClear(nLoginID: int, dwType: int, dwChannel: int) -> int:
    """Ends an alarm that is on: dwType is its eDeviceEvent (0: any), dwChannel its channel or input, or TESSARO_ALL. Ends
    what the device does because of it; one whose cause is still there begins again with the next change.
    """
    return _library.ClientAdapter_AlarmClear(nLoginID, dwType, dwChannel)  # type: ignore[no-any-return]


def ClientAdapter_ImageCapture(nLoginID: int, dwChannel: int, eFormat: int, ptInfo: Optional[tagImageFileInfo]) -> int:
    """Takes a picture; ptInfo says where it goes. dwChannel: a channel, or an eCaptureTarget."""
    return _library.ClientAdapter_ImageCapture(nLoginID, dwChannel, eFormat, ptInfo)  # type: ignore[no-any-return]


def ClientAdapter_FileLock(nLoginID: int, szFile: Any, eAction: int) -> int:
    """Protects a recorded file from being overwritten, or lets it go. szFile: its name on the device."""
    return _library.ClientAdapter_FileLock(nLoginID, szFile, eAction)  # type: ignore[no-any-return]


def ClientAdapter_RecordControl(nLoginID: int, dwChannel: int, dwOn: int) -> int:
    """Starts (dwOn 1) or stops (0) recording a channel on the device, beside its schedule. 0 also when it was so already."""
    return _library.ClientAdapter_RecordControl(nLoginID, dwChannel, dwOn)  # type: ignore[no-any-return]


def ClientAdapter_AlarmoutControl(nLoginID: int, dwOutput: int, dwOn: int) -> int:
    """Switches an alarm output: dwOn 0 off, 1 on, more: on for so many milliseconds."""
    return _library.ClientAdapter_AlarmoutControl(nLoginID, dwOutput, dwOn)  # type: ignore[no-any-return]


def ClientAdapter_AlarminStateGet(nLoginID: int, pdwCount: Any, pdwState: Any) -> int:
    """Reads the alarm inputs: 1 active, 0 idle, one word each at pdwState. *pdwCount: the words that there is room for,
    then the inputs that there are, also when those are more.
    """
    return _library.ClientAdapter_AlarminStateGet(nLoginID, pdwCount, pdwState)  # type: ignore[no-any-return]


def ClientAdapter_AlarmoutStateGet(nLoginID: int, pdwCount: Any, pdwState: Any) -> int:
    """Reads the alarm outputs, as ClientAdapter_AlarminStateGet the inputs."""
    return _library.ClientAdapter_AlarmoutStateGet(nLoginID, pdwCount, pdwState)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamCreate(pnMediaID: Any, nLoginID: int, ptPara: Optional[tagHistoryStreamPara], dwFlag: int) -> int:
    """Opens playback of a recording. dwFlag: eHistoryFlag bits."""
    return _library.ClientAdapter_HistoryStreamCreate(pnMediaID, nLoginID, ptPara, dwFlag)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamMultiTypeCreate(pnMediaID: Any, nLoginID: int, ptPara: Optional[tagHistoryStreamMultiTypePara], dwFlag: int) -> int:
    """Opens playback over several record types. dwFlag: eHistoryFlag bits."""
    return _library.ClientAdapter_HistoryStreamMultiTypeCreate(pnMediaID, nLoginID, ptPara, dwFlag)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamDestroy(nMediaID: int) -> int:
    """Closes playback of either kind."""
    return _library.ClientAdapter_HistoryStreamDestroy(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamPosition(nMediaID: int, eAction: int, ptTime: Optional[tagTimeInfo]) -> int:
    """Reads the playback position into *ptTime, or sets it from there, as eAction says."""
    return _library.ClientAdapter_HistoryStreamPosition(nMediaID, eAction, ptTime)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamSync(nMediaID: int, nOtherID: int) -> int:
    """Plays the stream on the clock of another: what was recorded at the same time comes at the same time, within a frame,
    and position, speed and pause of either are those of both. -1: either is unknown. Both must be of one protocol: the
    second one's handle goes to the first one's plug-in.
    """
    return _library.ClientAdapter_HistoryStreamSync(nMediaID, nOtherID)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamUnSync(nMediaID: int, nOtherID: int) -> int:
    """Ends what ClientAdapter_HistoryStreamSync began between the two."""
    return _library.ClientAdapter_HistoryStreamUnSync(nMediaID, nOtherID)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamSetSpeed(nMediaID: int, dwSpeed: int) -> int:
    """Sets the playback speed (ePlaybackSpeed): `eSpeedNormal * 4`, `eSpeedReverse + eSpeedNormal`."""
    return _library.ClientAdapter_HistoryStreamSetSpeed(nMediaID, dwSpeed)  # type: ignore[no-any-return]


def ClientAdapter_VoiceStreamConnect(pnMediaID: Any, nParentID: int, ptPara: Optional[tagVoiceStreamPara]) -> int:
    """Opens voice talk under a media connection, not under a login: -1 when nParentID is unknown. *ptPara says afterwards
    which codec was agreed. Takes a media ID whatever the plug-in answers.
    """
    return _library.ClientAdapter_VoiceStreamConnect(pnMediaID, nParentID, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_VoiceStreamDisconnect(nMediaID: int) -> int:
    """Closes a voice connection and frees its media ID, whatever the plug-in answers. The parent stays open."""
    return _library.ClientAdapter_VoiceStreamDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_VoiceStreamSend(nMediaID: int, ptBuffer: Optional[tagBuffer]) -> int:
    """Sends voice, coded as the connection was opened for; the buffer is yours again on return."""
    return _library.ClientAdapter_VoiceStreamSend(nMediaID, ptBuffer)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamQueryConnect(pnMediaID: Any, nLoginID: int, ptFactor: Optional[tagHistoryStreamQueryFactor]) -> int:
    """Opens a query for recordings."""
    return _library.ClientAdapter_HistoryStreamQueryConnect(pnMediaID, nLoginID, ptFactor)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamMultiTypeQueryConnect(pnMediaID: Any, nLoginID: int, ptFactor: Optional[tagHistoryStreamMultiTypeQueryFactor]) -> int:
    """Opens a query over several record types."""
    return _library.ClientAdapter_HistoryStreamMultiTypeQueryConnect(pnMediaID, nLoginID, ptFactor)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamQueryNext(nMediaID: int, ptResult: Optional[tagHistoryStreamQueryResult]) -> int:
    """The next recording found, into *ptResult."""
    return _library.ClientAdapter_HistoryStreamQueryNext(nMediaID, ptResult)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamMultiTypeQueryNext(nMediaID: int, ptResult: Optional[tagHistoryStreamMultiTypeQueryResult]) -> int:
    """The next recording found, of several types, into *ptResult."""
    return _library.ClientAdapter_HistoryStreamMultiTypeQueryNext(nMediaID, ptResult)  # type: ignore[no-any-return]


def ClientAdapter_HistoryStreamQueryDisconnect(nMediaID: int) -> int:
    """Closes a recording query of either kind."""
    return _library.ClientAdapter_HistoryStreamQueryDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_FileQueryConnect(pnMediaID: Any, nParentID: int, ptFactor: Optional[tagFileQueryFactor]) -> int:
    """Opens a query for files, under a media connection: -1 when nParentID is unknown."""
    return _library.ClientAdapter_FileQueryConnect(pnMediaID, nParentID, ptFactor)  # type: ignore[no-any-return]


def ClientAdapter_FileQueryNext(nMediaID: int, ptResult: Optional[tagFileQueryResult]) -> int:
    """The next file found, into *ptResult."""
    return _library.ClientAdapter_FileQueryNext(nMediaID, ptResult)  # type: ignore[no-any-return]


def ClientAdapter_FileQueryDisconnect(nMediaID: int) -> int:
    """Closes a file query; its parent stays open."""
    return _library.ClientAdapter_FileQueryDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_HistoryLogQueryConnect(pnMediaID: Any, nLoginID: int, ptFactor: Optional[tagLogQueryFactor]) -> int:
    """Opens a query for log entries."""
    return _library.ClientAdapter_HistoryLogQueryConnect(pnMediaID, nLoginID, ptFactor)  # type: ignore[no-any-return]


def ClientAdapter_HistoryLogQueryNext(nMediaID: int, ptResult: Optional[tagLogQueryResult]) -> int:
    """The next log entry found, into *ptResult."""
    return _library.ClientAdapter_HistoryLogQueryNext(nMediaID, ptResult)  # type: ignore[no-any-return]


def ClientAdapter_HistoryLogQueryDisconnect(nMediaID: int) -> int:
    """Closes a log query."""
    return _library.ClientAdapter_HistoryLogQueryDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_TransmitHistoryStreamQueryConnect(pnMediaID: Any, nLoginID: int, ptFactor: Optional[tagTransmitHistoryStreamQueryFactor]) -> int:
    """Opens a recording query that the device passes on."""
    return _library.ClientAdapter_TransmitHistoryStreamQueryConnect(pnMediaID, nLoginID, ptFactor)  # type: ignore[no-any-return]


def ClientAdapter_TransmitHistoryStreamQueryNext(nMediaID: int, ptResult: Optional[tagHistoryStreamMultiTypeQueryResult]) -> int:
    """The next recording found by a query that was passed on, into *ptResult."""
    return _library.ClientAdapter_TransmitHistoryStreamQueryNext(nMediaID, ptResult)  # type: ignore[no-any-return]


def ClientAdapter_TransmitHistoryStreamQueryDisconnect(nMediaID: int) -> int:
    """Closes a query that was passed on."""
    return _library.ClientAdapter_TransmitHistoryStreamQueryDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_TransparentChannelConnect(pnMediaID: Any, nParentID: int, ptPara: Optional[tagTransparentChannelPara]) -> int:
    """Opens a channel through to the device's serial port, under a media connection: -1 when nParentID is unknown."""
    return _library.ClientAdapter_TransparentChannelConnect(pnMediaID, nParentID, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_TransparentChannelWrite(nMediaID: int, ptBuffer: Optional[tagBuffer]) -> int:
    """Writes through; the buffer is yours again on return."""
    return _library.ClientAdapter_TransparentChannelWrite(nMediaID, ptBuffer)  # type: ignore[no-any-return]


def ClientAdapter_TransparentChannelDisconnect(nMediaID: int) -> int:
    """Closes a transparent channel; its parent stays open."""
    return _library.ClientAdapter_TransparentChannelDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_FileUploadConnect(pnMediaID: Any, nLoginID: int, ptPara: Optional[tagFileUploadPara]) -> int:
    """Opens an upload; ptPara says which file."""
    return _library.ClientAdapter_FileUploadConnect(pnMediaID, nLoginID, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_FileUploadControl(nMediaID: int, eControl: int) -> int:
    """Starts, pauses or gives up an upload."""
    return _library.ClientAdapter_FileUploadControl(nMediaID, eControl)  # type: ignore[no-any-return]


def ClientAdapter_FileUploadDisconnect(nMediaID: int) -> int:
    """Closes an upload."""
    return _library.ClientAdapter_FileUploadDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_FileDownloadConnect(pnMediaID: Any, nLoginID: int, ptPara: Optional[tagFileDownloadPara]) -> int:
    """Opens a download; ptPara says which file, and afterwards how long it is."""
    return _library.ClientAdapter_FileDownloadConnect(pnMediaID, nLoginID, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_FileDownloadControl(nMediaID: int, eControl: int) -> int:
    """Starts, pauses or gives up a download."""
    return _library.ClientAdapter_FileDownloadControl(nMediaID, eControl)  # type: ignore[no-any-return]


def ClientAdapter_FileDownloadDisconnect(nMediaID: int) -> int:
    """Closes a download."""
    return _library.ClientAdapter_FileDownloadDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_StreamTransferConnect(pnMediaID: Any, nLoginID: int, dwChannel: int, ptPara: Optional[tagStreamTransferPara]) -> int:
    """Opens a connection that carries frames to a decoder's window dwChannel."""
    return _library.ClientAdapter_StreamTransferConnect(pnMediaID, nLoginID, dwChannel, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_StreamTransferSend(nMediaID: int, ptFrame: Optional[tagStreamTransferFrame]) -> int:
    """Sends one frame; it is yours again on return."""
    return _library.ClientAdapter_StreamTransferSend(nMediaID, ptFrame)  # type: ignore[no-any-return]


def ClientAdapter_StreamTransferDisconnect(nMediaID: int) -> int:
    """Closes a connection that carries frames."""
    return _library.ClientAdapter_StreamTransferDisconnect(nMediaID)  # type: ignore[no-any-return]


def ClientAdapter_DeviceRegisterListenStart(szAddress: Any, dwPort: int) -> int:
    """Listens for devices that register themselves, at an address of this machine. Register the callback first."""
    return _library.ClientAdapter_DeviceRegisterListenStart(szAddress, dwPort)  # type: ignore[no-any-return]


def ClientAdapter_DeviceRegisterListenStop() -> int:
    """Ends the listening."""
    return _library.ClientAdapter_DeviceRegisterListenStop()  # type: ignore[no-any-return]


def ClientAdapter_DeviceProbeStop() -> int:
    """Ends the looking that ClientAdapter_DeviceProbeStart began."""
    return _library.ClientAdapter_DeviceProbeStop()  # type: ignore[no-any-return]


def ClientAdapter_DeviceProbeResearch(ptPara: Optional[tagDeviceProbeParameter]) -> int:
    """Looks once more; what is found goes to the callback of ClientAdapter_DeviceProbeStart."""
    return _library.ClientAdapter_DeviceProbeResearch(ptPara)  # type: ignore[no-any-return]


def ClientAdapter_DeviceProbeSetDeviceConfig(pbyMac: Any, wPort: int, ptConfig: Optional[tagDeviceProbeConfig]) -> int:
    """Does nothing. Always 0."""
    return _library.ClientAdapter_DeviceProbeSetDeviceConfig(pbyMac, wPort, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DeviceProbeSetAllDeviceConfig(ptPara: Optional[tagDeviceProbeParameter], ptConfig: Optional[tagDeviceProbeConfig]) -> int:
    """Does nothing. Always 0."""
    return _library.ClientAdapter_DeviceProbeSetAllDeviceConfig(ptPara, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DeviceProbeSetConfig(pbyMac: Any, wPort: int, ptLogin: Optional[tagDeviceProbeUserLoginPara], ptConfig: Optional[tagDeviceProbeConfigInformation]) -> int:
    """Does nothing. Always 0."""
    return _library.ClientAdapter_DeviceProbeSetConfig(pbyMac, wPort, ptLogin, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DeviceProbeGetConfig(pbyMac: Any, wPort: int, ptLogin: Optional[tagDeviceProbeUserLoginPara], ptConfig: Optional[tagDeviceProbeConfigInformation]) -> int:
    """Does nothing. Always 0; *ptConfig stays as it was."""
    return _library.ClientAdapter_DeviceProbeGetConfig(pbyMac, wPort, ptLogin, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_StringToLattice(szText: Any, ptFont: Optional[tagFontPara], pLattice: Any, pdwWidth: Any, pdwHeight: Any, pdwLength: Any) -> int:
    """Renders a text as a dot lattice, into pLattice, and tells its width, height and length (tagFontPara)."""
    return _library.ClientAdapter_StringToLattice(szText, ptFont, pLattice, pdwWidth, pdwHeight, pdwLength)  # type: ignore[no-any-return]


def ClientAdapter_GetDeviceConfigFromHttp(szAddress: Any, ptConfig: Optional[tagDeviceConfigFromHttp]) -> int:
    """Reads a configuration over HTTP, into *ptConfig, without a login. Blocks for both plug-ins' waits, one after the
    other.
    """
    return _library.ClientAdapter_GetDeviceConfigFromHttp(szAddress, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_PTZControl(nLoginID: int, dwChannel: int, eCommand: int, dwPara1: int, dwPara2: int, dwPara3: int, dwPara4: int) -> int:
    """Moves a camera, sets and calls presets and tours. What the four parameters mean depends on the command: see
    ePTZControlCmdCode. Presets, tours and the position are read with ClientAdapter_GetIpcPara.
    """
    return _library.ClientAdapter_PTZControl(nLoginID, dwChannel, eCommand, dwPara1, dwPara2, dwPara3, dwPara4)  # type: ignore[no-any-return]


def ClientAdapter_DataExistCheck(nLoginID: int, dwChannel: int, dwType: int, dwMonth: int, szDays: Any, pdwLength: Any) -> int:
    """Which days of a month (202405) hold recordings, into szDays, one character for each day, and *pdwLength: see
    @ref storage.
    """
    return _library.ClientAdapter_DataExistCheck(nLoginID, dwChannel, dwType, dwMonth, szDays, pdwLength)  # type: ignore[no-any-return]


def ClientAdapter_DiskGroupManage(nLoginID: int, eAction: int, dwGroup: int, dwDisk: int, dwValue: int) -> int:
    """Manages groups of disks: see eDiskGroupOperation."""
    return _library.ClientAdapter_DiskGroupManage(nLoginID, eAction, dwGroup, dwDisk, dwValue)  # type: ignore[no-any-return]


def ClientAdapter_GetMultiTypeDataSize(nLoginID: int, dwChannel: int, eGroup: int, dwTypes: int, szBegin: Any, szEnd: Any, dwFlag: int, pdwSize: Any) -> int:
    """Size of the recordings of several types between two times, in mebibytes, into *pdwSize: see @ref storage."""
    return _library.ClientAdapter_GetMultiTypeDataSize(nLoginID, dwChannel, eGroup, dwTypes, szBegin, szEnd, dwFlag, pdwSize)  # type: ignore[no-any-return]


def ClientAdapter_GetDataSize(nLoginID: int, dwChannel: int, eGroup: int, eStreamType: int, szBegin: Any, szEnd: Any, dwFlag: int, pdwSize: Any) -> int:
    """Size of the recordings of one type between two times, in mebibytes, into *pdwSize: see @ref storage."""
    return _library.ClientAdapter_GetDataSize(nLoginID, dwChannel, eGroup, eStreamType, szBegin, szEnd, dwFlag, pdwSize)  # type: ignore[no-any-return]


def ClientAdapter_SetScreenSplitMode(nLoginID: int, dwScreen: int, dwMode: int, pdwChannels: Any) -> int:
    """Splits a decoder's screen into windows. dwMode (eScreenSplitMode) is their number, pdwChannels what each shows."""
    return _library.ClientAdapter_SetScreenSplitMode(nLoginID, dwScreen, dwMode, pdwChannels)  # type: ignore[no-any-return]


def ClientAdapter_PanelGetStatus(nLoginID: int, ptStatus: Optional[tagPanelStatusInfo]) -> int:
    """Reads a front panel, into *ptStatus."""
    return _library.ClientAdapter_PanelGetStatus(nLoginID, ptStatus)  # type: ignore[no-any-return]


def ClientAdapter_PanelSetStatus(nLoginID: int, ptStatus: Optional[tagPanelStatusInfo]) -> int:
    """Sets a front panel's lamps and texts."""
    return _library.ClientAdapter_PanelSetStatus(nLoginID, ptStatus)  # type: ignore[no-any-return]


def ClientAdapter_PanelControl(nLoginID: int, ptPara: Optional[tagPanelControlParameter]) -> int:
    """Presses a key, locks and unlocks the keys, beeps."""
    return _library.ClientAdapter_PanelControl(nLoginID, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_DecoderDynamicConnect(nLoginID: int, dwChannel: int, ptInfo: Optional[tagDecoderDynamicInformation]) -> int:
    """Lets a window show a source at once; it shows it until ClientAdapter_DecoderDynamicDisconnect."""
    return _library.ClientAdapter_DecoderDynamicConnect(nLoginID, dwChannel, ptInfo)  # type: ignore[no-any-return]


def ClientAdapter_DecoderDynamicDisconnect(nLoginID: int, dwChannel: int, dwFlag: int) -> int:
    """Ends what ClientAdapter_DecoderDynamicConnect began in the window. dwFlag: eDecoderDisconnect."""
    return _library.ClientAdapter_DecoderDynamicDisconnect(nLoginID, dwChannel, dwFlag)  # type: ignore[no-any-return]


def ClientAdapter_DecoderSetConfig(nLoginID: int, ptConfig: Optional[tagDecoderDeviceConfig]) -> int:
    """Writes a decoder's wall: where its screens and windows are."""
    return _library.ClientAdapter_DecoderSetConfig(nLoginID, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderGetConfig(nLoginID: int, ptConfig: Optional[tagDecoderDeviceConfig]) -> int:
    """Reads a decoder's wall, into *ptConfig and the list that it points at."""
    return _library.ClientAdapter_DecoderGetConfig(nLoginID, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderSetChannelConfig(nLoginID: int, dwChannel: int, ptConfig: Optional[tagDecoderChannelConfig]) -> int:
    """Writes how a window shows, and what it is bound to."""
    return _library.ClientAdapter_DecoderSetChannelConfig(nLoginID, dwChannel, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderGetChannelConfig(nLoginID: int, dwChannel: int, ptConfig: Optional[tagDecoderChannelConfig]) -> int:
    """Reads how a window shows, and what it is bound to, into *ptConfig."""
    return _library.ClientAdapter_DecoderGetChannelConfig(nLoginID, dwChannel, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderSetVideoStandard(nLoginID: int, dwChannel: int, ptConfig: Optional[tagDecoderVideoStandardConfig]) -> int:
    """Sets what signal the screen dwChannel gets."""
    return _library.ClientAdapter_DecoderSetVideoStandard(nLoginID, dwChannel, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderGetVideoStandard(nLoginID: int, dwChannel: int, ptConfig: Optional[tagDecoderVideoStandardConfig]) -> int:
    """Reads what signal the screen dwChannel gets, into *ptConfig."""
    return _library.ClientAdapter_DecoderGetVideoStandard(nLoginID, dwChannel, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderSetChannelLoopConfig(nLoginID: int, dwChannel: int, ptConfig: Optional[tagDecoderChannelLoopConfig]) -> int:
    """Writes the tour of sources that a window shows; ClientAdapter_DecoderChannelSetLoopEnable turns it on."""
    return _library.ClientAdapter_DecoderSetChannelLoopConfig(nLoginID, dwChannel, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderGetChannelLoopConfig(nLoginID: int, dwChannel: int, ptConfig: Optional[tagDecoderChannelLoopConfig]) -> int:
    """Reads the tour of sources that a window shows, into *ptConfig and the list that it points at."""
    return _library.ClientAdapter_DecoderGetChannelLoopConfig(nLoginID, dwChannel, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderChannelSetLoopEnable(nLoginID: int, dwChannel: int, eStatus: int) -> int:
    """Turns a window's tour on or off, or holds it."""
    return _library.ClientAdapter_DecoderChannelSetLoopEnable(nLoginID, dwChannel, eStatus)  # type: ignore[no-any-return]


def ClientAdapter_DecoderChannelGetLoopEnable(nLoginID: int, dwChannel: int, peStatus: Any) -> int:
    """Whether a window's tour is on, into *peStatus."""
    return _library.ClientAdapter_DecoderChannelGetLoopEnable(nLoginID, dwChannel, peStatus)  # type: ignore[no-any-return]


def ClientAdapter_DecoderGetLoopEnable(nLoginID: int, ptStatus: Optional[tagDecoderLoopStatus]) -> int:
    """Whether the tours of all windows are on, and where they are, into the list of *ptStatus."""
    return _library.ClientAdapter_DecoderGetLoopEnable(nLoginID, ptStatus)  # type: ignore[no-any-return]


def ClientAdapter_DecoderGetChannelInformation(nLoginID: int, dwChannel: int, ptInfo: Optional[tagDecoderChannelInformation]) -> int:
    """What a window can do, into *ptInfo."""
    return _library.ClientAdapter_DecoderGetChannelInformation(nLoginID, dwChannel, ptInfo)  # type: ignore[no-any-return]


def ClientAdapter_DecoderChannelGetStatus(nLoginID: int, ptStatus: Optional[tagDecoderChannelStatus]) -> int:
    """What all windows are doing, into the list of *ptStatus."""
    return _library.ClientAdapter_DecoderChannelGetStatus(nLoginID, ptStatus)  # type: ignore[no-any-return]


def ClientAdapter_DecoderChannelSetPlayStatus(nLoginID: int, dwChannel: int, ptPara: Optional[tagDecoderSetPlayStatusParameter]) -> int:
    """Plays a recording in a window, and steers it."""
    return _library.ClientAdapter_DecoderChannelSetPlayStatus(nLoginID, dwChannel, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_DecoderChannelGetPlayStatus(nLoginID: int, ptPara: Optional[tagDecoderGetPlayStatusParameter]) -> int:
    """Where the recording in a window is, into *ptPara, whose dwChannel names the window."""
    return _library.ClientAdapter_DecoderChannelGetPlayStatus(nLoginID, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_UploadLogo(nLoginID: int, dwChannel: int, ptPara: Optional[tagUploadLogoParameter]) -> int:
    """Sends a logo for a window to show; ClientAdapter_DecoderChannelLogoSwitch shows it."""
    return _library.ClientAdapter_UploadLogo(nLoginID, dwChannel, ptPara)  # type: ignore[no-any-return]


def ClientAdapter_DecoderChannelLogoSwitch(nLoginID: int, dwChannel: int, eControl: int) -> int:
    """Shows or hides the logo."""
    return _library.ClientAdapter_DecoderChannelLogoSwitch(nLoginID, dwChannel, eControl)  # type: ignore[no-any-return]


def ClientAdapter_DecoderChannelDisplayControl(nLoginID: int, dwChannel: int, ptStatus: Optional[tagDecoderDisplayStatus]) -> int:
    """Enlarges, restores, hides or freezes a window."""
    return _library.ClientAdapter_DecoderChannelDisplayControl(nLoginID, dwChannel, ptStatus)  # type: ignore[no-any-return]


def ClientAdapter_DecoderSetDisplayConfig(nLoginID: int, dwChannel: int, ptConfig: Optional[tagDecoderDisplayConfig]) -> int:
    """Writes how the screen dwChannel shows."""
    return _library.ClientAdapter_DecoderSetDisplayConfig(nLoginID, dwChannel, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderGetDisplayConfig(nLoginID: int, dwChannel: int, ptConfig: Optional[tagDecoderDisplayConfig]) -> int:
    """Reads how the screen dwChannel shows, into *ptConfig."""
    return _library.ClientAdapter_DecoderGetDisplayConfig(nLoginID, dwChannel, ptConfig)  # type: ignore[no-any-return]


def ClientAdapter_DecoderChannelGetOSDTime(nLoginID: int, dwChannel: int, ptTime: Optional[tagTimeInfo], dwFlag: int) -> int:
    """The time that a window's picture or its screen's clock shows, into *ptTime. dwFlag: eOsdTime."""
    return _library.ClientAdapter_DecoderChannelGetOSDTime(nLoginID, dwChannel, ptTime, dwFlag)  # type: ignore[no-any-return]


def ClientAdapter_GetSDKVersion(szAddress: Any, dwPort: int, dwTimeout: int, peVersion: Any) -> int:
    """Which version a device speaks, into *peVersion, without a login. dwTimeout: milliseconds to wait, 0: 5000. Blocks
    for the plug-ins' waits one after the other.
    """
    return _library.ClientAdapter_GetSDKVersion(szAddress, dwPort, dwTimeout, peVersion)  # type: ignore[no-any-return]


def ClientAdapter_DeviceIsOnline(szAddress: Any, dwPort: int, dwTimeout: int) -> int:
    """Lets the plug-ins see whether a device answers, without a login. Always 0, whatever they answer. Blocks as
    ClientAdapter_GetSDKVersion.
    """
    return _library.ClientAdapter_DeviceIsOnline(szAddress, dwPort, dwTimeout)  # type: ignore[no-any-return]


def ClientAdapter_GetFileHeader(dwType: int, pbyHeader: Any, pdwLength: Any) -> int:
    """The header that recorded files of a type (eFileFormat) begin with, into pbyHeader. *pdwLength: the room there, then
    the header's length.
    """
    return _library.ClientAdapter_GetFileHeader(dwType, pbyHeader, pdwLength)  # type: ignore[no-any-return]


def TessaroExtra_GetStreamStatistics(nMediaID: int, ptInfo: Optional[tagRTSPPackageInfo]) -> int:
    """How an RTSP stream is doing: its connection, its frames and losses since it was opened, into *ptInfo. -1: unknown
    media ID. 0, *ptInfo untouched, from the other protocols.
    """
    return _library.TessaroExtra_GetStreamStatistics(nMediaID, ptInfo)  # type: ignore[no-any-return]


def TessaroExtra_ResultText(nResult: int) -> bytes:
    """What a result means, in English, for a log or a message: those of eResult and ePluginResult. Any other number gets a
    text that says so. Never null; the text stays valid as long as the library is loaded.
    """
    return _library.TessaroExtra_ResultText(nResult)  # type: ignore[no-any-return]


def TessaroExtra_Version() -> bytes:
    """The library's version and build, for example "1.0.0, Build 1.0.0.29024". The text stays valid as long as the library
    is loaded.
    """
    return _library.TessaroExtra_Version()  # type: ignore[no-any-return]


def TessaroExtra_GetEntryPoint(eType: int, dwIndex: int, ptEntry: Optional[tagEntryPoint]) -> int:
    """The entry point that eType's plug-in is asked for as number dwIndex, from 0, into *ptEntry. 217
    (eResultNoMoreEntries): there are no more. 4: no such protocol. 203: ptEntry is null or too small a record. The
    names are the same whether or not a plug-in is loaded. Not beside ClientAdapter_Start and ClientAdapter_Stop.
    """
    return _library.TessaroExtra_GetEntryPoint(eType, dwIndex, ptEntry)  # type: ignore[no-any-return]


def TessaroExtra_DiagnosticCB(pfnLine: Any) -> int:
    """The library's diagnostic lines go to pfnLine too, beside standard output, for the whole process; null ends it.
    Always 0. May be called at any time; a line that another thread writes just then may still go to the earlier
    function.
    """
    return _library.TessaroExtra_DiagnosticCB(pfnLine or null(DiagnosticCallback))  # type: ignore[no-any-return]
