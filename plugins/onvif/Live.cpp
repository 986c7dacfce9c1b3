#include "plugins/onvif/Live.h"

#include "plugins/onvif/MediaCalls.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Profiles.h"

#include "plugins/common/Text.h"

#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;
using namespace std::chrono_literals;

constexpr auto g_tAskPause = 5s; // between two questions for a stream's address

// How a stream is to travel, in the words of either media service.
onvif::tagRequest AddressRequest(bool bMedia2, std::string const& strProfile, uint32_t dwTransport)
{
    const bool bGroup = dwTransport == eRtspMulticast;
    const bool bDatagrams = dwTransport == eRtspUdp || dwTransport == eRtspAutomatic;
    CXmlWriter t;
    if (bMedia2)
    {
        t.Add("tr2:Protocol", bGroup ? "RtspMulticast" : bDatagrams ? "RtspUnicast" : "RTSP");
        t.Add("tr2:ProfileToken", strProfile);
    }
    else
    {
        t.Open("trt:StreamSetup").Add("tt:Stream", bGroup ? "RTP-Multicast" : "RTP-Unicast");
        t.Open("tt:Transport").Add("tt:Protocol", bGroup || bDatagrams ? "UDP" : "RTSP").Close().Close();
        t.Add("trt:ProfileToken", strProfile);
    }
    return {MediaService(bMedia2), "GetStreamUri", t.Take()};
}

// Without what may stand in front of the host; empty: there is none.
std::string AddressOf(CClient const& tClient, CAnswer const& tAnswer, bool bMedia2)
{
    std::string strUrl(onvif::Text(tAnswer.Body(), bMedia2 ? "Uri" : "MediaUri/Uri"));
    const std::size_t nHost = strUrl.find("://");
    const std::size_t nEnd = nHost == std::string::npos ? 0 : strUrl.find('/', nHost + 3);
    const std::size_t nAt = strUrl.substr(0, nEnd).rfind('@');
    if (nAt != std::string::npos && nAt > nHost)
    {
        strUrl.erase(nHost + 3, nAt - nHost - 2);
    }
    return strUrl.empty() ? strUrl : tClient.Reachable(strUrl);
}
} // namespace

int StreamAddress(CLogin const& tLogin, bool bMedia2, std::string const& strProfile, uint32_t dwTransport,
                  std::string& strUrl)
{
    const CAnswer tAnswer = tLogin.Call(AddressRequest(bMedia2, strProfile, dwTransport));
    strUrl = AddressOf(tLogin.Client(), tAnswer, bMedia2);
    return !tAnswer ? tAnswer.Result() : strUrl.empty() ? int{eResultRefused} : int{eResultOk};
}

// --- the stream ------------------------------------------------------------------------------------------------------

int CLive::Connect(std::string const& strUrl, void*& hInner)
{
    tagUserLoginPara tLogin{};
    if (strUrl.size() >= sizeof tLogin.szAddress)
    {
        return eResultBadAddress;
    }
    CClient const& tClient = Login().Client();
    plugin::CopyText(tLogin.szAddress, strUrl);
    tClient.User().copy(tLogin.szUserName, sizeof tLogin.szUserName);
    tClient.Password().copy(tLogin.szPassword, sizeof tLogin.szPassword);
    void* hLogin = nullptr;
    int nResult = m_tProtocols.UserLogin(&hLogin, &tLogin, eProtocolRTSP);
    explicit_bzero(tLogin.szPassword, sizeof tLogin.szPassword);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    tagRealStreamPara tPara = m_tWish.tPara;
    tPara.dwStreamKind = eStreamMain;
    nResult = m_tProtocols.RealStreamConnect(&hInner, hLogin, &tPara, eProtocolRTSP);
    m_tProtocols.UserLogout(hLogin, eProtocolRTSP); // its streams stay
    return nResult;
}

