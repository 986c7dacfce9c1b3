// The RTSP plug-in in front of servers that no device should be; see cases.py.

#include "tests/rtsp/Stream.h"

#include <cerrno>

namespace
{
// A row of cases.py.
struct tagCase
{
    std::string strName;
    std::map<std::string, std::string> strWords{};

    bool Has(std::string const& strWord) const { return strWords.contains(strWord); }
    std::string Word(std::string const& strWord) const { return Has(strWord) ? strWords.at(strWord) : ""; }
    unsigned long Number(std::string const& strWord, unsigned long dwElse = 0) const
    {
        return Has(strWord) ? std::stoul(strWords.at(strWord)) : dwElse;
    }
    bool Fails() const { return Word("end") == "lost" || Word("end") == "refused"; }
    std::size_t Sessions() const { return Number("sessions", 1); }
};

std::vector<tagCase> ReadCases(CScripted const& tServer)
{
    std::vector<tagCase> atCases;
    for (std::string const& strLine : tServer.Cases())
    {
        std::istringstream tLine(strLine);
        std::string strWord;
        std::getline(tLine, strWord, '\t'); // its number is its place
        std::getline(tLine, strWord, '\t');
        atCases.push_back({strWord});
        while (std::getline(tLine, strWord, '\t'))
        {
            const std::size_t nName = strWord.find('=');
            atCases.back().strWords[strWord.substr(0, nName)] = strWord.substr(nName + 1);
        }
    }
    return atCases;
}

// K a key frame, P another, A audio; small letters are damaged, ! stands before what doesn't continue.
std::string Letters(std::vector<tagGot> const& atFrames)
{
    std::string strLetters;
    for (tagGot const& tGot : atFrames)
    {
        const char c = !tGot.IsVideo() ? 'A' : tGot.Is(eFrameKey) ? 'K' : 'P';
        strLetters += tGot.Is(eFrameDiscontinuity) ? "!" : "";
        strLetters += static_cast<char>(tGot.Is(eFrameDamaged) ? c + 'a' - 'A' : c);
    }
    return strLetters;
}

std::vector<CReceiver::Words> Failures(std::vector<CReceiver::Words> atEvents)
{
    std::erase_if(atEvents, [](auto const& t) { return t[0] != eEventLost && t[0] != eEventRefused; });
    return atEvents;
}

// Whether the frame that stands first in a pattern came as it should; ? is any letter.
bool Matches(std::string const& strLetters, std::string const& strPattern)
{
    return strLetters.size() >= strPattern.size() &&
           std::equal(strPattern.begin(), strPattern.end(), strLetters.begin(),
                      [](char a, char b) { return a == b || a == '?'; });
}

class HostileServer : public CPluginTest
{
protected:
    CScripted m_tServer{2};
    const std::vector<tagCase> m_atCases = ReadCases(m_tServer);
    Clock::time_point m_tOpened = Clock::now();

