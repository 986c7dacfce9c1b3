#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rtsp
{
/// Answers a server's challenges for one user: Digest with SHA-512-256, SHA-256 and MD5, with and without qop, and
/// Basic when nothing else is offered. One for each server: it is never carried to another host or port.
class CAuthenticator
{
public:
    CAuthenticator(std::string strUser, std::string strPassword);

    /// The WWW-Authenticate values of a 401. True: try again with Authorization. False: there is no user name, nothing
    /// that we know is offered, or the answer to this very challenge was refused (unless its nonce was only stale).
    bool TakeChallenges(std::vector<std::string_view> const& astrChallenges);

    /// The value of the Authorization header for the next request; empty before the first challenge.
    std::string Authorization(std::string_view strMethod, std::string_view strUri);

private:
    std::string m_strUser;
    std::string m_strPassword;
};
} // namespace rtsp
