// The service of what fetches streams for a decoder.

#include "tools/onvif_device/Call.h"

namespace onvif_device
{
namespace
{
constexpr uint32_t g_dwReceivers = 64;

uint32_t ReceiverAt(CCall& tCall, std::map<uint32_t, tagReceiver> const& tReceivers)
{
    uint32_t dwReceiver = 0;
    if (!ParseToken(tCall.Text({"ReceiverToken"}), "Receiver", {&dwReceiver}) || !tReceivers.contains(dwReceiver))
    {
        FailValue("ter:UnknownToken", "there is no receiver " + tCall.Text({"ReceiverToken"}));
    }
    return dwReceiver;
}

void WriteReceiver(CCall& tCall, char const* szElement, uint32_t dwReceiver, tagReceiver const& t)
{
    CXml& tXml = tCall.Xml();
    tXml.In(szElement,
            [&]
            {
                tXml.Put("tt:Token", Token("Receiver", {dwReceiver}));
                tXml.In("tt:Configuration",
                        [&]
                        {
                            tXml.Put("tt:Mode", t.strMode).Put("tt:MediaUri", t.strUri);
                            tXml.In("tt:StreamSetup",
                                    [&]
                                    {
                                        tXml.Put("tt:Stream", t.strStream);
                                        tXml.In("tt:Transport", [&] { tXml.Put("tt:Protocol", t.strProtocol); });
                                    });
                        });
            });
}

tagReceiver ReadReceiver(CCall& tCall)
{
    tagReceiver t;
    tCall.Word({"Configuration", "Mode"}, {"AutoConnect", "AlwaysConnect", "NeverConnect"});
    t.strMode = tCall.Text({"Configuration", "Mode"});
    t.strUri = tCall.Text({"Configuration", "MediaUri"});
    t.strStream = tCall.Text({"Configuration", "StreamSetup", "Stream"});
    t.strProtocol = tCall.Text({"Configuration", "StreamSetup", "Transport", "Protocol"});
    if (!t.strUri.starts_with("rtsp://") || t.strUri.size() > 255)
    {
        FailValue("ter:BadConfiguration", "a receiver fetches rtsp:// alone");
    }
    return t;
}

void GetReceivers(CCall& tCall)
{
    for (auto const& [dwReceiver, t] : tCall.Face().Decoder().Receivers())
    {
        WriteReceiver(tCall, "trv:Receivers", dwReceiver, t);
    }
}

void GetReceiver(CCall& tCall)
{
    const auto tReceivers = tCall.Face().Decoder().Receivers();
    const uint32_t dwReceiver = ReceiverAt(tCall, tReceivers);
    WriteReceiver(tCall, "trv:Receiver", dwReceiver, tReceivers.at(dwReceiver));
}

void CreateReceiver(CCall& tCall)
{
    auto tReceivers = tCall.Face().Decoder().Receivers();
    if (tReceivers.size() == g_dwReceivers)
    {
        FailAction("ter:MaxReceivers", "there are as many receivers as there can be");
    }
    uint32_t dwReceiver = 0;
    while (tReceivers.contains(dwReceiver))
    {
        ++dwReceiver;
    }
    tReceivers[dwReceiver] = ReadReceiver(tCall);
    WriteReceiver(tCall, "trv:Receiver", dwReceiver, tReceivers[dwReceiver]);
    tCall.Face().Decoder().SetReceivers(std::move(tReceivers));
}

// Changes one, and what panes show of it.
template <class F>
void ChangeReceiver(CCall& tCall, F fnChange)
{
    auto tReceivers = tCall.Face().Decoder().Receivers();
    fnChange(tReceivers, ReceiverAt(tCall, tReceivers));
    tCall.Face().Decoder().SetReceivers(std::move(tReceivers));
    ShowPanes(tCall);
}

void DeleteReceiver(CCall& tCall)
{
    ChangeReceiver(tCall, [](auto& tReceivers, uint32_t dw) { tReceivers.erase(dw); });
}

void ConfigureReceiver(CCall& tCall)
{
    ChangeReceiver(tCall, [&](auto& tReceivers, uint32_t dw) { tReceivers[dw] = ReadReceiver(tCall); });
}

void SetReceiverMode(CCall& tCall)
{
    tCall.Word({"Mode"}, {"AutoConnect", "AlwaysConnect", "NeverConnect"});
    ChangeReceiver(tCall, [&](auto& tReceivers, uint32_t dw) { tReceivers[dw].strMode = tCall.Text({"Mode"}); });
}

void GetReceiverState(CCall& tCall)
{
    const std::string strToken = Token("Receiver", {ReceiverAt(tCall, tCall.Face().Decoder().Receivers())});
    char const* szState = "NotConnected";
    const auto tWall = tCall.Device().WallView();
    for (auto const& [dwPane, tPane] : tCall.Face().Decoder().Panes())
    {
        for (device::tagWindowView const& t : tWall.atWindows)
        {
            const bool bShows = tPane.strReceiver == strToken && t.tPlace.dwChannel == dwPane;
            szState = bShows && t.tStatus.dwState == eWindowShowing      ? "Connected"
                      : bShows && t.tStatus.dwState == eWindowConnecting ? "Connecting"
                                                                         : szState;
        }
    }
    tCall.Xml().In("trv:ReceiverState", [&] { tCall.Xml().Put("tt:State", szState).Put("tt:AutoCreated", false); });
}

#define ONVIF_RECEIVER "Configuration{Mode MediaUri StreamSetup{Stream Transport{Protocol Tunnel{...}?}} ...}"
constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Receiver>},
    {"GetReceivers", eUserViewer, "", GetReceivers},
    {"GetReceiver", eUserViewer, "ReceiverToken", GetReceiver},
    {"CreateReceiver", eUserOperator, ONVIF_RECEIVER, CreateReceiver},
    {"DeleteReceiver", eUserOperator, "ReceiverToken", DeleteReceiver},
    {"ConfigureReceiver", eUserOperator, "ReceiverToken " ONVIF_RECEIVER, ConfigureReceiver},
    {"SetReceiverMode", eUserOperator, "ReceiverToken Mode", SetReceiverMode},
    {"GetReceiverState", eUserViewer, "ReceiverToken", GetReceiverState},
};
} // namespace

std::span<tagAction const> ReceiverActions()
{
    return g_atActions;
}
} // namespace onvif_device
