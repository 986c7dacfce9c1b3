#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tessaro
{
/// What follows the options in help and manual: exit codes, passwords, environment.
std::string ManualEnd();
/// The command line's description as a manual page, in troff.
std::string ManualPage(CLI::App const& tApp);
/// Completion of commands and options, for bash.
std::string BashCompletion(CLI::App const& tApp);
} // namespace tessaro
