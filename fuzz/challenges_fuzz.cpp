// The WWW-Authenticate headers of 401s, one a line; an empty line ends one answer and begins the next. The first line
// is the user name.

#include "fuzz/Input.h"
#include "rtsp/Authentication.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    CInput tInput(pbyData, nLength);
    const std::string strUser(tInput.Line());
    rtsp::CAuthenticator tAuthenticator(strUser, "secret");
    REQUIRE(tAuthenticator.Authorization("DESCRIBE", "rtsp://camera/").empty());
    std::vector<std::string_view> astrLines;
    while (!tInput.IsEmpty())
    {
        astrLines.clear();
        for (std::string_view strLine = tInput.Line(); !strLine.empty(); strLine = tInput.Line())
        {
            astrLines.push_back(strLine);
        }
        const bool bTaken = tAuthenticator.TakeChallenges(astrLines);
        REQUIRE(!bTaken || !strUser.empty());
        const std::string strAnswer = tAuthenticator.Authorization("DESCRIBE", "rtsp://camera/");
        REQUIRE(bTaken != strAnswer.empty());
        if (strAnswer.starts_with("Basic "))
        {
            REQUIRE(strUser.find(':') == std::string::npos);
        }
        else if (bTaken)
        {
            // No word of a server or user leaves its quotes, and what came goes back as it was.
            const auto atParts = rtsp::ParseChallenges(strAnswer);
            REQUIRE(atParts.size() == 1 && atParts[0].strScheme == "digest" && !atParts[0].strNonce.empty());
            bool bFound = false;
            for (const std::string_view strLine : astrLines)
            {
                for (rtsp::tagChallenge const& t : rtsp::ParseChallenges(strLine))
                {
                    bFound |= t.strNonce == atParts[0].strNonce && t.strRealm == atParts[0].strRealm &&
                              t.strOpaque == atParts[0].strOpaque;
                }
            }
            REQUIRE(bFound);
        }
    }
    // A server that never has enough doesn't keep us busy.
    int nTries = 0;
    while (tAuthenticator.TakeChallenges(astrLines))
    {
        REQUIRE(!tAuthenticator.Authorization("PLAY", "rtsp://camera/").empty());
        REQUIRE(++nTries < 50);
    }
    return 0;
}
