// Layout, screens, and what is kept of a wall.

#include "plugins/device/Wall.h"

#include "plugins/common/SplitScreen.h"
#include "plugins/device/Device.h"
#include "plugins/device/Settings.h"

#include "protocol/Record.h"

#include <algorithm>
#include <set>

namespace device
{
namespace
{
using Adapter_ProtocolSet::MergeRecord;
using Adapter_ProtocolSet::ReadEntry;
using Adapter_ProtocolSet::ReadRecord;
using Adapter_ProtocolSet::WriteList;

constexpr uint32_t g_dwWindows = 1024;

bool IsPlace(uint32_t dwLeft, uint32_t dwTop, uint32_t dwWidth, uint32_t dwHeight)
{
    return dwLeft <= g_dwWhole && dwTop <= g_dwWhole && dwWidth <= g_dwWhole - dwLeft && dwHeight <= g_dwWhole - dwTop;
}

bool IsValid(tagDecoderDisplayConfig const& t)
{
    return InRange(t, {{&tagDecoderDisplayConfig::bOn, 0, 1},
                       {&tagDecoderDisplayConfig::dwBrightness, 0, 100},
                       {&tagDecoderDisplayConfig::dwContrast, 0, 100},
                       {&tagDecoderDisplayConfig::dwSaturation, 0, 100},
                       {&tagDecoderDisplayConfig::dwHue, 0, 100},
                       {&tagDecoderDisplayConfig::dwBackground, 0, g_dwColour},
                       {&tagDecoderDisplayConfig::bShowClock, 0, 1},
                       {&tagDecoderDisplayConfig::dwClockLeft, 0, g_dwWhole},
                       {&tagDecoderDisplayConfig::dwClockTop, 0, g_dwWhole},
                       {&tagDecoderDisplayConfig::dwClockHeight, 0, g_dwWhole}});
}

bool IsValid(tagDecoderChannelConfig const& t)
{
    return InRange(t, {{&tagDecoderChannelConfig::dwFit, 0, eFitFill},
                       {&tagDecoderChannelConfig::dwLoss, 0, eLossMessage},
                       {&tagDecoderChannelConfig::dwLossSeconds, 0, 3600},
                       {&tagDecoderChannelConfig::dwBufferMs, 0, 10000},
                       {&tagDecoderChannelConfig::bAudio, 0, 1},
                       {&tagDecoderChannelConfig::dwVolume, 0, 100},
                       {&tagDecoderChannelConfig::bShowName, 0, 1},
                       {&tagDecoderChannelConfig::bShowTime, 0, 1},
                       {&tagDecoderChannelConfig::dwBorder, 0, 64},
                       {&tagDecoderChannelConfig::dwBorderColour, 0, g_dwColour}});
}

// A signal with the size that its standard has.
bool Complete(tagDecoderVideoStandardConfig& t)
{
    switch (t.dwStandard)
    {
    case eStandardAutomatic:
        t = {sizeof t, t.dwStandard, 1920, 1080, 60000, 0};
        return true;
    case eStandardPal:
        t = {sizeof t, t.dwStandard, 720, 576, 25000, 1};
        return true;
    case eStandardNtsc:
        t = {sizeof t, t.dwStandard, 720, 480, 30000, 1};
        return true;
    default:
        return t.dwStandard == eStandardMode && InRange(t, {{&tagDecoderVideoStandardConfig::dwWidth, 320, 3840},
                                                            {&tagDecoderVideoStandardConfig::dwHeight, 200, 2160},
                                                            {&tagDecoderVideoStandardConfig::dwFrameRate, 1000, 120000},
                                                            {&tagDecoderVideoStandardConfig::bInterlaced, 0, 1}});
    }
}

// A password that was written empty for the same address and user stays as it was.
void KeepPassword(tagDecoderSource const& tBefore, tagDecoderSource& tAfter)
{
    if (tAfter.szPassword[0] == '\0' && Text(tBefore.szAddress) == Text(tAfter.szAddress) &&
        Text(tBefore.szUserName) == Text(tAfter.szUserName))
    {
        std::ranges::copy(tBefore.szPassword, tAfter.szPassword);
    }
}
} // namespace

CWall::CWall(CDevice& tDevice) : CPart(tDevice)
{
    Load();
}

int CWall::Find(uint32_t dwWindow, tagWindow*& ptWindow)
{
    const auto it = m_tWindows.find(dwWindow);
    ptWindow = it == m_tWindows.end() ? nullptr : &it->second;
    return m_atScreens.empty() ? int{eResultNotSupported} : ptWindow ? int{eResultOk} : int{eResultNoChannel};
}

int CWall::Find(uint32_t dwWindow, tagWindow const*& ptWindow) const
{
    tagWindow* pt = nullptr;
    const int nResult = const_cast<CWall*>(this)->Find(dwWindow, pt);
    ptWindow = pt;
    return nResult;
}

int CWall::CheckScreen(uint32_t dwScreen) const
{
    return m_atScreens.empty()                  ? int{eResultNotSupported}
           : dwScreen >= m_dwRows * m_dwColumns ? int{eResultNoChannel}
                                                : int{eResultOk};
}

int CWall::CheckSource(tagDecoderSource const& t) const
{
    const bool bRemote = t.dwKind == eDecoderSourceAddress || t.dwKind == eDecoderSourceDevice;
    if (t.dwKind > eDecoderSourceTransfer || StreamIndex(t.dwStreamKind) < 0 || t.dwPort > 65535 ||
        t.dwProtocol > eProtocolVTQ || t.dwTransport > eRtspAutomatic || (bRemote && t.szAddress[0] == '\0'))
    {
        return eResultBadArgument;
    }
    return t.dwKind == eDecoderSourceChannel && t.dwChannel >= m_tDevice.Channels() ? int{eResultNoChannel}
                                                                                    : int{eResultOk};
}

// --- layout ----------------------------------------------------------------------------------------------------------

tagDecoderWindow CWall::ScreenPlace(uint32_t dwScreen) const
{
    const uint32_t x = dwScreen % m_dwColumns;
    const uint32_t y = dwScreen / m_dwColumns;
    tagDecoderWindow t{};
    t.dwLeft = x * g_dwWhole / m_dwColumns;
    t.dwTop = y * g_dwWhole / m_dwRows;
    t.dwWidth = (x + 1) * g_dwWhole / m_dwColumns - t.dwLeft;
    t.dwHeight = (y + 1) * g_dwWhole / m_dwRows - t.dwTop;
    return t;
}

uint32_t CWall::ScreenOf(tagDecoderWindow const& tPlace) const
{
    const uint32_t x = std::min(tPlace.dwLeft * m_dwColumns / g_dwWhole, m_dwColumns - 1);
    const uint32_t y = std::min(tPlace.dwTop * m_dwRows / g_dwWhole, m_dwRows - 1);
    return y * m_dwColumns + x;
}

int CWall::Split(tagCaller const&, uint32_t dwScreen, uint32_t dwMode, unsigned long* pdwChannels)
{
    if (const int nResult = CheckScreen(dwScreen))
    {
        return nResult;
    }
    uint32_t dwGrid = 1;
    const auto atCells = plugin::CellsOf(dwMode, dwGrid);
    if (atCells.empty())
    {
        return eResultBadArgument;
    }
    for (std::size_t i = 0; pdwChannels && i < atCells.size(); ++i)
    {
        if (pdwChannels[i] != TESSARO_ALL && pdwChannels[i] >= m_tDevice.Channels())
        {
            return eResultNoChannel;
        }
    }
    const uint32_t dwFirst = dwScreen * eWindowsOfScreen;
    m_tWindows.erase(m_tWindows.lower_bound(dwFirst), m_tWindows.lower_bound(dwFirst + eWindowsOfScreen));
    const tagDecoderWindow tScreen = ScreenPlace(dwScreen);
    for (uint32_t i = 0; i < atCells.size(); ++i)
    {
        plugin::tagCell const& tCell = atCells[i];
        tagWindow tWindow;
        tagDecoderWindow& t = tWindow.tPlace;
        t.dwChannel = dwFirst + i;
        t.dwLeft = tScreen.dwLeft + tScreen.dwWidth * tCell.x / dwGrid;
        t.dwTop = tScreen.dwTop + tScreen.dwHeight * tCell.y / dwGrid;
        t.dwWidth = tScreen.dwLeft + tScreen.dwWidth * (tCell.x + tCell.dwSize) / dwGrid - t.dwLeft;
        t.dwHeight = tScreen.dwTop + tScreen.dwHeight * (tCell.y + tCell.dwSize) / dwGrid - t.dwTop;
        tWindow.tConfig.dwSize = sizeof tWindow.tConfig;
        if (pdwChannels && pdwChannels[i] != TESSARO_ALL)
        {
            tWindow.tConfig.tSource.dwKind = eDecoderSourceChannel;
            tWindow.tConfig.tSource.dwChannel = static_cast<uint32_t>(pdwChannels[i]);
        }
        Choose(m_tWindows.emplace(t.dwChannel, tWindow).first->second);
    }
    Keep();
    return eResultOk;
}

int CWall::SetLayout(tagCaller const&, tagDecoderDeviceConfig const* ptConfig)
{
    tagDecoderDeviceConfig tConfig{};
    if (m_atScreens.empty())
    {
        return eResultNotSupported;
    }
    if (ReadRecord(tConfig, ptConfig) != eResultOk || tConfig.dwRows < 1 || tConfig.dwColumns < 1 ||
        uint64_t{tConfig.dwRows} * tConfig.dwColumns > m_tDevice.Blueprint().dwScreens ||
        tConfig.dwCount > g_dwWindows || (tConfig.dwCount != 0 && (!tConfig.ptEntries || tConfig.dwEntrySize == 0)))
    {
        return eResultBadArgument;
    }
    std::map<uint32_t, tagWindow> tWindows;
    for (std::size_t i = 0; i < tConfig.dwCount; ++i)
    {
        const auto t = ReadEntry<tagDecoderWindow>(tConfig, i);
        if (t.dwChannel >= g_dwWindows || t.dwWidth < 1 || t.dwHeight < 1 || t.bHidden > 1 ||
            !IsPlace(t.dwLeft, t.dwTop, t.dwWidth, t.dwHeight) || tWindows.contains(t.dwChannel))
        {
            return eResultBadArgument;
        }
        const auto it = m_tWindows.find(t.dwChannel);
        tagWindow& tWindow = tWindows[t.dwChannel] = it == m_tWindows.end() ? tagWindow{} : it->second;
        tWindow.tPlace = t;
        tWindow.tConfig.dwSize = sizeof tWindow.tConfig;
    }
    m_tWindows = std::move(tWindows);
    m_dwRows = tConfig.dwRows;
    m_dwColumns = tConfig.dwColumns;
    CopyText(m_szName, Text(tConfig.szName));
    Keep();
    return eResultOk;
}

int CWall::Layout(tagDecoderDeviceConfig* ptConfig) const
{
    if (m_atScreens.empty())
    {
        return eResultNotSupported;
    }
    tagDecoderDeviceConfig tConfig{};
    std::vector<tagDecoderWindow> atWindows;
    for (auto const& [dwWindow, tWindow] : m_tWindows)
    {
        atWindows.push_back(tWindow.tPlace);
    }
    int nResult = ReadRecord(tConfig, ptConfig);
    nResult = nResult ? nResult : WriteList(ptConfig, atWindows.data(), atWindows.size());
    if (nResult == eResultOk)
    {
        tConfig.dwRows = m_dwRows;
        tConfig.dwColumns = m_dwColumns;
        tConfig.dwScreens = m_tDevice.Blueprint().dwScreens;
        CopyText(tConfig.szName, m_szName);
        tConfig.dwCount = static_cast<uint32_t>(atWindows.size());
        nResult = Adapter_ProtocolSet::WriteRecord(ptConfig, tConfig);
    }
    return nResult;
}

int CWall::SetWindow(tagCaller const&, uint32_t dwWindow, tagDecoderChannelConfig const* ptConfig)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    tagDecoderChannelConfig tConfig = ptWindow->tConfig;
    if (MergeRecord(tConfig, ptConfig) != eResultOk || !IsValid(tConfig))
    {
        return eResultBadArgument;
    }
    if (const int nResult = CheckSource(tConfig.tSource))
    {
        return nResult;
    }
    for (auto const& [dwOther, tOther] : m_tWindows)
    {
        if (tConfig.bAudio && dwOther != dwWindow && tOther.tConfig.bAudio &&
            ScreenOf(tOther.tPlace) == ScreenOf(ptWindow->tPlace))
        {
            return eResultBadArgument; // one window of a screen is heard
        }
    }
    Terminate(tConfig.szName);
    KeepPassword(ptWindow->tConfig.tSource, tConfig.tSource);
    ptWindow->tConfig = tConfig;
    ptWindow->bBlank = false;
    Choose(*ptWindow);
    Keep();
    return eResultOk;
}

