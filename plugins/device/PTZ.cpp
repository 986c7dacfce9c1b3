#include "plugins/device/PTZ.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

#include <algorithm>
#include <cmath>

namespace device
{
namespace
{
constexpr uint32_t g_dwPresets = 255;
constexpr uint32_t g_dwTours = 16;
constexpr std::size_t g_nStops = 64;
constexpr int32_t g_nFull = 10000;

// Ends of the range, and full speed in ten-thousandths per second.
struct tagAxisKind
{
    double fLeast;
    double fMost;
    double fFullSpeed;
};
constexpr tagAxisKind g_atAxisKinds[] = {
    {-10000, 10000, 5556}, {-10000, 10000, 5556}, {0, 10000, 4000}, {0, 10000, 5000}, {0, 10000, 5000}};

bool Within(int32_t n, int32_t nLeast, int32_t nMost)
{
    return n >= nLeast && n <= nMost;
}

std::string Key(uint32_t dwChannel, char const* szWhat, uint32_t dwNumber)
{
    return "ptz/" + std::to_string(dwChannel) + '/' + szWhat + '/' + std::to_string(dwNumber);
}

bool Moves(ePTZControlCmdCode eCommand)
{
    return eCommand <= ePTZRelative || eCommand == ePTZPresetCall || eCommand == ePTZHomeCall ||
           eCommand == ePTZAuxiliary;
}
} // namespace

CPTZ::CPTZ(CDevice& tDevice) : CPart(tDevice)
{
    for (uint32_t i = 0; i < tDevice.Channels(); ++i)
    {
        if (tDevice.Blueprint().atChannels[i].bPTZ)
        {
            m_atHeads.emplace_back().dwChannel = i;
            Load(m_atHeads.back());
        }
    }
}

CPTZ::tagHead* CPTZ::Find(uint32_t dwChannel)
{
    const auto it = std::ranges::find(m_atHeads, dwChannel, &tagHead::dwChannel);
    return it == m_atHeads.end() ? nullptr : &*it;
}

int CPTZ::Command(tagCaller const& tCaller, uint32_t dwChannel, ePTZControlCmdCode eCommand, unsigned long dwPara1,
                  unsigned long dwPara2, unsigned long dwPara3, unsigned long dwPara4)
{
    tagHead* const ptHead = Find(dwChannel);
    if (!ptHead)
    {
        return dwChannel < m_tDevice.Channels() ? int{eResultNotSupported} : int{eResultNoChannel};
    }
    tagHead& tHead = *ptHead;
    if (Moves(eCommand) && (Turning(tHead) || tHead.dwTour != 0) && tCaller.dwLevel < tHead.dwLevel)
    {
        return eResultBusy;
    }
    if (eCommand == ePTZPresetSet)
    {
        return SetPreset(tHead, static_cast<uint32_t>(dwPara1), reinterpret_cast<char const*>(dwPara2));
    }
    const Para anPara = {static_cast<int32_t>(dwPara1), static_cast<int32_t>(dwPara2), static_cast<int32_t>(dwPara3),
                         static_cast<int32_t>(dwPara4)};
    const uint32_t dwTour = tHead.dwTour;
    if (Moves(eCommand) && eCommand != ePTZAuxiliary)
    {
        tHead.dwTour = 0; // whoever steers it himself ends the tour
    }
    const int nResult = Execute(tHead, eCommand, anPara);
    if (nResult != eResultOk)
    {
        tHead.dwTour = dwTour;
        return nResult;
    }
    if (Moves(eCommand))
    {
        tHead.dwLevel = tCaller.dwLevel;
        if (tHead.dwRecording != 0)
        {
            tHead.tTours[tHead.dwRecording].atMoves.push_back(
                {m_tDevice.SteadyNow() - tHead.llRecordUs, eCommand, anPara});
        }
    }
    return eResultOk;
}

int CPTZ::Execute(tagHead& tHead, ePTZControlCmdCode eCommand, Para const& anPara)
{
    switch (eCommand)
    {
    case ePTZStop:
        for (unsigned i = 0; i < eAxes; ++i)
        {
            if (anPara[0] == 0 || (static_cast<uint32_t>(anPara[0]) >> i & 1) != 0)
            {
                tHead.atAxes[i].fSpeed = 0;
            }
        }
        return eResultOk;
    case ePTZMove:
        return Turn(tHead, {eAxisPan, eAxisTilt, eAxisZoom}, anPara);
    case ePTZZoom:
        return Turn(tHead, {eAxisZoom}, anPara);
    case ePTZFocus:
        return Turn(tHead, {eAxisFocus}, anPara);
    case ePTZIris:
        return Turn(tHead, {eAxisIris}, anPara);
    case ePTZAbsolute:
        return Approach(tHead, anPara);
    case ePTZRelative:
    {
        Para anTo = anPara;
        for (unsigned i = 0; i < 3; ++i)
        {
            if (!Within(anPara[i], -2 * g_nFull, 2 * g_nFull))
            {
                return eResultBadArgument;
            }
            const double fTo = std::round(tHead.atAxes[i].fValue) + anPara[i];
            anTo[i] = static_cast<int32_t>(std::clamp(fTo, g_atAxisKinds[i].fLeast, g_atAxisKinds[i].fMost));
        }
        return Approach(tHead, anTo);
    }
    case ePTZFocusOnce:
        tHead.atAxes[eAxisFocus].fSpeed = g_atAxisKinds[eAxisFocus].fFullSpeed;
        tHead.atAxes[eAxisFocus].fTarget = 5000;
        return eResultOk;
    case ePTZPresetCall:
        return CallPreset(tHead, static_cast<uint32_t>(anPara[0]), anPara[1]);
    case ePTZPresetRemove:
        m_tDevice.Store().Remove(Key(tHead.dwChannel, "preset", static_cast<uint32_t>(anPara[0])));
        return tHead.tPresets.erase(static_cast<uint32_t>(anPara[0])) ? int{eResultOk} : int{eResultNotFound};
    case ePTZHomeSet:
        tHead.tHome = Here(tHead, 0, {});
        m_tDevice.Store().PutRecord(Key(tHead.dwChannel, "home", 0), tHead.tHome);
        return eResultOk;
    case ePTZHomeCall:
        return Approach(tHead, {tHead.tHome.nPan, tHead.tHome.nTilt, tHead.tHome.nZoom, anPara[0]});
    case ePTZAuxiliary:
        return Auxiliary(tHead, anPara);
    default:
        return eCommand >= ePTZTourAddPreset && eCommand <= ePTZTourRemove ? TourCommand(tHead, eCommand, anPara)
                                                                           : int{eResultBadArgument};
    }
}

// --- movements -------------------------------------------------------------------------------------------------------

// The axes at the speeds that come first in anPara, for the last one in milliseconds.
int CPTZ::Turn(tagHead& tHead, std::initializer_list<eAxis> aeAxes, Para const& anPara)
{
    const auto dwMilliseconds = anPara[3] == 0 ? 5000U : std::min(static_cast<uint32_t>(anPara[3]), 60000U);
    if (!std::ranges::all_of(anPara.begin(), anPara.begin() + static_cast<std::ptrdiff_t>(aeAxes.size()),
                             [](int32_t n) { return Within(n, -g_nFull, g_nFull); }))
    {
        return eResultBadArgument;
    }
    std::size_t n = 0;
    for (const eAxis e : aeAxes)
    {
        tagAxis& tAxis = tHead.atAxes[e];
        tAxis.fSpeed = anPara[n++] * g_atAxisKinds[e].fFullSpeed / g_nFull;
        tAxis.fTarget.reset();
        tAxis.llEndUs = m_tDevice.SteadyNow() + int64_t{dwMilliseconds} * 1000;
    }
    tHead.dwGoingTo = 0;
    return eResultOk;
}

// Pan, tilt, zoom and speed.
int CPTZ::Approach(tagHead& tHead, Para const& anTo)
{
    if (!Within(anTo[3], 0, g_nFull))
    {
        return eResultBadArgument;
    }
    for (unsigned i = 0; i < 3; ++i)
    {
        if (anTo[i] < g_atAxisKinds[i].fLeast || anTo[i] > g_atAxisKinds[i].fMost)
        {
            return eResultBadArgument;
        }
    }
    for (unsigned i = 0; i < 3; ++i)
    {
        tagAxis& tAxis = tHead.atAxes[i];
        const double fSpeed = g_atAxisKinds[i].fFullSpeed * (anTo[3] ? anTo[3] : g_nFull) / g_nFull;
        tAxis.fTarget = anTo[i];
        tAxis.fSpeed = anTo[i] > tAxis.fValue ? fSpeed : anTo[i] < tAxis.fValue ? -fSpeed : 0;
    }
    tHead.dwGoingTo = 0;
    return eResultOk;
}

int CPTZ::Auxiliary(tagHead& tHead, Para const& anPara)
{
    const auto dwKind = static_cast<uint32_t>(anPara[0]);
    if (dwKind < ePTZWiper || dwKind > ePTZHeater || !Within(anPara[1], 0, 1) || anPara[3] < 0)
    {
        return eResultBadArgument;
    }
    tHead.dwAuxiliary = (tHead.dwAuxiliary & ~(1U << dwKind)) | static_cast<uint32_t>(anPara[1]) << dwKind;
    tHead.tAuxiliaryEndUs.erase(dwKind);
    if (anPara[1] && anPara[3])
    {
        tHead.tAuxiliaryEndUs[dwKind] = m_tDevice.SteadyNow() + int64_t{anPara[3]} * 1000;
    }
    return eResultOk;
}

bool CPTZ::Turning(tagHead const& tHead)
{
    return std::ranges::any_of(tHead.atAxes, [](tagAxis const& t) { return t.fSpeed != 0; });
}

void CPTZ::StepAxes(tagHead& tHead)
{
    const int64_t llNowUs = m_tDevice.SteadyNow();
    const int64_t llBeforeUs = std::exchange(tHead.llNowUs, llNowUs);
    const bool bLens = tHead.atAxes[eAxisFocus].fSpeed != 0 || tHead.atAxes[eAxisIris].fSpeed != 0;
    for (unsigned i = 0; i < eAxes; ++i)
    {
        tagAxis& tAxis = tHead.atAxes[i];
        const int64_t llEndUs = tAxis.fTarget ? llNowUs : std::min(llNowUs, tAxis.llEndUs);
        tAxis.fValue += tAxis.fSpeed * static_cast<double>(std::max<int64_t>(llEndUs - llBeforeUs, 0)) / 1e6;
        tAxis.fValue = std::clamp(tAxis.fValue, g_atAxisKinds[i].fLeast, g_atAxisKinds[i].fMost);
        const bool bThere =
            tAxis.fTarget && (tAxis.fSpeed > 0 ? tAxis.fValue >= *tAxis.fTarget : tAxis.fValue <= *tAxis.fTarget);
        if (tAxis.fSpeed != 0 && bThere)
        {
            tAxis.fValue = *tAxis.fTarget;
        }
        if (bThere || (!tAxis.fTarget && llNowUs >= tAxis.llEndUs))
        {
            tAxis.fSpeed = 0;
        }
    }
    if (bLens)
    {
        CCamera& tCamera = m_tDevice.Part<CCamera>();
        auto tFocus = tCamera.Focus(tHead.dwChannel);
        auto tExposure = tCamera.Exposure(tHead.dwChannel);
        tFocus.dwMode = tHead.atAxes[eAxisFocus].fTarget ? tFocus.dwMode : static_cast<uint32_t>(eModeManual);
        tFocus.dwPosition = static_cast<uint32_t>(std::lround(tHead.atAxes[eAxisFocus].fValue));
        tExposure.dwMode = tHead.atAxes[eAxisIris].llEndUs != 0 ? static_cast<uint32_t>(eModeManual) : tExposure.dwMode;
        tExposure.dwIris = static_cast<uint32_t>(std::lround(tHead.atAxes[eAxisIris].fValue));
        tCamera.SetFocus(tHead.dwChannel, tFocus);
        tCamera.SetExposure(tHead.dwChannel, tExposure);
    }
    if (tHead.dwGoingTo != 0 && !Turning(tHead))
    {
        m_tDevice.RaiseDetail(tHead.dwChannel, "tns1:PTZController/PTZPresets/Reached",
                              "Channel=" + std::to_string(tHead.dwChannel),
                              "Preset=" + std::to_string(std::exchange(tHead.dwGoingTo, 0)), 2);
    }
}

void CPTZ::Advance()
{
    for (tagHead& tHead : m_atHeads)
    {
        StepAxes(tHead);
        StepTour(tHead);
        std::erase_if(tHead.tAuxiliaryEndUs,
                      [&](auto const& tEnd)
                      {
                          const bool bOver = tEnd.second <= m_tDevice.SteadyNow();
                          tHead.dwAuxiliary &= bOver ? ~(1U << tEnd.first) : ~0U;
                          return bOver;
                      });
    }
}

// What moves is looked at twenty times a second.
int64_t CPTZ::NextDue() const
{
    const bool bMoves =
        std::ranges::any_of(m_atHeads, [](tagHead const& t) { return Turning(t) || t.dwTour || t.dwGoingTo; });
    return bMoves ? m_tDevice.SteadyNow() + 50000 : g_llNever;
}

void CPTZ::Halt()
{
    for (tagHead& tHead : m_atHeads)
    {
        std::ranges::for_each(tHead.atAxes, [](tagAxis& t) { t.fSpeed = 0; });
        tHead.dwTour = tHead.dwRecording = tHead.dwGoingTo = tHead.dwAuxiliary = 0;
        tHead.tAuxiliaryEndUs.clear();
    }
}

// --- presets ---------------------------------------------------------------------------------------------------------

tagPTZPreset CPTZ::Here(tagHead const& tHead, uint32_t dwNumber, std::string const& strName) const
{
    const auto fnAxis = [&](eAxis e) { return static_cast<int32_t>(std::lround(tHead.atAxes[e].fValue)); };
    tagPTZPreset t{dwNumber, fnAxis(eAxisPan), fnAxis(eAxisTilt), fnAxis(eAxisZoom), {}};
    CopyText(t.szName, strName);
    return t;
}

int CPTZ::SetPreset(tagHead& tHead, uint32_t dwPreset, char const* szName)
{
    if (dwPreset < 1 || dwPreset > g_dwPresets)
    {
        return eResultBadArgument;
    }
    tHead.tPresets[dwPreset] = Here(tHead, dwPreset, szName ? szName : "");
    m_tDevice.Store().PutRecord(Key(tHead.dwChannel, "preset", dwPreset), tHead.tPresets[dwPreset]);
    return eResultOk;
}

int CPTZ::CallPreset(tagHead& tHead, uint32_t dwPreset, int32_t nSpeed)
{
    const auto it = tHead.tPresets.find(dwPreset);
    if (it == tHead.tPresets.end())
    {
        return dwPreset < 1 || dwPreset > g_dwPresets ? int{eResultBadArgument} : int{eResultNotFound};
    }
    const int nResult = Approach(tHead, {it->second.nPan, it->second.nTilt, it->second.nZoom, nSpeed});
    tHead.dwGoingTo = nResult == eResultOk ? dwPreset : 0;
    return nResult;
}

void CPTZ::GoTo(uint32_t dwChannel, uint32_t dwPreset)
{
    if (tagHead* const ptHead = Find(dwChannel))
    {
        CallPreset(*ptHead, dwPreset, 0);
    }
}

// --- tours -----------------------------------------------------------------------------------------------------------

int CPTZ::TourCommand(tagHead& tHead, ePTZControlCmdCode eCommand, Para const& anPara)
{
    const auto dwTour = static_cast<uint32_t>(anPara[0]);
    if (dwTour < 1 || dwTour > g_dwTours)
    {
        return eResultBadArgument;
    }
    const auto it = tHead.tTours.find(dwTour);
    const bool bThere = it != tHead.tTours.end();
    switch (eCommand)
    {
    case ePTZTourAddPreset:
        if (!tHead.tPresets.contains(static_cast<uint32_t>(anPara[1])))
        {
            return eResultNotFound;
        }
        if (!Within(anPara[2], 0, 3600) || !Within(anPara[3], 0, g_nFull) || (bThere && !it->second.atMoves.empty()) ||
            (bThere && it->second.atStops.size() == g_nStops))
        {
            return eResultBadArgument;
        }
        tHead.tTours[dwTour].atStops.push_back(
            {static_cast<uint32_t>(anPara[1]), static_cast<uint32_t>(anPara[2]), static_cast<uint32_t>(anPara[3])});
        KeepTour(tHead, dwTour);
        return eResultOk;
    case ePTZTourRecordStart:
        tHead.dwRecording = dwTour;
        tHead.llRecordUs = m_tDevice.SteadyNow();
        {
            const tagPTZPreset tHere = Here(tHead, 0, {});
            tHead.tTours[dwTour] = {{}, {{0, ePTZAbsolute, {tHere.nPan, tHere.nTilt, tHere.nZoom, 0}}}};
        }
        return eResultOk;
    case ePTZTourRecordStop:
        if (tHead.dwRecording != dwTour)
        {
            return eResultNotFound;
        }
        tHead.dwRecording = 0;
        tHead.tTours[dwTour].atMoves.push_back({m_tDevice.SteadyNow() - tHead.llRecordUs, ePTZStop, {}});
        KeepTour(tHead, dwTour);
        return eResultOk;
    case ePTZTourRun:
        if (!bThere || tHead.dwRecording == dwTour)
        {
            return eResultNotFound;
        }
        tHead.dwTour = dwTour;
        tHead.dwRounds = static_cast<uint32_t>(anPara[1]);
        tHead.nStep = 0;
        tHead.llStepUs = 0;
        StepTour(tHead);
        return eResultOk;
    case ePTZTourStop:
        if (tHead.dwTour == dwTour)
        {
            tHead.dwTour = 0;
            Execute(tHead, ePTZStop, {});
        }
        return bThere ? int{eResultOk} : int{eResultNotFound};
    default: // ePTZTourRemove
        tHead.dwTour = tHead.dwTour == dwTour ? 0 : tHead.dwTour;
        tHead.dwRecording = tHead.dwRecording == dwTour ? 0 : tHead.dwRecording;
        tHead.tTours.erase(dwTour);
        KeepTour(tHead, dwTour);
        return bThere ? int{eResultOk} : int{eResultNotFound};
    }
}

// llStepUs: 0 at the begin of a round; then when this round began (recorded movements), or when the present stop was
// reached (presets), 0 while it is on its way.
void CPTZ::StepTour(tagHead& tHead)
{
    const int64_t llNowUs = m_tDevice.SteadyNow();
    const auto it = tHead.tTours.find(tHead.dwTour);
    if (it == tHead.tTours.end())
    {
        return;
    }
    tagTour const& tTour = it->second;
    const std::size_t nSteps = tTour.atMoves.empty() ? tTour.atStops.size() : tTour.atMoves.size();
    if (tTour.atMoves.empty())
    {
        tagStop const& tStop = tTour.atStops[tHead.nStep];
        if (tHead.llStepUs == 0)
        {
            CallPreset(tHead, tStop.dwPreset, static_cast<int32_t>(tStop.dwSpeed)); // one that was removed is skipped
            tHead.llStepUs = -1;
        }
        else if (tHead.llStepUs < 0 && !Turning(tHead))
        {
            tHead.llStepUs = llNowUs;
        }
        if (tHead.llStepUs > 0 && llNowUs >= tHead.llStepUs + int64_t{tStop.dwSeconds} * 1000000)
        {
            ++tHead.nStep;
            tHead.llStepUs = 0;
        }
    }
    else
    {
        tHead.llStepUs = tHead.llStepUs == 0 ? llNowUs : tHead.llStepUs;
        while (tHead.nStep < nSteps && llNowUs >= tHead.llStepUs + tTour.atMoves[tHead.nStep].llAfterUs)
        {
            Execute(tHead, tTour.atMoves[tHead.nStep].eCommand, tTour.atMoves[tHead.nStep].anPara);
            ++tHead.nStep;
        }
    }
    if (tHead.nStep == nSteps)
    {
        tHead.nStep = 0;
        tHead.llStepUs = 0;
        const bool bLast = tHead.dwRounds == 1;
        tHead.dwRounds -= tHead.dwRounds == 0 ? 0 : 1;
        tHead.dwTour = bLast ? 0 : tHead.dwTour;
    }
}

// --- what is kept ----------------------------------------------------------------------------------------------------

void CPTZ::KeepTour(tagHead const& tHead, uint32_t dwTour)
{
    const auto it = tHead.tTours.find(dwTour);
    const tagTour tTour = it == tHead.tTours.end() ? tagTour{} : it->second;
    m_tDevice.Store().PutList(Key(tHead.dwChannel, "stops", dwTour), tTour.atStops);
    m_tDevice.Store().PutList(Key(tHead.dwChannel, "moves", dwTour), tTour.atMoves);
}

void CPTZ::Load(tagHead& tHead)
{
    CStore const& tStore = m_tDevice.Store();
    for (uint32_t i = 1; i <= g_dwPresets && !tStore.All().empty(); ++i)
    {
        tagPTZPreset tPreset{};
        if (tStore.GetRecord(Key(tHead.dwChannel, "preset", i), tPreset))
        {
            tHead.tPresets[i] = tPreset;
        }
        tagTour tTour{tStore.GetList<tagStop>(Key(tHead.dwChannel, "stops", i)),
                      tStore.GetList<tagMove>(Key(tHead.dwChannel, "moves", i))};
        if (!tTour.atStops.empty() || !tTour.atMoves.empty())
        {
            tHead.tTours[i] = std::move(tTour);
        }
    }
    tStore.GetRecord(Key(tHead.dwChannel, "home", 0), tHead.tHome);
    tHead.atAxes[eAxisFocus].fValue = tHead.atAxes[eAxisIris].fValue = 5000;
}

void CPTZ::Reset()
{
    Halt();
    for (tagHead& tHead : m_atHeads)
    {
        tHead.tPresets.clear();
        tHead.tTours.clear();
        tHead.tHome = {};
    }
}

// --- as they are -----------------------------------------------------------------------------------------------------

tagPTZPosition CPTZ::Position(uint32_t dwChannel) const
{
    tagPTZPosition t{};
    t.dwSize = sizeof t;
    tagHead const* const ptHead = Find(dwChannel);
    if (!ptHead)
    {
        return t;
    }
    const tagPTZPreset tHere = Here(*ptHead, 0, {});
    t.nPan = tHere.nPan;
    t.nTilt = tHere.nTilt;
    t.nZoom = tHere.nZoom;
    t.bMoving = Turning(*ptHead) || ptHead->dwTour != 0 ? 1 : 0;
    t.dwTour = ptHead->dwTour;
    t.bHasDegrees = 1;
    t.nPanDegrees = t.nPan * 18000 / g_nFull;
    t.nTiltDegrees = t.nTilt * 9000 / g_nFull;
    t.dwZoomFactor = 100 + static_cast<uint32_t>(t.nZoom) * 2900 / g_nFull;
    t.dwAuxiliary = ptHead->dwAuxiliary;
    const auto it =
        std::ranges::find_if(ptHead->tPresets,
                             [&](auto const& tEntry)
                             {
                                 tagPTZPreset const& tPreset = tEntry.second;
                                 return tPreset.nPan == t.nPan && tPreset.nTilt == t.nTilt && tPreset.nZoom == t.nZoom;
                             });
    t.dwPreset = Turning(*ptHead) || it == ptHead->tPresets.end() ? 0 : it->first;
    return t;
}

tagPTZAbility CPTZ::Ability(uint32_t dwChannel) const
{
    tagPTZAbility t{};
    t.dwSize = sizeof t;
    if (!Find(dwChannel))
    {
        return t;
    }
    t.dwMoveAxes = ePTZAxisPan | ePTZAxisTilt | ePTZAxisZoom | ePTZAxisFocus | ePTZAxisIris;
    t.dwPositionAxes = ePTZAxisPan | ePTZAxisTilt | ePTZAxisZoom;
    t.dwPresets = g_dwPresets;
    t.dwTours = g_dwTours;
    t.dwAuxiliaries = 1U << ePTZWiper | 1U << ePTZWasher | 1U << ePTZLight | 1U << ePTZInfrared | 1U << ePTZHeater;
    t.bHome = 1;
    t.nPanMinDegrees = -18000;
    t.nPanMaxDegrees = 18000;
    t.nTiltMinDegrees = -9000;
    t.nTiltMaxDegrees = 9000;
    t.dwPanMaxSpeed = 10000;
    t.dwTiltMaxSpeed = 5000;
    t.dwZoomMaxFactor = 3000;
    return t;
}

std::vector<tagPTZPreset> CPTZ::Presets(uint32_t dwChannel) const
{
    std::vector<tagPTZPreset> atPresets;
    if (tagHead const* const ptHead = Find(dwChannel))
    {
        for (auto const& [dwPreset, tPreset] : ptHead->tPresets)
        {
            atPresets.push_back(tPreset);
        }
    }
    return atPresets;
}

std::vector<tagPTZTour> CPTZ::Tours(uint32_t dwChannel) const
{
    std::vector<tagPTZTour> atTours;
    if (tagHead const* const ptHead = Find(dwChannel))
    {
        for (auto const& [dwTour, tTour] : ptHead->tTours)
        {
            const auto dwSeconds = tTour.atMoves.empty() ? 0 : tTour.atMoves.back().llAfterUs / 1000000;
            atTours.push_back({dwTour, static_cast<uint32_t>(tTour.atStops.size()), static_cast<uint32_t>(dwSeconds),
                               ptHead->dwTour == dwTour ? 1U : 0U});
        }
    }
    return atTours;
}
} // namespace device
