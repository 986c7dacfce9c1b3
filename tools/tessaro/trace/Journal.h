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
} // namespace tessaro