int CWall::Window(uint32_t dwWindow, tagDecoderChannelConfig& tConfig) const
{
    tagWindow const* ptWindow = nullptr;
    const int nResult = Find(dwWindow, ptWindow);
    if (nResult == eResultOk)
    {
        tConfig = ptWindow->tConfig;
        std::ranges::fill(tConfig.tSource.szPassword, '\0');
    }
    return nResult;
}

int CWall::Information(uint32_t dwWindow, tagDecoderChannelInformation& tInformation) const
{
    tagWindow const* ptWindow = nullptr;
    const int nResult = Find(dwWindow, ptWindow);
    if (nResult == eResultOk)
    {
        tInformation = {sizeof tInformation,
                        eDecoderCanLoop | eDecoderCanPlay | eDecoderCanLogo | eDecoderCanAudio | eDecoderCanTransfer,
                        1U << eCodecH264 | 1U << eCodecH265,
                        1920,
                        1080,
                        30000,
                        64,
                        ScreenOf(ptWindow->tPlace)};
    }
    return nResult;
}

// --- screens ---------------------------------------------------------------------------------------------------------

int CWall::SetSignal(tagCaller const&, uint32_t dwScreen, tagDecoderVideoStandardConfig const* ptSignal)
{
    if (const int nResult = CheckScreen(dwScreen))
    {
        return nResult;
    }
    tagDecoderVideoStandardConfig t = m_atSignals[dwScreen];
    if (MergeRecord(t, ptSignal) != eResultOk || !Complete(t))
    {
        return eResultBadArgument;
    }
    m_atSignals[dwScreen] = t;
    Keep();
    return eResultOk;
}

