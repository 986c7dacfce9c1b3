// ptz: moves a camera; presets, tours, and the keys of a terminal.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Session.h"
#include "tools/tessaro/Terminal.h"

#include <RecordTables.h>
#include <array>
#include <memory>

namespace tessaro
{
namespace
{
struct tagPtzOptions
{
    std::string strAddress;
    unsigned int dwChannel = 0;
    bool bWait = false;
    std::array<std::string, 4> astrWords;
};

// An action: the command, and what its words mean, in their order.
struct tagPtzAction
{
    char const* szName;
    ePTZControlCmdCode eCommand;
    char const* szHelp;
    std::array<char const*, 4> aszWords; // null: no more; in brackets: may be left out
};
constexpr tagPtzAction g_atActions[] = {
    {"stop", ePTZStop, "end movements and tours", {}},
    {"move",
     ePTZMove,
     "pan, tilt and zoom at these speeds, -10000 to 10000, for so long",
     {"PAN", "TILT", "[ZOOM]", "[MS]"}},
    {"goto",
     ePTZAbsolute,
     "go to a position: pan and tilt -10000 to 10000, zoom 0 to 10000",
     {"PAN", "TILT", "ZOOM", "[SPEED]"}},
    {"by", ePTZRelative, "go by so much", {"PAN", "TILT", "[ZOOM]", "[SPEED]"}},
    {"focus", ePTZFocus, "focus nearer (-) or farther (+)", {"SPEED", nullptr, nullptr, nullptr}},
    {"autofocus", ePTZFocusOnce, "focus by itself, once", {}},
    {"iris", ePTZIris, "iris closed (-) or open (+)", {"SPEED", nullptr, nullptr, nullptr}},
    {"home", ePTZHomeCall, "go home", {}},
    {"home-set", ePTZHomeSet, "make this the home position", {}},
    {"preset", ePTZPresetCall, "go to a preset", {"PRESET", "[SPEED]"}},
    {"preset-set", ePTZPresetSet, "remember this position, under a name", {"PRESET", "[NAME]"}},
    {"preset-remove", ePTZPresetRemove, "forget a preset", {"PRESET"}},
    {"tour", ePTZTourRun, "run a tour", {"TOUR", "[ROUNDS]"}},
    {"tour-stop", ePTZTourStop, "stop a tour", {"TOUR"}},
    {"tour-add", ePTZTourAddPreset, "append a preset to a tour", {"TOUR", "PRESET", "[SECONDS]", "[SPEED]"}},
    {"tour-record", ePTZTourRecordStart, "record the movements that follow as a tour", {"TOUR"}},
    {"tour-record-end", ePTZTourRecordStop, "end the recording of a tour", {"TOUR"}},
    {"tour-remove", ePTZTourRemove, "forget a tour", {"TOUR"}},
    {"switch", ePTZAuxiliary, "switch wiper, washer, light, infrared or heater: 1 on, 0 off", {"WHAT", "ON"}},
};

class CHead
{
public:
    CHead(CSession const& tSession, unsigned int dwChannel) : m_tSession(tSession), m_dwChannel(dwChannel) {}

