#pragma once

/// @file
/// The library's objects.

/// @defgroup classes The exported classes
/// For applications in C++ that look behind the C API: adapter/Globals.h and adapter/ClientService.h.
///
/// Classes and objects are exported with their members, so the layouts are part of the interface: build an application
/// with the headers of the library that it runs with, and with a compiler that agrees on the C++ ABI.

#include "../protocol/CProtocolSet.h"
#include "../system/Export.h"
#include "CallbackRecord.h"
#include "HandleRegistry.h"

// They exist from the moment the library is loaded, built in this order and destroyed in reverse: g_cProtocolSet,
// g_SetCallBack, g_SetUserCallBack, g_cClient.

/// The protocol set behind every exported function. An application that uses the private protocol inserts and starts it
/// here; the library inserts the others in ClientAdapter_Start.
/// @ingroup classes
extern TESSARO_API Adapter_ProtocolSet::CClientProtocolSet g_cProtocolSet;

/// "Build 1.0.0.29024"
/// @ingroup classes
extern TESSARO_API char const g_cVersion[18];
