#include "plugins/onvif/Replay.h"

#include <algorithm>
#include <map>

namespace onvifclient
{
namespace
{
using onvif::CAnswer;
using onvif::CXmlWriter;
using onvif::eService;

int ReplayAddress(CLogin const& tLogin, std::string const& strToken, rtsp::tagUrl& tUrl)
{
    if (!tLogin.Client().Has(eService::Replay))
    {
        return eResultNotSupported;
    }
    CXmlWriter tBody;
    tBody.Open("trp:StreamSetup").Add("tt:Stream", "RTP-Unicast");
    tBody.Open("tt:Transport").Add("tt:Protocol", "RTSP").Close().Close();
    tBody.Add("trp:RecordingToken", strToken);
    const CAnswer tAnswer = tLogin.Call({eService::Replay, "GetReplayUri", tBody.Take()});
    if (!tAnswer)
    {
        return tAnswer.Result();
    }
    const auto tParsed = rtsp::ParseUrl(tLogin.Client().Reachable(onvif::Text(tAnswer.Body(), "Uri")));
    tUrl = tParsed.value_or(rtsp::tagUrl{});
    return tParsed ? int{eResultOk} : int{eResultRefused};
}
} // namespace

int MakeStretches(CLogin const& tLogin, std::vector<tagRecording> const& atParts, int64_t llStartUs, int64_t llEndUs,
                  std::vector<tagStretch>& atStretches)
{
    std::map<std::string, rtsp::tagUrl> tUrls;
    std::string strLast;
    for (tagRecording const& t : atParts)
    {
        const int64_t llFromUs = std::max(t.llStartUs, llStartUs);
        const int64_t llToUs = llEndUs ? std::min(t.llEndUs, llEndUs) : t.llEndUs;
        const bool bGrows = t.bRecording && llEndUs == 0;
        if (llFromUs >= llToUs && !bGrows)
        {
            continue;
        }
        if (!atStretches.empty() && strLast == t.strToken)
        {
            atStretches.back().llEndUs = std::max(atStretches.back().llEndUs, llToUs);
            atStretches.back().bGrows = bGrows;
            continue;
        }
        if (!tUrls.contains(t.strToken))
        {
            if (const int nResult = ReplayAddress(tLogin, t.strToken, tUrls[t.strToken]))
            {
                return nResult;
            }
        }
        tagStretch& tStretch = atStretches.emplace_back();
        tStretch.tOptions.tUrl = tUrls[t.strToken];
        tStretch.tOptions.strUser = tLogin.Client().User();
        tStretch.tOptions.strPassword = tLogin.Client().Password();
        tStretch.llStartUs = llFromUs;
        tStretch.llEndUs = llToUs;
        tStretch.bGrows = bGrows;
        strLast = t.strToken;
    }
    return atStretches.empty() ? int{eResultNotFound} : int{eResultOk};
}

std::optional<tagReplayEnd> ReplayEnd(unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3)
{
    constexpr unsigned long dwInvalidRange = 457;
    if (dwWord3 != 0 || (dwEvent != eEventLost && dwEvent != eEventRefused))
    {
        return std::nullopt;
    }
    if (dwEvent == eEventLost)
    {
        return tagReplayEnd{dwWord2 == 0, eResultConnectionLost};
    }
    return tagReplayEnd{dwWord2 == dwInvalidRange, dwWord2 == 401 || dwWord2 == 403   ? int{eResultWrongLogin}
                                                   : dwWord2 == 404                   ? int{eResultNotFound}
                                                   : dwWord2 == 453 || dwWord2 == 503 ? int{eResultBusy}
                                                                                      : int{eResultRefused}};
}
} // namespace onvifclient
