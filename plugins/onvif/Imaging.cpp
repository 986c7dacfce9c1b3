#include "plugins/onvif/Imaging.h"

#include "onvif/Client.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/ImagingWords.h"
#include "plugins/onvif/Profiles.h"
#include "plugins/onvif/Rotation.h"

#include "protocol/Record.h"

namespace onvifclient
{
namespace
{
using namespace onvif;

using Adapter_ProtocolSet::MergeRecord;

constexpr char const* g_szSwitch = "OFF ON AUTO";
constexpr char const* g_szMode = "AUTO MANUAL";

constexpr tagField<tagCameraPicture> g_atPicture[] = {
    {&tagCameraPicture::dwBrightness, {"Brightness", "Brightness"}},
    {&tagCameraPicture::dwContrast, {"Contrast", "Contrast"}},
    {&tagCameraPicture::dwSaturation, {"ColorSaturation", "ColorSaturation"}},
    {&tagCameraPicture::dwSharpness, {"Sharpness", "Sharpness"}},
    {&tagCameraPicture::dwNoiseReduction, {"Extension/Extension/Extension/NoiseReduction/Level", ""}},
    {&tagCameraPicture::dwWideDynamicRange,
     {"WideDynamicRange/Mode", "WideDynamicRange/Mode", eUnit::Names, g_szSwitch}},
    {&tagCameraPicture::dwWideDynamicLevel, {"WideDynamicRange/Level", "WideDynamicRange/Level"}},
    {&tagCameraPicture::dwBacklight,
     {"BacklightCompensation/Mode", "BacklightCompensation/Mode", eUnit::Names, g_szSwitch}},
    {&tagCameraPicture::dwBacklightLevel, {"BacklightCompensation/Level", "BacklightCompensation/Level"}},
    {&tagCameraPicture::dwWhiteBalance, {"WhiteBalance/Mode", "WhiteBalance/Mode", eUnit::Names, g_szMode}},
    {&tagCameraPicture::dwRedGain, {"WhiteBalance/CrGain", "WhiteBalance/YrGain"}},
    {&tagCameraPicture::dwBlueGain, {"WhiteBalance/CbGain", "WhiteBalance/YbGain"}},
    {&tagCameraPicture::dwDefog,
     {"Extension/Extension/Extension/Defogging/Mode", "Extension/Extension/Extension/DefoggingOptions/Mode",
      eUnit::Names, g_szSwitch}},
};

constexpr tagField<tagCameraDayNight> g_atDayNight[] = {
    {&tagCameraDayNight::dwMode, {"IrCutFilter", "IrCutFilterModes", eUnit::Names, "AUTO ON OFF"}},
    {&tagCameraDayNight::dwSensitivity, {"Extension/Extension/IrCutFilterAutoAdjustment/BoundaryOffset", ""}},
    {&tagCameraDayNight::dwDelaySeconds,
     {"Extension/Extension/IrCutFilterAutoAdjustment/ResponseTime", "", eUnit::Duration}},
};

constexpr tagImagingPlace g_tIris = {"Exposure/Iris", "Exposure/Iris", eUnit::Opening};

constexpr tagField<tagCameraExposure> g_atExposure[] = {
    {&tagCameraExposure::dwMode, {"Exposure/Mode", "Exposure/Mode", eUnit::Names, g_szMode}},
    {&tagCameraExposure::dwPriority, {"Exposure/Priority", "Exposure/Priority", eUnit::Names, "LowNoise FrameRate"}},
    {&tagCameraExposure::dwMinExposureUs, {"Exposure/MinExposureTime", "Exposure/MinExposureTime", eUnit::Whole}},
    {&tagCameraExposure::dwMaxExposureUs, {"Exposure/MaxExposureTime", "Exposure/MaxExposureTime", eUnit::Whole}},
    {&tagCameraExposure::dwExposureUs, {"Exposure/ExposureTime", "Exposure/ExposureTime", eUnit::Whole}},
    {&tagCameraExposure::dwMinGain, {"Exposure/MinGain", "Exposure/MinGain", eUnit::Hundredths}},
    {&tagCameraExposure::dwMaxGain, {"Exposure/MaxGain", "Exposure/MaxGain", eUnit::Hundredths}},
    {&tagCameraExposure::dwGain, {"Exposure/Gain", "Exposure/Gain", eUnit::Hundredths}},
    {&tagCameraExposure::dwIris, g_tIris},
};

constexpr tagField<tagCameraFocus> g_atFocus[] = {
    {&tagCameraFocus::dwMode, {"Focus/AutoFocusMode", "Focus/AutoFocusModes", eUnit::Names, g_szMode}},
    {&tagCameraFocus::dwNearLimitCm, {"Focus/NearLimit", "Focus/NearLimit", eUnit::Hundredths}},
    {&tagCameraFocus::dwFarLimitCm, {"Focus/FarLimit", "Focus/FarLimit", eUnit::Hundredths}},
    {&tagCameraFocus::dwSpeed, {"Focus/DefaultSpeed", "Focus/DefaultSpeed"}},
};

// Merges what was written over what there is; fnCheck says of words outside the fields whether they are taken.
template <class Record, class F>
int WriteRecordFields(CClient& tClient, tagChannel const& tChannel, Fields<Record> atFields, Record const* ptWritten,
                      Record const& tKept, F fnCheck)
{
    tagSettings tSettings;
    if (const int nResult = Ask(tClient, tChannel, tSettings))
    {
        return nResult;
    }
    Record tBefore = tKept;
    ReadFields(atFields, tSettings, tBefore);
    Record tAfter = tBefore;
    if (MergeRecord(tAfter, ptWritten) != eResultOk || !fnCheck(tBefore, tAfter))
    {
        return eResultBadArgument;
    }
    return WriteFields(tClient, tChannel, atFields, tSettings, tBefore, tAfter);
}

template <class Record>
int ReadRecordFields(CClient& tClient, tagChannel const& tChannel, Fields<Record> atFields, Record& t)
{
    t = {};
    t.dwSize = sizeof t;
    tagSettings tSettings;
    const int nResult = Ask(tClient, tChannel, tSettings);
    if (nResult == eResultOk)
    {
        ReadFields(atFields, tSettings, t);
    }
    return nResult;
}
} // namespace

// --- picture ---------------------------------------------------------------------------------------------------------

int ReadPicture(CClient& tClient, tagChannel const& tChannel, bool bMedia2, tagCameraPicture& t)
{
    int nResult = ReadRecordFields(tClient, tChannel, Fields<tagCameraPicture>(g_atPicture), t);
    if (nResult == eResultOk)
    {
        nResult = ReadTurn(tClient, tChannel, bMedia2, t.dwTurn);
    }
    return nResult;
}

int WritePicture(CClient& tClient, tagChannel const& tChannel, bool bMedia2, tagCameraPicture const* ptWritten)
{
    tagCameraPicture tKept{};
    tKept.dwSize = sizeof tKept;
    if (const int nResult = ReadTurn(tClient, tChannel, bMedia2, tKept.dwTurn))
    {
        return nResult;
    }
    tagCameraPicture tAfter = tKept;
    const auto fnCheck = [&](tagCameraPicture const&, tagCameraPicture const& tNew)
    {
        tAfter = tNew;
        // ONVIF has no hue; and what can't be turned isn't changed otherwise either.
        return tNew.dwHue == 0 &&
               (tNew.dwTurn == tKept.dwTurn || CheckTurn(tClient, tChannel, bMedia2, tNew.dwTurn) == eResultOk);
    };
    // The picture is turned last: a device may restart its streams for it.
    const int nResult =
        WriteRecordFields(tClient, tChannel, Fields<tagCameraPicture>(g_atPicture), ptWritten, tKept, fnCheck);
    return nResult != eResultOk || tAfter.dwTurn == tKept.dwTurn ? nResult
                                                                 : WriteTurn(tClient, tChannel, bMedia2, tAfter.dwTurn);
}

// --- day and night, exposure -----------------------------------------------------------------------------------------

int ReadDayNight(CClient& tClient, tagChannel const& tChannel, tagCameraDayNight& t)
{
    const int nResult = ReadRecordFields(tClient, tChannel, Fields<tagCameraDayNight>(g_atDayNight), t);
    t.bNight = t.dwMode == eDayNightNight ? 1 : 0;
    return nResult;
}

int WriteDayNight(CClient& tClient, tagChannel const& tChannel, tagCameraDayNight const* ptWritten)
{
    tagCameraDayNight tKept{};
    tKept.dwSize = sizeof tKept;
    return WriteRecordFields(tClient, tChannel, Fields<tagCameraDayNight>(g_atDayNight), ptWritten, tKept,
                             [](tagCameraDayNight const&, tagCameraDayNight const& t)
                             {
                                 return t.dwDelaySeconds <= 3600 && t.dwDayMinute == 0 && t.dwNightMinute == 0 &&
                                        t.dwInfrared == 0 && t.dwInfraredLevel == 0; // ONVIF has none of the four
                             });
}

int ReadExposure(CClient& tClient, tagChannel const& tChannel, tagCameraExposure& t)
{
    return ReadRecordFields(tClient, tChannel, Fields<tagCameraExposure>(g_atExposure), t);
}

int WriteExposure(CClient& tClient, tagChannel const& tChannel, tagCameraExposure const* ptWritten)
{
    tagCameraExposure tKept{};
    tKept.dwSize = sizeof tKept;
    return WriteRecordFields(tClient, tChannel, Fields<tagCameraExposure>(g_atExposure), ptWritten, tKept,
                             [](tagCameraExposure const&, tagCameraExposure const& t)
                             {
                                 return t.dwMinExposureUs <= t.dwMaxExposureUs && t.dwMinGain <= t.dwMaxGain &&
                                        t.dwFlicker == 0; // ONVIF has none
                             });
}

int StepIris(CClient& tClient, tagChannel const& tChannel, int64_t llBy)
{
    tagSettings tSettings;
    if (const int nResult = Ask(tClient, tChannel, tSettings))
    {
        return nResult;
    }
    tagCameraExposure tBefore{};
    ReadFields(Fields<tagCameraExposure>(g_atExposure), tSettings, tBefore);
    tagCameraExposure tAfter = tBefore;
    tAfter.dwMode = eModeManual;
    tAfter.dwIris = static_cast<uint32_t>(std::clamp<int64_t>(tBefore.dwIris + llBy, 0, g_dwWhole));
    const int nResult =
        WordText(g_tIris, tSettings, tAfter.dwIris)
            ? WriteFields(tClient, tChannel, Fields<tagCameraExposure>(g_atExposure), tSettings, tBefore, tAfter)
            : int{eResultNotSupported};
    return nResult == eResultBadArgument ? int{eResultNotSupported} : nResult; // there is no manual mode
}

// --- focus -----------------------------------------------------------------------------------------------------------

namespace
{
// Where the lens can be sent to; nothing: nowhere.
std::optional<tagSpan> FocusSpan(CClient& tClient, tagChannel const& tChannel, char const* szPath)
{
    const CAnswer tAnswer = tClient.Call({eService::Imaging, "GetMoveOptions", SourceToken(tChannel)});
    return SpanOf(Child(tAnswer.Body(), "MoveOptions"), szPath);
}

int Move(CClient& tClient, tagChannel const& tChannel, char const* szKind, char const* szWhat, double dValue)
{
    CXmlWriter tBody;
    tBody.Add("timg:VideoSourceToken", tChannel.strSource).Open("timg:Focus").Open(szKind).Add(szWhat, dValue);
    return tClient.Call({eService::Imaging, "Move", tBody.Take()}).Result();
}

void ReadPosition(CClient& tClient, tagChannel const& tChannel, tagCameraFocus& t)
{
    const auto tSpan = FocusSpan(tClient, tChannel, "Absolute/Position");
    if (tSpan)
    {
        const CAnswer tAnswer = tClient.Call({eService::Imaging, "GetStatus", SourceToken(tChannel)});
        t.dwPosition = static_cast<uint32_t>(
            tSpan->Share(Number(tAnswer.Body(), "Status/FocusStatus20/Position").value_or(tSpan->dLeast), g_dwWhole));
    }
}
} // namespace

int ReadFocus(CClient& tClient, tagChannel const& tChannel, tagCameraFocus& t)
{
    const int nResult = ReadRecordFields(tClient, tChannel, Fields<tagCameraFocus>(g_atFocus), t);
    if (nResult == eResultOk)
    {
        ReadPosition(tClient, tChannel, t);
    }
    return nResult;
}

int WriteFocus(CClient& tClient, tagChannel const& tChannel, tagCameraFocus const* ptWritten)
{
    tagCameraFocus tKept{};
    tKept.dwSize = sizeof tKept;
    ReadPosition(tClient, tChannel, tKept);
    uint32_t dwTo = tKept.dwPosition;
    const auto fnCheck = [&](tagCameraFocus const&, tagCameraFocus const& t)
    {
        dwTo = t.dwMode == eModeManual ? t.dwPosition : tKept.dwPosition;
        return t.dwPosition <= g_dwWhole && (t.dwFarLimitCm == 0 || t.dwNearLimitCm <= t.dwFarLimitCm);
    };
    const int nResult =
        WriteRecordFields(tClient, tChannel, Fields<tagCameraFocus>(g_atFocus), ptWritten, tKept, fnCheck);
    if (nResult != eResultOk || dwTo == tKept.dwPosition)
    {
        return nResult;
    }
    const auto tSpan = FocusSpan(tClient, tChannel, "Absolute/Position");
    return tSpan ? Move(tClient, tChannel, "tt:Absolute", "tt:Position", tSpan->At(dwTo, g_dwWhole))
                 : int{eResultBadArgument};
}

int MoveFocus(CClient& tClient, tagChannel const& tChannel, int32_t nSpeed)
{
    if (nSpeed == 0)
    {
        return tClient.Call({eService::Imaging, "Stop", SourceToken(tChannel)}).Result();
    }
    const tagSpan tSpan = FocusSpan(tClient, tChannel, "Continuous/Speed").value_or(tagSpan{-1, 1});
    // Fastest is the range's end, on either side of 0.
    const double dSpeed =
        nSpeed > 0 ? tSpan.dMost * nSpeed / g_dwWhole : tSpan.dLeast * -static_cast<double>(nSpeed) / g_dwWhole;
    return Move(tClient, tChannel, "tt:Continuous", "tt:Speed", dSpeed);
}

int SetAutoFocus(CClient& tClient, tagChannel const& tChannel, bool bOn)
{
    tagSettings tSettings;
    if (const int nResult = Ask(tClient, tChannel, tSettings))
    {
        return nResult;
    }
    tagCameraFocus tBefore{};
    ReadFields(Fields<tagCameraFocus>(g_atFocus), tSettings, tBefore);
    tagCameraFocus tAfter = tBefore;
    tAfter.dwMode = bOn ? eModeAuto : eModeManual;
    return WriteFields(tClient, tChannel, Fields<tagCameraFocus>(g_atFocus), tSettings, tBefore, tAfter);
}

// --- defaults --------------------------------------------------------------------------------------------------------

namespace
{
template <class Record>
int Default(CClient& tClient, tagChannel const& tChannel, Fields<Record> atFields)
{
    tagSettings tSettings;
    if (const int nResult = Ask(tClient, tChannel, tSettings))
    {
        return nResult;
    }
    Record tBefore{};
    ReadFields(atFields, tSettings, tBefore);
    Record tAfter = tBefore;
    for (tagField<Record> const& tField : atFields)
    {
        const bool bLevel = tField.tAt.eAs == eUnit::Percent;
        if ((bLevel || tField.tAt.eAs == eUnit::Names) && WordText(tField.tAt, tSettings, bLevel ? 50 : 0))
        {
            tAfter.*tField.pWord = bLevel ? 50 : 0;
        }
    }
    return WriteFields(tClient, tChannel, atFields, tSettings, tBefore, tAfter);
}
} // namespace

int DefaultCamera(CClient& tClient, tagChannel const& tChannel, bool bMedia2, eChromaDefault eWhat)
{
    int nResult = Default(tClient, tChannel, Fields<tagCameraPicture>(g_atPicture));
    uint32_t dwTurn = eTurnNone;
    nResult = nResult ? nResult : ReadTurn(tClient, tChannel, bMedia2, dwTurn);
    nResult = nResult || dwTurn == eTurnNone ? nResult : WriteTurn(tClient, tChannel, bMedia2, eTurnNone);
    if (nResult != eResultOk || eWhat != eDefaultAll)
    {
        return nResult;
    }
    nResult = Default(tClient, tChannel, Fields<tagCameraDayNight>(g_atDayNight));
    nResult = nResult ? nResult : Default(tClient, tChannel, Fields<tagCameraExposure>(g_atExposure));
    return nResult ? nResult : Default(tClient, tChannel, Fields<tagCameraFocus>(g_atFocus));
}
} // namespace onvifclient
