// Frames out of packets: a track and the time line, fed with packets made by hand.

#include "rtsp/Timeline.h"
#include "rtsp/Track.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <sstream>

using namespace rtsp;
using namespace std::chrono_literals;

namespace
{
using Octets = std::vector<unsigned char>;

Octets Hex(std::string_view strHex)
{
    Octets abyBytes;
    for (; strHex.size() >= 2; strHex.remove_prefix(2))
    {
        abyBytes.push_back(static_cast<unsigned char>(std::stoi(std::string(strHex.substr(0, 2)), nullptr, 16)));
    }
    return abyBytes;
}
std::string ToHex(Bytes abyBytes)
{
    std::string strHex;
    for (const unsigned char by : abyBytes)
    {
        strHex += {"0123456789ABCDEF"[by >> 4], "0123456789ABCDEF"[by & 15]};
    }
    return strHex;
}
void Put(Octets& abyTo, std::uint64_t ullNumber, int nBytes)
{
    while (nBytes-- > 0)
    {
        abyTo.push_back(static_cast<unsigned char>(ullNumber >> 8 * nBytes));
    }
}
void Put(Octets& abyTo, Bytes abyMore)
{
    abyTo.insert(abyTo.end(), abyMore.begin(), abyMore.end());
}

// "video H264/90000 sprop-...": media, rtpmap, fmtp.
tagMediaDescription Describe(std::string const& strText)
{
    std::istringstream tWords(strText);
    std::string strMedia, strMap, strParameters;
    tWords >> strMedia >> strMap >> strParameters;
    return ParseDescription("m=" + strMedia + " 0 RTP/AVP 96\r\na=rtpmap:96 " + strMap + "\r\na=fmtp:96 " +
                            strParameters + "\r\n")
        ->atMedia.at(0);
}

// A source of packets, and what its track makes of them. Its sequence numbers and time stamps wrap soon.
struct CSource : IFrameSink
{
    explicit CSource(tagMediaDescription const& tDescription, std::chrono::milliseconds tWait = 0ms)
        : tTrack(tDescription, tWait), dRate(tDescription.dwClockRate / 1e6)
    {
    }
    void OnFrame(CTrack&, tagTrackFrame& tFrame) override
    {
        EXPECT_EQ(tFrame.tFrame.pData, tFrame.abyData.data());
        atFrames.push_back(std::move(tFrame));
    }
    Octets Packet(Bytes abyPayload, bool bMarker)
    {
        Octets abyPacket{static_cast<unsigned char>(abyExtension.empty() ? 0x80 : 0x90),
                         static_cast<unsigned char>(bMarker ? 0xE0 : 0x60)};
        Put(abyPacket, wSequence++, 2);
        Put(abyPacket, dwStamp, 4);
        Put(abyPacket, dwSource, 4);
        Put(abyPacket, abyExtension);
        Put(abyPacket, abyPayload);
        return abyPacket;
    }
    void Take(Bytes abyPacket) { tTrack.TakeRtp(abyPacket, tNow, *this); }
    void SendReport(std::uint64_t ullNtp, std::uint32_t dwAt)
    {
        Octets abyReport = Hex("80C8000600000007");
        Put(abyReport, ullNtp, 8);
        Put(abyReport, dwAt, 4);
        Put(abyReport, 0, 8);
        tTrack.TakeRtcp(abyReport, tNow);
    }
    void Wait(std::chrono::milliseconds tTime)
    {
        tNow += tTime;
        tTrack.OnDeadline(tNow, *this);
    }
    tagTrackFrame const& Frame(std::uint32_t dwStep)
    {
        dwStamp += dwStep;
        Take(Packet(Hex("419A"), true));
        Wait(10ms);
        return atFrames.back();
    }

