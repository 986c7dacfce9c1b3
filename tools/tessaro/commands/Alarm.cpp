// alarm: the alarm inputs and outputs of a device.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Session.h"

#include <RecordTables.h>
#include <memory>

namespace tessaro
{
namespace
{
struct tagAlarmOptions
{
    std::string strAddress;
    unsigned int dwOutput = 0;
    std::string strState;
    std::string strEvent;
    unsigned long dwChannel = TESSARO_ALL;
};

using GetStates = int (*)(int, unsigned long*, unsigned long*);

template <class Record>
json Contacts(CSession const& tSession, GetStates pfnGet, eConfigType eType, std::string const& strWhat)
{
    unsigned long adwStates[256]{};
    unsigned long dwCount = std::size(adwStates);
    Check(pfnGet(tSession.Login(), &dwCount, adwStates), "reading the " + strWhat + "s");
    json tRows = json::array();
    for (unsigned int i = 0; i < std::min<unsigned long>(dwCount, std::size(adwStates)); ++i)
    {
        Record t{};
        const bool bNamed = tSession.Read(eType, i, t) == eResultOk;
        tRows.push_back(
            {{strWhat, i}, {"state", adwStates[i] != 0 ? "active" : "idle"}, {"name", bNamed ? Text(t.szName) : ""}});
    }
    return tRows;
}

int List(tagContext& tContext, tagAlarmOptions const& tOptions)
{
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("alarm contacts");
    const json tInputs =
        Contacts<tagConfigAlarmInput>(tSession, &ClientAdapter_AlarminStateGet, eConfigAlarmInput, "input");
    const json tOutputs =
        Contacts<tagConfigAlarmOutput>(tSession, &ClientAdapter_AlarmoutStateGet, eConfigAlarmOutput, "output");
    tContext.tOut.Table({{"INPUT", "input"}, {"STATE", "state"}, {"NAME", "name"}}, tInputs);
    tContext.tOut.Say("");
    tContext.tOut.Table({{"OUTPUT", "output"}, {"STATE", "state"}, {"NAME", "name"}}, tOutputs);
    tContext.tOut.Result({{"inputs", tInputs}, {"outputs", tOutputs}});
    return eExitDone;
}

int Set(tagContext& tContext, tagAlarmOptions const& tOptions)
{
    char* pEnd = nullptr;
    const unsigned long dwMs = std::strtoul(tOptions.strState.c_str(), &pEnd, 10);
    const bool bNumber = *pEnd == '\0' && dwMs > 1;
    if (tOptions.strState != "on" && tOptions.strState != "off" && !bNumber)
    {
        throw CFailure(eExitUsage,
                       fmt::format("an output is switched on, off, or on for so many milliseconds, not \"{}\"",
                                   tOptions.strState));
    }
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("alarm contacts");
    Check(
        ClientAdapter_AlarmoutControl(tSession.Login(), tOptions.dwOutput, bNumber ? dwMs : tOptions.strState == "on"),
        fmt::format("switching output {}", tOptions.dwOutput));
    tContext.tOut.Say("output {} is {}{}", tOptions.dwOutput, tOptions.strState == "off" ? "off" : "on",
                      bNumber ? fmt::format(" for {} ms", dwMs) : "");
    tContext.tOut.Result({{"output", tOptions.dwOutput}, {"state", tOptions.strState}});
    return eExitDone;
}

int Clear(tagContext& tContext, tagAlarmOptions const& tOptions)
{
    const auto Event = NamesOf<eDeviceEvent>().Find(tOptions.strEvent);
    if (!tOptions.strEvent.empty() && !Event)
    {
        throw CFailure(eExitUsage, fmt::format("there is no event \"{}\"", tOptions.strEvent),
                       "the events are " + NamesOf<eDeviceEvent>().List());
    }
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("alarms");
    Check(ClientAdapter_AlarmClear(tSession.Login(), static_cast<unsigned long>(Event.value_or(0)), tOptions.dwChannel),
          "clearing the alarm");
    tContext.tOut.Say("cleared");
    tContext.tOut.Result({{"cleared", tOptions.strEvent.empty() ? "all" : tOptions.strEvent}});
    return eExitDone;
}
} // namespace

void DeclareAlarm(CLine& tLine)
{
    auto pt = std::make_shared<tagAlarmOptions>();
    const auto Act = [pt](int (*pfn)(tagContext&, tagAlarmOptions const&)) -> Action
    { return [pt, pfn](tagContext& t) { return pfn(t, *pt); }; };
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.Does(Act(&List));
    tLine.Add("list", "all inputs and outputs, which is what no action does too", Act(&List));
    CLine tSet = tLine.Add("set", "switch an output", Act(&Set));
    tSet.Option("output", pt->dwOutput, "which output, from 0").Needed();
    tSet.Option("state", pt->strState, "on, off, or on for so many milliseconds").Needed();
    CLine tClear = tLine.Add("clear", "end what the device does because of an alarm", Act(&Clear));
    tClear.Option("--event", pt->strEvent, "because of this event alone").Value("EVENT");
    tClear.Option("--channel", pt->dwChannel, "of this channel or input alone").Value("N");
}
} // namespace tessaro
