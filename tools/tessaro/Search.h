#pragma once

#include "tools/tessaro/Session.h"
#include "tools/tessaro/Times.h"

#include <vector>

namespace tessaro
{
/// What a device has recorded of a span's channel in its times; strFile: the one of this name on any channel, if it
/// isn't empty. Throws CFailure.
std::vector<tagHistoryStreamMultiTypeQueryResult> FindRecordings(CSession const& tSession, tagSpan const& tSpan,
                                                                 std::string const& strFile = "");
} // namespace tessaro