// The functions get this object: it lives until the stream was closed, and a run that is the last one holds it.
void CLive::TakeFrames(void* hInner)
{
    m_tProtocols.StreamMediaCB(
        hInner,
        [](void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
        {
            const auto pSelf = reinterpret_cast<CLive*>(dwUser)->shared_from_this();
            return pSelf->OnFrame(*ptFrame);
        },
        reinterpret_cast<unsigned long>(this), eProtocolRTSP);
}

void CLive::TakeEvents(void* hInner)
{
    m_tProtocols.SetRtspEvenCb(
        hInner,
        [](void*, unsigned long dwEvent, unsigned long dwWord2, unsigned long, unsigned long, unsigned long dwUser)
        {
            const auto pSelf = reinterpret_cast<CLive*>(dwUser)->shared_from_this();
            pSelf->OnEvent(dwEvent, dwWord2);
            return 0;
        },
        reinterpret_cast<unsigned long>(this), eProtocolRTSP);
}

int CLive::Open(std::string const& strUrl)
{
    void* hInner = nullptr;
    const int nResult = Connect(strUrl, hInner);
    if (nResult == eResultOk)
    {
        {
            const std::lock_guard tLock(m_tMutex);
            m_hInner = hInner;
            m_strUrl = strUrl;
        }
        TakeEvents(hInner);
    }
    return nResult;
}

void* CLive::Inner() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_hInner;
}

bool CLive::Close()
{
    void* hInner = nullptr;
    {
        const std::lock_guard tLock(m_tMutex);
        m_bClosed = true;
        std::swap(hInner, m_hInner);
    }
    const int nResult = hInner ? m_tProtocols.RealStreamDisconnect(hInner, eProtocolRTSP) : int{eResultOk};
    const bool bEnded = m_tFrames.Close();
    return m_tRaw.Close() && bEnded && nResult != eResultStillRunning;
}

int CLive::Control(eTaskControl eControl)
{
    if (eControl != eTaskPlay && eControl != eTaskPause)
    {
        return eResultNotSupported;
    }
    {
        const std::lock_guard tLock(m_tMutex);
        m_bPaused = eControl == eTaskPause;
    }
    return m_tProtocols.StreamMediaControl(Inner(), eControl, eProtocolRTSP);
}

int CLive::SetFrameCallback(CCallback<StreamMediaCallback>& tCallback, StreamMediaCallback pfnFrame,
                            unsigned long dwUser)
{
    if (&tCallback == &m_tFrames)
    {
        m_bAwaitKey = true;
    }
    const bool bEnded = tCallback.Set(pfnFrame, dwUser);
    bool bFirst = false;
    void* hInner = nullptr;
    {
        const std::lock_guard tLock(m_tMutex);
        bFirst = pfnFrame && !std::exchange(m_bFrames, m_bFrames || pfnFrame);
        hInner = m_hInner;
    }
    if (bFirst && hInner)
    {
        TakeFrames(hInner);
    }
    return Ended(bEnded);
}

int CLive::Info(tagRTSPPackageInfo& tInfo) const
{
    return m_tProtocols.GetPackageInfo(Inner(), &tInfo, sizeof tInfo, 0, eProtocolRTSP);
}

// --- frames ----------------------------------------------------------------------------------------------------------

// Puts a frame on this stream's time line, which goes on where the device's stream begins anew.
void CLive::Move(tagStreamMediaFrame& tFrame)
{
    const auto tNow = Clock::now();
    if (m_bNewLine.exchange(false) && m_tLast != Clock::time_point{})
    {
        m_llShiftUs = m_llLastUs - tFrame.llPresentationTimeUs +
                      std::chrono::duration_cast<std::chrono::microseconds>(tNow - m_tLast).count();
        tFrame.dwFlags |= eFrameDiscontinuity;
    }
    tFrame.llPresentationTimeUs += m_llShiftUs;
    m_llLastUs = tFrame.llPresentationTimeUs;
    m_tLast = tNow;
}

// Answers eResultNoEntryPoint when nobody took the frame, so that the RTSP plug-in begins anew with a key frame.
int CLive::OnFrame(tagStreamMediaFrame const& tGiven)
{
    tagStreamMediaFrame tFrame = tGiven;
    Move(tFrame);
    bool bTaken = m_tRaw.Call(m_hStream.load(), &tFrame);
    if (tFrame.dwMediaType == eMediaVideo && (tFrame.dwFlags & eFrameKey) != 0)
    {
        m_bAwaitKey = false;
    }
    if (!m_bAwaitKey)
    {
        const bool bThis = m_tFrames.Call(m_hStream.load(), &tFrame);
        m_bAwaitKey = m_bAwaitKey || !bThis;
        bTaken = bTaken || bThis;
    }
    else
    {
        bTaken = bTaken || m_tFrames; // it waits for its key frame
    }
    return bTaken ? int{eResultOk} : int{eResultNoEntryPoint};
}

