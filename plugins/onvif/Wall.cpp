// Decoder walls: layouts, panes, and what they are bound to.

#include "plugins/onvif/Wall.h"

#include "plugins/common/SplitScreen.h"
#include "plugins/common/Text.h"
#include "plugins/onvif/WallWords.h"

#include "protocol/Record.h"
#include "protocol/interface/Queries.h"

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

constexpr uint32_t g_dwWhole = 10000; // ten-thousandths
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
    t.dwWidth = fnWide(fnShare("right", 1, false)) - t.dwLeft;
    t.dwTop = fnHigh(fnShare("top", 1, true));
    t.dwHeight = fnHigh(fnShare("bottom", -1, true)) - t.dwTop;
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
        if (pdwChannels && pdwChannels[i] != TESSARO_ALL)
        {
            return eResultNotSupported; // channels of the decoder's own can't be bound
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
    return WriteScreen(atScreens[dwScreen], dwScreen, nScreens, atBefore, atWanted);
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

// --- what a pane is bound to -----------------------------------------------------------------------------------------

int CWall::Receiver(std::string const& strToken, tagReceiver& t)
{
    t = {};
    if (strToken.empty())
    {
        return eResultOk;
    }
    const CAnswer tAnswer =
        m_tLogin.Call({eService::Receiver, "GetReceiver", CXmlWriter().Add("trv:ReceiverToken", strToken).Take()});
    t.strUri = onvif::Text(tAnswer.Body(), "Receiver/Configuration/MediaUri");
    t.bOn = tAnswer && onvif::Text(tAnswer.Body(), "Receiver/Configuration/Mode") != "NeverConnect";
    return tAnswer.Result();
}

onvif::tagRequest CWall::Configure(std::string const& strToken, tagReceiver const& t)
{
    CXmlWriter tBody;
    if (!strToken.empty())
    {
        tBody.Add("trv:ReceiverToken", strToken);
    }
    if (!strToken.empty() && !t.bOn)
    {
        return {eService::Receiver, "SetReceiverMode", tBody.Add("trv:Mode", "NeverConnect").Take()};
    }
    tBody.Open("trv:Configuration").Add("tt:Mode", "AlwaysConnect");
    tBody.Add("tt:MediaUri", t.strUri).Open("tt:StreamSetup").Add("tt:Stream", "RTP-Unicast");
    tBody.Open("tt:Transport").Add("tt:Protocol", "RTSP");
    return {eService::Receiver, strToken.empty() ? "CreateReceiver" : "ConfigureReceiver", tBody.Take()};
}

int CWall::Bind(std::string const& strScreen, tagPane& tPane, tagReceiver const& t)
{
    if (!m_tLogin.Client().Has(eService::Receiver))
    {
        return eResultNotSupported;
    }
    if (tPane.strReceiver.empty() && !t.bOn)
    {
        return eResultOk;
    }
    const CAnswer tAnswer = m_tLogin.Call(Configure(tPane.strReceiver, t));
    if (!tAnswer || !tPane.strReceiver.empty())
    {
        return tAnswer.Result();
    }
    tPane.strReceiver = onvif::Text(tAnswer.Body(), "Receiver/Token");
    return tPane.strReceiver.empty() ? int{eResultRefused} : Write(strScreen, tPane);
}

int CWall::Window(uint32_t dwWindow, tagDecoderChannelConfig* ptConfig)
{
    std::vector<tagScreen> atScreens;
    tagPane tPane;
    tagReceiver tReceiver;
    tagDecoderChannelConfig t{};
    int nResult = ReadRecord(t, ptConfig);
    nResult = nResult ? nResult : Find(dwWindow, atScreens, tPane);
    nResult = nResult ? nResult : Receiver(tPane.strReceiver, tReceiver);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    {
        const std::lock_guard tLock(m_pShared->tMutex);
        const auto it = m_pShared->tBound.find(dwWindow);
        tReceiver = it == m_pShared->tBound.end() ? tReceiver : it->second.first;
    }
    t = {};
    t.dwSize = sizeof t;
    t.bAudio = tPane.strAudioOutput.empty() ? 0 : 1;
    plugin::CopyText(t.szName, tPane.strName);
    t.tSource = SourceOf(tReceiver);
    std::ranges::fill(t.tSource.szPassword, '\0');
    return WriteRecord(ptConfig, t);
}

int CWall::SetWindow(uint32_t dwWindow, tagDecoderChannelConfig const* ptConfig)
{
    std::vector<tagScreen> atScreens;
    tagPane tPane;
    tagReceiver tBefore;
    int nResult = Find(dwWindow, atScreens, tPane);
    nResult = nResult ? nResult : Receiver(tPane.strReceiver, tBefore);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    tagDecoderChannelConfig t{};
    t.dwSize = sizeof t;
    t.bAudio = tPane.strAudioOutput.empty() ? 0 : 1;
    plugin::CopyText(t.szName, tPane.strName);
    t.tSource = SourceOf(tBefore);
    const tagDecoderChannelConfig tOld = t;
    if (Adapter_ProtocolSet::MergeRecord(t, ptConfig) != eResultOk)
    {
        return eResultBadArgument;
    }
    if (const int nRefused = CheckLooks(t, tOld))
    {
        return nRefused;
    }
    tagReceiver tReceiver;
    if (const int nRefused = ReceiverOf(t.tSource, tOld.tSource, tReceiver))
    {
        return nRefused;
    }
    std::string const& strScreen = atScreens[tPane.iScreen].strToken;
    if (const std::string strName = plugin::Text(t.szName); strName != tPane.strName)
    {
        tPane.strName = strName;
        nResult = Write(strScreen, tPane);
    }
    {
        const std::lock_guard tLock(m_pShared->tMutex);
        m_pShared->tBound.erase(dwWindow);
    }
    return nResult ? nResult : Bind(strScreen, tPane, tReceiver);
}

int CWall::Connect(uint32_t dwWindow, tagDecoderDynamicInformation const* ptSource)
{
    std::vector<tagScreen> atScreens;
    tagPane tPane;
    tagReceiver tBefore;
    tagReceiver tReceiver;
    tagDecoderDynamicInformation t{};
    int nResult = ReadRecord(t, ptSource);
    nResult = nResult ? nResult : ReceiverOf(t.tSource, {}, tReceiver);
    nResult = nResult ? nResult : Find(dwWindow, atScreens, tPane);
    nResult = nResult ? nResult : Receiver(tPane.strReceiver, tBefore);
    nResult = nResult ? nResult : Bind(atScreens[tPane.iScreen].strToken, tPane, tReceiver);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    const std::lock_guard tLock(m_pShared->tMutex);
    const uint32_t dwRun = ++m_pShared->dwRun;
    m_pShared->tBound.try_emplace(dwWindow, tBefore, 0).first->second.second = dwRun;
    if (t.dwSeconds != 0)
    {
        m_tLogin.Client().Http().Begin(RestoreLater(m_tLogin.ClientPointer(), m_pShared, tPane.strReceiver, dwWindow,
                                                    dwRun, onvif::Clock::now() + std::chrono::seconds(t.dwSeconds)));
    }
    return eResultOk;
}

rtsp::CTask<> CWall::RestoreLater(std::shared_ptr<onvif::CClient> pClient, std::shared_ptr<tagShared> pShared,
                                  std::string strReceiver, uint32_t dwWindow, uint32_t dwRun,
                                  onvif::Clock::time_point tWhen)
{
    const auto pGroup = pClient->Group();
    const bool bGoesOn = co_await pClient->Http().Until(pGroup, tWhen);
    tagReceiver tBound;
    {
        const std::lock_guard tLock(pShared->tMutex);
        const auto it = pShared->tBound.find(dwWindow);
        if (!bGoesOn || it == pShared->tBound.end() || it->second.second != dwRun)
        {
            co_return;
        }
        tBound = it->second.first;
        pShared->tBound.erase(it);
    }
    onvif::tagRequest tRequest = Configure(strReceiver, tBound);
    co_await pClient->CallAsync(std::move(tRequest));
}

int CWall::Disconnect(uint32_t dwWindow, uint32_t dwFlag)
{
    std::vector<tagScreen> atScreens;
    tagPane tPane;
    tagReceiver tReceiver;
    if (dwFlag > eDecoderBlank)
    {
        return eResultBadArgument;
    }
    int nResult = Find(dwWindow, atScreens, tPane);
    nResult = nResult ? nResult : Receiver(tPane.strReceiver, tReceiver);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    {
        const std::lock_guard tLock(m_pShared->tMutex);
        auto& tBound = m_pShared->tBound;
        if (dwFlag == eDecoderBlank)
        {
            tBound.try_emplace(dwWindow, tReceiver, ++m_pShared->dwRun);
            tReceiver.bOn = false;
        }
        else if (const auto it = tBound.find(dwWindow); it != tBound.end())
        {
            tReceiver = it->second.first;
            tBound.erase(it);
        }
    }
    return Bind(atScreens[tPane.iScreen].strToken, tPane, tReceiver);
}

// --- what they are doing ---------------------------------------------------------------------------------------------

int CWall::Information(uint32_t dwWindow, tagDecoderChannelInformation* ptInformation)
{
    std::vector<tagScreen> atScreens;
    tagPane tPane;
    tagDecoderChannelInformation t{};
    int nResult = ReadRecord(t, ptInformation);
    nResult = nResult ? nResult : Find(dwWindow, atScreens, tPane);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    const CAnswer tAnswer =
        m_tLogin.Call({eService::Display, "GetDisplayOptions",
                       CXmlWriter().Add("tls:VideoOutput", atScreens[tPane.iScreen].strToken).Take()});
    if (!tAnswer)
    {
        return tAnswer.Result();
    }
    t = Abilities(onvif::Child(tAnswer.Body(), "CodingCapabilities"));
    t.dwScreen = static_cast<uint32_t>(tPane.iScreen);
    return WriteRecord(ptInformation, t);
}

int CWall::Status(tagDecoderChannelStatus* ptStatus)
{
    std::vector<tagScreen> atScreens;
    std::vector<tagPane> atPanes;
    if (const int nResult = Read(atScreens, atPanes))
    {
        return nResult;
    }
    std::vector<tagDecoderWindowStatus> atStatus;
    for (tagPane const& tPane : atPanes)
    {
        tagReceiver tReceiver;
        tagDecoderWindowStatus& t = atStatus.emplace_back();
        t.dwChannel = tPane.dwWindow;
        t.dwShows = 5;
        if (tPane.strReceiver.empty() || Receiver(tPane.strReceiver, tReceiver) != eResultOk || !tReceiver.bOn)
        {
            continue;
        }
        const CAnswer tAnswer = m_tLogin.Call(
            {eService::Receiver, "GetReceiverState", CXmlWriter().Add("trv:ReceiverToken", tPane.strReceiver).Take()});
        t.dwState = WindowStateOf(onvif::Text(tAnswer.Body(), "ReceiverState/State"));
        const tagDecoderSource tSource = SourceOf(tReceiver);
        t.dwKind = tSource.dwKind;
        plugin::CopyText(t.szAddress, plugin::Text(tSource.szAddress));
        const std::lock_guard tLock(m_pShared->tMutex);
        t.dwShows = m_pShared->tBound.contains(tPane.dwWindow) ? 2 : 4;
    }
    return WriteList(ptStatus, atStatus.data(), atStatus.size());
}
} // namespace onvifclient
