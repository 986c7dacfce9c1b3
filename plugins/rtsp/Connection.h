#pragma once

#include "plugins/rtsp/Address.h"

extern "C"
{
#include <libavformat/avformat.h>
}

namespace rtsp
{
/// What a connection asks its owner while it waits for the device: true ends the waiting. Called on the thread that
/// uses the connection, about every 100 ms and between any two steps of the exchange.
class IWatchdog
{
public:
    virtual bool GiveUp() = 0;

protected:
    ~IWatchdog() = default;
};

/// One RTSP session, on libavformat. Used by one thread. Everything it does on the network blocks, and ends as soon as
/// the watchdog gives up.
class CConnection
{
public:
    explicit CConnection(IWatchdog& tWatchdog) : m_tWatchdog(tWatchdog) {}
    ~CConnection(); ///< sends TEARDOWN, without waiting for the answer
    CConnection(CConnection const&) = delete;
    CConnection& operator=(CConnection const&) = delete;

    /// Connects and plays. 0, or an AVERROR.
    int Open(tagAddress const& tAddress);
    /// The next packet: for H.264 and H.265 whatever one RTP packet held, for other codecs what their format calls a
    /// packet. 0, or an AVERROR.
    int Read(AVPacket& tPacket) { return av_read_frame(m_ptContext, &tPacket); }
    int Play() { return av_read_play(m_ptContext); }
    int Pause() { return av_read_pause(m_ptContext); }

    unsigned Tracks() const { return m_ptContext->nb_streams; }
    AVStream const& Track(unsigned iTrack) const { return *m_ptContext->streams[iTrack]; }

private:
    IWatchdog& m_tWatchdog;
    AVFormatContext* m_ptContext = nullptr;
};
} // namespace rtsp
