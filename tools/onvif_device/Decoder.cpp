// What panes amount to on the model's wall.

#include "tools/onvif_device/Decoder.h"

#include "tools/onvif_device/Call.h"
#include "tools/onvif_device/Overlay.h"
#include "tools/onvif_device/RtspSide.h"

#include <cmath>

namespace onvif_device
{
namespace
{
constexpr double g_fWhole = 10000;

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
                t.dwPort = apDevices[i]->Blueprint().dwPort;
                t.dwChannel = n / 2;
                t.dwStreamKind = dwKind;
                device::CopyText(t.szAddress, apDevices[i]->Blueprint().strAddress);
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
            atWindows.push_back(PlaceOf(dwPane, t, tCall.Device().Blueprint().dwScreens));
        }
    }
    tagDecoderDeviceConfig tLayout{};
    tLayout.dwSize = sizeof tLayout;
    tLayout.dwRows = 1;
    tLayout.dwColumns = tCall.Device().Blueprint().dwScreens;
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
} // namespace onvif_device
