#pragma once

#include "tools/tessaro/Context.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <span>

namespace tessaro
{
/// How a negative number begins when a command gets it.
inline constexpr char g_szMinus[] = "\u2212";

/// What a command does when its command line was read: what the program ends with (eExit), or a CFailure.
using Action = std::function<int(tagContext&)>;

struct tagCommand
{
    char const* szName;
    char const* szHelp;
    /// Adds the command's options to its line, and says what it does. Each is defined in the file of its name under
    /// commands/.
    Action (*pfnDeclare)(CLI::App& tLine);
};

/// All commands, in the order of the help.
std::span<tagCommand const> Commands();

Action DeclareAlarm(CLI::App& tLine);
Action DeclareCheckPlugin(CLI::App& tLine);
Action DeclareConfig(CLI::App& tLine);
Action DeclareDoctor(CLI::App& tLine);
Action DeclareDownload(CLI::App& tLine);
Action DeclareEvents(CLI::App& tLine);
Action DeclareInfo(CLI::App& tLine);
Action DeclareLive(CLI::App& tLine);
Action DeclareLog(CLI::App& tLine);
Action DeclarePlay(CLI::App& tLine);
Action DeclareProbe(CLI::App& tLine);
Action DeclarePtz(CLI::App& tLine);
Action DeclareRecordings(CLI::App& tLine);
Action DeclareSnapshot(CLI::App& tLine);
Action DeclareTalk(CLI::App& tLine);
Action DeclareTrace(CLI::App& tLine);
Action DeclareUpgrade(CLI::App& tLine);
Action DeclareWall(CLI::App& tLine);
} // namespace tessaro
