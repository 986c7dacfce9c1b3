// events: what a device reports, as it comes.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Stream.h"

#include <RecordTables.h>
#include <deque>
#include <memory>
#include <mutex>

namespace tessaro
{
namespace
{
struct tagEventsOptions
{
    std::string strAddress;
    std::vector<std::string> astrOnly;
    double dSeconds = 0;
    unsigned int dwCount = 0;
};

json Word(unsigned long dwWord)
{
    return dwWord == TESSARO_ALL ? json("all") : json(dwWord);
}

// What the second and third word of each event are.
json DeviceEvent(unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3, unsigned long dwTime)
{
    json t = {{"event", NameOf(static_cast<eDeviceEvent>(dwEvent))},
              {"time", dwTime == 0 ? json(nullptr) : json(TimeText(static_cast<std::int64_t>(dwTime) * 1000000))}};
    switch (dwEvent)
    {
    case eEventAlarmInput:
        t.update({{"input", dwWord2}, {"state", dwWord3 != 0 ? "active" : "idle"}});
        break;
    case eEventAlarmOutput:
        t.update({{"output", dwWord2}, {"state", dwWord3 != 0 ? "active" : "idle"}});
        break;
    case eEventDiskFull:
    case eEventDiskError:
        t.update({{"disk", Word(dwWord2)}, {"state", dwWord3 != 0 ? "began" : "ended"}});
        break;
    case eEventRecording:
        t.update({{"channel", dwWord2},
                  {"state", dwWord3 != 0 ? "began" : "ended"},
                  {"reason", BitNames(NamesOf<eHistoryStreamType>(), dwWord3)}});
        break;
    case eEventUserLogin:
        t.update({{"level", NameOf(static_cast<eUserLevel>(dwWord2))},
                  {"state", dwWord3 == 0   ? "out"
                            : dwWord3 == 1 ? "in"
                                           : "refused"}});
        break;
    case eEventLoginLost:
        t.update({{"result", NameOf(static_cast<ePluginResult>(dwWord2))}, {"next_try_ms", dwWord3}});
        break;
    case eEventLoginRestored:
        t.update({{"lost_ms", dwWord2}});
        break;
    case eEventDeviceRestarted:
        t.update({{"reason", NameOf(static_cast<eRestartReason>(dwWord2))}});
        break;
    case eEventConfigChanged:
        t.update({{"block", NameOf(static_cast<eConfigType>(dwWord2))}, {"index", dwWord3}});
        break;
    case eEventClockChanged:
        t.update({{"ms", static_cast<std::int32_t>(dwWord2)}});
        break;
    case eEventPanelKey:
        t.update({{"key", NameOf(static_cast<ePanelKey>(dwWord2))}});
        break;
    case eEventWindow:
        t.update({{"window", dwWord2}, {"state", NameOf(static_cast<eDecoderWindowState>(dwWord3))}});
        break;
    case eEventsMissed:
        t.update({{"missed", dwWord2}});
        break;
    case eEventOther:
        t.update(
            {{"channel", Word(dwWord2)},
             {"detail", dwWord3 == 0 ? json(nullptr) : ToJson(*reinterpret_cast<tagEventDetail const*>(dwWord3))}});
        break;
    default:
        t.update({{"channel", dwWord2}, {"state", dwWord3 != 0 ? "began" : "ended"}});
    }
    return t;
}

json StreamEvent(unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3, unsigned long dwWord4)
{
    json t = {{"event", NameOf(static_cast<eConnectionEvent>(dwEvent))}, {"time", TimeText(NowUs())}};
    switch (dwEvent)
    {
    case eEventStalled:
        t.update({{"silence_ms", dwWord2}});
        break;
    case eEventRefused:
        t.update({{"rtsp_status", dwWord2}, {"next_try_ms", dwWord3}});
        break;
    case eEventLost:
        t.update({{"error", dwWord2 == 0 ? "the stream ended" : strerror(static_cast<int>(dwWord2))},
                  {"next_try_ms", dwWord3}});
        break;
    case eEventClockJump:
        t.update({{"ms", dwWord3 == 0 ? static_cast<long>(dwWord2) : -static_cast<long>(dwWord2)}});
        return t;
    case eEventTransport:
        t.update({{"now", NameOf(static_cast<eRtspTransport>(dwWord2))},
                  {"tried", NameOf(static_cast<eRtspTransport>(dwWord3))}});
        break;
    default:
        break;
    }
    t["reconnects"] = dwWord4;
    return t;
}

std::string EventText(json const& t)
{
    std::string strText = fmt::format("{:<24}  {:<16}", t["time"].is_null() ? "?" : t["time"].get<std::string>(),
                                      t["event"].get<std::string>());
    for (auto const& [strKey, tValue] : t.items())
    {
        if (strKey != "time" && strKey != "event")
        {
            strText += fmt::format("  {} {}", strKey, tValue.is_string() ? tValue.get<std::string>() : tValue.dump());
        }
    }
    return strText;
}

unsigned long Mask(std::vector<std::string> const& astrOnly)
{
    unsigned long dwMask = 0;
    for (std::string const& strName : astrOnly)
    {
        const auto Found = NamesOf<eDeviceEvent>().Find(strName);
        if (!Found)
        {
            throw CFailure(eExitUsage, fmt::format("there is no event \"{}\"", strName),
                           "the events are " + NamesOf<eDeviceEvent>().List());
        }
        dwMask |= TESSARO_EVENT(*Found);
    }
    return dwMask;
}

int Run(tagContext& tContext, tagEventsOptions const& tOptions)
{
    const unsigned long dwMask = Mask(tOptions.astrOnly);
    std::mutex tMutex;
    std::deque<json> tQueue;
    const CSession tSession(tContext, tOptions.strAddress);
    const bool bRtsp = tSession.IsRtsp();
    CMedia tMedia(&ClientAdapter_RealStreamDisconnect);
    std::optional<CEventSubscription> tEvents;
    if (bRtsp)
    {
        tagRealStreamPara tPara{};
        tPara.dwStreamKind = eStreamMain;
        Check(ClientAdapter_RealStreamConnect(tMedia.Target(), tSession.Login(), &tPara), "opening the stream");
        ClientAdapter_StreamMediaCB(
            tMedia.Id(), [](void*, tagStreamMediaFrame const*, unsigned long) { return 0; }, 0);
    }
    tEvents.emplace(tSession.Login(), dwMask,
                    [&](unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3, unsigned long dwWord4)
                    {
                        const json t = bRtsp ? StreamEvent(dwEvent, dwWord2, dwWord3, dwWord4)
                                             : DeviceEvent(dwEvent, dwWord2, dwWord3, dwWord4);
                        const std::lock_guard tLock(tMutex);
                        tQueue.push_back(t);
                        CInterrupt::Instance().Wake();
                    });
    Check(tEvents->Result(), "subscribing to events");
    unsigned int dwShown = 0;
    const auto ShowAll = [&]
    {
        const std::lock_guard tLock(tMutex);
        for (; !tQueue.empty() && (tOptions.dwCount == 0 || dwShown < tOptions.dwCount); tQueue.pop_front(), ++dwShown)
        {
            tContext.tOut.Say("{}", EventText(tQueue.front()));
            tContext.tOut.Result(tQueue.front(), true);
        }
        return tOptions.dwCount != 0 && dwShown >= tOptions.dwCount;
    };
    const bool bAll = WaitUntil(ShowAll, tOptions.dSeconds > 0 ? static_cast<long long>(tOptions.dSeconds * 1000) : -1);
    tMedia.Shut(); // before what its events go to
    return tOptions.dwCount != 0 && !bAll && !CInterrupt::Instance().Asked() ? eExitFailed : eExitDone;
}
} // namespace

void DeclareEvents(CLine& tLine)
{
    auto pt = std::make_shared<tagEventsOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.Option("--only", pt->astrOnly, "these events alone: " + NamesOf<eDeviceEvent>().List())
        .List()
        .Value("EVENT,...");
    tLine.Option("--seconds", pt->dSeconds, "for so long; else until Ctrl-C").Positive().Value("N");
    tLine.Option("--count", pt->dwCount, "end after so many; 1 if fewer come in the time").Value("N");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
