/* Moves a camera: for a time, to a place, to presets and along a tour of them. */

#include "Tour.h"

static const unsigned long g_dwChannel = 0;

/* [arrive] */
static int Position(int nLogin, tagPTZPosition* ptPosition)
{
    *ptPosition = (tagPTZPosition){.dwSize = sizeof *ptPosition};
    return Worked(ClientAdapter_GetIpcPara(nLogin, (int)g_dwChannel, eCameraPosition, ptPosition, sizeof *ptPosition),
                  "reading the position");
}

/* 1 when the camera stands still; it has 10 s for it. */
static int Arrive(int nLogin, char const* szWhat)
{
    tagPTZPosition tPosition;
    for (int i = 0; i < 200; ++i)
    {
        if (!Position(nLogin, &tPosition))
        {
            return 0;
        }
        if (!tPosition.bMoving)
        {
            printf("%s: pan %.1f %%, tilt %.1f %%, zoom %.1f %% of the range.\n", szWhat, tPosition.nPan / 100.0,
                   tPosition.nTilt / 100.0, tPosition.nZoom / 100.0);
            return 1;
        }
        Sleep(50);
    }
    fprintf(stderr, "%s: the camera still moves\n", szWhat);
    return 0;
}
/* [arrive] */

/* [command] */
static int Command(int nLogin, char const* szWhat, ePTZControlCmdCode eCommand, unsigned long dwPara1,
                   unsigned long dwPara2, unsigned long dwPara3, unsigned long dwPara4)
{
    return Worked(ClientAdapter_PTZControl(nLogin, g_dwChannel, eCommand, dwPara1, dwPara2, dwPara3, dwPara4), szWhat);
}
/* [command] */

/* [move] */
/* To the left and a little up, for one second. Nobody has to stop it: the time ends it. */
static int MoveForATime(int nLogin)
{
    tagPTZPosition tBefore, tAfter;
    return Position(nLogin, &tBefore) &&
           Command(nLogin, "moving", ePTZMove, TESSARO_SIGNED(-3000), TESSARO_SIGNED(1000), 0, 1000) &&
           Arrive(nLogin, "After a second to the left") && Position(nLogin, &tAfter) &&
           Expect(tAfter.nPan < tBefore.nPan, "the camera looks farther to the left");
}
/* [move] */

/* [presets] */
static int ListPresets(int nLogin)
{
    tagPTZPreset atPresets[16];
    tagPTZPresetList tList = {
        .dwSize = sizeof tList, .dwEntrySize = sizeof atPresets[0], .dwCapacity = 16, .ptEntries = atPresets};
    if (!Worked(ClientAdapter_GetIpcPara(nLogin, (int)g_dwChannel, eCameraPresets, &tList, sizeof tList),
                "listing the presets"))
    {
        return 0;
    }
    for (uint32_t i = 0; i < tList.dwCount && i < tList.dwCapacity; ++i)
    {
        printf("Preset %" PRIu32 ": %s\n", atPresets[i].dwPreset, atPresets[i].szName);
    }
    return Expect(tList.dwCount >= 2, "two presets are there");
}
/* [presets] */

static int UsePresets(int nLogin)
{
    return Command(nLogin, "going to the gate", ePTZAbsolute, TESSARO_SIGNED(5000), TESSARO_SIGNED(-1000), 2000, 0) &&
           Arrive(nLogin, "The gate") &&
           Command(nLogin, "remembering the gate", ePTZPresetSet, 1, (unsigned long)"Gate", 0, 0) &&
           Command(nLogin, "going to the door", ePTZRelative, TESSARO_SIGNED(-7000), 0, 0, 0) &&
           Arrive(nLogin, "The door") &&
           Command(nLogin, "remembering the door", ePTZPresetSet, 2, (unsigned long)"Door", 0, 0) &&
           ListPresets(nLogin) && Command(nLogin, "calling the gate", ePTZPresetCall, 1, 0, 0, 0) &&
           Arrive(nLogin, "The gate again");
}

/* From preset to preset, one second each, one round. */
static int RunTour(int nLogin)
{
    return Command(nLogin, "a tour by the gate", ePTZTourAddPreset, 1, 1, 1, 0) &&
           Command(nLogin, "and by the door", ePTZTourAddPreset, 1, 2, 1, 0) &&
           Command(nLogin, "running the tour", ePTZTourRun, 1, 1, 0, 0) && Arrive(nLogin, "At the tour's end") &&
           Command(nLogin, "forgetting the tour", ePTZTourRemove, 1, 0, 0, 0);
}

static int CleanUp(int nLogin)
{
    return Command(nLogin, "the wiper, for two seconds", ePTZAuxiliary, ePTZWiper, 1, 0, 2000) &&
           Command(nLogin, "forgetting the gate", ePTZPresetRemove, 1, 0, 0, 0) &&
           Command(nLogin, "forgetting the door", ePTZPresetRemove, 2, 0, 0, 0) &&
           Command(nLogin, "going home", ePTZHomeCall, 0, 0, 0, 0) && Arrive(nLogin, "Home");
}

int main(int nArguments, char** aszArguments)
{
    const int nLogin = BeginTour(nArguments, aszArguments);
    return EndTour(nLogin,
                   nLogin != -1 && MoveForATime(nLogin) && UsePresets(nLogin) && RunTour(nLogin) && CleanUp(nLogin));
}
