// The service of what a decoder shows: panes, and where they lie on its screens.

#include "tools/onvif_device/Call.h"

namespace onvif_device
{
namespace
{
uint32_t ScreenAt(CCall& tCall)
{
    return tCall.Index({"VideoOutput"}, "VideoOutput", tCall.Device().Blueprint().dwScreens, "ter:NoVideoOutput");
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
                for (auto const& tEntry : tCall.Face().Decoder().Panes())
                {
                    tagPane const& t = tEntry.second;
                    if (t.bShown && t.dwScreen == dwScreen)
                    {
                        tXml.In("tt:PaneLayout",
                                [&]
                                {
                                    tXml.Put("tt:Pane", Token("Pane", {tEntry.first}));
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
constexpr tagAction g_atActions[] = {
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

std::span<tagAction const> DisplayActions()
{
    return g_atActions;
}
} // namespace onvif_device
