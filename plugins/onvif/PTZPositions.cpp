// Where a head is, where it is sent to, and what it can do.

#include "plugins/onvif/PTZ.h"

#include "protocol/interface/Results.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
using namespace onvif;

double PositionIn(tagSpan const& tSpan, int32_t n)
{
    return tSpan.At(int64_t{n} + g_nFull, int64_t{2} * g_nFull);
}

int32_t PositionOf(tagSpan const& tSpan, double d)
{
    return static_cast<int32_t>(tSpan.Share(d, int64_t{2} * g_nFull) - g_nFull);
}
} // namespace

int CHead::Absolute(tagUse const& tUse, Para const& anTo)
{
    if (!Within(anTo[0], -g_nFull, g_nFull) || !Within(anTo[1], -g_nFull, g_nFull) || !Within(anTo[2], 0, g_nFull) ||
        !Within(anTo[3], 0, g_nFull))
    {
        return eResultBadArgument;
    }
    tagSpace const* const ptHead = Usual(tUse.pNode->atPosition);
    tagSpace const* const ptZoom = Usual(tUse.pNode->atZoomPosition);
    if ((!ptHead && !ptZoom) || (!ptHead && (anTo[0] != 0 || anTo[1] != 0)) || (!ptZoom && anTo[2] != 0))
    {
        return eResultNotSupported;
    }
    CXmlWriter tBody = Body(tUse);
    tBody.Open("tptz:Position");
    if (ptHead)
    {
        tBody.Raw(Vector2("tt:PanTilt", *ptHead, PositionIn(ptHead->tX, anTo[0]), PositionIn(ptHead->tY, anTo[1])));
    }
    if (ptZoom)
    {
        tBody.Raw(Vector1("tt:Zoom", *ptZoom, ptZoom->tX.At(anTo[2], g_nFull)));
    }
    tBody.Close().Raw(SpeedText(*tUse.pNode, anTo[3], "tptz:Speed"));
    const int nResult = Send("AbsoluteMove", std::move(tBody));
    if (nResult == eResultOk)
    {
        Ended(eMotionHead);
        Ended(eMotionZoom);
    }
    return nResult;
}

// Where the device knows positions, by one of them: what is beyond a limit ends at it.
int CHead::Relative(tagUse const& tUse, Para const& anBy)
{
    if (std::ranges::any_of(anBy.begin(), anBy.begin() + 3, [](int32_t n) { return !Within(n, -20000, 20000); }) ||
        !Within(anBy[3], 0, g_nFull))
    {
        return eResultBadArgument;
    }
    const bool bPositions = (!tUse.pNode->atPosition.empty() || (anBy[0] == 0 && anBy[1] == 0)) &&
                            (!tUse.pNode->atZoomPosition.empty() || anBy[2] == 0);
    tagPTZPosition tNow{};
    if (bPositions && Position(tNow) == eResultOk)
    {
        return Absolute(tUse, {std::clamp(tNow.nPan + anBy[0], -g_nFull, g_nFull),
                               std::clamp(tNow.nTilt + anBy[1], -g_nFull, g_nFull),
                               std::clamp(tNow.nZoom + anBy[2], 0, g_nFull), anBy[3]});
    }
    tagSpace const* const ptHead = Usual(tUse.pNode->atTranslation);
    tagSpace const* const ptZoom = Usual(tUse.pNode->atZoomTranslation);
    if ((!ptHead && !ptZoom) || (!ptHead && (anBy[0] != 0 || anBy[1] != 0)) || (!ptZoom && anBy[2] != 0))
    {
        return eResultNotSupported;
    }
    const auto fnStep = [](tagSpan const& tSpan, int32_t n)
    { return SpeedIn(tSpan, std::clamp(n, -g_nFull, g_nFull)); };
    CXmlWriter tBody = Body(tUse);
    tBody.Open("tptz:Translation");
    if (ptHead)
    {
        tBody.Raw(Vector2("tt:PanTilt", *ptHead, fnStep(ptHead->tX, anBy[0]), fnStep(ptHead->tY, anBy[1])));
    }
    if (ptZoom)
    {
        tBody.Raw(Vector1("tt:Zoom", *ptZoom, fnStep(ptZoom->tX, anBy[2])));
    }
    tBody.Close().Raw(SpeedText(*tUse.pNode, anBy[3], "tptz:Speed"));
    return Send("RelativeMove", std::move(tBody));
}

namespace
{
// The space of a position: the one that it names, else the usual one.
tagSpace const* SpaceOf(Spaces const& atSpaces, pugi::xml_node tPosition)
{
    const auto it = std::ranges::find(atSpaces, Attribute(tPosition, "space"), &tagSpace::strUri);
    return it == atSpaces.end() ? Usual(atSpaces) : &*it;
}

bool IsMoving(pugi::xml_node tStatus, char const* szPath)
{
    return Text(tStatus, szPath) == "MOVING";
}
} // namespace

