#include "plugins/onvif/PTZ.h"

#include "plugins/onvif/Imaging.h"

#include "protocol/interface/Results.h"

#include <algorithm>

namespace onvifclient
{
using namespace onvif;

// --- what it works with ----------------------------------------------------------------------------------------------

int CHeads::Find(uint32_t dwChannel, std::shared_ptr<CHead>& pHead)
{
    std::shared_ptr<tagChannel const> pChannel;
    if (const int nResult = m_tLogin.Part<CProfiles>().Channel(dwChannel, pChannel))
    {
        return nResult;
    }
    {
        const std::lock_guard tLock(m_tMutex);
        auto& pThis = m_apHeads[dwChannel];
        if (!pThis)
        {
            pThis = std::make_shared<CHead>(m_tLogin.ClientPointer());
        }
        pHead = pThis;
    }
    return pHead->Use(std::move(pChannel));
}

void CHeads::Forget()
{
    const std::lock_guard tLock(m_tMutex);
    for (auto const& [dwChannel, pHead] : m_apHeads)
    {
        pHead->Forget();
    }
}

void CHead::Forget()
{
    const std::lock_guard tLock(m_tMutex);
    m_bKnown = false;
}

int CHead::Use(std::shared_ptr<tagChannel const> pChannel)
{
    tagProfile const* const ptMoving = m_pClient->Has(eService::PTZ) ? pChannel->Moving() : nullptr;
    const std::string strNode = ptMoving ? ptMoving->strNode : std::string();
    const std::string strProfile = ptMoving ? ptMoving->strToken : pChannel->atProfiles[0].strToken;
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_bKnown && strNode == m_strNode)
        {
            m_tUse.pChannel = std::move(pChannel);
            m_tUse.strProfile = strProfile;
            return eResultOk;
        }
    }
    std::shared_ptr<tagNode> pNode;
    if (ptMoving)
    {
        pNode = std::make_shared<tagNode>();
        if (const int nResult = AskNode(*m_pClient, strNode, *pNode))
        {
            return nResult;
        }
    }
    const std::lock_guard tLock(m_tMutex);
    m_tUse = {std::move(pChannel), std::move(pNode), strProfile};
    m_strNode = strNode;
    m_bKnown = true;
    return eResultOk;
}

CHead::tagUse CHead::Used() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_tUse;
}

CXmlWriter CHead::Body(tagUse const& tUse)
{
    CXmlWriter tBody;
    tBody.Add("tptz:ProfileToken", tUse.strProfile);
    return tBody;
}

int CHead::Send(char const* szName, CXmlWriter tBody)
{
    return m_pClient->Call({eService::PTZ, szName, tBody.Take()}).Result();
}

std::string Vector2(char const* szName, tagSpace const& tSpace, double dX, double dY)
{
    CXmlWriter t;
    t.Open(szName).Attribute("x", NumberText(dX)).Attribute("y", NumberText(dY));
    return tSpace.strUri.empty() ? t.Take() : t.Attribute("space", tSpace.strUri).Take();
}

std::string Vector1(char const* szName, tagSpace const& tSpace, double dX)
{
    CXmlWriter t;
    t.Open(szName).Attribute("x", NumberText(dX));
    return tSpace.strUri.empty() ? t.Take() : t.Attribute("space", tSpace.strUri).Take();
}

std::string SpeedText(tagNode const& tNode, int32_t nSpeed, char const* szElement)
{
    tagSpace const* const ptHead = Usual(tNode.atSpeed);
    tagSpace const* const ptZoom = Usual(tNode.atZoomSpeed);
    if (!ptHead && !ptZoom)
    {
        return {};
    }
    const int32_t nThis = nSpeed == 0 ? g_nFull : nSpeed;
    CXmlWriter t;
    t.Open(szElement);
    if (ptHead)
    {
        t.Raw(Vector2("tt:PanTilt", *ptHead, ptHead->tX.dMost * nThis / g_nFull, ptHead->tY.dMost * nThis / g_nFull));
    }
    if (ptZoom)
    {
        t.Raw(Vector1("tt:Zoom", *ptZoom, ptZoom->tX.dMost * nThis / g_nFull));
    }
    return t.Take();
}

