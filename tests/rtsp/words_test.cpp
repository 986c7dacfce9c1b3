// What devices and servers say, where an end-to-end test would not notice that it was misunderstood.

#include "rtsp/Address.h"
#include "rtsp/Authentication.h"
#include "rtsp/Description.h"
#include "rtsp/Headers.h"
#include "rtsp/Message.h"
#include "rtsp/Rtcp.h"
#include "rtsp/Rtp.h"

#include <gtest/gtest.h>

using namespace rtsp;
using namespace std::literals;

namespace
{
std::string Text(Bytes abyData)
{
    return {reinterpret_cast<char const*>(abyData.data()), abyData.size()};
}
Bytes AsBytes(std::string_view strText)
{
    return {reinterpret_cast<unsigned char const*>(strText.data()), strText.size()};
}

/// What a reader found, in short: "200:body GET_PARAMETER 0=payload junk9 ".
struct CEvents final : IMessageSink
{
    void OnMessage(tagMessage&& tMessage) override
    {
        Flush() += tMessage.strMethod.empty() ? std::to_string(tMessage.nStatus) : tMessage.strMethod;
        strAll +=
            std::string(tMessage.Header("CSEQ")) + (tMessage.strBody.empty() ? " " : ":" + tMessage.strBody + ' ');
    }
    void OnInterleaved(unsigned nChannel, Bytes abyPacket) override
    {
        Flush() += std::to_string(nChannel) + '=' + Text(abyPacket).erase(0, 8) + ' ';
    }
    void OnJunk(std::size_t nBytes) override { nJunk += nBytes; }
    std::string& Flush() { return strAll += nJunk > 0 ? "junk" + std::to_string(std::exchange(nJunk, 0)) + ' ' : ""; }