int CHead::Position(tagPTZPosition& t)
{
    const tagUse tUse = Used();
    t = {};
    t.dwSize = sizeof t;
    if (!tUse.pNode)
    {
        return eResultNotSupported;
    }
    const CAnswer tAnswer = m_pClient->Call({eService::PTZ, "GetStatus", Body(tUse).Take()});
    if (!tAnswer)
    {
        return tAnswer.Result();
    }
    const pugi::xml_node tStatus = Child(tAnswer.Body(), "PTZStatus");
    const pugi::xml_node tHead = Find(tStatus, "Position/PanTilt");
    const pugi::xml_node tZoom = Find(tStatus, "Position/Zoom");
    if (tagSpace const* const pt = SpaceOf(tUse.pNode->atPosition, tHead); pt && tHead)
    {
        t.nPan = PositionOf(pt->tX, AttributeNumber(tHead, "x"));
        t.nTilt = PositionOf(pt->tY, AttributeNumber(tHead, "y"));
    }
    if (tagSpace const* const pt = SpaceOf(tUse.pNode->atZoomPosition, tZoom); pt && tZoom)
    {
        t.nZoom = static_cast<int32_t>(pt->tX.Share(AttributeNumber(tZoom, "x"), g_nFull));
    }
    if (tagSpace const* const pt = Named(tUse.pNode->atPosition, "Spherical"); pt && tHead)
    {
        t.bHasDegrees = 1;
        t.nPanDegrees = static_cast<int32_t>(std::lround(PositionIn(pt->tX, t.nPan) * 100));
        t.nTiltDegrees = static_cast<int32_t>(std::lround(PositionIn(pt->tY, t.nTilt) * 100));
    }
    t.bMoving = IsMoving(tStatus, "MoveStatus/PanTilt") || IsMoving(tStatus, "MoveStatus/Zoom") ? 1 : 0;
    const std::lock_guard tLock(m_tMutex);
    for (tagMotion const& tMotion : m_atMotions)
    {
        t.bMoving = tMotion.tEnd > Clock::now() ? 1 : t.bMoving;
    }
    t.dwAuxiliary = m_dwAuxiliary;
    const auto fnIsAt = [&](tagPTZPreset const& tPreset)
    {
        return std::abs(tPreset.nPan - t.nPan) <= 10 && std::abs(tPreset.nTilt - t.nTilt) <= 10 &&
               std::abs(tPreset.nZoom - t.nZoom) <= 10;
    };
    const auto it = std::ranges::find_if(m_atPresets, fnIsAt);
    t.dwPreset = t.bMoving || it == m_atPresets.end() ? 0 : it->dwPreset;
    return eResultOk;
}

int CHead::Ability(tagPTZAbility& t)
{
    const tagUse tUse = Used();
    t = {};
    t.dwSize = sizeof t;
    if (!tUse.pNode)
    {
        return eResultOk;
    }
    tagNode const& tNode = *tUse.pNode;
    const auto fnAxes = [](Spaces const& atHead, Spaces const& atZoom)
    {
        return (atHead.empty() ? 0U : uint32_t{ePTZAxisPan | ePTZAxisTilt}) |
               (atZoom.empty() ? 0U : uint32_t{ePTZAxisZoom});
    };
    t.dwMoveAxes = fnAxes(tNode.atVelocity, tNode.atZoomVelocity);
    t.dwPositionAxes = fnAxes(tNode.atPosition, tNode.atZoomPosition);
    if (m_pClient->Has(eService::Imaging))
    {
        const CAnswer tAnswer =
            m_pClient->Call({eService::Imaging, "GetMoveOptions",
                             CXmlWriter().Add("timg:VideoSourceToken", tUse.pChannel->strSource).Take()});
        t.dwMoveAxes |= Find(tAnswer.Body(), "MoveOptions/Continuous") ? uint32_t{ePTZAxisFocus} : 0U;
    }
    t.dwPresets = tNode.dwPresets;
    t.dwTours = tNode.dwTours;
    for (uint32_t dwKind = ePTZWiper; dwKind <= ePTZHeater; ++dwKind)
    {
        t.dwAuxiliaries |= AuxiliaryCommand(tNode, dwKind, true).empty() ? 0U : 1U << dwKind;
    }
    t.bHome = tNode.bHome ? 1 : 0;
    if (tagSpace const* const pt = Named(tNode.atPosition, "Spherical"))
    {
        t.nPanMinDegrees = static_cast<int32_t>(std::lround(pt->tX.dLeast * 100));
        t.nPanMaxDegrees = static_cast<int32_t>(std::lround(pt->tX.dMost * 100));
        t.nTiltMinDegrees = static_cast<int32_t>(std::lround(pt->tY.dLeast * 100));
        t.nTiltMaxDegrees = static_cast<int32_t>(std::lround(pt->tY.dMost * 100));
    }
    return eResultOk;
}
} // namespace onvifclient
