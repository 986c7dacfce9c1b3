#pragma once

#include "../system/Export.h"
#include "PluginInterface.h"

class IProtocol;

namespace Adapter_ProtocolSet
{
/// What can be asked of a device, whatever protocol it speaks. Each protocol's binding implements it on its plug-in;
/// this is the only place where an operation's signature is written.
///
/// A handle (h...) is the plug-in's own: the library hands it back and never looks inside. A ph... parameter receives
/// a new one. pfn... callbacks run on the plug-in's threads with dwUser as their last argument. Pointers are the
/// caller's and need not outlive the call. Every operation answers 0 or the plug-in's own result; 1 when the plug-in
/// lacks the entry point. It runs on the caller's thread and blocks as long as the plug-in does. Operations that aren't
/// pure succeed here without effect.
/// @ingroup classes
class TESSARO_API CClientProtocolBase
{
public:
    // --- session -----------------------------------------------------------------------------------------------------
    /// Starts the plug-in. The protocol set hands it SetProtocolInterface right after a 0.
    virtual int Start() = 0;
    /// Stops the plug-in: no callback of it runs afterwards.
    virtual int Stop() = 0;
    /// Opens a login. *phLogin: the plug-in's handle of it, written on success.
    virtual int UserLogin(void** phLogin, tagUserLoginPara* ptPara) = 0;
    /// Closes a login. Connections opened under it stay open until each is closed.
    virtual int UserLogout(void* hLogin) = 0;
    /// The access level of the login's user.
    virtual int GetLoginLevel(void* /*hLogin*/, int* /*pnLevel*/) { return 0; }
    /// The device's hardware address. nLength: bytes at pbyMac.
    virtual int GetLoginMac(void* /*hLogin*/, unsigned char* /*pbyMac*/, int /*nLength*/) { return 0; }
    /// What came in on a connection. nLength: bytes at pInfo.
    virtual int GetPackInfo(void* /*hStream*/, void* /*pInfo*/, int /*nLength*/) { return 0; }
    /// Whether the login is still alive; the exported function stores the result itself.
    virtual int GetLoginStatus(void* /*hLogin*/, int* /*pnStatus*/) { return 0; }
    /// Hands the plug-in a function of its own kinds; it keeps the pointer.
    virtual int SetCallbackFunc(unsigned long /*dwType*/, void* /*pFunction*/) { return 0; }
    /// Device events of a login go to pfnEvent, in place of an earlier one.
    virtual int SubscribeEvent(void* hLogin, unsigned long dwEvent, DeviceEventCallback pfnEvent,
                               unsigned long dwUser) = 0;
    /// Ends what SubscribeEvent began.
    virtual int UnSubscribeEvent(void* hLogin, unsigned long dwEvent) = 0;

    // --- configuration and attributes --------------------------------------------------------------------------------
    /// Writes one configuration block.
    virtual int SetConfig(void* hLogin, tagConfigInformation* ptConfig) = 0;
    /// Writes one configuration block, second layout.
    virtual int SetConfigV2(void* hLogin, tagConfigInformationV2* ptConfig) = 0;
    /// Writes one configuration block to the device with this serial number, without a login.
    virtual int SetConfigBySn(char const* szSerial, tagConfigInformationV2* ptConfig) = 0;
    /// Reads the block that type and index name.
    virtual int GetConfig(void* hLogin, tagConfigInformation* ptConfig) = 0;
    /// Reads the block that type and index name, second layout.
    virtual int GetConfigV2(void* hLogin, tagConfigInformationV2* ptConfig) = 0;
    /// Reads an attribute of the plug-in itself.
    virtual int GetAttribute(eClientSDKAttributeType eAttribute, unsigned long* pdwValue) = 0;
    /// Sets an attribute of the plug-in itself.
    virtual int SetAttribute(eClientSDKAttributeType eAttribute, unsigned long dwValue) = 0;

