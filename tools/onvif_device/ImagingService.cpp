// The imaging service: how a channel's picture looks, exposure, focus, day and night.

#include "tools/onvif_device/MediaParts.h"

#include <cmath>

namespace onvif_device
{
namespace
{
using device::CCamera;

constexpr double g_fWhole = 10000;

uint32_t ChannelAt(CCall& tCall)
{
    return tCall.Index({"VideoSourceToken"}, "VideoSource", tCall.Device().Channels(), "ter:NoSource");
}

char const* OnOff(uint32_t dwSwitch)
{
    return dwSwitch == eSwitchOff ? "OFF" : dwSwitch == eSwitchOn ? "ON" : "AUTO";
}

char const* AutoManual(uint32_t dwMode)
{
    return dwMode == eModeAuto ? "AUTO" : "MANUAL";
}

// --- as they are -----------------------------------------------------------------------------------------------------

void WriteExposure(CXml& tXml, tagCameraExposure const& t)
{
    tXml.In("tt:Exposure",
            [&]
            {
                tXml.Put("tt:Mode", AutoManual(t.dwMode)).Put("tt:Priority", t.dwPriority ? "FrameRate" : "LowNoise");
                tXml.Put("tt:MinExposureTime", double(t.dwMinExposureUs));
                tXml.Put("tt:MaxExposureTime", double(t.dwMaxExposureUs));
                tXml.Put("tt:MinGain", t.dwMinGain / 100.0).Put("tt:MaxGain", t.dwMaxGain / 100.0);
                tXml.Put("tt:ExposureTime", double(t.dwExposureUs)).Put("tt:Gain", t.dwGain / 100.0);
                tXml.Put("tt:Iris", t.dwIris / 100.0);
            });
}

void WriteFocus(CXml& tXml, tagCameraFocus const& t)
{
    tXml.In("tt:Focus",
            [&]
            {
                tXml.Put("tt:AutoFocusMode", AutoManual(t.dwMode)).Put("tt:DefaultSpeed", t.dwSpeed / 100.0);
                tXml.Put("tt:NearLimit", t.dwNearLimitCm / 100.0).Put("tt:FarLimit", t.dwFarLimitCm / 100.0);
            });
}

void WriteSwitch(CXml& tXml, char const* szElement, uint32_t dwSwitch, uint32_t dwLevel)
{
    tXml.In(szElement, [&] { tXml.Put("tt:Mode", OnOff(dwSwitch)).Put("tt:Level", double(dwLevel)); });
}

void GetImagingSettings(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = ChannelAt(tCall);
    const auto t = tCall.Get<tagCameraPicture>(dwChannel);
    const tagCameraDayNight tDayNight = tCall.Part<CCamera>().DayNight(dwChannel);
    CXml& tXml = tCall.Xml();
    tXml.In("timg:ImagingSettings",
            [&]
            {
                if (!tCall.Quirks().bSparse)
                {
                    WriteSwitch(tXml, "tt:BacklightCompensation", t.dwBacklight, t.dwBacklightLevel);
                }
                tXml.Put("tt:Brightness", double(t.dwBrightness)).Put("tt:ColorSaturation", double(t.dwSaturation));
                tXml.Put("tt:Contrast", double(t.dwContrast));
                if (tCall.Quirks().bSparse)
                {
                    return;
                }
                WriteExposure(tXml, tCall.Part<CCamera>().Exposure(dwChannel));
                WriteFocus(tXml, tCall.Part<CCamera>().Focus(dwChannel));
                tXml.Put("tt:IrCutFilter", tDayNight.dwMode == eDayNightDay     ? "ON"
                                           : tDayNight.dwMode == eDayNightNight ? "OFF"
                                                                                : "AUTO");
                tXml.Put("tt:Sharpness", double(t.dwSharpness));
                WriteSwitch(tXml, "tt:WideDynamicRange", t.dwWideDynamicRange, t.dwWideDynamicLevel);
                tXml.In("tt:WhiteBalance",
                        [&]
                        {
                            tXml.Put("tt:Mode", AutoManual(t.dwWhiteBalance)).Put("tt:CrGain", double(t.dwRedGain));
                            tXml.Put("tt:CbGain", double(t.dwBlueGain));
                        });
                tXml.In("tt:Extension",
                        [&]
                        {
                            tXml.In("tt:Extension",
                                    [&]
                                    {
                                        tXml.In("tt:IrCutFilterAutoAdjustment",
                                                [&]
                                                {
                                                    tXml.Put("tt:BoundaryType", "Common");
                                                    tXml.Put("tt:BoundaryOffset", tDayNight.dwSensitivity / 50.0 - 1);
                                                    tXml.Put("tt:ResponseTime",
                                                             Duration(int64_t{tDayNight.dwDelaySeconds} * 1000000));
                                                });
                                        tXml.In("tt:Extension",
                                                [&]
                                                {
                                                    tXml.In("tt:Defogging",
                                                            [&] { tXml.Put("tt:Mode", OnOff(t.dwDefog)); });
                                                    tXml.In("tt:NoiseReduction",
                                                            [&] { tXml.Put("tt:Level", t.dwNoiseReduction / 100.0); });
                                                });
                                    });
                        });
            });
}

void GetOptions(CCall& tCall)
{
    ChannelAt(tCall);
    CXml& tXml = tCall.Xml();
    const auto fnModes = [&](std::initializer_list<char const*> aszModes)
    {
        for (char const* const sz : aszModes)
        {
            tXml.Put("tt:Mode", sz);
        }
    };
    const auto fnPercent = [&](char const* szElement) { tXml.Range(szElement, 0.0, 100.0); };
    tXml.In("timg:ImagingOptions",
            [&]
            {
                tXml.In("tt:BacklightCompensation", [&] { fnModes({"OFF", "ON"}), fnPercent("tt:Level"); });
                fnPercent("tt:Brightness"), fnPercent("tt:ColorSaturation"), fnPercent("tt:Contrast");
                tXml.In("tt:Exposure",
                        [&]
                        {
                            fnModes({"AUTO", "MANUAL"});
                            tXml.Put("tt:Priority", "LowNoise").Put("tt:Priority", "FrameRate");
                            tXml.Range("tt:MinExposureTime", 1.0, 1e6).Range("tt:MaxExposureTime", 1.0, 1e6);
                            tXml.Range("tt:MinGain", 0.0, 100.0).Range("tt:MaxGain", 0.0, 100.0);
                            tXml.Range("tt:ExposureTime", 1.0, 1e6).Range("tt:Gain", 0.0, 100.0);
                            tXml.Range("tt:Iris", 0.0, 100.0);
                        });
                tXml.In("tt:Focus",
                        [&]
                        {
                            tXml.Put("tt:AutoFocusModes", "AUTO").Put("tt:AutoFocusModes", "MANUAL");
                            tXml.Range("tt:DefaultSpeed", 0.0, 1.0).Range("tt:NearLimit", 0.0, 100.0);
                            tXml.Range("tt:FarLimit", 0.0, 10000.0);
                        });
                tXml.Put("tt:IrCutFilterModes", "ON").Put("tt:IrCutFilterModes", "OFF");
                tXml.Put("tt:IrCutFilterModes", "AUTO");
                fnPercent("tt:Sharpness");
                tXml.In("tt:WideDynamicRange", [&] { fnModes({"OFF", "ON"}), fnPercent("tt:Level"); });
                tXml.In("tt:WhiteBalance",
                        [&]
                        {
                            fnModes({"AUTO", "MANUAL"});
                            tXml.Range("tt:YrGain", 0.0, 100.0).Range("tt:YbGain", 0.0, 100.0);
                        });
                tXml.In("tt:Extension",
                        [&]
                        {
                            tXml.In("tt:Extension",
                                    [&]
                                    {
                                        tXml.In(
                                            "tt:Extension",
                                            [&]
                                            {
                                                tXml.In("tt:DefoggingOptions", [&] { fnModes({"OFF", "ON", "AUTO"}); });
                                                tXml.In("tt:NoiseReductionOptions",
                                                        [&] { tXml.Put("tt:Level", true); });
                                            });
                                    });
                        });
            });
}

// --- written ---------------------------------------------------------------------------------------------------------

// A level in percent of the settings; as it was when it isn't named.
void ReadLevel(pugi::xml_node tParent, char const* szName, double fUnit, uint32_t& dwLevel)
{
    double fValue = 0;
    const pugi::xml_node tNode = Child(tParent, szName);
    if (!tNode)
    {
        return;
    }
    if (!ParseNumber(TextOf(tNode), fValue) || fValue < 0 || fValue * fUnit > 4e9)
    {
        FailValue("ter:SettingsInvalid", std::string(szName) + " is out of its range");
    }
    dwLevel = static_cast<uint32_t>(std::lround(fValue * fUnit));
}

void ReadWord(pugi::xml_node tParent, char const* szName, std::initializer_list<std::string_view> astrWords,
              uint32_t& dwWord)
{
    const pugi::xml_node tNode = Child(tParent, szName);
    if (!tNode)
    {
        return;
    }
    auto const* const it = std::ranges::find(astrWords, TextOf(tNode));
    if (it == astrWords.end())
    {
        FailValue("ter:SettingsInvalid", std::string(szName) + " can't be " + TextOf(tNode));
    }
    dwWord = static_cast<uint32_t>(it - astrWords.begin());
}

template <class Record>
void Write(CCall& tCall, uint32_t dwChannel, uint32_t dwType, Record tRecord)
{
    if (tCall.Part<CCamera>().Write(tCall.Caller(), static_cast<int>(dwChannel), dwType, &tRecord, sizeof tRecord) !=
        eResultOk)
    {
        FailValue("ter:SettingsInvalid", "a setting is out of its range");
    }
}

void SetImagingSettings(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = ChannelAt(tCall);
    const pugi::xml_node tAll = tCall.At({"ImagingSettings"});
    const auto fnAt = [&](CCall::Path astrPath) { return Child(tAll, astrPath); };
    auto t = tCall.Get<tagCameraPicture>(dwChannel);
    auto tExposure = tCall.Part<CCamera>().Exposure(dwChannel);
    auto tFocus = tCall.Part<CCamera>().Focus(dwChannel);
    auto tDayNight = tCall.Part<CCamera>().DayNight(dwChannel);
    ReadWord(fnAt({"BacklightCompensation"}), "Mode", {"OFF", "ON"}, t.dwBacklight);
    ReadLevel(fnAt({"BacklightCompensation"}), "Level", 1, t.dwBacklightLevel);
    ReadLevel(tAll, "Brightness", 1, t.dwBrightness);
    ReadLevel(tAll, "ColorSaturation", 1, t.dwSaturation);
    ReadLevel(tAll, "Contrast", 1, t.dwContrast);
    ReadLevel(tAll, "Sharpness", 1, t.dwSharpness);
    ReadWord(fnAt({"WideDynamicRange"}), "Mode", {"OFF", "ON"}, t.dwWideDynamicRange);
    ReadLevel(fnAt({"WideDynamicRange"}), "Level", 1, t.dwWideDynamicLevel);
    ReadWord(fnAt({"WhiteBalance"}), "Mode", {"AUTO", "MANUAL"}, t.dwWhiteBalance);
    ReadLevel(fnAt({"WhiteBalance"}), "CrGain", 1, t.dwRedGain);
    ReadLevel(fnAt({"WhiteBalance"}), "CbGain", 1, t.dwBlueGain);
    const pugi::xml_node tLast = fnAt({"Extension", "Extension", "Extension"});
    ReadWord(Child(tLast, "Defogging"), "Mode", {"OFF", "ON", "AUTO"}, t.dwDefog);
    ReadLevel(Child(tLast, "NoiseReduction"), "Level", 100, t.dwNoiseReduction);
    const pugi::xml_node tE = fnAt({"Exposure"});
    ReadWord(tE, "Mode", {"AUTO", "MANUAL"}, tExposure.dwMode);
    ReadWord(tE, "Priority", {"LowNoise", "FrameRate"}, tExposure.dwPriority);
    ReadLevel(tE, "MinExposureTime", 1, tExposure.dwMinExposureUs);
    ReadLevel(tE, "MaxExposureTime", 1, tExposure.dwMaxExposureUs);
    ReadLevel(tE, "ExposureTime", 1, tExposure.dwExposureUs);
    ReadLevel(tE, "MinGain", 100, tExposure.dwMinGain);
    ReadLevel(tE, "MaxGain", 100, tExposure.dwMaxGain);
    ReadLevel(tE, "Gain", 100, tExposure.dwGain);
    ReadLevel(tE, "Iris", 100, tExposure.dwIris);
    ReadWord(fnAt({"Focus"}), "AutoFocusMode", {"AUTO", "MANUAL"}, tFocus.dwMode);
    ReadLevel(fnAt({"Focus"}), "DefaultSpeed", 100, tFocus.dwSpeed);
    ReadLevel(fnAt({"Focus"}), "NearLimit", 100, tFocus.dwNearLimitCm);
    ReadLevel(fnAt({"Focus"}), "FarLimit", 100, tFocus.dwFarLimitCm);
    ReadWord(tAll, "IrCutFilter", {"AUTO", "ON", "OFF"}, tDayNight.dwMode); // as eDayNightMode numbers them
    Write(tCall, dwChannel, eCameraPicture, t);
    Write(tCall, dwChannel, eCameraExposure, tExposure);
    Write(tCall, dwChannel, eCameraFocus, tFocus);
    Write(tCall, dwChannel, eCameraDayNight, tDayNight);
}

// --- focus -----------------------------------------------------------------------------------------------------------

void SetFocusPosition(CCall& tCall, uint32_t dwChannel, double fPosition)
{
    auto tFocus = tCall.Part<CCamera>().Focus(dwChannel);
    tFocus.dwMode = eModeManual;
    tFocus.dwPosition = static_cast<uint32_t>(std::lround(std::clamp(fPosition, 0.0, g_fWhole)));
    Write(tCall, dwChannel, eCameraFocus, tFocus);
}

void Command(CCall& tCall, uint32_t dwChannel, ePTZControlCmdCode eCommand, long lPara1)
{
    Require(tCall.Part<device::CPTZ>().Command(tCall.Caller(), dwChannel, eCommand, static_cast<unsigned long>(lPara1),
                                               0, 0, 0),
            "ter:NoImagingForSource");
}

void Move(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = ChannelAt(tCall);
    if (tCall.Has({"Focus", "Absolute"}))
    {
        SetFocusPosition(tCall, dwChannel, tCall.Number({"Focus", "Absolute", "Position"}) * g_fWhole);
    }
    else if (tCall.Has({"Focus", "Relative"}))
    {
        SetFocusPosition(tCall, dwChannel,
                         tCall.Part<CCamera>().Focus(dwChannel).dwPosition +
                             tCall.Number({"Focus", "Relative", "Distance"}) * g_fWhole);
    }
    else if (tCall.Has({"Focus", "Continuous"}))
    {
        const double fSpeed = std::clamp(tCall.Number({"Focus", "Continuous", "Speed"}), -1.0, 1.0);
        Command(tCall, dwChannel, ePTZFocus, std::lround(fSpeed * g_fWhole));
    }
    else
    {
        FailValue("ter:InvalidArgVal", "there is nothing to move");
    }
}

void Stop(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = ChannelAt(tCall);
    if (Moves(tCall, dwChannel))
    {
        Command(tCall, dwChannel, ePTZStop, ePTZAxisFocus);
    }
}

void GetStatus(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagCameraFocus t = tCall.Part<CCamera>().Focus(ChannelAt(tCall));
    tCall.Xml().In("timg:Status",
                   [&]
                   {
                       tCall.Xml().In("tt:FocusStatus20",
                                      [&]
                                      {
                                          tCall.Xml().Put("tt:Position", t.dwPosition / g_fWhole);
                                          tCall.Xml().Put("tt:MoveStatus", "IDLE");
                                      });
                   });
}

void GetMoveOptions(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = ChannelAt(tCall);
    CXml& tXml = tCall.Xml();
    tXml.In("timg:MoveOptions",
            [&]
            {
                tXml.In("tt:Absolute", [&] { tXml.Range("tt:Position", 0.0, 1.0); });
                tXml.In("tt:Relative", [&] { tXml.Range("tt:Distance", -1.0, 1.0); });
                if (Moves(tCall, dwChannel))
                {
                    tXml.In("tt:Continuous", [&] { tXml.Range("tt:Speed", -1.0, 1.0); });
                }
            });
}

constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Imaging>},
    {"GetImagingSettings", eUserViewer, "VideoSourceToken", GetImagingSettings},
    {"SetImagingSettings", eUserOperator,
     "VideoSourceToken ImagingSettings{BacklightCompensation{Mode Level?}? Brightness? ColorSaturation? Contrast? "
     "Exposure{Mode Priority? Window{...}? MinExposureTime? MaxExposureTime? MinGain? MaxGain? MinIris? MaxIris? "
     "ExposureTime? Gain? Iris?}? Focus{AutoFocusMode DefaultSpeed? NearLimit? FarLimit? ...}? IrCutFilter? Sharpness? "
     "WideDynamicRange{Mode Level?}? WhiteBalance{Mode CrGain? CbGain? ...}? Extension{...}?} ForcePersistence?",
     SetImagingSettings},
    {"GetOptions", eUserViewer, "VideoSourceToken", GetOptions},
    {"Move", eUserOperator,
     "VideoSourceToken Focus{Absolute{Position Speed?}? Relative{Distance Speed?}? Continuous{Speed}?}", Move},
    {"Stop", eUserOperator, "VideoSourceToken", Stop},
    {"GetStatus", eUserViewer, "VideoSourceToken", GetStatus},
    {"GetMoveOptions", eUserViewer, "VideoSourceToken", GetMoveOptions},
};
} // namespace

std::span<tagAction const> ImagingActions()
{
    return g_atActions;
}
} // namespace onvif_device
