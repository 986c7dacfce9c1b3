// The services of a decoder: receivers, which fetch streams, and panes, which show them.

#include "tools/onvif_device/Call.h"
#include "tools/onvif_device/Overlay.h"
#include "tools/onvif_device/RtspSide.h"

#include <cmath>

namespace onvif_device
{
namespace
{
using device::Text;

constexpr uint32_t g_dwReceivers = 64;
constexpr double g_fWhole = 10000;

uint32_t Screens(CCall& tCall)
{
    return tCall.Device().Spec().dwScreens;
}

// --- receivers -------------------------------------------------------------------------------------------------------

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
constexpr tagAction g_atReceiverActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Receiver>},
    {"GetReceivers", eUserViewer, "", GetReceivers},
    {"GetReceiver", eUserViewer, "ReceiverToken", GetReceiver},
    {"CreateReceiver", eUserOperator, ONVIF_RECEIVER, CreateReceiver},
    {"DeleteReceiver", eUserOperator, "ReceiverToken", DeleteReceiver},
    {"ConfigureReceiver", eUserOperator, "ReceiverToken " ONVIF_RECEIVER, ConfigureReceiver},
    {"SetReceiverMode", eUserOperator, "ReceiverToken Mode", SetReceiverMode},
    {"GetReceiverState", eUserViewer, "ReceiverToken", GetReceiverState},
};

// --- what panes amount to on the wall --------------------------------------------------------------------------------

// The device and stream of this program's that an address leads to; else the address itself, without the credentials
// that it may hold.
tagDecoderSource SourceOf(CCall& tCall, std::string strUri)
{
    tagDecoderSource t{};
    const auto nHost = strUri.find("//") + 2;
    const auto nPath = std::min(strUri.find('/', nHost), strUri.size());
    if (const auto nAt = strUri.rfind('@', nPath); nAt != std::string::npos && nAt >= nHost)
    {
        const std::string strLogin = strUri.substr(nHost, nAt - nHost);
        const auto nColon = std::min(strLogin.find(':'), strLogin.size());
        device::CopyText(t.szUserName, strLogin.substr(0, nColon));
        device::CopyText(t.szPassword, strLogin.substr(std::min(nColon + 1, strLogin.size())));
        strUri.erase(nHost, nAt + 1 - nHost);
    }
    t.dwKind = eDecoderSourceAddress;
    device::CopyText(t.szAddress, strUri);
    IRtspSide const& tRtsp = tCall.Face().Rtsp();
    auto const& apDevices = tCall.Face().Fleet();
    for (std::size_t i = 0; i < apDevices.size(); ++i)
    {
        const std::string strPort = ':' + std::to_string(tRtsp.Port(i)) + '/';
        for (uint32_t n = 0; n < 2 * apDevices[i]->Channels(); ++n)
        {
            const uint32_t dwKind = n % 2 == 0 ? eStreamMain : eStreamSub;
            if (strUri.find(strPort) != std::string::npos && strUri.ends_with(tRtsp.StreamPath(i, n / 2, dwKind)))
            {
                t.dwKind = eDecoderSourceDevice;
                t.dwPort = apDevices[i]->Spec().dwPort;
                t.dwChannel = n / 2;
                t.dwStreamKind = dwKind;
                device::CopyText(t.szAddress, apDevices[i]->Spec().strAddress);
            }
        }
    }
    return t;
}

// Where a pane lies on the whole wall, whose screens stand in one row.
tagDecoderWindow PlaceOf(uint32_t dwPane, tagPane const& t, uint32_t dwScreens)
{
    tagDecoderWindow tWindow{};
    const double fLeft = (t.dwScreen + (t.fLeft + 1) / 2) / dwScreens;
    const double fRight = (t.dwScreen + (t.fRight + 1) / 2) / dwScreens;
    tWindow.dwChannel = dwPane;
    tWindow.dwLeft = static_cast<uint32_t>(std::lround(fLeft * g_fWhole));
    tWindow.dwWidth = static_cast<uint32_t>(std::lround(fRight * g_fWhole)) - tWindow.dwLeft;
    tWindow.dwTop = FromY(t.fTop);
    tWindow.dwHeight = FromY(t.fBottom) - tWindow.dwTop;
    return tWindow;
}

