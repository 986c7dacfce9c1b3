#pragma once

#include <span>
#include <stdexcept>
#include <string>

namespace tessaro
{
/// What the program ends with.
enum eExit
{
    eExitDone = 0,
    eExitFailed = 1,
    eExitUsage = 2,
    eExitUnreachable = 3,
    eExitLogin = 4,
    eExitUnsupported = 5,
    eExitNoPlugin = 6,
};

struct tagExitText
{
    eExit eCode;
    char const* szMeaning;
};
/// All of them, for the help and the manual.
std::span<tagExitText const> ExitTexts();

/// Why a command can't go on: a message for people, and what to do about it.
class CFailure : public std::runtime_error
{
public:
    CFailure(eExit eCode, std::string const& strMessage, std::string strAdvice = "")
        : std::runtime_error(strMessage), m_eCode(eCode), m_strAdvice(std::move(strAdvice))
    {
    }
    /// A call of the library that failed; exit code and advice follow from its result.
    CFailure(int nResult, std::string const& strWhat);

    eExit Code() const { return m_eCode; }
    int Result() const { return m_nResult; } ///< of the library; 0: it isn't its failure
    std::string const& Advice() const { return m_strAdvice; }

private:
    eExit m_eCode;
    int m_nResult = 0;
    std::string m_strAdvice;
};

/// What a user can do about a result of the library; empty: nothing is known.
std::string Advice(int nResult);

/// Throws what nResult means, unless it is 0. strWhat: what was tried, "logging in".
void Check(int nResult, std::string const& strWhat);
} // namespace tessaro