    std::string strAll;
    std::size_t nJunk = 0;
};

std::string Events(std::string_view strStream, std::size_t nFirst, std::size_t nEach)
{
    CMessageReader tReader;
    CEvents tEvents;
    bool bGood = tReader.Take(AsBytes(strStream.substr(0, nFirst)), tEvents);
    for (std::size_t n = nFirst; n < strStream.size() && bGood; n += nEach)
    {
        bGood = tReader.Take(AsBytes(strStream.substr(n, nEach)), tEvents);
    }
    return tEvents.Flush() + (bGood ? "" : "closed");
}

TEST(Words, EverySplitOfAStreamGivesTheSame)
{
    const std::string strOk = "RTSP/1.0 200 OK\r\nCSeq: 7\r\n\r\n";
    const std::string a = "$\0\0\11\2001234567a"s, b = "$\1\0\11\2001234567b"s, c = "$\0\0\11\2001234567c"s;
    const auto fnCut = [&](std::size_t n) { return strOk.substr(0, n); };
    // clang-format off
    for (const auto& [strWhat, strStream, strEvents] : std::initializer_list<std::array<std::string, 3>>{
        {"packets, blank lines, a request", strOk + a + "\r\n" + "SET_PARAMETER * RTSP/1.0\ncseq:1\n\n" + b + strOk + "$\0\0\0"s + c, "2007 0=a SET_PARAMETER1 1=b 2007 0= 0=c "},
        {"a body with what begins packets; folded and doubled headers; no reason", "RTSP/1.0 200\r\nCSeq:\r\n 7\r\nContent-Length: 6\r\ncontent-length: 9\r\n\r\n$a$\0\0$"s + a, "2007:$a$\0\0$ 0=a "s},
        {"a packet that lost its end", a + b.substr(0, 9) + a + b + c + strOk, "0=a 1=\t junk9 1=b 0=c 2007 "},
        {"junk, a packet, a message", "x" + a + strOk, "junk1 0=a 2007 "},
        {"junk, then packets", "HTTP/1.1 400 No $5\r\n\r\n" + a + b + c, "junk22 0=a 1=b 0=c "},
        {"junk with what looks like packets", "x$\0\0\10\x80zzzzzzzy$\0\x7f\xff\x80y"s + strOk + a, "junk20 2007 0=a "},
        {"a message cut off in its head, then a packet", fnCut(20) + a + b + strOk, "junk20 0=a 1=b 2007 "},
        {"a message cut off in its head, then a message", fnCut(20) + strOk, "junk20 2007 "},
        {"a message cut off in its head, then a request", fnCut(17) + "PLAY * RTSP/1.0\n\n", "junk17 PLAY "},
        {"a head with what is none of it", "RTSP/1.0 200 OK\r\nA: $9\1" + strOk, "junk23 2007 "},
        {"a body that is too short", fnCut(17) + "Content-Length: 99\r\n\r\nab" + strOk, "200:ab 2007 "},
        {"a body that nobody announced", strOk + "v=0\r\ns=x\r\n" + strOk + a, "2007 junk10 2007 0=a "},
        {"a body length that is none", fnCut(17) + "Content-Length: -1\r\n\r\n" + strOk, "200 2007 "},
        {"a body without end", fnCut(17) + "Content-Length: 18446744073709551617\r\n\r\n" + strOk, "closed"},
        {"a head without end", fnCut(17) + "A: " + std::string(CMessageReader::nLongestHead, 'a'), "closed"}})
    // clang-format on
    {
        SCOPED_TRACE(strWhat);
        EXPECT_EQ(Events(strStream, 0, strStream.size() > 1000 ? 999 : 1), strEvents);
        for (std::size_t n = 0; n < std::min<std::size_t>(strStream.size(), 1000); ++n)
        {
            ASSERT_EQ(Events(strStream, n, 1000000), strEvents) << "split at " << n;
        }
    }
    // And what we send has the lines that we meant.
    const tagMessage tRequest{0, "", "PLAY", "rtsp://c/", {{"Session", "1\r\nX: y\n\nDESCRIBE"}}, ""};
    EXPECT_EQ(Serialize(tRequest), "PLAY rtsp://c/ RTSP/1.0\r\nSession: 1  X: y  DESCRIBE\r\n\r\n");
}

TEST(Words, DigestsAreThoseOfTheStandards)
{
    const std::string strMufasa =
        R"(Digest realm="http-auth@example.org", nonce="7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v", )";
    const std::string strDoe = R"(realm="api@example.org", nonce="5TsQWLVdgBdmrQ0XsxbDODV+57QdFR34I9HAbC/RVvkK")";
    const std::string strClient = "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ",
                      strOther = "NTg6RKcb9boFIAS3KrFK9BGeh+iDa/sm6jUMp2wds69v";
    // Challenge, user, password, address, nonce of the client; what is in the answer. The last one as the erratum of
    // RFC 7616 has it.
    // clang-format off
    for (const auto& [strChallenge, strUser, strPassword, strUri, strNonce, strWords] : std::initializer_list<std::array<std::string, 6>>{
        {strMufasa + R"(qop="auth, auth-int")", "Mufasa", "Circle of Life", "/dir/index.html", strClient, "8ca523f5e9506fed4657c9700eebdbec"},
        {strMufasa + "algorithm=SHA-256,qop=auth", "Mufasa", "Circle of Life", "/dir/index.html", strClient, "753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1"},
        {strMufasa + "qop=auth,algorithm=SHA-256-SESS", "Mufasa", "Circle of Life", "/dir/index.html", strClient, "2fd51b3a77ad75bad6afad6003e818d767133c46d9e2749e7f5232ae1ea3efd7"},
        {R"(Digest realm="testrealm@host.com", nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093")", "Mufasa", "Circle Of Life", "/dir/index.html", "unused", R"(Digest username="Mufasa", realm="testrealm@host.com", nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093", uri="/dir/index.html", response="670fd8c2df070c60b045671b8b24ff02")"},
        {R"(Digest realm="a \"b\"", nonce="1")", "u", "p", "/", "", "c170eea171459cc45e1c4fbdb5819875"},
        {"Digest " + strDoe + R"(, qop=auth, algorithm=SHA-512-256, opaque="HRPC", userhash=true)", "J\xc3\xa4s\xc3\xb8n Doe", "Secret, or not?", "/doe.json", strOther,
         R"(Digest username="793263caabb707a56211940d90411ea4a575adeccb7e360aeb624ed06ece9b0b", )" + strDoe + R"(, uri="/doe.json", response="3798d4131c277846293534c3edc11bd8a5e4cdcbff78b05db9d95eeb1cec68a5", )"
         R"(algorithm=SHA-512-256, opaque="HRPC", qop=auth, nc=00000001, cnonce=")" + strOther + R"(", userhash=true)"}})
    // clang-format on
    {
        const tagChallenge tChallenge = ParseChallenges(strChallenge).at(0);
        std::string strAnswer = AnswerDigest(tChallenge, strUser, strPassword, "GET", strUri, 1, strNonce);
        strAnswer = strWords[0] == 'D' ? strAnswer : strAnswer.substr(strAnswer.find(strWords), strWords.size());
        EXPECT_EQ(strAnswer, strWords);
    }
}

TEST(Words, TheStrongestKnownChallengeIsAnsweredAndARefusalEndsIt)
{
    const std::string strMd5 = R"(Digest realm="a, \"b\"", nonce="1", algorithm=MD5, qop="auth")";
    const std::string strStale = R"(Digest nonce="5", stale=true)", strFour = R"(Digest nonce="4", Basic realm="x")";
    // User; challenge, what is in the answer (null: there is none), and how many requests come until the next one. A
    // nonce that was good before has run out, whether the server says so or not; one that is always stale hasn't.
    using Steps = std::vector<std::tuple<std::string, char const*, int>>;
    // clang-format off
    for (auto const& [szUser, atSteps] : std::initializer_list<std::pair<char const*, Steps>>{
        {"admin", {{R"(Basic realm="x, Digest", )" + strMd5 + R"(, Digest realm=r, nonce=2, algorithm=SHA-256)", "SHA-256", 1}}},
        {"admin", {{strMd5 + R"(, Digest realm="r", nonce="2", algorithm=SHA-999, Digest nonce=3, algorithm=SHA-256, qop=auth-int)", R"(a, \"b\")", 1}}},
        {"ad\"min", {{strMd5, R"(username="ad\"min")", 1}, {strMd5, nullptr, 1}, {strMd5, "nc=00000001", 1}}},
        {"admin", {{strMd5, "nonce=\"1\"", 1}, {R"(Digest nonce="2", stale=TRUE)", "nonce=\"2\"", 1}, {R"(Digest nonce="3")", nullptr, 1}}},
        {"admin", {{"Negotiate YII=, Basic realm=\"x\"", "Basic YWRtaW46c2VjcmV0", 1}, {"Basic realm=\"x\"", nullptr, 1}}},
        {"ad:min", {{"Basic realm=\"x\"", nullptr, 1}, {strMd5, "ad:min", 1}}},
        {"", {{strMd5, nullptr, 1}}},
        {"admin", {{strMd5, "nc=00000002", 2}, {R"(Digest nonce="4")", "\"4\"", 2}, {strFour, nullptr, 1}, {strFour, "\"4\"", 1},
                   {strStale, "\"5\"", 1}, {strStale, "\"5\"", 1}, {strStale, "\"5\"", 1}, {strStale, nullptr, 1}}}})
    // clang-format on
    {
        CAuthenticator tAuthenticator(szUser, "secret");
        for (auto const& [strChallenge, szAnswer, nRequests] : atSteps)
        {
            EXPECT_EQ(tAuthenticator.TakeChallenges({strChallenge}), szAnswer != nullptr) << strChallenge;
            std::string strAnswer;
            for (int i = 0; i < nRequests; ++i)
            {
                strAnswer = tAuthenticator.Authorization("PLAY", "rtsp://c/");
            }
            EXPECT_NE(strAnswer.find(szAnswer ? szAnswer : ""), std::string::npos) << strAnswer;
            EXPECT_EQ(strAnswer.empty(), szAnswer == nullptr);
        }
    }
}

TEST(Words, AddressesAndControls)
{
    // clang-format off
    for (auto const& [szUrl, szText] : std::initializer_list<std::pair<char const*, char const*>>{
        {"RTSP://Cam.example:554/Live?a=b@c", "rtsp://cam.example/Live?a=b@c"},
        {"rtsps://[FE80::1%25eth0]:8322?x", "rtsps://[fe80::1]:8322/?x"}, {"rtsps://cam:322", "rtsps://cam"}})
    {
        EXPECT_EQ(ParseUrl(szUrl).value().Text(), szText);
    }
    for (char const* const szUrl : {"rtsp://u@cam/", "rtsp://cam:0/", "rtsp://cam:65536/", "rtsp://[::1/", "rtsp:///x",
                                    "rtsp://cam/a b", "rtsp://cam/\r\nX", "rtsp://[1]/", "http://cam/", "rtsp:/cam"})
    {
        EXPECT_FALSE(ParseUrl(szUrl)) << szUrl;
    }
    EXPECT_EQ(ParseUrl("rtsp://[fe80::1%25eth0]/")->strHost, "fe80::1%eth0");
    for (auto const& [szBase, szControl, szUrl] : std::initializer_list<std::array<char const*, 3>>{
        {"rtsp://c/live", "*", "rtsp://c/live"}, {"rtsp://c/live/", "trackID=1", "rtsp://c/live/trackID=1"},
        {"rtsp://c/live", "t=1", "rtsp://c/live/t=1"}, {"rtsp://c/live/", "/trackID=1", "rtsp://c/live/trackID=1"},
        {"rtsp://c/live?ch=1", "t=1", "rtsp://c/live?ch=1/t=1"}, {"rtsp://c/live", "rtsps://d/t", "rtsps://d/t"},
        {"rtsp://c/live?ch=1", "/live/track 1", "rtsp://c/live/track%201"},
        {"rtsp://c", "track?u=rtsp://x/", "rtsp://c/track?u=rtsp://x/"}})
    // clang-format on
    {
        EXPECT_EQ(ResolveControl(szBase, szControl), szUrl);
    }
}

TEST(Words, DescriptionsOfDevices)
{
    const auto tSdp =
        ParseDescription("a=control:*\r\na=recvonly\r\nc=IN IP4 239.1.2.3/16/2\nb=x\na=range: npt=0-60 \r\n\r\n"
                         "m=video 5000/2 RTP/AVP 77 96\r"
                         "a=fmtp:96 A = 1;;sprop-parameter-sets=Z0IA==,aM4= ; flag; c=\"q\"\n"
                         "a=rtpmap:96  h264/90000\na=control:t=1\na=framesize:96 352-288\n"
                         "a=framerate:12.5 x\na=source-filter: incl IN IP4 * 10.0.0.9 10.0.0.8\0\n"
                         "m=audio 0 RTP/AVP 8\na=sendonly\nc=IN IP6 ff15::1/3\n"
                         "m=application 0 RTP/AVP 98 99\na=rtpmap:97 x/1\nm=\n"sv);
    ASSERT_TRUE(tSdp && tSdp->atMedia.size() == 4);
    EXPECT_EQ(tSdp->strRange, "npt=0-60");
    tagMediaDescription const& v = tSdp->atMedia[0];
    EXPECT_TRUE(v.strEncoding == "H264" && v.dwClockRate == 90000 && v.nPayloadType == 96 && v.wPort == 5000);
    EXPECT_TRUE(v.strAddress == "239.1.2.3" && v.nTimeToLive == 16 && v.strSource == "10.0.0.9");
    EXPECT_TRUE(v.nWidth == 352 && v.nHeight == 288 && v.dFrameRate == 12.5 && v.strControl == "t=1");
    EXPECT_TRUE(v.Parameter("a") == "1" && v.Parameter("sprop-parameter-sets") == "Z0IA==,aM4=");
    EXPECT_TRUE(v.Parameter("c") == "q" && v.Parameter("flag").empty() && v.eWay == eDirection::ReceiveOnly);
    tagMediaDescription const& a = tSdp->atMedia[1];
    EXPECT_TRUE(a.strEncoding == "PCMA" && a.nChannels == 1 && a.eWay == eDirection::SendOnly);
    EXPECT_TRUE(a.strAddress == "ff15::1" && a.nTimeToLive == 0 && a.strControl.empty());
    EXPECT_TRUE(tSdp->atMedia[2].nPayloadType == 98 && tSdp->atMedia[2].strEncoding.empty());
    EXPECT_FALSE(ParseDescription("v=0\na=control:*\n"));
}

TEST(Words, HeaderValues)
{
    const auto tTransport = ParseTransport("rtp/avp/tcp; unicast;interleaved=4 ;ssrc= 0A0B0C0D,RTP/AVP");
    ASSERT_TRUE(tTransport && tTransport->bTcp);
    EXPECT_TRUE(tTransport->tChannels == (tagPair{4, 5}) && tTransport->dwSource == 0x0a0b0c0du);
    EXPECT_FALSE(ParseTransport("RTP/AVP/TCP;interleaved=0-256")->tChannels);
    const auto atInfo = ParseRtpInfo("url=rtsp://c/a;b=1,c;seq=7;rtptime=4294967295,url=t2;rtptime=x;seq=70000");
    ASSERT_TRUE(atInfo.size() == 2 && atInfo[0].strUrl == "rtsp://c/a;b=1,c");
    EXPECT_TRUE(atInfo[0].wSequence == 7 && atInfo[0].dwStamp == 4294967295u && !atInfo[1].wSequence);
    EXPECT_EQ(ParseSession(" a-1 ; Timeout = 30s").nTimeOut, 30u);
    EXPECT_EQ(ParseRange("npt=1:02:03.25-"), (tagRange{false, false, 3723250000, {}}));
    const auto tRange = ParseRange("clock=20240229T235959.9Z-20240301T000000Z");
    ASSERT_TRUE(tRange && *tRange->llEndUs - *tRange->llBeginUs == 100000 && *tRange->llEndUs == 1709251200000000);
    EXPECT_EQ(RangeText(*tRange), "clock=20240229T235959.900Z-20240301T000000.000Z");
    EXPECT_FALSE(ParseRange("clock=20230229T000000Z-"));
}

TEST(Words, PacketsWithExtensions)
{
    // A contributing source, padding, and the replay extension with a JPEG extension inside.
    const auto tPacket =
        ParseRtp(AsBytes("\xb1\xe0\0\1\0\0\0\2\0\0\0\3CCCC\xab\xac\0\6\xbc\x17\xc2\0\x80\0\0\0\xa0\7\0\0"
                         "\xff\xd8\0\1JPEGfilldata\0\2"sv));
    ASSERT_TRUE(tPacket && tPacket->tReplay);
    EXPECT_EQ(Text(tPacket->abyPayload), "data");
    EXPECT_EQ(Text(tPacket->abyJpegSegments), "JPEG");
    EXPECT_EQ(tPacket->tReplay->llTimeUs, 946684800500000); // 2000-01-01, and a half
    EXPECT_TRUE(tPacket->tReplay->bCleanPoint && !tPacket->tReplay->bEndOfSection && tPacket->tReplay->bDiscontinuity &&
                !tPacket->tReplay->bTerminal && tPacket->tReplay->byCSeq == 7);
    EXPECT_EQ(Text(AsBytes(MakeReceiverReport({1, 2, 64, -1, 3, 4, 5, 6}))),
              "\x81\xc9\0\7\0\0\0\1\0\0\0\2\x40\xff\xff\xff\0\0\0\3\0\0\0\4\0\0\0\5\0\0\0\6"
              "\x81\xca\0\4\0\0\0\1\1\10"
              "00000001\0\0"s);
    EXPECT_EQ(NtpToUs(std::uint64_t{1} << 32), 2085978497000000); // 2036, after the wrap
}
} // namespace
