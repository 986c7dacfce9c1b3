// Tours of presets. A tour without a stop is one to ONVIF and none to the device, so what each is called and holds is
// kept here, and the device is told what it is to run.

#include "tools/onvif_device/PtzParts.h"

#include <algorithm>
#include <cmath>

namespace onvif_device
{
namespace
{
using device::CPTZ;

constexpr uint32_t g_dwTours = 16;

using Tours = std::map<uint32_t, tagTour>;

uint32_t TourAt(std::string const& strToken, Tours const& tTours)
{
    uint32_t dwTour = 0;
    if (!ParseToken(strToken, "Tour", {&dwTour}) || !tTours.contains(dwTour))
    {
        FailValue("ter:NoToken", "there is no tour " + strToken);
    }
    return dwTour;
}

void WriteTour(CCall& tCall, uint32_t dwChannel, uint32_t dwTour, tagTour const& tTour)
{
    CXml& tXml = tCall.Xml();
    const auto atRunning = tCall.Part<CPTZ>().Tours(dwChannel);
    const bool bRuns =
        std::ranges::any_of(atRunning, [&](tagPTZTour const& t) { return t.dwTour == dwTour && t.bRunning != 0; });
    tXml.In(
        "tptz:PresetTour", {{"token", Token("Tour", {dwTour})}},
        [&]
        {
            tXml.Put("tt:Name", tTour.strName);
            tXml.In("tt:Status", [&] { tXml.Put("tt:State", bRuns ? "Touring" : "Idle"); });
            tXml.Put("tt:AutoStart", false);
            tXml.In("tt:StartingCondition",
                    [&]
                    {
                        if (tTour.dwRounds != 0)
                        {
                            tXml.Put("tt:RecurringTime", tTour.dwRounds);
                        }
                    });
            for (tagTourStop const& t : tTour.atStops)
            {
                tXml.In(
                    "tt:TourSpot",
                    [&]
                    {
                        tXml.In("tt:PresetDetail", [&] { tXml.Put("tt:PresetToken", Token("Preset", {t.dwPreset})); });
                        if (t.dwSpeed != 0)
                        {
                            const std::string strSpeed = CXml::Number(t.dwSpeed / 10000.0);
                            tXml.In("tt:Speed", [&] { tXml.Empty("tt:PanTilt", {{"x", strSpeed}, {"y", strSpeed}}); });
                        }
                        tXml.Put("tt:StayTime", Duration(int64_t{t.dwSeconds} * 1000000));
                    });
            }
        });
}

tagTourStop ReadStop(pugi::xml_node tSpot)
{
    tagTourStop t;
    int64_t llStayUs = 0;
    double fSpeed = 0;
    const std::string strPreset = TextOf(Child(tSpot, {"PresetDetail", "PresetToken"}));
    if (!ParseToken(strPreset, "Preset", {&t.dwPreset}))
    {
        FailValue("ter:InvalidPresetTour", "a stop must be a preset");
    }
    if (Child(tSpot, "StayTime") && (!ParseDuration(ChildText(tSpot, "StayTime"), llStayUs) || llStayUs < 0))
    {
        FailValue("ter:InvalidPresetTour", "StayTime is none");
    }
    if (const pugi::xml_node tSpeed = Child(tSpot, {"Speed", "PanTilt"}))
    {
        ParseNumber(tSpeed.attribute("x").value(), fSpeed);
    }
    t.dwSeconds = static_cast<uint32_t>(std::min<int64_t>((llStayUs + 500000) / 1000000, 3600));
    t.dwSpeed = static_cast<uint32_t>(std::lround(std::clamp(std::abs(fSpeed), 0.0, 1.0) * 10000));
    return t;
}

void Command(CCall& tCall, uint32_t dwChannel, ePTZControlCmdCode eCommand, uint32_t dwTour, tagTourStop const& t = {})
{
    CommandHead(tCall, dwChannel, eCommand,
                {static_cast<int32_t>(dwTour), static_cast<int32_t>(t.dwPreset), static_cast<int32_t>(t.dwSeconds),
                 static_cast<int32_t>(t.dwSpeed)},
                "ter:NoToken");
}

// The device forgets what it knows of a tour, if it does.
void Forget(CCall& tCall, uint32_t dwChannel, uint32_t dwTour)
{
    const auto atKnown = tCall.Part<CPTZ>().Tours(dwChannel);
    if (std::ranges::find(atKnown, dwTour, &tagPTZTour::dwTour) != atKnown.end())
    {
        Command(tCall, dwChannel, ePTZTourRemove, dwTour);
    }
}
} // namespace

std::string GenericSpace(std::string_view strName)
{
    return "http://www.onvif.org/ver10/tptz/" + std::string(strName);
}

void GetPresetTours(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    for (auto const& [dwTour, t] : tCall.Face().Tours(dwChannel))
    {
        WriteTour(tCall, dwChannel, dwTour, t);
    }
}

void GetPresetTour(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    const Tours tTours = tCall.Face().Tours(dwChannel);
    const uint32_t dwTour = TourAt(tCall.Text({"PresetTourToken"}), tTours);
    WriteTour(tCall, dwChannel, dwTour, tTours.at(dwTour));
}

void CreatePresetTour(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    Tours tTours = tCall.Face().Tours(dwChannel);
    uint32_t dwTour = 1;
    while (tTours.contains(dwTour))
    {
        ++dwTour;
    }
    if (dwTour > g_dwTours)
    {
        FailAction("ter:TooManyPresetTours", "there are as many tours as there can be");
    }
    tTours[dwTour] = {};
    tCall.Face().SetTours(dwChannel, std::move(tTours));
    tCall.Xml().Put("tptz:PresetTourToken", Token("Tour", {dwTour}));
}

void ModifyPresetTour(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    Tours tTours = tCall.Face().Tours(dwChannel);
    const uint32_t dwTour = TourAt(tCall.At({"PresetTour"}).attribute("token").value(), tTours);
    const auto atPresets = tCall.Part<CPTZ>().Presets(dwChannel);
    tagTour tTour;
    tTour.strName = tCall.Text({"PresetTour", "Name"});
    tTour.dwRounds =
        static_cast<uint32_t>(tCall.Integer({"PresetTour", "StartingCondition", "RecurringTime"}, 0, 1000000));
    for (const pugi::xml_node tSpot : tCall.At({"PresetTour"}).children())
    {
        if (LocalName(tSpot) != "TourSpot")
        {
            continue;
        }
        tTour.atStops.push_back(ReadStop(tSpot));
        if (std::ranges::find(atPresets, tTour.atStops.back().dwPreset, &tagPTZPreset::dwPreset) == atPresets.end())
        {
            FailValue("ter:NoToken", "a stop's preset isn't there");
        }
    }
    Forget(tCall, dwChannel, dwTour);
    for (tagTourStop const& t : tTour.atStops)
    {
        Command(tCall, dwChannel, ePTZTourAddPreset, dwTour, t);
    }
    tTours[dwTour] = std::move(tTour);
    tCall.Face().SetTours(dwChannel, std::move(tTours));
}

void OperatePresetTour(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    const Tours tTours = tCall.Face().Tours(dwChannel);
    const uint32_t dwTour = TourAt(tCall.Text({"PresetTourToken"}), tTours);
    const uint32_t dwOperation = tCall.Word({"Operation"}, {"Start", "Stop", "Pause"});
    if (tTours.at(dwTour).atStops.empty() || dwOperation == 2)
    {
        FailAction("ter:ActivationFailed", "the tour has no stops, or can't be paused");
    }
    CommandHead(tCall, dwChannel, dwOperation == 0 ? ePTZTourRun : ePTZTourStop,
                {static_cast<int32_t>(dwTour), static_cast<int32_t>(tTours.at(dwTour).dwRounds), 0, 0}, "ter:NoToken");
}

void RemovePresetTour(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    Tours tTours = tCall.Face().Tours(dwChannel);
    const uint32_t dwTour = TourAt(tCall.Text({"PresetTourToken"}), tTours);
    Forget(tCall, dwChannel, dwTour);
    tTours.erase(dwTour);
    tCall.Face().SetTours(dwChannel, std::move(tTours));
}
} // namespace onvif_device
