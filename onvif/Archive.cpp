#include "onvif/Archive.h"

#include "protocol/PluginInterface.h"

#include <algorithm>
#include <functional>
#include <map>

namespace onvif
{
namespace
{
using namespace std::chrono_literals;

constexpr std::size_t g_nMostResults = 100000; // of one search
constexpr unsigned g_nEdge = 20;               // events that are looked at for the begin or the end of a part
constexpr char g_szKeepAlive[] = "PT30S";
constexpr char g_szConcreteSet[] = "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet";
constexpr char g_szHistory[] = "tns1:RecordingHistory/Track/State|tns1:RecordingHistory/Recording/State";

// Begins a search, hands on each list of results, and ends it.
int Search(CClient& tClient, tagRequest tBegin, char const* szResults,
           std::function<std::size_t(pugi::xml_node)> const& fnTake)
{
    if (!tClient.Has(eService::Search))
    {
        return eResultNotSupported;
    }
    const auto tUntil = Clock::now() + g_tSearchLimit;
    const CAnswer tBegun = tClient.Call(std::move(tBegin));
    const std::string strToken{Text(tBegun.Body(), "SearchToken")};
    if (!tBegun || strToken.empty())
    {
        return tBegun ? int{eResultRefused} : tBegun.Result();
    }
    int nResult = eResultOk;
    for (std::size_t nFound = 0;;)
    {
        tagRequest tRequest{eService::Search, szResults};
        tRequest.strBody =
            CXmlWriter().Add("tse:SearchToken", strToken).Add("tse:MaxResults", 500).Add("tse:WaitTime", "PT2S").Take();
        tRequest.tLimit = tClient.Limit() + 2s;
        const CAnswer tAnswer = tClient.Call(std::move(tRequest));
        if (!tAnswer)
        {
            return tAnswer.Result(); // a search that has failed is no more
        }
        const pugi::xml_node tList = Child(tAnswer.Body(), "ResultList");
        const std::size_t nNow = fnTake(tList);
        nFound += nNow;
        const std::string_view strState = Text(tList, "SearchState");
        if (strState == "Completed" || nFound >= g_nMostResults || (strState.empty() && nNow == 0))
        {
            break;
        }
        if (Clock::now() >= tUntil)
        {
            nResult = eResultTimeOut;
            break;
        }
    }
    tagRequest tEnd{eService::Search, "EndSearch"};
    tEnd.strBody = CXmlWriter().Add("tse:SearchToken", strToken).Take();
    tClient.Call(std::move(tEnd));
    return nResult;
}

tagArchived ReadArchived(pugi::xml_node tInformation)
{
    tagArchived t;
    t.strToken = Text(tInformation, "RecordingToken");
    t.strSourceId = Text(tInformation, "Source/SourceId");
    t.strSourceName = Text(tInformation, "Source/Name");
    t.llEarliestUs = Time(tInformation, "EarliestRecording").value_or(0);
    t.llLatestUs = Time(tInformation, "LatestRecording").value_or(0);
    t.bRecording = Text(tInformation, "RecordingStatus") == "Recording";
    for (pugi::xml_node const& tTrack : Children(tInformation, "Track"))
    {
        const auto llFromUs = Time(tTrack, "DataFrom").value_or(0);
        const auto llToUs = Time(tTrack, "DataTo").value_or(0);
        if (Text(tTrack, "TrackType") == "Video")
        {
            t.strVideoTrack = t.bVideo ? t.strVideoTrack : std::string(Text(tTrack, "TrackToken"));
            t.bVideo = true;
        }
        t.llEarliestUs = t.llEarliestUs == 0 ? llFromUs : t.llEarliestUs;
        t.llLatestUs = std::max(t.llLatestUs, llToUs);
    }
    return t;
}

// Of what FindEvents has found: that of the video track, or where there is none of the recording as a whole.
std::vector<tagFoundEvent> HistoryOf(std::vector<tagFoundEvent> const& atEvents, tagArchived const& tArchived)
{
    std::vector<tagFoundEvent> atTrack;
    std::vector<tagFoundEvent> atWhole;
    for (tagFoundEvent const& t : atEvents)
    {
        std::string const* const pstrTrack = t.tEvent.Source("Track");
        const bool bOther = pstrTrack && !tArchived.strVideoTrack.empty() && *pstrTrack != tArchived.strVideoTrack;
        if (t.tEvent.Data("IsDataPresent") && !bOther)
        {
            atTrack.push_back(t);
        }
        else if (t.tEvent.Data("IsRecording"))
        {
            atWhole.push_back(t);
        }
    }
    return atTrack.empty() ? atWhole : atTrack;
}

char const* StateName(std::vector<tagFoundEvent> const& atEvents)
{
    return !atEvents.empty() && atEvents.front().tEvent.Data("IsDataPresent") ? "IsDataPresent" : "IsRecording";
}

// When the part that is there at llTimeUs began, or will end: llEdgeUs, where nothing tells.
std::int64_t Edge(CClient& tClient, tagArchived const& tArchived, std::int64_t llTimeUs, std::int64_t llEdgeUs)
{
    const bool bBack = llEdgeUs < llTimeUs;
    std::vector<tagFoundEvent> atEvents;
    FindEvents(tClient, tArchived.strToken, llTimeUs, llEdgeUs, g_szHistory, false, g_nEdge, atEvents);
    atEvents = HistoryOf(atEvents, tArchived);
    if (bBack)
    {
        std::ranges::reverse(atEvents);
    }
    for (tagFoundEvent const& t : atEvents)
    {
        const bool bThere = IsYes(*t.tEvent.Data(StateName(atEvents)));
        if (bThere == bBack && (bBack ? t.llTimeUs <= llTimeUs : t.llTimeUs >= llTimeUs))
        {
            return t.llTimeUs;
        }
    }
    return llEdgeUs;
}
} // namespace

bool IsYes(std::string_view strText)
{
    constexpr std::string_view astrYes[] = {"true", "1", "active", "on", "True", "Active", "On", "TRUE"};
    return std::ranges::find(astrYes, strText) != std::end(astrYes);
}

int FindArchived(CClient& tClient, std::vector<tagArchived>& atFound)
{
    tagRequest tRequest{eService::Search, "FindRecordings"};
    tRequest.strBody = CXmlWriter().Add("tse:Scope", "").Add("tse:KeepAliveTime", g_szKeepAlive).Take();
    return Search(tClient, std::move(tRequest), "GetRecordingSearchResults",
                  [&](pugi::xml_node tList)
                  {
                      const auto atList = Children(tList, "RecordingInformation");
                      for (pugi::xml_node const& tInformation : atList)
                      {
                          atFound.push_back(ReadArchived(tInformation));
                      }
                      return atList.size();
                  });
}

int FindEvents(CClient& tClient, std::string const& strRecording, std::int64_t llStartUs, std::int64_t llEndUs,
               std::string_view strTopics, bool bStartState, unsigned nMost, std::vector<tagFoundEvent>& atEvents)
{
    CXmlWriter tBody;
    tBody.Add("tse:StartPoint", TimeText(llStartUs)).Add("tse:EndPoint", TimeText(llEndUs));
    tBody.Open("tse:Scope").Add("tt:IncludedRecordings", strRecording).Close();
    tBody.Open("tse:SearchFilter").Open("wsnt:TopicExpression").Attribute("Dialect", g_szConcreteSet).Text(strTopics);
    tBody.Close().Close().Add("tse:IncludeStartState", bStartState);
    if (nMost != 0)
    {
        tBody.Add("tse:MaxMatches", nMost);
    }
    tBody.Add("tse:KeepAliveTime", g_szKeepAlive);
    tagRequest tRequest{eService::Search, "FindEvents"};
    tRequest.strBody = tBody.Take();
    const int nResult = Search(tClient, std::move(tRequest), "GetEventSearchResults",
                               [&](pugi::xml_node tList)
                               {
                                   const auto atList = Children(tList, "Result");
                                   for (pugi::xml_node const& tResult : atList)
                                   {
                                       tagFoundEvent& t = atEvents.emplace_back();
                                       t.tEvent = ReadNotification(Child(tResult, "Event"));
                                       t.llTimeUs = Time(tResult, "Time").value_or(t.tEvent.llTimeUs);
                                       t.bStartState = Truth(tResult, "StartStateEvent").value_or(false);
                                       std::string const* const pstrOf = t.tEvent.Source("RecordingToken");
                                       std::string_view strOf = Text(tResult, "RecordingToken");
                                       strOf = strOf.empty() && pstrOf ? std::string_view(*pstrOf) : strOf;
                                       if (!strOf.empty() && strOf != strRecording)
                                       {
                                           atEvents.pop_back();
                                       }
                                   }
                                   return atList.size();
                               });
    std::ranges::stable_sort(atEvents, {}, &tagFoundEvent::llTimeUs);
    return nResult;
}

std::vector<tagSection> SectionsOf(std::vector<tagFoundEvent> const& atEvents, std::string_view strState,
                                   std::int64_t llFromUs, std::int64_t llToUs)
{
    std::vector<tagSection> atSections;
    bool bThere = false;
    for (tagFoundEvent const& t : atEvents)
    {
        std::string const* const pstrState = t.tEvent.Data(strState);
        const bool bNow = pstrState && IsYes(*pstrState);
        if (!pstrState || bNow == bThere)
        {
            continue;
        }
        bThere = bNow;
        if (bNow)
        {
            atSections.push_back({t.bStartState ? llFromUs : std::max(t.llTimeUs, llFromUs), llToUs, true});
        }
        else
        {
            atSections.back().llEndUs = std::min(t.llTimeUs, llToUs);
            atSections.back().bOpen = false;
        }
    }
    return atSections;
}

int FindSections(CClient& tClient, tagArchived const& tArchived, std::int64_t llStartUs, std::int64_t llEndUs,
                 std::vector<tagSection>& atSections)
{
    atSections.clear();
    const std::int64_t llNowUs = tClient.DeviceTimeUs();
    const std::int64_t llLatestUs =
        tArchived.bRecording ? std::max(tArchived.llLatestUs, llNowUs) : tArchived.llLatestUs;
    const std::int64_t llFromUs = std::max(llStartUs, tArchived.llEarliestUs);
    const std::int64_t llToUs = llEndUs == 0 ? llLatestUs : std::min(llEndUs, llLatestUs);
    if (llFromUs >= llToUs)
    {
        return eResultOk;
    }
    std::vector<tagFoundEvent> atEvents;
    const int nResult = FindEvents(tClient, tArchived.strToken, llFromUs, llToUs, g_szHistory, true, 0, atEvents);
    atEvents = HistoryOf(atEvents, tArchived);
    if (nResult != eResultOk && nResult != eResultNotSupported && nResult != eResultRefused)
    {
        return nResult;
    }
    if (nResult != eResultOk || atEvents.empty())
    {
        atSections.push_back({tArchived.llEarliestUs, llLatestUs, tArchived.bRecording});
        return eResultOk;
    }
    atSections = SectionsOf(atEvents, StateName(atEvents), llFromUs, llToUs);
    std::erase_if(atSections, [](tagSection const& t) { return t.llEndUs <= t.llStartUs; });
    // What reaches over the time that was asked for is told with its whole length.
    if (!atSections.empty() && atSections.front().llStartUs == llFromUs && llFromUs > tArchived.llEarliestUs)
    {
        atSections.front().llStartUs = Edge(tClient, tArchived, llFromUs, tArchived.llEarliestUs);
    }
    if (!atSections.empty() && atSections.back().bOpen)
    {
        atSections.back().llEndUs = llToUs < llLatestUs ? Edge(tClient, tArchived, llToUs, llLatestUs) : llLatestUs;
        atSections.back().bOpen = tArchived.bRecording && atSections.back().llEndUs == llLatestUs;
    }
    return eResultOk;
}

std::uint32_t FindCodec(CClient& tClient, std::string const& strRecording, std::int64_t llTimeUs)
{
    static std::map<std::string_view, std::uint32_t> const s_tCodecs{
        {"H264", eCodecH264}, {"H265", eCodecH265}, {"JPEG", eCodecMJPEG}, {"MPEG4", eCodecMPEG4}};
    tagRequest tRequest{eService::Search, "GetMediaAttributes"};
    tRequest.strBody = CXmlWriter().Add("tse:RecordingTokens", strRecording).Add("tse:Time", TimeText(llTimeUs)).Take();
    const CAnswer tAnswer = tClient.Call(std::move(tRequest));
    for (pugi::xml_node const& tTrack : Children(Child(tAnswer.Body(), "MediaAttributes"), "TrackAttributes"))
    {
        const auto it = s_tCodecs.find(Text(tTrack, "VideoAttributes/Encoding"));
        if (it != s_tCodecs.end())
        {
            return it->second;
        }
    }
    return 0;
}
} // namespace onvif
