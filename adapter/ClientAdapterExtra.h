/// @file
/// What a program in C needs beyond the C API. C99 and C++.

#ifndef TESSARO_ADAPTER_CLIENTADAPTEREXTRA_H
#define TESSARO_ADAPTER_CLIENTADAPTEREXTRA_H

#include "adapter/ClientAdapter.h"

TESSARO_C_BEGIN

/// @addtogroup api
/// @{

/// @defgroup extra Beyond the C API
/// Statistics of RTSP streams, results as text, the version: adapter/ClientAdapterExtra.h. The conventions are those of
/// the C API.
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

/// @}

/// @}

TESSARO_C_END

#endif
