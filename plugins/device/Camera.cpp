#include "plugins/device/Camera.h"

#include "plugins/device/Device.h"
#include "plugins/device/Settings.h"
#include "plugins/device/TimeZone.h"

#include "protocol/Record.h"

namespace device
{
namespace
{
using Adapter_ProtocolSet::WriteList;
using Adapter_ProtocolSet::WriteRecord;

std::string Key(uint32_t dwType, uint32_t dwChannel)
{
    return "camera/" + std::to_string(dwType) + '/' + std::to_string(dwChannel);
}

tagCameraDayNight FactoryDayNight()
{
    tagCameraDayNight t{};
    t.dwSize = sizeof t;
    t.dwSensitivity = 50;
    t.dwDelaySeconds = 5;
    t.dwDayMinute = 7 * 60;
    t.dwNightMinute = 19 * 60;
    t.dwInfrared = eSwitchAuto;
    t.dwInfraredLevel = 100;
    return t;
}

bool IsValid(tagCameraDayNight const& t)
{
    return InRange(t, {{&tagCameraDayNight::dwMode, 0, eDayNightSchedule},
                       {&tagCameraDayNight::dwSensitivity, 0, 100},
                       {&tagCameraDayNight::dwDelaySeconds, 0, 3600},
                       {&tagCameraDayNight::dwDayMinute, 0, 1439},
                       {&tagCameraDayNight::dwNightMinute, 0, 1439},
                       {&tagCameraDayNight::dwInfrared, 0, eSwitchAuto},
                       {&tagCameraDayNight::dwInfraredLevel, 0, 100}});
}

tagCameraExposure FactoryExposure()
{
    tagCameraExposure t{};
    t.dwSize = sizeof t;
    t.dwMinExposureUs = 100;
    t.dwMaxExposureUs = 40000;
    t.dwExposureUs = 10000;
    t.dwMaxGain = 3000;
    t.dwIris = 5000;
    t.dwFlicker = 50;
    return t;
}

bool IsValid(tagCameraExposure const& t)
{
    return InRange(t, {{&tagCameraExposure::dwMode, 0, eModeManual},
                       {&tagCameraExposure::dwPriority, 0, 1},
                       {&tagCameraExposure::dwMinExposureUs, 1, 1000000},
                       {&tagCameraExposure::dwMaxExposureUs, t.dwMinExposureUs, 1000000},
                       {&tagCameraExposure::dwExposureUs, 1, 1000000},
                       {&tagCameraExposure::dwMaxGain, t.dwMinGain, 10000},
                       {&tagCameraExposure::dwGain, 0, 10000},
                       {&tagCameraExposure::dwIris, 0, g_dwWhole}}) &&
           (t.dwFlicker == 0 || t.dwFlicker == 50 || t.dwFlicker == 60);
}

tagCameraFocus FactoryFocus()
{
    tagCameraFocus t{};
    t.dwSize = sizeof t;
    t.dwPosition = 5000;
    t.dwSpeed = 50;
    return t;
}

bool IsValid(tagCameraFocus const& t)
{
    return InRange(t, {{&tagCameraFocus::dwMode, 0, eModeManual},
                       {&tagCameraFocus::dwPosition, 0, g_dwWhole},
                       {&tagCameraFocus::dwSpeed, 0, 100}}) &&
           (t.dwFarLimitCm == 0 || t.dwNearLimitCm <= t.dwFarLimitCm);
}

template <class Record>
Record Current(CDevice& tDevice, uint32_t dwType, uint32_t dwChannel, Record tRecord)
{
    tDevice.Store().GetRecord(Key(dwType, dwChannel), tRecord);
    tRecord.dwSize = sizeof tRecord;
    return tRecord;
}

template <class Record>
int Merge(CDevice& tDevice, uint32_t dwType, uint32_t dwChannel, Record tRecord, void const* pPara)
{
    if (Adapter_ProtocolSet::MergeRecord(tRecord, static_cast<Record const*>(pPara)) != eResultOk || !IsValid(tRecord))
    {
        return eResultBadArgument;
    }
    tDevice.Store().PutRecord(Key(dwType, dwChannel), tRecord);
    return eResultOk;
}

int Check(CDevice const& tDevice, int nChannel, void const* pPara, uint32_t dwLength)
{
    uint32_t dwSize = 0;
    if (!pPara || dwLength < sizeof dwSize)
    {
        return eResultBadArgument;
    }
    std::memcpy(&dwSize, pPara, sizeof dwSize);
    return dwSize != dwLength                                                      ? int{eResultBadArgument}
           : nChannel < 0 || static_cast<uint32_t>(nChannel) >= tDevice.Channels() ? int{eResultNoChannel}
                                                                                   : int{eResultOk};
}
} // namespace

tagCameraDayNight CCamera::DayNight(uint32_t dwChannel) const
{
    auto t = Current(m_tDevice, eCameraDayNight, dwChannel, FactoryDayNight());
    const int64_t llNowUs = m_tDevice.Clock().NowUs();
    const auto strZone = Text(m_tDevice.Part<CConfiguration>().Get<tagConfigClock>().szTimeZone);
    const auto dwMinute = static_cast<uint32_t>((llNowUs / 60000000 + UtcOffsetMinutes(strZone, llNowUs)) % 1440);
    const bool bDayFirst = t.dwDayMinute <= t.dwNightMinute;
    const bool bBetween = bDayFirst ? dwMinute >= t.dwDayMinute && dwMinute < t.dwNightMinute
                                    : dwMinute >= t.dwNightMinute && dwMinute < t.dwDayMinute;
    // It is never dark before a simulated camera.
    t.bNight = t.dwMode == eDayNightNight || (t.dwMode == eDayNightSchedule && bBetween != bDayFirst) ? 1 : 0;
    return t;
}

tagCameraExposure CCamera::Exposure(uint32_t dwChannel) const
{
    return Current(m_tDevice, eCameraExposure, dwChannel, FactoryExposure());
}

tagCameraFocus CCamera::Focus(uint32_t dwChannel) const
{
    return Current(m_tDevice, eCameraFocus, dwChannel, FactoryFocus());
}

void CCamera::SetExposure(uint32_t dwChannel, tagCameraExposure const& tExposure)
{
    m_tDevice.Store().PutRecord(Key(eCameraExposure, dwChannel), tExposure);
}

void CCamera::SetFocus(uint32_t dwChannel, tagCameraFocus const& tFocus)
{
    m_tDevice.Store().PutRecord(Key(eCameraFocus, dwChannel), tFocus);
}

int CCamera::Read(int nChannel, uint32_t dwType, void* pPara, uint32_t dwLength)
{
    if (const int nResult = Check(m_tDevice, nChannel, pPara, dwLength))
    {
        return nResult;
    }
    const auto dwChannel = static_cast<uint32_t>(nChannel);
    CPTZ const& tPTZ = m_tDevice.Part<CPTZ>();
    const auto fnGive = [&](auto const& tRecord)
    { return WriteRecord(static_cast<std::decay_t<decltype(tRecord)>*>(pPara), tRecord); };
    switch (dwType)
    {
    case eCameraPicture:
        return fnGive(m_tDevice.Part<CConfiguration>().Get<tagCameraPicture>(dwChannel));
    case eCameraDayNight:
        return fnGive(DayNight(dwChannel));
    case eCameraExposure:
        return fnGive(Exposure(dwChannel));
    case eCameraFocus:
        return fnGive(Focus(dwChannel));
    case eCameraPosition:
        return tPTZ.Ability(dwChannel).dwMoveAxes == 0 ? int{eResultNotSupported} : fnGive(tPTZ.Position(dwChannel));
    case eCameraPTZAbility:
        return fnGive(tPTZ.Ability(dwChannel));
    case eCameraPresets:
    {
        const auto atPresets = tPTZ.Presets(dwChannel);
        return WriteList(static_cast<tagPTZPresetList*>(pPara), atPresets.data(), atPresets.size());
    }
    case eCameraTours:
    {
        const auto atTours = tPTZ.Tours(dwChannel);
        return WriteList(static_cast<tagPTZTourList*>(pPara), atTours.data(), atTours.size());
    }
    default:
        return eResultNotSupported;
    }
}

int CCamera::Write(tagCaller const& tCaller, int nChannel, uint32_t dwType, void* pPara, uint32_t dwLength)
{
    if (const int nResult = Check(m_tDevice, nChannel, pPara, dwLength))
    {
        return nResult;
    }
    const auto dwChannel = static_cast<uint32_t>(nChannel);
    switch (dwType)
    {
    case eCameraPicture:
        return m_tDevice.Part<CConfiguration>().Write(tCaller, eConfigPicture, dwChannel, 0,
                                                      static_cast<unsigned char const*>(pPara), dwLength);
    case eCameraDayNight:
        return Merge(m_tDevice, dwType, dwChannel, DayNight(dwChannel), pPara);
    case eCameraExposure:
        return Merge(m_tDevice, dwType, dwChannel, Exposure(dwChannel), pPara);
    case eCameraFocus:
        return Merge(m_tDevice, dwType, dwChannel, Focus(dwChannel), pPara);
    default:
        return dwType >= eCameraPosition && dwType <= eCameraPTZAbility ? int{eResultRefused}
                                                                        : int{eResultNotSupported};
    }
}

int CCamera::Default(tagCaller const& tCaller, uint32_t dwChannel, uint32_t dwFlag)
{
    if (dwChannel >= m_tDevice.Channels())
    {
        return eResultNoChannel;
    }
    if (dwFlag > eDefaultAll)
    {
        return eResultBadArgument;
    }
    m_tDevice.Store().Remove("config/" + std::to_string(eConfigPicture) + '/' + std::to_string(dwChannel) + "/0");
    for (const uint32_t dwType : {eCameraDayNight, eCameraExposure, eCameraFocus})
    {
        if (dwFlag == eDefaultAll)
        {
            m_tDevice.Store().Remove(Key(dwType, dwChannel));
        }
    }
    m_tDevice.Part<CConfiguration>().Changed(eConfigPicture, dwChannel, &tCaller);
    return eResultOk;
}
} // namespace device
