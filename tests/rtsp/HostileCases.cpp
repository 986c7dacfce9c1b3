#include "tests/rtsp/HostileCases.h"

#include <cerrno>

namespace
{
constexpr tagExpected Refused(long nStatus)
{
    return {.dwEvent = eEventRefused, .nDetail = nStatus};
}
const tagExpected g_tSurvives{};
const tagExpected g_tLost{.dwEvent = eEventLost};
const tagExpected g_tGivenUp{.dwEvent = eEventLost, .nDetail = ETIMEDOUT};
const tagExpected g_tStalls{.dwEvent = eEventLost, .nDetail = ETIMEDOUT, .bStalls = true};
const tagExpected g_tEither{.dwEvent = 0};

std::string Repeat(std::string const& strWhat, std::size_t nTimes)
{
    std::string strAll;
    for (std::size_t i = 0; i < nTimes; ++i)
    {
        strAll += strWhat;
    }
    return strAll;
}

std::string Join(std::initializer_list<std::string> astrParts) // which are made in this order
{
    std::string strAll;
    for (std::string const& strPart : astrParts)
    {
        strAll += strPart;
    }
    return strAll;
}

// A stream in letters: K a key frame, P another, < = > first, middle and last piece of one, - a packet that is missing.
std::string Frames(CRtp& tRtp, std::string const& strLetters)
{
    std::string strAll;
    for (const char c : strLetters)
    {
        strAll += c == 'K' || c == 'P' ? tRtp.Frame(c == 'K') : c == '-' ? "" : tRtp.Fragment(c == '<', c == '>');
        tRtp.wSequence = static_cast<std::uint16_t>(tRtp.wSequence + (c == '-'));
        tRtp.dwStamp += c == '>' ? tRtp.dwStep : 0;
    }
    return strAll;
}

// Bytes that look like nothing, the same each time.
std::string Junk(std::size_t nLength)
{
    std::string strJunk;
    for (std::uint32_t dw = 1; strJunk.size() < nLength;)
    {
        dw = dw * 1664525 + 1013904223;
        strJunk += static_cast<char>(dw >> 24);
    }
    return strJunk;
}

// An RTCP packet: nWords is the length it claims.
std::string Rtcp(int nType, std::uint32_t nWords, std::string const& strBody, int nFirst = 0x80)
{
    return Interleaved(
        std::string{static_cast<char>(nFirst), static_cast<char>(nType)} + Word(nWords).substr(2) + strBody, 1);
}
std::string SenderReport(std::uint32_t dwSeconds, std::uint32_t dwStamp)
{
    return Rtcp(200, 6, Word(0x1234) + Word(dwSeconds) + Word(0) + Word(dwStamp) + Word(1) + Word(1));
}

// The same at each step of the exchange.
void AddSteps(std::vector<tagCase>& atCases)
{
    const std::string strWhole = "RTSP/1.0 200 OK\r\n";
    for (auto const& [szStep, eAt] : {std::pair{"options", eStep::Options},
                                      {"describe", eStep::Describe},
                                      {"setup", eStep::Setup},
                                      {"play", eStep::Play}})
    {
        const std::string strAt = std::string(" at ") + szStep;
        for (const int nStatus : {400, 404, 454, 461, 500, 503})
        {
            const std::string strStatus = std::to_string(nStatus);
            atCases.push_back({{strStatus + strAt, eAt, "200 OK", strStatus + " No"}, Refused(nStatus)});
        }
        atCases.push_back({{"403" + strAt, eAt, "200 OK", "403 Forbidden"},
                           {.dwEvent = eEventRefused, .nDetail = 403, .adwPauses = {10000}}});
        tagCase const atMore[] = {
            {{"closes", eAt, "", "", eThen::Close}, g_tLost},
            {{"resets", eAt, "", "", eThen::Reset}, g_tLost},
            {{"stalls", eAt, "", "", eThen::Stall}, g_tGivenUp},
            {{"stalls behind a status line", eAt, "", strWhole, eThen::Stall}, g_tGivenUp},
            {{"closes in a status line", eAt, "", "RTSP/1.0 2", eThen::Close}, g_tLost},
            {{"closes in a header", eAt, "", strWhole + "CSeq: ", eThen::Close}, g_tLost},
            {{"headers without end", eAt, "", strWhole + Repeat("X-More: yes\r\n", 3), eThen::Flood}, g_tGivenUp},
            {{"a line without end", eAt, "", Repeat("x", 50), eThen::Flood}, g_tGivenUp},
            {{"packets instead of an answer", eAt, "", CRtp().Frame(), eThen::Flood}, g_tGivenUp},
            {{"a header of 20 kB", eAt, "CSeq", "X-Long: " + std::string(20'000, 'x') + "\r\nCSeq"}, g_tSurvives},
            {{"junk", eAt, "", Junk(2000) + "\r\n\r\n"}, g_tEither},
            {{"another protocol", eAt, "RTSP/1.0", "HTTP/1.1"}, g_tEither},
            {{"status 999999999999", eAt, "200 OK", "999999999999 What"}, g_tEither},
            {{"status -1", eAt, "200 OK", "-1 What"}, g_tEither},
            {{"no CSeq", eAt, "CSeq", "X-Nothing"}, g_tSurvives},
            {{"wrong CSeq", eAt, "CSeq: ", "CSeq: 77"}, g_tSurvives},
            {{"NULs", eAt, "CSeq", "X-" + std::string(8, '\0') + ": x\r\nCSeq"}, g_tSurvives},
            {{"body beyond the end", eAt, "CSeq", "Content-Length: 100000\r\nCSeq", eThen::Stall}, g_tGivenUp},
            {{"body of 2 GB", eAt, "CSeq", "Content-Length: 2147483647\r\nCSeq", eThen::Stall}, g_tEither},
            {{"redirects to itself", eAt, "", "RTSP/1.0 302 Moved\r\nCSeq: {cseq}\r\nLocation: {url}\r\n\r\n"},
             g_tLost},
        };
        for (tagCase tCase : atMore)
        {
            tCase.tDo.strName += strAt;
            atCases.push_back(tCase);
        }
    }
}

} // namespace

std::vector<tagCase> MakeCases()
{
    std::vector<tagCase> atCases;
    AddSteps(atCases);
    const auto fnAdd = [&](std::vector<tagCase> atMore)
    { atCases.insert(atCases.end(), atMore.begin(), atMore.end()); };

    // --- answers ---
    const std::string strLength = "Content-Length: ";
    // Without a body: libavformat leaks that of an answer after which it tries again.
    const std::string str401 = "RTSP/1.0 401 Unauthorized\r\nCSeq: {cseq}\r\nWWW-Authenticate: ";
    const std::string strMoved = "RTSP/1.0 301 Moved\r\nCSeq: {cseq}\r\nLocation: ";
    const tagExpected tLocked{.dwEvent = eEventRefused, .nDetail = 401, .adwPauses = {10000}, .bLogin = true};
    fnAdd({
        {{"body's length negative", eStep::Describe, strLength, strLength + "-5\r\nX: "}, g_tLost},
        {{"body's length no number", eStep::Describe, strLength, strLength + "many\r\nX: "}, g_tLost},
        {{"body's length zero", eStep::Describe, strLength, strLength + "0\r\nX: "}, g_tLost},
        {{"body's length beyond 64 bits", eStep::Describe, strLength, strLength + Repeat("9", 30) + "\r\nX: "},
         g_tEither},
        {{"body too short by some", eStep::Describe, strLength, strLength + "40\r\nX: "}, g_tEither},
        {{"no Session", eStep::Setup, "Session", "X-Session"}, g_tSurvives},
        {{"long Session", eStep::Setup, "Session: 1", "Session: " + std::string(5000, 's')}, g_tSurvives},
        {{"Session for no time", eStep::Setup, "timeout=60", "timeout=0"}, g_tSurvives},
        {{"Session for a negative time", eStep::Setup, "timeout=60", "timeout=-9999999999"}, g_tSurvives},
        {{"Session for a second", eStep::Setup, "timeout=60", "timeout=1"}, g_tSurvives},
        {{"no Transport", eStep::Setup, "Transport", "X-Transport"}, g_tLost},
        {{"empty Transport", eStep::Setup, "Transport: ", "Transport: \r\nX: "}, g_tLost},
        {{"Transport over UDP", eStep::Setup, "Transport: ", "Transport: RTP/AVP;server_port=1-1\r\nX: "}, g_tLost},
        {{"Transport on absurd channels", eStep::Setup,
          "Transport: ", "Transport: RTP/AVP/TCP;interleaved=-9-99999999999\r\nX: "},
         g_tEither},
        {{"Transport junk", eStep::Setup,
          "Transport: ", "Transport: ;;=,,/;interleaved=;" + Repeat("a;", 9000) + "\r\nX: "},
         g_tEither},
        {{"Range at the end of time", eStep::Play, "Session", "Range: npt=9223372036854.775-\r\nSession"}, g_tSurvives},
        {{"Range before the beginning", eStep::Play, "Session", "Range: npt=-9223372036854.775-\r\nSession"},
         g_tSurvives},
        {{"absurd RTP-Info", eStep::Play, "Session", "RTP-Info: url=;seq=-1;rtptime=99999999999999\r\nSession"},
         g_tSurvives},
        {{"moves to nowhere", eStep::Describe, "", strMoved + "\r\n\r\n"}, g_tLost},
        {{"moves to a file", eStep::Describe, "", strMoved + "file:///etc/passwd\r\n\r\n"}, g_tLost},
        {{"moves to a long address", eStep::Describe, "", strMoved + "rtsp://" + std::string(9000, 'a') + "/\r\n\r\n"},
         g_tLost},
        {{"a nonce of its own for each try", eStep::Describe, "", str401 + "Digest realm=\"r\", nonce=\"{n}\"\r\n\r\n"},
         tLocked},
        {{"stale for ever", eStep::Options, "", str401 + "Digest realm=\"r\", nonce=\"{n}\", stale=true\r\n\r\n"},
         tLocked},
        {{"credentials asked for late", eStep::Play, "", str401 + "Digest realm=\"r\", nonce=\"{n}\"\r\n\r\n"},
         tLocked},
        {{"401 without a word", eStep::Describe, "", "RTSP/1.0 401 No\r\nCSeq: {cseq}\r\n\r\n"}, tLocked},
        {{"a scheme nobody knows", eStep::Describe, "", str401 + "Bearer x\r\n\r\n"}, tLocked},
        {{"an algorithm nobody knows", eStep::Describe, "", str401 + "Digest algorithm=ROT13, nonce=\"\"\r\n\r\n"},
         tLocked},
        {{"a realm of 20 kB", eStep::Describe, "", str401 + "Basic realm=\"" + std::string(20'000, 'r') + "\"\r\n\r\n"},
         tLocked},
        {{"a realm without end", eStep::Describe, "", str401 + "Digest realm=\"a, nonce=,,=\"\"=\\\r\n\r\n"}, tLocked},
        {{"401 for who has no credentials", eStep::Describe, "", str401 + "Basic realm=\"r\"\r\n\r\n"}, Refused(401)},
    });

    // --- descriptions ---
    const std::string strMap = "a=rtpmap:96 H264/90000\r\n";
    const std::string strSets = "sprop-parameter-sets=";
    const std::string strMedia = "m=video 0 RTP/AVP 96\r\n";
    fnAdd({
        {{"nothing described", eStep::Sdp, "", ""}, g_tEither},
        {{"no media", eStep::Sdp, "", "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=t\r\n"}, g_tEither},
        {{"a description of junk", eStep::Sdp, "", Junk(20'000)}, g_tEither},
        {{"a description of NULs", eStep::Sdp, "", std::string(5000, '\0')}, g_tEither},
        {{"NULs in a description", eStep::Sdp, "s=t", std::string("s=\0\0", 4)}, g_tEither},
        {{"lines of 100 kB", eStep::Sdp, "s=t",
          "s=" + std::string(100'000, 't') + "\r\na=" + std::string(100'000, 'x')},
         g_tSurvives},
        {{"a million lines", eStep::Sdp, "s=t\r\n", Repeat("a=x\r\n", 1'000'000)}, g_tSurvives},
        {{"payload type 4294967296", eStep::Sdp, "AVP 96", "AVP 4294967296"}, g_tEither},
        {{"payload type -1", eStep::Sdp, "AVP 96", "AVP -1"}, g_tEither},
        {{"no payload type", eStep::Sdp, "AVP 96", "AVP"}, g_tEither},
        {{"no rtpmap", eStep::Sdp, strMap, ""}, g_tEither},
        {{"clock rate 0", eStep::Sdp, "/90000", "/0"}, g_tSurvives},
        {{"clock rate -90000", eStep::Sdp, "/90000", "/-90000"}, g_tSurvives},
        {{"clock rate 1", eStep::Sdp, "/90000", "/1"}, g_tSurvives},
        {{"clock rate 2147483647", eStep::Sdp, "/90000", "/2147483647"}, g_tSurvives},
        {{"clock rate 99999999999", eStep::Sdp, "/90000", "/99999999999"}, g_tSurvives},
        {{"clock rate no number", eStep::Sdp, "/90000", "/fast/2/3"}, g_tSurvives},
        {{"a codec nobody knows", eStep::Sdp, "H264", std::string(300, 'Q')}, g_tEither},
        {{"another codec", eStep::Sdp, "H264", "H265"}, g_tEither},
        {{"audio in a video's place", eStep::Sdp, "H264/90000", "mpeg4-generic/48000/99"}, g_tEither},
        {{"parameter sets no base64", eStep::Sdp, strSets, strSets + "!?%,,,=;x="}, g_tEither},
        {{"parameter sets of 100 kB", eStep::Sdp, strSets, strSets + std::string(100'000, 'A') + ","}, g_tSurvives},
        {{"many parameter sets", eStep::Sdp, strSets, strSets + Repeat("Z0IACvhBog==,", 3000)}, g_tSurvives},
        {{"a sequence parameter set of junk", eStep::Sdp, "Z0IACvhBog==", "Z////////////w=="}, g_tSurvives},
        {{"parameters without values", eStep::Sdp, "packetization-mode=1;", ";;=;a;=b;packetization-mode;"}, g_tEither},
        {{"2000 media", eStep::Sdp, strMedia, Repeat("m=audio 0 RTP/AVP 0\r\na=control:x\r\n", 2000) + strMedia},
         g_tEither},
        {{"a control address of 100 kB", eStep::Sdp, "control:track", "control:" + std::string(100'000, 'c')},
         g_tEither},
        {{"a control address of elsewhere", eStep::Sdp, "control:track", "control:http://192.0.2.1/x"}, g_tEither},
        {{"a time range beyond time", eStep::Sdp, "t=0 0\r\n", "t=0 0\r\na=range:npt=9223372036854775807-\r\n"},
         g_tSurvives},
        {{"a connection to everyone", eStep::Sdp, "0.0.0.0", "239.255.255.255/999999/99999"}, g_tSurvives},
    });

    // --- streams ---
    const auto fnTimes = [](int nTimes, std::function<std::string(CRtp&)> const& fnOne)
    {
        return [=](CRtp& tRtp)
        {
            std::string strAll;
            for (int i = 0; i < nTimes; ++i)
            {
                strAll += fnOne(tRtp);
            }
            return strAll;
        };
    };
    const std::string strSlice = "\x65\x88\x84\x21\xA0xxxxxxxx";
    const auto fnStream = [&](std::string const& strName, std::function<std::string(CRtp&)> fn,
                              tagExpected const& tExpected = {}, eThen eAfter = eThen::GoOn) {
        atCases.push_back({{strName, eStep::Stream, "", "", eAfter, std::move(fn)}, tExpected});
    };
    const auto fnBytes = [&](std::string const& strName, std::string const& strBytes, tagExpected const& tExpected = {},
                             eThen eAfter = eThen::GoOn)
    {
        fnStream(
            strName,
            [=](CRtp& t) {
                return Join({t.Frame(), strBytes, t.Frame()});
            },
            tExpected, eAfter);
    };

    fnBytes("closes while streaming", "", {.dwEvent = eEventLost, .nDetail = 0}, eThen::Close);
    fnBytes("resets while streaming", "", g_tLost, eThen::Reset);
    fnBytes("stalls while streaming", "", g_tStalls, eThen::Stall);
    fnBytes("stalls in a packet", Interleaved("x", 0, 1000), g_tStalls, eThen::Stall);
    fnStream(
        "junk without end", [](CRtp&) { return Repeat("no packet at all\r\n", 3); }, g_tStalls, eThen::Flood);
    fnStream(
        "a channel nobody asked for", [](CRtp& t) { return Interleaved(t.Bare("x"), 77); }, g_tStalls, eThen::Flood);
    fnStream(
        "reports without end", [](CRtp&) { return SenderReport(1, 1); }, g_tStalls, eThen::Flood);
    // libavformat loses its place in the connection for good.
    fnBytes("junk between packets", Junk(3000), g_tStalls);
    fnBytes("text between packets", "hello\r\n\r\nRTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n");
    fnBytes("an empty packet", Interleaved(""));
    fnBytes("a packet of a byte", Interleaved("\x80"), g_tStalls);
    fnBytes("packets of each length",
            fnTimes(40,
                    [](CRtp&)
                    {
                        static std::size_t n;
                        return Interleaved(Junk(n++ % 40));
                    })(*std::make_unique<CRtp>()),
            g_tStalls);
    fnBytes("a packet shorter than it says", Interleaved(CRtp().Bare(strSlice), 0, 500), g_tEither);
    fnBytes("a packet longer than it says", Interleaved(CRtp().Bare(strSlice), 0, 5), g_tStalls);
    fnBytes("a packet of 64 kB", Interleaved(std::string(65535, '\x80')));
    fnBytes("a request of the server's", "GET_PARAMETER rtsp://x/ RTSP/1.0\r\nCSeq: 5\r\n\r\n");
    fnBytes("an answer with a body", "RTSP/1.0 200 OK\r\nCSeq: 9\r\nContent-Length: 5\r\n\r\n$$$$$");
    for (const int nFirst : {0x00, 0x40, 0xC0, 0x90, 0xA0, 0x8F, 0xBF})
    {
        fnStream("first byte " + std::to_string(nFirst),
                 fnTimes(20,
                         [=](CRtp& t) {
                             return Join({t.Packet(strSlice, 96, nFirst), t.Frame()});
                         }));
    }
    fnStream("padding of 255", [=](CRtp& t) { return Join({t.Packet(strSlice + '\xFF', 96, 0xA0), t.Frame()}); });
    fnStream("an extension beyond the end",
             [=](CRtp& t) {
                 return Join({t.Packet("\xBE\xDE\xFF\xFF" + strSlice, 96, 0x90), t.Frame()});
             });
    fnStream("types of each number",
             [=](CRtp& t)
             {
                 std::string strAll;
                 for (int nType = 0; nType < 256; ++nType)
                 {
                     strAll += nType == 96 || (nType >= 200 && nType < 208) ? "" : t.Packet(strSlice, nType);
                 }
                 return strAll;
             });
    fnStream("units of each kind",
             [=](CRtp& t)
             {
                 std::string strAll;
                 for (int nKind = 0; nKind < 256; ++nKind)
                 {
                     strAll += t.Packet(std::string(1, static_cast<char>(nKind)));
                     strAll += t.Packet(static_cast<char>(nKind) + Junk(static_cast<std::size_t>(nKind)));
                     t.Next();
                 }
                 return strAll;
             });
    fnStream("an empty unit", [](CRtp& t) { return Join({t.Packet(""), t.Frame()}); });
    fnStream("aggregates of wrong sizes",
             [=](CRtp& t)
             {
                 std::string strAll;
                 for (const int nSaid : {0, 1, 12, 14, 65535})
                 {
                     strAll += t.Packet("\x78" + Sized(strSlice, nSaid)) + t.Packet("\x78" + Sized("", nSaid)) +
                               t.Packet("\x78\x01");
                 }
                 return strAll + t.Frame();
             });
    fnStream("start codes only",
             [](CRtp& t) {
                 return Join({t.Packet("\x65" + std::string("\0\0\1\0\0\1\0\0\1", 9)), t.Frame()});
             });
    fnStream("pieces without a beginning", fnTimes(50, [](CRtp& t) { return t.Fragment(false, false); }));
    fnStream("pieces without an end", fnTimes(50, [](CRtp& t) { return t.Fragment(true, false); }));
    fnStream("a unit of 19 MB",
             [](CRtp& t)
             {
                 std::string strAll = t.Fragment(true, false);
                 for (int i = 0; i < 300; ++i)
                 {
                     strAll += t.Packet("\x7C\x05" + std::string(65000, 'z'));
                 }
                 t.Next();
                 return strAll;
             });
    fnStream("parameter sets only",
             fnTimes(2000, [](CRtp& t) { return t.Packet(std::string("\x67\x42\0\x0A\xF8\x41\xA2", 7)); }));

    // Frames that go out: K key, P other; small letters are damaged.
    struct
    {
        char const* szName;
        char const* szSent;
        char const* szFrames;
        long nLost;
    } const atLosses[] = {
        {"in order", "KPKPKK", "KPKPK", 0},
        {"packets missing", "KK---KKKK", "KkkKK", 3},
        {"pieces", "K<==><>KK", "KKKK", 0},
        {"first piece missing", "KK-=>KKK", "KkKKK", 1},
        {"middle piece missing", "KK<-=>KKK", "KKkKK", 1},
        {"last piece missing", "KK<=-KKK", "KKkkK", 1},
        {"first piece of all missing", "=>KKK", "KK", 0},
    };
    for (auto const& tLoss : atLosses)
    {
        fnStream(tLoss.szName, [=](CRtp& t) { return Frames(t, tLoss.szSent); },
                 {.strFrames = tLoss.szFrames, .nLost = tLoss.nLost});
    }
    fnStream("out of order",
             [](CRtp& t)
             {
                 const std::string strKey = Frames(t, "K");
                 const std::string strOne = Frames(t, "P");
                 return Join({strKey, Frames(t, "P"), strOne, Frames(t, "PKK")});
             },
             {.strFrames = "KPPPK", .nLost = 0});
    fnStream("each packet twice", fnTimes(5, [](CRtp& t) { return Repeat(t.Frame(), 2); }),
             {.strFrames = "KKKK", .nLost = 0});
    fnStream("sequence numbers that jump",
             fnTimes(20,
                     [](CRtp& t)
                     {
                         t.wSequence = static_cast<std::uint16_t>(t.wSequence * 31421 + 6927);
                         return t.Frame();
                     }),
             g_tEither);
    const auto fnSteps = [&](char const* szName, std::uint32_t dwStep, tagExpected const& tExpected)
    {
        fnStream(
            szName,
            [=](CRtp& t)
            {
                t.dwStep = dwStep;
                return Frames(t, "KPPKK");
            },
            tExpected);
    };
    fnSteps("time stamps that stand still", 0, {.strFrames = "KPPK", .nLost = 0});
    fnSteps("time stamps that run back", static_cast<std::uint32_t>(-900000), {.strFrames = "KPPK", .nLost = 0});
    fnSteps("time stamps that leap", 0x7FFFFFF1, {.strFrames = "KPPK", .nLost = 0});
    fnStream("the time stamp that means none",
             [](CRtp& t)
             {
                 t.dwStamp = 0xFFFFFFFF;
                 t.dwStep = 0;
                 std::string strAll = Frames(t, "KPP");
                 t.dwStep = CRtp::dwPerFrame;
                 return strAll + Frames(t, "K");
             },
             {.strFrames = "KPPK", .nLost = 0});

    // Reports.
    fnBytes("a report cut short", Rtcp(200, 6, Word(0x1234) + "ab"));
    fnBytes("a report of nothing", Rtcp(200, 0, ""), g_tStalls);
    fnBytes("a report that says it is long", Rtcp(200, 65535, Word(0x1234)));
    fnBytes(
        "reports of each type",
        [&]
        {
            std::string strAll;
            for (int nType = 192; nType < 256; ++nType)
            {
                strAll += nType == 203 ? "" : Rtcp(nType, 1, Word(0x1234)) + Rtcp(nType, 9, "", 0xFF);
            }
            return strAll;
        }(),
        g_tStalls);
    fnBytes("reports at both ends of time", SenderReport(0, 0) + SenderReport(0xFFFFFFFF, 0xFFFFFFFF) +
                                                SenderReport(0, 0xFFFFFFFF) + SenderReport(0xFFFFFFFF, 0));
    fnBytes("good-bye", Rtcp(203, 1, Word(0x1234), 0x81));
    fnBytes("a report and good-bye", Rtcp(201, 1, Word(0x1234) + "\x81\xCB" + Word(1).substr(2) + Word(0x1234)),
            {.dwEvent = eEventLost, .nDetail = 0});

    // --- pauses between tries ---
    atCases.push_back({{"refuses to pause", eStep::Pause, "200 OK", "501 Not Implemented"}, {.bPauses = true}});
    atCases.push_back({{"pauses", eStep::Pause, "200 OK", "200 OK"}, {.bPauses = true}});
    atCases.push_back({{"closes when asked to pause", eStep::Pause, "", "", eThen::Close}, {.bPauses = true}});
    atCases.push_back({{"lives shortly", eStep::Stream, "", "", eThen::Reset, nullptr, 300ms},
                       {.dwEvent = eEventLost, .adwPauses = {1000, 2000, 4000}, .nSessions = 3}});
    atCases.push_back({{"lives long", eStep::Stream, "", "", eThen::Reset, nullptr, 10400ms},
                       {.dwEvent = eEventLost, .adwPauses = {1000, 1000}, .nSessions = 2}});
    return atCases;
}
