// The PTZ service. Its generic spaces are the device's ten-thousandths, divided by as much.

#include "tools/onvif_device/MediaParts.h"
#include "tools/onvif_device/PtzParts.h"

#include <cmath>

namespace onvif_device
{
using device::CPTZ;

uint32_t HeadAt(CCall& tCall)
{
    const uint32_t dwChannel = StreamAt(tCall, {"ProfileToken"}, "Profile", "ter:NoProfile").dwChannel;
    if (!Moves(tCall, dwChannel))
    {
        FailValue("ter:NoPTZProfile", "the profile has no PTZ configuration");
    }
    return dwChannel;
}

void CommandHead(CCall& tCall, uint32_t dwChannel, ePTZControlCmdCode eCommand, std::array<int32_t, 4> const& anPara,
                 std::string const& strDetail)
{
    const auto fnWord = [&](std::size_t i) { return static_cast<unsigned long>(static_cast<long>(anPara[i])); };
    Require(tCall.Part<CPTZ>().Command(tCall.Caller(), dwChannel, eCommand, fnWord(0), fnWord(1), fnWord(2), fnWord(3)),
            strDetail);
}

namespace
{
using device::Text;

constexpr double g_fWhole = 10000;
constexpr uint32_t g_dwLongestMoveMs = 60000;

// A coordinate as the device has it. Throws when it is out of its range, or of a space that the device lacks.
int32_t Coordinate(CCall& tCall, CCall::Path astrPath, char const* szName, double fLeast, double fMost, double fElse)
{
    const pugi::xml_node tNode = tCall.At(astrPath);
    if (!tNode)
    {
        return static_cast<int32_t>(std::lround(fElse));
    }
    double fValue = 0;
    if (!ParseNumber(tNode.attribute(szName).value(), fValue) || fValue < fLeast || fValue > fMost)
    {
        FailValue("ter:InvalidPosition", std::string(szName) + " is out of its range");
    }
    const std::string_view strSpace = tNode.attribute("space").value();
    if (!strSpace.empty() &&
        (!strSpace.starts_with(GenericSpace({})) || strSpace.find("Generic") == std::string_view::npos))
    {
        FailValue("ter:SpaceNotSupported", "there are the generic spaces alone");
    }
    return static_cast<int32_t>(std::lround(fValue * g_fWhole));
}

// One speed for all axes: the device has no more.
int32_t Speed(CCall& tCall)
{
    const int32_t nPan = std::abs(Coordinate(tCall, {"Speed", "PanTilt"}, "x", -1, 1, 0));
    const int32_t nTilt = std::abs(Coordinate(tCall, {"Speed", "PanTilt"}, "y", -1, 1, 0));
    const int32_t nZoom = std::abs(Coordinate(tCall, {"Speed", "Zoom"}, "x", -1, 1, 0));
    return std::max({nPan, nTilt, nZoom});
}

// --- movements -------------------------------------------------------------------------------------------------------

void ContinuousMove(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    const int64_t llForUs = tCall.DurationUs({"Timeout"}, 5000000);
    if (llForUs <= 0)
    {
        FailValue("ter:TimeoutNotSupported", "a movement must last some time");
    }
    const bool bOn = tCall.Quirks().bIgnoreTimeout;
    const auto nForMs = static_cast<int32_t>(bOn ? g_dwLongestMoveMs : std::min<int64_t>(llForUs / 1000, 60000));
    const std::array<int32_t, 4> anPara = {Coordinate(tCall, {"Velocity", "PanTilt"}, "x", -1, 1, 0),
                                           Coordinate(tCall, {"Velocity", "PanTilt"}, "y", -1, 1, 0),
                                           Coordinate(tCall, {"Velocity", "Zoom"}, "x", -1, 1, 0), std::max(nForMs, 1)};
    if (tCall.Has({"Velocity", "PanTilt"}))
    {
        CommandHead(tCall, dwChannel, ePTZMove, anPara);
    }
    else
    {
        CommandHead(tCall, dwChannel, ePTZZoom, {anPara[2], 0, 0, anPara[3]});
    }
}

void AbsoluteMove(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    const tagPTZPosition tHere = tCall.Part<CPTZ>().Position(dwChannel);
    CommandHead(tCall, dwChannel, ePTZAbsolute,
                {Coordinate(tCall, {"Position", "PanTilt"}, "x", -1, 1, tHere.nPan),
                 Coordinate(tCall, {"Position", "PanTilt"}, "y", -1, 1, tHere.nTilt),
                 Coordinate(tCall, {"Position", "Zoom"}, "x", 0, 1, tHere.nZoom), Speed(tCall)});
}

void RelativeMove(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    CommandHead(tCall, HeadAt(tCall), ePTZRelative,
                {Coordinate(tCall, {"Translation", "PanTilt"}, "x", -2, 2, 0),
                 Coordinate(tCall, {"Translation", "PanTilt"}, "y", -2, 2, 0),
                 Coordinate(tCall, {"Translation", "Zoom"}, "x", -1, 1, 0), Speed(tCall)});
}

void Stop(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const bool bAll = !tCall.Has({"PanTilt"}) && !tCall.Has({"Zoom"});
    int32_t nAxes = 0;
    nAxes |= bAll || tCall.Flag({"PanTilt"}) ? ePTZAxisPan | ePTZAxisTilt : 0;
    nAxes |= bAll || tCall.Flag({"Zoom"}) ? ePTZAxisZoom : 0;
    const uint32_t dwChannel = HeadAt(tCall);
    if (nAxes != 0)
    {
        CommandHead(tCall, dwChannel, ePTZStop, {nAxes, 0, 0, 0});
    }
}

void GetStatus(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagPTZPosition t = tCall.Part<CPTZ>().Position(HeadAt(tCall));
    CXml& tXml = tCall.Xml();
    tXml.In("tptz:PTZStatus",
            [&]
            {
                tXml.In("tt:Position",
                        [&]
                        {
                            tXml.Empty("tt:PanTilt", {{"x", CXml::Number(t.nPan / g_fWhole)},
                                                      {"y", CXml::Number(t.nTilt / g_fWhole)},
                                                      {"space", GenericSpace("PanTiltSpaces/PositionGenericSpace")}});
                            tXml.Empty("tt:Zoom", {{"x", CXml::Number(t.nZoom / g_fWhole)},
                                                   {"space", GenericSpace("ZoomSpaces/PositionGenericSpace")}});
                        });
                if (!tCall.Quirks().bSparse)
                {
                    char const* const szMove = t.bMoving ? "MOVING" : "IDLE";
                    tXml.In("tt:MoveStatus", [&] { tXml.Put("tt:PanTilt", szMove).Put("tt:Zoom", szMove); });
                }
                tXml.Put("tt:UtcTime", DateTime(tCall.Device().NowUs()));
            });
}

// --- presets, home, auxiliaries --------------------------------------------------------------------------------------

void WritePosition(CXml& tXml, int32_t nPan, int32_t nTilt, int32_t nZoom)
{
    tXml.In("tt:PTZPosition",
            [&]
            {
                tXml.Empty("tt:PanTilt", {{"x", CXml::Number(nPan / g_fWhole)}, {"y", CXml::Number(nTilt / g_fWhole)}});
                tXml.Empty("tt:Zoom", {{"x", CXml::Number(nZoom / g_fWhole)}});
            });
}

void GetPresets(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (tagPTZPreset const& t : tCall.Part<CPTZ>().Presets(HeadAt(tCall)))
    {
        tCall.Xml().In("tptz:Preset", {{"token", Token("Preset", {t.dwPreset})}},
                       [&]
                       {
                           tCall.Xml().Put("tt:Name", Text(t.szName));
                           WritePosition(tCall.Xml(), t.nPan, t.nTilt, t.nZoom);
                       });
    }
}

uint32_t PresetAt(CCall& tCall, CCall::Path astrPath)
{
    return tCall.Index(astrPath, "Preset", 256, "ter:NoToken");
}

void SetPreset(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    const std::string strName = tCall.Text({"PresetName"});
    const auto atPresets = tCall.Part<CPTZ>().Presets(dwChannel);
    uint32_t dwPreset = 1;
    if (tCall.Has({"PresetToken"}))
    {
        dwPreset = PresetAt(tCall, {"PresetToken"});
        if (std::ranges::find(atPresets, dwPreset, &tagPTZPreset::dwPreset) == atPresets.end())
        {
            FailValue("ter:NoToken", "there is no such preset");
        }
    }
    else
    {
        while (std::ranges::find(atPresets, dwPreset, &tagPTZPreset::dwPreset) != atPresets.end())
        {
            ++dwPreset;
        }
    }
    Require(tCall.Part<CPTZ>().Command(tCall.Caller(), dwChannel, ePTZPresetSet, dwPreset,
                                       reinterpret_cast<unsigned long>(strName.c_str()), 0, 0),
            "ter:NoToken");
    tCall.Xml().Put("tptz:PresetToken", Token("Preset", {dwPreset}));
}

void GotoPreset(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    CommandHead(tCall, HeadAt(tCall), ePTZPresetCall,
                {static_cast<int32_t>(PresetAt(tCall, {"PresetToken"})), Speed(tCall), 0, 0}, "ter:NoToken");
}

void RemovePreset(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    CommandHead(tCall, HeadAt(tCall), ePTZPresetRemove,
                {static_cast<int32_t>(PresetAt(tCall, {"PresetToken"})), 0, 0, 0}, "ter:NoToken");
}

void GotoHomePosition(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    CommandHead(tCall, HeadAt(tCall), ePTZHomeCall, {Speed(tCall), 0, 0, 0});
}

void SetHomePosition(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    CommandHead(tCall, HeadAt(tCall), ePTZHomeSet, {});
}

// tt:Wiper|On
void SendAuxiliaryCommand(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwChannel = HeadAt(tCall);
    const std::string strData = tCall.Text({"AuxiliaryData"});
    for (tagAuxiliaryName const& t : g_atAuxiliaries)
    {
        const std::string strBegin = std::string("tt:") + t.szName + '|';
        if (strData == strBegin + "On" || strData == strBegin + "Off")
        {
            CommandHead(tCall, dwChannel, ePTZAuxiliary, {t.eKind, strData.ends_with("On") ? 1 : 0, 0, 0});
            tCall.Xml().Put("tptz:AuxiliaryResponse", strData);
            return;
        }
    }
    FailValue("ter:InvalidAuxiliaryData", "there is no such command");
}

#define ONVIF_SPEED "Speed{PanTilt[x y]? Zoom[x]?}?"
constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Ptz>},
    {"ContinuousMove", eUserOperator, "ProfileToken Velocity{PanTilt[x y]? Zoom[x]?} Timeout?", ContinuousMove},
    {"AbsoluteMove", eUserOperator, "ProfileToken Position{PanTilt[x y]? Zoom[x]?} " ONVIF_SPEED, AbsoluteMove},
    {"RelativeMove", eUserOperator, "ProfileToken Translation{PanTilt[x y]? Zoom[x]?} " ONVIF_SPEED, RelativeMove},
    {"Stop", eUserOperator, "ProfileToken PanTilt? Zoom?", Stop},
    {"GetStatus", eUserViewer, "ProfileToken", GetStatus},
    {"GetPresets", eUserViewer, "ProfileToken", GetPresets},
    {"SetPreset", eUserOperator, "ProfileToken PresetName? PresetToken?", SetPreset},
    {"GotoPreset", eUserOperator, "ProfileToken PresetToken " ONVIF_SPEED, GotoPreset},
    {"RemovePreset", eUserOperator, "ProfileToken PresetToken", RemovePreset},
    {"GotoHomePosition", eUserOperator, "ProfileToken " ONVIF_SPEED, GotoHomePosition},
    {"SetHomePosition", eUserOperator, "ProfileToken", SetHomePosition},
    {"GetPresetTours", eUserViewer, "ProfileToken", GetPresetTours},
    {"GetPresetTour", eUserViewer, "ProfileToken PresetTourToken", GetPresetTour},
    {"CreatePresetTour", eUserOperator, "ProfileToken", CreatePresetTour},
    {"ModifyPresetTour", eUserOperator, "ProfileToken " ONVIF_TOUR, ModifyPresetTour},
    {"OperatePresetTour", eUserOperator, "ProfileToken PresetTourToken Operation", OperatePresetTour},
    {"RemovePresetTour", eUserOperator, "ProfileToken PresetTourToken", RemovePresetTour},
    {"SendAuxiliaryCommand", eUserOperator, "ProfileToken AuxiliaryData", SendAuxiliaryCommand},
};
} // namespace

std::span<tagAction const> PtzActions()
{
    return g_atActions;
}
} // namespace onvif_device
