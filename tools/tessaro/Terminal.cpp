#include "tools/tessaro/Terminal.h"

#include "tools/tessaro/Interrupt.h"

#include <poll.h>
#include <unistd.h>

namespace tessaro
{
CKeys::CKeys() : m_bTerminal(tcgetattr(STDIN_FILENO, &m_tBefore) == 0)
{
    if (m_bTerminal)
    {
        termios tRaw = m_tBefore;
        tRaw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        tcsetattr(STDIN_FILENO, TCSANOW, &tRaw);
    }
}

CKeys::~CKeys()
{
    if (m_bTerminal)
    {
        tcsetattr(STDIN_FILENO, TCSANOW, &m_tBefore);
    }
}

std::optional<char> CKeys::Read()
{
    char ch = 0;
    return read(STDIN_FILENO, &ch, 1) == 1 ? std::optional(ch) : std::nullopt;
}

int CKeys::Next(int nMilliseconds)
{
    if (!CInterrupt::Instance().Wait(nMilliseconds, STDIN_FILENO))
    {
        return eEnd;
    }
    pollfd tFile{STDIN_FILENO, POLLIN, 0};
    if (poll(&tFile, 1, 0) <= 0)
    {
        return eNone;
    }
    const auto ch = Read();
    if (ch != '\x1b')
    {
        return ch ? *ch : static_cast<int>(eEnd);
    }
    // An arrow is three characters that come together; the key Escape comes alone.
    if (poll(&tFile, 1, 50) <= 0 || Read() != '[')
    {
        return '\x1b';
    }
    const char chLast = Read().value_or('?');
    return chLast >= 'A' && chLast <= 'D' ? eUp + (chLast - 'A') : static_cast<int>(eNone);
}
} // namespace tessaro
