/// @file
/// Handed on without a look.

#ifndef TESSARO_PROTOCOL_INTERFACE_OPAQUE_H
#define TESSARO_PROTOCOL_INTERFACE_OPAQUE_H

#include "protocol/interface/Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup opaque Handed on without a look
/// Enumerations and records of the device protocols. The library hands them on; their values and fields come with the
/// plug-in for the device, in a header of its own. To an application without it the records are incomplete types: it
/// can hold pointers to them, which somebody else made, but no objects.
/// @{

/// @name Enumerations
/// @{

/// The device protocol defines its values.
TESSARO_OPAQUE_ENUM(eDecoderChannelStatus);
TESSARO_OPAQUE_ENUM(eDeviceChannelControl);
TESSARO_OPAQUE_ENUM(eDiskGroupOperation);
TESSARO_OPAQUE_ENUM(eDiskGroupType);
TESSARO_OPAQUE_ENUM(eFileLockOperationCode);
TESSARO_OPAQUE_ENUM(eFileTransferControl);
TESSARO_OPAQUE_ENUM(eHistoryStreamType);
TESSARO_OPAQUE_ENUM(eImageFormat);
TESSARO_OPAQUE_ENUM(eMediaFunctionType);
TESSARO_OPAQUE_ENUM(eNetworkSDKVersion);
TESSARO_OPAQUE_ENUM(eOperationType);
TESSARO_OPAQUE_ENUM(ePTZControlCmdCode);
TESSARO_OPAQUE_ENUM(eRemoteDeviceControl);
TESSARO_OPAQUE_ENUM(eVoiceStreamSource);
/// @}

/// @name Records
/// @{

/// The device protocol defines its fields.
typedef struct tagDecoderChannelConfig tagDecoderChannelConfig;
typedef struct tagDecoderChannelInformation tagDecoderChannelInformation;
typedef struct tagDecoderChannelLoopConfig tagDecoderChannelLoopConfig;
typedef struct tagDecoderChannelStatus tagDecoderChannelStatus;
typedef struct tagDecoderDeviceConfig tagDecoderDeviceConfig;
typedef struct tagDecoderDisplayConfig tagDecoderDisplayConfig;
typedef struct tagDecoderDisplayStatus tagDecoderDisplayStatus;
typedef struct tagDecoderDynamicInformation tagDecoderDynamicInformation;
typedef struct tagDecoderGetPlayStatusParameter tagDecoderGetPlayStatusParameter;
typedef struct tagDecoderLoopStatus tagDecoderLoopStatus;
typedef struct tagDecoderSetPlayStatusParameter tagDecoderSetPlayStatusParameter;
typedef struct tagDecoderVideoStandardConfig tagDecoderVideoStandardConfig;
typedef struct tagDeviceConfigFromHttp tagDeviceConfigFromHttp;
typedef struct tagDeviceProbeConfig tagDeviceProbeConfig;
typedef struct tagDeviceProbeConfigInformation tagDeviceProbeConfigInformation;
typedef struct tagDeviceProbeParameter tagDeviceProbeParameter;
typedef struct tagDeviceProbeUserLoginPara tagDeviceProbeUserLoginPara;
typedef struct tagDeviceRegisterInfo tagDeviceRegisterInfo;
typedef struct tagFileDownloadPara tagFileDownloadPara;
typedef struct tagFileQueryFactor tagFileQueryFactor;
typedef struct tagFileQueryResult tagFileQueryResult;
typedef struct tagFileUploadPara tagFileUploadPara;
typedef struct tagFontPara tagFontPara;
typedef struct tagHistoryStreamMultiTypePara tagHistoryStreamMultiTypePara;
typedef struct tagHistoryStreamMultiTypeQueryFactor tagHistoryStreamMultiTypeQueryFactor;
typedef struct tagHistoryStreamMultiTypeQueryResult tagHistoryStreamMultiTypeQueryResult;
typedef struct tagHistoryStreamPara tagHistoryStreamPara;
typedef struct tagHistoryStreamQueryFactor tagHistoryStreamQueryFactor;
typedef struct tagHistoryStreamQueryResult tagHistoryStreamQueryResult;
typedef struct tagImageFileInfo tagImageFileInfo;
typedef struct tagLogQueryFactor tagLogQueryFactor;
typedef struct tagLogQueryResult tagLogQueryResult;
typedef struct tagMediaLinkIDQueryResult tagMediaLinkIDQueryResult;
typedef struct tagPanelControlParameter tagPanelControlParameter;
typedef struct tagPanelStatusInfo tagPanelStatusInfo;
typedef struct tagStreamTransferFrame tagStreamTransferFrame;
typedef struct tagStreamTransferPara tagStreamTransferPara;
typedef struct tagTimeInfo tagTimeInfo;
typedef struct tagTransmitHistoryStreamQueryFactor tagTransmitHistoryStreamQueryFactor;
typedef struct tagTransparentChannelPara tagTransparentChannelPara;
typedef struct tagUploadLogoParameter tagUploadLogoParameter;
typedef struct tagVoiceStreamPara tagVoiceStreamPara;
/// @}

/// @}

/// @}

TESSARO_C_END

#endif
