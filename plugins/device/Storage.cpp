#include "plugins/device/Storage.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"
#include "plugins/device/TimeZone.h"

#include <algorithm>
#include <chrono>

namespace device
{
namespace
{
// Between two looks at what has become too old or too much.
constexpr int64_t g_llLookUs = 10000000;

constexpr uint32_t g_dwTypes = eHistoryContinuous | eHistoryMotion | eHistoryAlarm | eHistoryManual;

char const* TypeName(uint32_t dwType)
{
    switch (dwType)
    {
    case eHistoryMotion:
        return "motion";
    case eHistoryAlarm:
        return "alarm";
    case eHistoryManual:
        return "manual";
    default:
        return "continuous";
    }
}

uint64_t LengthOf(tagRecording const& t)
{
    return static_cast<uint64_t>(t.llEndUs - t.llStartUs) * t.tVideo.dwBitRate / 8000;
}

bool Overlaps(tagRecording const& t, int64_t llStartUs, int64_t llEndUs)
{
    return (llStartUs == 0 || t.llEndUs > llStartUs) && (llEndUs == 0 || t.llStartUs < llEndUs);
}

// Whether such a recording has a while before and after its reason.
bool HasEdges(uint32_t dwType)
{
    return dwType == eHistoryMotion || dwType == eHistoryAlarm;
}

// The texts that a size is asked with; null or empty: 0.
bool ReadTime(char const* szTime, int64_t& llTimeUs)
{
    llTimeUs = 0;
    return !szTime || !*szTime || ParseUtc(szTime, llTimeUs);
}
} // namespace

std::string tagRecording::File() const
{
    char szChannel[16];
    std::snprintf(szChannel, sizeof szChannel, "ch%02u/", dwChannel);
    char szMicroseconds[16];
    std::snprintf(szMicroseconds, sizeof szMicroseconds, "-%06u-", static_cast<unsigned>(llStartUs % 1000000));
    return szChannel + CompactUtc(llStartUs) + szMicroseconds + TypeName(dwType) + ".rec";
}

CStorage::CStorage(CDevice& tDevice)
    : CPart(tDevice), m_abFull(tDevice.Blueprint().dwDisks), m_abFaulty(tDevice.Blueprint().dwDisks),
      m_adwGroupOf(tDevice.Channels()), m_adwScheduled(tDevice.Channels())
{
    Reset();
    MakeOld();
}

void CStorage::Reset()
{
    CStore const& tStore = m_tDevice.Store();
    m_atDisks = tStore.GetList<tagDisk>("disks");
    for (auto i = static_cast<uint32_t>(m_atDisks.size()); i < m_tDevice.Blueprint().dwDisks; ++i)
    {
        m_atDisks.push_back({i == 0 ? 0U : 1U, i == 0 ? static_cast<uint32_t>(eDiskGroupMain)
                                                      : static_cast<uint32_t>(eDiskGroupRedundant)});
    }
    m_atDisks.resize(m_tDevice.Blueprint().dwDisks);
    m_atQuotas = tStore.GetList<tagQuota>("quotas");
    const auto adwGroupOf = tStore.GetList<uint32_t>("groups");
    std::ranges::fill(m_adwGroupOf, 0);
    std::copy_n(adwGroupOf.begin(), std::min(adwGroupOf.size(), m_adwGroupOf.size()), m_adwGroupOf.begin());
}

// What was recorded before the device began to exist, on a grid of absolute times: the same in every process. What is
// remembered takes its place.
void CStorage::MakeOld()
{
    tagRecordingBlueprint const& tBlueprint = m_tDevice.Blueprint().tRecordings;
    CConfiguration const& tConfiguration = m_tDevice.Part<CConfiguration>();
    constexpr uint32_t adwTypes[] = {eHistoryContinuous, eHistoryContinuous, eHistoryMotion, eHistoryAlarm};
    const int64_t llEveryUs = int64_t{tBlueprint.dwEverySeconds} * 1000000;
    const int64_t llLengthUs = std::min(int64_t{tBlueprint.dwSeconds} * 1000000, llEveryUs);
    const int64_t llSlot = m_tDevice.Clock().NowUs() / llEveryUs;
    std::vector<tagRecording> atKept = m_tDevice.Store().GetList<tagRecording>("recordings");
    // The device may have become smaller since.
    std::erase_if(atKept, [&](tagRecording const& t)
                  { return t.dwDisk >= m_atDisks.size() || t.dwChannel >= m_tDevice.Channels(); });
    for (uint32_t n = m_atDisks.empty() ? 0 : tBlueprint.dwCount; n > 0; --n)
    {
        for (uint32_t i = 0; i < m_tDevice.Channels(); ++i)
        {
            tagRecording t;
            t.dwChannel = i;
            t.llStartUs = (llSlot - n) * llEveryUs;
            t.llEndUs = t.llStartUs + llLengthUs;
            t.dwType = adwTypes[static_cast<uint64_t>(llSlot - n) % std::size(adwTypes)];
            t.dwStreamKind = eStreamMain;
            t.tVideo = tConfiguration.Get<tagConfigVideoEncoder>(i, eStreamMain);
            t.tAudio = tConfiguration.Get<tagConfigAudioEncoder>(i, eStreamMain);
            t.ullLength = LengthOf(t);
            if (std::ranges::none_of(atKept, [&](tagRecording const& tKept)
                                     { return tKept.dwChannel == i && tKept.llStartUs == t.llStartUs; }))
            {
                m_atRecordings.push_back(t);
            }
        }
    }
    m_atRecordings.insert(m_atRecordings.end(), atKept.begin(), atKept.end());
    std::ranges::stable_sort(m_atRecordings, {}, &tagRecording::llStartUs);
}

// Remembered are those that were made in the device's own time, and those that are protected.
void CStorage::Keep()
{
    const int64_t llEveryUs = int64_t{m_tDevice.Blueprint().tRecordings.dwEverySeconds} * 1000000;
    std::vector<tagRecording> atKept;
    std::ranges::copy_if(m_atRecordings, std::back_inserter(atKept),
                         [&](tagRecording const& t)
                         { return !t.bRecording && (t.bLocked || t.llStartUs % llEveryUs != 0); });
    m_tDevice.Store().PutList("recordings", atKept);
}

// --- questions -------------------------------------------------------------------------------------------------------

tagRecording CStorage::Now(tagRecording const& tRecording) const
{
    tagRecording t = tRecording;
    if (t.bRecording)
    {
        t.llEndUs = std::max(t.llStartUs, m_tDevice.Clock().NowUs());
        t.ullLength = LengthOf(t);
    }
    return t;
}

std::vector<tagRecording> CStorage::Find(tagRecordingQuestion const& tQuestion) const
{
    std::vector<tagRecording> atFound;
    for (tagRecording const& tAny : m_atRecordings)
    {
        if ((tQuestion.ullChannels == 0 || (tQuestion.ullChannels >> tAny.dwChannel & 1) != 0) &&
            (tQuestion.dwTypes == 0 || (tQuestion.dwTypes & tAny.dwType) != 0) &&
            StreamIndex(tQuestion.dwStreamKind) == StreamIndex(tAny.dwStreamKind) &&
            (!tQuestion.bLockedOnly || tAny.bLocked) && (tQuestion.strFile.empty() || tQuestion.strFile == tAny.File()))
        {
            const tagRecording t = Now(tAny);
            if (Overlaps(t, tQuestion.llStartUs, tQuestion.llEndUs))
            {
                atFound.push_back(t);
            }
        }
    }
    return atFound;
}

template <class Result>
std::vector<Result> CStorage::Results(tagRecordingQuestion const& tQuestion) const
{
    std::vector<Result> atResults;
    for (tagRecording const& t : Find(tQuestion))
    {
        Result& tResult = atResults.emplace_back();
        tResult.dwSize = sizeof tResult;
        tResult.dwChannel = t.dwChannel;
        tResult.dwType = t.dwType;
        tResult.dwStreamKind = t.dwStreamKind;
        tResult.llStartUs = t.llStartUs;
        tResult.llEndUs = t.llEndUs;
        tResult.ullLength = t.ullLength;
        tResult.dwCodec = t.tVideo.dwCodec;
        tResult.bLocked = t.bLocked ? 1 : 0;
        tResult.bRecording = t.bRecording ? 1 : 0;
        CopyText(tResult.szFile, t.File());
    }
    return atResults;
}

int CStorage::Query(tagHistoryStreamQueryFactor const& tFactor, std::vector<tagHistoryStreamQueryResult>& atFound) const
{
    if (tFactor.dwChannel >= m_tDevice.Channels())
    {
        return eResultNoChannel;
    }
    const bool bOneType = (tFactor.dwType & (tFactor.dwType - 1)) == 0 && (tFactor.dwType & ~g_dwTypes) == 0;
    if (!bOneType || StreamIndex(tFactor.dwStreamKind) < 0 || tFactor.bLockedOnly > 1)
    {
        return eResultBadArgument;
    }
    atFound = Results<tagHistoryStreamQueryResult>({uint64_t{1} << tFactor.dwChannel,
                                                    tFactor.dwType,
                                                    tFactor.dwStreamKind,
                                                    tFactor.llStartUs,
                                                    tFactor.llEndUs,
                                                    tFactor.bLockedOnly != 0,
                                                    {}});
    return eResultOk;
}

int CStorage::QueryTypes(tagHistoryStreamMultiTypeQueryFactor const& tFactor,
                         std::vector<tagHistoryStreamMultiTypeQueryResult>& atFound) const
{
    if (m_tDevice.Channels() < 64 && tFactor.ullChannels >> m_tDevice.Channels() != 0)
    {
        return eResultNoChannel;
    }
    if ((tFactor.dwTypes & ~g_dwTypes) != 0 || StreamIndex(tFactor.dwStreamKind) < 0 || tFactor.bLockedOnly > 1)
    {
        return eResultBadArgument;
    }
    atFound = Results<tagHistoryStreamMultiTypeQueryResult>({tFactor.ullChannels,
                                                             tFactor.dwTypes,
                                                             tFactor.dwStreamKind,
                                                             tFactor.llStartUs,
                                                             tFactor.llEndUs,
                                                             tFactor.bLockedOnly != 0,
                                                             {}});
    return eResultOk;
}

int CStorage::DaysWithData(uint32_t dwChannel, uint32_t dwTypes, uint32_t dwMonth, char* szDays,
                           uint32_t& dwLength) const
{
    using namespace std::chrono;
    const year_month tMonth = year{static_cast<int>(dwMonth / 100)} / month{dwMonth % 100};
    if (dwChannel >= m_tDevice.Channels())
    {
        return eResultNoChannel;
    }
    if (!tMonth.ok() || dwMonth < 197001 || dwMonth > 999912 || (dwTypes & ~g_dwTypes) != 0 || !szDays)
    {
        return eResultBadArgument;
    }
    const auto dwDays = static_cast<unsigned>((tMonth / last).day());
    if (dwLength < dwDays + 1)
    {
        return eResultBadArgument;
    }
    const sys_days tFirst{tMonth / day{1}};
    const auto strZone = Text(m_tDevice.Part<CConfiguration>().Get<tagConfigClock>().szTimeZone);
    const int64_t llDayUs = 86400 * int64_t{1000000};
    for (unsigned i = 0; i < dwDays; ++i)
    {
        int64_t llStartUs = duration_cast<microseconds>((tFirst + days{i}).time_since_epoch()).count();
        llStartUs -= int64_t{UtcOffsetMinutes(strZone, llStartUs)} * 60000000;
        szDays[i] =
            Find({uint64_t{1} << dwChannel, dwTypes, 0, llStartUs, llStartUs + llDayUs, false, {}}).empty() ? '0' : '1';
    }
    szDays[dwDays] = '\0';
    dwLength = dwDays;
    return eResultOk;
}

int CStorage::SizeOf(uint32_t dwChannel, eDiskGroupType eGroup, uint32_t dwTypes, char const* szBegin,
                     char const* szEnd, uint32_t dwFlag, uint32_t& dwMebibytes) const
{
    int64_t llStartUs = 0;
    int64_t llEndUs = 0;
    if (dwChannel != TESSARO_ALL && dwChannel >= m_tDevice.Channels())
    {
        return eResultNoChannel;
    }
    if (eGroup < eDiskGroupAll || eGroup > eDiskGroupArchive || (dwTypes & ~g_dwTypes) != 0 || dwFlag > 1 ||
        !ReadTime(szBegin, llStartUs) || !ReadTime(szEnd, llEndUs))
    {
        return eResultBadArgument;
    }
    uint64_t ullBytes = 0;
    const uint64_t ullChannels = dwChannel == TESSARO_ALL ? 0 : uint64_t{1} << dwChannel;
    for (tagRecording const& t : Find({ullChannels, dwTypes, 0, llStartUs, llEndUs, dwFlag == 1, {}}))
    {
        const bool bThere = eGroup == eDiskGroupAll || m_atDisks[t.dwDisk].dwGroupType == static_cast<uint32_t>(eGroup);
        ullBytes += bThere ? t.ullLength : 0;
    }
    dwMebibytes = static_cast<uint32_t>((ullBytes + (1 << 20) - 1) >> 20);
    return eResultOk;
}

// --- recording -------------------------------------------------------------------------------------------------------

int CStorage::Lock(tagCaller const& tCaller, std::string const& strFile, eFileLockOperationCode eAction)
{
    if (eAction != eFileLock && eAction != eFileUnlock)
    {
        return eResultBadArgument;
    }
    const auto it = std::ranges::find_if(m_atRecordings, [&](tagRecording const& t) { return t.File() == strFile; });
    if (it == m_atRecordings.end())
    {
        return eResultNotFound;
    }
    it->bLocked = eAction == eFileLock;
    Keep();
    m_tDevice.Part<CDeviceLog>().Add(eLogRecording, (it->bLocked ? "protected " : "let go ") + strFile, &tCaller, 0,
                                     it->dwChannel);
    return eResultOk;
}

int CStorage::Control(tagCaller const&, uint32_t dwChannel, uint32_t dwOn)
{
    return dwChannel >= m_tDevice.Channels() ? int{eResultNoChannel}
           : dwOn > 1                        ? int{eResultBadArgument}
                                             : Record(dwChannel, eHistoryManual, dwOn == 1);
}

tagRecording* CStorage::Running(uint32_t dwChannel, uint32_t dwType)
{
    const auto it = std::ranges::find_if(
        m_atRecordings, [&](tagRecording const& t)
        { return t.bRecording && t.dwChannel == dwChannel && (dwType == 0 || t.dwType == dwType); });
    return it == m_atRecordings.end() ? nullptr : &*it;
}

bool CStorage::IsRecording() const
{
    return std::ranges::any_of(m_atRecordings, &tagRecording::bRecording);
}

int CStorage::DiskFor(uint32_t dwChannel, uint32_t& dwDisk) const
{
    for (dwDisk = 0; dwDisk < m_atDisks.size(); ++dwDisk)
    {
        if (m_atDisks[dwDisk].dwGroup == m_adwGroupOf[dwChannel] && !m_abFull[dwDisk] && !m_abFaulty[dwDisk])
        {
            return eResultOk;
        }
    }
    return eResultDeviceFull;
}

int CStorage::Record(uint32_t dwChannel, uint32_t dwType, bool bOn)
{
    tagRecording* const ptRunning = Running(dwChannel, dwType);
    const uint32_t dwAfter = m_tDevice.Part<CConfiguration>().Get<tagConfigSchedule>(dwChannel).dwAfterSeconds;
    if (bOn)
    {
        m_tEnding.erase({dwChannel, dwType});
    }
    if (bOn == (ptRunning != nullptr))
    {
        return eResultOk;
    }
    if (!bOn && HasEdges(dwType) && dwAfter != 0)
    {
        m_tEnding.emplace(std::pair{dwChannel, dwType}, m_tDevice.SteadyNow() + int64_t{dwAfter} * 1000000);
        return eResultOk;
    }
    if (!bOn)
    {
        End(*ptRunning);
        Keep();
        return eResultOk;
    }
    tagRecording t;
    if (const int nResult = DiskFor(dwChannel, t.dwDisk))
    {
        return nResult;
    }
    t.dwChannel = dwChannel;
    t.dwType = dwType;
    Begin(t);
    m_atRecordings.insert(std::ranges::upper_bound(m_atRecordings, t.llStartUs, {}, &tagRecording::llStartUs), t);
    m_tDevice.Part<CAlarms>().Set(eEventRecording, dwChannel, dwType);
    m_llCheckUs = std::min(m_llCheckUs, m_tDevice.SteadyNow() + g_llLookUs);
    return eResultOk;
}

// As the channel's schedule says: which stream of it, whether with sound, and from when on.
void CStorage::Begin(tagRecording& t)
{
    CConfiguration const& tConfiguration = m_tDevice.Part<CConfiguration>();
    const auto tSchedule = tConfiguration.Get<tagConfigSchedule>(t.dwChannel);
    const bool bAsked = t.dwType == eHistoryManual;
    t.dwStreamKind = bAsked ? static_cast<uint32_t>(eStreamMain) : tSchedule.dwStreamKind;
    t.tVideo = tConfiguration.Get<tagConfigVideoEncoder>(t.dwChannel, t.dwStreamKind);
    t.tAudio = tConfiguration.Get<tagConfigAudioEncoder>(t.dwChannel, t.dwStreamKind);
    t.tAudio.bEnabled = bAsked || tSchedule.bAudio ? t.tAudio.bEnabled : 0;
    t.bRecording = true;
    t.llStartUs = t.llEndUs = m_tDevice.Clock().NowUs();
    if (HasEdges(t.dwType))
    {
        t.llStartUs -= int64_t{tSchedule.dwBeforeSeconds} * 1000000;
    }
    for (tagRecording const& tOther : m_atRecordings)
    {
        const bool bBefore = tOther.dwChannel == t.dwChannel && tOther.dwType == t.dwType && tOther.llEndUs < t.llEndUs;
        t.llStartUs = bBefore ? std::max(t.llStartUs, tOther.llEndUs) : t.llStartUs;
    }
}

void CStorage::End(tagRecording& tRecording)
{
    m_tEnding.erase({tRecording.dwChannel, tRecording.dwType});
    tRecording = Now(tRecording);
    tRecording.bRecording = false;
    tagRecording const* const ptOther = Running(tRecording.dwChannel, 0);
    m_tDevice.Part<CAlarms>().Set(eEventRecording, tRecording.dwChannel, ptOther ? ptOther->dwType : 0);
}

void CStorage::Halt()
{
    for (tagRecording& t : m_atRecordings)
    {
        if (t.bRecording)
        {
            End(t);
        }
    }
    std::ranges::fill(m_adwScheduled, 0);
    CheckSchedules();
    Keep();
}

// --- schedules -------------------------------------------------------------------------------------------------------

// The types that a channel's schedule wants to be recorded now.
uint32_t CStorage::Wanted(uint32_t dwChannel) const
{
    CConfiguration const& tConfiguration = m_tDevice.Part<CConfiguration>();
    CAlarms const& tAlarms = m_tDevice.Part<CAlarms>();
    const auto tSchedule = tConfiguration.Get<tagConfigSchedule>(dwChannel);
    const auto tClock = tConfiguration.Get<tagConfigClock>();
    const int64_t llNowUs = m_tDevice.Clock().NowUs();
    const int64_t llMinute = llNowUs / 60000000 + UtcOffsetMinutes(Text(tClock.szTimeZone), llNowUs);
    const auto dwDay = static_cast<uint32_t>((llMinute / 1440 + 4) % 7); // 1970 began with a Thursday
    const auto dwMinute = static_cast<uint32_t>(llMinute % 1440);
    uint32_t dwTypes = 0;
    for (uint32_t i = 0; tSchedule.bEnabled && i < tSchedule.dwCount; ++i)
    {
        tagScheduleSpan const& t = tSchedule.atSpans[i];
        const bool bNow = t.dwDay == dwDay && t.dwStartMinute <= dwMinute && dwMinute < t.dwEndMinute;
        dwTypes |= bNow ? t.dwTypes : 0;
    }
    bool bInput = false;
    for (uint32_t i = 0; i < m_tDevice.Blueprint().dwInputs; ++i)
    {
        bInput = bInput || tAlarms.IsOn(eEventAlarmInput, i);
    }
    return (dwTypes & eHistoryContinuous) | (tAlarms.IsOn(eEventMotion, dwChannel) ? dwTypes & eHistoryMotion : 0) |
           (bInput ? dwTypes & eHistoryAlarm : 0);
}

void CStorage::Advance()
{
    const auto tEnding = m_tEnding;
    for (auto const& [tKey, llEndUs] : tEnding)
    {
        tagRecording* const ptRunning = Running(tKey.first, tKey.second);
        if (ptRunning && llEndUs <= m_tDevice.SteadyNow())
        {
            End(*ptRunning);
            Keep();
        }
    }
    if (m_llCheckUs <= m_tDevice.SteadyNow())
    {
        CheckNow();
    }
}

void CStorage::CheckNow()
{
    m_llCheckUs = IsRecording() ? m_tDevice.SteadyNow() + g_llLookUs : g_llNever;
    for (uint32_t i = 0; i < m_tDevice.Channels(); ++i)
    {
        const uint32_t dwWanted = Wanted(i);
        for (const uint32_t dwType : {eHistoryContinuous, eHistoryMotion, eHistoryAlarm})
        {
            if ((dwWanted & dwType) != (m_adwScheduled[i] & dwType) &&
                Record(i, dwType, (dwWanted & dwType) != 0) == eResultOk)
            {
                m_adwScheduled[i] ^= dwType;
            }
        }
        const auto tSchedule = m_tDevice.Part<CConfiguration>().Get<tagConfigSchedule>(i);
        if (tSchedule.bEnabled || tSchedule.dwKeepDays)
        {
            const int64_t llEveryUs = tSchedule.bEnabled ? 1000000 : g_llLookUs;
            m_llCheckUs = std::min(m_llCheckUs, m_tDevice.SteadyNow() + llEveryUs);
        }
    }
    if (DeleteOld())
    {
        Keep();
    }
}

int64_t CStorage::NextDue() const
{
    int64_t llDueUs = m_llCheckUs;
    for (auto const& [tKey, llEndUs] : m_tEnding)
    {
        llDueUs = std::min(llDueUs, llEndUs);
    }
    return llDueUs;
}

// Deletes the oldest of these until they take at most so many bytes; not what is protected or still grows.
bool CStorage::Delete(Which const& fnWhich, uint64_t ullMost)
{
    uint64_t ullBytes = 0;
    for (tagRecording const& t : m_atRecordings)
    {
        ullBytes += fnWhich(t) ? Now(t).ullLength : 0;
    }
    return std::erase_if(m_atRecordings,
                         [&](tagRecording const& t)
                         {
                             const bool bGoes = ullBytes > ullMost && !t.bLocked && !t.bRecording && fnWhich(t);
                             ullBytes -= bGoes ? t.ullLength : 0;
                             return bGoes;
                         }) != 0;
}

// What is older than its channel keeps, more than its channel may have, or more than there is room for.
bool CStorage::DeleteOld()
{
    bool bDeleted = false;
    const int64_t llNowUs = m_tDevice.Clock().NowUs();
    const uint64_t ullDisk = m_tDevice.Blueprint().ullDiskBytes;
    for (uint32_t i = 0; i < m_tDevice.Channels(); ++i)
    {
        const uint32_t dwDays = m_tDevice.Part<CConfiguration>().Get<tagConfigSchedule>(i).dwKeepDays;
        const int64_t llOldUs = llNowUs - int64_t{dwDays} * 86400 * 1000000;
        bDeleted |=
            dwDays != 0 && Delete([&](tagRecording const& t) { return t.dwChannel == i && t.llEndUs < llOldUs; }, 0);
    }
    for (tagQuota const& tQuota : m_atQuotas)
    {
        const auto nDisks = std::ranges::count(m_atDisks, tQuota.dwGroup, &tagDisk::dwGroup);
        bDeleted |= Delete([&](tagRecording const& t)
                           { return t.dwChannel == tQuota.dwChannel && m_atDisks[t.dwDisk].dwGroup == tQuota.dwGroup; },
                           static_cast<uint64_t>(nDisks) * ullDisk / 100 * tQuota.dwPercent);
    }
    for (uint32_t i = 0; i < m_atDisks.size(); ++i)
    {
        bDeleted |= Delete([&](tagRecording const& t) { return t.dwDisk == i; }, ullDisk);
    }
    return bDeleted;
}

// --- disks -----------------------------------------------------------------------------------------------------------

tagConfigStorage CStorage::Disks() const
{
    tagConfigStorage tStorage{};
    tStorage.dwSize = sizeof tStorage;
    tStorage.dwCount = static_cast<uint32_t>(m_atDisks.size());
    for (uint32_t i = 0; i < m_atDisks.size(); ++i)
    {
        tagConfigDisk& t = tStorage.atDisks[i];
        t.dwState = m_abFaulty[i] ? eDiskFaulty : m_abFull[i] ? eDiskFull : eDiskOk;
        t.dwGroup = m_atDisks[i].dwGroup;
        t.dwGroupType = m_atDisks[i].dwGroupType;
        t.ullCapacity = m_tDevice.Blueprint().ullDiskBytes;
        uint64_t ullUsed = 0;
        for (tagRecording const& tRecording : m_atRecordings)
        {
            ullUsed += tRecording.dwDisk == i ? Now(tRecording).ullLength : 0;
        }
        t.ullFree = m_abFull[i] ? 0 : t.ullCapacity - std::min(ullUsed, t.ullCapacity);
        CopyText(t.szName, "Disk " + std::to_string(i));
    }
    return tStorage;
}

void CStorage::SetDiskFault(uint32_t dwDisk, bool bFull, bool bOn)
{
    (bFull ? m_abFull : m_abFaulty)[dwDisk] = bOn;
    m_tDevice.Part<CAlarms>().Set(bFull ? eEventDiskFull : eEventDiskError, dwDisk, bOn ? 1 : 0);
    for (tagRecording& t : m_atRecordings)
    {
        if (bOn && t.bRecording && t.dwDisk == dwDisk)
        {
            m_adwScheduled[t.dwChannel] &= ~t.dwType;
            End(t);
        }
    }
    CheckSchedules();
    Keep();
}

void CStorage::SetQuota(tagQuota const& tQuota)
{
    std::erase_if(m_atQuotas,
                  [&](tagQuota const& t) { return t.dwGroup == tQuota.dwGroup && t.dwChannel == tQuota.dwChannel; });
    if (tQuota.dwPercent != 0)
    {
        m_atQuotas.push_back(tQuota);
    }
    m_tDevice.Store().PutList("quotas", m_atQuotas);
}

int CStorage::Manage(tagCaller const& tCaller, eDiskGroupOperation eAction, uint32_t dwGroup, uint32_t dwDisk,
                     uint32_t dwValue)
{
    const auto fnInGroup = [&](tagDisk const& t) { return t.dwGroup == dwGroup; };
    const bool bDisk = eAction == eDiskGroupAddDisk || eAction == eDiskGroupRemoveDisk || eAction == eDiskGroupFormat;
    const uint32_t dwChannel = eAction == eDiskGroupBind ? dwValue : dwDisk;
    if (eAction < eDiskGroupAddDisk || eAction > eDiskGroupQuota || dwGroup > 15)
    {
        return eResultBadArgument;
    }
    if (bDisk ? dwDisk >= m_atDisks.size()
              : dwChannel >= m_tDevice.Channels() && !(eAction == eDiskGroupBind && dwChannel == TESSARO_ALL))
    {
        return eResultNoChannel;
    }
    const auto itGroup = std::ranges::find_if(m_atDisks, fnInGroup);
    switch (eAction)
    {
    case eDiskGroupAddDisk:
        if (itGroup == m_atDisks.end() && (dwValue < eDiskGroupMain || dwValue > eDiskGroupArchive))
        {
            return eResultBadArgument;
        }
        m_atDisks[dwDisk] = {dwGroup, itGroup == m_atDisks.end() ? dwValue : itGroup->dwGroupType};
        break;
    case eDiskGroupRemoveDisk:
        if (!fnInGroup(m_atDisks[dwDisk]))
        {
            return eResultNotFound;
        }
        m_atDisks[dwDisk] = {TESSARO_ALL, eDiskGroupAll};
        break;
    case eDiskGroupFormat:
        for (tagRecording& t : m_atRecordings)
        {
            if (t.bRecording && t.dwDisk == dwDisk)
            {
                End(t);
            }
        }
        std::erase_if(m_atRecordings, [&](tagRecording const& t) { return t.dwDisk == dwDisk; });
        Keep();
        break;
    case eDiskGroupBind:
    case eDiskGroupQuota:
        if (itGroup == m_atDisks.end())
        {
            return eResultNotFound;
        }
        if (eAction == eDiskGroupQuota)
        {
            if (dwValue > 100)
            {
                return eResultBadArgument;
            }
            SetQuota({dwGroup, dwChannel, dwValue});
            break;
        }
        for (uint32_t i = 0; i < m_adwGroupOf.size(); ++i)
        {
            m_adwGroupOf[i] = dwChannel == TESSARO_ALL || dwChannel == i ? dwGroup : m_adwGroupOf[i];
        }
        break;
    }
    m_tDevice.Store().PutList("disks", m_atDisks);
    m_tDevice.Store().PutList("groups", m_adwGroupOf);
    m_tDevice.Part<CConfiguration>().Changed(eConfigStorage, 0, &tCaller);
    return eResultOk;
}
} // namespace device