    int Do(ePTZControlCmdCode eCommand, long n1 = 0, long n2 = 0, long n3 = 0, long n4 = 0) const
    {
        return ClientAdapter_PTZControl(m_tSession.Login(), m_dwChannel, eCommand, TESSARO_SIGNED(n1),
                                        TESSARO_SIGNED(n2), TESSARO_SIGNED(n3), TESSARO_SIGNED(n4));
    }
    template <class Record>
    void Get(eCameraParameter eParameter, Record& t) const
    {
        t.dwSize = sizeof t;
        Check(ClientAdapter_GetIpcPara(m_tSession.Login(), static_cast<int>(m_dwChannel), eParameter, &t, sizeof t),
              "asking the camera's head");
    }
    template <class List, class Entry>
    json Entries(eCameraParameter eParameter) const
    {
        std::vector<Entry> atEntries(256);
        List tList{};
        tList.dwEntrySize = sizeof(Entry);
        tList.dwCapacity = static_cast<std::uint32_t>(atEntries.size());
        tList.ptEntries = atEntries.data();
        Get(eParameter, tList);
        return ToJson(tList)["entries"];
    }
    json Position() const
    {
        tagPTZPosition t{};
        Get(eCameraPosition, t);
        return ToJson(t);
    }
    bool Moves() const
    {
        tagPTZPosition t{};
        Get(eCameraPosition, t);
        return t.bMoving != 0;
    }

private:
    CSession const& m_tSession;
    unsigned int m_dwChannel;
};

long Number(std::string const& strWord, char const* szName)
{
    const std::string strDigits = Typed(strWord);
    char* pEnd = nullptr;
    const long n = std::strtol(strDigits.c_str(), &pEnd, 10);
    if (*pEnd != '\0')
    {
        throw CFailure(eExitUsage, fmt::format("{} is a whole number, not \"{}\"", szName, strWord));
    }
    return n;
}

// A command's word as the library takes it. The name of a preset is a text that must stay as long as the call.
long Word(tagPtzAction const& tAction, std::size_t i, std::string const& strWord)
{
    char const* const szName = tAction.aszWords[i];
    if (!szName || strWord.empty())
    {
        return 0;
    }
    if (std::string_view(szName) == "[NAME]")
    {
        return reinterpret_cast<long>(strWord.c_str());
    }
    if (std::string_view(szName) == "WHAT")
    {
        const auto Found = NamesOf<ePTZAuxiliaryKind>().Find(strWord);
        return Found ? static_cast<long>(*Found)
                     : throw CFailure(eExitUsage, "WHAT is one of " + NamesOf<ePTZAuxiliaryKind>().List());
    }
    return Number(strWord, szName);
}

void ShowPosition(COutput& tOut, json const& t)
{
    tOut.Say("pan {}  tilt {}  zoom {}{}{}", t["pan"].dump(), t["tilt"].dump(), t["zoom"].dump(),
             t["moving"].get<bool>() ? "  moving" : "",
             t["preset"] != 0 ? "  at preset " + t["preset"].dump() : std::string());
    tOut.Result({{"position", t}});
}

int Perform(tagContext& tContext, tagPtzOptions const& tOptions, tagPtzAction const& tAction)
{
    long an[4];
    for (std::size_t i = 0; i < 4; ++i)
    {
        an[i] = Word(tAction, i, tOptions.astrWords[i]);
    }
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("head that moves");
    const CHead tHead(tSession, tOptions.dwChannel);
    Check(tHead.Do(tAction.eCommand, an[0], an[1], an[2], an[3]), tAction.szName);
    if (tOptions.bWait)
    {
        while (tHead.Moves() && !CInterrupt::Instance().Asked())
        {
            CInterrupt::Instance().Wait(100);
        }
    }
    ShowPosition(tContext.tOut, tHead.Position());
    return eExitDone;
}

int List(tagContext& tContext, tagPtzOptions const& tOptions)
{
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("head that moves");
    const CHead tHead(tSession, tOptions.dwChannel);
    tagPTZAbility tAbility{};
    tHead.Get(eCameraPTZAbility, tAbility);
    const json tResult = {{"position", tHead.Position()},
                          {"presets", tHead.Entries<tagPTZPresetList, tagPTZPreset>(eCameraPresets)},
                          {"tours", tHead.Entries<tagPTZTourList, tagPTZTour>(eCameraTours)},
                          {"ability", ToJson(tAbility)}};
    COutput& tOut = tContext.tOut;
    tOut.Fields(tResult["position"]);
    tOut.Say("");
    tOut.Table({{"PRESET", "preset"}, {"NAME", "name"}, {"PAN", "pan"}, {"TILT", "tilt"}, {"ZOOM", "zoom"}},
               tResult["presets"]);
    tOut.Say("");
    tOut.Table({{"TOUR", "tour"}, {"PRESETS", "presets"}, {"SECONDS", "seconds"}, {"RUNS", "running"}},
               tResult["tours"]);
    tOut.Result(tResult);
    return eExitDone;
}

// Keys move the camera as long as they are pressed: a terminal repeats them, and each movement is short.
int Keys(tagContext& tContext, tagPtzOptions const& tOptions)
{
    constexpr int nMs = 400;
    constexpr long nSpeed = 5000;
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("head that moves");
    const CHead tHead(tSession, tOptions.dwChannel);
    COutput& tOut = tContext.tOut;
    CKeys tKeys;
    tOut.Say("arrows move, + and - zoom, 1 to 9 call a preset, h goes home, space stops, q ends");
    int nExit = eExitDone;
    for (int nKey = CKeys::eNone; nKey != 'q' && nKey != '\x1b' && nKey != CKeys::eEnd; nKey = tKeys.Next(250))
    {
        const bool bDigit = nKey >= '1' && nKey <= '9';
        const int nResult = nKey == CKeys::eLeft    ? tHead.Do(ePTZMove, -nSpeed, 0, 0, nMs)
                            : nKey == CKeys::eRight ? tHead.Do(ePTZMove, nSpeed, 0, 0, nMs)
                            : nKey == CKeys::eUp    ? tHead.Do(ePTZMove, 0, nSpeed, 0, nMs)
                            : nKey == CKeys::eDown  ? tHead.Do(ePTZMove, 0, -nSpeed, 0, nMs)
                            : nKey == '+'           ? tHead.Do(ePTZZoom, nSpeed, 0, 0, nMs)
                            : nKey == '-'           ? tHead.Do(ePTZZoom, -nSpeed, 0, 0, nMs)
                            : nKey == 'h'           ? tHead.Do(ePTZHomeCall)
                            : nKey == ' '           ? tHead.Do(ePTZStop)
                            : bDigit                ? tHead.Do(ePTZPresetCall, nKey - '0')
                                                    : 0;
        const json t = tHead.Position();
        const std::string strProblem = nResult == 0 ? "" : "  " + std::string(CFailure(nResult, "refused").what());
        tOut.Status(fmt::format("pan {:6}  tilt {:6}  zoom {:6}{}", t["pan"].get<int>(), t["tilt"].get<int>(),
                                t["zoom"].get<int>(), strProblem));
    }
    tHead.Do(ePTZStop);
    tOut.EndStatus();
    tOut.Result({{"position", tHead.Position()}});
    return nExit;
}
} // namespace

void DeclarePtz(CLine& tLine)
{
    auto pt = std::make_shared<tagPtzOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.Option("--channel", pt->dwChannel, "the device's channel, from 0").Value("N");
    tLine.Flag("--wait", pt->bWait, "until the camera has arrived");
    tLine.NeedsCommand();
    for (tagPtzAction const& t : g_atActions)
    {
        CLine tAction =
            tLine.Add(t.szName, t.szHelp, [pt, &t](tagContext& tContext) { return Perform(tContext, *pt, t); });
        for (std::size_t i = 0; i < t.aszWords.size() && t.aszWords[i]; ++i)
        {
            const std::string strWord = t.aszWords[i];
            const bool bOptional = strWord[0] == '[';
            tAction.Option(bOptional ? strWord.substr(1, strWord.size() - 2) : strWord, pt->astrWords[i], "")
                .Needed(!bOptional);
        }
    }
    tLine.Add("list", "where it looks, its presets and tours, what it can do",
              [pt](tagContext& t) { return List(t, *pt); });
    tLine.Add("keys", "move it with the keys of the terminal", [pt](tagContext& t) { return Keys(t, *pt); });
}
} // namespace tessaro
