/// @file
/// Video decoders and the walls that they drive.

#ifndef TESSARO_PROTOCOL_INTERFACE_DECODERS_H
#define TESSARO_PROTOCOL_INTERFACE_DECODERS_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup decoderrecords Decoders
/// A decoder shows streams on screens. Its screens stand in a grid, row by row, and make one wall.
///
/// **Windows.** What a stream is shown in is a window (ONVIF: a pane), and "channel" of the ClientAdapter_Decoder
/// functions is a window's number. A window may lie anywhere on the wall, also across screens;
/// ClientAdapter_DecoderSetConfig writes where all of them lie. ClientAdapter_SetScreenSplitMode splits one screen
/// evenly in one call; window n of screen s then has the number `s * eWindowsOfScreen + n`. Places are ten-thousandths
/// of the whole wall, from its top left.
///
/// **What a window shows** is the first of these that there is:
///
/// 1. a recording: ClientAdapter_DecoderChannelSetPlayStatus;
/// 2. what was connected for now: ClientAdapter_DecoderDynamicConnect;
/// 3. its tour (loop) of sources, while it is on: ClientAdapter_DecoderSetChannelLoopConfig;
/// 4. the source that it is bound to: ClientAdapter_DecoderSetChannelConfig;
/// 5. nothing: the background.
///
/// When one ends, the next one shows. Layout, bindings and tours are kept over a restart; the first two are not.
///
/// **Looking at it.** ClientAdapter_ImageCapture with eCaptureWindow, eCaptureScreen or eCaptureWall gives a picture of
/// what is shown; ClientAdapter_DecoderChannelGetStatus says it in numbers; eEventWindow reports each change.
///
/// A window, screen or source that isn't there: eResultNoChannel. That a source can't be reached is no error of a call:
/// it shows in the window's state.
/// @{

/// Numbers of a decoder.
TESSARO_ENUM(eDecoderNumber){
    eWindowsOfScreen = 64, ///< the windows of a screen that was split begin at a multiple of this
};

/// dwMode of ClientAdapter_SetScreenSplitMode: the number of windows. 1, 4, 9, 16, 25 and 36 are even grids.
/// pdwChannels points at one word for each window: the decoder's own channel to bind it to, or TESSARO_ALL for none;
/// null: none. What the screen's windows were bound to before is forgotten.
TESSARO_ENUM(eScreenSplitMode){
    eSplit1 = 1,   ///< one window
    eSplit4 = 4,   ///< 2 x 2
    eSplit6 = 6,   ///< one of two thirds, and five around it
    eSplit8 = 8,   ///< one of three quarters, and seven around it
    eSplit9 = 9,   ///< 3 x 3
    eSplit16 = 16, ///< 4 x 4
    eSplit25 = 25, ///< 5 x 5
    eSplit36 = 36, ///< 6 x 6
};

/// Where a window's pictures come from.
TESSARO_ENUM(eDecoderSourceKind){
    eDecoderSourceNone = 0,     ///< nothing
    eDecoderSourceAddress = 1,  ///< a stream's address: szAddress is the whole URL
    eDecoderSourceDevice = 2,   ///< a channel of another device that the decoder logs in to
    eDecoderSourceChannel = 3,  ///< a channel of the decoder's own
    eDecoderSourceTransfer = 4, ///< frames that the application sends: ClientAdapter_StreamTransferConnect
};

/// A source of pictures. Fields that the kind doesn't need are 0. On a read szPassword is empty; written empty for the
/// address and user that were there before, it stays as it was.
typedef struct tagDecoderSource
{
    uint32_t dwKind;       ///< eDecoderSourceKind
    uint32_t dwProtocol;   ///< eProtocolType that the device speaks
    uint32_t dwPort;       ///< the device's port; 0: the protocol's usual one
    uint32_t dwChannel;    ///< the device's channel, from 0
    uint32_t dwStreamKind; ///< eStreamKind; 0: as fits the window's size
    uint32_t dwTransport;  ///< eRtspTransport
    char szAddress[256];   ///< the stream's URL, or the device's host name or address; no user name or password in it
    char szUserName[32];   ///< empty: without
    char szPassword[32];   ///< at most 31 bytes
} tagDecoderSource;

