#pragma once

#include "tools/tessaro/Session.h"

#include <span>

namespace tessaro
{
/// A question that changes nothing, by the operation that it tries.
struct tagQuestion
{
    char const* szOperation;
    char const* szDetail; ///< what of it; empty: all there is to it
    int (*pfnAsk)(CSession const& tSession);
};
/// What can be asked of any device to see what it can do.
std::span<tagQuestion const> Questions();

/// "yes", "no", or in a word why it isn't known.
char const* AnswerText(int nResult);
} // namespace tessaro
