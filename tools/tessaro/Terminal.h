#pragma once

#include <optional>
#include <termios.h>

namespace tessaro
{
/// Standard input key by key, without echo, as long as this object lives. Does nothing where it is no terminal.
class CKeys
{
public:
    CKeys();
    ~CKeys();
    CKeys(CKeys const&) = delete;
    CKeys& operator=(CKeys const&) = delete;

    bool IsTerminal() const { return m_bTerminal; }
    enum eKey
    {
        eUp = 1000,
        eDown,
        eRight,
        eLeft,
        eNone,
        eEnd, ///< Ctrl-C, or the input has ended
    };
    /// The next key: a character, or one of the above; eNone: none was pressed for so long.
    int Next(int nMilliseconds);

private:
    std::optional<char> Read();
    termios m_tBefore{};
    bool m_bTerminal;
};
} // namespace tessaro