/// A window's place on the wall.
typedef struct tagDecoderWindow
{
    uint32_t dwChannel;  ///< the window's number, 0 to 1023
    uint32_t dwLeft;     ///< ten-thousandths of the wall's width
    uint32_t dwTop;      ///< ten-thousandths of the wall's height
    uint32_t dwWidth;    ///< ten-thousandths of the wall's width, at least 1
    uint32_t dwHeight;   ///< ten-thousandths of the wall's height, at least 1
    uint32_t dwLayer;    ///< windows with a higher one lie before those with a lower one
    uint32_t bHidden;    ///< 1: it is there, but not shown; its stream goes on
    uint32_t dwReserved; ///< 0
} tagDecoderWindow;

/// A wall: its screens and its windows (ONVIF: Layout). On a write the windows take the place of all there were; one
/// that keeps its number keeps what it shows. On a read dwCount windows exist, of which the first dwCapacity are
/// filled.
typedef struct tagDecoderDeviceConfig
{
    uint32_t dwSize;      ///< sizeof this record, by the application
    uint32_t dwRows;      ///< rows of screens
    uint32_t dwColumns;   ///< screens in a row; dwRows * dwColumns is at most dwScreens
    uint32_t dwScreens;   ///< screens that the decoder can drive; filled on a read, not looked at on a write
    char szName[64];      ///< the layout's name, UTF-8
    uint32_t dwEntrySize; ///< sizeof(tagDecoderWindow), by the application
    uint32_t dwCapacity;  ///< on a read: entries that there is room for
    uint32_t dwCount;     ///< on a write: entries; on a read: windows that there are
    uint32_t dwReserved;  ///< 0
    TESSARO_POINTER(tagDecoderWindow* ptEntries); ///< the application's
} tagDecoderDeviceConfig;

/// How a picture is fitted to a window of another shape.
TESSARO_ENUM(eDecoderFit){
    eFitWhole = 0,   ///< all of it, with the background beside it
    eFitStretch = 1, ///< all of it, out of shape
    eFitFill = 2,    ///< as much of it as fills the window
};

/// What a window shows when no frame comes.
TESSARO_ENUM(eDecoderLoss){
    eLossFreeze = 0,  ///< the last picture
    eLossBlank = 1,   ///< the background
    eLossMessage = 2, ///< a message, "no signal"
};

/// How a window shows, and what it is bound to.
typedef struct tagDecoderChannelConfig
{
    uint32_t dwSize;          ///< sizeof this record, by the application
    uint32_t dwFit;           ///< eDecoderFit
    uint32_t dwLoss;          ///< eDecoderLoss
    uint32_t dwLossSeconds;   ///< how long no frame must come before that; 0: 5
    uint32_t dwBufferMs;      ///< how long frames are held to even out their arrival; 0: as short as can be
    uint32_t bAudio;          ///< 1: its sound is heard; at most one window of a screen
    uint32_t dwVolume;        ///< percent
    uint32_t bShowName;       ///< 1: szName is written into the picture
    uint32_t bShowTime;       ///< 1: the time of the frame is written into the picture
    uint32_t dwBorder;        ///< width of a border in pixels; 0: none
    uint32_t dwBorderColour;  ///< 0xRRGGBB
    uint32_t dwReserved;      ///< 0
    char szName[64];          ///< the window's name, UTF-8
    tagDecoderSource tSource; ///< what it is bound to
} tagDecoderChannelConfig;

/// What a window is to show for now: ClientAdapter_DecoderDynamicConnect. Filled by the application.
typedef struct tagDecoderDynamicInformation
{
    uint32_t dwSize;          ///< sizeof this record
    uint32_t dwSeconds;       ///< how long; 0: until ClientAdapter_DecoderDynamicDisconnect
    tagDecoderSource tSource; ///< what
} tagDecoderDynamicInformation;

/// dwFlag of ClientAdapter_DecoderDynamicDisconnect.
TESSARO_ENUM(eDecoderDisconnect){
    eDecoderRestore = 0, ///< the window shows what comes next in its order
    eDecoderBlank = 1,   ///< the window shows its background until something new is connected
};

/// Output standards of a screen.
TESSARO_ENUM(eVideoStandard){
    eStandardAutomatic = 0, ///< what the screen says that it likes best
    eStandardPal = 1,       ///< analogue, 720x576, 25 frames
    eStandardNtsc = 2,      ///< analogue, 720x480, 30 frames
    eStandardMode = 3,      ///< digital, as the record's size and rate say
};

/// What signal a screen gets. dwChannel of the function is the screen, from 0.
typedef struct tagDecoderVideoStandardConfig
{
    uint32_t dwSize;      ///< sizeof this record, by the application
    uint32_t dwStandard;  ///< eVideoStandard
    uint32_t dwWidth;     ///< pixels; taken with eStandardMode, filled with all
    uint32_t dwHeight;    ///< pixels
    uint32_t dwFrameRate; ///< frames per 1000 s: 60000
    uint32_t bInterlaced; ///< 1: half pictures
} tagDecoderVideoStandardConfig;

