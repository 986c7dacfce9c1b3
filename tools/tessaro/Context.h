#pragma once

#include "tools/tessaro/Output.h"

#include <string>

namespace tessaro
{
/// What holds for every command.
struct tagContext
{
    COutput tOut;
    bool bJson = false;
    bool bVerbose = false;
    std::string strPasswordFile;
    std::string strPlugin;        ///< in place of the protocol's usual plug-in; empty: that one
    unsigned int dwTimeoutMs = 0; ///< of a call; 0: the protocol's usual one
};
} // namespace tessaro
