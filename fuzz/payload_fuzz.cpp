// The packets of a track: a byte for the payload and for how long missing ones are waited for, its parameters up to the
// end of the line, then packets: a byte of flags, what their numbers move by, and a byte or two for the length.

#include "fuzz/Input.h"
#include "rtsp/Track.h"

#include <vector>

namespace
{
using namespace std::chrono_literals;

constexpr char const* g_aszMaps[] = {
    "video H264/90000",      "video H265/90000",   "audio MPEG4-GENERIC/48000/2",
    "audio MP4A-LATM/48000", "video JPEG/90000",   "video MP4V-ES/90000",
    "video MP2T/90000",      "audio OPUS/48000/2", "application VND.ONVIF.METADATA/90000",
    "video VP8/90000",       "audio G726-32/0",
};

// A line of a description, as a parser would take it apart.
rtsp::tagMediaDescription Describe(std::string_view strMap, std::string_view strParameters)
{
    const std::size_t nMedia = strMap.find(' ');
    const std::string strSdp = "m=" + std::string(strMap.substr(0, nMedia)) + " 0 RTP/AVP 96\na=rtpmap:96" +
                               std::string(strMap.substr(nMedia)) + "\na=fmtp:96 " + std::string(strParameters) + "\n";
    return rtsp::ParseDescription(strSdp)->atMedia.at(0);
}

struct CFrames final : rtsp::IFrameSink
{
    void OnFrame(rtsp::CTrack& tTrack, rtsp::tagTrackFrame& tFrame) override
    {
        tagStreamMediaFrame const& t = tFrame.tFrame;
        constexpr std::int64_t llLastUs = std::int64_t{1} << 60;
        REQUIRE(t.dwLength > 0 && t.dwLength == tFrame.abyData.size() && t.pData == tFrame.abyData.data());
        REQUIRE(t.dwLength <= nMost);
        REQUIRE(t.dwMediaType == static_cast<std::uint32_t>(tTrack.Type()));
        REQUIRE(!t.pConfig || t.pConfig == tFrame.pabyConfig->data());
        REQUIRE(tFrame.llStampUs >= -llLastUs && tFrame.llStampUs <= llLastUs);
        REQUIRE(t.dwWidth <= 65535 && t.dwHeight <= 65535);
        REQUIRE(!(t.dwFlags & eFrameKey) || HasParameterSets(t));
        ullLost += t.dwLostBefore;
        // What duplicates must not change.
        for (const std::uint64_t ull : {std::uint64_t{t.dwFlags}, std::uint64_t{t.dwLostBefore},
                                        std::uint64_t{t.dwLength}, static_cast<std::uint64_t>(tFrame.llStampUs)})
        {
            ullHash = (ullHash ^ ull) * 0x100000001B3;
        }
        for (const unsigned char by : tFrame.abyData) // every byte can be read
        {
            ullHash = (ullHash ^ by) * 0x100000001B3;
        }
        if (ullHash & 1) // sometimes kept, as a queue does
        {
            tFrame.abyData = {};
        }
    }
    static bool HasUnit(tagStreamMediaFrame const& tFrame, unsigned uType)
    {
        for (std::uint32_t i = 3; i < tFrame.dwLength; ++i)
        {
            unsigned char const* const pby = tFrame.pData + i;
            const unsigned uThis = tFrame.dwCodec == eCodecH264 ? *pby & 0x1FU : *pby >> 1U & 0x3FU;
            if (pby[-3] == 0 && pby[-2] == 0 && pby[-1] == 1 && uThis == uType)
            {
                return true;
            }
        }
        return false;
    }
    // A decoder can start with it.
    static bool HasParameterSets(tagStreamMediaFrame const& tFrame)
    {
        return tFrame.dwCodec == eCodecH264   ? HasUnit(tFrame, 7) && HasUnit(tFrame, 8)
               : tFrame.dwCodec == eCodecH265 ? HasUnit(tFrame, 32) && HasUnit(tFrame, 33) && HasUnit(tFrame, 34)
                                              : true;
    }

