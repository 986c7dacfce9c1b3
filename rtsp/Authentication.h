#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rtsp
{
/// One challenge of a WWW-Authenticate header.
struct tagChallenge
{
    std::string strScheme; ///< lower case
    /// As between quotes: with escapes, as they came, so that they go back as they are.
    std::string strRealm;
    std::string strNonce;
    std::string strOpaque;
    std::string strAlgorithm; ///< as it came; empty: MD5
    std::string strQop;
    bool bStale = false;
    bool bUserHash = false;
};

/// All challenges of one header, in their order.
std::vector<tagChallenge> ParseChallenges(std::string_view strValue);

/// The Authorization value that answers a Digest challenge in an algorithm that we know. nCount: of the requests that
/// answer this nonce.
std::string AnswerDigest(tagChallenge const& tChallenge, std::string const& strUser, std::string const& strPassword,
                         std::string_view strMethod, std::string_view strUri, unsigned nCount,
                         std::string const& strClientNonce);

/// Answers a server's challenges for one user: Digest with SHA-512-256, SHA-256 and MD5, with and without qop, and
/// Basic when nothing else is offered. One for each server: it is never carried to another host or port. It may outlive
/// a connection: the last nonce is then used from the first request on.
class CAuthenticator
{
public:
    CAuthenticator(std::string strUser, std::string strPassword);

    /// The WWW-Authenticate values of a 401. True: try again with Authorization. False: there is no user name, nothing
    /// that we know is offered, or the answer to this very challenge was refused (unless its nonce was only stale); the
    /// challenge is then forgotten, and the next request goes without an answer. No more than a few times true in a
    /// row.
    bool TakeChallenges(std::vector<std::string_view> const& astrChallenges);

    /// The value of the Authorization header for the next request; empty before the first challenge.
    std::string Authorization(std::string_view strMethod, std::string_view strUri);

private:
    bool WasRefused(tagChallenge const& tChallenge) const;
    bool Prepare(tagChallenge const& tChallenge);

    std::string m_strUser;
    std::string m_strPassword;
    std::optional<tagChallenge> m_tChallenge; ///< the one that is answered
    std::string m_strClientNonce;
    unsigned m_nUsed = 0;  ///< requests that carried an answer to it
    unsigned m_nStale = 0; ///< nonces in a row that were refused at their first use
};
} // namespace rtsp
