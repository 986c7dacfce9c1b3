// What the windows of a wall show.

#include "plugins/device/Wall.h"

#include "plugins/device/Device.h"
#include "plugins/device/Fleet.h"
#include "plugins/device/Settings.h"

#include "protocol/Record.h"

#include <algorithm>
#include <cstring>

namespace device
{
namespace
{
using Adapter_ProtocolSet::ReadEntry;
using Adapter_ProtocolSet::ReadRecord;
using Adapter_ProtocolSet::WriteList;

constexpr uint32_t g_dwLoopEntries = 64;
constexpr int64_t g_llSecondUs = 1000000;

bool IsRemote(tagDecoderSource const& t)
{
    return t.dwKind == eDecoderSourceAddress || t.dwKind == eDecoderSourceDevice;
}

// A stream's address of a simulated device: its host, and the first number and the word "sub" in its path.
struct tagUrl
{
    std::string strHost;
    uint32_t dwChannel = 0;
    uint32_t dwStreamKind = eStreamMain;
};

tagUrl ParseUrl(std::string const& strUrl)
{
    tagUrl tUrl;
    const auto nScheme = strUrl.find("://");
    const std::string strRest = nScheme == std::string::npos ? strUrl : strUrl.substr(nScheme + 3);
    tUrl.strHost = strRest.substr(0, strRest.find_first_of(":/"));
    const std::string strPath = strRest.substr(std::min(strRest.find('/'), strRest.size()));
    const auto nDigit = strPath.find_first_of("0123456789");
    tUrl.dwChannel =
        nDigit == std::string::npos ? 0 : static_cast<uint32_t>(std::strtoul(strPath.c_str() + nDigit, nullptr, 10));
    tUrl.dwStreamKind = strPath.find("sub") == std::string::npos ? eStreamMain : eStreamSub;
    return tUrl;
}
} // namespace

// --- which of the five -----------------------------------------------------------------------------------------------

void CWall::Choose(tagWindow& tWindow)
{
    tagDecoderSource tSource{};
    uint32_t dwShows = 5;
    if (tWindow.tPlay)
    {
        dwShows = 1;
        tSource = tWindow.tPlay->tSource;
    }
    else if (tWindow.tDynamic)
    {
        dwShows = 2;
        tSource = *tWindow.tDynamic;
    }
    else if (tWindow.bBlank)
    {
        dwShows = 5;
    }
    else if (tWindow.eLoop != eDecoderLoopOff && !tWindow.atLoop.empty())
    {
        dwShows = 3;
        tSource = tWindow.atLoop[tWindow.nEntry].tSource;
    }
    else if (tWindow.tConfig.tSource.dwKind != eDecoderSourceNone)
    {
        dwShows = 4;
        tSource = tWindow.tConfig.tSource;
    }
    if (tWindow.dwShows == dwShows && std::memcmp(&tWindow.tSource, &tSource, sizeof tSource) == 0)
    {
        return;
    }
    tWindow.dwShows = dwShows;
    tWindow.tSource = tSource;
    tWindow.pSource.reset();
    tWindow.dwResult = 0;
    tWindow.dwSourceChannel = tSource.dwChannel;
    tWindow.llLookUpUs = IsRemote(tSource) ? 0 : g_llNever;
    tWindow.tDisplay.dwAction = tWindow.tDisplay.dwAction == eDisplayFreeze ? static_cast<uint32_t>(eDisplayRestore)
                                                                            : tWindow.tDisplay.dwAction;
    Enter(tWindow, IsRemote(tSource) ? static_cast<uint32_t>(eWindowConnecting) : OwnState(tWindow));
}

// The state of a window whose source is no other device.
uint32_t CWall::OwnState(tagWindow const& tWindow) const
{
    const uint32_t dwChannel = tWindow.tSource.dwChannel;
    if (tWindow.tPlay)
    {
        return tWindow.tPlay->bPaused ? eWindowPaused : eWindowPlaying;
    }
    switch (tWindow.tSource.dwKind)
    {
    case eDecoderSourceNone:
        return eWindowEmpty;
    case eDecoderSourceTransfer:
        return tWindow.pTransferred ? eWindowShowing : eWindowConnecting;
    default:
        return m_tDevice.Part<CAlarms>().IsOn(eEventVideoLoss, dwChannel) ||
                       m_tDevice.Part<CFaults>().On(eFaultStall, dwChannel)
                   ? eWindowNoSignal
                   : eWindowShowing;
    }
}

void CWall::Enter(tagWindow& tWindow, uint32_t dwState)
{
    if (tWindow.dwState != dwState)
    {
        tWindow.dwState = dwState;
        m_tDevice.Raise(eEventWindow, tWindow.tPlace.dwChannel, dwState);
    }
}

void CWall::Advance()
{
    const int64_t llNowUs = m_tDevice.SteadyNow();
    for (auto& [dwWindow, tWindow] : m_tWindows)
    {
        if (llNowUs >= tWindow.llDynamicEndUs)
        {
            tWindow.tDynamic.reset();
            tWindow.llDynamicEndUs = g_llNever;
        }
        if (tWindow.tPlay && !tWindow.tPlay->bPaused)
        {
            const int64_t llPositionUs = Position(*tWindow.tPlay);
            const bool bReverse = (tWindow.tPlay->dwSpeed & eSpeedReverse) != 0;
            if (llPositionUs == (bReverse ? tWindow.tPlay->llStartUs : tWindow.tPlay->llEndUs))
            {
                tWindow.tPlay->llPositionUs = llPositionUs;
                tWindow.tPlay->bPaused = true;
            }
        }
        StepLoop(tWindow);
        Choose(tWindow);
        if (!IsRemote(tWindow.tSource))
        {
            Enter(tWindow, OwnState(tWindow));
        }
    }
}

// A stop shows from its first frame on; one that can't be reached is skipped.
void CWall::StepLoop(tagWindow& tWindow)
{
    const int64_t llNowUs = m_tDevice.SteadyNow();
    if (tWindow.eLoop != eDecoderLoopOn || tWindow.atLoop.empty())
    {
        return;
    }
    tagDecoderLoopEntry const& tEntry = tWindow.atLoop[tWindow.nEntry];
    if (!tWindow.bEntryShown && tWindow.dwShows == 3 && tWindow.dwState == eWindowShowing)
    {
        tWindow.bEntryShown = true;
        tWindow.llEntryUs = llNowUs;
    }
    const uint32_t dwSeconds = tWindow.bEntryShown ? (tEntry.dwDwellSeconds ? tEntry.dwDwellSeconds : 10)
                                                   : (tWindow.dwSkipSeconds ? tWindow.dwSkipSeconds : 5);
    if (llNowUs >= tWindow.llEntryUs + dwSeconds * g_llSecondUs)
    {
        tWindow.nEntry = (tWindow.nEntry + 1) % tWindow.atLoop.size();
        tWindow.llEntryUs = llNowUs;
        tWindow.bEntryShown = false;
        tagDecoderLoopEntry const& tNext = tWindow.atLoop[tWindow.nEntry];
        if (tNext.dwPreset != 0 && tNext.tSource.dwKind == eDecoderSourceChannel)
        {
            m_tDevice.Part<CPTZ>().GoTo(tNext.tSource.dwChannel, tNext.dwPreset);
        }
    }
}

int64_t CWall::NextDue() const
{
    int64_t llDueUs = g_llNever;
    for (auto const& [dwWindow, t] : m_tWindows)
    {
        llDueUs = std::min({llDueUs, t.llDynamicEndUs, t.llLookUpUs});
        const bool bGoesOn = (t.eLoop == eDecoderLoopOn && !t.atLoop.empty()) || (t.tPlay && !t.tPlay->bPaused);
        llDueUs = bGoesOn ? std::min(llDueUs, m_tDevice.SteadyNow() + g_llSecondUs / 10) : llDueUs;
    }
    return llDueUs;
}

void CWall::Halt()
{
    for (auto& [dwWindow, tWindow] : m_tWindows)
    {
        tWindow.tPlay.reset();
        tWindow.tDynamic.reset();
        tWindow.llDynamicEndUs = g_llNever;
        tWindow.bBlank = false;
        tWindow.tDisplay = {};
        tWindow.pTransferred = nullptr;
        Choose(tWindow);
    }
}

// --- sources on other devices ----------------------------------------------------------------------------------------

std::vector<CWall::tagLookUp> CWall::WantedSources() const
{
    std::vector<tagLookUp> atWanted;
    for (auto const& [dwWindow, t] : m_tWindows)
    {
        if (t.llLookUpUs <= m_tDevice.SteadyNow())
        {
            atWanted.emplace_back() = {dwWindow, t.tSource, nullptr, 0, 0, false, {}};
        }
    }
    return atWanted;
}

void CWall::LookUp(tagLookUp& tLookUp)
{
    tagDecoderSource const& tSource = tLookUp.tSource;
    const tagUrl tUrl = tSource.dwKind == eDecoderSourceAddress
                            ? ParseUrl(Text(tSource.szAddress))
                            : tagUrl{Text(tSource.szAddress), tSource.dwChannel, tSource.dwStreamKind};
    tLookUp.dwChannel = tUrl.dwChannel;
    const bool bPort = tSource.dwKind == eDecoderSourceDevice;
    const auto pDevice = Fleet().Find(tUrl.strHost, bPort ? tSource.dwPort : 0);
    tagStreamState tState;
    if (!pDevice || !pDevice->IsUp())
    {
        tLookUp.nResult = eResultUnreachable;
        return;
    }
    if (tSource.szUserName[0] != '\0')
    {
        const CDevice::CLock tLock(*pDevice);
        uint32_t dwLevel = 0;
        tLookUp.nResult = pDevice->Part<CUsers>().Check(Text(tSource.szUserName), Text(tSource.szPassword), dwLevel);
    }
    tLookUp.nResult =
        tLookUp.nResult ? tLookUp.nResult : pDevice->StreamState(tUrl.dwChannel, tUrl.dwStreamKind, tState);
    tLookUp.bSignal = tState.bUp && !tState.bStalled && !tState.bVideoLoss;
    tLookUp.tVideo = tState.tVideo;
    tLookUp.pDevice = tLookUp.nResult ? nullptr : pDevice;
}

void CWall::Found(tagLookUp const& tLookUp)
{
    const auto it = m_tWindows.find(tLookUp.dwWindow);
    if (it == m_tWindows.end() || std::memcmp(&it->second.tSource, &tLookUp.tSource, sizeof tLookUp.tSource) != 0)
    {
        return;
    }
    tagWindow& tWindow = it->second;
    tWindow.pSource = tLookUp.pDevice;
    tWindow.dwSourceChannel = tLookUp.dwChannel;
    tWindow.dwResult = static_cast<uint32_t>(tLookUp.nResult);
    tWindow.tVideo = tLookUp.tVideo;
    tWindow.llLookUpUs = m_tDevice.SteadyNow() + g_llSecondUs;
    Enter(tWindow, !tLookUp.pDevice  ? static_cast<uint32_t>(eWindowRefused)
                   : tWindow.tPlay   ? OwnState(tWindow)
                   : tLookUp.bSignal ? static_cast<uint32_t>(eWindowShowing)
                                     : static_cast<uint32_t>(eWindowNoSignal));
}

// --- for now ---------------------------------------------------------------------------------------------------------

int CWall::Connect(tagCaller const&, uint32_t dwWindow, tagDecoderDynamicInformation const& tSource)
{
    tagWindow* ptWindow = nullptr;
    int nResult = Find(dwWindow, ptWindow);
    nResult = nResult ? nResult : CheckSource(tSource.tSource);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    if (tSource.tSource.dwKind == eDecoderSourceNone)
    {
        return eResultBadArgument;
    }
    ptWindow->tDynamic = tSource.tSource;
    ptWindow->bBlank = false;
    ptWindow->llDynamicEndUs = tSource.dwSeconds ? m_tDevice.SteadyNow() + tSource.dwSeconds * g_llSecondUs : g_llNever;
    Choose(*ptWindow);
    return eResultOk;
}

int CWall::Disconnect(tagCaller const&, uint32_t dwWindow, uint32_t dwFlag)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (dwFlag > eDecoderBlank)
    {
        return eResultBadArgument;
    }
    ptWindow->tDynamic.reset();
    ptWindow->llDynamicEndUs = g_llNever;
    ptWindow->bBlank = dwFlag == eDecoderBlank;
    Choose(*ptWindow);
    return eResultOk;
}

