/* Finds a recording, plays it in every way, and fetches it into a file.

     playback PROTOCOL ADDRESS [USER]

   Leaves recording.mp4 in the present folder. */

#include "Tour.h"

/* What the callback of the playback has seen. */
typedef struct tagPlayed
{
    tagCounter tFrames; /* frames of video */
    tagCounter tEnds;   /* times that the end was reached */
    pthread_mutex_t tMutex;
    int64_t llLastUs; /* when the frame that came last was recorded */
} tagPlayed;

/* [frames] */
static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    tagPlayed* const ptPlayed = (tagPlayed*)dwUser;
    (void)hStream;
    if (ptFrame->dwFlags & eFrameEnd)
    {
        Count(&ptPlayed->tEnds);
    }
    else if (ptFrame->dwMediaType == eMediaVideo)
    {
        pthread_mutex_lock(&ptPlayed->tMutex);
        ptPlayed->llLastUs = ptFrame->llWallClockUs;
        pthread_mutex_unlock(&ptPlayed->tMutex);
        Count(&ptPlayed->tFrames);
    }
    return 0;
}
/* [frames] */

static int64_t LastTime(tagPlayed* ptPlayed)
{
    int64_t llLastUs;
    pthread_mutex_lock(&ptPlayed->tMutex);
    llLastUs = ptPlayed->llLastUs;
    pthread_mutex_unlock(&ptPlayed->tMutex);
    return llLastUs;
}

/* So many more frames than up to now. */
static int AwaitFrames(tagPlayed* ptPlayed, unsigned long dwFrames, char const* szWhat)
{
    char szTime[32];
    const int bCame = Await(&ptPlayed->tFrames, Counted(&ptPlayed->tFrames) + dwFrames, 10, szWhat);
    if (bCame)
    {
        printf("%s: frames of %s come.\n", szWhat, TimeText(LastTime(ptPlayed), szTime));
    }
    return bCame;
}

/* On which days of this month something was recorded. */
static int ShowDays(int nLogin)
{
    const time_t nNow = time(NULL);
    struct tm tNow;
    char szDays[32];
    unsigned long dwLength = sizeof szDays;
    localtime_r(&nNow, &tNow);
    if (!Worked(ClientAdapter_DataExistCheck(nLogin, 0, eHistoryAny,
                                             (unsigned long)((tNow.tm_year + 1900) * 100 + tNow.tm_mon + 1), szDays,
                                             &dwLength),
                "asking for the days"))
    {
        return 0;
    }
    printf("Recorded in this month: %s (%lu days)\n", szDays, dwLength);
    return 1;
}

/* [search] */
/* Lists the recordings of a channel, and keeps the first one that is finished. */
static int Search(int nLogin, tagHistoryStreamQueryResult* ptFound)
{
    tagHistoryStreamQueryFactor tQuestion = {.dwSize = sizeof tQuestion, .dwChannel = 0, .dwType = eHistoryAny};
    tagHistoryStreamQueryResult tAnswer = {.dwSize = sizeof tAnswer};
    char szStart[32], szEnd[32];
    int nQuery = -1, nFound = 0;
    int nResult = ClientAdapter_HistoryStreamQueryConnect(&nQuery, nLogin, &tQuestion);
    while (nResult == eResultOk)
    {
        nResult = ClientAdapter_HistoryStreamQueryNext(nQuery, &tAnswer);
        if (nResult == eResultOk)
        {
            printf("%s to %s, %" PRIu64 " bytes: %s\n", TimeText(tAnswer.llStartUs, szStart),
                   TimeText(tAnswer.llEndUs, szEnd), tAnswer.ullLength, tAnswer.szFile);
            if (!tAnswer.bRecording && nFound++ == 0)
            {
                *ptFound = tAnswer;
            }
        }
    }
    ClientAdapter_HistoryStreamQueryDisconnect(nQuery);
    if (nResult != eResultNoMoreEntries)
    {
        return Worked(nResult, "searching");
    }
    printf("%d finished recordings.\n", nFound);
    return Expect(nFound > 0, "something was recorded");
}
/* [search] */

