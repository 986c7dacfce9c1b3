#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Recording.h"
#include "plugins/device/Session.h"

#include "protocol/interface/Configuration.h"
#include "protocol/interface/Device.h"
#include "protocol/interface/Queries.h"
#include "protocol/interface/Storage.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace device
{
/// Disks, groups of disks, and the recordings on them.
class CStorage : public CPart
{
public:
    explicit CStorage(CDevice& tDevice);

    /// In the order of their begin.
    std::vector<tagRecording> Find(tagRecordingQuestion const& tQuestion) const;

    int Query(tagHistoryStreamQueryFactor const& tFactor, std::vector<tagHistoryStreamQueryResult>& atFound) const;
    int QueryTypes(tagHistoryStreamMultiTypeQueryFactor const& tFactor,
                   std::vector<tagHistoryStreamMultiTypeQueryResult>& atFound) const;
    /// eResultNotFound.
    int Lock(tagCaller const& tCaller, std::string const& strFile, eFileLockOperationCode eAction);
    /// dwOn 1 or 0: a recording of type eHistoryManual.
    int Control(tagCaller const& tCaller, uint32_t dwChannel, uint32_t dwOn);
    int DaysWithData(uint32_t dwChannel, uint32_t dwTypes, uint32_t dwMonth, char* szDays, uint32_t& dwLength) const;
    int Manage(tagCaller const& tCaller, eDiskGroupOperation eAction, uint32_t dwGroup, uint32_t dwDisk,
               uint32_t dwValue);
    int SizeOf(uint32_t dwChannel, eDiskGroupType eGroup, uint32_t dwTypes, char const* szBegin, char const* szEnd,
               uint32_t dwFlag, uint32_t& dwMebibytes) const;

    /// Begins or ends a recording for one reason (eHistoryStreamType). Those of motion and alarms have the time before
    /// and after it too that the channel's schedule names. eResultDeviceFull.
    int Record(uint32_t dwChannel, uint32_t dwType, bool bOn);
    /// Records what the schedules ask for, and deletes what is too old or too much.
    void Advance();
    int64_t NextDue() const;
    /// A schedule, or what one looks at, has changed: the clock too.
    void CheckSchedules() { m_llCheckUs = 0; }
    /// Disks, groups and quotas become what is kept of them, or what the factory has.
    void Reset();
    /// Every recording ends: the device has stopped.
    void Halt();
    /// The disks as they are.
    tagConfigStorage Disks() const;
    void SetDiskFault(uint32_t dwDisk, bool bFull, bool bOn);
    bool IsRecording() const;

private:
    struct tagDisk
    {
        uint32_t dwGroup;
        uint32_t dwGroupType; // eDiskGroupType
    };
    struct tagQuota
    {
        uint32_t dwGroup;
        uint32_t dwChannel;
        uint32_t dwPercent;
    };
    using Which = std::function<bool(tagRecording const&)>;
    tagRecording Now(tagRecording const& tRecording) const;
    template <class Result>
    std::vector<Result> Results(tagRecordingQuestion const& tQuestion) const;
    tagRecording* Running(uint32_t dwChannel, uint32_t dwType);
    int DiskFor(uint32_t dwChannel, uint32_t& dwDisk) const;
    uint32_t Wanted(uint32_t dwChannel) const;
    void Begin(tagRecording& tRecording);
    void CheckNow();
    bool Delete(Which const& fnWhich, uint64_t ullMost);
    bool DeleteOld();
    void SetQuota(tagQuota const& tQuota);
    void MakeOld();
    void Keep();
    void End(tagRecording& tRecording);

    std::vector<tagRecording> m_atRecordings; // by begin
    std::vector<tagDisk> m_atDisks;
    std::vector<bool> m_abFull;
    std::vector<bool> m_abFaulty;
    std::vector<tagQuota> m_atQuotas;
    std::vector<uint32_t> m_adwGroupOf;                         // of each channel
    std::vector<uint32_t> m_adwScheduled;                       // types that run by schedule, of each channel
    int64_t m_llCheckUs = 0;                                    // when the schedules are looked at again
    std::map<std::pair<uint32_t, uint32_t>, int64_t> m_tEnding; // channel and type of what ends at that time
};
} // namespace device