int CWall::Display(tagCaller const&, uint32_t dwWindow, tagDecoderDisplayStatus const& tDisplay)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (tDisplay.dwAction > eDisplayFreeze || tDisplay.dwZoomLeft > g_dwWhole || tDisplay.dwZoomTop > g_dwWhole ||
        tDisplay.dwZoomWidth > g_dwWhole - tDisplay.dwZoomLeft ||
        tDisplay.dwZoomHeight > g_dwWhole - tDisplay.dwZoomTop)
    {
        return eResultBadArgument;
    }
    ptWindow->tDisplay = tDisplay;
    ptWindow->llFrozenUs = m_tDevice.Clock().NowUs();
    return eResultOk;
}

// --- tours -----------------------------------------------------------------------------------------------------------

int CWall::SetLoop(tagCaller const&, uint32_t dwWindow, tagDecoderChannelLoopConfig const* ptLoop)
{
    tagWindow* ptWindow = nullptr;
    tagDecoderChannelLoopConfig tLoop{};
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (ReadRecord(tLoop, ptLoop) != eResultOk || tLoop.dwCount > g_dwLoopEntries || tLoop.dwSkipSeconds > 3600 ||
        (tLoop.dwCount != 0 && (!tLoop.ptEntries || tLoop.dwEntrySize == 0)))
    {
        return eResultBadArgument;
    }
    std::vector<tagDecoderLoopEntry> atEntries;
    for (std::size_t i = 0; i < tLoop.dwCount; ++i)
    {
        atEntries.push_back(ReadEntry<tagDecoderLoopEntry>(tLoop, i));
        int nResult = CheckSource(atEntries.back().tSource);
        nResult = atEntries.back().tSource.dwKind == eDecoderSourceNone || atEntries.back().dwDwellSeconds > 86400
                      ? int{eResultBadArgument}
                      : nResult;
        if (nResult != eResultOk)
        {
            return nResult;
        }
    }
    ptWindow->atLoop = std::move(atEntries);
    ptWindow->dwSkipSeconds = tLoop.dwSkipSeconds;
    ptWindow->eLoop = ptWindow->atLoop.empty() ? eDecoderLoopOff : ptWindow->eLoop;
    ptWindow->nEntry = 0;
    ptWindow->llEntryUs = m_tDevice.SteadyNow();
    ptWindow->bEntryShown = false;
    Choose(*ptWindow);
    Keep();
    return eResultOk;
}

