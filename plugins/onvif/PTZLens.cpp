// A camera's lens: focus moves, the iris is set.

#include "plugins/onvif/Imaging.h"
#include "plugins/onvif/PTZ.h"

#include "protocol/interface/Results.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
constexpr int64_t g_llIrisMs = 5000; // from closed to open at full speed
} // namespace

bool CHead::MovesFocus() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_atMotions[eMotionFocus].nX != 0;
}

int CHead::StopFocus(tagUse const& tUse)
{
    const int nResult = MoveFocus(*m_pClient, *tUse.pChannel, 0);
    if (nResult == eResultOk)
    {
        Ended(eMotionFocus);
    }
    return nResult;
}

int CHead::Focus(tagUse const& tUse, int32_t nSpeed, int32_t nMilliseconds)
{
    if (!Within(nSpeed, -g_nFull, g_nFull))
    {
        return eResultBadArgument;
    }
    int nResult = MovesFocus() || nSpeed == 0 ? int{eResultOk} : SetAutoFocus(*m_pClient, *tUse.pChannel, false);
    nResult = nResult ? nResult : MoveFocus(*m_pClient, *tUse.pChannel, nSpeed);
    if (nResult == eResultOk && nSpeed != 0)
    {
        Begin(eMotionFocus, nSpeed, 0, MovementMs(nMilliseconds));
    }
    else if (nResult == eResultOk)
    {
        Ended(eMotionFocus);
    }
    return nResult;
}

// ONVIF has no movement of the iris: it goes at once to where one would end.
int CHead::Iris(tagUse const& tUse, int32_t nSpeed, int32_t nMilliseconds)
{
    return Within(nSpeed, -g_nFull, g_nFull)
               ? StepIris(*m_pClient, *tUse.pChannel, nSpeed * MovementMs(nMilliseconds) / g_llIrisMs)
               : int{eResultBadArgument};
}
} // namespace onvifclient
