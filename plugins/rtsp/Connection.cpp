#include "plugins/rtsp/Connection.h"

namespace rtsp
{
namespace
{
int AskWatchdog(void* pWatchdog)
{
    return static_cast<IWatchdog*>(pWatchdog)->GiveUp() ? 1 : 0;
}

char const* TransportName(eRtspTransport eTransport)
{
    switch (eTransport)
    {
    case eRtspUdp:
        return "udp";
    case eRtspMulticast:
        return "udp_multicast";
    default:
        return "tcp";
    }
}
} // namespace

CConnection::~CConnection()
{
    avformat_close_input(&m_ptContext);
}

int CConnection::Open(tagAddress const& tAddress)
{
    m_ptContext = avformat_alloc_context();
    if (!m_ptContext)
    {
        return AVERROR(ENOMEM);
    }
    m_ptContext->interrupt_callback = {&AskWatchdog, &m_tWatchdog};
    // Packets as they come, with the time stamps of RTP: access units are put together by us, so that the wall clock
    // and the losses that are told with a packet stay with its frame.
    m_ptContext->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;

    AVDictionary* ptOptions = nullptr;
    av_dict_set(&ptOptions, "rtsp_transport", TransportName(tAddress.eTransport), 0);
    av_dict_set_int(&ptOptions, "buffer_size", 2 << 20, 0);   // of the UDP sockets: key frames come in bursts
    av_dict_set_int(&ptOptions, "correct_ts_overflow", 0, 0); // it makes a step back one of 13 hours ahead
    if (tAddress.eTransport == eRtspTcp)
    {
        // Nothing is reordered in a TCP stream, but a queue is what makes the stack notice packets that a busy device
        // left out. Two is the smallest that does.
        av_dict_set_int(&ptOptions, "reorder_queue_size", 2, 0);
    }
    const int nResult = avformat_open_input(&m_ptContext, tAddress.strUrl.c_str(), nullptr, &ptOptions);
    av_dict_free(&ptOptions);
    return nResult;
}
} // namespace rtsp
