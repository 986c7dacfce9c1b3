#pragma once

#include "tests/rtsp/HostileServer.h"

/// What the plug-in makes of a behaviour.
struct tagExpected
{
    unsigned long dwEvent = eEventLive;     ///< of each session's end; eEventLive: it survives; 0: either
    long nDetail = -1;                      ///< the event's second word; -1: any
    std::vector<unsigned long> adwPauses{}; ///< after each session; empty: any
    int nSessions = 1;                      ///< hostile ones
    std::string strFrames{};                ///< what is delivered first: K key, P other, small: damaged
    long nLost = -1;                        ///< packets, over all
    bool bLogin = false;                    ///< the stream has credentials
    bool bPauses = false;                   ///< the stream is paused and played
    bool bStalls = false;                   ///< told on the way
};

struct tagCase
{
    tagBehaviour tDo;
    tagExpected tExpected;
};

std::vector<tagCase> MakeCases();