void BindWindow(CCall& tCall, uint32_t dwPane, tagPane const& tPane, tagReceiver const* ptReceiver)
{
    tagDecoderChannelConfig tConfig{};
    tConfig.dwSize = sizeof tConfig;
    device::CopyText(tConfig.szName, tPane.strName);
    if (ptReceiver && ptReceiver->strMode != "NeverConnect")
    {
        tConfig.tSource = SourceOf(tCall, ptReceiver->strUri);
    }
    const auto tLock = tCall.Lock();
    Require(tCall.Part<device::CWall>().SetWindow(tCall.Caller(), dwPane, &tConfig), "ter:NoPane");
}
} // namespace

void ShowPanes(CCall& tCall)
{
    const auto tPanes = tCall.Face().Decoder().Panes();
    const auto tReceivers = tCall.Face().Decoder().Receivers();
    std::vector<tagDecoderWindow> atWindows;
    for (auto const& [dwPane, t] : tPanes)
    {
        if (t.bShown)
        {
            atWindows.push_back(PlaceOf(dwPane, t, Screens(tCall)));
        }
    }
    tagDecoderDeviceConfig tLayout{};
    tLayout.dwSize = sizeof tLayout;
    tLayout.dwRows = 1;
    tLayout.dwColumns = Screens(tCall);
    tLayout.dwEntrySize = sizeof(tagDecoderWindow);
    tLayout.dwCount = static_cast<uint32_t>(atWindows.size());
    tLayout.ptEntries = atWindows.data();
    {
        const auto tLock = tCall.Lock();
        Require(tCall.Part<device::CWall>().SetLayout(tCall.Caller(), &tLayout), "ter:NoVideoOutput");
    }
    for (tagDecoderWindow const& tWindow : atWindows)
    {
        tagPane const& tPane = tPanes.at(tWindow.dwChannel);
        uint32_t dwReceiver = 0;
        const bool bReceiver =
            ParseToken(tPane.strReceiver, "Receiver", {&dwReceiver}) && tReceivers.contains(dwReceiver);
        BindWindow(tCall, tWindow.dwChannel, tPane, bReceiver ? &tReceivers.at(dwReceiver) : nullptr);
    }
}