int CWall::Loop(uint32_t dwWindow, tagDecoderChannelLoopConfig* ptLoop) const
{
    tagWindow const* ptWindow = nullptr;
    tagDecoderChannelLoopConfig tLoop{};
    int nResult = Find(dwWindow, ptWindow);
    nResult = nResult ? nResult : ReadRecord(tLoop, ptLoop);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    auto atEntries = ptWindow->atLoop;
    for (tagDecoderLoopEntry& t : atEntries)
    {
        std::ranges::fill(t.tSource.szPassword, '\0');
    }
    nResult = WriteList(ptLoop, atEntries.data(), atEntries.size());
    tLoop.dwCount = static_cast<uint32_t>(atEntries.size());
    tLoop.dwSkipSeconds = ptWindow->dwSkipSeconds;
    return nResult ? nResult : Adapter_ProtocolSet::WriteRecord(ptLoop, tLoop);
}

int CWall::SetLoopState(tagCaller const&, uint32_t dwWindow, eDecoderChannelStatus eStatus)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (eStatus < eDecoderLoopOff || eStatus > eDecoderLoopHold)
    {
        return eResultBadArgument;
    }
    if (ptWindow->atLoop.empty() && eStatus != eDecoderLoopOff)
    {
        return eResultNotFound;
    }
    ptWindow->eLoop = eStatus;
    ptWindow->llEntryUs = m_tDevice.SteadyNow();
    ptWindow->bEntryShown = false;
    ptWindow->bBlank = ptWindow->bBlank && eStatus == eDecoderLoopOff;
    Choose(*ptWindow);
    Keep();
    return eResultOk;
}