int CHead::Command(ePTZControlCmdCode eCommand, Para const& anPara, char const* szName)
{
    const tagUse tUse = Used();
    if (!tUse.pNode && eCommand != ePTZFocus && eCommand != ePTZFocusOnce && eCommand != ePTZIris)
    {
        // A lens may move where the head can't.
        return eCommand == ePTZStop && MovesFocus() ? StopFocus(tUse) : int{eResultNotSupported};
    }
    switch (eCommand)
    {
    case ePTZStop:
        return Stop(tUse, static_cast<uint32_t>(anPara[0]));
    case ePTZMove:
        return Turn(tUse, anPara[0], anPara[1], anPara[2], true, anPara[3]);
    case ePTZZoom:
        return Turn(tUse, 0, 0, anPara[0], false, anPara[3]);
    case ePTZFocus:
        return Focus(tUse, anPara[0], anPara[3]);
    case ePTZIris:
        return Iris(tUse, anPara[0], anPara[3]);
    case ePTZFocusOnce:
        return SetAutoFocus(*m_pClient, *tUse.pChannel, true);
    case ePTZAbsolute:
        return Absolute(tUse, anPara);
    case ePTZRelative:
        return Relative(tUse, anPara);
    case ePTZPresetSet:
        return SetPreset(tUse, static_cast<uint32_t>(anPara[0]), szName ? szName : "");
    case ePTZPresetCall:
        return CallPreset(tUse, static_cast<uint32_t>(anPara[0]), anPara[1]);
    case ePTZPresetRemove:
        return RemovePreset(tUse, static_cast<uint32_t>(anPara[0]));
    case ePTZHomeSet:
        return Send("SetHomePosition", Body(tUse));
    case ePTZHomeCall:
        return Within(anPara[0], 0, g_nFull)
                   ? Send("GotoHomePosition", Body(tUse).Raw(SpeedText(*tUse.pNode, anPara[0], "tptz:Speed")))
                   : int{eResultBadArgument};
    case ePTZAuxiliary:
        return Auxiliary(tUse, anPara);
    default:
        return eCommand >= ePTZTourAddPreset && eCommand <= ePTZTourRemove ? TourCommand(tUse, eCommand, anPara)
                                                                           : int{eResultBadArgument};
    }
}

// --- continuous movements --------------------------------------------------------------------------------------------

// bHead: pan and tilt too, else zoom alone.
int CHead::Turn(tagUse const& tUse, int32_t nPan, int32_t nTilt, int32_t nZoom, bool bHead, int32_t nMilliseconds)
{
    if (!Within(nPan, -g_nFull, g_nFull) || !Within(nTilt, -g_nFull, g_nFull) || !Within(nZoom, -g_nFull, g_nFull))
    {
        return eResultBadArgument;
    }
    const bool bTurns = bHead && !tUse.pNode->atVelocity.empty();
    const bool bZooms = !tUse.pNode->atZoomVelocity.empty();
    if ((!bTurns && (nPan != 0 || nTilt != 0)) || (!bZooms && nZoom != 0) || (!bTurns && !bZooms))
    {
        return eResultNotSupported;
    }
    const int64_t llForMs = MovementMs(nMilliseconds);
    // A speed of 0 for all of it is a stop, which every device knows.
    const bool bStands = nPan == 0 && nTilt == 0 && nZoom == 0;
    const int nResult = bStands ? StopPart(tUse, (bTurns ? ePTZAxisPan | ePTZAxisTilt : 0U) | ePTZAxisZoom)
                                : SendVelocity(tUse, {nPan, nTilt, nZoom, 0}, bTurns, bZooms, llForMs);
    if (nResult == eResultOk && !bStands)
    {
        if (bTurns)
        {
            Begin(eMotionHead, nPan, nTilt, llForMs);
        }
        if (bZooms)
        {
            Begin(eMotionZoom, nZoom, 0, llForMs);
        }
    }
    return nResult;
}

// What isn't named goes on, said once more: devices differ in what they make of a part that is left out.
int CHead::SendVelocity(tagUse const& tUse, Para anSpeed, bool bHead, bool bZoom, int64_t llMilliseconds)
{
    bool bNoTimeout = false;
    {
        const std::lock_guard tLock(m_tMutex);
        const auto fnGoesOn = [&](eMotion eWhich)
        {
            const int64_t llLeft = LeftMs(m_atMotions[eWhich]);
            llMilliseconds = std::max(llMilliseconds, llLeft);
            return llLeft > 0;
        };
        if (!bHead && fnGoesOn(eMotionHead))
        {
            bHead = true;
            anSpeed[0] = m_atMotions[eMotionHead].nX;
            anSpeed[1] = m_atMotions[eMotionHead].nY;
        }
        if (!bZoom && fnGoesOn(eMotionZoom))
        {
            bZoom = true;
            anSpeed[2] = m_atMotions[eMotionZoom].nX;
        }
        bNoTimeout = m_bNoTimeout;
    }
    CXmlWriter tBody = Body(tUse);
    tBody.Open("tptz:Velocity");
    if (bHead)
    {
        tagSpace const& t = *Usual(tUse.pNode->atVelocity);
        tBody.Raw(Vector2("tt:PanTilt", t, SpeedIn(t.tX, anSpeed[0]), SpeedIn(t.tY, anSpeed[1])));
    }
    if (bZoom)
    {
        tagSpace const& t = *Usual(tUse.pNode->atZoomVelocity);
        tBody.Raw(Vector1("tt:Zoom", t, SpeedIn(t.tX, anSpeed[2])));
    }
    tBody.Close();
    const std::string strBody = tBody.Take();
    // In whole seconds, since not every device understands parts of one: what ends the movement in time is our own
    // stop, and the device's time-out only where that is lost.
    const std::string strTimeout =
        CXmlWriter().Add("tptz:Timeout", DurationText((llMilliseconds + 999) / 1000 * 1000)).Take();
    const CAnswer tAnswer =
        m_pClient->Call({eService::PTZ, "ContinuousMove", bNoTimeout ? strBody : strBody + strTimeout});
    if (bNoTimeout || tAnswer.Result() != eResultBadArgument)
    {
        return tAnswer.Result();
    }
    const int nResult = m_pClient->Call({eService::PTZ, "ContinuousMove", strBody}).Result();
    const std::lock_guard tLock(m_tMutex);
    m_bNoTimeout = nResult == eResultOk;
    return nResult;
}

