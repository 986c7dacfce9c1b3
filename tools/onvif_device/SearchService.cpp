// The service that searches recordings.

#include "tools/onvif_device/RecordingParts.h"
#include "tools/onvif_device/Searches.h"
#include "tools/onvif_device/TopicFilter.h"

namespace onvif_device
{
std::vector<device::tagRecording> StretchesOf(CCall& tCall, uint32_t dwChannel)
{
    device::tagRecordingQuestion tQuestion;
    tQuestion.ullChannels = uint64_t{1} << dwChannel;
    return tCall.Device().Recordings(tQuestion);
}

uint32_t RecordingAt(CCall& tCall, CCall::Path astrPath)
{
    return tCall.Index(astrPath, "Recording", tCall.Device().Channels(), "ter:NoRecording");
}

void WriteRecordingSource(CCall& tCall, char const* szElement, uint32_t dwChannel)
{
    CXml& tXml = tCall.Xml();
    tXml.In(szElement,
            [&]
            {
                tXml.Put("tt:SourceId", Token("VideoSource", {dwChannel}));
                tXml.Put("tt:Name", "Channel " + std::to_string(dwChannel)).Put("tt:Location", "");
                tXml.Put("tt:Description", "").Put("tt:Address", tCall.ServiceAddress(eService::Media));
            });
}

void WriteRecordingInformation(CCall& tCall, char const* szElement, uint32_t dwChannel)
{
    CXml& tXml = tCall.Xml();
    const auto atStretches = StretchesOf(tCall, dwChannel);
    const int64_t llFromUs = atStretches.empty() ? 0 : atStretches.front().llStartUs;
    int64_t llToUs = llFromUs;
    bool bRecording = false;
    for (device::tagRecording const& t : atStretches)
    {
        llToUs = std::max(llToUs, t.llEndUs);
        bRecording = bRecording || t.bRecording;
    }
    tXml.In(
        szElement,
        [&]
        {
            tXml.Put("tt:RecordingToken", Token("Recording", {dwChannel}));
            WriteRecordingSource(tCall, "tt:Source", dwChannel);
            if (!atStretches.empty())
            {
                tXml.Put("tt:EarliestRecording", DateTime(llFromUs)).Put("tt:LatestRecording", DateTime(llToUs));
            }
            tXml.Put("tt:Content", "");
            for (char const* const szType : {"Video", "Audio"})
            {
                tXml.In("tt:Track",
                        [&]
                        {
                            tXml.Put("tt:TrackToken", szType).Put("tt:TrackType", szType);
                            tXml.Put("tt:Description", "").Put("tt:DataFrom", DateTime(llFromUs));
                            tXml.Put("tt:DataTo", DateTime(llToUs));
                        });
            }
            tXml.Put("tt:RecordingStatus", bRecording ? "Recording" : atStretches.empty() ? "Initiated" : "Stopped");
        });
}

namespace
{
using Results = std::vector<CSearches::tagResult>;

constexpr int64_t g_llLongestKeepUs = 600000000;

// The channels that a request's Scope includes.
std::vector<uint32_t> ChannelsOf(CCall& tCall)
{
    std::vector<uint32_t> adwChannels;
    bool bAny = false;
    for (const pugi::xml_node t : tCall.At({"Scope"}).children())
    {
        const bool bSource = LocalName(t) == "IncludedSources";
        if (!bSource && LocalName(t) != "IncludedRecordings")
        {
            continue;
        }
        bAny = true;
        uint32_t dwChannel = 0;
        const std::string strToken = bSource ? ChildText(t, "Token") : TextOf(t);
        if (ParseToken(strToken, bSource ? "VideoSource" : "Recording", {&dwChannel}) &&
            dwChannel < tCall.Device().Channels())
        {
            adwChannels.push_back(dwChannel);
        }
    }
    for (uint32_t i = 0; i < tCall.Device().Channels() && !bAny; ++i)
    {
        adwChannels.push_back(i);
    }
    return adwChannels;
}

void Begin(CCall& tCall, Results atResults)
{
    const int64_t llKeepUs = tCall.DurationUs({"KeepAliveTime"}, 0);
    const auto nMost = static_cast<std::size_t>(tCall.Integer({"MaxMatches"}, 1, 1 << 20, 1 << 20));
    if (llKeepUs <= 0)
    {
        FailValue("ter:InvalidArgVal", "a search must be kept some time");
    }
    atResults.resize(std::min(atResults.size(), nMost));
    tCall.Xml().Put("tse:SearchToken",
                    tCall.Face().Searches().Begin(std::move(atResults), std::min(llKeepUs, g_llLongestKeepUs)));
}

// The results that a request is to get, within an element of what they are.
template <class F>
void GetResults(CCall& tCall, F fnWrite)
{
    const auto nMost = static_cast<std::size_t>(tCall.Integer({"MaxResults"}, 1, 1 << 20, 100));
    Results atResults;
    bool bEnd = false;
    if (!tCall.Face().Searches().Next(tCall.Text({"SearchToken"}), nMost, atResults, bEnd))
    {
        FailValue("ter:InvalidToken", "there is no such search");
    }
    tCall.Xml().In("tse:ResultList",
                   [&]
                   {
                       tCall.Xml().Put("tt:SearchState", bEnd ? "Completed" : "Searching");
                       for (CSearches::tagResult const& t : atResults)
                       {
                           fnWrite(t);
                       }
                   });
}

void FindRecordings(CCall& tCall)
{
    Results atResults;
    for (const uint32_t dwChannel : ChannelsOf(tCall))
    {
        if (!StretchesOf(tCall, dwChannel).empty())
        {
            atResults.push_back({dwChannel});
        }
    }
    Begin(tCall, std::move(atResults));
}

void GetRecordingSearchResults(CCall& tCall)
{
    GetResults(tCall, [&](CSearches::tagResult const& t)
               { WriteRecordingInformation(tCall, "tt:RecordingInformation", t.dwChannel); });
}

// What can be found: data, and what it was recorded for.
struct tagFoundTopic
{
    char const* szTopic;
    uint32_t dwType; // of what the device calls a recording; 0: any
    char const* szSource;
    char const* szToken; // kind of that token
    char const* szData;
};
constexpr tagFoundTopic g_atTopics[] = {
    {"tns1:RecordingHistory/Track/State", 0, "RecordingToken", "Recording", "IsDataPresent"},
    {"tns1:RuleEngine/CellMotionDetector/Motion", eHistoryMotion, "VideoSourceConfigurationToken", "VideoSourceConfig",
     "IsMotion"},
    {"tns1:Device/Trigger/DigitalInput", eHistoryAlarm, "InputToken", "Input", "LogicalState"},
};

// Where one of these begins and ends in a channel's recordings, between two times; the second may be the earlier one.
void FindTopic(CCall& tCall, std::size_t nTopic, uint32_t dwChannel, Results& atResults)
{
    const int64_t llStartUs = tCall.TimeUs({"StartPoint"}, 0);
    const int64_t llEndUs = tCall.TimeUs({"EndPoint"}, INT64_MAX);
    const int64_t llFromUs = std::min(llStartUs, llEndUs);
    const int64_t llToUs = std::max(llStartUs, llEndUs);
    bool bData = false;
    for (device::tagRecording const& t : StretchesOf(tCall, dwChannel))
    {
        if (g_atTopics[nTopic].dwType != 0 && g_atTopics[nTopic].dwType != t.dwType)
        {
            continue;
        }
        bData = bData || (t.llStartUs <= llStartUs && (t.llEndUs > llStartUs || t.bRecording));
        if (t.llStartUs >= llFromUs && t.llStartUs < llToUs)
        {
            atResults.push_back({dwChannel, t.llStartUs, true, false, nTopic});
        }
        if (!t.bRecording && t.llEndUs >= llFromUs && t.llEndUs < llToUs)
        {
            atResults.push_back({dwChannel, t.llEndUs, false, false, nTopic});
        }
    }
    if (tCall.Flag({"IncludeStartState"}))
    {
        atResults.push_back({dwChannel, llStartUs, bData, true, nTopic});
    }
}

void FindEvents(CCall& tCall)
{
    const int64_t llStartUs = tCall.TimeUs({"StartPoint"}, 0);
    const int64_t llEndUs = tCall.TimeUs({"EndPoint"}, INT64_MAX);
    const std::string strFilter = TopicsOf(tCall.At({"SearchFilter", "TopicExpression"}));
    Results atResults;
    for (const uint32_t dwChannel : ChannelsOf(tCall))
    {
        for (std::size_t n = 0; n < std::size(g_atTopics); ++n)
        {
            if (MatchesTopic(strFilter, g_atTopics[n].szTopic))
            {
                FindTopic(tCall, n, dwChannel, atResults);
            }
        }
    }
    std::ranges::stable_sort(atResults, [&](auto const& t1, auto const& t2)
                             { return llStartUs <= llEndUs ? t1.llTimeUs < t2.llTimeUs : t1.llTimeUs > t2.llTimeUs; });
    Begin(tCall, std::move(atResults));
}

void GetEventSearchResults(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    GetResults(tCall,
               [&](CSearches::tagResult const& t)
               {
                   tXml.In("tt:Result",
                           [&]
                           {
                               tXml.Put("tt:RecordingToken", Token("Recording", {t.dwChannel}));
                               tXml.Put("tt:TrackToken", "Video").Put("tt:Time", DateTime(t.llTimeUs));
                               tagFoundTopic const& tTopic = g_atTopics[t.nTopic];
                               tagMessage tMessage{tTopic.szTopic,
                                                   t.bStartState ? "Initialized" : "Changed",
                                                   t.llTimeUs,
                                                   {{tTopic.szSource, Token(tTopic.szToken, {t.dwChannel})}},
                                                   {{tTopic.szData, t.bData ? "true" : "false"}}};
                               if (t.nTopic == 0)
                               {
                                   tMessage.atSource.emplace_back("Track", "Video");
                               }
                               tMessage.Write(tXml, {}, "tt:Event");
                               tXml.Put("tt:StartStateEvent", t.bStartState);
                           });
               });
}

void EndSearch(CCall& tCall)
{
    if (!tCall.Face().Searches().End(tCall.Text({"SearchToken"})))
    {
        FailValue("ter:InvalidToken", "there is no such search");
    }
    tCall.Xml().Put("tse:Endpoint", DateTime(tCall.Device().NowUs()));
}

void GetSearchState(CCall& tCall)
{
    bool bEnd = false;
    if (!tCall.Face().Searches().IsThere(tCall.Text({"SearchToken"}), bEnd))
    {
        FailValue("ter:InvalidToken", "there is no such search");
    }
    tCall.Xml().Put("tse:State", bEnd ? "Completed" : "Searching");
}

void GetRecordingSummary(CCall& tCall)
{
    int64_t llFromUs = INT64_MAX;
    int64_t llToUs = 0;
    uint32_t dwCount = 0;
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        const auto atStretches = StretchesOf(tCall, i);
        for (device::tagRecording const& t : atStretches)
        {
            llFromUs = std::min(llFromUs, t.llStartUs);
            llToUs = std::max(llToUs, t.llEndUs);
        }
        dwCount += atStretches.empty() ? 0 : 1;
    }
    tCall.Xml().In("tse:Summary",
                   [&]
                   {
                       tCall.Xml().Put("tt:DataFrom", DateTime(dwCount ? llFromUs : 0));
                       tCall.Xml().Put("tt:DataUntil", DateTime(llToUs)).Put("tt:NumberRecordings", dwCount);
                   });
}

void GetRecordingInformation(CCall& tCall)
{
    WriteRecordingInformation(tCall, "tse:RecordingInformation", RecordingAt(tCall, {"RecordingToken"}));
}

// How the stretch that holds a time was coded.
void WriteMediaAttributes(CXml& tXml, device::tagRecording const& t)
{
    const auto fnTrack = [&](char const* szType, char const* szElement, auto fnInside)
    {
        tXml.In("tt:TrackAttributes",
                [&]
                {
                    tXml.In("tt:TrackInformation",
                            [&]
                            {
                                tXml.Put("tt:TrackToken", szType).Put("tt:TrackType", szType);
                                tXml.Put("tt:Description", "").Put("tt:DataFrom", DateTime(t.llStartUs));
                                tXml.Put("tt:DataTo", DateTime(t.llEndUs));
                            });
                    tXml.In(szElement, fnInside);
                });
    };
    tXml.In("tse:MediaAttributes",
            [&]
            {
                tXml.Put("tt:RecordingToken", Token("Recording", {t.dwChannel}));
                fnTrack("Video", "tt:VideoAttributes",
                        [&]
                        {
                            tXml.Put("tt:Bitrate", t.tVideo.dwBitRate).Put("tt:Width", t.tVideo.dwWidth);
                            tXml.Put("tt:Height", t.tVideo.dwHeight);
                            tXml.Put("tt:Encoding", t.tVideo.dwCodec == eCodecH265 ? "H265" : "H264");
                            tXml.Put("tt:Framerate", t.tVideo.dwFrameRate / 1000.0);
                        });
                if (t.tAudio.bEnabled)
                {
                    fnTrack("Audio", "tt:AudioAttributes",
                            [&] { tXml.Put("tt:Bitrate", 64).Put("tt:Encoding", "G711").Put("tt:Samplerate", 8); });
                }
                tXml.Put("tt:From", DateTime(t.llStartUs)).Put("tt:Until", DateTime(t.llEndUs));
            });
}

void GetMediaAttributes(CCall& tCall)
{
    const int64_t llTimeUs = tCall.TimeUs({"Time"}, 0);
    for (const pugi::xml_node tNode : tCall.Request().children())
    {
        uint32_t dwChannel = 0;
        if (LocalName(tNode) != "RecordingTokens")
        {
            continue;
        }
        if (!ParseToken(TextOf(tNode), "Recording", {&dwChannel}) || dwChannel >= tCall.Device().Channels())
        {
            FailValue("ter:NoRecording", "there is no recording " + TextOf(tNode));
        }
        for (device::tagRecording const& t : StretchesOf(tCall, dwChannel))
        {
            if (t.llStartUs <= llTimeUs && (llTimeUs < t.llEndUs || t.bRecording))
            {
                WriteMediaAttributes(tCall.Xml(), t);
                break;
            }
        }
    }
}

#define ONVIF_SCOPE                                                                                                    \
    "Scope{IncludedSources{Type? Token}* IncludedRecordings* RecordingInformationFilter? Extension{...}?}"
constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Search>},
    {"GetRecordingSummary", eUserViewer, "", GetRecordingSummary},
    {"GetRecordingInformation", eUserViewer, "RecordingToken", GetRecordingInformation},
    {"GetMediaAttributes", eUserViewer, "RecordingTokens* Time", GetMediaAttributes},
    {"FindRecordings", eUserViewer, ONVIF_SCOPE " MaxMatches? KeepAliveTime", FindRecordings},
    {"GetRecordingSearchResults", eUserViewer, "SearchToken MinResults? MaxResults? WaitTime?",
     GetRecordingSearchResults},
    {"FindEvents", eUserViewer,
     "StartPoint EndPoint? " ONVIF_SCOPE " SearchFilter{...} IncludeStartState MaxMatches? KeepAliveTime?", FindEvents},
    {"GetEventSearchResults", eUserViewer, "SearchToken MinResults? MaxResults? WaitTime?", GetEventSearchResults},
    {"GetSearchState", eUserViewer, "SearchToken", GetSearchState},
    {"EndSearch", eUserViewer, "SearchToken", EndSearch},
};
} // namespace

std::span<tagAction const> SearchActions()
{
    return g_atActions;
}
} // namespace onvif_device
