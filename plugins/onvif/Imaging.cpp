#include "plugins/onvif/Imaging.h"

#include "onvif/Client.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Edit.h"
#include "plugins/onvif/Profiles.h"
#include "plugins/onvif/Rotation.h"

#include "protocol/Record.h"

#include <initializer_list>
#include <set>
#include <span>

namespace onvifclient
{
namespace
{
using namespace onvif;

using Adapter_ProtocolSet::MergeRecord;

// How a record's word stands in the settings.
enum class eUnit : unsigned char
{
    Percent,    // of the device's range
    Hundredths, // of the device's unit
    Whole,      // as it is
    Opening,    // ten-thousandths of the range, the other way round: ONVIF has what the iris takes away
    Duration,   // seconds, a duration there
    Names,      // one of these, in the order of the interface's values
};
template <class Record>
struct tagField
{
    uint32_t Record::*pWord;
    char const* szPath;   // in ImagingSettings
    char const* szOption; // in the options: its range, or for names the elements that list them
    eUnit eAs = eUnit::Percent;
    char const* szNames = "";
};

constexpr char const* g_szSwitch = "OFF ON AUTO";
constexpr char const* g_szMode = "AUTO MANUAL";

constexpr tagField<tagCameraPicture> g_atPicture[] = {
    {&tagCameraPicture::dwBrightness, "Brightness", "Brightness"},
    {&tagCameraPicture::dwContrast, "Contrast", "Contrast"},
    {&tagCameraPicture::dwSaturation, "ColorSaturation", "ColorSaturation"},
    {&tagCameraPicture::dwSharpness, "Sharpness", "Sharpness"},
    {&tagCameraPicture::dwNoiseReduction, "Extension/Extension/Extension/NoiseReduction/Level", ""},
    {&tagCameraPicture::dwWideDynamicRange, "WideDynamicRange/Mode", "WideDynamicRange/Mode", eUnit::Names, g_szSwitch},
    {&tagCameraPicture::dwWideDynamicLevel, "WideDynamicRange/Level", "WideDynamicRange/Level"},
    {&tagCameraPicture::dwBacklight, "BacklightCompensation/Mode", "BacklightCompensation/Mode", eUnit::Names,
     g_szSwitch},
    {&tagCameraPicture::dwBacklightLevel, "BacklightCompensation/Level", "BacklightCompensation/Level"},
    {&tagCameraPicture::dwWhiteBalance, "WhiteBalance/Mode", "WhiteBalance/Mode", eUnit::Names, g_szMode},
    {&tagCameraPicture::dwRedGain, "WhiteBalance/CrGain", "WhiteBalance/YrGain"},
    {&tagCameraPicture::dwBlueGain, "WhiteBalance/CbGain", "WhiteBalance/YbGain"},
    {&tagCameraPicture::dwDefog, "Extension/Extension/Extension/Defogging/Mode",
     "Extension/Extension/Extension/DefoggingOptions/Mode", eUnit::Names, g_szSwitch},
};

constexpr tagField<tagCameraDayNight> g_atDayNight[] = {
    {&tagCameraDayNight::dwMode, "IrCutFilter", "IrCutFilterModes", eUnit::Names, "AUTO ON OFF"},
    {&tagCameraDayNight::dwSensitivity, "Extension/Extension/IrCutFilterAutoAdjustment/BoundaryOffset", ""},
    {&tagCameraDayNight::dwDelaySeconds, "Extension/Extension/IrCutFilterAutoAdjustment/ResponseTime", "",
     eUnit::Duration},
};

constexpr tagField<tagCameraExposure> g_atExposure[] = {
    {&tagCameraExposure::dwMode, "Exposure/Mode", "Exposure/Mode", eUnit::Names, g_szMode},
    {&tagCameraExposure::dwPriority, "Exposure/Priority", "Exposure/Priority", eUnit::Names, "LowNoise FrameRate"},
    {&tagCameraExposure::dwMinExposureUs, "Exposure/MinExposureTime", "Exposure/MinExposureTime", eUnit::Whole},
    {&tagCameraExposure::dwMaxExposureUs, "Exposure/MaxExposureTime", "Exposure/MaxExposureTime", eUnit::Whole},
    {&tagCameraExposure::dwExposureUs, "Exposure/ExposureTime", "Exposure/ExposureTime", eUnit::Whole},
    {&tagCameraExposure::dwMinGain, "Exposure/MinGain", "Exposure/MinGain", eUnit::Hundredths},
    {&tagCameraExposure::dwMaxGain, "Exposure/MaxGain", "Exposure/MaxGain", eUnit::Hundredths},
    {&tagCameraExposure::dwGain, "Exposure/Gain", "Exposure/Gain", eUnit::Hundredths},
    {&tagCameraExposure::dwIris, "Exposure/Iris", "Exposure/Iris", eUnit::Opening},
};

constexpr tagField<tagCameraFocus> g_atFocus[] = {
    {&tagCameraFocus::dwMode, "Focus/AutoFocusMode", "Focus/AutoFocusModes", eUnit::Names, g_szMode},
    {&tagCameraFocus::dwNearLimitCm, "Focus/NearLimit", "Focus/NearLimit", eUnit::Hundredths},
    {&tagCameraFocus::dwFarLimitCm, "Focus/FarLimit", "Focus/FarLimit", eUnit::Hundredths},
    {&tagCameraFocus::dwSpeed, "Focus/DefaultSpeed", "Focus/DefaultSpeed"},
};

// A source's settings, and what they may be.
struct tagSettings
{
    CAnswer tSettings;
    CAnswer tOptions;
    pugi::xml_node Now() const { return Child(tSettings.Body(), "ImagingSettings"); }
    pugi::xml_node Options() const { return Child(tOptions.Body(), "ImagingOptions"); }
};

std::string SourceToken(tagChannel const& tChannel)
{
    return CXmlWriter().Add("timg:VideoSourceToken", tChannel.strSource).Take();
}

int Ask(CClient& tClient, tagChannel const& tChannel, tagSettings& t)
{
    t.tSettings = tClient.Call({eService::Imaging, "GetImagingSettings", SourceToken(tChannel)});
    if (!t.tSettings)
    {
        return t.tSettings.Result();
    }
    t.tOptions = tClient.Call({eService::Imaging, "GetOptions", SourceToken(tChannel)});
    return IsSilent(t.tOptions) ? t.tOptions.Result() : int{eResultOk}; // a device may lack options
}

// The range that a level has where the device doesn't tell.
tagSpan UsualSpan(std::string_view strPath)
{
    return strPath.ends_with("BoundaryOffset")                                            ? tagSpan{-1, 1}
           : strPath.ends_with("NoiseReduction/Level") || strPath == "Focus/DefaultSpeed" ? tagSpan{0, 1}
                                                                                          : tagSpan{0, 100};
}

std::string_view Name(std::string_view strNames, uint32_t dwWhich)
{
    for (; dwWhich > 0; --dwWhich)
    {
        const std::size_t nEnd = strNames.find(' ');
        strNames = nEnd == std::string_view::npos ? std::string_view{} : strNames.substr(nEnd + 1);
    }
    return strNames.substr(0, strNames.find(' '));
}

uint32_t NameIndex(std::string_view strNames, std::string_view strName)
{
    for (uint32_t i = 0; !Name(strNames, i).empty(); ++i)
    {
        if (Name(strNames, i) == strName)
        {
            return i;
        }
    }
    return 0;
}

template <class Record>
uint32_t ReadField(tagField<Record> const& tField, tagSettings const& t)
{
    const std::string_view strText = Text(t.Now(), tField.szPath);
    if (tField.eAs == eUnit::Names)
    {
        return NameIndex(tField.szNames, strText);
    }
    if (tField.eAs == eUnit::Duration)
    {
        return static_cast<uint32_t>(std::clamp<int64_t>(ParseDuration(strText).value_or(0) / 1000, 0, 3600));
    }
    const auto dValue = Number(t.Now(), tField.szPath);
    const tagSpan tSpan = SpanOf(t.Options(), tField.szOption).value_or(UsualSpan(tField.szPath));
    const double dScale = tField.eAs == eUnit::Hundredths ? 100 : 1;
    return !dValue                        ? 0
           : tField.eAs == eUnit::Percent ? tSpan.Percent(*dValue)
           : tField.eAs == eUnit::Opening ? g_dwWhole - static_cast<uint32_t>(tSpan.Share(*dValue, g_dwWhole))
                                          : static_cast<uint32_t>(std::clamp(*dValue * dScale + 0.5, 0.0, 4e9));
}

template <class Record>
void ReadFields(std::span<tagField<Record> const> atFields, tagSettings const& tSettings, Record& t)
{
    for (tagField<Record> const& tField : atFields)
    {
        t.*tField.pWord = ReadField(tField, tSettings);
    }
}

// A word as the device wants it; nothing: it takes no such value.
template <class Record>
std::optional<std::string> FieldText(tagField<Record> const& tField, tagSettings const& t, uint32_t dwValue)
{
    if (tField.eAs == eUnit::Names)
    {
        const std::string strName(Name(tField.szNames, dwValue));
        const std::string_view strOption = tField.szOption;
        const std::size_t nSlash = strOption.rfind('/');
        const pugi::xml_node tList =
            nSlash == std::string_view::npos ? t.Options() : Find(t.Options(), strOption.substr(0, nSlash));
        const std::string_view strList = nSlash == std::string_view::npos ? strOption : strOption.substr(nSlash + 1);
        const bool bTaken =
            !Children(tList, strList).empty() ? Offers(tList, strList, strName) : !Text(t.Now(), tField.szPath).empty();
        return !strName.empty() && bTaken ? std::optional(strName) : std::nullopt;
    }
    const auto tOffered = SpanOf(t.Options(), tField.szOption);
    if (!tOffered && Text(t.Now(), tField.szPath).empty())
    {
        return std::nullopt; // the camera lacks it
    }
    const tagSpan tSpan = tOffered.value_or(UsualSpan(tField.szPath));
    const double dValue = tField.eAs == eUnit::Hundredths ? dwValue / 100.0 : dwValue;
    switch (tField.eAs)
    {
    case eUnit::Percent:
        return dwValue <= 100 ? std::optional(NumberText(tSpan.AtPercent(dwValue))) : std::nullopt;
    case eUnit::Opening:
        return dwValue <= g_dwWhole ? std::optional(NumberText(tSpan.At(g_dwWhole - dwValue, g_dwWhole)))
                                    : std::nullopt;
    case eUnit::Duration:
        return DurationText(int64_t{dwValue} * 1000);
    default:
        return !tOffered || tOffered->Holds(dValue) ? std::optional(NumberText(dValue)) : std::nullopt;
    }
}

// Sends the fields that have changed, with the groups that they stand in.
template <class Record>
int WriteFields(CClient& tClient, tagChannel const& tChannel, std::span<tagField<Record> const> atFields,
                tagSettings const& tSettings, Record const& tBefore, Record const& tAfter)
{
    const auto fnGroup = [](std::string_view strPath) { return std::string(strPath.substr(0, strPath.find('/'))); };
    std::set<std::string> strGroups;
    for (tagField<Record> const& tField : atFields)
    {
        if (tAfter.*tField.pWord != tBefore.*tField.pWord)
        {
            strGroups.insert(fnGroup(tField.szPath));
        }
    }
    if (strGroups.empty())
    {
        return eResultOk;
    }
    CEdit tEdit(tSettings.Now(), "ImagingSettings");
    for (pugi::xml_node tChild : tSettings.Now().children())
    {
        if (!strGroups.contains(std::string(LocalName(tChild))))
        {
            tEdit.Remove(LocalName(tChild));
        }
    }
    for (tagField<Record> const& tField : atFields)
    {
        // A group that wasn't there needs its mode too.
        const bool bChanged = tAfter.*tField.pWord != tBefore.*tField.pWord;
        const auto strText = FieldText(tField, tSettings, tAfter.*tField.pWord);
        if (bChanged && !strText)
        {
            return eResultBadArgument;
        }
        if (strText && (bChanged || (tField.eAs == eUnit::Names && strGroups.contains(fnGroup(tField.szPath)))))
        {
            tEdit.Set(tField.szPath, *strText);
        }
    }
    const CAnswer tAnswer = tClient.Call({eService::Imaging, "SetImagingSettings",
                                          CXmlWriter()
                                              .Add("timg:VideoSourceToken", tChannel.strSource)
                                              .Raw(tEdit.As("timg:ImagingSettings"))
                                              .Add("timg:ForcePersistence", true)
                                              .Take()});
    return tAnswer.Result();
}

// Merges what was written over what there is; fnCheck says of words outside the fields whether they are taken.
template <class Record, class F>
int WriteRecordFields(CClient& tClient, tagChannel const& tChannel, std::span<tagField<Record> const> atFields,
                      Record const* ptWritten, Record const& tKept, F fnCheck)
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
int ReadRecordFields(CClient& tClient, tagChannel const& tChannel, std::span<tagField<Record> const> atFields,
                     Record& t)
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

template <class Record, std::size_t n>
std::span<tagField<Record> const> Fields(tagField<Record> const (&atFields)[n])
{
    return atFields;
}
} // namespace

// --- picture ---------------------------------------------------------------------------------------------------------

int ReadPicture(CClient& tClient, tagChannel const& tChannel, bool bMedia2, tagCameraPicture& t)
{
    int nResult = ReadRecordFields(tClient, tChannel, Fields(g_atPicture), t);
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
    const int nResult = WriteRecordFields(tClient, tChannel, Fields(g_atPicture), ptWritten, tKept, fnCheck);
    return nResult != eResultOk || tAfter.dwTurn == tKept.dwTurn ? nResult
                                                                 : WriteTurn(tClient, tChannel, bMedia2, tAfter.dwTurn);
}

// --- day and night, exposure -----------------------------------------------------------------------------------------

int ReadDayNight(CClient& tClient, tagChannel const& tChannel, tagCameraDayNight& t)
{
    const int nResult = ReadRecordFields(tClient, tChannel, Fields(g_atDayNight), t);
    t.bNight = t.dwMode == eDayNightNight ? 1 : 0;
    return nResult;
}

int WriteDayNight(CClient& tClient, tagChannel const& tChannel, tagCameraDayNight const* ptWritten)
{
    tagCameraDayNight tKept{};
    tKept.dwSize = sizeof tKept;
    return WriteRecordFields(tClient, tChannel, Fields(g_atDayNight), ptWritten, tKept,
                             [](tagCameraDayNight const&, tagCameraDayNight const& t)
                             {
                                 return t.dwDelaySeconds <= 3600 && t.dwDayMinute == 0 && t.dwNightMinute == 0 &&
                                        t.dwInfrared == 0 && t.dwInfraredLevel == 0; // ONVIF has none of the four
                             });
}

int ReadExposure(CClient& tClient, tagChannel const& tChannel, tagCameraExposure& t)
{
    return ReadRecordFields(tClient, tChannel, Fields(g_atExposure), t);
}

int WriteExposure(CClient& tClient, tagChannel const& tChannel, tagCameraExposure const* ptWritten)
{
    tagCameraExposure tKept{};
    tKept.dwSize = sizeof tKept;
    return WriteRecordFields(tClient, tChannel, Fields(g_atExposure), ptWritten, tKept,
                             [](tagCameraExposure const&, tagCameraExposure const& t)
                             {
                                 return t.dwMinExposureUs <= t.dwMaxExposureUs && t.dwMinGain <= t.dwMaxGain &&
                                        t.dwFlicker == 0; // ONVIF has none
                             });
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
    const int nResult = ReadRecordFields(tClient, tChannel, Fields(g_atFocus), t);
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
    const int nResult = WriteRecordFields(tClient, tChannel, Fields(g_atFocus), ptWritten, tKept, fnCheck);
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
    ReadFields(Fields(g_atFocus), tSettings, tBefore);
    tagCameraFocus tAfter = tBefore;
    tAfter.dwMode = bOn ? eModeAuto : eModeManual;
    return WriteFields(tClient, tChannel, Fields(g_atFocus), tSettings, tBefore, tAfter);
}

// --- defaults --------------------------------------------------------------------------------------------------------

namespace
{
template <class Record>
int Default(CClient& tClient, tagChannel const& tChannel, std::span<tagField<Record> const> atFields)
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
        const bool bLevel = tField.eAs == eUnit::Percent;
        if ((bLevel || tField.eAs == eUnit::Names) && FieldText(tField, tSettings, bLevel ? 50 : 0))
        {
            tAfter.*tField.pWord = bLevel ? 50 : 0;
        }
    }
    return WriteFields(tClient, tChannel, atFields, tSettings, tBefore, tAfter);
}
} // namespace

int DefaultCamera(CClient& tClient, tagChannel const& tChannel, bool bMedia2, eChromaDefault eWhat)
{
    int nResult = Default(tClient, tChannel, Fields(g_atPicture));
    uint32_t dwTurn = eTurnNone;
    nResult = nResult ? nResult : ReadTurn(tClient, tChannel, bMedia2, dwTurn);
    nResult = nResult || dwTurn == eTurnNone ? nResult : WriteTurn(tClient, tChannel, bMedia2, eTurnNone);
    if (nResult != eResultOk || eWhat != eDefaultAll)
    {
        return nResult;
    }
    nResult = Default(tClient, tChannel, Fields(g_atDayNight));
    nResult = nResult ? nResult : Default(tClient, tChannel, Fields(g_atExposure));
    return nResult ? nResult : Default(tClient, tChannel, Fields(g_atFocus));
}
} // namespace onvifclient