// --- another address -------------------------------------------------------------------------------------------------

// A stream that the device no longer serves is asked for again: after a restart, or a change of its configuration, it
// may stand somewhere else.
void CLive::OnEvent(unsigned long dwEvent, unsigned long dwWord2)
{
    std::string strNext;
    bool bAsk = false;
    {
        const std::lock_guard tLock(m_tMutex);
        strNext.swap(m_strNext);
        const bool bFailed = dwEvent == eEventLost || (dwEvent == eEventRefused && dwWord2 != 401 && dwWord2 != 403);
        bAsk = strNext.empty() && bFailed && !m_bAsking && !m_bClosed && Clock::now() - m_tAsked > g_tAskPause;
        m_bAsking = m_bAsking || bAsk;
    }
    if (bAsk)
    {
        Http().Begin(AskAgain(shared_from_this()));
    }
    if (!strNext.empty())
    {
        GoOn(strNext);
    }
}

rtsp::CTask<> CLive::AskAgain(std::shared_ptr<CLive> pSelf)
{
    tagLiveWish const& tWish = pSelf->m_tWish;
    tagRequest tRequest = AddressRequest(tWish.bMedia2, tWish.strProfile, tWish.tPara.dwStreamPara[0]);
    const CAnswer tAnswer = co_await pSelf->Login().Client().CallAsync(std::move(tRequest));
    const std::string strUrl = AddressOf(pSelf->Login().Client(), tAnswer, tWish.bMedia2);
    const std::lock_guard tLock(pSelf->m_tMutex);
    pSelf->m_bAsking = false;
    pSelf->m_tAsked = Clock::now();
    // Taken up with the next event: the stream's next try has one.
    pSelf->m_strNext = tAnswer && strUrl != pSelf->m_strUrl ? strUrl : std::string();
}

// On a thread of the RTSP plug-in, inside the old stream's event.
void CLive::GoOn(std::string const& strUrl)
{
    void* hNew = nullptr;
    if (Connect(strUrl, hNew) != eResultOk)
    {
        return;
    }
    void* hOld = hNew;
    bool bFrames = false;
    bool bPaused = false;
    {
        const std::lock_guard tLock(m_tMutex);
        bFrames = m_bFrames;
        bPaused = m_bPaused;
        if (!m_bClosed)
        {
            std::swap(m_hInner, hOld);
            m_strUrl = strUrl;
            m_bNewLine = true;
        }
    }
    m_tProtocols.RealStreamDisconnect(hOld, eProtocolRTSP);
    if (hOld == hNew)
    {
        return; // it was closed meanwhile
    }
    if (bFrames)
    {
        TakeFrames(hNew);
    }
    if (bPaused)
    {
        m_tProtocols.StreamMediaControl(hNew, eTaskPause, eProtocolRTSP);
    }
    TakeEvents(hNew);
}

