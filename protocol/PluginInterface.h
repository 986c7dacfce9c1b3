/// @file
/// What applications and protocol plug-ins share: records, enumerations, callback types, result codes.

/// @defgroup plugin The plug-in interface
/// What applications and protocol plug-ins share: records, enumerations, callback types and results.
///
/// C99 and C++, no code. An application gets it with adapter/ClientAdapter.h, a plug-in author includes
/// protocol/PluginInterface.h alone (in C++ also protocol/IProtocol.h and protocol/Record.h). It is made of one header
/// for each subject, in protocol/interface, each of which can be included alone.
///
/// **What is true of every record**, where it doesn't say otherwise:
///
/// 1. *dwSize.* A record that begins with dwSize can grow. The application writes `sizeof` into it, also where the
///    plug-in is to fill the rest, and sets to 0 what it doesn't use: `tagTimeInfo tTime = {.dwSize = sizeof tTime};`.
///    A plug-in looks at nothing beyond dwSize and takes it for 0; it writes nothing beyond dwSize, and leaves dwSize
///    and what it doesn't know as they are. A dwSize that is smaller than the record's first version:
///    eResultBadArgument. In a record that a plug-in hands to a callback, dwSize says what the plug-in knows. Records
///    without dwSize never change. See docs/decisions/0005-records-grow-by-their-size.md.
/// 2. *Zero* is the usual choice in a field that an application fills, and "not known" in one that a plug-in fills.
/// 3. *Numbers* have 32 or 64 bits, in the machine's byte order. Enumerations are 32 bits wide on both sides (in C++
///    `enum eName : int`, in C a typedef of int), and may get new values. Names that begin with b are 0 or 1.
/// 4. *Text* is UTF-8 in an array, with a terminator: a text that fills its array is cut at a character and terminated.
///    Only the login record's fields may be full.
/// 5. *Times* are microseconds since 1970 UTC on the device's clock, durations have their unit in their name.
/// 6. *Places and sizes* in a picture, a window or a wall are ten-thousandths of its width and height, from its top
///    left. Levels are percent. Frame rates are frames per 1000 s.
/// 7. *Lists* are the application's: ptEntries points at dwCapacity entries of dwEntrySize bytes each (sizeof an entry
///    to the application). The plug-in fills as many as there is room for, and says in dwCount how many there are, also
///    when that is more. A capacity of 0 asks for the count alone.
/// 8. *Pointers* inside a record take 8 bytes on every machine, so that no offset depends on the word size. What they
///    point at is the application's and is used until the call returns, or as long as the field says.
/// 9. *Channels*, inputs, outputs, disks, screens and windows count from 0. Presets and tours of a camera count from 1.
/// 10. *Results* are those of eResult and ePluginResult. What fails has changed nothing.

#ifndef TESSARO_PROTOCOL_PLUGININTERFACE_H
#define TESSARO_PROTOCOL_PLUGININTERFACE_H

#include "interface/Callbacks.h"
#include "interface/Camera.h"
#include "interface/Common.h"
#include "interface/Configuration.h"
#include "interface/Decoders.h"
#include "interface/Device.h"
#include "interface/Discovery.h"
#include "interface/Events.h"
#include "interface/Frames.h"
#include "interface/Live.h"
#include "interface/Login.h"
#include "interface/PTZ.h"
#include "interface/Panels.h"
#include "interface/Playback.h"
#include "interface/Plugin.h"
#include "interface/Queries.h"
#include "interface/Results.h"
#include "interface/Storage.h"
#include "interface/Transfer.h"
#include "interface/Voice.h"

#endif
