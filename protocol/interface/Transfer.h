/// @file
/// Transparent channels, file transfer, stream transfer.

#ifndef TESSARO_PROTOCOL_INTERFACE_TRANSFER_H
#define TESSARO_PROTOCOL_INTERFACE_TRANSFER_H

#include "Common.h"
#include "Frames.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup transferrecords Transparent channel, file transfer, stream transfer
/// Bytes, files and frames to a device and back.
/// @{

/// How a serial port is wired.
TESSARO_ENUM(eSerialKind){
    eSerialRS232 = 0, ///< RS-232
    eSerialRS485 = 1, ///< RS-485, one direction at a time
};

/// What checks a serial character.
TESSARO_ENUM(eSerialParity){
    eParityNone = 0, ///< nothing
    eParityOdd = 1,  ///< an odd number of ones
    eParityEven = 2, ///< an even number of ones
};

/// How a serial port's flow is controlled.
TESSARO_ENUM(eSerialFlow){
    eFlowNone = 0,     ///< not at all
    eFlowHardware = 1, ///< RTS and CTS
    eFlowSoftware = 2, ///< XON and XOFF
};

/// A serial port to be opened through the device. Filled by the application. The port belongs to one channel at a
/// time: eResultBusy. eResultNoChannel: no such port.
typedef struct tagTransparentChannelPara
{
    uint32_t dwSize;     ///< sizeof this record
    uint32_t dwPort;     ///< the device's serial port, from 0
    uint32_t dwKind;     ///< eSerialKind
    uint32_t dwBaudRate; ///< bits per second; 0: 9600
    uint32_t dwDataBits; ///< 5 to 8; 0: 8
    uint32_t dwStopBits; ///< 1 or 2; 0: 1
    uint32_t dwParity;   ///< eSerialParity
    uint32_t dwFlow;     ///< eSerialFlow
} tagTransparentChannelPara;

/// Steers a file transfer. One that was just opened waits for eTransferStart.
TESSARO_ENUM(eFileTransferControl){
    eTransferStart = 1, ///< begin, or go on after a pause
    eTransferPause = 2, ///< stop for now
    eTransferStop = 3,  ///< give up: what came over is thrown away, only closing is left
};

/// How a recording is packed.
TESSARO_ENUM(eFileFormat){
    eFileFormatNative = 0, ///< as it lies on the device; the header is that of ClientAdapter_GetFileHeader
    eFileFormatMp4 = 1,    ///< fragmented MP4
    eFileFormatMpegTs = 2, ///< MPEG transport stream
};

/// tagFileUploadState::dwState.
TESSARO_ENUM(eUploadState){
    eUploadRunning = 0,  ///< bytes are on their way
    eUploadFinished = 1, ///< the device has taken the whole file, checked it, and keeps it
    eUploadFailed = 2,   ///< it has not, and kept nothing; tagFileUploadState::dwResult says why
};

/// A file to send: from a file of this machine, or from memory. Filled by the application. Progress goes to the
/// callback of ClientAdapter_FileUploadCB; its last call says finished or failed.
typedef struct tagFileUploadPara
{
    uint32_t dwSize;                               ///< sizeof this record
    uint32_t dwKind;                               ///< eFileKind; eFileFirmware restarts the device once it is finished
    uint64_t ullLength;                            ///< bytes at pbyData
    char szPath[256];                              ///< the file to send; empty: send pbyData
    char szFile[256];                              ///< its name on the device; empty: the device finds one
    TESSARO_POINTER(unsigned char const* pbyData); ///< must stay until the upload is closed
} tagFileUploadPara;

/// A file to fetch: a file by its name, or a channel's recordings between two times. Its blocks go in order to the
/// callback of ClientAdapter_FileDownloadCB. The last call has no bytes: pData is null, and dwLength is 0 when the
/// whole file has come, else the ePluginResult that ended it.
typedef struct tagFileDownloadPara
{
    uint32_t dwSize;       ///< sizeof this record, by the application
    uint32_t dwKind;       ///< eFileKind
    uint32_t dwChannel;    ///< the device's channel, from 0; without szFile
    uint32_t dwTypes;      ///< eHistoryStreamType bits, 0: all; without szFile
    uint32_t dwStreamKind; ///< eStreamKind, 0: the main stream; without szFile
    uint32_t dwFormat;     ///< eFileFormat, of recordings
    int64_t llStartUs;     ///< begin, microseconds since 1970 UTC; 0: where the recordings begin
    int64_t llEndUs;       ///< end, microseconds since 1970 UTC; 0: where the recordings end
    uint64_t ullOffset;    ///< begin at this byte of the file, to go on with a transfer that broke off
    uint64_t ullLength;    ///< out: bytes of the whole file, 0: not known beforehand
    char szFile[256];      ///< the file's name on the device, from a query; empty: channel and times
    char szPath[256];      ///< a file of this machine to write too, appended to if ullOffset isn't 0; empty: none
} tagFileDownloadPara;

/// What frames a connection will carry to a device. Filled by the application. dwChannel of
/// ClientAdapter_StreamTransferConnect: the window of a decoder, which must be bound to eDecoderSourceTransfer.
typedef struct tagStreamTransferPara
{
    uint32_t dwSize;       ///< sizeof this record
    uint32_t dwVideoCodec; ///< eMediaCodec; 0: no video
    uint32_t dwWidth;      ///< pixels, 0: not known beforehand
    uint32_t dwHeight;     ///< pixels, 0: not known beforehand
    uint32_t dwFrameRate;  ///< frames per 1000 s, 0: not known beforehand
    uint32_t dwAudioCodec; ///< eMediaCodec; 0: no audio
    uint32_t dwSampleRate; ///< samples per second
    uint32_t dwChannels;   ///< audio channels
} tagStreamTransferPara;

/// One frame to send. Filled by the application; its data is the application's again when the call returns.
typedef struct tagStreamTransferFrame
{
    uint32_t dwSize;                               ///< sizeof this record
    uint32_t dwMediaType;                          ///< eMediaType
    uint32_t dwCodec;                              ///< eMediaCodec
    uint32_t dwFlags;                              ///< eFrameFlag bits
    int64_t llPresentationTimeUs;                  ///< microseconds on the stream's own time line
    uint32_t dwLength;                             ///< bytes at pbyData
    uint32_t dwReserved;                           ///< 0
    TESSARO_POINTER(unsigned char const* pbyData); ///< one access unit of video, or one packet of audio
} tagStreamTransferFrame;

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagTransparentChannelPara, 32, 32);
TESSARO_RECORD(tagFileUploadPara, 536, 536);
TESSARO_RECORD(tagFileDownloadPara, 568, 568);
TESSARO_RECORD(tagStreamTransferPara, 32, 32);
TESSARO_RECORD(tagStreamTransferFrame, 40, 40);

#endif