// --- entry points ----------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::RealStreamConnect>, void** phStream, void* hLogin, tagRealStreamPara* ptPara)
{
    return With<CLogin>(
        hLogin,
        [&](CLogin& tLogin) -> int
        {
            if (!phStream || !ptPara || ptPara->dwStreamKind < eStreamMain ||
                ptPara->dwStreamPara[0] > eRtspAutomatic || ptPara->dwStreamPara[1] > eRtspCertificateTrusted)
            {
                return eResultBadArgument;
            }
            IProtocol* const pProtocols = Face().pProtocols;
            if (!pProtocols)
            {
                return eResultNotSupported;
            }
            CProfiles& tProfiles = tLogin.Part<CProfiles>();
            std::shared_ptr<tagChannel const> pChannel;
            tagProfile const* ptProfile = nullptr;
            std::string strUrl;
            int nResult = tProfiles.Channel(ptPara->dwChannel, pChannel);
            nResult = nResult ? nResult : pChannel->Stream(ptPara->dwStreamKind, ptProfile);
            const bool bMedia2 = tProfiles.IsMedia2();
            nResult = nResult ? nResult
                              : StreamAddress(tLogin, bMedia2, ptProfile->strToken, ptPara->dwStreamPara[0], strUrl);
            if (nResult != eResultOk)
            {
                return nResult;
            }
            const auto pLive = std::make_shared<CLive>(tLogin.shared_from_this(), *pProtocols,
                                                       tagLiveWish{ptProfile->strToken, bMedia2, *ptPara});
            nResult = pLive->Open(strUrl);
            if (nResult == eResultOk)
            {
                *phStream = Face().tHandles.Add(pLive);
                pLive->m_hStream = *phStream;
            }
            return nResult;
        });
}

int Serve(tagCall<&CClientProtocolBase::StreamMediaCB>, void* hStream, StreamMediaCallback pfnFrame,
          unsigned long dwUser)
{
    return With<CLive>(hStream,
                       [&](CLive& tLive) { return tLive.SetFrameCallback(tLive.m_tFrames, pfnFrame, dwUser); });
}

int Serve(tagCall<&CClientProtocolBase::StreamMediaRawCB>, void* hStream, StreamMediaCallback pfnFrame,
          unsigned long dwUser)
{
    return With<CLive>(hStream, [&](CLive& tLive) { return tLive.SetFrameCallback(tLive.m_tRaw, pfnFrame, dwUser); });
}

int Serve(tagCall<&CClientProtocolBase::StreamMediaControl>, void* hStream, eTaskControl eControl)
{
    return With<CMedia>(hStream, [&](CMedia& tMedia) { return tMedia.Control(eControl); });
}

int Serve(tagCall<&CClientProtocolBase::ForceIFrame>, void* hLogin, unsigned long dwStream)
{
    return With<CLogin>(hLogin,
                        [&](CLogin const& tLogin)
                        {
                            return With<CLive>(reinterpret_cast<void*>(dwStream),
                                               [&](CLive const& tLive)
                                               {
                                                   const bool bMedia2 = tLive.Wish().bMedia2;
                                                   const std::string strToken = MediaName(bMedia2, "ProfileToken");
                                                   return tLogin
                                                       .Call(
                                                           {MediaService(bMedia2), "SetSynchronizationPoint",
                                                            CXmlWriter().Add(strToken, tLive.Wish().strProfile).Take()})
                                                       .Result();
                                               });
                        });
}

int Serve(tagCall<&CClientProtocolBase::GetPackInfo>, void* hStream, void* pInfo, int nLength)
{
    return With<CLive>(hStream,
                       [&](CLive const& tLive) -> int
                       {
                           if (!pInfo || nLength <= 0)
                           {
                               return eResultBadArgument;
                           }
                           tagRTSPPackageInfo tInfo{};
                           const int nResult = tLive.Info(tInfo);
                           std::memcpy(pInfo, &tInfo, std::min(static_cast<std::size_t>(nLength), sizeof tInfo));
                           return nResult;
                       });
}

// No device says that its streams may share a connection.
int Serve(tagCall<&CClientProtocolBase::QueryStreamMediaLinkID>, void* hLogin, eMediaFunctionType eFunction,
          tagMediaLinkIDQueryResult* ptResult)
{
    return With<CLogin>(hLogin,
                        [&](CLogin const&) -> int
                        {
                            tagMediaLinkIDQueryResult t{};
                            t.dwSize = sizeof t;
                            return eFunction < eMediaFunctionLive || eFunction > eMediaFunctionDownload
                                       ? int{eResultBadArgument}
                                       : Adapter_ProtocolSet::WriteRecord(ptResult, t);
                        });
}

int Serve(tagCall<&CClientProtocolBase::SetStreamMediaLinkID>, void* hStream, unsigned long dwLink)
{
    return With<CMedia>(hStream, [&](CMedia const&) { return dwLink == 0 ? int{eResultOk} : int{eResultBadArgument}; });
}
} // namespace onvifclient
