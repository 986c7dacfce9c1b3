#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"

#include "protocol/interface/PTZ.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace device
{
/// The heads of the cameras: how they move in time.
class CPTZ : public CPart
{
public:
    explicit CPTZ(CDevice& tDevice);

    int Command(tagCaller const& tCaller, uint32_t dwChannel, ePTZControlCmdCode eCommand, unsigned long dwPara1,
                unsigned long dwPara2, unsigned long dwPara3, unsigned long dwPara4);
    /// Sends a camera to a preset, when there is one.
    void GoTo(uint32_t dwChannel, uint32_t dwPreset);
    /// Moves all of them to where they are by now.
    void Advance();
    int64_t NextDue() const;
    /// Everything stands still: the device has stopped.
    void Halt();
    /// Presets, tours and home positions are gone.
    void Reset();

    /// @name As they are; the channel must exist
    /// @{
    tagPTZPosition Position(uint32_t dwChannel) const;
    tagPTZAbility Ability(uint32_t dwChannel) const;
    std::vector<tagPTZPreset> Presets(uint32_t dwChannel) const;
    std::vector<tagPTZTour> Tours(uint32_t dwChannel) const;
    /// @}

private:
    enum eAxis : unsigned char
    {
        eAxisPan,
        eAxisTilt,
        eAxisZoom,
        eAxisFocus,
        eAxisIris,
        eAxes,
    };
    // Ten-thousandths of the range, and of it per second.
    struct tagAxis
    {
        double fValue = 0;
        double fSpeed = 0;             // 0: stands
        std::optional<double> fTarget; // where it stops
        int64_t llEndUs = 0;           // when a movement without target ends
    };
    using Para = std::array<int32_t, 4>;
    // One stop of a tour over presets.
    struct tagStop
    {
        uint32_t dwPreset;
        uint32_t dwSeconds;
        uint32_t dwSpeed;
    };
    // One command of a recorded tour, and how long after the recording's begin it came.
    struct tagMove
    {
        int64_t llAfterUs;
        ePTZControlCmdCode eCommand;
        Para anPara;
    };
    struct tagTour
    {
        std::vector<tagStop> atStops;
        std::vector<tagMove> atMoves; // the last one ends it: ePTZStop
    };
    struct tagHead
    {
        uint32_t dwChannel = 0;
        std::array<tagAxis, eAxes> atAxes;
        int64_t llNowUs = 0; // when the axes were moved last
        std::map<uint32_t, tagPTZPreset> tPresets;
        tagPTZPreset tHome{};
        std::map<uint32_t, tagTour> tTours;
        uint32_t dwAuxiliary = 0;
        std::map<uint32_t, int64_t> tAuxiliaryEndUs;
        uint32_t dwGoingTo = 0; // the preset that it is on its way to
        // the tour that runs, and the one that is being recorded
        uint32_t dwTour = 0;
        uint32_t dwRounds = 0; // still to go; 0: for ever
        std::size_t nStep = 0;
        int64_t llStepUs = 0;
        uint32_t dwRecording = 0;
        int64_t llRecordUs = 0;
        uint32_t dwLevel = 0; // of the user who moved it last
    };

    tagHead* Find(uint32_t dwChannel);
    tagHead const* Find(uint32_t dwChannel) const { return const_cast<CPTZ*>(this)->Find(dwChannel); }
    int Execute(tagHead& tHead, ePTZControlCmdCode eCommand, Para const& anPara);
    int Turn(tagHead& tHead, std::initializer_list<eAxis> aeAxes, Para const& anPara);
    int Approach(tagHead& tHead, Para const& anTo);
    int CallPreset(tagHead& tHead, uint32_t dwPreset, int32_t nSpeed);
    int SetPreset(tagHead& tHead, uint32_t dwPreset, char const* szName);
    int TourCommand(tagHead& tHead, ePTZControlCmdCode eCommand, Para const& anPara);
    int Auxiliary(tagHead& tHead, Para const& anPara);
    void StepTour(tagHead& tHead);
    void StepAxes(tagHead& tHead);
    tagPTZPreset Here(tagHead const& tHead, uint32_t dwNumber, std::string const& strName) const;
    static bool Turning(tagHead const& tHead);
    void KeepTour(tagHead const& tHead, uint32_t dwTour);
    void Load(tagHead& tHead);

    std::vector<tagHead> m_atHeads; // of the channels that move
};
} // namespace device
