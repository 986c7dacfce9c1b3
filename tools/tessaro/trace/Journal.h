#pragma once

#include "tools/tessaro/records/Records.h"

namespace tessaro
{
/// Where the trace goes: one line of JSON for each call and each callback, appended to the file that the environment's
/// TESSARO_TRACE_FILE names (standard error if it names none). Any thread; lines of different threads never mix.
void WriteTrace(json const& tLine);

/// Seconds since the trace began.
double TraceTime();

/// A small number for this thread.
int TraceThread();

/// An entry point of the plug-in that stands behind, by its name; null: that one lacks it. Which plug-in it is follows
/// from the name's beginning: TESSARO_TRACE_VTQ, _RTSP, _ONVIF and _PRIVATE name the files.
void* FindBehind(char const* szSymbol);
} // namespace tessaro
