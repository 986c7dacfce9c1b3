// Frames out of packets: a track and the time line, fed with packets made by hand.

#include "rtsp/Rtcp.h"
#include "rtsp/Timeline.h"
#include "rtsp/Track.h"
#include "rtsp/payload/Encoded.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>

using namespace rtsp;
using namespace std::chrono_literals;

namespace
{
constexpr char g_acDigits[] = "0123456789ABCDEF";

std::string ToHex(auto const& abyBytes)
{
    std::string strHex;
    std::ranges::for_each(abyBytes, [&](auto by) { strHex += {g_acDigits[by >> 4 & 15], g_acDigits[by & 15]}; });
    return strHex;
}

// Small letters stand for bytes. Units: s t parameter sets (of H.265 s is two of them behind each other), k first slice
// of a key picture, p q slices of another picture (q isn't its first), l another slice of k, d a delimiter. Of H.264
// also: u another sequence set of the same number as s, r a message that decoding can start here, i another message, b
// and c parts of a slice in three. In packets only: a all of s t k in one, < = > first, middle and last fragment of k,
// { } those of s, x what stands between units that come in one, z the interleaved mode.
constexpr char g_szH264[] =
    " s6742000AF841A2 t68CE3880 u6742000BF841A2 k65888011 l65448011 p419A2222 q414A2222 r060401000601C480 i0605010680 "
    "d0910 b429A2222 c439A2222 a7800076742000AF841A2000468CE3880000465888011 <7C85888011 =7C0555 >7C4555 {7C8742000A "
    "}7C47F841A2 x00000001 z790000 ";
constexpr char g_szH265[] =
    " s40010C0100000001420101016000000300000300000300000300001EA08845 t4401C172 k2601AF11 l26012F11 p0201D022 "
    "q02015022 "
    "d460110 a6001001F40010C0100000001420101016000000300000300000300000300001EA0884500044401C17200042601AF11 "
    "<620193AF11 =62011355 >62015355 ";
const std::string g_strAny =
    " m47" + std::string(374, '1') + " q" + std::string(256, '7') + " x" + std::string(3000, '5') + ' ';

// A source of packets, and what its track makes of them. Its sequence numbers and time stamps wrap soon.
struct CSource : IFrameSink
{
    // "video H264/90000 sprop-...": media, rtpmap, fmtp.
    static tagMediaDescription Describe(std::string const& strMedia)
    {
        constexpr char szSdp[] = "m=$1 0 RTP/AVP 96\na=rtpmap:96 $2\na=fmtp:96 $3\na=framesize:96 3840-2160\n";
        return ParseDescription(std::regex_replace(strMedia, std::regex("(\\S+) (\\S+) ?(.*)"), szSdp))->atMedia.at(0);
    }
    explicit CSource(std::string const& strMedia, std::chrono::milliseconds tWait = 0ms)
        : tDescription(Describe(strMedia)), tTrack(tDescription, tWait)
    {
    }
    // A frame as text: K or P, ! when it is damaged, losses before it, then its units; or its bytes and time stamp.
    void OnFrame(CTrack&, tagTrackFrame& tFrame) override
    {
        std::string strHex = ToHex(tFrame.abyData);
        std::istringstream tLetters(strLetters);
        for (std::string strLetter; tLetters >> strLetter;)
        {
            const std::string strFrom = (bUnits ? "00000001" : "") + strLetter.substr(1);
            for (std::size_t n = 0; (n = strHex.find(strFrom)) != std::string::npos;)
            {
                strHex.replace(n, strFrom.size(), 1, strLetter[0]);
            }
        }
        strCame += tFrame.tFrame.dwFlags & eFrameKey ? " K" : " P";
        strCame += tFrame.tFrame.dwFlags & eFrameDamaged ? "!" : "";
        strCame += (tFrame.tFrame.dwLostBefore ? std::to_string(tFrame.tFrame.dwLostBefore) : "") + ':' + strHex;
        const std::int64_t llStamp = (tFrame.llStampUs * tDescription.dwClockRate + 500000) / 1000000;
        strCame += bUnits ? "" : '@' + std::to_string(llStamp - 0xFFFFF000);
        tLast = std::move(tFrame);
    }
    std::string Letter(char c) const
    {
        const std::size_t n = strLetters.find({' ', c}) + 2;
        return n < 2 ? std::string(1, c) : strLetters.substr(n, strLetters.find(' ', n) - n);
    }
    void Send(std::string const& strWord)
    {
        const auto wSequence = static_cast<std::uint16_t>(nSequence++);
        const auto abyHeader = MakeRtpHeader({strWord.back() == '.', 96, wSequence, dwStamp, dwSource, {}, {}, {}});
        strLast = (strExtension.empty() ? "80" : "90") + ToHex(abyHeader).substr(2) + strExtension;
        std::ranges::for_each(strWord, [this](char c) { strLast += Letter(c); });
        astrHeld.push_back(strLast);
    }
    void Report(std::uint64_t ullNtp, std::uint32_t dwAt)
    {
        tTrack.TakeRtcp(FromHex(ToHex(MakeSenderReport({7, ullNtp, dwAt}))), tNow);
    }
    void Wait(std::chrono::milliseconds tTime) { tTrack.OnDeadline(tNow += tTime, *this); }
    // Plays a script: packets with blanks in between, in hex and letters; a dot behind one: the marker. / next time
    // stamp, - a packet is lost, | shows what came so far, w and W wait for 10 and 100 ms, R a sender report, ( ) what
    // is between arrives in reverse order, * the packet before once more, # the sequence numbers begin anew, N another
    // source, Z the track is reset, X segments of a JPEG come beside its packets.
    CSource const& Play(std::string const& strScript)
    {
        // clang-format off
        const std::map<std::string, std::function<void()>> tCommands{
            {"/", [&] { dwStamp += 3600; }}, {"-", [&] { ++nSequence; }}, {"#", [&] { nSequence += 10000; }},
            {"N", [&] { ++dwSource; }}, {"|", [&] { strCame += " |"; }}, {"*", [&] { astrHeld.push_back(strLast); }},
            {"(", [&] { bHold = true; }}, {")", [&] { bHold = false; }}, {"Z", [&] { tTrack.Reset(); }},
            {"w", [&] { Wait(10ms); }}, {"W", [&] { Wait(100ms); }}, {"R", [&] { Report(7ULL << 61, dwStamp - 77); }},
            {"X", [&] { strExtension = "FFD80007FFE1000341FFC0000B080BB80FA001011100FFDB0005005566FFFFFF"; }}};
        // clang-format on
        std::istringstream tScript(strScript);
        for (std::string strWord; tScript >> strWord;)
        {
            tCommands.contains(strWord) ? tCommands.at(strWord)() : Send(strWord);
            for (; !bHold && !astrHeld.empty(); astrHeld.pop_back())
            {
                tTrack.TakeRtp(FromHex(astrHeld.back()), tNow, *this);
            }
        }
        return *this;
    }