    // --- device control and parameters -------------------------------------------------------------------------------
    /// Restart, shut down, restore and the like.
    virtual int DeviceControl(void* hLogin, eRemoteDeviceControl eControl) = 0;
    /// Asks for a key frame at once. dwStream: the stream's handle as a number.
    virtual int ForceIFrame(void* hLogin, unsigned long dwStream) = 0;
    /// Writes a camera parameter. dwLength: bytes at pPara.
    virtual int SetIpcPara(void* hLogin, int nChannel, unsigned long dwType, void* pPara, unsigned long dwLength) = 0;
    /// Reads a camera parameter. dwLength: bytes at pPara.
    virtual int GetIpcPara(void* hLogin, int nChannel, unsigned long dwType, void* pPara, unsigned long dwLength) = 0;
    /// Sets a parameter of the plug-in itself. dwLength: bytes at pPara.
    virtual int SetMiscPara(int nChannel, unsigned long dwType, void* pPara, unsigned long dwLength) = 0;
    /// Reads a parameter of the plug-in itself. dwLength: bytes at pPara.
    virtual int GetMiscPara(int nChannel, unsigned long dwType, void* pPara, unsigned long dwLength) = 0;

    // --- alarms, capture, locks and recording ------------------------------------------------------------------------
    /// Ends an alarm.
    virtual int AlarmClear(void* hLogin, unsigned long dwType, unsigned long dwChannel) = 0;
    /// Takes a picture; ptInfo says where it goes.
    virtual int ImageCapture(void* hLogin, unsigned long dwChannel, eImageFormat eFormat, tagImageFileInfo* ptInfo) = 0;
    /// Protects a recorded file from being overwritten, or lets it go.
    virtual int FileLock(void* hLogin, char* szFile, eFileLockOperationCode eAction) = 0;
    /// Starts or stops recording on the device.
    virtual int RecordControl(void* hLogin, unsigned long dwChannel, unsigned long dwOn) = 0;
    /// Sets an alarm output.
    virtual int AlarmoutControl(void* hLogin, unsigned long dwOutput, unsigned long dwOn) = 0;
    /// Reads the alarm inputs.
    virtual int AlarminStateGet(void* hLogin, unsigned long* pdwCount, unsigned long* pdwState) = 0;
    /// Reads the alarm outputs.
    virtual int AlarmoutStateGet(void* hLogin, unsigned long* pdwCount, unsigned long* pdwState) = 0;

    // --- live and recorded streams -----------------------------------------------------------------------------------
    /// Opens a live stream under a login.
    virtual int RealStreamConnect(void** phStream, void* hLogin, tagRealStreamPara* ptPara) = 0;
    /// Closes a live stream.
    virtual int RealStreamDisconnect(void* hStream) = 0;
    /// Opens playback of a recording.
    virtual int HistoryStreamCreate(void** phStream, void* hLogin, tagHistoryStreamPara* ptPara,
                                    unsigned long dwFlag) = 0;
    /// Opens playback over several record types.
    virtual int HistoryStreamMultiTypeCreate(void** phStream, void* hLogin, tagHistoryStreamMultiTypePara* ptPara,
                                             unsigned long dwFlag) = 0;
    /// Closes playback of either kind.
    virtual int HistoryStreamDestroy(void* hStream) = 0;
    /// Reads or sets the playback position.
    virtual int HistoryStreamPosition(void* hStream, eOperationType eAction, tagTimeInfo* ptTime) = 0;
    /// Plays hStream on the clock of hOther.
    virtual int HistoryStreamSync(void* hStream, void* hOther) = 0;
    /// Ends what HistoryStreamSync began.
    virtual int HistoryStreamUnSync(void* hStream, void* hOther) = 0;
    /// Sets the playback speed.
    virtual int HistoryStreamSetSpeed(void* hStream, unsigned long dwSpeed) = 0;
    /// Playback frames go to pfnFrame.
    virtual int HistoryStreamCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser) = 0;

