#include "plugins/onvif/Recordings.h"

#include "plugins/common/TimeZone.h"
#include "plugins/onvif/Profiles.h"

#include "protocol/interface/Live.h"
#include "protocol/interface/Playback.h"

#include <algorithm>
#include <utility>

namespace onvifclient
{
namespace
{
using onvif::CAnswer;
using onvif::eService;
using onvif::tagSection;

constexpr uint32_t g_dwTypes = eHistoryContinuous | eHistoryMotion | eHistoryAlarm | eHistoryManual;
constexpr uint32_t g_dwPlain = eHistoryContinuous | eHistoryManual; // what ONVIF's recordings pass for

// Whether a text is one of the tokens by which a channel is known.
bool Names(tagChannel const& tChannel, std::string const& strName)
{
    return !strName.empty() && (strName == tChannel.strSource ||
                                std::ranges::any_of(tChannel.atProfiles, [&](tagProfile const& t)
                                                    { return strName == t.strToken || strName == t.strSourceConfig; }));
}

tagRecording Make(std::string const& strToken, uint32_t dwChannel, uint32_t dwType, tagSection const& tSection)
{
    tagRecording t;
    t.strToken = strToken;
    t.dwChannel = dwChannel;
    t.dwType = dwType;
    t.llStartUs = tSection.llStartUs;
    t.llEndUs = tSection.llEndUs;
    t.bRecording = tSection.bOpen;
    return t;
}
} // namespace

// --- names -----------------------------------------------------------------------------------------------------------

std::string tagRecording::File() const
{
    return strToken + '@' + onvif::TimeText(llStartUs) + '@' + (bRecording ? "" : onvif::TimeText(llEndUs));
}

bool tagRecording::FromFile(std::string const& strFile, tagRecording& t)
{
    const std::size_t nEnd = strFile.rfind('@');
    const std::size_t nStart =
        nEnd == std::string::npos || nEnd == 0 ? std::string::npos : strFile.rfind('@', nEnd - 1);
    if (nStart == std::string::npos)
    {
        return false;
    }
    const auto llStartUs = onvif::ParseTime(std::string_view(strFile).substr(nStart + 1, nEnd - nStart - 1));
    const auto llEndUs = onvif::ParseTime(std::string_view(strFile).substr(nEnd + 1));
    t.bRecording = nEnd + 1 == strFile.size();
    if (!llStartUs || (!llEndUs && !t.bRecording))
    {
        return false;
    }
    t.strToken = strFile.substr(0, nStart);
    t.llStartUs = *llStartUs;
    t.llEndUs = llEndUs.value_or(0);
    return true;
}

// --- which channel ---------------------------------------------------------------------------------------------------

void CRecordings::Forget()
{
    const std::lock_guard tLock(m_tMutex);
    m_tChannels.clear();
    m_tCodecs.clear();
    m_bZoneKnown = false;
}

void CRecordings::Number(tagPlaces::Numbers& tChannels)
{
    std::vector<tagOf> atAll;
    All(atAll);
    for (tagOf const& t : atAll)
    {
        tChannels.try_emplace(t.tArchived.strToken, t.dwChannel);
    }
    for (tagJob const& tJob : Jobs())
    {
        const auto it = tChannels.find(tJob.strRecording);
        if (it != tChannels.end())
        {
            tChannels.try_emplace(tJob.strToken, it->second);
        }
    }
}

// A recording belongs to the channel that its source is named after, or whose profile its job records; where nothing
// tells, recordings are in the order of the channels.
int CRecordings::All(std::vector<tagOf>& atAll)
{
    std::vector<onvif::tagArchived> atFound;
    if (const int nResult = onvif::FindArchived(m_tLogin.Client(), atFound))
    {
        return nResult;
    }
    std::shared_ptr<CProfiles::Channels const> pChannels;
    if (const int nResult = m_tLogin.Part<CProfiles>().All(pChannels); nResult != eResultOk)
    {
        if (nResult != eResultNotSupported)
        {
            return nResult;
        }
        pChannels = std::make_shared<CProfiles::Channels const>();
    }
    std::map<std::string, uint32_t> tKnown;
    {
        const std::lock_guard tLock(m_tMutex);
        tKnown = m_tChannels;
    }
    const bool bAllKnown = std::ranges::all_of(atFound, [&](auto const& t) { return tKnown.contains(t.strToken); });
    const auto atJobs = bAllKnown ? std::vector<tagJob>{} : Jobs();
    for (uint32_t i = 0; i < atFound.size(); ++i)
    {
        onvif::tagArchived& t = atFound[i];
        uint32_t dwChannel = i;
        const auto itKnown = tKnown.find(t.strToken);
        const auto itJob = std::ranges::find(atJobs, t.strToken, &tagJob::strRecording);
        for (uint32_t j = 0; j < pChannels->size(); ++j)
        {
            if (Names((*pChannels)[j], t.strSourceId) ||
                (itJob != atJobs.end() && Names((*pChannels)[j], itJob->strSource)))
            {
                dwChannel = j;
                break;
            }
        }
        dwChannel = itKnown == tKnown.end() ? dwChannel : itKnown->second;
        tKnown[t.strToken] = dwChannel;
        atAll.push_back({std::move(t), dwChannel});
    }
    const std::lock_guard tLock(m_tMutex);
    m_tChannels = std::move(tKnown);
    return eResultOk;
}

// --- questions -------------------------------------------------------------------------------------------------------

int CRecordings::FindParts(tagOf const& tOf, tagQuestion const& tQuestion, std::vector<tagRecording>& atFound)
{
    std::vector<tagSection> atSections;
    const int nResult =
        onvif::FindSections(m_tLogin.Client(), tOf.tArchived, tQuestion.llStartUs, tQuestion.llEndUs, atSections);
    for (tagSection const& tSection : atSections)
    {
        atFound.push_back(Make(tOf.tArchived.strToken, tOf.dwChannel, eHistoryContinuous, tSection));
    }
    return nResult;
}

int CRecordings::FindEventParts(tagOf const& tOf, uint32_t dwType, tagQuestion const& tQuestion,
                                std::vector<tagRecording>& atFound)
{
    onvif::tagArchived const& tArchived = tOf.tArchived;
    const int64_t llFromUs = std::max(tQuestion.llStartUs, tArchived.llEarliestUs);
    const int64_t llLatestUs = tArchived.bRecording ? m_tLogin.Client().DeviceTimeUs() : tArchived.llLatestUs;
    const int64_t llToUs = tQuestion.llEndUs ? std::min(tQuestion.llEndUs, llLatestUs) : llLatestUs;
    if (llFromUs >= llToUs)
    {
        return eResultOk;
    }
    std::vector<onvif::tagFoundEvent> atEvents;
    const int nResult =
        onvif::FindEvents(m_tLogin.Client(), tArchived.strToken, llFromUs, llToUs, TopicsOf(dwType), true, 0, atEvents);
    if (nResult != eResultOk)
    {
        return nResult == eResultNotSupported || nResult == eResultRefused ? int{eResultOk} : nResult;
    }
    // Each topic by itself: what says that motion ends ends its own. Some devices answer with others too.
    const uint32_t dwEvent = dwType == eHistoryMotion ? uint32_t{eEventMotion} : uint32_t{eEventAlarmInput};
    std::map<std::string, std::vector<onvif::tagFoundEvent>> tByKey;
    for (onvif::tagFoundEvent& t : atEvents)
    {
        if (Translate(t.tEvent, {}).dwEvent != dwEvent)
        {
            continue;
        }
        std::string const strKey = t.tEvent.Key();
        tByKey[strKey].push_back(std::move(t));
    }
    for (auto const& [strKey, atOfKey] : tByKey)
    {
        auto const& atData = atOfKey.front().tEvent.atData;
        const std::string strState = atData.empty() ? "" : atData.front().first;
        for (tagSection const& tSection : onvif::SectionsOf(atOfKey, strState, llFromUs, llToUs))
        {
            atFound.push_back(Make(tArchived.strToken, tOf.dwChannel, dwType, tSection));
        }
    }
    return eResultOk;
}

int CRecordings::Find(tagQuestion const& tQuestion, std::vector<tagRecording>& atFound)
{
    if ((tQuestion.dwTypes & ~g_dwTypes) != 0 || tQuestion.dwStreamKind > 5)
    {
        return eResultBadArgument;
    }
    std::vector<tagOf> atAll;
    if (const int nResult = All(atAll))
    {
        return nResult;
    }
    std::shared_ptr<CProfiles::Channels const> pChannels;
    std::size_t nChannels = m_tLogin.Part<CProfiles>().All(pChannels) == eResultOk ? pChannels->size() : 0;
    for (tagOf const& tOf : atAll)
    {
        nChannels = std::max<std::size_t>(nChannels, tOf.dwChannel + 1);
    }
    if (nChannels < 64 && tQuestion.ullChannels >> nChannels != 0)
    {
        return eResultNoChannel;
    }
    for (tagOf const& tOf : atAll)
    {
        const bool bWanted =
            tQuestion.ullChannels == 0 || (tOf.dwChannel < 64 && (tQuestion.ullChannels >> tOf.dwChannel & 1) != 0);
        const bool bMain = tQuestion.dwStreamKind < eStreamSub;
        int nResult = eResultOk;
        if (bWanted && bMain && (tQuestion.dwTypes == 0 || (tQuestion.dwTypes & g_dwPlain) != 0))
        {
            nResult = FindParts(tOf, tQuestion, atFound);
        }
        for (const uint32_t dwType : {uint32_t{eHistoryMotion}, uint32_t{eHistoryAlarm}})
        {
            if (bWanted && bMain && nResult == eResultOk && (tQuestion.dwTypes & g_dwPlain) == 0 &&
                (tQuestion.dwTypes & dwType) != 0)
            {
                nResult = FindEventParts(tOf, dwType, tQuestion, atFound);
            }
        }
        if (nResult != eResultOk)
        {
            return nResult;
        }
    }
    std::ranges::stable_sort(atFound, {}, &tagRecording::llStartUs);
    for (tagRecording& t : atFound)
    {
        t.dwCodec = CodecOf(t);
    }
    return eResultOk;
}

// Asked once of each of the device's recordings.
uint32_t CRecordings::CodecOf(tagRecording const& t)
{
    {
        const std::lock_guard tLock(m_tMutex);
        const auto it = m_tCodecs.find(t.strToken);
        if (it != m_tCodecs.end())
        {
            return it->second;
        }
    }
    const uint32_t dwCodec = onvif::FindCodec(m_tLogin.Client(), t.strToken, t.llStartUs);
    const std::lock_guard tLock(m_tMutex);
    return m_tCodecs[t.strToken] = dwCodec;
}

int CRecordings::FindFile(std::string const& strFile, tagRecording& t)
{
    std::vector<tagOf> atAll;
    if (!tagRecording::FromFile(strFile, t))
    {
        return eResultNotFound;
    }
    if (const int nResult = All(atAll))
    {
        return nResult;
    }
    const auto it = std::ranges::find_if(atAll, [&](tagOf const& tOf) { return tOf.tArchived.strToken == t.strToken; });
    if (it == atAll.end())
    {
        return eResultNotFound;
    }
    t.dwChannel = it->dwChannel;
    t.dwType = eHistoryContinuous;
    t.llEndUs = t.bRecording ? std::max(it->tArchived.llLatestUs, m_tLogin.Client().DeviceTimeUs()) : t.llEndUs;
    return eResultOk;
}

int32_t CRecordings::UtcOffsetMinutes(int64_t llTimeUs)
{
    bool bKnown = false;
    {
        const std::lock_guard tLock(m_tMutex);
        bKnown = m_bZoneKnown;
    }
    if (!bKnown)
    {
        const CAnswer tAnswer = m_tLogin.Call({eService::Device, "GetSystemDateAndTime"});
        const std::lock_guard tLock(m_tMutex);
        m_strZone = onvif::Text(tAnswer.Body(), "SystemDateAndTime/TimeZone/TZ");
        m_bZoneKnown = static_cast<bool>(tAnswer);
    }
    const std::lock_guard tLock(m_tMutex);
    return plugin::UtcOffsetMinutes(m_strZone, llTimeUs);
}
} // namespace onvifclient
