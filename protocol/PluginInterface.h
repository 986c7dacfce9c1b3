/// @file
/// What applications and protocol plug-ins share: records, enumerations, callback types, result codes.

/// @defgroup plugin The plug-in interface
/// What applications and protocol plug-ins share: protocol/PluginInterface.h, and IProtocol for plug-ins in C++.
///
/// Records, enumerations, callback types and result codes; C99 and C++, no code. An application gets it with
/// adapter/ClientAdapter.h, a plug-in author includes it alone (C++ plug-ins also protocol/IProtocol.h).
///
/// Enumerations are 32 bits wide on both sides: `enum eName : int` in C++, a typedef of int in C. Records that the
/// library only hands on, and that nothing here fills yet, stay incomplete. Sizes are in bytes, times in microseconds,
/// and words in the machine's byte order, unless a comment says otherwise.

#ifndef TESSARO_PROTOCOL_PLUGININTERFACE_H
#define TESSARO_PROTOCOL_PLUGININTERFACE_H

#include "protocol/interface/Callbacks.h"
#include "protocol/interface/Common.h"
#include "protocol/interface/Configuration.h"
#include "protocol/interface/Frames.h"
#include "protocol/interface/Live.h"
#include "protocol/interface/Login.h"
#include "protocol/interface/Opaque.h"
#include "protocol/interface/Results.h"

#endif
