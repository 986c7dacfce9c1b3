#pragma once

#include "onvif/Client.h"
#include "onvif/Notification.h"

#include <cstdint>
#include <string>
#include <vector>

namespace onvif
{
/// One recording of a device: what came from one source, with gaps. Times are microseconds since 1970 UTC.
struct tagArchived
{
    std::string strToken;
    std::string strSourceId; ///< as whoever made the recording has named its source
    std::string strSourceName;
    std::int64_t llEarliestUs = 0;
    std::int64_t llLatestUs = 0;
    bool bRecording = false; ///< right now
    bool bVideo = false;
    std::string strVideoTrack; ///< its first track of video
};

/// A part of a recording without a gap.
struct tagSection
{
    std::int64_t llStartUs = 0;
    std::int64_t llEndUs = 0;
    bool bOpen = false; ///< it goes on
};

/// @name A device's search service
/// They block as long as the search takes, at most g_tSearchLimit. 0 or an ePluginResult.
/// @{
inline constexpr std::chrono::seconds g_tSearchLimit{30};

int FindArchived(CClient& tClient, std::vector<tagArchived>& atFound);

/// The parts of a recording that overlap a time, each with its whole length, in the order of time. Where a device tells
/// no parts it is one.
int FindSections(CClient& tClient, tagArchived const& tArchived, std::int64_t llStartUs, std::int64_t llEndUs,
                 std::vector<tagSection>& atSections);

/// An event that a search has found.
struct tagFoundEvent
{
    std::int64_t llTimeUs = 0;
    bool bStartState = false; ///< it stood so at the begin of the time that was asked for
    tagNotification tEvent;
};
/// Events of one recording between two times, in the order of time. strTopics: an expression, "tns1:a/b|tns1:c/d//.".
/// llEndUs before llStartUs looks backwards. nMost 0: as many as there are.
int FindEvents(CClient& tClient, std::string const& strRecording, std::int64_t llStartUs, std::int64_t llEndUs,
               std::string_view strTopics, bool bStartState, unsigned nMost, std::vector<tagFoundEvent>& atEvents);

/// The codec (eMediaCodec) of a recording's video at a time; 0: the device doesn't say.
std::uint32_t FindCodec(CClient& tClient, std::string const& strRecording, std::int64_t llTimeUs);
/// @}

/// The parts that these events tell of. llFromUs and llToUs: between which times they were looked for.
std::vector<tagSection> SectionsOf(std::vector<tagFoundEvent> const& atEvents, std::string_view strState,
                                   std::int64_t llFromUs, std::int64_t llToUs);
/// Whether a text says yes: "true", "1", "active", "on".
bool IsYes(std::string_view strText);
} // namespace onvif
