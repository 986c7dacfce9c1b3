#include "tools/tessaro/Password.h"

#include "adapter/ClientAdapter.h"
#include "tools/tessaro/Failure.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <termios.h>
#include <unistd.h>

namespace tessaro
{
namespace
{
constexpr char g_szWays[] = "set TESSARO_PASSWORD, or give --password-file, or run it in a terminal";

std::string FromFile(std::string const& strFile)
{
    std::ifstream tFile(strFile);
    std::string strLine;
    if (!tFile || !std::getline(tFile, strLine))
    {
        throw CFailure(eExitUsage, fmt::format("the password file {} can't be read: {}", strFile,
                                               tFile.is_open() ? "it is empty" : strerror(errno)));
    }
    return strLine;
}

// The terminal with echo off, and as it was at the end, whatever happens between.
class CQuiet
{
public:
    explicit CQuiet(int nFile) : m_nFile(nFile)
    {
        tcgetattr(nFile, &m_tBefore);
        termios tQuiet = m_tBefore;
        tQuiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(nFile, TCSAFLUSH, &tQuiet);
    }
    ~CQuiet()
    {
        tcsetattr(m_nFile, TCSAFLUSH, &m_tBefore);
        close(m_nFile);
    }
    CQuiet(CQuiet const&) = delete;
    CQuiet& operator=(CQuiet const&) = delete;

private:
    int m_nFile;
    termios m_tBefore{};
};

std::string FromTerminal(std::string const& strWho)
{
    const int nFile = open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (nFile < 0)
    {
        throw CFailure(eExitUsage, "a password is needed, and there is no terminal to ask for it", g_szWays);
    }
    const CQuiet tQuiet(nFile);
    dprintf(nFile, "Password of %s: ", strWho.c_str());
    std::string strPassword;
    for (char ch = 0; read(nFile, &ch, 1) == 1 && ch != '\n';)
    {
        strPassword += ch;
    }
    dprintf(nFile, "\n");
    return strPassword;
}
} // namespace

std::string AskPassword(std::string const& strFile, std::string const& strWho)
{
    char const* const szEnvironment = getenv("TESSARO_PASSWORD");
    const std::string strPassword = !strFile.empty() ? FromFile(strFile)
                                    : szEnvironment  ? szEnvironment
                                                     : FromTerminal(strWho);
    if (strPassword.size() >= sizeof tagUserLoginPara::szPassword)
    {
        throw CFailure(eExitUsage, "the password is too long: at most 31 bytes");
    }
    return strPassword;
}
} // namespace tessaro
