#pragma once

#include "plugins/onvif/Recordings.h"
#include "rtsp/Stream.h"

#include <optional>
#include <string>
#include <vector>

namespace onvifclient
{
constexpr int64_t g_llPictureUs = 40000; ///< of a picture that no other one follows; over a gap time goes on by this
constexpr int64_t g_llNearUs = 2000000;  ///< so near to its end a replay that falls silent has ended

/// A stretch of one of the device's recordings to replay.
struct tagStretch
{
    rtsp::tagStreamOptions tOptions; ///< but for what to play
    int64_t llStartUs = 0;
    int64_t llEndUs = 0;
    bool bGrows = false; ///< it is still being recorded: llEndUs isn't its end
};

/// What is to be replayed: parts of recordings in the order of time, cut to the times that are asked for (0: all of
/// it). Parts of one recording make one stretch: the device skips what is between them by itself. Asks the device for
/// the addresses: blocks. eResultNotFound: nothing was recorded.
int MakeStretches(CLogin const& tLogin, std::vector<tagRecording> const& atParts, int64_t llStartUs, int64_t llEndUs,
                  std::vector<tagStretch>& atStretches);

/// How a replay's stream has ended, as its last event tells. Nothing: it hasn't.
struct tagReplayEnd
{
    bool bDone = false; ///< it was closed in order: all of it has come, or the device starts again
    int nResult = 0;    ///< ePluginResult, where that is no end
};
std::optional<tagReplayEnd> ReplayEnd(unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3);
} // namespace onvifclient
