// How a device records: its recordings' jobs, and how long what they make is kept.

#include "plugins/onvif/Edit.h"
#include "plugins/onvif/Profiles.h"
#include "plugins/onvif/Recordings.h"

#include "protocol/interface/Live.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
using onvif::CAnswer;
using onvif::CXmlWriter;
using onvif::eService;

constexpr int64_t g_llDayMs = int64_t{24} * 3600 * 1000;
constexpr int64_t g_llMostDays = 3650;

std::string Of(std::string const& strToken)
{
    return CXmlWriter().Add("trc:RecordingToken", strToken).Take();
}
} // namespace

// The recording of a channel, which exists by itself.
int CRecordings::OfChannel(uint32_t dwChannel, std::shared_ptr<tagChannel const>& pChannel, std::string& strToken)
{
    std::vector<tagOf> atAll;
    if (!m_tLogin.Client().Has(eService::Recording))
    {
        return eResultNotSupported;
    }
    int nResult = m_tLogin.Part<CProfiles>().Channel(dwChannel, pChannel);
    nResult = nResult ? nResult : All(atAll);
    const auto it = std::ranges::find(atAll, dwChannel, &tagOf::dwChannel);
    if (nResult == eResultOk && it == atAll.end())
    {
        return eResultNotSupported; // the device has none for it
    }
    strToken = nResult ? std::string() : it->tArchived.strToken;
    return nResult;
}

int CRecordings::ReadPlan(uint32_t dwChannel, tagPlan& t)
{
    std::shared_ptr<tagChannel const> pChannel;
    std::string strToken;
    if (const int nResult = OfChannel(dwChannel, pChannel, strToken))
    {
        return nResult;
    }
    const CAnswer tRecordings = m_tLogin.Call({eService::Recording, "GetRecordings"});
    for (pugi::xml_node tItem : onvif::Children(tRecordings.Body(), "RecordingItem"))
    {
        if (onvif::Text(tItem, "RecordingToken") != strToken)
        {
            continue;
        }
        const auto llMs = onvif::ParseDuration(onvif::Text(tItem, "Configuration/MaximumRetentionTime"));
        t.dwKeepDays = static_cast<uint32_t>(std::clamp(llMs.value_or(0) / g_llDayMs, int64_t{0}, g_llMostDays));
        for (pugi::xml_node tTrack : onvif::Children(onvif::Child(tItem, "Tracks"), "Track"))
        {
            t.bAudio = t.bAudio || onvif::Text(tTrack, "Configuration/TrackType") == "Audio";
        }
    }
    t.dwStreamKind = eStreamMain;
    for (tagJob const& tJob : Jobs())
    {
        if (tJob.strRecording == strToken)
        {
            auto const& atProfiles = pChannel->atProfiles;
            t.bActive = t.bActive || tJob.bActive;
            t.dwStreamKind = atProfiles.size() > 1 && atProfiles[1].strToken == tJob.strSource ? uint32_t{eStreamSub}
                                                                                               : t.dwStreamKind;
        }
    }
    return tRecordings.Result();
}

int CRecordings::Keep(uint32_t dwChannel, uint32_t dwDays)
{
    std::shared_ptr<tagChannel const> pChannel;
    std::string strToken;
    if (const int nResult = OfChannel(dwChannel, pChannel, strToken))
    {
        return nResult;
    }
    const CAnswer tNow = m_tLogin.Call({eService::Recording, "GetRecordingConfiguration", Of(strToken)});
    if (!tNow)
    {
        return tNow.Result();
    }
    CEdit tEdit(onvif::Child(tNow.Body(), "RecordingConfiguration"), "RecordingConfiguration");
    tEdit.Set("MaximumRetentionTime", onvif::DurationText(dwDays * g_llDayMs));
    return m_tLogin
        .Call({eService::Recording, "SetRecordingConfiguration", Of(strToken) + tEdit.As("trc:RecordingConfiguration")})
        .Result();
}

int CRecordings::Control(uint32_t dwChannel, bool bOn)
{
    std::shared_ptr<tagChannel const> pChannel;
    std::string strToken;
    if (const int nResult = OfChannel(dwChannel, pChannel, strToken))
    {
        return nResult;
    }
    const auto atJobs = Jobs();
    const auto itJob = std::ranges::find(atJobs, strToken, &tagJob::strRecording);
    if (itJob != atJobs.end())
    {
        const std::string strBody =
            CXmlWriter().Add("trc:JobToken", itJob->strToken).Add("trc:Mode", bOn ? "Active" : "Idle").Take();
        return m_tLogin.Call({eService::Recording, "SetRecordingJobMode", strBody}).Result();
    }
    if (!bOn)
    {
        return eResultOk; // nothing records
    }
    CXmlWriter tBody;
    tBody.Open("trc:JobConfiguration").Add("tt:RecordingToken", strToken);
    tBody.Add("tt:Mode", "Active").Add("tt:Priority", 1).Open("tt:Source").Open("tt:SourceToken");
    tBody.Attribute("Type", "http://www.onvif.org/ver10/schema/Profile");
    tBody.Add("tt:Token", pChannel->atProfiles.front().strToken);
    return m_tLogin.Call({eService::Recording, "CreateRecordingJob", tBody.Take()}).Result();
}

std::vector<CRecordings::tagJob> CRecordings::Jobs()
{
    std::vector<tagJob> atJobs;
    if (m_tLogin.Client().Has(eService::Recording))
    {
        const CAnswer tAnswer = m_tLogin.Call({eService::Recording, "GetRecordingJobs"});
        for (pugi::xml_node const& tJob : onvif::Children(tAnswer.Body(), "JobItem"))
        {
            const pugi::xml_node tHow = onvif::Child(tJob, "JobConfiguration");
            tagJob& t = atJobs.emplace_back();
            t.strToken = onvif::Text(tJob, "JobToken");
            t.strRecording = onvif::Text(tHow, "RecordingToken");
            t.strSource = onvif::Text(tHow, "Source/SourceToken/Token");
            t.bActive = onvif::Text(tHow, "Mode") == "Active";
        }
    }
    return atJobs;
}
} // namespace onvifclient