/// One stop of a window's tour.
typedef struct tagDecoderLoopEntry
{
    uint32_t dwDwellSeconds;  ///< how long it shows, from its first frame on; 0: 10
    uint32_t dwPreset;        ///< the camera is sent to this preset first; 0: to none
    tagDecoderSource tSource; ///< what shows
} tagDecoderLoopEntry;

/// A window's tour: sources in turn. On a write the entries take the place of all there were, and none ends the tour.
/// One whose source can't be reached within dwSkipSeconds is skipped until the next round.
typedef struct tagDecoderChannelLoopConfig
{
    uint32_t dwSize;                                 ///< sizeof this record, by the application
    uint32_t dwSkipSeconds;                          ///< 0: 5
    uint32_t dwEntrySize;                            ///< sizeof(tagDecoderLoopEntry), by the application
    uint32_t dwCapacity;                             ///< on a read: entries that there is room for
    uint32_t dwCount;                                ///< on a write: entries; on a read: entries that there are
    uint32_t dwReserved;                             ///< 0
    TESSARO_POINTER(tagDecoderLoopEntry* ptEntries); ///< the application's
} tagDecoderChannelLoopConfig;

/// Whether a window's tour is on.
TESSARO_ENUM(eDecoderChannelStatus){
    eDecoderLoopOff = 0,  ///< off
    eDecoderLoopOn = 1,   ///< on
    eDecoderLoopHold = 2, ///< on, but stays where it is until it is switched on again
};

/// One window's tour.
typedef struct tagDecoderLoopState
{
    uint32_t dwChannel;     ///< the window
    uint32_t dwStatus;      ///< eDecoderChannelStatus
    uint32_t dwEntry;       ///< the entry that shows, from 0
    uint32_t dwRemainingMs; ///< how long it still does
} tagDecoderLoopState;

/// The tours of all windows that have one.
typedef struct tagDecoderLoopStatus
{
    uint32_t dwSize;                                 ///< sizeof this record, by the application
    uint32_t dwEntrySize;                            ///< sizeof(tagDecoderLoopState), by the application
    uint32_t dwCapacity;                             ///< entries that there is room for, by the application
    uint32_t dwCount;                                ///< entries that there are, by the plug-in
    TESSARO_POINTER(tagDecoderLoopState* ptEntries); ///< the application's; the first dwCapacity of dwCount are filled
} tagDecoderLoopStatus;

/// Bits of tagDecoderChannelInformation::dwAbilities.
TESSARO_ENUM(eDecoderAbility){
    eDecoderCanLoop = 1,      ///< tours
    eDecoderCanPlay = 2,      ///< recordings
    eDecoderCanLogo = 4,      ///< logos
    eDecoderCanAudio = 8,     ///< sound
    eDecoderCanTransfer = 16, ///< frames that the application sends
};

/// What a window can do. Filled by the plug-in, but for dwSize.
typedef struct tagDecoderChannelInformation
{
    uint32_t dwSize;         ///< sizeof this record, by the application
    uint32_t dwAbilities;    ///< eDecoderAbility bits
    uint32_t dwCodecs;       ///< bit n: decodes eMediaCodec n
    uint32_t dwMaxWidth;     ///< of a picture to decode, pixels
    uint32_t dwMaxHeight;    ///< of a picture to decode, pixels
    uint32_t dwMaxFrameRate; ///< frames per 1000 s
    uint32_t dwMaxLoop;      ///< entries of a tour at most
    uint32_t dwScreen;       ///< the screen that its top left corner lies on
} tagDecoderChannelInformation;

/// What a window is doing.
TESSARO_ENUM(eDecoderWindowState){
    eWindowEmpty = 0,      ///< shows its background
    eWindowConnecting = 1, ///< looks for its source
    eWindowShowing = 2,    ///< shows a live stream
    eWindowPlaying = 3,    ///< plays a recording
    eWindowPaused = 4,     ///< stands in a recording
    eWindowNoSignal = 5,   ///< the source was there, and no frame comes; tried again
    eWindowRefused = 6,    ///< the source can't be reached or refused; tried again
};

