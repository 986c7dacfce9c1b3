#include "plugins/device/Configuration.h"

#include "plugins/device/ClipSizes.h"
#include "plugins/device/Device.h"
#include "plugins/device/Settings.h"
#include "plugins/device/TimeZone.h"

#include "protocol/Record.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <span>

// For each record three rules: what the factory sets, what is read only, and what is no nonsense.

namespace device
{
namespace
{
using Adapter_ProtocolSet::MergeRecord;

// Which block of a type: a channel, an input; and the stream, 0 main and 1 sub.
struct tagWhich
{
    uint32_t dwIndex = 0;
    int nStream = 0;
};

std::string Key(uint32_t dwType, tagWhich const& tWhich)
{
    return "config/" + std::to_string(dwType) + '/' + std::to_string(tWhich.dwIndex) + '/' +
           std::to_string(tWhich.nStream);
}

// A number that depends on a text alone, the same on every machine.
uint32_t HashOf(std::string_view strText)
{
    uint32_t dwHash = 2166136261U;
    for (const char c : strText)
    {
        dwHash = (dwHash ^ static_cast<unsigned char>(c)) * 16777619U;
    }
    return dwHash;
}

template <class Record>
void KeepReadOnly(Record const&, Record&)
{
}

// --- identity, network, clock ----------------------------------------------------------------------------------------

void Factory(CDevice& tDevice, tagWhich const&, tagConfigIdentity& t)
{
    tagDeviceBlueprint const& tBlueprint = tDevice.Blueprint();
    CConfiguration const& tConfiguration = tDevice.Part<CConfiguration>();
    t.dwChannels = tDevice.Channels();
    t.dwAlarmInputs = tBlueprint.dwInputs;
    t.dwAlarmOutputs = tBlueprint.dwOutputs;
    t.dwAudioInputs = 1;
    t.dwAudioOutputs = 1;
    t.dwSerialPorts = tBlueprint.dwSerialPorts;
    t.dwDisks = tBlueprint.dwDisks;
    t.dwScreens = tBlueprint.dwScreens;
    t.dwInterfaces = 1;
    CopyText(t.szName, tBlueprint.strName.empty() ? "Device " + tBlueprint.strAddress : tBlueprint.strName);
    CopyText(t.szManufacturer, "Tessaro");
    CopyText(t.szModel, tBlueprint.strModel);
    CopyText(t.szSerialNumber, tConfiguration.SerialNumber());
    CopyText(t.szFirmware, tDevice.Firmware());
    CopyText(t.szHardware, "simulated");
}

void KeepReadOnly(tagConfigIdentity const& tBefore, tagConfigIdentity& tAfter)
{
    const tagConfigIdentity tWritten = tAfter;
    tAfter = tBefore;
    CopyText(tAfter.szName, Text(tWritten.szName));
    CopyText(tAfter.szLocation, Text(tWritten.szLocation));
}

bool IsValid(CDevice&, tagConfigIdentity&)
{
    return true;
}

void Factory(CDevice& tDevice, tagWhich const&, tagConfigNetwork& t)
{
    t.bEnabled = 1;
    t.dwMtu = 1500;
    t.dwSpeed = 1000;
    t.dwHttpPort = 80;
    t.dwRtspPort = 554;
    t.dwDevicePort = tDevice.Blueprint().dwPort ? tDevice.Blueprint().dwPort : 8000;
    t.dwPrefixLength = 24;
    CopyText(t.szInterface, "eth0");
    CopyText(t.szMac, tDevice.Part<CConfiguration>().Mac());
    CopyText(t.szAddress, tDevice.Blueprint().strAddress);
    CopyText(t.szHostName, "device");
}

void KeepReadOnly(tagConfigNetwork const& tBefore, tagConfigNetwork& tAfter)
{
    tAfter.dwSpeed = tBefore.dwSpeed;
    std::ranges::copy(tBefore.szInterface, tAfter.szInterface);
    std::ranges::copy(tBefore.szMac, tAfter.szMac);
}

bool IsValid(CDevice&, tagConfigNetwork& t)
{
    Terminate(t.szAddress);
    Terminate(t.szGateway);
    Terminate(t.szNameServer1);
    Terminate(t.szNameServer2);
    Terminate(t.szHostName);
    return InRange(t, {{&tagConfigNetwork::bEnabled, 0, 1},
                       {&tagConfigNetwork::bDhcp, 0, 1},
                       {&tagConfigNetwork::dwMtu, 576, 9000},
                       {&tagConfigNetwork::dwHttpPort, 0, 65535},
                       {&tagConfigNetwork::dwHttpsPort, 0, 65535},
                       {&tagConfigNetwork::dwRtspPort, 0, 65535},
                       {&tagConfigNetwork::dwDevicePort, 1, 65535},
                       {&tagConfigNetwork::dwPrefixLength, 0, 128}}) &&
           (t.bDhcp != 0 || t.szAddress[0] != '\0');
}

void Factory(CDevice& tDevice, tagWhich const&, tagConfigClock& t)
{
    t.dwMode = eClockManual;
    t.dwNtpPort = 123;
    CopyText(t.szTimeZone, tDevice.Blueprint().strTimeZone);
}

bool IsValid(CDevice&, tagConfigClock& t)
{
    Terminate(t.szTimeZone);
    Terminate(t.szNtpServer1);
    Terminate(t.szNtpServer2);
    return InRange(t, {{&tagConfigClock::dwMode, 0, 1}, {&tagConfigClock::dwNtpPort, 0, 65535}}) && t.llTimeUs >= 0 &&
           IsTimeZone(t.szTimeZone);
}

// --- streams and pictures --------------------------------------------------------------------------------------------

void Factory(CDevice& tDevice, tagWhich const& tWhich, tagConfigVideoEncoder& t)
{
    tagVideoBlueprint const& tBlueprint =
        tDevice.Blueprint().atChannels[tWhich.dwIndex].atStreams[static_cast<std::size_t>(tWhich.nStream)];
    t.dwCodec = tBlueprint.dwCodec;
    t.dwProfile = eProfileMain;
    t.dwWidth = tBlueprint.dwWidth;
    t.dwHeight = tBlueprint.dwHeight;
    t.dwFrameRate = tBlueprint.dwFrameRate;
    t.dwBitRateMode = eBitRateVariable;
    t.dwBitRate = tWhich.nStream == 0 ? 2000 : 500;
    t.dwQuality = 70;
    t.dwKeyFrameInterval = tBlueprint.dwFrameRate / 1000;
    t.bEnabled = 1;
}

bool IsValid(CDevice&, tagConfigVideoEncoder& t)
{
    return InRange(t, {{&tagConfigVideoEncoder::dwProfile, 0, 2},
                       {&tagConfigVideoEncoder::dwFrameRate, 1000, 30000},
                       {&tagConfigVideoEncoder::dwBitRateMode, 0, 1},
                       {&tagConfigVideoEncoder::dwBitRate, 16, 32000},
                       {&tagConfigVideoEncoder::dwQuality, 0, 100},
                       {&tagConfigVideoEncoder::dwKeyFrameInterval, 1, 300},
                       {&tagConfigVideoEncoder::bEnabled, 0, 1}}) &&
           HasClip(t.dwCodec, t.dwWidth, t.dwHeight);
}

void Factory(CDevice& tDevice, tagWhich const& tWhich, tagConfigAudioEncoder& t)
{
    t.bEnabled = tDevice.Blueprint().atChannels[tWhich.dwIndex].bAudio ? 1 : 0;
    t.dwCodec = eCodecG711A;
    t.dwSampleRate = 8000;
    t.dwChannels = 1;
    t.dwBitRate = 64;
    t.dwVolume = 50;
}

bool IsValid(CDevice&, tagConfigAudioEncoder& t)
{
    return InRange(t, {{&tagConfigAudioEncoder::bEnabled, 0, 1},
                       {&tagConfigAudioEncoder::dwCodec, eCodecG711A, eCodecG711U},
                       {&tagConfigAudioEncoder::dwSampleRate, 8000, 8000},
                       {&tagConfigAudioEncoder::dwChannels, 1, 1},
                       {&tagConfigAudioEncoder::dwSource, 0, 1},
                       {&tagConfigAudioEncoder::dwVolume, 0, 100}});
}

void Factory(CDevice&, tagWhich const&, tagCameraPicture& t)
{
    t.dwBrightness = t.dwContrast = t.dwSaturation = t.dwSharpness = t.dwHue = t.dwNoiseReduction = 50;
    t.dwWideDynamicLevel = t.dwBacklightLevel = t.dwRedGain = t.dwBlueGain = 50;
}

bool IsValid(CDevice&, tagCameraPicture& t)
{
    return InRange(t, {{&tagCameraPicture::dwBrightness, 0, 100},
                       {&tagCameraPicture::dwContrast, 0, 100},
                       {&tagCameraPicture::dwSaturation, 0, 100},
                       {&tagCameraPicture::dwSharpness, 0, 100},
                       {&tagCameraPicture::dwHue, 0, 100},
                       {&tagCameraPicture::dwNoiseReduction, 0, 100},
                       {&tagCameraPicture::dwTurn, 0, 7},
                       {&tagCameraPicture::dwWideDynamicRange, 0, 2},
                       {&tagCameraPicture::dwWideDynamicLevel, 0, 100},
                       {&tagCameraPicture::dwBacklight, 0, 2},
                       {&tagCameraPicture::dwBacklightLevel, 0, 100},
                       {&tagCameraPicture::dwWhiteBalance, 0, 1},
                       {&tagCameraPicture::dwRedGain, 0, 100},
                       {&tagCameraPicture::dwBlueGain, 0, 100},
                       {&tagCameraPicture::dwDefog, 0, 2}});
}

void Factory(CDevice&, tagWhich const& tWhich, tagConfigOverlay& t)
{
    t.dwCount = 2;
    t.atTexts[0].bEnabled = 1;
    t.atTexts[0].dwKind = eOverlayName;
    t.atTexts[0].dwLeft = t.atTexts[0].dwTop = 200;
    t.atTexts[0].dwColour = g_dwColour;
    CopyText(t.atTexts[0].szText, "Channel " + std::to_string(tWhich.dwIndex));
    t.atTexts[1] = t.atTexts[0];
    t.atTexts[1].dwKind = eOverlayTime;
    t.atTexts[1].dwTop = 9200;
    CopyText(t.atTexts[1].szText, "");
}

bool IsValidText(tagOverlayText& t)
{
    Terminate(t.szText);
    return InRange(t, {{&tagOverlayText::bEnabled, 0, 1},
                       {&tagOverlayText::dwKind, 0, 2},
                       {&tagOverlayText::dwLeft, 0, g_dwWhole},
                       {&tagOverlayText::dwTop, 0, g_dwWhole},
                       {&tagOverlayText::dwHeight, 0, g_dwWhole},
                       {&tagOverlayText::dwColour, 0, g_dwColour}});
}

bool IsValid(CDevice&, tagConfigOverlay& t)
{
    return t.dwCount <= std::size(t.atTexts) && std::ranges::all_of(std::span(t.atTexts, t.dwCount), IsValidText);
}

void Factory(CDevice&, tagWhich const&, tagConfigPrivacy&) {}

bool IsValid(CDevice&, tagConfigPrivacy& t)
{
    return t.dwCount <= std::size(t.atMasks) &&
           std::ranges::all_of(std::span(t.atMasks, t.dwCount),
                               [](tagPrivacyMask const& tMask)
                               {
                                   return tMask.bEnabled <= 1 && tMask.dwColour <= g_dwColour &&
                                          tMask.dwLeft <= g_dwWhole && tMask.dwTop <= g_dwWhole &&
                                          tMask.dwWidth <= g_dwWhole - tMask.dwLeft &&
                                          tMask.dwHeight <= g_dwWhole - tMask.dwTop;
                               });
}

// --- events and recording --------------------------------------------------------------------------------------------

bool IsValid(CDevice& tDevice, tagConfigAction const& t)
{
    const uint32_t dwChannels = tDevice.Channels();
    const uint32_t dwOutputs = tDevice.Blueprint().dwOutputs;
    return (dwChannels >= 64 || t.ullRecord >> dwChannels == 0) && (dwOutputs >= 32 || t.dwOutputs >> dwOutputs == 0) &&
           t.bBeep <= 1 && t.dwPresetChannel < dwChannels;
}

void Factory(CDevice&, tagWhich const&, tagConfigMotion& t)
{
    t.bEnabled = 1;
    t.dwSensitivity = 50;
    t.dwThreshold = 5;
    t.dwHoldSeconds = 5;
    t.dwColumns = 22;
    t.dwRows = 18;
    std::fill_n(t.abyCells, t.dwColumns * t.dwRows / 8, static_cast<unsigned char>(0xFF));
}

void KeepReadOnly(tagConfigMotion const& tBefore, tagConfigMotion& tAfter)
{
    tAfter.dwColumns = tBefore.dwColumns;
    tAfter.dwRows = tBefore.dwRows;
}

bool IsValid(CDevice& tDevice, tagConfigMotion& t)
{
    return InRange(t, {{&tagConfigMotion::bEnabled, 0, 1},
                       {&tagConfigMotion::dwSensitivity, 0, 100},
                       {&tagConfigMotion::dwThreshold, 0, 100},
                       {&tagConfigMotion::dwHoldSeconds, 0, 3600}}) &&
           IsValid(tDevice, t.tAction);
}

void Factory(CDevice&, tagWhich const&, tagConfigSchedule& t)
{
    t.dwStreamKind = eStreamMain;
    t.bAudio = 1;
    t.dwBeforeSeconds = 5;
    t.dwAfterSeconds = 10;
    for (t.dwCount = 0; t.dwCount < 7; ++t.dwCount)
    {
        t.atSpans[t.dwCount] = {t.dwCount, 0, 1440, eHistoryContinuous};
    }
}

bool IsValid(CDevice&, tagConfigSchedule& t)
{
    return InRange(t, {{&tagConfigSchedule::bEnabled, 0, 1},
                       {&tagConfigSchedule::bAudio, 0, 1},
                       {&tagConfigSchedule::dwBeforeSeconds, 0, 60},
                       {&tagConfigSchedule::dwAfterSeconds, 0, 600},
                       {&tagConfigSchedule::dwKeepDays, 0, 3650},
                       {&tagConfigSchedule::dwCount, 0, static_cast<uint32_t>(std::size(t.atSpans))}}) &&
           StreamIndex(t.dwStreamKind) >= 0 &&
           std::ranges::all_of(std::span(t.atSpans, t.dwCount),
                               [](tagScheduleSpan const& tSpan)
                               {
                                   return tSpan.dwDay <= 6 && tSpan.dwStartMinute < tSpan.dwEndMinute &&
                                          tSpan.dwEndMinute <= 1440 && tSpan.dwTypes <= 15;
                               });
}

void Factory(CDevice&, tagWhich const& tWhich, tagConfigAlarmInput& t)
{
    t.bEnabled = 1;
    t.dwHoldMs = 100;
    CopyText(t.szName, "Input " + std::to_string(tWhich.dwIndex));
}

bool IsValid(CDevice& tDevice, tagConfigAlarmInput& t)
{
    Terminate(t.szName);
    return InRange(t, {{&tagConfigAlarmInput::bEnabled, 0, 1},
                       {&tagConfigAlarmInput::dwIdle, 0, 1},
                       {&tagConfigAlarmInput::dwHoldMs, 0, 60000}}) &&
           IsValid(tDevice, t.tAction);
}

void Factory(CDevice&, tagWhich const& tWhich, tagConfigAlarmOutput& t)
{
    CopyText(t.szName, "Output " + std::to_string(tWhich.dwIndex));
}

bool IsValid(CDevice&, tagConfigAlarmOutput& t)
{
    Terminate(t.szName);
    return InRange(t, {{&tagConfigAlarmOutput::dwIdle, 0, 1}, {&tagConfigAlarmOutput::dwPulseMs, 0, 3600000}});
}

// The type of the block that a record is of.
template <class Record>
constexpr uint32_t g_dwTypeOf = 0;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigIdentity> = eConfigIdentity;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigNetwork> = eConfigNetwork;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigClock> = eConfigClock;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigVideoEncoder> = eConfigVideoEncoder;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigAudioEncoder> = eConfigAudioEncoder;
template <>
constexpr uint32_t g_dwTypeOf<tagCameraPicture> = eConfigPicture;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigOverlay> = eConfigOverlay;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigMotion> = eConfigMotion;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigPrivacy> = eConfigPrivacy;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigSchedule> = eConfigSchedule;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigAlarmInput> = eConfigAlarmInput;
template <>
constexpr uint32_t g_dwTypeOf<tagConfigAlarmOutput> = eConfigAlarmOutput;

// --- all of them -----------------------------------------------------------------------------------------------------

template <class Record>
Record Current(CDevice& tDevice, uint32_t dwType, tagWhich const& tWhich)
{
    Record tRecord{};
    Factory(tDevice, tWhich, tRecord);
    const Record tFactory = tRecord;
    tDevice.Store().GetRecord(Key(dwType, tWhich), tRecord);
    KeepReadOnly(tFactory, tRecord);
    tRecord.dwSize = sizeof tRecord;
    return tRecord;
}

template <class Record>
int Write(CDevice& tDevice, uint32_t dwType, tagWhich const& tWhich, Record const* ptWritten)
{
    const Record tBefore = Current<Record>(tDevice, dwType, tWhich);
    Record tAfter = tBefore;
    const int nResult = MergeRecord(tAfter, ptWritten);
    KeepReadOnly(tBefore, tAfter);
    if (nResult != eResultOk || !IsValid(tDevice, tAfter))
    {
        return eResultBadArgument;
    }
    tDevice.Store().PutRecord(Key(dwType, tWhich), tAfter);
    return eResultOk;
}

// The clock's time goes on, and is set, beside what is kept.
tagConfigClock CurrentClock(CDevice& tDevice)
{
    auto tClock = Current<tagConfigClock>(tDevice, eConfigClock, {});
    tClock.llTimeUs = tDevice.Clock().NowUs();
    tClock.nUtcOffsetMinutes = UtcOffsetMinutes(tClock.szTimeZone, tClock.llTimeUs);
    tClock.bSynchronised = tClock.dwMode == eClockNtp ? 1 : 0;
    return tClock;
}

int WriteClock(CDevice& tDevice, tagConfigClock const* ptWritten)
{
    tagConfigClock tAfter{};
    const int nResult = Write(tDevice, eConfigClock, {}, ptWritten);
    if (nResult == eResultOk && Adapter_ProtocolSet::ReadRecord(tAfter, ptWritten) == eResultOk &&
        tAfter.dwMode == eClockManual && tAfter.llTimeUs != 0)
    {
        const int64_t llByUs = tAfter.llTimeUs - tDevice.Clock().NowUs();
        tDevice.Clock().Jump(llByUs);
        tDevice.Raise(eEventClockChanged, static_cast<uint32_t>(llByUs / 1000));
    }
    return nResult;
}

using Reader = std::function<void(CDevice&, uint32_t dwType, tagWhich const&, void* pData, uint32_t& dwLength)>;
using Writer = std::function<int(CDevice&, uint32_t dwType, tagWhich const&, void const* pData)>;

struct tagBlock
{
    uint32_t dwType;
    uint32_t (*pfnCount)(CDevice&);
    bool bStreams;
    Reader fnRead;
    Writer fnWrite; // none: read only
};

template <class Record>
void Give(Record const& tRecord, void* pData, uint32_t& dwLength)
{
    dwLength = sizeof tRecord;
    std::memcpy(pData, &tRecord, sizeof tRecord);
}

template <class Record>
tagBlock Block(uint32_t (*pfnCount)(CDevice&), bool bStreams = false)
{
    return {g_dwTypeOf<Record>, pfnCount, bStreams,
            [](CDevice& tDevice, uint32_t dw, tagWhich const& tWhich, void* pData, uint32_t& dwLength)
            { Give(Current<Record>(tDevice, dw, tWhich), pData, dwLength); },
            [](CDevice& tDevice, uint32_t dw, tagWhich const& tWhich, void const* pData)
            { return Write(tDevice, dw, tWhich, static_cast<Record const*>(pData)); }};
}

uint32_t One(CDevice&)
{
    return 1;
}

uint32_t EachChannel(CDevice& tDevice)
{
    return tDevice.Channels();
}

std::vector<tagBlock> const& Blocks()
{
    static const std::vector<tagBlock> s_atBlocks = {
        Block<tagConfigIdentity>(One),
        Block<tagConfigNetwork>(One),
        {eConfigClock, One, false,
         [](CDevice& tDevice, uint32_t, tagWhich const&, void* pData, uint32_t& dwLength)
         { Give(CurrentClock(tDevice), pData, dwLength); },
         [](CDevice& tDevice, uint32_t, tagWhich const&, void const* pData)
         { return WriteClock(tDevice, static_cast<tagConfigClock const*>(pData)); }},
        {eConfigUsers, One, false,
         [](CDevice& tDevice, uint32_t, tagWhich const&, void* pData, uint32_t& dwLength)
         { Give(tDevice.Part<CUsers>().Read(), pData, dwLength); },
         [](CDevice& tDevice, uint32_t, tagWhich const&, void const* pData)
         { return tDevice.Part<CUsers>().Write(static_cast<tagConfigUsers const*>(pData)); }},
        {eConfigStorage, One, false,
         [](CDevice& tDevice, uint32_t, tagWhich const&, void* pData, uint32_t& dwLength)
         { Give(tDevice.Part<CStorage>().Disks(), pData, dwLength); },
         nullptr},
        Block<tagConfigVideoEncoder>(EachChannel, true),
        Block<tagConfigAudioEncoder>(EachChannel, true),
        Block<tagCameraPicture>(EachChannel),
        Block<tagConfigOverlay>(EachChannel),
        Block<tagConfigMotion>(EachChannel),
        Block<tagConfigPrivacy>(EachChannel),
        Block<tagConfigSchedule>(EachChannel),
        Block<tagConfigAlarmInput>([](CDevice& tDevice) { return tDevice.Blueprint().dwInputs; }),
        Block<tagConfigAlarmOutput>([](CDevice& tDevice) { return tDevice.Blueprint().dwOutputs; }),
    };
    return s_atBlocks;
}

int FindBlock(CDevice& tDevice, uint32_t dwType, uint32_t dwIndex, uint32_t dwStreamKind, tagBlock const*& ptBlock,
              tagWhich& tWhich)
{
    const auto it = std::ranges::find(Blocks(), dwType, &tagBlock::dwType);
    if (it == Blocks().end())
    {
        return eResultNotFound;
    }
    ptBlock = &*it;
    tWhich.dwIndex = dwType == eConfigNetwork && dwIndex == eInterfaceOfLogin ? 0 : dwIndex;
    tWhich.nStream = it->bStreams ? StreamIndex(dwStreamKind) : 0;
    return tWhich.dwIndex >= it->pfnCount(tDevice) ? int{eResultNoChannel}
           : tWhich.nStream < 0                    ? int{eResultBadArgument}
                                                   : int{eResultOk};
}
} // namespace

int StreamIndex(uint32_t dwStreamKind)
{
    return dwStreamKind <= 3 ? 0 : dwStreamKind <= 5 ? 1 : -1;
}

int CConfiguration::Read(tagCaller const& tCaller, uint32_t dwType, uint32_t dwIndex, uint32_t dwStreamKind,
                         unsigned char* pData, uint32_t& dwLength)
{
    if (dwType == eConfigMacAddress)
    {
        tagConfigMacAddress tMac{};
        tMac.dwCount = 1;
        CopyText(tMac.szMac, Mac());
        Give(tMac, pData, dwLength);
        return eResultOk;
    }
    tagBlock const* ptBlock = nullptr;
    tagWhich tWhich;
    if (const int nResult = FindBlock(m_tDevice, dwType, dwIndex, dwStreamKind, ptBlock, tWhich))
    {
        return nResult;
    }
    if (dwType == eConfigUsers && tCaller.dwLevel < eUserAdministrator)
    {
        return eResultWrongLogin;
    }
    ptBlock->fnRead(m_tDevice, dwType, tWhich, pData, dwLength);
    return eResultOk;
}

int CConfiguration::Write(tagCaller const& tCaller, uint32_t dwType, uint32_t dwIndex, uint32_t dwStreamKind,
                          unsigned char const* pData, std::size_t nLength)
{
    tagBlock const* ptBlock = nullptr;
    tagWhich tWhich;
    if (const int nResult = FindBlock(m_tDevice, dwType, dwIndex, dwStreamKind, ptBlock, tWhich))
    {
        return nResult;
    }
    uint32_t dwSize = 0;
    std::memcpy(&dwSize, pData, std::min(nLength, sizeof dwSize));
    if (!ptBlock->fnWrite || dwSize > nLength)
    {
        return ptBlock->fnWrite ? int{eResultBadArgument} : int{eResultRefused};
    }
    const int nResult = ptBlock->fnWrite(m_tDevice, dwType, tWhich, pData);
    if (nResult == eResultOk)
    {
        Changed(dwType, dwIndex, &tCaller);
    }
    return nResult;
}

void CConfiguration::Changed(uint32_t dwType, uint32_t dwIndex, tagCaller const* ptCaller)
{
    m_tDevice.Touch();
    m_tDevice.Part<CStorage>().CheckSchedules();
    m_tDevice.Raise(eEventConfigChanged, dwType, dwIndex, ptCaller);
}

void CConfiguration::Reset(bool bAll)
{
    if (bAll)
    {
        m_tDevice.Store().RemoveAll({}, {"firmware", "recordings"});
        m_tDevice.Part<CUsers>().Reset();
    }
    else
    {
        m_tDevice.Store().RemoveAll({},
                                    {"firmware", "recordings", "users", "config/" + std::to_string(eConfigNetwork)});
    }
    m_tDevice.Part<CWall>().Reset();
    m_tDevice.Part<CPTZ>().Reset();
    m_tDevice.Part<CStorage>().Reset();
    m_tDevice.Touch();
}

std::string CConfiguration::Mac() const
{
    const uint32_t dwHash = HashOf(m_tDevice.Blueprint().strAddress + std::to_string(m_tDevice.Blueprint().dwPort));
    char szMac[18];
    std::snprintf(szMac, sizeof szMac, "02:00:%02x:%02x:%02x:%02x", dwHash >> 24 & 255, dwHash >> 16 & 255,
                  dwHash >> 8 & 255, dwHash & 255);
    return szMac;
}

std::string CConfiguration::SerialNumber() const
{
    tagDeviceBlueprint const& tBlueprint = m_tDevice.Blueprint();
    char szSerial[16];
    std::snprintf(szSerial, sizeof szSerial, "TB%08X",
                  HashOf(tBlueprint.strAddress + std::to_string(tBlueprint.dwPort)));
    return tBlueprint.strSerialNumber.empty() ? szSerial : tBlueprint.strSerialNumber;
}

template <class Record>
Record CConfiguration::Get(uint32_t dwIndex, uint32_t dwStreamKind) const
{
    return Current<Record>(m_tDevice, g_dwTypeOf<Record>, {dwIndex, StreamIndex(dwStreamKind)});
}

template <>
tagConfigClock CConfiguration::Get(uint32_t, uint32_t) const
{
    return CurrentClock(m_tDevice);
}

template tagConfigIdentity CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigNetwork CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigVideoEncoder CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigAudioEncoder CConfiguration::Get(uint32_t, uint32_t) const;
template tagCameraPicture CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigOverlay CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigMotion CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigPrivacy CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigSchedule CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigAlarmInput CConfiguration::Get(uint32_t, uint32_t) const;
template tagConfigAlarmOutput CConfiguration::Get(uint32_t, uint32_t) const;
} // namespace device
