// The services that steer recordings and play them.

#include "tools/onvif_device/RecordingParts.h"

namespace onvif_device
{
namespace
{
bool IsRecording(CCall& tCall, uint32_t dwChannel)
{
    const auto tLock = tCall.Lock();
    return tCall.Part<device::CAlarms>().IsOn(eEventRecording, dwChannel);
}

uint32_t JobAt(CCall& tCall, CCall::Path astrPath)
{
    return tCall.Index(astrPath, "RecordingJob", tCall.Device().Channels(), "ter:NoRecordingJob");
}

void WriteRecordingConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel)
{
    uint32_t dwKeepDays = 0;
    {
        const auto tLock = tCall.Lock();
        dwKeepDays = tCall.Get<tagConfigSchedule>(dwChannel).dwKeepDays;
    }
    tCall.Xml().In(szElement,
                   [&]
                   {
                       WriteRecordingSource(tCall, "tt:Source", dwChannel);
                       tCall.Xml().Put("tt:Content", "");
                       tCall.Xml().Put("tt:MaximumRetentionTime", Duration(int64_t{dwKeepDays} * 86400000000));
                   });
}

void GetRecordings(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        tXml.In("trc:RecordingItem",
                [&]
                {
                    tXml.Put("tt:RecordingToken", Token("Recording", {i}));
                    WriteRecordingConfiguration(tCall, "tt:Configuration", i);
                    tXml.In("tt:Tracks",
                            [&]
                            {
                                for (char const* const szType : {"Video", "Audio"})
                                {
                                    tXml.In("tt:Track",
                                            [&]
                                            {
                                                tXml.Put("tt:TrackToken", szType);
                                                tXml.In("tt:Configuration",
                                                        [&] {
                                                            tXml.Put("tt:TrackType", szType).Put("tt:Description", "");
                                                        });
                                            });
                                }
                            });
                });
    }
}

void GetRecordingConfiguration(CCall& tCall)
{
    WriteRecordingConfiguration(tCall, "trc:RecordingConfiguration", RecordingAt(tCall, {"RecordingToken"}));
}

// Days to keep are what the device takes of it.
void SetRecordingConfiguration(CCall& tCall)
{
    const uint32_t dwChannel = RecordingAt(tCall, {"RecordingToken"});
    const int64_t llKeepUs = tCall.DurationUs({"RecordingConfiguration", "MaximumRetentionTime"}, 0);
    const auto tLock = tCall.Lock();
    auto tSchedule = tCall.Get<tagConfigSchedule>(dwChannel);
    tSchedule.dwKeepDays = static_cast<uint32_t>(std::clamp<int64_t>(llKeepUs / 86400000000, 0, 3650));
    tCall.Set(eConfigSchedule, tSchedule, dwChannel);
}

void WriteJob(CCall& tCall, char const* szElement, uint32_t dwChannel, bool bActive)
{
    CXml& tXml = tCall.Xml();
    tXml.In(szElement,
            [&]
            {
                tXml.Put("tt:RecordingToken", Token("Recording", {dwChannel}));
                tXml.Put("tt:Mode", bActive ? "Active" : "Idle").Put("tt:Priority", 1);
                tXml.In("tt:Source",
                        [&]
                        {
                            tXml.In("tt:SourceToken", {{"Type", "http://www.onvif.org/ver10/schema/Profile"}},
                                    [&] {
                                        tXml.Put("tt:Token", Token("Profile", {dwChannel, 0}));
                                    });
                        });
            });
}

void GetRecordingJobs(CCall& tCall)
{
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        tCall.Xml().In("trc:JobItem",
                       [&]
                       {
                           tCall.Xml().Put("tt:JobToken", Token("RecordingJob", {i}));
                           WriteJob(tCall, "tt:JobConfiguration", i, IsRecording(tCall, i));
                       });
    }
}

void GetRecordingJobConfiguration(CCall& tCall)
{
    const uint32_t dwChannel = JobAt(tCall, {"JobToken"});
    WriteJob(tCall, "trc:JobConfiguration", dwChannel, IsRecording(tCall, dwChannel));
}

void Record(CCall& tCall, uint32_t dwChannel, bool bOn)
{
    const auto tLock = tCall.Lock();
    Require(tCall.Part<device::CStorage>().Control(tCall.Caller(), dwChannel, bOn ? 1 : 0));
}

