// Values of the headers Transport, Session, RTP-Info and Range, one a line.

#include "fuzz/Input.h"
#include "rtsp/Headers.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    while (!tInput.IsEmpty())
    {
        const std::string_view strLine = tInput.Line();
        if (const auto tTransport = rtsp::ParseTransport(strLine); tTransport && tTransport->tChannels)
        {
            REQUIRE(tTransport->bTcp && tTransport->tChannels->wRtp <= 255 && tTransport->tChannels->wRtcp <= 255);
        }
        const rtsp::tagSession tSession = rtsp::ParseSession(strLine);
        REQUIRE(tSession.nTimeOut > 0 && tSession.strId.find(';') == std::string::npos);
        std::size_t nTold = 0;
        for (rtsp::tagRtpInfo const& t : rtsp::ParseRtpInfo(strLine))
        {
            REQUIRE(strLine.find(t.strUrl) != std::string_view::npos);
            nTold += t.strUrl.size() + 4;
        }
        REQUIRE(nTold <= strLine.size());
        if (const auto tRange = rtsp::ParseRange(strLine))
        {
            // In milliseconds, and no further away than a number of 64 bits reaches in them.
            const std::string strText = rtsp::RangeText(*tRange);
            const auto tAgain = rtsp::ParseRange(strText);
            REQUIRE(tAgain && rtsp::RangeText(*tAgain) == strText);
            REQUIRE(tAgain->bNow == tRange->bNow && tAgain->llEndUs.has_value() == tRange->llEndUs.has_value());
            if (tRange->llBeginUs)
            {
                REQUIRE(*tRange->llBeginUs - *tAgain->llBeginUs < 1000 && *tAgain->llBeginUs <= *tRange->llBeginUs);
            }
        }
    }
    return 0;
}
