// RFC 2250: whole packets of a transport stream.

#include "rtsp/payload/Payload.h"

#include <algorithm>

namespace rtsp
{
namespace
{
constexpr std::size_t g_nPacket = 188;
constexpr unsigned char g_bySync = 0x47;

// Where the packets begin; at most a packet's length.
std::size_t FindPackets(Bytes abyData)
{
    for (std::size_t nAt = 0; nAt < std::min(abyData.size(), g_nPacket); ++nAt)
    {
        bool bAll = true;
        for (std::size_t n = nAt; n + g_nPacket <= abyData.size(); n += g_nPacket)
        {
            bAll = bAll && abyData[n] == g_bySync;
        }
        if (bAll && nAt + g_nPacket <= abyData.size())
        {
            return nAt;
        }
    }
    return abyData.size();
}

class CMpegTs final : public CPacketPayload
{
public:
    explicit CMpegTs(tagMediaDescription const& tDescription) : CPacketPayload(tDescription, eCodecMPEGTS, "mpegts") {}

    void Take(tagRtpPacket const& tPacket, unsigned nLostBefore, IUnitSink& tSink) override
    {
        m_nLostBefore += nLostBefore;
        const std::size_t nAll = tPacket.abyPayload.size();
        const std::size_t nBegin = FindPackets(tPacket.abyPayload);
        const std::size_t nLength = (nAll - nBegin) / g_nPacket * g_nPacket;
        if (nLength > 0)
        {
            PassOn(tPacket.abyPayload.subspan(nBegin, nLength), tPacket, tPacket.dwStamp, nLength != nAll, tSink);
        }
    }
};
} // namespace

std::unique_ptr<CPayload> MakeMpegTs(tagMediaDescription const& tDescription)
{
    return std::make_unique<CMpegTs>(tDescription);
}
} // namespace rtsp