// Each recording has its one job, which a client that creates one is given.
void CreateRecordingJob(CCall& tCall)
{
    const uint32_t dwChannel = RecordingAt(tCall, {"JobConfiguration", "RecordingToken"});
    const bool bActive = tCall.Word({"JobConfiguration", "Mode"}, {"Idle", "Active"}) != 0;
    Record(tCall, dwChannel, bActive);
    tCall.Xml().Put("trc:JobToken", Token("RecordingJob", {dwChannel}));
    WriteJob(tCall, "trc:JobConfiguration", dwChannel, bActive);
}

void SetRecordingJobMode(CCall& tCall)
{
    Record(tCall, JobAt(tCall, {"JobToken"}), tCall.Word({"Mode"}, {"Idle", "Active"}) != 0);
}

void DeleteRecordingJob(CCall& tCall)
{
    Record(tCall, JobAt(tCall, {"JobToken"}), false);
}

void GetRecordingJobState(CCall& tCall)
{
    const uint32_t dwChannel = JobAt(tCall, {"JobToken"});
    char const* const szState = IsRecording(tCall, dwChannel) ? "Active" : "Idle";
    tCall.Xml().In("trc:State",
                   [&]
                   {
                       tCall.Xml().Put("tt:RecordingToken", Token("Recording", {dwChannel}));
                       tCall.Xml().Put("tt:State", szState);
                   });
}

void GetRecordingOptions(CCall& tCall)
{
    RecordingAt(tCall, {"RecordingToken"});
    tCall.Xml().In("trc:Options",
                   [&]
                   {
                       tCall.Xml().Empty("trc:Job", {{"Spare", "0"}, {"CompatibleSources", ""}});
                       tCall.Xml().Empty("trc:Track", {{"SpareTotal", "0"}});
                   });
}

#define ONVIF_JOB                                                                                                      \
    "{RecordingToken Mode Priority Source{SourceToken[Type]{Token}? AutoCreateReceiver? "                              \
    "Tracks{SourceTag Destination ...}* ...}* Extension{...}? ...}"
constexpr tagAction g_atRecordingActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Recording>},
    {"GetRecordings", eUserViewer, "", GetRecordings},
    {"GetRecordingConfiguration", eUserViewer, "RecordingToken", GetRecordingConfiguration},
    {"SetRecordingConfiguration", eUserAdministrator,
     "RecordingToken RecordingConfiguration{Source{SourceId Name Location Description Address ...} Content "
     "MaximumRetentionTime ...}",
     SetRecordingConfiguration},
    {"GetRecordingOptions", eUserViewer, "RecordingToken", GetRecordingOptions},
    {"GetRecordingJobs", eUserViewer, "", GetRecordingJobs},
    {"GetRecordingJobConfiguration", eUserViewer, "JobToken", GetRecordingJobConfiguration},
    {"GetRecordingJobState", eUserViewer, "JobToken", GetRecordingJobState},
    {"CreateRecordingJob", eUserOperator, "JobConfiguration" ONVIF_JOB, CreateRecordingJob},
    {"SetRecordingJobMode", eUserOperator, "JobToken Mode", SetRecordingJobMode},
    {"DeleteRecordingJob", eUserOperator, "JobToken", DeleteRecordingJob},
};

// --- playing ---------------------------------------------------------------------------------------------------------

void GetReplayUri(CCall& tCall)
{
    const uint32_t dwChannel = RecordingAt(tCall, {"RecordingToken"});
    if (tCall.Word({"StreamSetup", "Stream"}, {"RTP-Unicast", "RTP-Multicast"}) != 0)
    {
        FailValue("ter:InvalidStreamSetup", "there is unicast alone");
    }
    tCall.Xml().Put("trp:Uri", tCall.ReplayAddress(dwChannel));
}

void GetReplayConfiguration(CCall& tCall)
{
    tCall.Xml().In("trp:Configuration", [&] { tCall.Xml().Put("tt:SessionTimeout", "PT60S"); });
}

constexpr tagAction g_atReplayActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Replay>},
    {"GetReplayUri", eUserViewer, "StreamSetup{Stream Transport{Protocol Tunnel{...}?}} RecordingToken", GetReplayUri},
    {"GetReplayConfiguration", eUserViewer, "", GetReplayConfiguration},
};
} // namespace

std::span<tagAction const> RecordingActions()
{
    return g_atRecordingActions;
}

std::span<tagAction const> ReplayActions()
{
    return g_atReplayActions;
}
} // namespace onvif_device
