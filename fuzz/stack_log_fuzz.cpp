// Lines of libavformat's log, as a device's words get into them.

#include "fuzz/Input.h"
#include "plugins/rtsp/StackLog.h"

#include <string>

extern "C"
{
#include <libavutil/log.h>
}

namespace
{
class CListener final : public rtsp::IStackListener
{
public:
    void OnStatus(int nStatus) override
    {
        REQUIRE(nStatus >= 400 && nStatus <= 999);
        ++m_nHeard;
        m_nStatus = nStatus;
    }
    void OnMissed(unsigned nPackets) override
    {
        ++m_nHeard;
        m_nMissed = nPackets;
    }
    void OnRedirect() override
    {
        ++m_nHeard;
        ++m_nRedirects;
    }

    int m_nHeard = 0;
    int m_nStatus = 0;
    unsigned m_nMissed = 0;
    int m_nRedirects = 0;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    CListener tListener;
    const rtsp::CStackLogScope tScope(tListener);
    int nLines = 0;
    for (; !tInput.IsEmpty(); ++nLines)
    {
        av_log(nullptr, AV_LOG_ERROR, "%s\n", std::string(tInput.Line()).c_str());
    }
    REQUIRE(tListener.m_nHeard <= nLines);
    // Whatever came, the stack's own words are still understood.
    tListener.m_nRedirects = 0;
    av_log(nullptr, AV_LOG_ERROR, "method %s failed: %d %s\n", "PLAY", 454, "Session Not Found");
    av_log(nullptr, AV_LOG_WARNING, "RTP: missed %d packets\n", 3);
    av_log(nullptr, AV_LOG_INFO, "Status %d: Redirecting to %s\n", 302, "rtsp://other/");
    REQUIRE(tListener.m_nStatus == 454 && tListener.m_nMissed == 3 && tListener.m_nRedirects == 1);
    return 0;
}