int CWall::Signal(uint32_t dwScreen, tagDecoderVideoStandardConfig& tSignal) const
{
    const int nResult = CheckScreen(dwScreen);
    tSignal = nResult ? tSignal : m_atSignals[dwScreen];
    return nResult;
}

int CWall::SetScreen(tagCaller const&, uint32_t dwScreen, tagDecoderDisplayConfig const* ptScreen)
{
    if (const int nResult = CheckScreen(dwScreen))
    {
        return nResult;
    }
    tagDecoderDisplayConfig t = m_atScreens[dwScreen];
    if (MergeRecord(t, ptScreen) != eResultOk || !IsValid(t))
    {
        return eResultBadArgument;
    }
    m_atScreens[dwScreen] = t;
    Keep();
    return eResultOk;
}

int CWall::Screen(uint32_t dwScreen, tagDecoderDisplayConfig& tScreen) const
{
    const int nResult = CheckScreen(dwScreen);
    tScreen = nResult ? tScreen : m_atScreens[dwScreen];
    return nResult;
}

// --- logos -----------------------------------------------------------------------------------------------------------

int CWall::SetLogo(tagCaller const&, uint32_t dwWindow, tagUploadLogoParameter const& tLogo)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    constexpr std::string_view astrBegins[] = {"\xFF\xD8\xFF", "\x89PNG"};
    if (tLogo.dwFormat > eImagePng || !tLogo.pbyData || tLogo.dwOpacity > 100 || tLogo.dwLength > (16U << 20) ||
        !IsPlace(tLogo.dwLeft, tLogo.dwTop, tLogo.dwWidth, 0) ||
        !std::string_view(reinterpret_cast<char const*>(tLogo.pbyData), tLogo.dwLength)
             .starts_with(astrBegins[tLogo.dwFormat]))
    {
        return eResultBadArgument;
    }
    CStore::Bytes abyData(tLogo.pbyData, tLogo.pbyData + tLogo.dwLength);
    ptWindow->tLogo = {tLogo, std::make_shared<CStore::Bytes const>(abyData), false};
    ptWindow->tLogo.tPlace.pbyData = nullptr;
    m_tDevice.Store().Put("wall/image/" + std::to_string(dwWindow), std::move(abyData));
    Keep();
    return eResultOk;
}

