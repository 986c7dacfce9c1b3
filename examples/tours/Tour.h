/* What the tours share: the command line, the login, and waiting for a callback.

     TOUR PROTOCOL ADDRESS [USER]

   PROTOCOL is vtq, onvif or private. The password is taken from the environment (TESSARO_PASSWORD), never from the
   command line. USER is admin if none is given. The plug-in of the private protocol is found through
   TESSARO_PRIVATE_PLUGIN, libvornclient.so if that isn't set. */

#ifndef TESSARO_EXAMPLES_TOURS_TOUR_H
#define TESSARO_EXAMPLES_TOURS_TOUR_H

#define _POSIX_C_SOURCE 200809L

#include <tessaro/ClientAdapter.h>
#include <tessaro/ClientAdapterExtra.h>

#include <inttypes.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* PrivateProtocol.cpp: the library doesn't load the private protocol by itself, and the way to do it is in C++. */
int StartPrivateProtocol(char const* szPlugin);
void StopPrivateProtocol(void);

/* 1 when a call worked; else says what didn't. */
static inline int Worked(int nResult, char const* szWhat)
{
    if (nResult != eResultOk)
    {
        fprintf(stderr, "%s: %s (%d)\n", szWhat, TessaroExtra_ResultText(nResult), nResult);
    }
    return nResult == eResultOk;
}

/* As Worked, for what not every device has: that it has no such thing is said, and is no failure. */
static inline int WorkedOrLacks(int nResult, char const* szWhat)
{
    if (nResult == eResultNotSupported)
    {
        printf("Left out, since the device has no such thing: %s.\n", szWhat);
        return 1;
    }
    return Worked(nResult, szWhat);
}

/* 1 when what the device did is what was expected; else says what wasn't. */
static inline int Expect(int bTrue, char const* szWhat)
{
    if (!bTrue)
    {
        fprintf(stderr, "not as expected: %s\n", szWhat);
    }
    return bTrue;
}

static inline int ProtocolByName(char const* szName, eProtocolType* peType)
{
    *peType = strcmp(szName, "vtq") == 0     ? eProtocolVTQ
              : strcmp(szName, "onvif") == 0 ? eProtocolOnvif
                                             : eProtocolPrivate;
    return *peType != eProtocolPrivate || strcmp(szName, "private") == 0;
}

/* Starts the library and logs in. The login ID, or -1. EndTour in both cases. */
static inline int BeginTour(int nArguments, char** aszArguments)
{
    tagUserLoginPara tLogin = {.dwPort = 0}; /* the protocol's usual port */
    char const* const szPassword = getenv("TESSARO_PASSWORD");
    char const* const szPlugin = getenv("TESSARO_PRIVATE_PLUGIN");
    eProtocolType eType;
    int nLogin = -1;
    ClientAdapter_Start(16);
    if (nArguments < 3 || !ProtocolByName(aszArguments[1], &eType))
    {
        fprintf(stderr, "usage: %s vtq|onvif|private ADDRESS [USER]\n", aszArguments[0]);
        return -1;
    }
    if (eType == eProtocolPrivate &&
        !Worked(StartPrivateProtocol(szPlugin ? szPlugin : "libvornclient.so"), "starting the private protocol"))
    {
        return -1;
    }
    snprintf(tLogin.szAddress, sizeof tLogin.szAddress, "%s", aszArguments[2]);
    snprintf(tLogin.szUserName, sizeof tLogin.szUserName, "%s", nArguments > 3 ? aszArguments[3] : "admin");
    snprintf(tLogin.szPassword, sizeof tLogin.szPassword, "%s", szPassword ? szPassword : "");
    if (!Worked(ClientAdapter_UserLogin(&nLogin, eType, &tLogin), "logging in"))
    {
        return -1;
    }
    printf("Logged in to %s as %s.\n", tLogin.szAddress, tLogin.szUserName);
    return nLogin;
}

/* Logs out, stops the library, and says how it went: what main returns. */
static inline int EndTour(int nLogin, int bWorked)
{
    if (nLogin != -1)
    {
        bWorked = Worked(ClientAdapter_UserLogout(nLogin), "logging out") && bWorked;
    }
    StopPrivateProtocol();
    ClientAdapter_Stop();
    puts(bWorked ? "All of it worked." : "Something did not work.");
    return bWorked ? EXIT_SUCCESS : EXIT_FAILURE;
}

/* A number that callbacks count up and the tour waits for. Callbacks run on the plug-in's threads. */
typedef struct tagCounter
{
    pthread_mutex_t tMutex;
    pthread_cond_t tChanged;
    unsigned long dwCount;
} tagCounter;

#define COUNTER                                                                                                        \
    {                                                                                                                  \
        .tMutex = PTHREAD_MUTEX_INITIALIZER, .tChanged = PTHREAD_COND_INITIALIZER                                      \
    }

static inline void Count(tagCounter* ptCounter)
{
    pthread_mutex_lock(&ptCounter->tMutex);
    ++ptCounter->dwCount;
    pthread_cond_broadcast(&ptCounter->tChanged);
    pthread_mutex_unlock(&ptCounter->tMutex);
}

static inline unsigned long Counted(tagCounter* ptCounter)
{
    unsigned long dwCount;
    pthread_mutex_lock(&ptCounter->tMutex);
    dwCount = ptCounter->dwCount;
    pthread_mutex_unlock(&ptCounter->tMutex);
    return dwCount;
}

/* 1 when the counter has come to dwCount within so many seconds; else says what did not come. */
static inline int Await(tagCounter* ptCounter, unsigned long dwCount, int nSeconds, char const* szWhat)
{
    struct timespec tUntil;
    int bCame;
    clock_gettime(CLOCK_REALTIME, &tUntil);
    tUntil.tv_sec += nSeconds;
    pthread_mutex_lock(&ptCounter->tMutex);
    while (ptCounter->dwCount < dwCount &&
           pthread_cond_timedwait(&ptCounter->tChanged, &ptCounter->tMutex, &tUntil) == 0)
    {
    }
    bCame = ptCounter->dwCount >= dwCount;
    pthread_mutex_unlock(&ptCounter->tMutex);
    if (!bCame)
    {
        fprintf(stderr, "%s: none came within %d s\n", szWhat, nSeconds);
    }
    return bCame;
}

static inline void Sleep(int nMilliseconds)
{
    const struct timespec tTime = {.tv_sec = nMilliseconds / 1000, .tv_nsec = nMilliseconds % 1000 * 1000000L};
    nanosleep(&tTime, NULL);
}

/* A time of the interface, microseconds since 1970 UTC, as text. */
static inline char const* TimeText(int64_t llTimeUs, char szText[32])
{
    const time_t nSeconds = (time_t)(llTimeUs / 1000000);
    struct tm tParts;
    gmtime_r(&nSeconds, &tParts);
    strftime(szText, 32, "%Y-%m-%d %H:%M:%S UTC", &tParts);
    return szText;
}

#endif