    void Open(CStream& tStream, std::size_t iCase, std::size_t nSessions)
    {
        tagCase const& tCase = m_atCases[iCase];
        std::string strUrl = m_tServer.Url("/" + std::to_string(iCase) + "/" + std::to_string(nSessions));
        if (tCase.Has("host"))
        {
            strUrl.replace(strUrl.find("127.0.0.1"), 9, tCase.Word("host"));
        }
        tStream.Open(strUrl, {.strUser = tCase.Word("user"),
                              .strPassword = tCase.Word("password"),
                              .dwTransport = static_cast<std::uint32_t>(tCase.Number("transport"))});
    }
    void Check(CStream& tStream, std::size_t iCase);
};

void CheckEvents(tagCase const& tCase, std::vector<CReceiver::Words> const& atEvents)
{
    const auto fnHeard = [&](unsigned long dwEvent)
    { return std::any_of(atEvents.begin(), atEvents.end(), [=](auto const& t) { return t[0] == dwEvent; }); };
    const std::vector<CReceiver::Words> atFailures = Failures(atEvents);
    EXPECT_TRUE(!tCase.Has("stalls") || fnHeard(eEventStalled));
    EXPECT_TRUE(!tCase.Has("hears") || fnHeard(tCase.Number("hears")));
    EXPECT_FALSE(tCase.Has("never") && fnHeard(tCase.Number("never")));
    EXPECT_TRUE(tCase.Word("end") == "any" || atFailures.size() == (tCase.Fails() ? tCase.Sessions() : 0));
    std::istringstream tPauses(tCase.Word("pauses"));
    for (CReceiver::Words const& adwWords : atFailures)
    {
        const bool bRefused = adwWords[0] == eEventRefused;
        EXPECT_TRUE(bRefused ? adwWords[1] >= 400 && adwWords[1] <= 999 : adwWords[1] < 4096) << adwWords[1];
        EXPECT_TRUE(!tCase.Fails() || bRefused == (tCase.Word("end") == "refused"));
        EXPECT_EQ(adwWords[1], tCase.Number("detail", adwWords[1]));
        if (std::string strPause; std::getline(tPauses, strPause, ','))
        {
            EXPECT_EQ(adwWords[2], std::stoul(strPause));
        }
    }
    unsigned long dwJump = 0;
    for (CReceiver::Words const& adwWords : atEvents)
    {
        dwJump = std::max(dwJump, adwWords[0] == eEventClockJump ? adwWords[1] : 0);
    }
    EXPECT_GE(dwJump, tCase.Number("jump"));
}

// A case has been shown and the stream has healed: what it told and what it delivered.
void HostileServer::Check(CStream& tStream, std::size_t iCase)
{
    tagCase const& tCase = m_atCases[iCase];
    SCOPED_TRACE("case " + std::to_string(iCase) + ", " + tCase.strName);
    // All run at once: when one has taken its time, so have the others.
    const auto tUntil = std::max(m_tOpened + g_tPatience, Clock::now() + 1s);
    m_tServer.Await("did " + std::to_string(iCase), static_cast<int>(tCase.Sessions()), tUntil);
    const std::string strPattern = tCase.Word("frames");
    const auto fnHealed = [&](auto const& atFrames, auto const& atEvents)
    {
        const auto itFailure = std::find_if(atEvents.rbegin(), atEvents.rend(),
                                            [](auto const& t) { return t[0] == eEventLost || t[0] == eEventRefused; });
        const bool bLive = std::any_of(atEvents.rbegin(), itFailure, [](auto const& t) { return t[0] == eEventLive; });
        const std::size_t nFailures = tCase.Fails() ? tCase.Sessions() : 0;
        return bLive && Failures(atEvents).size() >= nFailures && !atFrames.empty() &&
               !atFrames.back().Is(eFrameDamaged) && Letters(atFrames).size() >= strPattern.size();
    };
    tStream.Await(fnHealed, tUntil);
    if (tCase.Has("pause"))
    {
        EXPECT_EQ(RTSPClient_Control(tStream.Handle(), eTaskPause), 0);
        tStream.Event(eEventPaused);
        tStream.Clear();
        EXPECT_EQ(RTSPClient_Control(tStream.Handle(), eTaskPlay), 0);
        tStream.Await(fnHealed);
    }
    const std::vector<tagGot> atFrames = tStream.Frames(0);
    const std::vector<CReceiver::Words> atEvents = tStream.Events();
    std::string strTold = "delivered " + Letters(atFrames).substr(0, 60) + ", told";
    for (CReceiver::Words const& adwWords : atEvents)
    {
        strTold +=
            " " + std::to_string(adwWords[0]) + ":" + std::to_string(adwWords[1]) + ":" + std::to_string(adwWords[2]);
    }
    SCOPED_TRACE(strTold);
    EXPECT_TRUE(Matches(Letters(atFrames), strPattern)) << strPattern;
    CheckEvents(tCase, atEvents);
    if (tCase.Has("steps"))
    {
        std::vector<tagGot> atVideo = atFrames;
        std::erase_if(atVideo, [](tagGot const& t) { return !t.IsVideo(); });
        atVideo.resize(std::min(atVideo.size(), strPattern.size()));
        ExpectInOrder(atVideo);
    }
    EXPECT_TRUE(atFrames.empty() || atFrames.back().tFrame.llPresentationTimeUs < 120'000'000) << "it starts near 0";
    const tagRTSPPackageInfo tInfo = tStream.Info();
    EXPECT_TRUE(tInfo.dwState == eConnectionLive || tInfo.dwState == eConnectionStalled) << tInfo.dwState;
    EXPECT_EQ(tInfo.ullLost, tCase.Number("lost", static_cast<unsigned long>(tInfo.ullLost)));
}

TEST_F(HostileServer, IsSurvivedAndWorksOnceItIsGood)
{
    std::vector<CStream> atStreams(m_atCases.size());
    for (std::size_t i = 0; i < m_atCases.size(); ++i)
    {
        Open(atStreams[i], i, m_atCases[i].Sessions());
    }
    for (std::size_t i = 0; i < m_atCases.size(); ++i)
    {
        Check(atStreams[i], i);
        EXPECT_LT(m_tServer.Count("did " + std::to_string(i)), 20) << m_atCases[i].strName << ": it is hammered";
    }
    for (std::size_t i = 0; i < m_atCases.size(); ++i)
    {
        EXPECT_EQ(atStreams[i].Close(), 0);
        EXPECT_LT(atStreams[i].Closing(), g_tClosing);
        m_tServer.Await("end " + std::to_string(i), 1, Clock::now() + 1s); // its TEARDOWN
    }
    m_tServer.AwaitNoPeers();
    std::printf("tried: hostile server, %zu behaviours\n", m_atCases.size());
}

TEST_F(HostileServer, DoesNotHoldUpClosing)
{
    std::vector<CStream> atStreams(m_atCases.size());
    for (std::size_t i = 0; i < m_atCases.size(); ++i)
    {
        Open(atStreams[i], i, 1'000'000);
    }
    Clock::duration tLongest{};
    for (std::size_t i = 0; i < m_atCases.size(); ++i)
    {
        if (!m_atCases[i].Has("pause"))
        {
            m_tServer.Await("did " + std::to_string(i), 1, std::max(m_tOpened + g_tPatience, Clock::now() + 1s));
        }
        EXPECT_EQ(atStreams[i].Close(), 0);
        tLongest = std::max(tLongest, atStreams[i].Closing());
    }
    m_tServer.AwaitNoPeers();
    std::printf("tried: closing took at most %.3f s\n", std::chrono::duration<double>(tLongest).count());
    EXPECT_LT(tLongest, g_tClosing);
}
} // namespace