int CWall::SwitchLogo(tagCaller const&, uint32_t dwWindow, eDeviceChannelControl eControl)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (eControl != eChannelHide && eControl != eChannelShow)
    {
        return eResultBadArgument;
    }
    if (!ptWindow->tLogo.pData)
    {
        return eResultNotFound;
    }
    ptWindow->tLogo.bShown = eControl == eChannelShow;
    Keep();
    return eResultOk;
}

// --- what is kept ----------------------------------------------------------------------------------------------------

namespace
{
struct tagKeptLayout
{
    uint32_t dwRows;
    uint32_t dwColumns;
    char szName[64];
};
struct tagKeptLogo
{
    tagUploadLogoParameter tPlace;
    uint32_t bShown;
    uint32_t dwReserved;
};
} // namespace

void CWall::Keep()
{
    CStore& tStore = m_tDevice.Store();
    tagKeptLayout tLayout{m_dwRows, m_dwColumns, {}};
    CopyText(tLayout.szName, m_szName);
    tStore.PutRecord("wall/layout", tLayout);
    tStore.PutList("wall/screens", m_atScreens);
    tStore.PutList("wall/signals", m_atSignals);
    tStore.RemoveAll("wall/loop/");
    tStore.RemoveAll("wall/logo/");
    std::vector<tagKept> atKept;
    for (auto const& [dwWindow, t] : m_tWindows)
    {
        atKept.push_back({t.tPlace, t.tConfig, t.dwSkipSeconds, t.eLoop});
        tStore.PutList("wall/loop/" + std::to_string(dwWindow), t.atLoop);
        if (t.tLogo.pData)
        {
            tStore.PutRecord("wall/logo/" + std::to_string(dwWindow),
                             tagKeptLogo{t.tLogo.tPlace, t.tLogo.bShown ? 1U : 0U, 0});
        }
    }
    tStore.PutList("wall/windows", atKept);
}

