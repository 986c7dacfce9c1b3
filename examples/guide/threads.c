/* Frames from the plug-in's thread to one of the program's own, by a queue that never grows without end. */

#include "../tours/Tour.h"

/* [queue] */
typedef struct tagKept
{
    struct tagKept* ptNext;
    tagStreamMediaFrame tFrame; /* pData and pConfig are not used: the plug-in's */
    unsigned char abyData[];
} tagKept;

typedef struct tagQueue
{
    pthread_mutex_t tMutex;
    pthread_cond_t tChanged;
    tagKept *ptFirst, *ptLast;
    size_t nBytes;
    int bSkipping; /* until the next key frame */
    unsigned long dwDropped;
} tagQueue;

enum
{
    nMaxBytes = 4 * 1024 * 1024
};
/* [queue] */

/* [put] */
/* On the plug-in's thread: copies, and never waits for whoever takes the frames. */
static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    tagQueue* const ptQueue = (tagQueue*)dwUser;
    tagKept* const ptKept = malloc(sizeof *ptKept + ptFrame->dwLength);
    (void)hStream;
    if (ptKept)
    {
        ptKept->ptNext = NULL;
        ptKept->tFrame = *ptFrame;
        memcpy(ptKept->abyData, ptFrame->pData, ptFrame->dwLength);
    }
    pthread_mutex_lock(&ptQueue->tMutex);
    /* Too much waits: nothing but a key frame can be decoded after a gap. */
    ptQueue->bSkipping = !ptKept || ptQueue->nBytes + ptFrame->dwLength > nMaxBytes ||
                         (ptQueue->bSkipping && !(ptFrame->dwFlags & eFrameKey));
    if (ptQueue->bSkipping)
    {
        ++ptQueue->dwDropped;
        free(ptKept);
    }
    else
    {
        *(ptQueue->ptLast ? &ptQueue->ptLast->ptNext : &ptQueue->ptFirst) = ptKept;
        ptQueue->ptLast = ptKept;
        ptQueue->nBytes += ptFrame->dwLength;
        pthread_cond_signal(&ptQueue->tChanged);
    }
    pthread_mutex_unlock(&ptQueue->tMutex);
    return 0;
}
/* [put] */

/* [take] */
/* On the program's thread: the next frame, to be freed; null: none came within 10 s. */
static tagKept* Take(tagQueue* ptQueue)
{
    tagKept* ptKept;
    struct timespec tUntil;
    clock_gettime(CLOCK_REALTIME, &tUntil);
    tUntil.tv_sec += 10;
    pthread_mutex_lock(&ptQueue->tMutex);
    while (!ptQueue->ptFirst && pthread_cond_timedwait(&ptQueue->tChanged, &ptQueue->tMutex, &tUntil) == 0)
    {
    }
    ptKept = ptQueue->ptFirst;
    if (ptKept)
    {
        ptQueue->ptFirst = ptKept->ptNext;
        ptQueue->ptLast = ptKept->ptNext ? ptQueue->ptLast : NULL;
        ptQueue->nBytes -= ptKept->tFrame.dwLength;
    }
    pthread_mutex_unlock(&ptQueue->tMutex);
    return ptKept;
}
/* [take] */

/* [close] */
static void Close(int nStream, tagQueue* ptQueue)
{
    tagKept* ptKept;
    /* First the stream, with no lock of ours held: it waits for a callback that is running, which may wait for the
     * lock. */
    ClientAdapter_RealStreamDisconnect(nStream);
    /* Now nobody else uses the queue. */
    while ((ptKept = ptQueue->ptFirst) != NULL)
    {
        ptQueue->ptFirst = ptKept->ptNext;
        free(ptKept);
    }
}
/* [close] */

static int Watch(int nLogin)
{
    tagRealStreamPara tStream = {.dwChannel = 0, .dwStreamKind = eStreamMain};
    tagQueue tQueue = {.tMutex = PTHREAD_MUTEX_INITIALIZER, .tChanged = PTHREAD_COND_INITIALIZER};
    int nStream = -1, nTaken = 0;
    if (!Worked(ClientAdapter_RealStreamConnect(&nStream, nLogin, &tStream), "opening a stream"))
    {
        return 0;
    }
    if (Worked(ClientAdapter_StreamMediaCB(nStream, OnFrame, (unsigned long)&tQueue), "asking for frames"))
    {
        tagKept* ptKept;
        while (nTaken < 50 && (ptKept = Take(&tQueue)) != NULL)
        {
            ++nTaken; /* decode, show, record: as long as it takes */
            free(ptKept);
        }
    }
    Close(nStream, &tQueue);
    printf("%d frames, %lu dropped.\n", nTaken, tQueue.dwDropped);
    return Expect(nTaken == 50, "50 frames came");
}

int main(int nArguments, char** aszArguments)
{
    const int nLogin = BeginTour(nArguments, aszArguments);
    return EndTour(nLogin, nLogin != -1 && Watch(nLogin));
}
