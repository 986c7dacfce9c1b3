// A packet, taken for RTP and for RTCP.

#include "fuzz/Input.h"
#include "rtsp/Rtcp.h"
#include "rtsp/Rtp.h"

#include <string>
#include <vector>

namespace
{
class CLog final : public rtsp::IRtcpSink
{
public:
    void OnSenderReport(std::uint32_t dwSource, std::uint64_t ullNtp, std::uint32_t dwStamp) override
    {
        const std::uint64_t ullAgain = rtsp::UsToNtp(rtsp::NtpToUs(ullNtp));
        REQUIRE(rtsp::NtpToUs(ullAgain) == rtsp::NtpToUs(ullNtp) && ullNtp - ullAgain < 4295);
        m_atEvents.push_back({dwSource, dwStamp, ullNtp});
    }
    void OnBye(std::uint32_t dwSource) override { m_atEvents.push_back({dwSource, 0, 0}); }

    struct tagEvent
    {
        std::uint32_t dwSource;
        std::uint32_t dwStamp;
        std::uint64_t ullNtp;
        bool operator==(tagEvent const&) const = default;
    };
    std::vector<tagEvent> m_atEvents;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    const std::vector<unsigned char> abyData(pbyData, pbyData + nLength); // ends where it ends
    const rtsp::Bytes abyPacket = abyData;
    if (const auto tPacket = rtsp::ParseRtp(abyPacket))
    {
        REQUIRE(tPacket->abyPayload.data() >= abyPacket.data() + 12);
        REQUIRE(tPacket->abyPayload.data() + tPacket->abyPayload.size() <= abyPacket.data() + nLength);
        if (!tPacket->abyJpegSegments.empty())
        {
            REQUIRE(tPacket->abyJpegSegments.data() >= abyPacket.data() + 16);
            REQUIRE(tPacket->abyJpegSegments.data() + tPacket->abyJpegSegments.size() <= tPacket->abyPayload.data());
        }
        const auto abyHeader = rtsp::MakeRtpHeader(*tPacket);
        REQUIRE(std::equal(abyHeader.begin() + 1, abyHeader.end(), abyPacket.begin() + 1));
    }
    // A packet that was cut off says less, and nothing else.
    CLog tWhole;
    const bool bWhole = rtsp::ParseRtcp(abyPacket, tWhole);
    REQUIRE(bWhole || tWhole.m_atEvents.empty());
    for (std::size_t n = 0; n < std::min<std::size_t>(nLength, 200); ++n)
    {
        CLog tPart;
        REQUIRE(!rtsp::ParseRtcp(abyPacket.first(n), tPart) || bWhole);
        REQUIRE(tPart.m_atEvents.size() <= tWhole.m_atEvents.size());
        REQUIRE(std::equal(tPart.m_atEvents.begin(), tPart.m_atEvents.end(), tWhole.m_atEvents.begin()));
    }
    return 0;
}