void CWall::Load()
{
    CStore const& tStore = m_tDevice.Store();
    tagDecoderDisplayConfig tScreen{};
    tScreen.dwSize = sizeof tScreen;
    tScreen.bOn = 1;
    tScreen.dwBrightness = tScreen.dwContrast = tScreen.dwSaturation = tScreen.dwHue = 50;
    tagDecoderVideoStandardConfig tSignal{};
    Complete(tSignal);
    m_atScreens = tStore.GetList<tagDecoderDisplayConfig>("wall/screens");
    m_atSignals = tStore.GetList<tagDecoderVideoStandardConfig>("wall/signals");
    m_atScreens.resize(m_tDevice.Blueprint().dwScreens, tScreen);
    m_atSignals.resize(m_tDevice.Blueprint().dwScreens, tSignal);
    tagKeptLayout tLayout{1, 1, {}};
    tStore.GetRecord("wall/layout", tLayout);
    const bool bFits = uint64_t{tLayout.dwRows} * tLayout.dwColumns <= std::max(m_tDevice.Blueprint().dwScreens, 1U);
    m_dwRows = bFits ? tLayout.dwRows : 1;
    m_dwColumns = bFits ? tLayout.dwColumns : 1;
    CopyText(m_szName, Text(tLayout.szName));
    m_tWindows.clear();
    for (tagKept const& tKept : tStore.GetList<tagKept>("wall/windows"))
    {
        const std::string strWindow = std::to_string(tKept.tPlace.dwChannel);
        tagWindow& t = m_tWindows[tKept.tPlace.dwChannel];
        t.tPlace = tKept.tPlace;
        t.tConfig = tKept.tConfig;
        t.dwSkipSeconds = tKept.dwSkipSeconds;
        t.eLoop = tKept.eLoop;
        t.atLoop = tStore.GetList<tagDecoderLoopEntry>("wall/loop/" + strWindow);
        tagKeptLogo tLogo{};
        const auto it = tStore.All().find("wall/image/" + strWindow);
        if (tStore.GetRecord("wall/logo/" + strWindow, tLogo) && it != tStore.All().end())
        {
            t.tLogo = {tLogo.tPlace, std::make_shared<CStore::Bytes const>(it->second), tLogo.bShown != 0};
        }
        Choose(t);
    }
}

void CWall::Reset()
{
    Load(); // of a store that has forgotten it
}
} // namespace device