/// One window: what it shows.
typedef struct tagDecoderWindowStatus
{
    uint32_t dwChannel;       ///< the window
    uint32_t dwState;         ///< eDecoderWindowState
    uint32_t dwShows;         ///< which of the five it shows, 1 to 5, as numbered at @ref decoderrecords
    uint32_t dwResult;        ///< ePluginResult that the source last ended with, else 0
    uint32_t dwCodec;         ///< eMediaCodec, 0 while nothing comes
    uint32_t dwWidth;         ///< of the stream's picture, pixels
    uint32_t dwHeight;        ///< of the stream's picture, pixels
    uint32_t dwFrameRate;     ///< frames per 1000 s, measured
    uint32_t dwBitRate;       ///< kilobits per second, measured
    uint32_t dwLost;          ///< packets lost since the source was connected
    uint32_t dwKind;          ///< eDecoderSourceKind of the source
    uint32_t dwSourceChannel; ///< the source's channel
    char szAddress[256];      ///< the source's address
} tagDecoderWindowStatus;

/// What all windows are doing.
typedef struct tagDecoderChannelStatus
{
    uint32_t dwSize;                                    ///< sizeof this record, by the application
    uint32_t dwEntrySize;                               ///< sizeof(tagDecoderWindowStatus), by the application
    uint32_t dwCapacity;                                ///< entries that there is room for, by the application
    uint32_t dwCount;                                   ///< entries that there are, by the plug-in
    TESSARO_POINTER(tagDecoderWindowStatus* ptEntries); ///< the application's; dwCapacity of dwCount are filled
} tagDecoderChannelStatus;

/// What to do with a recording in a window.
TESSARO_ENUM(eDecoderPlayAction){
    eDecoderPlayOpen = 1,  ///< play the recordings of tSource between two times
    eDecoderPlayPause = 2, ///< stand still
    eDecoderPlayGo = 3,    ///< go on
    eDecoderPlayStep = 4,  ///< show the next frame and stand still
    eDecoderPlaySeek = 5,  ///< go to llPositionUs
    eDecoderPlaySpeed = 6, ///< play at dwSpeed
    eDecoderPlayClose = 7, ///< the window shows what comes next in its order
};

/// Steers a recording in a window. Filled by the application; only what the action names.
typedef struct tagDecoderSetPlayStatusParameter
{
    uint32_t dwSize;          ///< sizeof this record
    uint32_t dwAction;        ///< eDecoderPlayAction
    uint32_t dwSpeed;         ///< eDecoderPlaySpeed: as ePlaybackSpeed
    uint32_t dwTypes;         ///< eDecoderPlayOpen: eHistoryStreamType bits, 0: all
    int64_t llPositionUs;     ///< eDecoderPlaySeek: microseconds since 1970 UTC
    int64_t llStartUs;        ///< eDecoderPlayOpen: begin, microseconds since 1970 UTC
    int64_t llEndUs;          ///< eDecoderPlayOpen: end, microseconds since 1970 UTC
    tagDecoderSource tSource; ///< eDecoderPlayOpen: whose recordings
} tagDecoderSetPlayStatusParameter;

/// Where a recording in a window is.
typedef struct tagDecoderGetPlayStatusParameter
{
    uint32_t dwSize;      ///< sizeof this record, by the application
    uint32_t dwChannel;   ///< the window, by the application
    uint32_t dwState;     ///< eWindowPlaying, eWindowPaused; anything else: it shows no recording
    uint32_t dwSpeed;     ///< as ePlaybackSpeed
    int64_t llPositionUs; ///< time of the picture, microseconds since 1970 UTC
    int64_t llStartUs;    ///< begin, microseconds since 1970 UTC
    int64_t llEndUs;      ///< end, microseconds since 1970 UTC
} tagDecoderGetPlayStatusParameter;

/// A picture to lay over a window. Filled by the application. It is kept over a restart, and shown or hidden by
/// ClientAdapter_DecoderChannelLogoSwitch; a new one is hidden.
typedef struct tagUploadLogoParameter
{
    uint32_t dwSize;                               ///< sizeof this record
    uint32_t dwFormat;                             ///< eImageFormat
    uint32_t dwLeft;                               ///< ten-thousandths of the window's width
    uint32_t dwTop;                                ///< ten-thousandths of the window's height
    uint32_t dwWidth;                              ///< ten-thousandths of the window's width; 0: the picture's own size
    uint32_t dwOpacity;                            ///< percent; 0: 100
    uint32_t dwLength;                             ///< bytes at pbyData
    uint32_t dwReserved;                           ///< 0
    TESSARO_POINTER(unsigned char const* pbyData); ///< an image file; the application's again when the call returns
} tagUploadLogoParameter;

