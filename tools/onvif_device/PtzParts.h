#pragma once

#include "tools/onvif_device/Call.h"

#include <array>

namespace onvif_device
{
/// What can be switched beside the camera, and what it is called: tt:Wiper|On.
struct tagAuxiliaryName
{
    ePTZAuxiliaryKind eKind;
    char const* szName;
};
inline constexpr tagAuxiliaryName g_atAuxiliaries[] = {{ePTZWiper, "Wiper"},
                                                       {ePTZWasher, "Washer"},
                                                       {ePTZLight, "WhiteLight"},
                                                       {ePTZInfrared, "IRLamp"},
                                                       {ePTZHeater, "Heater"}};

/// @name Need the device's lock, and throw CFault
/// @{

/// The channel of the request's ProfileToken, which must move.
uint32_t HeadAt(CCall& tCall);
/// One of the device's commands. strDetail: the fault when something isn't there.
void CommandHead(CCall& tCall, uint32_t dwChannel, ePTZControlCmdCode eCommand, std::array<int32_t, 4> const& anPara,
                 std::string const& strDetail = "ter:NoEntity");

/// One of the generic spaces: "PanTiltSpaces/PositionGenericSpace".
std::string GenericSpace(std::string_view strName);

void GetPresetTours(CCall& tCall);
void GetPresetTour(CCall& tCall);
void CreatePresetTour(CCall& tCall);
void ModifyPresetTour(CCall& tCall);
void OperatePresetTour(CCall& tCall);
void RemovePresetTour(CCall& tCall);
/// @}

/// What ModifyPresetTour takes.
#define ONVIF_TOUR                                                                                                     \
    "PresetTour[token]{Name? Status{...} AutoStart StartingCondition{RecurringTime? RecurringDuration? Direction? "    \
    "...} TourSpot{PresetDetail{(PresetToken|Home|PTZPosition{...}|TypeExtension{...})} "                              \
    "Speed{PanTilt[x y]? Zoom[x]?}? StayTime? ...}* ...}"
} // namespace onvif_device
