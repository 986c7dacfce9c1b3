// info: what a device is, its streams, and what it can do.

#include "adapter/ClientAdapterExtra.h"
#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Questions.h"
#include "tools/tessaro/Stream.h"

#include <RecordTables.h>
#include <map>
#include <memory>

namespace tessaro
{
namespace
{
struct tagInfoOptions
{
    std::vector<std::string> astrAddresses;
    bool bMatrix = false;
};

// Read if the device has it.
template <class Record>
void Add(json& tResult, char const* szKey, CSession const& tSession, eConfigType eType, unsigned int dwIndex = 0,
         unsigned int dwStream = 0)
{
    Record t{};
    if (tSession.Read(eType, dwIndex, t, dwStream) == eResultOk)
    {
        tResult[szKey] = ToJson(t);
    }
}

json Channel(CSession const& tSession, unsigned int dwChannel)
{
    json tChannel = {{"channel", dwChannel}};
    Add<tagConfigVideoEncoder>(tChannel, "main", tSession, eConfigVideoEncoder, dwChannel, eStreamMain);
    Add<tagConfigVideoEncoder>(tChannel, "sub", tSession, eConfigVideoEncoder, dwChannel, eStreamSub);
    Add<tagConfigAudioEncoder>(tChannel, "audio", tSession, eConfigAudioEncoder, dwChannel, eStreamMain);
    auto tAbility = Sized<tagPTZAbility>();
    const bool bAsked = ClientAdapter_GetIpcPara(tSession.Login(), static_cast<int>(dwChannel), eCameraPTZAbility,
                                                 &tAbility, sizeof tAbility) == eResultOk;
    tChannel["moves"] = bAsked && tAbility.dwMoveAxes != 0 ? ToJson(tAbility)["move_axes"] : json::array();
    return tChannel;
}

std::string StreamText(json const& t)
{
    return fmt::format("{} {}x{} {:g} fps {} kbit/s", t["codec"].get<std::string>(), t["width"].dump(),
                       t["height"].dump(), t["frame_rate"].get<double>() / 1000, t["bit_rate"].dump());
}

// A stream's address says nothing before its first frames have come.
json DescribeStream(CSession const& tSession)
{
    CLiveStream tStream(tSession, {}, nullptr);
    tStream.AwaitFirst();
    WaitUntil([] { return false; }, 1000);
    json tResult = ToJson(tStream.Count().Totals());
    tResult["statistics"] = nullptr;
    tagRTSPPackageInfo tInfo{};
    if (TessaroExtra_GetStreamStatistics(tStream.Id(), &tInfo) == eResultOk)
    {
        tResult["statistics"] = ToJson(tInfo);
    }
    return tResult;
}

json Describe(CSession const& tSession)
{
    json tResult = {{"address", tSession.Address().strText}, {"protocol", NameOf(tSession.Address().eProtocol)}};
    if (tSession.IsRtsp())
    {
        tResult["stream"] = DescribeStream(tSession);
        return tResult;
    }
    int nLevel = 0;
    ClientAdapter_GetLoginLevel(tSession.Login(), &nLevel);
    tResult["user"] = {{"name", tSession.Address().strUser},
                       {"level", nLevel == 0 ? json(nullptr) : json(NameOf(static_cast<eUserLevel>(nLevel)))}};
    Add<tagConfigIdentity>(tResult, "identity", tSession, eConfigIdentity);
    Add<tagConfigNetwork>(tResult, "network", tSession, eConfigNetwork, eInterfaceOfLogin);
    tagConfigClock tClock{};
    if (tSession.Read(eConfigClock, 0, tClock) == eResultOk)
    {
        tResult["clock"] = ToJson(tClock);
        tResult["clock"]["ahead_ms"] = (tClock.llTimeUs - NowUs()) / 1000;
    }
    Add<tagConfigStorage>(tResult, "storage", tSession, eConfigStorage);
    for (unsigned int i = 0; i < tSession.Channels(); ++i)
    {
        tResult["channels"].push_back(Channel(tSession, i));
    }
    return tResult;
}

void Show(COutput& tOut, json const& t)
{
    tOut.Fields({{"address", t["address"]}, {"protocol", t["protocol"]}});
    for (char const* const szKey : {"user", "identity", "stream"})
    {
        if (t.contains(szKey))
        {
            tOut.Fields(t[szKey]);
        }
    }
    if (t.contains("network"))
    {
        tOut.Say("network address {}/{}, mac {}", t["network"]["address"].get<std::string>(),
                 t["network"]["prefix_length"].dump(), t["network"]["mac"].get<std::string>());
    }
    if (t.contains("clock"))
    {
        tOut.Say("clock {}, {} ms ahead of this machine's", t["clock"]["time"].get<std::string>(),
                 t["clock"]["ahead_ms"].dump());
    }
    if (!t.contains("channels"))
    {
        return;
    }
    json tRows = json::array();
    for (json const& tChannel : t["channels"])
    {
        tRows.push_back({{"channel", tChannel["channel"]}, {"moves", tChannel["moves"]}});
        for (char const* const szKey : {"main", "sub"})
        {
            tRows.back()[szKey] = tChannel.contains(szKey) ? StreamText(tChannel[szKey]) : "";
        }
        tRows.back()["audio"] = tChannel.contains("audio") ? tChannel["audio"]["codec"] : json("");
    }
    tOut.Say("");
    tOut.Table({{"CHANNEL", "channel"}, {"MAIN", "main"}, {"SUB", "sub"}, {"AUDIO", "audio"}, {"MOVES", "moves"}},
               tRows);
}

// Every operation of the protocols that were logged in to, one column for each device: what its plug-in has, and what
// the device answered where a question changes nothing.
json Matrix(std::vector<std::unique_ptr<CSession>> const& apSessions)
{
    json tRows = json::array();
    std::map<std::string, std::size_t> tRowOf;
    for (auto const& pSession : apSessions)
    {
        const std::string strDevice = pSession->Address().strText;
        auto tEntry = Sized<tagEntryPoint>();
        for (unsigned int i = 0; TessaroExtra_GetEntryPoint(pSession->Address().eProtocol, i, &tEntry) == eResultOk;
             ++i)
        {
            std::vector<std::pair<std::string, std::string>> atCells;
            for (tagQuestion const& tQuestion : Questions())
            {
                if (Text(tEntry.szOperation) == tQuestion.szOperation && tEntry.dwState == eEntryPointThere &&
                    !pSession->IsRtsp())
                {
                    const std::string strDetail = tQuestion.szDetail;
                    atCells.emplace_back(tQuestion.szOperation + (strDetail.empty() ? "" : " " + strDetail),
                                         AnswerText(tQuestion.pfnAsk(*pSession)));
                }
            }
            if (atCells.empty())
            {
                atCells.emplace_back(Text(tEntry.szOperation),
                                     tEntry.dwState == eEntryPointThere ? "there" : "missing");
            }
            for (auto const& [strOperation, strAnswer] : atCells)
            {
                const auto [it, bNew] = tRowOf.try_emplace(strOperation, tRows.size());
                if (bNew)
                {
                    tRows.push_back({{"operation", strOperation}});
                }
                tRows[it->second][strDevice] = strAnswer;
            }
        }
    }
    return tRows;
}

int Run(tagContext& tContext, tagInfoOptions const& tOptions)
{
    std::vector<std::unique_ptr<CSession>> apSessions;
    json tDevices = json::array();
    for (std::string const& strAddress : tOptions.astrAddresses)
    {
        apSessions.push_back(std::make_unique<CSession>(tContext, strAddress));
        tDevices.push_back(Describe(*apSessions.back()));
        Show(tContext.tOut, tDevices.back());
        tContext.tOut.Say("");
    }
    json tResult = {{"devices", tDevices}};
    if (tOptions.bMatrix)
    {
        tResult["matrix"] = Matrix(apSessions);
        std::vector<tagColumn> atColumns{{"OPERATION", "operation"}};
        for (auto const& pSession : apSessions)
        {
            atColumns.push_back({pSession->Address().strText.c_str(), pSession->Address().strText.c_str()});
        }
        tContext.tOut.Table(atColumns, tResult["matrix"]);
        tContext.tOut.Say(
            "\nyes, no: the device's answer   there: the plug-in has it, it wasn't tried   missing: it hasn't\n"
            "forbidden: not for this user   silent: no answer in time");
    }
    tContext.tOut.Result(tResult);
    return eExitDone;
}
} // namespace

void DeclareInfo(CLine& tLine)
{
    auto pt = std::make_shared<tagInfoOptions>();
    tLine.Option("address", pt->astrAddresses, g_szAddressHelp).Needed();
    tLine.Flag("--matrix", pt->bMatrix, "also what each device can do: all operations, a column for each device");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