int CWall::LoopState(uint32_t dwWindow, eDecoderChannelStatus& eStatus) const
{
    tagWindow const* ptWindow = nullptr;
    const int nResult = Find(dwWindow, ptWindow);
    eStatus = nResult ? eStatus : ptWindow->eLoop;
    return nResult;
}

int CWall::LoopStates(tagDecoderLoopStatus* ptStatus) const
{
    std::vector<tagDecoderLoopState> atStates;
    for (auto const& [dwWindow, t] : m_tWindows)
    {
        if (!t.atLoop.empty())
        {
            const uint32_t dwDwell = t.atLoop[t.nEntry].dwDwellSeconds ? t.atLoop[t.nEntry].dwDwellSeconds : 10;
            const int64_t llLeftUs = t.llEntryUs + dwDwell * g_llSecondUs - m_tDevice.SteadyNow();
            atStates.push_back(
                {dwWindow, static_cast<uint32_t>(t.eLoop), static_cast<uint32_t>(t.nEntry),
                 t.eLoop == eDecoderLoopOn ? static_cast<uint32_t>(std::max<int64_t>(llLeftUs, 0) / 1000) : 0});
        }
    }
    return m_atScreens.empty() ? int{eResultNotSupported} : WriteList(ptStatus, atStates.data(), atStates.size());
}