    // --- voice, media callbacks and links ----------------------------------------------------------------------------
    /// Opens a voice connection.
    virtual int VoiceStreamConnect(void** phVoice, void* hParent, tagVoiceStreamPara* ptPara) = 0;
    /// Closes a voice connection.
    virtual int VoiceStreamDisconnect(void* hVoice) = 0;
    /// Sends voice; the buffer is the caller's again on return.
    virtual int VoiceStreamSend(void* hVoice, tagBuffer* ptBuffer) = 0;
    /// Voice from the device goes to pfnVoice.
    virtual int VoiceStreamCB(void* hVoice, StreamVoiceCallback pfnVoice, unsigned long dwUser) = 0;
    /// Frames go to pfnFrame, in place of an earlier one.
    virtual int StreamMediaCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser) = 0;
    /// Frames as they came, before any unpacking, go to pfnFrame.
    virtual int StreamMediaRawCB(void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser) = 0;
    /// Events of an RTSP stream go to pfnEvent.
    virtual int SetRtspEvenCb(void* /*hStream*/, DeviceEventCallback /*pfnEvent*/, unsigned long /*dwUser*/)
    {
        return 0;
    }
    /// Plays, pauses and the like.
    virtual int StreamMediaControl(void* hStream, eTaskControl eControl) = 0;
    /// Marks a stream as belonging to a link.
    virtual int SetStreamMediaLinkID(void* hStream, unsigned long dwLink) = 0;
    /// The link ID to use for a media function.
    virtual int QueryStreamMediaLinkID(void* hLogin, eMediaFunctionType eFunction,
                                       tagMediaLinkIDQueryResult* ptResult) = 0;

    // --- recording, file and log queries -----------------------------------------------------------------------------
    /// Opens a query for recordings.
    virtual int HistoryStreamQueryConnect(void** phQuery, void* hLogin, tagHistoryStreamQueryFactor* ptFactor) = 0;
    /// Opens a query over several record types.
    virtual int HistoryStreamMultiTypeQueryConnect(void** phQuery, void* hLogin,
                                                   tagHistoryStreamMultiTypeQueryFactor* ptFactor) = 0;
    /// Closes a recording query of either kind.
    virtual int HistoryStreamQueryDisconnect(void* hQuery) = 0;
    /// The next recording found.
    virtual int HistoryStreamQueryNext(void* hQuery, tagHistoryStreamQueryResult* ptResult) = 0;
    /// The next recording found, of several types.
    virtual int HistoryStreamMultiTypeQueryNext(void* hQuery, tagHistoryStreamMultiTypeQueryResult* ptResult) = 0;
    /// Opens a query for files.
    virtual int FileQueryConnect(void** phQuery, void* hParent, tagFileQueryFactor* ptFactor) = 0;
    /// Closes a file query.
    virtual int FileQueryDisconnect(void* hQuery) = 0;
    /// The next file found.
    virtual int FileQueryNext(void* hQuery, tagFileQueryResult* ptResult) = 0;
    /// Opens a query for log entries.
    virtual int HistoryLogQueryConnect(void** phQuery, void* hLogin, tagLogQueryFactor* ptFactor) = 0;
    /// Closes a log query.
    virtual int HistoryLogQueryDisconnect(void* hQuery) = 0;
    /// The next log entry found.
    virtual int HistoryLogQueryNext(void* hQuery, tagLogQueryResult* ptResult) = 0;

    // --- transparent channel -----------------------------------------------------------------------------------------
    /// Opens a channel through to the device's serial port.
    virtual int TransparentChannelConnect(void** phChannel, void* hParent, tagTransparentChannelPara* ptPara) = 0;
    /// Closes a transparent channel.
    virtual int TransparentChannelDisconnect(void* hChannel) = 0;
    /// Writes through; the buffer is the caller's again on return.
    virtual int TransparentChannelWrite(void* hChannel, tagBuffer* ptBuffer) = 0;
    /// What comes through goes to pfnData.
    virtual int TransparentChannelCB(void* hChannel, TransparentChannelCallback pfnData, unsigned long dwUser) = 0;

    // --- file upload and download ------------------------------------------------------------------------------------
    /// Opens an upload.
    virtual int FileUploadConnect(void** phUpload, void* hLogin, tagFileUploadPara* ptPara) = 0;
    /// Starts, pauses or ends an upload.
    virtual int FileUploadControl(void* hUpload, eFileTransferControl eControl) = 0;
    /// Closes an upload.
    virtual int FileUploadDisconnect(void* hUpload) = 0;
    /// Progress goes to pfnState.
    virtual int FileUploadCB(void* hUpload, FileUploadCallback pfnState, unsigned long dwUser) = 0;
    /// Opens a download.
    virtual int FileDownloadConnect(void** phDownload, void* hLogin, tagFileDownloadPara* ptPara) = 0;
    /// Starts, pauses or ends a download.
    virtual int FileDownloadControl(void* hDownload, eFileTransferControl eControl) = 0;
    /// Closes a download.
    virtual int FileDownloadDisconnect(void* hDownload) = 0;
    /// The file's blocks go to pfnData.
    virtual int FileDownloadCB(void* hDownload, FileDownloadCallback pfnData, unsigned long dwUser) = 0;

    // --- device registration -----------------------------------------------------------------------------------------
    /// Listens for devices that register themselves.
    virtual int DeviceRegisterListenStart(char* szAddress, unsigned long dwPort) = 0;
    /// Ends the listening.
    virtual int DeviceRegisterListenStop() = 0;
    /// pfnRegister is called for each device that registers itself; it carries no user data.
    virtual int DeviceRegisterCB(DeviceRegisterCallback pfnRegister) = 0;

    // --- pan-tilt-zoom and storage -----------------------------------------------------------------------------------
    /// Moves a camera, sets and calls presets and tours.
    virtual int PTZControl(void* hLogin, unsigned long dwChannel, ePTZControlCmdCode eCommand, unsigned long dwPara1,
                           unsigned long dwPara2, unsigned long dwPara3, unsigned long dwPara4) = 0;
    /// Which days of a month hold recordings.
    virtual int DataExistCheck(void* hLogin, unsigned long dwChannel, unsigned long dwType, unsigned long dwMonth,
                               char* szDays, unsigned long* pdwLength) = 0;
    /// Manages groups of disks.
    virtual int DiskGroupManage(void* hLogin, eDiskGroupOperation eAction, unsigned long dwGroup, unsigned long dwDisk,
                                unsigned long dwValue) = 0;
    /// Size of the recordings of several types.
    virtual int GetMultiTypeDataSize(void* hLogin, unsigned long dwChannel, eDiskGroupType eGroup,
                                     unsigned long dwTypes, char const* szBegin, char const* szEnd,
                                     unsigned long dwFlag, unsigned long* pdwSize) = 0;
    /// Size of the recordings of one type.
    virtual int GetDataSize(void* hLogin, unsigned long dwChannel, eDiskGroupType eGroup,
                            eHistoryStreamType eStreamType, char const* szBegin, char const* szEnd,
                            unsigned long dwFlag, unsigned long* pdwSize) = 0;

    // --- other device services ---------------------------------------------------------------------------------------
    /// pfnDelete is called when a device logs a user out.
    virtual int DeleteUserForceCB(DeleteUserForceCallback pfnDelete, unsigned long dwUser) = 0;
    /// Renders a text as a dot lattice.
    virtual int StringToLattice(char const* szText, tagFontPara* ptFont, void* pLattice, unsigned long* pdwWidth,
                                unsigned long* pdwHeight, unsigned long* pdwLength) = 0;
    /// Splits a screen into windows.
    virtual int SetScreenSplitMode(void* hLogin, unsigned long dwScreen, unsigned long dwMode,
                                   unsigned long* pdwChannels) = 0;
    /// Reads a configuration over HTTP, without a login.
    virtual int GetDeviceConfigFromHttp(char const* szAddress, tagDeviceConfigFromHttp* ptConfig) = 0;

    // --- device probe ------------------------------------------------------------------------------------------------
    /// Looks for devices on the network; pfnProbe is called for each.
    virtual int DeviceProbeStart(tagDeviceProbeParameter* ptPara, DeviceProbeCallback pfnProbe) = 0;
    /// Stops looking.
    virtual int DeviceProbeStop() = 0;
    /// Looks once more.
    virtual int DeviceProbeResearch(tagDeviceProbeParameter* ptPara) = 0;
    /// Sets a found device's network configuration.
    virtual int DeviceProbeSetDeviceConfig(unsigned char const* pbyMac, unsigned short wPort,
                                           tagDeviceProbeConfig* ptConfig) = 0;
    /// Sets that of all found devices.
    virtual int DeviceProbeSetAllDeviceConfig(tagDeviceProbeParameter* ptPara, tagDeviceProbeConfig* ptConfig) = 0;
    /// Writes a configuration block of a found device.
    virtual int DeviceProbeSetConfig(unsigned char const* pbyMac, unsigned short wPort,
                                     tagDeviceProbeUserLoginPara* ptLogin,
                                     tagDeviceProbeConfigInformation* ptConfig) = 0;
    /// Reads a configuration block of a found device.
    virtual int DeviceProbeGetConfig(unsigned char const* pbyMac, unsigned short wPort,
                                     tagDeviceProbeUserLoginPara* ptLogin,
                                     tagDeviceProbeConfigInformation* ptConfig) = 0;

    // --- panel, chroma and file header -------------------------------------------------------------------------------
    /// Reads a front panel.
    virtual int PanelGetStatus(void* hLogin, tagPanelStatusInfo* ptStatus) = 0;
    /// Sets a front panel's lamps and texts.
    virtual int PanelSetStatus(void* hLogin, tagPanelStatusInfo* ptStatus) = 0;
    /// Locks, unlocks, beeps.
    virtual int PanelControl(void* hLogin, tagPanelControlParameter* ptPara) = 0;
    /// Sets a channel's picture back to its default.
    virtual int SetChromaDefault(void* hLogin, unsigned long dwChannel, unsigned long dwFlag) = 0;
    /// The header that recorded files of a type begin with.
    virtual int GetFileHeader(unsigned long dwType, char* pbyHeader, unsigned long* pdwLength) = 0;

    // --- stream transfer ---------------------------------------------------------------------------------------------
    /// Opens a connection that carries frames to a device.
    virtual int StreamTransferConnect(void** phTransfer, void* hLogin, unsigned long dwChannel,
                                      tagStreamTransferPara* ptPara) = 0;
    /// Sends one frame; it is the caller's again on return.
    virtual int StreamTransferSend(void* hTransfer, tagStreamTransferFrame* ptFrame) = 0;
    /// Closes such a connection.
    virtual int StreamTransferDisconnect(void* hTransfer) = 0;

    // --- decoder -----------------------------------------------------------------------------------------------------
    /// Lets a decoder channel show a source at once.
    virtual int DecoderDynamicConnect(void* hLogin, unsigned long dwChannel, tagDecoderDynamicInformation* ptInfo) = 0;
    /// Ends what DecoderDynamicConnect began.
    virtual int DecoderDynamicDisconnect(void* hLogin, unsigned long dwChannel, unsigned long dwFlag) = 0;
    /// Writes a decoder's configuration.
    virtual int DecoderSetConfig(void* hLogin, tagDecoderDeviceConfig* ptConfig) = 0;
    /// Reads a decoder's configuration.
    virtual int DecoderGetConfig(void* hLogin, tagDecoderDeviceConfig* ptConfig) = 0;
    /// Writes a decoder channel's configuration.
    virtual int DecoderSetChannelConfig(void* hLogin, unsigned long dwChannel, tagDecoderChannelConfig* ptConfig) = 0;
    /// Reads a decoder channel's configuration.
    virtual int DecoderGetChannelConfig(void* hLogin, unsigned long dwChannel, tagDecoderChannelConfig* ptConfig) = 0;
    /// Sets a decoder channel's video standard.
    virtual int DecoderSetVideoStandard(void* hLogin, unsigned long dwChannel,
                                        tagDecoderVideoStandardConfig* ptConfig) = 0;
    /// Reads a decoder channel's video standard.
    virtual int DecoderGetVideoStandard(void* hLogin, unsigned long dwChannel,
                                        tagDecoderVideoStandardConfig* ptConfig) = 0;
    /// Writes the tour of sources that a channel shows.
    virtual int DecoderSetChannelLoopConfig(void* hLogin, unsigned long dwChannel,
                                            tagDecoderChannelLoopConfig* ptConfig) = 0;
    /// Reads the tour of sources that a channel shows.
    virtual int DecoderGetChannelLoopConfig(void* hLogin, unsigned long dwChannel,
                                            tagDecoderChannelLoopConfig* ptConfig) = 0;
    /// Turns a channel's tour on or off.
    virtual int DecoderChannelSetLoopEnable(void* hLogin, unsigned long dwChannel, eDecoderChannelStatus eStatus) = 0;
    /// Whether a channel's tour is on.
    virtual int DecoderChannelGetLoopEnable(void* hLogin, unsigned long dwChannel, eDecoderChannelStatus* peStatus) = 0;
    /// Whether the tours of all channels are on.
    virtual int DecoderGetLoopEnable(void* hLogin, tagDecoderLoopStatus* ptStatus) = 0;
    /// What a channel can do.
    virtual int DecoderGetChannelInformation(void* hLogin, unsigned long dwChannel,
                                             tagDecoderChannelInformation* ptInfo) = 0;
    /// What the channels are doing.
    virtual int DecoderChannelGetStatus(void* hLogin, tagDecoderChannelStatus* ptStatus) = 0;
    /// Controls playback on a channel.
    virtual int DecoderChannelSetPlayStatus(void* hLogin, unsigned long dwChannel,
                                            tagDecoderSetPlayStatusParameter* ptPara) = 0;
    /// Where playback on a channel is.
    virtual int DecoderChannelGetPlayStatus(void* hLogin, tagDecoderGetPlayStatusParameter* ptPara) = 0;
    /// Sends a logo to show.
    virtual int UploadLogo(void* hLogin, unsigned long dwChannel, tagUploadLogoParameter* ptPara) = 0;
    /// Shows or hides the logo.
    virtual int DecoderChannelLogoSwitch(void* hLogin, unsigned long dwChannel, eDeviceChannelControl eControl) = 0;
    /// Enlarges, restores or hides a window.
    virtual int DecoderChannelDisplayControl(void* hLogin, unsigned long dwChannel,
                                             tagDecoderDisplayStatus* ptStatus) = 0;
    /// Writes a display's configuration.
    virtual int DecoderSetDisplayConfig(void* hLogin, unsigned long dwChannel, tagDecoderDisplayConfig* ptConfig) = 0;
    /// Reads a display's configuration.
    virtual int DecoderGetDisplayConfig(void* hLogin, unsigned long dwChannel, tagDecoderDisplayConfig* ptConfig) = 0;

    // --- transmitted recording queries -------------------------------------------------------------------------------
    /// Opens a recording query that the device passes on.
    virtual int TransmitHistoryStreamQueryConnect(void** phQuery, void* hLogin,
                                                  tagTransmitHistoryStreamQueryFactor* ptFactor) = 0;
    /// Closes such a query.
    virtual int TransmitHistoryStreamQueryDisconnect(void* hQuery) = 0;
    /// The next recording found.
    virtual int TransmitHistoryStreamQueryNext(void* hQuery, tagHistoryStreamMultiTypeQueryResult* ptResult) = 0;

    // --- online check, versions, on-screen time ----------------------------------------------------------------------
    /// Whether a device answers, without a login.
    virtual int DeviceIsOnline(char const* szAddress, unsigned long dwPort, unsigned long dwTimeout) = 0;
    /// Which version a device speaks, without a login.
    virtual int GetSDKVersion(char const* szAddress, unsigned long dwPort, unsigned long dwTimeout,
                              eNetworkSDKVersion* peVersion) = 0;
    /// Which version a logged-in device speaks.
    virtual int GetSDKVersionByHandle(void* hLogin, eNetworkSDKVersion* peVersion) = 0;
    /// The time that a channel shows in its picture.
    virtual int DecoderChannelGetOSDTime(void* hLogin, unsigned long dwChannel, tagTimeInfo* ptTime,
                                         unsigned long dwFlag) = 0;

    // --- the plug-in's side of the adapter ---------------------------------------------------------------------------
    /// The adapter as the plug-in sees it. Not owned; valid as long as the protocol set.
    virtual int SetProtocolInterface(IProtocol* pProtocols) = 0;
    /// Tells RTSP which product it works in.
    virtual int SetProductMode(void* /*hStream*/, unsigned long /*dwMode*/) { return 0; }
    /// RTSP's statistics of a stream. nLength: bytes at pInfo.
    virtual int GetPackageInfo(void* /*hStream*/, void* /*pInfo*/, int /*nLength*/, int /*nFlag*/) { return 0; }
    /// How many streams RTSP may open at once.
    virtual int SetMaxChannel(unsigned int /*dwCount*/) { return 0; }

    virtual ~CClientProtocolBase() = default;
};
} // namespace Adapter_ProtocolSet