    tagMediaDescription tDescription;
    CTrack tTrack;
    bool bUnits = tDescription.strEncoding.starts_with("H26"), bHold = false;
    std::string strLetters = !bUnits ? g_strAny : tDescription.strEncoding == "H264" ? g_szH264 : g_szH265;
    std::string strCame, strLast, strExtension; // the last one with its header
    std::vector<std::string> astrHeld;
    tagTrackFrame tLast;
    Clock::time_point tNow{1000s};
    std::uint32_t nSequence = 65534, dwStamp = 0xFFFFF000, dwSource = 7;
};

TEST(Track, MakesFramesOfNalUnits)
{
    // clang-format off
    for (const auto& [strWhat, strScript, strFrames] : std::initializer_list<std::array<std::string, 3>>{
        {"markers are learnt, then end frames", "a. | w | / p. | / p. | / p. |", " | K:stk | | P:p P:p | P:p |"},
        {"no markers", "a w | / p w | / p |", " | K:stk | P:p |"},
        {"a marker on each unit", "s. t. k. l. / p. q. w / p. q. / a. l. / p. |", " K:stkl P:pq P:pq K:stkl |"},
        {"... from some time on", "a. / p. / p. / p. q. / p. q. / p. q. | / p", " K:stk P:p P:p P:p P!:q P:pq | P:pq"},
        {"a marker on each packet from some time on", "a. / p. / p. / <. =. >. / p", " K:stk P:p P:p K:stk5555"},
        {"parameter sets apart, frames beside each other", "s. / t. / k. / p. / p. p. a. |", " K:stk P:p P:p P:p K:stk |"},
        {"reset, and a report inside a picture", "a. / p. / p. / - < Z / p. / < R = >. |", " K:stk P:p P:p P1:p K:stk5555 |"},
        {"parameter sets missing", "k / p / t k / s t k s t l / k s t / k / p", " P:k P:p P:tk K:stkl K:stk K:stk"},
        {"parameter sets change, delimiters stay first", "a / d i k / d p / u t k / k / s k / p", " K:stk K:dstik P:dp K:utk K:utk P:sk"},
        {"units behind start codes, sets in fragments", "sxtxk / ixp / { } r k / p", " K:stk P:ip K:strk"},
        {"a recovery point, a slice in three parts", "s t r p / p / b c c / p", " K:strp P:p P:bcc"},
        {"pieces missing", "a. / p. / p. / - = >. / p. / < - >. / < = - / p. |", " K:stk P:p P:p P1:p K!1:stk K!:stk55 P!1:p |"},
        {"slices missing", "a. / p. / p. / - q. / p - / < / z p. / p. |", " K:stk P:p P:p P!1:q P!:p K!1:stk P!:p P:p |"},
        {"late without waiting", "a. / p. / p. / ( p. / p. ) / p. |", " K:stk P:p P:p P!1:p P:p |"},
        {"late, and twice", "a. / p. / p. / ( < * = >. / p. ) | W / - / p. * / p. | W", " K:stk P:p P:p K:stk5555 P:p | | P!1:p P:p"},
        {"gaps", "a. / p. / p. / - / p. / p. | w / - / p. | W", " K:stk P:p P:p | | P!1:p P:p P!1:p"},
        {"the server restarts", "a. / p. / p. / # p. / < # # # # p. / p - N p. / p. |", " K:stk P:p P:p P:p K!:stk P:p P!:p P:p P:p |"}})
    // clang-format on
    {
        const auto tWait = strScript.find('W') != std::string::npos ? 100ms : 0ms;
        EXPECT_EQ(CSource("video H264/90000", tWait).Play(strScript).strCame, strFrames) << strWhat;
        const bool bBoth = strScript.find_first_of("rbuxz{i") == std::string::npos;
        EXPECT_EQ(CSource(bBoth ? "video H265/90000" : "video H264/90000", tWait).Play(strScript).strCame, strFrames)
            << strWhat;
    }
}

// A device that sets it behind each slice, of which only key frames have several.
TEST(Track, UnlearnsMarkersOnlyAfterALongProof)
{
    CSource tSource("video H264/90000");
    for (int i = 0; i < 1260; ++i)
    {
        tSource.Play(i < 1000 && i % 50 == 0 ? "/ a. l." : "/ p.");
    }
    EXPECT_TRUE(tSource.Play("| / p. |").strCame.ends_with(" | P:p |") &&
                tSource.strCame.find('!') == std::string::npos);
}

// A source that counts on from a smaller number is believed after some packets; not so late ones.
TEST(Track, BelievesARestartAfterSomePackets)
{
    CSource tSource("audio PCMU/8000", 100ms);
    // First number, packets, frames in all, losses in all. The last ones stand behind a gap of 50.
    std::istringstream tSteps("1000 100 100 0 500 15 100 0 1100 1 101 0 515 50 136 0 615 512 136 0 1127 1 649 50");
    for (int nPackets = 0, nFrames = 0, nLost = 0; tSteps >> tSource.nSequence >> nPackets >> nFrames >> nLost;)
    {
        while (nPackets-- > 0)
        {
            tSource.Play("11");
        }
        EXPECT_EQ(std::count(tSource.strCame.begin(), tSource.strCame.end(), 'K'), nFrames);
        EXPECT_EQ(tSource.tTrack.Lost(), nLost);
    }
}

// Huffman tables, beginning of the scan.
#define HUFFMAN "FFC4001F000001.{52}FFC400B5100002.{352}FFC4001F010003.{52}FFC400B5110002.{352}"
#define SCAN    "FFDA000C03010002110311003F00"

// What is described, what is sent; frames; their type, codec, name, size or rate and channels, configuration.
TEST(Track, TakesPayloadsApart)
{
    // clang-format off
    for (const auto& [strMedia, strScript, strFrames, strFormat] : std::initializer_list<std::array<std::string, 4>>{
        {"audio PCMA/8000", "0102 - / 03", " K:0102@0 K1:03@3600", "1 4 pcm_alaw 8000/1"},
        {"audio mpeg4-generic/48000 mode=AAC-hbr;sizelength=13;indexlength=3;indexdeltalength=3;config=1190", "00100010A1A2. / 002000100008B1B2C1. / 002000080009D1E1.", " K:A1A2@0 K:B1B2@3600 K:C1@4624 K:D1@7200 K:E1@9248", "1 3 aac 48000/2 1190"},
        {"audio mpeg4-generic/24000 config=130856E598", "002000080008A1B1.", " K:A1@0 K:B1@1024", "1 3 aac 48000/1 130856E598"},
        {"audio mpeg4-generic/48000 config=1190", "00100020A1A2 00100020A3A4. / 00100020B1B2 - 00100020B3B4. / 00100008C1. / 0010 FFFF00 00100050A1", " K:A1A2A3A4@0 K1:C1@7200", "1 3 aac 48000/2 1190"},
        {"audio mpeg4-generic/8000 mode=AAC-lbr;config=1588;constantduration=100", "00100508A1B1B2.", " K:A1@0 K:B1B2@100", "1 3 aac 8000/1 1588"},
        {"audio mpeg4-generic/48000 mode=generic;sizelength=8;ctsdeltalength=7;randomaccessindication=1;auxiliarydatasizelength=8;config=1190", "001B0240614008FFA1A2B1.", " K:A1A2@0 K:B1@1024", "1 3 aac 48000/2 1190"},
        {"audio mpeg4-generic/48000 mode=generic;constantsize=2;config=1190", "A1A2B1B2.", " K:A1A2@0 K:B1B2@1024", "1 3 aac 48000/2 1190"},
        {"audio mpeg4-generic/48000 config=1190", "00100048FFF14C80013FFCA1A2.", " K:A1A2@0", "1 3 aac 48000/2 1190"},
        {"audio MP4A-LATM/48000 cpresent=0;config=400023203FC0", "02A1A2. / 02B1 B2. / 02C1 - C4. / 01E1.", " K:A1A2@0 K:B1B2@3600 K1:E1@10800", "1 3 aac 48000/2 1190"},
        {"audio MP4A-LATM/48000", "8000A1. / 200011901FE0150D10. / 80D88080D900.", " K:A1A2@3600 K:B1@7200 K:B2@8224", "1 3 aac 48000/2 1190"},
        {"video MP4V-ES/90000 config=000001000000012000C48D8800CD0A641ED443", "000001B300000001B600A1 A2. / 000001B640B1. / 000001B600C1 - / D2.", " K:000001B300000001B600A1A2@0 P:000001B640B1@3600 K!:000001B600C1@7200", "0 9 mpeg4 332x246 000001000000012000C48D8800CD0A641ED443"},
        {"video X-OWN/90000", "A1 A2. / B1 - B2. / C1 / xx99. / D1.", " P:A1A2@0 P!1:B1B2@3600 P:C1@7200 P:xx99@10800 P:D1@14400", "0 0 x-own 3840x2160"},
        {"application vnd.onvif.metadata/90000", "3C61 2F3E. 3C622F3E.", " K:3C612F3E@0 K:3C622F3E@0", "2 11 onvif-metadata 0x0"},
        {"video H264/90000 sprop-parameter-sets=Z0LADdoFQh7mwEQAAAMABAAAAwDIPFCqgA==,aM4PyA==", "p.", " P:p", "0 1 h264 332x246"},
        {"video H264/90000 sprop-parameter-sets=Z01AFfQKiHusBEAAAAMAQAAADIfFCqg=,aN4PyA==", "p.", " P:p", "0 1 h264 332x252"},
        {"video H265/90000 sprop-vps=QAEMAf//AWAAAAMAkAAAAwAAAwA8lZQJ;sprop-sps=QgEBAWAAAAMAkAAAAwAAAwA8oAqIBAdzZZWVKTC8BaAgAAADACAAAAMDIQ==;sprop-pps=RAHAc8EJ;sprop-max-don-diff=1", "02010001D022. / 6001000200040201D02205000402015022. / 6201810003D033 62010144 62014155.", " P:p P:pq P:000000010201D0334455", "0 2 hevc 332x246"},
        {"video MP2T/90000", "m. / FFFFmm77 / 00", " K:m@0 K!:mm@3600", "0 10 mpegts 3840x2160"},
        {"video JPEG/90000", "0000000001320A08A1 0000000101320A08A2 - 0000000501320A08A5.", " K!1:FFD8FFDB004300100B.{124}FFDB0043011112.{124}FFC00011080040005003012200021101031101" HUFFMAN SCAN "A1A2FFD9@0", "0 8 mjpeg 80x64"},
        {"video JPEG/90000", "0000000000190A08A1 0000000100190A08FFD9.", " K:FFD8FFDB0043002016.{124}FFDB0043012224.{124}FFC00011080040005003012100.{12}" HUFFMAN SCAN "A1FFD9@0", "0 8 mjpeg 80x64"},
        {"video JPEG/90000", "00000000416300000007C000A1.", " K:FFD8FFDB0043000101.{124}FFDB0043010101.{124}FFC000110808700F0003012200.{12}" HUFFMAN "FFDD00040007" SCAN "A1FFD9@0", "0 8 mjpeg 3840x2160"},
        {"video JPEG/90000", "0000000001C80A0800000080q. / 0000000001C80A0800000000B1. / 0000000001FF0A0800000000B2.", ".*@0 K:FFD8FFDB004300(77){64}FFDB004301(77){64}FFC0.*" SCAN "B1FFD9@3600", "0 8 mjpeg 80x64"},
        {"video JPEG/90000", "0000000001FF0A0800010080qA1.", " K:FFD8FFDB008310qFFDB008311qFFC0.*A1FFD9@0", "0 8 mjpeg 80x64"},
        {"video JPEG/90000", "X 0000000001320A08A1.", " K:FFD8FFE1000341FFC0000B080BB80FA001011100FFDB0005005566" HUFFMAN SCAN "A1FFD9@0", "0 8 mjpeg 4000x3000"}})
    // clang-format on
    {
        CSource tSource(strMedia);
        tagStreamMediaFrame const& t = tSource.Play(strScript + " w").tLast.tFrame;
        std::ostringstream tText;
        tText << tSource.strCame << ' ' << t.dwMediaType << ' ' << t.dwCodec << ' ' << t.szCodecName << ' ';
        tText << t.dwWidth + t.dwSampleRate << "x/"[t.dwMediaType == eMediaAudio] << t.dwHeight + t.dwChannels;
        tText << ' ' << ToHex(Bytes(t.pConfig, t.dwConfigLength));
        EXPECT_TRUE(std::regex_match(tText.str(), std::regex(strFrames + ' ' + strFormat + " ?"))) << tText.str();
    }
}

TEST(Track, KnowsTheTimeOfItsDevice)
{
    CSource tSource("video H264/90001");
    constexpr std::uint64_t ullNtp = 0xE000000080000000; // a half second
    constexpr std::int64_t llNtpUs = (std::int64_t{0xE0000000} - 2208988800) * 1000000 + 500000;
    tSource.Report(ullNtp, tSource.dwStamp + 90001); // before any packet
    EXPECT_EQ(tSource.Play("p. w").tLast.tFrame.llWallClockUs, llNtpUs - 1000000);
    for (int i = 1; i <= 3000; ++i) // over the wrap, without a drift of rounding
    {
        ASSERT_EQ(tSource.Play("/ p. w").tLast.llStampUs, (std::int64_t{0xFFFFF000} + 3600 * i) * 1000000 / 90001);
    }
    tSource.dwStamp -= 3600 * 3002;
    EXPECT_EQ(tSource.Play("/ p. w").tLast.llStampUs, (std::int64_t{0xFFFFF000} - 3600) * 1000000 / 90001);
    tSource.Report(ullNtp, tSource.dwStamp + 3600 + 9000);                         // it was set
    EXPECT_EQ(tSource.Play("/ p. w").tLast.tFrame.llWallClockUs, llNtpUs - 99999); // rounded down
    tSource.Report(0, 0);                                                          // it doesn't know the time any more
    EXPECT_EQ(tSource.Play("/ p. w").tLast.tFrame.llWallClockUs, 0);

    // Replayed: the time of recording, and what the recording has around it.
    tSource.strExtension = "ABAC0003E000000080000000A0000000";
    tagTrackFrame const& tLast = tSource.Play("/ p. w").tLast;
    EXPECT_TRUE(tLast.llRecordedUs == llNtpUs && tLast.bReplayGap && !tLast.bReplayEnd);
    tSource.strExtension = "ABAC0003E00000008000000040000000";
    EXPECT_TRUE(tSource.Play("/ p. w").tLast.bReplayEnd && !tLast.bReplayGap && tLast.tFrame.llWallClockUs == llNtpUs);
}

TEST(Track, ReportsWhatItReceived)
{
    CSource tSource("video H264/90000");
    const auto fnReport = [&] { return ToHex(tSource.tTrack.Report(tSource.tNow)); };
    EXPECT_EQ(fnReport(), "");
    tSource.Report(0x1122334455667788, 0);
    for (int i = 0; i < 100; ++i) // 10 of 110 lost; each second one comes 8 ms late: a jitter of nearly 720
    {
        tSource.tNow += i % 2 ? 38ms : 22ms;
        tSource.nSequence += i % 10 == 9;
        tSource.Play("/ p. w");
    }
    // Source, fraction lost, lost, highest number with its cycles, jitter, middle of the sender report's time, delay.
    EXPECT_EQ(fnReport().substr(16, 48), "000000071700000A0001006B000002CE3344556600040000");
    tSource.Play("- / p. w");
    EXPECT_EQ(fnReport().substr(24, 8), "8000000B") << "half of them since, 11 in all";
}

// What no server does on demand: time stamps that jump, begin again, or come from another session. In milliseconds.
TEST(Timeline, GoesOnWhateverTheDevicesClockDoes)
{
    CTimeline tTimeline;
    std::ostringstream tCame;
    // Tracks share their zero; pictures in decoding order; held up by the network; the clock was set; time stamps began
    // again, while the other track went on; a new session, ten seconds later, its tracks in another order.
    // Track, negative when a session begins with it; time stamp; arrival.
    std::istringstream tSteps(
        "1 5000 100000 2 5010 100020 1 5080 100040 1 5040 100080 1 8000 100120 1 8040 103080 "
        "1 100000 103120 1 100040 103160 1 0 103200 2 8170 103200 -2 700010 113200 1 700020 113210");
    for (std::int64_t llTrack = 0, llStamp = 0, llArrived = 0; tSteps >> llTrack >> llStamp >> llArrived;)
    {
        llTrack < 0 ? tTimeline.Restart() : void();
        const auto t = tTimeline.Map(llTrack == 1 ? "video" : "audio", llStamp * 1000, llArrived * 1000);
        tCame << t.llTimeUs / 1000 << (t.bDiscontinuity ? '!' : ',') << t.llJumpUs.value_or(0) / 1000 << ' ';
    }
    EXPECT_EQ(tCame.str(), "0,0 10,0 80,0 40,0 3000,0 3040,0 3080!91920 3120,0 3160!-100080 3170,0 13170!0 13180!0 ");
}

TEST(Timeline, NoticesManySmallJumps)
{
    // Pace, whether there are jumps; frames, step of each, time between them, in microseconds.
    // clang-format off
    for (const auto& [strWhat, szRuns] : std::initializer_list<std::pair<std::string, char const*>>{
        {"live, jumps: each 2.9 s ahead", "20 2900000 40000"},
        {"live, jumps: each 0.9 s back", "100 40000 40000 20 -900000 40000"},
        {"live, jumps: twice as fast", "1000 80000 40000"},
        {"played: twice as fast", "9000 80000 40000"},
        {"played: key frames only", "900 4000000 40000"},
        {"live: 100 ppm fast for a day", "86400 1000100 1000000"},
        {"live: 100 ppm slow for a day, then held up", "86400 999900 1000000 1 1000000 3000000 3 1000000 0"},
        {"live: pictures since the last key frame at once", "250 40000 0 900 40000 40000"},
        {"live: a stall, then all of it at once", "900 40000 40000 1 40000 20000000 499 40000 0 900 40000 40000"},
        {"live, jumps: a burst for no reason", "900 40000 40000 100 40000 0"}})
    // clang-format on
    {
        CTimeline tTimeline;
        tTimeline.Restart(strWhat[0] == 'p' ? CTimeline::ePace::Played : CTimeline::ePace::Live);
        std::int64_t llStampUs = 0, llNowUs = 0, llHighestUs = 0;
        bool bJumped = false;
        std::istringstream tRuns(szRuns);
        for (std::int64_t llFrames = 0, llStep = 0, llTime = 0; tRuns >> llFrames >> llStep >> llTime;)
        {
            for (; llFrames > 0; --llFrames)
            {
                const auto tMapped = tTimeline.Map("video", llStampUs += llStep, llNowUs += llTime);
                bJumped |= tMapped.llJumpUs.has_value();
                EXPECT_GE(tMapped.llTimeUs, llHighestUs - (llStep < 0 ? 1000000 : 0));
                llHighestUs = std::max(llHighestUs, tMapped.llTimeUs);
            }
        }
        EXPECT_EQ(bJumped, strWhat.find("jumps") != std::string::npos) << strWhat;
        EXPECT_TRUE(strWhat[0] == 'p' || llHighestUs < llNowUs + 14'000'000 + llNowUs / 1000) << strWhat;
    }
}

TEST(WallClock, IsToldWhenItIsRightAndWhenItWasSet)
{
    CWallClock tClock;
    std::ostringstream tCame;
    // Wall clock, time stamp, time on the line: no sender report yet; reports; corrected by half a second; set by an
    // hour; reckoned from a time stamp that jumped; a new report.
    std::istringstream tSteps("0 10 0 500010 10 0 500050 50 40 500590 90 80 4100130 130 120 4100170 170 160 "
                              "4190000 90000 200 4190040 90040 240 4100290 90080 280");
    for (std::int64_t llWall = 0, llStamp = 0, llTime = 0; tSteps >> llWall >> llStamp >> llTime;)
    {
        const auto tChecked = tClock.Check(llWall * 1000, llStamp * 1000, llTime * 1000, llStamp == 90000);
        tCame << tChecked.llWallUs / 1000 << ',' << tChecked.llJumpUs.value_or(0) / 1000 << ' ';
    }
    EXPECT_EQ(tCame.str(), "0,0 500010,0 500050,0 500590,0 4100130,3599500 4100170,0 0,0 0,0 4100290,0 ");
}
} // namespace
