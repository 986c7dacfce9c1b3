#include "plugins/onvif/Topics.h"

#include "onvif/Archive.h"
#include "plugins/common/Text.h"

#include "protocol/PluginInterface.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace onvifclient
{
namespace
{
using onvif::eChange;
using onvif::IsYes;

/// What an event's second word counts.
enum class ePlace
{
    None, ///< 0
    Channel,
    Input,
    Output,
    Disk,
    Window,
    Config, ///< of eEventConfigChanged
};

/// One topic of the standard's, or a part of one that makers put behind names of their own.
struct tagTopic
{
    std::string_view strTopic; ///< without prefixes; "*/" before it: the end of one; "/*" behind it: the begin
    eDeviceEvent eEvent;
    ePlace eWhere;
    std::string_view strState; ///< the item that is the state; empty: the first that can be one
};

constexpr tagTopic g_atTopics[] = {
    {"VideoSource/MotionAlarm", eEventMotion, ePlace::Channel, "State"},
    {"RuleEngine/CellMotionDetector/Motion", eEventMotion, ePlace::Channel, "IsMotion"},
    {"RuleEngine/MotionRegionDetector/Motion", eEventMotion, ePlace::Channel, "State"},
    {"*/MotionDetector/Motion", eEventMotion, ePlace::Channel, ""},
    {"*/MotionAlarm", eEventMotion, ePlace::Channel, ""},
    {"*/VMD", eEventMotion, ePlace::Channel, ""},
    {"Device/Trigger/DigitalInput", eEventAlarmInput, ePlace::Input, "LogicalState"},
    {"Device/IO/Port", eEventAlarmInput, ePlace::Input, "state"},
    {"Device/Trigger/Relay", eEventAlarmOutput, ePlace::Output, "LogicalState"},
    {"VideoSource/SignalLoss", eEventVideoLoss, ePlace::Channel, "State"},
    {"*/VideoLoss", eEventVideoLoss, ePlace::Channel, ""},
    {"VideoSource/GlobalSceneChange/*", eEventTamper, ePlace::Channel, "State"},
    {"VideoSource/ImageTooDark/*", eEventTamper, ePlace::Channel, "State"},
    {"VideoSource/ImageTooBright/*", eEventTamper, ePlace::Channel, "State"},
    {"VideoSource/ImageTooBlurry/*", eEventTamper, ePlace::Channel, "State"},
    {"*/TamperDetector/Tamper", eEventTamper, ePlace::Channel, ""},
    {"*/Tampering", eEventTamper, ePlace::Channel, ""},
    {"Device/HardwareFailure/StorageFailure", eEventDiskError, ePlace::Disk, "Failed"},
    {"*/DiskError", eEventDiskError, ePlace::Disk, ""},
    {"*/StorageFull", eEventDiskFull, ePlace::Disk, ""},
    {"*/DiskFull", eEventDiskFull, ePlace::Disk, ""},
    {"Storage/Full", eEventDiskFull, ePlace::Disk, ""},
    {"RecordingHistory/Recording/State", eEventRecording, ePlace::Channel, "IsRecording"},
    {"RecordingConfig/JobState", eEventRecording, ePlace::Channel, "State"},
    {"*/IllegalAccess", eEventUserLogin, ePlace::None, ""},
    {"*/LoginFailed", eEventUserLogin, ePlace::None, ""},
    {"*/Login", eEventUserLogin, ePlace::None, ""},
    {"Monitoring/OperatingTime/LastReboot", eEventDeviceRestarted, ePlace::None, "Status"},
    {"Monitoring/OperatingTime/LastClockSynchronization", eEventClockChanged, ePlace::None, "Status"},
    {"Media/ConfigurationChanged", eEventConfigChanged, ePlace::Config, ""},
    {"Media/ProfileChanged", eEventConfigChanged, ePlace::Config, ""},
    {"Receiver/ChangeState", eEventWindow, ePlace::Window, "NewState"},
    {"Receiver/ConnectionFailed", eEventWindow, ePlace::Window, ""},
};

/// A kind of configuration as "Media/ConfigurationChanged" names it.
struct tagConfigKind
{
    std::string_view strKind;
    eConfigType eType;
};
constexpr tagConfigKind g_atConfigKinds[] = {
    {"VideoEncoder", eConfigVideoEncoder},
    {"AudioEncoder", eConfigAudioEncoder},
    {"Profile", eConfigVideoEncoder},
};

bool Matches(std::string_view strPlain, std::string_view strTopic)
{
    return strTopic.starts_with("*/") ? strPlain.ends_with(strTopic.substr(1))
           : strTopic.ends_with("/*") ? strPlain.starts_with(strTopic.substr(0, strTopic.size() - 1))
                                      : strPlain == strTopic;
}

tagTopic const* FindTopic(std::string_view strPlain)
{
    auto const* const pt =
        std::ranges::find_if(g_atTopics, [&](tagTopic const& t) { return Matches(strPlain, t.strTopic); });
    return pt == std::end(g_atTopics) ? nullptr : pt;
}

bool IsState(std::string_view strValue)
{
    constexpr std::string_view astrNo[] = {"false", "0", "inactive", "off", "False", "Inactive", "Off", "FALSE"};
    return IsYes(strValue) || std::ranges::find(astrNo, strValue) != std::end(astrNo);
}

// The item that says whether it is so.
std::string const* StateOf(tagNotification const& tEvent, std::string_view strName)
{
    std::string const* pstr = strName.empty() ? nullptr : tEvent.Data(strName);
    if (!pstr)
    {
        const auto it = std::ranges::find_if(tEvent.atData, [](auto const& t) { return IsState(t.second); });
        pstr = it == tEvent.atData.end() ? nullptr : &it->second;
    }
    return pstr;
}

// The number that a token ends in.
std::optional<uint32_t> EndNumber(std::string_view strToken)
{
    std::size_t n = strToken.size();
    while (n > 0 && strToken.size() - n < 4 && std::isdigit(static_cast<unsigned char>(strToken[n - 1])))
    {
        --n;
    }
    uint32_t dwNumber = 0;
    const bool bAny =
        std::from_chars(strToken.data() + n, strToken.data() + strToken.size(), dwNumber).ec == std::errc{};
    return bAny ? std::optional(dwNumber) : std::nullopt;
}

// The number of what one of the event's items names.
std::optional<uint32_t> NumberOf(tagNotification const& tEvent, tagPlaces::Numbers const& tNumbers)
{
    for (auto const* pat : {&tEvent.atSource, &tEvent.atData})
    {
        for (auto const& [strName, strValue] : *pat)
        {
            const auto it = tNumbers.find(strValue);
            if (it != tNumbers.end())
            {
                return it->second;
            }
        }
    }
    return std::nullopt;
}

// An event without a token that is known: of the only one there is, or by the number in its token.
uint32_t Guess(tagNotification const& tEvent, std::size_t nPlaces)
{
    const auto dwNumber = tEvent.atSource.empty() ? std::nullopt : EndNumber(tEvent.atSource.front().second);
    return dwNumber && *dwNumber < nPlaces ? *dwNumber : 0;
}

uint32_t PlaceOf(tagNotification const& tEvent, ePlace eWhere, tagPlaces const& tPlaces)
{
    switch (eWhere)
    {
    case ePlace::Channel:
        return NumberOf(tEvent, tPlaces.tChannels).value_or(Guess(tEvent, tPlaces.dwChannels));
    case ePlace::Input:
        return NumberOf(tEvent, tPlaces.tInputs).value_or(Guess(tEvent, tPlaces.tInputs.size()));
    case ePlace::Output:
        return NumberOf(tEvent, tPlaces.tOutputs).value_or(Guess(tEvent, tPlaces.tOutputs.size()));
    case ePlace::Window:
        return NumberOf(tEvent, tPlaces.tWindows).value_or(static_cast<uint32_t>(TESSARO_ALL));
    case ePlace::Disk:
        return tEvent.atSource.empty() ? static_cast<uint32_t>(TESSARO_ALL)
                                       : EndNumber(tEvent.atSource.front().second).value_or(0);
    default:
        return 0;
    }
}

uint32_t WindowState(std::string_view strState)
{
    return strState == "Connected"    ? uint32_t{eWindowShowing}
           : strState == "Connecting" ? uint32_t{eWindowConnecting}
                                      : uint32_t{eWindowNoSignal};
}

// Whether a user came, went or was refused: no topic of the standard's tells, makers' do.
void TakeLogin(tagNotification const& tEvent, std::string_view strPlain, tagTold& t)
{
    std::string const* const pstrLevel = tEvent.Source("Level");
    std::string const* const pstrState = StateOf(tEvent, "State");
    t.dwPlace = pstrLevel ? EndNumber(*pstrLevel).value_or(0) : 0;
    t.dwState = !strPlain.ends_with("/Login") || (pstrState && *pstrState == "2") ? 2
                : !pstrState || IsYes(*pstrState)                                 ? 1
                                                                                  : 0;
}

// The type of a configuration that has changed, and its index.
void TakeConfig(tagNotification const& tEvent, tagPlaces const& tPlaces, tagTold& t)
{
    std::string const* const pstrInSource = tEvent.Source("Type");
    std::string const* const pstrKind = pstrInSource ? pstrInSource : tEvent.Data("Type");
    auto const* const pt =
        std::ranges::find_if(g_atConfigKinds, [&](tagConfigKind const& tKind)
                             { return pstrKind ? *pstrKind == tKind.strKind : tKind.strKind == "Profile"; });
    if (pt == std::end(g_atConfigKinds))
    {
        t.dwEvent = eEventOther;
        t.dwState = 2;
        return;
    }
    t.dwPlace = static_cast<uint32_t>(pt->eType);
    t.dwState = NumberOf(tEvent, tPlaces.tChannels).value_or(0);
}

} // namespace

tagTold Translate(tagNotification const& tEvent, tagPlaces const& tPlaces)
{
    tagTold t;
    t.dwTime = static_cast<uint32_t>(tEvent.llTimeUs / 1000000);
    const std::string strPlain = tEvent.PlainTopic();
    tagTopic const* const ptTopic = FindTopic(strPlain);
    std::string const* const pstrState = StateOf(tEvent, ptTopic ? ptTopic->strState : std::string_view{});
    const bool bGone = tEvent.eWhat == eChange::Deleted;
    if (!ptTopic)
    {
        t.dwPlace = NumberOf(tEvent, tPlaces.tChannels).value_or(static_cast<uint32_t>(TESSARO_ALL));
        t.dwState = bGone ? 0 : !pstrState ? 2 : IsYes(*pstrState) ? 1 : 0;
        return t;
    }
    t.dwEvent = static_cast<uint32_t>(ptTopic->eEvent);
    t.dwPlace = PlaceOf(tEvent, ptTopic->eWhere, tPlaces);
    switch (ptTopic->eEvent)
    {
    case eEventUserLogin:
        TakeLogin(tEvent, strPlain, t);
        break;
    case eEventDeviceRestarted:
    case eEventClockChanged:
        // Told by its time, which then stands for the event's.
        t.dwTime = pstrState ? static_cast<uint32_t>(onvif::ParseTime(*pstrState).value_or(0) / 1000000) : 0;
        break;
    case eEventConfigChanged:
        TakeConfig(tEvent, tPlaces, t);
        break;
    case eEventWindow:
    {
        std::string const* const pstrWindow = tEvent.Data("NewState");
        t.dwState = pstrWindow ? WindowState(*pstrWindow) : uint32_t{eWindowRefused};
        break;
    }
    case eEventRecording:
        t.bState = true;
        t.dwState = !bGone && pstrState && IsYes(*pstrState) ? uint32_t{eHistoryContinuous} : 0;
        break;
    default:
        t.bState = true;
        t.dwState = !bGone && (!pstrState || IsYes(*pstrState)) ? 1 : 0;
        break;
    }
    return t;
}

tagEventDetail DetailOf(tagNotification const& tEvent, tagTold const& tTold)
{
    tagEventDetail t{};
    t.dwSize = sizeof t;
    t.dwState = tTold.dwState;
    t.llTimeUs = tEvent.llTimeUs;
    plugin::CopyText(t.szTopic, tEvent.strTopic);
    plugin::CopyText(t.szSource, tagNotification::Text(tEvent.atSource));
    plugin::CopyText(t.szData, tagNotification::Text(tEvent.atData));
    return t;
}

char const* TopicsOf(uint32_t dwHistoryType)
{
    return dwHistoryType == eHistoryMotion  ? "tns1:VideoSource/MotionAlarm|tns1:RuleEngine/CellMotionDetector/Motion|"
                                              "tns1:RuleEngine/MotionRegionDetector/Motion"
           : dwHistoryType == eHistoryAlarm ? "tns1:Device/Trigger/DigitalInput"
                                            : nullptr;
}
} // namespace onvifclient