    CTrack tTrack;
    double dRate; ///< time stamps a microsecond
    std::vector<tagTrackFrame> atFrames;
    Clock::time_point tNow{1000s};
    std::uint16_t wSequence = 65534;
    std::uint32_t dwStamp = 0xFFFFF000;
    std::uint32_t dwSource = 7;
    Octets abyExtension; ///< with its header
};

// Units in letters: s t v parameter sets (S another sequence set of the same number), k first slice of a key picture, K
// another of its slices, p P of another picture, r a message that decoding can start here, i another message, d a
// delimiter, b and c parts of a slice in three. n: bytes of a unit's header.
struct tagUnits
{
    int n;
    std::vector<std::pair<char, Octets>> atUnits;
    Octets const& operator[](char c) const
    {
        return std::find_if(atUnits.begin(), atUnits.end(), [=](auto const& t) { return t.first == c; })->second;
    }
};
tagUnits Units(int nHeader, std::string const& strUnits)
{
    tagUnits tUnits{nHeader, {}};
    std::istringstream tWords(strUnits);
    for (std::string strWord; tWords >> strWord;)
    {
        tUnits.atUnits.emplace_back(strWord[0], Hex(std::string_view(strWord).substr(1)));
    }
    return tUnits;
}
const tagUnits g_tH264 = Units(1, "s6742000AF841A2 S6742000BF841A2 t68CE3880 k65888011 K65448011 p419A2222 P414A2222 "
                                  "r060401000601C480 i0605010680 d0910 b429A2222 c439A2222");
const tagUnits g_tH265 = Units(2, "v40010C01 s420101016000000300000300000300000300001EA08845 t4401C172 k2601AF11 "
                                  "K26012F11 p0201D022 P02015022 i4E010580 d460110");

// The payload that a word stands for: a unit, [stk] several in one packet, <k = > first, middle and last fragment of
// one, xk behind start codes in one packet, y the interleaved mode.
Octets Payload(tagUnits const& tUnits, std::string const& strWord, char& cFragment)
{
    const bool bShort = tUnits.n == 1;
    const char c = strWord[0];
    Octets abyPayload;
    if (c == '<' || c == '=' || c == '>')
    {
        cFragment = c == '<' ? strWord[1] : cFragment;
        const Bytes abyUnit = tUnits[cFragment];
        const unsigned uType = bShort ? abyUnit[0] & 31U : abyUnit[0] >> 1U & 63U;
        abyPayload = bShort ? Octets{static_cast<unsigned char>((abyUnit[0] & 0xE0) | 28)} : Hex("6201");
        Put(abyPayload, (c == '<' ? 128U : c == '>' ? 64U : 0U) | uType, 1);
        Put(abyPayload, c == '<' ? abyUnit.subspan(static_cast<std::size_t>(tUnits.n)) : Hex("55"));
        return abyPayload;
    }
    if (c != '[' && c != 'x')
    {
        return c == 'y' ? Hex("790000") : tUnits[c];
    }
    abyPayload = c == 'x' ? Octets() : Hex(bShort ? "78" : "6001");
    for (const char cUnit : strWord.substr(1, strWord.find(']') - 1))
    {
        Put(abyPayload, c == '[' ? tUnits[cUnit].size() : 1, c == '[' ? 2 : 4);
        Put(abyPayload, tUnits[cUnit]);
    }
    return abyPayload;
}

// A frame as text: K or P, ! when it is damaged, losses before it, and its units in letters (= is a fragment's rest),
// or its bytes and time stamp.
std::string Text(CSource const& tSource, tagTrackFrame const& tFrame, tagUnits const* ptUnits)
{
    std::string strText(tFrame.tFrame.dwFlags & eFrameKey ? " K" : " P");
    strText += tFrame.tFrame.dwFlags & eFrameDamaged ? "!" : "";
    strText += tFrame.tFrame.dwLostBefore ? std::to_string(tFrame.tFrame.dwLostBefore) : "";
    std::string strHex = ToHex(tFrame.abyData);
    if (!ptUnits)
    {
        const double dStamps = static_cast<double>(tFrame.llStampUs) * tSource.dRate - 0xFFFFF000;
        return strText + ":" + strHex + "@" + std::to_string(std::lround(dStamps));
    }
    for (strText += "("; strHex.starts_with("00000001");)
    {
        const std::string strUnit = strHex.substr(8, strHex.find("00000001", 8) - 8);
        strHex.erase(0, strUnit.size() + 8);
        for (auto const& [c, abyUnit] : ptUnits->atUnits)
        {
            const std::size_t nLength = 2 * abyUnit.size();
            strText += strUnit.starts_with(ToHex(abyUnit)) ? c + std::string((strUnit.size() - nLength) / 2, '=') : "";
        }
    }
    return strText + ")";
}

// Plays a script: packets with blanks in between, as above or in hex; a dot behind one: the marker. / next time stamp,
// - a packet is lost, | shows what came so far, w and W wait for 10 and 100 ms, R a sender report, ( ) what is between
// arrives in reverse order, * the packet before once more, # the sequence numbers begin anew, N another source, Z the
// track is reset.
std::string Play(CSource& tSource, std::string const& strScript, tagUnits const* ptUnits = nullptr)
{
    std::string strCame;
    std::size_t nShown = 0;
    std::vector<Octets> aabyHeld;
    Octets abyLast;
    bool bHold = false;
    char cFragment = 'k';
    const auto fnShow = [&]
    {
        for (; nShown < tSource.atFrames.size(); ++nShown)
        {
            strCame += Text(tSource, tSource.atFrames[nShown], ptUnits);
        }
    };
    std::istringstream tScript(strScript);
    for (std::string strWord; tScript >> strWord;)
    {
        const char c = strWord[0];
        tSource.dwStamp += c == '/' ? 3600 : 0;
        tSource.wSequence = static_cast<std::uint16_t>(tSource.wSequence + (c == '-' ? 1 : c == '#' ? 10000 : 0));
        tSource.dwSource += c == 'N';
        bHold = c == '(' || (bHold && c != ')');
        if (c == '|')
        {
            fnShow();
            strCame += " |";
        }
        else if (c == 'w' || c == 'W')
        {
            tSource.Wait(c == 'w' ? 10ms : 100ms);
        }
        else if (c == 'R')
        {
            tSource.SendReport(0xE000000000000000, tSource.dwStamp - 77);
        }
        else if (c == 'Z')
        {
            tSource.tTrack.Reset();
        }
        else if (c == '*')
        {
            tSource.Take(abyLast);
        }
        else if (std::string_view("/-#N()").find(c) == std::string_view::npos)
        {
            const bool bMarker = strWord.size() > 1 && strWord.back() == '.';
            strWord.resize(strWord.size() - bMarker);
            abyLast = tSource.Packet(ptUnits ? Payload(*ptUnits, strWord, cFragment) : Hex(strWord), bMarker);
            aabyHeld.push_back(abyLast);
        }
        for (; !bHold && !aabyHeld.empty(); aabyHeld.pop_back())
        {
            tSource.Take(aabyHeld.back());
        }
    }
    fnShow();
    return strCame;
}

// Cases, one a line: what it is about, what is sent, what comes of it, with colons in between.
std::vector<std::vector<std::string>> Cases(std::string const& strCases)
{
    std::vector<std::vector<std::string>> aastrCases;
    std::istringstream tLines(strCases);
    for (std::string strLine; std::getline(tLines, strLine);)
    {
        aastrCases.emplace_back();
        for (std::size_t n = 0; n != std::string::npos;)
        {
            n = strLine.find(" : ");
            aastrCases.back().push_back(strLine.substr(0, n));
            strLine.erase(0, n == std::string::npos ? n : n + 3);
        }
    }
    return aastrCases;
}

// The same for H.265, which has one kind of parameter sets more.
std::string ForH265(std::string const& strText)
{
    std::string strMore;
    for (std::size_t i = 0; i < strText.size(); ++i)
    {
        const bool bAlone = strText[i] == 's' && (i == 0 || strText[i - 1] == ' ');
        strMore += strText[i] != 's' ? "" : !bAlone ? "v" : strText.substr(i, 2) == "s." ? "v. " : "v ";
        strMore += strText[i];
    }
    return strMore;
}

TEST(Track, MakesFramesOfNalUnits)
{
    for (
        auto const& astrCase : Cases(
            R"(markers are learnt, then end frames : [stk]. | w | / p. | / p. | / p. | :  | K(stk) | | P(p) P(p) | P(p) |
no markers : [stk] w | / p w | / p | :  | K(stk) | P(p) |
a marker on each unit : s. t. k. K. / p. P. w / p. P. / [stk]. K. / p. | :  K(stkK) P(pP) P(pP) K(stkK) |
a marker on each unit from some time on : [stk]. / p. / p. / p. P. / p. P. / p. P. | / p :  K(stk) P(p) P(p) P(p) P!(P) P(pP) | P(pP)
a marker on each packet : [stk]. / <p. =. >. / <p. =. >. / p :  K(stk) P(p==) P(p==)
a marker on each packet from some time on : [stk]. / p. / p. / <p. =. >. / p :  K(stk) P(p) P(p) P(p==)
parameter sets with markers and times of their own : s. / t. / k. / p. / p. | :  K(stk) P(p) P(p) |
a clock that stands still : [stk]. p. p. [stk]. | :  K(stk) P(p) P(p) K(stk) |
a report inside a picture : [stk]. / p. / p. / R <k R = R >. | :  K(stk) P(p) P(p) K(stk==) |
reset : [stk]. / p. / p. / - <k Z / p. | :  K(stk) P(p) P(p) P1(p) |
parameter sets before each slice : s t k s t K / p :  K(stkK)
parameter sets behind the first slice : k s t / p :  K(stk)
parameter sets once : [stk] / p / k / p :  K(stk) P(p) K(stk)
no parameter sets : k / p / t k / p :  P(k) P(p) P(tk)
a delimiter stays first : [stk] / d i k / d p / p :  K(stk) K(dstik) P(dp)
parameter sets change : [stk] / S t k / k / p :  K(stk) K(Stk) K(Stk)
a new sequence set makes old picture sets void : [stk] / S k / p :  K(stk) P(Sk)
units behind start codes : xstk / xip / p :  K(stk) P(ip)
parameter sets in fragments : <s > t r k / p :  K(s=trk)
a recovery point : [str] p / p / p :  K(strp) P(p)
a slice in three parts : [stb] c c / p :  P(stbcc)
frames missing : [stk]. / p. / p. / - / - / p. / p. | :  K(stk) P(p) P(p) P!2(p) P(p) |
first piece missing : [stk]. / p. / p. / - = >. / p. | :  K(stk) P(p) P(p) P1(p) |
middle piece missing : [stk]. / p. / p. / <k - >. / p. | :  K(stk) P(p) P(p) K!1(stk) P(p) |
last piece missing : [stk]. / p. / p. / <k = - / p. | :  K(stk) P(p) P(p) K!(stk=) P!1(p) |
first slice missing : [stk]. / p. / p. / - P. | :  K(stk) P(p) P(p) P!1(P) |
last slice missing : [stk]. / p. / p. / p - / p. | :  K(stk) P(p) P(p) P!(p) P!1(p) |
a unit without its end : [stk]. / p. / p. / <p / p. | :  K(stk) P(p) P(p) P!(p) P(p) |
the interleaved mode : [stk]. / p. / p. / y p. | :  K(stk) P(p) P(p) P!(p) |
twice : [stk]. * / p. * / p. * / <k * = * >. * | :  K(stk) P(p) P(p) K(stk==) |
late without waiting : [stk]. / p. / p. / ( p. / p. ) / p. | :  K(stk) P(p) P(p) P!1(p) P(p) |
twice behind a gap : [stk]. / p. / p. / - / p. * / p. * W :  K(stk) P(p) P(p) P!1(p) P(p) : waits
in time : [stk]. / p. / p. / ( <k = >. / p. ) W / p. | :  K(stk) P(p) P(p) K(stk==) P(p) P(p) | : waits
a gap longer than the wait : [stk]. / p. / p. / - / p. / p. | w | W | :  K(stk) P(p) P(p) | | P!1(p) P(p) | : waits
two gaps : [stk]. / p. / p. / - / p. / - / p. W | :  K(stk) P(p) P(p) P!1(p) P!1(p) | : waits
the server restarts : [stk]. / p. / p. / # p. / p. | :  K(stk) P(p) P(p) P(p) P(p) | : waits
the server restarts in a picture : [stk]. / p. / p. / <k # # # # p. | :  K(stk) P(p) P(p) K!(stk) P(p) |
another source : [stk]. / p. / p. / p - N p. / p. | :  K(stk) P(p) P(p) P!(p) P(p) P(p) | : waits)"))
    {
        SCOPED_TRACE(astrCase[0]);
        const auto tWait = astrCase.size() > 3 ? 100ms : 0ms;
        CSource tH264(Describe("video H264/90000"), tWait);
        EXPECT_EQ(Play(tH264, astrCase[1], &g_tH264), astrCase[2]);
        if (astrCase[1].find_first_of("rbySx") == std::string::npos)
        {
            CSource tH265(Describe("video H265/90000"), tWait);
            EXPECT_EQ(Play(tH265, ForH265(astrCase[1]), &g_tH265), ForH265(astrCase[2]));
        }
    }
}

// A device that sets it behind each slice, of which only key frames have several.
TEST(Track, UnlearnsMarkersOnlyAfterALongProof)
{
    const auto fnTimes = [](int nTimes, std::string const& strWhat)
    {
        std::string strAll;
        for (int i = 0; i < nTimes; ++i)
        {
            strAll += strWhat;
        }
        return strAll;
    };
    CSource tSource(Describe("video H264/90000"));
    const std::string strGroup = "/ [stk]. K. " + fnTimes(49, "/ p. ");
    EXPECT_EQ(Play(tSource, fnTimes(20, strGroup), &g_tH264).find('!'), std::string::npos);
    EXPECT_TRUE(Play(tSource, fnTimes(260, "/ p. ") + "| / p. |", &g_tH264).ends_with(" | P(p) |"));
}

// A source that counts on from a smaller number is believed after some packets; not so late ones.
TEST(Track, BelievesARestartAfterSomePackets)
{
    CSource tSource(Describe("audio PCMU/8000"), 100ms);
    const auto fnSend = [&](std::uint16_t wFrom, int nPackets)
    {
        tSource.wSequence = wFrom;
        for (int i = 0; i < nPackets; ++i)
        {
            tSource.Take(tSource.Packet(Hex("11"), false));
        }
        return tSource.atFrames.size();
    };
    EXPECT_EQ(fnSend(1000, 100), 100U);
    EXPECT_EQ(fnSend(500, 15), 100U);
    EXPECT_EQ(fnSend(1100, 1), 101U);
    EXPECT_EQ(fnSend(515, 50), 101U + 35);
    EXPECT_EQ(tSource.tTrack.Lost(), 0U);
    EXPECT_EQ(fnSend(615, 512), 136U) << "behind a gap of 50";
    EXPECT_EQ(fnSend(1127, 1), 136U + 513) << "more of them aren't kept";
    EXPECT_EQ(tSource.tTrack.Lost(), 50U);
}

// {188} stands for a packet of a transport stream, {128} for quantization tables.
std::string Filled(std::string strText)
{
    for (auto const& [strMark, strFor] : {std::pair<std::string, std::string>{"{188}", "47" + std::string(374, '1')},
                                          {"{128}", std::string(256, '7')},
                                          {"{1500}", std::string(3000, '5')}})
    {
        for (std::size_t n = strText.find(strMark); n != std::string::npos; n = strText.find(strMark))
        {
            strText.replace(n, strMark.size(), strFor);
        }
    }
    return strText;
}

// What is described, what is sent, frames, and their type, codec, name, size or rate and channels, configuration.
TEST(Track, TakesPayloadsApart)
{
    for (auto const& astrCase : Cases(R"(audio PCMU/8000 : 0102. / 03 :  K:0102@0 K:03@3600 : 1 5 pcm_mulaw 8000/1
audio PCMA/8000 : 0102 - / 03 :  K:0102@0 K1:03@3600 : 1 4 pcm_alaw 8000/1
audio G726-32/8000 : 0102 :  K:0102@0 : 1 6 g726-32 8000/1
audio AAL2-G726-40/8000 : 0102 :  K:0102@0 : 1 6 aal2-g726-40 8000/1
audio opus/48000/2 : 0102 :  K:0102@0 : 1 7 opus 48000/2
audio L16/44100/2 : 0102 :  K:0102@0 : 1 0 l16 44100/2
audio mpeg4-generic/48000 mode=AAC-hbr;sizelength=13;indexlength=3;indexdeltalength=3;config=1190 : 00100010A1A2. / 002000100008B1B2C1. / 002000080009D1E1. :  K:A1A2@0 K:B1B2@3600 K:C1@4624 K:D1@7200 K:E1@9248 : 1 3 aac 48000/2 1190
audio mpeg4-generic/24000 config=130856E598 : 002000080008A1B1. :  K:A1@0 K:B1@1024 : 1 3 aac 48000/1 130856E598
audio mpeg4-generic/48000 config=1190 : 00100020A1A2 00100020A3A4. / 00100020B1B2 - 00100020B3B4. / 00100008C1. :  K:A1A2A3A4@0 K1:C1@7200 : 1 3 aac 48000/2 1190
audio mpeg4-generic/8000 mode=AAC-lbr;config=1588;constantduration=100 : 00100508A1B1B2. :  K:A1@0 K:B1B2@100 : 1 3 aac 8000/1 1588
audio mpeg4-generic/48000 mode=generic;sizelength=8;ctsdeltalength=7;randomaccessindication=1;auxiliarydatasizelength=8;config=1190 : 001B0240614008FFA1A2B1. :  K:A1A2@0 K:B1@1024 : 1 3 aac 48000/2 1190
audio mpeg4-generic/48000 mode=generic;constantsize=2;config=1190 : A1A2B1B2. :  K:A1A2@0 K:B1B2@1024 : 1 3 aac 48000/2 1190
audio mpeg4-generic/48000 config=1190 : 00100048FFF14C80013FFCA1A2. :  K:A1A2@0 : 1 3 aac 48000/2 1190
audio mpeg4-generic/48000 config=1190 : 0010 FFFF00 00100050A1 / 00100008B1 :  K:B1@3600 : 1 3 aac 48000/2 1190
audio MP4A-LATM/48000 cpresent=0;config=400023203FC0 : 02A1A2. / 02B1 B2. / 02C1 - C4. / 01E1. :  K:A1A2@0 K:B1B2@3600 K1:E1@10800 : 1 3 aac 48000/2 1190
audio MP4A-LATM/48000 : 8000A1. / 200011901FE0150D10. / 80D88080D900. :  K:A1A2@3600 K:B1@7200 K:B2@8224 : 1 3 aac 48000/2 1190
video MP4V-ES/90000 config=000001000000012000C48D8800CD0A641ED443 : 000001B300000001B600A1 A2. / 000001B640B1. / 000001B600C1 - / D2. :  K:000001B300000001B600A1A2@0 P:000001B640B1@3600 K!:000001B600C1@7200 : 0 9 mpeg4 332x246 000001000000012000C48D8800CD0A641ED443
video VP8/90000 : A1 A2. / B1 - B2. / C1 / D1. :  P:A1A2@0 P!1:B1B2@3600 P:C1@7200 P:D1@10800 : 0 0 vp8 0x0
video X-OWN/90000 : {1500} {1500} 99. :  P:{1500}{1500}99@0 : 0 0 x-own 0x0
application vnd.onvif.metadata/90000 : 3C61 2F3E. 3C622F3E. :  K:3C612F3E@0 K:3C622F3E@0 : 2 11 onvif-metadata 0x0
video H264/90000 sprop-parameter-sets=Z0LADdoFQh7mwEQAAAMABAAAAwDIPFCqgA==,aM4PyA== : 419A. :  P:00000001419A@0 : 0 1 h264 332x246
video H264/90000 sprop-parameter-sets=Z01AFfQKiHusBEAAAAMAQAAADIfFCqg=,aN4PyA== : 419A. :  P:00000001419A@0 : 0 1 h264 332x252
video H265/90000 sprop-vps=QAEMAf//AWAAAAMAkAAAAwAAAwA8lZQJ;sprop-sps=QgEBAWAAAAMAkAAAAwAAAwA8oAqIBAdzZZWVKTC8BaAgAAADACAAAAMDIQ==;sprop-pps=RAHAc8EJ;sprop-max-don-diff=1 : 02010001D022. / 6001000200040201D02205000402015022. / 6201810003D033 62010144 62014155. :  P:000000010201D022@0 P:000000010201D0220000000102015022@3600 P:000000010201D0334455@7200 : 0 2 hevc 332x246
video MP2T/90000 : {188}. / FFFF{188}{188}77 / 00 :  K:{188}@0 K!:{188}{188}@3600 : 0 10 mpegts 0x0)"))
    {
        SCOPED_TRACE(astrCase[0]);
        CSource tSource(Describe(astrCase[0]));
        EXPECT_EQ(Play(tSource, Filled(astrCase[1]) + " w"), Filled(astrCase[2]));
        tagStreamMediaFrame const& t = tSource.atFrames.back().tFrame;
        const bool bAudio = t.dwMediaType == eMediaAudio;
        std::ostringstream tFormat;
        tFormat << t.dwMediaType << ' ' << t.dwCodec << ' ' << t.szCodecName << ' '
                << (bAudio ? t.dwSampleRate : t.dwWidth) << (bAudio ? '/' : 'x') << (bAudio ? t.dwChannels : t.dwHeight)
                << (t.dwConfigLength ? " " : "") << ToHex({t.pConfig, t.dwConfigLength});
        EXPECT_EQ(tFormat.str(), astrCase[3]);
    }
}

// The segments of a JPEG: marker, length and first bytes; then its data.
std::string Segments(Octets const& abyJpeg)
{
    std::string strAll = ToHex(Bytes(abyJpeg).first(2));
    std::size_t nAt = 2;
    for (int nMarker = 0; nMarker != 0xDA && nAt + 4 < abyJpeg.size();)
    {
        nMarker = abyJpeg[nAt + 1];
        const std::size_t nLength = abyJpeg[nAt + 2] * 256U + abyJpeg[nAt + 3];
        strAll += " " + ToHex(Bytes(abyJpeg).subspan(nAt + 1, 1)) + ":" + std::to_string(nLength) + ":" +
                  ToHex(Bytes(abyJpeg).subspan(nAt + 4, nMarker == 0xC0 ? 8 : std::min<std::size_t>(nLength - 2, 3)));
        nAt += 2 + nLength;
    }
    return strAll + " " + ToHex(Bytes(abyJpeg).subspan(nAt));
}

// The last frame counts. HUFFMAN stands for the standard's tables and the beginning of the data.
TEST(Track, MakesWholeJpegs)
{
    for (
        auto astrCase : Cases(
            R"(standard tables : 0000000001320A08A1A2. : FFD8 DB:67:00100B DB:67:011112 C0:17:0800400050030122 HUFFMAN A1A2FFD9
twice as coarse, its own end : 0000000000190A08A1 0000000100190A08FFD9. : FFD8 DB:67:002016 DB:67:012224 C0:17:0800400050030121 HUFFMAN A1FFD9
restart markers : 0000000041630A080007C000A1. : FFD8 DB:67:000101 DB:67:010101 C0:17:0800400050030122 HUFFMAN A1FFD9
tables that are kept : 0000000001C80A0800000080{128}A1. / 0000000001C80A0800000000B1. : FFD8 DB:67:007777 DB:67:017777 C0:17:0800400050030122 HUFFMAN B1FFD9
a wide table for both : 0000000001FF0A0800010080{128}A1. : FFD8 DB:131:107777 DB:131:117777 C0:17:0800400050030122 HUFFMAN A1FFD9
tables that never came : 0000000001320A08A1. / 0000000001FF0A0800000000B1. : FFD8 DB:67:00100B DB:67:011112 C0:17:0800400050030122 HUFFMAN A1FFD9
the description's size : 0000000001320000A1. : FFD8 DB:67:00100B DB:67:011112 C0:17:0808700F00030122 HUFFMAN A1FFD9
a piece missing : 0000000001320A08A1 0000000101320A08A2 - 0000000501320A08A5. : FFD8 DB:67:00100B DB:67:011112 C0:17:0800400050030122 HUFFMAN A1A2FFD9
segments beside it : 0000000001320A08A1. : FFD8 E1:3:41 C0:11:080BB80FA0010111 DB:5:005566 HUFFMAN A1FFD9 : FFD80007FFE1000341FFC0000B080BB80FA001011100FFDB0005005566FFFFFF)"))
    {
        SCOPED_TRACE(astrCase[0]);
        tagMediaDescription tDescription = Describe("video JPEG/90000");
        tDescription.nWidth = 3840;
        tDescription.nHeight = 2160;
        CSource tSource(tDescription);
        tSource.abyExtension = Hex(astrCase.size() > 3 ? astrCase[3] : "");
        Play(tSource, Filled(astrCase[1]) + " w");
        const std::string strRestart = astrCase[0] == "restart markers" ? " DD:4:0007" : "";
        const std::string strHuffman =
            "C4:31:000001 C4:181:100002 C4:31:010003 C4:181:110002" + strRestart + " DA:12:030100";
        astrCase[2].replace(astrCase[2].find("HUFFMAN"), 7, strHuffman);
        EXPECT_EQ(Segments(tSource.atFrames.back().abyData), astrCase[2]);
        EXPECT_EQ((tSource.atFrames.back().tFrame.dwFlags & eFrameDamaged) != 0, astrCase[0] == "a piece missing");
    }
}

TEST(Track, KnowsTheTimeOfItsDevice)
{
    CSource tSource(Describe("video H264/90000"));
    constexpr std::uint64_t ullNtp = 0xE000000080000000; // a half second
    constexpr std::int64_t llNtpUs = (std::int64_t{0xE0000000} - 2208988800) * 1000000 + 500000;
    tSource.SendReport(ullNtp, tSource.dwStamp + 90000); // before any packet
    EXPECT_EQ(tSource.Frame(0).tFrame.llWallClockUs, llNtpUs - 1000000);
    const std::int64_t llFirstUs = tSource.atFrames.back().llStampUs;
    for (int i = 1; i <= 3000; ++i) // over the wrap, without a drift of rounding
    {
        ASSERT_EQ(tSource.Frame(3003).llStampUs, (std::int64_t{0xFFFFF000} + 3003 * i) * 1000000 / 90000);
    }
    EXPECT_EQ(tSource.Frame(0U - 3003 * 3001).llStampUs, (std::int64_t{0xFFFFF000} - 3003) * 1000000 / 90000);
    tSource.SendReport(ullNtp, tSource.dwStamp + 9000); // it was set; time stamps stay what they are
    EXPECT_EQ(tSource.Frame(3003).tFrame.llWallClockUs, llNtpUs - 100000 + 33366);
    EXPECT_EQ(tSource.atFrames.back().llStampUs, llFirstUs);
    tSource.SendReport(0, 0); // it doesn't know the time any more
    EXPECT_EQ(tSource.Frame(3003).tFrame.llWallClockUs, 0);

    // Replayed: the time of recording, and what the recording has around it.
    tSource.abyExtension = Hex("ABAC0003E000000080000000A0000000");
    EXPECT_EQ(tSource.Frame(3003).llRecordedUs, llNtpUs);
    EXPECT_EQ(tSource.atFrames.back().tFrame.llWallClockUs, llNtpUs);
    EXPECT_TRUE(tSource.atFrames.back().bReplayGap && !tSource.atFrames.back().bReplayEnd);
    tSource.abyExtension = Hex("ABAC0003E00000008000000040000000");
    EXPECT_TRUE(tSource.Frame(3003).bReplayEnd && !tSource.atFrames.back().bReplayGap);
}

TEST(Track, ReportsWhatItReceived)
{
    CSource tSource(Describe("video H264/90000"));
    EXPECT_EQ(tSource.tTrack.Report(tSource.tNow), "");
    const auto fnReport = [&]
    {
        const std::string strReport = tSource.tTrack.Report(tSource.tNow);
        return ToHex(Bytes(reinterpret_cast<unsigned char const*>(strReport.data()), strReport.size()).subspan(8, 24));
    };
    tSource.SendReport(0x1122334455667788, 0);
    for (int i = 0; i < 100; ++i) // 10 of 110 lost; each second one comes 8 ms late: a jitter of nearly 720
    {
        tSource.tNow += i % 2 ? 38ms : 22ms;
        tSource.wSequence = static_cast<std::uint16_t>(tSource.wSequence + (i % 10 == 9 ? 1 : 0));
        tSource.Frame(3600);
    }
    // Source, fraction lost, lost, highest number with its cycles, jitter, middle of the sender report's time, delay.
    EXPECT_EQ(fnReport(), "000000071700000A0001006B000002CE3344556600040000");
    tSource.wSequence = static_cast<std::uint16_t>(tSource.wSequence + 1);
    tSource.Frame(3600);
    EXPECT_EQ(fnReport().substr(8, 8), "8000000B") << "half of them since, 11 in all";

    EXPECT_FALSE(tSource.tTrack.HasEnded());
    tSource.tTrack.TakeRtcp(Hex("81CB000100000008"), tSource.tNow);
    EXPECT_FALSE(tSource.tTrack.HasEnded()) << "somebody else's";
    tSource.tTrack.TakeRtcp(Hex("81CB000100000007"), tSource.tNow);
    EXPECT_TRUE(tSource.tTrack.HasEnded());
    ++tSource.dwSource;
    tSource.Frame(3600);
    EXPECT_FALSE(tSource.tTrack.HasEnded());
    EXPECT_EQ(tSource.tTrack.Identity(), "video/h264");
    EXPECT_EQ(CTrack(Describe("video H264/90000"), 0ms, 1).Identity(), "video/h264/2");
}

// What no server does on demand: time stamps that jump, begin again, or come from another session. In milliseconds.
TEST(Timeline, GoesOnWhateverTheDevicesClockDoes)
{
    struct
    {
        char const* szTrack;
        std::int64_t llStamp, llArrived, llTime;
        bool bDiscontinuity;
        std::int64_t llJump; // 0: none
        bool bRestart = false;
    } const atSteps[] = {
        {"v", 5000, 100000, 0, false, 0},  // starts at 0
        {"a", 5010, 100020, 10, false, 0}, // tracks share their zero
        {"v", 5080, 100040, 80, false, 0}, // pictures in decoding order
        {"v", 5040, 100080, 40, false, 0},
        {"v", 8000, 100120, 3000, false, 0}, // held up by the network
        {"v", 8040, 103080, 3040, false, 0},
        {"v", 100000, 103120, 3080, true, 91920}, // the clock was set
        {"v", 100040, 103160, 3120, false, 0},
        {"v", 0, 103200, 3160, true, -100080},       // time stamps began again
        {"a", 8170, 103200, 3170, false, 0},         // the other track went on
        {"a", 700010, 113200, 13170, true, 0, true}, // a new session, ten seconds later, in another order
        {"v", 700020, 113210, 13180, true, 0},
    };
    CTimeline tTimeline;
    for (auto const& tStep : atSteps)
    {
        SCOPED_TRACE(tStep.llStamp);
        if (tStep.bRestart)
        {
            tTimeline.Restart();
        }
        const auto tMapped = tTimeline.Map(tStep.szTrack, tStep.llStamp * 1000, tStep.llArrived * 1000);
        EXPECT_EQ(tMapped.llTimeUs, tStep.llTime * 1000);
        EXPECT_EQ(tMapped.bDiscontinuity, tStep.bDiscontinuity);
        EXPECT_EQ(tMapped.llJumpUs.value_or(0), tStep.llJump * 1000);
    }
}

TEST(Timeline, NoticesManySmallJumps)
{
    struct
    {
        char const* szWhat;
        std::vector<std::array<std::int64_t, 3>> allRuns; // frames, step of each, time between them; milliseconds
        bool bJumps;
        CTimeline::ePace ePace = CTimeline::ePace::Live;
    } const atCases[] = {
        {"in time", {{90000, 40, 40}}, false},
        {"each 2.9 s ahead", {{100, 40, 40}, {20, 2900, 40}}, true},
        {"each 2.9 s ahead from the beginning", {{20, 2900, 40}}, true},
        {"each 0.9 s back", {{100, 40, 40}, {20, -900, 40}}, true},
        {"twice as fast", {{1000, 80, 40}}, true},
        {"twice as fast, played so", {{9000, 80, 40}}, false, CTimeline::ePace::Played},
        {"key frames only, played", {{900, 4000, 40}}, false, CTimeline::ePace::Played},
        {"a clock that is 100 ppm fast for a day", {{86400, 1000100, 1000000}}, false},
        {"a clock that is 100 ppm slow for a day, then held up",
         {{86400, 999900, 1000000}, {1, 1000000, 3000000}, {3, 1000000, 0}},
         false},
        {"pictures since the last key frame at once", {{250, 40, 0}, {900, 40, 40}}, false},
        {"a stall, then all of it at once", {{900, 40, 40}, {1, 40, 20000}, {499, 40, 0}, {900, 40, 40}}, false},
        {"a stall for good", {{900, 40, 40}, {1, 40, 20000}, {900, 40, 40}}, false},
        {"a burst for no reason", {{900, 40, 40}, {100, 40, 0}}, true},
    };
    for (auto const& tCase : atCases)
    {
        SCOPED_TRACE(tCase.szWhat);
        CTimeline tTimeline;
        tTimeline.Restart(tCase.ePace);
        std::int64_t llStampUs = 0;
        std::int64_t llNowUs = 0;
        std::int64_t llHighestUs = 0;
        bool bJumps = false;
        for (auto const& [llFrames, llStep, llTime] : tCase.allRuns)
        {
            const std::int64_t llUnit = llStep > 900000 ? 1 : 1000; // very exact ones are in microseconds
            for (std::int64_t i = 0; i < llFrames; ++i)
            {
                llStampUs += llStep * llUnit;
                llNowUs += llTime * llUnit;
                const auto tMapped = tTimeline.Map("video", llStampUs, llNowUs);
                bJumps |= tMapped.llJumpUs.has_value();
                EXPECT_GE(tMapped.llTimeUs, llHighestUs - (llStep < 0 ? 1000000 : 0));
                llHighestUs = std::max(llHighestUs, tMapped.llTimeUs);
            }
        }
        EXPECT_EQ(bJumps, tCase.bJumps);
        EXPECT_TRUE(tCase.ePace == CTimeline::ePace::Played || llHighestUs < llNowUs + 14'000'000 + llNowUs / 1000);
    }
}

TEST(WallClock, IsToldWhenItIsRightAndWhenItWasSet)
{
    struct
    {
        std::int64_t llWall, llStamp, llTime;
        bool bStampsJumped;
        std::int64_t llTold, llJump;
    } const atSteps[] = {
        {0, 10, 0, false, 0, 0}, // no sender report yet
        {500010, 10, 0, false, 500010, 0},
        {500050, 50, 40, false, 500050, 0},
        {500590, 90, 80, false, 500590, 0},           // corrected by half a second
        {4100130, 130, 120, false, 4100130, 3599500}, // set by an hour
        {4100170, 170, 160, false, 4100170, 0},
        {4190000, 90000, 200, true, 0, 0}, // reckoned from a time stamp that jumped
        {4190040, 90040, 240, false, 0, 0},
        {4100290, 90080, 280, false, 4100290, 0}, // a new report
    };
    CWallClock tClock;
    for (auto const& tStep : atSteps)
    {
        SCOPED_TRACE(tStep.llWall);
        const auto tChecked =
            tClock.Check(tStep.llWall * 1000, tStep.llStamp * 1000, tStep.llTime * 1000, tStep.bStampsJumped);
        EXPECT_EQ(tChecked.llWallUs, tStep.llTold * 1000);
        EXPECT_EQ(tChecked.llJumpUs.value_or(0), tStep.llJump * 1000);
    }
}
} // namespace
