#pragma once

#include "adapter/CallbackRecord.h"
#include "adapter/HandleRegistry.h"
#include "protocol/CProtocolSet.h"
#include "system/Export.h"

// The library's objects. They exist from the moment the library is loaded, built in this order and destroyed in
// reverse: g_cProtocolSet, g_SetCallBack, g_SetUserCallBack, g_cClient.

/// The protocol set behind every exported function. An application that uses the private protocol inserts and starts it
/// here; the library inserts the others in ClientAdapter_Start.
extern TESSARO_API Adapter_ProtocolSet::CClientProtocolSet g_cProtocolSet;

/// "Build 1.0.0.29024"
extern TESSARO_API char const g_cVersion[18];