static int Steer(int nStream, tagHistoryStreamQueryResult const* ptFound, tagPlayed* ptPlayed)
{
    tagTimeInfo tMiddle = {.dwSize = sizeof tMiddle, .llTimeUs = (ptFound->llStartUs + ptFound->llEndUs) / 2};
    unsigned long dwFrames;
    if (!AwaitFrames(ptPlayed, 25, "From the beginning") ||
        !Worked(ClientAdapter_HistoryStreamPosition(nStream, eOperationSet, &tMiddle), "going to the middle") ||
        !AwaitFrames(ptPlayed, 25, "From the middle") ||
        !Worked(ClientAdapter_HistoryStreamSetSpeed(nStream, eSpeedNormal * 4), "playing four times as fast") ||
        !AwaitFrames(ptPlayed, 25, "Four times as fast") ||
        !Worked(ClientAdapter_HistoryStreamSetSpeed(nStream, eSpeedReverse + eSpeedNormal * 2), "playing backwards") ||
        !AwaitFrames(ptPlayed, 3, "Backwards, by key frames") ||
        !Worked(ClientAdapter_HistoryStreamSetSpeed(nStream, eSpeedNormal), "playing as recorded") ||
        !Worked(ClientAdapter_StreamMediaControl(nStream, eTaskPause), "pausing"))
    {
        return 0;
    }
    Sleep(200); /* a frame may have been on its way */
    dwFrames = Counted(&ptPlayed->tFrames);
    if (!Worked(ClientAdapter_StreamMediaControl(nStream, eTaskStep), "stepping") ||
        !Await(&ptPlayed->tFrames, dwFrames + 1, 10, "one frame"))
    {
        return 0;
    }
    Sleep(300);
    printf("A step brought %lu frame.\n", Counted(&ptPlayed->tFrames) - dwFrames);
    if (!Expect(Counted(&ptPlayed->tFrames) == dwFrames + 1, "a step is one frame"))
    {
        return 0;
    }
    tMiddle.llTimeUs = ptFound->llEndUs - 2000000;
    return Worked(ClientAdapter_HistoryStreamPosition(nStream, eOperationSet, &tMiddle), "going to the end") &&
           Worked(ClientAdapter_StreamMediaControl(nStream, eTaskPlay), "playing on") &&
           Await(&ptPlayed->tEnds, 1, 10, "the end of the recording");
}

/* [play] */
static int Play(int nLogin, tagHistoryStreamQueryResult const* ptFound)
{
    tagHistoryStreamPara tPara = {.dwSize = sizeof tPara};
    tagPlayed tPlayed = {.tFrames = COUNTER, .tEnds = COUNTER, .tMutex = PTHREAD_MUTEX_INITIALIZER};
    int nStream = -1, bWorked;
    memcpy(tPara.szFile, ptFound->szFile, sizeof tPara.szFile);
    bWorked = Worked(ClientAdapter_HistoryStreamCreate(&nStream, nLogin, &tPara, eHistoryNoAudio), "playing") &&
              Worked(ClientAdapter_HistoryStreamCB(nStream, OnFrame, (unsigned long)&tPlayed), "asking for frames") &&
              Steer(nStream, ptFound, &tPlayed);
    ClientAdapter_HistoryStreamDestroy(nStream); /* tPlayed isn't used after this */
    return bWorked;
}
/* [play] */

/* A file that is being fetched. */
typedef struct tagFetched
{
    FILE* pFile;
    uint64_t ullBytes, ullLength;
    uint32_t dwResult;
    tagCounter tEnds;
} tagFetched;

/* [block] */
static int OnBlock(void* hDownload, tagBuffer tBlock, unsigned long dwUser)
{
    tagFetched* const ptFetched = (tagFetched*)dwUser;
    (void)hDownload;
    if (!tBlock.pData) /* the end: of the file, or of the transfer */
    {
        ptFetched->dwResult = tBlock.dwLength;
        Count(&ptFetched->tEnds);
        return 0;
    }
    ptFetched->ullBytes += fwrite(tBlock.pData, 1, tBlock.dwLength, ptFetched->pFile);
    return 0;
}
/* [block] */

/* [fetch] */
static int Fetch(int nLogin, tagHistoryStreamQueryResult const* ptFound)
{
    tagFileDownloadPara tPara = {
        .dwSize = sizeof tPara, .dwKind = eFileRecording, .dwFormat = eFileFormatMp4, .dwStreamKind = eStreamMain};
    tagFetched tFetched = {.pFile = fopen("recording.mp4", "wb"), .tEnds = COUNTER};
    int nDownload = -1, bWorked;
    if (!tFetched.pFile)
    {
        perror("recording.mp4");
        return 0;
    }
    memcpy(tPara.szFile, ptFound->szFile, sizeof tPara.szFile);
    bWorked =
        Worked(ClientAdapter_FileDownloadConnect(&nDownload, nLogin, &tPara), "asking for the file") &&
        Worked(ClientAdapter_FileDownloadCB(nDownload, OnBlock, (unsigned long)&tFetched), "asking for its blocks") &&
        Worked(ClientAdapter_FileDownloadControl(nDownload, eTransferStart), "starting") &&
        Await(&tFetched.tEnds, 1, 60, "the end of the file") && Worked((int)tFetched.dwResult, "fetching");
    ClientAdapter_FileDownloadDisconnect(nDownload);
    bWorked = fclose(tFetched.pFile) == 0 && bWorked;
    printf("recording.mp4: %" PRIu64 " of %" PRIu64 " bytes.\n", tFetched.ullBytes, tPara.ullLength);
    return bWorked && Expect(tFetched.ullBytes > 0, "the file holds something");
}
/* [fetch] */

int main(int nArguments, char** aszArguments)
{
    const int nLogin = BeginTour(nArguments, aszArguments);
    tagHistoryStreamQueryResult tFound = {.dwSize = sizeof tFound};
    return EndTour(nLogin, nLogin != -1 && ShowDays(nLogin) && Search(nLogin, &tFound) && Play(nLogin, &tFound) &&
                               Fetch(nLogin, &tFound));
}
