#pragma once

#include "tools/tessaro/Line.h"

#include <span>

namespace tessaro
{
struct tagCommand
{
    char const* szName;
    char const* szHelp;
    /// Adds the command's options and what it does to its line. Each is defined in the file of its name under
    /// commands/.
    void (*pfnDeclare)(CLine& tLine);
};

/// All commands, in the order of the help.
std::span<tagCommand const> Commands();

void DeclareAlarm(CLine& tLine);
void DeclareCheckPlugin(CLine& tLine);
void DeclareConfig(CLine& tLine);
void DeclareDoctor(CLine& tLine);
void DeclareDownload(CLine& tLine);
void DeclareEvents(CLine& tLine);
void DeclareInfo(CLine& tLine);
void DeclareLive(CLine& tLine);
void DeclareLog(CLine& tLine);
void DeclarePlay(CLine& tLine);
void DeclareProbe(CLine& tLine);
void DeclarePtz(CLine& tLine);
void DeclareRecordings(CLine& tLine);
void DeclareSnapshot(CLine& tLine);
void DeclareTalk(CLine& tLine);
void DeclareTrace(CLine& tLine);
void DeclareUpgrade(CLine& tLine);
void DeclareWall(CLine& tLine);
} // namespace tessaro
