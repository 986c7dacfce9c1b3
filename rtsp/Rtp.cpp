#include "rtsp/Rtp.h"

#include "rtsp/BigEndian.h"
#include "rtsp/Rtcp.h"

namespace rtsp
{
namespace
{
constexpr std::size_t g_nHeader = 12;
constexpr std::size_t g_nReplay = 12; // of the replay extension, without its own header
constexpr unsigned g_nReplayProfile = 0xabac;
constexpr unsigned g_nJpegProfile = 0xffd8;

tagReplayExtension ParseReplay(Bytes abyData)
{
    const unsigned uFlags = abyData[8];
    tagReplayExtension tReplay;
    tReplay.llTimeUs = NtpToUs(std::uint64_t{Big32(abyData, 0)} << 32 | Big32(abyData, 4));
    tReplay.bCleanPoint = uFlags & 0x80;
    tReplay.bEndOfSection = uFlags & 0x40;
    tReplay.bDiscontinuity = uFlags & 0x20;
    tReplay.bTerminal = uFlags & 0x10;
    tReplay.byCSeq = abyData[9];
    return tReplay;
}

// The JPEG extension stands alone, or behind the replay extension and inside its length.
void ParseExtension(unsigned nProfile, Bytes abyData, tagRtpPacket& tPacket)
{
    if (nProfile == g_nReplayProfile && abyData.size() >= g_nReplay)
    {
        tPacket.tReplay = ParseReplay(abyData);
        abyData = abyData.subspan(g_nReplay);
        if (abyData.size() < 4)
        {
            return;
        }
        nProfile = Big16(abyData, 0);
        const std::size_t nLength = 4 * std::size_t{Big16(abyData, 2)};
        abyData = abyData.subspan(4);
        if (nLength > abyData.size())
        {
            return;
        }
        abyData = abyData.first(nLength);
    }
    if (nProfile == g_nJpegProfile)
    {
        tPacket.abyJpegSegments = abyData;
    }
}
} // namespace

std::optional<tagRtpPacket> ParseRtp(Bytes abyPacket)
{
    if (abyPacket.size() < g_nHeader || abyPacket[0] >> 6 != 2)
    {
        return std::nullopt;
    }
    std::size_t nBegin = g_nHeader + std::size_t{4} * (abyPacket[0] & 15);
    std::size_t nEnd = abyPacket.size();
    if (abyPacket[0] & 0x20)
    {
        const std::size_t nPadding = abyPacket.back();
        if (nPadding == 0 || nPadding > nEnd)
        {
            return std::nullopt;
        }
        nEnd -= nPadding;
    }
    std::optional<tagRtpPacket> tPacket(std::in_place);
    if (abyPacket[0] & 0x10)
    {
        if (nBegin + 4 > nEnd)
        {
            return std::nullopt;
        }
        const std::size_t nLength = 4 * std::size_t{Big16(abyPacket, nBegin + 2)};
        if (nBegin + 4 + nLength > nEnd)
        {
            return std::nullopt;
        }
        ParseExtension(Big16(abyPacket, nBegin), abyPacket.subspan(nBegin + 4, nLength), *tPacket);
        nBegin += 4 + nLength;
    }
    if (nBegin > nEnd)
    {
        return std::nullopt;
    }
    tPacket->bMarker = abyPacket[1] & 0x80;
    tPacket->byPayloadType = abyPacket[1] & 0x7f;
    tPacket->wSequence = Big16(abyPacket, 2);
    tPacket->dwStamp = Big32(abyPacket, 4);
    tPacket->dwSource = Big32(abyPacket, 8);
    tPacket->abyPayload = abyPacket.subspan(nBegin, nEnd - nBegin);
    return tPacket;
}

std::array<unsigned char, 12> MakeRtpHeader(tagRtpPacket const& tPacket)
{
    std::array<unsigned char, g_nHeader> abyHeader{0x80};
    abyHeader[1] = static_cast<unsigned char>((tPacket.bMarker ? 0x80 : 0) | (tPacket.byPayloadType & 0x7f));
    PutBig16(&abyHeader[2], tPacket.wSequence);
    PutBig32(&abyHeader[4], tPacket.dwStamp);
    PutBig32(&abyHeader[8], tPacket.dwSource);
    return abyHeader;
}
} // namespace rtsp
