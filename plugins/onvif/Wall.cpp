// Decoder walls: screens, panes, layouts.

#include "plugins/onvif/Wall.h"

#include "plugins/common/SplitScreen.h"
#include "plugins/common/Text.h"
#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Profiles.h"

#include "protocol/Record.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>
#include <utility>

namespace onvifclient
{
namespace
{
using Adapter_ProtocolSet::ReadEntry;
using Adapter_ProtocolSet::ReadRecord;
using Adapter_ProtocolSet::WriteList;
using Adapter_ProtocolSet::WriteRecord;
using onvif::CAnswer;
using onvif::CXmlWriter;
using onvif::eService;

constexpr uint32_t g_dwWindows = 1024;

double NumberOr(std::string_view strText, double dElse)
{
    double d = dElse;
    std::from_chars(strText.data(), strText.data() + strText.size(), d);
    return std::isfinite(d) ? d : dElse;
}

// A part of a screen, -1 to 1 from the left and from the bottom, as a place on the wall.
tagDecoderWindow PlaceOf(pugi::xml_node tArea, std::size_t iScreen, std::size_t nScreens)
{
    const auto fnShare = [&](char const* szName, double dElse, bool bDown)
    {
        const double d = NumberOr(onvif::Attribute(tArea, szName), dElse);
        return std::clamp(bDown ? (1 - d) / 2 : (d + 1) / 2, 0.0, 1.0);
    };
    const auto fnWide = [&](double d)
    {
        return static_cast<uint32_t>(
            std::lround((static_cast<double>(iScreen) + d) * g_dwWhole / static_cast<double>(nScreens)));
    };
    const auto fnHigh = [](double d) { return static_cast<uint32_t>(std::lround(d * g_dwWhole)); };
    tagDecoderWindow t{};
    t.dwLeft = fnWide(fnShare("left", -1, false));
    t.dwWidth = std::max(fnWide(fnShare("right", 1, false)), t.dwLeft) - t.dwLeft;
    t.dwTop = fnHigh(fnShare("top", 1, true));
    t.dwHeight = std::max(fnHigh(fnShare("bottom", -1, true)), t.dwTop) - t.dwTop;
    return t;
}

void PutArea(CXmlWriter& tBody, tagDecoderWindow const& t, std::size_t iScreen, std::size_t nScreens)
{
    const auto fnWide = [&](uint32_t dw) {
        return onvif::NumberText((dw * static_cast<double>(nScreens) / g_dwWhole - static_cast<double>(iScreen)) * 2 -
                                 1);
    };
    const auto fnHigh = [](uint32_t dw) { return onvif::NumberText(1 - dw * 2.0 / g_dwWhole); };
    tBody.Open("tt:Area").Attribute("bottom", fnHigh(t.dwTop + t.dwHeight)).Attribute("top", fnHigh(t.dwTop));
    tBody.Attribute("right", fnWide(t.dwLeft + t.dwWidth)).Attribute("left", fnWide(t.dwLeft)).Close();
}

// The screen that a window lies on; nScreens: on none alone.
std::size_t ScreenOf(tagDecoderWindow const& t, std::size_t nScreens)
{
    const std::size_t i = std::min<std::size_t>(t.dwLeft * nScreens / g_dwWhole, nScreens - 1);
    const bool bFits = (t.dwLeft + t.dwWidth) * nScreens <= (i + 1) * g_dwWhole + nScreens;
    return bFits ? i : nScreens;
}

bool IsPlace(tagDecoderWindow const& t)
{
    return t.dwChannel < g_dwWindows && t.dwWidth >= 1 && t.dwHeight >= 1 && t.bHidden <= 1 && t.dwLeft <= g_dwWhole &&
           t.dwTop <= g_dwWhole && t.dwWidth <= g_dwWhole - t.dwLeft && t.dwHeight <= g_dwWhole - t.dwTop;
}

std::string KeyOf(std::string const& strScreen, std::string const& strPane)
{
    return strScreen + '/' + strPane;
}
} // namespace

// --- what there is ---------------------------------------------------------------------------------------------------

int CWall::Screens(std::vector<tagScreen>& atScreens)
{
    if (!m_tLogin.Client().Has(eService::Display) || !m_tLogin.Client().Has(eService::DeviceIO))
    {
        return eResultNotSupported;
    }
    const CAnswer tAnswer = m_tLogin.Call({eService::DeviceIO, "GetVideoOutputs"});
    for (pugi::xml_node const& tOutput : onvif::Children(tAnswer.Body(), "VideoOutputs"))
    {
        tagScreen& t = atScreens.emplace_back();
        t.strToken = onvif::Attribute(tOutput, "token");
        t.dwWidth = static_cast<uint32_t>(onvif::Integer(tOutput, "Resolution/Width").value_or(0));
        t.dwHeight = static_cast<uint32_t>(onvif::Integer(tOutput, "Resolution/Height").value_or(0));
        t.dwFrameRate = static_cast<uint32_t>(onvif::Number(tOutput, "RefreshRate").value_or(0) * 1000);
    }
    return !tAnswer ? tAnswer.Result() : atScreens.empty() ? int{eResultNotSupported} : int{eResultOk};
}

int CWall::ReadPanes(std::vector<tagScreen> const& atScreens, std::size_t iScreen, std::vector<tagPane>& atPanes)
{
    std::string const& strScreen = atScreens[iScreen].strToken;
    const std::string strBody = CXmlWriter().Add("tls:VideoOutput", strScreen).Take();
    const CAnswer tConfigs = m_tLogin.Call({eService::Display, "GetPaneConfigurations", strBody});
    if (!tConfigs)
    {
        return tConfigs.Result();
    }
    const CAnswer tLayout = m_tLogin.Call({eService::Display, "GetLayout", strBody});
    if (!tLayout)
    {
        return tLayout.Result();
    }
    const auto atPlaced = onvif::Children(onvif::Child(tLayout.Body(), "Layout"), "PaneLayout");
    const std::lock_guard tLock(m_pShared->tMutex);
    uint32_t dwNext = static_cast<uint32_t>(iScreen) * eWindowsOfScreen;
    for (pugi::xml_node const& tConfig : onvif::Children(tConfigs.Body(), "PaneConfiguration"))
    {
        tagPane t;
        t.iScreen = iScreen;
        t.strToken = onvif::Text(tConfig, "Token");
        t.strName = onvif::Text(tConfig, "PaneName");
        t.strReceiver = onvif::Text(tConfig, "ReceiverToken");
        t.strAudioOutput = onvif::Text(tConfig, "AudioOutputToken");
        const auto [it, bNew] = m_pShared->tNumbers.try_emplace(KeyOf(strScreen, t.strToken), dwNext);
        t.dwWindow = it->second;
        dwNext = std::max(dwNext, t.dwWindow + 1);
        for (std::size_t i = 0; i < atPlaced.size(); ++i)
        {
            if (onvif::Text(atPlaced[i], "Pane") == t.strToken)
            {
                t.bPlaced = true;
                t.tPlace = PlaceOf(onvif::Child(atPlaced[i], "Area"), iScreen, atScreens.size());
                t.tPlace.dwLayer = static_cast<uint32_t>(i);
            }
        }
        t.tPlace.dwChannel = t.dwWindow;
        t.tPlace.bHidden = t.bPlaced ? 0 : 1;
        atPanes.push_back(std::move(t));
    }
    return eResultOk;
}

int CWall::Read(std::vector<tagScreen>& atScreens, std::vector<tagPane>& atPanes)
{
    int nResult = Screens(atScreens);
    for (std::size_t i = 0; i < atScreens.size() && nResult == eResultOk; ++i)
    {
        nResult = ReadPanes(atScreens, i, atPanes);
    }
    std::ranges::sort(atPanes, {}, &tagPane::dwWindow);
    return nResult;
}

int CWall::Find(uint32_t dwWindow, std::vector<tagScreen>& atScreens, tagPane& tPane)
{
    std::vector<tagPane> atPanes;
    if (const int nResult = Read(atScreens, atPanes))
    {
        return nResult;
    }
    const auto it = std::ranges::find(atPanes, dwWindow, &tagPane::dwWindow);
    if (it == atPanes.end())
    {
        return eResultNoChannel;
    }
    tPane = *it;
    return eResultOk;
}

void CWall::Number(tagPlaces::Numbers& tWindows)
{
    std::vector<tagScreen> atScreens;
    std::vector<tagPane> atPanes;
    Read(atScreens, atPanes);
    for (tagPane const& t : atPanes)
    {
        if (!t.strReceiver.empty())
        {
            tWindows.try_emplace(t.strReceiver, t.dwWindow);
        }
    }
}

// --- layout ----------------------------------------------------------------------------------------------------------

int CWall::Layout(tagDecoderDeviceConfig* ptConfig)
{
    tagDecoderDeviceConfig tConfig{};
    std::vector<tagScreen> atScreens;
    std::vector<tagPane> atPanes;
    if (ReadRecord(tConfig, ptConfig) != eResultOk)
    {
        return eResultBadArgument;
    }
    if (const int nResult = Read(atScreens, atPanes))
    {
        return nResult;
    }
    std::vector<tagDecoderWindow> atWindows;
    std::ranges::transform(atPanes, std::back_inserter(atWindows), &tagPane::tPlace);
    if (const int nResult = WriteList(ptConfig, atWindows.data(), atWindows.size()))
    {
        return nResult;
    }
    tConfig.dwRows = 1;
    tConfig.dwColumns = tConfig.dwScreens = static_cast<uint32_t>(atScreens.size());
    tConfig.dwCount = static_cast<uint32_t>(atWindows.size());
    std::ranges::fill(tConfig.szName, '\0');
    return WriteRecord(ptConfig, tConfig);
}

int CWall::Create(std::string const& strScreen, tagPane& tPane)
{
    CXmlWriter tBody;
    tBody.Add("tls:VideoOutput", strScreen).Open("tls:PaneConfiguration");
    tBody.Add("tt:PaneName", "Window " + std::to_string(tPane.dwWindow)).Add("tt:Token", "").Close();
    const CAnswer tAnswer = m_tLogin.Call({eService::Display, "CreatePaneConfiguration", tBody.Take()});
    tPane.strToken = onvif::Text(tAnswer.Body(), "PaneToken");
    return !tAnswer ? tAnswer.Result() : tPane.strToken.empty() ? int{eResultRefused} : int{eResultOk};
}

int CWall::Write(std::string const& strScreen, tagPane const& t)
{
    CXmlWriter tBody;
    tBody.Add("tls:VideoOutput", strScreen).Open("tls:PaneConfiguration");
    for (auto const& [szName, strText] : {std::pair{"tt:PaneName", t.strName},
                                          {"tt:AudioOutputToken", t.strAudioOutput},
                                          {"tt:ReceiverToken", t.strReceiver},
                                          {"tt:Token", t.strToken}})
    {
        if (!strText.empty())
        {
            tBody.Add(szName, strText);
        }
    }
    return m_tLogin.Call({eService::Display, "SetPaneConfiguration", tBody.Take()}).Result();
}

// One screen's windows: panes that are there keep what they show, others are made, and those that aren't wanted go.
int CWall::WriteScreen(tagScreen const& tScreen, std::size_t iScreen, std::size_t nScreens,
                       std::vector<tagPane> const& atBefore, std::vector<tagDecoderWindow> const& atWanted)
{
    CXmlWriter tLayout;
    tLayout.Add("tls:VideoOutput", tScreen.strToken).Open("tls:Layout");
    std::set<std::string> astrKept;
    for (tagDecoderWindow const& tWindow : atWanted)
    {
        const auto it = std::ranges::find_if(atBefore, [&](tagPane const& t)
                                             { return t.iScreen == iScreen && t.dwWindow == tWindow.dwChannel; });
        tagPane tPane;
        tPane.dwWindow = tWindow.dwChannel;
        if (it != atBefore.end())
        {
            tPane = *it;
        }
        else if (const int nResult = Create(tScreen.strToken, tPane))
        {
            return nResult;
        }
        astrKept.insert(tPane.strToken);
        {
            const std::lock_guard tLock(m_pShared->tMutex);
            m_pShared->tNumbers[KeyOf(tScreen.strToken, tPane.strToken)] = tPane.dwWindow;
        }
        if (!tWindow.bHidden)
        {
            tLayout.Open("tt:PaneLayout").Add("tt:Pane", tPane.strToken);
            PutArea(tLayout, tWindow, iScreen, nScreens);
            tLayout.Close();
        }
    }
    // A layout has one pane at least; where none is wanted, they go with their configurations.
    const bool bAny = std::ranges::any_of(atWanted, [](tagDecoderWindow const& t) { return !t.bHidden; });
    if (bAny)
    {
        if (const int nResult = m_tLogin.Call({eService::Display, "SetLayout", tLayout.Take()}).Result())
        {
            return nResult;
        }
    }
    for (tagPane const& t : atBefore)
    {
        if (t.iScreen == iScreen && !astrKept.contains(t.strToken))
        {
            // One that the device keeps is hidden: the layout doesn't have it.
            m_tLogin.Call(
                {eService::Display, "DeletePaneConfiguration",
                 CXmlWriter().Add("tls:VideoOutput", tScreen.strToken).Add("tls:PaneToken", t.strToken).Take()});
        }
    }
    return eResultOk;
}

int CWall::SetLayout(tagDecoderDeviceConfig const* ptConfig)
{
    tagDecoderDeviceConfig tConfig{};
    std::vector<tagScreen> atScreens;
    std::vector<tagPane> atBefore;
    if (ReadRecord(tConfig, ptConfig) != eResultOk || tConfig.dwCount > g_dwWindows ||
        (tConfig.dwCount != 0 && (!tConfig.ptEntries || tConfig.dwEntrySize == 0)))
    {
        return eResultBadArgument;
    }
    if (const int nResult = Read(atScreens, atBefore))
    {
        return nResult;
    }
    const std::size_t nScreens = atScreens.size();
    if (tConfig.dwRows < 1 || tConfig.dwColumns < 1 || uint64_t{tConfig.dwRows} * tConfig.dwColumns > nScreens)
    {
        return eResultBadArgument;
    }
    if (tConfig.dwRows != 1 || tConfig.dwColumns != nScreens)
    {
        return eResultNotSupported; // how the screens stand the device doesn't keep
    }
    std::vector<std::vector<tagDecoderWindow>> atWanted(nScreens);
    std::set<uint32_t> adwSeen;
    for (std::size_t i = 0; i < tConfig.dwCount; ++i)
    {
        const auto t = ReadEntry<tagDecoderWindow>(tConfig, i);
        if (!IsPlace(t) || !adwSeen.insert(t.dwChannel).second)
        {
            return eResultBadArgument;
        }
        const std::size_t iScreen = ScreenOf(t, nScreens);
        if (iScreen == nScreens)
        {
            return eResultNotSupported; // a pane lies on one screen
        }
        atWanted[iScreen].push_back(t);
    }
    int nResult = eResultOk;
    for (std::size_t i = 0; i < nScreens && nResult == eResultOk; ++i)
    {
        std::ranges::stable_sort(atWanted[i], {}, &tagDecoderWindow::dwLayer);
        nResult = WriteScreen(atScreens[i], i, nScreens, atBefore, atWanted[i]);
    }
    return nResult;
}

int CWall::Split(uint32_t dwScreen, uint32_t dwMode, unsigned long const* pdwChannels)
{
    std::vector<tagScreen> atScreens;
    std::vector<tagPane> atBefore;
    if (const int nResult = Read(atScreens, atBefore))
    {
        return nResult;
    }
    uint32_t dwGrid = 1;
    const auto atCells = plugin::CellsOf(dwMode, dwGrid);
    if (dwScreen >= atScreens.size() || atCells.empty())
    {
        return dwScreen >= atScreens.size() ? int{eResultNoChannel} : int{eResultBadArgument};
    }
    const auto nScreens = static_cast<uint32_t>(atScreens.size());
    const uint32_t dwLeft = dwScreen * g_dwWhole / nScreens;
    const uint32_t dwWidth = (dwScreen + 1) * g_dwWhole / nScreens - dwLeft;
    std::vector<tagDecoderWindow> atWanted;
    for (uint32_t i = 0; i < atCells.size(); ++i)
    {
        std::shared_ptr<tagChannel const> pChannel;
        if (pdwChannels && pdwChannels[i] != TESSARO_ALL)
        {
            const auto dwChannel = static_cast<uint32_t>(pdwChannels[i]);
            if (const int nResult = m_tLogin.Part<CProfiles>().Channel(dwChannel, pChannel))
            {
                return nResult;
            }
        }
        tagDecoderWindow& t = atWanted.emplace_back();
        t.dwChannel = dwScreen * eWindowsOfScreen + i;
        t.dwLeft = dwLeft + dwWidth * atCells[i].x / dwGrid;
        t.dwTop = g_dwWhole * atCells[i].y / dwGrid;
        t.dwWidth = dwLeft + dwWidth * (atCells[i].x + atCells[i].dwSize) / dwGrid - t.dwLeft;
        t.dwHeight = g_dwWhole * (atCells[i].y + atCells[i].dwSize) / dwGrid - t.dwTop;
    }
    // What the screen's windows were bound to before is forgotten.
    for (tagPane& t : atBefore)
    {
        if (t.iScreen == dwScreen && !t.strReceiver.empty())
        {
            Bind(atScreens[dwScreen].strToken, t, {});
        }
    }
    int nResult = WriteScreen(atScreens[dwScreen], dwScreen, nScreens, atBefore, atWanted);
    for (uint32_t i = 0; pdwChannels && i < atCells.size() && nResult == eResultOk; ++i)
    {
        if (pdwChannels[i] != TESSARO_ALL)
        {
            nResult = Show(atWanted[i].dwChannel, static_cast<uint32_t>(pdwChannels[i]));
        }
    }
    return nResult;
}

int CWall::Signal(uint32_t dwScreen, tagDecoderVideoStandardConfig* ptSignal)
{
    std::vector<tagScreen> atScreens;
    if (const int nResult = Screens(atScreens))
    {
        return nResult;
    }
    if (dwScreen >= atScreens.size())
    {
        return eResultNoChannel;
    }
    tagScreen const& t = atScreens[dwScreen];
    const bool bKnown = t.dwWidth != 0 && t.dwFrameRate != 0;
    return WriteRecord(ptSignal,
                       tagDecoderVideoStandardConfig{sizeof(tagDecoderVideoStandardConfig),
                                                     bKnown ? uint32_t{eStandardMode} : uint32_t{eStandardAutomatic},
                                                     t.dwWidth, t.dwHeight, t.dwFrameRate, 0});
}
} // namespace onvifclient