namespace
{
// --- panes -----------------------------------------------------------------------------------------------------------

uint32_t ScreenAt(CCall& tCall)
{
    return tCall.Index({"VideoOutput"}, "VideoOutput", Screens(tCall), "ter:NoVideoOutput");
}

uint32_t PaneAt(std::string const& strToken, uint32_t dwScreen, std::map<uint32_t, tagPane> const& tPanes)
{
    uint32_t dwPane = 0;
    if (!ParseToken(strToken, "Pane", {&dwPane}) || !tPanes.contains(dwPane) || tPanes.at(dwPane).dwScreen != dwScreen)
    {
        FailValue("ter:NoPane", "there is no pane " + strToken);
    }
    return dwPane;
}

void WritePane(CCall& tCall, uint32_t dwPane, tagPane const& t)
{
    CXml& tXml = tCall.Xml();
    tXml.In("tls:PaneConfiguration",
            [&]
            {
                tXml.Put("tt:PaneName", t.strName);
                if (t.bAudio)
                {
                    tXml.Put("tt:AudioOutputToken", "AudioOutput_0");
                }
                if (!t.strReceiver.empty())
                {
                    tXml.Put("tt:ReceiverToken", t.strReceiver);
                }
                tXml.Put("tt:Token", Token("Pane", {dwPane}));
            });
}

void ReadPane(CCall& tCall, pugi::xml_node tNode, tagPane& t)
{
    const std::string strReceiver = ChildText(tNode, "ReceiverToken");
    uint32_t dwReceiver = 0;
    if (!strReceiver.empty() && (!ParseToken(strReceiver, "Receiver", {&dwReceiver}) ||
                                 !tCall.Face().Decoder().Receivers().contains(dwReceiver)))
    {
        FailValue("ter:NoReceiver", "there is no receiver " + strReceiver);
    }
    t.strName = ChildText(tNode, "PaneName");
    t.strReceiver = strReceiver;
    t.bAudio = !ChildText(tNode, "AudioOutputToken").empty();
}

void GetLayout(CCall& tCall)
{
    const uint32_t dwScreen = ScreenAt(tCall);
    CXml& tXml = tCall.Xml();
    tXml.In("tls:Layout",
            [&]
            {
                for (auto const& [dwPane, t] : tCall.Face().Decoder().Panes())
                {
                    if (t.bShown && t.dwScreen == dwScreen)
                    {
                        tXml.In("tt:PaneLayout",
                                [&]
                                {
                                    tXml.Put("tt:Pane", Token("Pane", {dwPane}));
                                    tXml.Empty("tt:Area", {{"bottom", CXml::Number(t.fBottom)},
                                                           {"top", CXml::Number(t.fTop)},
                                                           {"right", CXml::Number(t.fRight)},
                                                           {"left", CXml::Number(t.fLeft)}});
                                });
                    }
                }
            });
}

double Edge(pugi::xml_node tArea, char const* szName)
{
    double fValue = 0;
    if (!ParseNumber(tArea.attribute(szName).value(), fValue) || fValue < -1 || fValue > 1)
    {
        FailValue("ter:InvalidLayout", std::string(szName) + " is out of its range");
    }
    return fValue;
}

void SetLayout(CCall& tCall)
{
    const uint32_t dwScreen = ScreenAt(tCall);
    auto tPanes = tCall.Face().Decoder().Panes();
    for (auto& [dwPane, t] : tPanes)
    {
        t.bShown = t.bShown && t.dwScreen != dwScreen;
    }
    for (const pugi::xml_node tNode : tCall.At({"Layout"}).children())
    {
        if (LocalName(tNode) != "PaneLayout")
        {
            continue;
        }
        tagPane& t = tPanes[PaneAt(ChildText(tNode, "Pane"), dwScreen, tPanes)];
        const pugi::xml_node tArea = Child(tNode, "Area");
        t.fLeft = Edge(tArea, "left");
        t.fRight = Edge(tArea, "right");
        t.fTop = Edge(tArea, "top");
        t.fBottom = Edge(tArea, "bottom");
        t.bShown = true;
        if (t.fRight - t.fLeft < 0.001 || t.fTop - t.fBottom < 0.001)
        {
            FailValue("ter:InvalidLayout", "a pane has no area");
        }
    }
    tCall.Face().Decoder().SetPanes(std::move(tPanes));
    ShowPanes(tCall);
}

void GetPaneConfigurations(CCall& tCall)
{
    const uint32_t dwScreen = ScreenAt(tCall);
    for (auto const& [dwPane, t] : tCall.Face().Decoder().Panes())
    {
        if (t.dwScreen == dwScreen)
        {
            WritePane(tCall, dwPane, t);
        }
    }
}

void GetPaneConfiguration(CCall& tCall)
{
    const auto tPanes = tCall.Face().Decoder().Panes();
    const uint32_t dwPane = PaneAt(tCall.Text({"Pane"}), ScreenAt(tCall), tPanes);
    WritePane(tCall, dwPane, tPanes.at(dwPane));
}

// One or several.
void SetPaneConfigurations(CCall& tCall)
{
    const uint32_t dwScreen = ScreenAt(tCall);
    auto tPanes = tCall.Face().Decoder().Panes();
    for (const pugi::xml_node tNode : tCall.Request().children())
    {
        if (LocalName(tNode) == "PaneConfiguration")
        {
            ReadPane(tCall, tNode, tPanes[PaneAt(ChildText(tNode, "Token"), dwScreen, tPanes)]);
        }
    }
    tCall.Face().Decoder().SetPanes(std::move(tPanes));
    ShowPanes(tCall);
}

void CreatePaneConfiguration(CCall& tCall)
{
    const uint32_t dwScreen = ScreenAt(tCall);
    auto tPanes = tCall.Face().Decoder().Panes();
    uint32_t dwPane = dwScreen * eWindowsOfScreen;
    while (tPanes.contains(dwPane))
    {
        ++dwPane;
    }
    if (dwPane >= (dwScreen + 1) * eWindowsOfScreen)
    {
        FailAction("ter:MaxPanes", "the screen has as many panes as it can have");
    }
    tagPane t;
    t.dwScreen = dwScreen;
    ReadPane(tCall, tCall.At({"PaneConfiguration"}), t);
    tPanes[dwPane] = t;
    tCall.Face().Decoder().SetPanes(std::move(tPanes));
    tCall.Xml().Put("tls:PaneToken", Token("Pane", {dwPane}));
}

void DeletePaneConfiguration(CCall& tCall)
{
    auto tPanes = tCall.Face().Decoder().Panes();
    tPanes.erase(PaneAt(tCall.Text({"PaneToken"}), ScreenAt(tCall), tPanes));
    tCall.Face().Decoder().SetPanes(std::move(tPanes));
    ShowPanes(tCall);
}

void GetDisplayOptions(CCall& tCall)
{
    ScreenAt(tCall);
    tCall.Xml().In("tls:CodingCapabilities",
                   [&]
                   {
                       tCall.Xml().In("tt:VideoDecodingCapabilities",
                                      [&]
                                      {
                                          tCall.Xml().In("tt:H264DecOptions",
                                                         [&]
                                                         {
                                                             tCall.Xml().In("tt:ResolutionsAvailable",
                                                                            [&]
                                                                            {
                                                                                tCall.Xml().Put("tt:Width", 1920);
                                                                                tCall.Xml().Put("tt:Height", 1080);
                                                                            });
                                                             tCall.Xml().Put("tt:SupportedH264Profiles", "Main");
                                                             tCall.Xml().Range("tt:SupportedInputBitrate", 16, 32000);
                                                             tCall.Xml().Range("tt:SupportedFrameRate", 1, 30);
                                                         });
                                      });
                   });
}

#define ONVIF_PANE                                                                                                     \
    "PaneConfiguration{PaneName? AudioOutputToken? AudioSourceToken? AudioEncoderConfiguration{...}? ReceiverToken? "  \
    "Token ...}"
constexpr tagAction g_atDisplayActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Display>},
    {"GetLayout", eUserViewer, "VideoOutput ...", GetLayout},
    {"SetLayout", eUserOperator,
     "VideoOutput Layout{PaneLayout{Pane Area[bottom top right left] ...}+ Extension{...}?} ...", SetLayout},
    {"GetDisplayOptions", eUserViewer, "VideoOutput ...", GetDisplayOptions},
    {"GetPaneConfigurations", eUserViewer, "VideoOutput ...", GetPaneConfigurations},
    {"GetPaneConfiguration", eUserViewer, "VideoOutput Pane ...", GetPaneConfiguration},
    {"SetPaneConfigurations", eUserOperator, "VideoOutput " ONVIF_PANE "+", SetPaneConfigurations},
    {"SetPaneConfiguration", eUserOperator, "VideoOutput " ONVIF_PANE " ...", SetPaneConfigurations},
    {"CreatePaneConfiguration", eUserOperator, "VideoOutput " ONVIF_PANE " ...", CreatePaneConfiguration},
    {"DeletePaneConfiguration", eUserOperator, "VideoOutput PaneToken ...", DeletePaneConfiguration},
};
} // namespace

std::span<tagAction const> ReceiverActions()
{
    return g_atReceiverActions;
}

std::span<tagAction const> DisplayActions()
{
    return g_atDisplayActions;
}
} // namespace onvif_device
