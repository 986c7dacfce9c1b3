#pragma once

#include "tools/tessaro/Line.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tessaro
{
/// Which recordings are meant.
struct tagSpan
{
    unsigned int dwChannel = 0;
    bool bSub = false;
    std::string strFrom;
    std::string strTo;
    std::vector<std::string> astrTypes;

    std::int64_t FromUs() const; ///< 0: from the first
    std::int64_t ToUs() const;   ///< 0: to the last
    std::uint32_t Types() const; ///< 0: all
    std::uint32_t Kind() const;  ///< eStreamKind
};

/// Their options.
void AddSpanOptions(CLine& tLine, tagSpan& tSpan);
/// Those of a time alone.
void AddTimeOptions(CLine& tLine, std::string& strFrom, std::string& strTo);
/// A time that a person wrote, checked by the options before; 0: none.
std::int64_t TimeOf(std::string const& strText);
} // namespace tessaro
