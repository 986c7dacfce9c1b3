#pragma once

namespace rtsp
{
/// What libavformat says only in its log.
class IStackListener
{
public:
    virtual void OnStatus(int nStatus) = 0;       ///< a request was answered with this RTSP status, 400 or more
    virtual void OnMissed(unsigned nPackets) = 0; ///< so many RTP packets are missing at this point of the stream
    virtual void OnRedirect() = 0;                ///< the device named another address, which is tried next

protected:
    ~IStackListener() = default;
};

/// Takes over libavutil's log, of which a process has one: lines about our streams are read for what they tell and go
/// nowhere; all others go where they went by default. An application that sets a log callback of its own should do so
/// after the service has started: it then gets our lines too, and losses and exact RTSP statuses are no longer known.
/// Calls nest: a thread that ends after the stop keeps the log, so that its last lines go nowhere either.
void TakeStackLog();
void GiveBackStackLog();

/// While it lives, lines that the calling thread makes libavformat write are about this listener's stream.
class CStackLogScope
{
public:
    explicit CStackLogScope(IStackListener& tListener);
    ~CStackLogScope();
    CStackLogScope(CStackLogScope const&) = delete;
    CStackLogScope& operator=(CStackLogScope const&) = delete;
};

/// While it lives, the calling thread runs the application's code, whose lines are not about our stream.
class CStackLogBreak
{
public:
    CStackLogBreak();
    ~CStackLogBreak();
    CStackLogBreak(CStackLogBreak const&) = delete;
    CStackLogBreak& operator=(CStackLogBreak const&) = delete;

private:
    IStackListener* const m_pListener;
};
} // namespace rtsp
