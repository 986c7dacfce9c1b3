// What devices and servers say, where an end-to-end test would not notice that it was misunderstood.

#include "rtsp/Address.h"
#include "rtsp/Authentication.h"
#include "rtsp/Description.h"
#include "rtsp/Headers.h"
#include "rtsp/Message.h"
#include "rtsp/Rtcp.h"
#include "rtsp/Rtp.h"

#include <gtest/gtest.h>

using namespace std::literals;

namespace
{
std::string Text(rtsp::Bytes abyData)
{
    return {reinterpret_cast<char const*>(abyData.data()), abyData.size()};
}
rtsp::Bytes AsBytes(std::string_view strText)
{
    return {reinterpret_cast<unsigned char const*>(strText.data()), strText.size()};
}

/// What a reader found, in short: "200:body GET_PARAMETER 0=payload junk9 ".
class CEvents final : public rtsp::IMessageSink
{
public:
    void OnMessage(rtsp::tagMessage&& tMessage) override
    {
        Flush();
        m_str += tMessage.strMethod.empty() ? std::to_string(tMessage.nStatus) : tMessage.strMethod;
        m_str += std::string(tMessage.Header("CSEQ")) + (tMessage.strBody.empty() ? " " : ":" + tMessage.strBody + ' ');
    }
    void OnInterleaved(unsigned nChannel, rtsp::Bytes abyPacket) override
    {
        Flush();
        m_str +=
            std::to_string(nChannel) + '=' + Text(abyPacket.subspan(std::min<std::size_t>(abyPacket.size(), 8))) + ' ';
    }
    void OnJunk(std::size_t nBytes) override { m_nJunk += nBytes; }
    std::string Flush()
    {
        m_str += m_nJunk > 0 ? "junk" + std::to_string(std::exchange(m_nJunk, 0)) + ' ' : "";
        return m_str;
    }

private:
    std::string m_str;
    std::size_t m_nJunk = 0;
};

std::string Packet(unsigned nChannel, std::string_view strPayload)
{
    const char acHead[] = {'$', static_cast<char>(nChannel), 0, static_cast<char>(8 + strPayload.size()), '\x80'};
    return std::string(acHead, sizeof acHead) + "1234567" + std::string(strPayload);
}

std::string Events(std::string_view strStream, std::size_t nFirst, std::size_t nEach)
{
    rtsp::CMessageReader tReader;
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
    const std::string a = Packet(0, "a"), b = Packet(1, "b"), c = Packet(0, "c");
    const struct
    {
        char const* szWhat;
        std::string strStream;
        std::string strEvents;
    } atRows[] = {
        {"packets among messages, blank lines, a request",
         strOk + a + "\r\n" + "SET_PARAMETER * RTSP/1.0\ncseq:1\n\n" + b + strOk + "$\0\0\0"s + c,
         "2007 0=a SET_PARAMETER1 1=b 2007 0= 0=c "},
        {"a body with what begins packets; folded and doubled headers; no reason",
         "RTSP/1.0 200\r\nCSeq:\r\n 7\r\nContent-Length: 6\r\ncontent-length: 9\r\n\r\n$a$\0\0$"s + a,
         "2007:$a$\0\0$ 0=a "s},
        {"a packet that lost its end", a + b.substr(0, 9) + a + b + c + strOk, "0=a 1=\t junk9 1=b 0=c 2007 "},
        {"junk, a packet, a message", "x" + a + strOk, "junk1 0=a 2007 "},
        {"junk, then packets", "HTTP/1.1 400 No $5\r\n\r\n" + a + b + c, "junk22 0=a 1=b 0=c "},
        {"junk with what looks like a packet, then a message", "x$\0\0\10\x80zzzzzzzy$\0\x7f\xff\x80y"s + strOk + a,
         "junk20 2007 0=a "},
        {"a message cut off in its head, then a packet", strOk.substr(0, 20) + a + b + strOk, "junk20 0=a 1=b 2007 "},
        {"a message cut off in its head, then a message", strOk.substr(0, 20) + strOk, "junk20 2007 "},
        {"a message cut off in its head, then a request", strOk.substr(0, 17) + "PLAY * RTSP/1.0\n\n", "junk17 PLAY "},
        {"a head with what is none of it", "RTSP/1.0 200 OK\r\nA: $9\1" + strOk, "junk23 2007 "},
        {"a body that is shorter than announced", "RTSP/1.0 200 OK\r\nContent-Length: 99\r\n\r\nab" + strOk,
         "200:ab 2007 "},
        {"a body that nobody announced", strOk + "v=0\r\ns=x\r\n" + strOk + a, "2007 junk10 2007 0=a "},
        {"a body length that is none", "RTSP/1.0 200 OK\r\nContent-Length: -1\r\n\r\n" + strOk, "200 2007 "},
        {"a body without end", "RTSP/1.0 200 OK\r\nContent-Length: 18446744073709551617\r\n\r\n" + strOk, "closed"},
        {"a head without end", "RTSP/1.0 200 OK\r\nA: " + std::string(rtsp::CMessageReader::nLongestHead, 'a'),
         "closed"},
    };
    for (auto const& tRow : atRows)
    {
        SCOPED_TRACE(tRow.szWhat);
        std::string strEvents = Events(tRow.strStream, 0, 1000000);
        EXPECT_EQ(strEvents, tRow.strEvents);
        EXPECT_EQ(Events(tRow.strStream, 0, tRow.strStream.size() > 1000 ? 999 : 1), strEvents);
        for (std::size_t n = 1; n < std::min<std::size_t>(tRow.strStream.size(), 1000); ++n)
        {
            ASSERT_EQ(Events(tRow.strStream, n, 1000000), strEvents) << "split at " << n;
        }
    }
    // And what we send has the lines that we meant.
    const rtsp::tagMessage tRequest{0, "", "PLAY", "rtsp://c/", {{"Session", "1\r\nX: y\n\nDESCRIBE"}}, ""};
    EXPECT_EQ(Serialize(tRequest), "PLAY rtsp://c/ RTSP/1.0\r\nSession: 1  X: y  DESCRIBE\r\n\r\n");
}

TEST(Words, DigestsAreThoseOfTheStandards)
{
    const auto Answer = [](std::string const& strChallenge, char const* szUser, char const* szPassword,
                           char const* szUri, char const* szClientNonce) {
        return AnswerDigest(rtsp::ParseChallenges(strChallenge).at(0), szUser, szPassword, "GET", szUri, 1,
                            szClientNonce);
    };
    const std::string strChallenge =
        R"(Digest realm="http-auth@example.org", nonce="7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v", )";
    for (auto const& [szWords, szResponse] : std::initializer_list<std::pair<char const*, char const*>>{
             {R"(qop="auth, auth-int")", "8ca523f5e9506fed4657c9700eebdbec"},
             {"algorithm=SHA-256,qop=auth", "753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1"},
             {"qop=auth,algorithm=SHA-256-SESS", "2fd51b3a77ad75bad6afad6003e818d767133c46d9e2749e7f5232ae1ea3efd7"}})
    {
        const std::string strAnswer = Answer(strChallenge + szWords, "Mufasa", "Circle of Life", "/dir/index.html",
                                             "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ");
        EXPECT_NE(strAnswer.find(szResponse), std::string::npos) << strAnswer;
    }
    EXPECT_EQ(Answer(R"(Digest realm="testrealm@host.com", nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093")", "Mufasa",
                     "Circle Of Life", "/dir/index.html", "unused"),
              R"(Digest username="Mufasa", realm="testrealm@host.com", nonce="dcd98b7102dd2f0e8b11d0f600bfb0c093", )"
              R"(uri="/dir/index.html", response="670fd8c2df070c60b045671b8b24ff02")");
    EXPECT_NE(
        Answer(R"(Digest realm="a \"b\"", nonce="1")", "u", "p", "/", "").find("c170eea171459cc45e1c4fbdb5819875"),
        std::string::npos);
    // As the erratum of RFC 7616 has it.
    EXPECT_EQ(Answer(R"(Digest realm="api@example.org", nonce="5TsQWLVdgBdmrQ0XsxbDODV+57QdFR34I9HAbC/RVvkK", )"
                     R"(qop=auth, algorithm=SHA-512-256, opaque="HRPC", userhash=true)",
                     "J\xc3\xa4s\xc3\xb8n Doe", "Secret, or not?", "/doe.json",
                     "NTg6RKcb9boFIAS3KrFK9BGeh+iDa/sm6jUMp2wds69v"),
              R"(Digest username="793263caabb707a56211940d90411ea4a575adeccb7e360aeb624ed06ece9b0b", )"
              R"(realm="api@example.org", nonce="5TsQWLVdgBdmrQ0XsxbDODV+57QdFR34I9HAbC/RVvkK", uri="/doe.json", )"
              R"(response="3798d4131c277846293534c3edc11bd8a5e4cdcbff78b05db9d95eeb1cec68a5", )"
              R"(algorithm=SHA-512-256, opaque="HRPC", qop=auth, nc=00000001, )"
              R"(cnonce="NTg6RKcb9boFIAS3KrFK9BGeh+iDa/sm6jUMp2wds69v", userhash=true)");
}

