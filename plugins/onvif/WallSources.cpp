// Decoder walls: channels of the decoder's own as what a window shows. A receiver knows addresses alone.

#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Profiles.h"
#include "plugins/onvif/StreamAddress.h"
#include "plugins/onvif/Wall.h"
#include "plugins/onvif/WallWords.h"

#include "plugins/common/Text.h"

#include "protocol/interface/Live.h"

namespace onvifclient
{
void CWall::Forget()
{
    const std::lock_guard tLock(m_pShared->tMutex);
    m_pShared->tOwn.clear();
}

// The addresses of all channels, asked once.
int CWall::AskOwn()
{
    {
        const std::lock_guard tLock(m_pShared->tMutex);
        if (!m_pShared->tOwn.empty())
        {
            return eResultOk;
        }
    }
    CProfiles& tProfiles = m_tLogin.Part<CProfiles>();
    std::shared_ptr<CProfiles::Channels const> pChannels;
    if (const int nResult = tProfiles.All(pChannels))
    {
        return nResult;
    }
    std::map<std::string, tagOwn> tOwn;
    for (uint32_t i = 0; i < pChannels->size(); ++i)
    {
        for (const uint32_t dwKind : {uint32_t{eStreamMain}, uint32_t{eStreamSub}})
        {
            tagProfile const* ptProfile = nullptr;
            std::string strUrl;
            if ((*pChannels)[i].Stream(dwKind, ptProfile) == eResultOk &&
                StreamAddress(m_tLogin, tProfiles.IsMedia2(), ptProfile->strToken, eRtspTcp, strUrl) == eResultOk)
            {
                tOwn.try_emplace(strUrl, tagOwn{i, dwKind});
            }
        }
    }
    const std::lock_guard tLock(m_pShared->tMutex);
    m_pShared->tOwn = std::move(tOwn);
    return eResultOk;
}

int CWall::ReceiverFor(tagPane const& tPane, std::size_t nScreens, tagDecoderSource const& t,
                       tagDecoderSource const& tBefore, tagReceiver& tReceiver)
{
    if (t.dwKind != eDecoderSourceChannel)
    {
        return ReceiverOf(t, tBefore, tReceiver);
    }
    std::shared_ptr<tagChannel const> pChannel;
    bool bMedia2 = false;
    tagProfile const* ptProfile = nullptr;
    int nResult = FindChannel(m_tLogin, t.dwChannel, pChannel, bMedia2);
    // Where any stream will do, the sub stream is enough for half a screen.
    const bool bSmall = uint64_t{tPane.tPlace.dwWidth} * nScreens <= g_dwWhole / 2 + 1;
    const bool bSub = t.dwStreamKind == 0 && bSmall && pChannel && pChannel->atProfiles.size() > 1;
    nResult = nResult ? nResult : pChannel->Stream(bSub ? uint32_t{eStreamSub} : t.dwStreamKind, ptProfile);
    std::string strUrl;
    nResult = nResult ? nResult : StreamAddress(m_tLogin, bMedia2, ptProfile->strToken, eRtspTcp, strUrl);
    if (nResult == eResultOk)
    {
        tReceiver = {WithLogin(strUrl, m_tLogin.Client().User(), m_tLogin.Client().Password()), true};
    }
    return nResult;
}

// A channel of the decoder's own, in a window.
int CWall::Show(uint32_t dwWindow, uint32_t dwChannel)
{
    std::vector<tagScreen> atScreens;
    tagPane tPane;
    tagReceiver tReceiver;
    tagDecoderSource t{};
    t.dwKind = eDecoderSourceChannel;
    t.dwChannel = dwChannel;
    int nResult = Find(dwWindow, atScreens, tPane);
    nResult = nResult ? nResult : ReceiverFor(tPane, atScreens.size(), t, {}, tReceiver);
    return nResult ? nResult : Bind(atScreens[tPane.iScreen].strToken, tPane, tReceiver);
}

tagDecoderSource CWall::SourceFor(tagReceiver const& tReceiver)
{
    tagDecoderSource t = SourceOf(tReceiver);
    const std::string strAddress = plugin::Text(t.szAddress);
    const bool bHere = strAddress.find("://" + m_tLogin.Client().Address().HostText()) != std::string::npos;
    if (!bHere || AskOwn() != eResultOk)
    {
        return t;
    }
    const std::lock_guard tLock(m_pShared->tMutex);
    const auto it = m_pShared->tOwn.find(strAddress);
    if (it != m_pShared->tOwn.end())
    {
        t = {};
        t.dwKind = eDecoderSourceChannel;
        t.dwChannel = it->second.dwChannel;
        t.dwStreamKind = it->second.dwStreamKind;
    }
    return t;
}
} // namespace onvifclient