int64_t CHead::LeftMs(tagMotion const& tMotion)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(tMotion.tEnd - Clock::now()).count();
}

void CHead::Begin(eMotion eWhich, int32_t nX, int32_t nY, int64_t llMilliseconds)
{
    const Clock::time_point tEnd = Clock::now() + std::chrono::milliseconds(llMilliseconds);
    uint32_t dwRun = 0;
    {
        const std::lock_guard tLock(m_tMutex);
        tagMotion& tMotion = m_atMotions[eWhich];
        dwRun = tMotion.dwRun + 1;
        tMotion = {nX, nY, tEnd, dwRun};
    }
    m_pClient->Http().Begin(EndLater(shared_from_this(), eWhich, dwRun, tEnd));
}

void CHead::Ended(eMotion eWhich)
{
    const std::lock_guard tLock(m_tMutex);
    tagMotion& tMotion = m_atMotions[eWhich];
    tMotion = {0, 0, {}, tMotion.dwRun + 1};
}

tagRequest CHead::StopRequest(tagUse const& tUse, eMotion eWhich)
{
    if (eWhich == eMotionFocus)
    {
        return {eService::Imaging, "Stop", CXmlWriter().Add("timg:VideoSourceToken", tUse.pChannel->strSource).Take()};
    }
    CXmlWriter tBody = Body(tUse);
    tBody.Add("tptz:PanTilt", eWhich == eMotionHead).Add("tptz:Zoom", eWhich == eMotionZoom);
    return {eService::PTZ, "Stop", tBody.Take()};
}

rtsp::CTask<> CHead::EndLater(std::shared_ptr<CHead> pSelf, eMotion eWhich, uint32_t dwRun, Clock::time_point tEnd)
{
    CClient& tClient = *pSelf->m_pClient;
    co_await tClient.Http().Until(tClient.Group(), tEnd); // a logout ends it too
    tagUse tUse;
    {
        const std::lock_guard tLock(pSelf->m_tMutex);
        if (pSelf->m_atMotions[eWhich].dwRun != dwRun)
        {
            co_return;
        }
        pSelf->m_atMotions[eWhich] = {0, 0, {}, dwRun + 1};
        tUse = pSelf->m_tUse;
    }
    tagRequest tRequest = StopRequest(tUse, eWhich);
    co_await tClient.CallAsync(std::move(tRequest));
}

int CHead::Stop(tagUse const& tUse, uint32_t dwAxes)
{
    const int nResult = StopPart(tUse, dwAxes);
    if (dwAxes == 0)
    {
        StopTours(tUse);
    }
    return nResult;
}

// dwAxes: ePTZAxis bits, 0: all.
int CHead::StopPart(tagUse const& tUse, uint32_t dwAxes)
{
    const bool bAll = dwAxes == 0;
    const bool bPan = bAll || (dwAxes & ePTZAxisPan) != 0;
    const bool bTilt = bAll || (dwAxes & ePTZAxisTilt) != 0;
    const bool bZoom = bAll || (dwAxes & ePTZAxisZoom) != 0;
    const bool bFocus = (dwAxes & ePTZAxisFocus) != 0 || (bAll && MovesFocus());
    tagMotion tHead;
    {
        const std::lock_guard tLock(m_tMutex);
        tHead = m_atMotions[eMotionHead];
    }
    int nResult = eResultOk;
    const int64_t llLeftMs = LeftMs(tHead);
    if (bPan != bTilt && llLeftMs > 0 && (bPan ? tHead.nY : tHead.nX) != 0)
    {
        // ONVIF stops both; the other one goes on by a new movement.
        const Para anSpeed = {bPan ? 0 : tHead.nX, bTilt ? 0 : tHead.nY, 0, 0};
        nResult = SendVelocity(tUse, anSpeed, true, false, llLeftMs);
        if (nResult == eResultOk)
        {
            Begin(eMotionHead, anSpeed[0], anSpeed[1], llLeftMs);
        }
        if (bZoom && nResult == eResultOk)
        {
            nResult = StopPart(tUse, ePTZAxisZoom);
        }
    }
    else if (bPan || bTilt || bZoom)
    {
        nResult = Send("Stop", Body(tUse).Add("tptz:PanTilt", bPan || bTilt).Add("tptz:Zoom", bZoom));
        // One that failed is tried again when the movement's time is over.
        if (nResult == eResultOk && (bPan || bTilt))
        {
            Ended(eMotionHead);
        }
        if (nResult == eResultOk && bZoom)
        {
            Ended(eMotionZoom);
        }
    }
    if (bFocus)
    {
        const int nFocus = StopFocus(tUse);
        nResult = nResult ? nResult : nFocus;
    }
    return nResult;
}
} // namespace onvifclient
