#pragma once

#include <string>

namespace tessaro
{
/// A password for strWho: the first line of strFile if one is named, else the environment's TESSARO_PASSWORD, else from
/// the terminal, without echo. Throws CFailure when there is none, or it is longer than a login takes.
std::string AskPassword(std::string const& strFile, std::string const& strWho);
} // namespace tessaro