TEST(Words, TheStrongestKnownChallengeIsAnsweredAndARefusalEndsIt)
{
    const std::string strMd5 = R"(Digest realm="a, \"b\"", nonce="1", algorithm=MD5, qop="auth")";
    const struct
    {
        char const* szUser;
        std::vector<std::pair<std::string, char const*>> atSteps; // challenge, and what is in the answer; null: none
    } atRows[] = {
        {"admin",
         {{R"(Basic realm="x, Digest", )" + strMd5 + R"(, Digest realm=r, nonce=2, algorithm=SHA-256)", "SHA-256"}}},
        {"admin",
         {{strMd5 +
               R"(, Digest realm="r", nonce="2", algorithm=SHA-999, Digest nonce=3, algorithm=SHA-256, qop=auth-int)",
           R"(a, \"b\")"}}},
        {"ad\"min", {{strMd5, R"(username="ad\"min")"}, {strMd5, nullptr}, {strMd5, "nc=00000001"}}},
        {"admin",
         {{strMd5, "nonce=\"1\""},
          {R"(Digest nonce="2", stale=TRUE)", "nonce=\"2\""},
          {R"(Digest nonce="3")", nullptr}}},
        {"admin", {{"Negotiate YII=, Basic realm=\"x\"", "Basic YWRtaW46c2VjcmV0"}, {"Basic realm=\"x\"", nullptr}}},
        {"ad:min", {{"Basic realm=\"x\"", nullptr}, {strMd5, "ad:min"}}},
        {"", {{strMd5, nullptr}}},
    };
    for (auto const& tRow : atRows)
    {
        rtsp::CAuthenticator tAuthenticator(tRow.szUser, "secret");
        for (auto const& [strChallenge, szAnswer] : tRow.atSteps)
        {
            EXPECT_EQ(tAuthenticator.TakeChallenges({strChallenge}), szAnswer != nullptr) << strChallenge;
            const std::string strAnswer = tAuthenticator.Authorization("PLAY", "rtsp://c/");
            EXPECT_NE(strAnswer.find(szAnswer ? szAnswer : ""), std::string::npos) << strAnswer;
            EXPECT_EQ(strAnswer.empty(), szAnswer == nullptr);
        }
    }
    // A nonce that was good before has run out, whether the server says so or not; one that is always stale hasn't.
    rtsp::CAuthenticator tAuthenticator("admin", "secret");
    ASSERT_TRUE(tAuthenticator.TakeChallenges({strMd5}));
    tAuthenticator.Authorization("DESCRIBE", "rtsp://c/");
    EXPECT_NE(tAuthenticator.Authorization("SETUP", "rtsp://c/").find("nc=00000002"), std::string::npos);
    EXPECT_TRUE(tAuthenticator.TakeChallenges({R"(Digest nonce="4")"}));
    tAuthenticator.Authorization("SETUP", "rtsp://c/");
    tAuthenticator.Authorization("PLAY", "rtsp://c/");
    EXPECT_FALSE(tAuthenticator.TakeChallenges({R"(Digest nonce="4")", "Basic realm=\"x\""}));
    EXPECT_TRUE(tAuthenticator.TakeChallenges({R"(Digest nonce="4")"}));
    int nTries = 0;
    do
    {
        tAuthenticator.Authorization("PLAY", "rtsp://c/");
    } while (tAuthenticator.TakeChallenges({R"(Digest nonce="5", stale=true)"}) && ++nTries < 10);
    EXPECT_EQ(nTries, 3);
}

TEST(Words, AddressesAndControls)
{
    for (auto const& [szUrl, szText] : std::initializer_list<std::pair<char const*, char const*>>{
             {"RTSP://Cam.example:554/Live?a=b@c", "rtsp://cam.example/Live?a=b@c"},
             {"rtsps://[FE80::1%25eth0]:8322?x", "rtsps://[fe80::1]:8322/?x"},
             {"rtsps://cam:322", "rtsps://cam"}})
    {
        EXPECT_EQ(rtsp::ParseUrl(szUrl).value().Text(), szText);
    }
    for (char const* const szUrl : {"rtsp://u@cam/", "rtsp://cam:0/", "rtsp://cam:65536/", "rtsp://[::1/", "rtsp:///x",
                                    "rtsp://cam/a b", "rtsp://cam/\r\nX", "rtsp://[1]/", "http://cam/", "rtsp:/cam"})
    {
        EXPECT_FALSE(rtsp::ParseUrl(szUrl)) << szUrl;
    }
    EXPECT_EQ(rtsp::ParseUrl("rtsp://[fe80::1%25eth0]/")->strHost, "fe80::1%eth0");
    for (auto const& [szBase, szControl, szUrl] : std::initializer_list<std::array<char const*, 3>>{
             {"rtsp://c/live", "*", "rtsp://c/live"},
             {"rtsp://c/live/", "trackID=1", "rtsp://c/live/trackID=1"},
             {"rtsp://c/live", "trackID=1", "rtsp://c/live/trackID=1"},
             {"rtsp://c/live/", "/trackID=1", "rtsp://c/live/trackID=1"},
             {"rtsp://c/live?ch=1", "trackID=1", "rtsp://c/live?ch=1/trackID=1"},
             {"rtsp://c/live?ch=1", "/live/track 1", "rtsp://c/live/track%201"},
             {"rtsp://c", "track?u=rtsp://x/", "rtsp://c/track?u=rtsp://x/"},
             {"rtsp://c/live", "rtsps://d/t", "rtsps://d/t"}})
    {
        EXPECT_EQ(rtsp::ResolveControl(szBase, szControl), szUrl);
    }
}

TEST(Words, DescriptionsOfDevices)
{
    const auto tSdp =
        rtsp::ParseDescription("a=control:*\r\na=recvonly\r\nc=IN IP4 239.1.2.3/16/2\nb=x\na=range: npt=0-60 \r\n\r\n"
                               "m=video 5000/2 RTP/AVP 77 96\r"
                               "a=fmtp:96 A = 1;;sprop-parameter-sets=Z0IA==,aM4= ; flag; c=\"q\"\n"
                               "a=rtpmap:96  h264/90000\na=control:t=1\na=framesize:96 352-288\n"
                               "a=framerate:12.5 x\na=source-filter: incl IN IP4 * 10.0.0.9 10.0.0.8\0\n"
                               "m=audio 0 RTP/AVP 8\na=sendonly\nc=IN IP6 ff15::1/3\n"
                               "m=application 0 RTP/AVP 98 99\na=rtpmap:97 x/1\nm=\n"sv);
    ASSERT_TRUE(tSdp && tSdp->atMedia.size() == 4);
    EXPECT_EQ(tSdp->strRange, "npt=0-60");
    rtsp::tagMediaDescription const& v = tSdp->atMedia[0];
    EXPECT_TRUE(v.strEncoding == "H264" && v.dwClockRate == 90000 && v.nPayloadType == 96 && v.wPort == 5000);
    EXPECT_TRUE(v.strAddress == "239.1.2.3" && v.nTimeToLive == 16 && v.strSource == "10.0.0.9");
    EXPECT_TRUE(v.nWidth == 352 && v.nHeight == 288 && v.dFrameRate == 12.5 && v.strControl == "t=1");
    EXPECT_TRUE(v.Parameter("a") == "1" && v.Parameter("sprop-parameter-sets") == "Z0IA==,aM4=");
    EXPECT_TRUE(v.Parameter("c") == "q" && v.Parameter("flag").empty() && v.eWay == rtsp::eDirection::ReceiveOnly);
    rtsp::tagMediaDescription const& a = tSdp->atMedia[1];
    EXPECT_TRUE(a.strEncoding == "PCMA" && a.nChannels == 1 && a.eWay == rtsp::eDirection::SendOnly);
    EXPECT_TRUE(a.strAddress == "ff15::1" && a.nTimeToLive == 0 && a.strControl.empty());
    EXPECT_TRUE(tSdp->atMedia[2].nPayloadType == 98 && tSdp->atMedia[2].strEncoding.empty());
    EXPECT_FALSE(rtsp::ParseDescription("v=0\na=control:*\n"));
}

TEST(Words, HeaderValues)
{
    const auto tTransport = rtsp::ParseTransport("rtp/avp/tcp; unicast;interleaved=4 ;ssrc= 0A0B0C0D,RTP/AVP");
    ASSERT_TRUE(tTransport && tTransport->bTcp);
    EXPECT_EQ(tTransport->tChannels, (rtsp::tagPair{4, 5}));
    EXPECT_EQ(tTransport->dwSource, 0x0a0b0c0du);
    EXPECT_FALSE(rtsp::ParseTransport("RTP/AVP/TCP;interleaved=0-256")->tChannels);
    const auto atInfo = rtsp::ParseRtpInfo("url=rtsp://c/a;b=1,c;seq=7;rtptime=4294967295,url=t2;rtptime=x;seq=70000");
    ASSERT_EQ(atInfo.size(), 2u);
    EXPECT_EQ(atInfo[0].strUrl, "rtsp://c/a;b=1,c");
    EXPECT_TRUE(atInfo[0].wSequence == 7 && atInfo[0].dwStamp == 4294967295u && !atInfo[1].wSequence);
    EXPECT_EQ(rtsp::ParseSession(" a-1 ; Timeout = 30s").nTimeOut, 30u);
    EXPECT_EQ(rtsp::ParseRange("npt=1:02:03.25-"), (rtsp::tagRange{false, false, 3723250000, {}}));
    const auto tRange = rtsp::ParseRange("clock=20240229T235959.9Z-20240301T000000Z");
    ASSERT_TRUE(tRange && *tRange->llEndUs - *tRange->llBeginUs == 100000 && *tRange->llEndUs == 1709251200000000);
    EXPECT_EQ(rtsp::RangeText(*tRange), "clock=20240229T235959.900Z-20240301T000000.000Z");
    EXPECT_FALSE(rtsp::ParseRange("clock=20230229T000000Z-"));
}

TEST(Words, PacketsWithExtensions)
{
    // A contributing source, padding, and the replay extension with a JPEG extension inside.
    const auto tPacket =
        rtsp::ParseRtp(AsBytes("\xb1\xe0\0\1\0\0\0\2\0\0\0\3CCCC\xab\xac\0\6\xbc\x17\xc2\0\x80\0\0\0\xa0\7\0\0"
                               "\xff\xd8\0\1JPEGfilldata\0\2"sv));
    ASSERT_TRUE(tPacket && tPacket->tReplay);
    EXPECT_EQ(Text(tPacket->abyPayload), "data");
    EXPECT_EQ(Text(tPacket->abyJpegSegments), "JPEG");
    EXPECT_EQ(tPacket->tReplay->llTimeUs, 946684800500000); // 2000-01-01, and a half
    EXPECT_TRUE(tPacket->tReplay->bCleanPoint && !tPacket->tReplay->bEndOfSection && tPacket->tReplay->bDiscontinuity &&
                !tPacket->tReplay->bTerminal && tPacket->tReplay->byCSeq == 7);
    EXPECT_EQ(Text(AsBytes(rtsp::MakeReceiverReport({1, 2, 64, -1, 3, 4, 5, 6}))),
              "\x81\xc9\0\7\0\0\0\1\0\0\0\2\x40\xff\xff\xff\0\0\0\3\0\0\0\4\0\0\0\5\0\0\0\6"
              "\x81\xca\0\4\0\0\0\1\1\10"
              "00000001\0\0"s);
    EXPECT_EQ(rtsp::NtpToUs(std::uint64_t{1} << 32), 2085978497000000); // 2036, after the wrap
}
} // namespace