// --- recordings ------------------------------------------------------------------------------------------------------

int64_t CWall::Position(tagPlay const& t) const
{
    const int64_t llPassedUs = t.bPaused ? 0 : m_tDevice.SteadyNow() - t.llSinceUs;
    const int64_t llSpeed = t.dwSpeed & ~static_cast<uint32_t>(eSpeedReverse);
    const int64_t llMovedUs = llPassedUs * llSpeed / eSpeedNormal * (t.dwSpeed & eSpeedReverse ? -1 : 1);
    return std::clamp(t.llPositionUs + llMovedUs, t.llStartUs, t.llEndUs);
}

int CWall::SetPlay(tagCaller const&, uint32_t dwWindow, tagDecoderSetPlayStatusParameter const& tPara)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (tPara.dwAction < eDecoderPlayOpen || tPara.dwAction > eDecoderPlayClose)
    {
        return eResultBadArgument;
    }
    if (tPara.dwAction == eDecoderPlayOpen)
    {
        if (const int nResult = CheckSource(tPara.tSource))
        {
            return nResult;
        }
        const bool bOwn = tPara.tSource.dwKind == eDecoderSourceChannel;
        if ((!bOwn && tPara.tSource.dwKind != eDecoderSourceDevice) || tPara.llStartUs <= 0 ||
            tPara.llEndUs <= tPara.llStartUs)
        {
            return eResultBadArgument;
        }
        const auto atFound = bOwn ? m_tDevice.Part<CStorage>().Find({uint64_t{1} << tPara.tSource.dwChannel,
                                                                     tPara.dwTypes,
                                                                     0,
                                                                     tPara.llStartUs,
                                                                     tPara.llEndUs,
                                                                     false,
                                                                     {}})
                                  : std::vector<tagRecording>{};
        if (bOwn && atFound.empty())
        {
            return eResultNotFound;
        }
        ptWindow->tPlay = tagPlay{tPara.tSource, tPara.llStartUs, tPara.llEndUs,        eSpeedNormal,
                                  false,         tPara.llStartUs, m_tDevice.SteadyNow()};
        Choose(*ptWindow);
        return eResultOk;
    }
    if (!ptWindow->tPlay)
    {
        return eResultNotFound;
    }
    tagPlay& t = *ptWindow->tPlay;
    const uint32_t dwSpeed = tPara.dwSpeed & ~static_cast<uint32_t>(eSpeedReverse);
    if ((tPara.dwAction == eDecoderPlaySpeed && (dwSpeed < eSpeedNormal / 8 || dwSpeed > eSpeedNormal * 16)) ||
        (tPara.dwAction == eDecoderPlaySeek && (tPara.llPositionUs < t.llStartUs || tPara.llPositionUs > t.llEndUs)))
    {
        return eResultBadArgument;
    }
    t.llPositionUs = Position(t);
    t.llSinceUs = m_tDevice.SteadyNow();
    switch (tPara.dwAction)
    {
    case eDecoderPlayPause:
    case eDecoderPlayGo:
        t.bPaused = tPara.dwAction == eDecoderPlayPause;
        break;
    case eDecoderPlayStep:
        t.bPaused = true;
        t.llPositionUs = std::min(t.llPositionUs + g_llSecondUs / 25, t.llEndUs);
        break;
    case eDecoderPlaySeek:
        t.llPositionUs = tPara.llPositionUs;
        break;
    case eDecoderPlaySpeed:
        t.dwSpeed = tPara.dwSpeed;
        break;
    default:
        ptWindow->tPlay.reset();
    }
    Choose(*ptWindow);
    Advance();
    return eResultOk;
}

