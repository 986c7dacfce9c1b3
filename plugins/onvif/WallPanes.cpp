// Decoder walls: what panes are bound to, and what they are doing.

#include "plugins/common/Text.h"
#include "plugins/onvif/Wall.h"
#include "plugins/onvif/WallWords.h"

#include "protocol/Record.h"

#include <algorithm>
#include <utility>

namespace onvifclient
{
using Adapter_ProtocolSet::ReadRecord;
using Adapter_ProtocolSet::WriteList;
using Adapter_ProtocolSet::WriteRecord;
using onvif::CAnswer;
using onvif::CXmlWriter;
using onvif::eService;

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
    t.tSource = SourceFor(tReceiver);
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
    if (const int nRefused = ReceiverFor(tPane, atScreens.size(), t.tSource, tOld.tSource, tReceiver))
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
    nResult = nResult ? nResult : Find(dwWindow, atScreens, tPane);
    nResult = nResult ? nResult : ReceiverFor(tPane, atScreens.size(), t.tSource, {}, tReceiver);
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
        const tagDecoderSource tSource = SourceFor(tReceiver);
        t.dwKind = tSource.dwKind;
        t.dwSourceChannel = tSource.dwChannel;
        plugin::CopyText(t.szAddress, plugin::Text(tSource.szAddress));
        const std::lock_guard tLock(m_pShared->tMutex);
        t.dwShows = m_pShared->tBound.contains(tPane.dwWindow) ? 2 : 4;
    }
    return WriteList(ptStatus, atStatus.data(), atStatus.size());
}
} // namespace onvifclient
