// The schedule of recordings. ONVIF's jobs record always or not at all.

#include "plugins/onvif/Configuration.h"
#include "plugins/onvif/Recordings.h"

#include "protocol/interface/Playback.h"

#include <cstring>

namespace onvifclient
{
int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigSchedule& t)
{
    tagPlan tPlan;
    if (const int nResult = tLogin.Part<CRecordings>().ReadPlan(tWhich.dwIndex, tPlan))
    {
        return nResult;
    }
    t.bEnabled = tPlan.bActive ? 1 : 0;
    t.dwStreamKind = tPlan.dwStreamKind;
    t.bAudio = tPlan.bAudio ? 1 : 0;
    t.dwKeepDays = tPlan.dwKeepDays;
    for (t.dwCount = 0; t.dwCount < 7; ++t.dwCount)
    {
        t.atSpans[t.dwCount] = {t.dwCount, 0, 24 * 60, eHistoryContinuous};
    }
    return eResultOk;
}

int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigSchedule const& tBefore, tagConfigSchedule const& tAfter)
{
    if (tAfter.bEnabled > 1 || tAfter.dwKeepDays > 3650)
    {
        return eResultBadArgument;
    }
    tagConfigSchedule tElse = tAfter;
    tElse.bEnabled = tBefore.bEnabled;
    tElse.dwKeepDays = tBefore.dwKeepDays;
    if (std::memcmp(&tElse, &tBefore, sizeof tElse) != 0)
    {
        return eResultNotSupported;
    }
    CRecordings& tRecordings = tLogin.Part<CRecordings>();
    int nResult = eResultOk;
    if (tAfter.dwKeepDays != tBefore.dwKeepDays)
    {
        nResult = tRecordings.Keep(tWhich.dwIndex, tAfter.dwKeepDays);
    }
    if (nResult == eResultOk && tAfter.bEnabled != tBefore.bEnabled)
    {
        nResult = tRecordings.Control(tWhich.dwIndex, tAfter.bEnabled != 0);
    }
    return nResult;
}
} // namespace onvifclient
