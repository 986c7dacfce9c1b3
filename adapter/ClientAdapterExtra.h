/// @file
/// What a program in C needs beyond the C API. C99 and C++.

#ifndef TESSARO_ADAPTER_CLIENTADAPTEREXTRA_H
#define TESSARO_ADAPTER_CLIENTADAPTEREXTRA_H

#include "ClientAdapter.h"

TESSARO_C_BEGIN

/// @addtogroup api
/// @{

/// @defgroup extra Beyond the C API
/// Statistics of RTSP streams, results as text, the version, a plug-in's entry points, the diagnostic lines:
/// adapter/ClientAdapterExtra.h. The conventions are those of the C API.
/// @snippet extra.c extra
/// @{

/// How an RTSP stream is doing: its connection, its frames and losses since it was opened, into *ptInfo. -1: unknown
/// media ID. 0, *ptInfo untouched, from the other protocols.
TESSARO_API int TessaroExtra_GetStreamStatistics(int nMediaID, tagRTSPPackageInfo* ptInfo);

/// What a result means, in English, for a log or a message: those of eResult and ePluginResult. Any other number gets a
/// text that says so. Never null; the text stays valid as long as the library is loaded.
TESSARO_API char const* TessaroExtra_ResultText(int nResult);

/// The library's version and build, for example "1.0.0, Build 1.0.0.29024". The text stays valid as long as the library
/// is loaded.
TESSARO_API char const* TessaroExtra_Version(void);

/// Whether a plug-in has an entry point.
TESSARO_ENUM(eEntryPointState){
    eEntryPointUnbound = 0, ///< the protocol has no binding: the service isn't started, or nobody inserted it
    eEntryPointMissing = 1, ///< the plug-in isn't there, or lacks it: eResultNoEntryPoint from the operation
    eEntryPointThere = 2,   ///< the plug-in has it
};

/// One entry point that the library looks up in a protocol's plug-in.
typedef struct tagEntryPoint
{
    uint32_t dwSize;      ///< sizeof this record, by the application
    uint32_t dwState;     ///< eEntryPointState
    char szOperation[64]; ///< what it does: "UserLogin"
    char szSymbol[64];    ///< its name in the plug-in: "OnvifClient_UserLogin"
} tagEntryPoint;

/// The entry point that eType's plug-in is asked for as number dwIndex, from 0, into *ptEntry. 217
/// (eResultNoMoreEntries): there are no more. 4: no such protocol. 203: ptEntry is null or too small a record. The
/// names are the same whether or not a plug-in is loaded. Not beside ClientAdapter_Start and ClientAdapter_Stop.
TESSARO_API int TessaroExtra_GetEntryPoint(eProtocolType eType, unsigned int dwIndex, tagEntryPoint* ptEntry);

/// Gets one diagnostic line, without its end, on the thread that writes it. szLine is valid until it returns. It may
/// run on several threads at once, and must not call a function of this library.
typedef void (*DiagnosticCallback)(char const* szLine);

/// The library's diagnostic lines go to pfnLine too, beside standard output, for the whole process; null ends it.
/// Always 0. May be called at any time; a line that another thread writes just then may still go to the earlier
/// function.
TESSARO_API int TessaroExtra_DiagnosticCB(DiagnosticCallback pfnLine);

/// @}

/// @}

TESSARO_C_END

TESSARO_RECORD(tagEntryPoint, 136, 136);

#endif