int CWall::Play(tagDecoderGetPlayStatusParameter& tPara) const
{
    tagWindow const* ptWindow = nullptr;
    const int nResult = Find(tPara.dwChannel, ptWindow);
    if (nResult == eResultOk)
    {
        tPara = {sizeof tPara, tPara.dwChannel, ptWindow->dwState, 0, 0, 0, 0};
        if (ptWindow->tPlay)
        {
            tPara.dwSpeed = ptWindow->tPlay->dwSpeed;
            tPara.llPositionUs = Position(*ptWindow->tPlay);
            tPara.llStartUs = ptWindow->tPlay->llStartUs;
            tPara.llEndUs = ptWindow->tPlay->llEndUs;
        }
    }
    return nResult;
}

// --- frames that are sent --------------------------------------------------------------------------------------------

int CWall::OpenTransfer(uint32_t dwWindow, tagStreamTransferPara const& tPara)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (ptWindow->tConfig.tSource.dwKind != eDecoderSourceTransfer)
    {
        return eResultRefused;
    }
    if (ptWindow->bTransfer)
    {
        return eResultBusy;
    }
    const bool bVideo = tPara.dwVideoCodec == 0 || tPara.dwVideoCodec == eCodecH264 || tPara.dwVideoCodec == eCodecH265;
    if (!bVideo || (tPara.dwVideoCodec == 0 && tPara.dwAudioCodec == 0))
    {
        return eResultBadArgument;
    }
    ptWindow->bTransfer = true;
    ptWindow->tTransfer = tPara;
    return eResultOk;
}

int CWall::Transfer(uint32_t dwWindow, tagStreamTransferFrame const& tFrame)
{
    tagWindow* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (tFrame.dwMediaType > eMediaOther || !tFrame.pbyData || tFrame.dwLength == 0)
    {
        return eResultBadArgument;
    }
    if (tFrame.dwMediaType == eMediaVideo && (tFrame.dwFlags & eFrameKey) != 0)
    {
        ptWindow->pTransferred =
            std::make_shared<CStore::Bytes const>(tFrame.pbyData, tFrame.pbyData + tFrame.dwLength);
        ptWindow->dwTransferCodec = tFrame.dwCodec;
    }
    return eResultOk;
}

void CWall::CloseTransfer(uint32_t dwWindow)
{
    tagWindow* ptWindow = nullptr;
    if (Find(dwWindow, ptWindow) == eResultOk)
    {
        ptWindow->bTransfer = false;
        ptWindow->pTransferred = nullptr;
    }
}

// --- as it is --------------------------------------------------------------------------------------------------------

tagDecoderWindowStatus CWall::StatusOf(tagWindow const& tWindow) const
{
    tagDecoderWindowStatus t{};
    t.dwChannel = tWindow.tPlace.dwChannel;
    t.dwState = tWindow.dwState;
    t.dwShows = tWindow.dwShows;
    t.dwResult = tWindow.dwResult;
    t.dwKind = tWindow.tSource.dwKind;
    t.dwSourceChannel = tWindow.dwSourceChannel;
    CopyText(t.szAddress, Text(tWindow.tSource.szAddress));
    const bool bPicture = t.dwState == eWindowShowing || t.dwState == eWindowPlaying || t.dwState == eWindowPaused;
    tagConfigVideoEncoder tVideo = tWindow.tVideo;
    if (tWindow.tSource.dwKind == eDecoderSourceChannel)
    {
        tVideo = m_tDevice.Part<CConfiguration>().Get<tagConfigVideoEncoder>(tWindow.tSource.dwChannel,
                                                                             tWindow.tSource.dwStreamKind);
    }
    else if (tWindow.tSource.dwKind == eDecoderSourceTransfer)
    {
        tVideo.dwCodec = tWindow.dwTransferCodec;
        tVideo.dwWidth = tWindow.tTransfer.dwWidth;
        tVideo.dwHeight = tWindow.tTransfer.dwHeight;
        tVideo.dwFrameRate = tWindow.tTransfer.dwFrameRate;
    }
    if (bPicture)
    {
        t.dwCodec = tVideo.dwCodec;
        t.dwWidth = tVideo.dwWidth;
        t.dwHeight = tVideo.dwHeight;
        t.dwFrameRate = tVideo.dwFrameRate;
        t.dwBitRate = tVideo.dwBitRate;
    }
    return t;
}

