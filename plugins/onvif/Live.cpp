#include "plugins/onvif/Live.h"

#include "plugins/onvif/StreamAddress.h"

#include "plugins/common/Text.h"

#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;
using namespace std::chrono_literals;

constexpr auto g_tAskPause = 5s; // between two questions for a stream's address
} // namespace

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
} // namespace onvifclient
