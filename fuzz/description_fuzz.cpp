// SDPs.

#include "fuzz/Input.h"
#include "rtsp/Description.h"

#include <cmath>
#include <string>

namespace
{
std::string Text(rtsp::tagDescription const& tDescription)
{
    std::string strText = tDescription.strControl + '|' + tDescription.strRange;
    for (rtsp::tagMediaDescription const& t : tDescription.atMedia)
    {
        strText += '\n' + t.strMedia + ' ' + std::to_string(t.wPort) + ' ' + std::to_string(t.nPayloadType) + ' ' +
                   t.strEncoding + ' ' + std::to_string(t.dwClockRate) + ' ' + std::to_string(t.nChannels) + ' ' +
                   t.strControl + ' ' + t.strAddress + ' ' + std::to_string(t.nTimeToLive) + ' ' + t.strSource + ' ' +
                   std::to_string(static_cast<int>(t.eWay)) + ' ' + std::to_string(t.nWidth) + ' ' +
                   std::to_string(t.nHeight) + ' ' + std::to_string(t.dFrameRate);
        for (auto const& [strName, strValue] : t.atParameters)
        {
            strText += ' ' + strName + '=' + strValue;
        }
    }
    return strText;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    const std::string strSdp(reinterpret_cast<char const*>(pbyData), nLength);
    const auto tDescription = rtsp::ParseDescription(strSdp);
    if (!tDescription)
    {
        return 0;
    }
    REQUIRE(!tDescription->atMedia.empty() && tDescription->atMedia.size() <= 32);
    const std::string strText = Text(*tDescription);
    REQUIRE(strText.find('\r') == std::string::npos && strText.size() <= 64 * (nLength + 1000));
    for (rtsp::tagMediaDescription const& t : tDescription->atMedia)
    {
        REQUIRE(t.nPayloadType >= -1 && t.nPayloadType < 128);
        REQUIRE(std::isfinite(t.dFrameRate) && t.dFrameRate >= 0 && t.nWidth <= 65535 && t.nHeight <= 65535);
        REQUIRE((t.nWidth == 0) == (t.nHeight == 0));
        for (auto const& [strName, strValue] : t.atParameters)
        {
            REQUIRE(!strName.empty() && t.Parameter(strName).data() != nullptr);
        }
    }
    // Line ends mean nothing beyond the line.
    std::string strOther;
    for (const char c : strSdp)
    {
        strOther += c == '\n' ? std::string("\r\n\r\n") : std::string(1, c == '\r' ? '\n' : c);
    }
    const auto tOther = rtsp::ParseDescription(strOther);
    REQUIRE(tOther && Text(*tOther) == strText);
    return 0;
}
