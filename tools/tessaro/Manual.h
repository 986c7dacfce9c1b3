#pragma once

#include "tools/tessaro/Line.h"

#include <string>

namespace tessaro
{
/// What follows the options in help and manual: exit codes, passwords, environment.
std::string ManualEnd();
/// The command line's description as a manual page, in troff.
std::string ManualPage(tagLineText const& tAll);
/// Completion of commands and options, for bash.
std::string BashCompletion(tagLineText const& tAll);
} // namespace tessaro