/// Shows or hides a logo.
TESSARO_ENUM(eDeviceChannelControl){
    eChannelHide = 0, ///< hide
    eChannelShow = 1, ///< show
};

/// What to do with a window's place for now.
TESSARO_ENUM(eDecoderDisplayAction){
    eDisplayRestore = 0,    ///< back to where the layout has it
    eDisplayFillScreen = 1, ///< over its whole screen, before all others
    eDisplayFillWall = 2,   ///< over the whole wall, before all others
    eDisplayHide = 3,       ///< not shown; its stream goes on
    eDisplayFreeze = 4,     ///< stays at the picture that it shows
};

/// Enlarges, hides or freezes a window: ClientAdapter_DecoderChannelDisplayControl. Not kept over a restart.
typedef struct tagDecoderDisplayStatus
{
    uint32_t dwSize;       ///< sizeof this record, by the application
    uint32_t dwAction;     ///< eDecoderDisplayAction
    uint32_t dwZoomLeft;   ///< the part of the picture to show, ten-thousandths of its width
    uint32_t dwZoomTop;    ///< ten-thousandths of its height
    uint32_t dwZoomWidth;  ///< ten-thousandths of its width; 0: all of it
    uint32_t dwZoomHeight; ///< ten-thousandths of its height; 0: all of it
} tagDecoderDisplayStatus;

/// How a screen shows. dwChannel of the function is the screen, from 0. Levels are percent, 50 from the factory.
typedef struct tagDecoderDisplayConfig
{
    uint32_t dwSize;        ///< sizeof this record, by the application
    uint32_t bOn;           ///< 1: the screen is lit, 0: dark
    uint32_t dwBrightness;  ///< percent
    uint32_t dwContrast;    ///< percent
    uint32_t dwSaturation;  ///< percent
    uint32_t dwHue;         ///< percent; 50: unchanged
    uint32_t dwBackground;  ///< colour where no window shows anything, 0xRRGGBB
    uint32_t bShowClock;    ///< 1: the decoder's local time is written on the screen
    uint32_t dwClockLeft;   ///< ten-thousandths of the screen's width
    uint32_t dwClockTop;    ///< ten-thousandths of the screen's height
    uint32_t dwClockHeight; ///< of its characters, ten-thousandths of the screen's height; 0: 400
    uint32_t dwReserved;    ///< 0
} tagDecoderDisplayConfig;

/// dwFlag of ClientAdapter_DecoderChannelGetOSDTime.
TESSARO_ENUM(eOsdTime){
    eOsdFrameTime = 0, ///< when the picture that the window shows was taken
    eOsdClock = 1,     ///< what the clock on the window's screen shows
};

/// @}

/// @}

TESSARO_C_END

TESSARO_STATIC_ASSERT(sizeof(tagDecoderSource) == 344, "tagDecoderSource");
TESSARO_STATIC_ASSERT(sizeof(tagDecoderWindow) == 32, "tagDecoderWindow");
TESSARO_STATIC_ASSERT(sizeof(tagDecoderLoopEntry) == 352, "tagDecoderLoopEntry");
TESSARO_STATIC_ASSERT(sizeof(tagDecoderLoopState) == 16, "tagDecoderLoopState");
TESSARO_STATIC_ASSERT(sizeof(tagDecoderWindowStatus) == 304, "tagDecoderWindowStatus");
TESSARO_RECORD(tagDecoderDeviceConfig, 104, 104);
TESSARO_RECORD(tagDecoderChannelConfig, 456, 456);
TESSARO_RECORD(tagDecoderDynamicInformation, 352, 352);
TESSARO_RECORD(tagDecoderVideoStandardConfig, 24, 24);
TESSARO_RECORD(tagDecoderChannelLoopConfig, 32, 32);
TESSARO_RECORD(tagDecoderLoopStatus, 24, 24);
TESSARO_RECORD(tagDecoderChannelInformation, 32, 32);
TESSARO_RECORD(tagDecoderChannelStatus, 24, 24);
TESSARO_RECORD(tagDecoderSetPlayStatusParameter, 384, 384);
TESSARO_RECORD(tagDecoderGetPlayStatusParameter, 40, 40);
TESSARO_RECORD(tagUploadLogoParameter, 40, 40);
TESSARO_RECORD(tagDecoderDisplayStatus, 24, 24);
TESSARO_RECORD(tagDecoderDisplayConfig, 48, 48);

#endif