    std::uint64_t ullHash = 0xCBF29CE484222325;
    std::uint64_t ullLost = 0;
    std::size_t nMost = 0;
};

void Put(std::vector<unsigned char>& abyTo, std::uint32_t dwNumber, int nBytes)
{
    while (nBytes-- > 0)
    {
        abyTo.push_back(static_cast<unsigned char>(dwNumber >> 8 * nBytes));
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    const auto byKind = tInput.Number<std::uint8_t>();
    const auto tDescription = Describe(g_aszMaps[(byKind & 127) % std::size(g_aszMaps)], tInput.Line());
    // One gets each packet once, the other twice.
    rtsp::CTrack tOnce(tDescription, byKind & 128 ? 100ms : 0ms);
    rtsp::CTrack tTwice(tDescription, byKind & 128 ? 100ms : 0ms);
    CFrames tFrames;
    CFrames tSame;
    tFrames.nMost = tSame.nMost = 2 * nLength + 70000 * 2; // parameter sets may come in front again, and headers
    rtsp::Clock::time_point tNow{1000s};
    std::uint16_t wSequence = 65530;
    std::uint32_t dwStamp = 0xFFFFF000;
    std::uint32_t dwSource = 1;
    std::uint64_t ullPackets = 0;
    while (!tInput.IsEmpty())
    {
        // 1 marker, 2 next time stamp, 4 both come with the packet, 8 time passes, 16 the replay extension, 32 a report
        // comes instead, 64 all begins anew, 128 two bytes of length.
        const auto byFlags = tInput.Number<std::uint8_t>();
        dwStamp += byFlags & 2 ? 3600 : 0;
        if (byFlags & 4)
        {
            wSequence = static_cast<std::uint16_t>(wSequence + tInput.Number<std::int8_t>());
            dwStamp += static_cast<std::uint32_t>(tInput.Number<std::int8_t>()) << 20;
            dwSource += tInput.Number<std::uint8_t>() == 0;
        }
        tNow += byFlags & 8 ? 60ms : 0ms;
        const std::size_t nPayload = byFlags & 128 ? tInput.Number<std::uint16_t>() : tInput.Number<std::uint8_t>();
        std::vector<unsigned char> abyPacket{static_cast<unsigned char>(byFlags & 16 ? 0x90 : 0x80),
                                             static_cast<unsigned char>(byFlags & 1 ? 0xE0 : 0x60)};
        Put(abyPacket, wSequence++, 2);
        Put(abyPacket, dwStamp, 4);
        Put(abyPacket, dwSource, 4);
        const std::string_view strPayload = tInput.Bytes(nPayload);
        abyPacket.insert(abyPacket.end(), strPayload.begin(), strPayload.end());
        if (byFlags & 64)
        {
            tOnce.Reset();
            tTwice.Reset();
        }
        for (rtsp::CTrack* const pt : {&tOnce, &tTwice, &tTwice})
        {
            CFrames& tSink = pt == &tOnce ? tFrames : tSame;
            if (byFlags & 32)
            {
                pt->TakeRtcp(rtsp::Bytes(abyPacket).subspan(12), tNow);
                pt->Report(tNow);
            }
            else
            {
                pt->TakeRtp(abyPacket, tNow, tSink);
            }
            if (byFlags & 8)
            {
                pt->OnDeadline(tNow, tSink);
                REQUIRE(!pt->Deadline() || *pt->Deadline() > tNow);
            }
        }
        ullPackets += !(byFlags & 32);
        REQUIRE(tFrames.ullHash == tSame.ullHash);
        REQUIRE(tOnce.Packets() <= ullPackets && tTwice.Packets() == 2 * tOnce.Packets());
        REQUIRE(tFrames.ullLost <= tOnce.Lost() && tOnce.Lost() == tTwice.Lost());
    }
    return 0;
}
