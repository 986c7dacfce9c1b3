// Lines of libavformat's log, as a device's words get into them.

#include "plugins/rtsp/StackLog.h"
#include "tests/fuzz/Input.h"

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
    }
    void OnMissed(unsigned) override { ++m_nHeard; }
    void OnRedirect() override { ++m_nHeard; }

    int m_nHeard = 0;
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
    return 0;
}