int CWall::Status(tagDecoderChannelStatus* ptStatus) const
{
    std::vector<tagDecoderWindowStatus> atWindows;
    for (auto const& [dwWindow, tWindow] : m_tWindows)
    {
        atWindows.push_back(StatusOf(tWindow));
    }
    return m_atScreens.empty() ? int{eResultNotSupported} : WriteList(ptStatus, atWindows.data(), atWindows.size());
}

tagWindowView CWall::ViewOf(tagWindow const& tWindow) const
{
    tagWindowView t;
    t.tPlace = tWindow.tPlace;
    t.tStatus = StatusOf(tWindow);
    t.tConfig = tWindow.tConfig;
    std::ranges::fill(t.tConfig.tSource.szPassword, '\0');
    t.tDisplay = tWindow.tDisplay;
    t.dwChannel = tWindow.dwSourceChannel;
    t.dwStreamKind = tWindow.tSource.dwStreamKind;
    t.pSource = IsRemote(tWindow.tSource)                         ? tWindow.pSource.lock()
                : tWindow.tSource.dwKind == eDecoderSourceChannel ? m_tDevice.weak_from_this().lock()
                                                                  : nullptr;
    t.llTimeUs = tWindow.tPlay                                 ? Position(*tWindow.tPlay)
                 : tWindow.tDisplay.dwAction == eDisplayFreeze ? tWindow.llFrozenUs
                                                               : m_tDevice.Clock().NowUs();
    t.pTransferred = tWindow.tSource.dwKind == eDecoderSourceTransfer ? tWindow.pTransferred : nullptr;
    t.dwTransferCodec = tWindow.dwTransferCodec;
    t.tLogo = tWindow.tLogo;
    if (tWindow.tDisplay.dwAction == eDisplayFillScreen || tWindow.tDisplay.dwAction == eDisplayFillWall)
    {
        tagDecoderWindow tBig = ScreenPlace(ScreenOf(tWindow.tPlace));
        tBig = tWindow.tDisplay.dwAction == eDisplayFillScreen ? tBig : tagDecoderWindow{0,         0, 0, g_dwWhole,
                                                                                         g_dwWhole, 0, 0, 0};
        tBig.dwChannel = t.tPlace.dwChannel;
        tBig.dwLayer = 0xFFFFFFFF; // before all others
        t.tPlace = tBig;
    }
    t.tPlace.bHidden = t.tPlace.bHidden || tWindow.tDisplay.dwAction == eDisplayHide ? 1 : 0;
    return t;
}

tagWallView CWall::View() const
{
    tagWallView tView;
    tView.dwRows = m_dwRows;
    tView.dwColumns = m_dwColumns;
    const auto nScreens =
        static_cast<std::ptrdiff_t>(std::min<std::size_t>(m_dwRows * m_dwColumns, m_atScreens.size()));
    tView.atScreens.assign(m_atScreens.begin(), m_atScreens.begin() + nScreens);
    tView.atSignals.assign(m_atSignals.begin(), m_atSignals.begin() + nScreens);
    tView.llNowUs = m_tDevice.Clock().NowUs();
    tView.nUtcOffsetMinutes = m_tDevice.Part<CConfiguration>().Get<tagConfigClock>().nUtcOffsetMinutes;
    for (auto const& [dwWindow, tWindow] : m_tWindows)
    {
        tagWindowView t = ViewOf(tWindow);
        if (!t.tPlace.bHidden && !m_atScreens.empty())
        {
            tView.atWindows.push_back(std::move(t));
        }
    }
    std::ranges::stable_sort(tView.atWindows, {}, [](tagWindowView const& t) { return t.tPlace.dwLayer; });
    return tView;
}

int CWall::Time(uint32_t dwWindow, tagTimeInfo& tTime, uint32_t dwFlag) const
{
    tagWindow const* ptWindow = nullptr;
    if (const int nResult = Find(dwWindow, ptWindow))
    {
        return nResult;
    }
    if (dwFlag > eOsdClock)
    {
        return eResultBadArgument;
    }
    const tagWindowView tView = ViewOf(*ptWindow);
    if (dwFlag == eOsdFrameTime && !tView.pSource)
    {
        return eResultNotFound;
    }
    const auto tClock = m_tDevice.Part<CConfiguration>().Get<tagConfigClock>();
    tTime.llTimeUs = dwFlag == eOsdClock ? tClock.llTimeUs : tView.llTimeUs;
    tTime.nUtcOffsetMinutes = tClock.nUtcOffsetMinutes;
    return eResultOk;
}
} // namespace device
